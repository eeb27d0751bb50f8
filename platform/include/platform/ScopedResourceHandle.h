#pragma once

namespace platform {

class ResourceHandle;

// Makes a handle current for the life of the object and puts back the one that
// was current before, also when an exception unwinds the stack.
class ScopedResourceHandle {
public:
    explicit ScopedResourceHandle(ResourceHandle* handle);
    ~ScopedResourceHandle();

    ScopedResourceHandle(const ScopedResourceHandle&) = delete;
    ScopedResourceHandle& operator=(const ScopedResourceHandle&) = delete;

    ResourceHandle* previous() const { return m_previous; }

private:
    ResourceHandle* m_previous;
};

} // namespace platform
