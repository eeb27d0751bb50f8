#pragma once

#include <algorithm>

namespace platform {

// A rectangle of grid cells in grid numbers: rows and columns from 1, row 0 the
// column headers, column 0 the row headers. A range can also stand for whole rows,
// whole columns or the whole table; those take their extent from the grid at the
// time of use, so that a range made before the grid grows still covers it all.
class GridRange {
public:
    enum class Kind { Cells, Rows, Cols, Table };

    GridRange() = default;
    GridRange(int row, int col) : m_top(row), m_left(col), m_bottom(row), m_right(col) {}
    GridRange(int top, int left, int bottom, int right)
        : m_top(std::min(top, bottom)), m_left(std::min(left, right)),
          m_bottom(std::max(top, bottom)), m_right(std::max(left, right)) {}

    static GridRange rows(int top, int bottom) {
        GridRange r(top, 0, bottom, 0);
        r.m_kind = Kind::Rows;
        return r;
    }
    static GridRange cols(int left, int right) {
        GridRange r(0, left, 0, right);
        r.m_kind = Kind::Cols;
        return r;
    }
    static GridRange table() {
        GridRange r(0, 0, 0, 0);
        r.m_kind = Kind::Table;
        return r;
    }

    Kind kind() const { return m_kind; }
    bool isCells() const { return m_kind == Kind::Cells; }
    bool isValid() const { return m_top >= 0 && m_left >= 0; }

    int top() const { return m_top; }
    int left() const { return m_left; }
    int bottom() const { return m_bottom; }
    int right() const { return m_right; }
    int rowCount() const { return m_bottom - m_top + 1; }
    int colCount() const { return m_right - m_left + 1; }

    void setTop(int top) { m_top = top; }
    void setLeft(int left) { m_left = left; }
    void setBottom(int bottom) { m_bottom = bottom; }
    void setRight(int right) { m_right = right; }

    // The cells of this range in a grid of `rowCount` rows and `colCount` columns:
    // whole rows and columns start at 1, so headers are never part of them.
    GridRange bounded(int rowCount, int colCount) const {
        switch (m_kind) {
        case Kind::Rows:
            return GridRange(m_top, 1, m_bottom, colCount);
        case Kind::Cols:
            return GridRange(1, m_left, rowCount, m_right);
        case Kind::Table:
            return GridRange(1, 1, rowCount, colCount);
        case Kind::Cells:
            break;
        }
        return *this;
    }

    bool contains(int row, int col) const {
        return row >= m_top && row <= m_bottom && col >= m_left && col <= m_right;
    }

    bool operator==(const GridRange&) const = default;

private:
    Kind m_kind = Kind::Cells;
    int m_top = -1;
    int m_left = -1;
    int m_bottom = -1;
    int m_right = -1;
};

} // namespace platform
