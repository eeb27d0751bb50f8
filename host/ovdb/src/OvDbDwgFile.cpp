// Drawing files: OvDbDatabase::saveAs and OvDbDatabase::readDwgFile.
//
// A drawing is one JSON document (docs/drawing-format.md): a format tag, a version, a
// header naming the well-known objects, and the objects, one per line, each with its
// handle, its owner's handle and its type. A container's members are the objects that
// name it as owner, in file order; a dictionary lists its entries by name.

#include "OvDbAccess.h"
#include "OvDbDwgReader.h"
#include "OvDbDwgWriter.h"
#include "ovdb/OvDbAttribute.h"
#include "ovdb/OvDbBlockReference.h"
#include "ovdb/OvDbBlockTable.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbLine.h"
#include "ovdb/OvDbLinetypeTable.h"
#include "ovdb/OvDbLinetypeTableRecord.h"
#include "ovdb/OvDbXrecord.h"

#include "OvDbDwgFileObject.h"
#include "OvDbMemory.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

#include <simdjson.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <unordered_set>

namespace {

const QLatin1StringView kFormatTag("orvex-drawing");
constexpr int kFormatVersion = 1;
// Written out in pieces, so that a large drawing does not sit in memory twice.
constexpr qsizetype kFlushSize = 1 << 20;

using Impl = OvDbAccess::Impl;

QString hex(std::uint64_t handle) {
    return OvDbHandle(handle).toString();
}

QString typeOf(const OvDbObject* object) {
    return OvDbAccess::typeName(object->isA());
}

// ---------------------------------------------------------------------------------------
// Saving

// The objects a save writes: everything live that the drawing reaches from its tables and
// its named objects dictionary through ownership, owners before what they own. A list of
// work rather than recursion: ownership read from a file may run deep.
void collect(OvDbStub* root, unsigned generation, std::vector<OvDbStub*>& order) {
    std::vector<OvDbStub*> work{root};
    std::vector<OvDbObjectId> owned;
    while (!work.empty()) {
        OvDbStub* stub = work.back();
        work.pop_back();
        if (!OvDbAccess::isLive(stub) || stub->saveMark == generation)
            continue;
        stub->saveMark = generation;
        order.push_back(stub);
        owned.clear();
        if (OvDbStub* xdict = OvDbAccess::xdict(stub->object))
            owned.push_back(OvDbObjectId(xdict));
        OvDbAccess::ownedObjects(stub->object, owned);
        // Taken from the back, so pushed in reverse to keep their order.
        for (auto it = owned.rbegin(); it != owned.rend(); ++it) {
            OvDbStub* child = it->stub();
            if (child && child->object && OvDbAccess::owner(child->object) == stub)
                work.push_back(child);
        }
    }
}

QByteArray objectLine(const OvDbStub* stub, OvDbDwgWriter& writer) {
    const OvDbObject* object = stub->object;
    writer.reset();
    OvDbAccess::writeFields(object, writer);
    const QByteArray fields = QJsonDocument(writer.fields()).toJson(QJsonDocument::Compact);
    QByteArray line;
    line.reserve(fields.size() + 64);
    line += "{\"handle\":\"";
    line += hex(stub->handle).toLatin1();
    line += "\",\"owner\":\"";
    line += writer.refText(OvDbObjectId(OvDbAccess::owner(object))).toLatin1();
    line += "\",\"type\":\"";
    line += typeOf(object).toLatin1();
    line += '"';
    if (fields.size() > 2) {
        line += ',';
        line += QByteArrayView(fields).sliced(1);
    } else {
        line += '}';
    }
    return line;
}

// ---------------------------------------------------------------------------------------
// Reading

struct Problem {
    Orvex::ErrorStatus status = Orvex::eOk;
    QString message;
};

// The keys of the document and of its header. In a version this reader knows, any other
// key is a fault of the file (one flipped byte in a key would otherwise pass unseen, and
// its field silently take its default).
constexpr std::string_view kRootKeys[] = {"format", "version", "header", "objects"};
constexpr std::string_view kHeaderKeys[] = {"layerTable",   "linetypeTable", "blockTable",
                                            "namedObjects", "clayer",        "handseed"};

QString text(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size()));
}

const char* kindOf(const simdjson::dom::element& e) {
    switch (e.type()) {
    case simdjson::dom::element_type::ARRAY:
        return "a list";
    case simdjson::dom::element_type::STRING:
        return "a text";
    case simdjson::dom::element_type::BOOL:
        return "true or false";
    case simdjson::dom::element_type::NULL_VALUE:
        return "null";
    case simdjson::dom::element_type::OBJECT:
        return "an object";
    default:
        return "a number";
    }
}

