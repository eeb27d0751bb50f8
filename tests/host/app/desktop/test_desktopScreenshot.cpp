// The real orvex program on a real (virtual) display: its main window draws the demo
// drawing. The screen is captured from outside, as a person would see it.

#include "ovdb/OvCmColor.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace {

// Pixels of `color` in the left part of the screen, where the drawing view is.
int pixelsOf(const QImage& image, QRgb color) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width() / 2; ++x)
            count += (image.pixel(x, y) & 0xffffff) == (color & 0xffffff);
    return count;
}

TEST(DesktopOnScreen, TheMainWindowDrawsTheDemoDrawing) {
    const QString xvfb = QStandardPaths::findExecutable("xvfb-run");
    const QString capture = QStandardPaths::findExecutable("import");
    if (xvfb.isEmpty() || capture.isEmpty())
        GTEST_SKIP() << "xvfb-run or import (imagemagick) is not installed: no screenshot test";

    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString shot = dir.filePath("screen.png");
    const QString stop = dir.filePath("stop");
    const QString demo = QStringLiteral(ZEL_DEMO_DIR);
    // Capture the screen every half second until told to stop; then end orvex.
    const QString script = QStringLiteral(
        "\"$ORVEX\" --project \"$DEMO/demo.zpj\" \"$DEMO/drawings/demo.dwg\" & pid=$!\n"
        "while [ ! -e \"$STOP\" ] && kill -0 $pid 2>/dev/null; do\n"
        "  import -window root \"$SHOT.tmp.png\" 2>/dev/null && mv \"$SHOT.tmp.png\" \"$SHOT\"\n"
        "  sleep 0.5\n"
        "done\n"
        "kill $pid 2>/dev/null; wait $pid 2>/dev/null; exit 0\n");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_QPA_PLATFORM");
    environment.insert("XDG_CONFIG_HOME", dir.filePath("config"));
    environment.insert("ORVEX", QStringLiteral(ORVEX_PROGRAM));
    environment.insert("SHOT", shot);
    environment.insert("STOP", stop);
    // The demo drawing is opened for editing: its lock must not stay behind in the build
    // tree, so orvex works on a copy of the project.
    QDir(dir.path()).mkpath("demo/drawings");
    for (const char* file : {"demo.zpj", "demo.db", "drawings/demo.dwg", "drawings/import.dwg"})
        QFile::copy(QDir(demo).filePath(QLatin1String(file)),
                    dir.filePath(QStringLiteral("demo/") + QLatin1String(file)));
    environment.insert("DEMO", dir.filePath("demo"));

    QProcess run;
    run.setProcessEnvironment(environment);
    run.start(xvfb, {"-a", "-s", "-screen 0 1280x1024x24", "sh", "-c", script});
    ASSERT_TRUE(run.waitForStarted());

    // The red and blue wires of the demo, in their layers' colours on the view's ground.
    const QRgb red = OvCmColor::rgbOfIndex(1);
    const QRgb blue = OvCmColor::rgbOfIndex(5);
    const QRgb ground = qRgb(33, 40, 48);
    QImage image;
    bool drawn = false;
    QElapsedTimer clock;
    clock.start();
    while (!drawn && clock.elapsed() < 120000 && run.state() == QProcess::Running) {
        QThread::msleep(500);
        if (!image.load(shot))
            continue;
        drawn = pixelsOf(image, ground) > 10000 && pixelsOf(image, red) > 50 &&
                pixelsOf(image, blue) > 50;
    }
    QFile(stop).open(QIODevice::WriteOnly);
    run.waitForFinished(60000);
    EXPECT_TRUE(drawn) << "no drawing on screen; last capture: " << image.width() << "x"
                       << image.height()
                       << ", output: " << run.readAllStandardError().toStdString();
}

} // namespace
