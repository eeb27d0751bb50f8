// The LISP functions that answer questions about wire types. Apart from the repair of a
// drawing that has no usable current wire type, they change nothing in the drawing.

#include "lisp/ZelLispFunctions.h"

#include "lisp/ZelLispArgs.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/oved.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbXrecord.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"
#include "zeldefun/ZelQvxDatabase.h"

#include <map>
#include <memory>
#include <new>
#include <vector>

using namespace zellisp;

namespace {

std::wstring wide(const QString& text) {
    return text.toStdWString();
}

QString currentDocumentFileName() {
    const OvApDocManager* manager = ovDocManagerPtr();
    const OvApDocument* document = manager ? manager->curDocument() : nullptr;
    return document ? document->fileName() : QString();
}

// The drawing a function works on: the working one for an empty path, else the file read
// into a side database that `side` holds. The add-on keeps a file read in this process
// while it is unchanged on disk, so that a script asking for every layer of a drawing, one
// call a layer, reads the file once. Null when the file cannot be read.
OvDbDatabase* chooseDatabase(const QString& path, std::shared_ptr<OvDbDatabase>& side) {
    if (path.isEmpty())
        return workingDatabase();
    QString error;
    side = ZelQvxDatabase::sharedFileDrawing(path, error);
    return side.get();
}

resbuf* stringLink(const QString& text) {
    return ovutBuildList(RTSTR, wide(text).c_str(), 0);
}

// What a layer listed in WIRELAYS without a record of its own reads as.
ChainPtr defaultWireTypeChain() {
    ChainPtr chain = adoptChain(ovutBuildList(1, L"", 2, L"", 3, L"WIRE", 0));
    resbuf* tail = nullptr;
    for (int i = 0; i < 20; ++i)
        tail = appendChain(chain, tail, ovutBuildList(4, L"", 0));
    appendChain(chain, tail, ovutBuildList(90, 0, 290, 1, 0));
    return chain;
}

// The lineweight in millimetres as the add-on's LISP side has always seen it: the value
// goes through single precision before "%.4g".
QString lineWeightText(short weight) {
    const double millimetres = static_cast<float>(weight / 100.0);
    return QString::asprintf("%.4g", millimetres);
}

} // namespace

int zel_get_current_wiretype() {
    const ResourceOverride resources;
    ZelWireTypeRec store;
    resbuf* raw = nullptr;
    if (store.GetCurWireLayerXrec(raw) == Orvex::eKeyNotFound)
        store.AssignDefaultWireType(raw);
    ChainPtr chain = adoptChain(raw);

    QString currentLayer;
    if (chain) {
        QString defaultLayer;
        readCurrentRecord(chain.get(), defaultLayer, currentLayer);
        if (currentLayer.isEmpty())
            currentLayer = defaultLayer;
        chain.reset();

        // The record goes back before anything else opens the layers again.
        OvDbLayerTableRecord* record = nullptr;
        const bool exists = store.GetLayerTblRec(currentLayer, OvDb::kForRead, record) && record;
        releaseObject(record);
        if (!exists) {
            // The stored layer is gone: the first wire layer takes its place.
            QString first;
            store.GetFirstWireLayer(first);
            if (store.SetCurWireLayerXrec(first, first, QString(), false))
                currentLayer = first;
        }
        if (!store.IsWireLayer(currentLayer)) {
            std::vector<QString> noNames;
            std::vector<QString> noValues;
            store.AddNewWireType(0, currentLayer, noNames, noValues, QString(), QString(),
                                 QStringLiteral("WIRE"), OvCmColor(), OvDbObjectId(),
                                 OvDb::kLnWtByLwDefault, 0, true);
        }
    } else {
        currentLayer = createDefaultWireType(store);
    }

    ZelWireTypeRec::ResetKey();
    ovedRetStr(wide(currentLayer).c_str());
    return 1;
}

int zel_get_default_wiretype() {
    ZelWireTypeRec store;
    resbuf* raw = nullptr;
    if (store.GetCurWireLayerXrec(raw) == Orvex::eKeyNotFound)
        store.AssignDefaultWireType(raw);
    const ChainPtr chain = adoptChain(raw);
    const QString defaultLayer = chain && chain->restype == 1 ? linkText(chain.get()) : QString();
    ovedRetStr(wide(defaultLayer).c_str());
    return 1;
}

int zel_get_wiretype_settings() {
    ZelWireTypeRec store;
    std::vector<QString> names;
    store.GetWireTypeSettings(names, 1);

    // Three lists side by side; the host hands them to LISP as a list of the three.
    ChainPtr chain = adoptChain(nullptr);
    resbuf* tail = appendChain(chain, nullptr, ovutBuildList(RTLB, 0));
    for (const QString& name : names)
        tail = appendChain(chain, tail, stringLink(name));
    tail = appendChain(chain, tail, ovutBuildList(RTLE, RTLB, 0));
    for (std::size_t i = 0; i < names.size(); ++i)
        tail = appendChain(chain, tail, ovutBuildList(RTSHORT, 15, 0));
    tail = appendChain(chain, tail, ovutBuildList(RTLE, RTLB, 0));
    for (std::size_t i = 0; i < names.size(); ++i)
        tail = appendChain(chain, tail, ovutBuildList(RTSTR, L"L", 0));
    appendChain(chain, tail, ovutBuildList(RTLE, 0));

    ovedRetList(chain.get());
    ZelWireTypeRec::ResetKey();
    return 1;
}

