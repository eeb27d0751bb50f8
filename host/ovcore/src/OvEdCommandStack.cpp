#include "ovcore/OvEdCommandStack.h"

#include "ovcore/OvModule.h"
#include "ovcore/OvModuleLoader.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovut.h"

#include <algorithm>

OVRX_DEFINE_CLASS(OvEdCommandStack, OvRxObject)

namespace {

QString fromWide(const wchar_t* text) {
    return text ? QString::fromWCharArray(text) : QString();
}

bool sameName(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

bool isValidName(const QString& name) {
    return !name.isEmpty() && std::none_of(name.begin(), name.end(), [](QChar c) {
        return c.isSpace() || c.category() == QChar::Other_Control;
    });
}

} // namespace

OvEdCommandStack::OvEdCommandStack() = default;
OvEdCommandStack::~OvEdCommandStack() = default;

OvEdCommandStack::Group* OvEdCommandStack::findGroup(const QString& name) {
    for (Group& group : m_groups) {
        if (sameName(group.name, name))
            return &group;
    }
    return nullptr;
}

Orvex::ErrorStatus
OvEdCommandStack::addCommand(const wchar_t* cmdGroupName, const wchar_t* cmdGlobalName,
                             const wchar_t* cmdLocalName, qint32 commandFlags,
                             OvRxFunctionPtr functionAddr, OvEdUIContext* UIContext, int fcode,
                             OvRxResourceInstance resourceInstance, OvEdCommand** cmdPtrRet) {
    if (cmdPtrRet)
        *cmdPtrRet = nullptr;
    const QString groupName = fromWide(cmdGroupName);
    const QString globalName = fromWide(cmdGlobalName);
    QString localName = fromWide(cmdLocalName);
    if (localName.isEmpty())
        localName = globalName;
    if (!isValidName(groupName) || !isValidName(globalName) || !isValidName(localName) ||
        !functionAddr)
        return Orvex::eInvalidInput;

    // A command belongs to the module being called when it is added (kInitAppMsg, as a
    // rule); failing that, to the module whose code holds the handler.
    OvModuleLoader& loader = OvModuleLoader::instance();
    OvModule* module = loader.activeModule();
    if (!module)
        module = loader.moduleOfAddress(reinterpret_cast<const void*>(functionAddr));

    Group* group = findGroup(groupName);
    if (!group) {
        m_groups.push_back(Group{groupName, {}});
        group = &m_groups.back();
    }
    auto command =
        std::make_shared<OvEdCommand>(group->name, globalName, localName, commandFlags,
                                      functionAddr, UIContext, fcode, resourceInstance, module);
    auto existing =
        std::find_if(group->commands.begin(), group->commands.end(),
                     [&](const auto& c) { return sameName(c->globalName(), globalName); });
    if (existing != group->commands.end()) {
        // The handler of an orphaned command went with its module; a module loaded again
        // registers it anew.
        if (!(*existing)->isOrphaned())
            return Orvex::eDuplicateKey;
        *existing = command;
    } else {
        group->commands.push_back(command);
    }
    if (cmdPtrRet)
        *cmdPtrRet = command.get();
    return Orvex::eOk;
}

Orvex::ErrorStatus OvEdCommandStack::removeCmd(const wchar_t* cmdGroupName,
                                               const wchar_t* cmdGlobalName) {
    Group* group = findGroup(fromWide(cmdGroupName));
    if (!group)
        return Orvex::eKeyNotFound;
    const QString globalName = fromWide(cmdGlobalName);
    auto it = std::find_if(group->commands.begin(), group->commands.end(),
                           [&](const auto& c) { return sameName(c->globalName(), globalName); });
    if (it == group->commands.end())
        return Orvex::eKeyNotFound;
    group->commands.erase(it);
    return Orvex::eOk;
}

Orvex::ErrorStatus OvEdCommandStack::removeGroup(const wchar_t* groupName) {
    const QString name = fromWide(groupName);
    auto it = std::find_if(m_groups.begin(), m_groups.end(),
                           [&](const Group& g) { return sameName(g.name, name); });
    if (it == m_groups.end())
        return Orvex::eKeyNotFound;
    m_groups.erase(it);
    return Orvex::eOk;
}

OvEdCommand* OvEdCommandStack::lookup(const QString& name, bool global) const {
    if (name.isEmpty())
        return nullptr;
    // The group added last wins, so that a module can override a host command.
    for (auto group = m_groups.rbegin(); group != m_groups.rend(); ++group) {
        for (const auto& command : group->commands) {
            if (sameName(global ? command->globalName() : command->localName(), name))
                return command.get();
        }
    }
    return nullptr;
}

OvEdCommand* OvEdCommandStack::lookupGlobalCmd(const wchar_t* globalName) const {
    return lookup(fromWide(globalName), true);
}

OvEdCommand* OvEdCommandStack::lookupLocalCmd(const wchar_t* localName) const {
    return lookup(fromWide(localName), false);
}

OvEdCommand* OvEdCommandStack::lookupCmd(const QString& typedName) const {
    const QString name = typedName.trimmed();
    if (name.startsWith(u'_'))
        return lookup(name.mid(1), true);
    if (OvEdCommand* command = lookup(name, false))
        return command;
    return lookup(name, true);
}

QStringList OvEdCommandStack::groupNames() const {
    QStringList names;
    for (const Group& group : m_groups)
        names << group.name;
    return names;
}

QList<OvEdCommand*> OvEdCommandStack::commands(const QString& groupName) const {
    QList<OvEdCommand*> list;
    for (const Group& group : m_groups) {
        if (!sameName(group.name, groupName))
            continue;
        for (const auto& command : group.commands)
            list << command.get();
    }
    return list;
}

OvEdCommand* OvEdCommandStack::runningCommand() const {
    return m_running.empty() ? nullptr : m_running.back().get();
}

OvEdCommandStack::RunStatus OvEdCommandStack::runCommand(const QString& typedName) {
    OvEdCommand* found = lookupCmd(typedName);
    if (!found) {
        ovutPrintf(L"\nUnknown command \"%ls\".\n", typedName.trimmed().toStdWString().c_str());
        return RunStatus::Unknown;
    }
    const std::wstring global = found->globalName().toStdWString();
    if (found->isOrphaned()) {
        ovutPrintf(L"\n; error: command %ls cannot run: its module %ls is not loaded\n",
                   global.c_str(), found->moduleName().toStdWString().c_str());
        return RunStatus::Refused;
    }
    if (!m_running.empty() && !(found->commandFlags() & OvRx::kCmdTransparent)) {
        ovutPrintf(L"\n; error: command %ls cannot run while %ls runs\n", global.c_str(),
                   m_running.back()->globalName().toStdWString().c_str());
        return RunStatus::Refused;
    }

    // Held here, so that a command that removes itself finishes its run.
    std::shared_ptr<OvEdCommand> command;
    for (const Group& group : m_groups) {
        for (const auto& c : group.commands) {
            if (c.get() == found)
                command = c;
        }
    }
    m_running.push_back(command);
    const std::wstring where = L"command " + found->globalName().toUpper().toStdWString();
    const OvRxFunctionPtr handler = command->functionAddr();
    const bool ok = OvModuleLoader::instance().callInto(command->module(), where.c_str(),
                                                        [handler] { handler(); });
    m_running.pop_back();
    return ok ? RunStatus::Ran : RunStatus::Threw;
}

void OvEdCommandStack::orphanCommandsOf(const OvModule* module) {
    if (!module)
        return;
    for (Group& group : m_groups) {
        for (const auto& command : group.commands) {
            if (command->module() == module)
                command->orphan();
        }
    }
}

void OvEdCommandStack::clear() {
    m_groups.clear();
}
