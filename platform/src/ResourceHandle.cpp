#include "platform/ResourceHandle.h"

namespace platform {

ResourceHandle::ResourceHandle(void* library, ResourceLookupFunction lookup,
                               const QString& fileName)
    : m_library(library), m_lookup(lookup), m_fileName(fileName) {}

QByteArray ResourceHandle::find(ResourceKind kind, unsigned id) const {
    if (m_lookup == nullptr) {
        return {};
    }
    const char* data = nullptr;
    std::size_t size = 0;
    if (!m_lookup(static_cast<int>(kind), id, &data, &size) || data == nullptr) {
        return {};
    }
    return QByteArray(data, static_cast<qsizetype>(size));
}

bool ResourceHandle::contains(ResourceKind kind, unsigned id) const {
    return m_lookup != nullptr && m_lookup(static_cast<int>(kind), id, nullptr, nullptr);
}

} // namespace platform
