#pragma once

#include "grid/ZelWTGrid.h"

#include "platform/TemplateDialog.h"

// A dialog of template 101 that owns a wire type grid the way the edit dialog does: the
// grid in place of 1002, the format in 1019, OK running the commit, Remove (1026) keeping
// the layers, Ctrl+V pasting, 40043 opening a name, 40039 opening the current cell in a
// drawing of the project. Tests work it with input events only.
class GridTestOwner : public platform::TemplateDialog {
public:
    explicit GridTestOwner(bool editMode = true);

    ZelWTGrid& grid() { return m_grid; }
    // Builds the dialog and the grid and shows it, without a modal loop.
    bool openGrid();
    // The result of the last commit; -1 before any.
    int lastCommit() const { return m_lastCommit; }
    bool closed() const { return m_closed; }

    void OnOK() override;
    bool OnCommand(int id) override;
    qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) override;
    bool PreTranslateKey(QKeyEvent* event) override;

private:
    ZelWTGrid m_grid;
    bool m_editMode;
    int m_lastCommit = -1;
    bool m_closed = false;
};
