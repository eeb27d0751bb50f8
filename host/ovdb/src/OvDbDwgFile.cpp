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

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

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

class Loader {
public:
    Loader(Impl* impl) : m_im(impl) {}

    Problem load(const QByteArray& data);

private:
    Problem fail(Orvex::ErrorStatus status, const QString& message) { return {status, message}; }
    Problem parse(const QByteArray& data, QJsonObject& root);
    Problem readObjects(const QJsonArray& objects);
    Problem resolve(std::uint64_t handle, OvRxClass* expected, const QString& what,
                    OvDbStub*& stub);
    Problem resolveReferences();
    Problem placeObjects();
    Problem readHeader(const QJsonObject& header);
    Problem findWellKnown();

    struct Pending {
        OvDbObject* object;
        std::uint64_t owner;
    };

    Impl* m_im;
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

Problem Loader::parse(const QByteArray& data, QJsonObject& root) {
    if (data.trimmed().isEmpty())
        return fail(Orvex::eDrawingTruncated, QStringLiteral("the file is empty"));
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError) {
        if (data.trimmed().startsWith('{') && cutShort(error, data))
            return fail(Orvex::eDrawingTruncated,
                        QStringLiteral("the file is cut short (it ends at byte %1 in the middle "
                                       "of the drawing)")
                            .arg(data.size()));
        return fail(Orvex::eNotADrawingFile,
                    QStringLiteral("not a drawing file: not valid JSON (%1 at byte %2)")
                        .arg(error.errorString())
                        .arg(error.offset));
    }
    if (!document.isObject())
        return fail(Orvex::eNotADrawingFile,
                    QStringLiteral("not a drawing file: the JSON document is not an object"));
    root = document.object();
    const QJsonValue format = root.value(QLatin1StringView("format"));
    if (!format.isString())
        return fail(Orvex::eNotADrawingFile,
                    QStringLiteral("not a drawing file: it has no format tag"));
    if (format.toString() != kFormatTag)
        return fail(Orvex::eNotADrawingFile,
                    QStringLiteral("not a drawing file: its format tag is \"%1\", not \"%2\"")
                        .arg(format.toString(), kFormatTag));
    const QJsonValue version = root.value(QLatin1StringView("version"));
    const double v = version.toDouble();
    if (!version.isDouble() || v != static_cast<double>(static_cast<long long>(v)) || v < 1)
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("the format version is missing or not a whole number"));
    if (v > kFormatVersion)
        return fail(Orvex::eDrawingVersionTooNew,
                    QStringLiteral("the drawing has format version %1; this Orvex reads up to "
                                   "version %2")
                        .arg(static_cast<long long>(v))
                        .arg(kFormatVersion));
    return {};
}

Problem Loader::load(const QByteArray& data) {
    QJsonObject root;
    Problem p = parse(data, root);
    if (p.status != Orvex::eOk)
        return p;
    const QJsonValue header = root.value(QLatin1StringView("header"));
    const QJsonValue objects = root.value(QLatin1StringView("objects"));
    if (!header.isObject())
        return fail(Orvex::eBadDrawingFormat, QStringLiteral("the header is missing"));
    if (!objects.isArray())
        return fail(Orvex::eBadDrawingFormat, QStringLiteral("the list of objects is missing"));
    // Stage one: every object with its plain values; references stay handles.
    p = readObjects(objects.toArray());
    if (p.status == Orvex::eOk)
        p = readHeader(header.toObject());
    // Stage two: handles become ids, members go to their containers.
    if (p.status == Orvex::eOk)
        p = resolveReferences();
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

Problem Loader::readObjects(const QJsonArray& objects) {
    m_objects.reserve(static_cast<std::size_t>(objects.size()));
    m_im->byHandle.reserve(static_cast<std::size_t>(objects.size()));
    qsizetype index = 0;
    for (const QJsonValue& value : objects) {
        ++index;
        if (!value.isObject())
            return fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("item %1 of the objects is not an object").arg(index));
        const QJsonObject fields = value.toObject();
        std::uint64_t handle = 0;
        if (!OvDbDwgReader::parseHandle(fields.value(QLatin1StringView("handle")), handle) ||
            handle == 0)
            return fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("item %1 of the objects has no valid handle").arg(index));
        std::uint64_t owner = 0;
        if (!OvDbDwgReader::parseHandle(fields.value(QLatin1StringView("owner")), owner))
            return fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("object %1 has no valid owner handle").arg(hex(handle)));
        const QString type = fields.value(QLatin1StringView("type")).toString();
        OvDbObject* object = OvDbAccess::create(type);
        if (!object)
            return fail(
                Orvex::eBadDrawingFormat,
                QStringLiteral("object %1 has an unknown type \"%2\"").arg(hex(handle), type));
        OvDbStub* stub = m_im->newStub(handle);
        if (!stub) {
            delete object;
            return fail(
                Orvex::eDuplicateHandle,
                QStringLiteral("handle %1 is given to more than one object").arg(hex(handle)));
        }
        OvDbAccess::adopt(object, stub);
        m_reader.begin(fields, object, handle, type);
        if (OvDbAccess::readFields(object, m_reader) != Orvex::eOk)
            return fail(m_reader.status(), m_reader.message());
        m_objects.push_back({object, owner});
    }
    return {};
}

