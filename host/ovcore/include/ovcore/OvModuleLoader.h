#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class OvApDocument;
class OvModule;

// Loads modules (.ovm shared objects) into the host and carries every call into them.
//
// A module exports
//   extern "C" bool ovrxLibraryEntry(void* instance, unsigned reason);  // optional
//   extern "C" unsigned ovrxGetApiVersion();                            // major in the high 16
//   bits extern "C" int ovrxEntryPoint(int message, void* packet);
//
// Loading: dlopen (RTLD_NOW | RTLD_LOCAL); the library entry with reason 1 (false: the
// module is unloaded); the API version, whose major must be 26; kInitAppMsg with the app
// id (kRetError: the module is unloaded); then kLoadDwgMsg once for each open document,
// each current during its call. Later documents get kLoadDwgMsg when they open and
// kUnloadDwgMsg before they close. Unloading: kUnloadAppMsg, the library entry with
// reason 0, dlclose.
//
// Every call into a module is guarded: an exception is reported at the command line and
// the session goes on. Objects left open by a call are reported and counted.
class OvModuleLoader {
public:
    static constexpr unsigned kApiMajor = 26;

    static OvModuleLoader& instance();

    // False with a message at the command line (and in lastError) when the module cannot be
    // loaded or refuses. Loading a module that is loaded already does nothing and succeeds.
    bool load(const QString& path);
    // Refused while a call into the module runs, and, unless `force`, for a locked module
    // or one whose kUnloadAppMsg answers kRetError.
    bool unload(const QString& nameOrPath, bool force = false);
    // Host shutdown: every module, the last loaded first.
    void unloadAll();

    QList<OvModule*> modules() const;
    // By file name (case as on disk) or by path.
    OvModule* find(const QString& nameOrPath) const;
    OvModule* findByAppId(const void* appId) const;
    // The module whose code holds `address` (a handler, a vtable), null if none.
    OvModule* moduleOfAddress(const void* address) const;
    // The module being called now (innermost), null when the host runs its own code.
    OvModule* activeModule() const;
    QString lastError() const { return m_lastError; }

    // Sends a message to a module, guarded, with the module active. Returns the module's
    // answer, kRetError when it threw.
    int sendMessage(OvModule* module, int message, void* packet);
    // Runs `call` on behalf of `module` (null: the host itself): guarded, with the module
    // active and counted as busy, and reports objects left open. False when it threw.
    bool callInto(OvModule* module, const wchar_t* where, const std::function<void()>& call);

    // From the document manager: a document has been opened / is about to close. The
    // document is made current for each module's call.
    void documentLoaded(OvApDocument* document);
    void documentToBeUnloaded(OvApDocument* document);

private:
    OvModuleLoader() = default;
    void fail(const QString& message);
    void release(std::unique_ptr<OvModule> module, bool callLibraryEntry);
    void sendToDocument(OvModule* module, int message, OvApDocument* document);

    std::vector<std::unique_ptr<OvModule>> m_modules;
    std::vector<OvModule*> m_active;
    QString m_lastError;
};

// The same, for the host's programs and LISP functions.
bool ovrxLoadModule(const QString& path);
bool ovrxUnloadModule(const QString& nameOrPath);
QStringList ovrxLoadedModules();
