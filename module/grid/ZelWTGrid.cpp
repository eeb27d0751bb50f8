// The wire type grid: its columns, the load from the store, row colours, sorting, the
// saved column widths and the state of the owner's buttons.

#include "grid/ZelWTGrid.h"

#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/ovut.h"
#include "ovdb/resbuf.h"
#include "platform/PrivateMessage.h"
#include "platform/Resources.h"
#include "platform/SettingsKey.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QWidget>

#include <algorithm>
#include <cmath>

using namespace zelgrid;

namespace {

// Interior colours of the rows.
constexpr QRgb kRowWhite = 0xFFFFFF;
constexpr QRgb kCurrentGrey = 0xC0C0C0;
// Red 166, green 202, blue 240: the row the cursor stands in.
constexpr QRgb kSelectedBlue = qRgb(166, 202, 240);

int scaled(double scale, int value) {
    return static_cast<int>(std::lround(scale * value));
}

} // namespace

ZelWTGrid::ZelWTGrid(QWidget* parent) : platform::GridWindow(parent) {
    m_scale = MonitorScaleX();
    m_nColWidth[0] = scaled(m_scale, 50);
    for (std::size_t i = 1; i < m_nColWidth.size(); ++i)
        m_nColWidth[i] = scaled(m_scale, 100);
}

ZelWTGrid::~ZelWTGrid() {
    for (auto& entry : m_mapRows)
        delete entry.second;
    m_mapRows.clear();
}

bool ZelWTGrid::InsertRows(int row, int count, unsigned flags) {
    const bool result = platform::GridWindow::InsertRows(row, count, flags);
    // A row that comes into being has no in-use mark the user could type.
    PutStatic(row, 2, Cell(row, 2));
    return result;
}

void ZelWTGrid::InitGrid(QWidget* pOwner, bool bOptionsLocked, bool bEditMode) {
    const ResourceOverride resources;
    m_pOwner = pOwner;
    m_bOptionsLocked = bOptionsLocked;
    m_bEditMode = bEditMode;
    Hold(true);
    ConfigureForWireTypes();

    ReadColumnWidths();
    SetCols(m_nColCount);
    SetColumnWidth(0, scaled(m_scale, 25));
    SetColumnWidth(1, scaled(m_scale, 50));
    HideColumn(1);
    SkipKeyColumns();
    SetRows(1);

    // The dialog's font reaches columns 0 to 24 only: the last two user property columns
    // keep the grid's own font.
    const QFont dialogFont = m_pOwner ? m_pOwner->font() : font();
    SetHeaderFont(dialogFont);
    for (int i = 0; i <= 24; ++i) {
        SetColumnWidth(i + 2, m_nColWidth[static_cast<std::size_t>(i)]);
        SetColumnFont(i, dialogFont);
    }

    const unsigned headers[] = {134, 149, 106, 132, 105, 114};
    for (int col = 1; col <= 6; ++col)
        SetHeader(col, platform::loadString(headers[col - 1]));

    // Fewer names than columns: a column repeats the name before it.
    std::vector<QString> names;
    m_WireTypeRec.GetUsrPropNames(names);
    QString previous;
    for (int col = 7; col <= ColCount(); ++col) {
        const std::size_t index = static_cast<std::size_t>(col - 7);
        if (index < names.size())
            previous = names[index];
        SetHeader(col, previous);
    }

    const std::map<int, WireLayerRec*> loaded = m_WireTypeRec.GetCurDwgWireTypeInfo();
    if (!loaded.empty()) {
        const int values = static_cast<int>(loaded.begin()->second->userValues.size());
        if (values + 6 > m_nColCount) {
            SetCols(values + 6);
            SkipKeyColumns();
        }
    }

    ReadDefaultLayer();

    // Rows: a stored row number is kept where it is free, everything else is stacked
    // from the top; the gaps close afterwards.
    int counter = 1;
    for (const auto& [key, source] : loaded) {
        if (m_mapRows.count(key))
            continue;
        auto* rec = new WireLayerRec;
        rec->layerName = source->layerName;
        rec->wireColor = source->wireColor;
        rec->wireSize = source->wireSize;
        rec->wireKind = source->wireKind;
        rec->color = source->color;
        rec->linetypeId = source->linetypeId;
        rec->lineWeight = source->lineWeight;
        rec->inUseMark = source->inUseMark;
        rec->wireFlag = source->wireFlag;
        rec->nameFormatMask = source->nameFormatMask;
        rec->editState = source->userValues.empty() ? 1 : source->editState;

        int row = counter;
        if (!m_bMakeAllValidWire && source->gridRow > 0) {
            if (source->gridRow <= RowCount() && !Cell(source->gridRow, 5).isEmpty()) {
                row = counter;
            } else {
                row = source->gridRow;
                if (row > RowCount())
                    SetRows(row);
            }
        }
        rec->gridRow = row;

        rec->userValues.resize(zelstore::kUserPropertyCount);
        for (std::size_t i = 0; i < source->userValues.size(); ++i) {
            // More values than the grid has columns is an index error, as with any array.
            rec->userValues.at(i) = source->userValues[i];
            PutValue(row, 7 + static_cast<int>(i), source->userValues[i]);
        }
        m_mapRows[key] = rec;

        PutHeaderReadOnly(row);
        PutStatic(row, 1, QString::number(key));
        PutStatic(row, 2, rec->inUseMark);
        PutValue(row, 3, rec->wireColor);
        PutValue(row, 4, rec->wireSize);
        PutStatic(row, 5, rec->layerName);
        WriteFlagCell(row, rec->wireFlag, false);

        ++counter;
        if (counter >= RowCount())
            SetRows(counter);
    }

    if (RowCount() < static_cast<int>(m_mapRows.size()) + 1)
        SetRows(static_cast<int>(m_mapRows.size()) + 1);
    m_nWireTypeRows = counter - 1;

    // Close the gaps that stored row numbers left, then keep one blank row.
    for (int row = 1; row <= RowCount();) {
        if (Cell(row, 5).isEmpty())
            DropRows(row, row);
        else
            ++row;
    }
    SetRows(RowCount() + 1);

    // Wire types that never had a row of their own come in by name.
    if (!loaded.empty() && loaded.begin()->second->gridRow <= 0)
        SortByColumn(5, m_bSortAscending != 0);

    show();
    FindCurrentRow();
    PostToSelf(WM_WTG_HIGHLIGHTROW, 0, 0);
    if (!m_bEditMode)
        SetTopRow(m_nCurrentRow);
    MoveTo(0, 0);
    UpdateButtons(0);
    Hold(false);
    RedrawAll();
}

