#include "zeldefun/ZelQvxBlockRef.h"

#include "ovdb/OvDbAttribute.h"
#include "ovdb/OvDbBlockReference.h"
#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbBlockTableRecordIterator.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbObjectIterator.h"
#include "ovdb/OvRxClass.h"
#include "ovdb/ovdbOpenObject.h"

#include <memory>

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

    OvDbBlockTableRecord* space = nullptr;
    if (ovdbOpenObject(space, spaceId, OvDb::kForRead) != Orvex::eOk)
        return false;
    OvDbBlockTableRecordIterator* rawIterator = nullptr;
    const Orvex::ErrorStatus es = space->newIterator(rawIterator, true, true);
    // The iterator outlives the open of its block, so nothing stays open during the walk.
    space->close();
    std::unique_ptr<OvDbBlockTableRecordIterator> iterator(rawIterator);
    if (es != Orvex::eOk || !iterator)
        return false;

    for (; !iterator->done(); iterator->step()) {
        const OvDbObjectId id = iterator->entityId();
        if (!isBlockReference(id))
            continue;
        OvDbBlockReference* reference = nullptr;
        if (ovdbOpenObject(reference, id, OvDb::kForRead) != Orvex::eOk)
            continue;
        const bool match = reference->blockTableRecord() == blockId;
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
