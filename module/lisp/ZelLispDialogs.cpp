#include "lisp/ZelLispDialogs.h"

#include "ovdb/ovut.h"

void WireTypeSelCommand() {
    // Until the dialog is there, the command says so and changes nothing.
    ovutPrintf(
        L"\nWireTypeSel1: the wire type dialogs come with a later version of ZelWireType.\n");
}
