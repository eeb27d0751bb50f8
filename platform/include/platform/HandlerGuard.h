#pragma once

#include <QString>

#include <exception>
#include <functional>

namespace platform {

// A window's handler runs the way a window procedure runs one message: an exception that
// leaves it ends that handler only. It is reported and the window goes on, so that a
// dialog keeps the drafter's unsaved edits instead of closing under them, and no
// exception ever unwinds through Qt's own event code, which is built without them.

// Who hears of such an exception: `where` names the handler, `what` is the exception's
// text. The host sends both to its command line; an empty function restores the default,
// a warning on the debug output.
using HandlerExceptionReporter = std::function<void(const QString& where, const QString& what)>;
void setHandlerExceptionReporter(HandlerExceptionReporter reporter);

// Tells the reporter of the exception being handled; for use inside a catch block.
void reportHandlerException(const char* where) noexcept;

// Runs `handler` and yields its result, or `fallback` when an exception ended it.
template <typename R, typename F> R runHandler(const char* where, R fallback, F&& handler) {
    try {
        return handler();
    } catch (...) {
        reportHandlerException(where);
    }
    return fallback;
}

template <typename F> void runHandler(const char* where, F&& handler) {
    try {
        handler();
    } catch (...) {
        reportHandlerException(where);
    }
}

} // namespace platform
