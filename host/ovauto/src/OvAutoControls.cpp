#include "OvAutoControls.h"

#include "ovauto/OvDialogAutomation.h"

#include "platform/CellStyle.h"
#include "platform/GridWindow.h"
#include "platform/MessageBox.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTest>
#include <QTextEdit>

#include <algorithm>

namespace ovauto {

namespace {

[[noreturn]] void refuse(const QString& message) {
    throw AutomationError(message);
}

QString withoutMnemonic(QString text) {
    // "&&" stands for one ampersand; a lone one marks the mnemonic.
    text.replace(QStringLiteral("&&"), QStringLiteral("\x01"));
    text.remove(u'&');
    text.replace(u'\x01', u'&');
    return text;
}

// Where a person clicks a control: a box or a radio button on its indicator, since the
// rest of a wide one is not part of the button; anything else in its middle.
QPoint clickPoint(const QWidget* widget) {
    if (qobject_cast<const QCheckBox*>(widget) || qobject_cast<const QRadioButton*>(widget)) {
        QStyleOptionButton option;
        option.initFrom(widget);
        const QStyle::SubElement element = qobject_cast<const QCheckBox*>(widget)
                                               ? QStyle::SE_CheckBoxIndicator
                                               : QStyle::SE_RadioButtonIndicator;
        const QRect indicator = widget->style()->subElementRect(element, &option, widget);
        if (indicator.isValid())
            return indicator.center();
    }
    return widget->rect().center();
}

void mustBeUsable(const QWidget* widget, const QString& what) {
    if (!widget->isVisible())
        refuse(QStringLiteral("%1 is not visible").arg(what));
    if (!widget->isEnabled())
        refuse(QStringLiteral("%1 is disabled").arg(what));
}

QString describe(const QWidget* widget) {
    return QStringLiteral("control \"%1\"").arg(widget->objectName());
}

// Keys go to the focus, as a person's do; to `fallback` when the focus is elsewhere.
QWidget* keyTarget(QWidget* fallback) {
    QWidget* focus = QApplication::focusWidget();
    if (focus && (focus == fallback || fallback->isAncestorOf(focus)))
        return focus;
    return fallback;
}

void sendCharacter(QWidget* target, QChar ch) {
    // Key codes of Qt are the upper-case character for letters and the character itself
    // for the other printable ASCII; other characters travel by their text alone.
    const int code = ch.unicode() < 0x80 ? ch.toUpper().unicode() : int(Qt::Key_unknown);
    QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier, QString(ch));
    QKeyEvent release(QEvent::KeyRelease, code, Qt::NoModifier, QString(ch));
    QApplication::sendEvent(target, &press);
    QApplication::sendEvent(target, &release);
}

QModelIndex findItem(const QAbstractItemModel* model, const QString& text, int column) {
    const QModelIndexList found =
        model->match(model->index(0, column), Qt::DisplayRole, text, 1,
                     Qt::MatchFixedString | Qt::MatchCaseSensitive | Qt::MatchRecursive);
    return found.isEmpty() ? QModelIndex() : found.constFirst();
}

QModelIndex cellIndex(const platform::GridWindow* grid, int row, int col) {
    if (row < 1 || col < 1 || row > grid->GetRowCount() || col > grid->GetColCount())
        refuse(QStringLiteral("the grid has no cell %1, %2 (%3 rows, %4 columns)")
                   .arg(row)
                   .arg(col)
                   .arg(grid->GetRowCount())
                   .arg(grid->GetColCount()));
    return grid->model()->index(row - 1, col - 1);
}

QPoint sectionCentre(const QHeaderView* header, int section) {
    const int along = header->sectionViewportPosition(section) + header->sectionSize(section) / 2;
    const int across =
        (header->orientation() == Qt::Horizontal ? header->height() : header->width()) / 2;
    return header->orientation() == Qt::Horizontal ? QPoint(along, across) : QPoint(across, along);
}

// The widget and the point where a person clicks grid cell (row, col).
std::pair<QWidget*, QPoint> gridTarget(platform::GridWindow* grid, int row, int col) {
    if (row == 0 && col == 0) {
        const QPoint corner(grid->frameWidth() + grid->verticalHeader()->width() / 2,
                            grid->frameWidth() + grid->horizontalHeader()->height() / 2);
        return {grid, corner};
    }
    if (row == 0 || col == 0) {
        QHeaderView* header = row == 0 ? grid->horizontalHeader() : grid->verticalHeader();
        const int number = row == 0 ? col : row;
        const int count = row == 0 ? grid->GetColCount() : grid->GetRowCount();
        if (number < 1 || number > count)
            refuse(QStringLiteral("the grid has no %1 header %2")
                       .arg(row == 0 ? QStringLiteral("column") : QStringLiteral("row"))
                       .arg(number));
        if (!header->isVisible())
            refuse(QStringLiteral("the grid's %1 headers are hidden")
                       .arg(row == 0 ? QStringLiteral("column") : QStringLiteral("row")));
        if (header->isSectionHidden(number - 1))
            refuse(QStringLiteral("%1 %2 of the grid is hidden")
                       .arg(row == 0 ? QStringLiteral("column") : QStringLiteral("row"))
                       .arg(number));
        // Scrolled into view as a person would before clicking it.
        grid->scrollTo(row == 0
                           ? grid->model()->index(std::max(grid->GetTopRow(), 1) - 1, number - 1)
                           : grid->model()->index(number - 1, 0));
        return {header->viewport(), sectionCentre(header, number - 1)};
    }
    const QModelIndex index = cellIndex(grid, row, col);
    if (grid->isRowHidden(row - 1) || grid->isColumnHidden(col - 1))
        refuse(QStringLiteral("cell %1, %2 of the grid is hidden").arg(row).arg(col));
    grid->scrollTo(index);
    return {grid->viewport(), grid->visualRect(index).center()};
}

} // namespace

