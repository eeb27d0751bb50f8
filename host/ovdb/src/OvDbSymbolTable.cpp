#include "ovdb/OvDbSymbolTable.h"

#include "OvDbAccess.h"
#include "OvDbIdCursor.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbSymbolTableIterator.h"
#include "ovdb/OvDbSymbolTableRecord.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovdbOpenObject.h"

namespace {

QString wide(const wchar_t* text) {
    return QString::fromWCharArray(text ? text : L"");
}

} // namespace

OVRX_DEFINE_CLASS(OvDbSymbolTable, OvDbObject)

OvDbSymbolTable::OvDbSymbolTable() = default;

OvDbSymbolTable::~OvDbSymbolTable() = default;

OvDbStub* OvDbSymbolTable::findLive(const QString& name) const {
    OvDbStub* stub = m_index.value(name, nullptr);
    return OvDbAccess::isLive(stub) ? stub : nullptr;
}

OvDbStub* OvDbSymbolTable::findErased(const QString& name) const {
    // Erased records are rare and looked for on request only: a walk will do.
    for (auto it = m_records.rbegin(); it != m_records.rend(); ++it) {
        OvDbStub* stub = it->stub();
        if (stub->object && stub->erased &&
            OvDbAccess::recordName(static_cast<OvDbSymbolTableRecord*>(stub->object))
                    .compare(name, Qt::CaseInsensitive) == 0)
            return stub;
    }
    return nullptr;
}

OvDbStub* OvDbAccess::findRecord(const OvDbSymbolTable* table, const QString& name) {
    return table->findLive(name);
}

std::vector<OvDbObjectId>& OvDbAccess::records(OvDbSymbolTable* table) {
    return table->m_records;
}

void OvDbAccess::indexRecord(OvDbSymbolTable* table, OvDbStub* record) {
    table->m_index.insert(recordName(static_cast<const OvDbSymbolTableRecord*>(record->object)),
                          record);
}

Orvex::ErrorStatus OvDbSymbolTable::getAt(const wchar_t* name, OvDbSymbolTableRecord*& record,
                                          OvDb::OpenMode mode, bool openErasedRecord) const {
    record = nullptr;
    OvDbObjectId id;
    const Orvex::ErrorStatus es = getIdAt(name, id, openErasedRecord);
    if (es != Orvex::eOk)
        return es;
    return ovdbOpenObject(record, id, mode, openErasedRecord);
}

Orvex::ErrorStatus OvDbSymbolTable::getAt(const wchar_t* name, OvDbObjectId& id,
                                          bool getErasedRecord) const {
    return getIdAt(name, id, getErasedRecord);
}

Orvex::ErrorStatus OvDbSymbolTable::getIdAt(const wchar_t* name, OvDbObjectId& id,
                                            bool getErasedRecord) const {
    return getIdAt(wide(name), id, getErasedRecord);
}

Orvex::ErrorStatus OvDbSymbolTable::getIdAt(const QString& name, OvDbObjectId& id,
                                            bool getErasedRecord) const {
    assertReadEnabled();
    OvDbStub* stub = findLive(name);
    if (!stub && getErasedRecord)
        stub = findErased(name);
    id = OvDbObjectId(stub);
    return stub ? Orvex::eOk : Orvex::eKeyNotFound;
}

bool OvDbSymbolTable::has(const wchar_t* name) const {
    return has(wide(name));
}

bool OvDbSymbolTable::has(const QString& name) const {
    assertReadEnabled();
    return findLive(name) != nullptr;
}

bool OvDbSymbolTable::has(OvDbObjectId id) const {
    assertReadEnabled();
    const OvDbObject* record = OvDbAccess::object(id);
    return record && OvDbAccess::owner(record) == OvDbAccess::stub(this) &&
           record->isKindOf(OvDbSymbolTableRecord::desc());
}

Orvex::ErrorStatus OvDbSymbolTable::add(OvDbSymbolTableRecord* record) {
    OvDbObjectId id;
    return add(id, record);
}

Orvex::ErrorStatus OvDbSymbolTable::add(OvDbSymbolTableRecord* record, OvDbObjectId& id) {
    return add(id, record);
}

