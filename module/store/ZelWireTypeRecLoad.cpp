// How the store learns what wire types exist: the walk over a drawing's layers, and the
// wire type data of the project database.

#include "store/ZelWireTypeRec.h"

#include "shell/ResourceOverride.h"
#include "shell/ZelHostServices.h"
#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbDictionaryIterator.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableIterator.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbXrecord.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"
#include "zeloledb/ZelOleDbCommand.h"

#include <QSet>

#include <cstdint>
#include <new>

using namespace zelstore;

namespace {

// Reads a wire type record. The reading is positional and tolerant, and deliberately not
// the mirror of the writer: the row and the flag are read only after 20 user values, so a
// record written with fewer reads back with row 0 and flag true.
void parseWireTypeChain(const resbuf* link, WireLayerRec* rec) {
    if (link) {
        if (link->restype == 1)
            rec->wireColor = rbString(link);
        link = link->rbnext;
    }
    if (link) {
        if (link->restype == 2)
            rec->wireSize = rbString(link);
        link = link->rbnext;
        if (link) {
            if (link->restype == 3)
                rec->wireKind = rbString(link);
            if (rec->wireKind.isEmpty())
                rec->wireKind = QString::fromWCharArray(kWire);
            link = link->rbnext;
        }
    }

    rec->userValues.assign(kUserPropertyCount, QString());
    for (std::size_t i = 0; i < kUserPropertyCount && link; ++i, link = link->rbnext) {
        if (link->restype == 4)
            rec->userValues.at(i) = rbString(link);
    }

    rec->gridRow = 0;
    // Rows above 32767 do not survive: the group is read as 16 bits.
    if (link && link->restype == 90)
        rec->gridRow = static_cast<std::int16_t>(static_cast<std::uint16_t>(link->resval.rlong));
    rec->wireFlag = true;
    if (link && link->rbnext && link->rbnext->restype == 290)
        rec->wireFlag = link->rbnext->resval.rint != 0;
}

void fillFromLayer(WireLayerRec* rec, const QString& name, const OvDbLayerTableRecord* layer) {
    rec->layerName = name;
    rec->color = layer->color();
    rec->linetypeId = layer->linetypeObjectId();
    rec->lineWeight = layer->lineWeight();
    rec->inUseMark = layer->isInUse() ? QStringLiteral("X") : QString();
}

} // namespace

const std::map<int, WireLayerRec*>& ZelWireTypeRec::GetCurDwgWireTypeInfo() {
    if (!m_wireLayers.empty())
        return m_wireLayers;
    const QString fileName = currentDocumentFileName();
    if (OvDbDatabase* database = workingDatabase())
        GetDwgWireTypeInfo(fileName, database, m_wireLayers);
    return m_wireLayers;
}

