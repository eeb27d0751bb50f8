#pragma once

#include "ovdb/OvDbObject.h"

class OvDbBlockTableRecord;
class OvDbEntity;

// Walks the entities of a block in drawing order. It holds a position, so entities added
// during the walk are reached; it must not outlive the database.
class OvDbBlockTableRecordIterator {
public:
    OvDbBlockTableRecordIterator(const OvDbBlockTableRecord* block, bool atBeginning,
                                 bool skipDeleted);
    ~OvDbBlockTableRecordIterator();

    void start(bool atBeginning = true, bool skipDeleted = true);
    bool done() const;
    void step(bool forward = true, bool skipDeleted = true);

    Orvex::ErrorStatus getEntityId(OvDbObjectId& id) const;
    OvDbObjectId entityId() const;
    Orvex::ErrorStatus getEntity(OvDbEntity*& entity, OvDb::OpenMode mode,
                                 bool openErasedEntity = false) const;
    // eKeyNotFound when the block does not hold the entity.
    Orvex::ErrorStatus seek(OvDbObjectId id);

private:
    const std::vector<OvDbObjectId>* entities() const;

    OvDbObjectId m_block;
    long long m_pos = 0;
};
