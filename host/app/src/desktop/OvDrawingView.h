#pragma once

#include "OvDrawingSnapshot.h"

#include <QGraphicsView>

#include <memory>

class OvApDocument;
class OvDrawingItem;

// The model space of one document: zoom with the wheel (about the cursor) or the keys
// + and -, extents with Home, pan by dragging with the middle or the left button or with
// the arrow keys. In pick mode the cursor is a cross and a click reports the drawing point
// under it instead of panning.
class OvDrawingView : public QGraphicsView {
    Q_OBJECT

public:
    explicit OvDrawingView(OvApDocument* document, QWidget* parent = nullptr);
    ~OvDrawingView() override;

    OvApDocument* document() const { return m_document; }

    void setSnapshot(std::shared_ptr<const OvDrawingSnapshot> snapshot);
    const std::shared_ptr<const OvDrawingSnapshot>& snapshot() const;

    void zoomExtents();
    void zoomBy(double factor);
    void panBy(const QPointF& pixels);
    // Pixels per drawing unit.
    double scale() const;
    // Where a point of the drawing is on the viewport, and the other way round.
    QPoint viewportPoint(const QPointF& drawingPoint) const;
    QPointF drawingPoint(const QPoint& viewportPoint) const;

    void setPickMode(bool on);
    bool pickMode() const { return m_pickMode; }
    // How near a click must come to an entity, in pixels.
    static constexpr int kPickAperture = 5;

    const OvDrawingItem* item() const { return m_item; }

signals:
    // A click in pick mode: the drawing point and the pick aperture in drawing units.
    void pointPicked(const QPointF& point, double tolerance);

protected:
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void updateSceneRect();

    OvApDocument* m_document;
    OvDrawingItem* m_item;
    bool m_pickMode = false;
    bool m_dragging = false;
    bool m_dragMoved = false;
    QPoint m_dragLast;
    // Until the user zooms or pans, the view keeps the whole drawing in sight, also as
    // the window is laid out and resized.
    bool m_autoFit = true;
};
