// entmod, entupd, handent, regapp and the entity list behind ssget.
//
// entmod changes only the groups its list holds and refuses what entmake refuses (a bad
// name, a colour out of range, a linetype the drawing lacks, an illegal weight). Every
// value is checked before the object is opened for write, so a refused request leaves the
// object as it was.
#include "cadChain.h"
#include "cadDrawing.h"

#include "ovdb/ovdb.h"

#include <cmath>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace ovcore::cad {

namespace {

bool fail(QString* error, const QString& message) {
    *error = message;
    return false;
}

bool readPoint(const GroupReader& g, int code, std::optional<OvGePoint3d>& point, QString* error) {
    if (!g.has(code))
        return true;
    OvGePoint3d p;
    if (!g.point(code, p))
        return fail(error, QStringLiteral("group %1 is not a point").arg(code));
    if (!p.isFinite())
        return fail(error, QStringLiteral("the point of group %1 is not finite").arg(code));
    point = p;
    return true;
}

// What an entity's look becomes: a layer (made when the drawing has none of that name) and
// an index colour.
struct LookChange {
    std::optional<QString> layer;
    std::optional<int> color;
};

bool readLook(OvDbDatabase* db, const GroupReader& g, LookChange& look, QString* error) {
    if (g.has(8)) {
        const QString name = g.text(8);
        if (findRecord(db, Table::Layer, name).isNull() &&
            !OvDbSymbolTableRecord::isValidName(name))
            return fail(error,
                        QStringLiteral("%1 is not a valid layer name").arg(quotedText(name)));
        look.layer = name;
    }
    if (g.has(62)) {
        const int color = g.integer(62, OvCmColor::kByLayer);
        if (color < OvCmColor::kByBlock || color > OvCmColor::kByLayer)
            return fail(
                error, QStringLiteral("colour %1 is not an index colour from 0 to 256").arg(color));
        look.color = color;
    }
    return true;
}

OvDbObjectId ensureLayer(OvDbDatabase* db, const QString& name, QString* error) {
    if (const OvDbObjectId id = findRecord(db, Table::Layer, name); !id.isNull())
        return id;
    Opened<OvDbLayerTable> table;
    if (const Orvex::ErrorStatus es = db->getLayerTable(table.slot(), OvDb::kForWrite);
        es != Orvex::eOk) {
        *error = QStringLiteral("the layer table cannot be changed now (status %1)").arg(es);
        return {};
    }
    auto* record = new OvDbLayerTableRecord();
    OvDbObjectId id;
    if (record->setName(name) != Orvex::eOk || table->add(id, record) != Orvex::eOk) {
        delete record;
        *error = QStringLiteral("layer %1 cannot be made").arg(quotedText(name));
        return {};
    }
    record->close();
    return id;
}

bool layerLocked(OvDbObjectId layer) {
    Opened<OvDbLayerTableRecord> record;
    return record.open(layer, OvDb::kForRead) == Orvex::eOk && record->isLocked();
}

bool applyLook(OvDbDatabase* db, OvDbEntity* entity, const LookChange& look, QString* error) {
    if (look.layer) {
        const OvDbObjectId layer = ensureLayer(db, *look.layer, error);
        if (layer.isNull())
            return false;
        if (const Orvex::ErrorStatus es = entity->setLayer(layer); es != Orvex::eOk)
            return fail(error, QStringLiteral("the layer cannot be set (status %1)").arg(es));
    }
    if (look.color) {
        OvCmColor color;
        color.setColorIndex(*look.color);
        entity->setColor(color);
    }
    return true;
}

QString typeOf(OvDbObject* object) {
    if (OvDbLine::cast(object))
        return QStringLiteral("LINE");
    if (OvDbBlockReference::cast(object))
        return QStringLiteral("INSERT");
    if (OvDbAttribute::cast(object))
        return QStringLiteral("ATTRIB");
    if (OvDbLayerTableRecord::cast(object))
        return QStringLiteral("LAYER");
    if (OvDbLinetypeTableRecord::cast(object))
        return QStringLiteral("LTYPE");
    if (OvDbBlockTableRecord::cast(object))
        return QStringLiteral("BLOCK_RECORD");
    if (OvDbDictionary::cast(object))
        return QStringLiteral("DICTIONARY");
    if (OvDbXrecord::cast(object))
        return QStringLiteral("XRECORD");
    return object->isA()->name();
}

bool modifyEntity(OvDbDatabase* db, OvDbEntity* entity, const GroupReader& g, QString* error) {
    LookChange look;
    std::optional<OvGePoint3d> first;
    std::optional<OvGePoint3d> second;
    if (!readLook(db, g, look, error) || !readPoint(g, 10, first, error) ||
        !readPoint(g, 11, second, error))
        return false;
    if (layerLocked(entity->layerId()))
        return fail(error, QStringLiteral("the entity lies on the locked layer %1")
                               .arg(quotedText(entity->layer())));

    if (auto* line = OvDbLine::cast(entity)) {
        if (!applyLook(db, line, look, error))
            return false;
        if (first)
            line->setStartPoint(*first);
        if (second)
            line->setEndPoint(*second);
        return true;
    }
    if (auto* reference = OvDbBlockReference::cast(entity)) {
        OvDbObjectId block;
        if (g.has(2)) {
            block = findRecord(db, Table::Block, g.text(2));
            if (block.isNull())
                return fail(error,
                            QStringLiteral("there is no block %1").arg(quotedText(g.text(2))));
            if (block == db->modelSpaceId() || block == db->paperSpaceId())
                return fail(error, QStringLiteral("a space cannot be inserted"));
        }
        if (!applyLook(db, reference, look, error))
            return false;
        if (!block.isNull())
            reference->setBlockTableRecord(block);
        if (first)
            reference->setPosition(*first);
        return true;
    }
    if (auto* attribute = OvDbAttribute::cast(entity)) {
        if (g.has(2) && !OvDbAttribute::isValidTag(g.text(2)))
            return fail(error, QStringLiteral("an ATTRIB needs a tag without blanks"));
        if (!applyLook(db, attribute, look, error))
            return false;
        if (g.has(2))
            attribute->setTag(g.text(2));
        if (g.has(1))
            attribute->setTextString(g.text(1));
        if (first)
            attribute->setPosition(*first);
        return true;
    }
    return fail(error, QStringLiteral("a %1 is not changed with entmod").arg(typeOf(entity)));
}

bool renameRecord(OvDbDatabase* db, OvDbSymbolTableRecord* record, Table table,
                  const GroupReader& g, QString* error) {
    if (!g.has(2))
        return true;
    const QString name = g.text(2);
    if (!OvDbSymbolTableRecord::isValidName(name))
        return fail(error, QStringLiteral("%1 is not a valid name").arg(quotedText(name)));
    const OvDbObjectId other = findRecord(db, table, name);
    if (!other.isNull() && other != record->objectId())
        return fail(error, QStringLiteral("the name %1 is taken").arg(quotedText(name)));
    if (const Orvex::ErrorStatus es = record->setName(name); es != Orvex::eOk)
        return fail(error, QStringLiteral("%1 cannot be renamed (status %2)")
                               .arg(quotedText(record->name()))
                               .arg(es));
    return true;
}

bool modifyLayer(OvDbDatabase* db, OvDbLayerTableRecord* layer, const GroupReader& g,
                 QString* error) {
    std::optional<int> color;
    if (g.has(62)) {
        color = g.integer(62, 7);
        if (*color == 0 || std::abs(*color) > 255)
            return fail(error,
                        QStringLiteral("a layer's colour is from 1 to 255, not %1").arg(*color));
    }
    OvDbObjectId linetype;
    if (g.has(6)) {
        linetype = findRecord(db, Table::Linetype, g.text(6));
        if (linetype.isNull())
            return fail(error,
                        QStringLiteral("there is no linetype %1").arg(quotedText(g.text(6))));
    }
    std::optional<int> weight;
    if (g.has(370)) {
        weight = g.integer(370, OvDb::kLnWtByLwDefault);
        if (!OvDb::isLegalLineWeight(*weight) || *weight == OvDb::kLnWtByLayer ||
            *weight == OvDb::kLnWtByBlock)
            return fail(error,
                        QStringLiteral("%1 is not a lineweight a layer can have").arg(*weight));
    }
    const bool hasFlags = g.has(70);
    const int flags = g.integer(70, 0);
    if (hasFlags && (flags & 1) && db->clayer() == layer->objectId())
        return fail(error, QStringLiteral("the current layer cannot be frozen"));

    if (!renameRecord(db, layer, Table::Layer, g, error))
        return false;
    if (color) {
        OvCmColor look;
        look.setColorIndex(std::abs(*color));
        layer->setColor(look);
        layer->setIsOff(*color < 0);
    }
    if (!linetype.isNull())
        layer->setLinetypeObjectId(linetype);
    if (weight)
        layer->setLineWeight(static_cast<OvDb::LineWeight>(*weight));
    if (hasFlags) {
        layer->setIsFrozen(flags & 1);
        layer->setIsLocked(flags & 4);
    }
    return true;
}

bool modifyLinetype(OvDbDatabase* db, OvDbLinetypeTableRecord* linetype, const resbuf* data,
                    const GroupReader& g, QString* error) {
    std::vector<double> dashes;
    bool hasDashes = false;
    for (const resbuf* link = data; link; link = link->rbnext) {
        if (link->restype != 49)
            continue;
        if (!std::isfinite(link->resval.rreal))
            return fail(error, QStringLiteral("a dash length is not finite"));
        dashes.push_back(link->resval.rreal);
        hasDashes = true;
    }
    if (!renameRecord(db, linetype, Table::Linetype, g, error))
        return false;
    if (g.has(3))
        linetype->setComments(g.text(3));
    if (hasDashes)
        linetype->setDashes(dashes);
    return true;
}

bool modifyXrecord(OvDbXrecord* xrecord, const resbuf* data, QString* error) {
    // As entget writes it: the data follows the marker.
    const resbuf* start = nullptr;
    for (const resbuf* link = data; link; link = link->rbnext) {
        if (link->restype == 100 && link->resval.rstring &&
            QString::fromWCharArray(link->resval.rstring) == kXrecordMarker) {
            start = link->rbnext;
            break;
        }
    }
    if (!start)
        return fail(error, QStringLiteral("an XRECORD's data follows (100 . \"OvDbXrecord\")"));
    if (xrecord->setFromRbChain(start) != Orvex::eOk)
        return fail(error, QStringLiteral("the data holds a group that an xrecord cannot keep"));
    return true;
}

// Applications registered with regapp, per drawing of the session.
std::map<std::int64_t, std::set<QString>> s_applications;

} // namespace

