#pragma once

#include "OvDrawingSnapshot.h"

#include <QGraphicsItem>

#include <memory>
#include <vector>

// The whole model space as one graphics item. It draws only what the exposed area holds,
// found through the snapshot's grid, and batches the lines of each layer into one call;
// at small scales texts become strokes and dashes solid lines, where they could not be
// told apart anyway. So a redraw costs what is on screen, not what is in the drawing.
class OvDrawingItem : public QGraphicsItem {
public:
    OvDrawingItem();

    void setSnapshot(std::shared_ptr<const OvDrawingSnapshot> snapshot);
    const std::shared_ptr<const OvDrawingSnapshot>& snapshot() const { return m_snapshot; }

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

    // Lines drawn by the last paint, for the benchmarks and the status bar.
    std::size_t lastSegmentsDrawn() const { return m_lastSegments; }

private:
    std::shared_ptr<const OvDrawingSnapshot> m_snapshot;
    QRectF m_bounds;
    // Kept between paints so that a redraw allocates nothing.
    std::vector<std::uint32_t> m_segmentHits;
    std::vector<std::uint32_t> m_textHits;
    std::vector<std::vector<QLineF>> m_byLayer;
    std::vector<int> m_touched;
    std::size_t m_lastSegments = 0;
};
