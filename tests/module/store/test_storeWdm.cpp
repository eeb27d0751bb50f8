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
    };
    for (const PatternCase& c : cases) {
        SCOPED_TRACE(c.name);
        makeDrawing({"1A-X", "XYZ"}, QString::fromLatin1(c.before));
        ZelWireTypeRec store;
        for (const QString& other : QString::fromLatin1(c.nonWire).split(u',', Qt::SkipEmptyParts))
            store.AddToNonWireLayers(other);
        EXPECT_TRUE(store.AddtoWd_m(QString::fromLatin1(c.name), false));
        EXPECT_EQ(wireLays(), c.after);
        EXPECT_EQ(store.IsInWd_m(QString::fromLatin1(c.name)), c.catchesName);
        for (const char* other : {"1A-X", "XYZ", "ZZZ"})
            EXPECT_FALSE(store.IsInWd_m(QString::fromLatin1(other))) << other;
        closeAllDocuments();
    }
}

TEST_F(StoreTest, APatternNeverEndsInHalfACharacter) {
    // Beyond the 16-bit range a character takes two code units; the third one of "AB😀C"
    // is the first half of the face.
    const QString name = QStringLiteral("AB\U0001F600C");
    makeDrawing({"ABC"}, QString());
    ZelWireTypeRec store;
    EXPECT_TRUE(store.AddtoWd_m(name, false));
    EXPECT_EQ(wireLays(), QStringLiteral("AB\U0001F600*"));
    EXPECT_TRUE(store.IsInWd_m(name));
    EXPECT_FALSE(store.IsInWd_m("ABC"));
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

    makeDrawing({}, std::nullopt, "nowdm.dwg");
    ZelWireTypeRec without;
    EXPECT_FALSE(without.AddtoWd_m("RED", false));
    EXPECT_FALSE(without.IsInWd_m("RED"));
    QString pattern;
    EXPECT_FALSE(without.GetWd_mLayerName("RED", pattern));
    EXPECT_FALSE(without.RegenWd_m());
}

TEST_F(StoreTest, RemovingAPatternKeepsTheCommaOfAFirstToken) {
    for (const auto& [name, after] : {std::pair{"apple", ",B*"}, {"BANANA", "A*"}}) {
        makeDrawing({}, QStringLiteral("A*,B*"), QString::fromLatin1(name) + ".dwg");
        ZelWireTypeRec store;
        EXPECT_FALSE(store.RemoveFrmWd_m(name)) << "false tells that a pattern went";
        EXPECT_EQ(wireLays(), after);
        EXPECT_TRUE(store.RemoveFrmWd_m("CHERRY")) << "not listed: nothing to do";
    }
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

TEST_F(StoreTest, TheWorkingDrawingAndAnotherAreAskedAlike) {
    OvDbDatabase* other = makeDrawing({"RED_1"}, QStringLiteral("RED*,BLU*"), "other.dwg");
    OvDbDatabase* empty = makeDrawing({}, QString(), "empty.dwg");
    makeDrawing({}, QString());
    ZelWireTypeRec store;
    EXPECT_TRUE(store.IsInOtherDrawingWd_m("blue_2", other));
    EXPECT_FALSE(store.IsInOtherDrawingWd_m("GREEN", other));
    EXPECT_FALSE(store.IsInOtherDrawingWd_m("ANY", nullptr));

    EXPECT_FALSE(store.IsInWd_m("ANY"));
    QString pattern = "untouched";
    EXPECT_TRUE(store.GetWd_mLayerName("ANY", pattern)) << "an empty list answers true";
    EXPECT_EQ(pattern, "untouched");
    // makeAllValidWire lists every layer of the working drawing, and only there.
    store.SetCurWireLayerXrec("", "", "", true);
    EXPECT_TRUE(store.IsInWd_m("ANY"));
    EXPECT_FALSE(store.IsInOtherDrawingWd_m("ANY", empty));
}

} // namespace
