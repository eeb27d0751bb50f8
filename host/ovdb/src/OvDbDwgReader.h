#pragma once

#include "ovdb/OvDbObjectId.h"
#include "ovdb/OvErrorStatus.h"
#include "ovdb/OvGePoint3d.h"

#include <QJsonObject>
#include <QLatin1StringView>
#include <QString>

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

class OvDbDictionary;
class OvDbHandleMap;
class OvDbDwgFileObject;
class OvDbObject;
class OvRxClass;

// Reads the fields of one object after another, from a drawing file or a clone. Plain
// values are checked and taken at once; references are kept as handles (fix-ups) and
// resolved when every object exists. The first problem found stops the read; its message
// names the object's handle.
//
// A clone hands over the fields as a JSON object; a file read hands over the object as
// its parser sees it (OvDbDwgFileObject), and every key that an object's class takes is
// marked, so that the file's reader can tell a key that no class takes.
class OvDbDwgReader {
public:
    struct Fixup {
        OvDbObject* from;
        OvDbObjectId* slot;
        std::uint64_t handle;
        OvRxClass* expected;
        QLatin1StringView key;
    };
    struct DictionaryEntry {
        OvDbDictionary* dictionary;
        QString name;
        std::uint64_t handle;
    };

    // One value of a list item (a dictionary entry, an xrecord's data item), plain.
    struct Value {
        enum class Kind { Null, Bool, Number, Text, List, Object };
        Kind kind = Kind::Null;
        double number = 0;
        bool boolean = false;
        QString text;
        // A list's elements, one level deep: enough for a point.
        std::vector<Value> items;

        bool isWhole(double min, double max) const;
    };
    enum class Items { Missing, NotAList, Read, Failed };

    void begin(const QJsonObject& fields, OvDbObject* object, std::uint64_t handle);
    void begin(OvDbDwgFileObject* fields, OvDbObject* object, std::uint64_t handle);
    // A reference to an object already known, of the class expected, is set at once
    // rather than kept as a fix-up: a file names layers and blocks before what uses them.
    void resolveFrom(const OvDbHandleMap* known) { m_known = known; }
    OvDbObject* object() const { return m_object; }

    // Each is false (and the read failed) for a value of the wrong kind. A missing key
    // leaves `out` as it is, unless the key is required.
    bool readString(QLatin1StringView key, QString& out, bool required = false);
    bool readInt(QLatin1StringView key, int& out, int min, int max);
    bool readBool(QLatin1StringView key, bool& out);
    bool readPoint(QLatin1StringView key, OvGePoint3d& out, bool required = false);
    bool readReals(QLatin1StringView key, std::vector<double>& out);
    // A missing key or "0" is the null id, when allowed.
    bool readRef(QLatin1StringView key, OvDbObjectId& slot, OvRxClass* expected,
                 bool required = false);
    // The list under `key`, item by item: `each` gets every item (itself mostly a list)
    // and says false, after calling fail(), to stop the read. A text that is not valid
    // Unicode fails the read here.
    Items readItems(QLatin1StringView key, const std::function<bool(const Value& item)>& each);
    void addDictionaryEntry(OvDbDictionary* dictionary, const QString& name, std::uint64_t handle);

    Orvex::ErrorStatus fail(Orvex::ErrorStatus status, const QString& problem);
    // "object 1F (Line)": how messages name the object being read.
    QString label() const;
    Orvex::ErrorStatus status() const { return m_status; }
    const QString& message() const { return m_message; }

    std::vector<Fixup>& fixups() { return m_fixups; }
    std::vector<DictionaryEntry>& dictionaryEntries() { return m_entries; }

    static bool parseHandle(const QJsonValue& value, std::uint64_t& handle);
    // Upper or lower case hexadecimal digits, at most 16; false for anything else.
    static bool parseHandle(std::string_view text, std::uint64_t& handle);
    static QString handleText(std::uint64_t handle);

private:
    QJsonObject m_fields;
    OvDbDwgFileObject* m_file = nullptr;
    const OvDbHandleMap* m_known = nullptr;
    OvDbObject* m_object = nullptr;
    std::uint64_t m_handle = 0;
    Orvex::ErrorStatus m_status = Orvex::eOk;
    QString m_message;
    std::vector<Fixup> m_fixups;
    std::vector<DictionaryEntry> m_entries;
};
