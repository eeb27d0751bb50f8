#pragma once

#include "store/WireLayerRec.h"
#include "store/ZelWireTypeRec.h"

#include "ovdb/OvCmColor.h"
#include "ovdb/OvDbLineWeight.h"
#include "ovdb/OvDbObjectId.h"
#include "platform/GridWindow.h"

#include <QString>

#include <array>
#include <map>
#include <vector>

class QKeyEvent;
class QWidget;

// The grid in which the drafter sees and edits the wire types of the current drawing. It
// keeps a working copy of the records, keyed like the store's, with the key in the hidden
// column 1 as the one link from a row to its record; nothing reaches the drawing before
// CommitAll. Columns: 1 key, 2 in use, 3 wire colour, 4 wire size, 5 layer name, 6 wire
// flag, 7 to 26 the user properties.
class ZelWTGrid : public platform::GridWindow {
public:
    explicit ZelWTGrid(QWidget* parent = nullptr);
    ~ZelWTGrid() override;
    ZelWTGrid(const ZelWTGrid&) = delete;
    ZelWTGrid& operator=(const ZelWTGrid&) = delete;

    // Layout and loading.
    void InitGrid(QWidget* pOwner, bool bOptionsLocked, bool bEditMode);
    void SetMakeAllValidWire(bool on) { m_bMakeAllValidWire = on; }
    int GetWireTypeRows() const { return m_nWireTypeRows; }
    QString GetDefaultLayer() const { return m_strDefaultLayer; }
    void SetDefaultLayer(QString name) { m_strDefaultLayer = name; }
    bool IsModified() const { return m_bModified; }
    void UpdateButtons(int row);
    bool CanDeleteRows(int row);
    void SortByColumn(int col, bool bAscending);
    void SaveColumnWidths();
    bool GetRowColor(int row, OvCmColor& color);
    bool GetRowLinetype(int row, OvDbObjectId& id);
    bool GetRowLineweight(int row, OvDb::LineWeight& weight);
    bool SetRowColor(int row, OvCmColor color);
    bool SetRowLinetype(int row, OvDbObjectId id);
    bool SetRowLineweight(int row, OvDb::LineWeight weight);
    void SelectColumnRange(int col);
    void SelectRowRange(int row);

    // Editing.
    bool CommitCell(int row, int col);
    bool ValidateRow(int row, QString strName, QString& strError);
    bool ExpandNameFormat(int row, int col, QString& strResult);
    bool SetNameCellEditable(int row, bool bForce);
    int IsRowRemovable(int row);
    bool RemoveRow(int row, bool bKeepLayer);
    bool ClearSelectedCells();
    bool ResetAllValid(bool bOn);
    void MakeCellEditable(int mode);
    bool IsYes(QString strText);

    // Commit.
    bool StoreCurrentLayerRecord();
    int CommitAll();

    // Clipboard: what the owners' copy and cut commands took, shared by every grid.
    static void SetCopiedRows(const std::vector<quint32>& rows);
    static void SetCopiedCols(const std::vector<quint32>& cols);
    static const std::vector<quint32>& CopiedRows();
    static const std::vector<quint32>& CopiedCols();
    // "wts.grd" in the user's folder, where a copy leaves its text for a later dialog.
    static QString CopyFilePath();

    // Rows from outside.
    void FillRow(int row, int key, WireLayerRec* rec);
    bool AddLayerRows(QString strPattern);
    bool AddOrMergeRow(std::vector<QString>& fields, QString strDwgPath, bool bAppearance,
                       bool bProperties);

    // For the owner and for tests: the working copy.
    const std::map<int, WireLayerRec*>& Rows() const { return m_mapRows; }
    ZelWireTypeRec& Store() { return m_WireTypeRec; }
    int CurrentRow() const { return m_nCurrentRow; }