bool modifyObject(const resbuf* data, QString* error) {
    const GroupReader g(data);
    const resbuf* nameLink = g.find(-1);
    if (!nameLink || nameLink->restype != -1)
        return fail(error, QStringLiteral("the entity name (-1 . name) is missing"));
    ov_name name = {nameLink->resval.rlname[0], nameLink->resval.rlname[1]};
    if (isSeqendName(name))
        return fail(error, QStringLiteral("a SEQEND has nothing to change"));
    OvDbObjectId id;
    if (!idOfName(name, id, error))
        return false;
    OvDbDatabase* db = id.database();
    Opened<OvDbObject> object;
    if (const Orvex::ErrorStatus es = object.open(id, OvDb::kForWrite, true); es != Orvex::eOk)
        return fail(
            error,
            QStringLiteral("%1 cannot be changed now (status %2)").arg(describeName(name)).arg(es));
    if (object->isErased())
        return fail(error, QStringLiteral("%1 is erased").arg(describeName(name)));
    const QString type = typeOf(object.get());
    if (g.has(0) && g.type().compare(type, Qt::CaseInsensitive) != 0)
        return fail(error, QStringLiteral("%1 is a %2, not a %3")
                               .arg(describeName(name), type, g.type().toUpper()));

    if (auto* entity = OvDbEntity::cast(object.get()))
        return modifyEntity(db, entity, g, error);
    if (auto* layer = OvDbLayerTableRecord::cast(object.get()))
        return modifyLayer(db, layer, g, error);
    if (auto* linetype = OvDbLinetypeTableRecord::cast(object.get()))
        return modifyLinetype(db, linetype, data, g, error);
    if (auto* block = OvDbBlockTableRecord::cast(object.get())) {
        if (id == db->modelSpaceId() || id == db->paperSpaceId())
            return fail(error, QStringLiteral("a space keeps its name"));
        return renameRecord(db, block, Table::Block, g, error);
    }
    if (auto* xrecord = OvDbXrecord::cast(object.get()))
        return modifyXrecord(xrecord, data, error);
    return fail(error, QStringLiteral("a %1 is not changed with entmod").arg(type));
}

