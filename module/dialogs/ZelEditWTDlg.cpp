#include "dialogs/ZelEditWTDlg.h"

#include "dialogs/ZelAlertDlg.h"
#include "dialogs/ZelImportWTDlg.h"
#include "dialogs/ZelWTDlgSteps.h"
#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "shell/ZelHostServices.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/OvEdInput.h"
#include "ovcore/oved.h"
#include "ovdb/ovut.h"
#include "ovui/NqTaskDialog.h"
#include "platform/CellStyle.h"
#include "platform/Clipboard.h"
#include "platform/MessageBox.h"
#include "platform/PrivateMessage.h"
#include "platform/ResourceMenu.h"
#include "platform/Resources.h"
#include "platform/ScreenScale.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>

#include <algorithm>
#include <cmath>

using namespace zelgrid;

namespace {

constexpr int kNameCol = 5;
const QString kDefaultFormat = QStringLiteral("%C_%S");
const wchar_t* const kHelpTopic = L"create_edit_wire_type_dialog";

bool contains(const std::vector<quint32>& values, int value) {
    return std::find(values.begin(), values.end(), static_cast<quint32>(value)) != values.end();
}

} // namespace

std::vector<QString>& ZelEditWTDlg::ImportFolders() {
    static std::vector<QString> s_importFolders;
    return s_importFolders;
}

ZelEditWTDlg::ZelEditWTDlg(QWidget* parent, bool setOnly)
    : platform::TemplateDialog(101, parent), m_setOnly(setOnly), m_layerFormat(kDefaultFormat),
      m_parent(parent) {}

ZelEditWTDlg::~ZelEditWTDlg() = default;

QLineEdit* ZelEditWTDlg::FormatEdit() const {
    return qobject_cast<QLineEdit*>(GetDlgItem(1019));
}

void ZelEditWTDlg::GotoCell(int row, int col) {
    platform::PostMessage(&m_grid, WM_WTG_GOTOCELL, static_cast<quintptr>(row), col);
}

bool ZelEditWTDlg::OnInitDialog() {
    const ResourceOverride resources;
    platform::TemplateDialog::OnInitDialog();
    hide();

    // The options row of the template belongs to the dialogs that choose a wire type; this
    // one gives its room back to the grid.
    for (const int id : {1018, 1008, 1009, 1010, 1020, 1014})
        ShowDlgItem(id, false);
    const double scale = platform::GetMonitorDpiYScale(m_parent);
    const int lower = static_cast<int>(std::lround(scale * 80));
    resize(width(), std::max(minimumSizeHint().height(), height() - lower));
    const int bottom = rect().bottom();

    // The layout keeps the buttons in their row at the bottom; the moves are asked for all
    // the same, so that a template without a layout gets them where they belong.
    const int buttonTop = bottom - static_cast<int>(std::lround(scale * 40));
    SetDlgItemCaption(1, 126);
    SetDlgItemCaption(2, 128);
    SetDlgItemCaption(1013, 129);
    for (const int id : {1, 2, 1013}) {
        QRect place = GetDlgItemRect(id);
        place.moveTop(buttonTop);
        MoveDlgItem(id, place);
    }
    RaiseDlgItem(1);
    LowerDlgItem(2);
    LowerDlgItem(1013);
    ShowDlgItem(2);
    ShowDlgItem(1013);

    const std::pair<int, unsigned> captions[] = {{1017, 130}, {1031, 133}, {1012, 108}, {1011, 124},
                                                 {1016, 125}, {1025, 148}, {1026, 131}, {1032, 164},
                                                 {1029, 163}, {1027, 136}, {1034, 169}};
    for (const auto& [id, text] : captions) {
        SetDlgItemCaption(id, text);
        ShowDlgItem(id);
    }
    SetDlgItemText(1019, m_layerFormat);
    ShowDlgItem(1019);

    // The drawing's settings: a drawing without them gets its default wire type now.
    bool allValid = false;
    {
        ZelWireTypeRec store;
        resbuf* chain = nullptr;
        if (store.GetCurWireLayerXrec(chain) == Orvex::eKeyNotFound)
            store.AssignDefaultWireType(chain);
        if (chain) {
            const resbuf* format = chain->rbnext ? chain->rbnext->rbnext : nullptr;
            if (format && format->restype == 1) {
                QString text = QString::fromWCharArray(format->resval.rstring);
                if (text.isEmpty())
                    text = kDefaultFormat;
                SetDlgItemText(1019, text);
                m_layerFormat = text;
            }
            const resbuf* flag = format ? format->rbnext : nullptr;
            if (flag && flag->restype == 290 && flag->resval.rint != 0)
                allValid = true;
            ovutRelRb(chain);
        }
    }
    CheckDlgButton(1027, allValid ? 1 : 0);
    EnableDlgItem(1025, !allValid);

    AttachGrid(&m_grid, 1002);
    m_grid.Initialize();
    m_grid.SetMakeAllValidWire(allValid);
    m_grid.InitGrid(this, m_setOnly, true);
    m_grid.GetParam()->EnableMoveRows(true);

    SetDlgItemText(1033, m_grid.GetDefaultLayer());
    ShowDlgItem(1033);
    setWindowTitle(platform::loadString(167));

    // Every valid layer is a wire layer: the rows would only repeat the layer table, so the
    // grid shows none and the dialog offers nothing but the box to switch it off.
    if (allValid) {
        if (m_grid.GetWireTypeRows() > 0)
            m_grid.RemoveRows(1, m_grid.GetWireTypeRows());
        LockDialog(true);
    }

    show();
    m_grid.Redraw();
    m_grid.setFocus();
    return true;
}

