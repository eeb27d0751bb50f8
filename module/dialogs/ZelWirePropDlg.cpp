#include "dialogs/ZelWirePropDlg.h"

#include "shell/ResourceOverride.h"

#include "platform/Resources.h"

#include <utility>

ZelWirePropDlg::ZelWirePropDlg(QWidget* pParent, QString strProps)
    : platform::TemplateDialog(150, pParent), m_strProps(std::move(strProps)) {}

bool ZelWirePropDlg::OnInitDialog() {
    const ResourceOverride resources;
    platform::TemplateDialog::OnInitDialog();
    setWindowTitle(platform::loadString(158));
    AttachGrid(&m_grid, 1028);
    m_grid.Initialize();
    m_grid.InitGrid(this, m_strProps);
    m_grid.setFocus();
    m_grid.SetCurrentCell(1, 2);
    return true;
}

// Names empty at the start of the list leave no trace, so the names after them move up;
// an empty name after the first one keeps its place as an empty entry. A name with a
// comma goes in double quotes, as the list is read back.
void ZelWirePropDlg::OnOK() {
    m_grid.TransferCurrentCell();
    m_strProps.clear();
    for (int row = 1; row <= ZelPropGrid::kRows; ++row) {
        QString name = m_grid.GetValueRowCol(row, 2);
        if (name.contains(u','))
            name = u'"' + name + u'"';
        if (!m_strProps.isEmpty())
            m_strProps += u',' + name;
        else
            m_strProps = name;
    }
    platform::TemplateDialog::OnOK();
}
