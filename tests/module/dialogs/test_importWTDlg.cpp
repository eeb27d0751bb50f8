// The import dialog as the add-on opens it through zel_invoke_importwt_dlg over the demo's
// import drawing, and as the edit dialog reads its rows.

#include "support/ZelUiTest.h"

#include "dialogs/ZelImportWTDlg.h"
#include "shell/ResourceOverride.h"

#include "ovdb/ovut.h"

#include <QFile>
#include <QHeaderView>
#include <QRegularExpression>
#include <QTest>

namespace {

class ImportDialogTest : public ZelUiTest {
protected:
    void SetUp() override {
        ZelUiTest::SetUp();
        ASSERT_NE(newDocument(), nullptr);
        defineFunctions(true);
    }
};

// A row of the demo's import drawing in LISP order: layer, colour, size, the values given
// and empty ones up to twenty, the flag.
QString lispRow(const QString& layer, const QString& colour, const QString& size,
                const QStringList& values, const QString& flag) {
    QStringList fields = {layer, colour, size};
    for (int i = 0; i < 20; ++i)
        fields << (i < values.size() ? values[i] : QString());
    fields << flag;
    return "(\"" + fields.join("\" \"") + "\")";
}

const QString kGrey = lispRow("GY_0.5", "GY", "0.5", {"PVC", "300/300 V", "70 °C"}, "0");
const QString kBlack = lispRow("BK_1.5", "BK", "1.5", {"Rubber", "450/750 V", "60 °C"}, "1");
const QString kWhite = lispRow("WH_0.75", "WH", "0.75", {"PTFE"}, "1");
// A list of lists opens with a bracket of its own, which the list reads as a first row.
const QString kEmptyFirstRow = lispRow("", "", "", {}, "1");

QString options() {
    return QStringLiteral("(%1 %2)")
        .arg(ZelImportWTDlg::GetImportProperties() ? 1 : 0)
        .arg(ZelImportWTDlg::GetImportAppearance() ? 1 : 0);
}

QString call(const QString& path, int show, const QString& list) {
    return QStringLiteral("(zel_invoke_importwt_dlg \"%1\" %2 %3)").arg(path).arg(show).arg(list);
}

// The layer column of the loaded rows, top down.
QStringList layers(ZelImportWTGrid& grid) {
    QStringList names;
    for (int row = 1; row <= grid.GetLoadedRows(); ++row)
        names << ZelUiTest::cell(grid, row, 3);
    return names;
}

void setCheck(platform::TemplateDialog& dialog, int id, bool on) {
    if ((dialog.IsDlgButtonChecked(id) != 0) != on)
        ZelUiTest::clickButton(dialog, id);
}

TEST_F(ImportDialogTest,
       TheDrafterChoosesAndSortsRowsCancelKeepsTheOptionsAndNoShowFlagShowsNothing) {
    const QString path = importDrawing();
    QString value =
        runWith(call(path, 1, "(list \"" + path + "\")"), {[&](platform::TemplateDialog& base) {
                    auto& dialog = dynamic_cast<ZelImportWTDlg&>(base);
                    ZelImportWTGrid& grid = dialog.grid();
                    ASSERT_EQ(grid.GetLoadedRows(), 6);
                    EXPECT_EQ(layers(grid),
                              QStringList({"", "BK_1.5", "BN_1", "GY_0.5", "OG_2.5", "WH_0.75"}));
                    EXPECT_EQ(cell(grid, 4, 1), "GY");
                    EXPECT_EQ(cell(grid, 4, 4), moduleString(116));
                    EXPECT_EQ(cell(grid, 2, 4), moduleString(115));
                    EXPECT_EQ(cell(grid, 2, 5), "Rubber");

                    // Nobody named rows: all are chosen, and the toggle still shows the template's
                    // caption, which is not "Clear All".
                    EXPECT_EQ(grid.GetSelectedRows(true, false).size(), 6u);
                    EXPECT_TRUE(dialog.IsDlgItemEnabled(1));
                    const QString templateCaption = dialog.GetDlgItemText(1036);
                    EXPECT_NE(templateCaption.compare(moduleString(172), Qt::CaseInsensitive), 0);

                    clickButton(dialog, 1036);
                    EXPECT_EQ(dialog.GetDlgItemText(1036), moduleString(172));
                    EXPECT_EQ(grid.GetSelectedRows(true, false).size(), 6u);
                    clickButton(dialog, 1036);
                    EXPECT_EQ(dialog.GetDlgItemText(1036), moduleString(171));
                    EXPECT_TRUE(selectedLayers(grid).isEmpty());
                    EXPECT_FALSE(dialog.IsDlgItemEnabled(1));

                    // A click into an empty choice picks its row; Ctrl adds another.
                    clickCell(grid, 4, 5);
                    clickCell(grid, 2, 1, Qt::ControlModifier);
                    EXPECT_EQ(selectedLayers(grid), QStringList({"BK_1.5", "GY_0.5"}));
                    EXPECT_TRUE(dialog.IsDlgItemEnabled(1));
                    // A plain click with rows chosen keeps them.
                    clickCell(grid, 5, 3);
                    EXPECT_EQ(selectedLayers(grid), QStringList({"BK_1.5", "GY_0.5"}));

                    setCheck(dialog, 1037, true);
                    setCheck(dialog, 1039, true);
                    clickButton(dialog, 1);
                }});
    // The rows in the order the drafter chose them.
    EXPECT_EQ(value, "(\"" + path + "\" (1 1) (" + kGrey + " " + kBlack + "))");
    const QString before = options();
    EXPECT_EQ(before, "(1 1)");

    // Opened again: sorting keeps the choice, and Cancel gives the preset rows and keeps the
    // options. The list names the same drawing in other letters; names match with case only.
    const QString list = "(list \"" + path.toUpper() + "\" \"WH_0.75\" \"bk_1.5\" \"GY_0.5\")";
    value =
        runWith(call(path, 1, list), {[&](platform::TemplateDialog& base) {
                    auto& dialog = dynamic_cast<ZelImportWTDlg&>(base);
                    ZelImportWTGrid& grid = dialog.grid();
                    const QStringList chosen = {"GY_0.5", "WH_0.75"};
                    EXPECT_EQ(selectedLayers(grid), chosen);
                    // The boxes come back as the last OK left them.
                    EXPECT_EQ(dialog.IsDlgButtonChecked(1037), 1);
                    EXPECT_EQ(dialog.IsDlgButtonChecked(1039), 1);
                    // A header click selects nothing; a header double click sorts down, then
                    // up, and the choice goes along.
                    QHeaderView* header = grid.horizontalHeader();
                    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                                      QPoint(header->sectionViewportPosition(3) + 5, 5));
                    settle();
                    EXPECT_EQ(selectedLayers(grid), chosen);
                    doubleClickColumnHeader(grid, 3);
                    EXPECT_EQ(layers(grid),
                              QStringList({"WH_0.75", "OG_2.5", "GY_0.5", "BN_1", "BK_1.5", ""}));
                    doubleClickColumnHeader(grid, 3);
                    EXPECT_EQ(layers(grid),
                              QStringList({"", "BK_1.5", "BN_1", "GY_0.5", "OG_2.5", "WH_0.75"}));
                    EXPECT_EQ(selectedLayers(grid), chosen);
                    clearOutput();
                    clickButton(dialog, 1013);
                    EXPECT_TRUE(output().contains("import_wire_types_dialog"))
                        << output().toStdString();
                    setCheck(dialog, 1037, false);
                    setCheck(dialog, 1039, false);
                    clickButton(dialog, 2);
                }});
    EXPECT_EQ(options(), before) << "Cancel keeps the options of the last OK";
    EXPECT_EQ(value, "(\"" + path + "\" " + before + " (" + kGrey + " " + kWhite + "))");

