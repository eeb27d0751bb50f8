// The create and edit wire types dialog, run modally over a saved drawing and worked with
// mouse and key events; what it did is read back from the saved file.

#include "support/ZelUiTest.h"

#include "dialogs/ZelEditWTDlg.h"
#include "dialogs/ZelImportWTDlg.h"
#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovdb/OvDbDatabase.h"
#include "platform/MessageBox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

using EditWTDlgTest = ZelUiTest;

TEST_F(EditWTDlgTest, ColourKeysAndCancelAskOnlyAfterChangesNoLeavesTheDrawingAsItWasYesCommits) {
    wireTypeDrawing({"BLUE_1", "GRN_1", "RED_1", "YEL_1"}, {.saved = true});
    // Three selected rows take the one colour chosen.
    const auto colourOf = [&](const char* name) {
        return evalLisp(QStringLiteral("(cdr (assoc 62 (tblsearch \"LAYER\" \"%1\")))").arg(name))
            .value.toInt();
    };
    const int yellow = colourOf("YEL_1");
    // Clicks a swatch of the host's picker, then OK (1) or Cancel (2); tells the colour the
    // picker opened on.
    QString openedOn;
    const auto pick = [&](int colour, const char* button) {
        whenModal([&openedOn, colour, button](QWidget* picker) {
            openedOn = picker->findChild<QLineEdit*>("1001")->text();
            QTest::mouseClick(picker->findChild<QWidget*>("color-" + QString::number(colour)),
                              Qt::LeftButton);
            QTest::mouseClick(picker->findChild<QAbstractButton*>(button), Qt::LeftButton);
        });
        clickButton(1012);
    };
    runEditDialog([&] {
        // The first row gets a colour of its own, so that the picker has one to open on.
        clickCell(1, 5);
        pick(5, "1");
        ASSERT_TRUE(modalSeen());

        clickRowHeader(1);
        clickRowHeader(3, Qt::ShiftModifier);
        pick(3, "1");
        ASSERT_TRUE(modalSeen());
        EXPECT_EQ(openedOn, "blue") << "the picker opens on the first selected row's colour";

        // A cancelled picker changes nothing.
        clickCell(4, 5);
        pick(1, "2");
        clickCell(1, 5);
        clickButton(1);
    });
    for (const char* name : {"BLUE_1", "GRN_1", "RED_1"})
        EXPECT_EQ(colourOf(name), 3) << name;
    EXPECT_EQ(colourOf("YEL_1"), yellow) << "not selected, and the picker was cancelled";

    // Esc undoes an open cell before it would cancel, Enter never leaves, F1 opens help;
    // with nothing changed Cancel closes without a question.
    EXPECT_EQ(runEditDialog([&] {
                  clickCell(1, 3);
                  typeText("XX");
                  ASSERT_TRUE(grid().IsActiveCurrentCell());
                  key(Qt::Key_Escape);
                  ASSERT_TRUE(dialog().isVisible());
                  EXPECT_EQ(cell(1, 3), "");
                  dialog().GetDlgItem(1019)->setFocus();
                  key(Qt::Key_Return);
                  ASSERT_TRUE(dialog().isVisible()) << "Enter is no OK";
                  clearOutput();
                  key(Qt::Key_F1);
                  EXPECT_TRUE(output().contains("create_edit_wire_type_dialog"))
                      << output().toStdString();
                  clickButton(2);
              }),
              platform::TemplateDialog::IDCANCEL);
    EXPECT_TRUE(messages().shown().empty());

    // Remove asks first, and No keeps the row; Delete from the menu asks nothing. Then a new
    // row is typed.
    const auto change = [&] {
        clickRowHeader(3);
        messages().answer(platform::IDNO);
        clickButton(1026);
        ASSERT_EQ(gridNames().size(), 4);
        messages().answer(platform::IDYES);
        clickButton(1026);
        ASSERT_EQ(gridNames(), (QStringList{"BLUE_1", "GRN_1", "YEL_1"}));
        clickRowHeader(2);
        clickRowHeader(3, Qt::ShiftModifier);
        contextMenu(2, 5, 40028);
        ASSERT_EQ(gridNames(), QStringList{"BLUE_1"});
        typeInto(2, 3, "GRN");
        clickCell(1, 5);
    };
    const int result = runEditDialog([&] {
        change();
        // Cancel to the question keeps the dialog and the typed row.
        messages().answer(platform::IDCANCEL);
        clickButton(2);
        ASSERT_TRUE(dialog().isVisible());
        EXPECT_EQ(cell(2, 5), "GRN");
        messages().answer(platform::IDNO);
        clickButton(2);
    });
    EXPECT_EQ(result, platform::TemplateDialog::IDCANCEL);
    EXPECT_EQ(messages().shownTexts(),
              (std::vector<QString>{moduleString(109), moduleString(109), moduleString(113),
                                    moduleString(113)}));
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    OvDbDatabase* saved = savedDrawing();
    EXPECT_FALSE(layerId(saved, "GRN").isValid());
    for (const char* name : {"RED_1", "BLUE_1", "GRN_1", "YEL_1"})
        EXPECT_FALSE(wireRecord(saved, name).isEmpty()) << name;

    // Yes to the question commits, and the dialog still ends as cancelled.
    EXPECT_EQ(runEditDialog([&] {
                  change();
                  messages().answer(platform::IDYES);
                  key(Qt::Key_Escape);
              }),
              platform::TemplateDialog::IDCANCEL);
    saved = savedDrawing();
    EXPECT_TRUE(layerId(saved, "GRN").isValid());
    EXPECT_TRUE(layerId(saved, "RED_1").isValid()) << "a removed wire type keeps its layer";
    EXPECT_TRUE(wireRecord(saved, "RED_1").isEmpty());
    EXPECT_FALSE(layerId(saved, "GRN_1").isValid()) << "a deleted one loses it";
    EXPECT_FALSE(layerId(saved, "YEL_1").isValid());
    EXPECT_FALSE(wireRecord(saved, "BLUE_1").isEmpty());
}

