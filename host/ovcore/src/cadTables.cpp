// tblsearch and tblnext over the layer, linetype and block tables.
#include "cadChain.h"
#include "cadDrawing.h"

#include "ovdb/ovdb.h"

#include <map>
#include <memory>
#include <utility>

namespace ovcore::cad {

namespace {

// Where tblnext stands in each table of each drawing: the handle it gave last. Handles
// rather than ids, so that a position outliving its drawing is never followed.
std::map<std::pair<std::int64_t, int>, std::uint64_t> s_positions;

void forgetClosedDrawings() {
    for (auto it = s_positions.begin(); it != s_positions.end();) {
        if (ovdbDatabaseOfSession(it->first.first))
            ++it;
        else
            it = s_positions.erase(it);
    }
}

std::pair<std::int64_t, int> positionKey(OvDbDatabase* db, Table table) {
    return {db->sessionNumber(), static_cast<int>(table)};
}

bool tableOf(const QString& name, Table& table, QString* error) {
    const QString upper = name.toUpper();
    if (upper == u"LAYER")
        table = Table::Layer;
    else if (upper == u"LTYPE")
        table = Table::Linetype;
    else if (upper == u"BLOCK")
        table = Table::Block;
    else {
        *error = QStringLiteral("there is no table %1 (the tables are LAYER, LTYPE and BLOCK)")
                     .arg(quotedText(name));
        return false;
    }
    return true;
}

// The spaces are the drawing itself, not blocks that a table walk shows.
bool isSpace(OvDbDatabase* db, OvDbObjectId id) {
    return id == db->modelSpaceId() || id == db->paperSpaceId();
}

Chain recordData(OvDbObjectId id, QString* error) {
    Opened<OvDbSymbolTableRecord> record;
    if (const Orvex::ErrorStatus es = record.open(id, OvDb::kForRead); es != Orvex::eOk) {
        *error = QStringLiteral("a table record cannot be read now (status %1)").arg(es);
        return {};
    }
    ChainWriter out;
    if (auto* layer = OvDbLayerTableRecord::cast(record.get())) {
        out.text(0, QStringLiteral("LAYER"));
        writeLayerBody(out, layer);
    } else if (auto* linetype = OvDbLinetypeTableRecord::cast(record.get())) {
        out.text(0, QStringLiteral("LTYPE"));
        writeLinetypeBody(out, linetype);
    } else if (auto* block = OvDbBlockTableRecord::cast(record.get())) {
        out.text(0, QStringLiteral("BLOCK"));
        out.text(2, block->name());
        out.int16(70, 0);
        out.point(10, OvGePoint3d());
        OvDbBlockTableRecordIterator* raw = nullptr;
        block->newIterator(raw, true, true);
        std::unique_ptr<OvDbBlockTableRecordIterator> it(raw);
        if (!it->done())
            out.name(-2, it->entityId());
    }
    Chain data = out.take();
    if (!data)
        *error = QStringLiteral("out of memory");
    return data;
}

} // namespace

Chain tableSearch(const QString& tableName, const QString& name, bool setNext, QString* error) {
    Table table;
    if (!tableOf(tableName, table, error))
        return {};
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return {};
    const OvDbObjectId id = findRecord(db, table, name);
    if (id.isNull() || (table == Table::Block && isSpace(db, id)))
        return {};
    forgetClosedDrawings();
    if (setNext)
        s_positions[positionKey(db, table)] = id.handle().value();
    return recordData(id, error);
}

Chain tableNext(const QString& tableName, bool rewind, QString* error) {
    Table table;
    if (!tableOf(tableName, table, error))
        return {};
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return {};
    forgetClosedDrawings();
    Opened<OvDbSymbolTable> records;
    if (const Orvex::ErrorStatus es = records.open(tableId(db, table), OvDb::kForRead);
        es != Orvex::eOk) {
        *error = QStringLiteral("the table cannot be read now (status %1)").arg(es);
        return {};
    }
    OvDbSymbolTableIterator* raw = nullptr;
    records->newIterator(raw, true, true);
    std::unique_ptr<OvDbSymbolTableIterator> it(raw);
    records.reset();

    const auto key = positionKey(db, table);
    const auto position = s_positions.find(key);
    OvDbObjectId last;
    if (!rewind && position != s_positions.end())
        db->getOvDbObjectId(last, false, OvDbHandle(position->second));
    // From the record given last; from the start when there is none (or it is gone).
    if (!last.isNull() && it->seek(last) == Orvex::eOk)
        it->step(true, true);
    else
        it->start(true, true);
    while (!it->done() && table == Table::Block && isSpace(db, it->recordId()))
        it->step(true, true);
    if (it->done())
        return {};
    const OvDbObjectId id = it->recordId();
    s_positions[key] = id.handle().value();
    return recordData(id, error);
}

bool tableObjectName(const QString& tableName, const QString& name, ov_name result,
                     QString* error) {
    Table table;
    if (!tableOf(tableName, table, error))
        return false;
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return false;
    const OvDbObjectId id = findRecord(db, table, name);
    return !id.isNull() && !(table == Table::Block && isSpace(db, id)) && nameOfId(id, result);
}

QStringList layerNames(QString* error) {
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return {};
    Opened<OvDbLayerTable> table;
    if (const Orvex::ErrorStatus es = db->getLayerTable(table.slot(), OvDb::kForRead);
        es != Orvex::eOk) {
        *error = QStringLiteral("the layer table cannot be read now (status %1)").arg(es);
        return {};
    }
    OvDbSymbolTableIterator* raw = nullptr;
    table->OvDbSymbolTable::newIterator(raw, true, true);
    std::unique_ptr<OvDbSymbolTableIterator> it(raw);
    table.reset();
    QStringList names;
    for (; !it->done(); it->step(true, true)) {
        Opened<OvDbSymbolTableRecord> record;
        if (record.open(it->recordId(), OvDb::kForRead) == Orvex::eOk)
            names << record->name();
    }
    return names;
}

} // namespace ovcore::cad
