#include "ovdb/OvDbObjectId.h"

#include "OvDbStub.h"
#include "ovdb/OvDbObject.h"

const OvDbObjectId OvDbObjectId::kNull;

bool OvDbObjectId::isValid() const {
    return m_stub && m_stub->object;
}

bool OvDbObjectId::isErased() const {
    return m_stub && m_stub->erased;
}

OvDbHandle OvDbObjectId::handle() const {
    return m_stub ? OvDbHandle(m_stub->handle) : OvDbHandle();
}

OvDbDatabase* OvDbObjectId::database() const {
    return m_stub ? m_stub->db : nullptr;
}

OvRxClass* OvDbObjectId::objectClass() const {
    return m_stub && m_stub->object ? m_stub->objectClass : nullptr;
}
