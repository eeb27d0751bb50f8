#include "ovdb/OvRxClass.h"

OvRxClass::OvRxClass(const wchar_t* name, OvRxClass* parent)
    : m_name(QString::fromWCharArray(name ? name : L"")), m_parent(parent) {
    if (parent)
        m_parentName = parent->name();
}

OvRxClass::OvRxClass(const wchar_t* name, const wchar_t* parentName)
    : m_name(QString::fromWCharArray(name ? name : L"")),
      m_parentName(QString::fromWCharArray(parentName ? parentName : L"")) {}

OvRxClass::~OvRxClass() = default;

void OvRxClass::setParent(OvRxClass* parent) {
    m_parent = parent;
    if (parent)
        m_parentName = parent->name();
}

bool OvRxClass::isDerivedFrom(const OvRxClass* other) const {
    if (!other)
        return false;
    // Bounded, so that a cycle made by a careless registry cannot hang the host.
    int depth = 0;
    for (const OvRxClass* c = this; c && depth < 256; c = c->m_parent, ++depth) {
        if (c == other)
            return true;
    }
    return false;
}
