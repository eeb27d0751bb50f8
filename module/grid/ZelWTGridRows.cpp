// Rows that the drafter did not type: existing layers of the drawing, and wire types read
// from another drawing. Both change the working copy only; the commit writes them.

#include "grid/ZelWTGrid.h"

#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "shell/ZelHostServices.h"
#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbSymbolTable.h"
#include "ovdb/ovdbOpenObject.h"
#include "platform/MessageBox.h"
#include "platform/Resources.h"

#include <memory>

using namespace zelgrid;

namespace {

// The order of an imported row: wire colour, wire size, layer name, flag, 20 values.
constexpr std::size_t kImportFieldCount = 24;
constexpr std::size_t kImportColor = 0;
constexpr std::size_t kImportSize = 1;
constexpr std::size_t kImportName = 2;
constexpr std::size_t kImportFlag = 3;
constexpr std::size_t kImportValues = 4;

} // namespace

void ZelWTGrid::FillRow(int row, int key, WireLayerRec* rec) {
    if (!rec)
        return;
    ReleaseReadOnly();
    PutValue(row, 1, QString::number(key));
    PutStatic(row, 2, rec->inUseMark);
    PutValue(row, 5, rec->layerName);
    PutList(row, 6, FlagText(rec->wireFlag));
    for (int i = 0; i < 20; ++i)
        PutValue(row, 7 + i, rec->userValues.at(static_cast<std::size_t>(i)));
    PutValue(row, 3, rec->wireColor);
    PutValue(row, 4, rec->wireSize);
    RestoreReadOnly();
}

bool ZelWTGrid::AddLayerRows(QString strPattern) {
    const ResourceOverride resources;
    std::vector<QString> names;
    m_WireTypeRec.GetNonWireLayers(strPattern, names);

    if (names.empty()) {
        const QString pattern = strPattern.toUpper();
        bool matches = false;
        for (const auto& [key, rec] : m_mapRows) {
            if (zelstore::wcMatch(rec->layerName.toUpper(), pattern)) {
                matches = true;
                break;
            }
        }
        if (!matches) {
            platform::messageBox(platform::loadString(123), platform::loadString(150));
            PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(m_nWireTypeRows), 5);
            return true;
        }
        // The layers are wire types already: show the first of them.
        int target = m_nWireTypeRows;
        if (m_nWireTypeRows >= 2) {
            for (int row = 1; row <= m_nWireTypeRows - 1; ++row) {
                if (zelstore::wcMatch(Cell(row, 5).toUpper(), pattern)) {
                    target = row;
                    break;
                }
            }
        }
        PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(target), 5);
        return true;
    }

    const int firstRow = m_nWireTypeRows;
    int row = m_nWireTypeRows + 1;
    for (const QString& name : names) {
        if (row + 1 > RowCount())
            SetRows(row + 1);
        ReleaseReadOnly();
        PutValue(row, 5, name);
        RestoreReadOnly();
        m_WireTypeRec.RemoveFrmNonWireLayers(strPattern);
        m_bCellDirty = true;
        if (!CommitCell(row, 5)) {
            DropRows(row, row);
            return true;
        }
        OvDbLayerTableRecord* layer = nullptr;
        if (m_WireTypeRec.GetLayerTblRec(name, OvDb::kForRead, layer) && layer) {
            PutStatic(row, 2, layer->isInUse() ? QStringLiteral("X") : QString());
            SetRowColor(row, layer->color());
            SetRowLinetype(row, layer->linetypeObjectId());
            SetRowLineweight(row, layer->lineWeight());
        }
        zelstore::releaseObject(layer);
        MoveTo(row, 5);
        ++row;
    }
    PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(firstRow), 5);
    return true;
}

bool ZelWTGrid::AddOrMergeRow(std::vector<QString>& fields, QString strDwgPath, bool bAppearance,
                              bool bProperties) {
    if (fields.size() != kImportFieldCount && strDwgPath.isEmpty())
        return false;
    const QString name = fields.at(kImportName);

    WireLayerRec* existing = nullptr;
    int existingKey = 0;
    for (const auto& [key, rec] : m_mapRows) {
        if (rec->layerName.compare(name, Qt::CaseInsensitive) == 0) {
            existing = rec;
            existingKey = key;
            break;
        }
    }

    // The look of the layer in the other drawing, its linetype brought into this one.
    OvCmColor color;
    color.setColorIndex(7);
    OvDb::LineWeight lineWeight = OvDb::kLnWtByLwDefault;
    OvDbObjectId linetype;
    bool inUse = false;
    {
        auto side = std::make_unique<OvDbDatabase>(false, true);
        const std::wstring path = strDwgPath.toStdWString();
        if (side->readDwgFile(path.c_str(), 3, false, nullptr) != Orvex::eOk)
            return false;
        OvDbObjectId sideLinetype;
        OvDbDatabase* working = zelstore::workingDatabase();
        if (m_WireTypeRec.GetLayerInfo(name, side.get(), color, sideLinetype, lineWeight, inUse) &&
            working && !sideLinetype.isNull())
            CloneObjectToOwner(linetype, sideLinetype, side.get(), working->linetypeTableId());
        if (!linetype.isValid() && working)
            linetype = working->continuousLinetype();
    }

    std::vector<QString> values(zelstore::kUserPropertyCount);
    for (std::size_t i = 0; i < zelstore::kUserPropertyCount; ++i)
        values[i] = fields.at(kImportValues + i);
    const bool flag = IsYes(fields.at(kImportFlag));

    int row = 0;
    int key = existingKey;
    WireLayerRec* rec = existing;
    const auto appendRow = [&] {
        ++m_nWireTypeRows;
        GrowForWireTypeRows();
        row = m_nWireTypeRows;
    };

    if (!existing) {
        appendRow();
        rec = new WireLayerRec;
        rec->layerName = name;
        rec->wireColor = fields.at(kImportColor);
        rec->wireSize = fields.at(kImportSize);
        rec->wireFlag = flag;
        rec->wireKind = QString::fromWCharArray(zelstore::kWire);
        rec->color = color;
        rec->linetypeId = linetype;
        rec->lineWeight = lineWeight;
        rec->userValues = values;
        rec->editState = 5;
        rec->gridRow = row;
        long next = ZelWireTypeRec::GetNextKey();
        while (m_mapRows.count(static_cast<int>(next)))
            next = ZelWireTypeRec::GetNextKey();
        key = static_cast<int>(next);
        m_mapRows[key] = rec;
    } else {
        for (int r = 1; r <= RowCount() - 1; ++r) {
            if (KeyOfRow(r) == existingKey && !Cell(r, 1).isEmpty()) {
                row = r;
                break;
            }
        }
        if (row == 0) {
            // A record whose row went: it comes back at the end with the other settings.
            appendRow();
            rec->editState = 1;
            rec->wireFlag = flag;
            rec->userValues = values;
            rec->color = color;
            rec->linetypeId = linetype;
            rec->wireColor = fields.at(kImportColor);
            rec->wireSize = fields.at(kImportSize);
        } else {
            if (bAppearance) {
                rec->editState = 1;
                rec->color = color;
                rec->linetypeId = linetype;
                rec->wireColor = fields.at(kImportColor);
                rec->wireSize = fields.at(kImportSize);
            }
            if (bProperties) {
                rec->editState = 1;
                rec->wireFlag = flag;
                rec->userValues = values;
            }
        }
    }

    FillRow(row, key, rec);
    PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(m_nWireTypeRows), 5);
    return true;
}
