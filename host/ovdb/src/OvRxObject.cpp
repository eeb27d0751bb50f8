#include "ovdb/OvRxObject.h"

#include "ovdb/OvRxClass.h"

OvRxObject::~OvRxObject() = default;

OvRxClass* OvRxObject::desc() {
    static OvRxClass cls(L"OvRxObject", static_cast<OvRxClass*>(nullptr));
    return &cls;
}

OvRxClass* OvRxObject::isA() const {
    return desc();
}

bool OvRxObject::isKindOf(const OvRxClass* cls) const {
    const OvRxClass* own = isA();
    return own == cls || own->isDerivedFrom(cls);
}
