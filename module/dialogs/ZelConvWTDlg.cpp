#include "dialogs/ZelConvWTDlg.h"

#include "dialogs/ZelWTResultList.h"
#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/OvEdInput.h"
#include "ovdb/OvDbEntity.h"
#include "ovdb/ovdbEntityName.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"
#include "platform/MessageBox.h"
#include "platform/PrivateMessage.h"
#include "platform/Resources.h"
#include "platform/ScreenScale.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>

#include <cmath>
#include <string>

using namespace zelgrid;

namespace {

// Template 101 holds the controls of every wire type dialog; these belong to the others.
constexpr int kUnusedControls[] = {1017, 1019, 1029, 1031, 1033, 1032, 1012,
                                   1011, 1016, 1025, 1026, 1020, 1027, 1014};

int scaled(double scale, int value) {
    return static_cast<int>(std::lround(scale * value));
}

// The layer of an entity, read from the drawing; false when the name leads to nothing.
bool entityLayer(const ov_name name, QString& layer) {
    OvDbObjectId id;
    if (ovdbGetObjectId(id, name) != RTNORM)
        return false;
    OvDbEntity* entity = nullptr;
    if (ovdbOpenObject(entity, id, OvDb::kForRead) != Orvex::eOk || !entity)
        return false;
    const Orvex::ErrorStatus es = entity->layer(layer);
    entity->close();
    return es == Orvex::eOk;
}

} // namespace

ZelConvWTDlg::ZelConvWTDlg(const ov_name& entity, QWidget* parent, bool setOnly)
    : platform::TemplateDialog(101, parent), m_setOnly(setOnly), m_parent(parent) {
    m_entity[0] = entity[0];
    m_entity[1] = entity[1];
}

bool ZelConvWTDlg::OnInitDialog() {
    const ResourceOverride resources;
    platform::TemplateDialog::OnInitDialog();
    // The grid is placed at every opening; after a pick it keeps its rows and its cell.
    AttachGrid(&m_grid, 1002);
    m_grid.Initialize();
    m_rowHeaderWatch.Watch();
    if (m_picked) {
        int row = 0;
        int col = 0;
        m_grid.GetCurrentCell(row, col);
        // The picked wire's row is current without a click: OK is live at once.
        if (row != 0 && row <= m_grid.GetWireTypeRows())
            PostMessage(WM_WTG_ENABLEOK, 1, 0);
    }

    for (int id : kUnusedControls)
        ShowDlgItem(id, false);
    if (m_templateHeight == 0)
        m_templateHeight = height();
    resize(width(), (m_templateHeight / 4) * 3);

    // The options row and the buttons stand at fixed heights above the bottom. A template
    // laid out by hand is put right here; ours keeps them in their rows by its layout,
    // which MoveDlgItem leaves alone.
    const double scale = platform::GetMonitorDpiYScale(nullptr);
    const int bottom = rect().bottom();
    const struct {
        int id;
        int above;
        unsigned caption;
    } placed[] = {{1018, 120, 119}, {1008, 100, 120}, {1009, 75, 121}, {1010, 120, 122},
                  {1, 40, 126},     {2, 40, 128},     {1013, 40, 129}};
    for (const auto& control : placed) {
        QRect place = GetDlgItemRect(control.id);
        place.moveTop(bottom - scaled(scale, control.above));
        MoveDlgItem(control.id, place);
        if (control.id == 2 || control.id == 1013)
            LowerDlgItem(control.id);
        else
            RaiseDlgItem(control.id);
        SetDlgItemCaption(control.id, control.caption);
        ShowDlgItem(control.id, true);
    }
    // Both options start on at every opening: a change does not outlive a pick.
    CheckDlgButton(1008, 1);
    CheckDlgButton(1009, 1);
    SetDlgItemCaption(1034, 169);
    ShowDlgItem(1034, m_setOnly);

    if (!m_picked) {
        m_grid.InitGrid(this, m_setOnly, false);
        m_grid.SetMakeAllValidWire(false);
        m_grid.SetReadOnly(true);
        SelectEntityRow();
    }

    setWindowTitle(platform::loadString(166));
    m_grid.Redraw();
    m_grid.setFocus(Qt::OtherFocusReason);
    return true;
}

void ZelConvWTDlg::SelectEntityRow() {
    if (m_entity[0] == 0 && m_entity[1] == 0)
        return;
    // A wire that cannot be read, or lies on no wire type, leaves the list without a choice.
    QString layer;
    if (!entityLayer(m_entity, layer))
        return;
    const int row = FindWireTypeRow(layer);
    if (row == 0)
        return;
    PostMessage(WM_WTG_ENABLEOK, 1, 0);
    platform::PostMessage(&m_grid, WM_WTG_HIGHLIGHTROW, static_cast<quintptr>(row), 0);
    m_grid.SetTopRow(row);
    m_grid.SetCurrentCell(row, 5);
}

