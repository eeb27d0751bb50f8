// Adding and editing wire types, the commit of a grid, and the two reads that serve the
// LISP side. For one wire type the drawing is always written in this order: layer table,
// the store's map, WIRELAYS, the wire type record. There is no transaction: what was
// applied before a failure stays applied.

#include "store/ZelWireTypeRec.h"

#include "shell/ResourceOverride.h"
#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbLinetypeTable.h"
#include "ovdb/OvDbLinetypeTableIterator.h"
#include "ovdb/OvDbLinetypeTableRecord.h"
#include "platform/MessageBox.h"
#include "platform/Resources.h"

#include <memory>
#include <new>

using namespace zelstore;

namespace {

// Messages of a refused record in a commit.
constexpr unsigned kMsgDuplicateName = 142;
constexpr unsigned kMsgInvalidName = 146;
constexpr unsigned kMsgEmptyName = 147;

} // namespace

void ZelWireTypeRec::MatchProperties(WireLayerRec* rec, std::vector<QString>& propNames,
                                     std::vector<QString>& propValues) {
    QString colorCaption;
    QString sizeCaption;
    QString flagCaption;
    {
        const ResourceOverride resources;
        colorCaption = platform::loadString(106);
        sizeCaption = platform::loadString(132);
        flagCaption = platform::loadString(114);
    }
    // The captions are compared inside the loop over the user property names, so a user
    // property may shadow a caption of the same text, and without names nothing matches.
    for (std::size_t i = 0; i < propNames.size(); ++i) {
        const QString& name = propNames.at(i);
        for (std::size_t j = 0; j < m_usrPropNames.size(); ++j) {
            if (name.compare(m_usrPropNames.at(j), Qt::CaseInsensitive) == 0) {
                rec->userValues.at(j) = propValues.at(i);
                break;
            }
            if (name.compare(colorCaption, Qt::CaseInsensitive) == 0) {
                rec->wireColor = propValues.at(i);
                break;
            }
            if (name.compare(sizeCaption, Qt::CaseInsensitive) == 0) {
                rec->wireSize = propValues.at(i);
                break;
            }
            if (name.compare(flagCaption, Qt::CaseInsensitive) == 0) {
                rec->wireFlag = wideToInt(propValues.at(i)) != 0;
                break;
            }
        }
    }
}

Orvex::ErrorStatus ZelWireTypeRec::AddNewWireType(
    long key, QString layerName, std::vector<QString>& propNames, std::vector<QString>& propValues,
    QString wireColor, QString wireSize, QString wireKind, OvCmColor color, OvDbObjectId linetypeId,
    OvDb::LineWeight lineWeight, long gridRow, bool wireFlag) {
    if (layerName.isEmpty())
        return Orvex::eEmptyLayerName;
    // Held here until the map owns it, also when an index outside an array unwinds.
    std::unique_ptr<WireLayerRec> rec(new (std::nothrow) WireLayerRec);
    if (!rec)
        return Orvex::eOutOfMemory;
    rec->wireColor = wireColor;
    rec->wireSize = wireSize;
    rec->wireKind = wireKind;
    rec->color = color;
    rec->linetypeId = linetypeId;
    rec->lineWeight = lineWeight;
    rec->gridRow = static_cast<int>(gridRow);
    rec->wireFlag = wireFlag;
    rec->editState = 0;
    rec->userValues.resize(kUserPropertyCount);

    const auto makeLayer = [&]() -> Orvex::ErrorStatus {
        if (IsWireLayer(layerName))
            return Orvex::eOk;
        const Orvex::ErrorStatus es = AddNewLayer(rec.get());
        if (es == Orvex::eOk || es == Orvex::eInvalidLayerName)
            return es;
        return Orvex::eInvalidInput;
    };

    if (propNames.empty()) {
        // Strict: the name must be valid as it stands, and the values go by position.
        if (ValidateLayerName(layerName) == Orvex::eInvalidLayerName)
            return Orvex::eInvalidLayerName;
        rec->layerName = layerName;
        if (const Orvex::ErrorStatus es = makeLayer(); es != Orvex::eOk)
            return es;
        rec->userValues = propValues;
    } else {
        // Forgiving: invalid characters are dropped, and the values go by name.
        FilterInvalidLayerName(layerName);
        rec->layerName = layerName;
        if (const Orvex::ErrorStatus es = makeLayer(); es != Orvex::eOk)
            return es;
        MatchProperties(rec.get(), propNames, propValues);
    }

    WireLayerRec* added = rec.release();
    InsertRecord(key, added, m_wireLayers);
    RemoveFrmNonWireLayers(added->layerName);

    Orvex::ErrorStatus result = Orvex::eOk;
    if (!IsMakeAllValidWire() && !AddtoWd_m(added->layerName, false))
        result = Orvex::eWireTypeNotApplied;
    if (!SetWireTypeXrec(added))
        result = Orvex::eWireTypeNotApplied;
    return result;
}

