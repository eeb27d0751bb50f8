// The persistent form: the wire type record in each wire layer's extension dictionary and
// the drawing's current wire layer record.

#include "store/ZelWireTypeRec.h"

#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableIterator.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbXrecord.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"

#include <new>

using namespace zelstore;

namespace {

enum class XrecWrite {
    Written,
    // setFromRbChain refused the chain.
    NotWritten,
    // A converted layer without a dictionary: nothing to clear.
    Skipped,
    // The extension dictionary would not open.
    NoDictionary,
    // A new record could not be made or added.
    NoRecord,
};

// Appends `links` at the end of the chain that ends in `tail`, and moves `tail` to the new
// end. A link that could not be built is left out and the chain closes up.
void appendLinks(resbuf*& tail, resbuf* links) {
    if (!links)
        return;
    tail->rbnext = links;
    while (tail->rbnext)
        tail = tail->rbnext;
}

resbuf* buildWireTypeChain(const WireLayerRec* rec) {
    resbuf* head = ovutBuildList(1, wide(rec->wireColor).c_str(), 2, wide(rec->wireSize).c_str(), 3,
                                 wide(rec->wireKind).c_str(), 0);
    if (!head)
        return nullptr;
    resbuf* tail = head;
    while (tail->rbnext)
        tail = tail->rbnext;
    for (const QString& value : rec->userValues)
        appendLinks(tail, ovutBuildList(4, wide(value).c_str(), 0));
    appendLinks(tail, ovutBuildList(90, rec->gridRow, 0));
    appendLinks(tail, ovutBuildList(290, rec->wireFlag ? 1 : 0, 0));
    return head;
}

// Gives an open layer the record's look and writes its wire type record.
XrecWrite writeWireTypeXrec(OvDbLayerTableRecord* layer, const WireLayerRec* rec) {
    if (!layer->extensionDictionary().isValid()) {
        // A converted layer is not given a dictionary merely to be cleared.
        if (rec->editState == 6)
            return XrecWrite::Skipped;
        layer->createExtensionDictionary();
    }

    OvDbDictionary* dictionary = nullptr;
    if (ovdbOpenObject(dictionary, layer->extensionDictionary(), OvDb::kForWrite) != Orvex::eOk ||
        !dictionary) {
        releaseObject(dictionary);
        return XrecWrite::NoDictionary;
    }

    OvDbXrecord* record = nullptr;
    OvDbObjectId recordId;
    if (dictionary->getAt(kZelWireType, recordId) == Orvex::eOk) {
        if (ovdbOpenObject(record, recordId, OvDb::kForWrite) != Orvex::eOk)
            record = nullptr;
    } else {
        record = new (std::nothrow) OvDbXrecord;
        if (record && dictionary->setAt(kZelWireType, record, recordId) != Orvex::eOk)
            releaseObject(record);
    }
    if (!record) {
        releaseObject(dictionary);
        return XrecWrite::NoRecord;
    }

    if (layer->color() != rec->color)
        layer->setColor(rec->color);
    if (layer->linetypeObjectId() != rec->linetypeId)
        layer->setLinetypeObjectId(rec->linetypeId);
    if (layer->lineWeight() != rec->lineWeight)
        layer->setLineWeight(rec->lineWeight);

    resbuf* chain = buildWireTypeChain(rec);
    const bool written = chain && record->setFromRbChain(chain) == Orvex::eOk;
    ovutRelRb(chain);
    releaseObject(dictionary);
    releaseObject(record);
    return written ? XrecWrite::Written : XrecWrite::NotWritten;
}

// The first three strings of a current wire layer record, each only where it has group 1.
void readCurrentRecord(const resbuf* chain, QString& defaultLayer, QString& currentLayer,
                       QString& format) {
    QString* targets[] = {&defaultLayer, &currentLayer, &format};
    const resbuf* link = chain;
    for (QString* target : targets) {
        if (!link)
            break;
        if (link->restype == 1)
            *target = rbString(link);
        link = link->rbnext;
    }
}

} // namespace

