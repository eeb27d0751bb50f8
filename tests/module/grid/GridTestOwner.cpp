#include "GridTestOwner.h"

#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"

#include "platform/MessageBox.h"
#include "platform/PrivateMessage.h"
#include "platform/ResourceMenu.h"
#include "platform/Resources.h"

#include <QKeyEvent>

using namespace zelgrid;

GridTestOwner::GridTestOwner(bool editMode) : platform::TemplateDialog(101), m_editMode(editMode) {}

bool GridTestOwner::openGrid() {
    const ResourceOverride resources;
    if (!Create())
        return false;
    SetDlgItemText(1019, QStringLiteral("%C_%S"));
    if (!AttachGrid(&m_grid, 1002))
        return false;
    m_grid.Initialize();
    m_grid.InitGrid(this, false, m_editMode);
    m_grid.GetParam()->EnableMoveRows(true);
    resize(1100, 600);
    show();
    activateWindow();
    m_grid.setFocus();
    return true;
}

// The order of the edit dialog's OK: the current wire layer record, the open cell, the
// commit; a stopped commit keeps the dialog open. The dialog's own check of the open row
// before the commit is left out: no grid test presses OK on a refused row.
void GridTestOwner::OnOK() {
    const ResourceOverride resources;
    m_grid.StoreCurrentLayerRecord();
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    m_grid.CommitCell(row, col);
    m_lastCommit = m_grid.CommitAll();
    if (m_lastCommit == 200)
        return;
    ZelWireTypeRec::ResetKey();
    m_closed = true;
    hide();
}

bool GridTestOwner::OnCommand(int id) {
    const ResourceOverride resources;
    if (id == 1026) {
        const std::vector<quint32> rows = m_grid.GetSelectedRows();
        if (rows.empty())
            return true;
        if (platform::messageBox(platform::loadString(109), platform::loadString(150),
                                 platform::MB_YESNO) == platform::IDNO)
            return true;
        for (auto it = rows.rbegin(); it != rows.rend(); ++it)
            m_grid.RemoveRow(static_cast<int>(*it), true);
        const int last = std::min(static_cast<int>(rows.back()), m_grid.GetWireTypeRows());
        platform::PostMessage(&m_grid, WM_WTG_GOTOCELL, static_cast<quintptr>(last), 5);
        return true;
    }
    if (id == 40043) {
        int row = 0;
        int col = 0;
        m_grid.GetCurrentCell(row, col);
        if (col == 5)
            m_grid.SetNameCellEditable(row, true);
        return true;
    }
    if (id == 40039) {
        // The set-and-edit dialog's "edit cell in project drawing".
        m_grid.MakeCellEditable(1);
        return true;
    }
    return platform::TemplateDialog::OnCommand(id);
}

qintptr GridTestOwner::OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) {
    if (message == WM_WTG_CONTEXTMENU) {
        const ResourceOverride resources;
        platform::ResourceMenu menu;
        if (menu.LoadMenu(103))
            platform::ResourceMenu::TrackPopupMenu(menu.GetSubMenu(0),
                                                   platform::PointFromLParam(lParam), this);
        return 0;
    }
    return platform::TemplateDialog::OnPrivateMessage(message, wParam, lParam);
}

bool GridTestOwner::PreTranslateKey(QKeyEvent* event) {
    if (event->type() == QEvent::KeyPress && (event->modifiers() & Qt::ControlModifier) &&
        event->key() == Qt::Key_V) {
        m_grid.Paste();
        return true;
    }
    return platform::TemplateDialog::PreTranslateKey(event);
}
