#pragma once

#include <libguile.h>

#include <QString>

#include <span>

// For the host's other libraries that bring LISP functions of their own (dialog
// automation): they define Scheme primitives in the host module, which every document
// imports, and call back into Scheme procedures that a script handed them.
namespace ovcore::lisp {

struct HostPrimitive {
    const char* name;
    int required;
    int optional;
    scm_t_subr function;
};

// Defines the primitives in the host module and makes them visible in every document,
// open or still to come; a name the host had already is replaced. False when the LISP
// environment cannot start here.
bool defineHostPrimitives(std::span<const HostPrimitive> primitives);

// Calls a procedure of no arguments. A Scheme error or a non-local exit stops at this
// call: `ok` is false and `error` says what happened; nothing is printed.
struct ProcedureOutcome {
    bool ok = false;
    QString error;
};
ProcedureOutcome callProcedure(SCM procedure);

// Conversions for the primitives.
SCM schemeString(const QString& text);
QString qtString(SCM string); // the caller checks scm_is_string

// Raises a LISP error with this text ("who: message"). Call it only from a primitive's
// own frame, after every C++ object of the primitive has gone: it does not return.
[[noreturn]] void raiseLispError(SCM message);

} // namespace ovcore::lisp
