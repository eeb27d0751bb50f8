#pragma once

#include "ovdb/OvDbNameIndex.h"
#include "ovdb/OvDbObject.h"

#include <QHash>
#include <QString>

#include <vector>

class OvDbDictionaryIterator;

// A map from names to objects that the dictionary owns. Names compare without regard to
// case; iteration follows the order of insertion. An entry whose object is erased stays
// in the dictionary (an iterator can show it) but is not found by name.
class OvDbDictionary : public OvDbObject {
public:
    static OvRxClass* desc();
    static OvDbDictionary* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbDictionary();
    ~OvDbDictionary() override;

    // eKeyNotFound (22) when no live entry has that name.
    Orvex::ErrorStatus getAt(const wchar_t* name, OvDbObjectId& id) const;
    Orvex::ErrorStatus getAt(const QString& name, OvDbObjectId& id) const;
    Orvex::ErrorStatus getAt(const wchar_t* name, OvDbObject*& object, OvDb::OpenMode mode) const;
    bool has(const wchar_t* name) const;
    bool has(const QString& name) const;
    bool has(OvDbObjectId id) const;
    Orvex::ErrorStatus nameAt(OvDbObjectId id, QString& name) const;

    // Puts `object` under `name`; the dictionary owns it from now on. A new object is added
    // to the database and left open for write (close it). A live entry of that name is
    // replaced and its object erased. Needs the dictionary open for write and in a database.
    Orvex::ErrorStatus setAt(const wchar_t* name, OvDbObject* object, OvDbObjectId& id);
    Orvex::ErrorStatus setAt(const QString& name, OvDbObject* object, OvDbObjectId& id);

    // Takes the entry out without erasing its object, which then has no owner.
    Orvex::ErrorStatus remove(const wchar_t* name);
    Orvex::ErrorStatus remove(const wchar_t* name, OvDbObjectId& id);
    Orvex::ErrorStatus remove(OvDbObjectId id);

    // Live entries.
    int numEntries() const;

    // A new iterator at the first entry; the caller deletes it.
    OvDbDictionaryIterator* newIterator(bool includeErased = false) const;

protected:
    Orvex::ErrorStatus subErase(bool erasing) override;
    void ownedObjects(std::vector<OvDbObjectId>& ids) const override;
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;

private:
    friend class OvDbAccess;
    friend class OvDbDictionaryIterator;

    struct Entry {
        QString name;
        OvDbObjectId id;
    };

    int findLive(const QString& name) const;
    void reindex();

    std::vector<Entry> m_entries;
    // Case-folded name to the position of its live entry.
    OvDbNameIndex<int> m_index;
};
