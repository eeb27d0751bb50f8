#pragma once

#include "ovcore/OvEdCommand.h"

#include <QString>
#include <QtGlobal>

#include <span>

class OvEdUIContext;
class OvRxClass;

// Root of the chain of application classes. The host's messages arrive through
// ovrxEntryPoint as calls of the virtual slots below, in this order; each level of the
// chain adds its share. This one unlocks the application, makes it MDI-aware and registers
// the module's classes; the others are no-ops here. Every slot returns 0.
//
// The four registration tables are arrays of entry pointers, scanned from first slot to
// last. A null slot is skipped and does not count: numbers taken from a scan count the
// entries that are there, from 0.
class OvRxQvxApp {
public:
    struct ClassEntry {
        OvRxClass* (*desc)();
        void (*init)();
        bool registered;
    };
    struct CommandEntry {
        const wchar_t* groupName;
        const wchar_t* globalName;
        // Null or empty: loaded from localNameId.
        const wchar_t* localName;
        qint32 flags;
        OvRxFunctionPtr handler;
        OvEdUIContext* uiContext;
        // kNoResource: none.
        quint32 localNameId;
    };
    struct LispSymbolEntry {
        // Null: loaded from nameId.
        const wchar_t* name;
        int (*handler)();
        // 1: the handler is also registered through ovedRegFunc.
        int regFunc;
        quint32 nameId;
    };
    struct Tables {
        std::span<ClassEntry* const> classes;
        std::span<CommandEntry* const> commands;
        std::span<CommandEntry* const> addOnCommands;
        std::span<LispSymbolEntry* const> lispSymbols;
    };

    static constexpr quint32 kNoResource = 0xFFFFFFFF;
    // Highest message code the host sends; codes above it are answered 0 without a call.
    static constexpr int kLastMessage = 15;

    // Constant: the application object is valid before any constructor of the module runs.
    constexpr OvRxQvxApp(const Tables& tables, bool unlockOnInit, bool mdiAware)
        : unlockOnInit(unlockOnInit), mdiAware(mdiAware), m_tables(tables) {}

    // Message `message` to its slot, with `packet` passed on; the slot's answer.
    int DispatchMessage(int message, void* packet);

    virtual int OnInitApp(void* packet);      // 1
    virtual int OnUnloadApp(void* packet);    // 2
    virtual int OnLoadDwg(void* packet);      // 3
    virtual int OnUnloadDwg(void* packet);    // 4
    virtual int OnInvokeSubr(void* packet);   // 5
    virtual int OnCfg(void* packet);          // 6
    virtual int OnEnd(void* packet);          // 7
    virtual int OnQuit(void* packet);         // 8
    virtual int OnSave(void* packet);         // 9
    virtual int OnDependency(void* packet);   // 10
    virtual int OnNoDependency(void* packet); // 11
    virtual int OnOleUnloadApp(void* packet); // 12
    virtual int OnPreQuit(void* packet);      // 13
    virtual int OnInitDialog(void* packet);   // 14
    virtual int OnEndDialog(void* packet);    // 15
    virtual int OnNullMsg(void* packet);      // 0
    virtual void RegisterComponents() = 0;

    void* InstanceHandle() const { return instanceHandle; }

protected:
    // A text by number from the module's own instance, cut to what a buffer of 132 wide
    // characters holds.
    QString LoadInstanceString(quint32 id) const;
    const Tables& RegistrationTables() const { return m_tables; }

    void* instanceHandle = nullptr;
    bool unlockOnInit;
    bool mdiAware;

private:
    void RemoveClass(ClassEntry* entry);

    Tables m_tables;
};
