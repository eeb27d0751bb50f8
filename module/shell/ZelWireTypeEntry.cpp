// The exports of ZelWireType.ovm: what the host's loader looks up and calls.

#include "shell/CZelWireTypeApp.h"
#include "shell/ZelDocDataManager.h"
#include "shell/ZelLibraryEntry.h"

#define ZEL_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

// The host API the module is built for: major 26, minor 0.
constexpr unsigned kApiVersion = 0x1A0000;

// Made while the module is being loaded, before its library entry runs, so that it sees
// every document's end from the start.
ZelDocDataManager s_docDataManager;

} // namespace

// Process attach (reason 1) and detach (0). Without its resource library the module
// refuses to load.
ZEL_EXPORT bool ovrxLibraryEntry(void* instance, unsigned reason) {
    return ZelLibraryEntry(instance, reason);
}

ZEL_EXPORT unsigned ovrxGetApiVersion() {
    return kApiVersion;
}

// Message codes 0 to 15 go to the application's slot of that number; any other code is
// answered 0 without a call.
ZEL_EXPORT int ovrxEntryPoint(int message, void* packet) {
    return theApp.DispatchMessage(message, packet);
}
