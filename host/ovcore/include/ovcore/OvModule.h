#pragma once

#include <QString>

// A module loaded into the host: a .ovm shared object and what the host knows of it.
// Its address is the app id given to the module with kInitAppMsg.
class OvModule {
public:
    using EntryPoint = int (*)(int message, void* packet);
    using LibraryEntry = bool (*)(void* instance, unsigned reason);

    OvModule(const QString& path, void* handle, LibraryEntry libraryEntry, EntryPoint entryPoint,
             unsigned apiVersion);

    OvModule(const OvModule&) = delete;
    OvModule& operator=(const OvModule&) = delete;

    // The file name, e.g. "ZelWireType.ovm".
    QString name() const;
    // Absolute, with links resolved.
    const QString& path() const { return m_path; }
    // The dlopen handle, also the instance given to the library entry.
    void* handle() const { return m_handle; }
    void* appId() { return this; }
    unsigned apiVersion() const { return m_apiVersion; }
    EntryPoint entryPoint() const { return m_entryPoint; }
    LibraryEntry libraryEntry() const { return m_libraryEntry; }
    // Load address of the shared object, to tell which module an address belongs to.
    const void* baseAddress() const { return m_base; }

    bool isLocked() const { return m_locked; }
    void setLocked(bool locked) { m_locked = locked; }
    bool isMDIAware() const { return m_mdiAware; }
    void setMDIAware(bool aware) { m_mdiAware = aware; }

    // Calls into the module under way (messages, commands); it is not unloaded meanwhile.
    int callDepth() const { return m_callDepth; }
    void enterCall() { ++m_callDepth; }
    void leaveCall() { --m_callDepth; }

    // kInitAppMsg was answered: the module expects kUnloadAppMsg before it goes.
    bool isInitialised() const { return m_initialised; }
    void setInitialised(bool done) { m_initialised = done; }

private:
    QString m_path;
    void* m_handle = nullptr;
    LibraryEntry m_libraryEntry = nullptr;
    EntryPoint m_entryPoint = nullptr;
    unsigned m_apiVersion = 0;
    const void* m_base = nullptr;
    bool m_locked = true;
    bool m_mdiAware = false;
    bool m_initialised = false;
    int m_callDepth = 0;
};