    // Names listed for another drawing are not this one's: Cancel gives every row.
    value = runWith(call(path, 1, "(list \"/elsewhere/import.dwg\" \"GY_0.5\")"),
                    {[&](platform::TemplateDialog& base) {
                        auto& dialog = dynamic_cast<ZelImportWTDlg&>(base);
                        EXPECT_EQ(dialog.grid().GetSelectedRows(true, false).size(), 6u);
                        key(Qt::Key_Escape);
                    }});
    EXPECT_TRUE(
        value.startsWith("(\"" + path + "\" " + before + " (" + kEmptyFirstRow + " " + kBlack))
        << value.toStdString();
    EXPECT_EQ(value.count(QRegularExpression("\\(\"[A-Z]{2}_")), 5) << "all five wire types";

    // Without the show flag nothing is shown and every row comes back. (With it, a drawing
    // without wire types is told by the host's task dialog: the batch run checks that.)
    const QString answer = evalLisp("(wd_wirlay_get_dwg_wiretype_settings \"" + path + "\")").value;
    ASSERT_TRUE(answer.startsWith("((\"BK_1.5\"")) << answer.toStdString();
    // No steps: a dialog that came up would be left open and fail the test.
    value = runWith(call(path, 0, "(list \"" + path + "\" \"GY_0.5\")"));
    EXPECT_EQ(value, "(\"" + path + "\" " + options() + " (" + answer + "))");

