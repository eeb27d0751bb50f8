// The grid window's operations in the few terms the wire type grid speaks: cell texts,
// the three controls a cell can have, rows, the current cell, selection and colours.
// Every write that may meet a read-only cell releases the read-only lock around itself.

#include "grid/ZelWTGrid.h"

#include "ovdb/OvDbHostApplicationServices.h"
#include "platform/Clipboard.h"
#include "platform/GridModel.h"
#include "platform/PrivateMessage.h"
#include "platform/Resources.h"
#include "platform/ScreenScale.h"

#include <QKeyEvent>

using platform::CellStyle;
using platform::GridRange;

namespace {

// Releases the read-only lock for one write and puts back what was there, so that
// writes nest inside a caller's own release.
class LockRelease {
public:
    explicit LockRelease(platform::GridParam* param)
        : m_param(param), m_was(param->IsLockReadOnly()) {
        m_param->SetLockReadOnly(false);
    }
    ~LockRelease() { m_param->SetLockReadOnly(m_was); }
    LockRelease(const LockRelease&) = delete;
    LockRelease& operator=(const LockRelease&) = delete;

private:
    platform::GridParam* m_param;
    bool m_was;
};

} // namespace

double ZelWTGrid::MonitorScaleX() {
    return platform::GetMonitorDpiXScale(nullptr);
}

void ZelWTGrid::ConfigureForWireTypes() {
    platform::GridParam* param = GetParam();
    param->EnableUndo(false);
    // Rows, cells, several ranges and Shift; columns are selected by hand from their
    // header, the whole table never.
    param->EnableSelection(platform::GridParam::SelRow | platform::GridParam::SelCell |
                           platform::GridParam::SelMultiple | platform::GridParam::SelShift);
    param->SetEnterKeyAction(Right);
    ChangeStandardStyle(CellStyle().setControl(CellStyle::Control::Edit).setReadOnly(false));
}

void ZelWTGrid::SkipKeyColumns() {
    // The key and the in-use mark are not for the keyboard: Enter and the arrows start
    // at the wire colour.
    SetColSkippedByKeys(1, true);
    SetColSkippedByKeys(2, true);
}

QString ZelWTGrid::WidthsKeyPath() const {
    const OvDbHostApplicationServices* services = OvDbHostApplicationServices::getRefPtr();
    const QString root = services ? services->getRegistryProductRootKey() : QString();
    return root + QStringLiteral("\\Settings\\WTS");
}

int ZelWTGrid::RowCount() const {
    return GetRowCount();
}

void ZelWTGrid::SetRows(int count) {
    SetRowCount(count);
}

int ZelWTGrid::ColCount() const {
    return GetColCount();
}

void ZelWTGrid::SetCols(int count) {
    SetColCount(count);
}

void ZelWTGrid::SetColumnWidth(int col, int width) {
    SetColWidth(col, col, width);
}

void ZelWTGrid::HideColumn(int col) {
    HideCols(col, col);
}

void ZelWTGrid::SetHeader(int col, const QString& text) {
    const LockRelease release(GetParam());
    SetValueRange(GridRange(0, col), text);
}

void ZelWTGrid::SetHeaderFont(const QFont& font) {
    ChangeColHeaderStyle(CellStyle().setFont(font));
}

void ZelWTGrid::SetColumnFont(int col, const QFont& font) {
    // The column's own style, so that rows made later carry the font too.
    gridModel()->columnStyle(col).font = font;
    if (col == 0)
        ChangeRowHeaderStyle(CellStyle().setFont(font));
}

QString ZelWTGrid::Cell(int row, int col) const {
    return GetValueRowCol(row, col);
}

void ZelWTGrid::PutValue(int row, int col, const QString& text) {
    const LockRelease release(GetParam());
    SetValueRange(GridRange(row, col), text);
}

void ZelWTGrid::PutStatic(int row, int col, const QString& text) {
    const LockRelease release(GetParam());
    SetStyleRange(GridRange(row, col),
                  CellStyle().setControl(CellStyle::Control::Static).setReadOnly(true));
    SetValueRange(GridRange(row, col), text);
}

