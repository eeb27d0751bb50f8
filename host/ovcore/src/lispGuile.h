#pragma once

#include <libguile.h>

#include <QString>

// The bridge's access to Guile. Every call from C++ into Scheme goes through
// protectedCall, which stops exceptions and continuations at the boundary: a Scheme
// non-local exit never jumps over a C++ frame, and a C++ exception never unwinds a
// Scheme one (the primitives catch their own).
namespace ovcore::lisp::detail {

// How a call into Scheme ended: a value, or the exception (key and arguments) that ended it.
// Plain data, kept on the stack where the garbage collector sees it.
struct SchemeOutcome {
    bool ok = false;
    SCM value = SCM_BOOL_F;
    SCM key = SCM_BOOL_F;
    SCM args = SCM_EOL;
};

// The host module's procedures that C++ calls, looked up once at boot.
struct HostProcedures {
    SCM entityNameType = SCM_BOOL_F;
    SCM errorMessage = SCM_BOOL_F;
    SCM evalString = SCM_BOOL_F;
    SCM loadFile = SCM_BOOL_F;
    SCM invoke = SCM_BOOL_F;
    SCM lookup = SCM_BOOL_F;
    SCM define = SCM_BOOL_F;
    SCM undefine = SCM_BOOL_F;
    SCM defineModuleFunction = SCM_BOOL_F;
    SCM forgetDocument = SCM_BOOL_F;
    SCM objectToString = SCM_BOOL_F;
};

// Boots Guile and the host's environment once. False when the environment is not usable
// here: it failed to start, or this is not the thread that booted it.
bool ensureBooted();

const HostProcedures& hostProcedures();

SchemeOutcome protectedCall(SCM (*body)(void* data), void* data);
SchemeOutcome protectedApply(SCM procedure, SCM args);

// The text of the exception that ended a call.
QString errorMessage(const SchemeOutcome& outcome);

// True for a failure that was already reported where it happened (a module's exception).
bool wasReported(const SchemeOutcome& outcome);

// "; error: ..." at the command line.
void printError(const QString& message);

SCM toScheme(const QString& text);
QString fromScheme(SCM string); // the caller checks that it is a string

// The exception keys of the bridge: a LISP error raised by the host, and a module's C++
// exception, which was reported when it was caught.
SCM lispErrorKey();
SCM hostExceptionKey();

// Reads `text` form by form and evaluates each in `module`; the last value. Unlike Guile's
// eval-string, this does not load the compiler and its languages into the process.
SCM evalForms(const char* text, SCM module);

} // namespace ovcore::lisp::detail
