// What the windows read of a drawing: layers with their wire data and WIRELAYS patterns,
// lines of model space and of blocks, and the grid that finds them again for a redraw or
// a pick.

#include "OvDrawingSnapshot.h"

#include "../../ovdb/OvdbBuild.h"

#include "ovdb/ovdb.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using Orvex::eOk;

class DrawingSnapshot : public ::testing::Test {
protected:
    OvDbObjectId addLayer(const wchar_t* name, int color, bool wireRecord = false) {
        const OvDbObjectId id = ovdbtest::addLayer(db, QString::fromWCharArray(name), color);
        if (wireRecord) {
            OvDbObject* layer = nullptr;
            EXPECT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
            layer->createExtensionDictionary();
            OvDbDictionary* dict = nullptr;
            ovdbOpenObject(dict, layer->extensionDictionary(), OvDb::kForWrite);
            layer->close();
            auto* xrec = new OvDbXrecord();
            OvDbObjectId xid;
            dict->setAt(L"ZEL_WIRETYPE", xrec, xid);
            xrec->close();
            dict->close();
        }
        return id;
    }

    OvDbObjectId addLine(OvDbObjectId block, double x1, double y1, double x2, double y2,
                         OvDbObjectId layer) {
        return ovdbtest::addLine(db, OvGePoint3d(x1, y1, 0), OvGePoint3d(x2, y2, 0), layer, block);
    }

    OvDbObjectId insert(OvDbObjectId block, double x, double y, OvDbObjectId layer,
                        const QString& tag = {}, const QString& text = {}) {
        ovdbtest::Attributes attributes;
        if (!tag.isEmpty())
            attributes.append({tag, text});
        return ovdbtest::addReference(db, block, OvGePoint3d(x, y, 0), attributes, layer);
    }

    static const OvDrawingSnapshot::Layer& layer(const OvDrawingSnapshot& s, const QString& name) {
        const int i = s.layerIndex(name);
        EXPECT_GE(i, 0) << name.toStdString();
        return s.layers().at(static_cast<std::size_t>(std::max(i, 0)));
    }

    OvDbDatabase db;
};

TEST_F(DrawingSnapshot, LayersCarryTheirLookWireDataAndTheFirstPatternThatCatchesThem) {
    const OvDbObjectId red = addLayer(L"RD_1.5", 1, true);
    addLayer(L"RD_1_5", 1);
    addLayer(L"bu_0.75", 5);
    addLayer(L"BK_2", 7, true);
    addLayer(L"P#1", 3);
    addLine(db.modelSpaceId(), 0, 0, 10, 0, red);
    // '.' catches any non-alphanumeric character, so RD_1.5 also catches RD_1_5; BU* catches
    // its layer without regard to case; "P`#1" escapes its wildcard; two
    // patterns catch nothing.
    insert(ovdbtest::addBlock(db, "WD_M"), 0, -20, OvDbObjectId(), "WIRELAYS",
           "RD_1.5,BU*,ZZ*,P`#1,GN_4");

    const OvDrawingSnapshot s(&db);
    EXPECT_TRUE(s.hasWireLayerList());
    EXPECT_EQ(layer(s, "RD_1.5").pattern, "RD_1.5");
    EXPECT_TRUE(layer(s, "RD_1.5").wireRecord);
    EXPECT_TRUE(layer(s, "RD_1.5").inUse);
    EXPECT_EQ(layer(s, "RD_1_5").pattern, "RD_1.5");
    EXPECT_EQ(layer(s, "bu_0.75").pattern, "BU*");
    EXPECT_EQ(layer(s, "P#1").pattern, "P`#1");
    EXPECT_TRUE(layer(s, "BK_2").pattern.isEmpty());
    EXPECT_TRUE(layer(s, "BK_2").wireRecord);
    EXPECT_FALSE(layer(s, "BK_2").inUse);
    EXPECT_EQ(layer(s, "bu_0.75").color.rgb(), OvCmColor::rgbOfIndex(5));
    EXPECT_EQ(s.idlePatterns(), (QStringList{"ZZ*", "GN_4"}));
}

