// The load that sorts a drawing's layers, the records kept in a drawing, keys, user property
// names, the default wire type and the project's wire types.

#include "store/SplitPropertyList.h"
#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"
#include "support/ZelTestProject.h"
#include "zeloledb/ZelOleDbCommand.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/ovdb.h"

namespace {

using StoreTest = ZelTestHost;

std::vector<QString> padded(std::vector<QString> names) {
    names.resize(20);
    return names;
}

TEST(SplitPropertyList, TakesQuotedNamesAndAlwaysYieldsTwenty) {
    const auto split = [](const QString& line) {
        std::vector<QString> names{"stale"};
        SplitPropertyList(line, names);
        return names;
    };
    EXPECT_EQ(split(" a ,\"b,c\", d "), padded({"a", "b,c", "d"}));
    // A quote that never closes swallows the rest.
    EXPECT_EQ(split("x,\"open,y"), padded({"x"}));
    QStringList many;
    for (int i = 1; i <= 25; ++i)
        many << QStringLiteral("p%1").arg(i);
    EXPECT_EQ(split(many.join(u',')).back(), "p20");
    EXPECT_EQ(split(QString()), padded({}));
}

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
    EXPECT_EQ(record(store, "REC")->wireColor, "RED");
    EXPECT_TRUE(record(store, "REC")->inUseMark.isEmpty());
}

TEST_F(StoreTest, TheMapIsLoadedLazilyAndOnlyWhileEmpty) {
    makeDrawing({}, QStringLiteral("W*"));
    ZelWireTypeRec lazy;
    QString name;
    EXPECT_FALSE(lazy.FindLayerInMap(1, name)) << "no load before it is needed";
    EXPECT_TRUE(lazy.GetCurDwgWireTypeInfo().empty());
    ZelTestDrawing::addLayer(workingDatabase(), "W1");
    EXPECT_EQ(lazy.GetCurDwgWireTypeInfo().size(), 1u) << "an empty map is walked again";
    ZelTestDrawing::addLayer(workingDatabase(), "W2");
    EXPECT_EQ(lazy.GetCurDwgWireTypeInfo().size(), 1u) << "a loaded map is never reloaded";
}

TEST_F(StoreTest, KeysNumberTheLoadAndACollisionTakesTheCountersNextValue) {
    makeDrawing({"W1", "W2", "W3", "PLAIN"}, QStringLiteral("W*"));
    ZelWireTypeRec store;
    EXPECT_EQ(layerNames(store.GetCurDwgWireTypeInfo()), QStringList({"W1", "W2", "W3"}));
    QString name;
    ASSERT_TRUE(store.FindLayerInMap(3, name));
    EXPECT_EQ(name, "W3");
    EXPECT_EQ(addWireType(store, "W7", {}, {}, 7), Orvex::eOk);
    EXPECT_EQ(addWireType(store, "W8", {}, {}, 7), Orvex::eOk);
    ASSERT_TRUE(store.FindLayerInMap(7, name));
    EXPECT_EQ(name, "W7");
    ASSERT_TRUE(store.FindLayerInMap(4, name)) << "the taken key 7 gives the counter's 4";
    EXPECT_EQ(name, "W8");
}

TEST_F(StoreTest, TheCurrentRecordFallsBackOnWhatWasStored) {
    OvDbDatabase* database = makeDrawing({"A", "B"});
    ZelWireTypeRec store;
    resbuf* chain = nullptr;
    EXPECT_EQ(store.GetCurWireLayerXrec(chain), Orvex::eKeyNotFound);
    EXPECT_FALSE(store.IsMakeAllValidWire());
    EXPECT_EQ(currentRecord(database), "none") << "asking makes no default";

    ASSERT_TRUE(store.SetCurWireLayerXrec("A", "B", "F", true));
    EXPECT_TRUE(store.IsMakeAllValidWire());
    // An open current layer takes the stored default, not the stored current layer.
    ASSERT_TRUE(store.SetCurWireLayerXrec("A", "", "", false));
    ASSERT_EQ(store.GetCurWireLayerXrec(chain), Orvex::eOk);
    EXPECT_EQ(ovcore::lisp::toLispNotation(chain),
              "((1 . \"A\") (1 . \"A\") (1 . \"F\") (290 . 0))");
    ovutRelRb(chain);
}

