#include "dialogs/ZelRowHeaderWatch.h"

#include "grid/ZelWTGrid.h"

#include <QHeaderView>
#include <QMouseEvent>

void ZelRowHeaderWatch::Watch() {
    QWidget* viewport = m_grid.verticalHeader()->viewport();
    viewport->removeEventFilter(this);
    viewport->installEventFilter(this);
}

bool ZelRowHeaderWatch::eventFilter(QObject* watched, QEvent* event) {
    QHeaderView* header = m_grid.verticalHeader();
    if (watched == header->viewport() && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        const int row =
            header->logicalIndexAt(static_cast<QMouseEvent*>(event)->position().toPoint()) + 1;
        if (row >= 1)
            m_grid.UpdateButtons(row);
    }
    return QObject::eventFilter(watched, event);
}
