#pragma once

#include "ovdb/OvDbNameIndex.h"
#include "ovdb/OvDbObject.h"

#include <QString>

#include <vector>

class OvDbSymbolTableIterator;
class OvDbSymbolTableRecord;

// A table of named records (layers, linetypes, blocks). Names compare without regard to
// case; iteration follows the order in which records were added. Erased records stay in
// the table until the drawing is saved, and are found by name only on request.
class OvDbSymbolTable : public OvDbObject {
public:
    static OvRxClass* desc();
    static OvDbSymbolTable* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    ~OvDbSymbolTable() override;

    Orvex::ErrorStatus getAt(const wchar_t* name, OvDbSymbolTableRecord*& record,
                             OvDb::OpenMode mode, bool openErasedRecord = false) const;
    Orvex::ErrorStatus getAt(const wchar_t* name, OvDbObjectId& id,
                             bool getErasedRecord = false) const;
    // eKeyNotFound (22) when there is no such record.
    Orvex::ErrorStatus getIdAt(const wchar_t* name, OvDbObjectId& id,
                               bool getErasedRecord = false) const;
    Orvex::ErrorStatus getIdAt(const QString& name, OvDbObjectId& id,
                               bool getErasedRecord = false) const;
    // A live record of that name, or a record (erased or not) of this table.
    bool has(const wchar_t* name) const;
    bool has(const QString& name) const;
    bool has(OvDbObjectId id) const;

    // Adds a new record, which is then open for write (close it). Refused with
    // eAlreadyInDb for a record already in a database, eDuplicateRecordName for a name in
    // use, eInvalidInput for a record without a name, eWrongObjectType for a record of
    // another kind of table, eNotOpenForWrite unless the table is open for write.
    Orvex::ErrorStatus add(OvDbSymbolTableRecord* record);
    Orvex::ErrorStatus add(OvDbObjectId& id, OvDbSymbolTableRecord* record);
    Orvex::ErrorStatus add(OvDbSymbolTableRecord* record, OvDbObjectId& id);

    // The iterator may be used after the table is closed; the caller deletes it.
    Orvex::ErrorStatus newIterator(OvDbSymbolTableIterator*& iterator, bool atBeginning = true,
                                   bool skipDeleted = true) const;

    // Live records.
    int numRecords() const;

protected:
    OvDbSymbolTable();
    // getAt for the typed tables: the record opened as the class this table holds.
    template <class Record>
    Orvex::ErrorStatus getTypedAt(const wchar_t* name, Record*& record, OvDb::OpenMode mode,
                                  bool openErasedRecord) const {
        OvDbSymbolTableRecord* opened = nullptr;
        const Orvex::ErrorStatus es = getAt(name, opened, mode, openErasedRecord);
        record = static_cast<Record*>(opened);
        return es;
    }
    // The class of the records this table holds.
    virtual OvRxClass* recordClass() const = 0;
    Orvex::ErrorStatus subErase(bool erasing) override;
    void ownedObjects(std::vector<OvDbObjectId>& ids) const override;

private:
    friend class OvDbAccess;
    friend class OvDbSymbolTableIterator;

    OvDbStub* findLive(const QString& name) const;
    OvDbStub* findErased(const QString& name) const;

    std::vector<OvDbObjectId> m_records;
    // Case-folded name to its live record.
    OvDbNameIndex<OvDbStub*> m_index;
};
