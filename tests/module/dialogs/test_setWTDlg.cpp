// The set wire type dialog, opened by (zel_wire_type_sel "1") and worked with the mouse and
// the keyboard over a drawing with wire types.

#include "support/ZelUiTest.h"

namespace {

const QStringList kWireTypes = {"BLU_1.0", "RED_1.5", "YEL_2.5"};

class SetWTDlgTest : public ZelUiTest {
protected:
    OvDbDatabase* drawing(bool makeAllValid = false) {
        OvDbDatabase* database = wireTypeDrawing(
            kWireTypes,
            {.lookFromNames = true, .current = "BLU_1.0", .makeAllValid = makeAllValid});
        defineFunctions();
        return database;
    }
};

// A click and OK, a row header and OK, or a double click choose.
TEST_F(SetWTDlgTest, TheChosenRowIsAnsweredAndMadeCurrentAndMakeAllValidIsStoredAsOff) {
    OvDbDatabase* database = drawing(true);
    ASSERT_TRUE(currentRecord(database).endsWith("|1")) << currentRecord(database).toStdString();
    const struct {
        QString layer;
        std::function<void(platform::TemplateDialog&)> choose;
    } ways[] = {
        {"RED_1.5",
         [&](platform::TemplateDialog& dialog) {
             EXPECT_EQ(dialog.windowTitle(), moduleString(165));
             EXPECT_FALSE(dialog.IsDlgItemEnabled(1)) << "OK before any row was chosen";
             clickCell(rowOf("RED_1.5"), 3);
             clickButton(1);
         }},
        {"YEL_2.5",
         [&](platform::TemplateDialog&) {
             clickRowHeader(rowOf("YEL_2.5"));
             clickButton(1);
         }},
        {"RED_1.5", [&](platform::TemplateDialog&) { doubleClickCell(rowOf("RED_1.5"), 4); }},
    };
    for (const auto& way : ways) {
        EXPECT_EQ(runWith("(zel_wire_type_sel \"1\")", {way.choose}),
                  QStringLiteral(R"(("%1" "0" "0" "1" "0"))").arg(way.layer));
        // The default stays, the chosen row becomes current and the stored format is kept;
        // this dialog leaves the make-all-valid box alone, so it is stored as off.
        EXPECT_EQ(currentRecord(database), "BLU_1.0|" + way.layer + "|%C_%S|0");
    }
}

// OK itself is greyed until a choice; Enter must not go round it.
TEST_F(SetWTDlgTest, CancelEscAndEnterWithoutAChoiceLeaveTheDrawingAlone) {
    OvDbDatabase* database = drawing();
    const QString before = currentRecord(database);
    EXPECT_EQ(runWith("(zel_wire_type_sel \"1\")", {[&](platform::TemplateDialog&) {
                          clickCell(rowOf("RED_1.5"), 3);
                          clickButton(2);
                      }}),
              "nil");
    EXPECT_EQ(runWith("(zel_wire_type_sel \"1\")", {[&](platform::TemplateDialog& dialog) {
                          key(Qt::Key_Return);
                          EXPECT_TRUE(dialog.isVisible());
                          // F1 and Help show the dialog's page.
                          key(Qt::Key_F1);
                          clickButton(1013);
                          clickCell(rowOf("RED_1.5"), 3);
                          key(Qt::Key_Escape);
                      }}),
              "nil");
    EXPECT_EQ(currentRecord(database), before);
    EXPECT_EQ(output().count("set_wire_type_dialog"), 2) << output().toStdString();
}

} // namespace
