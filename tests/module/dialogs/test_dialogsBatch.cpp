// The import and property names functions end to end: orvex run in batch, the dialogs
// driven by queued automation procedures with real input events.

#include "support/ZelUiTest.h"

#include <QFile>
#include <QProcess>

namespace {

using DialogBatchTest = ZelUiTest;

TEST_F(DialogBatchTest, ImportAndPropertyNamesDrivenInABatchRun) {
    const QString path = importDrawing();
    const QString source = "\"" + path + "\"";
    const QStringList evals = {
        // OK on two rows chosen by hand, with the appearance box ticked.
        "(progn (orvex-dialog-queue (lambda () (orvex-dialog-click 1036) (orvex-dialog-click 1036)"
        " (orvex-grid-click 1035 4 3) (orvex-grid-click 1035 2 3 \"Ctrl\")"
        " (orvex-dialog-check 1037 T) (orvex-dialog-click 1)))"
        " (zel_invoke_importwt_dlg " +
            source + " 1 (list " + source + ")))",
        // Cancel gives the named row; the box keeps what the OK left.
        "(progn (orvex-dialog-queue (lambda () (orvex-dialog-check 1037 nil)"
        " (orvex-dialog-click 2)))"
        " (mapcar 'car (caddr (zel_invoke_importwt_dlg " +
            source + " 1 (list " + source + " \"WH_0.75\")))))",
        "(cadr (zel_invoke_importwt_dlg " + source + " 1 nil))",
        "(progn (orvex-dialog-queue (lambda () (orvex-dialog-click 1)))"
        " (zel_rename_wire_properties \"Cable,\\\"Rating, max\\\"\"))",
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
    ASSERT_EQ(lines.size(), 6) << out.toStdString();
    EXPECT_TRUE(lines[0].startsWith("(" + source + " (0 1) ((\"GY_0.5\" \"GY\" \"0.5\" \"PVC\""))
        << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains(") (\"BK_1.5\" \"BK\" \"1.5\" \"Rubber\""))
        << lines[0].toStdString();
    EXPECT_EQ(lines[1], "(\"WH_0.75\")");
    // An undriven dialog is reported and cancelled by the batch run; the options are the
    // last OK's.
    EXPECT_TRUE(lines[2].contains("not driven")) << lines[2].toStdString();
    EXPECT_EQ(lines[3], "(0 1)");
    EXPECT_EQ(lines[4], "\"Cable,\\\"Rating, max\\\"" + QString(18, u',') + "\"");
    EXPECT_EQ(lines[5], "(nil 1)");
}

} // namespace
