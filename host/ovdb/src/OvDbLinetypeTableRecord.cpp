#include "ovdb/OvDbLinetypeTableRecord.h"

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvRxClassMacros.h"

#include <QJsonArray>

#include <cmath>

OVRX_DEFINE_CLASS(OvDbLinetypeTableRecord, OvDbSymbolTableRecord)

OvDbLinetypeTableRecord::OvDbLinetypeTableRecord() = default;

OvDbLinetypeTableRecord::~OvDbLinetypeTableRecord() = default;

QString OvDbLinetypeTableRecord::comments() const {
    assertReadEnabled();
    return m_comments;
}

Orvex::ErrorStatus OvDbLinetypeTableRecord::setComments(const QString& text) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    m_comments = text;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbLinetypeTableRecord::setComments(const wchar_t* text) {
    return setComments(QString::fromWCharArray(text ? text : L""));
}

int OvDbLinetypeTableRecord::numDashes() const {
    assertReadEnabled();
    return static_cast<int>(m_dashes.size());
}

double OvDbLinetypeTableRecord::dashLengthAt(int index) const {
    assertReadEnabled();
    if (index < 0 || index >= static_cast<int>(m_dashes.size()))
        return 0.0;
    return m_dashes[static_cast<std::size_t>(index)];
}

std::vector<double> OvDbLinetypeTableRecord::dashes() const {
    assertReadEnabled();
    return m_dashes;
}

Orvex::ErrorStatus OvDbLinetypeTableRecord::setDashes(const std::vector<double>& lengths) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    for (double length : lengths) {
        if (!std::isfinite(length))
            return Orvex::eInvalidInput;
    }
    m_dashes = lengths;
    return Orvex::eOk;
}

double OvDbLinetypeTableRecord::patternLength() const {
    assertReadEnabled();
    double total = 0.0;
    for (double length : m_dashes)
        total += std::fabs(length);
    return total;
}

Orvex::ErrorStatus OvDbLinetypeTableRecord::subErase(bool erasing) {
    if (erasing) {
        OvDbAccess::Impl* im = OvDbAccess::implOf(this);
        OvDbStub* self = OvDbAccess::stub(this);
        if (im && (self == im->continuous || self == im->byLayer || self == im->byBlock))
            return Orvex::eCannotBeErasedByCaller;
    }
    return OvDbSymbolTableRecord::subErase(erasing);
}

void OvDbLinetypeTableRecord::writeFields(OvDbDwgWriter& out) const {
    OvDbSymbolTableRecord::writeFields(out);
    out.fields().insert(QLatin1StringView("comments"), m_comments);
    QJsonArray dashes;
    for (double length : m_dashes)
        dashes.append(length);
    out.fields().insert(QLatin1StringView("dashes"), dashes);
}

Orvex::ErrorStatus OvDbLinetypeTableRecord::readFields(OvDbDwgReader& in) {
    if (OvDbSymbolTableRecord::readFields(in) != Orvex::eOk ||
        !in.readString(QLatin1StringView("comments"), m_comments) ||
        !in.readReals(QLatin1StringView("dashes"), m_dashes))
        return in.status();
    return Orvex::eOk;
}
