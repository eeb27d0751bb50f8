#include "platform/GridWindow.h"
#include "platform/HandlerGuard.h"

#include "GridHeaderView.h"
#include "GridItemDelegate.h"
#include "platform/Clipboard.h"
#include "platform/GridModel.h"
#include "platform/PrivateMessage.h"

#include <QApplication>
#include <QCollator>
#include <QComboBox>
#include <QHelpEvent>
#include <QIODevice>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <numeric>

namespace platform {

GridWindow::GridWindow(QWidget* parent) : QTableView(parent) {
    KeyFilter::installRouter();
    // The headers go in before the model, so that the model is tied to the view's headers
    // once, not first to the default ones that these replace.
    m_colHeader = new GridHeaderView(Qt::Horizontal, this);
    m_rowHeader = new GridHeaderView(Qt::Vertical, this);
    setHorizontalHeader(m_colHeader);
    setVerticalHeader(m_rowHeader);
    m_model = new GridModel(this);
    setModel(m_model);
    m_delegate = new GridItemDelegate(this);
    setItemDelegate(m_delegate);
    m_colHeader->setDefaultSectionSize(m_defaultColWidth);
    m_rowHeader->setDefaultSectionSize(fontMetrics().height() + 8);
    // The grid opens its editors itself, so that every edit takes the same road.
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectItems);
    setTabKeyNavigation(true);
    setWordWrap(false);
    setCornerButtonEnabled(false);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(false);
}

GridWindow::~GridWindow() = default;

void GridWindow::Initialize() {
    // The grid is ready once made; a grid placed again after a pick keeps its rows.
    if (m_model->gridCols() == 0) {
        SetColCount(1);
    }
}

// --- Size ------------------------------------------------------------------------

int GridWindow::GetRowCount() const {
    return m_model->gridRows();
}

int GridWindow::GetColCount() const {
    return m_model->gridCols();
}

bool GridWindow::SetRowCount(int rows) {
    if (rows < 0) {
        return false;
    }
    const int now = GetRowCount();
    if (rows > now) {
        // Growing goes through InsertRows, so that a grid which styles its new rows
        // sees every row added, whoever adds it.
        return InsertRows(now + 1, rows - now);
    }
    if (rows < now) {
        TransferCurrentCell();
        m_model->setGridRows(rows);
    }
    return true;
}

bool GridWindow::SetColCount(int cols) {
    if (cols < 0) {
        return false;
    }
    if (cols < GetColCount()) {
        TransferCurrentCell();
    }
    const int before = GetColCount();
    m_model->setGridCols(cols);
    m_skippedCols.resize(size_t(cols) + 1, false);
    for (int c = before; c < cols; ++c) {
        setColumnWidth(c, m_defaultColWidth);
    }
    return true;
}

bool GridWindow::InsertRows(int row, int count, unsigned) {
    if (count <= 0 || row < 1 || row > GetRowCount() + 1) {
        return false;
    }
    m_model->insertGridRows(row, count);
    return true;
}

bool GridWindow::RemoveRows(int fromRow, int toRow) {
    fromRow = std::max(fromRow, 1);
    toRow = std::min(toRow, GetRowCount());
    if (fromRow > toRow) {
        return false;
    }
    TransferCurrentCell();
    m_model->removeGridRows(fromRow, toRow);
    return true;
}

bool GridWindow::HideRows(int fromRow, int toRow, bool hide) {
    fromRow = std::max(fromRow, 1);
    toRow = std::min(toRow, GetRowCount());
    for (int r = fromRow; r <= toRow; ++r) {
        setRowHidden(r - 1, hide);
    }
    return fromRow <= toRow;
}

bool GridWindow::HideCols(int fromCol, int toCol, bool hide) {
    fromCol = std::max(fromCol, 1);
    toCol = std::min(toCol, GetColCount());
    for (int c = fromCol; c <= toCol; ++c) {
        setColumnHidden(c - 1, hide);
    }
    return fromCol <= toCol;
}

bool GridWindow::IsRowHidden(int row) const {
    return row >= 1 && row <= GetRowCount() && isRowHidden(row - 1);
}

bool GridWindow::IsColHidden(int col) const {
    return col >= 1 && col <= GetColCount() && isColumnHidden(col - 1);
}

bool GridWindow::SetColWidth(int fromCol, int toCol, int width) {
    if (width < 0) {
        return false;
    }
    for (int c = fromCol; c <= toCol; ++c) {
        if (c == 0) {
            m_rowHeader->setFixedWidth(width);
        } else if (c <= GetColCount()) {
            setColumnWidth(c - 1, width);
        }
    }
    return true;
}

int GridWindow::GetColWidth(int col) const {
    if (col == 0) {
        return m_rowHeader->width();
    }
    return col <= GetColCount() ? columnWidth(col - 1) : 0;
}

void GridWindow::SetDefaultColWidth(int width) {
    m_defaultColWidth = std::max(width, 0);
    m_colHeader->setDefaultSectionSize(m_defaultColWidth);
    for (int c = 1; c <= GetColCount(); ++c) {
        setColumnWidth(c - 1, m_defaultColWidth);
    }
}

void GridWindow::SetColSkippedByKeys(int col, bool skipped) {
    if (col >= 0 && col <= GetColCount()) {
        m_skippedCols.resize(size_t(GetColCount()) + 1, false);
        m_skippedCols[size_t(col)] = skipped;
    }
}

int GridWindow::GetRowHeaderWidth() const {
    return m_rowHeader->width();
}

// --- Values and styles -----------------------------------------------------------

bool GridWindow::rawReadOnly(int row, int col) const {
    const GridModel::Cell* cell = m_model->cell(row, col);
    if (cell == nullptr) {
        return false;
    }
    if (cell->style.readOnly) {
        return *cell->style.readOnly;
    }
    if (const CellStyle* column = m_model->columnStyleIf(col); column && column->readOnly) {
        return *column->readOnly;
    }
    return m_model->standardStyle().isReadOnly();
}

bool GridWindow::IsCellReadOnly(int row, int col) const {
    return m_readOnly || rawReadOnly(row, col);
}

