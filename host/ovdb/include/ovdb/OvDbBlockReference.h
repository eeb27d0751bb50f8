#pragma once

#include "ovdb/OvDbEntity.h"
#include "ovdb/OvGePoint3d.h"

#include <vector>

class OvDbAttribute;
class OvDbObjectIterator;

// An insertion of a block, with its attributes. The reference owns its attributes:
// erasing it erases them.
class OvDbBlockReference : public OvDbEntity {
public:
    static OvRxClass* desc();
    static OvDbBlockReference* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbBlockReference();
    OvDbBlockReference(const OvGePoint3d& position, OvDbObjectId blockTableRecord);
    ~OvDbBlockReference() override;

    OvDbObjectId blockTableRecord() const;
    // eWrongObjectType unless the id names a block.
    Orvex::ErrorStatus setBlockTableRecord(OvDbObjectId id);

    OvGePoint3d position() const;
    Orvex::ErrorStatus setPosition(const OvGePoint3d& point);

    // Takes a new attribute. On a reference in a database the attribute is added at once
    // and left open for write (close it); on a new reference it is added, open or closed
    // as its maker left it, when the reference is appended to a block.
    Orvex::ErrorStatus appendAttribute(OvDbAttribute* attribute);
    Orvex::ErrorStatus appendAttribute(OvDbObjectId& id, OvDbAttribute* attribute);

    // Walks the attributes (erased ones too); the caller deletes it.
    OvDbObjectIterator* attributeIterator() const;

protected:
    void ownedObjects(std::vector<OvDbObjectId>& ids) const override;
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;
    void addedToDatabase() override;

private:
    friend class OvDbAccess;

    OvDbObjectId m_block;
    OvGePoint3d m_position;
    std::vector<OvDbObjectId> m_attributes;
    // Attributes given before the reference was in a database.
    std::vector<OvDbAttribute*> m_pending;
};
