#pragma once

// The library a command takes its resources from: a module's instance handle, or null
// for none. A plain value: copying it copies the handle, never the library.
class OvRxResourceInstance {
public:
    OvRxResourceInstance() = default;
    explicit OvRxResourceInstance(void* handle) : m_handle(handle) {}

    void* handle() const { return m_handle; }
    bool isNull() const { return m_handle == nullptr; }

    friend bool operator==(const OvRxResourceInstance&, const OvRxResourceInstance&) = default;

private:
    void* m_handle = nullptr;
};
