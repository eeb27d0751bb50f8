#include "dialogs/ZelWireTypeSelDlg.h"

#include "dialogs/ZelAlertDlg.h"
#include "dialogs/ZelWTDlgSteps.h"
#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/OvEdInput.h"
#include "ovdb/ovut.h"
#include "platform/Clipboard.h"
#include "platform/MessageBox.h"
#include "platform/PrivateMessage.h"
#include "platform/ResourceMenu.h"
#include "platform/Resources.h"

#include <QApplication>
#include <QCursor>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>

#include <algorithm>

using namespace zelgrid;

namespace {

constexpr int kNameCol = 5;
const QString kDefaultFormat = QStringLiteral("%C_%S");
const wchar_t* const kHelpTopic = L"set_edit_wire_type_dialog";

bool contains(const std::vector<quint32>& values, int value) {
    return std::find(values.begin(), values.end(), static_cast<quint32>(value)) != values.end();
}

// The layer (group 8) of an entity; empty when it has none or is gone.
QString entityLayer(const ov_name name) {
    QString layer;
    resbuf* chain = ovdbEntGet(name);
    for (const resbuf* link = chain; link; link = link->rbnext) {
        if (link->restype == 8 && link->resval.rstring) {
            layer = QString::fromWCharArray(link->resval.rstring);
            break;
        }
    }
    ovutRelRb(chain);
    return layer;
}

QString flag(bool on) {
    return on ? QStringLiteral("1") : QStringLiteral("0");
}

} // namespace

ZelWireTypeSelDlg::ZelWireTypeSelDlg(const ov_name& entity, QWidget* parent, bool setOnly)
    : platform::TemplateDialog(101, parent), m_layerFormat(kDefaultFormat), m_parent(parent),
      m_setOnly(setOnly) {
    m_entity[0] = entity[0];
    m_entity[1] = entity[1];
}

ZelWireTypeSelDlg::~ZelWireTypeSelDlg() = default;

void ZelWireTypeSelDlg::GotoCell(int row, int col) {
    platform::PostMessage(&m_grid, WM_WTG_GOTOCELL, static_cast<quintptr>(row), col);
}

int ZelWireTypeSelDlg::FindWireRow(const QString& layer) {
    for (int row = 1; row <= m_grid.GetWireTypeRows(); ++row) {
        if (m_grid.GetValueRowCol(row, kNameCol).compare(layer, Qt::CaseInsensitive) == 0)
            return row;
    }
    return 0;
}