// The store finds the duplicate, whatever its case, at the commit in a row below the first.
TEST_F(EditWTDlgTest, TheMenuFitsTheCellAndADuplicateNameStopsTheCommitOnItsRow) {
    wireTypeDrawing({"BLUE_1", "RED_1"}, {.saved = true});
    const int result = runEditDialog([&] {
        EXPECT_EQ(contextMenu(1, 2), QStringList{"no menu"}) << "the in-use column";
        clickCell(2, 3);
        const QStringList onColour = contextMenu(2, 3);
        EXPECT_TRUE(onColour.contains("40014"));
        EXPECT_FALSE(onColour.contains("40043"));
        clickCell(2, 5);
        const QStringList onName = contextMenu(2, 5);
        EXPECT_TRUE(onName.contains("40013"));
        EXPECT_FALSE(onName.contains("40014")) << "a cut would empty the layer name";
        EXPECT_FALSE(onName.contains("40039"));
        // The name of a wire type the drawing has opens for typing from the menu only.
        contextMenu(2, 5, 40043);
        for (int i = 0; i < 5; ++i)
            key(Qt::Key_Backspace);
        typeText("blue_1");
        key(Qt::Key_Tab);
        ASSERT_EQ(gridNames(), (QStringList{"BLUE_1", "blue_1"}));
        clickCell(1, 3);
        clickButton(1);
        // Stopped on the name at fault, open for typing.
        ASSERT_TRUE(dialog().isVisible()) << "the commit stopped";
        settle();
        EXPECT_EQ(messages().shownTexts(), std::vector<QString>({moduleString(142)}));
        EXPECT_EQ(currentCell(), std::make_pair(2, 5));
        key(Qt::Key_Backspace);
        typeText("2");
        key(Qt::Key_Tab);
        // Make default shows the row, and the drawing keeps it.
        clickCell(2, 5);
        clickButton(1032);
        EXPECT_EQ(dialog().GetDlgItemText(1033), "blue_2");
        clickCell(1, 3);
        clickButton(1);
    });
    EXPECT_EQ(result, platform::TemplateDialog::IDOK);
    OvDbDatabase* saved = savedDrawing();
    EXPECT_TRUE(layerId(saved, "BLUE_2").isValid());
    EXPECT_FALSE(layerId(saved, "RED_1").isValid()) << "renamed";
    EXPECT_FALSE(wireRecord(saved, "BLUE_1").isEmpty()) << "the duplicate wrote nothing over it";
    EXPECT_TRUE(currentRecord(saved).startsWith("blue_2|")) << currentRecord(saved).toStdString();
}

