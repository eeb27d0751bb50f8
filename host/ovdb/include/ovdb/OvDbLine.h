#pragma once

#include "ovdb/OvDbEntity.h"
#include "ovdb/OvGePoint3d.h"

// A straight line between two points.
class OvDbLine : public OvDbEntity {
public:
    static OvRxClass* desc();
    static OvDbLine* cast(OvRxObject* object);
    OvRxClass* isA() const override;

    OvDbLine();
    OvDbLine(const OvGePoint3d& start, const OvGePoint3d& end);
    ~OvDbLine() override;

    OvGePoint3d startPoint() const;
    OvGePoint3d endPoint() const;
    // eInvalidInput for a coordinate that is not finite.
    Orvex::ErrorStatus setStartPoint(const OvGePoint3d& point);
    Orvex::ErrorStatus setEndPoint(const OvGePoint3d& point);

protected:
    void writeFields(OvDbDwgWriter& out) const override;
    Orvex::ErrorStatus readFields(OvDbDwgReader& in) override;

private:
    OvGePoint3d m_start;
    OvGePoint3d m_end;
};
