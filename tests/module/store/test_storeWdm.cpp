// The WIRELAYS list of the WD_M block: the choice of a pattern, removal, rebuilding.

#include "store/ZelWireTypeRec.h"
#include "support/ZelTestHost.h"

namespace {

using StoreTest = ZelTestHost;

struct PatternCase {
    const char* nonWire; // comma-separated
    const char* before;
    const char* name;
    const char* after;
    // The list is matched with case, so a pattern kept in another case misses its name.
    bool catchesName = true;
};

// Each pattern catches its name and none of the drawing's other layers.
TEST_F(StoreTest, APatternCatchesTheNewLayerAndNoOther) {
    const PatternCase cases[] = {
        {"", "", "WIRE_RED", "WIR*"},
        // Without non-wire layers the first three characters keep the case given.
        {"", "", "Wire_red", "Wir*", false},
        {"WIDE", "", "WIRE_RED", "WIR*"},
        {"WIRING", "", "WIRE_RED", "WIRE*"},
        {"AB", "", "ABC", "ABC*"},
        // Too short to be told from ABCD: listed in full.
        {"ABCD", "", "ABC", "ABC"},
        // The pattern would catch a listed one: it grows by one character.
        {"", "WIRE_B", "WIRE_BLUE", "WIRE_B,WIRE*"},
        // Already covered: nothing is written.
        {"", "WIR*", "WIRE_BLUE", "WIR*"},
        // A leading tilde would negate the whole list; later ones stand for themselves.
        {"", "", "~ABC", "`~AB*"},
        {"", "", "AB~C", "AB~*"},
        // '#' wants a digit, '@' a letter, '[' opens a set: each is escaped.
        {"", "", "#@.[~", "`#`@.*"},
        {"~ABD", "", "~ABC", "`~ABC*"},
        {"#1", "", "#1", "`#1*"},
        // The grown pattern is escaped as well.
        {"", "#ABX", "#ABC", "#ABX,`#ABC*"},
        // A name without them keeps today's pattern, a '.' included.
        {"", "", "A.B_1", "A.B*"},
        // Beyond the 16-bit range a character takes two code units; the third one of "AB😀C"
        // is the first half of the face, and a pattern never ends in it.
        {"ABC", "", "AB\U0001F600C", "AB\U0001F600*"},
    };
    for (const PatternCase& c : cases) {
        SCOPED_TRACE(c.name);
        makeDrawing({"1A-X", "XYZ"}, QString::fromLatin1(c.before));
        ZelWireTypeRec store;
        for (const QString& other : QString::fromLatin1(c.nonWire).split(u',', Qt::SkipEmptyParts))
            store.AddToNonWireLayers(other);
        EXPECT_TRUE(store.AddtoWd_m(QString::fromUtf8(c.name), false));
        EXPECT_EQ(wireLays(), QString::fromUtf8(c.after));
        EXPECT_EQ(store.IsInWd_m(QString::fromUtf8(c.name)), c.catchesName);
        for (const char* other : {"1A-X", "XYZ", "ZZZ"})
            EXPECT_FALSE(store.IsInWd_m(QString::fromLatin1(other))) << other;
        closeAllDocuments();
    }
}

TEST_F(StoreTest, TheListStopsGrowingAt256Characters) {
    for (const int length : {255, 256}) {
        const QString full = QString(length - 2, u'X') + QStringLiteral("*Z");
        makeDrawing({}, full, QStringLiteral("%1.dwg").arg(length));
        EXPECT_TRUE(ZelWireTypeRec().AddtoWd_m("RED", false));
        EXPECT_EQ(wireLays(), length == 255 ? full + ",RED*" : full);
    }
}

TEST_F(StoreTest, ResetBlanksTheListAndADrawingWithoutWdmRefuses) {
    makeDrawing({"N1"}, QStringLiteral("A*,B*"));
    ZelWireTypeRec store;
    store.GetCurDwgWireTypeInfo();
    EXPECT_TRUE(store.AddtoWd_m("", true));
    EXPECT_TRUE(wireLays().isEmpty());
    std::vector<QString> nonWire;
    store.GetNonWireLayers(nonWire);
    EXPECT_TRUE(nonWire.empty());

    OvDbDatabase* database = makeDrawing({}, std::nullopt, "nowdm.dwg");
    ZelWireTypeRec without;
    EXPECT_FALSE(without.AddtoWd_m("RED", false));
    EXPECT_FALSE(without.IsInWd_m("RED"));
    QString pattern;
    EXPECT_FALSE(without.GetWd_mLayerName("RED", pattern));
    EXPECT_FALSE(without.RegenWd_m());
    // A wire type added there fails at the list, yet layer, map and record stay.
    EXPECT_EQ(addWireType(without, "W1"), Orvex::eWireTypeNotApplied);
    EXPECT_TRUE(layerId(database, "W1").isValid());
    EXPECT_TRUE(without.IsWireLayer("W1"));
    EXPECT_FALSE(wireRecord(database, "W1").isEmpty());
}

TEST_F(StoreTest, APatternStillNeededByALiveWireTypeStays) {
    makeDrawing({"WIRE_A", "WIRE_B"}, QStringLiteral("WIR*"));
    ZelWireTypeRec store;
    ASSERT_EQ(store.GetCurDwgWireTypeInfo().size(), 2u);
    EXPECT_TRUE(store.RemoveFrmWd_m("WIRE_A"));
    EXPECT_EQ(wireLays(), "WIR*");
    // The walk folds the names of the map in place.
    EXPECT_EQ(layerNames(store.GetCurDwgWireTypeInfo()), QStringList({"WIRE_A", "WIRE_B"}));
}

TEST_F(StoreTest, RegenKeepsTheShorterOfOverlappingPatterns) {
    makeDrawing({"WIRE_A", "WIRE_B", "Red_1", "WIRING", "REX"}, QStringLiteral("WIRE*,RED_1"));
    ZelWireTypeRec store;
    ASSERT_EQ(store.GetCurDwgWireTypeInfo().size(), 3u);
    EXPECT_TRUE(store.RegenWd_m());
    EXPECT_EQ(wireLays(), "WIRE*,RED*");

    // With makeAllValidWire the list is left alone.
    ASSERT_TRUE(store.SetCurWireLayerXrec("WIRE_A", "WIRE_A", "", true));
    ASSERT_TRUE(store.AddtoWd_m("", true));
    EXPECT_TRUE(store.RegenWd_m());
    EXPECT_TRUE(wireLays().isEmpty());
}

// The list of another drawing is read by the LISP functions; here the two odd answers of
// the working drawing's.
TEST_F(StoreTest, MakeAllValidWireTakesEveryLayerOfTheWorkingDrawingOnly) {
    OvDbDatabase* other = makeDrawing({"A", "B"}, QString(), "other.dwg");
    makeDrawing({"A", "B"}, QString());
    ZelWireTypeRec store;
    EXPECT_FALSE(store.IsInWd_m("ANY"));
    QString pattern = "untouched";
    EXPECT_TRUE(store.GetWd_mLayerName("ANY", pattern)) << "an empty list answers true";
    EXPECT_EQ(pattern, "untouched");

    store.SetCurWireLayerXrec("A", "A", "", true);
    EXPECT_TRUE(store.IsInWd_m("ANY"));
    EXPECT_EQ(layerNames(store.GetCurDwgWireTypeInfo()), QStringList({"0", "A", "B"}));
    EXPECT_FALSE(store.IsInOtherDrawingWd_m("A", other));
    std::map<int, WireLayerRec*> records;
    EXPECT_TRUE(store.GetDwgWireTypeInfo("other.dwg", other, records));
    EXPECT_TRUE(records.empty());
}

} // namespace
