#include "ovdb/OvDbLine.h"

#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvRxClassMacros.h"

#include <QJsonArray>

OVRX_DEFINE_CLASS(OvDbLine, OvDbEntity)

OvDbLine::OvDbLine() = default;

OvDbLine::OvDbLine(const OvGePoint3d& start, const OvGePoint3d& end) {
    if (start.isFinite())
        m_start = start;
    if (end.isFinite())
        m_end = end;
}

OvDbLine::~OvDbLine() = default;

OvGePoint3d OvDbLine::startPoint() const {
    assertReadEnabled();
    return m_start;
}

OvGePoint3d OvDbLine::endPoint() const {
    assertReadEnabled();
    return m_end;
}

Orvex::ErrorStatus OvDbLine::setStartPoint(const OvGePoint3d& point) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!point.isFinite())
        return Orvex::eInvalidInput;
    m_start = point;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbLine::setEndPoint(const OvGePoint3d& point) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!point.isFinite())
        return Orvex::eInvalidInput;
    m_end = point;
    return Orvex::eOk;
}

void OvDbLine::writeFields(OvDbDwgWriter& out) const {
    OvDbEntity::writeFields(out);
    out.fields().insert(QLatin1StringView("start"), QJsonArray{m_start.x, m_start.y, m_start.z});
    out.fields().insert(QLatin1StringView("end"), QJsonArray{m_end.x, m_end.y, m_end.z});
}

Orvex::ErrorStatus OvDbLine::readFields(OvDbDwgReader& in) {
    if (OvDbEntity::readFields(in) != Orvex::eOk ||
        !in.readPoint(QLatin1StringView("start"), m_start, true) ||
        !in.readPoint(QLatin1StringView("end"), m_end, true))
        return in.status();
    return Orvex::eOk;
}
