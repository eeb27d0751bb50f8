#pragma once

#include "platform/ResourceLibraryAbi.h"

#include <QByteArray>
#include <QString>

namespace platform {

class ResourceHandle;
ResourceHandle* hostResourceHandle();
ResourceHandle* loadResourceLibrary(const QString& path);
bool freeResourceLibrary(ResourceHandle* handle);

// A source of resources by number: a loaded resource library, or the host's own
// handle, which holds none of the module's numbers. Handles are made and freed
// only by the functions of Resources.h, so that a handle seen anywhere is either
// the host's or one of a library still loaded.
class ResourceHandle {
public:
    ResourceHandle(const ResourceHandle&) = delete;
    ResourceHandle& operator=(const ResourceHandle&) = delete;

    bool isHost() const { return m_lookup == nullptr; }
    // The path given to loadResourceLibrary(); empty for the host's handle.
    QString fileName() const { return m_fileName; }

    // A copy of the entry's bytes, since the library may be unloaded before the
    // caller is done; an empty array when the handle lacks the entry.
    QByteArray find(ResourceKind kind, unsigned id) const;
    bool contains(ResourceKind kind, unsigned id) const;

private:
    friend ResourceHandle* hostResourceHandle();
    friend ResourceHandle* loadResourceLibrary(const QString& path);
    friend bool freeResourceLibrary(ResourceHandle* handle);

    ResourceHandle(void* library, ResourceLookupFunction lookup, const QString& fileName);
    ~ResourceHandle() = default;

    void* m_library = nullptr;
    ResourceLookupFunction m_lookup = nullptr;
    QString m_fileName;
};

} // namespace platform
