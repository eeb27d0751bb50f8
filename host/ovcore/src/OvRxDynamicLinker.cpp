#include "ovcore/OvRxDynamicLinker.h"

#include "ovcore/OvModule.h"
#include "ovcore/OvModuleLoader.h"
#include "ovdb/OvRxClassMacros.h"

OVRX_DEFINE_CLASS(OvRxDynamicLinker, OvRxObject)

namespace {

OvModule* moduleOf(const void* appId) {
    return OvModuleLoader::instance().findByAppId(appId);
}

} // namespace

bool OvRxDynamicLinker::unlockApplication(void* appId) const {
    OvModule* module = moduleOf(appId);
    if (!module)
        return false;
    module->setLocked(false);
    return true;
}

bool OvRxDynamicLinker::lockApplication(void* appId) const {
    OvModule* module = moduleOf(appId);
    if (!module)
        return false;
    module->setLocked(true);
    return true;
}

bool OvRxDynamicLinker::isApplicationLocked(const void* appId) const {
    const OvModule* module = moduleOf(appId);
    return module && module->isLocked();
}

Orvex::ErrorStatus OvRxDynamicLinker::registerAppMDIAware(void* appId) const {
    OvModule* module = moduleOf(appId);
    if (!module)
        return Orvex::eInvalidInput;
    module->setMDIAware(true);
    return Orvex::eOk;
}

Orvex::ErrorStatus OvRxDynamicLinker::registerAppNotMDIAware(void* appId) const {
    OvModule* module = moduleOf(appId);
    if (!module)
        return Orvex::eInvalidInput;
    module->setMDIAware(false);
    return Orvex::eOk;
}

bool OvRxDynamicLinker::isAppMDIAware(const void* appId) const {
    const OvModule* module = moduleOf(appId);
    return module && module->isMDIAware();
}

bool OvRxDynamicLinker::loadModule(const QString& path) const {
    return OvModuleLoader::instance().load(path);
}

bool OvRxDynamicLinker::unloadModule(const QString& nameOrPath) const {
    return OvModuleLoader::instance().unload(nameOrPath);
}
