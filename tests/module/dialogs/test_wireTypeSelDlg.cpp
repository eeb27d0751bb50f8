// The set and edit twin of the create and edit dialog: edits, then hands back the chosen
// wire type as five strings, by OK or as a change of existing wires.

#include "support/ZelUiTest.h"

#include "dialogs/ZelWireTypeSelDlg.h"
#include "grid/ZelWTGrid.h"

#include "ovcore/OvLisp.h"
#include "ovdb/OvDbDatabase.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>

using WireTypeSelDlgTest = ZelUiTest;
using ovcore::lisp::toLispNotation;

TEST_F(WireTypeSelDlgTest,
       OkMakesTheChoiceCurrentOnlyWhenAskedChangeWiresNeverSetOnlyOffersNoChange) {
    OvDbDatabase* database = wireTypeDrawing({"BLUE_1", "RED_1"}, {.saved = true});
    const QString before = clayerName(database);
    ASSERT_NE(before, "RED_1");

    // Change wires with "make current" on: the answer says so, the drawing is left alone.
    int result = runSelDialog([&] {
        EXPECT_FALSE(selDialog().IsDlgItemVisible(1032)) << "no default is set here";
        clickCell(2, 5);
        clickControl(1020);
        clickControl(1009);
        clickButton(1014);
    });
    EXPECT_EQ(result, platform::TemplateDialog::IDOK);
    EXPECT_EQ(toLispNotation(selDialog().GetResult()), R"(("RED_1" "1" "1" "1" "1"))");
    EXPECT_EQ(clayerName(database), before);

    result = runSelDialog([&] {
        clickCell(2, 5);
        clickControl(1020);
        clickButton(1);
    });
    EXPECT_EQ(result, platform::TemplateDialog::IDOK);
    EXPECT_EQ(toLispNotation(selDialog().GetResult()), R"(("RED_1" "1" "0" "1" "0"))");
    EXPECT_EQ(clayerName(database), "RED_1");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // Set only: the change options stay off and OK still answers.
    result = runSelDialog(
        [&] {
            clickCell(1, 5);
            for (const int id : {1008, 1009, 1010, 1014})
                EXPECT_FALSE(selDialog().IsDlgItemEnabled(id)) << id;
            clickButton(1);
        },
        true);
    EXPECT_EQ(result, platform::TemplateDialog::IDOK);
    EXPECT_EQ(toLispNotation(selDialog().GetResult()), R"(("BLUE_1" "0" "0" "1" "0"))");
}

TEST_F(WireTypeSelDlgTest, CopyGoesToTheCopyFileAndCancelAfterADeleteKeepsTheLayer) {
    wireTypeDrawing({"BLUE_1", "RED_1"}, {.saved = true});
    QApplication::clipboard()->setText("untouched");
    const QString copyFile = ZelWTGrid::CopyFilePath();
    QFile::remove(copyFile);
    const int result = runSelDialog([&] {
        typeInto(1, 3, "BL");
        clickCell(1, 3);
        clickCell(1, 4, Qt::ShiftModifier);
        key(Qt::Key_C, Qt::ControlModifier);
        clickRowHeader(2);
        contextMenu(2, 5, 40028);
        ASSERT_EQ(gridNames(), QStringList{"BLUE_1"});
        clickButton(2);
    });
    EXPECT_EQ(QApplication::clipboard()->text(), "untouched");
    QFile file(copyFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << copyFile.toStdString();
    EXPECT_EQ(QString::fromUtf8(file.readAll()).trimmed(), "BL");

    // Cancel asks nothing and the deleted row's layer keeps its wire type.
    EXPECT_EQ(result, platform::TemplateDialog::IDCANCEL);
    EXPECT_TRUE(messages().shown().empty());
    EXPECT_EQ(selDialog().GetResult(), nullptr);
    EXPECT_FALSE(wireRecord(savedDrawing(), "RED_1").isEmpty());
}
