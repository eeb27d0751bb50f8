#pragma once

#include "support/ZelTestHost.h"

#include "dialogs/ZelEditWTDlg.h"
#include "dialogs/ZelWireTypeSelDlg.h"
#include "grid/ZelWTGrid.h"
#include "ovdb/OvDbDatabase.h"
#include "platform/TemplateDialog.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>

class QWidget;
namespace platform {
class GridWindow;
} // namespace platform

// How ZelUiTest::wireTypeDrawing builds its drawing.
struct WireTypeDrawing {
    std::vector<QString> values = {}; // user property values of every wire type
    std::vector<int> gridRows = {};   // stored rows, in the order of the names (0 when fewer)
    bool lookFromNames = false;       // "RED_1.5" is colour RED and size 1.5
    QString current = {};             // when set: the current wire type, lines on every layer
    bool makeAllValid = false;        // with `current`
    bool saved = false;               // saved, the key counter as a new command finds it
};

// A running host whose windows are worked as a drafter works them: clicks and keys on what
// is shown, never a handler called in a person's place. A dialog is run modally with a
// script that acts once it waits for input, or opened by a LISP call and driven step by
// step. The helpers without a dialog or grid act on the dialog being worked and its wire
// type grid.
class ZelUiTest : public ZelTestHost {
protected:
    using Step = std::function<void(platform::TemplateDialog&)>;

    void SetUp() override;
    void TearDown() override;

    // A drawing with the layer PLAIN and these wire types, added by the store in order.
    OvDbDatabase* wireTypeDrawing(const QStringList& names, const WireTypeDrawing& how = {});
    // Saves the working drawing and reads the file back into a database of its own, which
    // lives as long as the test.
    OvDbDatabase* savedDrawing();
    // The module's LISP functions of the dialogs, with the add-on's readers when asked.
    void defineFunctions(bool withAddonLisp = false);
    void loadAddonLisp(const QString& file);
    // The demo's drawing to import from, copied into the test's folder.
    QString importDrawing();

    // Runs the dialog under the module's resources; `script` runs once it waits for input.
    // A script that leaves it open fails the test and the dialog is cancelled.
    int runModal(platform::TemplateDialog& dialog, const std::function<void()>& script);
    int runEditDialog(const std::function<void()>& script);
    int runSelDialog(const std::function<void()>& script, bool setOnly = false);
    ZelEditWTDlg& dialog() { return *m_dialog; }
    ZelWireTypeSelDlg& selDialog() { return *m_selDialog; }
    // The answer belongs to whoever ran the dialog, as it does to a LISP caller.
    void releaseSelDialog();

    // Evaluates `expression` while the steps work the dialogs it opens, one step each time a
    // modal dialog of the module is up and waiting. A dialog still up when the steps have
    // run out fails the test and is cancelled, so that nothing hangs.
    QString runWith(const QString& expression, std::deque<Step> steps = {});
    // Runs `action` on the next modal window other than the dialog being worked, once it is
    // shown (an alert, a host dialog). modalSeen() tells whether one came up.
    void whenModal(std::function<void(QWidget*)> action);
    bool modalSeen() const { return m_modalSeen; }

    ZelWTGrid& grid() const { return *m_grid; }
    void clickCell(int row, int col, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        clickCell(grid(), row, col, modifiers);
    }
    void doubleClickCell(int row, int col);
    void clickRowHeader(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void doubleClickColumnHeader(int col) { doubleClickColumnHeader(grid(), col); }
    // Clicks a cell, types the text and leaves the cell with Tab.
    void typeInto(int row, int col, const QString& text);
    void clickButton(int id) { clickButton(*m_active, id); }
    // A click near the left edge of a control, where a check box has its box.
    void clickControl(int id);
    // Right-clicks a cell; `command` is chosen when offered, else the menu closes. The
    // commands the menu offered, enabled ones only; "no menu" when none came up.
    QStringList contextMenu(int row, int col, int command = 0);
    QString cell(int row, int col) const { return cell(grid(), row, col); }
    std::pair<int, int> currentCell() const;
    // Layer names of the rows 1 to the wire type rows; the row of a layer (0 when none).
    QStringList gridNames() const;
    int rowOf(const QString& layer) const;
    const WireLayerRec* rowRecord(int row) const;
    // Queues a pick of an entity, as the editor's pick queue takes it.
    void queuePickOf(OvDbObjectId id);

public:
    // Lets posted messages and pending repaints run.
    static void settle();
    static void clickCell(platform::GridWindow& grid, int row, int col,
                          Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void doubleClickColumnHeader(platform::GridWindow& grid, int col);
    static void clickButton(platform::TemplateDialog& dialog, int id);
    // Keys and text go to the widget with the focus, as a keyboard's do.
    static void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static void typeText(const QString& text);
    static QString cell(const platform::GridWindow& grid, int row, int col);
    static QStringList selectedLayers(const platform::GridWindow& grid);

protected:
    OvDbObjectId m_plainLine;
    QMap<QString, OvDbObjectId> m_lines;
    // The dialog each step of runWith worked, in order: the same object when one reopens.
    QList<const QObject*> m_openings;
    platform::TemplateDialog* m_active = nullptr;
    ZelWTGrid* m_grid = nullptr;

private:
    std::unique_ptr<ZelEditWTDlg> m_dialog;
    std::unique_ptr<ZelWireTypeSelDlg> m_selDialog;
    bool m_modalSeen = false;
    std::unique_ptr<QTimer> m_poll;
    std::vector<std::unique_ptr<OvDbDatabase>> m_saved;
};
