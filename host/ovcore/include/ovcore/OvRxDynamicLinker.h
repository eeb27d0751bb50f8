#pragma once

#include "ovdb/OvErrorStatus.h"
#include "ovdb/OvRxObject.h"

#include <QString>

// Registered as "DynamicLinker" in the system registry. An application is identified by
// the app id the host gave it with kInitAppMsg.
//
// A module is locked when it is loaded: only an unlocked module can be unloaded on
// request (the host unloads every module at shutdown anyway).
class OvRxDynamicLinker : public OvRxObject {
public:
    static OvRxClass* desc();
    static OvRxDynamicLinker* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    // False for an app id that no loaded module has.
    bool unlockApplication(void* appId) const;
    bool lockApplication(void* appId) const;
    bool isApplicationLocked(const void* appId) const;

    // eInvalidInput for an unknown app id.
    Orvex::ErrorStatus registerAppMDIAware(void* appId) const;
    Orvex::ErrorStatus registerAppNotMDIAware(void* appId) const;
    bool isAppMDIAware(const void* appId) const;

    // Loads and initialises a module (.ovm); an already loaded module is not loaded again.
    // Failures are reported at the command line.
    bool loadModule(const QString& path) const;
    // By file name or path; refused for a locked module or one that is running.
    bool unloadModule(const QString& nameOrPath) const;
};
