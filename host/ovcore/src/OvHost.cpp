#include "ovcore/OvHost.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvGuard.h"
#include "ovcore/OvLisp.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "platform/HandlerGuard.h"

namespace {
bool s_running = false;
} // namespace

OvHost::~OvHost() {
    shutdown();
}

bool OvHost::init() {
    if (s_running)
        return false;
    ovcore::lisp::initialize();
    ovcore::resetClassRegistry();
    ovrxSysRegistry();
    OvApDocManager::create();
    // An exception that ends a handler of a module's window is told where the drafter
    // looks, as one from a command or a LISP call is; the dialog stays open.
    platform::setHandlerExceptionReporter([](const QString& where, const QString& what) {
        ovcore::printException(where.toStdWString().c_str(), what.toStdWString().c_str());
    });
    s_running = m_running = true;
    return true;
}

void OvHost::shutdown() {
    if (!m_running)
        return;
    // Documents close while their modules are still there to hear kUnloadDwgMsg; modules
    // go after the document manager, as their exit code expects.
    OvApDocManager::destroy();
    OvModuleLoader::instance().unloadAll();
    if (auto* commands =
            OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS")))
        commands->clear();
    ovcore::resetClassRegistry();
    OvDbHostApplicationServices::getRefPtr()->setWorkingDatabase(nullptr);
    ovcore::lisp::setCurrentDocument(nullptr);
    platform::setHandlerExceptionReporter({});
    s_running = m_running = false;
}

bool OvHost::isAnyRunning() {
    return s_running;
}
