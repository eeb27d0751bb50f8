// The load that sorts a drawing's layers, and the default wire type.

#include "StoreTest.h"

#include "shell/ResourceOverride.h"

TEST_F(StoreTest, EveryLayerFallsIntoOneOfFourClasses) {
    OvDbDatabase* database =
        makeDrawing({"REC", "LISTED", "PLAIN", "IT'S"}, QStringLiteral("LIS*"));
    ZelTestDrawing::addLine(database, "LISTED");
    resbuf* chain = ovutBuildList(1, L"RED", 2, L"1.5", 3, L"WIRE", 0);
    ZelTestDrawing::setExtensionRecord(layerId(database, "REC"), "ZEL_WIRETYPE", chain);
    ovutRelRb(chain);

    ZelWireTypeRec store;
    EXPECT_EQ(layerNames(store.GetCurDwgWireTypeInfo()), QStringList({"REC", "LISTED"}));
    std::vector<QString> nonWire;
    store.GetNonWireLayers(nonWire);
    // A name with a character no wire type may have is in neither.
    EXPECT_EQ(nonWire, std::vector<QString>({"0", "PLAIN"}));

    const WireLayerRec* listed = record(store, "LISTED");
    EXPECT_EQ(listed->wireKind, "WIRE");
    EXPECT_TRUE(listed->userValues.empty()) << "the grid marks it edited and a commit writes it";
    EXPECT_TRUE(listed->wireFlag);
    EXPECT_EQ(listed->inUseMark, "X");
    EXPECT_EQ(listed->color.colorIndex(), 7);
    EXPECT_EQ(record(store, "REC")->wireColor, "RED");
    EXPECT_TRUE(record(store, "REC")->inUseMark.isEmpty());
    EXPECT_TRUE(store.IsWireLayer("rec"));
    EXPECT_FALSE(store.IsWireLayer("PLAIN"));
}

TEST_F(StoreTest, MakeAllValidWireTakesEveryLayerOfTheWorkingDrawing) {
    OvDbDatabase* other = makeDrawing({"A", "B"}, QString(), "other.dwg");
    makeDrawing({"A", "B"}, QString());
    ZelWireTypeRec store;
    store.SetCurWireLayerXrec("A", "A", "", true);
    EXPECT_EQ(layerNames(store.GetCurDwgWireTypeInfo()), QStringList({"0", "A", "B"}));
    std::vector<QString> nonWire;
    store.GetNonWireLayers(nonWire);
    EXPECT_TRUE(nonWire.empty());

    // Another drawing in the same state has none by its list.
    std::map<int, WireLayerRec*> records;
    EXPECT_TRUE(store.GetDwgWireTypeInfo("other.dwg", other, records));
    EXPECT_TRUE(records.empty());
    store.GetNonWireLayers(nonWire);
    EXPECT_EQ(nonWire.size(), 3u) << "the list now holds the other drawing's names";
}

TEST_F(StoreTest, ALoadIntoAFilledMapStopsAtTheFirstLayerItHolds) {
    OvDbDatabase* database = makeDrawing({"A", "B", "C"}, QStringLiteral("A*,B*,C*"));
    ZelWireTypeRec store;
    std::map<int, WireLayerRec*> records;
    auto* held = new WireLayerRec;
    held->layerName = "b";
    records[100] = held;
    ASSERT_TRUE(store.GetDwgWireTypeInfo(QString(), database, records));
    EXPECT_EQ(layerNames(records), QStringList({"A", "b"}));
    for (auto& entry : records)
        delete entry.second;
}

TEST_F(StoreTest, OnlyAnEmptyMapIsLoadedAgain) {
    OvDbDatabase* database = makeDrawing({}, QStringLiteral("W*"));
    ZelWireTypeRec store;
    EXPECT_TRUE(store.GetCurDwgWireTypeInfo().empty());
    ZelTestDrawing::addLayer(database, "W1");
    EXPECT_EQ(store.GetCurDwgWireTypeInfo().size(), 1u) << "an empty map is walked again";
    ZelTestDrawing::addLayer(database, "W2");
    EXPECT_EQ(store.GetCurDwgWireTypeInfo().size(), 1u) << "a loaded map is never reloaded";
}

TEST_F(StoreTest, TheDefaultWireTypeIsMadeOnceAndOnlyWithTheModulesResources) {
    OvDbDatabase* database = makeDrawing({}, QString());
    {
        // Outside a resource switch the name of string 110 comes back empty.
        ZelWireTypeRec store;
        QString name;
        EXPECT_FALSE(store.GetFirstWireLayer(name));
        EXPECT_FALSE(database->isModified());
    }
    const ResourceOverride resources;
    QString first;
    {
        ZelWireTypeRec store;
        ASSERT_TRUE(store.GetFirstWireLayer(first));
        EXPECT_EQ(first, "WIRES");
        EXPECT_TRUE(layerId(database, first).isValid());
        EXPECT_EQ(wireLays(), "WIR*");
        EXPECT_EQ(output().count(first), 1) << output().toStdString();
    }
    clearOutput();
    ZelWireTypeRec store;
    QString again;
    ASSERT_TRUE(store.GetFirstWireLayer(again));
    EXPECT_EQ(again, first);
    EXPECT_TRUE(output().isEmpty());
}

TEST_F(StoreTest, AssigningAndResettingTheDefaultWireType) {
    OvDbDatabase* database = makeDrawing({"W1", "W2"}, QStringLiteral("W*"));
    ZelWireTypeRec store;
    resbuf* chain = nullptr;
    ASSERT_TRUE(store.AssignDefaultWireType(chain));
    EXPECT_EQ(ovcore::lisp::toLispNotation(chain),
              "((1 . \"W1\") (1 . \"W1\") (1 . \"\") (290 . 0))");
    ovutRelRb(chain);

    // A default layer that is gone gives way to the first wire layer, for both names.
    ASSERT_TRUE(store.SetCurWireLayerXrec("GONE", "W2", "%C", true));
    EXPECT_TRUE(store.ResetToDefWireType());
    EXPECT_EQ(currentRecord(database), "((1 . \"W1\") (1 . \"W1\") (1 . \"%C\") (290 . 1))");
}
