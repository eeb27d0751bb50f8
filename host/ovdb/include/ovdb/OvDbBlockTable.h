#pragma once

#include "ovdb/OvDbSymbolTable.h"

class OvDbBlockTableIterator;
class OvDbBlockTableRecord;

// The blocks of a drawing, "*Model_Space" and "*Paper_Space" among them.
class OvDbBlockTable : public OvDbSymbolTable {
public:
    static OvRxClass* desc();
    static OvDbBlockTable* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbBlockTable();
    ~OvDbBlockTable() override;

    using OvDbSymbolTable::getAt;
    Orvex::ErrorStatus getAt(const wchar_t* name, OvDbBlockTableRecord*& record,
                             OvDb::OpenMode mode, bool openErasedRecord = false) const;

    using OvDbSymbolTable::newIterator;
    Orvex::ErrorStatus newIterator(OvDbBlockTableIterator*& iterator, bool atBeginning = true,
                                   bool skipDeleted = true) const;

protected:
    OvRxClass* recordClass() const override;
};
