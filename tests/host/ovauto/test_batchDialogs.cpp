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
    const auto undriven = batch("(alert \"Plain notice\")");
    EXPECT_EQ(undriven.exitCode, 0) << undriven.err.toStdString();
    EXPECT_EQ(undriven.out, "Orvex: Plain notice\nnil\n");

    const auto driven =
        batch("(progn (orvex-dialog-queue (lambda () (princ (orvex-dialog-title)) (princ \"|\")"
              " (orvex-dialog-answer \"OK\")))"
              " (alert \"Driven notice\") (orvex-dialog-messages))");
    EXPECT_EQ(driven.exitCode, 0) << driven.err.toStdString();
    EXPECT_EQ(driven.out, "Orvex|\n((\"Orvex\" \"Driven notice\"))\n");
}

TEST(BatchDialogs, AProcedureChoosesAFileInARealFileDialog) {
    QTemporaryDir folder;
    const QString path = OrvexProcess::writeDrawing(folder.filePath("chosen.dwg"), "L1");
    const auto r = batch(QStringLiteral("(progn (orvex-dialog-queue (lambda ()"
                                        " (orvex-dialog-set-text \"fileNameEdit\" \"chosen.dwg\")"
                                        " (orvex-dialog-key \"Return\")))"
                                        " (getfiled \"Open a drawing\" \"%1/\" \"dwg;dwt\" 0))")
                             .arg(folder.path()));
    EXPECT_EQ(r.exitCode, 0) << r.out.toStdString() << r.err.toStdString();
    EXPECT_EQ(r.out, QStringLiteral("\"%1\"\n").arg(path));

    // With nothing queued at all it is cancelled as before.
    const auto cancelled = batch("(getfiled \"Open a drawing\" \"\" \"dwg\" 0)");
    EXPECT_TRUE(cancelled.out.contains("no file name is queued")) << cancelled.out.toStdString();
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

TEST(BatchDialogs, ProceduresThatNoDialogUsedAreReported) {
    const auto r = batch("(orvex-dialog-queue (lambda () nil))");
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out, "1\n; 1 queued dialog procedure(s) not used: no dialog opened for them\n");
}

} // namespace
