#include "GridItemDelegate.h"

#include "platform/GridModel.h"
#include "platform/GridWindow.h"
#include "platform/HandlerGuard.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>

namespace platform {

GridItemDelegate::GridItemDelegate(GridWindow* grid) : QStyledItemDelegate(grid), m_grid(grid) {}

QWidget* GridItemDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                        const QModelIndex& index) const {
    const auto control = CellStyle::Control(index.data(GridModel::ControlRole).toInt());
    QWidget* editor = nullptr;
    if (control == CellStyle::Control::DropDownList) {
        auto* list = new QComboBox(parent);
        list->addItems(index.data(GridModel::ChoicesRole).toStringList());
        connect(list, &QComboBox::activated, m_grid, [grid = m_grid] {
            runHandler("typing in a grid cell", [&] { grid->editorTextChanged(); });
        });
        editor = list;
    } else {
        auto* line = new QLineEdit(parent);
        line->setFrame(false);
        connect(line, &QLineEdit::textEdited, m_grid, [grid = m_grid] {
            runHandler("typing in a grid cell", [&] { grid->editorTextChanged(); });
        });
        editor = line;
    }
    editor->setAutoFillBackground(true);
    m_grid->m_editor = editor;
    m_grid->m_editModified = false;
    return editor;
}

void GridItemDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    const QString text = index.data(Qt::EditRole).toString();
    if (auto* list = qobject_cast<QComboBox*>(editor)) {
        const int at = list->findText(text, Qt::MatchFixedString);
        list->setCurrentIndex(at);
    } else if (auto* line = qobject_cast<QLineEdit*>(editor)) {
        // Qt calls this again when the cell's data changes under an open editor; what
        // the person has typed meanwhile stays.
        if (!m_grid->m_editModified) {
            line->setText(text);
        }
    }
}

void GridItemDelegate::setModelData(QWidget* editor, QAbstractItemModel*,
                                    const QModelIndex& index) const {
    runHandler("storing the text of a grid cell", [&] {
        // An edit that changed nothing leaves the cell alone.
        if (editor != m_grid->m_editor || !m_grid->m_editModified) {
            return;
        }
        m_grid->storeEditorText(index.row() + 1, index.column() + 1, editorText(editor));
    });
}

QString GridItemDelegate::editorText(const QWidget* editor) {
    if (auto* list = qobject_cast<const QComboBox*>(editor)) {
        return list->currentText();
    }
    if (auto* line = qobject_cast<const QLineEdit*>(editor)) {
        return line->text();
    }
    return {};
}

bool GridItemDelegate::eventFilter(QObject* object, QEvent* event) {
    return runHandler("a key in a grid cell", true, [&] {
        if (event->type() == QEvent::KeyPress) {
            auto* key = static_cast<QKeyEvent*>(event);
            const bool list = qobject_cast<QComboBox*>(object) != nullptr;
            switch (key->key()) {
            case Qt::Key_Tab:
            case Qt::Key_Backtab:
            case Qt::Key_Return:
            case Qt::Key_Enter:
            case Qt::Key_Escape:
            case Qt::Key_PageUp:
            case Qt::Key_PageDown:
                return m_grid->handleGridKey(key);
            case Qt::Key_Up:
            case Qt::Key_Down:
                // In a list the arrows choose; in a line they move, as in a spreadsheet.
                if (!list) {
                    return m_grid->handleGridKey(key);
                }
                break;
            default:
                break;
            }
            return false;
        }
        return QStyledItemDelegate::eventFilter(object, event);
    });
}

} // namespace platform
