#include "platform/GridModel.h"

#include "platform/GridWindow.h"

#include <QBrush>

namespace platform {

GridModel::GridModel(GridWindow* grid) : QAbstractTableModel(grid), m_grid(grid) {
    m_headers.resize(1);
    m_colStyles.resize(1);
}

int GridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_rows.size());
}

int GridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_cols;
}

namespace {

QVariant styleData(const CellStyle& style, const QString& value, int role) {
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return value;
    case Qt::BackgroundRole:
        return style.interior ? QVariant(QBrush(*style.interior)) : QVariant();
    case Qt::ForegroundRole:
        return style.textColor ? QVariant(QBrush(*style.textColor)) : QVariant();
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(style.alignment.value_or(Qt::AlignLeft | Qt::AlignVCenter));
    case Qt::FontRole:
        return style.font ? QVariant(*style.font) : QVariant();
    case Qt::ToolTipRole:
        return style.tip ? QVariant(*style.tip) : QVariant();
    case GridModel::ControlRole:
        return int(style.controlOr(CellStyle::Control::Edit));
    case GridModel::ReadOnlyRole:
        return style.isReadOnly();
    case GridModel::ChoicesRole:
        return style.choices.value_or(QStringList());
    default:
        return {};
    }
}

} // namespace

QVariant GridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const int row = index.row() + 1;
    const int col = index.column() + 1;
    const Cell* c = cell(row, col);
    if (c == nullptr) {
        return {};
    }
    if (role == Qt::DisplayRole || role == Qt::EditRole) {
        return c->value;
    }
    CellStyle style;
    m_grid->GetStyleRowCol(row, col, style, 0);
    return styleData(style, c->value, role);
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    const int row = orientation == Qt::Horizontal ? 0 : section + 1;
    const int col = orientation == Qt::Horizontal ? section + 1 : 0;
    const Cell* c = cell(row, col);
    if (c == nullptr) {
        return {};
    }
    // Rows are numbered unless a row header was given a text of its own.
    const QString text =
        orientation == Qt::Vertical && c->value.isEmpty() ? QString::number(row) : c->value;
    if (role == Qt::DisplayRole || role == Qt::EditRole) {
        return text;
    }
    if (role == Qt::BackgroundRole || role == Qt::ForegroundRole) {
        return {}; // headers keep the style's header look
    }
    if (role == Qt::TextAlignmentRole) {
        return QVariant::fromValue(
            orientation == Qt::Horizontal ? Qt::AlignCenter : Qt::AlignRight | Qt::AlignVCenter);
    }
    CellStyle style;
    m_grid->GetStyleRowCol(row, col, style, 0);
    return styleData(style, text, role);
}

bool GridModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::EditRole) {
        return false;
    }
    const int row = index.row() + 1;
    const int col = index.column() + 1;
    if (!m_grid->canUserEdit(row, col)) {
        return false;
    }
    cell(row, col)->value = value.toString();
    cellsChanged(row, col, row, col);
    return true;
}

Qt::ItemFlags GridModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        return Qt::NoItemFlags;
    }
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (m_grid->canUserEdit(index.row() + 1, index.column() + 1)) {
        flags |= Qt::ItemIsEditable;
    }
    return flags;
}

void GridModel::setGridRows(int rows) {
    rows = std::max(rows, 0);
    const int now = gridRows();
    if (rows > now) {
        insertGridRows(now + 1, rows - now);
    } else if (rows < now) {
        removeGridRows(rows + 1, now);
    }
}

void GridModel::setGridCols(int cols) {
    cols = std::max(cols, 0);
    if (cols == m_cols) {
        return;
    }
    const bool grow = cols > m_cols;
    if (grow) {
        beginInsertColumns(QModelIndex(), m_cols, cols - 1);
    } else {
        beginRemoveColumns(QModelIndex(), cols, m_cols - 1);
    }
    m_cols = cols;
    for (auto& row : m_rows) {
        row.resize(size_t(cols) + 1);
    }
    m_headers.resize(size_t(cols) + 1);
    m_colStyles.resize(size_t(cols) + 1);
    if (grow) {
        endInsertColumns();
    } else {
        endRemoveColumns();
    }
}

