#pragma once

#include "dialogs/ZelEditWTDlg.h"
#include "dialogs/ZelWireTypeSelDlg.h"
#include "support/ZelTestHost.h"

#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>

class OvDbDatabase;

class QTimer;
class QWidget;

// A running host with a saved drawing, and the create and edit dialog run modally over
// it: the test's script runs inside the dialog's own loop once the dialog is shown, and
// works it with mouse and key events as a drafter would.
class DialogTest : public ZelTestHost {
protected:
    void SetUp() override;
    void TearDown() override;

    // A saved drawing with the layer PLAIN and these wire types, added in order.
    OvDbDatabase* wireTypeDrawing(const QStringList& names, const QStringList& plainLayers = {});

    // Runs the dialog; `script` runs once it waits for input. A script that leaves it open
    // fails the test, and the dialog is cancelled. Returns what DoModal returned.
    int runEditDialog(const std::function<void()>& script);
    // The set and edit twin, over `entity` (none when null).
    int runSelDialog(const std::function<void()>& script, bool setOnly = false);
    ZelEditWTDlg& dialog() { return *m_dialog; }
    ZelWireTypeSelDlg& selDialog() { return *m_selDialog; }
    void releaseSelDialog();
    ZelWTGrid& grid() const { return *m_grid; }

    // Runs `action` on the next modal window other than the dialog, once it is shown and
    // waits for input (an alert, a host dialog). False afterwards when none came up.
    void whenModal(std::function<void(QWidget*)> action);
    bool modalSeen() const { return m_modalSeen; }

    // Lets posted messages and pending repaints run.
    static void settle();
    void clickCell(int row, int col, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void clickRowHeader(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    // Keys and text go to the widget with the focus, as a keyboard's do.
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void typeText(const QString& text);
    // Clicks a cell, types the text and leaves the cell with Tab.
    void typeInto(int row, int col, const QString& text);
    void clickButton(int id);
    void clickControl(int id);
    // Right-clicks a cell; `command` is chosen when offered, else the menu closes. The
    // commands the menu offered, enabled ones only.
    QStringList contextMenu(int row, int col, int command = 0);

    QString cell(int row, int col) const;
    std::pair<int, int> currentCell() const;
    QStringList gridNames() const;

    // Saves the working drawing and reads the file back into `saved`.
    void saveAndReadBack(OvDbDatabase& saved);
    // Makes the add-on's LISP functions callable in the current document.
    void loadAddonLisp(const QString& file);
    // The add-on's reader of another drawing's wire types, with the module function it uses.
    void defineImportFunctions();

private:
    int runModal(platform::TemplateDialog& dialog, const std::function<void()>& script);

    std::unique_ptr<ZelEditWTDlg> m_dialog;
    std::unique_ptr<ZelWireTypeSelDlg> m_selDialog;
    platform::TemplateDialog* m_active = nullptr;
    ZelWTGrid* m_grid = nullptr;
    bool m_modalSeen = false;
    std::unique_ptr<QTimer> m_poll;
};
