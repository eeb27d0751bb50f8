#pragma once

#include "ovdb/OvCmColor.h"
#include "ovdb/OvDbLineWeight.h"
#include "ovdb/OvDbSymbolTableRecord.h"

// A layer: its colour, linetype and lineweight, which entities drawn by layer take.
class OvDbLayerTableRecord : public OvDbSymbolTableRecord {
public:
    static OvRxClass* desc();
    static OvDbLayerTableRecord* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    // White, no linetype yet (the table gives a new layer the continuous linetype),
    // the default lineweight.
    OvDbLayerTableRecord();
    ~OvDbLayerTableRecord() override;

    OvCmColor color() const;
    Orvex::ErrorStatus setColor(const OvCmColor& color);

    OvDbObjectId linetypeObjectId() const;
    // eWrongObjectType unless the id names a linetype; eWrongDatabase for one of another
    // drawing; eWasErased for an erased one.
    Orvex::ErrorStatus setLinetypeObjectId(OvDbObjectId id);

    OvDb::LineWeight lineWeight() const;
    // eInvalidInput for a weight off the list, and for ByLayer and ByBlock, which a layer
    // cannot have.
    Orvex::ErrorStatus setLineWeight(OvDb::LineWeight weight);

    bool isOff() const;
    Orvex::ErrorStatus setIsOff(bool off);
    bool isFrozen() const;
    Orvex::ErrorStatus setIsFrozen(bool frozen);
    bool isLocked() const;
    Orvex::ErrorStatus setIsLocked(bool locked);

    // As of the last OvDbLayerTable::generateUsageData.
    bool isInUse() const;

protected:
    Orvex::ErrorStatus subErase(bool erasing) override;
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;
    void addedToDatabase() override;

private:
    friend class OvDbAccess;

    OvCmColor m_color;
    OvDbObjectId m_linetype;
    OvDb::LineWeight m_lineWeight = OvDb::kLnWtByLwDefault;
    bool m_off = false;
    bool m_frozen = false;
    bool m_locked = false;
    bool m_inUse = false;
};
