#include "ovcore/OvRxDictionary.h"

#include "ovdb/OvRxClassMacros.h"

OVRX_DEFINE_CLASS(OvRxDictionary, OvRxObject)

OvRxObject* OvRxDictionary::at(const wchar_t* key) const {
    return key ? at(QString::fromWCharArray(key)) : nullptr;
}

OvRxObject* OvRxDictionary::at(const QString& key) const {
    auto it = m_entries.find(key);
    return it == m_entries.end() ? nullptr : it->second;
}

OvRxObject* OvRxDictionary::atPut(const QString& key, OvRxObject* object) {
    OvRxObject*& slot = m_entries[key];
    OvRxObject* previous = slot;
    slot = object;
    return previous;
}

OvRxObject* OvRxDictionary::remove(const QString& key) {
    auto it = m_entries.find(key);
    if (it == m_entries.end())
        return nullptr;
    OvRxObject* previous = it->second;
    m_entries.erase(it);
    return previous;
}

QStringList OvRxDictionary::keys() const {
    QStringList list;
    for (const auto& entry : m_entries)
        list << entry.first;
    return list;
}
