// The bridge to the layer table and the list of non-wire layers.

#include "StoreTest.h"

TEST_F(StoreTest, TheLayerWalkIgnoresCaseAndTheCallerClosesWhatItLeavesOpen) {
    makeDrawing({"WIRE_RED", "LAST"});
    ZelWireTypeRec store;
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_TRUE(store.GetLayerTblRec("wire_red", OvDb::kForWrite, layer));
    EXPECT_EQ(layer->name(), "WIRE_RED");
    EXPECT_TRUE(layer->isWriteEnabled());
    layer->close();

    // No match: the last layer visited is still open, and closing it is the caller's part.
    EXPECT_FALSE(store.GetLayerTblRec("MISSING", OvDb::kForRead, layer));
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(layer->name(), "LAST");
    EXPECT_EQ(ovdbOpenObjectCount(), 1u);
    layer->close();
}

TEST_F(StoreTest, AddNewLayerMakesANewLayerOrTakesUpAnExistingOne) {
    OvDbDatabase* database = makeDrawing({"OLD"});
    ZelTestDrawing::addLine(database, "OLD");
    // An extension dictionary that was erased comes back.
    resbuf* data = ovutBuildList(1, L"x", 0);
    ZelTestDrawing::setExtensionRecord(layerId(database, "OLD"), "OTHER", data);
    ovutRelRb(data);
    OvDbLayerTableRecord* old = nullptr;
    ASSERT_EQ(ovdbOpenObject(old, layerId(database, "OLD"), OvDb::kForRead), Orvex::eOk);
    const OvDbObjectId dictionaryId = old->extensionDictionary();
    old->close();
    OvDbObject* dictionary = nullptr;
    ASSERT_EQ(ovdbOpenObject(dictionary, dictionaryId, OvDb::kForWrite), Orvex::eOk);
    dictionary->erase();
    dictionary->close();

    ZelWireTypeRec store;
    store.AddToNonWireLayers("OLD");
    WireLayerRec rec;
    rec.layerName = "old";
    rec.lineWeight = OvDb::kLnWt025;
    EXPECT_EQ(store.AddNewLayer(&rec), Orvex::eOk);
    EXPECT_FALSE(dictionaryId.isErased());
    EXPECT_EQ(store.GetWireCount("old"), 1) << "the layer keeps its lines";
    std::vector<QString> nonWire;
    store.GetNonWireLayers(nonWire);
    EXPECT_TRUE(nonWire.empty());

    rec.layerName = "NEW";
    ASSERT_EQ(store.AddNewLayer(&rec), Orvex::eOk);
    OvCmColor color;
    OvDbObjectId linetype;
    OvDb::LineWeight weight = OvDb::kLnWt000;
    bool inUse = true;
    ASSERT_TRUE(store.GetLayerInfo("new", database, color, linetype, weight, inUse));
    EXPECT_EQ(linetype, database->continuousLinetype()) << "a null linetype means continuous";
    EXPECT_EQ(weight, OvDb::kLnWt025);
    EXPECT_FALSE(inUse);
    EXPECT_FALSE(store.GetLayerInfo("MISSING", database, color, linetype, weight, inUse));

    rec.layerName = "A<B";
    EXPECT_EQ(store.AddNewLayer(&rec), Orvex::eInvalidLayerName) << "the host refuses the name";
    EXPECT_FALSE(layerId(database, "A<B").isValid());
}

TEST_F(StoreTest, ALayerInUseIsNotDeleted) {
    OvDbDatabase* database = makeDrawing({"USED", "FREE"});
    ZelTestDrawing::addLine(database, "USED");
    ZelWireTypeRec store;
    store.GetCurDwgWireTypeInfo(); // the load generates the usage data

    EXPECT_FALSE(store.DeleteLayer(L"used", true));
    ASSERT_EQ(messages().shownTexts().size(), 1u);
    EXPECT_FALSE(messages().shownTexts().front().isEmpty()) << "message 143 from the resources";
    EXPECT_TRUE(layerId(database, "USED").isValid());

    EXPECT_TRUE(store.DeleteLayer(L"FREE", false)) << "only a question";
    EXPECT_TRUE(layerId(database, "FREE").isValid());
    EXPECT_TRUE(store.DeleteLayer(L"FREE", true));
    EXPECT_FALSE(layerId(database, "FREE").isValid());
    EXPECT_FALSE(store.DeleteLayer(L"FREE", true));
}

TEST_F(StoreTest, RenameAndTheCurrentLayer) {
    OvDbDatabase* database = makeDrawing({"A", "B", "LAST"});
    ZelWireTypeRec store;
    EXPECT_TRUE(store.RenameLayer(L"a", L"A2"));
    EXPECT_TRUE(layerId(database, "A2").isValid());
    EXPECT_TRUE(store.RenameLayer(L"MISSING", L"X"));

    EXPECT_TRUE(store.SetCurrentLayer(QStringLiteral("b")));
    OvDbObjectId id;
    QString name;
    ASSERT_TRUE(store.GetCurrentLayer(id, name));
    EXPECT_EQ(name, "B");
    EXPECT_EQ(id, layerId(database, "B"));

    // The id comes from whatever record the walk left open: a missing name takes the last.
    EXPECT_TRUE(store.SetCurrentLayer(QStringLiteral("MISSING")));
    EXPECT_EQ(database->clayer(), layerId(database, "LAST"));
    EXPECT_FALSE(store.SetCurrentLayer(OvDbObjectId()));

    // A current layer that will not open for read still answers true, the name untouched.
    OvDbLayerTableRecord* busy = nullptr;
    ASSERT_EQ(ovdbOpenObject(busy, database->clayer(), OvDb::kForWrite), Orvex::eOk);
    name = "kept";
    EXPECT_TRUE(store.GetCurrentLayer(id, name));
    EXPECT_EQ(name, "kept");
    busy->close();
}

TEST_F(StoreTest, LayerNameRulesAndTheNonWireList) {
    makeDrawing({});
    TestStore store;
    QString name = "A/B*C";
    store.FilterInvalidLayerName(name);
    EXPECT_EQ(name, "ABC");
    EXPECT_EQ(store.ValidateLayerName("A|B"), Orvex::eInvalidLayerName);

    addWireType(store, "X", {}, {}, 5);
    EXPECT_FALSE(store.CheckDuplicateLayerName(5, "x")) << "a record is no duplicate of itself";
    EXPECT_TRUE(store.CheckDuplicateLayerName(6, "x"));

    for (const char* other : {"a1", "A2", "B", "a1"})
        store.AddToNonWireLayers(other);
    std::vector<QString> names{"kept"};
    store.GetNonWireLayers("A*", names);
    EXPECT_EQ(names, std::vector<QString>({"kept", "a1", "A2"})) << "upper-cased copies match";
    // The name after a removed one slides into its place and is not examined this pass.
    store.RemoveFrmNonWireLayers("a*");
    store.GetNonWireLayers(names);
    EXPECT_EQ(names, std::vector<QString>({"0", "A2", "B"})) << "\"0\" from the load";
}
