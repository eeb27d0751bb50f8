#include "shell/ZelLibraryEntry.h"

#include "shell/ZelHostServices.h"
#include "shell/ZelModuleState.h"

#include "ovui/OvUi.h"
#include "platform/Resources.h"

const wchar_t* const s_moduleFileName = L"ZelWireType.ovm";
const wchar_t* const s_resourceFileName = L"ZelWireTypeRes.so";

namespace {

void beginAttach() {
    if (!extensionModuleReady) {
        extensionModuleReady = true;
        defaultResource = platform::currentResourceHandle();
        // The module's own file holds no resources: until the library is there, the host's
        // handle stands for it.
        moduleResource = platform::hostResourceHandle();
    }
}

bool endAttach(bool loaded) {
    if (loaded) {
        moduleResource = resourceLibrary;
        return true;
    }
    extensionModuleReady = false;
    defaultResource = nullptr;
    moduleResource = nullptr;
    return false;
}

} // namespace

bool LoadResourceLibrary(const QString& moduleFile, const QString& resourceFile) {
    QString path;
    GetModuleFolder(path, moduleFile);
    AppendBackslash(path);
    path += resourceFile;
    platform::ResourceHandle* library = platform::loadResourceLibrary(path);
    if (library == nullptr)
        library = platform::loadResourceLibrary(resourceFile);
    resourceLibrary = library;
    return resourceLibrary != nullptr;
}

bool ZelLibraryEntry(void* instance, unsigned reason) {
    if (reason == kZelProcessAttach) {
        moduleInstance = instance;
        InitOvUiDLL();
        beginAttach();
        return endAttach(LoadResourceLibrary(QString::fromWCharArray(s_moduleFileName),
                                             QString::fromWCharArray(s_resourceFileName)));
    }
    if (reason == kZelProcessDetach) {
        ZelDetachResources();
        return true;
    }
    return true;
}

bool ZelAttachResources(const QString& folder) {
    if (resourceLibrary != nullptr)
        return true;
    beginAttach();
    const QString resourceFile = QString::fromWCharArray(s_resourceFileName);
    if (folder.isEmpty())
        return endAttach(
            LoadResourceLibrary(QString::fromWCharArray(s_moduleFileName), resourceFile));
    QString path = folder;
    AppendBackslash(path);
    resourceLibrary = platform::loadResourceLibrary(path + resourceFile);
    return endAttach(resourceLibrary != nullptr);
}

void ZelDetachResources() {
    if (extensionModuleReady) {
        defaultResource = nullptr;
        moduleResource = nullptr;
        extensionModuleReady = false;
    }
    if (resourceLibrary != nullptr) {
        platform::freeResourceLibrary(resourceLibrary);
        resourceLibrary = nullptr;
    }
}
