#pragma once

namespace ovauto {

// Defines the automation's LISP functions in the host module (every document sees them).
void defineLispFunctions();

} // namespace ovauto
