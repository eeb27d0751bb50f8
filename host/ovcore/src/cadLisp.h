#pragma once

#include <libguile.h>

namespace ovcore::lisp::detail {

// Defines the drawing functions (entget, entmake, tblsearch, getvar, ...) and the editor
// input (entsel, getfiled, help, the batch queues) in the host module, whose public
// interface every document imports. Called once, while the host module is booted.
void defineCadFunctions(SCM hostModule);

} // namespace ovcore::lisp::detail
