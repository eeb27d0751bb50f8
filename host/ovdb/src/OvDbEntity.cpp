#include "ovdb/OvDbEntity.h"

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvRxClassMacros.h"

OVRX_DEFINE_CLASS(OvDbEntity, OvDbObject)

OvDbEntity::OvDbEntity() = default;

OvDbEntity::~OvDbEntity() = default;

QString OvDbEntity::layer() const {
    assertReadEnabled();
    const auto* record = OvDbAccess::objectAs<OvDbSymbolTableRecord>(m_layer);
    return record ? OvDbAccess::recordName(record) : QString();
}

Orvex::ErrorStatus OvDbEntity::layer(QString& name) const {
    name = layer();
    return name.isEmpty() ? Orvex::eNullObjectId : Orvex::eOk;
}

OvDbObjectId OvDbEntity::layerId() const {
    assertReadEnabled();
    return m_layer;
}

Orvex::ErrorStatus OvDbEntity::setLayer(const wchar_t* name) {
    return setLayer(QString::fromWCharArray(name ? name : L""));
}

Orvex::ErrorStatus OvDbEntity::setLayer(const QString& name) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    OvDbDatabase* db = database();
    if (!db)
        db = OvDbHostApplicationServices::getRefPtr()->workingDatabase();
    OvDbAccess::Impl* im = OvDbAccess::impl(db);
    auto* table = im ? OvDbAccess::objectAs<OvDbLayerTable>(im->layerTable) : nullptr;
    if (!table)
        return Orvex::eNoDatabase;
    OvDbStub* layer = OvDbAccess::findRecord(table, name);
    if (!layer)
        return Orvex::eKeyNotFound;
    OvDbAccess::countUse(this, false);
    m_layer = OvDbObjectId(layer);
    OvDbAccess::countUse(this, true);
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbEntity::setLayer(OvDbObjectId id) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (id.isNull())
        return Orvex::eNullObjectId;
    const OvDbObject* layer = OvDbAccess::object(id);
    if (!layer)
        return Orvex::eInvalidObjectId;
    if (!layer->isKindOf(OvDbLayerTableRecord::desc()))
        return Orvex::eWrongObjectType;
    if (!isNewObject() && id.database() != database())
        return Orvex::eWrongDatabase;
    if (id.isErased())
        return Orvex::eWasErased;
    OvDbAccess::countUse(this, false);
    m_layer = id;
    OvDbAccess::countUse(this, true);
    return Orvex::eOk;
}

OvCmColor OvDbEntity::color() const {
    assertReadEnabled();
    return m_color;
}

Orvex::ErrorStatus OvDbEntity::setColor(const OvCmColor& color) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    m_color = color;
    return Orvex::eOk;
}

OvDbStub* OvDbAccess::layerOf(const OvDbEntity* entity) {
    return entity->m_layer.stub();
}

void OvDbAccess::countUse(OvDbObject* object, bool using_) {
    OvDbStub* stub = object->m_stub;
    if (!stub || stub->erased || stub->object != object)
        return;
    if (auto* entity = OvDbEntity::cast(object))
        stub->db->d->useLayer(entity->m_layer.stub(), using_);
}

void OvDbAccess::setLayerOf(OvDbEntity* entity, OvDbStub* layer) {
    entity->m_layer = OvDbObjectId(layer);
}

void OvDbEntity::writeFields(OvDbDwgWriter& out) const {
    OvDbObject::writeFields(out);
    out.writeRef(QLatin1StringView("layer"), m_layer);
    out.fields().insert(QLatin1StringView("color"), m_color.colorIndex());
}

Orvex::ErrorStatus OvDbEntity::readFields(OvDbDwgReader& in) {
    if (OvDbObject::readFields(in) != Orvex::eOk)
        return in.status();
    int color = m_color.colorIndex();
    if (!in.readInt(QLatin1StringView("color"), color, 0, 256) ||
        !in.readRef(QLatin1StringView("layer"), m_layer, OvDbLayerTableRecord::desc()))
        return in.status();
    m_color.setColorIndex(color);
    return Orvex::eOk;
}
