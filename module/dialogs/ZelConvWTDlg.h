#pragma once

#include "dialogs/ZelRowHeaderWatch.h"
#include "grid/ZelWTGrid.h"

#include "ovdb/resbuf.h"
#include "platform/TemplateDialog.h"

// Chooses the wire type to change existing wires to, with two options for the LISP caller
// and a pick on screen. The pick closes the dialog with kPickCode; the caller runs DoModal
// again on the same object, which comes back with the picked wire's row chosen. Nothing
// here writes to the drawing.
class ZelConvWTDlg : public platform::TemplateDialog {
public:
    // DoModal's answer when the drafter asked to pick on screen.
    static constexpr int kPickCode = -5001;

    // `entity` both words 0: no wire given.
    ZelConvWTDlg(const ov_name& entity, QWidget* parent, bool setOnly);
    ZelConvWTDlg(const ZelConvWTDlg&) = delete;
    ZelConvWTDlg& operator=(const ZelConvWTDlg&) = delete;

    bool PreTranslateKey(QKeyEvent* event) override;
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    bool OnCommand(int id) override;
    qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) override;

    // The result list after OK, null otherwise. It stays the caller's to release: the
    // dialog never frees it.
    virtual resbuf* GetResult() const { return m_result; }

protected:
private:
    void OnPick();
    void SelectEntityRow();
    int FindWireTypeRow(const QString& layer);
    void ShowHelp();

    bool m_setOnly;
    // Set by the first pick and kept: later openings keep the grid as the pick left it.
    bool m_picked = false;
    [[maybe_unused]] QWidget* m_parent;
    resbuf* m_result = nullptr;
    ZelWTGrid m_grid;
    ZelRowHeaderWatch m_rowHeaderWatch{m_grid};
    ov_name m_entity = {0, 0};
    // The template's height, taken at the first opening: the dialog object and its window
    // outlive a pick, and each opening sizes from the template, not from the last size.
    int m_templateHeight = 0;
};
