// Adding and editing wire types, the commit of a grid, and the reads for the LISP side.

#include "StoreTest.h"

#include "ovcore/oved.h"

#include <memory>

namespace {

// A grid's working copy of the store's records, each in the state given.
struct Commit {
    std::map<int, std::unique_ptr<WireLayerRec>> owned;
    std::map<int, WireLayerRec*> records;

    WireLayerRec* row(int key, const WireLayerRec& from, int state) {
        owned[key] = std::make_unique<WireLayerRec>(from);
        owned[key]->editState = state;
        records[key] = owned[key].get();
        return owned[key].get();
    }
    WireLayerRec* newRow(const QString& name, int state) {
        WireLayerRec rec;
        rec.layerName = name;
        rec.wireKind = "WIRE";
        rec.userValues.resize(20);
        return row(static_cast<int>(ZelWireTypeRec::GetNextKey()), rec, state);
    }
};

int throwingHandler() {
    ZelWireTypeRec store;
    // A value that was not a string leaves the values one shorter than the names.
    addWireType(store, "THROWS", {"Wire Color", "Wire Size"}, {"RED"});
    return RTNORM;
}

} // namespace

TEST_F(StoreTest, AddingAWireTypeWritesLayerListAndRecord) {
    OvDbDatabase* database = makeDrawing({"PLAIN"}, QString());
    ZelTestDrawing::addLine(database, "PLAIN");
    openDefaultNamesProject();
    ZelWireTypeRec store;
    std::vector<QString> nonWire;
    store.GetCurDwgWireTypeInfo();
    store.GetNonWireLayers(nonWire);
    ASSERT_EQ(nonWire, std::vector<QString>({"0", "PLAIN"}));

    std::vector<QString> names{"wire color", "Wire Size", "USER3", "Wire Flag"};
    OvCmColor red;
    red.setColorIndex(1);
    std::vector<QString> values{"RED", "1.5", "v3", "0"};
    ASSERT_EQ(store.AddNewWireType(0, "WIRE_RED", names, values, "", "", "WIRE", red,
                                   OvDbObjectId(), OvDb::kLnWt025, 4, true),
              Orvex::eOk);
    EXPECT_EQ(wireLays(), "WIR*");

    // An ordinary layer becomes a wire layer and keeps its lines.
    std::vector<QString> colorOnly{"Wire Color"};
    std::vector<QString> blue{"BLU"};
    ASSERT_EQ(store.AddNewWireType(0, "PLAIN", colorOnly, blue, "", "", "WIRE", red, OvDbObjectId(),
                                   OvDb::kLnWt025, 0, true),
              Orvex::eOk);
    store.GetNonWireLayers(nonWire);
    EXPECT_EQ(nonWire, std::vector<QString>({"0"}));
    EXPECT_EQ(wireLays(), "WIR*,PLA*");
    EXPECT_EQ(store.GetWireCount("PLAIN"), 1);

    ZelWireTypeRec reread;
    const WireLayerRec* rec = record(reread, "WIRE_RED");
    EXPECT_EQ(QStringList({rec->wireColor, rec->wireSize, rec->userValues.at(2)}),
              QStringList({"RED", "1.5", "v3"}));
    EXPECT_EQ(rec->gridRow, 4);
    EXPECT_FALSE(rec->wireFlag);
    EXPECT_EQ(rec->color.colorIndex(), 1);
    EXPECT_EQ(rec->lineWeight, OvDb::kLnWt025);
    EXPECT_EQ(record(reread, "PLAIN")->color.colorIndex(), 1) << "the layer takes the new look";
}

TEST_F(StoreTest, WhatWasAppliedBeforeAFailureStays) {
    OvDbDatabase* database = makeDrawing({}, std::nullopt);
    ZelWireTypeRec store;
    // No WD_M: the list cannot be written, yet layer, map and record are there.
    EXPECT_EQ(addWireType(store, "W1"), Orvex::eWireTypeNotApplied);
    EXPECT_TRUE(layerId(database, "W1").isValid());
    EXPECT_TRUE(store.IsWireLayer("W1"));
    EXPECT_FALSE(wireRecord(database, "W1").isEmpty());
}

