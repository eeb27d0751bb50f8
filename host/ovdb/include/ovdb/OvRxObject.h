#pragma once

class OvRxClass;

// Root of every class that has a run-time class descriptor.
class OvRxObject {
public:
    virtual ~OvRxObject();

    static OvRxClass* desc();
    static OvRxObject* cast(OvRxObject* object) { return object; }

    virtual OvRxClass* isA() const;
    bool isKindOf(const OvRxClass* cls) const;
};