void ZelWTGrid::ReadDefaultLayer() {
    resbuf* chain = nullptr;
    if (m_WireTypeRec.GetCurWireLayerXrec(chain) == Orvex::eKeyNotFound)
        m_WireTypeRec.AssignDefaultWireType(chain);
    if (!chain)
        return;

    QString current;
    m_strDefaultLayer = zelstore::rbString(chain);
    const resbuf* second = chain->rbnext;
    if (second && second->restype == 1)
        current = zelstore::rbString(second);

    OvDbLayerTableRecord* layer = nullptr;
    const bool found = m_WireTypeRec.GetLayerTblRec(m_strDefaultLayer, OvDb::kForRead, layer);
    if (!found || !layer) {
        QString first;
        m_WireTypeRec.GetFirstWireLayer(first);
        if (current.isEmpty() || current.compare(m_strDefaultLayer, Qt::CaseInsensitive) == 0)
            current = first;
        m_strDefaultLayer = first;
        m_WireTypeRec.SetCurWireLayerXrec(m_strDefaultLayer, current, QString(),
                                          m_bMakeAllValidWire);
    }
    zelstore::releaseObject(layer);

    // The record keeps its flag as text, so that this never fires and the flag is the
    // dialog's; a record written by hand with a number still counts.
    const resbuf* third = second ? second->rbnext : nullptr;
    if (third && third->restype == 290 && third->rbnext && third->rbnext->resval.rint != 0)
        m_bMakeAllValidWire = true;
    ovutRelRb(chain);
}

void ZelWTGrid::FindCurrentRow() {
    resbuf* chain = nullptr;
    if (m_WireTypeRec.GetCurWireLayerXrec(chain) == Orvex::eKeyNotFound)
        m_WireTypeRec.AssignDefaultWireType(chain);
    const QString current = chain ? zelstore::rbString(chain->rbnext) : QString();
    ovutRelRb(chain);

    for (int row = 1; row <= RowCount(); ++row) {
        if (Cell(row, 5).compare(current, Qt::CaseInsensitive) == 0) {
            m_nCurrentRow = row;
            int curRow = 0;
            int curCol = 0;
            GetCurrent(curRow, curCol);
            PostToSelf(WM_WTG_HIGHLIGHTROW, static_cast<quintptr>(curRow), 0);
            return;
        }
    }
}

qintptr ZelWTGrid::OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) {
    if (message == WM_WTG_GOTOCELL)
        OnGotoCell(static_cast<int>(wParam), static_cast<int>(lParam), lParam != 0);
    else if (message == WM_WTG_HIGHLIGHTROW)
        OnHighlightRow(static_cast<int>(wParam));
    else
        return platform::GridWindow::OnPrivateMessage(message, wParam, lParam);
    return 0;
}

bool ZelWTGrid::OnRButtonClickedRowCol(int, int, unsigned, QPoint point) {
    const QPoint screen = viewport()->mapToGlobal(point);
    PostToOwner(WM_WTG_CONTEXTMENU, 0, platform::MakePointLParam(screen));
    return true;
}

