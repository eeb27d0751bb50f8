#include "ovcore/OvModule.h"

#include <QFileInfo>

#include <dlfcn.h>

OvModule::OvModule(const QString& path, void* handle, LibraryEntry libraryEntry,
                   EntryPoint entryPoint, unsigned apiVersion)
    : m_path(path), m_handle(handle), m_libraryEntry(libraryEntry), m_entryPoint(entryPoint),
      m_apiVersion(apiVersion) {
    Dl_info info{};
    if (entryPoint && dladdr(reinterpret_cast<const void*>(entryPoint), &info))
        m_base = info.dli_fbase;
}

QString OvModule::name() const {
    return QFileInfo(m_path).fileName();
}
