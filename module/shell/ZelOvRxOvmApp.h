#pragma once

#include "shell/OvRxOvmApp.h"

// Third level of the chain: adds the add-on's command table at initialisation. Nothing
// takes that table back: an add-on command stays registered after the module's unload.
class ZelOvRxOvmApp : public OvRxOvmApp {
public:
    using OvRxOvmApp::OvRxOvmApp;

    int OnInitApp(void* packet) override;
};