bool ZelWireTypeSelDlg::OnInitDialog() {
    const ResourceOverride resources;
    platform::TemplateDialog::OnInitDialog();

    // Unlike the create and edit dialog, a drawing without settings gets no default here:
    // choosing a wire type is no reason to write one.
    bool allValid = false;
    {
        ZelWireTypeRec store;
        resbuf* chain = nullptr;
        store.GetCurWireLayerXrec(chain);
        if (chain) {
            const resbuf* format = chain->rbnext ? chain->rbnext->rbnext : nullptr;
            if (format && format->restype == 1) {
                QString text = QString::fromWCharArray(format->resval.rstring);
                if (text.isEmpty())
                    text = kDefaultFormat;
                SetDlgItemText(1019, text);
                m_layerFormat = text;
            }
            const resbuf* flagLink = format ? format->rbnext : nullptr;
            if (flagLink && flagLink->restype == 290 && flagLink->resval.rint != 0)
                allValid = true;
            ovutRelRb(chain);
        }
    }
    if (GetDlgItemText(1019).isEmpty())
        SetDlgItemText(1019, m_layerFormat);
    CheckDlgButton(1027, allValid ? 1 : 0);
    EnableDlgItem(1025, !allValid);

    // The grid keeps its rows and its current cell across a pick: it is set up and loaded
    // at the first opening only.
    if (!m_picked) {
        AttachGrid(&m_grid, 1002);
        m_grid.Initialize();
        hide();
        m_grid.InitGrid(this, m_setOnly, false);
        m_grid.SetMakeAllValidWire(allValid);
        if (m_entity[0] != 0 || m_entity[1] != 0) {
            const int row = FindWireRow(entityLayer(m_entity));
            if (row != 0 && !entityLayer(m_entity).isEmpty()) {
                m_grid.SelectRowRange(row);
                PostMessage(WM_WTG_ENABLEOK, 1, 0);
            }
        }
        show();
    }

    SetDlgItemCaption(1008, 120);
    SetDlgItemCaption(1009, 121);
    CheckDlgButton(1008, 1);
    CheckDlgButton(1009, 1);
    SetDlgItemCaption(1020, 135);
    SetDlgItemCaption(1017, 130);
    SetDlgItemCaption(1010, 122);
    SetDlgItemText(1012, platform::loadString(141) + QStringLiteral("..."));
    SetDlgItemCaption(1011, 124);
    SetDlgItemCaption(1016, 125);
    SetDlgItemCaption(1, 126);
    SetDlgItemCaption(1014, 127);
    SetDlgItemCaption(2, 128);
    SetDlgItemCaption(1013, 129);
    SetDlgItemCaption(1018, 119);
    SetDlgItemCaption(1026, 131);
    SetDlgItemCaption(1034, 169);
    // No default wire type is chosen here and nothing is imported: buttons that would do
    // nothing are not offered.
    for (const int id : {1029, 1031, 1033, 1032, 1034})
        ShowDlgItem(id, false);
    if (m_setOnly) {
        for (const int id : {1008, 1009, 1010})
            EnableDlgItem(id, false);
    }

    setWindowTitle(platform::loadString(104));
    m_grid.Redraw();
    m_grid.setFocus();
    return true;
}

bool ZelWireTypeSelDlg::OnCommand(int id) {
    switch (id) {
    case 1013:
        ovedHelp(L"", kHelpTopic, 0);
        return true;
    case 1012:
    case 1011:
    case 1016: {
        const std::vector<quint32> rows = id == 1012   ? zelwtdlg::ChooseRowColor(m_grid)
                                          : id == 1011 ? zelwtdlg::ChooseRowLinetype(m_grid)
                                                       : zelwtdlg::ChooseRowLineweight(m_grid);
        if (!rows.empty()) {
            GotoCell(static_cast<int>(rows.at(0)), kNameCol);
            m_grid.Redraw();
            m_grid.setFocus();
        }
        return true;
    }
    case 1025:
        zelwtdlg::AddExistingLayers(m_grid);
        return true;
    case 1026:
        OnRemove();
        return true;
    case 1027:
        OnMakeAllValid();
        return true;
    case 1010:
        OnPick();
        return true;
    case 1014:
        OnChangeWires();
        return true;
    case 40013:
        OnCopy();
        return true;
    case 40014:
        OnCut();
        return true;
    case 40023:
        OnPaste();
        return true;
    case 40028:
        OnDelete();
        return true;
    case 40039:
        m_grid.MakeCellEditable(1);
        return true;
    case 40043: {
        int row = 0;
        int col = 0;
        m_grid.GetCurrentCell(row, col);
        if (col == kNameCol)
            m_grid.SetNameCellEditable(row, true);
        return true;
    }
    default:
        return platform::TemplateDialog::OnCommand(id);
    }
}

qintptr ZelWireTypeSelDlg::OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) {
    switch (message) {
    case WM_WTG_CONTEXTMENU:
        return OnContextMenu(lParam);
    case WM_WTG_ENABLEOK:
        return OnEnableOK(wParam);
    case WM_WTG_ROWDBLCLK:
        // Here a double click on a row chooses it.
        OnOK();
        return 0;
    case WM_WTG_COPY:
        OnCopy();
        return 0;
    case WM_WTG_CUT:
        OnCut();
        return 0;
    case WM_WTG_PASTE:
        OnPaste();
        return 0;
    default:
        return platform::TemplateDialog::OnPrivateMessage(message, wParam, lParam);
    }
}

qintptr ZelWireTypeSelDlg::OnEnableOK(quintptr wParam) {
    const bool one = wParam != 0 && m_grid.GetSelectedRows(false, true).size() == 1;
    EnableDlgItem(1, one);
    EnableDlgItem(1014, one && !m_setOnly);
    return 0;
}

