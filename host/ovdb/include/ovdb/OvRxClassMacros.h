#pragma once

#include "ovdb/OvRxClass.h"

// The run-time class functions every class of the host's class registry has: its
// descriptor, isA and a checked cast. Use in the class's source file.
#define OVRX_DEFINE_CLASS(Class, Parent)                                                           \
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
