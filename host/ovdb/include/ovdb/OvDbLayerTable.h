#pragma once

#include "ovdb/OvDbSymbolTable.h"

class OvDbLayerTableIterator;
class OvDbLayerTableRecord;

// The layers of a drawing.
class OvDbLayerTable : public OvDbSymbolTable {
public:
    static OvRxClass* desc();
    static OvDbLayerTable* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbLayerTable();
    ~OvDbLayerTable() override;

    using OvDbSymbolTable::getAt;
    Orvex::ErrorStatus getAt(const wchar_t* name, OvDbLayerTableRecord*& record,
                             OvDb::OpenMode mode, bool openErasedRecord = false) const;

    using OvDbSymbolTable::newIterator;
    Orvex::ErrorStatus newIterator(OvDbLayerTableIterator*& iterator, bool atBeginning = true,
                                   bool skipDeleted = true) const;

    // Marks each layer in use or not, by the live entities of every block that use it;
    // layer "0" and the current layer count as in use. Layers keep these marks until the
    // next call: isInUse is false for every layer before the first.
    Orvex::ErrorStatus generateUsageData();

protected:
    OvRxClass* recordClass() const override;
};