Orvex::ErrorStatus ZelWireTypeRec::EditWireType(QString layerName, QString wireColor,
                                                QString wireSize, std::vector<QString>& propNames,
                                                std::vector<QString>& propValues, QString wireKind,
                                                OvCmColor color, OvDbObjectId linetypeId,
                                                OvDb::LineWeight lineWeight, long gridRow, long key,
                                                bool wireFlag) {
    if (layerName.isEmpty())
        return Orvex::eEmptyLayerName;
    if (ValidateLayerName(layerName) == Orvex::eInvalidLayerName)
        return Orvex::eInvalidLayerName;
    if (m_wireLayers.empty() && GetCurDwgWireTypeInfo().empty())
        return Orvex::eKeyNotFound;

    WireLayerRec* rec = nullptr;
    if (key >= 1) {
        const auto found = m_wireLayers.find(static_cast<int>(key));
        if (found == m_wireLayers.end())
            return Orvex::eKeyNotFound;
        rec = found->second;
    } else {
        // The walk only notes whether the name is there; the record taken is the last one
        // walked, not the one that matched.
        bool named = false;
        for (const auto& entry : m_wireLayers) {
            if (entry.second->layerName.compare(layerName, Qt::CaseInsensitive) == 0)
                named = true;
            rec = entry.second;
        }
        if (!named)
            return Orvex::eKeyNotFound;
    }

    if (layerName.compare(rec->layerName, Qt::CaseInsensitive) != 0) {
        const std::wstring oldName = wide(rec->layerName);
        const std::wstring newName = wide(layerName);
        if (RenameLayer(oldName.c_str(), newName.c_str()))
            rec->layerName = layerName;
    }
    // A change of case alone is not taken over.
    if (wireColor.compare(rec->wireColor, Qt::CaseInsensitive) != 0)
        rec->wireColor = wireColor;
    if (wireSize.compare(rec->wireSize, Qt::CaseInsensitive) != 0)
        rec->wireSize = wireSize;
    if (wireKind.compare(rec->wireKind, Qt::CaseInsensitive) != 0)
        rec->wireKind = wireKind;
    rec->color = color;
    rec->linetypeId = linetypeId;
    rec->lineWeight = lineWeight;
    rec->gridRow = static_cast<int>(gridRow);
    rec->wireFlag = wireFlag;
    rec->editState = 0;
    rec->userValues.resize(kUserPropertyCount);
    if (propNames.empty()) {
        rec->userValues.clear();
        rec->userValues.resize(kUserPropertyCount);
        rec->userValues = propValues;
    } else {
        MatchProperties(rec, propNames, propValues);
    }

    Orvex::ErrorStatus result = Orvex::eOk;
    if (!IsMakeAllValidWire() && !AddtoWd_m(rec->layerName, false))
        result = Orvex::eWireTypeNotApplied;
    if (!SetWireTypeXrec(rec))
        result = Orvex::eWireTypeNotApplied;
    return result;
}

Orvex::ErrorStatus ZelWireTypeRec::EditWireType(QString layerName, std::vector<QString>& propNames,
                                                std::vector<QString>& propValues, QString wireColor,
                                                QString wireSize) {
    const ResourceOverride resources;
    if (layerName.isEmpty())
        return Orvex::eEmptyLayerName;
    if (ValidateLayerName(layerName) == Orvex::eInvalidLayerName)
        return Orvex::eInvalidLayerName;
    if (m_wireLayers.empty() && GetCurDwgWireTypeInfo().empty())
        return Orvex::eKeyNotFound;

    WireLayerRec* rec = nullptr;
    for (const auto& entry : m_wireLayers) {
        if (entry.second->layerName.compare(layerName, Qt::CaseInsensitive) == 0) {
            rec = entry.second;
            break;
        }
    }
    if (!rec)
        return Orvex::eKeyNotFound;

    rec->editState = 0;
    rec->userValues.resize(kUserPropertyCount);
    MatchProperties(rec, propNames, propValues);
    // Given texts win over what the property names set; an empty one leaves the field.
    if (!wireColor.isEmpty())
        rec->wireColor = wireColor;
    if (!wireSize.isEmpty())
        rec->wireSize = wireSize;

    Orvex::ErrorStatus result = Orvex::eOk;
    if (!IsMakeAllValidWire() && !AddtoWd_m(rec->layerName, false))
        result = Orvex::eWireTypeNotApplied;
    if (!SetWireTypeXrec(rec))
        result = Orvex::eWireTypeNotApplied;
    return result;
}