    // Notifications of the grid window.
    bool InsertRows(int row, int count, unsigned flags = 0) override;
    bool OnTrackColWidth(int col) override;
    bool OnTrackColWidthEnd(int col, int width) override;
    void OnModifyCell(int row, int col) override;
    bool OnLeftCell(int row, int col, int newRow, int newCol) override;
    bool OnRButtonClickedRowCol(int row, int col, unsigned flags, QPoint point) override;
    bool OnLButtonDblClkRowCol(int row, int col, unsigned flags, QPoint point) override;
    bool OnLButtonHitRowCol(int hitRow, int hitCol, int dragRow, int dragCol, QPoint point,
                            unsigned flags, int hitState) override;
    bool OnPasteFromClipboard(const platform::GridRange& range) override;
    // The keyboard of the wire type grid, before the grid's own spreadsheet keys.
    bool PreTranslateKey(QKeyEvent* event) override;
    qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) override;

private:
    void OnGotoCell(int row, int col, bool columnGiven);
    void OnHighlightRow(int row);
    void ReadColumnWidths();
    void FindCurrentRow();
    void PostToOwner(unsigned message, quintptr wParam, qintptr lParam);
    void PostToSelf(unsigned message, quintptr wParam, qintptr lParam);
    WireLayerRec* RecordOfRow(int row);
    int KeyOfRow(int row) const;
    QString FormatText() const;
    bool OwnerChecked() const;
    QWidget* OwnerControl(int id) const;
    void EnableOwnerControl(int id, bool enable);
    // Column 6 as its mode asks: the choice list in edit mode, a static text otherwise.
    void WriteFlagCell(int row, bool flag, bool alwaysList);
    QString FlagText(bool flag) const;
    void GrowForWireTypeRows();
    bool NewRowCommit(int row, int col, QString name, const QString& generated);
    int SelectedRowCount();
    void ReadDefaultLayer();
    QString WidthsKeyPath() const;

    // The grid window's operations in the terms the rest of the grid speaks
    // (ZelWTGridCells.cpp). Rows and columns count from 1; row 0 is the column headers.
    static double MonitorScaleX();
    void ConfigureForWireTypes();
    void SkipKeyColumns();
    int RowCount() const;
    void SetRows(int count);
    int ColCount() const;
    void SetCols(int count);
    void SetColumnWidth(int col, int width);
    void HideColumn(int col);
    void SetHeader(int col, const QString& text);
    void SetHeaderFont(const QFont& font);
    void SetColumnFont(int col, const QFont& font);
    QString Cell(int row, int col) const;
    // The value alone; the cell keeps its control.
    void PutValue(int row, int col, const QString& text);
    // A static, read-only text.
    void PutStatic(int row, int col, const QString& text);
    // The edit control, open to typing; the value stays.
    void PutEdit(int row, int col);
    // The yes/no choice list, open to typing.
    void PutList(int row, int col, const QString& text);
    void PutHeaderReadOnly(int row);
    void ReleaseReadOnly();
    void RestoreReadOnly();
    void DropRows(int from, int to);
    void HideRowRange(int from, int to, bool hide);
    bool GetCurrent(int& row, int& col) const;
    void MoveTo(int row, int col);
    std::vector<int> SelRows() const;
    std::vector<int> SelCols() const;
    void ClearSel();
    void ClearSelectionFromFirst();
    void SelectCells(int top, int left, int bottom, int right);
    void PaintRows(int from, int to, QRgb colour);
    void SortRowsByColumn(int from, int to, int col, bool ascending);
    void Hold(bool hold);
    void RedrawAll();
    void PostEditKey();
    bool ClipboardText(QString& text) const;
    bool OwnerPreTranslate(QKeyEvent* event);

    bool m_bModified = false;
    bool m_bCellDirty = false;
    bool m_bReportNameError = true;
    // A told name fault has sent the cursor back to its row, and the go-back hasn't run.
    bool m_bSendingBack = false;
    bool m_bMakeAllValidWire = false;
    bool m_bOptionsLocked = false;
    bool m_bEditMode = false;
    int m_bSortAscending = 1;
    int m_nWireTypeRows = 0;
    int m_nColCount = 26;
    ZelWireTypeRec m_WireTypeRec;
    std::map<int, WireLayerRec*> m_mapRows;
    QWidget* m_pOwner = nullptr;
    std::array<int, 25> m_nColWidth{};
    int m_nCurrentRow = 1;
    QString m_strDefaultLayer;
    double m_scale = 1.0;
};
