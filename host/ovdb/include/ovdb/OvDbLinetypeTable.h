#pragma once

#include "ovdb/OvDbSymbolTable.h"

class OvDbLinetypeTableIterator;
class OvDbLinetypeTableRecord;

// The linetypes of a drawing.
class OvDbLinetypeTable : public OvDbSymbolTable {
public:
    static OvRxClass* desc();
    static OvDbLinetypeTable* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbLinetypeTable();
    ~OvDbLinetypeTable() override;

    using OvDbSymbolTable::getAt;
    Orvex::ErrorStatus getAt(const wchar_t* name, OvDbLinetypeTableRecord*& record,
                             OvDb::OpenMode mode, bool openErasedRecord = false) const;

    using OvDbSymbolTable::newIterator;
    Orvex::ErrorStatus newIterator(OvDbLinetypeTableIterator*& iterator, bool atBeginning = true,
                                   bool skipDeleted = true) const;

protected:
    OvRxClass* recordClass() const override;
};