bool ZelWireTypeRec::SetWireTypeXrec(WireLayerRec* rec) {
    if (!rec)
        return false;
    OvDbLayerTableRecord* layer = nullptr;
    if (!GetLayerTblRec(rec->layerName, OvDb::kForWrite, layer) || !layer) {
        releaseObject(layer);
        return false;
    }
    if (!workingDatabase()) {
        releaseObject(layer);
        return false;
    }
    const XrecWrite outcome = writeWireTypeXrec(layer, rec);
    releaseObject(layer);
    return outcome == XrecWrite::Written || outcome == XrecWrite::Skipped;
}

bool ZelWireTypeRec::SetWireTypeXrec() {
    OvDbDatabase* database = workingDatabase();
    if (!database)
        return false;
    OvDbLayerTable* table = nullptr;
    if (database->getSymbolTable(table, OvDb::kForWrite) != Orvex::eOk || !table) {
        releaseObject(table);
        return false;
    }
    OvDbLayerTableIterator* iterator = nullptr;
    table->newIterator(iterator, true, true);
    releaseObject(table);
    if (!iterator)
        return false;

    bool result = true;
    for (; !iterator->done(); iterator->step()) {
        OvDbLayerTableRecord* layer = nullptr;
        if (iterator->getRecord(layer, OvDb::kForWrite) != Orvex::eOk || !layer)
            continue;
        const QString name = layer->name();
        const WireLayerRec* rec = nullptr;
        for (const auto& entry : m_wireLayers) {
            if (entry.second->editState != 2 &&
                entry.second->layerName.compare(name, Qt::CaseInsensitive) == 0) {
                rec = entry.second;
                break;
            }
        }
        if (rec && writeWireTypeXrec(layer, rec) == XrecWrite::NoRecord)
            result = false;
        releaseObject(layer);
    }
    delete iterator;
    return result;
}

bool ZelWireTypeRec::RemoveWireTypeXrec(QString layerName) {
    OvDbLayerTableRecord* layer = nullptr;
    if (!GetLayerTblRec(layerName, OvDb::kForWrite, layer) || !layer) {
        releaseObject(layer);
        return false;
    }
    OvDbDictionary* dictionary = nullptr;
    if (ovdbOpenObject(dictionary, layer->extensionDictionary(), OvDb::kForRead, true) ==
            Orvex::eOk &&
        dictionary) {
        OvDbObjectId recordId;
        if (dictionary->getAt(kZelWireType, recordId) == Orvex::eOk) {
            OvDbObject* record = nullptr;
            if (ovdbOpenObject(record, recordId, OvDb::kForWrite) == Orvex::eOk && record)
                record->erase();
            releaseObject(record);
        }
    }
    // The dictionary stays, empty: AddNewLayer revives or reuses it.
    releaseObject(dictionary);
    releaseObject(layer);
    return true;
}