void ZelWTGrid::PutEdit(int row, int col) {
    const LockRelease release(GetParam());
    SetStyleRange(GridRange(row, col),
                  CellStyle().setControl(CellStyle::Control::Edit).setReadOnly(false));
}

void ZelWTGrid::PutList(int row, int col, const QString& text) {
    const LockRelease release(GetParam());
    const QStringList choices{platform::loadString(115), platform::loadString(116)};
    SetStyleRange(GridRange(row, col), CellStyle()
                                           .setControl(CellStyle::Control::DropDownList)
                                           .setReadOnly(false)
                                           .setChoices(choices));
    SetValueRange(GridRange(row, col), text);
}

void ZelWTGrid::PutHeaderReadOnly(int row) {
    const LockRelease release(GetParam());
    SetStyleRange(GridRange(row, 0), CellStyle().setReadOnly(true));
}

void ZelWTGrid::ReleaseReadOnly() {
    GetParam()->SetLockReadOnly(false);
}

void ZelWTGrid::RestoreReadOnly() {
    GetParam()->SetLockReadOnly(true);
}

void ZelWTGrid::DropRows(int from, int to) {
    RemoveRows(from, to);
}

void ZelWTGrid::HideRowRange(int from, int to, bool hide) {
    if (from <= to)
        HideRows(from, to, hide);
}

bool ZelWTGrid::GetCurrent(int& row, int& col) const {
    row = 0;
    col = 0;
    return GetCurrentCell(row, col);
}

void ZelWTGrid::MoveTo(int row, int col) {
    SetCurrentCell(row, col);
}

std::vector<int> ZelWTGrid::SelRows() const {
    std::vector<int> rows;
    for (quint32 row : GetSelectedRows())
        if (row != 0)
            rows.push_back(static_cast<int>(row));
    return rows;
}

std::vector<int> ZelWTGrid::SelCols() const {
    std::vector<int> cols;
    for (quint32 col : GetSelectedCols())
        if (col != 0)
            cols.push_back(static_cast<int>(col));
    return cols;
}

void ZelWTGrid::ClearSel() {
    ClearSelection();
}

void ZelWTGrid::ClearSelectionFromFirst() {
    if (RowCount() >= 1 && ColCount() >= 1)
        SelectRange(GridRange(1, 1, RowCount(), ColCount()), false);
}

void ZelWTGrid::SelectCells(int top, int left, int bottom, int right) {
    if (top >= 1 && left >= 1 && bottom >= top && right >= left)
        SelectRange(GridRange(top, left, bottom, right));
}

void ZelWTGrid::PaintRows(int from, int to, QRgb colour) {
    if (from < 1 || to < from || ColCount() < 1)
        return;
    const LockRelease release(GetParam());
    SetStyleRange(GridRange(from, 1, to, ColCount()), CellStyle().setInterior(QColor(colour)));
}

void ZelWTGrid::SortRowsByColumn(int from, int to, int col, bool ascending) {
    platform::GridSortInfo key;
    key.col = col;
    key.ascending = ascending;
    SortRows(GridRange::rows(from, to), {key});
}

void ZelWTGrid::Hold(bool hold) {
    LockUpdate(hold);
}

void ZelWTGrid::RedrawAll() {
    Redraw();
}

void ZelWTGrid::PostEditKey() {
    platform::PostKeyPress(this, Qt::Key_F2);
}

bool ZelWTGrid::ClipboardText(QString& text) const {
    bool opened = false;
    text = platform::GetClipboardText(&opened);
    return opened;
}

bool ZelWTGrid::OwnerPreTranslate(QKeyEvent* event) {
    auto* filter = dynamic_cast<platform::KeyFilter*>(m_pOwner);
    return filter ? filter->PreTranslateKey(event) : false;
}

void ZelWTGrid::PostToOwner(unsigned message, quintptr wParam, qintptr lParam) {
    if (m_pOwner)
        platform::PostMessage(m_pOwner, message, wParam, lParam);
}

void ZelWTGrid::PostToSelf(unsigned message, quintptr wParam, qintptr lParam) {
    platform::PostMessage(this, message, wParam, lParam);
}