    // A drawing without wire types, or no drawing at all, gives nil.
    const QString empty = tempPath("template.dwt");
    ASSERT_TRUE(QFile::copy(QStringLiteral(ZEL_DEMO_DIR "/drawings/template.dwt"), empty));
    const QString notADrawing = tempPath("notes.dwg");
    QFile notes(notADrawing);
    ASSERT_TRUE(notes.open(QIODevice::WriteOnly));
    notes.write("not a drawing");
    notes.close();

    for (const QString& other : {empty, notADrawing, tempPath("missing.dwg")})
        EXPECT_EQ(runWith(call(other, 0, "nil")), "nil") << other.toStdString();
}

// A list of rows without an outer bracket, one of them short, read by the edit dialog's
// way: rows in grid order.
TEST_F(ImportDialogTest, ShortRowsWithoutAnOuterBracketAreReadIntoTheirColumns) {
    // The second row gets its flag from a 24th position.
    resbuf* settings = ovutBuildList(RTLB, RTSTR, L"L1", RTSTR, L"C1", RTSTR, L"S1", RTSTR, L"v1",
                                     RTLE, RTLB, RTSTR, L"L2", RTSTR, L"C2", RTSTR, L"S2", 0);
    resbuf* tail = settings;
    while (tail->rbnext)
        tail = tail->rbnext;
    for (int i = 0; i < 21; ++i)
        tail = tail->rbnext = ovutBuildList(RTSTR, i == 19 ? L"last" : i == 20 ? L"0" : L"", 0);
    tail->rbnext = ovutBuildList(RTLE, 0);

    {
        const ResourceOverride resources;
        ZelImportWTDlg dialog(settings, nullptr);
        ASSERT_EQ(runModal(dialog, [&] { clickButton(1); }), 1);
        ASSERT_EQ(dialog.grid().GetLoadedRows(), 2);

        const ZelImportWTDlg::Rows& chosen = dialog.GetChosenRows(false);
        ASSERT_EQ(chosen.size(), 2u);
        EXPECT_EQ(chosen[0][0], "C1");
        EXPECT_EQ(chosen[0][2], "L1");
        EXPECT_EQ(chosen[0][3], "") << "a short row leaves its flag empty";
        EXPECT_EQ(chosen[0][4], "v1");
        EXPECT_EQ(chosen[1][3], moduleString(116));
        EXPECT_EQ(chosen[1][23], "last");
        // In the caller's order an empty flag is no No.
        EXPECT_EQ(dialog.GetPresetRows(true).at(0)[23], "1");
    }
    ovutRelRb(settings);
}

} // namespace