QWidget* frontDialog() {
    QWidget* dialog = OvDialogAutomation::instance().currentDialog();
    if (!dialog)
        refuse(QStringLiteral("no dialog is being driven here; call this inside a procedure "
                              "queued with orvex-dialog-queue"));
    if (!dialog->isVisible())
        refuse(QStringLiteral("dialog \"%1\" is closed").arg(OvDialogAutomation::titleOf(dialog)));
    return dialog;
}

QWidget* control(QWidget* dialog, const QString& id) {
    const QList<QWidget*> found = dialog->findChildren<QWidget*>(id);
    if (found.isEmpty())
        refuse(QStringLiteral("dialog \"%1\" has no control %2")
                   .arg(OvDialogAutomation::titleOf(dialog), id));
    // A name may repeat inside Qt's own composite widgets; the one on show is meant.
    for (QWidget* widget : found) {
        if (widget->isVisibleTo(dialog))
            return widget;
    }
    return found.constFirst();
}

platform::GridWindow* grid(QWidget* dialog, const QString& id) {
    auto* found = qobject_cast<platform::GridWindow*>(control(dialog, id));
    if (!found)
        refuse(QStringLiteral("control %1 of dialog \"%2\" is not a grid")
                   .arg(id, OvDialogAutomation::titleOf(dialog)));
    return found;
}

QMenu* frontMenu() {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (!menu || !menu->isVisible())
        refuse(QStringLiteral("no popup menu is open"));
    return menu;
}

void settle() {
    QCoreApplication::processEvents();
}

void click(QWidget* widget) {
    mustBeUsable(widget, describe(widget));
    QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, clickPoint(widget));
    settle();
}

