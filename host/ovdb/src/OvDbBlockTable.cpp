#include "ovdb/OvDbBlockTable.h"

#include "ovdb/OvDbBlockTableIterator.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvRxClassMacros.h"
#include "ovdb/ovdbOpenObject.h"

OVRX_DEFINE_CLASS(OvDbBlockTable, OvDbSymbolTable)

OvDbBlockTable::OvDbBlockTable() = default;

OvDbBlockTable::~OvDbBlockTable() = default;

Orvex::ErrorStatus OvDbBlockTable::getAt(const wchar_t* name, OvDbBlockTableRecord*& record,
                                         OvDb::OpenMode mode, bool openErasedRecord) const {
    return getTypedAt(name, record, mode, openErasedRecord);
}

Orvex::ErrorStatus OvDbBlockTable::newIterator(OvDbBlockTableIterator*& iterator, bool atBeginning,
                                               bool skipDeleted) const {
    assertReadEnabled();
    iterator = new OvDbBlockTableIterator(this, atBeginning, skipDeleted);
    return Orvex::eOk;
}

OvRxClass* OvDbBlockTable::recordClass() const {
    return OvDbBlockTableRecord::desc();
}

// ---------------------------------------------------------------------------------------

OvDbBlockTableIterator::OvDbBlockTableIterator(const OvDbBlockTable* table, bool atBeginning,
                                               bool skipDeleted)
    : OvDbSymbolTableIterator(table, atBeginning, skipDeleted) {}

OvDbBlockTableIterator::~OvDbBlockTableIterator() = default;

Orvex::ErrorStatus OvDbBlockTableIterator::getRecord(OvDbBlockTableRecord*& record,
                                                     OvDb::OpenMode mode,
                                                     bool openErasedRecord) const {
    return getTypedRecord(record, mode, openErasedRecord);
}
