#pragma once

#include "platform/CellStyle.h"
#include "platform/GridParam.h"
#include "platform/GridRange.h"
#include "platform/GridSortInfo.h"
#include "platform/KeyFilter.h"

#include <QPointer>
#include <QTableView>

#include <vector>

class QIODevice;

namespace platform {

class GridModel;
class GridHeaderView;
class GridItemDelegate;

// The grid window: a QTableView over a GridModel that holds a value and a style per
// cell. It speaks in grid numbers: rows and columns from 1, row 0 the column headers
// and column 0 the row headers, so grid row r is model row r - 1.
//
// A person works it as a spreadsheet: typing starts an edit, F2 opens one, Enter and
// Tab move on, the arrows move, Shift extends the selection, Esc undoes an open edit,
// Ctrl+C/X/V copy, cut and paste tab-separated text, a double click on a header
// sorts. What the person does reaches the virtual notifications below, which a grid
// of the module overrides; each override may call the base to get the default.
//
// Timing of the notifications, which the module relies on:
// - OnModifyCell(row, col) comes at the first change of an open edit, before
//   anything else about that edit;
// - OnLeftCell(row, col, newRow, newCol) comes when the current cell is about to
//   move (by key, click or code), after the editor's text has reached the model;
//   false keeps the current cell where it is.
class GridWindow : public QTableView, public KeyFilter {
    Q_OBJECT

public:
    // Directions of MoveCurrentCell and FindNextCell, and of the Enter key action.
    enum Direction {
        Up = 1,
        Left = 2,
        Down = 3,
        Right = 4,
        PageUp = 5,
        PageDown = 6,
        Top = 7,         // first row, same column
        Bottom = 8,      // last row, same column
        MostLeft = 9,    // first reachable column, same row
        MostRight = 10,  // last reachable column, same row
        TopLeft = 11,    // first row, first reachable column
        BottomRight = 12 // last row, last reachable column
    };

    // Mouse and key state in the notifications, as Windows passes it.
    static constexpr unsigned MK_LBUTTON = 0x1;
    static constexpr unsigned MK_RBUTTON = 0x2;
    static constexpr unsigned MK_SHIFT = 0x4;
    static constexpr unsigned MK_CONTROL = 0x8;

    // The stage of a left-button hit: the press, a move into another cell while the
    // button is down, and the release.
    enum HitState { HitStart = 1, HitMove = 2, HitEnd = 4 };

    explicit GridWindow(QWidget* parent = nullptr);
    ~GridWindow() override;

    GridModel* gridModel() const { return m_model; }
    GridParam* GetParam() { return &m_param; }
    const GridParam* GetParam() const { return &m_param; }

    // Sets the grid up after it was placed in its dialog: one row and one column
    // of an empty edit standard style unless set otherwise before.
    virtual void Initialize();
    // Wheel scrolling is always on in a Qt view; kept so that callers read as before.
    void EnableIntelliMouse() {}

    // --- Size -------------------------------------------------------------------
    int GetRowCount() const;
    int GetColCount() const;
    bool SetRowCount(int rows);
    bool SetColCount(int cols);
    // Inserts `count` blank rows before `row` (row count + 1 appends). SetRowCount
    // and a paste that grows the grid come here too. Overrides call the base and
    // then style the new rows.
    virtual bool InsertRows(int row, int count, unsigned flags = 0);
    bool RemoveRows(int fromRow, int toRow);
    bool HideRows(int fromRow, int toRow, bool hide = true);
    bool HideCols(int fromCol, int toCol, bool hide = true);
    bool IsRowHidden(int row) const;
    bool IsColHidden(int col) const;
    bool SetColWidth(int fromCol, int toCol, int width);
    int GetColWidth(int col) const;
    void SetDefaultColWidth(int width);
    int GetDefaultColWidth() const { return m_defaultColWidth; }
    // A column the keyboard skips when it moves across (as one of static keys);
    // the mouse still reaches it.
    void SetColSkippedByKeys(int col, bool skipped);

