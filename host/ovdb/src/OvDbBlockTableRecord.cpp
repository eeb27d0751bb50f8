#include "ovdb/OvDbBlockTableRecord.h"

#include "OvDbAccess.h"
#include "OvDbIdCursor.h"
#include "ovdb/OvDbBlockReference.h"
#include "ovdb/OvDbBlockTableRecordIterator.h"
#include "ovdb/OvDbEntity.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovdbOpenObject.h"

OVRX_DEFINE_CLASS(OvDbBlockTableRecord, OvDbSymbolTableRecord)

OvDbBlockTableRecord::OvDbBlockTableRecord() = default;

OvDbBlockTableRecord::~OvDbBlockTableRecord() = default;

Orvex::ErrorStatus OvDbBlockTableRecord::appendOvDbEntity(OvDbEntity* entity) {
    OvDbObjectId id;
    return appendOvDbEntity(id, entity);
}

Orvex::ErrorStatus OvDbBlockTableRecord::appendOvDbEntity(OvDbEntity* entity, OvDbObjectId& id) {
    return appendOvDbEntity(id, entity);
}

Orvex::ErrorStatus OvDbBlockTableRecord::appendOvDbEntity(OvDbObjectId& id, OvDbEntity* entity) {
    id = OvDbObjectId();
    if (!entity)
        return Orvex::eNullObjectPointer;
    if (isNewObject())
        return Orvex::eNotInDatabase;
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!entity->isNewObject())
        return Orvex::eAlreadyInDb;
    OvDbAccess::Impl* im = OvDbAccess::implOf(this);
    OvDbStub* layer = OvDbAccess::layerOf(entity);
    if (layer && layer->db != database())
        return Orvex::eWrongDatabase;
    if (!layer)
        OvDbAccess::setLayerOf(entity, im->clayer);
    OvDbAccess::addToDatabase(im, entity, OvDbAccess::stub(this), true);
    m_entities.push_back(entity->objectId());
    id = entity->objectId();
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbBlockTableRecord::newIterator(OvDbBlockTableRecordIterator*& iterator,
                                                     bool atBeginning, bool skipDeleted) const {
    assertReadEnabled();
    iterator = new OvDbBlockTableRecordIterator(this, atBeginning, skipDeleted);
    return Orvex::eOk;
}

bool OvDbBlockTableRecord::isModelSpace() const {
    OvDbAccess::Impl* im = OvDbAccess::implOf(this);
    return im && im->modelSpace == OvDbAccess::stub(this);
}

Orvex::ErrorStatus OvDbBlockTableRecord::getReferenceIds(OvDbObjectIdArray& ids) const {
    ids.clear();
    if (!assertReadEnabled())
        return Orvex::eNotOpenForRead;
    OvDbAccess::Impl* im = OvDbAccess::implOf(this);
    if (!im)
        return Orvex::eNotInDatabase;
    const OvDbStub* self = OvDbAccess::stub(this);
    const auto it = im->blockReferences.find(self);
    if (it == im->blockReferences.end())
        return Orvex::eOk;
    for (const OvDbAccess::Impl::BlockReferenceEntry& e : it->second) {
        const auto* reference = OvDbAccess::objectAs<OvDbBlockReference>(e.reference);
        if (reference && !e.reference->erased && OvDbAccess::blockOf(reference) == self)
            ids.push_back(OvDbObjectId(e.reference));
    }
    return Orvex::eOk;
}

bool OvDbBlockTableRecord::acceptsName(const QString& name) const {
    // "*Model_Space", "*Paper_Space" and anonymous blocks begin with an asterisk.
    if (name.startsWith(QLatin1Char('*')))
        return isValidName(name.mid(1));
    return isValidName(name);
}

Orvex::ErrorStatus OvDbBlockTableRecord::subErase(bool erasing) {
    if (erasing) {
        OvDbAccess::Impl* im = OvDbAccess::implOf(this);
        OvDbStub* self = OvDbAccess::stub(this);
        if (im && (self == im->modelSpace || self == im->paperSpace))
            return Orvex::eCannotBeErasedByCaller;
    }
    return OvDbSymbolTableRecord::subErase(erasing);
}

void OvDbBlockTableRecord::ownedObjects(std::vector<OvDbObjectId>& ids) const {
    ids.insert(ids.end(), m_entities.begin(), m_entities.end());
}

std::vector<OvDbObjectId>& OvDbAccess::entities(OvDbBlockTableRecord* block) {
    return block->m_entities;
}

// ---------------------------------------------------------------------------------------

OvDbBlockTableRecordIterator::OvDbBlockTableRecordIterator(const OvDbBlockTableRecord* block,
                                                           bool atBeginning, bool skipDeleted)
    : m_block(block->objectId()) {
    start(atBeginning, skipDeleted);
}

OvDbBlockTableRecordIterator::~OvDbBlockTableRecordIterator() = default;

const std::vector<OvDbObjectId>* OvDbBlockTableRecordIterator::entities() const {
    // As for a table's iterator: the id was a block's when the iterator was made.
    const OvDbStub* stub = m_block.stub();
    const auto* block = stub ? static_cast<const OvDbBlockTableRecord*>(stub->object) : nullptr;
    return block ? &block->m_entities : nullptr;
}

void OvDbBlockTableRecordIterator::start(bool atBeginning, bool skipDeleted) {
    ovdbcursor::start(entities(), m_pos, atBeginning, skipDeleted);
}

bool OvDbBlockTableRecordIterator::done() const {
    return ovdbcursor::done(entities(), m_pos);
}

void OvDbBlockTableRecordIterator::step(bool forward, bool skipDeleted) {
    ovdbcursor::step(entities(), m_pos, forward, skipDeleted);
}

Orvex::ErrorStatus OvDbBlockTableRecordIterator::getEntityId(OvDbObjectId& id) const {
    id = entityId();
    return id.isNull() ? Orvex::eIteratorDone : Orvex::eOk;
}

OvDbObjectId OvDbBlockTableRecordIterator::entityId() const {
    return ovdbcursor::current(entities(), m_pos);
}

Orvex::ErrorStatus OvDbBlockTableRecordIterator::getEntity(OvDbEntity*& entity, OvDb::OpenMode mode,
                                                           bool openErasedEntity) const {
    entity = nullptr;
    if (done())
        return Orvex::eIteratorDone;
    return ovdbOpenObject(entity, entityId(), mode, openErasedEntity);
}

Orvex::ErrorStatus OvDbBlockTableRecordIterator::seek(OvDbObjectId id) {
    const auto* list = entities();
    if (!list || id.isNull())
        return Orvex::eKeyNotFound;
    for (std::size_t i = 0; i < list->size(); ++i) {
        if ((*list)[i] == id) {
            m_pos = static_cast<long long>(i);
            return Orvex::eOk;
        }
    }
    return Orvex::eKeyNotFound;
}
