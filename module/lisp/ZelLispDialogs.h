#pragma once

#include "lisp/ZelLispFunctions.h"

// The handler of the command "WireTypeSel1": the create and edit wire types dialog.
void WireTypeSelCommand();
