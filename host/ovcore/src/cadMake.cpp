// entmake and entmakex: new entities, table records and unowned objects from group codes.
//
// Everything a request needs is checked before the drawing is touched, so that a refused
// request changes nothing. An INSERT that carries (66 . 1) is collected with the ATTRIB
// lists that follow it and made when SEQEND comes, as CAD hosts do; any other request in
// between drops it.
#include "cadChain.h"
#include "cadDrawing.h"

#include "ovdb/ovdb.h"

#include <cmath>
#include <cstdlib>
#include <optional>
#include <vector>

namespace ovcore::cad {

namespace {

struct Look {
    QString layer; // empty: the current layer
    int color = OvCmColor::kByLayer;
};

struct AttributeSpec {
    QString tag;
    QString text;
    std::optional<OvGePoint3d> position;
    std::optional<QString> layer;
    int color = OvCmColor::kByLayer;
};

struct InsertSpec {
    QString block;
    OvGePoint3d position;
    Look look;
    std::vector<AttributeSpec> attributes;
};

// The INSERT being collected, with the drawing it is meant for.
struct PendingInsert {
    std::int64_t session = 0;
    InsertSpec insert;
};
std::optional<PendingInsert> s_pending;

void dropPending(const QString& why) {
    if (!s_pending)
        return;
    const std::wstring text = QStringLiteral("\n; entmake: the INSERT of block %1 is dropped: %2\n")
                                  .arg(quotedText(s_pending->insert.block), why)
                                  .toStdWString();
    s_pending.reset();
    ovutPrintf(L"%ls", text.c_str());
}

bool fail(QString* error, const QString& message) {
    *error = message;
    return false;
}

// --- Checks

bool readPoint(const GroupReader& g, int code, OvGePoint3d& point, QString* error) {
    if (!g.point(code, point))
        return fail(error, QStringLiteral("the point (%1 x y z) is missing").arg(code));
    if (!point.isFinite())
        return fail(error, QStringLiteral("the point of group %1 is not finite").arg(code));
    return true;
}

// A layer that exists, or a name that one can be made with.
bool checkLayerName(OvDbDatabase* db, const QString& name, QString* error) {
    if (!findRecord(db, Table::Layer, name).isNull() || OvDbSymbolTableRecord::isValidName(name))
        return true;
    return fail(error, QStringLiteral("%1 is not a valid layer name").arg(quotedText(name)));
}

bool readLook(OvDbDatabase* db, const GroupReader& g, Look& look, QString* error) {
    if (g.has(8)) {
        look.layer = g.text(8);
        if (!checkLayerName(db, look.layer, error))
            return false;
    }
    look.color = g.integer(62, OvCmColor::kByLayer);
    if (look.color < OvCmColor::kByBlock || look.color > OvCmColor::kByLayer)
        return fail(
            error,
            QStringLiteral("colour %1 is not an index colour from 0 to 256").arg(look.color));
    return true;
}

bool readInsert(OvDbDatabase* db, const GroupReader& g, InsertSpec& insert, QString* error) {
    if (!g.has(2))
        return fail(error, QStringLiteral("the block name (2 . name) is missing"));
    insert.block = g.text(2);
    const OvDbObjectId block = findRecord(db, Table::Block, insert.block);
    if (block.isNull() && !OvDbSymbolTableRecord::isValidName(insert.block))
        return fail(error,
                    QStringLiteral("%1 is not a valid block name").arg(quotedText(insert.block)));
    if (block == db->modelSpaceId() || block == db->paperSpaceId())
        return fail(error, QStringLiteral("a space cannot be inserted"));
    return readPoint(g, 10, insert.position, error) && readLook(db, g, insert.look, error);
}

bool readAttribute(OvDbDatabase* db, const GroupReader& g, AttributeSpec& attribute,
                   QString* error) {
    if (!g.has(2) || !OvDbAttribute::isValidTag(g.text(2)))
        return fail(error, QStringLiteral("an ATTRIB needs a tag (2 . tag) without blanks"));
    if (!g.has(1))
        return fail(error, QStringLiteral("an ATTRIB needs its text (1 . text)"));
    attribute.tag = g.text(2);
    attribute.text = g.text(1);
    if (g.has(10)) {
        OvGePoint3d point;
        if (!readPoint(g, 10, point, error))
            return false;
        attribute.position = point;
    }
    Look look;
    if (!readLook(db, g, look, error))
        return false;
    if (g.has(8))
        attribute.layer = look.layer;
    attribute.color = look.color;
    return true;
}

// --- Changes to the drawing

// Adds an empty record of that name to a table: a layer or a block that a request names and
// the drawing does not have yet.
template <class Table, class Record>
OvDbObjectId addNamedRecord(OvDbDatabase* db,
                            Orvex::ErrorStatus (OvDbDatabase::*getTable)(Table*&, OvDb::OpenMode),
                            const QString& name, const QString& tableName, const QString& failure,
                            QString* error) {
    Opened<Table> table;
    if (const Orvex::ErrorStatus es = (db->*getTable)(table.slot(), OvDb::kForWrite);
        es != Orvex::eOk) {
        *error = QStringLiteral("the %1 cannot be changed now (status %2)").arg(tableName).arg(es);
        return {};
    }
    auto* record = new Record();
    OvDbObjectId id;
    if (record->setName(name) != Orvex::eOk || table->add(id, record) != Orvex::eOk) {
        delete record;
        *error = failure.arg(quotedText(name));
        return {};
    }
    record->close();
    return id;
}

// The layer of that name, made when the drawing has none; the current layer for no name.
OvDbObjectId ensureLayer(OvDbDatabase* db, const QString& name, QString* error) {
    if (name.isEmpty())
        return db->clayer();
    if (const OvDbObjectId id = findRecord(db, Table::Layer, name); !id.isNull())
        return id;
    return addNamedRecord<OvDbLayerTable, OvDbLayerTableRecord>(
        db, &OvDbDatabase::getLayerTable, name, QStringLiteral("layer table"),
        QStringLiteral("layer %1 cannot be made"), error);
}

// Adds a new entity to model space; the entity is deleted when that fails.
bool appendToModelSpace(OvDbDatabase* db, OvDbEntity* entity, OvDbObjectId& id, QString* error) {
    Opened<OvDbBlockTableRecord> space;
    Orvex::ErrorStatus es = space.open(db->modelSpaceId(), OvDb::kForWrite);
    if (es == Orvex::eOk)
        es = space->appendOvDbEntity(id, entity);
    if (es != Orvex::eOk) {
        delete entity;
        *error = QStringLiteral("model space cannot be changed now (status %1)").arg(es);
        return false;
    }
    entity->close();
    return true;
}

bool applyLook(OvDbDatabase* db, OvDbEntity* entity, const QString& layer, int color,
               QString* error) {
    const OvDbObjectId layerId = ensureLayer(db, layer, error);
    if (layerId.isNull())
        return false;
    OvCmColor look;
    look.setColorIndex(color);
    entity->setLayer(layerId);
    entity->setColor(look);
    return true;
}

bool makeLine(OvDbDatabase* db, const GroupReader& g, OvDbObjectId& id, QString* error) {
    OvGePoint3d start;
    OvGePoint3d end;
    Look look;
    if (!readPoint(g, 10, start, error) || !readPoint(g, 11, end, error) ||
        !readLook(db, g, look, error))
        return false;
    auto* line = new OvDbLine(start, end);
    if (!applyLook(db, line, look.layer, look.color, error)) {
        delete line;
        return false;
    }
    return appendToModelSpace(db, line, id, error);
}

bool makeLayer(OvDbDatabase* db, const GroupReader& g, OvDbObjectId& id, QString* error) {
    if (!g.has(2))
        return fail(error, QStringLiteral("the layer name (2 . name) is missing"));
    const QString name = g.text(2);
    if (!OvDbSymbolTableRecord::isValidName(name))
        return fail(error, QStringLiteral("%1 is not a valid layer name").arg(quotedText(name)));
    if (!findRecord(db, Table::Layer, name).isNull())
        return fail(error, QStringLiteral("layer %1 exists already").arg(quotedText(name)));
    // A negative colour stands for a layer that is off.
    const int color = g.integer(62, 7);
    if (color == 0 || std::abs(color) > 255)
        return fail(error, QStringLiteral("a layer's colour is from 1 to 255, not %1").arg(color));
    OvDbObjectId linetype = db->continuousLinetype();
    if (g.has(6)) {
        linetype = findRecord(db, Table::Linetype, g.text(6));
        if (linetype.isNull())
            return fail(error,
                        QStringLiteral("there is no linetype %1").arg(quotedText(g.text(6))));
    }
    const int weight = g.integer(370, OvDb::kLnWtByLwDefault);
    if (!OvDb::isLegalLineWeight(weight) || weight == OvDb::kLnWtByLayer ||
        weight == OvDb::kLnWtByBlock)
        return fail(error, QStringLiteral("%1 is not a lineweight a layer can have").arg(weight));
    const int flags = g.integer(70, 0);

    Opened<OvDbLayerTable> table;
    if (const Orvex::ErrorStatus es = db->getLayerTable(table.slot(), OvDb::kForWrite);
        es != Orvex::eOk)
        return fail(error,
                    QStringLiteral("the layer table cannot be changed now (status %1)").arg(es));
    auto* layer = new OvDbLayerTableRecord();
    OvCmColor look;
    look.setColorIndex(std::abs(color));
    layer->setName(name);
    layer->setColor(look);
    layer->setLinetypeObjectId(linetype);
    layer->setLineWeight(static_cast<OvDb::LineWeight>(weight));
    layer->setIsOff(color < 0);
    layer->setIsFrozen(flags & 1);
    layer->setIsLocked(flags & 4);
    if (const Orvex::ErrorStatus es = table->add(id, layer); es != Orvex::eOk) {
        delete layer;
        return fail(
            error,
            QStringLiteral("layer %1 cannot be added (status %2)").arg(quotedText(name)).arg(es));
    }
    layer->close();
    return true;
}

bool makeLinetype(OvDbDatabase* db, const GroupReader& g, const resbuf* data, OvDbObjectId& id,
                  QString* error) {
    if (!g.has(2))
        return fail(error, QStringLiteral("the linetype name (2 . name) is missing"));
    const QString name = g.text(2);
    if (!OvDbSymbolTableRecord::isValidName(name))
        return fail(error, QStringLiteral("%1 is not a valid linetype name").arg(quotedText(name)));
    if (!findRecord(db, Table::Linetype, name).isNull())
        return fail(error, QStringLiteral("linetype %1 exists already").arg(quotedText(name)));
    std::vector<double> dashes;
    for (const resbuf* link = data; link; link = link->rbnext) {
        if (link->restype != 49)
            continue;
        if (!std::isfinite(link->resval.rreal))
            return fail(error, QStringLiteral("a dash length is not finite"));
        dashes.push_back(link->resval.rreal);
    }
    Opened<OvDbLinetypeTable> table;
    if (const Orvex::ErrorStatus es = db->getLinetypeTable(table.slot(), OvDb::kForWrite);
        es != Orvex::eOk)
        return fail(error,
                    QStringLiteral("the linetype table cannot be changed now (status %1)").arg(es));
    auto* linetype = new OvDbLinetypeTableRecord();
    linetype->setName(name);
    linetype->setComments(g.text(3));
    linetype->setDashes(dashes);
    if (const Orvex::ErrorStatus es = table->add(id, linetype); es != Orvex::eOk) {
        delete linetype;
        return fail(error, QStringLiteral("linetype %1 cannot be added (status %2)")
                               .arg(quotedText(name))
                               .arg(es));
    }
    linetype->close();
    return true;
}

OvDbObjectId ensureBlock(OvDbDatabase* db, const QString& name, QString* error) {
    if (const OvDbObjectId id = findRecord(db, Table::Block, name); !id.isNull())
        return id;
    // An empty definition, so that the reference has a block to name.
    return addNamedRecord<OvDbBlockTable, OvDbBlockTableRecord>(
        db, &OvDbDatabase::getBlockTable, name, QStringLiteral("block table"),
        QStringLiteral("block %1 cannot be defined"), error);
}

bool makeInsert(OvDbDatabase* db, const InsertSpec& insert, OvDbObjectId& id, QString* error) {
    const OvDbObjectId block = ensureBlock(db, insert.block, error);
    if (block.isNull())
        return false;
    auto* reference = new OvDbBlockReference(insert.position, block);
    if (!applyLook(db, reference, insert.look.layer, insert.look.color, error)) {
        delete reference;
        return false;
    }
    Opened<OvDbBlockTableRecord> space;
    Orvex::ErrorStatus es = space.open(db->modelSpaceId(), OvDb::kForWrite);
    if (es == Orvex::eOk)
        es = space->appendOvDbEntity(id, reference);
    if (es != Orvex::eOk) {
        delete reference;
        return fail(error, QStringLiteral("model space cannot be changed now (status %1)").arg(es));
    }
    space.reset();
    Opened<OvDbBlockReference> owner;
    owner.adopt(reference);
    for (const AttributeSpec& wanted : insert.attributes) {
        auto* attribute = new OvDbAttribute(wanted.position.value_or(reference->position()),
                                            wanted.text, wanted.tag);
        // Without a layer of its own an attribute lies on its INSERT's.
        if (!applyLook(db, attribute, wanted.layer.value_or(reference->layer()), wanted.color,
                       error) ||
            reference->appendAttribute(attribute) != Orvex::eOk) {
            delete attribute;
            // The INSERT is in the drawing already; it goes rather than stay half made.
            reference->erase();
            if (error->isEmpty())
                *error = QStringLiteral("attribute %1 cannot be added").arg(quotedText(wanted.tag));
            return false;
        }
        attribute->close();
    }
    return true;
}

// An unowned object of the drawing: entered in the named objects dictionary, then taken
// out, which leaves it in the drawing without an owner until dictadd gives it one.
bool addUnowned(OvDbDatabase* db, OvDbObject* object, OvDbObjectId& id, QString* error) {
    Opened<OvDbDictionary> root;
    Orvex::ErrorStatus es = db->getNamedObjectsDictionary(root.slot(), OvDb::kForWrite);
    if (es == Orvex::eOk) {
        QString key;
        int n = 0;
        do
            key = QStringLiteral("*ORVEX-UNOWNED-%1").arg(++n);
        while (root->has(key));
        es = root->setAt(key, object, id);
    }
    if (es != Orvex::eOk) {
        delete object;
        return fail(error,
                    QStringLiteral("the drawing cannot take a new object now (status %1)").arg(es));
    }
    object->close();
    root->remove(id);
    return true;
}

bool makeXrecord(OvDbDatabase* db, const resbuf* data, OvDbObjectId& id, QString* error) {
    // The data: what follows (0 . "XRECORD"), or the OvDbXrecord marker that entget writes.
    const resbuf* start = nullptr;
    for (const resbuf* link = data; link; link = link->rbnext) {
        if (!start && (link->restype == 0 || link->restype == RTDXF0))
            start = link->rbnext;
        else if (start && link->restype == 100 && link->resval.rstring &&
                 QString::fromWCharArray(link->resval.rstring) == kXrecordMarker) {
            start = link->rbnext;
            break;
        }
    }
    auto* xrecord = new OvDbXrecord();
    if (xrecord->setFromRbChain(start) != Orvex::eOk) {
        delete xrecord;
        return fail(error,
                    QStringLiteral("the XRECORD data holds a group that an xrecord cannot keep"));
    }
    return addUnowned(db, xrecord, id, error);
}

bool sameDrawing(OvDbDatabase* db) {
    return s_pending && s_pending->session == db->sessionNumber();
}

// A request that one call settles, shared by entmake and entmakex.
bool makeWhole(OvDbDatabase* db, const QString& type, const GroupReader& g, const resbuf* data,
               OvDbObjectId& id, QString* error) {
    if (type == u"LINE")
        return makeLine(db, g, id, error);
    if (type == u"LAYER")
        return makeLayer(db, g, id, error);
    if (type == u"LTYPE")
        return makeLinetype(db, g, data, id, error);
    if (type == u"INSERT") {
        InsertSpec insert;
        return readInsert(db, g, insert, error) && makeInsert(db, insert, id, error);
    }
    return fail(error,
                QStringLiteral("entity type %1 is not one the host makes").arg(quotedText(type)));
}

} // namespace

void discardPendingInsert() {
    s_pending.reset();
}

bool makeEntity(const resbuf* data, ov_name made, bool* finished, QString* error) {
    made[0] = made[1] = 0;
    *finished = false;
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return false;
    const GroupReader g(data);
    if (!g.has(0))
        return fail(error, QStringLiteral("the entity type (0 . type) is missing"));
    const QString type = g.type().toUpper();
    const bool part = type == u"ATTRIB" || type == u"SEQEND";

    // An INSERT meant for a drawing that has closed goes without a word.
    if (s_pending && !ovdbDatabaseOfSession(s_pending->session))
        s_pending.reset();
    if (s_pending && !sameDrawing(db))
        dropPending(QStringLiteral("another drawing is current"));
    if (s_pending && !part)
        dropPending(QStringLiteral("a %1 came before its SEQEND").arg(type));
    if (part && !s_pending)
        return fail(error, QStringLiteral("%1 without an INSERT that carries (66 . 1)").arg(type));

    if (type == u"ATTRIB") {
        AttributeSpec attribute;
        if (!readAttribute(db, g, attribute, error)) {
            s_pending.reset();
            *error += QStringLiteral("; the INSERT it belongs to is dropped");
            return false;
        }
        s_pending->insert.attributes.push_back(attribute);
        return true;
    }
    if (type == u"SEQEND") {
        const InsertSpec insert = s_pending->insert;
        s_pending.reset();
        OvDbObjectId id;
        if (!makeInsert(db, insert, id, error))
            return false;
        *finished = true;
        return nameOfId(id, made);
    }
    if (type == u"DICTIONARY" || type == u"XRECORD")
        return fail(error, QStringLiteral("a %1 is made with entmakex").arg(type));
    if (type == u"INSERT" && g.integer(66, 0) == 1) {
        InsertSpec insert;
        if (!readInsert(db, g, insert, error))
            return false;
        s_pending = PendingInsert{db->sessionNumber(), insert};
        return true;
    }
    OvDbObjectId id;
    if (!makeWhole(db, type, g, data, id, error))
        return false;
    *finished = true;
    return nameOfId(id, made);
}

bool makeObject(const resbuf* data, ov_name made, QString* error) {
    made[0] = made[1] = 0;
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return false;
    const GroupReader g(data);
    if (!g.has(0))
        return fail(error, QStringLiteral("the object type (0 . type) is missing"));
    const QString type = g.type().toUpper();
    if (s_pending)
        dropPending(QStringLiteral("entmakex came before its SEQEND"));
    OvDbObjectId id;
    if (type == u"DICTIONARY") {
        if (!addUnowned(db, new OvDbDictionary(), id, error))
            return false;
    } else if (type == u"XRECORD") {
        if (!makeXrecord(db, data, id, error))
            return false;
    } else if (type == u"ATTRIB" || type == u"SEQEND" ||
               (type == u"INSERT" && g.integer(66, 0) == 1)) {
        return fail(error, QStringLiteral("an INSERT with attributes is made with entmake"));
    } else if (!makeWhole(db, type, g, data, id, error)) {
        return false;
    }
    return nameOfId(id, made);
}

} // namespace ovcore::cad
