// Editor input without a window: picks and file names from the batch queues, help at the
// command line, and a provider that takes the batch queues' place.
#include "OvcoreTest.h"

#include "ovcore/OvEdInput.h"

namespace {

class EdInput : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        newDocument();
        eval("(entmake '((0 . \"LINE\") (10 1.0 2.0 0.0) (11 3.0 4.0 0.0)))");
        eval("(setq ln (entlast))");
        eval("(entmake '((0 . \"INSERT\") (2 . \"WD_M\") (66 . 1) (10 7.0 8.0 0.0)))"
             "(entmake '((0 . \"ATTRIB\") (2 . \"T\") (1 . \"x\") (10 9.0 9.0 0.0)))"
             "(entmake '((0 . \"SEQEND\")))");
        eval("(setq ins (entlast) att (entnext ins))");
    }
};

TEST_F(EdInput, PicksComeFromTheQueueInOrder) {
    eval("(orvex-queue-pick ln) (orvex-queue-pick ln '(2 3)) (orvex-queue-pick att) "
         "(orvex-queue-pick nil)");
    EXPECT_EQ(OvEdBatchInput::instance().pendingPicks(), 4);
    // Without a point the pick lies on the entity; an attribute is picked with its INSERT.
    EXPECT_EQ(eval("(equal (entsel) (list ln '(1.0 2.0 0.0)))"), "T");
    EXPECT_EQ(eval("(cadr (entsel \"\\nPick a wire: \"))"), "(2.0 3.0 0.0)");
    EXPECT_EQ(eval("(equal (entsel) (list ins '(9.0 9.0 0.0)))"), "T");
    QString value;
    EXPECT_TRUE(printed("(entsel)", &value).contains("*Cancel*"));
    EXPECT_EQ(value, "nil");
    EXPECT_EQ(OvEdBatchInput::instance().pendingPicks(), 0);

    // An empty queue cancels and says so.
    const QString out = printed("(entsel \"Which one? \")", &value);
    EXPECT_EQ(value, "nil");
    EXPECT_TRUE(out.contains("Which one? ") && out.contains("no pick is queued"))
        << out.toStdString();

    // Nothing but a live entity of the drawing is picked.
    ov_name line;
    entityName("ln", line);
    ov_name picked = {0, 0};
    double point[3] = {0, 0, 0};
    eval("(entdel ln)");
    OvEdBatchInput::instance().queuePick(line);
    EXPECT_EQ(ovedEntSel(nullptr, picked, point), RTERROR);
    const ov_name gone = {line[0] + 1000, line[1]};
    OvEdBatchInput::instance().queuePick(gone);
    EXPECT_EQ(ovedEntSel(nullptr, picked, point), RTERROR);
    EXPECT_EQ(ovedEntSel(nullptr, nullptr, point), RTERROR);
    EXPECT_EQ(ovdbEntGet(nullptr), nullptr);
    expectRefused("(orvex-queue-pick ln '(1 \"a\"))", "bad argument type");
    EXPECT_EQ(OvEdBatchInput::instance().pendingPicks(), 0);
}

TEST_F(EdInput, FileNamesComeFromTheQueue) {
    eval("(orvex-queue-file \"/tmp/pläne/ß.dwt\") (orvex-queue-file nil)");
    EXPECT_EQ(eval("(getfiled \"Open\" \"\" \"dwg;dwt\" 0)"), "\"/tmp/pläne/ß.dwt\"");
    EXPECT_EQ(eval("(getfiled \"Open\" \"\" \"dwg\" 0)"), "nil");

    // Cancelled, the result stays as it was.
    resbuf untouched{};
    untouched.restype = RTNONE;
    clearOutput();
    EXPECT_EQ(ovedGetFileD(L"Save drawing", nullptr, L"dwg", 1, &untouched), RTCAN);
    EXPECT_EQ(untouched.restype, RTNONE);
    EXPECT_TRUE(output().contains("no file name is queued") && output().contains("Save drawing"))
        << output().toStdString();
    EXPECT_EQ(ovedGetFileD(L"Open", nullptr, nullptr, 0, nullptr), RTERROR);
    // The flags are checked after the three texts, on their own.
    expectRefused("(getfiled \"Open\" \"\" \"dwg\" \"0\")", "bad argument type");

    eval("(orvex-queue-file \"a\") (orvex-queue-pick nil) (orvex-queue-clear)");
    EXPECT_EQ(OvEdBatchInput::instance().pendingFiles(), 0);
    EXPECT_EQ(OvEdBatchInput::instance().pendingPicks(), 0);
}

TEST_F(EdInput, AProviderTakesTheQueuesPlace) {
    RecordingProvider provider;
    OvEdInputProvider* batch = ovedSetInputProvider(&provider);
    EXPECT_EQ(batch, &OvEdBatchInput::instance());
    eval("(orvex-queue-pick ln)");
    EXPECT_EQ(eval("(entsel \"Pick: \")"), "nil");
    EXPECT_EQ(eval("(getfiled \"Open\" \"/d\" \"dwg\" 4)"), "\"/chosen.dwg\"");
    eval("(help \"f\" \"t\" 3)");
    EXPECT_EQ(provider.calls, QStringList({"pick Pick: ", "file Open /d dwg 4", "help f t 3"}));
    EXPECT_EQ(ovedSetInputProvider(nullptr), &provider);
    EXPECT_EQ(ovedInputProvider(), batch);
    // The queued pick waited for the batch provider, which prints help at the command line.
    EXPECT_EQ(eval("(equal (car (entsel)) ln)"), "T");
    EXPECT_TRUE(printed("(help \"wiretype.md\" \"set_wire_type_dialog\")")
                    .contains("Help: wiretype.md set_wire_type_dialog\n"));
}

} // namespace
