#pragma once

#include "ovdb/OvDbObjectId.h"

#include <QColor>
#include <QHash>
#include <QLineF>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

class OvDbDatabase;

// What the windows show of one drawing, read in one walk: the layers with their look and
// wire data, the lines of model space (block references drawn out, attribute texts) and
// the WIRELAYS patterns. The windows never hold host objects open: they read a snapshot
// after each command or evaluation and draw and pick from it, so a redraw costs no
// database access at all.
class OvDrawingSnapshot {
public:
    struct Layer {
        QString name;
        int colorIndex = 7;
        QColor color;
        QString linetype;
        std::vector<double> dashes; // drawing units; empty for a continuous line
        int lineWeight = -3;
        bool inUse = false;
        bool current = false;
        bool wireRecord = false; // holds a wire type record of its own
        QString pattern;         // the WIRELAYS alternative that catches it, if any
    };

    // A line to draw; `entity` is what a pick on it answers (the INSERT for the lines of
    // a block).
    struct Segment {
        QLineF line;
        int layer = 0;
        OvDbObjectId entity;
    };

    struct Text {
        QPointF position;
        QString text;
        int layer = 0;
        OvDbObjectId entity;
    };

    // Height of attribute texts in drawing units: the files carry none.
    static constexpr double kTextHeight = 2.5;

    OvDrawingSnapshot() = default;
    // Reads `database`; a null one gives an empty snapshot.
    explicit OvDrawingSnapshot(OvDbDatabase* database);

    const std::vector<Layer>& layers() const { return m_layers; }
    const std::vector<Segment>& segments() const { return m_segments; }
    const std::vector<Text>& texts() const { return m_texts; }
    // The WIRELAYS text of the drawing's WD_M block reference; empty when there is none.
    const QString& wireLayers() const { return m_wireLayers; }
    bool hasWireLayerList() const { return m_hasWd_m; }
    // The alternatives of WIRELAYS that catch no layer of the drawing.
    const QStringList& idlePatterns() const { return m_idlePatterns; }
    int layerIndex(const QString& name) const;

    // Bounds of everything drawn, texts included; empty for an empty drawing.
    QRectF extents() const { return m_extents; }

    // Indexes of the segments and texts whose bounds meet `area`, each once.
    void query(const QRectF& area, std::vector<std::uint32_t>& segments,
               std::vector<std::uint32_t>& texts) const;
    // The entity nearest to `point` within `tolerance` drawing units; null when none.
    OvDbObjectId pick(const QPointF& point, double tolerance) const;

    // The WIRELAYS list split into its alternatives, at commas not escaped by a back-quote.
    static QStringList splitPatterns(const QString& list);

private:
    void readLayers(OvDbDatabase* database);
    void readModelSpace(OvDbDatabase* database);
    void addBlockReference(OvDbObjectId referenceId, int layer);
    void matchPatterns();
    void buildIndex();
    QRectF textBounds(const Text& text) const;

    std::vector<Layer> m_layers;
    std::vector<OvDbObjectId> m_layerIds;
    QHash<OvDbStub*, int> m_layerOf;
    std::vector<Segment> m_segments;
    std::vector<Text> m_texts;
    QString m_wireLayers;
    bool m_hasWd_m = false;
    QStringList m_idlePatterns;
    QRectF m_extents;

    // A uniform grid over the extents; each cell lists the items that cross it. Items
    // are numbered segments first, then texts.
    int m_columns = 0;
    int m_rows = 0;
    double m_cellWidth = 1.0;
    double m_cellHeight = 1.0;
    std::vector<std::uint32_t> m_cellStart; // m_columns * m_rows + 1 offsets
    std::vector<std::uint32_t> m_cellItems;
    mutable std::vector<std::uint32_t> m_seen; // query stamps, one per item
    mutable std::uint32_t m_stamp = 0;
};