// The class a drawing file names; null for a name it does not know.
OvDbObject* createOf(std::string_view type) {
    using Factory = OvDbObject* (*)();
    struct Entry {
        std::string_view type;
        Factory factory;
    };
    static const Entry entries[] = {
        {"Line", []() -> OvDbObject* { return new OvDbLine(); }},
        {"LayerTableRecord", []() -> OvDbObject* { return new OvDbLayerTableRecord(); }},
        {"Dictionary", []() -> OvDbObject* { return new OvDbDictionary(); }},
        {"Xrecord", []() -> OvDbObject* { return new OvDbXrecord(); }},
        {"BlockReference", []() -> OvDbObject* { return new OvDbBlockReference(); }},
        {"Attribute", []() -> OvDbObject* { return new OvDbAttribute(); }},
        {"LinetypeTableRecord", []() -> OvDbObject* { return new OvDbLinetypeTableRecord(); }},
        {"BlockTableRecord", []() -> OvDbObject* { return new OvDbBlockTableRecord(); }},
        {"LayerTable", []() -> OvDbObject* { return new OvDbLayerTable(); }},
        {"LinetypeTable", []() -> OvDbObject* { return new OvDbLinetypeTable(); }},
        {"BlockTable", []() -> OvDbObject* { return new OvDbBlockTable(); }},
    };
    for (const Entry& e : entries) {
        if (e.type == type)
            return e.factory();
    }
    return nullptr;
}

class Loader {
public:
    explicit Loader(Impl* impl) : m_im(impl) {}

    // `data` holds the whole file, with the parser's padding behind it.
    Problem load(simdjson::padded_string& data);
    // The same in one pass, for a file in the form Orvex writes; nothing when the file
    // is in another form or has a fault, which load() must then judge from the start,
    // with a fresh database.
    std::optional<Problem> loadFast(simdjson::padded_string& data);

private:
    Problem fail(Orvex::ErrorStatus status, const QString& message) { return {status, message}; }
    Problem parse(simdjson::padded_string& data, simdjson::dom::object& root);
    Problem parseError(simdjson::error_code error, const simdjson::padded_string& data);
    Problem unknownKey(const OvDbDwgFileObject& fields, const QString& where);
    Problem readObjects(simdjson::dom::array objects);
    // The object in m_fields.
    Problem readObject(qsizetype index);
    Problem finish();
    template <class What>
    Problem resolve(std::uint64_t handle, OvRxClass* expected, const What& what, OvDbStub*& stub);
    Problem resolveReferences();
    Problem placeObjects();
    // The header in m_header.
    Problem readHeader();
    Problem findWellKnown();

    struct Pending {
        OvDbObject* object;
        std::uint64_t owner;
    };

    Impl* m_im;
    simdjson::dom::document m_document;
    OvDbDwgFileObject m_fields;
    OvDbDwgFileObject m_header;
    OvDbDwgReader m_reader;
    std::vector<Pending> m_objects;
    std::unordered_set<const OvDbStub*> m_listed;
    std::uint64_t m_handseed = 0;
};

// A parse error at the very end of the text means the file stops in the middle of it.
bool cutShort(const QJsonParseError& error, const QByteArray& data) {
    qsizetype end = data.size();
    while (end > 0 && QChar::isSpace(static_cast<unsigned char>(data[end - 1])))
        --end;
    return error.offset >= end;
}

// The fast parser says only what went wrong, not where. A file it refuses is rare, so Qt's
// parser reads it again to say where, and whether the file merely stops short.
Problem Loader::parseError(simdjson::error_code error, const simdjson::padded_string& data) {
    const QByteArray bytes =
        QByteArray::fromRawData(data.data(), static_cast<qsizetype>(data.size()));
    QJsonParseError qtError;
    QJsonDocument::fromJson(bytes, &qtError);
    if (qtError.error != QJsonParseError::NoError) {
        if (bytes.trimmed().startsWith('{') && cutShort(qtError, bytes))
            return fail(Orvex::eDrawingTruncated,
                        QStringLiteral("the file is cut short (it ends at byte %1 in the middle "
                                       "of the drawing)")
                            .arg(bytes.size()));
        return fail(Orvex::eNotADrawingFile,
                    QStringLiteral("not a drawing file: not valid JSON (%1 at byte %2)")
                        .arg(qtError.errorString())
                        .arg(qtError.offset));
    }
    if (error == simdjson::STRING_ERROR)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("a text in the file is not valid Unicode (it holds a lone "
                                   "surrogate)"));
    if (error == simdjson::DEPTH_ERROR)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("lists and objects are nested too deeply"));
    if (error == simdjson::NUMBER_ERROR)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("a number in the file is out of range"));
    return fail(Orvex::eNotADrawingFile,
                QStringLiteral("not a drawing file: not valid JSON (%1)")
                    .arg(QString::fromLatin1(simdjson::error_message(error))));
}

