#include "lisp/ZelLispDialogs.h"

#include "ovcore/oved.h"
#include "ovdb/ovut.h"

int zel_invoke_importwt_dlg() {
    // Until its dialog is there, the function says so and changes nothing.
    ovutPrintf(L"\nzel_invoke_importwt_dlg: the wire type dialogs come with a later version of "
               L"ZelWireType.\n");
    ovedRetNil();
    return 1;
}
