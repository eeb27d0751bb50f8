#pragma once

#include "ovdb/OvDbHandle.h"

#include <functional>
#include <vector>

class OvDbDatabase;
class OvDbStub;
class OvRxClass;

// Names one object of a database for the life of that database. The null id names
// nothing. An id may be copied freely; it never owns the object.
class OvDbObjectId {
public:
    static const OvDbObjectId kNull;

    constexpr OvDbObjectId() = default;

    bool isNull() const { return m_stub == nullptr; }
    // Names an object that still exists (erased or not).
    bool isValid() const;
    bool isErased() const;
    OvDbHandle handle() const;
    OvDbDatabase* database() const;
    // Class of the object, without opening it; null for an invalid id.
    OvRxClass* objectClass() const;

    bool operator==(const OvDbObjectId& other) const { return m_stub == other.m_stub; }
    bool operator!=(const OvDbObjectId& other) const { return m_stub != other.m_stub; }
    bool operator<(const OvDbObjectId& other) const {
        return std::less<const OvDbStub*>()(m_stub, other.m_stub);
    }

    // The host's own side: ids are made by the database only.
    explicit OvDbObjectId(OvDbStub* stub) : m_stub(stub) {}
    OvDbStub* stub() const { return m_stub; }

private:
    OvDbStub* m_stub = nullptr;
};

using OvDbObjectIdArray = std::vector<OvDbObjectId>;

template <> struct std::hash<OvDbObjectId> {
    std::size_t operator()(const OvDbObjectId& id) const noexcept {
        return std::hash<const void*>()(id.stub());
    }
};
