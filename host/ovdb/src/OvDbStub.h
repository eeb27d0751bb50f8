#pragma once

#include "ovdb/OvRxClass.h"

#include <cstdint>

class OvDbDatabase;
class OvDbObject;

// What an object id points to: the database's record of one object. Stubs live as long
// as their database's contents, so an id stays safe to test after its object is gone.
class OvDbStub {
public:
    OvDbDatabase* db = nullptr;
    OvDbObject* object = nullptr;
    // The class of `object`, kept beside it so that checking what a reference names needs
    // no visit to the object: a read checks the layer of every line it meets.
    OvRxClass* objectClass = nullptr;
    std::uint64_t handle = 0;
    bool erased = false;
    // Erased because its owner was; revived with it.
    bool erasedWithOwner = false;
    // Generation of the save that writes it.
    unsigned saveMark = 0;

    bool holdsKindOf(const OvRxClass* cls) const {
        return objectClass && (objectClass == cls || objectClass->isDerivedFrom(cls));
    }
};
