#pragma once

#include "ovdb/OvDbSymbolTableIterator.h"

class OvDbBlockTable;
class OvDbBlockTableRecord;

// Walks the records of the block table.
class OvDbBlockTableIterator : public OvDbSymbolTableIterator {
public:
    OvDbBlockTableIterator(const OvDbBlockTable* table, bool atBeginning, bool skipDeleted);
    ~OvDbBlockTableIterator() override;

    using OvDbSymbolTableIterator::getRecord;
    Orvex::ErrorStatus getRecord(OvDbBlockTableRecord*& record, OvDb::OpenMode mode,
                                 bool openErasedRecord = false) const;
};