bool GridWindow::SetValueRange(const GridRange& range, const QString& value) {
    const GridRange cells = range.bounded(GetRowCount(), GetColCount());
    if (!cells.isValid()) {
        return false;
    }
    const bool locked = m_param.IsLockReadOnly();
    bool all = true;
    bool any = false;
    const int bottom = std::min(cells.bottom(), GetRowCount());
    const int right = std::min(cells.right(), GetColCount());
    for (int r = cells.top(); r <= bottom; ++r) {
        for (int c = cells.left(); c <= right; ++c) {
            if (locked && IsCellReadOnly(r, c)) {
                all = false;
                continue;
            }
            m_model->cell(r, c)->value = value;
            any = true;
        }
    }
    if (any) {
        m_model->cellsChanged(cells.top(), cells.left(), bottom, right);
    }
    return all && cells.top() <= bottom && cells.left() <= right;
}

bool GridWindow::SetStyleRange(const GridRange& range, const CellStyle& style,
                               CellStyle::Modify mode) {
    const bool locked = m_param.IsLockReadOnly();
    if (range.kind() == GridRange::Kind::Cols) {
        const int right = std::min(range.right(), GetColCount());
        for (int c = std::max(range.left(), 0); c <= right; ++c) {
            m_model->columnStyle(c).apply(style, mode);
        }
        m_model->cellsChanged(0, range.left(), GetRowCount(), right);
        return true;
    }
    const GridRange cells = range.bounded(GetRowCount(), GetColCount());
    if (!cells.isValid()) {
        return false;
    }
    const int bottom = std::min(cells.bottom(), GetRowCount());
    const int right = std::min(cells.right(), GetColCount());
    bool all = true;
    if (mode == CellStyle::Modify::Override && !locked) {
        // The common case, a colour laid over whole rows at every cursor step: the
        // assignments are found once and each row's cells are walked in place.
        const CellStyle::Setters setters = style.setters();
        for (int r = cells.top(); r <= bottom && !setters.empty(); ++r) {
            GridModel::Cell* row = m_model->cell(r, cells.left());
            for (int c = 0; c <= right - cells.left(); ++c) {
                for (CellStyle::Setter set : setters)
                    set(row[c].style, style);
            }
        }
    } else {
        for (int r = cells.top(); r <= bottom; ++r) {
            for (int c = cells.left(); c <= right; ++c) {
                if (locked && IsCellReadOnly(r, c)) {
                    all = false;
                    continue;
                }
                m_model->cell(r, c)->style.apply(style, mode);
            }
        }
    }
    m_model->cellsChanged(cells.top(), cells.left(), bottom, right);
    return all && cells.top() <= bottom && cells.left() <= right;
}

QString GridWindow::GetValueRowCol(int row, int col) const {
    const GridModel::Cell* cell = m_model->cell(row, col);
    return cell != nullptr ? cell->value : QString();
}

CellStyle GridWindow::GetCellStyle(int row, int col) const {
    CellStyle style;
    GetStyleRowCol(row, col, style, -1);
    return style;
}

bool GridWindow::GetStyleRowCol(int row, int col, CellStyle& style, int) const {
    const GridModel::Cell* cell = m_model->cell(row, col);
    if (cell == nullptr) {
        return false;
    }
    style = m_model->standardStyle();
    if (row == 0) {
        style.apply(m_model->colHeaderStyle());
    } else if (col == 0) {
        style.apply(m_model->rowHeaderStyle());
    }
    if (const CellStyle* column = m_model->columnStyleIf(col)) {
        style.apply(*column);
    }
    style.apply(cell->style);
    return true;
}

void GridWindow::ChangeStandardStyle(const CellStyle& style, CellStyle::Modify mode) {
    m_model->standardStyle().apply(style, mode);
    m_model->cellsChanged(0, 0, GetRowCount(), GetColCount());
}

void GridWindow::ChangeColHeaderStyle(const CellStyle& style, CellStyle::Modify mode) {
    m_model->colHeaderStyle().apply(style, mode);
    if (style.font) {
        m_colHeader->setFont(*style.font);
    }
    m_model->cellsChanged(0, 0, 0, GetColCount());
}

void GridWindow::ChangeRowHeaderStyle(const CellStyle& style, CellStyle::Modify mode) {
    m_model->rowHeaderStyle().apply(style, mode);
    if (style.font) {
        m_rowHeader->setFont(*style.font);
    }
    m_model->cellsChanged(0, 0, GetRowCount(), 0);
}

void GridWindow::SetReadOnly(bool readOnly) {
    if (readOnly) {
        Undo();
    }
    m_readOnly = readOnly;
}

bool GridWindow::canUserEdit(int row, int col) const {
    if (m_readOnly || row < 1 || col < 1 || row > GetRowCount() || col > GetColCount()) {
        return false;
    }
    const CellStyle style = GetCellStyle(row, col);
    return !style.isReadOnly() &&
           style.controlOr(CellStyle::Control::Edit) != CellStyle::Control::Static;
}

// --- Screen updates ----------------------------------------------------------------

bool GridWindow::LockUpdate(bool lock) {
    const bool previous = m_updateHeld;
    m_updateHeld = lock;
    m_model->setHeld(lock);
    viewport()->setUpdatesEnabled(!lock);
    m_colHeader->viewport()->setUpdatesEnabled(!lock);
    m_rowHeader->viewport()->setUpdatesEnabled(!lock);
    if (previous && !lock) {
        Redraw();
    }
    return previous;
}

void GridWindow::Redraw() {
    if (m_updateHeld) {
        return;
    }
    viewport()->update();
    m_colHeader->viewport()->update();
    m_rowHeader->viewport()->update();
}

// --- Selection -------------------------------------------------------------------

QModelIndex GridWindow::modelIndex(int row, int col) const {
    if (row < 1 || col < 1 || row > GetRowCount() || col > GetColCount()) {
        return {};
    }
    return m_model->index(row - 1, col - 1);
}

void GridWindow::selectRect(int top, int left, int bottom, int right, bool select) {
    top = std::max(top, 1);
    left = std::max(left, 1);
    bottom = std::min(bottom, GetRowCount());
    right = std::min(right, GetColCount());
    if (top > bottom || left > right) {
        return;
    }
    selectionModel()->select(QItemSelection(modelIndex(top, left), modelIndex(bottom, right)),
                             select ? QItemSelectionModel::Select : QItemSelectionModel::Deselect);
}

