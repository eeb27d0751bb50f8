#pragma once

#include "platform/KeyFilter.h"

#include <QDialog>
#include <QHash>
#include <QRect>

namespace platform {

class GridWindow;

// The base of every dialog of the module: a QDialog built from a dialog template of
// the current resource handle (a Qt Designer form loaded with QUiLoader), whose
// controls carry their numbers as object names.
//
// DoModal builds the dialog on its first run, calls OnInitDialog and runs it modal
// in a nested event loop until EndDialog ends the run; it returns EndDialog's code
// (1 OK, 2 Cancel, -5001 a pick on screen, any other). DoModal may run again on the
// same object: the controls, the grid and what they hold stay as they were.
//
// A button's click, a check box's and a menu command reach OnCommand with their
// number; an edit losing the focus reaches OnEditKillFocus; posted private messages
// reach OnPrivateMessage after the handler that posted them has returned. Keys pass
// PreTranslateKey before the focused control or Qt's own dialog handling sees them.
class TemplateDialog : public QDialog, public KeyFilter {
    Q_OBJECT

public:
    static constexpr int IDOK = 1;
    static constexpr int IDCANCEL = 2;

    explicit TemplateDialog(unsigned templateId, QWidget* parent = nullptr);
    ~TemplateDialog() override;

    unsigned GetTemplateId() const { return m_templateId; }

    // Builds the dialog from its template, once; false when the template is missing
    // or not a form, with GetTemplateError() naming it.
    bool Create();
    bool IsCreated() const { return m_created; }
    QString GetTemplateError() const { return m_templateError; }

    // -1 when the dialog cannot be built (the error is shown and logged).
    int DoModal();
    // Ends the modal run with `code` once the running handler returns. Called from
    // OnInitDialog, DoModal returns the code without showing the dialog.
    void EndDialog(int code);
    bool IsInModal() const { return m_inModal; }

    virtual bool OnInitDialog();
    // The bases end the run with IDOK and IDCANCEL.
    virtual void OnOK();
    virtual void OnCancel();
    // Control and menu commands by number; the base runs OnOK for 1 and OnCancel for
    // 2. True when handled.
    virtual bool OnCommand(int id);
    // An edit control (a QLineEdit of the template) lost the focus.
    virtual void OnEditKillFocus(int id);
    // A posted private message; WM_COMMAND goes on to OnCommand. The base yields 0.
    virtual qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam);
    // The base handles no key.
    bool PreTranslateKey(QKeyEvent* event) override;

    // Posts a private message to this dialog.
    void PostMessage(unsigned message, quintptr wParam = 0, qintptr lParam = 0);

    // --- Controls by number -----------------------------------------------------
    // Null when the template has no such control.
    QWidget* GetDlgItem(int id) const;
    bool HasDlgItem(int id) const { return GetDlgItem(id) != nullptr; }
    // The number of a control of this dialog, 0 for none (or a widget not one).
    int GetDlgCtrlId(const QWidget* widget) const;
    // Caption or text of a label, button, check box, edit, group or list.
    bool SetDlgItemText(int id, const QString& text);
    QString GetDlgItemText(int id) const;
    // The caption from string `stringId` of the current resource handle.
    bool SetDlgItemCaption(int id, unsigned stringId);
    bool ShowDlgItem(int id, bool show = true);
    bool IsDlgItemVisible(int id) const;
    bool EnableDlgItem(int id, bool enable = true);
    // False for a missing control, as Windows answers.
    bool IsDlgItemEnabled(int id) const;
    // 0 unchecked, 1 checked, 2 indeterminate; 0 for a missing control.
    int IsDlgButtonChecked(int id) const;
    bool CheckDlgButton(int id, int state);
    // The control's rectangle in the dialog's client coordinates.
    QRect GetDlgItemRect(int id) const;
    // Moves and sizes a control. A control that the template's layout places stays
    // where the layout puts it (the layout already keeps the buttons in their row at
    // the bottom and the grid in the room), and the call yields false.
    bool MoveDlgItem(int id, const QRect& rect);
    // Z-order among the dialog's controls.
    bool RaiseDlgItem(int id);
    bool LowerDlgItem(int id);
    bool SetFocusTo(int id);
    // The number of the control that has the focus (or holds the focused widget);
    // 0 when none of this dialog's.
    int GetFocusId() const;

    // Puts `grid` in the place of placeholder control `placeholderId` (in its layout,
    // with its number and accessible name); the placeholder goes. Running it again
    // with the grid in place changes nothing. The grid stays owned by the caller.
    bool AttachGrid(GridWindow* grid, int placeholderId);

protected:
    void accept() override;
    void reject() override;
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void wireControls();

    unsigned m_templateId;
    bool m_created = false;
    bool m_inModal = false;
    bool m_ended = false;
    int m_code = 0;
    QString m_templateError;
    QHash<int, QWidget*> m_controls;
};

} // namespace platform