int zel_query_wiretype() {
    const resbuf* args = ovedGetArgs();
    const QString drawingIndex = lispString(args);
    const QString layerName = lispString(args ? args->rbnext : nullptr);

    ZelWireTypeRec store;
    std::vector<QString> values;
    store.QueryWireType(drawingIndex, layerName, values, 1);
    if (values.empty())
        return 1;

    ChainPtr chain = adoptChain(nullptr);
    resbuf* tail = nullptr;
    for (const QString& value : values)
        tail = appendChain(chain, tail, stringLink(value));
    ovedRetList(chain.get());
    ZelWireTypeRec::ResetKey();
    return 1;
}

int zel_get_active_dwg_wiretype() {
    const QString path = lispString(ovedGetArgs());
    ZelWireTypeRec store;
    std::shared_ptr<OvDbDatabase> side;
    OvDbDatabase* database = chooseDatabase(path, side);
    if (!database)
        return 1;
    const QString drawingName = path.isEmpty() ? currentDocumentFileName() : path;

    std::map<int, WireLayerRec*> records;
    store.GetDwgWireTypeInfo(drawingName, database, records);
    ChainPtr chain = adoptChain(ovutBuildList(RTLB, 0));
    resbuf* tail = nullptr;
    for (const auto& entry : records) {
        if (entry.second)
            tail = appendChain(chain, tail, stringLink(entry.second->layerName));
    }
    appendChain(chain, tail, ovutBuildList(RTLE, 0));
    // The records are ours, and their linetype ids die with the side database.
    for (auto& entry : records)
        delete entry.second;
    records.clear();
    side.reset();

    ovedRetList(chain.get());
    ZelWireTypeRec::ResetKey();
    return 1;
}

int zel_get_dwg_wiretype_settings() {
    const ResourceOverride resources;
    const resbuf* args = ovedGetArgs();
    const QString layerName = lispString(args);
    const QString path = lispString(args ? args->rbnext : nullptr);

    ZelWireTypeRec store;
    std::shared_ptr<OvDbDatabase> side;
    OvDbDatabase* database = chooseDatabase(path, side);
    if (!database)
        return 1;

    // Walked by hand rather than through the store, so that a layer of any drawing answers
    // with its record exactly as stored.
    OvDbLayerTable* table = nullptr;
    OvDbLayerTableRecord* layer = nullptr;
    OvDbDictionary* dictionary = nullptr;
    OvDbXrecord* xrecord = nullptr;
    OvDbObjectId layerId;
    OvDbObjectId recordId;
    if (database->getLayerTable(table, OvDb::kForRead) == Orvex::eOk && table &&
        table->getIdAt(layerName, layerId) == Orvex::eOk &&
        ovdbOpenObject(layer, layerId, OvDb::kForRead) == Orvex::eOk) {
        const bool hasRecord = ovdbOpenObject(dictionary, layer->extensionDictionary(),
                                              OvDb::kForRead) == Orvex::eOk &&
                               dictionary->getAt(L"ZEL_WIRETYPE", recordId) == Orvex::eOk;
        if (hasRecord) {
            resbuf* raw = nullptr;
            if (ovdbOpenObject(xrecord, recordId, OvDb::kForRead) == Orvex::eOk &&
                xrecord->rbChain(raw) == Orvex::eOk) {
                const ChainPtr chain = adoptChain(raw);
                ovedRetList(chain.get());
            }
        } else {
            const bool listed = database == workingDatabase()
                                    ? store.IsInWd_m(layerName)
                                    : store.IsInOtherDrawingWd_m(layerName, database);
            if (listed) {
                const ChainPtr chain = defaultWireTypeChain();
                ovedRetList(chain.get());
            }
        }
    }
    releaseObject(xrecord);
    releaseObject(dictionary);
    releaseObject(layer);
    releaseObject(table);
    side.reset();
    return 1;
}

int zel_get_wiretype_layer_info() {
    const resbuf* args = ovedGetArgs();
    const QString path = lispString(args);
    const QString layerName = lispString(args ? args->rbnext : nullptr);
    if (layerName.isEmpty())
        return 1;

    ZelWireTypeRec store;
    short colorIndex = 0;
    QString linetypeName;
    short lineWeight = 0;
    if (store.GetWireTypeLayerInfo(path, layerName, colorIndex, linetypeName, lineWeight)) {
        ChainPtr chain = adoptChain(stringLink(QString::number(colorIndex)));
        resbuf* tail = appendChain(chain, nullptr, stringLink(linetypeName));
        appendChain(chain, tail, stringLink(lineWeightText(lineWeight)));
        ovedRetList(chain.get());
    } else {
        ovedRetList(nullptr);
    }
    ZelWireTypeRec::ResetKey();
    return 1;
}