void GridModel::insertGridRows(int row, int count) {
    if (count <= 0) {
        return;
    }
    row = std::clamp(row, 1, gridRows() + 1);
    beginInsertRows(QModelIndex(), row - 1, row + count - 2);
    m_rows.insert(m_rows.begin() + (row - 1), size_t(count), std::vector<Cell>(size_t(m_cols) + 1));
    endInsertRows();
}

void GridModel::removeGridRows(int fromRow, int toRow) {
    fromRow = std::max(fromRow, 1);
    toRow = std::min(toRow, gridRows());
    if (fromRow > toRow) {
        return;
    }
    beginRemoveRows(QModelIndex(), fromRow - 1, toRow - 1);
    m_rows.erase(m_rows.begin() + (fromRow - 1), m_rows.begin() + toRow);
    endRemoveRows();
}

bool GridModel::moveGridRows(int fromRow, int toRow, int destRow) {
    const int count = toRow - fromRow + 1;
    if (fromRow < 1 || toRow > gridRows() || count <= 0 || destRow < 1 ||
        destRow + count - 1 > gridRows() || destRow == fromRow) {
        return false;
    }
    // Qt counts the destination before the move; we count where the first row lands.
    const int destChild = destRow < fromRow ? destRow - 1 : destRow - 1 + count;
    if (!beginMoveRows(QModelIndex(), fromRow - 1, toRow - 1, QModelIndex(), destChild)) {
        return false;
    }
    std::vector<std::vector<Cell>> block(std::make_move_iterator(m_rows.begin() + fromRow - 1),
                                         std::make_move_iterator(m_rows.begin() + toRow));
    m_rows.erase(m_rows.begin() + fromRow - 1, m_rows.begin() + toRow);
    m_rows.insert(m_rows.begin() + destRow - 1, std::make_move_iterator(block.begin()),
                  std::make_move_iterator(block.end()));
    endMoveRows();
    return true;
}

void GridModel::permuteGridRows(int top, const std::vector<int>& order) {
    if (order.empty() || top < 1 || top - 1 + int(order.size()) > gridRows()) {
        return;
    }
    std::vector<std::vector<Cell>> sorted;
    sorted.reserve(order.size());
    for (int from : order) {
        sorted.push_back(std::move(m_rows[size_t(top - 1 + from)]));
    }
    std::move(sorted.begin(), sorted.end(), m_rows.begin() + (top - 1));
    cellsChanged(top, 0, top - 1 + int(order.size()), m_cols);
}

GridModel::Cell* GridModel::cell(int row, int col) {
    if (row < 0 || col < 0 || row > gridRows() || col > m_cols) {
        return nullptr;
    }
    return row == 0 ? &m_headers[size_t(col)] : &m_rows[size_t(row - 1)][size_t(col)];
}

const GridModel::Cell* GridModel::cell(int row, int col) const {
    return const_cast<GridModel*>(this)->cell(row, col);
}

CellStyle& GridModel::columnStyle(int col) {
    return m_colStyles.at(size_t(col));
}

const CellStyle* GridModel::columnStyleIf(int col) const {
    return col >= 0 && col <= m_cols ? &m_colStyles[size_t(col)] : nullptr;
}

void GridModel::cellsChanged(int top, int left, int bottom, int right) {
    if (m_held) {
        m_dirty = true;
        return;
    }
    if (top <= 0 || left <= 0) {
        if (top <= 0 && m_cols > 0) {
            emit headerDataChanged(Qt::Horizontal, std::max(left - 1, 0),
                                   std::min(right, m_cols) - 1);
        }
        if (left <= 0 && gridRows() > 0) {
            emit headerDataChanged(Qt::Vertical, std::max(top - 1, 0),
                                   std::min(bottom, gridRows()) - 1);
        }
    }
    top = std::max(top, 1);
    left = std::max(left, 1);
    bottom = std::min(bottom, gridRows());
    right = std::min(right, m_cols);
    if (top <= bottom && left <= right) {
        emit dataChanged(index(top - 1, left - 1), index(bottom - 1, right - 1));
    }
}

void GridModel::setHeld(bool held) {
    if (held == m_held) {
        return;
    }
    m_held = held;
    if (!held && m_dirty) {
        m_dirty = false;
        cellsChanged(0, 0, gridRows(), m_cols);
    }
}

} // namespace platform