void ZelWireTypeSelDlg::OnPick() {
    EndDialog(-5001);
    m_picked = true;
    const ResourceOverride resources;
    ov_name name = {0, 0};
    double point[3] = {0, 0, 0};
    ovedEntSel(platform::loadString(157).toStdWString().c_str(), name, point);
    const QString layer = entityLayer(name);
    if (layer.isEmpty())
        return;
    if (const int row = FindWireRow(layer)) {
        GotoCell(row, kNameCol);
        m_grid.SelectRowRange(row);
        return;
    }
    // The layer stands in the caption, where the drafter reads it first.
    const QString caption = platform::loadString(153).replace(QStringLiteral("%s"), layer);
    if (platform::messageBox(platform::loadString(154), caption, platform::MB_YESNO) ==
        platform::IDYES)
        m_grid.AddLayerRows(layer);
}

bool ZelWireTypeSelDlg::Commit() {
    const ResourceOverride resources;
    m_grid.StoreCurrentLayerRecord();
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    m_grid.CommitCell(row, col);
    return m_grid.CommitAll() != 200;
}

void ZelWireTypeSelDlg::SetResult(const QString& layer, bool makeCurrent, bool changeWires) {
    ovutRelRb(m_result);
    const std::wstring name = layer.toStdWString();
    const std::wstring current = flag(makeCurrent).toStdWString();
    std::wstring third = flag(changeWires).toStdWString();
    std::wstring fourth = changeWires ? flag(IsDlgButtonChecked(1009) != 1).toStdWString() : L"1";
    std::wstring fifth = changeWires ? flag(IsDlgButtonChecked(1008) == 1).toStdWString() : L"0";
    m_result = ovutBuildList(RTSTR, name.c_str(), RTSTR, current.c_str(), RTSTR, third.c_str(),
                             RTSTR, fourth.c_str(), RTSTR, fifth.c_str(), 0);
}

void ZelWireTypeSelDlg::OnOK() {
    if (HasDlgItem(1) && !IsDlgItemEnabled(1))
        return;
    if (!Commit())
        return;
    const std::vector<quint32> rows = m_grid.GetSelectedRows(false, true);
    if (rows.empty())
        return;
    const QString layer = m_grid.GetValueRowCol(static_cast<int>(rows.front()), kNameCol);
    const bool makeCurrent = IsDlgButtonChecked(1020) == 1;
    if (makeCurrent) {
        ZelWireTypeRec store;
        store.SetCurrentLayer(layer);
    }
    SetResult(layer, makeCurrent, false);
    ZelWireTypeRec::ResetKey();
    platform::TemplateDialog::OnOK();
}

void ZelWireTypeSelDlg::OnChangeWires() {
    // Looks for a control 127, which the template does not have: the test never stops the
    // change, and 1014's own state is left to the grid's reports.
    if (HasDlgItem(127) && !IsDlgItemEnabled(127))
        return;
    if (!Commit())
        return;
    const std::vector<quint32> rows = m_grid.GetSelectedRows(false, true);
    const QString layer = m_grid.GetValueRowCol(static_cast<int>(rows.at(0)), kNameCol);
    // The wires change to this type; making it current is left to the caller.
    SetResult(layer, IsDlgButtonChecked(1020) == 1, true);
    platform::TemplateDialog::OnOK();
}

void ZelWireTypeSelDlg::OnCancel() {
    ZelWireTypeRec::ResetKey();
    platform::TemplateDialog::OnCancel();
}

void ZelWireTypeSelDlg::OnMakeAllValid() {
    const bool on = IsDlgButtonChecked(1027) == 1;
    m_grid.ResetAllValid(on);
    EnableDlgItem(1026, !on);
    EnableDlgItem(1025, !on);
    GotoCell(1, kNameCol);
    m_grid.Redraw();
    m_grid.setFocus();
}

