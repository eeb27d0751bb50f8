#include "grid/ZelPropGrid.h"

#include "shell/ResourceOverride.h"
#include "store/SplitPropertyList.h"

#include "platform/Resources.h"
#include "platform/ScreenScale.h"

#include <QKeyEvent>

#include <cmath>
#include <vector>

namespace {

constexpr int kLabelCol = 1;
constexpr int kNameCol = 2;

int scaled(double scale, int value) {
    return static_cast<int>(std::lround(scale * value));
}

} // namespace

ZelPropGrid::ZelPropGrid(QWidget* parent) : platform::GridWindow(parent) {}

void ZelPropGrid::InitGrid(QWidget* pOwner, QString strProps) {
    const ResourceOverride resources;
    m_pOwner = pOwner;
    platform::GridParam* param = GetParam();
    param->EnableUndo(false);
    param->EnableSelection(platform::GridParam::SelRow | platform::GridParam::SelCell |
                           platform::GridParam::SelMultiple | platform::GridParam::SelShift);
    param->SetEnterKeyAction(Down);
    ChangeStandardStyle(
        platform::CellStyle().setControl(platform::CellStyle::Control::Edit).setReadOnly(false));

    SetColCount(2);
    SetRowCount(kRows);
    const double scale = platform::GetMonitorDpiXScale(nullptr);
    SetColWidth(0, 0, scaled(scale, 30));
    SetColWidth(kLabelCol, kLabelCol, scaled(scale, 150));
    SetColWidth(kNameCol, kNameCol, scaled(scale, 230));
    SetValueRange(platform::GridRange(0, kLabelCol), platform::loadString(159));
    SetValueRange(platform::GridRange(0, kNameCol), platform::loadString(160));

    // The labels name the property by its number, whatever the drafter calls it.
    const QString prefix = platform::loadString(107);
    const bool lock = param->IsLockReadOnly();
    param->SetLockReadOnly(false);
    for (int row = 1; row <= kRows; ++row) {
        const platform::GridRange cell(row, kLabelCol);
        SetValueRange(cell, prefix + QString::number(row));
        SetStyleRange(cell, platform::CellStyle()
                                .setControl(platform::CellStyle::Control::Static)
                                .setReadOnly(true)
                                .setInterior(QColor(240, 240, 240)));
    }
    param->SetLockReadOnly(lock);

    std::vector<QString> names;
    SplitPropertyList(strProps, names);
    for (int row = 1; row <= kRows; ++row)
        SetValueRange(platform::GridRange(row, kNameCol),
                      names.at(static_cast<std::size_t>(row - 1)));
}

bool ZelPropGrid::OnPasteFromClipboard(const platform::GridRange& range) {
    // The labels are fixed: a paste that would start on them pastes nothing.
    if (range.left() < kNameCol)
        return true;
    platform::GridRange target = range.bounded(GetRowCount(), GetColCount());
    if (target.top() == 0) {
        const bool severalRows = target.bottom() > target.top();
        target.setTop(1);
        if (severalRows)
            target.setBottom(target.bottom() + 1);
    }
    if (target.bottom() < 1)
        target.setBottom(1);
    int row = 0;
    int col = 0;
    if (target.right() > GetColCount() || (GetCurrentCell(row, col) && col > GetColCount()))
        target.setRight(GetColCount());
    platform::GridWindow::OnPasteFromClipboard(target);

    // There are twenty properties: pasted lines beyond them have nowhere to go.
    if (GetRowCount() > kRows)
        SetRowCount(kRows);
    // Every name stays editable, whatever the pasted text came with.
    const bool lock = GetParam()->IsLockReadOnly();
    GetParam()->SetLockReadOnly(false);
    for (int r = 1; r < GetRowCount(); ++r) {
        const platform::CellStyle style = GetCellStyle(r, kNameCol);
        if (style.isReadOnly() || style.controlOr(platform::CellStyle::Control::Edit) !=
                                      platform::CellStyle::Control::Edit)
            SetStyleRange(platform::GridRange(r, kNameCol),
                          platform::CellStyle()
                              .setControl(platform::CellStyle::Control::Edit)
                              .setReadOnly(false));
    }
    GetParam()->SetLockReadOnly(lock);
    return true;
}

bool ZelPropGrid::PreTranslateKey(QKeyEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return false;
    if (event->key() == Qt::Key_Escape) {
        // The dialog decides about Esc; what it leaves, the grid takes as the undo of an
        // open edit, and a grid with none lets the dialog close.
        auto* owner = dynamic_cast<platform::KeyFilter*>(m_pOwner);
        return owner && owner->PreTranslateKey(event);
    }
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        return false;
    int row = 0;
    int col = 0;
    GetCurrentCell(row, col);
    // Enter walks the names round: down, and from the last back to the first.
    if (!(event->modifiers() & Qt::ShiftModifier))
        MoveCurrentCell(row < GetRowCount() ? Down : Top);
    else
        MoveCurrentCell(row > 1 ? Up : BottomRight);
    return true;
}
