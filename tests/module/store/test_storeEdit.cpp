// Adding and editing wire types, the commit of a grid, the bridge to the layer table, and
// an index error on its way to the host.

#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"

#include "ovdb/ovdb.h"

#include <memory>

namespace {

using StoreTest = ZelTestHost;

// The store's protected operations, for the tests that drive them directly.
class TestStore : public ZelWireTypeRec {
public:
    using ZelWireTypeRec::SetWireTypeXrec;
};

// A grid's working copy of the store's records, each in the state given.
struct Commit {
    std::map<int, std::unique_ptr<WireLayerRec>> owned;
    std::map<int, WireLayerRec*> records;

    WireLayerRec* row(int key, const WireLayerRec& from, int state) {
        owned[key] = std::make_unique<WireLayerRec>(from);
        owned[key]->editState = state;
        return records[key] = owned[key].get();
    }
    WireLayerRec* newRow(const QString& name, int state) {
        WireLayerRec rec;
        rec.layerName = name;
        rec.wireKind = "WIRE";
        rec.userValues.resize(20);
        return row(static_cast<int>(ZelWireTypeRec::GetNextKey()), rec, state);
    }
};

// How the properties are named and written is the LISP add's part; here an ordinary layer
// takes the new look, keeps its lines and leaves the non-wire list.
TEST_F(StoreTest, AnOrdinaryLayerBecomesAWireLayerAndTheFlagIsReadAsANumber) {
    OvDbDatabase* database = makeDrawing({"PLAIN"}, QString());
    ZelTestDrawing::addLine(database, "PLAIN");
    ZelWireTypeRec store;
    std::vector<QString> colorOnly{"Wire Color"};
    std::vector<QString> blue{"BLU"};
    OvCmColor red;
    red.setColorIndex(1);
    ASSERT_EQ(store.AddNewWireType(0, "PLAIN", colorOnly, blue, "", "", "WIRE", red, OvDbObjectId(),
                                   OvDb::kLnWt025, 4, true),
              Orvex::eOk);
    std::vector<QString> nonWire;
    store.GetNonWireLayers(nonWire);
    EXPECT_EQ(nonWire, std::vector<QString>({"0"}));
    EXPECT_EQ(wireLays(), "PLA*");
    EXPECT_EQ(store.GetWireCount("PLAIN"), 1);

    ZelWireTypeRec reread;
    const WireLayerRec* rec = record(reread, "PLAIN");
    EXPECT_EQ(rec->wireColor, "BLU");
    EXPECT_EQ(rec->gridRow, 4);
    EXPECT_EQ(rec->lineWeight, OvDb::kLnWt025);
    EXPECT_EQ(rec->color.colorIndex(), 1);

    // The flag is a number at the start of its text.
    std::vector<QString> flag{"Wire Flag"};
    for (const auto& [value, expected] :
         {std::pair{"1", true}, {"2", true}, {" 7x", true}, {"yes", false}, {"-0", false}}) {
        SCOPED_TRACE(value);
        const QString name = QStringLiteral("F_%1").arg(QString::fromLatin1(value).trimmed());
        ASSERT_EQ(addWireType(store, name, flag, {value}), Orvex::eOk);
        EXPECT_EQ(record(store, name)->wireFlag, expected);
    }
}

TEST_F(StoreTest, EditTakesOverOnlyRealChanges) {
    makeDrawing({"W1", "W2", "W3"}, QStringLiteral("W*"));
    ZelWireTypeRec store;
    std::vector<QString> none;
    std::vector<QString> values{"v1"};
    auto edit = [&](const QString& name, const QString& color, long key) {
        return store.EditWireType(name, color, "2.5", none, values, "WIRE", OvCmColor(),
                                  OvDbObjectId(), OvDb::kLnWtByLwDefault, 9, key, false);
    };
    ASSERT_EQ(edit("W1", "RED", 1), Orvex::eOk);
    // A change of case alone is lost, for the colour text and for the layer name.
    ASSERT_EQ(edit("w1", "red", 1), Orvex::eOk);
    EXPECT_EQ(record(store, "W1")->layerName, "W1");
    EXPECT_EQ(record(store, "W1")->wireColor, "RED");

    // Without a key the name only has to exist: the data go to the last record, renamed.
    ASSERT_EQ(edit("W2", "BLU", 0), Orvex::eOk);
    EXPECT_EQ(store.GetCurDwgWireTypeInfo().at(3)->layerName, "W2");
    EXPECT_EQ(store.GetCurDwgWireTypeInfo().at(3)->wireColor, "BLU");

    EXPECT_EQ(edit("NONE", "X", 0), Orvex::eKeyNotFound);
    EXPECT_EQ(edit("W1", "X", 99), Orvex::eKeyNotFound);
    EXPECT_EQ(edit("", "X", 1), Orvex::eEmptyLayerName);
    EXPECT_EQ(edit("W=1", "X", 1), Orvex::eInvalidLayerName);
}

TEST_F(StoreTest, ACommitAppliesEveryRowInKeyOrder) {
    OvDbDatabase* database =
        makeDrawing({"W_EDIT", "W_DEL", "W_CONV", "W_USED"}, QStringLiteral("W_E*,W_D*,W_C*,W_U*"));
    ZelTestDrawing::addLine(database, "W_USED");
    ZelWireTypeRec store;
    const auto& stored = store.GetCurDwgWireTypeInfo();
    ASSERT_EQ(stored.size(), 4u);

    Commit commit;
    commit.row(1, *stored.at(1), 1)->wireColor = "BLUE";
    commit.row(2, *stored.at(2), 2);
    commit.row(3, *stored.at(3), 6);
    commit.row(4, *stored.at(4), 2);
    WireLayerRec* added = commit.newRow("NEW_ONE", 5);
    commit.newRow("GONE_AGAIN", 2);

    long key = 0;
    EXPECT_EQ(store.UpdateWireTypeRec(commit.records, key), Orvex::eOk);
    EXPECT_EQ(key, 6);
    EXPECT_EQ(added->editState, 0);
    EXPECT_EQ(wireLays(), "W_E*,W_U*,NEW*");
    EXPECT_FALSE(layerId(database, "W_DEL").isValid());
    EXPECT_TRUE(layerId(database, "W_CONV").isValid());
    EXPECT_TRUE(layerId(database, "W_USED").isValid()) << "in use: message 143, and on";
    EXPECT_EQ(messages().shownTexts(), std::vector<QString>{moduleString(143)});
    EXPECT_FALSE(layerId(database, "GONE_AGAIN").isValid());

    ZelWireTypeRec reread;
    EXPECT_EQ(layerNames(reread.GetCurDwgWireTypeInfo()),
              QStringList({"W_EDIT", "W_USED", "NEW_ONE"}));
    EXPECT_EQ(record(reread, "W_EDIT")->wireColor, "BLUE");

    // makeAllValidWire blanks the list at the start of a commit.
    reread.SetCurWireLayerXrec("W_EDIT", "W_EDIT", "", true);
    Commit unchanged;
    const auto& [firstKey, first] = *reread.GetCurDwgWireTypeInfo().begin();
    unchanged.row(firstKey, *first, 0);
    EXPECT_EQ(reread.UpdateWireTypeRec(unchanged.records, key), Orvex::eOk);
    EXPECT_TRUE(wireLays().isEmpty());
}

TEST_F(StoreTest, ARefusedRowEndsTheCommitAndNamesItsKey) {
    OvDbDatabase* database = makeDrawing({}, QString());
    ZelWireTypeRec store;
    long key = 0;
    const auto commitRows = [&](const QStringList& names) {
        Commit commit;
        for (const QString& name : names)
            commit.newRow(name, 5);
        return store.UpdateWireTypeRec(commit.records, key);
    };
    EXPECT_EQ(commitRows({"GOOD", "", "LATER"}), Orvex::eInvalidLayerName);
    EXPECT_EQ(key, 2);
    EXPECT_TRUE(layerId(database, "GOOD").isValid()) << "no transaction";
    EXPECT_FALSE(layerId(database, "LATER").isValid());
    EXPECT_EQ(commitRows({"good"}), Orvex::eInvalidLayerName);
    EXPECT_EQ(commitRows({"A;B"}), Orvex::eInvalidLayerName);
    EXPECT_EQ(messages().shownTexts(),
              std::vector<QString>({moduleString(147), moduleString(142), moduleString(146)}));
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
    WireLayerRec rec;
    rec.layerName = "old";
    rec.lineWeight = OvDb::kLnWt025;
    EXPECT_EQ(store.AddNewLayer(&rec), Orvex::eOk);
    EXPECT_FALSE(dictionaryId.isErased());
    EXPECT_EQ(store.GetWireCount("old"), 1) << "the layer keeps its lines";

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

    rec.layerName = "A<B";
    EXPECT_EQ(store.AddNewLayer(&rec), Orvex::eInvalidLayerName) << "the host refuses the name";
}

// Renaming and a current layer found by name are what the LISP functions and the dialogs
// run; here the two odd answers of the walk.
TEST_F(StoreTest, TheCurrentLayerOnAMissAndWhenItIsBusy) {
    OvDbDatabase* database = makeDrawing({"A", "B", "LAST"});
    ZelWireTypeRec store;
    // The id comes from whatever record the walk left open: a missing name takes the last.
    EXPECT_TRUE(store.SetCurrentLayer(QStringLiteral("MISSING")));
    EXPECT_EQ(clayerName(database), "LAST");

    // A current layer that will not open for read still answers true, the name untouched.
    OvDbLayerTableRecord* busy = nullptr;
    ASSERT_EQ(ovdbOpenObject(busy, database->clayer(), OvDb::kForWrite), Orvex::eOk);
    OvDbObjectId id;
    QString name = "kept";
    EXPECT_TRUE(store.GetCurrentLayer(id, name));
    EXPECT_EQ(name, "kept");
    busy->close();
}

TEST_F(StoreTest, RecordsAndTheNonWireList) {
    OvDbDatabase* database = makeDrawing({"PLAIN"});
    TestStore store;
    addWireType(store, "X");
    // Removing a record keeps the layer's emptied dictionary; a converted layer gets none.
    const auto dictionaryOf = [&](const QString& layer) {
        OvDbLayerTableRecord* record = nullptr;
        EXPECT_EQ(ovdbOpenObject(record, layerId(database, layer), OvDb::kForRead), Orvex::eOk);
        const OvDbObjectId id = record->extensionDictionary();
        record->close();
        return id;
    };
    store.RemoveWireTypeXrec("x");
    EXPECT_TRUE(dictionaryOf("X").isValid() && !dictionaryOf("X").isErased());
    WireLayerRec converted;
    converted.layerName = "PLAIN";
    converted.editState = 6;
    EXPECT_TRUE(store.SetWireTypeXrec(&converted));
    EXPECT_TRUE(dictionaryOf("PLAIN").isNull());

    for (const char* other : {"a1", "A2", "B", "a1"})
        store.AddToNonWireLayers(other);
    std::vector<QString> names{"kept"};
    store.GetNonWireLayers("A*", names);
    EXPECT_EQ(names, std::vector<QString>({"kept", "a1", "A2"})) << "upper-cased copies match";
    // The name after a removed one slides into its place and is not examined this pass.
    store.RemoveFrmNonWireLayers("a*");
    store.GetNonWireLayers(names);
    EXPECT_EQ(names, std::vector<QString>({"0", "PLAIN", "A2", "B"}));
}

} // namespace