bool ZelWireTypeRec::SetCurWireLayerXrec(QString defaultLayer, QString currentLayer,
                                         QString layerNameFormat, bool makeAllValidWire) {
    OvDbDatabase* database = workingDatabase();
    if (!database)
        return false;
    OvDbDictionary* named = nullptr;
    if (database->getNamedObjectsDictionary(named, OvDb::kForWrite) != Orvex::eOk || !named) {
        releaseObject(named);
        return false;
    }

    OvDbDictionary* dictionary = nullptr;
    OvDbObjectId dictionaryId;
    if (named->getAt(kZelWireType, dictionaryId) == Orvex::eOk &&
        ovdbOpenObject(dictionary, dictionaryId, OvDb::kForWrite) != Orvex::eOk)
        dictionary = nullptr;
    if (!dictionary) {
        dictionary = new (std::nothrow) OvDbDictionary;
        if (!dictionary || named->setAt(kZelWireType, dictionary, dictionaryId) != Orvex::eOk) {
            releaseObject(dictionary);
            releaseObject(named);
            return false;
        }
    }
    releaseObject(named);

    QString oldDefault;
    QString oldCurrent;
    QString oldFormat;
    OvDbXrecord* record = nullptr;
    OvDbObjectId recordId;
    if (dictionary->getAt(kCurrentWireLay, recordId) == Orvex::eOk) {
        if (ovdbOpenObject(record, recordId, OvDb::kForWrite) != Orvex::eOk || !record) {
            releaseObject(record);
            releaseObject(dictionary);
            return false;
        }
        resbuf* stored = nullptr;
        record->rbChain(stored);
        readCurrentRecord(stored, oldDefault, oldCurrent, oldFormat);
        ovutRelRb(stored);
    } else {
        record = new (std::nothrow) OvDbXrecord;
        if (!record || dictionary->setAt(kCurrentWireLay, record, recordId) != Orvex::eOk) {
            releaseObject(record);
            releaseObject(dictionary);
            return false;
        }
    }

    if (defaultLayer.isEmpty() && !oldDefault.isEmpty())
        defaultLayer = oldDefault;
    // The test looks at the stored current layer, the value comes from the stored default
    // layer: a call that leaves the current layer open moves it to the default layer.
    if (currentLayer.isEmpty() && !oldCurrent.isEmpty())
        currentLayer = oldDefault;
    if (layerNameFormat.isEmpty() && !oldFormat.isEmpty())
        layerNameFormat = oldFormat;

    resbuf* chain = ovutBuildList(1, wide(defaultLayer).c_str(), 1, wide(currentLayer).c_str(), 1,
                                  wide(layerNameFormat).c_str(), 290, makeAllValidWire ? 1 : 0, 0);
    const bool written = chain && record->setFromRbChain(chain) == Orvex::eOk;
    ovutRelRb(chain);
    releaseObject(dictionary);
    releaseObject(record);
    return written;
}

Orvex::ErrorStatus ZelWireTypeRec::GetCurWireLayerXrec(resbuf*& chain) {
    OvDbDatabase* database = workingDatabase();
    OvDbDictionary* named = nullptr;
    if (!database || database->getNamedObjectsDictionary(named, OvDb::kForRead) != Orvex::eOk ||
        !named) {
        releaseObject(named);
        return Orvex::eWireTypeNotApplied;
    }

    OvDbObjectId dictionaryId;
    OvDbDictionary* dictionary = nullptr;
    Orvex::ErrorStatus es = named->getAt(kZelWireType, dictionaryId);
    if (es == Orvex::eOk)
        es = ovdbOpenObject(dictionary, dictionaryId, OvDb::kForRead);
    releaseObject(named);
    if (es != Orvex::eOk || !dictionary) {
        releaseObject(dictionary);
        return es != Orvex::eOk ? es : Orvex::eWireTypeNotApplied;
    }

    OvDbObjectId recordId;
    OvDbXrecord* record = nullptr;
    if (dictionary->getAt(kCurrentWireLay, recordId) != Orvex::eOk ||
        ovdbOpenObject(record, recordId, OvDb::kForRead) != Orvex::eOk || !record) {
        releaseObject(record);
        releaseObject(dictionary);
        return Orvex::eWireTypeNotApplied;
    }
    releaseObject(dictionary);
    record->rbChain(chain);
    releaseObject(record);
    return Orvex::eOk;
}

bool ZelWireTypeRec::IsMakeAllValidWire() {
    resbuf* chain = nullptr;
    GetCurWireLayerXrec(chain);
    if (!chain)
        return false;
    const resbuf* link = chain;
    for (int step = 0; step < 3 && link; ++step)
        link = link->rbnext;
    const bool all = link && link->restype == 290 && link->resval.rint != 0;
    ovutRelRb(chain);
    return all;
}