std::vector<GridRange> GridWindow::GetSelectedRanges() const {
    std::vector<GridRange> ranges;
    for (const QItemSelectionRange& range : selectionModel()->selection()) {
        ranges.emplace_back(range.top() + 1, range.left() + 1, range.bottom() + 1,
                            range.right() + 1);
    }
    return ranges;
}

bool GridWindow::HasSelection() const {
    return selectionModel()->hasSelection();
}

int GridWindow::GetSelectedRows(std::vector<quint32>& rows, bool rangeRowsOnly,
                                bool canUseCurrentCell) const {
    rows.clear();
    std::vector<bool> seen(size_t(GetRowCount()) + 1, false);
    for (const GridRange& range : GetSelectedRanges()) {
        if (rangeRowsOnly && (range.left() != 1 || range.right() != GetColCount())) {
            continue;
        }
        for (int r = range.top(); r <= range.bottom(); ++r) {
            seen[size_t(r)] = true;
        }
    }
    for (int r = 1; r <= GetRowCount(); ++r) {
        if (seen[size_t(r)]) {
            rows.push_back(quint32(r));
        }
    }
    int row = 0;
    int col = 0;
    if (rows.empty() && canUseCurrentCell && !HasSelection() && GetCurrentCell(row, col)) {
        rows.push_back(quint32(row));
    }
    return int(rows.size());
}

int GridWindow::GetSelectedCols(std::vector<quint32>& cols, bool rangeColsOnly,
                                bool canUseCurrentCell) const {
    cols.clear();
    std::vector<bool> seen(size_t(GetColCount()) + 1, false);
    for (const GridRange& range : GetSelectedRanges()) {
        if (rangeColsOnly && (range.top() != 1 || range.bottom() != GetRowCount())) {
            continue;
        }
        for (int c = range.left(); c <= range.right(); ++c) {
            seen[size_t(c)] = true;
        }
    }
    for (int c = 1; c <= GetColCount(); ++c) {
        if (seen[size_t(c)]) {
            cols.push_back(quint32(c));
        }
    }
    int row = 0;
    int col = 0;
    if (cols.empty() && canUseCurrentCell && !HasSelection() && GetCurrentCell(row, col)) {
        cols.push_back(quint32(col));
    }
    return int(cols.size());
}

std::vector<quint32> GridWindow::GetSelectedRows(bool rangeRowsOnly, bool canUseCurrentCell) const {
    std::vector<quint32> rows;
    GetSelectedRows(rows, rangeRowsOnly, canUseCurrentCell);
    return rows;
}

std::vector<quint32> GridWindow::GetSelectedCols(bool rangeColsOnly, bool canUseCurrentCell) const {
    std::vector<quint32> cols;
    GetSelectedCols(cols, rangeColsOnly, canUseCurrentCell);
    return cols;
}

void GridWindow::SelectRange(const GridRange& range, bool select) {
    const GridRange cells = range.bounded(GetRowCount(), GetColCount());
    if (cells.isValid()) {
        selectRect(cells.top(), cells.left(), cells.bottom(), cells.right(), select);
    }
}

void GridWindow::ClearSelection() {
    selectionModel()->clearSelection();
}

// --- Current cell ----------------------------------------------------------------

bool GridWindow::GetCurrentCell(int& row, int& col) const {
    const QModelIndex current = currentIndex();
    if (!current.isValid()) {
        return false;
    }
    row = current.row() + 1;
    col = current.column() + 1;
    return true;
}

bool GridWindow::leaveCurrentCell(int newRow, int newCol) {
    // The editor's text reaches the model first, so that OnLeftCell reads it there.
    TransferCurrentCell();
    int row = 0;
    int col = 0;
    if (m_inLeftCell || !GetCurrentCell(row, col)) {
        return true;
    }
    m_inLeftCell = true;
    const bool ok = OnLeftCell(row, col, newRow, newCol);
    m_inLeftCell = false;
    return ok;
}

bool GridWindow::changeCurrentCell(int row, int col, bool notify) {
    const QModelIndex target = modelIndex(row, col);
    if (notify) {
        if (!leaveCurrentCell(target.isValid() ? row : 0, target.isValid() ? col : 0)) {
            return false;
        }
    } else {
        TransferCurrentCell();
    }
    selectionModel()->setCurrentIndex(target, QItemSelectionModel::NoUpdate);
    if (target.isValid()) {
        scrollTo(target);
        emit currentCellChanged(row, col);
    } else {
        emit currentCellChanged(0, 0);
    }
    return true;
}

bool GridWindow::SetCurrentCell(int row, int col, unsigned) {
    if ((row != 0 || col != 0) && !modelIndex(row, col).isValid()) {
        return false;
    }
    if (!changeCurrentCell(row, col, true)) {
        return false;
    }
    m_anchorRow = row;
    m_anchorCol = col;
    return true;
}

bool GridWindow::isReachable(int row, int col) const {
    return row >= 1 && col >= 1 && row <= GetRowCount() && col <= GetColCount() &&
           !isRowHidden(row - 1) && !isColumnHidden(col - 1) &&
           !(size_t(col) < m_skippedCols.size() && m_skippedCols[size_t(col)]);
}

bool GridWindow::FindNextCell(int direction, int& row, int& col) const {
    const int rows = GetRowCount();
    const int cols = GetColCount();
    auto firstRow = [&](int from, int step) {
        for (int r = from; r >= 1 && r <= rows; r += step) {
            if (!isRowHidden(r - 1)) {
                return r;
            }
        }
        return 0;
    };
    auto firstCol = [&](int at, int from, int step) {
        for (int c = from; c >= 1 && c <= cols; c += step) {
            if (isReachable(at, c)) {
                return c;
            }
        }
        return 0;
    };
    const int page = std::max(1, viewport()->height() / std::max(1, rowHeight(0)) - 1);
    int r = row;
    int c = col;
    switch (direction) {
    case Up:
        r = firstRow(row - 1, -1);
        break;
    case Down:
        r = firstRow(row + 1, 1);
        break;
    case Left:
        c = firstCol(row, col - 1, -1);
        break;
    case Right:
        c = firstCol(row, col + 1, 1);
        break;
    case PageUp:
        r = firstRow(std::max(row - page, 1), 1);
        break;
    case PageDown:
        r = firstRow(std::min(row + page, rows), -1);
        break;
    case Top:
        r = firstRow(1, 1);
        break;
    case Bottom:
        r = firstRow(rows, -1);
        break;
    case MostLeft:
        c = firstCol(row, 1, 1);
        break;
    case MostRight:
        c = firstCol(row, cols, -1);
        break;
    case TopLeft:
        r = firstRow(1, 1);
        c = firstCol(r, 1, 1);
        break;
    case BottomRight:
        r = firstRow(rows, -1);
        c = firstCol(r, cols, -1);
        break;
    default:
        return false;
    }
    if (r == 0 || c == 0 || (r == row && c == col)) {
        return false;
    }
    row = r;
    col = c;
    return true;
}