void ZelWireTypeSelDlg::OnRemove() {
    const std::vector<quint32> rows = m_grid.GetSelectedRows(false, true);
    for (auto it = rows.rbegin(); it != rows.rend(); ++it) {
        m_grid.RemoveRow(static_cast<int>(*it), true);
        m_grid.SetMakeAllValidWire(false);
    }
    m_grid.setFocus();
    GotoCell(1, kNameCol);
}

void ZelWireTypeSelDlg::OnDelete() {
    const std::vector<quint32> rows = m_grid.GetSelectedRows(false, true);
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        m_grid.RemoveRow(static_cast<int>(*it), false);
    GotoCell(1, kNameCol);
}

bool ZelWireTypeSelDlg::CopyTarget(std::vector<quint32>& rows, std::vector<quint32>& cols) {
    rows = m_grid.GetSelectedRows(false, true);
    cols = m_grid.GetSelectedCols(false, true);
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    if (row != 0 && !contains(rows, row))
        rows.push_back(static_cast<quint32>(row));
    if (col != 0 && !contains(cols, col))
        cols.push_back(static_cast<quint32>(col));
    if (rows.empty() || cols.empty())
        return false;
    // A header in the selection stands for its whole row or column.
    if (cols.front() == 0) {
        cols.erase(cols.begin());
        if (cols.empty()) {
            m_grid.SelectRowRange(row);
            rows = m_grid.GetSelectedRows(false, true);
            cols = m_grid.GetSelectedCols(false, true);
        }
    }
    if (!rows.empty() && rows.front() == 0) {
        rows.erase(rows.begin());
        if (rows.empty()) {
            m_grid.SelectColumnRange(col);
            rows = m_grid.GetSelectedRows(false, true);
            cols = m_grid.GetSelectedCols(false, true);
        }
    }
    return !rows.empty() && !cols.empty();
}

