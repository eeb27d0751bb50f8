#include "OvDbDwgReader.h"

#include "OvDbAccess.h"
#include "OvDbDwgFileObject.h"
#include "ovdb/OvDbHandle.h"

#include <QJsonArray>

#include <cmath>

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

std::string_view view(QLatin1StringView key) {
    return {key.data(), static_cast<std::size_t>(key.size())};
}

bool isNumber(const element& e) {
    const element_type t = e.type();
    return t == element_type::INT64 || t == element_type::UINT64 || t == element_type::DOUBLE;
}

double number(const element& e) {
    double d = 0;
    return e.get_double().get(d) == simdjson::SUCCESS ? d : 0.0;
}

bool readPointOf(const element& e, OvGePoint3d& out) {
    simdjson::dom::array a;
    if (e.get_array().get(a) != simdjson::SUCCESS || a.size() != 3)
        return false;
    double xyz[3];
    std::size_t i = 0;
    for (const element item : a) {
        if (!isNumber(item))
            return false;
        xyz[i++] = number(item);
    }
    out = OvGePoint3d(xyz[0], xyz[1], xyz[2]);
    return true;
}

using Value = OvDbDwgReader::Value;

// A value of the file, with a list's elements one level deep. False for a text that is
// not valid Unicode.
bool toValue(const element& e, Value& out, bool nested = true) {
    out.items.clear();
    switch (e.type()) {
    case element_type::ARRAY: {
        out.kind = Value::Kind::List;
        simdjson::dom::array items;
        if (e.get_array().get(items) != simdjson::SUCCESS)
            return false;
        if (!nested)
            return true;
        for (const element item : items) {
            out.items.emplace_back();
            if (!toValue(item, out.items.back(), false))
                return false;
        }
        return true;
    }
    case element_type::OBJECT:
        out.kind = Value::Kind::Object;
        return true;
    case element_type::STRING: {
        out.kind = Value::Kind::Text;
        std::string_view utf8;
        return e.get_string().get(utf8) == simdjson::SUCCESS && ovdbFileText(utf8, out.text);
    }
    case element_type::INT64:
    case element_type::UINT64:
    case element_type::DOUBLE:
        out.kind = Value::Kind::Number;
        out.number = number(e);
        return true;
    case element_type::BOOL:
        out.kind = Value::Kind::Bool;
        return e.get_bool().get(out.boolean) == simdjson::SUCCESS;
    case element_type::NULL_VALUE:
        out.kind = Value::Kind::Null;
        return true;
    }
    return false;
}

void toValue(const QJsonValue& v, Value& out, bool nested = true) {
    out.items.clear();
    out.text.clear();
    switch (v.type()) {
    case QJsonValue::Array:
        out.kind = Value::Kind::List;
        if (nested) {
            for (const QJsonValue& item : v.toArray()) {
                out.items.emplace_back();
                toValue(item, out.items.back(), false);
            }
        }
        return;
    case QJsonValue::Object:
        out.kind = Value::Kind::Object;
        return;
    case QJsonValue::String:
        out.kind = Value::Kind::Text;
        out.text = v.toString();
        return;
    case QJsonValue::Double:
        out.kind = Value::Kind::Number;
        out.number = v.toDouble();
        return;
    case QJsonValue::Bool:
        out.kind = Value::Kind::Bool;
        out.boolean = v.toBool();
        return;
    default:
        out.kind = Value::Kind::Null;
        return;
    }
}

} // namespace

bool ovdbFileText(std::string_view utf8, QString& out) {
    for (std::size_t i = 0; i + 1 < utf8.size(); ++i) {
        if (static_cast<unsigned char>(utf8[i]) == 0xED &&
            static_cast<unsigned char>(utf8[i + 1]) >= 0xA0)
            return false;
    }
    out = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
    return true;
}

