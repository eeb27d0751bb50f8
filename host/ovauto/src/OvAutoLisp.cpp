// The LISP functions of dialog automation. A fault of the script (no dialog being driven,
// no such control, a bad argument) is a LISP error, so that the procedure stops there and
// its dialog is cancelled: a test that asks for a control that is not there fails.
#include "OvAutoLisp.h"

#include "OvAutoControls.h"

#include "ovauto/OvDialogAutomation.h"
#include "ovcore/OvLispExtension.h"
#include "platform/GridWindow.h"

#include <QApplication>
#include <QMenu>

#include <climits>
#include <exception>

namespace ovauto {

namespace {

using ovcore::lisp::schemeString;

[[noreturn]] void refuse(const QString& message) {
    throw AutomationError(message);
}

// Runs a primitive's body. The LISP error is raised only once every C++ object of the
// body is gone, since it leaves the frame without unwinding it.
template <typename F> SCM guarded(const char* who, F&& body) {
    SCM message = SCM_BOOL_F;
    SCM result = SCM_EOL;
    try {
        result = body();
    } catch (const AutomationError& e) {
        message = schemeString(QString::fromUtf8(who) + QStringLiteral(": ") + e.text);
    } catch (const std::exception& e) {
        message = schemeString(QString::fromUtf8(who) + QStringLiteral(": internal error: ") +
                               QString::fromLocal8Bit(e.what()));
    }
    if (scm_is_true(message))
        ovcore::lisp::raiseLispError(message);
    return result;
}

QString notation(SCM value) {
    const SCM text = scm_object_to_string(value, SCM_UNDEFINED);
    return ovcore::lisp::qtString(text);
}

bool isNil(SCM value) {
    return scm_is_false(value) || scm_is_null(value);
}

bool given(SCM value) {
    return !SCM_UNBNDP(value);
}

int intArg(SCM value, const char* what) {
    if (!scm_is_exact_integer(value) || !scm_is_signed_integer(value, INT_MIN, INT_MAX))
        refuse(QStringLiteral("%1 must be an integer, not %2")
                   .arg(QString::fromUtf8(what), notation(value)));
    return scm_to_int(value);
}

QString textArg(SCM value, const char* what) {
    if (!scm_is_string(value))
        refuse(QStringLiteral("%1 must be a string, not %2")
                   .arg(QString::fromUtf8(what), notation(value)));
    return ovcore::lisp::qtString(value);
}

// A control by its number or by the object name of a control of Qt's own dialogs.
QString idArg(SCM value) {
    if (scm_is_exact_integer(value) && scm_is_signed_integer(value, INT_MIN, INT_MAX))
        return QString::number(scm_to_int(value));
    if (scm_is_string(value))
        return ovcore::lisp::qtString(value);
    refuse(QStringLiteral("a control is named by its number or its name, not %1")
               .arg(notation(value)));
}

SCM boolean(bool value) {
    return value ? SCM_BOOL_T : SCM_EOL;
}

SCM intList(const std::vector<int>& values) {
    SCM list = SCM_EOL;
    for (auto it = values.rbegin(); it != values.rend(); ++it)
        list = scm_cons(scm_from_int(*it), list);
    return list;
}

SCM colourValue(const std::optional<QColor>& colour) {
    return colour ? schemeString(colour->name(QColor::HexRgb)) : SCM_EOL;
}

QWidget* controlArg(SCM id) {
    return control(frontDialog(), idArg(id));
}

platform::GridWindow* gridArg(SCM id) {
    return grid(frontDialog(), idArg(id));
}

// --- Queue and settings

SCM dialogQueue(SCM procedure) {
    return guarded("orvex-dialog-queue", [&]() -> SCM {
        if (scm_is_false(scm_procedure_p(procedure)))
            refuse(QStringLiteral("a procedure of no arguments is wanted, not %1")
                       .arg(notation(procedure)));
        OvDialogAutomation::instance().queue(procedure);
        return scm_from_int(OvDialogAutomation::instance().pending());
    });
}

SCM dialogPending() {
    return guarded("orvex-dialog-pending",
                   [&]() -> SCM { return scm_from_int(OvDialogAutomation::instance().pending()); });
}

SCM dialogClear() {
    return guarded("orvex-dialog-clear", [&]() -> SCM {
        OvDialogAutomation::instance().clearQueue();
        return SCM_BOOL_T;
    });
}

SCM dialogTimeout(SCM seconds) {
    return guarded("orvex-dialog-timeout", [&]() -> SCM {
        OvDialogAutomation& automation = OvDialogAutomation::instance();
        if (given(seconds) && !isNil(seconds)) {
            if (!scm_is_real(seconds) || !(scm_to_double(seconds) > 0.0) ||
                scm_to_double(seconds) > 86400.0)
                refuse(QStringLiteral("the time-out is a number of seconds above 0, not %1")
                           .arg(notation(seconds)));
            automation.setTimeout(scm_to_double(seconds));
        }
        return scm_from_double(automation.timeout());
    });
}

// --- Acting on a dialog

SCM dialogClick(SCM id) {
    return guarded("orvex-dialog-click", [&]() -> SCM {
        click(controlArg(id));
        return SCM_BOOL_T;
    });
}

SCM dialogSetText(SCM id, SCM text) {
    return guarded("orvex-dialog-set-text", [&]() -> SCM {
        QWidget* widget = controlArg(id);
        setText(widget, textArg(text, "the text"));
        return schemeString(textOf(widget));
    });
}

SCM dialogCheck(SCM id, SCM on) {
    return guarded("orvex-dialog-check",
                   [&]() -> SCM { return boolean(check(controlArg(id), !isNil(on))); });
}

SCM dialogKey(SCM combination) {
    return guarded("orvex-dialog-key", [&]() -> SCM {
        QWidget* dialog = frontDialog();
        QWidget* focus = QApplication::focusWidget();
        key(focus && dialog->isAncestorOf(focus) ? focus : dialog, textArg(combination, "the key"));
        return SCM_BOOL_T;
    });
}

SCM dialogType(SCM text) {
    return guarded("orvex-dialog-type", [&]() -> SCM {
        typeText(frontDialog(), textArg(text, "the text"));
        return SCM_BOOL_T;
    });
}

SCM dialogChoose(SCM id, SCM item) {
    return guarded("orvex-dialog-choose", [&]() -> SCM {
        choose(controlArg(id), textArg(item, "the item"));
        return SCM_BOOL_T;
    });
}

SCM dialogAnswer(SCM button) {
    return guarded("orvex-dialog-answer", [&]() -> SCM {
        QWidget* dialog = frontDialog();
        if (scm_is_exact_integer(button))
            answer(dialog, QString(), intArg(button, "the button"));
        else
            answer(dialog, textArg(button, "the button"), std::nullopt);
        return SCM_BOOL_T;
    });
}

SCM dialogCancel() {
    return guarded("orvex-dialog-cancel", [&]() -> SCM {
        OvDialogAutomation::cancel(frontDialog());
        settle();
        return SCM_BOOL_T;
    });
}

// --- Reading a dialog

SCM dialogTitle() {
    return guarded("orvex-dialog-title", [&]() -> SCM {
        return schemeString(OvDialogAutomation::titleOf(frontDialog()));
    });
}

SCM dialogText(SCM id) {
    return guarded("orvex-dialog-text",
                   [&]() -> SCM { return schemeString(textOf(controlArg(id))); });
}

SCM dialogEnabled(SCM id) {
    return guarded("orvex-dialog-enabled",
                   [&]() -> SCM { return boolean(controlArg(id)->isEnabled()); });
}

SCM dialogVisible(SCM id) {
    return guarded("orvex-dialog-visible", [&]() -> SCM {
        QWidget* dialog = frontDialog();
        return boolean(control(dialog, idArg(id))->isVisibleTo(dialog));
    });
}

SCM dialogChecked(SCM id) {
    return guarded("orvex-dialog-checked",
                   [&]() -> SCM { return boolean(isChecked(controlArg(id))); });
}

SCM dialogMessages() {
    return guarded("orvex-dialog-messages", [&]() -> SCM {
        SCM list = SCM_EOL;
        const auto& messages = OvDialogAutomation::instance().messages();
        for (auto it = messages.rbegin(); it != messages.rend(); ++it)
            list = scm_cons(scm_list_2(schemeString(it->caption), schemeString(it->text)), list);
        return list;
    });
}

// --- Grids

Qt::KeyboardModifiers modsArg(SCM mods) {
    return given(mods) && !isNil(mods) ? modifiers(textArg(mods, "the modifiers"))
                                       : Qt::KeyboardModifiers();
}

SCM lispGridClick(SCM id, SCM row, SCM col, SCM mods) {
    return guarded("orvex-grid-click", [&]() -> SCM {
        ovauto::gridClick(gridArg(id), intArg(row, "the row"), intArg(col, "the column"),
                          modsArg(mods), Qt::LeftButton);
        return SCM_BOOL_T;
    });
}

SCM lispGridRightClick(SCM id, SCM row, SCM col, SCM mods) {
    return guarded("orvex-grid-right-click", [&]() -> SCM {
        ovauto::gridClick(gridArg(id), intArg(row, "the row"), intArg(col, "the column"),
                          modsArg(mods), Qt::RightButton);
        return SCM_BOOL_T;
    });
}

SCM lispGridDoubleClick(SCM id, SCM row, SCM col) {
    return guarded("orvex-grid-double-click", [&]() -> SCM {
        ovauto::gridDoubleClick(gridArg(id), intArg(row, "the row"), intArg(col, "the column"));
        return SCM_BOOL_T;
    });
}

SCM lispGridType(SCM id, SCM row, SCM col, SCM text) {
    return guarded("orvex-grid-type", [&]() -> SCM {
        ovauto::gridType(gridArg(id), intArg(row, "the row"), intArg(col, "the column"),
                         textArg(text, "the text"));
        return SCM_BOOL_T;
    });
}

SCM lispGridKey(SCM id, SCM combination) {
    return guarded("orvex-grid-key", [&]() -> SCM {
        ovauto::gridKey(gridArg(id), textArg(combination, "the key"));
        return SCM_BOOL_T;
    });
}

SCM lispGridDragRow(SCM id, SCM from, SCM to) {
    return guarded("orvex-grid-drag-row", [&]() -> SCM {
        ovauto::gridDragRow(gridArg(id), intArg(from, "the row"), intArg(to, "the row"));
        return SCM_BOOL_T;
    });
}

SCM gridRows(SCM id) {
    return guarded("orvex-grid-rows",
                   [&]() -> SCM { return scm_from_int(gridArg(id)->GetRowCount()); });
}

SCM gridCols(SCM id) {
    return guarded("orvex-grid-cols",
                   [&]() -> SCM { return scm_from_int(gridArg(id)->GetColCount()); });
}

SCM gridCell(SCM id, SCM row, SCM col) {
    return guarded("orvex-grid-cell", [&]() -> SCM {
        const platform::GridWindow* g = gridArg(id);
        const int r = intArg(row, "the row");
        const int c = intArg(col, "the column");
        if (r < 0 || c < 0 || r > g->GetRowCount() || c > g->GetColCount())
            refuse(QStringLiteral("the grid has no cell %1, %2").arg(r).arg(c));
        return schemeString(g->GetValueRowCol(r, c));
    });
}

SCM gridStyle(SCM id, SCM row, SCM col) {
    return guarded("orvex-grid-style", [&]() -> SCM {
        const CellLook look =
            cellLook(gridArg(id), intArg(row, "the row"), intArg(col, "the column"));
        return scm_list_4(
            scm_cons(schemeString(QStringLiteral("control")), schemeString(look.control)),
            scm_cons(schemeString(QStringLiteral("read-only")), boolean(look.readOnly)),
            scm_cons(schemeString(QStringLiteral("interior")), colourValue(look.interior)),
            scm_cons(schemeString(QStringLiteral("text-color")), colourValue(look.textColor)));
    });
}

SCM gridCurrent(SCM id) {
    return guarded("orvex-grid-current", [&]() -> SCM {
        int row = 0;
        int col = 0;
        if (!gridArg(id)->GetCurrentCell(row, col))
            return SCM_EOL;
        return scm_list_2(scm_from_int(row), scm_from_int(col));
    });
}

SCM gridSelectedRows(SCM id) {
    return guarded("orvex-grid-selected-rows",
                   [&]() -> SCM { return intList(selectedRows(gridArg(id))); });
}

SCM gridSelectedCols(SCM id) {
    return guarded("orvex-grid-selected-cols",
                   [&]() -> SCM { return intList(selectedCols(gridArg(id))); });
}

SCM gridHiddenCols(SCM id) {
    return guarded("orvex-grid-hidden-cols", [&]() -> SCM {
        const platform::GridWindow* g = gridArg(id);
        std::vector<int> hidden;
        for (int c = 1; c <= g->GetColCount(); ++c) {
            if (g->IsColHidden(c))
                hidden.push_back(c);
        }
        return intList(hidden);
    });
}

SCM gridWidths(SCM id) {
    return guarded("orvex-grid-widths", [&]() -> SCM {
        const platform::GridWindow* g = gridArg(id);
        std::vector<int> widths;
        for (int c = 0; c <= g->GetColCount(); ++c)
            widths.push_back(g->GetColWidth(c));
        return intList(widths);
    });
}

// --- Popup menus

SCM menuItemsList() {
    return guarded("orvex-menu-items", [&]() -> SCM {
        SCM list = SCM_EOL;
        const std::vector<MenuItem> items = menuItems(frontMenu());
        for (auto it = items.rbegin(); it != items.rend(); ++it) {
            bool numeric = false;
            const int number = it->id.toInt(&numeric);
            list = scm_cons(scm_list_3(numeric ? scm_from_int(number) : schemeString(it->id),
                                       schemeString(it->text), boolean(it->enabled)),
                            list);
        }
        return list;
    });
}

SCM menuChoose(SCM id) {
    return guarded("orvex-menu-choose", [&]() -> SCM {
        chooseMenuItem(frontMenu(), idArg(id));
        return SCM_BOOL_T;
    });
}

} // namespace

void defineLispFunctions() {
    using P = ovcore::lisp::HostPrimitive;
    const P primitives[] = {
        {"orvex-dialog-queue", 1, 0, reinterpret_cast<scm_t_subr>(dialogQueue)},
        {"orvex-dialog-pending", 0, 0, reinterpret_cast<scm_t_subr>(dialogPending)},
        {"orvex-dialog-clear", 0, 0, reinterpret_cast<scm_t_subr>(dialogClear)},
        {"orvex-dialog-timeout", 0, 1, reinterpret_cast<scm_t_subr>(dialogTimeout)},
        {"orvex-dialog-click", 1, 0, reinterpret_cast<scm_t_subr>(dialogClick)},
        {"orvex-dialog-set-text", 2, 0, reinterpret_cast<scm_t_subr>(dialogSetText)},
        {"orvex-dialog-check", 2, 0, reinterpret_cast<scm_t_subr>(dialogCheck)},
        {"orvex-dialog-key", 1, 0, reinterpret_cast<scm_t_subr>(dialogKey)},
        {"orvex-dialog-type", 1, 0, reinterpret_cast<scm_t_subr>(dialogType)},
        {"orvex-dialog-choose", 2, 0, reinterpret_cast<scm_t_subr>(dialogChoose)},
        {"orvex-dialog-answer", 1, 0, reinterpret_cast<scm_t_subr>(dialogAnswer)},
        {"orvex-dialog-cancel", 0, 0, reinterpret_cast<scm_t_subr>(dialogCancel)},
        {"orvex-dialog-title", 0, 0, reinterpret_cast<scm_t_subr>(dialogTitle)},
        {"orvex-dialog-text", 1, 0, reinterpret_cast<scm_t_subr>(dialogText)},
        {"orvex-dialog-enabled", 1, 0, reinterpret_cast<scm_t_subr>(dialogEnabled)},
        {"orvex-dialog-visible", 1, 0, reinterpret_cast<scm_t_subr>(dialogVisible)},
        {"orvex-dialog-checked", 1, 0, reinterpret_cast<scm_t_subr>(dialogChecked)},
        {"orvex-dialog-messages", 0, 0, reinterpret_cast<scm_t_subr>(dialogMessages)},
        {"orvex-grid-click", 3, 1, reinterpret_cast<scm_t_subr>(lispGridClick)},
        {"orvex-grid-right-click", 3, 1, reinterpret_cast<scm_t_subr>(lispGridRightClick)},
        {"orvex-grid-double-click", 3, 0, reinterpret_cast<scm_t_subr>(lispGridDoubleClick)},
        {"orvex-grid-type", 4, 0, reinterpret_cast<scm_t_subr>(lispGridType)},
        {"orvex-grid-key", 2, 0, reinterpret_cast<scm_t_subr>(lispGridKey)},
        {"orvex-grid-drag-row", 3, 0, reinterpret_cast<scm_t_subr>(lispGridDragRow)},
        {"orvex-grid-rows", 1, 0, reinterpret_cast<scm_t_subr>(gridRows)},
        {"orvex-grid-cols", 1, 0, reinterpret_cast<scm_t_subr>(gridCols)},
        {"orvex-grid-cell", 3, 0, reinterpret_cast<scm_t_subr>(gridCell)},
        {"orvex-grid-style", 3, 0, reinterpret_cast<scm_t_subr>(gridStyle)},
        {"orvex-grid-current", 1, 0, reinterpret_cast<scm_t_subr>(gridCurrent)},
        {"orvex-grid-selected-rows", 1, 0, reinterpret_cast<scm_t_subr>(gridSelectedRows)},
        {"orvex-grid-selected-cols", 1, 0, reinterpret_cast<scm_t_subr>(gridSelectedCols)},
        {"orvex-grid-hidden-cols", 1, 0, reinterpret_cast<scm_t_subr>(gridHiddenCols)},
        {"orvex-grid-widths", 1, 0, reinterpret_cast<scm_t_subr>(gridWidths)},
        {"orvex-menu-items", 0, 0, reinterpret_cast<scm_t_subr>(menuItemsList)},
        {"orvex-menu-choose", 1, 0, reinterpret_cast<scm_t_subr>(menuChoose)},
    };
    ovcore::lisp::defineHostPrimitives(primitives);
}

} // namespace ovauto