Problem Loader::unknownKey(const OvDbDwgFileObject& fields, const QString& where) {
    const OvDbDwgFileObject::Field* field = fields.firstUntaken();
    if (!field)
        return {};
    if (fields.isRepeated(*field))
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("%1 has the key \"%2\" twice").arg(where, text(field->key)));
    return fail(Orvex::eBadDrawingFormat,
                QStringLiteral("%1 has an unknown key \"%2\"").arg(where, text(field->key)));
}

Problem Loader::parse(simdjson::padded_string& data, simdjson::dom::object& root) {
    const std::string_view all(data.data(), data.size());
    if (all.find_first_not_of(" \t\r\n") == std::string_view::npos)
        return fail(Orvex::eDrawingTruncated, QStringLiteral("the file is empty"));
    simdjson::dom::element document;
    {
        // The parse goes into a document of the loader's own, so that the parser's work
        // space, and the file itself, can go at once: the objects are made from the
        // document alone.
        simdjson::dom::parser parser;
        if (const simdjson::error_code error =
                parser.parse_into_document(m_document, data.data(), data.size()).get(document))
            return parseError(error, data);
    }
    data = simdjson::padded_string();
    if (document.get_object().get(root) != simdjson::SUCCESS)
        return fail(Orvex::eNotADrawingFile,
                    QStringLiteral("not a drawing file: the JSON in it is %1, not an object")
                        .arg(QLatin1StringView(kindOf(document))));
    // Only the format and the version are looked at here: the objects wait.
    m_fields.reset(root, false);
    const OvDbDwgFileValue* format = m_fields.take("format");
    if (!format || format->type != OvDbDwgFileValue::Type::Text)
        return fail(Orvex::eNotADrawingFile,
                    QStringLiteral("not a drawing file: it has no format tag"));
    const std::string_view tag = format->text;
    if (tag != std::string_view(kFormatTag.data(), kFormatTag.size()))
        return fail(Orvex::eNotADrawingFile,
                    QStringLiteral("not a drawing file: its format tag is \"%1\", not \"%2\"")
                        .arg(text(tag), kFormatTag));
    const OvDbDwgFileValue* version = m_fields.take("version");
    const double v = version ? version->number : 0;
    if (!version || version->type != OvDbDwgFileValue::Type::Number ||
        v != static_cast<double>(static_cast<long long>(v)) || v < 1)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("the format version is missing or not a whole number"));
    if (v > kFormatVersion)
        return fail(Orvex::eDrawingVersionTooNew,
                    QStringLiteral("the drawing has format version %1; this Orvex reads up to "
                                   "version %2")
                        .arg(static_cast<long long>(v))
                        .arg(kFormatVersion));
    for (std::string_view key : kRootKeys)
        m_fields.take(key);
    return unknownKey(m_fields, QStringLiteral("the drawing"));
}

Problem Loader::load(simdjson::padded_string& data) {
    simdjson::dom::object root;
    Problem p = parse(data, root);
    if (p.status != Orvex::eOk)
        return p;
    simdjson::dom::object header;
    simdjson::dom::array objects;
    if (root["header"].get_object().get(header) != simdjson::SUCCESS)
        return fail(Orvex::eBadDrawingFormat, QStringLiteral("the header is missing"));
    if (root["objects"].get_array().get(objects) != simdjson::SUCCESS)
        return fail(Orvex::eBadDrawingFormat, QStringLiteral("the list of objects is missing"));
    // Stage one: every object with its plain values; references stay handles.
    p = readObjects(objects);
    if (p.status == Orvex::eOk) {
        m_header.reset(header);
        p = readHeader();
    }
    if (p.status != Orvex::eOk)
        return p;
    // The parse is not needed any more: it goes before the objects are placed.
    m_fields.clear();
    m_header.clear();
    m_document = simdjson::dom::document();
    return finish();
}

