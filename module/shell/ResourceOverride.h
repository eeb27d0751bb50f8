#pragma once

namespace platform {
class ResourceHandle;
}

// Scoped switch of the current resource handle to the module's resources, around whatever
// loads a string or shows a dialog: on entry the current handle is kept and
// `moduleResource` made current; on leaving the kept handle comes back, also when an
// exception unwinds the stack.
class ResourceOverride {
public:
    ResourceOverride();
    ~ResourceOverride();
    ResourceOverride(const ResourceOverride&) = delete;
    ResourceOverride& operator=(const ResourceOverride&) = delete;

private:
    platform::ResourceHandle* m_previous;
};
