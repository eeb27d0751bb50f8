#pragma once

namespace platform {

// The settings of a grid that the grid's users change as a whole: what a person
// may select, what Enter does, whether rows move by dragging, and the read-only
// lock. The lock stands by default; while it stands, neither a person nor code can
// change a read-only cell, so that code which means to write one releases the
// lock around the write.
class GridParam {
public:
    // EnableSelection flags; combine them.
    static constexpr unsigned SelNone = 0;
    static constexpr unsigned SelRow = 1;
    static constexpr unsigned SelCol = 2;
    static constexpr unsigned SelTable = 4;
    static constexpr unsigned SelCell = 8;
    static constexpr unsigned SelMultiple = 16;
    static constexpr unsigned SelShift = 32;
    static constexpr unsigned SelKeyboard = 64;

    void SetLockReadOnly(bool lock) { m_lockReadOnly = lock; }
    bool IsLockReadOnly() const { return m_lockReadOnly; }

    // The grid keeps no undo history beyond the open edit, which Esc undoes; the
    // switch is kept so that a caller can say it wants none.
    void EnableUndo(bool enable) { m_undo = enable; }
    bool IsEnableUndo() const { return m_undo; }

    void EnableSelection(unsigned flags) { m_selection = flags; }
    unsigned GetSelectionFlags() const { return m_selection; }
    bool IsSelectionEnabled(unsigned flag) const { return (m_selection & flag) != 0; }

    // Where Enter moves the current cell: a direction of GridWindow::Direction;
    // 0 leaves the current cell where it is.
    void SetEnterKeyAction(int direction) { m_enterKeyAction = direction; }
    int GetEnterKeyAction() const { return m_enterKeyAction; }

    // Rows move by dragging a selected row header to another row.
    void EnableMoveRows(bool enable) { m_moveRows = enable; }
    bool IsEnableMoveRows() const { return m_moveRows; }
    // Columns never move in this grid; the switch is accepted and kept off.
    void EnableMoveCols(bool enable) { m_moveCols = enable; }
    bool IsEnableMoveCols() const { return m_moveCols; }

    // A cell whose text does not fit shows it whole as a tip; a positive `delayMs`
    // turns the tips on, 0 or less off. The tip comes after the desktop's own tip
    // delay, which a person expects of every tip.
    void EnableCellTips(int delayMs) { m_cellTipDelay = delayMs; }
    int GetCellTipDelay() const { return m_cellTipDelay; }

private:
    bool m_lockReadOnly = true;
    bool m_undo = true;
    unsigned m_selection =
        SelRow | SelCol | SelTable | SelCell | SelMultiple | SelShift | SelKeyboard;
    int m_enterKeyAction = 3;
    bool m_moveRows = false;
    bool m_moveCols = false;
    int m_cellTipDelay = 0;
};

} // namespace platform
