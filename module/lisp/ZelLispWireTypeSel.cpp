#include "lisp/ZelLispDialogs.h"

#include "ovcore/oved.h"
#include "ovdb/ovut.h"

int zel_wire_type_sel() {
    // Until its dialog is there, the function says so and changes nothing.
    ovutPrintf(
        L"\nzel_wire_type_sel: the wire type dialogs come with a later version of ZelWireType.\n");
    ovedRetNil();
    return 1;
}
