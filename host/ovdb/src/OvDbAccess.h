#pragma once

#include "OvDbDatabaseImpl.h"
#include "OvDbStub.h"
#include "ovdb/OvDbObject.h"
#include "ovdb/OvRxClass.h"

#include <QString>
#include <QStringList>

#include <vector>

class OvDbBlockReference;
class OvDbBlockTableRecord;
class OvDbDictionary;
class OvDbEntity;
class OvDbLayerTableRecord;
class OvDbSymbolTable;
class OvDbSymbolTableRecord;

// The database's own way into its objects, past the open and close protocol: adding,
// erasing along owners, filing and usage data work on objects that nobody opened.
class OvDbAccess {
public:
    using Impl = OvDbDatabase::Impl;

    static OvDbStub* stub(const OvDbObject* object) { return object->m_stub; }
    static OvDbStub* owner(const OvDbObject* object) { return object->m_owner; }
    static void setOwner(OvDbObject* object, OvDbStub* owner) { object->m_owner = owner; }
    static OvDbStub* xdict(const OvDbObject* object) { return object->m_xdict.stub(); }
    static void setXdict(OvDbObject* object, OvDbStub* xdict) {
        object->m_xdict = OvDbObjectId(xdict);
    }

    static Impl* impl(const OvDbDatabase* database) {
        return database ? database->d.get() : nullptr;
    }
    static Impl* implOf(const OvDbObject* object) {
        return object->m_stub ? object->m_stub->db->d.get() : nullptr;
    }
    static void swapImpl(OvDbDatabase* database, std::unique_ptr<Impl>& other) {
        database->d.swap(other);
    }

    static OvDbObject* object(const OvDbStub* stub) { return stub ? stub->object : nullptr; }
    static OvDbObject* object(OvDbObjectId id) { return object(id.stub()); }
    template <class T> static T* objectAs(const OvDbStub* stub) {
        OvDbObject* o = object(stub);
        return o && o->isKindOf(T::desc()) ? static_cast<T*>(o) : nullptr;
    }
    template <class T> static T* objectAs(OvDbObjectId id) { return objectAs<T>(id.stub()); }
    static bool isLive(const OvDbStub* stub) { return stub && stub->object && !stub->erased; }

    // Puts a new object in a database under `owner`: with a given stub (a read), or a new
    // handle. Open for write when `leaveOpen`, else closed.
    static void addToDatabase(Impl* impl, OvDbObject* object, OvDbStub* owner, bool leaveOpen,
                              OvDbStub* stub = nullptr);
    // Ties an object read from a file to its stub; the read wires up the rest.
    static void adopt(OvDbObject* object, OvDbStub* stub) {
        stub->object = object;
        stub->objectClass = object->isA();
        object->m_stub = stub;
        object->m_writer = false;
    }
    static void markModified(OvDbDatabase* database);

    // Erases or revives an object and what it owns, without asking anyone.
    static void eraseTree(OvDbObject* object, bool erasing);
    static void ownedObjects(const OvDbObject* object, std::vector<OvDbObjectId>& ids) {
        object->ownedObjects(ids);
    }
    static void writeFields(const OvDbObject* object, OvDbDwgWriter& out) {
        object->writeFields(out);
    }
    static Orvex::ErrorStatus readFields(OvDbObject* object, OvDbDwgReader& in) {
        return object->readFields(in);
    }
    static void addedToDatabase(OvDbObject* object) { object->addedToDatabase(); }
    static bool isOpen(const OvDbObject* object) {
        return object->m_writer || object->m_readers > 0 || object->m_notifiers > 0;
    }
    static bool isOpenForWrite(const OvDbObject* object) { return object->m_writer; }
    static void setClosed(OvDbObject* object) { object->m_writer = false; }

    // The open and close protocol.
    static Orvex::ErrorStatus open(OvDbObject*& object, OvDbObjectId id, const OvRxClass* cls,
                                   OvDb::OpenMode mode, bool openErased);
    static void linkOpen(OvDbObject* object);
    static void unlinkOpen(OvDbObject* object);
    static std::size_t openCount();
    static QStringList openDescriptions();

    // A new object of a class that drawing files name by `type`; null for an unknown type.
    static OvDbObject* create(const QString& type);

    static void recordViolation(const QString& text);
    // Class, handle and (for a record) name of an object, for messages.
    static QString describe(const OvDbObject* object);
    // The name of a class without the "OvDb" prefix, as drawing files name it.
    static QString typeName(const OvRxClass* cls);

    // Containers.
    static std::vector<OvDbObjectId>& records(OvDbSymbolTable* table);
    static void indexRecord(OvDbSymbolTable* table, OvDbStub* record);
    static OvDbStub* findRecord(const OvDbSymbolTable* table, const QString& name);
    static std::vector<OvDbObjectId>& entities(OvDbBlockTableRecord* block);
    static std::vector<OvDbObjectId>& attributes(OvDbBlockReference* reference);
    static const OvDbStub* blockOf(const OvDbBlockReference* reference);
    // Adds (or replaces) a dictionary entry without the dictionary's checks.
    static void putEntry(OvDbDictionary* dictionary, const QString& name, OvDbStub* entry);
    static const QString& recordName(const OvDbSymbolTableRecord* record);
    static void setRecordName(OvDbSymbolTableRecord* record, const QString& name);
    static OvDbStub* layerOf(const OvDbEntity* entity);
    // Counts a live entity on its layer, or stops counting it (erased, or moving away).
    static void countUse(OvDbObject* object, bool using_);
    static void setLayerOf(OvDbEntity* entity, OvDbStub* layer);
    static void setInUse(OvDbLayerTableRecord* layer, bool inUse);
    static OvDbStub* linetypeOf(const OvDbLayerTableRecord* layer);
    static void setLinetypeOf(OvDbLayerTableRecord* layer, OvDbStub* linetype);
};
