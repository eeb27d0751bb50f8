#pragma once

#include "ovdb/OvRxObject.h"

#include <QString>
#include <QStringList>

#include <map>

// A dictionary of run-time objects by key; keys compare exactly. It does not own what it
// holds: the system registry's entries live as long as the host.
class OvRxDictionary : public OvRxObject {
public:
    static OvRxClass* desc();
    static OvRxDictionary* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    // Null when the key is absent.
    OvRxObject* at(const wchar_t* key) const;
    OvRxObject* at(const QString& key) const;
    // Returns the object that the key held before, null if none.
    OvRxObject* atPut(const QString& key, OvRxObject* object);
    // Returns the object removed, null if none.
    OvRxObject* remove(const QString& key);
    bool has(const QString& key) const { return m_entries.count(key) != 0; }
    int numEntries() const { return static_cast<int>(m_entries.size()); }
    QStringList keys() const;

private:
    std::map<QString, OvRxObject*> m_entries;
};