bool updateEntity(const ov_name name, QString* error) {
    OvDbObjectId id;
    if (!idOfName(name, id, error))
        return false;
    Opened<OvDbEntity> entity;
    const Orvex::ErrorStatus es = entity.open(id, OvDb::kForRead);
    if (es == Orvex::eOk)
        return true;
    return fail(
        error,
        es == Orvex::eWrongObjectType
            ? QStringLiteral("%1 is not an entity").arg(describeName(name))
            : QStringLiteral("%1 cannot be read now (status %2)").arg(describeName(name)).arg(es));
}

bool handleEntity(const QString& handle, ov_name name, QString* error) {
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return false;
    bool ok = false;
    const OvDbHandle value = OvDbHandle::fromString(handle, &ok);
    if (!ok)
        return fail(error, QStringLiteral("%1 is not a handle").arg(quotedText(handle)));
    OvDbObjectId id;
    // An unknown handle is a plain "nothing".
    if (db->getOvDbObjectId(id, false, value) != Orvex::eOk)
        return false;
    return nameOfId(id, name);
}

int registerApplication(const QString& application, QString* error) {
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return -1;
    if (!OvDbSymbolTableRecord::isValidName(application)) {
        *error = QStringLiteral("%1 is not a valid application name").arg(quotedText(application));
        return -1;
    }
    // Forget the drawings that have closed, so that the table stays small.
    for (auto it = s_applications.begin(); it != s_applications.end();)
        it = ovdbDatabaseOfSession(it->first) ? std::next(it) : s_applications.erase(it);
    return s_applications[db->sessionNumber()].insert(application.toUpper()).second ? 1 : 0;
}

std::vector<OvDbObjectId> modelSpaceEntities(QString* error) {
    std::vector<OvDbObjectId> ids;
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return ids;
    Opened<OvDbBlockTableRecord> space;
    if (const Orvex::ErrorStatus es = space.open(db->modelSpaceId(), OvDb::kForRead);
        es != Orvex::eOk) {
        *error = QStringLiteral("model space cannot be read now (status %1)").arg(es);
        return ids;
    }
    OvDbBlockTableRecordIterator* raw = nullptr;
    space->newIterator(raw, true, true);
    std::unique_ptr<OvDbBlockTableRecordIterator> it(raw);
    for (; !it->done(); it->step(true, true))
        ids.push_back(it->entityId());
    return ids;
}

} // namespace ovcore::cad
