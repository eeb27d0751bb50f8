// A module for the host core's tests. Everything it is told it prints at the command line,
// "[testmodule] ...", so that a test reads the sequence even after the module is gone.

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvApDocManagerReactor.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvEdInput.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvRxAppMsgCode.h"
#include "ovcore/OvRxDynamicLinker.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovcore/oved.h"
#include "ovdb/ovut.h"

#include <stdexcept>

#ifndef TM_API_VERSION
#define TM_API_VERSION 0x1A0000u
#endif

#define TM_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

const wchar_t* currentTitle() {
    OvApDocManager* manager = ovDocManagerPtr();
    OvApDocument* doc = manager ? manager->curDocument() : nullptr;
    static std::wstring title;
    title = doc ? doc->docTitle().toStdWString() : std::wstring(L"(none)");
    return title.c_str();
}

// Exists from load to unload, as a module's per-document data manager does.
class TestReactor : public OvApDocManagerReactor {
public:
    TestReactor() {
        if (OvApDocManager* manager = ovDocManagerPtr())
            manager->addReactor(this);
    }
    ~TestReactor() override {
        if (OvApDocManager* manager = ovDocManagerPtr())
            manager->removeReactor(this);
    }
    void documentToBeDestroyed(OvApDocument* doc) override {
        ovutPrintf(L"[testmodule] reactor: %ls to be destroyed\n",
                   doc->docTitle().toStdWString().c_str());
    }
};

TestReactor s_reactor;

void helloCommand() {
    ovutPrintf(L"[testmodule] hello in %ls\n", currentTitle());
}

void throwCommand() {
    throw std::runtime_error("the test command failed");
}

// Asks for two lines, as a command with options does, and prints what it got.
void askCommand() {
    QString first;
    QString second;
    const int a = ovedGetString(L"\nFirst: ", first);
    const int b = a == RTNORM ? ovedGetString(L"\nSecond: ", second) : RTCAN;
    ovutPrintf(L"[testmodule] asked: %ls|%ls (%ls)\n", first.toStdWString().c_str(),
               second.toStdWString().c_str(), b == RTNORM ? L"answered" : L"cancelled");
}

void unloadSelfCommand() {
    const bool unloaded = ovrxUnloadModule(QStringLiteral(TM_NAME));
    ovutPrintf(L"[testmodule] unload from inside: %ls\n", unloaded ? L"done" : L"refused");
}

int echoFunction() {
    ovedRetList(ovedGetArgs());
    return 1;
}

int throwFunction() {
    throw std::runtime_error("the test function failed");
}

int failFunction() {
    return 3;
}

void defineFunctions() {
    ovedDefun(L"tm_echo", 1);
    ovedRegFunc(echoFunction, 1);
    ovedDefun(L"tm_throw", 2);
    ovedRegFunc(throwFunction, 2);
    ovedDefun(L"tm_fail", 3);
    ovedRegFunc(failFunction, 3);
}

void initApp(void* appId) {
    auto* linker = OvRxDynamicLinker::cast(ovrxSysRegistry()->at(L"DynamicLinker"));
    linker->unlockApplication(appId);
    linker->registerAppMDIAware(appId);
    auto* commands = OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
    commands->addCommand(L"OVTESTMODULE", L"TmHello", L"TmHallo", OvRx::kCmdTransparent,
                         helloCommand);
    commands->addCommand(L"OVTESTMODULE", L"TmThrow", L"TmThrow", OvRx::kCmdModal, throwCommand);
    commands->addCommand(L"OVTESTMODULE", L"TmAsk", nullptr, OvRx::kCmdModal, askCommand);
    commands->addCommand(L"OVTESTMODULE", L"TmUnloadSelf", nullptr, OvRx::kCmdModal,
                         unloadSelfCommand);
}

} // namespace

TM_EXPORT bool ovrxLibraryEntry(void* instance, unsigned reason) {
    if (reason == 1) {
        ovutPrintf(L"[testmodule] attach %ls\n", instance ? L"with instance" : L"without");
#ifdef TM_ATTACH_FAILS
        return false;
#endif
    } else if (reason == 0) {
        ovutPrintf(L"[testmodule] detach%ls\n",
                   ovDocManagerPtr() ? L"" : L" after the document manager");
    }
    return true;
}

TM_EXPORT unsigned ovrxGetApiVersion() {
    return TM_API_VERSION;
}

TM_EXPORT int ovrxEntryPoint(int message, void* packet) {
    switch (message) {
    case OvRx::kInitAppMsg:
        ovutPrintf(L"[testmodule] message 1\n");
        initApp(packet);
        break;
    case OvRx::kUnloadAppMsg:
        ovutPrintf(L"[testmodule] message 2\n");
        break;
    case OvRx::kLoadDwgMsg:
        ovutPrintf(L"[testmodule] message 3 %ls\n", currentTitle());
        defineFunctions();
        break;
    case OvRx::kUnloadDwgMsg:
        ovutPrintf(L"[testmodule] message 4 %ls\n", currentTitle());
        break;
    default:
        break;
    }
    return OvRx::kRetOK;
}
