#include "shell/ZelModuleState.h"

// Constant-initialised: valid before any constructor of the module runs.
void* moduleInstance = nullptr;
bool extensionModuleReady = false;
platform::ResourceHandle* defaultResource = nullptr;
platform::ResourceHandle* moduleResource = nullptr;
platform::ResourceHandle* resourceLibrary = nullptr;