TEST_F(DrawingSnapshot, NegatedListsAndDrawingsWithoutWd_mHaveNoIdlePatterns) {
    addLayer(L"RD_1", 1);
    {
        const OvDrawingSnapshot s(&db);
        EXPECT_FALSE(s.hasWireLayerList());
        EXPECT_TRUE(s.idlePatterns().isEmpty());
    }
    insert(ovdbtest::addBlock(db, "WD_M"), 0, 0, OvDbObjectId(), "WIRELAYS", "~RD*");
    const OvDrawingSnapshot s(&db);
    EXPECT_TRUE(layer(s, "RD_1").pattern.isEmpty());
    EXPECT_EQ(layer(s, "0").pattern, "~RD*");
    EXPECT_TRUE(s.idlePatterns().isEmpty());
}

TEST_F(DrawingSnapshot, BlockLinesAreDrawnAtTheReferenceOnItsLayerAndPickTheReference) {
    const OvDbObjectId red = addLayer(L"RED", 1);
    const OvDbObjectId blue = addLayer(L"BLUE", 5);
    const OvDbObjectId symbol = ovdbtest::addBlock(db, "SYMBOL");
    // On layer 0, a new drawing's current layer, a line takes the reference's; BLUE stays.
    addLine(symbol, 0, 0, 4, 0, OvDbObjectId());
    addLine(symbol, 0, 0, 0, 4, blue);
    const OvDbObjectId reference = insert(symbol, 100, 50, red, "TAG", "K1");

    const OvDrawingSnapshot s(&db);
    ASSERT_EQ(s.segments().size(), 2u);
    std::set<std::pair<int, double>> drawn;
    for (const auto& segment : s.segments()) {
        EXPECT_EQ(segment.entity, reference);
        drawn.insert({segment.layer, segment.line.x2() + segment.line.y2()});
    }
    EXPECT_TRUE(drawn.count({s.layerIndex("RED"), 104.0 + 50.0}));
    EXPECT_TRUE(drawn.count({s.layerIndex("BLUE"), 100.0 + 54.0}));
    ASSERT_EQ(s.texts().size(), 1u);
    EXPECT_EQ(s.texts().front().text, "K1");
    EXPECT_EQ(s.pick(QPointF(102, 50.2), 0.5), reference);
}

TEST_F(DrawingSnapshot, TheGridFindsEachItemOnceAndPicksTheNearestLine) {
    const OvDbObjectId layerId = addLayer(L"W", 2);
    // A grid of short lines, and one long line across all of them.
    std::vector<OvDbObjectId> shortLines;
    for (int i = 0; i < 40; ++i)
        for (int j = 0; j < 40; ++j)
            shortLines.push_back(
                addLine(db.modelSpaceId(), i * 10.0, j * 10.0, i * 10.0 + 5, j * 10.0, layerId));
    const OvDbObjectId across = addLine(db.modelSpaceId(), -5, 3, 400, 3, layerId);

    const OvDrawingSnapshot s(&db);
    std::vector<std::uint32_t> segments, texts;
    s.query(s.extents(), segments, texts);
    EXPECT_EQ(segments.size(), shortLines.size() + 1);
    EXPECT_EQ(std::set<std::uint32_t>(segments.begin(), segments.end()).size(), segments.size());

    // A window over a corner finds the lines there, the long one among them, and no more.
    s.query(QRectF(-1, -1, 17, 7), segments, texts);
    std::set<OvDbObjectId> found;
    for (const std::uint32_t i : segments)
        found.insert(s.segments()[i].entity);
    EXPECT_EQ(found, (std::set<OvDbObjectId>{shortLines[0], shortLines[40], across}));

    EXPECT_EQ(s.pick(QPointF(12, 0.4), 1.0), shortLines[40]);
    EXPECT_EQ(s.pick(QPointF(12, 2.5), 1.0), across);
    EXPECT_TRUE(s.pick(QPointF(12, 6.5), 1.0).isNull());
    EXPECT_TRUE(s.pick(QPointF(1000, 1000), 1.0).isNull());
}

TEST_F(DrawingSnapshot, SplitsPatternListsAtUnescapedCommas) {
    EXPECT_EQ(OvDrawingSnapshot::splitPatterns("A*,B`,C,,D "), (QStringList{"A*", "B`,C", "D "}));
    EXPECT_TRUE(OvDrawingSnapshot::splitPatterns(QString()).isEmpty());
}

} // namespace
