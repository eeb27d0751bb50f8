#include "grid/ZelImportWTGrid.h"

#include "dialogs/ZelImportWTDlg.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"

#include "ovdb/resbuf.h"
#include "platform/Resources.h"
#include "platform/ScreenScale.h"

#include <cmath>

namespace {

constexpr int kColumns = 24;
constexpr int kLayerCol = 3;
constexpr int kFlagCol = 4;
constexpr int kFirstValueCol = 5;

int scaled(int value) {
    return static_cast<int>(std::lround(platform::GetMonitorDpiXScale(nullptr) * value));
}

// The grid column of a position within one row of the list, 0 for none: the layer name
// comes first, then the two texts, the twenty values, and the flag last.
int columnOfPosition(int position) {
    if (position == 1)
        return kLayerCol;
    if (position == 2 || position == 3)
        return position - 1;
    if (position >= 4 && position <= 23)
        return position + 1;
    if (position >= 24)
        return kFlagCol;
    return 0;
}

} // namespace

ZelImportWTGrid::ZelImportWTGrid(QWidget* parent) : platform::GridWindow(parent) {}

void ZelImportWTGrid::InitGrid() {
    const ResourceOverride resources;
    Initialize();
    platform::GridParam* param = GetParam();
    param->EnableUndo(false);
    param->SetLockReadOnly(true);
    param->EnableCellTips(500);
    param->EnableMoveCols(false);
    param->EnableMoveRows(false);
    // Whole rows only, several of them, with Ctrl and Shift: the list is for choosing.
    param->EnableSelection(platform::GridParam::SelRow | platform::GridParam::SelMultiple |
                           platform::GridParam::SelShift);
    SetRowCount(0);
    SetColCount(kColumns);
    SetDefaultColWidth(scaled(100));
    SetColWidth(0, 0, scaled(25));

    WriteHeaders();
    LoadSettings();

    if (GetRowCount() > 0) {
        SetStyleRange(platform::GridRange(1, 1, GetRowCount(), GetColCount()),
                      platform::CellStyle()
                          .setControl(platform::CellStyle::Control::Static)
                          .setAlignment(Qt::AlignLeft | Qt::AlignVCenter)
                          .setReadOnly(true)
                          .setInterior(platform::CellStyle::fromColorRef(0xFFFFFF)));
    }
    Preselect();
}

void ZelImportWTGrid::WriteHeaders() {
    const unsigned fixed[] = {106, 132, 105, 114};
    for (int col = 1; col < kFirstValueCol; ++col)
        SetValueRange(platform::GridRange(0, col), platform::loadString(fixed[col - 1]));

    std::vector<QString> names;
    ZelWireTypeRec store;
    store.GetUsrPropNames(names);
    // A short list of names leaves the remaining columns with the name before them.
    QString previous;
    for (int col = kFirstValueCol; col <= GetColCount(); ++col) {
        const std::size_t index = static_cast<std::size_t>(col - kFirstValueCol);
        if (index < names.size())
            previous = names[index];
        SetValueRange(platform::GridRange(0, col), previous);
    }
}

// The list is read flat: every list begin starts a row, so a list of lists, which opens
// with a bracket of its own, leaves row 1 empty. A list end only restarts the position,
// so values after it still go to the row it closed.
void ZelImportWTGrid::LoadSettings() {
    const QString yes = platform::loadString(115);
    const QString no = platform::loadString(116);
    const bool lock = GetParam()->IsLockReadOnly();
    GetParam()->SetLockReadOnly(false);
    int row = 0;
    int position = 0;
    for (const resbuf* link = m_pSettings; link; link = link->rbnext) {
        if (link->restype == RTLB) {
            ++row;
            position = 1;
            continue;
        }
        if (link->restype == RTLE) {
            position = 1;
            continue;
        }
        QString text;
        if (link->restype == RTSTR && link->resval.rstring)
            text = QString::fromWCharArray(link->resval.rstring);
        if (position == 24)
            text = text.compare(QStringLiteral("0"), Qt::CaseInsensitive) == 0 ? no : yes;
        const int col = columnOfPosition(position);
        // Values before the first bracket have no row to go to.
        if (row > 0 && col > 0) {
            if (row > GetRowCount())
                SetRowCount(row);
            SetValueRange(platform::GridRange(row, col), text);
        }
        m_nRows = row;
        ++position;
    }
    GetParam()->SetLockReadOnly(lock);
}

