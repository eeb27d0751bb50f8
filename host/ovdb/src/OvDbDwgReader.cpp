#include "OvDbDwgReader.h"

#include "OvDbAccess.h"
#include "OvDbDwgFileObject.h"
#include "OvDbHandleMap.h"
#include "OvDbStub.h"
#include "ovdb/OvDbHandle.h"

#include <QJsonArray>

#include <cmath>

namespace {

using FileValue = OvDbDwgFileValue;
using Type = OvDbDwgFileValue::Type;

std::string_view view(QLatin1StringView key) {
    return {key.data(), static_cast<std::size_t>(key.size())};
}

bool readPointOf(const OvDbDwgFileObject& file, const FileValue& v, OvGePoint3d& out) {
    if (v.type != Type::List || v.count != 3)
        return false;
    double xyz[3];
    for (std::uint32_t i = 0; i < 3; ++i) {
        const FileValue& item = file.item(v, i);
        if (item.type != Type::Number)
            return false;
        xyz[i] = item.number;
    }
    out = OvGePoint3d(xyz[0], xyz[1], xyz[2]);
    return true;
}

using Value = OvDbDwgReader::Value;

// A value of the file, with a list's elements one level deep. False for a text that is
// not valid Unicode.
bool toValue(const OvDbDwgFileObject& file, const FileValue& v, Value& out, bool nested = true) {
    out.items.clear();
    switch (v.type) {
    case Type::List:
        out.kind = Value::Kind::List;
        if (!nested)
            return true;
        for (std::uint32_t i = 0; i < v.count; ++i) {
            out.items.emplace_back();
            if (!toValue(file, file.item(v, i), out.items.back(), false))
                return false;
        }
        return true;
    case Type::Object:
        out.kind = Value::Kind::Object;
        return true;
    case Type::Text:
        out.kind = Value::Kind::Text;
        return ovdbFileText(v.text, out.text);
    case Type::Number:
        out.kind = Value::Kind::Number;
        out.number = v.number;
        return true;
    case Type::Bool:
        out.kind = Value::Kind::Bool;
        out.boolean = v.boolean;
        return true;
    case Type::Null:
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
        const FileValue* v = m_file->take(view(key));
        if (!v)
            return required ? wrong() : true;
        if (v->type != Type::Text)
            return wrong();
        if (!ovdbFileText(v->text, out)) {
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
        if (const FileValue* v = m_file->take(view(key))) {
            present = true;
            numeric = v->type == Type::Number;
            d = numeric ? v->number : 0.0;
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
        const FileValue* v = m_file->take(view(key));
        if (!v)
            return true;
        if (v->type != Type::Bool)
            return wrong();
        out = v->boolean;
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
        const FileValue* v = m_file->take(view(key));
        if (!v)
            return required ? wrong() : true;
        return readPointOf(*m_file, *v, out) || wrong();
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
        const FileValue* v = m_file->take(view(key));
        if (!v)
            return true;
        if (v->type != Type::List)
            return wrong();
        for (std::uint32_t i = 0; i < v->count; ++i) {
            const FileValue& item = m_file->item(*v, i);
            if (item.type != Type::Number)
                return wrong();
            values.push_back(item.number);
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
        if (const FileValue* v = m_file->take(view(key))) {
            present = true;
            ok = v->type == Type::Text && parseHandle(v->text, handle);
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
    if (m_known) {
        OvDbStub* stub = m_known->find(handle);
        if (stub && stub->object && (!expected || stub->holdsKindOf(expected))) {
            slot = OvDbObjectId(stub);
            return true;
        }
    }
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
        const FileValue* v = m_file->take(view(key));
        if (!v)
            return Items::Missing;
        if (v->type != Type::List)
            return Items::NotAList;
        for (std::uint32_t i = 0; i < v->count; ++i) {
            if (!toValue(*m_file, m_file->item(*v, i), item)) {
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
