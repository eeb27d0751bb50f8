#include "dialogs/ZelSetWTDlg.h"

#include "dialogs/ZelWTResultList.h"
#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/OvEdInput.h"
#include "ovdb/ovut.h"
#include "platform/Resources.h"
#include "platform/ScreenScale.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>

#include <cmath>

using namespace zelgrid;

namespace {

// Template 101 holds the controls of every wire type dialog; this one keeps the list and
// the three buttons below it.
constexpr int kUnusedControls[] = {1017, 1019, 1029, 1031, 1033, 1032, 1012, 1011, 1016, 1025,
                                   1026, 1034, 1018, 1008, 1009, 1010, 1020, 1027, 1014};

int scaled(double scale, int value) {
    return static_cast<int>(std::lround(scale * value));
}

} // namespace

ZelSetWTDlg::ZelSetWTDlg(QWidget* parent, bool setOnly)
    : platform::TemplateDialog(101, parent), m_setOnly(setOnly), m_parent(parent) {}

bool ZelSetWTDlg::OnInitDialog() {
    const ResourceOverride resources;
    platform::TemplateDialog::OnInitDialog();
    for (int id : kUnusedControls)
        ShowDlgItem(id, false);

    // A chooser needs no more than half the template's height and room for the buttons.
    const double scale = platform::GetMonitorDpiYScale(nullptr);
    resize(width(), height() / 2 + scaled(scale, 80));

    // The buttons stand at the bottom. A template laid out by hand is put right here; ours
    // keeps them in their row by its layout, which MoveDlgItem leaves alone.
    const int bottom = rect().bottom();
    for (int id : {1, 2, 1013}) {
        SetDlgItemCaption(id, id == 1 ? 126 : id == 2 ? 128 : 129);
        QRect place = GetDlgItemRect(id);
        place.moveTop(bottom - scaled(scale, 40));
        MoveDlgItem(id, place);
    }
    RaiseDlgItem(1);
    for (int id : {2, 1013}) {
        LowerDlgItem(id);
        ShowDlgItem(id, true);
    }

    // Asked before the grid loads: the grid's own store object answers only after its load.
    const bool makeAllValidWire = ZelWireTypeRec().IsMakeAllValidWire();
    AttachGrid(&m_grid, 1002);
    m_grid.Initialize();
    m_rowHeaderWatch.Watch();
    m_grid.InitGrid(this, m_setOnly, false);
    m_grid.SetMakeAllValidWire(makeAllValidWire);
    m_grid.SetReadOnly(true);

    setWindowTitle(platform::loadString(165));
    m_grid.Redraw();
    m_grid.setFocus(Qt::OtherFocusReason);
    return true;
}

void ZelSetWTDlg::OnOK() {
    // Enter and a double click come here too: only a usable choice closes the dialog.
    if (HasDlgItem(1) && !IsDlgItemEnabled(1))
        return;
    // The chosen row becomes the drawing's current wire type. The format edit and the
    // make-all-valid box stay untouched in this dialog, so that the stored format is kept
    // and the switch is stored as off.
    m_grid.StoreCurrentLayerRecord();
    const std::vector<quint32> rows = m_grid.GetSelectedRows();
    if (rows.empty())
        return;

    const QString layer = m_grid.GetValueRowCol(static_cast<int>(rows.front()), 5);
    ovutRelRb(m_result);
    m_result = ZelBuildWTResultList({layer, "0", "0", "1", "0"});
    ZelWireTypeRec::ResetKey();
    platform::TemplateDialog::OnOK();
}

void ZelSetWTDlg::OnCancel() {
    ZelWireTypeRec::ResetKey();
    platform::TemplateDialog::OnCancel();
}

bool ZelSetWTDlg::OnCommand(int id) {
    if (id == 1013) {
        ShowHelp();
        return true;
    }
    return platform::TemplateDialog::OnCommand(id);
}

qintptr ZelSetWTDlg::OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) {
    if (message == WM_WTG_ENABLEOK) {
        std::vector<quint32> rows;
        const bool one = wParam != 0 && m_grid.GetSelectedRows(rows, false, true) == 1;
        EnableDlgItem(1, one);
        return 0;
    }
    if (message == WM_WTG_ROWDBLCLK) {
        // A double click on a row chooses it.
        OnOK();
        return 0;
    }
    return platform::TemplateDialog::OnPrivateMessage(message, wParam, lParam);
}

bool ZelSetWTDlg::PreTranslateKey(QKeyEvent* event) {
    if (event->type() == QEvent::KeyPress && event->key() == Qt::Key_F1)
        return OnHelpHook();
    return platform::TemplateDialog::PreTranslateKey(event);
}

bool ZelSetWTDlg::OnHelpHook() {
    ShowHelp();
    return true;
}

void ZelSetWTDlg::ShowHelp() {
    ovedHelp(L"", L"set_wire_type_dialog", 0);
}
