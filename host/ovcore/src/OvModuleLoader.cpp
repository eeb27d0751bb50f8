#include "ovcore/OvModuleLoader.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvGuard.h"
#include "ovcore/OvLisp.h"
#include "ovcore/OvModule.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovcore/OvRxAppMsgCode.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <dlfcn.h>

namespace {

std::wstring wide(const QString& text) {
    return text.toStdWString();
}

QString dlErrorText() {
    const char* text = dlerror();
    return text ? QString::fromLocal8Bit(text) : QStringLiteral("unknown error");
}

OvEdCommandStack* commandStack() {
    return OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
}

// Calls the library entry of a module, guarded; false when it refused or threw.
bool callLibraryEntry(OvModule::LibraryEntry entry, void* handle, unsigned reason,
                      const QString& name) {
    const std::wstring where = L"library entry of " + wide(name);
    return ovcore::guardedCall(where.c_str(), false, [&] { return entry(handle, reason); });
}

} // namespace

OvModuleLoader& OvModuleLoader::instance() {
    static OvModuleLoader loader;
    return loader;
}

void OvModuleLoader::fail(const QString& message) {
    m_lastError = message;
    ovutPrintf(L"\n; error: %ls\n", wide(message).c_str());
}

bool OvModuleLoader::load(const QString& path) {
    m_lastError.clear();
    const QFileInfo file(path);
    if (path.isEmpty() || !file.exists()) {
        fail(QStringLiteral("cannot load module \"%1\": no such file").arg(path));
        return false;
    }
    if (!ovDocManagerPtr()) {
        fail(QStringLiteral("cannot load module \"%1\": the host is not running").arg(path));
        return false;
    }
    const QString canonical = file.canonicalFilePath();
    if (OvModule* loaded = find(canonical)) {
        if (loaded->path() == canonical)
            return true;
        fail(QStringLiteral("cannot load module \"%1\": a module of that name is loaded from "
                            "\"%2\"")
                 .arg(path, loaded->path()));
        return false;
    }

    dlerror();
    void* handle = dlopen(QFile::encodeName(canonical).constData(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        fail(QStringLiteral("cannot load module \"%1\": %2").arg(path, dlErrorText()));
        return false;
    }
    const QString name = file.fileName();

    // The library entry runs first, as the system's attach would.
    auto libraryEntry = reinterpret_cast<OvModule::LibraryEntry>(dlsym(handle, "ovrxLibraryEntry"));
    if (libraryEntry && !callLibraryEntry(libraryEntry, handle, 1, name)) {
        dlclose(handle);
        fail(QStringLiteral("module %1 refused to load: its library entry failed").arg(name));
        return false;
    }
    auto detach = [&](const QString& message) {
        if (libraryEntry)
            callLibraryEntry(libraryEntry, handle, 0, name);
        dlclose(handle);
        fail(message);
        return false;
    };

    dlerror();
    auto getApiVersion = reinterpret_cast<unsigned (*)()>(dlsym(handle, "ovrxGetApiVersion"));
    if (!getApiVersion)
        return detach(QStringLiteral("module %1 cannot be used: %2").arg(name, dlErrorText()));
    dlerror();
    auto entryPoint = reinterpret_cast<OvModule::EntryPoint>(dlsym(handle, "ovrxEntryPoint"));
    if (!entryPoint)
        return detach(QStringLiteral("module %1 cannot be used: %2").arg(name, dlErrorText()));
    bool threw = false;
    const std::wstring versionWhere = L"ovrxGetApiVersion of " + wide(name);
    const unsigned version = ovcore::guardedCall(
        versionWhere.c_str(), 0u, [&] { return getApiVersion(); }, &threw);
    if (threw)
        return detach(
            QStringLiteral("module %1 cannot be used: its API version is unknown").arg(name));
    if ((version >> 16) != kApiMajor) {
        return detach(QStringLiteral("module %1 is built for host API %2.%3; this host has %4")
                          .arg(name)
                          .arg(version >> 16)
                          .arg(version & 0xFFFF)
                          .arg(kApiMajor));
    }

    m_modules.push_back(
        std::make_unique<OvModule>(canonical, handle, libraryEntry, entryPoint, version));
    OvModule* module = m_modules.back().get();
    if (sendMessage(module, OvRx::kInitAppMsg, module->appId()) == OvRx::kRetError) {
        auto it = std::find_if(m_modules.begin(), m_modules.end(),
                               [&](const auto& m) { return m.get() == module; });
        std::unique_ptr<OvModule> owned = std::move(*it);
        m_modules.erase(it);
        release(std::move(owned), true);
        fail(QStringLiteral("module %1 failed to initialise and was unloaded").arg(name));
        return false;
    }
    module->setInitialised(true);

    // Documents opened before the module get their kLoadDwgMsg now.
    if (OvApDocManager* manager = ovDocManagerPtr()) {
        for (OvApDocument* doc : manager->documents()) {
            if (find(canonical) != module)
                break; // the module went during a message
            if (manager->documents().contains(doc))
                sendToDocument(module, OvRx::kLoadDwgMsg, doc);
        }
    }
    return true;
}

bool OvModuleLoader::unload(const QString& nameOrPath, bool force) {
    m_lastError.clear();
    OvModule* module = find(nameOrPath);
    if (!module) {
        fail(QStringLiteral("cannot unload \"%1\": no such module is loaded").arg(nameOrPath));
        return false;
    }
    const QString name = module->name();
    // Its code is on the stack: unmapping it now would pull the ground from under the call.
    if (module->callDepth() > 0) {
        fail(QStringLiteral("cannot unload %1 while it runs").arg(name));
        return false;
    }
    if (module->isLocked() && !force) {
        fail(QStringLiteral("cannot unload %1: the module is locked").arg(name));
        return false;
    }
    if (module->isInitialised()) {
        const int answer = sendMessage(module, OvRx::kUnloadAppMsg, module->appId());
        if (answer == OvRx::kRetError && !force) {
            fail(QStringLiteral("module %1 refused to be unloaded").arg(name));
            return false;
        }
    }
    auto it = std::find_if(m_modules.begin(), m_modules.end(),
                           [&](const auto& m) { return m.get() == module; });
    if (it == m_modules.end())
        return true; // it went during its own kUnloadAppMsg
    std::unique_ptr<OvModule> owned = std::move(*it);
    m_modules.erase(it);
    release(std::move(owned), true);
    return true;
}

void OvModuleLoader::release(std::unique_ptr<OvModule> module, bool callEntry) {
    // What the module registered and did not take back points into its code: commands stay
    // listed but no longer run, LISP functions go.
    if (OvEdCommandStack* commands = commandStack())
        commands->orphanCommandsOf(module.get());
    ovcore::lisp::forgetModule(module.get());
    if (callEntry && module->libraryEntry())
        callLibraryEntry(module->libraryEntry(), module->handle(), 0, module->name());
    dlerror();
    if (dlclose(module->handle()) != 0) {
        ovutPrintf(L"\n; warning: module %ls: %ls\n", wide(module->name()).c_str(),
                   wide(dlErrorText()).c_str());
    }
}

void OvModuleLoader::unloadAll() {
    while (!m_modules.empty()) {
        OvModule* last = m_modules.back().get();
        if (!unload(last->path(), true) && !m_modules.empty() && m_modules.back().get() == last) {
            // Still running (shutdown from inside one of its calls): leave it mapped.
            m_modules.back().release();
            m_modules.pop_back();
        }
    }
}

QList<OvModule*> OvModuleLoader::modules() const {
    QList<OvModule*> list;
    for (const auto& module : m_modules)
        list << module.get();
    return list;
}

OvModule* OvModuleLoader::find(const QString& nameOrPath) const {
    if (nameOrPath.isEmpty())
        return nullptr;
    const bool byPath = nameOrPath.contains(u'/');
    const QString path = byPath ? QFileInfo(nameOrPath).canonicalFilePath() : QString();
    for (const auto& module : m_modules) {
        if (byPath ? module->path() == path
                   : module->name().compare(nameOrPath, Qt::CaseInsensitive) == 0)
            return module.get();
    }
    // A path of another folder still names the module of that file name.
    if (byPath) {
        const QString name = QFileInfo(nameOrPath).fileName();
        for (const auto& module : m_modules) {
            if (module->name().compare(name, Qt::CaseInsensitive) == 0)
                return module.get();
        }
    }
    return nullptr;
}

OvModule* OvModuleLoader::findByAppId(const void* appId) const {
    for (const auto& module : m_modules) {
        if (module.get() == appId)
            return module.get();
    }
    return nullptr;
}

OvModule* OvModuleLoader::moduleOfAddress(const void* address) const {
    Dl_info info{};
    if (!address || !dladdr(address, &info) || !info.dli_fbase)
        return nullptr;
    for (const auto& module : m_modules) {
        if (module->baseAddress() == info.dli_fbase)
            return module.get();
    }
    return nullptr;
}

OvModule* OvModuleLoader::activeModule() const {
    return m_active.empty() ? nullptr : m_active.back();
}

bool OvModuleLoader::callInto(OvModule* module, const wchar_t* where,
                              const std::function<void()>& call) {
    const std::size_t openBefore = ovdbOpenObjectCount();
    if (module)
        module->enterCall();
    m_active.push_back(module);
    ovcore::lisp::setActiveModule(module, module ? module->entryPoint() : nullptr);
    bool threw = false;
    ovcore::guardedCall(
        where, 0,
        [&] {
            call();
            return 0;
        },
        &threw);
    m_active.pop_back();
    OvModule* outer = activeModule();
    ovcore::lisp::setActiveModule(outer, outer ? outer->entryPoint() : nullptr);
    if (module)
        module->leaveCall();
    ovcore::checkObjectsLeftOpen(openBefore, where);
    return !threw;
}

int OvModuleLoader::sendMessage(OvModule* module, int message, void* packet) {
    if (!module)
        return OvRx::kRetError;
    const std::wstring where =
        L"message " + std::to_wstring(message) + L" to " + wide(module->name());
    int answer = OvRx::kRetOK;
    const OvModule::EntryPoint entry = module->entryPoint();
    if (!callInto(module, where.c_str(), [&] { answer = entry(message, packet); }))
        return OvRx::kRetError;
    return answer;
}

void OvModuleLoader::sendToDocument(OvModule* module, int message, OvApDocument* document) {
    OvApDocManager* manager = ovDocManagerPtr();
    if (!manager) {
        sendMessage(module, message, document);
        return;
    }
    OvApDocument* previous = manager->switchContext(document);
    sendMessage(module, message, document);
    // The call may have closed the document that was current before.
    const QList<OvApDocument*> open = manager->documents();
    manager->switchContext(open.contains(previous) ? previous : manager->mdiActiveDocument());
}

void OvModuleLoader::documentLoaded(OvApDocument* document) {
    for (OvModule* module : modules()) {
        if (!findByAppId(module) || !module->isInitialised())
            continue;
        OvApDocManager* manager = ovDocManagerPtr();
        if (manager && !manager->documents().contains(document))
            return; // closed by an earlier module's message
        sendToDocument(module, OvRx::kLoadDwgMsg, document);
    }
}

void OvModuleLoader::documentToBeUnloaded(OvApDocument* document) {
    for (OvModule* module : modules()) {
        if (findByAppId(module) && module->isInitialised())
            sendToDocument(module, OvRx::kUnloadDwgMsg, document);
    }
}

bool ovrxLoadModule(const QString& path) {
    return OvModuleLoader::instance().load(path);
}

bool ovrxUnloadModule(const QString& nameOrPath) {
    return OvModuleLoader::instance().unload(nameOrPath);
}

QStringList ovrxLoadedModules() {
    QStringList names;
    for (OvModule* module : OvModuleLoader::instance().modules())
        names << module->name();
    return names;
}