std::optional<Problem> Loader::loadFast(simdjson::padded_string& data) {
    const std::string_view all(data.data(), data.size());
    if (!simdjson::validate_utf8(all.data(), all.size()))
        return std::nullopt;
    OvDbDwgScanner scan(all);
    std::string_view key;
    OvDbDwgFileValue value;
    auto field = [&](std::string_view name) {
        return scan.key(m_fields, key) && key == name && scan.value(m_fields, value);
    };
    if (!scan.take('{') || !field("format") || value.type != OvDbDwgFileValue::Type::Text ||
        value.text != std::string_view(kFormatTag.data(), kFormatTag.size()) || !scan.take(','))
        return std::nullopt;
    if (!field("version") || value.type != OvDbDwgFileValue::Type::Number ||
        value.number != kFormatVersion || !scan.take(','))
        return std::nullopt;
    if (!scan.key(m_fields, key) || key != "header" || !scan.object(m_header) || !scan.take(',') ||
        !scan.key(m_fields, key) || key != "objects" || !scan.take('['))
        return std::nullopt;
    // One object a line, as written: room for them all at once.
    std::size_t lines = 0;
    for (const char* at = all.data(); (at = static_cast<const char*>(std::memchr(
                                           at, '\n', all.size() - std::size_t(at - all.data()))));
         ++at)
        ++lines;
    // No object is shorter than this: a file of empty lines reserves nothing for them.
    constexpr std::size_t kShortestObject = 40;
    lines = std::min(lines, all.size() / kShortestObject);
    m_objects.reserve(lines);
    m_im->byHandle.reserve(lines);
    m_reader.resolveFrom(&m_im->byHandle);
    qsizetype index = 0;
    if (!scan.take(']')) {
        for (;;) {
            if (scan.next() != '{' || !scan.object(m_fields) ||
                readObject(++index).status != Orvex::eOk)
                return std::nullopt;
            if (scan.take(']'))
                break;
            if (!scan.take(','))
                return std::nullopt;
        }
    }
    if (!scan.take('}') || !scan.atEnd() || readHeader().status != Orvex::eOk)
        return std::nullopt;
    // The texts of the file are not needed any more.
    m_fields.clear();
    m_header.clear();
    data = simdjson::padded_string();
    return finish();
}

Problem Loader::finish() {
    // Stage two: handles become ids, members go to their containers.
    Problem p = resolveReferences();
    if (p.status == Orvex::eOk)
        p = placeObjects();
    if (p.status == Orvex::eOk)
        p = findWellKnown();
    if (p.status != Orvex::eOk)
        return p;
    if (m_handseed > m_im->handseed)
        m_im->handseed = m_handseed;
    m_im->dbmod = 0;
    return {};
}

Problem Loader::readObjects(simdjson::dom::array objects) {
    const std::size_t count = objects.size();
    m_objects.reserve(count);
    m_im->byHandle.reserve(count);
    m_reader.resolveFrom(&m_im->byHandle);
    qsizetype index = 0;
    for (const simdjson::dom::element value : objects) {
        simdjson::dom::object fields;
        if (value.get_object().get(fields) != simdjson::SUCCESS)
            return fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("item %1 of the objects is not an object").arg(++index));
        m_fields.reset(fields);
        Problem p = readObject(++index);
        if (p.status != Orvex::eOk)
            return p;
    }
    return {};
}

Problem Loader::readObject(qsizetype index) {
    auto handleOf = [this](std::string_view key, std::uint64_t& handle) {
        const OvDbDwgFileValue* v = m_fields.take(key);
        return v && v->type == OvDbDwgFileValue::Type::Text &&
               OvDbDwgReader::parseHandle(v->text, handle);
    };
    std::uint64_t handle = 0;
    if (!handleOf("handle", handle) || handle == 0)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("item %1 of the objects has no valid handle").arg(index));
    std::uint64_t owner = 0;
    if (!handleOf("owner", owner))
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("object %1 has no valid owner handle").arg(hex(handle)));
    std::string_view type;
    const OvDbDwgFileValue* typeValue = m_fields.take("type");
    if (typeValue && typeValue->type == OvDbDwgFileValue::Type::Text)
        type = typeValue->text;
    OvDbObject* object = createOf(type);
    if (!object)
        return fail(
            Orvex::eBadDrawingFormat,
            QStringLiteral("object %1 has an unknown type \"%2\"").arg(hex(handle), text(type)));
    OvDbStub* stub = m_im->newStub(handle);
    if (!stub) {
        delete object;
        return fail(Orvex::eDuplicateHandle,
                    QStringLiteral("handle %1 is given to more than one object").arg(hex(handle)));
    }
    OvDbAccess::adopt(object, stub);
    m_objects.push_back({object, owner});
    m_reader.begin(&m_fields, object, handle);
    if (OvDbAccess::readFields(object, m_reader) != Orvex::eOk)
        return fail(m_reader.status(), m_reader.message());
    if (m_fields.firstUntaken())
        return unknownKey(m_fields,
                          QStringLiteral("object %1 (%2)").arg(hex(handle), typeOf(object)));
    return {};
}

template <class What>
Problem Loader::resolve(std::uint64_t handle, OvRxClass* expected, const What& what,
                        OvDbStub*& stub) {
    stub = nullptr;
    stub = m_im->byHandle.find(handle);
    if (!stub)
        return fail(
            Orvex::eDanglingHandle,
            QStringLiteral("%1 refers to handle %2, which no object has").arg(what(), hex(handle)));
    if (expected && !stub->holdsKindOf(expected))
        return fail(
            Orvex::eBadDrawingFormat,
            QStringLiteral("%1 refers to %2, a %3, where a %4 belongs")
                .arg(what(), hex(handle), typeOf(stub->object), OvDbAccess::typeName(expected)));
    return {};
}

