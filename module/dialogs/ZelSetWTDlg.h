#pragma once

#include "dialogs/ZelRowHeaderWatch.h"
#include "grid/ZelWTGrid.h"

#include "platform/TemplateDialog.h"

struct resbuf;

// Chooses the wire type for what is drawn next: a read-only list of the drawing's wire
// types, OK (or a double click on a row) makes the chosen row the current wire type and
// hands it to the LISP caller as the five strings of ZelBuildWTResultList.
class ZelSetWTDlg : public platform::TemplateDialog {
public:
    ZelSetWTDlg(QWidget* parent, bool setOnly);
    ZelSetWTDlg(const ZelSetWTDlg&) = delete;
    ZelSetWTDlg& operator=(const ZelSetWTDlg&) = delete;

    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
    bool OnCommand(int id) override;
    qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) override;
    bool PreTranslateKey(QKeyEvent* event) override;

    // The result list after OK, null otherwise. It stays the caller's to release: the
    // dialog never frees it.
    virtual resbuf* GetResult() const { return m_result; }

protected:
private:
    // The base dialog's help hook, which F1 reaches.
    bool OnHelpHook();
    void ShowHelp();

    bool m_setOnly;
    [[maybe_unused]] QWidget* m_parent;
    resbuf* m_result = nullptr;
    ZelWTGrid m_grid;
    ZelRowHeaderWatch m_rowHeaderWatch{m_grid};
};
