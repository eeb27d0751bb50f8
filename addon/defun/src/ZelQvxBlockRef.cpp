#include "zeldefun/ZelQvxBlockRef.h"

#include "ovdb/OvDbAttribute.h"
#include "ovdb/OvDbBlockReference.h"
#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbObjectIterator.h"
#include "ovdb/OvRxClass.h"
#include "ovdb/ovdbOpenObject.h"

#include <memory>
#include <vector>

namespace {

const QString kModelSpace = QStringLiteral("*Model_Space");

bool isBlockReference(const OvDbObjectId& id) {
    const OvRxClass* cls = id.objectClass();
    return cls != nullptr && cls->isDerivedFrom(OvDbBlockReference::desc());
}

} // namespace

ZelQvxBlockRef::ZelQvxBlockRef() = default;

ZelQvxBlockRef::~ZelQvxBlockRef() {
    close();
}

void ZelQvxBlockRef::setSpace(const QString& spaceName) {
    m_space = spaceName;
}

QString ZelQvxBlockRef::space() const {
    return m_space;
}

bool ZelQvxBlockRef::find(const QString& blockName, int param, int mode) {
    Q_UNUSED(param);
    Q_UNUSED(mode);
    m_found = false;
    m_foundHandle = 0;
    m_foundSession = 0;

    OvDbDatabase* db = database();
    if (db == nullptr || blockName.isEmpty())
        return false;

    OvDbBlockTable* table = nullptr;
    if (db->getBlockTable(table, OvDb::kForRead) != Orvex::eOk)
        return false;
    OvDbObjectId blockId;
    OvDbObjectId spaceId;
    const bool known =
        table->getIdAt(blockName, blockId) == Orvex::eOk &&
        table->getIdAt(m_space.isEmpty() ? kModelSpace : m_space, spaceId) == Orvex::eOk;
    table->close();
    if (!known)
        return false;

    // The block knows its references, so the search costs their number, not a walk of
    // the space's entities; they come in drawing order, erased ones left out.
    OvDbBlockTableRecord* block = nullptr;
    if (ovdbOpenObject(block, blockId, OvDb::kForRead) != Orvex::eOk)
        return false;
    OvDbObjectIdArray references;
    const Orvex::ErrorStatus es = block->getReferenceIds(references);
    block->close();
    if (es != Orvex::eOk)
        return false;

    for (const OvDbObjectId& id : references) {
        OvDbBlockReference* reference = nullptr;
        if (ovdbOpenObject(reference, id, OvDb::kForRead) != Orvex::eOk)
            continue;
        const bool match = reference->ownerId() == spaceId;
        reference->close();
        if (match) {
            m_found = true;
            m_foundHandle = id.handle().value();
            m_foundSession = db->sessionNumber();
            break;
        }
    }
    return m_found;
}

bool ZelQvxBlockRef::isFound() const {
    return m_found;
}

bool ZelQvxBlockRef::foundReference(OvDbObjectId& id) const {
    OvDbDatabase* db = database();
    if (!m_found || db == nullptr || db->sessionNumber() != m_foundSession)
        return false;
    if (db->getOvDbObjectId(id, false, OvDbHandle(m_foundHandle)) != Orvex::eOk)
        return false;
    return !id.isErased() && isBlockReference(id);
}

bool ZelQvxBlockRef::accessAttribute(const QString& tag, QString* read, const QString* write) {
    // A drawing shared with other helpers is copied before it is written; handles stay
    // the same in the copy, so the reference found is found there too.
    if (write != nullptr && m_found) {
        OvDbDatabase* own = databaseForWrite();
        if (own == nullptr)
            return false;
        m_foundSession = own->sessionNumber();
    }
    OvDbObjectId referenceId;
    if (!foundReference(referenceId))
        return false;
    const OvDb::OpenMode mode = write != nullptr ? OvDb::kForWrite : OvDb::kForRead;
    OvDbBlockReference* reference = nullptr;
    if (ovdbOpenObject(reference, referenceId, mode) != Orvex::eOk)
        return false;

    bool done = false;
    std::unique_ptr<OvDbObjectIterator> attributes(reference->attributeIterator());
    for (attributes->start(); !done && !attributes->done(); attributes->step()) {
        OvDbAttribute* attribute = nullptr;
        if (ovdbOpenObject(attribute, attributes->objectId(), mode) != Orvex::eOk)
            continue;
        if (attribute->tag().compare(tag, Qt::CaseInsensitive) == 0) {
            if (write != nullptr)
                done = attribute->setTextString(*write) == Orvex::eOk;
            else {
                *read = attribute->textString();
                done = true;
            }
        }
        attribute->close();
    }
    reference->close();
    return done;
}

bool ZelQvxBlockRef::getAttributeTextString(const QString& tag, QString& value, bool flag) {
    Q_UNUSED(flag);
    return accessAttribute(tag, &value, nullptr);
}

bool ZelQvxBlockRef::setAttributeTextString(const QString& tag, const QString& value, bool flag) {
    Q_UNUSED(flag);
    return accessAttribute(tag, nullptr, &value);
}

void ZelQvxBlockRef::close() {
    m_found = false;
    m_foundHandle = 0;
    m_foundSession = 0;
    closeDatabase();
}
