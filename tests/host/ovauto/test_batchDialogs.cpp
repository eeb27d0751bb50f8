// The batch runner as a widget application: message boxes and file dialogs that a queued
// procedure drives, the exit status of a run whose procedure failed, and the report of
// procedures that no dialog used.

#include "OrvexProcess.h"

#include <gtest/gtest.h>

namespace {

OrvexProcess::Result batch(const QString& expression) {
    return OrvexProcess::batch(OrvexProcess::evals({expression}));
}

TEST(BatchDialogs, AProcedureAnswersAMessageBoxThatWouldElseTakeItsDefault) {
    // Undriven, it is printed and taken; a procedure that no dialog used is reported.
    const auto undriven = OrvexProcess::batch(
        OrvexProcess::evals({"(alert \"Plain notice\")", "(orvex-dialog-queue (lambda () nil))"}));
    EXPECT_EQ(undriven.exitCode, 0) << undriven.err.toStdString();
    EXPECT_EQ(undriven.out, "Orvex: Plain notice\nnil\n1\n; 1 queued dialog procedure(s) not used: "
                            "no dialog opened for them\n");

    const auto driven =
        batch("(progn (orvex-dialog-queue (lambda () (princ (orvex-dialog-title)) (princ \"|\")"
              " (orvex-dialog-answer \"OK\")))"
              " (alert \"Driven notice\")"
              " (orvex-dialog-queue (lambda () (orvex-dialog-answer 1)))"
              " (alert \"Answered by number\") (orvex-dialog-messages))");
    EXPECT_EQ(driven.exitCode, 0) << driven.err.toStdString();
    EXPECT_EQ(driven.out, "Orvex|\n((\"Orvex\" \"Driven notice\") (\"Orvex\" \"Answered by "
                          "number\"))\n");
}

// A procedure chooses a file by typing its name, and cancels the next dialog as a person would.
TEST(BatchDialogs, AProcedureChoosesAFileInARealFileDialogOrCancelsIt) {
    QTemporaryDir folder;
    const QString path = OrvexProcess::writeDrawing(folder.filePath("chosen.dwg"), "L1");
    const auto r = OrvexProcess::batch(OrvexProcess::evals(
        {QStringLiteral("(progn (orvex-dialog-queue (lambda ()"
                        " (orvex-dialog-set-text \"fileNameEdit\" \"chosen.dwg\")"
                        " (orvex-dialog-key \"Return\")))"
                        " (getfiled \"Open a drawing\" \"%1/\" \"dwg;dwt\" 0))")
             .arg(folder.path()),
         "(progn (orvex-dialog-queue (lambda () (orvex-dialog-cancel)))"
         " (getfiled \"Open a drawing\" \"\" \"dwg\" 0))"}));
    EXPECT_EQ(r.exitCode, 0) << r.out.toStdString() << r.err.toStdString();
    EXPECT_EQ(r.out, QStringLiteral("\"%1\"\nnil\n").arg(path));
}

TEST(BatchDialogs, AFaultyProcedureEndsTheRunWithStatusOne) {
    const auto failing =
        batch("(progn (orvex-dialog-queue (lambda () (orvex-dialog-click 77))) (alert \"x\") 5)");
    EXPECT_EQ(failing.exitCode, 1);
    EXPECT_EQ(failing.out, "; error: the procedure for dialog \"Orvex\" failed: "
                           "orvex-dialog-click: dialog \"Orvex\" has no control 77\n5\n");

    const auto leftOpen = batch("(progn (orvex-dialog-queue (lambda () nil)) (alert \"x\") 5)");
    EXPECT_EQ(leftOpen.exitCode, 1);
    EXPECT_EQ(leftOpen.out,
              "; error: dialog \"Orvex\" was left open by its procedure: cancelled\n5\n");

    const auto outside = batch("(orvex-dialog-click 1)");
    EXPECT_EQ(outside.exitCode, 1);
    EXPECT_TRUE(outside.out.contains("no dialog is being driven")) << outside.out.toStdString();
}

// The host's own dialogs as a script answers them: each picker chosen from and cancelled,
// a help topic and the index. Values come back on "@@ tag value" lines.
TEST(BatchDialogs, TheHostsDialogsAnswerAScriptAsTheyWouldADrafter) {
    const auto r = OrvexProcess::batch(OrvexProcess::evals({QStringLiteral(R"lisp((progn
(defun say (tag v) (princ (strcat "@@ " tag " " (vl-prin1-to-string v) "\n")))
(orvex-dialog-queue (lambda () (orvex-dialog-click "color-3") (orvex-dialog-click 1)))
(say "color" (orvex-color-dialog 7))
(orvex-dialog-queue (lambda () (orvex-dialog-set-text 1001 "blue") (orvex-dialog-click 2)))
(say "color-cancel" (orvex-color-dialog 7))
(orvex-dialog-queue (lambda () (orvex-dialog-choose 1001 "DASHED") (orvex-dialog-click 1)))
(say "linetype" (orvex-linetype-dialog "CONTINUOUS"))
(orvex-dialog-queue (lambda () (orvex-dialog-choose 1001 "DASHED") (orvex-dialog-key "Escape")))
(say "linetype-cancel" (orvex-linetype-dialog "CONTINUOUS"))
(orvex-dialog-queue (lambda () (orvex-dialog-choose 1001 "0.50 mm") (orvex-dialog-click 1)))
(say "lineweight" (orvex-lineweight-dialog 25))
(orvex-dialog-queue (lambda () (orvex-dialog-choose 1001 "0.50 mm") (orvex-dialog-click 2)))
(say "lineweight-cancel" (orvex-lineweight-dialog 25))
(orvex-dialog-queue (lambda () (say "help" (orvex-dialog-title)) (orvex-dialog-click 2)))
(help "zel.md" "import_wire_types_dialog")
(orvex-dialog-queue (lambda () (say "unknown" (orvex-dialog-title)) (orvex-dialog-click 2)))
(help "zel.md" "no_such_topic")
(princ)))lisp")}));
    EXPECT_EQ(r.exitCode, 0) << r.out.toStdString() << r.err.toStdString();
    for (const char* line :
         {"@@ color 3\n", "@@ color-cancel nil\n", "@@ linetype \"DASHED\"\n",
          "@@ linetype-cancel nil\n", "@@ lineweight 50\n", "@@ lineweight-cancel nil\n",
          "@@ help \"Import wire types\"\n", "@@ unknown \"Orvex help\"\n"})
        EXPECT_TRUE(r.out.contains(QString::fromUtf8(line))) << line << "\n" << r.out.toStdString();
    EXPECT_FALSE(r.out.contains("not driven")) << r.out.toStdString();
}

} // namespace