void ZelEditWTDlg::LockDialog(bool lock) {
    if (lock)
        EnableDlgItem(1, true);
    for (const int id : {1026, 1025, 1012, 1011, 1016, 1032, 1019, 1031, 1033})
        EnableDlgItem(id, !lock);

    // Only the colours change; each cell keeps its control and its read-only flag.
    m_grid.GetParam()->SetLockReadOnly(false);
    platform::CellStyle style;
    style.setInterior(platform::CellStyle::fromColorRef(0xFFFFFF));
    style.setTextColor(platform::CellStyle::fromColorRef(lock ? 0x808080 : 0));
    if (m_grid.GetRowCount() >= 1 && m_grid.GetColCount() >= 1)
        m_grid.SetStyleRange(platform::GridRange(1, 1, m_grid.GetRowCount(), m_grid.GetColCount()),
                             style);
    m_grid.GetParam()->SetLockReadOnly(true);
    m_grid.setEnabled(!lock);
}

bool ZelEditWTDlg::OnCommand(int id) {
    switch (id) {
    case 1013:
        ovedHelp(L"", kHelpTopic, 0);
        return true;
    case 1012:
        OnColor();
        return true;
    case 1011:
        OnLinetype();
        return true;
    case 1016:
        OnLineweight();
        return true;
    case 1025:
        OnAddLayers();
        return true;
    case 1026:
        OnRemove();
        return true;
    case 1027:
        OnMakeAllValid();
        return true;
    case 1034:
        OnImport();
        return true;
    case 1032:
        OnMakeDefault();
        return true;
    case 40013:
        OnCopy();
        return true;
    case 40023:
        OnPaste();
        return true;
    case 40014:
        OnCut();
        return true;
    case 40028:
        OnDelete();
        return true;
    case 40043:
        OnEditNameCell();
        return true;
    default:
        return platform::TemplateDialog::OnCommand(id);
    }
}

qintptr ZelEditWTDlg::OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) {
    switch (message) {
    case WM_WTG_CONTEXTMENU:
        return OnContextMenu(lParam);
    case WM_WTG_ENABLEOK:
        return OnEnableOK(wParam);
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
        // A double click on a row is no OK here: it has no handler.
        return platform::TemplateDialog::OnPrivateMessage(message, wParam, lParam);
    }
}

qintptr ZelEditWTDlg::OnEnableOK(quintptr wParam) {
    // A locked dialog has no row to stand on, and its OK keeps the box; a grid left without
    // wire types (the box just switched off) has no row that could be at fault. The
    // grid's reports of no current row must not take OK away from either.
    if ((IsDlgButtonChecked(1027) == 1 && !m_grid.isEnabled()) || m_grid.GetWireTypeRows() == 0) {
        EnableDlgItem(1, true);
        return 0;
    }
    const bool one = wParam != 0 && m_grid.GetSelectedRows(false, true).size() == 1;
    EnableDlgItem(1, one);
    return 0;
}

void ZelEditWTDlg::OnMakeAllValid() {
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    GotoCell(row, col);
    if (IsDlgButtonChecked(1027) == 1) {
        LockDialog(true);
    } else {
        LockDialog(false);
        m_grid.ResetAllValid(false);
    }
    EnableDlgItem(1, true);
}

void ZelEditWTDlg::AfterLookDialog(const std::vector<quint32>& rows) {
    GotoCell(static_cast<int>(rows.at(0)), kNameCol);
    m_grid.Redraw();
    m_grid.setFocus();
}

void ZelEditWTDlg::OnColor() {
    const std::vector<quint32> rows = zelwtdlg::ChooseRowColor(m_grid);
    if (!rows.empty())
        AfterLookDialog(rows);
}