TEST_F(EditWTDlgTest, TheLayerNameFormatRefusesWhatNamesNoTokenAndKeepsTheLastGoodOne) {
    wireTypeDrawing({"RED_1"}, {.saved = true});
    runEditDialog([&] {
        auto* edit = qobject_cast<QLineEdit*>(dialog().GetDlgItem(1019));
        ASSERT_NE(edit, nullptr);
        EXPECT_EQ(edit->text(), "%C_%S");
        struct Case {
            const char* typed;
            bool refused;
        };
        for (const Case& c : {Case{"ABC", true}, Case{"%X_%S", true}, Case{"%C_", false},
                              Case{"%C_%", true}, Case{" %c-%s ", false}, Case{"W%1", false}}) {
            edit->setFocus();
            edit->selectAll();
            typeText(c.typed);
            bool alerted = false;
            whenModal([&](QWidget* modal) {
                alerted =
                    modal->objectName() == "107" || modal->findChild<QWidget*>("1021") != nullptr;
                if (auto* close = modal->findChild<QAbstractButton*>("2"))
                    QTest::mouseClick(close, Qt::LeftButton);
            });
            clickCell(1, 3);
            QTest::qWait(100);
            settle();
            EXPECT_EQ(alerted, c.refused) << c.typed;
            if (c.refused) {
                EXPECT_EQ(edit->text(), dialog().LayerFormat()) << c.typed;
            }
        }
        EXPECT_EQ(dialog().LayerFormat(), "W%1");
        clickCell(1, 3);
        clickButton(1);
    });
    OvDbDatabase* saved = savedDrawing();
    EXPECT_TRUE(currentRecord(saved).contains("|W%1|")) << currentRecord(saved).toStdString();
}

TEST_F(EditWTDlgTest, TheMakeAllValidBoxLocksTheDialogAndTheDrawingKeepsIt) {
    wireTypeDrawing({"RED_1"}, {.saved = true});
    runEditDialog([&] {
        EXPECT_TRUE(dialog().IsDlgItemEnabled(1025));
        clickControl(1027);
        EXPECT_EQ(dialog().IsDlgButtonChecked(1027), 1);
        for (const int id : {1026, 1025, 1012, 1011, 1016, 1032, 1019})
            EXPECT_FALSE(dialog().IsDlgItemEnabled(id)) << id;
        EXPECT_FALSE(grid().isEnabled());
        for (const int id : {1, 2, 1013, 1027})
            EXPECT_TRUE(dialog().IsDlgItemEnabled(id)) << id;
        clickButton(1);
    });
    OvDbDatabase* saved = savedDrawing();
    EXPECT_TRUE(currentRecord(saved).endsWith("|1")) << currentRecord(saved).toStdString();

    // Opened again on that drawing: no wire rows, grey and locked, until the box is off.
    runEditDialog([&] {
        EXPECT_EQ(dialog().IsDlgButtonChecked(1027), 1);
        EXPECT_LE(grid().GetRowCount(), 1) << "no wire rows, at most the blank one";
        EXPECT_FALSE(grid().isEnabled());
        EXPECT_FALSE(dialog().IsDlgItemEnabled(1025));
        clickControl(1027);
        EXPECT_TRUE(grid().isEnabled());
        EXPECT_TRUE(dialog().IsDlgItemEnabled(1025));
        clickButton(1);
    });
    // With no rows left the drawing gets one default wire type, and the wire types' layers
    // stay as plain layers.
    OvDbDatabase* again = savedDrawing();
    const QString name = moduleString(110);
    EXPECT_EQ(currentRecord(again), QStringLiteral("%1|%1|%C_%S|0").arg(name));
    EXPECT_FALSE(wireRecord(again, name).isEmpty());
    EXPECT_TRUE(wireRecord(again, "RED_1").isEmpty());
    EXPECT_TRUE(layerId(again, "RED_1").isValid());
}

