#pragma once

#include "ovcore/OvRxDictionary.h"
#include "ovdb/OvErrorStatus.h"
#include "ovdb/OvRxClass.h"

#include <QList>
#include <QString>

// The host's system registry: "DynamicLinker" (OvRxDynamicLinker) and
// "ORVEX_REGISTERED_COMMANDS" (OvEdCommandStack). Always there, also before the host is
// initialised, so that a module's static objects may reach it.
OvRxDictionary* ovrxSysRegistry();

// The class registry. The host's own classes are registered from the start and cannot be
// deleted.
//
// eInvalidInput for null or a class without a name; eDuplicateKey when a class of the
// name is registered (the same object again is eOk).
Orvex::ErrorStatus ovrxRegisterClass(OvRxClass* cls);
OvRxClass* ovrxFindClass(const QString& name);
QList<OvRxClass*> ovrxRegisteredClasses();
// Links every registered class whose parent was given by name to that parent, and checks
// that every parent is itself registered. False when one is not; each such class is
// reported at the command line.
bool ovrxBuildClassHierarchy();
// Removes a class from the registry and deletes it. Refused (false, with a message) for a
// class that is not registered, is one of the host's own, or is still the parent of a
// registered class.
bool deleteOvRxClass(OvRxClass* cls);

namespace ovcore {
// Host start and shutdown: back to the host's own classes only.
void resetClassRegistry();
} // namespace ovcore
