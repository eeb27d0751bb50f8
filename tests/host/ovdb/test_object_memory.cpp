// The memory of a drawing's objects: made and freed in any order, of any size, and freed on
// another thread than the one that made them, objects keep what they hold. Their places are
// handed from a freed object to the next one of its size.

#include "OvdbTest.h"

#include <set>
#include <thread>
#include <utility>
#include <vector>

namespace {

OvDbLine* lineAt(int i) {
    return new OvDbLine(OvGePoint3d(i, 0, 0), OvGePoint3d(i, 1, 0));
}

TEST(ObjectMemory, ObjectsMadeAndFreedInAnyOrderKeepWhatTheyHold) {
    constexpr int kCount = 20000;
    std::vector<OvDbLine*> lines;
    for (int i = 0; i < kCount; ++i)
        lines.push_back(lineAt(i));
    for (int i = 0; i < kCount; i += 2)
        delete std::exchange(lines[static_cast<std::size_t>(i)], nullptr);
    // Another size between lines of the first, then lines again in the places freed.
    std::vector<OvDbLayerTableRecord*> layers;
    for (int i = 0; i < kCount / 2; ++i) {
        layers.push_back(new OvDbLayerTableRecord);
        ASSERT_EQ(layers.back()->setName(QStringLiteral("L%1").arg(i)), Orvex::eOk);
    }
    for (int i = 0; i < kCount; i += 2)
        lines[static_cast<std::size_t>(i)] = lineAt(i);
    // Freed by another thread, then made again here.
    std::thread([&] {
        for (int i = 1; i < kCount; i += 4)
            delete std::exchange(lines[static_cast<std::size_t>(i)], nullptr);
    }).join();
    for (int i = 1; i < kCount; i += 4)
        lines[static_cast<std::size_t>(i)] = lineAt(i);

    std::set<const void*> places;
    for (int i = 0; i < kCount; ++i) {
        const OvDbLine* line = lines[static_cast<std::size_t>(i)];
        ASSERT_EQ(line->startPoint().x, i);
        ASSERT_EQ(line->endPoint().y, 1);
        places.insert(line);
    }
    for (int i = 0; i < kCount / 2; ++i) {
        ASSERT_EQ(layers[static_cast<std::size_t>(i)]->name(), QStringLiteral("L%1").arg(i));
        places.insert(layers[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ(places.size(), lines.size() + layers.size()) << "two objects share a place";
    for (OvDbLine* line : lines)
        delete line;
    for (OvDbLayerTableRecord* layer : layers)
        delete layer;
}

} // namespace