void ZelWTGrid::OnHighlightRow(int row) {
    const int rows = RowCount();
    PaintRows(1, rows, kRowWhite);
    // The current wire type is grey only where the drafter chooses one.
    if (!m_bEditMode && m_nCurrentRow >= 1 && m_nCurrentRow <= rows)
        PaintRows(m_nCurrentRow, m_nCurrentRow, kCurrentGrey);
    if (row != 0 && row <= rows)
        PaintRows(row, row, kSelectedBlue);
}

void ZelWTGrid::OnGotoCell(int row, int col, bool columnGiven) {
    if (col == 0)
        col = 5;
    MoveTo(row, col);
    const bool usable = row != 0 && row <= RowCount() && columnGiven;
    PostToOwner(WM_WTG_ENABLEOK, usable ? 1 : 0, 0);
    UpdateButtons(row);
    PostToSelf(WM_WTG_HIGHLIGHTROW, static_cast<quintptr>(row), 0);
}

void ZelWTGrid::UpdateButtons(int row) {
    EnableOwnerControl(1026, CanDeleteRows(row));
    const int ids[] = {1012, 1011, 1016, 1008, 1009, 1032};
    if (row != 0 && !Cell(row, 5).trimmed().isEmpty()) {
        PostToOwner(WM_WTG_ENABLEOK, 1, 0);
        EnableOwnerControl(1012, true);
        EnableOwnerControl(1011, true);
        EnableOwnerControl(1016, true);
        if (!m_bOptionsLocked) {
            EnableOwnerControl(1008, true);
            EnableOwnerControl(1009, true);
        }
        // Making a default needs one row; with several selected the button keeps its state.
        if (SelectedRowCount() < 2)
            EnableOwnerControl(1032, true);
        return;
    }
    PostToOwner(WM_WTG_ENABLEOK, 0, 0);
    for (int id : ids)
        EnableOwnerControl(id, false);
}

bool ZelWTGrid::CanDeleteRows(int row) {
    if (OwnerChecked())
        return false;
    std::vector<int> rows = SelRows();
    if (row != 0 && std::find(rows.begin(), rows.end(), row) == rows.end())
        rows.push_back(row);
    if (rows.empty())
        return true;

    for (int candidate : rows) {
        if (candidate == 0)
            continue;
        const QString name = Cell(candidate, 5);
        if (name.isEmpty()) {
            if (rows.size() == 1)
                return false;
            continue;
        }
        if (name.compare(m_strDefaultLayer, Qt::CaseInsensitive) == 0)
            return false;

        QString pattern;
        m_WireTypeRec.GetWd_mLayerName(name, pattern);
        pattern = pattern.toUpper();
        if (pattern.isEmpty()) {
            std::vector<QString> nonWire;
            m_WireTypeRec.GetNonWireLayers(nonWire);
            const bool listed =
                std::any_of(nonWire.begin(), nonWire.end(), [&name](const QString& layer) {
                    return layer.compare(name, Qt::CaseInsensitive) == 0;
                });
            if (!listed)
                return true;
        }
        // A pattern stays as long as a row that remains needs it.
        for (int other = 1; other <= m_nWireTypeRows; ++other) {
            const QString otherName = Cell(other, 5);
            if (!zelstore::wcMatch(otherName.toUpper(), pattern))
                continue;
            if (otherName.compare(name, Qt::CaseInsensitive) != 0 &&
                std::find(rows.begin(), rows.end(), other) == rows.end())
                return false;
        }
    }
    return true;
}

bool ZelWTGrid::OnLButtonDblClkRowCol(int row, int col, unsigned flags, QPoint point) {
    if (row != 0) {
        PostToOwner(WM_WTG_ROWDBLCLK, 1, 0);
        // An editable cell still opens, as a double click does in any grid.
        return platform::GridWindow::OnLButtonDblClkRowCol(row, col, flags, point);
    }
    // The direction turns before the sort: the first double click sorts descending.
    m_bSortAscending = m_bSortAscending == 1 ? 0 : 1;
    Hold(true);
    SortByColumn(col, m_bSortAscending != 0);
    Hold(false);
    RedrawAll();
    return true;
}

void ZelWTGrid::SortByColumn(int col, bool bAscending) {
    // Only the wire types move; the blank rows stay below them.
    if (m_nWireTypeRows >= 2)
        SortRowsByColumn(1, m_nWireTypeRows, col, bAscending);
    if (!m_bEditMode)
        FindCurrentRow();
    int row = 0;
    int curCol = 0;
    GetCurrent(row, curCol);
    UpdateButtons(row);
}

bool ZelWTGrid::OnTrackColWidth(int col) {
    if (col == 0)
        return false;
    return platform::GridWindow::OnTrackColWidth(col);
}

