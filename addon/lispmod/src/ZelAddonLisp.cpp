// ZelAddonLisp.ovm: the add-on's C++ services offered to LISP, for the add-on's Scheme
// files (addon/lisp) and for scripts. Each document gets the functions when its drawing
// loads; the header of each group tells what its functions take and answer.

#include "ZelGlobalFunctions.h"
#include "ZelLockFunctions.h"
#include "ZelProjectFunctions.h"
#include "ZelProjectSymbolReactor.h"
#include "ZelWdmFunctions.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvRxAppMsgCode.h"
#include "ovcore/OvRxDynamicLinker.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovcore/oved.h"

#include <iterator>
#include <memory>

#define ZEL_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

struct LispFunction {
    const wchar_t* name;
    int (*handler)();
};

// Numbered from 1 in this order.
const LispFunction s_functions[] = {
    {L"zel_project_open", zelProjectOpen},
    {L"zel_project_close", zelProjectClose},
    {L"zel_project_active", zelProjectActive},
    {L"zel_project_setting", zelProjectSetting},
    {L"zel_project_drawings", zelProjectDrawings},
    {L"zel_gbl_get", zelGblGet},
    {L"zel_gbl_set", zelGblSet},
    {L"zel_dwg_lock_info", zelDwgLockInfo},
    {L"zel_dwg_unlock", zelDwgUnlock},
    {L"zel_wd_m_attributes", zelWdmAttributes},
};

std::unique_ptr<ZelProjectSymbolReactor> s_reactor;

void initApp(void* appId) {
    if (auto* linker = OvRxDynamicLinker::cast(ovrxSysRegistry()->at(L"DynamicLinker"))) {
        linker->unlockApplication(appId);
        linker->registerAppMDIAware(appId);
    }
    if (OvApDocManager* manager = ovDocManagerPtr()) {
        s_reactor = std::make_unique<ZelProjectSymbolReactor>();
        manager->addReactor(s_reactor.get());
    }
}

void unloadApp() {
    if (!s_reactor)
        return;
    if (OvApDocManager* manager = ovDocManagerPtr())
        manager->removeReactor(s_reactor.get());
    s_reactor.reset();
}

void loadDwg() {
    for (int i = 0; i < static_cast<int>(std::size(s_functions)); ++i) {
        ovedDefun(s_functions[i].name, i + 1);
        ovedRegFunc(s_functions[i].handler, i + 1);
    }
    zelPutProjectSymbol();
}

} // namespace

ZEL_EXPORT bool ovrxLibraryEntry(void* instance, unsigned reason) {
    (void)instance;
    (void)reason;
    return true;
}

ZEL_EXPORT unsigned ovrxGetApiVersion() {
    return 0x1A0000u;
}

ZEL_EXPORT int ovrxEntryPoint(int message, void* packet) {
    switch (message) {
    case OvRx::kInitAppMsg:
        initApp(packet);
        break;
    case OvRx::kUnloadAppMsg:
        unloadApp();
        break;
    case OvRx::kLoadDwgMsg:
        loadDwg();
        break;
    default:
        break;
    }
    return OvRx::kRetOK;
}
