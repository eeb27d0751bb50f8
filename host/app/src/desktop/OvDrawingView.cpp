#include "OvDrawingView.h"

#include "OvDrawingItem.h"

#include <QGraphicsScene>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kWheelStep = 1.2;
// A press that moves less than this is a click, not a pan.
constexpr int kDragThreshold = 4;
// Scales beyond these are of no use and make Qt's arithmetic unsafe.
constexpr double kMinScale = 1e-6;
constexpr double kMaxScale = 1e6;

} // namespace

OvDrawingView::OvDrawingView(OvApDocument* document, QWidget* parent)
    : QGraphicsView(parent), m_document(document), m_item(new OvDrawingItem) {
    setObjectName(QStringLiteral("drawingView"));
    setAccessibleName(tr("Drawing"));
    auto* scene = new QGraphicsScene(this);
    // One item that finds what to draw itself: Qt's own index would only be in the way.
    scene->setItemIndexMethod(QGraphicsScene::NoIndex);
    scene->addItem(m_item);
    setScene(scene);
    setBackgroundBrush(QColor(33, 40, 48));
    setViewportUpdateMode(QGraphicsView::FullViewportUpdate);
    setOptimizationFlags(QGraphicsView::DontSavePainterState |
                         QGraphicsView::DontAdjustForAntialiasing);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTransformationAnchor(QGraphicsView::NoAnchor);
    setResizeAnchor(QGraphicsView::AnchorViewCenter);
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    // Drawing y goes up, screen y down.
    setTransform(QTransform::fromScale(1.0, -1.0));
}

OvDrawingView::~OvDrawingView() = default;

void OvDrawingView::setSnapshot(std::shared_ptr<const OvDrawingSnapshot> snapshot) {
    m_item->setSnapshot(std::move(snapshot));
    updateSceneRect();
    if (m_autoFit)
        zoomExtents();
    viewport()->update();
}

const std::shared_ptr<const OvDrawingSnapshot>& OvDrawingView::snapshot() const {
    return m_item->snapshot();
}

void OvDrawingView::updateSceneRect() {
    // Room all round the drawing, so that panning never meets the scroll limits.
    QRectF extents = m_item->boundingRect();
    if (extents.isEmpty())
        extents = QRectF(-50, -50, 100, 100);
    const double margin = std::max(extents.width(), extents.height()) * 1e3;
    setSceneRect(extents.adjusted(-margin, -margin, margin, margin));
}

double OvDrawingView::scale() const {
    return std::abs(transform().m11());
}

void OvDrawingView::zoomExtents() {
    QRectF extents = m_item->snapshot() ? m_item->snapshot()->extents() : QRectF();
    if (extents.isNull())
        extents = QRectF(0, 0, 100, 100);
    const double width = std::max(extents.width(), 1e-3);
    const double height = std::max(extents.height(), 1e-3);
    const QSize size = viewport()->size();
    const double s = std::clamp(0.92 * std::min(size.width() / width, size.height() / height),
                                kMinScale, kMaxScale);
    setTransform(QTransform::fromScale(s, -s));
    centerOn(extents.center());
}

void OvDrawingView::zoomBy(double factor) {
    m_autoFit = false;
    const double target = std::clamp(scale() * factor, kMinScale, kMaxScale);
    const double f = target / scale();
    QTransform t = transform();
    t.scale(f, f);
    setTransform(t);
}

void OvDrawingView::panBy(const QPointF& pixels) {
    m_autoFit = false;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - qRound(pixels.x()));
    verticalScrollBar()->setValue(verticalScrollBar()->value() - qRound(pixels.y()));
}

QPoint OvDrawingView::viewportPoint(const QPointF& drawingPoint) const {
    return mapFromScene(drawingPoint);
}

QPointF OvDrawingView::drawingPoint(const QPoint& viewportPoint) const {
    return mapToScene(viewportPoint);
}

void OvDrawingView::setPickMode(bool on) {
    m_pickMode = on;
    viewport()->setCursor(on ? Qt::CrossCursor : Qt::ArrowCursor);
}

void OvDrawingView::wheelEvent(QWheelEvent* event) {
    const double steps = event->angleDelta().y() / 120.0;
    if (steps == 0.0)
        return;
    // Keep the drawing point under the cursor where it is.
    const QPointF cursor = event->position();
    const QPointF before = mapToScene(cursor.toPoint());
    zoomBy(std::pow(kWheelStep, steps));
    const QPointF after = mapToScene(cursor.toPoint());
    const QPointF shift = mapFromScene(after) - mapFromScene(before);
    panBy(shift);
    event->accept();
}

void OvDrawingView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::MiddleButton || event->button() == Qt::LeftButton) {
        m_dragging = true;
        m_dragMoved = false;
        m_dragLast = event->position().toPoint();
        event->accept();
        return;
    }
    QGraphicsView::mousePressEvent(event);
}

void OvDrawingView::mouseMoveEvent(QMouseEvent* event) {
    if (m_dragging) {
        const QPoint now = event->position().toPoint();
        if (!m_dragMoved && (now - m_dragLast).manhattanLength() < kDragThreshold &&
            event->buttons() & Qt::LeftButton)
            return;
        if (!m_dragMoved)
            viewport()->setCursor(Qt::ClosedHandCursor);
        m_dragMoved = true;
        panBy(now - m_dragLast);
        m_dragLast = now;
        event->accept();
        return;
    }
    QGraphicsView::mouseMoveEvent(event);
}

void OvDrawingView::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_dragging) {
        QGraphicsView::mouseReleaseEvent(event);
        return;
    }
    m_dragging = false;
    viewport()->setCursor(m_pickMode ? Qt::CrossCursor : Qt::ArrowCursor);
    if (!m_dragMoved && m_pickMode && event->button() == Qt::LeftButton) {
        const QPointF point = mapToScene(event->position().toPoint());
        emit pointPicked(point, kPickAperture / std::max(scale(), kMinScale));
    }
    event->accept();
}

void OvDrawingView::keyPressEvent(QKeyEvent* event) {
    const int step = 60;
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        zoomBy(kWheelStep);
        break;
    case Qt::Key_Minus:
        zoomBy(1.0 / kWheelStep);
        break;
    case Qt::Key_Home:
        zoomExtents();
        break;
    case Qt::Key_Left:
        panBy(QPointF(step, 0));
        break;
    case Qt::Key_Right:
        panBy(QPointF(-step, 0));
        break;
    case Qt::Key_Up:
        panBy(QPointF(0, step));
        break;
    case Qt::Key_Down:
        panBy(QPointF(0, -step));
        break;
    default:
        QGraphicsView::keyPressEvent(event);
        return;
    }
    if (event->key() == Qt::Key_Home)
        m_autoFit = true;
    event->accept();
}

void OvDrawingView::resizeEvent(QResizeEvent* event) {
    QGraphicsView::resizeEvent(event);
    if (m_autoFit)
        zoomExtents();
}
