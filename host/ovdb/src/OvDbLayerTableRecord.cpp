#include "ovdb/OvDbLayerTableRecord.h"

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvDbLinetypeTableRecord.h"
#include "ovdb/OvRxClassMacros.h"

#include <QLatin1StringView>

OVRX_DEFINE_CLASS(OvDbLayerTableRecord, OvDbSymbolTableRecord)

OvDbLayerTableRecord::OvDbLayerTableRecord() {
    m_color.setColorIndex(7);
}

OvDbLayerTableRecord::~OvDbLayerTableRecord() = default;

OvCmColor OvDbLayerTableRecord::color() const {
    assertReadEnabled();
    return m_color;
}

Orvex::ErrorStatus OvDbLayerTableRecord::setColor(const OvCmColor& color) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    m_color = color;
    return Orvex::eOk;
}

OvDbObjectId OvDbLayerTableRecord::linetypeObjectId() const {
    assertReadEnabled();
    return m_linetype;
}

Orvex::ErrorStatus OvDbLayerTableRecord::setLinetypeObjectId(OvDbObjectId id) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (id.isNull())
        return Orvex::eNullObjectId;
    const OvDbObject* linetype = OvDbAccess::object(id);
    if (!linetype)
        return Orvex::eInvalidObjectId;
    if (!linetype->isKindOf(OvDbLinetypeTableRecord::desc()))
        return Orvex::eWrongObjectType;
    if (!isNewObject() && id.database() != database())
        return Orvex::eWrongDatabase;
    if (id.isErased())
        return Orvex::eWasErased;
    m_linetype = id;
    return Orvex::eOk;
}

OvDb::LineWeight OvDbLayerTableRecord::lineWeight() const {
    assertReadEnabled();
    return m_lineWeight;
}

Orvex::ErrorStatus OvDbLayerTableRecord::setLineWeight(OvDb::LineWeight weight) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!OvDb::isLegalLineWeight(weight) || weight == OvDb::kLnWtByLayer ||
        weight == OvDb::kLnWtByBlock)
        return Orvex::eInvalidInput;
    m_lineWeight = weight;
    return Orvex::eOk;
}

bool OvDbLayerTableRecord::isOff() const {
    assertReadEnabled();
    return m_off;
}

Orvex::ErrorStatus OvDbLayerTableRecord::setIsOff(bool off) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    m_off = off;
    return Orvex::eOk;
}

bool OvDbLayerTableRecord::isFrozen() const {
    assertReadEnabled();
    return m_frozen;
}

Orvex::ErrorStatus OvDbLayerTableRecord::setIsFrozen(bool frozen) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    m_frozen = frozen;
    return Orvex::eOk;
}

bool OvDbLayerTableRecord::isLocked() const {
    assertReadEnabled();
    return m_locked;
}

Orvex::ErrorStatus OvDbLayerTableRecord::setIsLocked(bool locked) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    m_locked = locked;
    return Orvex::eOk;
}

bool OvDbLayerTableRecord::isInUse() const {
    assertReadEnabled();
    return m_inUse;
}

void OvDbAccess::setInUse(OvDbLayerTableRecord* layer, bool inUse) {
    layer->m_inUse = inUse;
}

OvDbStub* OvDbAccess::linetypeOf(const OvDbLayerTableRecord* layer) {
    return layer->m_linetype.stub();
}

void OvDbAccess::setLinetypeOf(OvDbLayerTableRecord* layer, OvDbStub* linetype) {
    layer->m_linetype = OvDbObjectId(linetype);
}

Orvex::ErrorStatus OvDbLayerTableRecord::subErase(bool erasing) {
    if (erasing) {
        OvDbAccess::Impl* im = OvDbAccess::implOf(this);
        OvDbStub* self = OvDbAccess::stub(this);
        if (im && (self == im->layerZero || self == im->clayer))
            return Orvex::eCannotBeErasedByCaller;
    }
    return OvDbSymbolTableRecord::subErase(erasing);
}

void OvDbLayerTableRecord::addedToDatabase() {
    if (m_linetype.isNull()) {
        if (OvDbAccess::Impl* im = OvDbAccess::implOf(this))
            m_linetype = OvDbObjectId(im->continuous);
    }
}

void OvDbLayerTableRecord::writeFields(OvDbDwgWriter& out) const {
    OvDbSymbolTableRecord::writeFields(out);
    QJsonObject& f = out.fields();
    f.insert(QLatin1StringView("color"), m_color.colorIndex());
    out.writeRef(QLatin1StringView("linetype"), m_linetype);
    f.insert(QLatin1StringView("lineWeight"), static_cast<int>(m_lineWeight));
    if (m_off)
        f.insert(QLatin1StringView("off"), true);
    if (m_frozen)
        f.insert(QLatin1StringView("frozen"), true);
    if (m_locked)
        f.insert(QLatin1StringView("locked"), true);
}

Orvex::ErrorStatus OvDbLayerTableRecord::readFields(OvDbDwgReader& in) {
    if (OvDbSymbolTableRecord::readFields(in) != Orvex::eOk)
        return in.status();
    int color = m_color.colorIndex();
    int weight = m_lineWeight;
    if (!in.readInt(QLatin1StringView("color"), color, 0, 256) ||
        !in.readInt(QLatin1StringView("lineWeight"), weight, -3, 211) ||
        !in.readBool(QLatin1StringView("off"), m_off) ||
        !in.readBool(QLatin1StringView("frozen"), m_frozen) ||
        !in.readBool(QLatin1StringView("locked"), m_locked) ||
        !in.readRef(QLatin1StringView("linetype"), m_linetype, OvDbLinetypeTableRecord::desc()))
        return in.status();
    if (!OvDb::isLegalLineWeight(weight) || weight == OvDb::kLnWtByLayer ||
        weight == OvDb::kLnWtByBlock)
        return in.fail(Orvex::eBadDrawingFormat,
                       QStringLiteral("%1 is not a lineweight a layer can have").arg(weight));
    m_color.setColorIndex(color);
    m_lineWeight = static_cast<OvDb::LineWeight>(weight);
    return Orvex::eOk;
}