void setText(QWidget* widget, const QString& text) {
    mustBeUsable(widget, describe(widget));
    const bool editable =
        qobject_cast<QLineEdit*>(widget) || qobject_cast<QTextEdit*>(widget) ||
        qobject_cast<QPlainTextEdit*>(widget) || qobject_cast<QAbstractSpinBox*>(widget) ||
        (qobject_cast<QComboBox*>(widget) && qobject_cast<QComboBox*>(widget)->isEditable());
    if (!editable)
        refuse(QStringLiteral("%1 takes no typed text").arg(describe(widget)));
    if (widget->focusPolicy() == Qt::NoFocus)
        refuse(QStringLiteral("%1 takes no focus").arg(describe(widget)));
    // Focus by a click, as a person does; a combo box's click would open its list, so its
    // edit field is clicked instead.
    QWidget* clicked = widget;
    if (auto* combo = qobject_cast<QComboBox*>(widget))
        clicked = combo->lineEdit();
    else if (auto* spin = widget->findChild<QLineEdit*>())
        clicked = spin;
    QTest::mouseClick(clicked, Qt::LeftButton, Qt::NoModifier, clicked->rect().center());
    QWidget* target = keyTarget(widget);
    QTest::keyClick(target, Qt::Key_A, Qt::ControlModifier);
    for (const QChar ch : text)
        sendCharacter(keyTarget(widget), ch);
    // A plain text field takes Tab as text; Ctrl+Tab leaves it.
    const bool takesTab = qobject_cast<QTextEdit*>(widget) || qobject_cast<QPlainTextEdit*>(widget);
    QTest::keyClick(keyTarget(widget), Qt::Key_Tab,
                    takesTab ? Qt::ControlModifier : Qt::NoModifier);
    settle();
}

bool check(QWidget* widget, bool on) {
    auto* button = qobject_cast<QAbstractButton*>(widget);
    if (!button || !button->isCheckable())
        refuse(QStringLiteral("%1 cannot be ticked").arg(describe(widget)));
    if (button->isChecked() != on)
        click(button);
    return button->isChecked();
}

void key(QWidget* target, const QString& combination) {
    static const std::pair<const char*, const char*> aliases[] = {
        {"escape", "Esc"}, {"return", "Return"}, {"enter", "Enter"}, {"delete", "Del"}};
    QString text = combination.trimmed();
    for (const auto& [name, portable] : aliases) {
        if (text.compare(QLatin1String(name), Qt::CaseInsensitive) == 0)
            text = QLatin1String(portable);
    }
    const QKeySequence sequence = QKeySequence::fromString(text, QKeySequence::PortableText);
    if (sequence.count() != 1 || sequence[0].key() == Qt::Key_unknown)
        refuse(QStringLiteral("\"%1\" is not a key combination (such as \"Ctrl+V\" or "
                              "\"Delete\")")
                   .arg(combination));
    const QKeyCombination pressed = sequence[0];
    QTest::keyClick(target, pressed.key(), pressed.keyboardModifiers());
    settle();
}

void typeText(QWidget* target, const QString& text) {
    for (const QChar ch : text)
        sendCharacter(keyTarget(target), ch);
    settle();
}

void choose(QWidget* widget, const QString& itemText) {
    mustBeUsable(widget, describe(widget));
    if (auto* combo = qobject_cast<QComboBox*>(widget)) {
        const int wanted = combo->findText(itemText, Qt::MatchFixedString | Qt::MatchCaseSensitive);
        if (wanted < 0)
            refuse(QStringLiteral("%1 offers no item \"%2\"").arg(describe(widget), itemText));
        // Opened by a click, walked with the arrow keys, taken with Return.
        QTest::mouseClick(combo, Qt::LeftButton, Qt::NoModifier, combo->rect().center());
        QAbstractItemView* list = combo->view();
        if (!list->isVisible())
            refuse(QStringLiteral("the list of %1 did not open").arg(describe(widget)));
        const int from = list->currentIndex().isValid() ? list->currentIndex().row() : -1;
        if (from < 0)
            QTest::keyClick(list, Qt::Key_Home);
        const int start = std::max(from, 0);
        for (int i = start; i < wanted; ++i)
            QTest::keyClick(list, Qt::Key_Down);
        for (int i = start; i > wanted; --i)
            QTest::keyClick(list, Qt::Key_Up);
        QTest::keyClick(list, Qt::Key_Return);
        settle();
        if (combo->currentIndex() != wanted)
            refuse(QStringLiteral("%1 did not take \"%2\"").arg(describe(widget), itemText));
        return;
    }
    auto* view = qobject_cast<QAbstractItemView*>(widget);
    if (!view || !view->model())
        refuse(QStringLiteral("%1 is not a list, a tree or a combo box").arg(describe(widget)));
    // A list view shows one column of its model; other views start from the first.
    auto* list = qobject_cast<QListView*>(view);
    const QModelIndex index = findItem(view->model(), itemText, list ? list->modelColumn() : 0);
    if (!index.isValid())
        refuse(QStringLiteral("%1 shows no item \"%2\"").arg(describe(widget), itemText));
    view->scrollTo(index);
    const QRect rect = view->visualRect(index);
    if (!rect.isValid() || !view->viewport()->rect().intersects(rect))
        refuse(QStringLiteral("item \"%1\" of %2 is not on show").arg(itemText, describe(widget)));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, rect.center());
    settle();
}

