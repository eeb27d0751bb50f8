#pragma once

#include <libguile.h>

// The common functions of the CAD LISP dialect, in groups: numbers, texts, lists and
// symbols, drawing (selection sets, entmod and kin), commands and input, files and
// settings, geometry. Each group defines its C++ primitives in the host module; its unit of
// Scheme (lispUnits.h) builds on them and exports the group's names.
namespace ovcore::lisp::detail {

// Called once, while the host module is booted, after the drawing functions.
void defineLibraryFunctions(SCM hostModule);

void defineLibraryTextPrimitives();
void defineLibraryDrawingPrimitives();
void defineLibraryInputPrimitives();
void defineLibraryFilePrimitives();

} // namespace ovcore::lisp::detail
