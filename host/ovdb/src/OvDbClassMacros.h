#pragma once

#include "ovdb/OvRxClass.h"

// The run-time class functions every object model class has.
#define OVDB_DEFINE_CLASS(Class, Parent)                                                           \
    OvRxClass* Class::desc() {                                                                     \
        static OvRxClass cls(L"" #Class, Parent::desc());                                          \
        return &cls;                                                                               \
    }                                                                                              \
    OvRxClass* Class::isA() const {                                                                \
        return desc();                                                                             \
    }                                                                                              \
    Class* Class::cast(OvRxObject* object) {                                                       \
        return object && object->isKindOf(desc()) ? static_cast<Class*>(object) : nullptr;         \
    }
