#pragma once

#include "shell/OvRxQvxApp.h"

#include "ovcore/OvRxResourceInstance.h"

// Second level of the chain: adds the command table at initialisation and takes it back,
// with the classes, at unload; defines the LISP symbol table in each drawing, takes it
// back when the drawing goes, and calls a table entry's handler for a function that the
// host reaches through message 5.
class OvRxOvmApp : public OvRxQvxApp {
public:
    // A command of the plain table with this flag takes no resource instance.
    static constexpr qint32 kCmdNoResourceInstance = 0x200000;

    using OvRxQvxApp::OvRxQvxApp;

    int OnInitApp(void* packet) override;
    int OnUnloadApp(void* packet) override;
    int OnLoadDwg(void* packet) override;
    int OnUnloadDwg(void* packet) override;
    int OnInvokeSubr(void* packet) override;

protected:
    // Adds one command through the host's command stack.
    void AddCommand(const CommandEntry& entry, OvRxResourceInstance resourceInstance) const;

private:
    QString LispSymbolName(const LispSymbolEntry& entry) const;
};
