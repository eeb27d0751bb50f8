// The bridge to the layer table, and the list of layers that are not wire layers.

#include "store/ZelWireTypeRec.h"

#include "shell/ResourceOverride.h"
#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableIterator.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/ovdbOpenObject.h"
#include "platform/MessageBox.h"

#include <algorithm>
#include <new>

using namespace zelstore;

namespace {

QString fromWide(const wchar_t* text) {
    return text ? QString::fromWCharArray(text) : QString();
}

} // namespace

bool ZelWireTypeRec::GetLayerTblRec(QString name, OvDb::OpenMode mode,
                                    OvDbLayerTableRecord*& record) {
    record = nullptr;
    OvDbDatabase* database = workingDatabase();
    if (!database)
        return false;
    OvDbLayerTable* table = nullptr;
    if (database->getSymbolTable(table, mode) != Orvex::eOk || !table) {
        releaseObject(table);
        return false;
    }
    OvDbLayerTableIterator* iterator = nullptr;
    table->newIterator(iterator, true, true);
    releaseObject(table);
    if (!iterator)
        return false;

    // A walk rather than the table's look-up, so that erased layers are passed over and
    // the name compares without regard to case.
    bool found = false;
    for (; !iterator->done(); iterator->step()) {
        releaseObject(record);
        if (iterator->getRecord(record, mode) != Orvex::eOk || !record) {
            record = nullptr;
            continue;
        }
        QString recordName;
        record->getName(recordName);
        if (sameName(recordName, name)) {
            found = true;
            break;
        }
    }
    // Without a match the last layer visited is still open: the caller closes it.
    delete iterator;
    return found;
}

bool ZelWireTypeRec::GetLayerInfo(QString name, OvDbDatabase* database, OvCmColor& color,
                                  OvDbObjectId& linetype, OvDb::LineWeight& lineWeight,
                                  bool& inUse) {
    if (!database)
        return false;
    OvDbLayerTable* table = nullptr;
    if (database->getSymbolTable(table, OvDb::kForRead) != Orvex::eOk || !table) {
        releaseObject(table);
        return false;
    }
    if (m_bGenerateUsageData)
        table->generateUsageData();

    bool found = false;
    OvDbObjectId id;
    OvDbLayerTableRecord* layer = nullptr;
    if (table->getIdAt(name, id, false) == Orvex::eOk &&
        ovdbOpenObject(layer, id, OvDb::kForRead) == Orvex::eOk && layer) {
        color = layer->color();
        linetype = layer->linetypeObjectId();
        lineWeight = layer->lineWeight();
        inUse = layer->isInUse();
        found = true;
    }
    releaseObject(table);
    releaseObject(layer);
    return found;
}

Orvex::ErrorStatus ZelWireTypeRec::AddNewLayer(WireLayerRec* rec) {
    if (!rec)
        return Orvex::eInvalidInput;
    OvDbDatabase* database = workingDatabase();
    if (!database)
        return Orvex::eNoDatabase;

    OvDbLayerTable* table = nullptr;
    Orvex::ErrorStatus es = database->getSymbolTable(table, OvDb::kForWrite);
    if (es != Orvex::eOk || !table) {
        releaseObject(table);
        return es;
    }

    if (!table->has(rec->layerName)) {
        OvDbLayerTableRecord* layer = new (std::nothrow) OvDbLayerTableRecord;
        if (!layer) {
            releaseObject(table);
            return Orvex::eOutOfMemory;
        }
        es = layer->setName(rec->layerName);
        if (es != Orvex::eOk) {
            delete layer;
            releaseObject(table);
            return es == Orvex::eInvalidInput ? Orvex::eInvalidLayerName : es;
        }
        layer->setLinetypeObjectId(rec->linetypeId.isNull() ? database->continuousLinetype()
                                                            : rec->linetypeId);
        layer->setLineWeight(rec->lineWeight);
        layer->setColor(rec->color);
        es = table->add(layer);
        if (es == Orvex::eOk)
            layer->close();
        else
            delete layer;
        releaseObject(table);
        return es;
    }

    // An ordinary layer becomes a wire layer and keeps its entities; SetWireTypeXrec gives
    // it the record's look afterwards.
    releaseObject(table);
    const auto listed =
        std::find_if(m_nonWireLayers.begin(), m_nonWireLayers.end(), [&](const QString& other) {
            return other.compare(rec->layerName, Qt::CaseInsensitive) == 0;
        });
    if (listed != m_nonWireLayers.end())
        m_nonWireLayers.erase(listed);

    OvDbLayerTableRecord* layer = nullptr;
    if (GetLayerTblRec(rec->layerName, OvDb::kForWrite, layer) && layer) {
        OvDbDictionary* dictionary = nullptr;
        if (ovdbOpenObject(dictionary, layer->extensionDictionary(), OvDb::kForWrite, true) ==
                Orvex::eOk &&
            dictionary && dictionary->isErased())
            dictionary->erase(false);
        releaseObject(dictionary);
    }
    releaseObject(layer);
    return Orvex::eOk;
}

