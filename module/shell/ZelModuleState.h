#pragma once

namespace platform {
class ResourceHandle;
}

// The module-wide state beside the application object, from process attach to detach.
// Main thread only, like everything in the module.

// The instance handle the host's loader gave at attach (the module's dlopen handle).
extern void* moduleInstance;
// True once the attach step has recorded the resource handles below.
extern bool extensionModuleReady;
// The resource handle that was current at attach.
extern platform::ResourceHandle* defaultResource;
// What ResourceOverride makes current: the module's own file at first, which holds no
// resources (so the host's handle stands for it), then ZelWireTypeRes.so.
extern platform::ResourceHandle* moduleResource;
// ZelWireTypeRes.so; null until loaded.
extern platform::ResourceHandle* resourceLibrary;
