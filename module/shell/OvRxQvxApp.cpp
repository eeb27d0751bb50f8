#include "shell/OvRxQvxApp.h"

#include "shell/ZelModuleState.h"

#include "ovcore/OvRxDynamicLinker.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "platform/Resources.h"

namespace {

// What LoadStringW leaves in a buffer of 132 wide characters.
constexpr qsizetype kNameBufferLength = 131;

using Slot = int (OvRxQvxApp::*)(void*);

// Slot of each message code, by number.
constexpr Slot kSlots[OvRxQvxApp::kLastMessage + 1] = {
    &OvRxQvxApp::OnNullMsg,      &OvRxQvxApp::OnInitApp,    &OvRxQvxApp::OnUnloadApp,
    &OvRxQvxApp::OnLoadDwg,      &OvRxQvxApp::OnUnloadDwg,  &OvRxQvxApp::OnInvokeSubr,
    &OvRxQvxApp::OnCfg,          &OvRxQvxApp::OnEnd,        &OvRxQvxApp::OnQuit,
    &OvRxQvxApp::OnSave,         &OvRxQvxApp::OnDependency, &OvRxQvxApp::OnNoDependency,
    &OvRxQvxApp::OnOleUnloadApp, &OvRxQvxApp::OnPreQuit,    &OvRxQvxApp::OnInitDialog,
    &OvRxQvxApp::OnEndDialog,
};

OvRxDynamicLinker* dynamicLinker() {
    return OvRxDynamicLinker::cast(ovrxSysRegistry()->at(L"DynamicLinker"));
}

} // namespace

int OvRxQvxApp::DispatchMessage(int message, void* packet) {
    if (message < 0 || message > kLastMessage)
        return 0;
    return (this->*kSlots[message])(packet);
}

int OvRxQvxApp::OnInitApp(void* packet) {
    instanceHandle = moduleInstance;
    // The host always offers the linker; a registry without it leaves the application
    // locked rather than bring the host down.
    if (unlockOnInit) {
        if (OvRxDynamicLinker* linker = dynamicLinker())
            linker->unlockApplication(packet);
    }
    if (mdiAware) {
        if (OvRxDynamicLinker* linker = dynamicLinker())
            linker->registerAppMDIAware(packet);
    }
    RegisterComponents();

    bool any = false;
    for (ClassEntry* entry : m_tables.classes) {
        if (entry == nullptr)
            continue;
        if (entry->init != nullptr)
            entry->init();
        entry->registered = true;
        any = true;
    }
    if (any)
        ovrxBuildClassHierarchy();
    return 0;
}

int OvRxQvxApp::OnUnloadApp(void*) {
    for (ClassEntry* entry : m_tables.classes) {
        if (entry != nullptr && entry->registered)
            RemoveClass(entry);
    }
    return 0;
}

void OvRxQvxApp::RemoveClass(ClassEntry* entry) {
    OvRxClass* cls = entry->desc != nullptr ? entry->desc() : nullptr;
    // Children first: the registry refuses to delete a class that is still a parent.
    for (ClassEntry* other : m_tables.classes) {
        if (other == nullptr || other == entry || !other->registered || other->desc == nullptr)
            continue;
        const OvRxClass* child = other->desc();
        if (cls != nullptr && child != nullptr && child->myParent() == cls)
            RemoveClass(other);
    }
    if (cls != nullptr)
        deleteOvRxClass(cls);
    entry->registered = false;
}

int OvRxQvxApp::OnLoadDwg(void*) {
    return 0;
}

int OvRxQvxApp::OnUnloadDwg(void*) {
    return 0;
}

int OvRxQvxApp::OnInvokeSubr(void*) {
    return 0;
}

int OvRxQvxApp::OnCfg(void*) {
    return 0;
}

int OvRxQvxApp::OnEnd(void*) {
    return 0;
}

int OvRxQvxApp::OnQuit(void*) {
    return 0;
}

int OvRxQvxApp::OnSave(void*) {
    return 0;
}

int OvRxQvxApp::OnDependency(void*) {
    return 0;
}

int OvRxQvxApp::OnNoDependency(void*) {
    return 0;
}

int OvRxQvxApp::OnOleUnloadApp(void*) {
    return 0;
}

int OvRxQvxApp::OnPreQuit(void*) {
    return 0;
}

int OvRxQvxApp::OnInitDialog(void*) {
    return 0;
}

int OvRxQvxApp::OnEndDialog(void*) {
    return 0;
}

int OvRxQvxApp::OnNullMsg(void*) {
    return 0;
}

QString OvRxQvxApp::LoadInstanceString(quint32 id) const {
    // The module's own file carries no texts: the host's handle stands for it, as it does
    // for moduleResource before the resource library is there.
    return platform::loadString(platform::hostResourceHandle(), id).left(kNameBufferLength);
}
