#include "OvDrawingSnapshot.h"

#include "ovdb/ovdb.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace {

using Orvex::eOk;

// Blocks drawn inside blocks: deep enough for any real drawing, and a stop for a file
// whose blocks refer to each other in a circle.
constexpr int kMaxBlockDepth = 8;

bool isWildcardFree(const QString& pattern) {
    for (const QChar c : pattern) {
        switch (c.unicode()) {
        case '*':
        case '?':
        case '#':
        case '@':
        case '[':
        case ']':
        case '~':
        case '`':
            return false;
        default:
            break;
        }
    }
    return true;
}

// '.' stands for any character that is neither a letter nor a digit, so a pattern made
// of plain characters and dots is found by this key and then confirmed by the real match.
QString dotKey(const QString& text) {
    QString key = text;
    for (QChar& c : key) {
        if (!c.isLetterOrNumber())
            c = u'.';
    }
    return key;
}

bool wcMatch(const QString& text, const QString& pattern) {
    const std::wstring t = text.toStdWString();
    const std::wstring p = pattern.toStdWString();
    return ovutWcMatch(t.c_str(), p.c_str()) != 0;
}

double distanceToSegment(const QPointF& p, const QLineF& line) {
    const QPointF d = line.p2() - line.p1();
    const double length2 = d.x() * d.x() + d.y() * d.y();
    double t = 0.0;
    if (length2 > 0.0)
        t = std::clamp(QPointF::dotProduct(p - line.p1(), d) / length2, 0.0, 1.0);
    const QPointF nearest = line.p1() + t * d;
    return std::hypot(p.x() - nearest.x(), p.y() - nearest.y());
}

// QRectF::intersects counts a rectangle without width or height as empty, and the
// bounds of a horizontal or vertical line are just that.
bool meets(const QRectF& a, const QRectF& b) {
    return a.left() <= b.right() && b.left() <= a.right() && a.top() <= b.bottom() &&
           b.top() <= a.bottom();
}

QRectF boundsOf(const QLineF& line) {
    return QRectF(line.p1(), line.p2()).normalized();
}

QString nameOf(const OvDbSymbolTableRecord* record) {
    QString name;
    record->getName(name);
    return name;
}

template <class T> struct Closer {
    void operator()(T* object) const {
        if (object)
            object->close();
    }
};
template <class T> using Opened = std::unique_ptr<T, Closer<T>>;

template <class T> Opened<T> openForRead(OvDbObjectId id) {
    T* object = nullptr;
    if (ovdbOpenObject(object, id, OvDb::kForRead) != eOk)
        return Opened<T>();
    return Opened<T>(object);
}

} // namespace

OvDrawingSnapshot::OvDrawingSnapshot(OvDbDatabase* database) {
    if (!database)
        return;
    readLayers(database);
    readModelSpace(database);
    matchPatterns();
    buildIndex();
}

