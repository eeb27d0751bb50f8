#include "GridHeaderView.h"

#include "platform/GridWindow.h"
#include "platform/HandlerGuard.h"

#include <QMouseEvent>
#include <QStyle>

namespace platform {

GridHeaderView::GridHeaderView(Qt::Orientation orientation, GridWindow* grid)
    : QHeaderView(orientation, grid), m_grid(grid) {
    setSectionsClickable(true);
    setHighlightSections(true);
    if (orientation == Qt::Vertical) {
        setSectionResizeMode(QHeaderView::Fixed);
    }
}

int GridHeaderView::handleAt(QPoint pos) const {
    if (orientation() != Qt::Horizontal) {
        return -1;
    }
    const int margin = style()->pixelMetric(QStyle::PM_HeaderGripMargin, nullptr, this);
    const int x = pos.x();
    const int section = logicalIndexAt(x);
    if (section < 0) {
        return -1;
    }
    const int left = sectionViewportPosition(section);
    const int right = left + sectionSize(section);
    if (std::abs(x - right) <= margin) {
        return section;
    }
    if (std::abs(x - left) <= margin) {
        // The edge on the left belongs to the visible section before.
        for (int visual = visualIndex(section) - 1; visual >= 0; --visual) {
            const int before = logicalIndex(visual);
            if (!isSectionHidden(before)) {
                return before;
            }
        }
    }
    return -1;
}

void GridHeaderView::mousePressEvent(QMouseEvent* event) {
    runHandler("a mouse press on a grid header", [&] {
        const int handle =
            event->button() == Qt::LeftButton ? handleAt(event->position().toPoint()) : -1;
        if (handle >= 0) {
            if (m_grid->OnTrackColWidth(handle + 1)) {
                m_tracking = handle;
                QHeaderView::mousePressEvent(event);
            }
            return;
        }
        const int section = logicalIndexAt(event->position().toPoint());
        m_pressed = true;
        m_grid->headerPress(orientation(), section, event);
    });
}

void GridHeaderView::mouseMoveEvent(QMouseEvent* event) {
    runHandler("a mouse move on a grid header", [&] {
        if (m_tracking >= 0 || event->buttons() == Qt::NoButton) {
            // Tracking, or hovering: Qt shows the splitter cursor over an edge.
            QHeaderView::mouseMoveEvent(event);
            return;
        }
        if (m_pressed) {
            m_grid->headerMove(orientation(), logicalIndexAt(event->position().toPoint()), event);
        }
    });
}

void GridHeaderView::mouseReleaseEvent(QMouseEvent* event) {
    runHandler("a mouse release on a grid header", [&] {
        if (m_tracking >= 0) {
            QHeaderView::mouseReleaseEvent(event);
            const int col = m_tracking;
            m_tracking = -1;
            m_grid->OnTrackColWidthEnd(col + 1, sectionSize(col));
            return;
        }
        if (m_pressed) {
            m_pressed = false;
            m_grid->headerRelease(orientation(), logicalIndexAt(event->position().toPoint()),
                                  event);
        }
    });
}

void GridHeaderView::mouseDoubleClickEvent(QMouseEvent* event) {
    runHandler("a double click on a grid header", [&] {
        if (handleAt(event->position().toPoint()) >= 0) {
            return;
        }
        m_grid->headerDoubleClick(orientation(), logicalIndexAt(event->position().toPoint()),
                                  event);
    });
}

} // namespace platform