Orvex::ErrorStatus ZelWireTypeRec::UpdateWireTypeRec(std::map<int, WireLayerRec*>& records,
                                                     long& key) {
    const ResourceOverride resources;
    std::size_t counter = 1;
    for (auto entry = records.begin(); entry != records.end() && counter <= records.size();
         ++entry) {
        key = entry->first;
        WireLayerRec* rec = entry->second;
        if (!rec)
            continue;

        if (isLive(rec)) {
            if (rec->layerName.isEmpty()) {
                platform::appMessageBoxById(kMsgEmptyName);
                return Orvex::eInvalidLayerName;
            }
            if (hasInvalidLayerChar(rec->layerName)) {
                platform::appMessageBoxById(kMsgInvalidName);
                return Orvex::eInvalidLayerName;
            }
            if (CheckDuplicateLayerName(key, rec->layerName)) {
                platform::appMessageBoxById(kMsgDuplicateName);
                return Orvex::eInvalidLayerName;
            }
        }

        // makeAllValidWire takes over: the list is blanked before anything is written.
        if (counter == 1 && IsMakeAllValidWire())
            AddtoWd_m(QString(), true);

        const auto held = m_wireLayers.find(entry->first);
        if (held == m_wireLayers.end()) {
            // A row made and deleted again before the commit.
            if (!isLive(rec))
                continue;
            std::vector<QString> noNames;
            const Orvex::ErrorStatus es =
                AddNewWireType(key, rec->layerName, noNames, rec->userValues, rec->wireColor,
                               rec->wireSize, rec->wireKind, rec->color, rec->linetypeId,
                               rec->lineWeight, rec->gridRow, rec->wireFlag);
            if (es == Orvex::eInvalidLayerName) {
                platform::appMessageBoxById(kMsgInvalidName);
                return Orvex::eInvalidLayerName;
            }
            if (es == Orvex::eEmptyLayerName) {
                platform::appMessageBoxById(kMsgEmptyName);
                return Orvex::eEmptyLayerName;
            }
            if (es == Orvex::eDuplicateWireType) {
                platform::appMessageBoxById(kMsgDuplicateName);
                return Orvex::eDuplicateWireType;
            }
            rec->editState = 0;
            ++counter;
            continue;
        }

        WireLayerRec* stored = held->second;
        ++counter;
        switch (rec->editState) {
        case 2: {
            const std::wstring name = wide(stored->layerName);
            // A layer in use stays; DeleteLayer has said why.
            if (DeleteLayer(name.c_str(), true)) {
                stored->editState = 2;
                RemoveFrmWd_m(rec->layerName);
                SetWireTypeXrec(stored);
            }
            break;
        }
        case 1: {
            std::vector<QString> noNames;
            EditWireType(rec->layerName, rec->wireColor, rec->wireSize, noNames, rec->userValues,
                         rec->wireKind, rec->color, rec->linetypeId, rec->lineWeight, rec->gridRow,
                         key, rec->wireFlag);
            rec->editState = 0;
            break;
        }
        case 6:
            if (stored) {
                stored->editState = 6;
                stored->gridRow = 0;
                SetWireTypeXrec(stored);
            }
            RemoveFrmWd_m(rec->layerName);
            RemoveWireTypeXrec(rec->layerName);
            break;
        default:
            break;
        }
    }
    return Orvex::eOk;
}

bool ZelWireTypeRec::GetWireTypeSettings(std::vector<QString>& names, int) {
    const ResourceOverride resources;
    names.push_back(platform::loadString(161));
    names.push_back(platform::loadString(162));
    std::vector<QString> userNames(kUserPropertyCount);
    GetUserPropNamesFrmWdp(userNames);
    names.insert(names.end(), userNames.begin(), userNames.end());
    names.push_back(platform::loadString(118));
    return true;
}

bool ZelWireTypeRec::GetWireTypeLayerInfo(QString drawingPath, QString layerName, short& colorIndex,
                                          QString& linetypeName, short& lineWeight) {
    if (layerName.isEmpty())
        return false;
    OvDbDatabase* database = nullptr;
    std::unique_ptr<OvDbDatabase> own;
    if (drawingPath.isEmpty()) {
        database = workingDatabase();
    } else {
        own.reset(new (std::nothrow) OvDbDatabase(false, true));
        if (!own || own->readDwgFile(wide(drawingPath).c_str(), 3, false, nullptr) != Orvex::eOk)
            return false;
        database = own.get();
    }

    OvCmColor color;
    OvDbObjectId linetype;
    OvDb::LineWeight weight = OvDb::kLnWtByLwDefault;
    bool inUse = false;
    if (!GetLayerInfo(layerName, database, color, linetype, weight, inUse))
        return false;
    colorIndex = static_cast<short>(color.colorIndex());
    lineWeight = static_cast<short>(weight);

    if (linetype.isNull())
        return true;
    // Any failure on the way to the name leaves it as it was.
    OvDbLinetypeTable* table = nullptr;
    if (database->getSymbolTable(table, OvDb::kForRead) == Orvex::eOk && table &&
        table->has(linetype)) {
        OvDbLinetypeTableIterator* iterator = nullptr;
        table->newIterator(iterator, true, true);
        if (iterator && iterator->seek(linetype) == Orvex::eOk) {
            OvDbLinetypeTableRecord* record = nullptr;
            if (iterator->getRecord(record, OvDb::kForRead) == Orvex::eOk && record)
                linetypeName = record->name();
            releaseObject(record);
        }
        delete iterator;
    }
    releaseObject(table);
    return true;
}