void ZelEditWTDlg::OnLinetype() {
    const std::vector<quint32> rows = zelwtdlg::ChooseRowLinetype(m_grid);
    if (!rows.empty())
        AfterLookDialog(rows);
}

void ZelEditWTDlg::OnLineweight() {
    const std::vector<quint32> rows = zelwtdlg::ChooseRowLineweight(m_grid);
    if (!rows.empty())
        AfterLookDialog(rows);
}

void ZelEditWTDlg::OnAddLayers() {
    zelwtdlg::AddExistingLayers(m_grid);
}

void ZelEditWTDlg::OnRemove() {
    const std::vector<quint32> rows = m_grid.GetSelectedRows(false, true);
    if (rows.empty())
        return;
    {
        const ResourceOverride resources;
        if (platform::messageBox(platform::loadString(109), platform::loadString(150),
                                 platform::MB_YESNO) == platform::IDNO)
            return;
    }
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        m_grid.RemoveRow(static_cast<int>(*it), true);
    const int last = std::min(static_cast<int>(rows.back()), m_grid.GetWireTypeRows());
    m_grid.setFocus();
    GotoCell(last, kNameCol);
}

void ZelEditWTDlg::OnDelete() {
    const std::vector<quint32> rows = m_grid.GetSelectedRows(false, true);
    if (rows.empty())
        return;
    for (auto it = rows.rbegin(); it != rows.rend(); ++it)
        m_grid.RemoveRow(static_cast<int>(*it), false);
    const int last = std::min(static_cast<int>(rows.back()), m_grid.GetWireTypeRows());
    GotoCell(last, kNameCol);
}

void ZelEditWTDlg::OnMakeDefault() {
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    m_grid.SetDefaultLayer(m_grid.GetValueRowCol(row, kNameCol));
    SetDlgItemText(1033, m_grid.GetDefaultLayer());
}

void ZelEditWTDlg::OnEditNameCell() {
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    if (col == kNameCol)
        m_grid.SetNameCellEditable(row, true);
}

bool ZelEditWTDlg::CopyTarget(std::vector<quint32>& rows, std::vector<quint32>& cols) {
    rows = m_grid.GetSelectedRows(false, true);
    cols = m_grid.GetSelectedCols(false, true);
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    if (row != 0 && !contains(rows, row))
        rows.push_back(static_cast<quint32>(row));
    if (col != 0 && !contains(cols, col))
        cols.push_back(static_cast<quint32>(col));
    // The key and the in-use mark are the grid's own and never travel.
    for (const quint32 skipped : {0u, 1u, 2u}) {
        if (!cols.empty() && cols.front() == skipped)
            cols.erase(cols.begin());
    }
    if (!rows.empty() && rows.front() == 0)
        rows.erase(rows.begin());
    // The blank row at the bottom holds nothing to copy.
    if (static_cast<int>(rows.size()) > m_grid.GetWireTypeRows())
        rows.pop_back();
    return !rows.empty() && !cols.empty();
}

void ZelEditWTDlg::OnCopy() {
    if (!m_grid.CanCopy())
        return;
    std::vector<quint32> rows;
    std::vector<quint32> cols;
    if (!CopyTarget(rows, cols))
        return;
    ZelWTGrid::SetCopiedRows(rows);
    ZelWTGrid::SetCopiedCols(cols);
    m_grid.CopyRange(
        platform::GridRange(static_cast<int>(rows.front()), static_cast<int>(cols.front()),
                            static_cast<int>(rows.back()), static_cast<int>(cols.back())));
}

void ZelEditWTDlg::OnCut() {
    if (!m_grid.CanCut())
        return;
    std::vector<quint32> rows;
    std::vector<quint32> cols;
    if (!CopyTarget(rows, cols))
        return;
    ZelWTGrid::SetCopiedRows(rows);
    ZelWTGrid::SetCopiedCols(cols);
    m_grid.GetParam()->SetLockReadOnly(false);
    m_grid.CutRange(
        platform::GridRange(static_cast<int>(rows.front()), static_cast<int>(cols.front()),
                            static_cast<int>(rows.back()), static_cast<int>(cols.back())));
    // The emptied cells go through the grid's own edit path, so that the records follow.
    for (const quint32 row : rows) {
        for (const quint32 col : cols) {
            m_grid.OnModifyCell(static_cast<int>(row), static_cast<int>(col));
            m_grid.CommitCell(static_cast<int>(row), static_cast<int>(col));
        }
    }
    m_grid.GetParam()->SetLockReadOnly(true);
}