bool GridWindow::MoveCurrentCell(int direction, int count) {
    int row = 0;
    int col = 0;
    if (!GetCurrentCell(row, col)) {
        row = 1;
        col = 1;
        if (!FindNextCell(TopLeft, row, col) && !isReachable(row, col)) {
            return false;
        }
        return SetCurrentCell(row, col);
    }
    int r = row;
    int c = col;
    bool moved = false;
    for (int i = 0; i < std::max(count, 1); ++i) {
        if (!FindNextCell(direction, r, c)) {
            break;
        }
        moved = true;
    }
    if (!moved) {
        return false;
    }
    return SetCurrentCell(r, c);
}

void GridWindow::SetTopRow(int row, unsigned) {
    const QModelIndex index = modelIndex(row, std::max(1, columnAt(0) + 1));
    if (index.isValid()) {
        scrollTo(index, QAbstractItemView::PositionAtTop);
    }
}

int GridWindow::GetTopRow() const {
    const int row = rowAt(0);
    return row < 0 ? 0 : row + 1;
}

// --- The open edit ---------------------------------------------------------------

bool GridWindow::IsActiveCurrentCell() const {
    return !m_editor.isNull();
}

bool GridWindow::StartEditing() {
    int row = 0;
    int col = 0;
    if (IsActiveCurrentCell() || !GetCurrentCell(row, col) || !canUserEdit(row, col)) {
        return false;
    }
    edit(modelIndex(row, col));
    if (auto* line = qobject_cast<QLineEdit*>(m_editor.data())) {
        line->deselect();
        line->end(false);
    } else if (auto* list = qobject_cast<QComboBox*>(m_editor.data())) {
        list->showPopup();
    }
    return IsActiveCurrentCell();
}

void GridWindow::startEditWithText(const QString& text) {
    int row = 0;
    int col = 0;
    if (!GetCurrentCell(row, col) || !canUserEdit(row, col)) {
        return;
    }
    if (!IsActiveCurrentCell()) {
        edit(modelIndex(row, col));
    }
    if (auto* line = qobject_cast<QLineEdit*>(m_editor.data())) {
        // Typing on a cell replaces its text, as in a spreadsheet.
        line->setText(text);
        editorTextChanged();
    } else if (auto* list = qobject_cast<QComboBox*>(m_editor.data())) {
        const int at = list->findText(text, Qt::MatchStartsWith);
        if (at >= 0 && at != list->currentIndex()) {
            list->setCurrentIndex(at);
            editorTextChanged();
        }
    }
}

void GridWindow::editorTextChanged() {
    if (m_editModified) {
        return;
    }
    m_editModified = true;
    const QModelIndex index = currentIndex();
    if (index.isValid()) {
        OnModifyCell(index.row() + 1, index.column() + 1);
    }
}

void GridWindow::storeEditorText(int row, int col, const QString& text) {
    GridModel::Cell* cell = m_model->cell(row, col);
    if (cell == nullptr || cell->value == text) {
        return;
    }
    cell->value = text;
    m_model->cellsChanged(row, col, row, col);
}

void GridWindow::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    runHandler("closing a cell of a grid", [&] {
        // Qt closes an editor by itself when it loses the focus; the grid forgets it then.
        if (editor == m_editor.data()) {
            m_editor.clear();
            m_editModified = false;
        }
        QTableView::closeEditor(editor, hint);
    });
}

bool GridWindow::Undo() {
    if (m_editor.isNull()) {
        return false;
    }
    QWidget* editor = m_editor.data();
    m_editor.clear();
    m_editModified = false;
    closeEditor(editor, QAbstractItemDelegate::RevertModelCache);
    return true;
}

bool GridWindow::TransferCurrentCell() {
    if (m_editor.isNull()) {
        return false;
    }
    QWidget* editor = m_editor.data();
    commitData(editor);
    m_editor.clear();
    m_editModified = false;
    closeEditor(editor, QAbstractItemDelegate::NoHint);
    return true;
}

// --- Sort and move ---------------------------------------------------------------

bool GridWindow::SortRows(const GridRange& rows, const std::vector<GridSortInfo>& keys) {
    const int top = std::max(rows.top(), 1);
    const int bottom = std::min(rows.bottom(), GetRowCount());
    if (top >= bottom || keys.empty()) {
        return false;
    }
    TransferCurrentCell();
    const int count = bottom - top + 1;
    // Collation keys once per row and key, so that the sort compares bytes.
    std::vector<std::vector<QCollatorSortKey>> sortKeys;
    sortKeys.reserve(keys.size());
    for (const GridSortInfo& key : keys) {
        QCollator collator;
        collator.setCaseSensitivity(key.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive);
        collator.setNumericMode(false);
        std::vector<QCollatorSortKey> column;
        column.reserve(size_t(count));
        for (int r = top; r <= bottom; ++r) {
            // Folded here: not every collation backend honours case insensitivity.
            const QString text = GetValueRowCol(r, key.col);
            column.push_back(collator.sortKey(key.caseSensitive ? text : text.toCaseFolded()));
        }
        sortKeys.push_back(std::move(column));
    }
    std::vector<int> order(static_cast<size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        for (size_t k = 0; k < keys.size(); ++k) {
            const int compared = sortKeys[k][size_t(a)].compare(sortKeys[k][size_t(b)]);
            if (compared != 0) {
                return keys[k].ascending ? compared < 0 : compared > 0;
            }
        }
        return false;
    });
    m_model->permuteGridRows(top, order);
    return true;
}

