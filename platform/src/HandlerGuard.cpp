#include "platform/HandlerGuard.h"

#include <QtGlobal>

namespace platform {

namespace {

HandlerExceptionReporter& reporter() {
    static HandlerExceptionReporter instance;
    return instance;
}

} // namespace

void setHandlerExceptionReporter(HandlerExceptionReporter newReporter) {
    reporter() = std::move(newReporter);
}

void reportHandlerException(const char* where) noexcept {
    QString what;
    try {
        throw;
    } catch (const std::exception& e) {
        what = QString::fromLocal8Bit(e.what());
    } catch (...) {
        what = QStringLiteral("an exception of unknown kind");
    }
    const QString place = QString::fromUtf8(where);
    try {
        if (reporter())
            reporter()(place, what);
        else
            qWarning("exception in %s: %s", qUtf8Printable(place), qUtf8Printable(what));
    } catch (...) {
        // A reporter that fails itself has nowhere left to report to.
    }
}

} // namespace platform
