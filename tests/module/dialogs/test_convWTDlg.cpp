// The change wire type dialog, opened by zel_wire_type_sel with any mode but "1": its two
// options, the wire given by the caller, and the pick on screen that reopens the same
// dialog, with picks answered from the editor's queue.

#include "support/ZelUiTest.h"

#include "ovcore/OvEdBatchInput.h"

namespace {

const QStringList kWireTypes = {"BLU_1.0", "RED_1.5", "YEL_2.5"};

class ConvWTDlgTest : public ZelUiTest {
protected:
    void SetUp() override {
        ZelUiTest::SetUp();
        m_database = wireTypeDrawing(kWireTypes, {.lookFromNames = true, .current = "BLU_1.0"});
        defineFunctions();
        m_before = currentRecord(m_database);
    }
    void TearDown() override {
        // Nothing the change dialog does is written to the drawing.
        EXPECT_EQ(currentRecord(m_database), m_before);
        ZelUiTest::TearDown();
    }

    OvDbDatabase* m_database = nullptr;
    QString m_before;
};

TEST_F(ConvWTDlgTest, OkReadsTheLayerOfASelectedRowElseTheTextOfTheCurrentCell) {
    EXPECT_EQ(runWith("(zel_wire_type_sel \"0\")", {[&](platform::TemplateDialog&) {
                          clickRowHeader(rowOf("RED_1.5"));
                          // Both off: element 4 is inverted against its box, 5 is not.
                          clickButton(1009);
                          clickButton(1008);
                          clickButton(1);
                      }}),
              R"(("RED_1.5" "0" "1" "1" "0"))");
    // A click in the wire colour column without a row selected answers that cell's text.
    EXPECT_EQ(runWith("(zel_wire_type_sel \"0\")", {[&](platform::TemplateDialog&) {
                          clickCell(rowOf("YEL_2.5"), 3);
                          clickButton(1);
                      }}),
              R"(("YEL" "0" "1" "0" "1"))");
}

TEST_F(ConvWTDlgTest, OnlyTheExactModeOneSetsAnyOtherChangesAndKeysDoNotChoose) {
    // "01", " 1", a number and no mode at all open this dialog: its options are there. A
    // double click and Enter choose nothing, F1 and Help show its page, Esc cancels.
    for (const QString call : {"(zel_wire_type_sel \"01\")", "(zel_wire_type_sel \" 1\")",
                               "(zel_wire_type_sel 1)", "(zel_wire_type_sel)"}) {
        SCOPED_TRACE(call.toStdString());
        clearOutput();
        EXPECT_EQ(runWith(call, {[&](platform::TemplateDialog& dialog) {
                              EXPECT_EQ(dialog.windowTitle(), "Change/Convert Wire Type");
                              for (const int id : {1008, 1009, 1010})
                                  EXPECT_TRUE(dialog.IsDlgItemVisible(id)) << id;
                              doubleClickCell(rowOf("RED_1.5"), 3);
                              EXPECT_TRUE(dialog.isVisible()) << "after the double click";
                              key(Qt::Key_Return);
                              EXPECT_TRUE(dialog.isVisible()) << "after Enter";
                              key(Qt::Key_F1);
                              clickButton(1013);
                              key(Qt::Key_Escape);
                          }}),
                  "nil");
        EXPECT_EQ(output().count("change_convert_wire_type_dialog"), 2) << output().toStdString();
    }
}

TEST_F(ConvWTDlgTest, AWireGivenByTheCallerIsChosenAndOkIsLiveAtOnceUnlessOnNoWireType) {
    queuePickOf(m_lines.value("YEL_2.5"));
    evalLisp(QStringLiteral("(setq wire (car (entsel)))"));
    queuePickOf(m_plainLine);
    evalLisp(QStringLiteral("(setq plain (car (entsel)))"));
    const char* const chosen = R"(("YEL_2.5" "0" "1" "0" "1"))";
    // The wire as entsel gives it, a list led by the name, and as the plain name; a wire on
    // no wire type chooses nothing, and says nothing either.
    for (const auto& [call, answer] :
         {std::pair{"(zel_wire_type_sel \"0\" (list wire '(0.0 0.0 0.0)))", chosen},
          {"(zel_wire_type_sel \"0\" wire)", chosen},
          {"(zel_wire_type_sel \"0\" plain)", "nil"}}) {
        SCOPED_TRACE(call);
        const bool onWireType = QString(answer) != "nil";
        EXPECT_EQ(runWith(call, {[&](platform::TemplateDialog& dialog) {
                              EXPECT_EQ(dialog.IsDlgItemEnabled(1), onWireType);
                              if (onWireType) {
                                  EXPECT_EQ(currentCell(), std::make_pair(rowOf("YEL_2.5"), 5));
                              }
                              clickButton(onWireType ? 1 : 2);
                          }}),
                  answer);
    }
    EXPECT_TRUE(messages().shown().empty());
}

// OK looks at the selected rows before the current cell, and a pick only moves the current
// cell: the row the drafter selected wins over the picked wire's. Each pick reopens the same
// dialog, its rows not loaded again and its options back on.
TEST_F(ConvWTDlgTest, PicksOnANonWireLayerOrAnotherWireOrNothingKeepTheChoice) {
    queuePickOf(m_plainLine);
    queuePickOf(m_lines.value("RED_1.5"));
    OvEdBatchInput::instance().queuePickCancel();
    const QString answer =
        runWith("(zel_wire_type_sel \"0\")",
                {[&](platform::TemplateDialog&) { clickButton(1010); },
                 [&](platform::TemplateDialog& dialog) {
                     EXPECT_FALSE(dialog.IsDlgItemEnabled(1)) << "nothing chosen yet";
                     clickRowHeader(rowOf("BLU_1.0"));
                     // The option is live once a row is chosen; the change does not outlive
                     // the pick.
                     clickButton(1008);
                     clickButton(1010);
                 },
                 [&](platform::TemplateDialog& dialog) {
                     EXPECT_TRUE(dialog.IsDlgItemEnabled(1)) << "on the picked wire's row";
                     EXPECT_EQ(dialog.IsDlgButtonChecked(1008), 1);
                     EXPECT_EQ(dialog.IsDlgButtonChecked(1009), 1);
                     EXPECT_EQ(currentCell().first, rowOf("RED_1.5"));
                     EXPECT_EQ(grid().GetWireTypeRows(), 3);
                     clickButton(1010);
                 },
                 [&](platform::TemplateDialog&) {
                     EXPECT_EQ(grid().GetSelectedRows(false, false),
                               std::vector<quint32>{static_cast<quint32>(rowOf("BLU_1.0"))});
                     clickButton(1);
                 }});
    EXPECT_EQ(answer, R"(("BLU_1.0" "0" "1" "0" "1"))");
    ASSERT_EQ(m_openings.size(), 4);
    for (const QObject* opening : m_openings)
        EXPECT_EQ(opening, m_openings[0]) << "a pick must reopen the same dialog";
    EXPECT_TRUE(output().contains(moduleString(157).trimmed())) << output().toStdString();
    ASSERT_EQ(messages().shown().size(), 1u);
    EXPECT_EQ(messages().shown().front().text,
              "The picked object lies on layer PLAIN, which is not a wire type.");
    EXPECT_EQ(messages().shown().front().caption, moduleString(150));
}

} // namespace