Orvex::ErrorStatus OvDbSymbolTable::add(OvDbObjectId& id, OvDbSymbolTableRecord* record) {
    id = OvDbObjectId();
    if (!record)
        return Orvex::eNullObjectPointer;
    if (isNewObject())
        return Orvex::eNotInDatabase;
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!record->isNewObject())
        return Orvex::eAlreadyInDb;
    if (!record->isKindOf(recordClass()))
        return Orvex::eWrongObjectType;
    const QString& name = OvDbAccess::recordName(record);
    if (name.isEmpty())
        return Orvex::eInvalidInput;
    if (findLive(name))
        return Orvex::eDuplicateRecordName;
    if (auto* layer = OvDbLayerTableRecord::cast(record)) {
        const OvDbObjectId linetype = layer->linetypeObjectId();
        if (!linetype.isNull() && linetype.database() != database())
            return Orvex::eWrongDatabase;
    }
    OvDbAccess::addToDatabase(OvDbAccess::implOf(this), record, OvDbAccess::stub(this), true);
    m_records.push_back(record->objectId());
    OvDbAccess::indexRecord(this, OvDbAccess::stub(record));
    id = record->objectId();
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbSymbolTable::newIterator(OvDbSymbolTableIterator*& iterator,
                                                bool atBeginning, bool skipDeleted) const {
    assertReadEnabled();
    iterator = new OvDbSymbolTableIterator(this, atBeginning, skipDeleted);
    return Orvex::eOk;
}

int OvDbSymbolTable::numRecords() const {
    assertReadEnabled();
    int count = 0;
    for (const OvDbObjectId& id : m_records) {
        if (OvDbAccess::isLive(id.stub()))
            ++count;
    }
    return count;
}

Orvex::ErrorStatus OvDbSymbolTable::subErase(bool erasing) {
    return erasing ? Orvex::eCannotBeErasedByCaller : Orvex::eOk;
}

void OvDbSymbolTable::ownedObjects(std::vector<OvDbObjectId>& ids) const {
    ids.insert(ids.end(), m_records.begin(), m_records.end());
}

// ---------------------------------------------------------------------------------------

OvDbSymbolTableIterator::OvDbSymbolTableIterator(const OvDbSymbolTable* table, bool atBeginning,
                                                 bool skipDeleted)
    : m_table(table->objectId()) {
    start(atBeginning, skipDeleted);
}

OvDbSymbolTableIterator::~OvDbSymbolTableIterator() = default;

const std::vector<OvDbObjectId>* OvDbSymbolTableIterator::records() const {
    // Asked at every step of every walk. The id was a table's when the iterator was made,
    // and a stub never holds an object of another class, so only its presence is tested.
    const OvDbStub* stub = m_table.stub();
    const auto* table = stub ? static_cast<const OvDbSymbolTable*>(stub->object) : nullptr;
    return table ? &table->m_records : nullptr;
}

void OvDbSymbolTableIterator::start(bool atBeginning, bool skipDeleted) {
    ovdbcursor::start(records(), m_pos, atBeginning, skipDeleted);
}

bool OvDbSymbolTableIterator::done() const {
    return ovdbcursor::done(records(), m_pos);
}

void OvDbSymbolTableIterator::step(bool forward, bool skipDeleted) {
    ovdbcursor::step(records(), m_pos, forward, skipDeleted);
}

Orvex::ErrorStatus OvDbSymbolTableIterator::getRecordId(OvDbObjectId& id) const {
    id = recordId();
    return id.isNull() ? Orvex::eIteratorDone : Orvex::eOk;
}

OvDbObjectId OvDbSymbolTableIterator::recordId() const {
    return ovdbcursor::current(records(), m_pos);
}

Orvex::ErrorStatus OvDbSymbolTableIterator::openAs(OvDbSymbolTableRecord*& record, OvRxClass* cls,
                                                   OvDb::OpenMode mode, bool openErased) const {
    record = nullptr;
    // Once per record of every walk: the list is looked up once, and the open goes
    // straight to the protocol.
    const auto* list = records();
    if (ovdbcursor::done(list, m_pos))
        return Orvex::eIteratorDone;
    OvDbObject* object = nullptr;
    const Orvex::ErrorStatus es =
        OvDbAccess::open(object, (*list)[static_cast<std::size_t>(m_pos)], cls, mode, openErased);
    if (es == Orvex::eOk)
        record = static_cast<OvDbSymbolTableRecord*>(object);
    return es;
}

Orvex::ErrorStatus OvDbSymbolTableIterator::getRecord(OvDbSymbolTableRecord*& record,
                                                      OvDb::OpenMode mode,
                                                      bool openErasedRecord) const {
    return openAs(record, OvDbSymbolTableRecord::desc(), mode, openErasedRecord);
}

Orvex::ErrorStatus OvDbSymbolTableIterator::seek(OvDbObjectId id) {
    const auto* list = records();
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

Orvex::ErrorStatus OvDbSymbolTableIterator::seek(const OvDbSymbolTableRecord* record) {
    return record ? seek(record->objectId()) : Orvex::eNullObjectPointer;
}
