// The import end to end: orvex run in batch, the dialog driven by a queued automation
// procedure with real input events, and the task dialog of a drawing that cannot be read.

#include "support/ZelUiTest.h"

#include <QProcess>

namespace {

using DialogBatchTest = ZelUiTest;

TEST_F(DialogBatchTest, ImportDrivenInABatchRun) {
    const QString path = importDrawing();
    const QString source = "\"" + path + "\"";
    const QStringList evals = {
        // OK on two rows chosen by hand, with the appearance box ticked.
        "(progn (orvex-dialog-queue (lambda () (orvex-dialog-click 1036) (orvex-dialog-click 1036)"
        " (orvex-grid-click 1035 4 3) (orvex-grid-click 1035 2 3 \"Ctrl\")"
        " (orvex-dialog-check 1037 T) (orvex-dialog-click 1)))"
        " (zel_invoke_importwt_dlg " +
            source + " 1 (list " + source + ")))",
        // A drawing that cannot be read: nil, and the task dialog says why, once answered.
        "(progn (orvex-dialog-queue (lambda () (orvex-dialog-answer 1)))"
        " (list (zel_invoke_importwt_dlg \"/nonexistent/none.dwg\" 1 nil)"
        " (length (orvex-dialog-messages))))",
    };
    QStringList arguments = {"--batch"};
    for (const QString& expression : evals)
        arguments << "--eval" << expression;
    QProcess orvex;
    orvex.start(programFolder() + "/orvex", arguments);
    ASSERT_TRUE(orvex.waitForFinished(180000));
    const QString out = QString::fromUtf8(orvex.readAllStandardOutput());
    EXPECT_EQ(orvex.exitCode(), 0)
        << out.toStdString() << orvex.readAllStandardError().toStdString();
    const QStringList lines = out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 2) << out.toStdString();
    EXPECT_TRUE(lines[0].startsWith("(" + source + " (0 1) ((\"GY_0.5\" \"GY\" \"0.5\" \"PVC\""))
        << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains(") (\"BK_1.5\" \"BK\" \"1.5\" \"Rubber\""))
        << lines[0].toStdString();
    EXPECT_EQ(lines[1], "(nil 1)");
}

} // namespace
