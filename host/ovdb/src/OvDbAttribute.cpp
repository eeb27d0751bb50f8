#include "ovdb/OvDbAttribute.h"

#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvRxClassMacros.h"

#include <QJsonArray>

OVRX_DEFINE_CLASS(OvDbAttribute, OvDbEntity)

OvDbAttribute::OvDbAttribute() = default;

OvDbAttribute::OvDbAttribute(const OvGePoint3d& position, const QString& text, const QString& tag)
    : m_text(text) {
    if (position.isFinite())
        m_position = position;
    if (isValidTag(tag))
        m_tag = tag;
}

OvDbAttribute::~OvDbAttribute() = default;

bool OvDbAttribute::isValidTag(const QString& tag) {
    if (tag.isEmpty())
        return false;
    for (const QChar c : tag) {
        if (c.isSpace() || c.unicode() < 0x20)
            return false;
    }
    return true;
}

QString OvDbAttribute::tag() const {
    assertReadEnabled();
    return m_tag;
}

Orvex::ErrorStatus OvDbAttribute::setTag(const QString& tag) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!isValidTag(tag))
        return Orvex::eInvalidInput;
    m_tag = tag;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbAttribute::setTag(const wchar_t* tag) {
    return setTag(QString::fromWCharArray(tag ? tag : L""));
}

QString OvDbAttribute::textString() const {
    assertReadEnabled();
    return m_text;
}

Orvex::ErrorStatus OvDbAttribute::setTextString(const QString& text) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    m_text = text;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbAttribute::setTextString(const wchar_t* text) {
    return setTextString(QString::fromWCharArray(text ? text : L""));
}

OvGePoint3d OvDbAttribute::position() const {
    assertReadEnabled();
    return m_position;
}

Orvex::ErrorStatus OvDbAttribute::setPosition(const OvGePoint3d& point) {
    if (!assertWriteEnabled())
        return Orvex::eNotOpenForWrite;
    if (!point.isFinite())
        return Orvex::eInvalidInput;
    m_position = point;
    return Orvex::eOk;
}

void OvDbAttribute::writeFields(OvDbDwgWriter& out) const {
    OvDbEntity::writeFields(out);
    QJsonObject& f = out.fields();
    f.insert(QLatin1StringView("tag"), m_tag);
    f.insert(QLatin1StringView("text"), m_text);
    f.insert(QLatin1StringView("position"), QJsonArray{m_position.x, m_position.y, m_position.z});
}

Orvex::ErrorStatus OvDbAttribute::readFields(OvDbDwgReader& in) {
    if (OvDbEntity::readFields(in) != Orvex::eOk ||
        !in.readString(QLatin1StringView("tag"), m_tag, true) ||
        !in.readString(QLatin1StringView("text"), m_text) ||
        !in.readPoint(QLatin1StringView("position"), m_position))
        return in.status();
    if (!isValidTag(m_tag))
        return in.fail(Orvex::eBadDrawingFormat,
                       QStringLiteral("\"%1\" is not a valid attribute tag").arg(m_tag));
    return Orvex::eOk;
}
