#pragma once

#include "platform/CellStyle.h"

#include <QAbstractTableModel>

#include <vector>

namespace platform {

class GridWindow;

// The data of a GridWindow: per cell a value and a style, with the header cells of
// row 0 and column 0 kept apart (they are the view's headers). Model row r - 1 is
// grid row r, model column c - 1 grid column c. Roles, for the view, the dialog
// automation and tests alike: DisplayRole and EditRole the text, BackgroundRole
// the interior, ForegroundRole the text colour, TextAlignmentRole, FontRole,
// ToolTipRole the tip, and the three custom roles below.
class GridModel : public QAbstractTableModel {
    Q_OBJECT

public:
    static constexpr int ControlRole = Qt::UserRole + 1;  // int: 0 edit, 1 static, 2 list
    static constexpr int ReadOnlyRole = Qt::UserRole + 2; // bool
    static constexpr int ChoicesRole = Qt::UserRole + 3;  // QStringList

    struct Cell {
        QString value;
        CellStyle style;
    };

    explicit GridModel(GridWindow* grid);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Grid numbers from here on.
    int gridRows() const { return int(m_rows.size()); }
    int gridCols() const { return m_cols; }
    void setGridRows(int rows);
    void setGridCols(int cols);
    void insertGridRows(int row, int count);
    void removeGridRows(int fromRow, int toRow);
    bool moveGridRows(int fromRow, int toRow, int destRow);
    // Puts the rows [top, top + order.size()) in the order given: entry i is the
    // old row (from top) that goes to row top + i.
    void permuteGridRows(int top, const std::vector<int>& order);

    // The cell at grid (row, col), header cells included; null outside.
    Cell* cell(int row, int col);
    const Cell* cell(int row, int col) const;
    CellStyle& columnStyle(int col);
    const CellStyle* columnStyleIf(int col) const;
    CellStyle& standardStyle() { return m_standard; }
    const CellStyle& standardStyle() const { return m_standard; }
    CellStyle& colHeaderStyle() { return m_colHeaderStyle; }
    CellStyle& rowHeaderStyle() { return m_rowHeaderStyle; }

    // Tells the views that the cells changed, or marks them for the one redraw that
    // ends a held update.
    void cellsChanged(int top, int left, int bottom, int right);
    void setHeld(bool held);
    bool isHeld() const { return m_held; }

private:
    GridWindow* m_grid;
    std::vector<std::vector<Cell>> m_rows; // cells of columns 0..m_cols, per row
    std::vector<Cell> m_headers;           // row 0, columns 0..m_cols
    std::vector<CellStyle> m_colStyles;    // per column 0..m_cols
    CellStyle m_standard;
    CellStyle m_colHeaderStyle;
    CellStyle m_rowHeaderStyle;
    int m_cols = 0;
    bool m_held = false;
    bool m_dirty = false;
};

} // namespace platform