bool ZelWTGrid::OnTrackColWidthEnd(int col, int width) {
    if (col >= 2 && col - 2 < static_cast<int>(m_nColWidth.size()))
        m_nColWidth[static_cast<std::size_t>(col - 2)] = width;
    return platform::GridWindow::OnTrackColWidthEnd(col, width);
}

// The reader gives column 2 its unscaled default whatever was saved, and takes the saved
// widths as they are at any screen scale; the writer saves all 25.
void ZelWTGrid::ReadColumnWidths() {
    platform::SettingsKey key;
    if (key.Open(WidthsKeyPath()) != platform::SettingsKey::Success)
        return;
    m_nColWidth[0] = 50;
    for (int i = 1; i <= 24; ++i) {
        quint32 value = 0;
        m_nColWidth[static_cast<std::size_t>(i)] =
            key.QueryDWORDValue(QStringLiteral("ColWidth%1").arg(i + 1), value) ==
                    platform::SettingsKey::Success
                ? static_cast<int>(value)
                : 100;
    }
}

void ZelWTGrid::SaveColumnWidths() {
    platform::SettingsKey key;
    if (key.Open(WidthsKeyPath()) != platform::SettingsKey::Success) {
        if (key.Create(WidthsKeyPath()) != platform::SettingsKey::Success ||
            key.Open(WidthsKeyPath()) != platform::SettingsKey::Success)
            return;
    }
    for (int i = 0; i <= 24; ++i)
        key.SetDWORDValue(QStringLiteral("ColWidth%1").arg(i + 1),
                          static_cast<quint32>(m_nColWidth[static_cast<std::size_t>(i)]));
}

WireLayerRec* ZelWTGrid::RecordOfRow(int row) {
    const auto found = m_mapRows.find(KeyOfRow(row));
    return found == m_mapRows.end() ? nullptr : found->second;
}

int ZelWTGrid::KeyOfRow(int row) const {
    return zelstore::wideToInt(Cell(row, 1));
}

bool ZelWTGrid::GetRowColor(int row, OvCmColor& color) {
    if (const WireLayerRec* rec = RecordOfRow(row))
        color = rec->color;
    return true;
}

bool ZelWTGrid::GetRowLinetype(int row, OvDbObjectId& id) {
    if (const WireLayerRec* rec = RecordOfRow(row))
        id = rec->linetypeId;
    return true;
}

bool ZelWTGrid::GetRowLineweight(int row, OvDb::LineWeight& weight) {
    if (const WireLayerRec* rec = RecordOfRow(row))
        weight = rec->lineWeight;
    return true;
}

bool ZelWTGrid::SetRowColor(int row, OvCmColor color) {
    if (WireLayerRec* rec = RecordOfRow(row)) {
        rec->color = color;
        rec->editState = 1;
    }
    return true;
}

bool ZelWTGrid::SetRowLinetype(int row, OvDbObjectId id) {
    if (WireLayerRec* rec = RecordOfRow(row)) {
        rec->linetypeId = id;
        rec->editState = 1;
    }
    return true;
}

bool ZelWTGrid::SetRowLineweight(int row, OvDb::LineWeight weight) {
    if (WireLayerRec* rec = RecordOfRow(row)) {
        rec->lineWeight = weight;
        rec->editState = 1;
    }
    return true;
}

void ZelWTGrid::SelectColumnRange(int col) {
    ClearSel();
    SelectCells(1, col, RowCount(), col);
}

void ZelWTGrid::SelectRowRange(int row) {
    ClearSel();
    SelectCells(row, 1, row, ColCount());
}

QString ZelWTGrid::FlagText(bool flag) const {
    return platform::loadString(flag ? 115 : 116);
}

void ZelWTGrid::WriteFlagCell(int row, bool flag, bool alwaysList) {
    if (m_bEditMode || alwaysList)
        PutList(row, 6, FlagText(flag));
    else
        PutStatic(row, 6, FlagText(flag));
}

QWidget* ZelWTGrid::OwnerControl(int id) const {
    return m_pOwner ? m_pOwner->findChild<QWidget*>(QString::number(id)) : nullptr;
}

void ZelWTGrid::EnableOwnerControl(int id, bool enable) {
    if (QWidget* control = OwnerControl(id))
        control->setEnabled(enable);
}

QString ZelWTGrid::FormatText() const {
    const auto* edit = qobject_cast<QLineEdit*>(OwnerControl(1019));
    return edit ? edit->text().trimmed() : QString();
}

bool ZelWTGrid::OwnerChecked() const {
    const auto* box = qobject_cast<QAbstractButton*>(OwnerControl(1027));
    return box && box->isChecked();
}

int ZelWTGrid::SelectedRowCount() {
    return static_cast<int>(SelRows().size());
}
