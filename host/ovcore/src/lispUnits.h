#pragma once

#include <libguile.h>

// The Scheme units of the host module, in the order they run: the boot unit, then the
// groups of the dialect's common functions. Each is kept in the library twice: compiled to
// Guile bytecode when the host was built, and as source, which is evaluated instead when
// this Guile can't load the bytecode (another version of it) or when ORVEX_LISP_SOURCE is
// set in the environment.
namespace ovcore::lisp::detail {

enum class LispUnit { Boot, Numbers, Texts, Lists, Geometry, Drawing, Input, Files };

// Runs the unit with `module` as the current module. Errors of its forms propagate.
void runLispUnit(LispUnit unit, SCM module);

} // namespace ovcore::lisp::detail