bool ZelWireTypeRec::IsWireLayer(QString name) {
    for (const auto& entry : GetCurDwgWireTypeInfo()) {
        if (isLive(entry.second) && entry.second->layerName.compare(name, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

bool ZelWireTypeRec::GetDwgWireTypeInfo(QString drawingName, OvDbDatabase* database,
                                        std::map<int, WireLayerRec*>& records) {
    Q_UNUSED(drawingName); // the database is what counts
    const ResourceOverride resources;
    m_nonWireLayers.clear();
    if (!database)
        return false;

    OvDbLayerTable* table = nullptr;
    if (database->getSymbolTable(table, OvDb::kForRead) != Orvex::eOk || !table) {
        releaseObject(table);
        return false;
    }
    if (m_bGenerateUsageData)
        table->generateUsageData();
    OvDbLayerTableIterator* iterator = nullptr;
    table->newIterator(iterator, true, true);
    releaseObject(table);
    if (!iterator)
        return false;

    const bool working = database == workingDatabase();
    // The names `records` holds, case-folded, so that asking whether it holds a layer
    // costs no walk over the map; every record put in below is added.
    QSet<QString> heldNames;
    for (const auto& entry : records) {
        if (entry.second)
            heldNames.insert(entry.second->layerName.toCaseFolded());
    }
    const auto take = [&](WireLayerRec* rec) {
        heldNames.insert(rec->layerName.toCaseFolded());
        InsertRecord(0, rec, records);
    };
    // Never cleared within a call: once a layer is found already held, no further layer
    // is taken in. A call with an empty map is not affected.
    bool alreadyHeld = false;
    for (; !iterator->done(); iterator->step()) {
        OvDbLayerTableRecord* layer = nullptr;
        if (iterator->getRecord(layer, OvDb::kForRead) != Orvex::eOk || !layer)
            continue;
        const QString name = layer->name();

        // A name that no wire type may have (an external reference's layer among them)
        // is neither a wire layer nor a non-wire layer.
        if (hasInvalidLayerChar(name)) {
            releaseObject(layer);
            continue;
        }
        const bool held = heldNames.contains(name.toCaseFolded());
        if (held)
            alreadyHeld = true;
        if (held || alreadyHeld) {
            releaseObject(layer);
            continue;
        }

        OvDbDictionary* dictionary = nullptr;
        if (ovdbOpenObject(dictionary, layer->extensionDictionary(), OvDb::kForRead, true) !=
                Orvex::eOk ||
            !dictionary || !dictionary->has(kZelWireType)) {
            releaseObject(dictionary);
            // Classification by the drawing's wire layer list.
            WireLayerRec probe;
            fillFromLayer(&probe, name, layer);
            releaseObject(layer);
            const bool listed = working ? IsInWd_m(name) : IsInOtherDrawingWd_m(name, database);
            if (!listed) {
                m_nonWireLayers.push_back(name);
                continue;
            }
            WireLayerRec* rec = new (std::nothrow) WireLayerRec(probe);
            if (!rec)
                break;
            rec->wireKind = QString::fromWCharArray(kWire);
            rec->editState = 0;
            rec->gridRow = 0;
            rec->wireFlag = true;
            take(rec);
            continue;
        }
        if (dictionary->isErased()) {
            releaseObject(dictionary);
            releaseObject(layer);
            continue;
        }

        WireLayerRec* rec = nullptr;
        bool exhausted = false;
        OvDbDictionaryIterator* entries = dictionary->newIterator();
        for (; entries && !entries->done() && !rec && !exhausted; entries->next()) {
            if (entries->name().compare(QString::fromWCharArray(kZelWireType),
                                        Qt::CaseInsensitive) != 0)
                continue;
            OvDbObject* object = nullptr;
            if (entries->getObject(object, OvDb::kForRead) != Orvex::eOk || !object)
                continue;
            if (object->isKindOf(OvDbXrecord::desc())) {
                resbuf* chain = nullptr;
                static_cast<OvDbXrecord*>(object)->rbChain(chain);
                rec = new (std::nothrow) WireLayerRec;
                if (rec) {
                    fillFromLayer(rec, name, layer);
                    parseWireTypeChain(chain, rec);
                    rec->editState = 0;
                    rec->nameFormatMask = 255;
                } else {
                    exhausted = true;
                }
                ovutRelRb(chain);
            }
            releaseObject(object);
        }
        delete entries;
        releaseObject(dictionary);
        releaseObject(layer);
        if (rec)
            take(rec);
    }
    delete iterator;
    return true;
}

namespace {

// A statement stopped while its rows were read (it ran out of time) is said at the command
// line, as one that could not run at all is; the rows read before it stopped stay.
void reportFetchFailure(ZelOleDbCommand& command) {
    if (command.GetErrorStatement().isEmpty())
        return;
    ovutPrintf(L"\n; project database: %ls\n%ls\n", wide(command.GetErrorInfo(false)).c_str(),
               wide(command.GetErrorStatement()).c_str());
}

} // namespace

bool ZelWireTypeRec::QueryWireType(QString drawingIndex, QString layerName,
                                   std::vector<QString>& result, int) {
    // Both values go into the statements as they are.
    ZelOleDbCommand wireType;
    if (!ExecuteProjectQuery(formatStatement(kSqlWireType, drawingIndex, layerName), wireType) ||
        wireType.GetColumnCount() == 0)
        return false;
    result.resize(kWireTypeSettingsCount);
    if (wireType.FetchNext() == ZelOleDbCommand::FetchRow) {
        const int columns = wireType.GetColumnCount();
        for (int column = 1; column <= columns; ++column)
            result.at(column - 1) =
                wireType.IsNull(column) ? QString() : wireType.FieldAsString(column);
    }

    ZelOleDbCommand userValues;
    if (!ExecuteProjectQuery(formatStatement(kSqlWireTypeUser, drawingIndex, layerName),
                             userValues))
        return false;
    if (userValues.GetColumnCount() == 0)
        return true;
    while (userValues.FetchNext() == ZelOleDbCommand::FetchRow) {
        const long user = userValues.IsNull(1) ? 0 : userValues.FieldAsLong(1);
        const QString value = userValues.IsNull(2) ? QString() : userValues.FieldAsString(2);
        // USER n is position n + 1; a number outside 0 to 21 falls outside the result.
        // The row was written by another program: whoever reads the damage that follows
        // (a wire size overwritten, or the call failing) is told which row caused it.
        if (user < 1 || user > static_cast<long>(kUserPropertyCount))
            ovutPrintf(L"\n; project database: wire type \"%ls\" of drawing %ls has user "
                       L"property number %ld in WIRETYPE_USR, which is not one from 1 to %d\n",
                       wide(layerName).c_str(), wide(drawingIndex).c_str(), user,
                       static_cast<int>(kUserPropertyCount));
        result.at(static_cast<std::size_t>(user + 1)) = value;
    }
    reportFetchFailure(userValues);

    ZelOleDbCommand flag;
    if (!ExecuteProjectQuery(formatStatement(kSqlWireTypeFlag, drawingIndex, layerName), flag))
        return false;
    const int flagColumns = flag.GetColumnCount();
    if (flagColumns == 0)
        return true;
    while (flag.FetchNext() == ZelOleDbCommand::FetchRow) {
        for (int column = 1; column <= flagColumns; ++column)
            result.at(kWireTypeSettingsCount - 1) =
                flag.IsNull(column) ? QString() : flag.FieldAsString(column);
    }
    reportFetchFailure(flag);
    return true;
}