void ZelEditWTDlg::OnPaste() {
    if (m_grid.CanPaste())
        m_grid.Paste();
}

qintptr ZelEditWTDlg::OnContextMenu(qintptr lParam) {
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    if (col == 1 || col == 2 || (row == 0 && col == 0))
        return 1;

    QPoint at = platform::PointFromLParam(lParam);
    // A menu asked for from the keyboard comes without a point: it opens at the mouse.
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

    // Bring the selection in line with the click, as a spreadsheet does: a click outside
    // the selection works on what was clicked.
    const bool rowHit = row == 0 || contains(rows, row);
    const bool colHit = col == 0 || contains(cols, col);
    if (row != 0 && col != 0) {
        if (!(rowHit && colHit)) {
            m_grid.ClearSelection();
            rows.push_back(static_cast<quint32>(row));
            cols.push_back(static_cast<quint32>(col));
        }
    } else if (col == 0) {
        if (!rowHit || (rows.size() == 1 && cols.size() == 1)) {
            m_grid.SelectRowRange(row);
            rows = m_grid.GetSelectedRows(false, true);
            cols = m_grid.GetSelectedCols(false, true);
        }
    } else if (!colHit || static_cast<int>(rows.size()) < m_grid.GetRowCount()) {
        m_grid.SelectColumnRange(col);
        rows = m_grid.GetSelectedRows(false, true);
        cols = m_grid.GetSelectedCols(false, true);
    }
    if (rows.size() == 1 && rows.front() == 0)
        rows.clear();
    if (cols.size() == 1 && cols.front() == 0)
        cols.clear();

    const bool some = !rows.empty() && !cols.empty();
    platform::ResourceMenu::EnableMenuItem(menu, 40043, col == kNameCol && rows.size() == 1);

    bool allEmpty = true;
    for (const quint32 r : rows) {
        if (!m_grid.GetValueRowCol(static_cast<int>(r), kNameCol).isEmpty()) {
            allEmpty = false;
            break;
        }
    }
    bool deletable = true;
    for (const quint32 r : rows) {
        if (m_grid.IsRowRemovable(static_cast<int>(r)) == 0) {
            deletable = false;
            break;
        }
    }
    const bool hasName = contains(cols, kNameCol);

    platform::ResourceMenu::EnableMenuItem(menu, 40028, !allValid && deletable && some);
    platform::ResourceMenu::EnableMenuItem(menu, 40013, some);
    platform::ResourceMenu::EnableMenuItem(menu, 40014, some && !hasName);
    const bool text = platform::CanOpenClipboard() && platform::ClipboardHasText();
    platform::ResourceMenu::EnableMenuItem(menu, 40023, text && some && (allEmpty || !hasName));
    // The menu of the set and edit twin edits cells in the project drawing; not here.
    for (QAction* action : menu->actions()) {
        if (action->objectName() == QLatin1String("40039"))
            action->setVisible(false);
    }

    platform::ResourceMenu::TrackPopupMenu(menu, at, this);
    return 0;
}

void ZelEditWTDlg::OnImport() {
    // The open edit ends first, so that the merge finds every row as the drafter left it.
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    m_grid.SetCurrentCell(row, col, 10);

    QString title;
    {
        const ResourceOverride resources;
        title = platform::loadString(170);
    }
    const QString start = ImportStartFolder();
    resbuf* answer = ovutNewRb(RTSTR);
    QString file;
    if (ovedGetFileD(title.toStdWString().c_str(), start.toStdWString().c_str(), L"dwg;dwt", 0,
                     answer) == RTNORM &&
        answer->restype == RTSTR && answer->resval.rstring)
        file = QString::fromWCharArray(answer->resval.rstring);
    ovutRelRb(answer);
    if (file.isEmpty())
        return;

    // The next import opens where this one found its file. Before any project was seen
    // there is no pair to write into, and the bounds check says so.
    const qsizetype slash = file.lastIndexOf(QLatin1Char('/'));
    if (slash >= 0)
        ImportFolders().at(1) = file.left(slash + 1);

    const std::wstring wideFile = file.toStdWString();
    resbuf* call =
        ovutBuildList(RTSTR, L"wd_wirlay_get_dwg_wiretype_settings", RTSTR, wideFile.c_str(), 0);
    resbuf* settings = nullptr;
    ovedInvoke(call, &settings);
    if (!settings || settings->restype == RTNIL) {
        NqTaskDialog task;
        if (task.LoadFromFile(L"/ZelTaskDialogsRes;component/TaskDialogs.xaml",
                              L"ZelImportWireType.NoWireTypeFound", nullptr, 0))
            task.ShowDialog(this);
    } else {
        ZelImportWTDlg import(settings, this);
        if (import.DoModal() == IDOK) {
            for (std::vector<QString>& fields : import.GetChosenRows(false))
                m_grid.AddOrMergeRow(fields, file, ZelImportWTDlg::GetImportAppearance(),
                                     ZelImportWTDlg::GetImportProperties());
        }
    }
    ovutRelRb(settings);
    ovutRelRb(call);
}

