#pragma once

#include "ovdb/OvCmColor.h"
#include "ovdb/OvDbObject.h"

#include <QString>

// An object drawn in a block: it lies on a layer and has a colour (by layer by default).
class OvDbEntity : public OvDbObject {
public:
    static OvRxClass* desc();
    static OvDbEntity* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    ~OvDbEntity() override;

    OvDbObjectId blockId() const { return ownerId(); }

    // The layer's name; empty while the entity has no layer.
    QString layer() const;
    Orvex::ErrorStatus layer(QString& name) const;
    OvDbObjectId layerId() const;
    // By name: the layer of the entity's database, or of the working database for a new
    // entity. eKeyNotFound for a missing layer, eWasErased for an erased one,
    // eWrongObjectType for an id that names no layer.
    Orvex::ErrorStatus setLayer(const wchar_t* name);
    Orvex::ErrorStatus setLayer(const QString& name);
    Orvex::ErrorStatus setLayer(OvDbObjectId id);

    OvCmColor color() const;
    Orvex::ErrorStatus setColor(const OvCmColor& color);

protected:
    OvDbEntity();
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;

private:
    friend class OvDbAccess;

    // The colour first: it fits in the room the object's small fields leave, and a line
    // then takes one allocation size less.
    OvCmColor m_color;
    OvDbObjectId m_layer;
};