TEST_F(EditWTDlgTest, AddExistingLayersTakesThePatternTypedAtTheCommandLine) {
    OvDbDatabase* database = wireTypeDrawing({"RED_1"}, {.saved = true});
    ZelTestDrawing::addLayer(database, "PUMP_A", 1);
    ZelTestDrawing::addLine(database, "PUMP_A");
    ZelTestDrawing::addLayer(database, "PUMP_B");
    ZelTestDrawing::addLayer(database, "VALVE");
    loadAddonLisp("wd_lay.scm");
    runEditDialog([&] {
        // A pattern of no layer is told, and a cancelled request adds nothing.
        OvEdBatchInput::instance().queueInput("nothing*");
        clickButton(1025);
        EXPECT_EQ(messages().shownTexts(), std::vector<QString>({moduleString(123)}));
        OvEdBatchInput::instance().queueInputCancel();
        clickButton(1025);
        ASSERT_EQ(gridNames(), QStringList{"RED_1"});
        OvEdBatchInput::instance().queueInput("pump*");
        clickButton(1025);
        EXPECT_EQ(gridNames(), (QStringList{"RED_1", "PUMP_A", "PUMP_B"}));
        // The rows show the layers' use and take their look; the cursor goes to the last
        // row before them.
        EXPECT_EQ(cell(2, 2), "X");
        EXPECT_EQ(cell(3, 2), "");
        EXPECT_EQ(rowRecord(2)->color.colorIndex(), 1);
        EXPECT_EQ(currentCell(), std::make_pair(1, 5));
        clickCell(1, 5);
        clickButton(1);
    });
    OvDbDatabase* saved = savedDrawing();
    EXPECT_FALSE(wireRecord(saved, "PUMP_A").isEmpty());
    EXPECT_FALSE(wireRecord(saved, "PUMP_B").isEmpty());
    EXPECT_TRUE(wireRecord(saved, "VALVE").isEmpty());
}

// The rows copied in one run are pasted in the next. Then two lines from another program:
// the paste looks up a second copied row that is not there. That ends the paste, not the
// dialog: the drafter's work before and after it is saved at OK.
TEST_F(EditWTDlgTest, RowsCopiedInOneRunArePastedInTheNextAndAPasteOfMoreEndsOnlyThePaste) {
    wireTypeDrawing({"RED_1"}, {.saved = true});
    runEditDialog([&] {
        typeInto(1, 3, "RD");
        typeInto(1, 4, "1");
        clickCell(1, 3);
        clickCell(1, 4, Qt::ShiftModifier);
        key(Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(QApplication::clipboard()->text(), "RD\t1\n");
        // Ctrl+C in the format edit is the edit's own.
        dialog().GetDlgItem(1019)->setFocus();
        key(Qt::Key_C, Qt::ControlModifier);
        messages().answer(platform::IDNO);
        clickButton(2);
    });
    const int result = runEditDialog([&] {
        clickCell(2, 3);
        key(Qt::Key_V, Qt::ControlModifier);
        EXPECT_EQ(cell(2, 3), "RD");
        EXPECT_EQ(cell(2, 4), "1");

        QApplication::clipboard()->setText("GN\t2\tGN_2\nYE\t4\tYE_4\n");
        clickCell(3, 3);
        clearOutput();
        key(Qt::Key_V, Qt::ControlModifier);
        settle();
        EXPECT_TRUE(output().contains("; error: exception in a key press"))
            << output().toStdString();
        ASSERT_TRUE(dialog().isVisible());
        EXPECT_EQ(cell(3, 3), "GN") << "the first line is pasted";
        typeInto(1, 3, "WH");
        clickCell(1, 3);
        clickButton(1);
    });
    EXPECT_EQ(result, platform::TemplateDialog::IDOK);
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0) << "the keys start again for the next dialog";
    OvDbDatabase* saved = savedDrawing();
    EXPECT_TRUE(wireRecord(saved, "RD_1").contains("(1 . \"RD\") (2 . \"1\")"))
        << wireRecord(saved, "RD_1").toStdString();
    EXPECT_TRUE(wireRecord(saved, "RED_1").contains("(1 . \"WH\")"))
        << wireRecord(saved, "RED_1").toStdString();
}

