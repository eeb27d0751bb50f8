#pragma once

// The private messages that the wire type grids and the dialogs owning them post to each
// other. They take effect after the running handler has returned; nothing may count on
// them having run.
namespace zelgrid {

inline constexpr unsigned kWmUser = 0x400;

// Grid to owner: right click; lParam the screen point, y in the high word, x in the low.
inline constexpr unsigned WM_WTG_CONTEXTMENU = kWmUser + 100;
// Grid to owner: wParam 1 when a usable row is current, 0 when not.
inline constexpr unsigned WM_WTG_ENABLEOK = kWmUser + 101;
// Grid to owner: double click on a data row.
inline constexpr unsigned WM_WTG_ROWDBLCLK = kWmUser + 102;
// To the grid: wParam the row, lParam the column (0 for the layer name column).
inline constexpr unsigned WM_WTG_GOTOCELL = kWmUser + 103;
// To the owner: its copy, cut and paste commands. Nothing posts them yet.
inline constexpr unsigned WM_WTG_COPY = kWmUser + 104;
inline constexpr unsigned WM_WTG_CUT = kWmUser + 105;
inline constexpr unsigned WM_WTG_PASTE = kWmUser + 106;
// To the grid: repaint the row colours; wParam the row to mark, 0 for none.
inline constexpr unsigned WM_WTG_HIGHLIGHTROW = kWmUser + 107;

} // namespace zelgrid
