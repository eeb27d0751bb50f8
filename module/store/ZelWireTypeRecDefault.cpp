// The wire type that a drawing always has to fall back on, and the drawing's current wire
// layer record built from it.

#include "store/ZelWireTypeRec.h"

#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbXrecord.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"
#include "platform/Resources.h"

using namespace zelstore;

bool ZelWireTypeRec::GetFirstWireLayer(QString& name) {
    const std::map<int, WireLayerRec*>& records = GetCurDwgWireTypeInfo();
    if (!records.empty()) {
        // The lowest key, whatever its state.
        name = records.begin()->second->layerName;
        return true;
    }

    // Strings load from the caller's resource switch: without one the name is empty and
    // nothing is made.
    std::vector<QString> noNames;
    std::vector<QString> noValues;
    const QString defaultName = platform::loadString(110);
    if (AddNewWireType(0, defaultName, noNames, noValues, QString(), QString(),
                       QString::fromWCharArray(kWire), OvCmColor(), OvDbObjectId(),
                       OvDb::kLnWtByLwDefault, 0, true) != Orvex::eOk)
        return false;
    name = defaultName;
    const QString message = platform::formatText(platform::loadString(155), name);
    ovutPrintf(L"\n%ls", wide(message).c_str());
    return true;
}

bool ZelWireTypeRec::AssignDefaultWireType(resbuf*& chain) {
    QString name;
    if (!GetFirstWireLayer(name) || name.isEmpty())
        return false;
    if (!SetCurWireLayerXrec(name, name, QString(), false))
        return false;

    OvDbDatabase* database = workingDatabase();
    OvDbDictionary* named = nullptr;
    if (!database || database->getNamedObjectsDictionary(named, OvDb::kForRead) != Orvex::eOk ||
        !named) {
        releaseObject(named);
        return false;
    }
    OvDbObjectId id;
    OvDbDictionary* dictionary = nullptr;
    if (named->getAt(kZelWireType, id) == Orvex::eOk)
        ovdbOpenObject(dictionary, id, OvDb::kForRead);
    releaseObject(named);
    OvDbXrecord* record = nullptr;
    if (dictionary && dictionary->getAt(kCurrentWireLay, id) == Orvex::eOk)
        ovdbOpenObject(record, id, OvDb::kForRead);
    releaseObject(dictionary);
    const bool read = record && record->rbChain(chain) == Orvex::eOk && chain;
    releaseObject(record);
    return read;
}

bool ZelWireTypeRec::ResetToDefWireType() {
    resbuf* chain = nullptr;
    if (GetCurWireLayerXrec(chain) == Orvex::eKeyNotFound)
        AssignDefaultWireType(chain);
    if (!chain)
        return true;

    QString defaultLayer;
    QString currentLayer;
    bool makeAllValidWire = false;
    const resbuf* link = chain;
    if (link->restype == 1)
        defaultLayer = rbString(link);
    link = link->rbnext;
    if (link && link->restype == 1)
        currentLayer = rbString(link);
    if (link)
        link = link->rbnext;
    if (link)
        link = link->rbnext;
    if (link && link->restype == 290)
        makeAllValidWire = link->resval.rint != 0;

    OvDbLayerTableRecord* layer = nullptr;
    const bool exists = GetLayerTblRec(defaultLayer, OvDb::kForRead, layer);
    releaseObject(layer);
    if (!exists) {
        QString first;
        if (GetFirstWireLayer(first))
            defaultLayer = first;
    }
    currentLayer = defaultLayer;
    SetCurWireLayerXrec(defaultLayer, currentLayer, QString(), makeAllValidWire);
    ovutRelRb(chain);
    return true;
}