    // --- Values and styles ------------------------------------------------------
    // Row 0 writes the column headers, column 0 the row headers. Under the
    // read-only lock a read-only cell is left as it is and the call yields false.
    bool SetValueRange(const GridRange& range, const QString& value);
    bool SetStyleRange(const GridRange& range, const CellStyle& style,
                       CellStyle::Modify mode = CellStyle::Modify::Override);
    QString GetValueRowCol(int row, int col) const;
    // The cell's effective style (standard, column, cell), through GetStyleRowCol.
    CellStyle GetCellStyle(int row, int col) const;
    // The style under every cell; ChangeStandardStyle with an edit control makes
    // typing work in every cell that does not say otherwise.
    void ChangeStandardStyle(const CellStyle& style,
                             CellStyle::Modify mode = CellStyle::Modify::Override);
    void ChangeColHeaderStyle(const CellStyle& style,
                              CellStyle::Modify mode = CellStyle::Modify::Override);
    void ChangeRowHeaderStyle(const CellStyle& style,
                              CellStyle::Modify mode = CellStyle::Modify::Override);
    // The whole grid becomes read-only to a person; under the read-only lock code
    // cannot change it either.
    void SetReadOnly(bool readOnly);
    bool IsReadOnly() const { return m_readOnly; }
    bool IsCellReadOnly(int row, int col) const;

    // --- Screen updates ---------------------------------------------------------
    // Holds screen updates; changes meanwhile are painted once by the redraw that
    // ends the hold. Returns the previous state. Holds do not nest: the first
    // LockUpdate(false) ends it.
    bool LockUpdate(bool lock = true);
    bool IsLockUpdate() const { return m_updateHeld; }
    void Redraw();
    void RefreshViews() { Redraw(); }

    // --- Selection --------------------------------------------------------------
    // Rows (columns) touched by the selection, ascending, each once; with
    // `rangeRowsOnly` only rows selected whole. With nothing selected and
    // `canUseCurrentCell`, the current cell's row (column).
    int GetSelectedRows(std::vector<quint32>& rows, bool rangeRowsOnly = false,
                        bool canUseCurrentCell = true) const;
    int GetSelectedCols(std::vector<quint32>& cols, bool rangeColsOnly = false,
                        bool canUseCurrentCell = true) const;
    std::vector<quint32> GetSelectedRows(bool rangeRowsOnly = false,
                                         bool canUseCurrentCell = true) const;
    std::vector<quint32> GetSelectedCols(bool rangeColsOnly = false,
                                         bool canUseCurrentCell = true) const;
    // The selected rectangles, in the order they were made.
    std::vector<GridRange> GetSelectedRanges() const;
    bool HasSelection() const;
    // Adds (or takes away) a range; rows and columns from 1. Header cells are never
    // selected themselves.
    void SelectRange(const GridRange& range, bool select = true);
    // Clears the whole selection, headers included.
    void ClearSelection();

    // --- Current cell -----------------------------------------------------------
    bool GetCurrentCell(int& row, int& col) const;
    // Moves the current cell: an open edit is stored, OnLeftCell may veto; (0, 0)
    // leaves the grid without a current cell. Code that sets the cell that is
    // current already still gets OnLeftCell with the same cell as the new one (a
    // click on the current cell does not). `flags` are kept for the callers' sake;
    // every call ends an open edit.
    bool SetCurrentCell(int row, int col, unsigned flags = 0);
    bool MoveCurrentCell(int direction, int count = 1);
    // The cell next to (row, col) in `direction`, skipping hidden rows and columns
    // and those the keys skip; false when there is none (row and col unchanged).
    bool FindNextCell(int direction, int& row, int& col) const;
    void SetTopRow(int row, unsigned flags = 0);
    int GetTopRow() const;

    // --- The open edit ----------------------------------------------------------
    bool IsActiveCurrentCell() const;
    // Opens the current cell for editing, with its text; false for a cell that
    // cannot be edited.
    bool StartEditing();
    // Takes back the open edit: the cell keeps the value it had. False when no
    // edit was open.
    bool Undo();
    // Stores the open edit's text in the model and closes the editor.
    bool TransferCurrentCell();

    // --- Sort and move ----------------------------------------------------------
    // Sorts the rows `rows` (its top and bottom rows) by the keys in order; rows
    // outside stay where they are.
    bool SortRows(const GridRange& rows, const std::vector<GridSortInfo>& keys);
    // Moves rows [fromRow, toRow] so that the first lands at `destRow`.
    bool MoveRows(int fromRow, int toRow, int destRow);

