// Entity names, entget, and the walks over entities: entnext, entlast, entdel.
#include "cadChain.h"
#include "cadDrawing.h"

#include "ovdb/ovdb.h"

#include <memory>

namespace ovcore::cad {

namespace {

constexpr std::int64_t kSeqendFlag = std::int64_t(1) << 62;

QString recordName(OvDbObjectId id) {
    Opened<OvDbSymbolTableRecord> record;
    if (record.open(id, OvDb::kForRead, true) != Orvex::eOk)
        return {};
    return record->name();
}

// -1, 0, 330 and 5: what every object's data begins with.
void writeHead(ChainWriter& out, const ov_name name, const char* type, const OvDbObject* object) {
    out.name(-1, name);
    out.text(0, QString::fromLatin1(type));
    const OvDbObjectId owner = object->ownerId();
    if (!owner.isNull())
        out.handle(330, owner.handle());
    out.handle(5, object->objectId().handle());
}

void writeEntityLook(ChainWriter& out, const OvDbEntity* entity) {
    out.text(8, entity->layer());
    // CAD LISP leaves the colour out while it is by layer.
    if (!entity->color().isByLayer())
        out.int16(62, entity->color().colorIndex());
}

bool hasLiveAttributes(const OvDbBlockReference* reference) {
    std::unique_ptr<OvDbObjectIterator> it(reference->attributeIterator());
    for (; !it->done(); it->step()) {
        if (!it->objectId().isErased())
            return true;
    }
    return false;
}

void writeObject(ChainWriter& out, const ov_name name, OvDbObject* object) {
    if (auto* line = OvDbLine::cast(object)) {
        writeHead(out, name, "LINE", object);
        writeEntityLook(out, line);
        out.point(10, line->startPoint());
        out.point(11, line->endPoint());
    } else if (auto* reference = OvDbBlockReference::cast(object)) {
        writeHead(out, name, "INSERT", object);
        writeEntityLook(out, reference);
        if (hasLiveAttributes(reference))
            out.int16(66, 1);
        out.text(2, recordName(reference->blockTableRecord()));
        out.point(10, reference->position());
    } else if (auto* attribute = OvDbAttribute::cast(object)) {
        writeHead(out, name, "ATTRIB", object);
        writeEntityLook(out, attribute);
        out.point(10, attribute->position());
        out.text(1, attribute->textString());
        out.text(2, attribute->tag());
    } else if (auto* layer = OvDbLayerTableRecord::cast(object)) {
        writeHead(out, name, "LAYER", object);
        writeLayerBody(out, layer);
    } else if (auto* linetype = OvDbLinetypeTableRecord::cast(object)) {
        writeHead(out, name, "LTYPE", object);
        writeLinetypeBody(out, linetype);
    } else if (auto* block = OvDbBlockTableRecord::cast(object)) {
        writeHead(out, name, "BLOCK_RECORD", object);
        out.text(2, block->name());
    } else if (auto* dictionary = OvDbDictionary::cast(object)) {
        writeHead(out, name, "DICTIONARY", object);
        std::unique_ptr<OvDbDictionaryIterator> it(dictionary->newIterator());
        for (; !it->done(); it->next()) {
            out.text(3, it->name());
            out.handle(350, it->objectId().handle());
        }
    } else if (auto* xrecord = OvDbXrecord::cast(object)) {
        writeHead(out, name, "XRECORD", object);
        // The marker sets the data apart, so that the list goes back through entmakex.
        out.text(100, QString::fromUtf16(kXrecordMarker));
        resbuf* data = nullptr;
        if (xrecord->rbChain(data) == Orvex::eOk)
            out.append(data);
    } else {
        // Tables and whatever else has no data of its own here: its class, handle, owner.
        writeHead(out, name, object->isA()->name().toLatin1().constData(), object);
    }
}

Chain seqendData(const ov_name name, QString* error) {
    const OvDbObjectId insert = seqendOwner(name);
    Opened<OvDbBlockReference> reference;
    if (insert.isNull() || reference.open(insert, OvDb::kForRead) != Orvex::eOk) {
        *error = QStringLiteral("%1 ends an INSERT that is gone").arg(describeName(name));
        return {};
    }
    ChainWriter out;
    out.name(-1, name);
    out.text(0, QStringLiteral("SEQEND"));
    out.handle(330, insert.handle());
    out.text(8, reference->layer());
    out.name(-2, insert);
    return out.take();
}

// The entity after `id` in its block, live ones only; null at the end.
OvDbObjectId nextInBlock(OvDbObjectId block, OvDbObjectId id) {
    Opened<OvDbBlockTableRecord> record;
    if (record.open(block, OvDb::kForRead, true) != Orvex::eOk)
        return {};
    OvDbBlockTableRecordIterator* raw = nullptr;
    record->newIterator(raw, true, false);
    std::unique_ptr<OvDbBlockTableRecordIterator> it(raw);
    if (id.isNull()) {
        it->start(true, true);
    } else {
        if (it->seek(id) != Orvex::eOk)
            return {};
        it->step(true, true);
    }
    return it->done() ? OvDbObjectId() : it->entityId();
}

// The live attribute after `after` (from the first for null); null when none is left.
OvDbObjectId nextAttribute(OvDbObjectId insert, OvDbObjectId after) {
    Opened<OvDbBlockReference> reference;
    if (reference.open(insert, OvDb::kForRead, true) != Orvex::eOk)
        return {};
    std::unique_ptr<OvDbObjectIterator> it(reference->attributeIterator());
    bool passed = after.isNull();
    for (; !it->done(); it->step()) {
        const OvDbObjectId id = it->objectId();
        if (passed && !id.isErased())
            return id;
        if (id == after)
            passed = true;
    }
    return {};
}

} // namespace

void writeLayerBody(ChainWriter& out, const OvDbLayerTableRecord* layer) {
    out.text(2, layer->name());
    out.int16(70, (layer->isFrozen() ? 1 : 0) | (layer->isLocked() ? 4 : 0));
    // A layer that is off shows its colour negative.
    const int color = layer->color().colorIndex();
    out.int16(62, layer->isOff() ? -color : color);
    out.text(6, recordName(layer->linetypeObjectId()));
    out.int16(370, layer->lineWeight());
}

void writeLinetypeBody(ChainWriter& out, const OvDbLinetypeTableRecord* linetype) {
    out.text(2, linetype->name());
    out.int16(70, 0);
    out.text(3, linetype->comments());
    out.int16(72, 'A');
    out.int16(73, linetype->numDashes());
    out.real(40, linetype->patternLength());
    for (double dash : linetype->dashes())
        out.real(49, dash);
}

OvDbDatabase* workingDatabase(QString* error) {
    OvDbDatabase* db = OvDbHostApplicationServices::getRefPtr()->workingDatabase();
    if (!db && error)
        *error = QStringLiteral("no drawing is open");
    return db;
}

bool idOfName(const ov_name name, OvDbObjectId& id, QString* error) {
    if (isSeqendName(name) || ovdbGetObjectId(id, name) != RTNORM) {
        id = OvDbObjectId();
        if (error)
            *error =
                QStringLiteral("%1 names no object of an open drawing").arg(describeName(name));
        return false;
    }
    return true;
}

bool nameOfId(OvDbObjectId id, ov_name name) {
    return ovdbGetOvName(name, id) == RTNORM;
}

void seqendName(OvDbObjectId insert, ov_name name) {
    nameOfId(insert, name);
    name[1] |= kSeqendFlag;
}

bool isSeqendName(const ov_name name) {
    return (name[1] & kSeqendFlag) != 0;
}

OvDbObjectId seqendOwner(const ov_name name) {
    if (!isSeqendName(name))
        return {};
    const ov_name owner = {name[0], name[1] & ~kSeqendFlag};
    OvDbObjectId id;
    if (ovdbGetObjectId(id, owner) != RTNORM)
        return {};
    const OvRxClass* cls = id.objectClass();
    return cls && cls->isDerivedFrom(OvDbBlockReference::desc()) ? id : OvDbObjectId();
}

QString describeName(const ov_name name) {
    const QString handle =
        OvDbHandle(static_cast<std::uint64_t>(name[1] & ~kSeqendFlag)).toString();
    return isSeqendName(name) ? QStringLiteral("the SEQEND of the INSERT %1").arg(handle)
                              : QStringLiteral("the entity name %1").arg(handle);
}

Chain entityData(const ov_name name, QString* error) {
    if (isSeqendName(name))
        return seqendData(name, error);
    OvDbObjectId id;
    if (!idOfName(name, id, error))
        return {};
    Opened<OvDbObject> object;
    if (const Orvex::ErrorStatus es = object.open(id, OvDb::kForRead, true); es != Orvex::eOk) {
        *error =
            QStringLiteral("%1 cannot be read now (status %2)").arg(describeName(name)).arg(es);
        return {};
    }
    if (object->isErased()) {
        *error = QStringLiteral("%1 is erased").arg(describeName(name));
        return {};
    }
    ChainWriter out;
    writeObject(out, name, object.get());
    Chain data = out.take();
    if (!data)
        *error = QStringLiteral("out of memory");
    return data;
}

bool referencePoint(OvDbObjectId id, OvGePoint3d& point) {
    Opened<OvDbEntity> entity;
    if (entity.open(id, OvDb::kForRead) != Orvex::eOk)
        return false;
    if (auto* line = OvDbLine::cast(entity.get()))
        point = line->startPoint();
    else if (auto* reference = OvDbBlockReference::cast(entity.get()))
        point = reference->position();
    else if (auto* attribute = OvDbAttribute::cast(entity.get()))
        point = attribute->position();
    else
        point = OvGePoint3d();
    return true;
}

bool deleteEntity(const ov_name name, QString* error) {
    if (isSeqendName(name)) {
        *error = QStringLiteral("a SEQEND goes with its INSERT");
        return false;
    }
    OvDbObjectId id;
    if (!idOfName(name, id, error))
        return false;
    Opened<OvDbEntity> entity;
    const Orvex::ErrorStatus es = entity.open(id, OvDb::kForWrite, true);
    if (es == Orvex::eWrongObjectType) {
        *error = QStringLiteral("%1 is not an entity").arg(describeName(name));
        return false;
    }
    if (es != Orvex::eOk) {
        *error =
            QStringLiteral("%1 cannot be changed now (status %2)").arg(describeName(name)).arg(es);
        return false;
    }
    if (OvDbAttribute::cast(entity.get())) {
        *error = QStringLiteral("an ATTRIB goes with its INSERT");
        return false;
    }
    const bool erasing = !entity->isErased();
    if (const Orvex::ErrorStatus done = entity->erase(erasing); done != Orvex::eOk) {
        *error = QStringLiteral("%1 cannot be %2 (status %3)")
                     .arg(describeName(name),
                          erasing ? QStringLiteral("erased") : QStringLiteral("brought back"))
                     .arg(done);
        return false;
    }
    return true;
}

bool lastEntity(ov_name name) {
    OvDbDatabase* db = workingDatabase(nullptr);
    if (!db)
        return false;
    Opened<OvDbBlockTableRecord> space;
    if (space.open(db->modelSpaceId(), OvDb::kForRead) != Orvex::eOk)
        return false;
    OvDbBlockTableRecordIterator* raw = nullptr;
    space->newIterator(raw, false, true);
    std::unique_ptr<OvDbBlockTableRecordIterator> it(raw);
    return !it->done() && nameOfId(it->entityId(), name);
}

bool nextEntity(const ov_name from, ov_name next, QString* error) {
    if (!from) {
        OvDbDatabase* db = workingDatabase(error);
        if (!db)
            return false;
        const OvDbObjectId first = nextInBlock(db->modelSpaceId(), {});
        return !first.isNull() && nameOfId(first, next);
    }
    if (isSeqendName(from)) {
        const OvDbObjectId insert = seqendOwner(from);
        if (insert.isNull()) {
            *error = QStringLiteral("%1 ends an INSERT that is gone").arg(describeName(from));
            return false;
        }
        Opened<OvDbEntity> entity;
        if (entity.open(insert, OvDb::kForRead, true) != Orvex::eOk)
            return false;
        const OvDbObjectId block = entity->blockId();
        entity.reset();
        const OvDbObjectId after = nextInBlock(block, insert);
        return !after.isNull() && nameOfId(after, next);
    }
    OvDbObjectId id;
    if (!idOfName(from, id, error))
        return false;
    Opened<OvDbEntity> entity;
    const Orvex::ErrorStatus es = entity.open(id, OvDb::kForRead, true);
    if (es != Orvex::eOk) {
        *error = es == Orvex::eWrongObjectType
                     ? QStringLiteral("%1 is not an entity").arg(describeName(from))
                     : QStringLiteral("%1 cannot be read now (status %2)")
                           .arg(describeName(from))
                           .arg(es);
        return false;
    }
    const OvDbObjectId owner = entity->ownerId();
    const bool isInsert = OvDbBlockReference::cast(entity.get()) != nullptr;
    const bool isAttribute = OvDbAttribute::cast(entity.get()) != nullptr;
    entity.reset();

    // An INSERT leads into its attributes, and its last attribute to the SEQEND.
    if (isInsert || isAttribute) {
        const OvDbObjectId insert = isInsert ? id : owner;
        const OvDbObjectId attribute = nextAttribute(insert, isInsert ? OvDbObjectId() : id);
        if (!attribute.isNull())
            return nameOfId(attribute, next);
        if (isAttribute) {
            seqendName(insert, next);
            return true;
        }
    }
    const OvDbObjectId after = nextInBlock(owner, id);
    return !after.isNull() && nameOfId(after, next);
}

} // namespace ovcore::cad
