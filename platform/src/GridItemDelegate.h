#pragma once

#include <QStyledItemDelegate>

namespace platform {

class GridWindow;

// Makes the editor of a cell (a line edit, or a list of the cell's choices) and
// hands the keys that move the current cell back to the grid, so that leaving a cell
// by key always takes the grid's road: store, OnLeftCell, move.
class GridItemDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit GridItemDelegate(GridWindow* grid);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;

    static QString editorText(const QWidget* editor);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    GridWindow* m_grid;
};

} // namespace platform