TEST_F(StoreTest, UserPropertyNamesComeFromTheProjectOrDefault) {
    makeDrawing({});
    std::vector<QString> names;
    EXPECT_FALSE(ZelWireTypeRec().GetUserPropNamesFrmWdp(names)) << "no project";
    EXPECT_EQ(names, padded({}));

    openProject(ZelTestProject::write(tempPath("project"), "p", {activeDocument()->fileName()},
                                      QString(), {{33, "Cable,\"Len, m\""}}));
    ZelWireTypeRec().GetUsrPropNames(names);
    EXPECT_EQ(QStringList({names[0], names[1], names[2], names[19]}),
              QStringList({"Cable", "Len, m", "USER3", "USER20"}));

    makeDrawing({}, QString(), "outside.dwg");
    EXPECT_TRUE(ZelWireTypeRec().GetUserPropNamesFrmWdp(names));
    EXPECT_EQ(names[0], "USER1");
}

TEST_F(StoreTest, AProjectWireTypeReadsAsTwentyThreeValues) {
    makeDrawing({});
    openWireTypeProject("INSERT INTO WIRETYPE VALUES ('1', 'RED_15', 'RED', NULL, 0, 2);"
                        "INSERT INTO WIRETYPE_USR VALUES ('1', 'RED_15', 1, 'first');"
                        "INSERT INTO WIRETYPE_USR VALUES ('1', 'RED_15', 19, 'nineteen');"
                        "INSERT INTO WIRETYPE VALUES ('1', 'ZERO', 'BLU', '2.5', 1, 1);"
                        "INSERT INTO WIRETYPE_USR VALUES ('1', 'ZERO', 0, 'over the size');"
                        "INSERT INTO WIRETYPE VALUES ('2', 'BAD', 'GRN', '4', 1, 1);"
                        "INSERT INTO WIRETYPE_USR VALUES ('2', 'BAD', 22, 'too far');");
    ZelWireTypeRec store;
    std::vector<QString> values;
    ASSERT_TRUE(store.QueryWireType("1", "RED_15", values, 1));
    std::vector<QString> expected(23);
    expected[0] = "RED"; // a null wire size is an empty string
    expected[2] = "first";
    expected[20] = "nineteen";
    expected[22] = "0";
    EXPECT_EQ(values, expected);
    EXPECT_FALSE(output().contains("user property number")) << output().toStdString();
    // USER 0 lands on the wire size, and the command line says which row did it.
    values.clear();
    ASSERT_TRUE(store.QueryWireType("1", "ZERO", values, 1));
    EXPECT_EQ(values[1], "over the size");
    EXPECT_TRUE(output().contains("wire type \"ZERO\" of drawing 1 has user property number 0 "
                                  "in WIRETYPE_USR, which is not one from 1 to 20"))
        << output().toStdString();

    // A user number outside the result: what was fetched before stays.
    values.clear();
    EXPECT_THROW(store.QueryWireType("2", "BAD", values, 1), std::out_of_range);
    EXPECT_EQ(values.at(0), "GRN");
    EXPECT_TRUE(output().contains("\"BAD\" of drawing 2 has user property number 22"))
        << output().toStdString();
}

TEST_F(StoreTest, ARecursiveQueryThroughALayerNameIsStoppedAndSaid) {
    makeDrawing({});
    openWireTypeProject("INSERT INTO WIRETYPE VALUES ('1', 'RED_15', 'RED', '1.5', 0, 2);");
    const auto before = ZelOleDbCommand::GetTimeLimit();
    ZelOleDbCommand::SetTimeLimit(std::chrono::milliseconds(200));
    // The layer name goes into the statements as it is; this one makes the user values
    // endless (user property 1, over and over).
    const QString layer = "RED_15' UNION ALL SELECT 1, x FROM (WITH RECURSIVE c(x) AS "
                          "(SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT x FROM c) --";
    ZelWireTypeRec store;
    std::vector<QString> values;
    // The flag's statement has one column, which the union does not: it fails on its own.
    EXPECT_FALSE(store.QueryWireType("1", layer, values, 1));
    EXPECT_EQ(values.at(0), "RED");
    EXPECT_TRUE(output().contains("ran longer than 200 ms")) << output().toStdString();
    ZelOleDbCommand::SetTimeLimit(before);
}

} // namespace