void answer(QWidget* dialog, const QString& text, std::optional<int> number) {
    QAbstractButton* chosen = nullptr;
    if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
        const QString name = number ? platform::messageBoxAnswerName(*number) : text;
        for (QAbstractButton* button : box->buttons()) {
            if (withoutMnemonic(button->text()).compare(name, Qt::CaseInsensitive) == 0)
                chosen = button;
        }
    } else if (number) {
        chosen = qobject_cast<QAbstractButton*>(control(dialog, QString::number(*number)));
    } else {
        for (QAbstractButton* button : dialog->findChildren<QAbstractButton*>()) {
            if (button->isVisibleTo(dialog) &&
                withoutMnemonic(button->text()).compare(text, Qt::CaseInsensitive) == 0)
                chosen = button;
        }
    }
    if (!chosen)
        refuse(QStringLiteral("dialog \"%1\" has no button \"%2\"")
                   .arg(OvDialogAutomation::titleOf(dialog),
                        number ? QString::number(*number) : text));
    click(chosen);
}

QString textOf(const QWidget* widget) {
    if (auto* edit = qobject_cast<const QLineEdit*>(widget))
        return edit->text();
    if (auto* label = qobject_cast<const QLabel*>(widget))
        return label->text();
    if (auto* button = qobject_cast<const QAbstractButton*>(widget))
        return withoutMnemonic(button->text());
    if (auto* combo = qobject_cast<const QComboBox*>(widget))
        return combo->currentText();
    if (auto* text = qobject_cast<const QTextEdit*>(widget))
        return text->toPlainText();
    if (auto* plain = qobject_cast<const QPlainTextEdit*>(widget))
        return plain->toPlainText();
    if (auto* spin = qobject_cast<const QAbstractSpinBox*>(widget))
        return spin->text();
    if (auto* view = qobject_cast<const QAbstractItemView*>(widget))
        return view->currentIndex().data(Qt::DisplayRole).toString();
    return widget->windowTitle();
}

bool isChecked(const QWidget* widget) {
    auto* button = qobject_cast<const QAbstractButton*>(widget);
    return button && button->isChecked();
}

Qt::KeyboardModifiers modifiers(const QString& names) {
    Qt::KeyboardModifiers mods;
    for (const QString& raw :
         names.split(QRegularExpression(QStringLiteral("[+ ,]")), Qt::SkipEmptyParts)) {
        const QString name = raw.toLower();
        if (name == u"shift")
            mods |= Qt::ShiftModifier;
        else if (name == u"ctrl" || name == u"control")
            mods |= Qt::ControlModifier;
        else if (name == u"alt")
            mods |= Qt::AltModifier;
        else
            refuse(QStringLiteral("\"%1\" is not a modifier (shift, ctrl, alt)").arg(raw));
    }
    return mods;
}

void gridClick(platform::GridWindow* grid, int row, int col, Qt::KeyboardModifiers mods,
               Qt::MouseButton button) {
    mustBeUsable(grid, describe(grid));
    const auto [widget, point] = gridTarget(grid, row, col);
    QTest::mouseClick(widget, button, mods, point);
    settle();
}

void gridDoubleClick(platform::GridWindow* grid, int row, int col) {
    mustBeUsable(grid, describe(grid));
    const auto [widget, point] = gridTarget(grid, row, col);
    QTest::mouseDClick(widget, Qt::LeftButton, Qt::NoModifier, point);
    settle();
}

