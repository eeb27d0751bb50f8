#pragma once

#include "ovdb/OvDbObject.h"

class OvDbSymbolTable;
class OvDbSymbolTableRecord;

// Walks the records of a symbol table in the order they were added. It holds a position,
// so records added during the walk are reached; it must not outlive the database.
class OvDbSymbolTableIterator {
public:
    OvDbSymbolTableIterator(const OvDbSymbolTable* table, bool atBeginning, bool skipDeleted);
    virtual ~OvDbSymbolTableIterator();

    void start(bool atBeginning = true, bool skipDeleted = true);
    bool done() const;
    void step(bool forward = true, bool skipDeleted = true);

    Orvex::ErrorStatus getRecordId(OvDbObjectId& id) const;
    OvDbObjectId recordId() const;
    Orvex::ErrorStatus getRecord(OvDbSymbolTableRecord*& record, OvDb::OpenMode mode,
                                 bool openErasedRecord = false) const;

    // Moves to a record of the table; eKeyNotFound when the table does not hold it.
    Orvex::ErrorStatus seek(OvDbObjectId id);
    Orvex::ErrorStatus seek(const OvDbSymbolTableRecord* record);

protected:
    template <class T>
    Orvex::ErrorStatus getTypedRecord(T*& record, OvDb::OpenMode mode, bool openErased) const {
        record = nullptr;
        OvDbSymbolTableRecord* base = nullptr;
        const Orvex::ErrorStatus es = openAs(base, T::desc(), mode, openErased);
        if (es == Orvex::eOk)
            record = static_cast<T*>(base);
        return es;
    }

private:
    Orvex::ErrorStatus openAs(OvDbSymbolTableRecord*& record, OvRxClass* cls, OvDb::OpenMode mode,
                              bool openErased) const;
    const std::vector<OvDbObjectId>* records() const;

    OvDbObjectId m_table;
    // Position in the table's records; -1 or the count when done.
    long long m_pos = 0;
};
