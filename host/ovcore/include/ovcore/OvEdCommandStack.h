#pragma once

#include "ovcore/OvEdCommand.h"
#include "ovdb/OvErrorStatus.h"
#include "ovdb/OvRxObject.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class OvModule;

// The host's commands, in groups. Registered in the system registry under
// "ORVEX_REGISTERED_COMMANDS".
//
// Names compare without regard to case. A global name is unique within its group; the
// same name in two groups is allowed, and a look-up finds the group added last first.
class OvEdCommandStack : public OvRxObject {
public:
    static OvRxClass* desc();
    static OvEdCommandStack* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvEdCommandStack();
    ~OvEdCommandStack() override;

    // eInvalidInput for an empty group or global name, a name with blanks or no handler;
    // eDuplicateKey when the group already has a live command of that global name. A
    // command whose module was unloaded is replaced. An empty local name takes the global
    // one. The command belongs to the module being called at the time, if any.
    Orvex::ErrorStatus addCommand(const wchar_t* cmdGroupName, const wchar_t* cmdGlobalName,
                                  const wchar_t* cmdLocalName, qint32 commandFlags,
                                  OvRxFunctionPtr functionAddr, OvEdUIContext* UIContext = nullptr,
                                  int fcode = -1, OvRxResourceInstance resourceInstance = {},
                                  OvEdCommand** cmdPtrRet = nullptr);
    // eKeyNotFound when the group or the command is not there.
    Orvex::ErrorStatus removeCmd(const wchar_t* cmdGroupName, const wchar_t* cmdGlobalName);
    Orvex::ErrorStatus removeGroup(const wchar_t* groupName);

    OvEdCommand* lookupGlobalCmd(const wchar_t* globalName) const;
    OvEdCommand* lookupLocalCmd(const wchar_t* localName) const;
    // A name as typed: "_NAME" is a global name; otherwise a local name, then a global one.
    OvEdCommand* lookupCmd(const QString& typedName) const;

    QStringList groupNames() const;
    QList<OvEdCommand*> commands(const QString& groupName) const;

    enum class RunStatus {
        Ran,     // the handler returned
        Unknown, // no such command
        Refused, // another command runs and this one is not transparent, or its module is gone
        Threw,   // the handler threw; reported at the command line
    };
    // Runs a command by the name as typed. The handler's module is the active one during
    // the call; objects it leaves open are reported and counted
    // (ovcore::openObjectViolations).
    RunStatus runCommand(const QString& typedName);
    // The innermost command running now, null when none.
    OvEdCommand* runningCommand() const;

    // Host side: the commands of a module that is being unloaded stay listed but no longer
    // run. Clearing the stack is for host shutdown.
    void orphanCommandsOf(const OvModule* module);
    void clear();

private:
    struct Group {
        QString name;
        std::vector<std::shared_ptr<OvEdCommand>> commands;
    };
    Group* findGroup(const QString& name);
    OvEdCommand* lookup(const QString& name, bool global) const;

    std::vector<Group> m_groups;
    std::vector<std::shared_ptr<OvEdCommand>> m_running;
};
