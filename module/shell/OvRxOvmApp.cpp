#include "shell/OvRxOvmApp.h"

#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovcore/oved.h"

#include <string>

int OvRxOvmApp::OnInitApp(void* packet) {
    OvRxQvxApp::OnInitApp(packet);
    for (const CommandEntry* entry : RegistrationTables().commands) {
        if (entry == nullptr)
            continue;
        const bool noInstance = (entry->flags & kCmdNoResourceInstance) != 0;
        AddCommand(*entry,
                   noInstance ? OvRxResourceInstance() : OvRxResourceInstance(instanceHandle));
    }
    return 0;
}

int OvRxOvmApp::OnUnloadApp(void* packet) {
    OvRxQvxApp::OnUnloadApp(packet);
    OvEdCommandStack* commands =
        OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
    if (commands == nullptr)
        return 0;
    for (const CommandEntry* entry : RegistrationTables().commands) {
        if (entry != nullptr)
            commands->removeCmd(entry->groupName, entry->globalName);
    }
    return 0;
}

int OvRxOvmApp::OnLoadDwg(void*) {
    int number = 0;
    for (const LispSymbolEntry* entry : RegistrationTables().lispSymbols) {
        if (entry == nullptr)
            continue;
        const std::wstring name = LispSymbolName(*entry).toStdWString();
        ovedDefun(name.c_str(), number);
        if (entry->regFunc == 1)
            ovedRegFunc(entry->handler, number);
        ++number;
    }
    return 0;
}

int OvRxOvmApp::OnUnloadDwg(void*) {
    int number = 0;
    for (const LispSymbolEntry* entry : RegistrationTables().lispSymbols) {
        if (entry == nullptr)
            continue;
        const std::wstring name = LispSymbolName(*entry).toStdWString();
        ovedUndef(name.c_str(), number);
        ++number;
    }
    return 0;
}

int OvRxOvmApp::OnInvokeSubr(void*) {
    const int code = ovedGetFunCode();
    int number = 0;
    for (const LispSymbolEntry* entry : RegistrationTables().lispSymbols) {
        if (entry == nullptr)
            continue;
        if (number == code) {
            if (entry->handler != nullptr)
                entry->handler();
            break;
        }
        ++number;
    }
    // The handler's own result is the call's business, not the message's.
    return 0;
}

void OvRxOvmApp::AddCommand(const CommandEntry& entry,
                            OvRxResourceInstance resourceInstance) const {
    QString localName =
        entry.localName != nullptr ? QString::fromWCharArray(entry.localName) : QString();
    if (localName.isEmpty() && entry.localNameId < kNoResource)
        localName = LoadInstanceString(entry.localNameId);
    OvEdCommandStack* commands =
        OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
    if (commands == nullptr)
        return;
    const std::wstring local = localName.toStdWString();
    commands->addCommand(entry.groupName, entry.globalName, local.c_str(), entry.flags,
                         entry.handler, entry.uiContext, -1, resourceInstance, nullptr);
}

QString OvRxOvmApp::LispSymbolName(const LispSymbolEntry& entry) const {
    if (entry.name != nullptr)
        return QString::fromWCharArray(entry.name);
    return LoadInstanceString(entry.nameId);
}
