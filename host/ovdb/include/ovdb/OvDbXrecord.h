#pragma once

#include "ovdb/OvDbObject.h"

struct resbuf;

// A record of group-coded values (codes below 5000), kept as a value chain.
class OvDbXrecord : public OvDbObject {
public:
    static OvRxClass* desc();
    static OvDbXrecord* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbXrecord();
    ~OvDbXrecord() override;

    // A copy of the data for the caller, who frees it with ovutRelRb; null when empty.
    Orvex::ErrorStatus rbChain(resbuf*& chain, OvDbDatabase* database = nullptr) const;
    // Replaces the data with a copy of `chain`. eInvalidInput for a LISP type (5000 and
    // above), a negative or unknown code, or a real that is not finite; nothing changes then.
    Orvex::ErrorStatus setFromRbChain(const resbuf* chain, OvDbDatabase* database = nullptr);

protected:
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;

private:
    resbuf* m_chain = nullptr;
};