Problem Loader::readHeader() {
    struct Entry {
        const char* key;
        OvRxClass* cls;
        OvDbStub** target;
    };
    const Entry entries[] = {
        {"layerTable", OvDbLayerTable::desc(), &m_im->layerTable},
        {"linetypeTable", OvDbLinetypeTable::desc(), &m_im->linetypeTable},
        {"blockTable", OvDbBlockTable::desc(), &m_im->blockTable},
        {"namedObjects", OvDbDictionary::desc(), &m_im->namedObjects},
        {"clayer", OvDbLayerTableRecord::desc(), &m_im->clayer},
    };
    auto handleOf = [this](std::string_view key, std::uint64_t& handle, bool& present) {
        const OvDbDwgFileValue* v = m_header.take(key);
        present = v != nullptr;
        return v && v->type == OvDbDwgFileValue::Type::Text &&
               OvDbDwgReader::parseHandle(v->text, handle);
    };
    for (const Entry& e : entries) {
        std::uint64_t handle = 0;
        bool present = false;
        if (!handleOf(e.key, handle, present))
            return fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("the header has no valid '%1'").arg(e.key));
        Problem p = resolve(
            handle, e.cls, [&] { return QStringLiteral("the header's '%1'").arg(e.key); },
            *e.target);
        if (p.status != Orvex::eOk)
            return p;
    }
    bool present = false;
    if (!handleOf("handseed", m_handseed, present) && present)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("the header's 'handseed' is not a handle"));
    for (std::string_view key : kHeaderKeys)
        m_header.take(key);
    return unknownKey(m_header, QStringLiteral("the header"));
}

Problem Loader::resolveReferences() {
    for (const OvDbDwgReader::Fixup& f : m_reader.fixups()) {
        OvDbStub* stub = nullptr;
        Problem p = resolve(
            f.handle, f.expected,
            [&] {
                return QStringLiteral("object %1 ('%2')")
                    .arg(hex(OvDbAccess::stub(f.from)->handle), f.key);
            },
            stub);
        if (p.status != Orvex::eOk)
            return p;
        *f.slot = OvDbObjectId(stub);
    }
    for (Pending& pending : m_objects) {
        if (pending.owner == 0)
            continue;
        OvDbStub* owner = nullptr;
        Problem p = resolve(
            pending.owner, nullptr,
            [&] {
                return QStringLiteral("object %1 ('owner')")
                    .arg(hex(OvDbAccess::stub(pending.object)->handle));
            },
            owner);
        if (p.status != Orvex::eOk)
            return p;
        OvDbAccess::setOwner(pending.object, owner);
    }
    for (const OvDbDwgReader::DictionaryEntry& e : m_reader.dictionaryEntries()) {
        OvDbStub* entry = nullptr;
        const OvDbStub* dictionary = OvDbAccess::stub(e.dictionary);
        auto what = [&] {
            return QStringLiteral("entry \"%1\" of dictionary %2")
                .arg(e.name, hex(dictionary->handle));
        };
        Problem p = resolve(e.handle, nullptr, what, entry);
        if (p.status != Orvex::eOk)
            return p;
        if (OvDbAccess::owner(entry->object) != dictionary)
            return fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("%1 names object %2, which belongs to another owner")
                            .arg(what(), hex(e.handle)));
        if (!m_listed.insert(entry).second)
            return fail(
                Orvex::eBadDrawingFormat,
                QStringLiteral("object %1 is listed in a dictionary twice").arg(hex(e.handle)));
        OvDbAccess::putEntry(e.dictionary, e.name, entry);
    }
    return {};
}

