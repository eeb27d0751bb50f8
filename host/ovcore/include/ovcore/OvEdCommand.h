#pragma once

#include "ovcore/OvRxResourceInstance.h"

#include <QString>
#include <QtGlobal>

class OvEdUIContext;
class OvModule;

// A command handler: no arguments, no result; it reads its input from the editor.
using OvRxFunctionPtr = void (*)();

namespace OvRx {
// Command flags the host acts on; the others are kept as given.
enum CommandFlags : qint32 {
    kCmdModal = 0,
    kCmdTransparent = 1, // may run while another command runs
    kCmdUsePickSet = 2,
    kCmdRedraw = 4,
};
} // namespace OvRx

// One registered command. Owned by the command stack: a pointer to it stays valid until
// the command or its group is removed (a command removed while it runs lives until it
// returns).
class OvEdCommand {
public:
    OvEdCommand(const QString& groupName, const QString& globalName, const QString& localName,
                qint32 flags, OvRxFunctionPtr handler, OvEdUIContext* uiContext, int functionCode,
                OvRxResourceInstance resourceInstance, OvModule* module);

    const QString& groupName() const { return m_group; }
    const QString& globalName() const { return m_global; }
    const QString& localName() const { return m_local; }
    qint32 commandFlags() const { return m_flags; }
    OvRxFunctionPtr functionAddr() const { return m_handler; }
    OvEdUIContext* UIContext() const { return m_uiContext; }
    int functionCode() const { return m_functionCode; }
    OvRxResourceInstance resourceInstance() const { return m_resourceInstance; }

    // The module that added the command; null for the host's own commands and once the
    // module is unloaded.
    OvModule* module() const { return m_module; }
    // File name of the module that added it, kept after that module is gone.
    const QString& moduleName() const { return m_moduleName; }
    // The module that added the command is unloaded: its handler is gone with it, so the
    // command stays listed but does not run.
    bool isOrphaned() const { return m_orphaned; }
    void orphan();

private:
    QString m_group;
    QString m_global;
    QString m_local;
    qint32 m_flags = 0;
    OvRxFunctionPtr m_handler = nullptr;
    OvEdUIContext* m_uiContext = nullptr;
    int m_functionCode = -1;
    OvRxResourceInstance m_resourceInstance;
    OvModule* m_module = nullptr;
    QString m_moduleName;
    bool m_orphaned = false;
};
