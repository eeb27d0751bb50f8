#include "dialogs/ZelAlertDlg.h"

#include "platform/Resources.h"
#include "shell/ResourceOverride.h"

ZelAlertDlg::ZelAlertDlg(QWidget* parent)
    : platform::TemplateDialog(107, parent), m_pParent(parent) {}

bool ZelAlertDlg::OnInitDialog() {
    // The texts live in the module's resource library, whoever opened the alert.
    ResourceOverride resources;
    platform::TemplateDialog::OnInitDialog();
    SetDlgItemCaption(1021, 137);
    SetDlgItemCaption(1022, 138);
    SetDlgItemCaption(2, 128);
    setWindowTitle(platform::loadString(139));
    return true;
}
