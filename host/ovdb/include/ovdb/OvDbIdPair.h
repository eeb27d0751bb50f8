#pragma once

#include "ovdb/OvDbObjectId.h"

// One entry of an id mapping: an object of the source (key) and what stands for it in
// the destination (value).
class OvDbIdPair {
public:
    OvDbIdPair() = default;
    OvDbIdPair(OvDbObjectId key, OvDbObjectId value, bool isCloned, bool isPrimary = false,
               bool isOwnerXlated = true)
        : m_key(key), m_value(value), m_cloned(isCloned), m_primary(isPrimary),
          m_ownerXlated(isOwnerXlated) {}

    OvDbObjectId key() const { return m_key; }
    OvDbObjectId value() const { return m_value; }
    // True when the value is a copy made by the clone (or a record it replaced).
    bool isCloned() const { return m_cloned; }
    // True for an object the caller asked for, false for one that came along.
    bool isPrimary() const { return m_primary; }
    bool isOwnerXlated() const { return m_ownerXlated; }

    void setKey(OvDbObjectId key) { m_key = key; }
    void setValue(OvDbObjectId value) { m_value = value; }
    void setIsCloned(bool cloned) { m_cloned = cloned; }
    void setIsPrimary(bool primary) { m_primary = primary; }
    void setIsOwnerXlated(bool xlated) { m_ownerXlated = xlated; }

private:
    OvDbObjectId m_key;
    OvDbObjectId m_value;
    bool m_cloned = false;
    bool m_primary = false;
    bool m_ownerXlated = true;
};
