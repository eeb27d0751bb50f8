#pragma once

#include "ovdb/OvDbObject.h"

#include <QString>

class OvDbDictionary;

// Walks the entries of a dictionary in order of insertion. It keeps a position, not a
// copy, so it sees entries added while it walks; it must not outlive the database.
class OvDbDictionaryIterator {
public:
    ~OvDbDictionaryIterator();

    QString name() const;
    OvDbObjectId objectId() const;
    // Opens the entry's object; erased objects open when the iterator shows them.
    Orvex::ErrorStatus getObject(OvDbObject*& object, OvDb::OpenMode mode) const;
    bool next();
    bool done() const;

private:
    friend class OvDbDictionary;
    OvDbDictionaryIterator(const OvDbDictionary* dictionary, bool includeErased);
    void skip();

    OvDbObjectId m_dictionary;
    std::size_t m_pos = 0;
    bool m_includeErased = false;
};
