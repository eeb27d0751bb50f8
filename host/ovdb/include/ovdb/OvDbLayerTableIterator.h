#pragma once

#include "ovdb/OvDbSymbolTableIterator.h"

class OvDbLayerTable;
class OvDbLayerTableRecord;

// Walks the records of the layer table.
class OvDbLayerTableIterator : public OvDbSymbolTableIterator {
public:
    OvDbLayerTableIterator(const OvDbLayerTable* table, bool atBeginning, bool skipDeleted);
    ~OvDbLayerTableIterator() override;

    using OvDbSymbolTableIterator::getRecord;
    Orvex::ErrorStatus getRecord(OvDbLayerTableRecord*& record, OvDb::OpenMode mode,
                                 bool openErasedRecord = false) const;
};
