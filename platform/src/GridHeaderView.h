#pragma once

#include <QHeaderView>

namespace platform {

class GridWindow;

// A header of the grid window. Clicks and double clicks on a section go to the grid
// as hits in row 0 or column 0; a drag on a column's edge resizes it, asked and told
// through the grid's width tracking notifications.
class GridHeaderView : public QHeaderView {
    Q_OBJECT

public:
    GridHeaderView(Qt::Orientation orientation, GridWindow* grid);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    // The section whose trailing edge lies under `pos`, or -1.
    int handleAt(QPoint pos) const;

    GridWindow* m_grid;
    int m_tracking = -1;
    bool m_pressed = false;
};

} // namespace platform
