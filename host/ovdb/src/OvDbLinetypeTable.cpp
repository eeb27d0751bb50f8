#include "ovdb/OvDbLinetypeTable.h"

#include "ovdb/OvDbLinetypeTableIterator.h"
#include "ovdb/OvDbLinetypeTableRecord.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovdbOpenObject.h"

OVRX_DEFINE_CLASS(OvDbLinetypeTable, OvDbSymbolTable)

OvDbLinetypeTable::OvDbLinetypeTable() = default;

OvDbLinetypeTable::~OvDbLinetypeTable() = default;

Orvex::ErrorStatus OvDbLinetypeTable::getAt(const wchar_t* name, OvDbLinetypeTableRecord*& record,
                                            OvDb::OpenMode mode, bool openErasedRecord) const {
    return getTypedAt(name, record, mode, openErasedRecord);
}

Orvex::ErrorStatus OvDbLinetypeTable::newIterator(OvDbLinetypeTableIterator*& iterator,
                                                  bool atBeginning, bool skipDeleted) const {
    assertReadEnabled();
    iterator = new OvDbLinetypeTableIterator(this, atBeginning, skipDeleted);
    return Orvex::eOk;
}

OvRxClass* OvDbLinetypeTable::recordClass() const {
    return OvDbLinetypeTableRecord::desc();
}

// ---------------------------------------------------------------------------------------

OvDbLinetypeTableIterator::OvDbLinetypeTableIterator(const OvDbLinetypeTable* table,
                                                     bool atBeginning, bool skipDeleted)
    : OvDbSymbolTableIterator(table, atBeginning, skipDeleted) {}

OvDbLinetypeTableIterator::~OvDbLinetypeTableIterator() = default;

Orvex::ErrorStatus OvDbLinetypeTableIterator::getRecord(OvDbLinetypeTableRecord*& record,
                                                        OvDb::OpenMode mode,
                                                        bool openErasedRecord) const {
    return getTypedRecord(record, mode, openErasedRecord);
}