int OvDrawingSnapshot::layerIndex(const QString& name) const {
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        if (m_layers[i].name.compare(name, Qt::CaseInsensitive) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

void OvDrawingSnapshot::readLayers(OvDbDatabase* database) {
    OvDbLayerTable* rawTable = nullptr;
    if (database->getSymbolTable(rawTable, OvDb::kForRead) != eOk)
        return;
    Opened<OvDbLayerTable> table(rawTable);
    table->generateUsageData();
    OvDbLayerTableIterator* rawIterator = nullptr;
    if (table->newIterator(rawIterator, true, true) != eOk)
        return;
    std::unique_ptr<OvDbLayerTableIterator> it(rawIterator);
    const OvDbObjectId current = database->clayer();

    // Linetypes are few; layers share them.
    QHash<OvDbStub*, std::pair<QString, std::vector<double>>> linetypes;
    for (; !it->done(); it->step()) {
        OvDbLayerTableRecord* rawLayer = nullptr;
        if (it->getRecord(rawLayer, OvDb::kForRead) != eOk)
            continue;
        Opened<OvDbLayerTableRecord> record(rawLayer);
        Layer layer;
        layer.name = nameOf(record.get());
        layer.colorIndex = record->color().colorIndex();
        layer.color = QColor::fromRgb(OvCmColor::rgbOfIndex(layer.colorIndex));
        layer.lineWeight = record->lineWeight();
        layer.inUse = record->isInUse();
        layer.current = record->objectId() == current;

        const OvDbObjectId linetypeId = record->linetypeObjectId();
        auto known = linetypes.find(linetypeId.stub());
        if (known == linetypes.end()) {
            std::pair<QString, std::vector<double>> look;
            if (auto linetype = openForRead<OvDbLinetypeTableRecord>(linetypeId)) {
                look.first = nameOf(linetype.get());
                look.second = linetype->dashes();
            }
            known = linetypes.insert(linetypeId.stub(), look);
        }
        layer.linetype = known->first;
        layer.dashes = known->second;

        if (auto dictionary = openForRead<OvDbDictionary>(record->extensionDictionary())) {
            OvDbObjectId xrecord;
            layer.wireRecord = dictionary->getAt(L"ZEL_WIRETYPE", xrecord) == eOk;
        }
        m_layerIds.push_back(record->objectId());
        m_layers.push_back(std::move(layer));
    }
}

void OvDrawingSnapshot::readModelSpace(OvDbDatabase* database) {
    for (std::size_t i = 0; i < m_layerIds.size(); ++i)
        m_layerOf.insert(m_layerIds[i].stub(), static_cast<int>(i));
    const auto indexOf = [&](const OvDbEntity* entity) {
        return m_layerOf.value(entity->layerId().stub(), 0);
    };

    auto space = openForRead<OvDbBlockTableRecord>(database->modelSpaceId());
    if (!space)
        return;
    OvDbBlockTableRecordIterator* rawIterator = nullptr;
    if (space->newIterator(rawIterator, true, true) != eOk)
        return;
    std::unique_ptr<OvDbBlockTableRecordIterator> it(rawIterator);
    space.reset();

    struct Insert {
        OvDbObjectId id;
        int layer;
    };
    std::vector<Insert> inserts;
    for (; !it->done(); it->step()) {
        OvDbEntity* raw = nullptr;
        if (it->getEntity(raw, OvDb::kForRead) != eOk)
            continue;
        Opened<OvDbEntity> entity(raw);
        if (auto* line = OvDbLine::cast(entity.get())) {
            const OvGePoint3d a = line->startPoint();
            const OvGePoint3d b = line->endPoint();
            m_segments.push_back({QLineF(a.x, a.y, b.x, b.y), indexOf(line), line->objectId()});
        } else if (OvDbBlockReference::cast(entity.get())) {
            inserts.push_back({entity->objectId(), indexOf(entity.get())});
        }
    }
    // References last: each opens its block, which must not happen while model space
    // entities are open.
    for (const Insert& insert : inserts)
        addBlockReference(insert.id, insert.layer);
}

void OvDrawingSnapshot::addBlockReference(OvDbObjectId referenceId, int layer) {
    struct Frame {
        OvDbObjectId block;
        QPointF offset;
        int layer;
        int depth;
    };
    std::vector<Frame> work;
    {
        auto reference = openForRead<OvDbBlockReference>(referenceId);
        if (!reference)
            return;
        const OvGePoint3d at = reference->position();
        work.push_back({reference->blockTableRecord(), QPointF(at.x, at.y), layer, 0});

        bool isWd_m = false;
        if (auto block = openForRead<OvDbBlockTableRecord>(reference->blockTableRecord()))
            isWd_m = nameOf(block.get()).compare(u"WD_M", Qt::CaseInsensitive) == 0;
        std::unique_ptr<OvDbObjectIterator> attributes(reference->attributeIterator());
        for (; attributes && !attributes->done(); attributes->step()) {
            auto attribute = openForRead<OvDbAttribute>(attributes->objectId());
            if (!attribute || attribute->isErased())
                continue;
            if (isWd_m && !m_hasWd_m &&
                attribute->tag().compare(u"WIRELAYS", Qt::CaseInsensitive) == 0) {
                m_hasWd_m = true;
                m_wireLayers = attribute->textString();
            }
            // The attributes of WD_M are the drawing's settings, not a part of the sheet:
            // they stay out of sight, as in the add-on's own drawings.
            if (isWd_m)
                continue;
            const OvGePoint3d p = attribute->position();
            m_texts.push_back({QPointF(p.x, p.y), attribute->textString(), layer, referenceId});
        }
    }

    // Lines of the block, and of blocks inside it; their layer "0" takes the layer of
    // the reference, as blocks are drawn in CAD.
    while (!work.empty()) {
        const Frame frame = work.back();
        work.pop_back();
        auto block = openForRead<OvDbBlockTableRecord>(frame.block);
        if (!block)
            continue;
        OvDbBlockTableRecordIterator* rawIterator = nullptr;
        if (block->newIterator(rawIterator, true, true) != eOk)
            continue;
        std::unique_ptr<OvDbBlockTableRecordIterator> it(rawIterator);
        block.reset();
        for (; !it->done(); it->step()) {
            OvDbEntity* raw = nullptr;
            if (it->getEntity(raw, OvDb::kForRead) != eOk)
                continue;
            Opened<OvDbEntity> entity(raw);
            int entityLayer = frame.layer;
            if (entity->layer().compare(u"0") != 0)
                entityLayer = m_layerOf.value(entity->layerId().stub(), frame.layer);
            if (auto* line = OvDbLine::cast(entity.get())) {
                const OvGePoint3d a = line->startPoint();
                const OvGePoint3d b = line->endPoint();
                m_segments.push_back(
                    {QLineF(QPointF(a.x, a.y) + frame.offset, QPointF(b.x, b.y) + frame.offset),
                     entityLayer, referenceId});
            } else if (auto* nested = OvDbBlockReference::cast(entity.get())) {
                if (frame.depth + 1 < kMaxBlockDepth) {
                    const OvGePoint3d at = nested->position();
                    work.push_back({nested->blockTableRecord(), frame.offset + QPointF(at.x, at.y),
                                    entityLayer, frame.depth + 1});
                }
            }
        }
    }
}

QStringList OvDrawingSnapshot::splitPatterns(const QString& list) {
    QStringList patterns;
    QString current;
    for (qsizetype i = 0; i < list.size(); ++i) {
        const QChar c = list.at(i);
        if (c == u'`' && i + 1 < list.size()) {
            current += c;
            current += list.at(++i);
        } else if (c == u',') {
            patterns << current;
            current.clear();
        } else {
            current += c;
        }
    }
    patterns << current;
    patterns.removeIf([](const QString& p) { return p.trimmed().isEmpty(); });
    return patterns;
}

void OvDrawingSnapshot::matchPatterns() {
    const QString list = m_wireLayers.trimmed();
    if (list.isEmpty())
        return;
    if (list.startsWith(u'~')) {
        // A negated list speaks for every layer at once: it has no alternatives that
        // could be idle on their own.
        for (Layer& layer : m_layers) {
            if (wcMatch(layer.name.toUpper(), list.toUpper()))
                layer.pattern = list;
        }
        return;
    }

    const QStringList patterns = splitPatterns(list);
    std::vector<bool> used(static_cast<std::size_t>(patterns.size()), false);
    // Plain patterns (the usual case: one per wire type) are found by key, so that ten
    // thousand layers against ten thousand patterns stays a hash look-up per layer.
    QMultiHash<QString, int> plain;
    std::vector<int> wild;
    for (int i = 0; i < patterns.size(); ++i) {
        const QString upper = patterns.at(i).toUpper();
        if (isWildcardFree(upper))
            plain.insert(dotKey(upper), i);
        else
            wild.push_back(i);
    }
    for (Layer& layer : m_layers) {
        const QString name = layer.name.toUpper();
        int first = std::numeric_limits<int>::max();
        for (auto it = plain.constFind(dotKey(name));
             it != plain.cend() && it.key() == dotKey(name); ++it) {
            if (wcMatch(name, patterns.at(it.value()).toUpper())) {
                used[static_cast<std::size_t>(it.value())] = true;
                first = std::min(first, it.value());
            }
        }
        for (const int i : wild) {
            if (wcMatch(name, patterns.at(i).toUpper())) {
                used[static_cast<std::size_t>(i)] = true;
                first = std::min(first, i);
            }
        }
        if (first != std::numeric_limits<int>::max())
            layer.pattern = patterns.at(first);
    }
    for (int i = 0; i < patterns.size(); ++i) {
        if (!used[static_cast<std::size_t>(i)])
            m_idlePatterns << patterns.at(i);
    }
}

QRectF OvDrawingSnapshot::textBounds(const Text& text) const {
    const double width = std::max<qsizetype>(1, text.text.size()) * kTextHeight * 0.8;
    return QRectF(text.position.x(), text.position.y(), width, kTextHeight);
}

void OvDrawingSnapshot::buildIndex() {
    const std::size_t count = m_segments.size() + m_texts.size();
    std::vector<QRectF> bounds;
    bounds.reserve(count);
    for (const Segment& s : m_segments)
        bounds.push_back(boundsOf(s.line));
    for (const Text& t : m_texts)
        bounds.push_back(textBounds(t));
    m_extents = QRectF();
    bool first = true;
    for (const QRectF& b : bounds) {
        if (first) {
            m_extents = b;
            first = false;
        } else {
            m_extents.setLeft(std::min(m_extents.left(), b.left()));
            m_extents.setTop(std::min(m_extents.top(), b.top()));
            m_extents.setRight(std::max(m_extents.right(), b.right()));
            m_extents.setBottom(std::max(m_extents.bottom(), b.bottom()));
        }
    }
    m_seen.assign(count, 0);
    m_stamp = 0;
    if (count == 0) {
        m_columns = m_rows = 0;
        m_cellStart.assign(1, 0);
        m_cellItems.clear();
        return;
    }
    // About four items a cell, in cells as square as the drawing allows.
    const double width = std::max(m_extents.width(), 1e-9);
    const double height = std::max(m_extents.height(), 1e-9);
    const double cells = std::max<double>(1.0, static_cast<double>(count) / 4.0);
    const double aspect = width / height;
    m_columns = std::clamp(static_cast<int>(std::ceil(std::sqrt(cells * aspect))), 1, 1024);
    m_rows = std::clamp(static_cast<int>(std::ceil(cells / m_columns)), 1, 1024);
    m_cellWidth = width / m_columns;
    m_cellHeight = height / m_rows;

    const auto cellRange = [&](const QRectF& b, int& c0, int& c1, int& r0, int& r1) {
        c0 = std::clamp(static_cast<int>((b.left() - m_extents.left()) / m_cellWidth), 0,
                        m_columns - 1);
        c1 = std::clamp(static_cast<int>((b.right() - m_extents.left()) / m_cellWidth), 0,
                        m_columns - 1);
        r0 =
            std::clamp(static_cast<int>((b.top() - m_extents.top()) / m_cellHeight), 0, m_rows - 1);
        r1 = std::clamp(static_cast<int>((b.bottom() - m_extents.top()) / m_cellHeight), 0,
                        m_rows - 1);
    };
    const std::size_t cellCount = static_cast<std::size_t>(m_columns) * m_rows;
    m_cellStart.assign(cellCount + 1, 0);
    for (const QRectF& b : bounds) {
        int c0, c1, r0, r1;
        cellRange(b, c0, c1, r0, r1);
        for (int r = r0; r <= r1; ++r)
            for (int c = c0; c <= c1; ++c)
                ++m_cellStart[static_cast<std::size_t>(r) * m_columns + c + 1];
    }
    for (std::size_t i = 1; i <= cellCount; ++i)
        m_cellStart[i] += m_cellStart[i - 1];
    m_cellItems.assign(m_cellStart[cellCount], 0);
    std::vector<std::uint32_t> fill(m_cellStart.begin(), m_cellStart.end() - 1);
    for (std::size_t item = 0; item < bounds.size(); ++item) {
        int c0, c1, r0, r1;
        cellRange(bounds[item], c0, c1, r0, r1);
        for (int r = r0; r <= r1; ++r)
            for (int c = c0; c <= c1; ++c)
                m_cellItems[fill[static_cast<std::size_t>(r) * m_columns + c]++] =
                    static_cast<std::uint32_t>(item);
    }
}

void OvDrawingSnapshot::query(const QRectF& area, std::vector<std::uint32_t>& segments,
                              std::vector<std::uint32_t>& texts) const {
    segments.clear();
    texts.clear();
    if (m_columns == 0 || !meets(area.normalized(), m_extents))
        return;
    if (++m_stamp == 0) { // wrapped: start the stamps afresh
        std::fill(m_seen.begin(), m_seen.end(), 0);
        m_stamp = 1;
    }
    const QRectF a = area.normalized();
    const int c0 =
        std::clamp(static_cast<int>((a.left() - m_extents.left()) / m_cellWidth), 0, m_columns - 1);
    const int c1 = std::clamp(static_cast<int>((a.right() - m_extents.left()) / m_cellWidth), 0,
                              m_columns - 1);
    const int r0 =
        std::clamp(static_cast<int>((a.top() - m_extents.top()) / m_cellHeight), 0, m_rows - 1);
    const int r1 =
        std::clamp(static_cast<int>((a.bottom() - m_extents.top()) / m_cellHeight), 0, m_rows - 1);
    const std::uint32_t segmentCount = static_cast<std::uint32_t>(m_segments.size());
    for (int r = r0; r <= r1; ++r) {
        for (int c = c0; c <= c1; ++c) {
            const std::size_t cell = static_cast<std::size_t>(r) * m_columns + c;
            for (std::uint32_t k = m_cellStart[cell]; k < m_cellStart[cell + 1]; ++k) {
                const std::uint32_t item = m_cellItems[k];
                if (m_seen[item] == m_stamp)
                    continue;
                m_seen[item] = m_stamp;
                if (item < segmentCount) {
                    if (meets(boundsOf(m_segments[item].line), a))
                        segments.push_back(item);
                } else if (meets(textBounds(m_texts[item - segmentCount]), a)) {
                    texts.push_back(item - segmentCount);
                }
            }
        }
    }
}

OvDbObjectId OvDrawingSnapshot::pick(const QPointF& point, double tolerance) const {
    std::vector<std::uint32_t> segments;
    std::vector<std::uint32_t> texts;
    const QRectF area(point.x() - tolerance, point.y() - tolerance, 2 * tolerance, 2 * tolerance);
    query(area, segments, texts);
    OvDbObjectId best;
    double bestDistance = tolerance;
    for (const std::uint32_t i : segments) {
        const double d = distanceToSegment(point, m_segments[i].line);
        if (d <= bestDistance) {
            bestDistance = d;
            best = m_segments[i].entity;
        }
    }
    if (best.isNull()) {
        for (const std::uint32_t i : texts) {
            if (textBounds(m_texts[i])
                    .adjusted(-tolerance, -tolerance, tolerance, tolerance)
                    .contains(point))
                return m_texts[i].entity;
        }
    }
    return best;
}