Problem Loader::resolve(std::uint64_t handle, OvRxClass* expected, const QString& what,
                        OvDbStub*& stub) {
    stub = nullptr;
    const auto it = m_im->byHandle.find(handle);
    if (handle == 0 || it == m_im->byHandle.end())
        return fail(
            Orvex::eDanglingHandle,
            QStringLiteral("%1 refers to handle %2, which no object has").arg(what, hex(handle)));
    stub = it->second;
    if (expected && !stub->object->isKindOf(expected))
        return fail(
            Orvex::eBadDrawingFormat,
            QStringLiteral("%1 refers to %2, a %3, where a %4 belongs")
                .arg(what, hex(handle), typeOf(stub->object), OvDbAccess::typeName(expected)));
    return {};
}

Problem Loader::readHeader(const QJsonObject& header) {
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
    for (const Entry& e : entries) {
        std::uint64_t handle = 0;
        if (!OvDbDwgReader::parseHandle(header.value(QLatin1StringView(e.key)), handle))
            return fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("the header has no valid '%1'").arg(e.key));
        Problem p =
            resolve(handle, e.cls, QStringLiteral("the header's '%1'").arg(e.key), *e.target);
        if (p.status != Orvex::eOk)
            return p;
    }
    const QJsonValue seed = header.value(QLatin1StringView("handseed"));
    if (!seed.isUndefined() && !OvDbDwgReader::parseHandle(seed, m_handseed))
        return fail(Orvex::eBadDrawingFormat,
                    QStringLiteral("the header's 'handseed' is not a handle"));
    return {};
}

Problem Loader::resolveReferences() {
    for (const OvDbDwgReader::Fixup& f : m_reader.fixups()) {
        OvDbStub* stub = nullptr;
        const QString what =
            QStringLiteral("object %1 ('%2')").arg(hex(OvDbAccess::stub(f.from)->handle), f.key);
        Problem p = resolve(f.handle, f.expected, what, stub);
        if (p.status != Orvex::eOk)
            return p;
        *f.slot = OvDbObjectId(stub);
    }
    for (Pending& pending : m_objects) {
        if (pending.owner == 0)
            continue;
        OvDbStub* owner = nullptr;
        const QString what = QStringLiteral("object %1 ('owner')")
                                 .arg(hex(OvDbAccess::stub(pending.object)->handle));
        Problem p = resolve(pending.owner, nullptr, what, owner);
        if (p.status != Orvex::eOk)
            return p;
        OvDbAccess::setOwner(pending.object, owner);
    }
    for (const OvDbDwgReader::DictionaryEntry& e : m_reader.dictionaryEntries()) {
        OvDbStub* entry = nullptr;
        const OvDbStub* dictionary = OvDbAccess::stub(e.dictionary);
        const QString what =
            QStringLiteral("entry \"%1\" of dictionary %2").arg(e.name, hex(dictionary->handle));
        Problem p = resolve(e.handle, nullptr, what, entry);
        if (p.status != Orvex::eOk)
            return p;
        if (OvDbAccess::owner(entry->object) != dictionary)
            return fail(Orvex::eBadDrawingFormat,
                        QStringLiteral("%1 names object %2, which belongs to another owner")
                            .arg(what, hex(e.handle)));
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
        const QString label =
            QStringLiteral("object %1 (%2)").arg(hex(self->handle), typeOf(object));
        auto misplaced = [&](const QString& why) {
            return fail(Orvex::eBadDrawingFormat, QStringLiteral("%1 %2").arg(label, why));
        };

        if (OvDbStub* xdict = OvDbAccess::xdict(object);
            xdict && OvDbAccess::owner(xdict->object) != self)
            return misplaced(QStringLiteral("names %1 as its extension dictionary, which "
                                            "belongs to another owner")
                                 .arg(hex(xdict->handle)));

        if (object->isKindOf(OvDbSymbolTable::desc())) {
            if (owner)
                return misplaced(QStringLiteral("is a table and cannot have an owner"));
            if (self != m_im->layerTable && self != m_im->linetypeTable && self != m_im->blockTable)
                return misplaced(QStringLiteral("is a table the header does not name"));
        } else if (object->isKindOf(OvDbSymbolTableRecord::desc())) {
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
        } else if (object->isKindOf(OvDbAttribute::desc())) {
            auto* reference = OvDbBlockReference::cast(ownerObject);
            if (!reference)
                return misplaced(QStringLiteral("is not owned by a block reference"));
            OvDbAccess::attributes(reference).push_back(OvDbObjectId(self));
        } else if (object->isKindOf(OvDbEntity::desc())) {
            auto* block = OvDbBlockTableRecord::cast(ownerObject);
            if (!block)
                return misplaced(QStringLiteral("is not owned by a block"));
            OvDbAccess::entities(block).push_back(OvDbObjectId(self));
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
        if (auto* entity = OvDbEntity::cast(pending.object); entity && !OvDbAccess::layerOf(entity))
            OvDbAccess::setLayerOf(entity, m_im->layerZero);
        if (auto* layer = OvDbLayerTableRecord::cast(pending.object);
            layer && !OvDbAccess::linetypeOf(layer))
            OvDbAccess::setLinetypeOf(layer, m_im->continuous);
    }
    return {};
}

} // namespace

