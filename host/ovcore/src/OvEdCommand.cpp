#include "ovcore/OvEdCommand.h"

#include "ovcore/OvModule.h"

OvEdCommand::OvEdCommand(const QString& groupName, const QString& globalName,
                         const QString& localName, qint32 flags, OvRxFunctionPtr handler,
                         OvEdUIContext* uiContext, int functionCode,
                         OvRxResourceInstance resourceInstance, OvModule* module)
    : m_group(groupName), m_global(globalName), m_local(localName), m_flags(flags),
      m_handler(handler), m_uiContext(uiContext), m_functionCode(functionCode),
      m_resourceInstance(resourceInstance), m_module(module) {
    if (module)
        m_moduleName = module->name();
}

void OvEdCommand::orphan() {
    m_module = nullptr;
    m_orphaned = true;
}
