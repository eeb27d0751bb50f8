// From the grid's working copy to the drawing: the current wire layer record, then every
// record in one call to the store, each by its edit state.

#include "grid/ZelWTGrid.h"

#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "store/ZelStoreSupport.h"

#include "ovdb/ovut.h"
#include "ovdb/resbuf.h"
#include "platform/MessageBox.h"
#include "platform/Resources.h"

#include <QLineEdit>

using namespace zelgrid;

namespace {

constexpr short kRtStr = 5005;

} // namespace

bool ZelWTGrid::StoreCurrentLayerRecord() {
    QString first;
    QString second;
    resbuf* chain = nullptr;
    if (m_WireTypeRec.GetCurWireLayerXrec(chain) == Orvex::eKeyNotFound)
        m_WireTypeRec.AssignDefaultWireType(chain);
    // The record holds its names under group 1, so that both stay empty and the default
    // layer decides below.
    if (chain && chain->restype == kRtStr)
        first = zelstore::rbString(chain);
    if (chain && chain->rbnext && chain->rbnext->restype == kRtStr)
        second = zelstore::rbString(chain->rbnext);
    ovutRelRb(chain);

    if (second.isEmpty())
        second = m_strDefaultLayer;
    const std::vector<int> rows = SelRows();
    if (m_bEditMode || rows.empty()) {
        if (QString::localeAwareCompare(first.toCaseFolded(), second.toCaseFolded()) == 0)
            second = m_strDefaultLayer;
    } else {
        // The dialogs that choose a wire type make the selected row the current one.
        second = Cell(rows.front(), 5);
    }

    const auto* edit = qobject_cast<QLineEdit*>(OwnerControl(1019));
    const QString format = edit ? edit->text() : QString();
    m_WireTypeRec.SetCurWireLayerXrec(m_strDefaultLayer, second, format, OwnerChecked());
    return true;
}

int ZelWTGrid::CommitAll() {
    const ResourceOverride resources;
    SaveColumnWidths();

    const bool checked = OwnerChecked();
    // The drafter left the every-layer mode without a wire type of their own.
    const bool noTypesLeft = m_nWireTypeRows < 1 && m_bMakeAllValidWire && !checked;

    for (int row = m_nWireTypeRows + 1; row <= RowCount() - 1; ++row) {
        bool data = false;
        for (int col = 3; col <= 24 && !data; ++col)
            data = !Cell(row, col).isEmpty();
        if (data && Cell(row, 5).isEmpty()) {
            platform::appMessageBoxById(147);
            PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(row), 5);
            return Orvex::eInvalidLayerName;
        }
    }

    // In key order, the next record found afresh after each one: committing a row's name
    // may drop a record made in this dialog whose row was left blank, and the walk must
    // not stand on it.
    int key = 0;
    for (auto at = m_mapRows.begin(); at != m_mapRows.end(); at = m_mapRows.upper_bound(key)) {
        key = at->first;
        WireLayerRec* rec = at->second;
        if (noTypesLeft) {
            rec->editState = 6;
            m_WireTypeRec.AddToNonWireLayers(rec->layerName);
            continue;
        }
        if (m_nWireTypeRows == 0)
            continue;
        // Rows move by sorting and dragging; the stored row follows the grid, and every
        // row that stands is written again.
        const int last = std::min(m_nWireTypeRows, RowCount());
        for (int row = 1; row <= last; ++row) {
            if (Cell(row, 5).compare(rec->layerName, Qt::CaseInsensitive) == 0) {
                rec->gridRow = row;
                m_bCellDirty = true;
                CommitCell(row, 5);
                break;
            }
        }
    }

    long stopKey = 0;
    const Orvex::ErrorStatus result = m_WireTypeRec.UpdateWireTypeRec(m_mapRows, stopKey);
    if (result == Orvex::eInvalidLayerName && RowCount() >= 2) {
        // The store has said what is wrong; the cursor goes to the row it stopped at.
        for (int row = 1; row <= RowCount() - 1; ++row) {
            if (Cell(row, 1) != QString::number(stopKey))
                continue;
            MoveTo(row, 5);
            PostToOwner(WM_WTG_ENABLEOK, row != 0 && row <= RowCount() ? 1 : 0, 0);
            UpdateButtons(row);
            PostToSelf(WM_WTG_HIGHLIGHTROW, static_cast<quintptr>(row), 0);
            SetNameCellEditable(row, true);
            break;
        }
    }

    if (noTypesLeft) {
        const QString name = platform::loadString(110);
        std::vector<QString> noNames;
        std::vector<QString> noValues;
        m_WireTypeRec.AddNewWireType(0, name, noNames, noValues, QString(), QString(),
                                     QString::fromWCharArray(zelstore::kWire), OvCmColor(),
                                     OvDbObjectId(), OvDb::kLnWtByLwDefault, 0, true);
        m_WireTypeRec.SetCurWireLayerXrec(name, name, QString(), checked);
    }
    m_WireTypeRec.RegenWd_m();
    return result;
}