void ZelImportWTGrid::Preselect() {
    if (m_presetNames.empty()) {
        SelectRange(platform::GridRange(1, 0, GetRowCount(), GetColCount()));
        return;
    }
    for (int row = 1; row <= GetRowCount(); ++row) {
        const QString name = GetLayerName(row);
        for (const QString& preset : m_presetNames) {
            if (name == preset) {
                SelectRange(platform::GridRange(row, 0, row, GetColCount()));
                break;
            }
        }
    }
}

QString ZelImportWTGrid::GetLayerName(int row) const {
    return GetValueRowCol(row, kLayerCol);
}

ZelImportWTGrid::RowFields ZelImportWTGrid::GetRowFields(int row, bool bLispOrder) const {
    RowFields fields(kColumns);
    if (!bLispOrder) {
        for (int col = 1; col <= kColumns; ++col)
            fields.at(static_cast<std::size_t>(col - 1)) = GetValueRowCol(row, col);
        return fields;
    }
    fields.at(0) = GetValueRowCol(row, kLayerCol);
    fields.at(1) = GetValueRowCol(row, 1);
    fields.at(2) = GetValueRowCol(row, 2);
    for (int col = kFirstValueCol; col <= kColumns; ++col)
        fields.at(static_cast<std::size_t>(col - 2)) = GetValueRowCol(row, col);
    QString no;
    {
        const ResourceOverride resources;
        no = platform::loadString(116);
    }
    const bool isNo = GetValueRowCol(row, kFlagCol).compare(no, Qt::CaseInsensitive) == 0;
    fields.at(23) = isNo ? QStringLiteral("0") : QStringLiteral("1");
    return fields;
}

bool ZelImportWTGrid::GetStyleRowCol(int row, int col, platform::CellStyle& style,
                                     int nType) const {
    if (!platform::GridWindow::GetStyleRowCol(row, col, style, nType))
        return false;
    // One line per wire type: a long value shows as a tip, not as a taller row.
    if (row != 0 && nType != -1)
        style.setWrapText(false);
    return true;
}

bool ZelImportWTGrid::OnTrackColWidth(int col) {
    return col != 0;
}

bool ZelImportWTGrid::OnLButtonHitRowCol(int hitRow, int hitCol, int dragRow, int dragCol,
                                         QPoint point, unsigned flags, int hitState) {
    // A header click neither selects nor moves the current cell.
    if (hitRow == 0)
        return true;
    const bool result = platform::GridWindow::OnLButtonHitRowCol(hitRow, hitCol, dragRow, dragCol,
                                                                 point, flags, hitState);
    // A plain click into a list with nothing selected selects the row, so that a single
    // click is enough to choose one wire type.
    if (hitCol != 0 && (flags & (MK_SHIFT | MK_CONTROL)) == 0 && !HasSelection() &&
        hitRow <= GetRowCount())
        SelectRange(platform::GridRange(hitRow, 0, hitRow, GetColCount()));
    if (auto* dialog = dynamic_cast<ZelImportWTDlg*>(window()))
        dialog->RefreshButtons();
    return result;
}

bool ZelImportWTGrid::OnLButtonDblClkRowCol(int row, int col, unsigned, QPoint) {
    if (row != 0 || col == 0)
        return true;
    m_bSortAscending = !m_bSortAscending;
    const bool held = LockUpdate(true);
    if (m_nRows > 1) {
        // The first double click sorts down, the next up, and so on.
        SortRows(platform::GridRange::rows(1, m_nRows),
                 {platform::GridSortInfo{col, m_bSortAscending != 0, true}});
    }
    LockUpdate(held);
    Redraw();
    return true;
}