Problem Loader::placeObjects() {
    for (const Pending& pending : m_objects) {
        OvDbObject* object = pending.object;
        OvDbStub* self = OvDbAccess::stub(object);
        OvDbStub* owner = OvDbAccess::owner(object);
        OvDbObject* ownerObject = OvDbAccess::object(owner);
        auto misplaced = [&](const QString& why) {
            return fail(
                Orvex::eBadDrawingFormat,
                QStringLiteral("object %1 (%2) %3").arg(hex(self->handle), typeOf(object), why));
        };

        if (OvDbStub* xdict = OvDbAccess::xdict(object);
            xdict && OvDbAccess::owner(xdict->object) != self)
            return misplaced(QStringLiteral("names %1 as its extension dictionary, which "
                                            "belongs to another owner")
                                 .arg(hex(xdict->handle)));

        // Most objects of a drawing are lines: they skip the tests of class.
        const bool line = object->isA() == OvDbLine::desc();
        if (!line && object->isKindOf(OvDbSymbolTable::desc())) {
            if (owner)
                return misplaced(QStringLiteral("is a table and cannot have an owner"));
            if (self != m_im->layerTable && self != m_im->linetypeTable && self != m_im->blockTable)
                return misplaced(QStringLiteral("is a table the header does not name"));
        } else if (!line && object->isKindOf(OvDbSymbolTableRecord::desc())) {
            auto* table = OvDbSymbolTable::cast(ownerObject);
            auto* record = static_cast<OvDbSymbolTableRecord*>(object);
            const bool fits =
                table && ((owner == m_im->layerTable && OvDbLayerTableRecord::cast(record)) ||
                          (owner == m_im->linetypeTable && OvDbLinetypeTableRecord::cast(record)) ||
                          (owner == m_im->blockTable && OvDbBlockTableRecord::cast(record)));
            if (!fits)
                return misplaced(QStringLiteral("is not owned by its table"));
            const QString& name = OvDbAccess::recordName(record);
            if (OvDbAccess::findRecord(table, name))
                return misplaced(QStringLiteral("has the name \"%1\", which another record of "
                                                "its table has")
                                     .arg(name));
            OvDbAccess::records(table).push_back(OvDbObjectId(self));
            OvDbAccess::indexRecord(table, self);
        } else if (!line && object->isKindOf(OvDbAttribute::desc())) {
            auto* reference = OvDbBlockReference::cast(ownerObject);
            if (!reference)
                return misplaced(QStringLiteral("is not owned by a block reference"));
            OvDbAccess::attributes(reference).push_back(OvDbObjectId(self));
        } else if (line || object->isKindOf(OvDbEntity::desc())) {
            auto* block = OvDbBlockTableRecord::cast(ownerObject);
            if (!block)
                return misplaced(QStringLiteral("is not owned by a block"));
            OvDbAccess::entities(block).push_back(OvDbObjectId(self));
            if (auto* reference = line ? nullptr : OvDbBlockReference::cast(object))
                m_im->indexBlockReference(self, OvDbAccess::blockOf(reference));
        } else if (!owner) {
            if (self != m_im->namedObjects)
                return misplaced(QStringLiteral("has no owner"));
        } else if (OvDbDictionary::cast(ownerObject) && m_listed.count(self)) {
            // An entry of its dictionary.
        } else if (OvDbAccess::xdict(ownerObject) == self) {
            // The extension dictionary of its owner.
        } else {
            return misplaced(
                QStringLiteral("is not reachable from its owner %1").arg(hex(owner->handle)));
        }
    }
    return {};
}

Problem Loader::findWellKnown() {
    auto* layers = static_cast<OvDbSymbolTable*>(m_im->layerTable->object);
    auto* linetypes = static_cast<OvDbSymbolTable*>(m_im->linetypeTable->object);
    auto* blocks = static_cast<OvDbSymbolTable*>(m_im->blockTable->object);
    m_im->layerZero = OvDbAccess::findRecord(layers, QStringLiteral("0"));
    m_im->continuous = OvDbAccess::findRecord(linetypes, QStringLiteral("Continuous"));
    m_im->byLayer = OvDbAccess::findRecord(linetypes, QStringLiteral("ByLayer"));
    m_im->byBlock = OvDbAccess::findRecord(linetypes, QStringLiteral("ByBlock"));
    m_im->modelSpace = OvDbAccess::findRecord(blocks, QStringLiteral("*Model_Space"));
    m_im->paperSpace = OvDbAccess::findRecord(blocks, QStringLiteral("*Paper_Space"));
    if (!m_im->layerZero)
        return fail(Orvex::eBadDrawingFormat, QStringLiteral("the drawing has no layer \"0\""));
    if (!m_im->continuous || !m_im->byLayer || !m_im->byBlock)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("the drawing lacks one of the linetypes \"ByBlock\", "
                                   "\"ByLayer\" and \"Continuous\""));
    if (!m_im->modelSpace)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("the drawing has no block \"*Model_Space\""));
    if (OvDbAccess::owner(m_im->clayer->object) != m_im->layerTable)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("the current layer is not a layer of the drawing"));
    // A reference the save could not keep (its object was erased) reads as the default.
    for (const Pending& pending : m_objects) {
        // Lines, most of the objects, skip the walk up their classes.
        if (pending.object->isA() == OvDbLine::desc() ||
            pending.object->isKindOf(OvDbEntity::desc())) {
            auto* entity = static_cast<OvDbEntity*>(pending.object);
            if (!OvDbAccess::layerOf(entity))
                OvDbAccess::setLayerOf(entity, m_im->layerZero);
            m_im->useLayer(OvDbAccess::layerOf(entity), true);
            continue;
        }
        if (auto* layer = OvDbLayerTableRecord::cast(pending.object);
            layer && !OvDbAccess::linetypeOf(layer))
            OvDbAccess::setLinetypeOf(layer, m_im->continuous);
    }
    return {};
}

