#include "ovcore/OvApDocManagerReactor.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/OvRxClassMacros.h"

OVRX_DEFINE_CLASS(OvApDocManagerReactor, OvRxObject)

// A reactor that goes without removing itself must not be told anything afterwards.
OvApDocManagerReactor::~OvApDocManagerReactor() {
    if (OvApDocManager* manager = ovDocManagerPtr())
        manager->removeReactor(this);
}

void OvApDocManagerReactor::documentCreateStarted(OvApDocument*) {}
void OvApDocManagerReactor::documentCreated(OvApDocument*) {}
void OvApDocManagerReactor::documentToBeDestroyed(OvApDocument*) {}
void OvApDocManagerReactor::documentDestroyed(const wchar_t*) {}
void OvApDocManagerReactor::documentCreateCanceled(OvApDocument*) {}
void OvApDocManagerReactor::documentLockModeWillChange(OvApDocument*, OvAp::DocLockMode,
                                                       OvAp::DocLockMode, const wchar_t*) {}
void OvApDocManagerReactor::documentLockModeChangeVetoed(OvApDocument*, const wchar_t*) {}
void OvApDocManagerReactor::documentLockModeChanged(OvApDocument*, OvAp::DocLockMode,
                                                    OvAp::DocLockMode, const wchar_t*) {}
void OvApDocManagerReactor::documentBecameCurrent(OvApDocument*) {}
void OvApDocManagerReactor::documentToBeActivated(OvApDocument*) {}
void OvApDocManagerReactor::documentToBeDeactivated(OvApDocument*) {}
void OvApDocManagerReactor::documentActivationModified(bool) {}
void OvApDocManagerReactor::documentActivated(OvApDocument*) {}
void OvApDocManagerReactor::documentManagerToBeDestroyed() {}