void OvDbDwgReader::begin(const QJsonObject& fields, OvDbObject* object, std::uint64_t handle) {
    m_fields = fields;
    m_file = nullptr;
    m_object = object;
    m_handle = handle;
}

void OvDbDwgReader::begin(OvDbDwgFileObject* fields, OvDbObject* object, std::uint64_t handle) {
    m_fields = QJsonObject();
    m_file = fields;
    m_object = object;
    m_handle = handle;
}

QString OvDbDwgReader::label() const {
    return QStringLiteral("object %1 (%2)")
        .arg(handleText(m_handle),
             m_object ? OvDbAccess::typeName(m_object->isA()) : QStringLiteral("?"));
}

Orvex::ErrorStatus OvDbDwgReader::fail(Orvex::ErrorStatus status, const QString& problem) {
    if (m_status == Orvex::eOk) {
        m_status = status;
        m_message = QStringLiteral("%1: %2").arg(label(), problem);
    }
    return m_status;
}

bool OvDbDwgReader::readString(QLatin1StringView key, QString& out, bool required) {
    auto wrong = [&] {
        fail(Orvex::eBadDrawingFormat, QStringLiteral("'%1' must be a text").arg(key));
        return false;
    };
    if (m_file) {
        const element* v = m_file->take(view(key));
        if (!v)
            return required ? wrong() : true;
        std::string_view text;
        if (v->get_string().get(text) != simdjson::SUCCESS)
            return wrong();
        if (!ovdbFileText(text, out)) {
            fail(Orvex::eBadDrawingFormat,
                 QStringLiteral("'%1' is not valid Unicode text (it holds a lone surrogate)")
                     .arg(key));
            return false;
        }
        return true;
    }
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined() && !required)
        return true;
    if (!v.isString())
        return wrong();
    out = v.toString();
    return true;
}

bool OvDbDwgReader::readInt(QLatin1StringView key, int& out, int min, int max) {
    bool present = false;
    bool numeric = false;
    double d = 0;
    if (m_file) {
        if (const element* v = m_file->take(view(key))) {
            present = true;
            numeric = isNumber(*v);
            d = number(*v);
        }
    } else {
        const QJsonValue v = m_fields.value(key);
        present = !v.isUndefined();
        numeric = v.isDouble();
        d = v.toDouble();
    }
    if (!present)
        return true;
    if (!numeric || d != std::floor(d) || d < min || d > max) {
        fail(
            Orvex::eBadDrawingFormat,
            QStringLiteral("'%1' must be a whole number from %2 to %3").arg(key).arg(min).arg(max));
        return false;
    }
    out = static_cast<int>(d);
    return true;
}

bool OvDbDwgReader::readBool(QLatin1StringView key, bool& out) {
    auto wrong = [&] {
        fail(Orvex::eBadDrawingFormat, QStringLiteral("'%1' must be true or false").arg(key));
        return false;
    };
    if (m_file) {
        const element* v = m_file->take(view(key));
        if (!v)
            return true;
        bool b = false;
        if (v->get_bool().get(b) != simdjson::SUCCESS)
            return wrong();
        out = b;
        return true;
    }
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined())
        return true;
    if (!v.isBool())
        return wrong();
    out = v.toBool();
    return true;
}

bool OvDbDwgReader::readPoint(QLatin1StringView key, OvGePoint3d& out, bool required) {
    auto wrong = [&] {
        fail(Orvex::eBadDrawingFormat,
             QStringLiteral("'%1' must be a point of three numbers").arg(key));
        return false;
    };
    if (m_file) {
        const element* v = m_file->take(view(key));
        if (!v)
            return required ? wrong() : true;
        return readPointOf(*v, out) || wrong();
    }
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined() && !required)
        return true;
    const QJsonArray a = v.toArray();
    if (!v.isArray() || a.size() != 3 || !a[0].isDouble() || !a[1].isDouble() || !a[2].isDouble())
        return wrong();
    out = OvGePoint3d(a[0].toDouble(), a[1].toDouble(), a[2].toDouble());
    return true;
}

