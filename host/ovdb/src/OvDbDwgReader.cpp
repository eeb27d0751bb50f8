#include "OvDbDwgReader.h"

#include "ovdb/OvDbHandle.h"

#include <QJsonArray>

#include <cmath>

void OvDbDwgReader::begin(const QJsonObject& fields, OvDbObject* object, std::uint64_t handle,
                          const QString& type) {
    m_fields = fields;
    m_object = object;
    m_handle = handle;
    m_type = type;
}

QString OvDbDwgReader::label() const {
    return QStringLiteral("object %1 (%2)").arg(handleText(m_handle), m_type);
}

Orvex::ErrorStatus OvDbDwgReader::fail(Orvex::ErrorStatus status, const QString& problem) {
    if (m_status == Orvex::eOk) {
        m_status = status;
        m_message = QStringLiteral("%1: %2").arg(label(), problem);
    }
    return m_status;
}

bool OvDbDwgReader::readString(QLatin1StringView key, QString& out, bool required) {
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined() && !required)
        return true;
    if (!v.isString()) {
        fail(Orvex::eBadDrawingFormat, QStringLiteral("'%1' must be a text").arg(key));
        return false;
    }
    out = v.toString();
    return true;
}

bool OvDbDwgReader::readInt(QLatin1StringView key, int& out, int min, int max) {
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined())
        return true;
    const double d = v.toDouble();
    if (!v.isDouble() || d != std::floor(d) || d < min || d > max) {
        fail(
            Orvex::eBadDrawingFormat,
            QStringLiteral("'%1' must be a whole number from %2 to %3").arg(key).arg(min).arg(max));
        return false;
    }
    out = static_cast<int>(d);
    return true;
}

bool OvDbDwgReader::readBool(QLatin1StringView key, bool& out) {
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined())
        return true;
    if (!v.isBool()) {
        fail(Orvex::eBadDrawingFormat, QStringLiteral("'%1' must be true or false").arg(key));
        return false;
    }
    out = v.toBool();
    return true;
}

bool OvDbDwgReader::readPoint(QLatin1StringView key, OvGePoint3d& out, bool required) {
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined() && !required)
        return true;
    const QJsonArray a = v.toArray();
    if (!v.isArray() || a.size() != 3 || !a[0].isDouble() || !a[1].isDouble() || !a[2].isDouble()) {
        fail(Orvex::eBadDrawingFormat,
             QStringLiteral("'%1' must be a point of three numbers").arg(key));
        return false;
    }
    out = OvGePoint3d(a[0].toDouble(), a[1].toDouble(), a[2].toDouble());
    return true;
}

bool OvDbDwgReader::readReals(QLatin1StringView key, std::vector<double>& out) {
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined())
        return true;
    if (!v.isArray()) {
        fail(Orvex::eBadDrawingFormat, QStringLiteral("'%1' must be a list of numbers").arg(key));
        return false;
    }
    std::vector<double> values;
    for (const QJsonValue& item : v.toArray()) {
        if (!item.isDouble()) {
            fail(Orvex::eBadDrawingFormat,
                 QStringLiteral("'%1' must be a list of numbers").arg(key));
            return false;
        }
        values.push_back(item.toDouble());
    }
    out = std::move(values);
    return true;
}

bool OvDbDwgReader::readRef(QLatin1StringView key, OvDbObjectId& slot, OvRxClass* expected,
                            bool required) {
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined() && !required) {
        slot = OvDbObjectId();
        return true;
    }
    std::uint64_t handle = 0;
    if (!parseHandle(v, handle)) {
        fail(Orvex::eBadDrawingFormat,
             QStringLiteral("'%1' must be a hexadecimal handle").arg(key));
        return false;
    }
    slot = OvDbObjectId();
    if (handle == 0 && !required)
        return true;
    m_fixups.push_back({m_object, &slot, handle, expected, key});
    return true;
}

void OvDbDwgReader::addDictionaryEntry(OvDbDictionary* dictionary, const QString& name,
                                       std::uint64_t handle) {
    m_entries.push_back({dictionary, name, handle});
}

bool OvDbDwgReader::parseHandle(const QJsonValue& value, std::uint64_t& handle) {
    if (!value.isString())
        return false;
    bool ok = false;
    const OvDbHandle h = OvDbHandle::fromString(value.toString(), &ok);
    handle = h.value();
    return ok;
}

QString OvDbDwgReader::handleText(std::uint64_t handle) {
    return OvDbHandle(handle).toString();
}