// The name of a file as the file system spells it. Names are UTF-8 here; a name that is
// not (written by another system, say in Latin-1) reaches us with its stray bytes read as
// U+FFFD, which no file is called. Such a name is looked up in its folder: the one entry
// that reads the same is the file meant. Without such an entry, or with two, the name
// stays as it is (and is not found).
QByteArray nativeFileName(const QString& file) {
    const QByteArray plain = QFile::encodeName(file);
    struct stat st {};
    if (!file.contains(QChar::ReplacementCharacter) || ::lstat(plain.constData(), &st) == 0)
        return plain;
    const QFileInfo info(file);
    const QString folder = info.path();
    const QString leaf = info.fileName();
    const QByteArray nativeFolder =
        folder == file ? QFile::encodeName(folder) : nativeFileName(folder);
    QByteArray found;
    int matches = 0;
    if (DIR* dir = ::opendir(nativeFolder.constData())) {
        while (const dirent* entry = ::readdir(dir)) {
            if (QFile::decodeName(entry->d_name) == leaf) {
                found = entry->d_name;
                ++matches;
            }
        }
        ::closedir(dir);
    }
    if (matches != 1)
        return plain;
    return nativeFolder.endsWith('/') ? nativeFolder + found : nativeFolder + '/' + found;
}

// Reads a drawing file whole. Only a regular file is read: a pipe or a device could block
// the host for ever or feed it without end, and a directory holds no drawing. What is
// read is bounded by the size the file had when it was opened, so a file that grows
// meanwhile cannot make the read run on.
Orvex::ErrorStatus readWholeFile(const QString& file, simdjson::padded_string& data,
                                 QString& problem) {
    const QByteArray name = nativeFileName(file);
    struct stat st {};
    if (::stat(name.constData(), &st) != 0) {
        problem = errno == ENOENT || errno == ENOTDIR
                      ? QStringLiteral("no such file")
                      : QStringLiteral("cannot be read: %1")
                            .arg(QString::fromLocal8Bit(std::strerror(errno)));
        return errno == ENOENT || errno == ENOTDIR ? Orvex::eFileNotFound : Orvex::eFileAccessErr;
    }
    auto notRegular = [&](const struct stat& s) {
        if (S_ISDIR(s.st_mode))
            problem = QStringLiteral("is a folder, not a drawing file");
        else if (S_ISFIFO(s.st_mode))
            problem = QStringLiteral("is a pipe, not a drawing file");
        else if (S_ISCHR(s.st_mode) || S_ISBLK(s.st_mode))
            problem = QStringLiteral("is a device, not a drawing file");
        else
            problem = QStringLiteral("is not a regular file");
        return Orvex::eFileAccessErr;
    };
    if (!S_ISREG(st.st_mode))
        return notRegular(st);
    // Without blocking, should the name have turned into a pipe since.
    const int fd = ::open(name.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) {
        problem =
            QStringLiteral("cannot be read: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
        return Orvex::eFileAccessErr;
    }
    struct Closer {
        int fd;
        ~Closer() { ::close(fd); }
    } closer{fd};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode))
        return notRegular(st);
    const std::size_t size = static_cast<std::size_t>(st.st_size);
    data = simdjson::padded_string(size);
    if (size > 0 && !data.data()) {
        problem = QStringLiteral("cannot be read: too large for the memory");
        return Orvex::eFileAccessErr;
    }
    ovdbAdviseHugePages(data.data(), size);
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n = ::read(fd, data.data() + done, size - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            problem = QStringLiteral("cannot be read: %1")
                          .arg(QString::fromLocal8Bit(std::strerror(errno)));
            return Orvex::eFileAccessErr;
        }
        if (n == 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    // A file cut while it was read is read as far as it went.
    if (done < size)
        data = simdjson::padded_string(data.data(), done);
    return Orvex::eOk;
}

} // namespace

OvDbObject* OvDbAccess::create(const QString& type) {
    const QByteArray latin = type.toLatin1();
    return createOf(std::string_view(latin.constData(), static_cast<std::size_t>(latin.size())));
}

