#pragma once

#include "grid/ZelWTGrid.h"

#include "ovdb/resbuf.h"
#include "platform/TemplateDialog.h"

#include <QString>

#include <vector>

class QLineEdit;

// The twin of the create and edit dialog for a caller that wants to edit the wire types and
// choose one in the same window: OK hands back the chosen row for what is drawn next, 1014
// hands it back as a change of existing wires, with the two boxes and the pick of the
// change dialog. Both commit the grid first. Copies go to the file "wts.grd" rather than
// the clipboard, so that rows survive between runs of the host.
//
// The caller runs DoModal while it returns -5001 (a pick on screen) and then reads
// GetResult(), five strings that the caller releases.
class ZelWireTypeSelDlg : public platform::TemplateDialog {
public:
    ZelWireTypeSelDlg(const ov_name& entity, QWidget* parent, bool setOnly);
    ~ZelWireTypeSelDlg() override;
    ZelWireTypeSelDlg(const ZelWireTypeSelDlg&) = delete;
    ZelWireTypeSelDlg& operator=(const ZelWireTypeSelDlg&) = delete;

    resbuf* GetResult() const { return m_result; }
    bool GetSetOnly() const { return m_setOnly; }
    ZelWTGrid& Grid() { return m_grid; }

    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    bool OnCommand(int id) override;
    void OnEditKillFocus(int id) override;
    qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) override;
    bool PreTranslateKey(QKeyEvent* event) override;

private:
    void OnPick();
    void OnChangeWires();
    void OnMakeAllValid();
    void OnRemove();
    void OnDelete();
    void OnCopy();
    void OnCut();
    void OnPaste();
    void OnFormatKillFocus();
    void AlertAndRestore(bool focusForm);
    qintptr OnContextMenu(qintptr lParam);
    qintptr OnEnableOK(quintptr wParam);
    // The rows and columns of a copy or cut, and their rectangle; false when there are none.
    bool CopyTarget(std::vector<quint32>& rows, std::vector<quint32>& cols);
    int FindWireRow(const QString& layer);
    // Stores the settings and commits the grid; false when the commit stopped at a row.
    bool Commit();
    void SetResult(const QString& layer, bool makeCurrent, bool changeWires);
    void GotoCell(int row, int col);

    QString m_layerFormat;
    QWidget* m_parent;
    bool m_setOnly;
    ZelWTGrid m_grid;
    resbuf* m_result = nullptr;
    bool m_picked = false;
    ov_name m_entity = {0, 0};
};
