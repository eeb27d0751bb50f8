#pragma once

#include "ovdb/OvDbSymbolTableRecord.h"

#include <vector>

class OvDbBlockTableRecordIterator;
class OvDbEntity;

// A block: an ordered list of entities. "*Model_Space" holds the drawing itself.
class OvDbBlockTableRecord : public OvDbSymbolTableRecord {
public:
    static OvRxClass* desc();
    static OvDbBlockTableRecord* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbBlockTableRecord();
    ~OvDbBlockTableRecord() override;

    // Adds a new entity at the end; it is then open for write (close it). An entity
    // without a layer goes on the current layer. Needs the block in a database and open
    // for write; eAlreadyInDb for an entity already added, eWrongDatabase for a layer of
    // another drawing.
    Orvex::ErrorStatus appendOvDbEntity(OvDbEntity* entity);
    Orvex::ErrorStatus appendOvDbEntity(OvDbObjectId& id, OvDbEntity* entity);
    Orvex::ErrorStatus appendOvDbEntity(OvDbEntity* entity, OvDbObjectId& id);

    // The iterator may be used after the block is closed; the caller deletes it.
    Orvex::ErrorStatus newIterator(OvDbBlockTableRecordIterator*& iterator, bool atBeginning = true,
                                   bool skipDeleted = true) const;

    bool isModelSpace() const;

    // The live references that insert this block, in any block of the drawing, in the
    // order in which they were added (which is their order within each block). Costs the
    // number of references the block ever had, not the number of entities.
    Orvex::ErrorStatus getReferenceIds(OvDbObjectIdArray& ids) const;

protected:
    bool acceptsName(const QString& name) const override;
    Orvex::ErrorStatus subErase(bool erasing) override;
    void ownedObjects(std::vector<OvDbObjectId>& ids) const override;

private:
    friend class OvDbAccess;
    friend class OvDbBlockTableRecordIterator;

    std::vector<OvDbObjectId> m_entities;
};
