// orvex, the reference host: the desktop program, or with --batch the batch runner.

#include "OvBatchOptions.h"
#include "OvBatchRunner.h"
#include "OvDesktop.h"

#include <QCoreApplication>
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

} // namespace

int main(int argc, char* argv[]) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    if (OvDesktopOptions::wanted(arguments))
        return OvDesktop::run(argc, argv);

    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Orvex"));
    QCoreApplication::setApplicationVersion(QStringLiteral("26.0"));

    OvBatchOptions options;
    QString error;
    if (!options.parse(app.arguments().mid(1), &error)) {
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