QString ZelEditWTDlg::ImportStartFolder() {
    QString project;
    if (!GetLispString(QStringLiteral("GBL_wd_prj"), project) || project.isEmpty())
        return QString();
    std::vector<QString>& remembered = ImportFolders();
    QString result;
    if (remembered.size() == 2 && remembered[0].compare(project, Qt::CaseInsensitive) == 0) {
        result = remembered[1];
    } else {
        const qsizetype slash = project.lastIndexOf(QLatin1Char('/'));
        if (slash >= 0)
            result = project.left(slash + 1);
    }
    remembered = {project, result};
    return result;
}

void ZelEditWTDlg::OnEditKillFocus(int id) {
    if (id == 1019)
        OnFormatKillFocus();
}

void ZelEditWTDlg::OnFormatKillFocus() {
    const QString text = GetDlgItemText(1019).trimmed();
    switch (zelwtdlg::CheckLayerFormat(text)) {
    case zelwtdlg::FormatCheck::RefusedPlain:
        AlertAndRestore(false);
        return;
    case zelwtdlg::FormatCheck::RefusedAtToken:
        AlertAndRestore(true);
        return;
    case zelwtdlg::FormatCheck::Accepted:
        // The control keeps the text as typed; the trimmed text is the format.
        m_layerFormat = text;
        return;
    }
}

void ZelEditWTDlg::AlertAndRestore(bool focusForm) {
    {
        ZelAlertDlg alert;
        alert.DoModal();
    }
    QLineEdit* edit = FormatEdit();
    if (!focusForm) {
        SetFocusTo(1019);
        SetDlgItemText(1019, m_layerFormat);
        return;
    }
    // The alert took the focus and the caret with it: put the text back first and then
    // bring the caret and the focus home, so that the drafter types on where the format
    // is.
    SetDlgItemText(1019, m_layerFormat);
    if (edit)
        edit->setCursorPosition(edit->cursorPosition());
    ShowDlgItem(1019);
    SetFocusTo(1019);
}

void ZelEditWTDlg::OnOK() {
    // Enter and the grid's requests come here too; a disabled OK stops them.
    if (HasDlgItem(1) && !IsDlgItemEnabled(1))
        return;
    const ResourceOverride resources;
    // The drawing's settings go first and stay written whatever the rows say.
    m_grid.StoreCurrentLayerRecord();
    int row = 0;
    int col = 0;
    m_grid.GetCurrentCell(row, col);
    QString error;
    if (!m_grid.ValidateRow(row, m_grid.GetValueRowCol(row, kNameCol), error)) {
        platform::appMessageBox(error);
        GotoCell(row, kNameCol);
        m_grid.SetNameCellEditable(row, true);
        return;
    }
    m_grid.CommitCell(row, col);
    if (m_grid.CommitAll() == 200)
        return;
    ZelWireTypeRec::ResetKey();
    platform::TemplateDialog::OnOK();
}

void ZelEditWTDlg::OnCancel() {
    if (HasDlgItem(1) && IsDlgItemEnabled(1) && m_grid.IsModified()) {
        int answer = 0;
        {
            const ResourceOverride resources;
            answer = platform::appMessageBoxById(113, platform::MB_YESNOCANCEL);
        }
        if (answer == platform::IDCANCEL)
            return;
        // A Yes that fails to commit still leaves: the drafter asked to go, and the
        // messages of the failed commit have told what stayed behind.
        if (answer == platform::IDYES)
            OnOK();
    }
    ZelWireTypeRec::ResetKey();
    platform::TemplateDialog::OnCancel();
}

bool ZelEditWTDlg::PreTranslateKey(QKeyEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return platform::TemplateDialog::PreTranslateKey(event);
    const int key = event->key();
    const bool ctrl = (event->modifiers() & Qt::ControlModifier) != 0;
    if (key == Qt::Key_Escape) {
        // Esc in an open cell takes back the cell's edit, not the dialog's.
        if (m_grid.IsActiveCurrentCell())
            m_grid.Undo();
        else
            OnCancel();
        return true;
    }
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        return true;
    if (ctrl && (key == Qt::Key_C || key == Qt::Key_V || key == Qt::Key_X)) {
        // In the format edit the keys are the edit's own.
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
