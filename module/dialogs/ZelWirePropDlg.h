#pragma once

#include "grid/ZelPropGrid.h"

#include "platform/TemplateDialog.h"

#include <QString>

// The names of the 20 user properties of wire types, for the drafter to rename. The list
// comes in as one line and goes back as one line; what becomes of it is the caller's
// matter, and Cancel gives back the line as it came.
class ZelWirePropDlg : public platform::TemplateDialog {
public:
    ZelWirePropDlg(QWidget* pParent, QString strProps);

    bool OnInitDialog() override;
    void OnOK() override;

    QString GetProps() const { return m_strProps; }
    ZelPropGrid& grid() { return m_grid; }

private:
    ZelPropGrid m_grid;
    QString m_strProps;
};