bool GridWindow::MoveRows(int fromRow, int toRow, int destRow) {
    TransferCurrentCell();
    return m_model->moveGridRows(fromRow, toRow, destRow);
}

// --- Clipboard -------------------------------------------------------------------

bool GridWindow::CanCopy() const {
    int row = 0;
    int col = 0;
    return HasSelection() || GetCurrentCell(row, col);
}

bool GridWindow::CanCut() const {
    return !m_readOnly && CanCopy();
}

bool GridWindow::CanPaste() const {
    return !m_readOnly && CanCopy() && ClipboardHasText();
}

GridRange GridWindow::GetPasteRange() const {
    const std::vector<GridRange> ranges = GetSelectedRanges();
    if (!ranges.empty()) {
        GridRange box = ranges.front();
        for (const GridRange& range : ranges) {
            box = GridRange(std::min(box.top(), range.top()), std::min(box.left(), range.left()),
                            std::max(box.bottom(), range.bottom()),
                            std::max(box.right(), range.right()));
        }
        return box;
    }
    int row = 0;
    int col = 0;
    return GetCurrentCell(row, col) ? GridRange(row, col) : GridRange();
}

QString GridWindow::GetRangeText(const GridRange& range) const {
    const GridRange cells = range.bounded(GetRowCount(), GetColCount());
    QString text;
    if (!cells.isValid()) {
        return text;
    }
    const int bottom = std::min(cells.bottom(), GetRowCount());
    const int right = std::min(cells.right(), GetColCount());
    for (int r = cells.top(); r <= bottom; ++r) {
        for (int c = cells.left(); c <= right; ++c) {
            if (c > cells.left()) {
                text += u'\t';
            }
            text += GetValueRowCol(r, c);
        }
        text += u'\n';
    }
    return text;
}

bool GridWindow::CopyRange(const GridRange& range) {
    if (!range.isValid()) {
        return false;
    }
    TransferCurrentCell();
    return SetClipboardText(GetRangeText(range));
}

bool GridWindow::CutRange(const GridRange& range) {
    if (m_readOnly || !CopyRange(range)) {
        return false;
    }
    SetValueRange(range, QString());
    return true;
}

bool GridWindow::Paste() {
    if (m_readOnly) {
        return false;
    }
    TransferCurrentCell();
    const GridRange range = GetPasteRange();
    return range.isValid() && OnPasteFromClipboard(range);
}

bool GridWindow::CopyTextToFile(QIODevice& file, const GridRange& range) const {
    if (!file.isWritable()) {
        return false;
    }
    const QByteArray bytes = GetRangeText(range).toUtf8();
    return file.write(bytes) == bytes.size();
}

// --- Notifications: the defaults -------------------------------------------------

void GridWindow::OnModifyCell(int, int) {}

bool GridWindow::OnLeftCell(int, int, int, int) {
    return true;
}

void GridWindow::applyClickSelection(int row, int col, unsigned flags, bool extend) {
    const bool shift = (flags & MK_SHIFT) != 0 && m_param.IsSelectionEnabled(GridParam::SelShift);
    const bool control =
        (flags & MK_CONTROL) != 0 && m_param.IsSelectionEnabled(GridParam::SelMultiple);
    const int cols = GetColCount();
    const int rows = GetRowCount();
    const bool rowHit = col == 0 && row > 0;
    const bool colHit = row == 0 && col > 0;
    const bool cellSelection = m_param.IsSelectionEnabled(GridParam::SelCell);
    const bool rowSelection = m_param.IsSelectionEnabled(GridParam::SelRow);
    // Without cell selection a click with Shift or Ctrl on a cell acts on its row, as
    // in a list.
    const bool asRow = rowHit || (!cellSelection && rowSelection && !colHit && (shift || control));
    if (asRow) {
        if (!rowSelection) {
            return;
        }
        if (control && !extend) {
            const bool selected = selectionModel()->isRowSelected(row - 1, QModelIndex());
            selectRect(row, 1, row, cols, !selected);
            m_anchorRow = row;
            return;
        }
        if (!control) {
            ClearSelection();
        }
        const int from = (shift || extend) && m_anchorRow > 0 ? m_anchorRow : row;
        selectRect(std::min(from, row), 1, std::max(from, row), cols, true);
        if (!shift && !extend) {
            m_anchorRow = row;
        }
        return;
    }
    if (colHit) {
        if (!m_param.IsSelectionEnabled(GridParam::SelCol)) {
            return;
        }
        if (!control) {
            ClearSelection();
        }
        const int from = (shift || extend) && m_anchorCol > 0 ? m_anchorCol : col;
        selectRect(1, std::min(from, col), rows, std::max(from, col), true);
        if (!shift && !extend) {
            m_anchorCol = col;
        }
        return;
    }
    if (row == 0 && col == 0) {
        if (m_param.IsSelectionEnabled(GridParam::SelTable)) {
            selectRect(1, 1, rows, cols, true);
        }
        return;
    }
    if (!cellSelection) {
        return;
    }
    if (shift || extend) {
        if (!control) {
            ClearSelection();
        }
        const int fromRow = m_anchorRow > 0 ? m_anchorRow : row;
        const int fromCol = m_anchorCol > 0 ? m_anchorCol : col;
        selectRect(std::min(fromRow, row), std::min(fromCol, col), std::max(fromRow, row),
                   std::max(fromCol, col), true);
        return;
    }
    if (control) {
        const bool selected = selectionModel()->isSelected(modelIndex(row, col));
        selectRect(row, col, row, col, !selected);
    } else {
        ClearSelection();
    }
    m_anchorRow = row;
    m_anchorCol = col;
}

