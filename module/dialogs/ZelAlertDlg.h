#pragma once

#include "platform/TemplateDialog.h"

// The small modal warning of the layer name format edit: the format is not valid, and
// what a valid one holds. It ends by its one button.
class ZelAlertDlg : public platform::TemplateDialog {
public:
    explicit ZelAlertDlg(QWidget* parent = nullptr);

    bool OnInitDialog() override;

private:
    [[maybe_unused]] QWidget* m_pParent;
};