TEST_F(StoreTest, StrictAndForgivingNamesAndTheFlag) {
    OvDbDatabase* database = makeDrawing({}, QString());
    ZelWireTypeRec store;
    EXPECT_EQ(addWireType(store, ""), Orvex::eEmptyLayerName);
    EXPECT_EQ(addWireType(store, "A/B"), Orvex::eInvalidLayerName);
    EXPECT_FALSE(layerId(database, "AB").isValid());
    EXPECT_TRUE(store.GetCurDwgWireTypeInfo().empty());

    std::vector<QString> flag{"Wire Flag"};
    ASSERT_EQ(addWireType(store, "A/B", flag, {"0"}), Orvex::eOk);
    EXPECT_TRUE(layerId(database, "AB").isValid());
    EXPECT_FALSE(record(store, "AB")->wireFlag);
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
    openDefaultNamesProject();
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
    QString name;
    store.FindLayerInMap(1, name);
    EXPECT_EQ(name, "W1");
    EXPECT_EQ(record(store, "W1")->wireColor, "RED");
    EXPECT_EQ(record(store, "W1")->userValues, std::vector<QString>{"v1"});

    // Without a key the name only has to exist: the data go to the last record, renamed.
    ASSERT_EQ(edit("W2", "BLU", 0), Orvex::eOk);
    store.FindLayerInMap(3, name);
    EXPECT_EQ(name, "W2");
    EXPECT_EQ(store.GetCurDwgWireTypeInfo().at(3)->wireColor, "BLU");
    EXPECT_TRUE(store.GetCurDwgWireTypeInfo().at(2)->wireColor.isEmpty());

    EXPECT_EQ(edit("NONE", "X", 0), Orvex::eKeyNotFound);
    EXPECT_EQ(edit("W1", "X", 99), Orvex::eKeyNotFound);
    EXPECT_EQ(edit("", "X", 1), Orvex::eEmptyLayerName);
    EXPECT_EQ(edit("W=1", "X", 1), Orvex::eInvalidLayerName);

    // The short form: given texts win over the names matched.
    std::vector<QString> names{"Wire Color", "USER2"};
    std::vector<QString> shortValues{"GRN", "u2"};
    ASSERT_EQ(store.EditWireType("w1", names, shortValues, "", "BIG"), Orvex::eOk);
    const WireLayerRec* w1 = record(store, "W1");
    EXPECT_EQ(w1->wireColor, "GRN");
    EXPECT_EQ(w1->wireSize, "BIG");
    EXPECT_EQ(w1->userValues.size(), 20u);
    EXPECT_EQ(w1->userValues.at(1), "u2");
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
    EXPECT_EQ(commit.records.at(1)->editState, 0);
    EXPECT_EQ(wireLays(), "W_E*,W_U*,NEW*");
    EXPECT_FALSE(layerId(database, "W_DEL").isValid());
    EXPECT_TRUE(layerId(database, "W_CONV").isValid());
    EXPECT_TRUE(layerId(database, "W_USED").isValid()) << "in use: message 143, and on";
    EXPECT_EQ(messages().shownTexts().size(), 1u);
    EXPECT_FALSE(layerId(database, "GONE_AGAIN").isValid());

    ZelWireTypeRec reread;
    EXPECT_EQ(layerNames(reread.GetCurDwgWireTypeInfo()),
              QStringList({"W_EDIT", "W_USED", "NEW_ONE"}));
    EXPECT_EQ(record(reread, "W_EDIT")->wireColor, "BLUE");
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
    // Empty, duplicate, invalid: three different messages.
    const std::vector<QString> shown = messages().shownTexts();
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_NE(shown[0], shown[1]);
    EXPECT_NE(shown[1], shown[2]);
    EXPECT_FALSE(shown[2].isEmpty());

    std::map<int, WireLayerRec*> empty;
    EXPECT_EQ(store.UpdateWireTypeRec(empty, key), Orvex::eOk);
}

TEST_F(StoreTest, MakeAllValidWireBlanksTheListAtTheStartOfACommit) {
    makeDrawing({"W1"}, QStringLiteral("W*"));
    ZelWireTypeRec store;
    Commit commit;
    commit.row(1, *store.GetCurDwgWireTypeInfo().at(1), 0);
    store.SetCurWireLayerXrec("W1", "W1", "", true);
    long key = 0;
    EXPECT_EQ(store.UpdateWireTypeRec(commit.records, key), Orvex::eOk);
    EXPECT_TRUE(wireLays().isEmpty());
}

TEST_F(StoreTest, SettingsNamesAndLayerInfo) {
    makeDrawing({"L"}, QString(), "other.dwg");
    makeDrawing({});
    openDefaultNamesProject();
    ZelWireTypeRec store;
    std::vector<QString> names{"a", "b"};
    EXPECT_TRUE(store.GetWireTypeSettings(names, 1));
    ASSERT_EQ(names.size(), 25u) << "appended, not replaced";
    EXPECT_EQ(QStringList({names[2], names[4], names[24]}),
              QStringList({"WIRE COLOR", "USER1", "FLAG"}));

    short color = 0;
    short weight = 0;
    QString linetype;
    EXPECT_FALSE(store.GetWireTypeLayerInfo(tempPath("missing.dwg"), "L", color, linetype, weight));
    EXPECT_FALSE(store.GetWireTypeLayerInfo("", "L", color, linetype, weight)) << "working drawing";
    ASSERT_TRUE(store.GetWireTypeLayerInfo(tempPath("other.dwg"), "l", color, linetype, weight));
    EXPECT_EQ(color, 7);
    EXPECT_EQ(weight, -3);
    EXPECT_EQ(linetype.compare("Continuous", Qt::CaseInsensitive), 0);
}

TEST_F(StoreTest, AnIndexOutsideAnArrayReachesTheHostAndTheDrawingGoesOn) {
    OvDbDatabase* database = makeDrawing({}, QString());
    ASSERT_EQ(ovedDefun(L"zel_store_probe", 901), RTNORM);
    ASSERT_EQ(ovedRegFunc(throwingHandler, 901), RTNORM);

    const ovcore::lisp::EvalResult result = ovcore::lisp::evalString("(zel_store_probe)");
    EXPECT_FALSE(result.ok);
    EXPECT_TRUE(output().contains("exception")) << output().toStdString();
    EXPECT_EQ(ovdbOpenObjectCount(), 0u);
    // The layer was made before the values were matched: the layer table comes first.
    EXPECT_TRUE(layerId(database, "THROWS").isValid());

    ZelWireTypeRec store;
    EXPECT_EQ(addWireType(store, "AFTER"), Orvex::eOk);
    EXPECT_EQ(wireLays(), "AFT*");
    ovedRegFunc(nullptr, 901);
}