bool GridWindow::OnLButtonHitRowCol(int hitRow, int hitCol, int dragRow, int dragCol, QPoint,
                                    unsigned flags, int hitState) {
    if (hitState == HitStart) {
        if (hitRow > 0 && hitCol > 0) {
            int row = 0;
            int col = 0;
            const bool had = GetCurrentCell(row, col);
            const bool keepAnchor = (flags & MK_SHIFT) != 0;
            const int anchorRow = m_anchorRow;
            const int anchorCol = m_anchorCol;
            if (!had || row != hitRow || col != hitCol || IsActiveCurrentCell()) {
                if (!changeCurrentCell(hitRow, hitCol, true)) {
                    return true;
                }
            }
            if (keepAnchor) {
                m_anchorRow = anchorRow;
                m_anchorCol = anchorCol;
            }
        }
        applyClickSelection(hitRow, hitCol, flags, false);
    } else if (hitState == HitMove) {
        if (hitRow > 0 && hitCol > 0 && dragRow > 0 && dragCol > 0 &&
            m_param.IsSelectionEnabled(GridParam::SelCell)) {
            ClearSelection();
            selectRect(std::min(hitRow, dragRow), std::min(hitCol, dragCol),
                       std::max(hitRow, dragRow), std::max(hitCol, dragCol), true);
        } else if (hitCol == 0 && dragRow > 0) {
            applyClickSelection(dragRow, 0, flags, true);
        } else if (hitRow == 0 && dragCol > 0) {
            applyClickSelection(0, dragCol, flags, true);
        }
    }
    return true;
}

bool GridWindow::OnLButtonDblClkRowCol(int row, int col, unsigned, QPoint) {
    if (row == 0 && col > 0) {
        // Blank rows at the bottom (where new rows are typed) stay at the bottom.
        int last = GetRowCount();
        auto blank = [this](int r) {
            for (int c = 1; c <= GetColCount(); ++c) {
                if (!GetValueRowCol(r, c).isEmpty()) {
                    return false;
                }
            }
            return true;
        };
        while (last > 0 && blank(last)) {
            --last;
        }
        m_sortAscending = !m_sortAscending;
        return SortRows(GridRange::rows(1, last), {GridSortInfo{col, m_sortAscending}});
    }
    if (row > 0 && col > 0) {
        return StartEditing();
    }
    return false;
}

bool GridWindow::OnRButtonClickedRowCol(int row, int col, unsigned, QPoint) {
    if (row < 1 || col < 1) {
        return true;
    }
    int currentRow = 0;
    int currentCol = 0;
    const bool isCurrent =
        GetCurrentCell(currentRow, currentCol) && currentRow == row && currentCol == col;
    if (!isCurrent && !selectionModel()->isSelected(modelIndex(row, col))) {
        if (changeCurrentCell(row, col, true)) {
            ClearSelection();
            m_anchorRow = row;
            m_anchorCol = col;
        }
    }
    return true;
}

bool GridWindow::OnTrackColWidth(int col) {
    return col >= 1;
}

bool GridWindow::OnTrackColWidthEnd(int, int) {
    return true;
}

bool GridWindow::OnPasteFromClipboard(const GridRange& range) {
    bool opened = false;
    QString text = GetClipboardText(&opened);
    if (!opened || text.isEmpty() || !range.isValid()) {
        return false;
    }
    text.remove(u'\r');
    QStringList lines = text.split(u'\n');
    if (lines.size() > 1 && lines.constLast().isEmpty()) {
        lines.removeLast();
    }
    const int top = std::max(range.top(), 1);
    const int left = std::max(range.left(), 1);
    const bool held = LockUpdate(true);
    if (top + int(lines.size()) - 1 > GetRowCount()) {
        SetRowCount(top + int(lines.size()) - 1);
    }
    const bool locked = m_param.IsLockReadOnly();
    int right = left;
    for (int i = 0; i < int(lines.size()); ++i) {
        const QStringList fields = lines.at(i).split(u'\t');
        for (int j = 0; j < int(fields.size()); ++j) {
            const int row = top + i;
            const int col = left + j;
            if (col > GetColCount() || (locked && IsCellReadOnly(row, col))) {
                continue;
            }
            m_model->cell(row, col)->value = fields.at(j);
            right = std::max(right, col);
        }
    }
    m_model->cellsChanged(top, left, top + int(lines.size()) - 1, right);
    LockUpdate(held);
    return true;
}

bool GridWindow::PreTranslateKey(QKeyEvent*) {
    return false;
}

qintptr GridWindow::OnPrivateMessage(unsigned, quintptr, qintptr) {
    return 0;
}

// --- Events ----------------------------------------------------------------------

bool GridWindow::event(QEvent* event) {
    return runHandler("an event of a grid", true, [&] {
        if (event->type() == PrivateMessageEvent::eventType()) {
            auto* message = static_cast<PrivateMessageEvent*>(event);
            OnPrivateMessage(message->message(), message->wParam(), message->lParam());
            return true;
        }
        return QTableView::event(event);
    });
}

unsigned GridWindow::mouseFlags(const QMouseEvent* event) const {
    unsigned flags = 0;
    if (event->buttons() & Qt::LeftButton) {
        flags |= MK_LBUTTON;
    }
    if (event->buttons() & Qt::RightButton) {
        flags |= MK_RBUTTON;
    }
    if (event->modifiers() & Qt::ShiftModifier) {
        flags |= MK_SHIFT;
    }
    if (event->modifiers() & Qt::ControlModifier) {
        flags |= MK_CONTROL;
    }
    return flags;
}

void GridWindow::mousePressEvent(QMouseEvent* event) {
    runHandler("a mouse press in a grid", [&] {
        if (!hasFocus()) {
            setFocus(Qt::MouseFocusReason);
        }
        const QPoint pos = event->position().toPoint();
        const QModelIndex index = indexAt(pos);
        if (!index.isValid() || event->button() != Qt::LeftButton) {
            return;
        }
        m_mouseDown = true;
        m_hitRow = m_dragRow = index.row() + 1;
        m_hitCol = m_dragCol = index.column() + 1;
        OnLButtonHitRowCol(m_hitRow, m_hitCol, m_dragRow, m_dragCol, viewport()->mapTo(this, pos),
                           mouseFlags(event), HitStart);
    });
}

void GridWindow::mouseMoveEvent(QMouseEvent* event) {
    runHandler("a mouse move in a grid", [&] {
        if (!m_mouseDown) {
            return;
        }
        const QPoint pos = event->position().toPoint();
        const QModelIndex index = indexAt(pos);
        if (!index.isValid() || (index.row() + 1 == m_dragRow && index.column() + 1 == m_dragCol)) {
            return;
        }
        m_dragRow = index.row() + 1;
        m_dragCol = index.column() + 1;
        OnLButtonHitRowCol(m_hitRow, m_hitCol, m_dragRow, m_dragCol, viewport()->mapTo(this, pos),
                           mouseFlags(event), HitMove);
    });
}

