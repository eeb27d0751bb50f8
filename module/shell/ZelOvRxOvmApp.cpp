#include "shell/ZelOvRxOvmApp.h"

int ZelOvRxOvmApp::OnInitApp(void* packet) {
    OvRxOvmApp::OnInitApp(packet);
    // Add-on commands never carry a resource instance.
    for (const CommandEntry* entry : RegistrationTables().addOnCommands) {
        if (entry != nullptr)
            AddCommand(*entry, OvRxResourceInstance());
    }
    return 0;
}
