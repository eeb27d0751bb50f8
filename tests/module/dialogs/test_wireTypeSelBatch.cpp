// zel_wire_type_sel end to end: orvex --batch on a copy of the demo project, the dialogs
// driven by the host's dialog automation from a LISP script, picks from the pick queue.

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const char* const kScript = R"lisp(
(defun say (tag value) (princ (strcat "\n@@ " tag " " (vl-prin1-to-string value) "\n")))
(entmake '((0 . "LINE") (8 . "RD_1.5") (10 0 0 0) (11 1 1 0)))
(setq wire (entlast))
(entmake '((0 . "LINE") (8 . "0") (10 0 0 0) (11 1 1 0)))
(setq plain (entlast))

(orvex-dialog-queue (lambda () (say "ok-before" (orvex-dialog-enabled 1))
                               (orvex-grid-click 1002 2 5) (orvex-dialog-click 1)))
(say "set" (zel_wire_type_sel "1"))
(say "current" (zel_get_current_wiretype))

(orvex-dialog-queue (lambda () (orvex-grid-click 1002 3 5) (orvex-dialog-click 1)))
(say "change-on" (zel_wire_type_sel "0"))
(orvex-dialog-queue (lambda () (orvex-grid-click 1002 3 5) (orvex-dialog-check 1008 nil)
                               (orvex-dialog-check 1009 nil) (orvex-dialog-click 1)))
(say "change-off" (zel_wire_type_sel "0"))

(orvex-queue-pick wire)
(orvex-dialog-queue (lambda () (orvex-dialog-click 1010)))
(orvex-dialog-queue (lambda () (say "ok-after-pick" (orvex-dialog-enabled 1))
                               (orvex-dialog-click 1)))
(say "pick-wire" (zel_wire_type_sel "0"))

(orvex-queue-pick plain)
(orvex-dialog-queue (lambda () (orvex-dialog-click 1010)))
(orvex-dialog-queue (lambda () (orvex-dialog-answer 1)))
(orvex-dialog-queue (lambda () (say "ok-after-plain" (orvex-dialog-enabled 1))
                               (orvex-dialog-click 2)))
(say "pick-plain" (zel_wire_type_sel "0"))
(say "messages" (orvex-dialog-messages))

(orvex-dialog-queue (lambda () (say "title-01" (orvex-dialog-title)) (orvex-dialog-cancel)))
(say "mode-01" (zel_wire_type_sel "01"))
(say "current-after" (zel_get_current_wiretype))
)lisp";

// Each "@@ tag value" line of the run, by tag.
QMap<QString, QString> said(const QString& output) {
    QMap<QString, QString> values;
    const QRegularExpression line(QStringLiteral("^@@ (\\S+) (.*)$"),
                                  QRegularExpression::MultilineOption);
    for (auto it = line.globalMatch(output); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        values.insert(match.captured(1), match.captured(2).trimmed());
    }
    return values;
}

TEST(WireTypeSelBatch, TheDialogsDrivenFromAScriptAnswerAsADrafterChose) {
    // orvex is built beside the tests; the program's main made the application.
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QDir().mkpath(folder.filePath("drawings"));
    for (const char* name : {"demo.zpj", "demo.db", "drawings/demo.dwg"})
        ASSERT_TRUE(QFile::copy(QStringLiteral(ZEL_DEMO_DIR "/") + name, folder.filePath(name)))
            << name;
    QFile script(folder.filePath("drive.lsp"));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write(kScript);
    script.close();

    QProcess orvex;
    orvex.start(QCoreApplication::applicationDirPath() + "/orvex",
                {"--batch", "--project", folder.filePath("demo.zpj"),
                 folder.filePath("drawings/demo.dwg"), "--script", script.fileName()});
    ASSERT_TRUE(orvex.waitForFinished(180000)) << "orvex did not finish";
    const QString out = QString::fromUtf8(orvex.readAllStandardOutput());
    EXPECT_EQ(orvex.exitCode(), 0) << out.toStdString();
    const QMap<QString, QString> v = said(out);

    // The demo's wire types in the grid's order: BK_1.5, BU_0.75, GNYE_2.5, RD_1.5, BK_2.5.
    EXPECT_EQ(v["ok-before"], "nil");
    EXPECT_EQ(v["set"], R"(("BU_0.75" "0" "0" "1" "0"))");
    EXPECT_EQ(v["current"], R"("BU_0.75")");
    EXPECT_EQ(v["change-on"], R"(("GNYE_2.5" "0" "1" "0" "1"))");
    EXPECT_EQ(v["change-off"], R"(("GNYE_2.5" "0" "1" "1" "0"))");
    EXPECT_EQ(v["ok-after-pick"], "T");
    EXPECT_EQ(v["pick-wire"], R"(("RD_1.5" "0" "1" "0" "1"))");
    EXPECT_EQ(v["ok-after-plain"], "nil");
    EXPECT_EQ(v["pick-plain"], "nil");
    EXPECT_TRUE(v["messages"].contains("layer 0, which is not a wire type"))
        << v["messages"].toStdString();
    EXPECT_EQ(v["title-01"], R"("Change/Convert Wire Type")");
    EXPECT_EQ(v["mode-01"], "nil");
    // Only the set dialog changes the current wire type.
    EXPECT_EQ(v["current-after"], R"("BU_0.75")");
}

} // namespace
