// orvex, the reference host: the desktop program, or with --batch the batch runner.

#include "OvBatchOptions.h"
#include "OvBatchRunner.h"
#include "OvDesktop.h"

#include <QApplication>
#include <QDir>

#include <cstdio>
#include <exception>

namespace {

void printTo(FILE* stream, const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

QString addonFolder() {
    const QString fromEnvironment = qEnvironmentVariable("ORVEX_ADDON_DIR");
    return fromEnvironment.isEmpty() ? QCoreApplication::applicationDirPath()
                                     : QDir(fromEnvironment).absolutePath();
}

QtMessageHandler s_previousHandler = nullptr;

// The offscreen platform's notices about what a display would have (a runtime folder,
// window size hints) say nothing about the run; everything else goes on to Qt's handler.
void quietOffscreen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtWarningMsg &&
        (message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set")) ||
         message.startsWith(QLatin1String("This plugin does not support"))))
        return;
    if (s_previousHandler)
        s_previousHandler(type, context, message);
}

} // namespace

int main(int argc, char* argv[]) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    if (OvDesktopOptions::wanted(arguments))
        return OvDesktop::run(argc, argv);

    OvBatchOptions options;
    QString error;
    if (!options.parse(arguments, &error)) {
        printTo(stderr, QStringLiteral("orvex: %1\n\n%2").arg(error, OvBatchOptions::usage()));
        return 2;
    }
    switch (options.mode) {
    case OvBatchOptions::Mode::Help:
        printTo(stdout, OvBatchOptions::usage());
        return 0;
    case OvBatchOptions::Mode::Desktop:
        printTo(stderr, QStringLiteral("orvex: the desktop program is not there yet; it comes "
                                       "later. Run the batch form instead, for example:\n"
                                       "  orvex --batch --eval \"(+ 1 2)\" drawing.dwg\n"
                                       "See orvex --help.\n"));
        return 2;
    case OvBatchOptions::Mode::Batch:
        break;
    }

    // Dialogs really open in a batch run, so that scripts can drive them; without a
    // display they open on the offscreen platform.
    const bool offscreen = !qEnvironmentVariableIsSet("QT_QPA_PLATFORM") &&
                           !qEnvironmentVariableIsSet("DISPLAY") &&
                           !qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    if (offscreen) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        s_previousHandler = qInstallMessageHandler(quietOffscreen);
    }
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Orvex"));
    QCoreApplication::setApplicationVersion(QStringLiteral("26.0"));

    try {
        OvBatchRunner runner(options, QCoreApplication::applicationDirPath(), addonFolder());
        return runner.run();
    } catch (const std::exception& e) {
        printTo(stdout, QStringLiteral("\n; error: orvex stopped: %1\n").arg(e.what()));
    } catch (...) {
        printTo(stdout, QStringLiteral("\n; error: orvex stopped\n"));
    }
    return 1;
}
