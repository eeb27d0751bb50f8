#include "OvDrawingItem.h"

#include <QPainter>
#include <QStyleOptionGraphicsItem>

#include <algorithm>
#include <cmath>

namespace {

// Texts smaller than this many pixels are drawn as a stroke under where they stand.
constexpr double kMinTextPixels = 5.0;

// On screen, lineweights are drawn thicker from half a millimetre up; finer ones would
// all be one pixel anyway.
double penWidthOf(int lineWeight) {
    if (lineWeight >= 100)
        return 3.0;
    if (lineWeight >= 50)
        return 2.0;
    return 1.0;
}

} // namespace

OvDrawingItem::OvDrawingItem() {
    setFlag(QGraphicsItem::ItemUsesExtendedStyleOption, true);
}

void OvDrawingItem::setSnapshot(std::shared_ptr<const OvDrawingSnapshot> snapshot) {
    prepareGeometryChange();
    m_snapshot = std::move(snapshot);
    m_bounds = m_snapshot ? m_snapshot->extents() : QRectF();
    m_byLayer.clear();
    if (m_snapshot)
        m_byLayer.resize(m_snapshot->layers().size());
    update();
}

QRectF OvDrawingItem::boundingRect() const {
    // A drawing of one horizontal line has no height: give it some, or Qt never paints it.
    return m_bounds.adjusted(-1, -1, 1, 1);
}

void OvDrawingItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget*) {
    m_lastSegments = 0;
    if (!m_snapshot)
        return;
    const OvDrawingSnapshot& drawing = *m_snapshot;
    const double pixelsPerUnit =
        QStyleOptionGraphicsItem::levelOfDetailFromTransform(painter->worldTransform());
    if (pixelsPerUnit <= 0.0)
        return;

    // Not every painter says what is exposed (QGraphicsView::render does not): what the
    // device shows, and the clip, bound it as well.
    QRectF area = option->exposedRect;
    if (const QPaintDevice* device = painter->device()) {
        const QRectF shown = painter->worldTransform().inverted().mapRect(
            QRectF(0, 0, device->width(), device->height()));
        area = area.isEmpty() ? shown : area.intersected(shown);
    }
    if (painter->hasClipping())
        area = area.intersected(painter->clipBoundingRect());
    drawing.query(area, m_segmentHits, m_textHits);
    const auto& layers = drawing.layers();
    m_touched.clear();
    for (const std::uint32_t i : m_segmentHits) {
        const auto& segment = drawing.segments()[i];
        auto& bucket = m_byLayer[static_cast<std::size_t>(segment.layer)];
        if (bucket.empty())
            m_touched.push_back(segment.layer);
        bucket.push_back(segment.line);
    }

    painter->setRenderHint(QPainter::Antialiasing, false);
    for (const int index : m_touched) {
        const auto& layer = layers[static_cast<std::size_t>(index)];
        auto& lines = m_byLayer[static_cast<std::size_t>(index)];
        QPen pen(layer.color, penWidthOf(layer.lineWeight));
        pen.setCosmetic(true);
        pen.setCapStyle(Qt::FlatCap);
        if (!layer.dashes.empty()) {
            // A cosmetic pen's pattern is in pen widths on screen; a pattern of less than
            // a few pixels would only grey the line.
            QList<qreal> pattern;
            double total = 0.0;
            for (const double dash : layer.dashes) {
                const double pixels = std::max(1.0, std::abs(dash) * pixelsPerUnit);
                pattern << pixels / pen.widthF();
                total += pixels;
            }
            if (pattern.size() % 2 == 1)
                pattern << 1.0; // Qt wants dash and gap in pairs
            if (total >= 6.0)
                pen.setDashPattern(pattern);
        }
        painter->setPen(pen);
        painter->drawLines(lines.data(), static_cast<int>(lines.size()));
        m_lastSegments += lines.size();
        lines.clear();
    }

    const double textPixels = OvDrawingSnapshot::kTextHeight * pixelsPerUnit;
    if (m_textHits.empty() || textPixels < 1.0)
        return;
    QFont font = painter->font();
    font.setPixelSize(std::max(1, static_cast<int>(textPixels)));
    painter->setFont(font);
    for (const std::uint32_t i : m_textHits) {
        const auto& text = drawing.texts()[i];
        const QColor color = layers[static_cast<std::size_t>(text.layer)].color;
        if (textPixels < kMinTextPixels) {
            QPen pen(color, 1.0);
            pen.setCosmetic(true);
            painter->setPen(pen);
            const double width = text.text.size() * OvDrawingSnapshot::kTextHeight * 0.8;
            painter->drawLine(text.position, text.position + QPointF(width, 0));
            continue;
        }
        // The view turns y upwards; texts are drawn upright in screen space.
        painter->save();
        const QPointF at = painter->worldTransform().map(text.position);
        painter->resetTransform();
        painter->setPen(color);
        painter->drawText(at, text.text);
        painter->restore();
    }
}