bool OvDbDwgReader::readReals(QLatin1StringView key, std::vector<double>& out) {
    auto wrong = [&] {
        fail(Orvex::eBadDrawingFormat, QStringLiteral("'%1' must be a list of numbers").arg(key));
        return false;
    };
    std::vector<double> values;
    if (m_file) {
        const element* v = m_file->take(view(key));
        if (!v)
            return true;
        simdjson::dom::array a;
        if (v->get_array().get(a) != simdjson::SUCCESS)
            return wrong();
        for (const element item : a) {
            if (!isNumber(item))
                return wrong();
            values.push_back(number(item));
        }
        out = std::move(values);
        return true;
    }
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined())
        return true;
    if (!v.isArray())
        return wrong();
    for (const QJsonValue& item : v.toArray()) {
        if (!item.isDouble())
            return wrong();
        values.push_back(item.toDouble());
    }
    out = std::move(values);
    return true;
}

bool OvDbDwgReader::readRef(QLatin1StringView key, OvDbObjectId& slot, OvRxClass* expected,
                            bool required) {
    bool present = false;
    bool ok = false;
    std::uint64_t handle = 0;
    if (m_file) {
        if (const element* v = m_file->take(view(key))) {
            present = true;
            std::string_view text;
            ok = v->get_string().get(text) == simdjson::SUCCESS && parseHandle(text, handle);
        }
    } else {
        const QJsonValue v = m_fields.value(key);
        present = !v.isUndefined();
        ok = parseHandle(v, handle);
    }
    slot = OvDbObjectId();
    if (!present && !required)
        return true;
    if (!ok) {
        fail(Orvex::eBadDrawingFormat,
             QStringLiteral("'%1' must be a hexadecimal handle").arg(key));
        return false;
    }
    if (handle == 0 && !required)
        return true;
    m_fixups.push_back({m_object, &slot, handle, expected, key});
    return true;
}

bool OvDbDwgReader::Value::isWhole(double min, double max) const {
    return kind == Kind::Number && number == std::floor(number) && number >= min && number <= max;
}

OvDbDwgReader::Items OvDbDwgReader::readItems(QLatin1StringView key,
                                              const std::function<bool(const Value&)>& each) {
    Value item;
    if (m_file) {
        const element* v = m_file->take(view(key));
        if (!v)
            return Items::Missing;
        simdjson::dom::array list;
        if (v->get_array().get(list) != simdjson::SUCCESS)
            return Items::NotAList;
        for (const element e : list) {
            if (!toValue(e, item)) {
                fail(Orvex::eBadDrawingFormat,
                     QStringLiteral("'%1' holds a text that is not valid Unicode (a lone "
                                    "surrogate)")
                         .arg(key));
                return Items::Failed;
            }
            if (!each(item))
                return Items::Failed;
        }
        return Items::Read;
    }
    const QJsonValue v = m_fields.value(key);
    if (v.isUndefined())
        return Items::Missing;
    if (!v.isArray())
        return Items::NotAList;
    for (const QJsonValue& e : v.toArray()) {
        toValue(e, item);
        if (!each(item))
            return Items::Failed;
    }
    return Items::Read;
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

bool OvDbDwgReader::parseHandle(std::string_view text, std::uint64_t& handle) {
    if (text.empty() || text.size() > 16)
        return false;
    std::uint64_t value = 0;
    for (const char c : text) {
        unsigned digit = 0;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (c >= 'A' && c <= 'F')
            digit = static_cast<unsigned>(c - 'A' + 10);
        else if (c >= 'a' && c <= 'f')
            digit = static_cast<unsigned>(c - 'a' + 10);
        else
            return false;
        value = value << 4 | digit;
    }
    handle = value;
    return true;
}

QString OvDbDwgReader::handleText(std::uint64_t handle) {
    return OvDbHandle(handle).toString();
}
