#pragma once

#include <QColor>
#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>
#include <vector>

class QMenu;
class QWidget;

namespace platform {
class GridWindow;
}

// What the automation functions do on the dialog in front, in C++ terms. Every action is
// a sequence of input events (as QTest sends them) followed by the events they posted; a
// fault of the script (no such control, a closed dialog, a value the control cannot take)
// throws AutomationError, which the LISP layer turns into a LISP error.
namespace ovauto {

struct AutomationError : std::runtime_error {
    explicit AutomationError(const QString& message)
        : std::runtime_error(message.toStdString()), text(message) {}
    QString text;
};

// The dialog whose procedure runs now; throws when there is none or it has closed.
QWidget* frontDialog();
// A control of the dialog by object name ("1002", or a name of Qt's own dialogs).
QWidget* control(QWidget* dialog, const QString& id);
platform::GridWindow* grid(QWidget* dialog, const QString& id);
// The popup menu in front.
QMenu* frontMenu();

// Runs what the events posted, as the event loop would before the next input.
void settle();

void click(QWidget* widget);
void setText(QWidget* widget, const QString& text);
bool check(QWidget* widget, bool on);
// A key combination in QKeySequence's text ("Ctrl+V", "Delete", "F2", "Shift+Tab").
void key(QWidget* target, const QString& combination);
void typeText(QWidget* target, const QString& text);
// An item of a combo box, list or tree, by its text.
void choose(QWidget* widget, const QString& itemText);
// A button of a message box or task dialog, by text ("Yes", "&Yes") or number (the
// message box answer, 6 for Yes; a control number elsewhere).
void answer(QWidget* dialog, const QString& text, std::optional<int> number);

QString textOf(const QWidget* widget);
bool isChecked(const QWidget* widget);

// Grid input, in grid numbers (row 0 the column headers, column 0 the row headers).
Qt::KeyboardModifiers modifiers(const QString& names);
void gridClick(platform::GridWindow* grid, int row, int col, Qt::KeyboardModifiers mods,
               Qt::MouseButton button);
void gridDoubleClick(platform::GridWindow* grid, int row, int col);
void gridType(platform::GridWindow* grid, int row, int col, const QString& text);
void gridKey(platform::GridWindow* grid, const QString& combination);
void gridDragRow(platform::GridWindow* grid, int from, int to);

struct CellLook {
    QString control; // "edit", "static", "drop-down"
    bool readOnly = false;
    std::optional<QColor> interior;
    std::optional<QColor> textColor;
};
CellLook cellLook(const platform::GridWindow* grid, int row, int col);
std::vector<int> selectedRows(const platform::GridWindow* grid);
std::vector<int> selectedCols(const platform::GridWindow* grid);

struct MenuItem {
    QString id;
    QString text;
    bool enabled = false;
};
std::vector<MenuItem> menuItems(const QMenu* menu);
void chooseMenuItem(QMenu* menu, const QString& id);

} // namespace ovauto