    // --- Clipboard --------------------------------------------------------------
    bool CanCopy() const;
    bool CanCut() const;
    bool CanPaste() const;
    // The range as tab-separated text, a line feed after each row.
    QString GetRangeText(const GridRange& range) const;
    bool CopyRange(const GridRange& range);
    bool CutRange(const GridRange& range);
    // Pastes the clipboard at the selection (or the current cell) through
    // OnPasteFromClipboard.
    bool Paste();
    bool CopyTextToFile(QIODevice& file, const GridRange& range) const;
    // The range the next paste goes to: the selection's bounding rectangle, or the
    // current cell.
    GridRange GetPasteRange() const;

    // --- Notifications ----------------------------------------------------------
    virtual void OnModifyCell(int row, int col);
    virtual bool OnLeftCell(int row, int col, int newRow, int newCol);
    // A left-button hit; the base does what a click does (current cell,
    // selection by the EnableSelection flags). `point` in grid coordinates.
    virtual bool OnLButtonHitRowCol(int hitRow, int hitCol, int dragRow, int dragCol, QPoint point,
                                    unsigned flags, int hitState);
    // The base sorts the rows down to the last one with text by a header's column
    // (turning the direction each time) and opens an editable data cell.
    virtual bool OnLButtonDblClkRowCol(int row, int col, unsigned flags, QPoint point);
    // The base makes a data cell current unless it is selected already.
    virtual bool OnRButtonClickedRowCol(int row, int col, unsigned flags, QPoint point);
    // Asked when a person starts to drag a column's edge; false refuses.
    virtual bool OnTrackColWidth(int col);
    // Told when the drag ends, with the width it left.
    virtual bool OnTrackColWidthEnd(int col, int width);
    // The base pastes the clipboard's tab-separated text from the range's top left
    // cell, growing the row count when the text reaches past the last row and
    // leaving out columns past the last and read-only cells.
    virtual bool OnPasteFromClipboard(const GridRange& range);
    // Composes the effective style of a cell into `style`; overrides call the base
    // and change what they need. `nType` is 0 for drawing, -1 for a plain query.
    virtual bool GetStyleRowCol(int row, int col, CellStyle& style, int nType) const;
    // Keys reach the grid's filter first, then its dialog's (KeyFilter); the base
    // handles none, so that the grid's own spreadsheet keys follow.
    bool PreTranslateKey(QKeyEvent* event) override;
    // A posted private message; the base handles none and yields 0.
    virtual qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam);

    // Column widths of the headers when a person dragged them; for tests and code.
    int GetRowHeaderWidth() const;

signals:
    void currentCellChanged(int row, int col);

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void focusInEvent(QFocusEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    friend class GridModel;
    friend class GridHeaderView;
    friend class GridItemDelegate;

    bool changeCurrentCell(int row, int col, bool notify);
    bool leaveCurrentCell(int newRow, int newCol);
    bool handleGridKey(QKeyEvent* event);
    void startEditWithText(const QString& text);
    void editorTextChanged();
    void storeEditorText(int row, int col, const QString& text);
    bool rawReadOnly(int row, int col) const;
    void headerPress(Qt::Orientation orientation, int section, QMouseEvent* event);
    void headerMove(Qt::Orientation orientation, int section, QMouseEvent* event);
    void headerRelease(Qt::Orientation orientation, int section, QMouseEvent* event);
    void headerDoubleClick(Qt::Orientation orientation, int section, QMouseEvent* event);
    void applyClickSelection(int row, int col, unsigned flags, bool extend);
    bool isReachable(int row, int col) const;
    unsigned mouseFlags(const QMouseEvent* event) const;
    QModelIndex modelIndex(int row, int col) const;
    bool canUserEdit(int row, int col) const;
    void selectRect(int top, int left, int bottom, int right, bool select);

    GridModel* m_model = nullptr;
    GridItemDelegate* m_delegate = nullptr;
    GridHeaderView* m_colHeader = nullptr;
    GridHeaderView* m_rowHeader = nullptr;
    GridParam m_param;
    bool m_readOnly = false;
    bool m_updateHeld = false;
    int m_defaultColWidth = 64;
    std::vector<bool> m_skippedCols;
    std::vector<GridRange> m_rangeOrder;
    QPointer<QWidget> m_editor;
    bool m_editModified = false;
    bool m_inLeftCell = false;
    bool m_sortAscending = false;
    int m_anchorRow = 0;
    int m_anchorCol = 0;
    int m_hitRow = -1;
    int m_hitCol = -1;
    int m_dragRow = -1;
    int m_dragCol = -1;
    bool m_mouseDown = false;
    bool m_movingRows = false;
    int m_trackingCol = -1;
};

} // namespace platform