TEST_F(EditWTDlgTest, PastedRowsWithBadNamesTellTheFaultOnce) {
    wireTypeDrawing({"RED_1"}, {.saved = true});
    runEditDialog([&] {
        // Real boxes, closed with Enter as they come up: what is queued behind one runs in
        // its loop, as on the desktop.
        platform::setMessageBoxMode(platform::MessageBoxMode::Desktop);
        QStringList told;
        QTimer closer;
        QObject::connect(&closer, &QTimer::timeout, [&] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                told << box->text();
                QTest::keyClick(box, Qt::Key_Return);
            }
        });
        closer.start(20);
        // A bad name, then a row with data and no name: the paste sends the cursor to the
        // second row, leaving the first, and then back to where it started.
        clickCell(2, 3);
        QApplication::clipboard()->setText("GN\t2\tGN<2\n\t\t\tY\n");
        key(Qt::Key_V, Qt::ControlModifier);
        QTest::qWait(200);
        settle();
        EXPECT_EQ(told.size(), 1) << told.join(" | ").toStdString();
        EXPECT_EQ(currentCell(), std::make_pair(2, 5));
        closer.stop();
        platform::setMessageBoxMode(platform::MessageBoxMode::Scripted);
        messages().answer(platform::IDNO);
        clickButton(2);
    });

    runEditDialog([&] {
        messages().clearShown();
        clickCell(2, 3);
        QApplication::clipboard()->setText("GN\t2\tGN<2\nYE\t4\tYE>4\n");
        key(Qt::Key_V, Qt::ControlModifier);
        settle();
        EXPECT_TRUE(messages().shown().empty()) << "told when the row is left";

        // Leaving the first bad row for the second sends the cursor back; on its way back
        // it leaves the second bad row, which must not send it away again.
        clickCell(3, 3);
        settle();
        EXPECT_EQ(currentCell(), std::make_pair(2, 5));
        EXPECT_EQ(messages().shown().size(), 1u);
        EXPECT_TRUE(grid().IsActiveCurrentCell()) << "the name at fault is open for typing";

        for (int i = 0; i < 4; ++i)
            key(Qt::Key_Backspace);
        typeText("GN_2");
        clickCell(3, 5);
        contextMenu(3, 5, 40043);
        for (int i = 0; i < 4; ++i)
            key(Qt::Key_Backspace);
        typeText("YE_4");
        clickCell(1, 3);
        settle();
        EXPECT_EQ(messages().shown().size(), 1u);
        clickButton(1);
    });
    OvDbDatabase* saved = savedDrawing();
    EXPECT_TRUE(layerId(saved, "GN_2").isValid());
    EXPECT_TRUE(layerId(saved, "YE_4").isValid());
}

TEST_F(EditWTDlgTest, ImportBringsTheChosenWireTypesAndRemembersTheirFolder) {
    wireTypeDrawing({"RED_1"}, {.saved = true});
    const QString project = tempPath("project/demo.wdp");
    evalLisp("(setq GBL_wd_prj \"" + project + "\")");
    defineFunctions(true);
    const QString source = tempPath("other/import.dwg");
    ASSERT_TRUE(QFile::copy(QStringLiteral(ZEL_DEMO_DIR "/drawings/import.dwg"), source));
    ZelEditWTDlg::ImportFolders().clear();

    OvEdBatchInput::instance().queueFile(source);
    runEditDialog([&] {
        whenModal([](QWidget* modal) {
            auto* import = dynamic_cast<platform::TemplateDialog*>(modal);
            if (!import) {
                ADD_FAILURE() << "not the import dialog: " << modal->windowTitle().toStdString();
                modal->close();
                return;
            }
            // Three rows chosen: the toggle clears all, then a click and two Ctrl+clicks.
            clickButton(*import, 1036);
            clickButton(*import, 1036);
            auto& list = static_cast<ZelImportWTDlg*>(import)->grid();
            for (const int row : {2, 4, 6})
                clickCell(list, row, 3, row == 2 ? Qt::NoModifier : Qt::ControlModifier);
            // Both the look and the properties of the other drawing come along.
            for (const int id : {1037, 1039}) {
                if (import->IsDlgButtonChecked(id) != 1)
                    clickButton(*import, id);
            }
            clickButton(*import, 1);
        });
        clickButton(1034);
        ASSERT_TRUE(modalSeen());
        EXPECT_EQ(gridNames(), (QStringList{"RED_1", "BK_1.5", "GY_0.5", "WH_0.75"}));
        clickCell(1, 5);

        clickButton(1);
    });
    EXPECT_EQ(ZelEditWTDlg::ImportFolders(),
              (std::vector<QString>{project, tempPath("other") + "/"}));

    OvDbDatabase* saved = savedDrawing();
    for (const char* name : {"BK_1.5", "GY_0.5", "WH_0.75"})
        EXPECT_FALSE(wireRecord(saved, name).isEmpty()) << name;
    EXPECT_TRUE(wireRecord(saved, "BN_1").isEmpty()) << "not chosen";
    EXPECT_FALSE(wireRecord(saved, "RED_1").isEmpty());
}
