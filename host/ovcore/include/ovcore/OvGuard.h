#pragma once

#include "ovdb/ovut.h"

#include <exception>
#include <string>
#include <utility>

namespace ovcore {

// The one form in which the host tells a module's exception at the command line, whether
// a call at one of its boundaries or a handler of a module's window ended in it.
inline void printException(const wchar_t* where, const wchar_t* what) {
    ovutPrintf(L"\n; error: exception in %ls: %ls\n", where, what);
}

// Runs a call into a module at one of the host's boundaries (entry point message,
// command handler, LISP handler, notification). A module's exception must never take
// the host down: it is reported at the command line and the session goes on.
// Returns true when the call ended normally; `fallback` is the result otherwise.
template <typename R, typename F>
R guardedCall(const wchar_t* where, R fallback, F&& call, bool* threw = nullptr) {
    if (threw)
        *threw = false;
    try {
        return std::forward<F>(call)();
    } catch (const std::exception& e) {
        std::wstring what;
        for (const char* p = e.what(); *p; ++p)
            what.push_back(static_cast<unsigned char>(*p));
        printException(where, what.c_str());
    } catch (...) {
        ovutPrintf(L"\n; error: exception in %ls\n", where);
    }
    if (threw)
        *threw = true;
    return fallback;
}

} // namespace ovcore