bool ZelWireTypeRec::DeleteLayer(const wchar_t* name, bool erase) {
    const ResourceOverride resources;
    OvDbLayerTableRecord* layer = nullptr;
    bool result = false;
    if (GetLayerTblRec(fromWide(name), OvDb::kForWrite, layer) && layer) {
        if (layer->isInUse()) {
            platform::appMessageBoxById(143);
        } else {
            // Without `erase` this only asks whether the layer may go.
            if (erase)
                layer->erase();
            result = true;
        }
    }
    releaseObject(layer);
    return result;
}

bool ZelWireTypeRec::RenameLayer(const wchar_t* oldName, const wchar_t* newName) {
    OvDbLayerTableRecord* layer = nullptr;
    if (GetLayerTblRec(fromWide(oldName), OvDb::kForWrite, layer) && layer)
        layer->setName(fromWide(newName));
    releaseObject(layer);
    return true;
}

bool ZelWireTypeRec::GetCurrentLayer(OvDbObjectId& id, QString& name) {
    OvDbDatabase* database = workingDatabase();
    if (!database)
        return false;
    id = database->clayer();
    if (id.isNull())
        return false;
    OvDbLayerTableRecord* layer = nullptr;
    if (ovdbOpenObject(layer, id, OvDb::kForRead) != Orvex::eOk || !layer)
        return true;
    name = layer->name();
    releaseObject(layer);
    return true;
}

bool ZelWireTypeRec::SetCurrentLayer(QString name) {
    OvDbLayerTableRecord* layer = nullptr;
    GetLayerTblRec(name, OvDb::kForRead, layer);
    // The id is taken from whatever record the walk left open.
    const OvDbObjectId id = layer ? layer->objectId() : OvDbObjectId();
    releaseObject(layer);
    OvDbDatabase* database = workingDatabase();
    if (id.isNull() || !database)
        return false;
    database->setClayer(id);
    return true;
}

bool ZelWireTypeRec::SetCurrentLayer(OvDbObjectId id) {
    OvDbDatabase* database = workingDatabase();
    if (!database || id.isNull())
        return false;
    database->setClayer(id);
    return true;
}

Orvex::ErrorStatus ZelWireTypeRec::ValidateLayerName(QString name) {
    return hasInvalidLayerChar(name) ? Orvex::eInvalidLayerName : Orvex::eOk;
}

void ZelWireTypeRec::FilterInvalidLayerName(QString& name) {
    for (const char16_t* c = kInvalidLayerChars; *c; ++c)
        name.remove(QChar(*c));
}

bool ZelWireTypeRec::CheckDuplicateLayerName(long key, QString name) {
    for (const auto& [recordKey, rec] : m_wireLayers) {
        if (recordKey != key && sameName(rec->layerName, name) && isLive(rec))
            return true;
    }
    return false;
}

bool ZelWireTypeRec::GetNonWireLayers(std::vector<QString>& names) {
    names = m_nonWireLayers;
    return true;
}

bool ZelWireTypeRec::GetNonWireLayers(QString pattern, std::vector<QString>& names) {
    for (const QString& name : m_nonWireLayers) {
        if (wcMatch(name.toUpper(), pattern))
            names.push_back(name);
    }
    return true;
}

void ZelWireTypeRec::AddToNonWireLayers(QString name) {
    const bool held =
        std::any_of(m_nonWireLayers.begin(), m_nonWireLayers.end(), [&](const QString& other) {
            return other.compare(name, Qt::CaseInsensitive) == 0;
        });
    if (!held)
        m_nonWireLayers.push_back(name);
}

void ZelWireTypeRec::RemoveFrmNonWireLayers(QString name) {
    name = name.toUpper();
    std::size_t count = m_nonWireLayers.size();
    // The index moves on after a removal too, so the name that slides into the freed
    // place is not examined in this pass; examined names stay upper case.
    for (std::size_t i = 0; i < count; ++i) {
        QString& element = m_nonWireLayers.at(i);
        element = element.toUpper();
        if (wcMatch(element, name)) {
            m_nonWireLayers.erase(m_nonWireLayers.begin() + static_cast<std::ptrdiff_t>(i));
            --count;
        }
    }
}