int ZelConvWTDlg::FindWireTypeRow(const QString& layer) {
    for (int row = 1; row <= m_grid.GetWireTypeRows(); ++row)
        if (m_grid.GetValueRowCol(row, 5).compare(layer, Qt::CaseInsensitive) == 0)
            return row;
    return 0;
}

void ZelConvWTDlg::OnPick() {
    // The dialog steps aside for the drawing: it hides now and its modal run ends when
    // this handler returns; the caller opens it again.
    EndDialog(kPickCode);
    m_picked = true;

    const ResourceOverride resources;
    ov_name name = {0, 0};
    double point[3] = {0, 0, 0};
    // A cancelled or empty pick leaves the name null, and the entity's data with it.
    ovedEntSel(platform::loadString(157).toStdWString().c_str(), name, point);
    resbuf* data = ovdbEntGet(name);
    if (!data)
        return;
    const resbuf* layerLink = data;
    while (layerLink && layerLink->restype != 8)
        layerLink = layerLink->rbnext;
    if (!layerLink || !layerLink->resval.rstring) {
        ovutRelRb(data);
        return;
    }
    const QString layer = QString::fromWCharArray(layerLink->resval.rstring);

    if (const int row = FindWireTypeRow(layer)) {
        m_grid.SetCurrentCell(row, 5);
        m_grid.SetTopRow(row);
        // Straight to the grid, not posted: the grid is to stand on the row before the
        // dialog opens again.
        m_grid.OnPrivateMessage(WM_WTG_GOTOCELL, static_cast<quintptr>(row), 5);
        m_grid.OnPrivateMessage(WM_WTG_HIGHLIGHTROW, static_cast<quintptr>(row), 5);
    } else {
        QString entityLayerName;
        if (entityLayer(name, entityLayerName))
            platform::messageBox(platform::formatText(platform::loadString(168), entityLayerName),
                                 platform::loadString(150), platform::MB_OK);
    }
    ovutRelRb(data);
}

void ZelConvWTDlg::OnOK() {
    std::array<QString, 5> elements = {QString(), "0", "1",
                                       IsDlgButtonChecked(1009) == 1 ? "0" : "1",
                                       IsDlgButtonChecked(1008) == 1 ? "1" : "0"};
    // A selection made by the drafter names its row's layer; with none, the current cell
    // gives its own text, whatever its column.
    std::vector<quint32> rows;
    m_grid.GetSelectedRows(rows, false, false);
    int row = 0;
    int col = 0;
    if (!rows.empty() && rows.front() != 0)
        elements[0] = m_grid.GetValueRowCol(static_cast<int>(rows.front()), 5);
    else if (m_grid.GetCurrentCell(row, col) && row != 0)
        elements[0] = m_grid.GetValueRowCol(row, col);

    ovutRelRb(m_result);
    m_result = ZelBuildWTResultList(elements);
    platform::TemplateDialog::OnOK();
}

void ZelConvWTDlg::OnCancel() {
    ZelWireTypeRec::ResetKey();
    platform::TemplateDialog::OnCancel();
}

bool ZelConvWTDlg::OnCommand(int id) {
    if (id == 1013) {
        ShowHelp();
        return true;
    }
    if (id == 1010) {
        OnPick();
        return true;
    }
    return platform::TemplateDialog::OnCommand(id);
}

qintptr ZelConvWTDlg::OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) {
    if (message == WM_WTG_ENABLEOK) {
        std::vector<quint32> rows;
        const bool one = wParam != 0 && m_grid.GetSelectedRows(rows, false, true) == 1;
        EnableDlgItem(1, one);
        return 0;
    }
    // A double click on a row is no choice here: the options below still want a look.
    return platform::TemplateDialog::OnPrivateMessage(message, wParam, lParam);
}

bool ZelConvWTDlg::PreTranslateKey(QKeyEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return platform::TemplateDialog::PreTranslateKey(event);
    switch (event->key()) {
    case Qt::Key_Escape:
        OnCancel();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // Enter chooses nothing: with the options beside the list, OK is a click.
        return true;
    case Qt::Key_F1:
        ShowHelp();
        return true;
    default:
        return platform::TemplateDialog::PreTranslateKey(event);
    }
}

void ZelConvWTDlg::ShowHelp() {
    ovedHelp(L"", L"change_convert_wire_type_dialog", 0);
}
