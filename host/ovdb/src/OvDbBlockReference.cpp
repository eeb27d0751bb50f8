#include "ovdb/OvDbBlockReference.h"

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvDbAttribute.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbObjectIterator.h"
#include "ovdb/OvRxClassMacros.h"

#include <QJsonArray>

OVRX_DEFINE_CLASS(OvDbBlockReference, OvDbEntity)

OvDbBlockReference::OvDbBlockReference() = default;

OvDbBlockReference::OvDbBlockReference(const OvGePoint3d& position, OvDbObjectId blockTableRecord)
    : m_block(blockTableRecord) {
    if (position.isFinite())
        m_position = position;
    if (!OvDbAccess::objectAs<OvDbBlockTableRecord>(blockTableRecord))
        m_block = OvDbObjectId();
}

OvDbBlockReference::~OvDbBlockReference() {
    for (OvDbAttribute* attribute : m_pending)
        delete attribute;
}

OvDbObjectId OvDbBlockReference::blockTableRecord() const {
    assertReadEnabled();
    return m_block;
}

Orvex::ErrorStatus OvDbBlockReference::setBlockTableRecord(OvDbObjectId id) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (id.isNull())
        return Orvex::eNullObjectId;
    if (!OvDbAccess::objectAs<OvDbBlockTableRecord>(id))
        return Orvex::eWrongObjectType;
    if (!isNewObject() && id.database() != database())
        return Orvex::eWrongDatabase;
    if (!isNewObject() && id != m_block)
        OvDbAccess::implOf(this)->moveBlockReference(OvDbAccess::stub(this), m_block.stub(),
                                                     id.stub());
    m_block = id;
    return Orvex::eOk;
}

OvGePoint3d OvDbBlockReference::position() const {
    assertReadEnabled();
    return m_position;
}

Orvex::ErrorStatus OvDbBlockReference::setPosition(const OvGePoint3d& point) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!point.isFinite())
        return Orvex::eInvalidInput;
    m_position = point;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbBlockReference::appendAttribute(OvDbAttribute* attribute) {
    OvDbObjectId id;
    return appendAttribute(id, attribute);
}

Orvex::ErrorStatus OvDbBlockReference::appendAttribute(OvDbObjectId& id, OvDbAttribute* attribute) {
    id = OvDbObjectId();
    if (!attribute)
        return Orvex::eNullObjectPointer;
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!attribute->isNewObject())
        return Orvex::eAlreadyInDb;
    for (const OvDbAttribute* pending : m_pending) {
        if (pending == attribute)
            return Orvex::eAlreadyInDb;
    }
    if (isNewObject()) {
        m_pending.push_back(attribute);
        return Orvex::eOk;
    }
    OvDbAccess::Impl* im = OvDbAccess::implOf(this);
    OvDbStub* layer = OvDbAccess::layerOf(attribute);
    if (layer && layer->db != database())
        return Orvex::eWrongDatabase;
    if (!layer)
        OvDbAccess::setLayerOf(attribute, OvDbAccess::layerOf(this));
    OvDbAccess::addToDatabase(im, attribute, OvDbAccess::stub(this), true);
    m_attributes.push_back(attribute->objectId());
    id = attribute->objectId();
    return Orvex::eOk;
}

OvDbObjectIterator* OvDbBlockReference::attributeIterator() const {
    assertReadEnabled();
    return new OvDbObjectIterator(m_attributes);
}

void OvDbBlockReference::addedToDatabase() {
    OvDbAccess::Impl* im = OvDbAccess::implOf(this);
    if (!m_block.isNull() && m_block.database() == database())
        im->indexBlockReference(OvDbAccess::stub(this), m_block.stub());
    std::vector<OvDbAttribute*> pending;
    pending.swap(m_pending);
    for (OvDbAttribute* attribute : pending) {
        OvDbStub* layer = OvDbAccess::layerOf(attribute);
        if (!layer || layer->db != database())
            OvDbAccess::setLayerOf(attribute, OvDbAccess::layerOf(this));
        // As its maker left it: still open for write, or closed already.
        OvDbAccess::addToDatabase(im, attribute, OvDbAccess::stub(this),
                                  OvDbAccess::isOpenForWrite(attribute));
        m_attributes.push_back(attribute->objectId());
    }
}

void OvDbBlockReference::ownedObjects(std::vector<OvDbObjectId>& ids) const {
    ids.insert(ids.end(), m_attributes.begin(), m_attributes.end());
}

std::vector<OvDbObjectId>& OvDbAccess::attributes(OvDbBlockReference* reference) {
    return reference->m_attributes;
}

const OvDbStub* OvDbAccess::blockOf(const OvDbBlockReference* reference) {
    return reference->m_block.stub();
}

void OvDbBlockReference::writeFields(OvDbDwgWriter& out) const {
    OvDbEntity::writeFields(out);
    out.writeRef(QLatin1StringView("block"), m_block);
    out.fields().insert(QLatin1StringView("position"),
                        QJsonArray{m_position.x, m_position.y, m_position.z});
}

Orvex::ErrorStatus OvDbBlockReference::readFields(OvDbDwgReader& in) {
    if (OvDbEntity::readFields(in) != Orvex::eOk ||
        !in.readRef(QLatin1StringView("block"), m_block, OvDbBlockTableRecord::desc()) ||
        !in.readPoint(QLatin1StringView("position"), m_position))
        return in.status();
    return Orvex::eOk;
}
