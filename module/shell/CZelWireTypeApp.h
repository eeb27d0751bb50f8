#pragma once

#include "shell/ZelOvRxOvmApp.h"

// The module's application: the last level of the chain, with its four registration
// tables. Its drawing-load slot runs the module's own routine (ZelDrawingLoad.h) after the
// LISP symbol table.
class CZelWireTypeApp : public ZelOvRxOvmApp {
public:
    constexpr CZelWireTypeApp(const Tables& tables) : ZelOvRxOvmApp(tables, true, true) {}

    int OnUnloadApp(void* packet) override;
    int OnLoadDwg(void* packet) override;
    int OnUnloadDwg(void* packet) override;
    void RegisterComponents() override;
};

// The one application object, from process attach to detach.
extern CZelWireTypeApp theApp;
