#pragma once

// Defines the host's LISP functions for its dialogs (orvex-color-dialog and the others).
void ovuiRegisterLisp();
