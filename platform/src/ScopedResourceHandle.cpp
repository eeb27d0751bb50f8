#include "platform/ScopedResourceHandle.h"

#include "platform/Resources.h"

namespace platform {

ScopedResourceHandle::ScopedResourceHandle(ResourceHandle* handle)
    : m_previous(setCurrentResourceHandle(handle)) {}

ScopedResourceHandle::~ScopedResourceHandle() {
    setCurrentResourceHandle(m_previous);
}

} // namespace platform