OvDbObject* OvDbAccess::create(const QString& type) {
    using Factory = OvDbObject* (*)();
    static const QHash<QString, Factory> factories = {
        {QStringLiteral("LayerTable"), []() -> OvDbObject* { return new OvDbLayerTable(); }},
        {QStringLiteral("LinetypeTable"), []() -> OvDbObject* { return new OvDbLinetypeTable(); }},
        {QStringLiteral("BlockTable"), []() -> OvDbObject* { return new OvDbBlockTable(); }},
        {QStringLiteral("LayerTableRecord"),
         []() -> OvDbObject* { return new OvDbLayerTableRecord(); }},
        {QStringLiteral("LinetypeTableRecord"),
         []() -> OvDbObject* { return new OvDbLinetypeTableRecord(); }},
        {QStringLiteral("BlockTableRecord"),
         []() -> OvDbObject* { return new OvDbBlockTableRecord(); }},
        {QStringLiteral("Dictionary"), []() -> OvDbObject* { return new OvDbDictionary(); }},
        {QStringLiteral("Xrecord"), []() -> OvDbObject* { return new OvDbXrecord(); }},
        {QStringLiteral("Line"), []() -> OvDbObject* { return new OvDbLine(); }},
        {QStringLiteral("BlockReference"),
         []() -> OvDbObject* { return new OvDbBlockReference(); }},
        {QStringLiteral("Attribute"), []() -> OvDbObject* { return new OvDbAttribute(); }},
    };
    const Factory factory = factories.value(type, nullptr);
    return factory ? factory() : nullptr;
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

    QSaveFile out(file);
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
    QFile in(file);
    if (!in.exists())
        return fail(Orvex::eFileNotFound, QStringLiteral("%1: no such file").arg(file));
    if (!in.open(QIODevice::ReadOnly))
        return fail(Orvex::eFileAccessErr,
                    QStringLiteral("%1: cannot be read: %2").arg(file, in.errorString()));
    const QByteArray data = in.readAll();
    if (in.error() != QFileDevice::NoError)
        return fail(Orvex::eFileAccessErr,
                    QStringLiteral("%1: cannot be read: %2").arg(file, in.errorString()));

    // Built apart and swapped in only when the whole file made sense.
    auto fresh = std::make_unique<Impl>(this);
    const Problem problem = Loader(fresh.get()).load(data);
    if (problem.status != Orvex::eOk)
        return fail(problem.status, QStringLiteral("%1: %2").arg(file, problem.message));
    OvDbAccess::swapImpl(this, fresh);
    fresh.reset();
    m_fileName = QFileInfo(file).absoluteFilePath();
    m_wideFileName = m_fileName.toStdWString();
    return Orvex::eOk;
}
