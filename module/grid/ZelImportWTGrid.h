#pragma once

#include "platform/GridWindow.h"

#include <QString>

#include <vector>

struct resbuf;

// The read-only list of the import dialog: one row per wire type of another drawing, as
// the add-on's LISP side answers them. Columns: 1 wire colour, 2 wire size, 3 layer name,
// 4 wire flag (Yes/No), 5 to 24 the user property values. The drafter selects whole rows;
// a double click on a header sorts the rows by that column.
class ZelImportWTGrid : public platform::GridWindow {
public:
    // A row of the list as 24 strings: in grid order (the columns as they stand) or in
    // the order the LISP callers read (layer name first, the flag last as "0" or "1").
    using RowFields = std::vector<QString>;

    explicit ZelImportWTGrid(QWidget* parent = nullptr);

    // The list to load, borrowed: its owner keeps it until the grid has loaded.
    void SetSettings(const resbuf* settings) { m_pSettings = settings; }
    void SetPresetNames(const std::vector<QString>& names) { m_presetNames = names; }
    void InitGrid();

    int GetLoadedRows() const { return m_nRows; }
    QString GetLayerName(int row) const;
    RowFields GetRowFields(int row, bool bLispOrder) const;

    bool GetStyleRowCol(int row, int col, platform::CellStyle& style, int nType) const override;
    bool OnTrackColWidth(int col) override;
    bool OnLButtonDblClkRowCol(int row, int col, unsigned flags, QPoint point) override;
    bool OnLButtonHitRowCol(int hitRow, int hitCol, int dragRow, int dragCol, QPoint point,
                            unsigned flags, int hitState) override;

private:
    void WriteHeaders();
    void LoadSettings();
    void Preselect();

    int m_bSortAscending = 1;
    const resbuf* m_pSettings = nullptr;
    int m_nRows = 0;
    std::vector<QString> m_presetNames;
};