void GridWindow::mouseReleaseEvent(QMouseEvent* event) {
    runHandler("a mouse release in a grid", [&] {
        const QPoint pos = event->position().toPoint();
        if (event->button() == Qt::LeftButton && m_mouseDown) {
            m_mouseDown = false;
            OnLButtonHitRowCol(m_hitRow, m_hitCol, m_dragRow, m_dragCol,
                               viewport()->mapTo(this, pos), mouseFlags(event), HitEnd);
            return;
        }
        if (event->button() == Qt::RightButton) {
            const QModelIndex index = indexAt(pos);
            if (index.isValid()) {
                OnRButtonClickedRowCol(index.row() + 1, index.column() + 1, mouseFlags(event),
                                       viewport()->mapTo(this, pos));
            }
        }
    });
}

void GridWindow::mouseDoubleClickEvent(QMouseEvent* event) {
    runHandler("a double click in a grid", [&] {
        const QPoint pos = event->position().toPoint();
        const QModelIndex index = indexAt(pos);
        if (!index.isValid() || event->button() != Qt::LeftButton) {
            return;
        }
        OnLButtonDblClkRowCol(index.row() + 1, index.column() + 1, mouseFlags(event),
                              viewport()->mapTo(this, pos));
    });
}

void GridWindow::headerPress(Qt::Orientation orientation, int section, QMouseEvent* event) {
    if (section < 0) {
        return;
    }
    if (!hasFocus()) {
        setFocus(Qt::MouseFocusReason);
    }
    const int row = orientation == Qt::Horizontal ? 0 : section + 1;
    const int col = orientation == Qt::Horizontal ? section + 1 : 0;
    const QPoint point =
        (orientation == Qt::Horizontal ? static_cast<QWidget*>(m_colHeader) : m_rowHeader)
            ->mapTo(this, event->position().toPoint());
    if (event->button() == Qt::RightButton) {
        OnRButtonClickedRowCol(row, col, mouseFlags(event), point);
        return;
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    // A press on a selected row's header starts a row move when moves are on.
    m_movingRows = orientation == Qt::Vertical && m_param.IsEnableMoveRows() &&
                   event->modifiers() == Qt::NoModifier &&
                   selectionModel()->isRowSelected(section, QModelIndex());
    m_mouseDown = true;
    m_hitRow = m_dragRow = row;
    m_hitCol = m_dragCol = col;
    if (!m_movingRows) {
        OnLButtonHitRowCol(row, col, row, col, point, mouseFlags(event), HitStart);
    }
}

void GridWindow::headerMove(Qt::Orientation orientation, int section, QMouseEvent* event) {
    if (!m_mouseDown || section < 0) {
        return;
    }
    const int row = orientation == Qt::Horizontal ? 0 : section + 1;
    const int col = orientation == Qt::Horizontal ? section + 1 : 0;
    if (row == m_dragRow && col == m_dragCol) {
        return;
    }
    m_dragRow = row;
    m_dragCol = col;
    if (m_movingRows) {
        return;
    }
    OnLButtonHitRowCol(m_hitRow, m_hitCol, m_dragRow, m_dragCol, QPoint(), mouseFlags(event),
                       HitMove);
}

void GridWindow::headerRelease(Qt::Orientation orientation, int section, QMouseEvent* event) {
    if (!m_mouseDown) {
        return;
    }
    m_mouseDown = false;
    if (m_movingRows) {
        m_movingRows = false;
        const int target = orientation == Qt::Vertical && section >= 0 ? section + 1 : m_hitRow;
        if (target == m_hitRow) {
            // No move after all: the press was a plain click on the row.
            OnLButtonHitRowCol(m_hitRow, 0, m_hitRow, 0, QPoint(), mouseFlags(event), HitStart);
            OnLButtonHitRowCol(m_hitRow, 0, m_hitRow, 0, QPoint(), mouseFlags(event), HitEnd);
            return;
        }
        // The block of selected rows around the pressed one moves as one.
        int first = m_hitRow;
        int last = m_hitRow;
        while (first > 1 && selectionModel()->isRowSelected(first - 2, QModelIndex())) {
            --first;
        }
        while (last < GetRowCount() && selectionModel()->isRowSelected(last, QModelIndex())) {
            ++last;
        }
        const int count = last - first + 1;
        int dest = target < first ? target : target - count + 1;
        dest = std::clamp(dest, 1, GetRowCount() - count + 1);
        if (MoveRows(first, last, dest)) {
            ClearSelection();
            selectRect(dest, 1, dest + count - 1, GetColCount(), true);
        }
        return;
    }
    OnLButtonHitRowCol(m_hitRow, m_hitCol, m_dragRow, m_dragCol, QPoint(), mouseFlags(event),
                       HitEnd);
}

void GridWindow::headerDoubleClick(Qt::Orientation orientation, int section, QMouseEvent* event) {
    if (section < 0 || event->button() != Qt::LeftButton) {
        return;
    }
    const int row = orientation == Qt::Horizontal ? 0 : section + 1;
    const int col = orientation == Qt::Horizontal ? section + 1 : 0;
    OnLButtonDblClkRowCol(row, col, mouseFlags(event), QPoint());
}

void GridWindow::focusInEvent(QFocusEvent* event) {
    runHandler("a grid taking the focus", [&] {
        // Qt makes the first cell current when a view without one gets the focus; a grid
        // left deliberately without a current cell stays so until a person picks one.
        const bool none = !currentIndex().isValid();
        QTableView::focusInEvent(event);
        if (none && currentIndex().isValid()) {
            selectionModel()->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
        }
    });
}

bool GridWindow::focusNextPrevChild(bool next) {
    return runHandler("Tab in a grid", true, [&] {
        // Tab moves between cells inside the grid; it leaves the grid only from a grid
        // with no current cell to move.
        if (tabKeyNavigation() && isEnabled()) {
            QKeyEvent key(QEvent::KeyPress, next ? Qt::Key_Tab : Qt::Key_Backtab, Qt::NoModifier);
            if (handleGridKey(&key)) {
                return true;
            }
        }
        return QTableView::focusNextPrevChild(next);
    });
}

void GridWindow::keyPressEvent(QKeyEvent* event) {
    runHandler("a key press in a grid", [&] {
        if (handleGridKey(event)) {
            event->accept();
            return;
        }
        // Esc with no open edit, and keys the grid has no use for, go on to the dialog.
        event->ignore();
    });
}

bool GridWindow::handleGridKey(QKeyEvent* event) {
    const Qt::KeyboardModifiers mods = event->modifiers();
    const bool shift = (mods & Qt::ShiftModifier) != 0;
    const bool control = (mods & Qt::ControlModifier) != 0;
    int row = 0;
    int col = 0;
    const bool hasCurrent = GetCurrentCell(row, col);

    auto move = [&](int direction) {
        const int anchorRow = m_anchorRow > 0 ? m_anchorRow : row;
        const int anchorCol = m_anchorCol > 0 ? m_anchorCol : col;
        const bool extend = shift && m_param.IsSelectionEnabled(GridParam::SelShift) &&
                            m_param.IsSelectionEnabled(GridParam::SelCell);
        if (!MoveCurrentCell(direction)) {
            TransferCurrentCell();
            return;
        }
        int newRow = 0;
        int newCol = 0;
        GetCurrentCell(newRow, newCol);
        ClearSelection();
        if (extend) {
            m_anchorRow = anchorRow;
            m_anchorCol = anchorCol;
            selectRect(std::min(anchorRow, newRow), std::min(anchorCol, newCol),
                       std::max(anchorRow, newRow), std::max(anchorCol, newCol), true);
        }
    };

    switch (event->key()) {
    case Qt::Key_Up:
        move(control ? Top : Up);
        return true;
    case Qt::Key_Down:
        move(control ? Bottom : Down);
        return true;
    case Qt::Key_Left:
        move(control ? MostLeft : Left);
        return true;
    case Qt::Key_Right:
        move(control ? MostRight : Right);
        return true;
    case Qt::Key_PageUp:
        move(PageUp);
        return true;
    case Qt::Key_PageDown:
        move(PageDown);
        return true;
    case Qt::Key_Home:
        move(control ? TopLeft : MostLeft);
        return true;
    case Qt::Key_End:
        move(control ? BottomRight : MostRight);
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: {
        if (control) {
            // Ctrl+Tab leaves the grid for the dialog's next control.
            TransferCurrentCell();
            return QWidget::focusNextPrevChild(event->key() == Qt::Key_Tab && !shift);
        }
        if (!hasCurrent) {
            return false;
        }
        const bool back = event->key() == Qt::Key_Backtab || shift;
        int r = row;
        int c = col;
        if (FindNextCell(back ? Left : Right, r, c)) {
            SetCurrentCell(r, c);
        } else if (FindNextCell(back ? Up : Down, r, c) &&
                   FindNextCell(back ? MostRight : MostLeft, r, c)) {
            // Past the end of a row Tab goes on in the next one.
            SetCurrentCell(r, c);
        } else {
            TransferCurrentCell();
        }
        ClearSelection();
        return true;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        if (!hasCurrent) {
            return false;
        }
        int direction = m_param.GetEnterKeyAction();
        if (shift) {
            static const int opposite[] = {0, Down, Right, Up, Left};
            direction = direction >= 1 && direction <= 4 ? opposite[direction] : direction;
        }
        if (direction == 0 || !MoveCurrentCell(direction)) {
            TransferCurrentCell();
        }
        ClearSelection();
        return true;
    }
    case Qt::Key_F2:
        if (hasCurrent && !IsActiveCurrentCell()) {
            StartEditing();
            return true;
        }
        return false;
    case Qt::Key_Escape:
        return Undo();
    case Qt::Key_Delete: {
        if (!hasCurrent || m_readOnly || IsActiveCurrentCell()) {
            return false;
        }
        const GridRange range = GetPasteRange();
        if (range.rowCount() == 1 && range.colCount() == 1) {
            // One cell: an edit that empties it, left like any other.
            if (canUserEdit(row, col) && !GetValueRowCol(row, col).isEmpty()) {
                startEditWithText(QString());
            }
            return true;
        }
        for (int r = range.top(); r <= range.bottom(); ++r) {
            for (int c = range.left(); c <= range.right(); ++c) {
                if (canUserEdit(r, c) && !GetValueRowCol(r, c).isEmpty()) {
                    OnModifyCell(r, c);
                    SetValueRange(GridRange(r, c), QString());
                }
            }
        }
        return true;
    }
    default:
        break;
    }
    if (control && !(mods & Qt::AltModifier)) {
        switch (event->key()) {
        case Qt::Key_C:
            return CanCopy() && CopyRange(GetPasteRange());
        case Qt::Key_X:
            return CanCut() && CutRange(GetPasteRange());
        case Qt::Key_V:
            return CanPaste() && Paste();
        default:
            return false;
        }
    }
    const QString text = event->text();
    if (!text.isEmpty() && text.at(0).isPrint() && !(mods & Qt::AltModifier) && hasCurrent &&
        !IsActiveCurrentCell()) {
        if (!canUserEdit(row, col)) {
            return true;
        }
        startEditWithText(text);
        return true;
    }
    return false;
}

bool GridWindow::viewportEvent(QEvent* event) {
    return runHandler("an event of a grid", true, [&] {
        if (event->type() == QEvent::ToolTip) {
            auto* help = static_cast<QHelpEvent*>(event);
            const QModelIndex index = indexAt(help->pos());
            if (index.isValid()) {
                const int row = index.row() + 1;
                const int col = index.column() + 1;
                QString tip = GetCellStyle(row, col).tip.value_or(QString());
                if (tip.isEmpty() && m_param.GetCellTipDelay() > 0) {
                    // A cell tip shows a text that its column is too narrow for.
                    const QString text = GetValueRowCol(row, col);
                    if (fontMetrics().horizontalAdvance(text) + 8 > columnWidth(index.column())) {
                        tip = text;
                    }
                }
                if (!tip.isEmpty()) {
                    QToolTip::showText(help->globalPos(), tip, viewport(), visualRect(index));
                    return true;
                }
            }
            QToolTip::hideText();
            event->ignore();
            return true;
        }
        return QTableView::viewportEvent(event);
    });
}

} // namespace platform
