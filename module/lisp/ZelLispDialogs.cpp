#include "lisp/ZelLispDialogs.h"

#include "ovcore/oved.h"
#include "ovdb/ovut.h"

namespace {

// Until the dialogs are there, the functions and the command say so and change nothing.
void sayNotYet(const wchar_t* what) {
    ovutPrintf(L"\n%ls: the wire type dialogs come with a later version of ZelWireType.\n", what);
}

int notYet(const wchar_t* function) {
    sayNotYet(function);
    ovedRetNil();
    return 1;
}

} // namespace

int zel_wire_type_sel() {
    return notYet(L"zel_wire_type_sel");
}

int zel_rename_wire_properties() {
    return notYet(L"zel_rename_wire_properties");
}

int zel_invoke_importwt_dlg() {
    return notYet(L"zel_invoke_importwt_dlg");
}

void WireTypeSelCommand() {
    sayNotYet(L"WireTypeSel1");
}
