#pragma once

#include "ovdb/OvDbSymbolTableIterator.h"

class OvDbLinetypeTable;
class OvDbLinetypeTableRecord;

// Walks the records of the linetype table.
class OvDbLinetypeTableIterator : public OvDbSymbolTableIterator {
public:
    OvDbLinetypeTableIterator(const OvDbLinetypeTable* table, bool atBeginning, bool skipDeleted);
    ~OvDbLinetypeTableIterator() override;

    using OvDbSymbolTableIterator::getRecord;
    Orvex::ErrorStatus getRecord(OvDbLinetypeTableRecord*& record, OvDb::OpenMode mode,
                                 bool openErasedRecord = false) const;
};