void ZelWireTypeSelDlg::OnCopy() {
    if (!m_grid.CanCopy())
        return;
    std::vector<quint32> rows;
    std::vector<quint32> cols;
    if (!CopyTarget(rows, cols))
        return;
    QFile file(ZelWTGrid::CopyFilePath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    ZelWTGrid::SetCopiedRows(rows);
    ZelWTGrid::SetCopiedCols(cols);
    m_grid.CopyTextToFile(
        file, platform::GridRange(static_cast<int>(rows.front()), static_cast<int>(cols.front()),
                                  static_cast<int>(rows.back()), static_cast<int>(cols.back())));
}

void ZelWireTypeSelDlg::OnCut() {
    if (!m_grid.CanCut())
        return;
    std::vector<quint32> rows;
    std::vector<quint32> cols;
    if (!CopyTarget(rows, cols))
        return;
    QFile file(ZelWTGrid::CopyFilePath());
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    const platform::GridRange range(static_cast<int>(rows.front()), static_cast<int>(cols.front()),
                                    static_cast<int>(rows.back()), static_cast<int>(cols.back()));
    m_grid.CopyTextToFile(file, range);
    file.close();
    ZelWTGrid::SetCopiedRows(rows);
    ZelWTGrid::SetCopiedCols(cols);
    m_grid.GetParam()->SetLockReadOnly(false);
    m_grid.CutRange(range);
    for (const quint32 r : rows) {
        for (const quint32 c : cols) {
            m_grid.OnModifyCell(static_cast<int>(r), static_cast<int>(c));
            m_grid.CommitCell(static_cast<int>(r), static_cast<int>(c));
        }
    }
    m_grid.GetParam()->SetLockReadOnly(true);
}

void ZelWireTypeSelDlg::OnPaste() {
    if (m_grid.CanPaste())
        m_grid.Paste();
}

qintptr ZelWireTypeSelDlg::OnContextMenu(qintptr lParam) {
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    if (col == 1 || col == 2)
        return 1;
    QPoint at = platform::PointFromLParam(lParam);
    if ((quint32(lParam) & 0xFFFF) == 0xFFFF && ((quint32(lParam) >> 16) & 0xFFFF) == 0xFFFF)
        at = QCursor::pos();

    const ResourceOverride resources;
    platform::ResourceMenu resource;
    if (!resource.LoadMenu(103) || !resource.GetSubMenu(0))
        return 3;
    QMenu* menu = resource.GetSubMenu(0);

    const bool allValid = IsDlgButtonChecked(1027) == 1;
    std::vector<quint32> rows = m_grid.GetSelectedRows(false, true);
    std::vector<quint32> cols = m_grid.GetSelectedCols(false, true);
    if (rows.size() == 1 && rows.front() == 0)
        rows.clear();
    if (cols.size() == 1 && cols.front() == 0)
        cols.clear();
    const bool some = !rows.empty() && !cols.empty();

    bool allEmpty = true;
    for (const quint32 r : rows) {
        if (!m_grid.GetValueRowCol(static_cast<int>(r), kNameCol).isEmpty()) {
            allEmpty = false;
            break;
        }
    }
    // A layer with objects on it keeps its wire type: the in-use column says which.
    bool deletable = true;
    for (const quint32 r : rows) {
        const int rr = static_cast<int>(r);
        if (rr == 0 || rr > m_grid.GetWireTypeRows() || !m_grid.GetValueRowCol(rr, 2).isEmpty()) {
            deletable = false;
            break;
        }
    }
    const bool hasName = contains(cols, kNameCol);
    // The copy file of an earlier copy counts like text on the clipboard, also after a
    // restart of the host.
    QFile copied(ZelWTGrid::CopyFilePath());
    bool text = copied.open(QIODevice::ReadOnly) && copied.size() > 0;
    if (!text)
        text = platform::CanOpenClipboard() && platform::ClipboardHasText();

    platform::ResourceMenu::EnableMenuItem(menu, 40043, col == kNameCol && rows.size() == 1);
    platform::ResourceMenu::EnableMenuItem(menu, 40028, !allValid && deletable && some);
    platform::ResourceMenu::EnableMenuItem(menu, 40013, some);
    platform::ResourceMenu::EnableMenuItem(menu, 40014, some && !hasName);
    platform::ResourceMenu::EnableMenuItem(menu, 40023, text && some && (allEmpty || !hasName));
    platform::ResourceMenu::TrackPopupMenu(menu, at, this);
    return 0;
}

void ZelWireTypeSelDlg::OnEditKillFocus(int id) {
    if (id == 1019)
        OnFormatKillFocus();
}

void ZelWireTypeSelDlg::OnFormatKillFocus() {
    const QString text = GetDlgItemText(1019).trimmed();
    switch (zelwtdlg::CheckLayerFormat(text)) {
    case zelwtdlg::FormatCheck::RefusedPlain:
        AlertAndRestore(false);
        return;
    case zelwtdlg::FormatCheck::RefusedAtToken:
        AlertAndRestore(true);
        return;
    case zelwtdlg::FormatCheck::Accepted:
        m_layerFormat = text;
        return;
    }
}

void ZelWireTypeSelDlg::AlertAndRestore(bool focusForm) {
    {
        ZelAlertDlg alert;
        alert.DoModal();
    }
    if (!focusForm)
        SetFocusTo(1019);
    SetDlgItemText(1019, m_layerFormat);
    SetFocusTo(1019);
}

bool ZelWireTypeSelDlg::PreTranslateKey(QKeyEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return platform::TemplateDialog::PreTranslateKey(event);
    const int key = event->key();
    const bool ctrl = (event->modifiers() & Qt::ControlModifier) != 0;
    if (key == Qt::Key_Escape) {
        OnCancel();
        return true;
    }
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        return true;
    if (ctrl && (key == Qt::Key_C || key == Qt::Key_V || key == Qt::Key_X)) {
        if (QApplication::focusWidget() != &m_grid)
            return platform::TemplateDialog::PreTranslateKey(event);
        if (key == Qt::Key_C)
            OnCopy();
        else if (key == Qt::Key_V)
            OnPaste();
        else
            OnCut();
        return true;
    }
    if (key == Qt::Key_F1) {
        ovedHelp(L"", kHelpTopic, 0);
        return true;
    }
    return platform::TemplateDialog::PreTranslateKey(event);
}