void gridType(platform::GridWindow* grid, int row, int col, const QString& text) {
    gridClick(grid, row, col, Qt::NoModifier, Qt::LeftButton);
    typeText(grid, text);
}

void gridKey(platform::GridWindow* grid, const QString& combination) {
    mustBeUsable(grid, describe(grid));
    key(keyTarget(grid), combination);
}

void gridDragRow(platform::GridWindow* grid, int from, int to) {
    mustBeUsable(grid, describe(grid));
    const auto [header, start] = gridTarget(grid, from, 0);
    const QPoint end = gridTarget(grid, to, 0).second;
    QTest::mousePress(header, Qt::LeftButton, Qt::NoModifier, start);
    // In steps, as a hand moves, so that each row on the way sees the mouse pass.
    const int steps = std::max(1, std::abs(to - from)) * 2;
    for (int i = 1; i <= steps; ++i)
        QTest::mouseMove(header, start + (end - start) * i / steps);
    QTest::mouseRelease(header, Qt::LeftButton, Qt::NoModifier, end);
    settle();
}

CellLook cellLook(const platform::GridWindow* grid, int row, int col) {
    if (row < 0 || col < 0 || row > grid->GetRowCount() || col > grid->GetColCount())
        refuse(QStringLiteral("the grid has no cell %1, %2").arg(row).arg(col));
    const platform::CellStyle style = grid->GetCellStyle(row, col);
    CellLook look;
    switch (style.control.value_or(platform::CellStyle::Control::Edit)) {
    case platform::CellStyle::Control::Edit:
        look.control = QStringLiteral("edit");
        break;
    case platform::CellStyle::Control::Static:
        look.control = QStringLiteral("static");
        break;
    case platform::CellStyle::Control::DropDownList:
        look.control = QStringLiteral("drop-down");
        break;
    }
    look.readOnly = grid->IsCellReadOnly(row, col);
    look.interior = style.interior;
    look.textColor = style.textColor;
    return look;
}

// Whole rows and columns, whatever pieces the selection is kept in.
std::vector<int> selectedRows(const platform::GridWindow* grid) {
    std::vector<int> rows;
    for (int r = 1; r <= grid->GetRowCount(); ++r) {
        if (grid->selectionModel()->isRowSelected(r - 1))
            rows.push_back(r);
    }
    return rows;
}

std::vector<int> selectedCols(const platform::GridWindow* grid) {
    std::vector<int> cols;
    for (int c = 1; c <= grid->GetColCount(); ++c) {
        if (grid->selectionModel()->isColumnSelected(c - 1))
            cols.push_back(c);
    }
    return cols;
}

namespace {

QString actionId(const QAction* action) {
    if (action->data().isValid() && action->data().canConvert<int>())
        return QString::number(action->data().toInt());
    return action->objectName();
}

} // namespace

std::vector<MenuItem> menuItems(const QMenu* menu) {
    std::vector<MenuItem> items;
    for (const QAction* action : menu->actions()) {
        if (action->isSeparator() || !action->isVisible())
            continue;
        // The text as the menu shows it, without the shortcut that follows a tab.
        items.push_back({actionId(action), withoutMnemonic(action->text().section(u'\t', 0, 0)),
                         action->isEnabled()});
    }
    return items;
}

void chooseMenuItem(QMenu* menu, const QString& id) {
    QAction* chosen = nullptr;
    for (QAction* action : menu->actions()) {
        if (!action->isSeparator() && action->isVisible() &&
            (actionId(action) == id || action->objectName() == id))
            chosen = action;
    }
    if (!chosen)
        refuse(QStringLiteral("the popup menu has no command %1").arg(id));
    if (!chosen->isEnabled())
        refuse(QStringLiteral("command %1 of the popup menu is disabled").arg(id));
    const QPoint at = menu->actionGeometry(chosen).center();
    QTest::mouseMove(menu, at);
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, at);
    settle();
}

} // namespace ovauto