Orvex::ErrorStatus OvDbDatabase::saveAs(const wchar_t* path) {
    m_lastError.clear();
    const QString file = QString::fromWCharArray(path ? path : L"");
    auto fail = [&](Orvex::ErrorStatus status, const QString& message) {
        m_lastError = message;
        return status;
    };
    if (file.isEmpty())
        return fail(Orvex::eInvalidInput, QStringLiteral("no file name was given"));
    if (!d->layerTable || !d->linetypeTable || !d->blockTable || !d->namedObjects)
        return fail(Orvex::eNotApplicable,
                    QStringLiteral("%1: an empty database holds no drawing to save").arg(file));

    const unsigned generation = ++d->saveGeneration;
    std::vector<OvDbStub*> order;
    order.reserve(d->stubs.size());
    for (OvDbStub* root : {d->linetypeTable, d->layerTable, d->blockTable, d->namedObjects})
        collect(root, generation, order);

    OvDbDwgWriter writer(OvDbDwgWriter::Mode::Save, generation);
    QJsonObject header;
    header.insert(QLatin1StringView("layerTable"), writer.refText(layerTableId()));
    header.insert(QLatin1StringView("linetypeTable"), writer.refText(linetypeTableId()));
    header.insert(QLatin1StringView("blockTable"), writer.refText(blockTableId()));
    header.insert(QLatin1StringView("namedObjects"), writer.refText(namedObjectsDictionaryId()));
    header.insert(QLatin1StringView("clayer"), writer.refText(clayer()));
    header.insert(QLatin1StringView("handseed"), hex(d->handseed));

    // A file whose name is not UTF-8 is written under a name Qt can spell, beside it, and
    // then renamed over it: still whole or not at all.
    const QByteArray native = nativeFileName(file);
    const bool byRename = native != QFile::encodeName(file);
    const QString written = byRename ? file + QStringLiteral(".ovsave") : file;
    QSaveFile out(written);
    if (!out.open(QIODevice::WriteOnly))
        return fail(Orvex::eFileWriteFailed,
                    QStringLiteral("%1: cannot be written: %2").arg(file, out.errorString()));
    QByteArray buffer;
    buffer.reserve(kFlushSize + 4096);
    buffer += "{\"format\":\"";
    buffer += kFormatTag.data();
    buffer += "\",\"version\":";
    buffer += QByteArray::number(kFormatVersion);
    buffer += ",\n\"header\":";
    buffer += QJsonDocument(header).toJson(QJsonDocument::Compact);
    buffer += ",\n\"objects\":[\n";
    for (std::size_t i = 0; i < order.size(); ++i) {
        buffer += objectLine(order[i], writer);
        buffer += i + 1 < order.size() ? ",\n" : "\n";
        if (buffer.size() >= kFlushSize) {
            if (out.write(buffer) != buffer.size())
                break;
            buffer.clear();
        }
    }
    buffer += "]}\n";
    out.write(buffer);
    if (!out.commit())
        return fail(Orvex::eFileWriteFailed,
                    QStringLiteral("%1: cannot be written: %2").arg(file, out.errorString()));
    if (byRename && ::rename(QFile::encodeName(written).constData(), native.constData()) != 0) {
        const QString why = QString::fromLocal8Bit(std::strerror(errno));
        QFile::remove(written);
        return fail(Orvex::eFileWriteFailed,
                    QStringLiteral("%1: cannot be written: %2").arg(file, why));
    }
    m_fileName = QFileInfo(file).absoluteFilePath();
    m_wideFileName = m_fileName.toStdWString();
    d->dbmod = 0;
    return Orvex::eOk;
}

Orvex::ErrorStatus OvDbDatabase::readDwgFile(const wchar_t* path, int, bool, const wchar_t*) {
    m_lastError.clear();
    const QString file = QString::fromWCharArray(path ? path : L"");
    auto fail = [&](Orvex::ErrorStatus status, const QString& message) {
        m_lastError = message;
        return status;
    };
    if (file.isEmpty())
        return fail(Orvex::eInvalidInput, QStringLiteral("no file name was given"));
    if (d->openObjects > 0)
        return fail(
            Orvex::eWasOpenForWrite,
            QStringLiteral("%1: the database has objects open and cannot be replaced").arg(file));

    simdjson::padded_string data;
    QString problem;
    const Orvex::ErrorStatus read = readWholeFile(file, data, problem);
    if (read != Orvex::eOk)
        return fail(read, QStringLiteral("%1: %2").arg(file, problem));

    // Built apart and swapped in only when the whole file made sense.
    auto fresh = std::make_unique<Impl>(this);
    std::optional<Problem> fast = Loader(fresh.get()).loadFast(data);
    if (!fast) {
        fresh = std::make_unique<Impl>(this);
        fast = Loader(fresh.get()).load(data);
    }
    const Problem& p = *fast;
    if (p.status != Orvex::eOk)
        return fail(p.status, QStringLiteral("%1: %2").arg(file, p.message));
    OvDbAccess::swapImpl(this, fresh);
    fresh.reset();
    m_fileName = QFileInfo(file).absoluteFilePath();
    m_wideFileName = m_fileName.toStdWString();
    return Orvex::eOk;
}
