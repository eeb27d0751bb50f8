#pragma once

#include <libguile.h>

namespace ovcore::lisp::detail {

// The body of every Scheme procedure that stands for a module's function:
// (%call-module-function document-id name args). Converts the arguments, calls the
// module's handler (or its entry point with message 5) under the guard, and turns its
// status and result into a value or a LISP error.
SCM callModuleFunctionPrimitive(SCM documentId, SCM name, SCM args);

} // namespace ovcore::lisp::detail
