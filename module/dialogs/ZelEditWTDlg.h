#pragma once

#include "grid/ZelWTGrid.h"

#include "platform/TemplateDialog.h"

#include <QString>

#include <vector>

struct resbuf;
class QLineEdit;

// The drafter's main window onto the wire types of the current drawing: a thin shell over
// a wire type grid. The grid holds the rows and the commit; the dialog owns the buttons
// beside it, the popup menu, the layer name format, the make-all-valid box and the ways
// out. Nothing reaches the drawing before OK, except the linetype of an imported row,
// which the merge copies into the drawing at once.
class ZelEditWTDlg : public platform::TemplateDialog {
public:
    ZelEditWTDlg(QWidget* parent, bool setOnly);
    ~ZelEditWTDlg() override;
    ZelEditWTDlg(const ZelEditWTDlg&) = delete;
    ZelEditWTDlg& operator=(const ZelEditWTDlg&) = delete;

    // Always null: the command that opens this dialog reads nothing back.
    virtual resbuf* GetResult() { return m_result; }

    ZelWTGrid& Grid() { return m_grid; }
    QString LayerFormat() const { return m_layerFormat; }

    // The folders the import remembers for the life of the process: none, or [0] the
    // project file as last seen and [1] the folder to open next.
    static std::vector<QString>& ImportFolders();

    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    bool OnCommand(int id) override;
    void OnEditKillFocus(int id) override;
    qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) override;
    bool PreTranslateKey(QKeyEvent* event) override;

private:
    void LockDialog(bool lock);
    void OnMakeAllValid();
    void OnColor();
    void OnLinetype();
    void OnLineweight();
    void AfterLookDialog(const std::vector<quint32>& rows);
    void OnAddLayers();
    void OnRemove();
    void OnDelete();
    void OnMakeDefault();
    void OnEditNameCell();
    void OnCopy();
    void OnCut();
    void OnPaste();
    void OnImport();
    QString ImportStartFolder();
    void OnFormatKillFocus();
    void AlertAndRestore(bool focusForm);
    qintptr OnContextMenu(qintptr lParam);
    qintptr OnEnableOK(quintptr wParam);
    // The rows and columns that a copy or a cut takes; false when there is nothing to take.
    bool CopyTarget(std::vector<quint32>& rows, std::vector<quint32>& cols);
    void GotoCell(int row, int col);
    QLineEdit* FormatEdit() const;

    bool m_setOnly;
    QString m_layerFormat;
    QWidget* m_parent;
    resbuf* m_result = nullptr;
    ZelWTGrid m_grid;
};
