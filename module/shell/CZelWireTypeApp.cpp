#include "shell/CZelWireTypeApp.h"

#include "lisp/ZelLispDialogs.h"
#include "shell/ZelDrawingLoad.h"

namespace {

// The command that opens the create and edit dialog, kept by the add-on's command group.
constinit OvRxQvxApp::CommandEntry s_wireTypeSelCommand = {
    .groupName = L"NQMTZelWireType",
    .globalName = L"WireTypeSel1",
    .localName = L"WireTypeSel1",
    .flags = 1,
    .handler = WireTypeSelCommand,
    .uiContext = nullptr,
    .localNameId = OvRxQvxApp::kNoResource,
};

OvRxQvxApp::CommandEntry* const s_addOnCommandTable[] = {&s_wireTypeSelCommand};

// The class, command and LISP symbol tables are empty: the sixteen LISP functions are
// registered by explicit calls at each drawing load.
constexpr OvRxQvxApp::Tables s_tables = {{}, {}, s_addOnCommandTable, {}};

} // namespace

constinit CZelWireTypeApp theApp(s_tables);

int CZelWireTypeApp::OnUnloadApp(void* packet) {
    return OvRxOvmApp::OnUnloadApp(packet);
}

int CZelWireTypeApp::OnLoadDwg(void* packet) {
    OvRxOvmApp::OnLoadDwg(packet);
    RunDrawingLoad();
    return 0;
}

int CZelWireTypeApp::OnUnloadDwg(void* packet) {
    return OvRxOvmApp::OnUnloadDwg(packet);
}

void CZelWireTypeApp::RegisterComponents() {}
