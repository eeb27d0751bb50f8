// Stored data written by other programs: wire type records and the current record with
// wrong types, wrong object kinds, too few or too many elements and empty texts, and an
// odd pattern list. The store takes what the record layout allows, and a later write loses
// nothing that was readable.

#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"

namespace {

using StoreTest = ZelTestHost;

// The twenty user values followed by what comes after them, as groups 4.
resbuf* users(int count, resbuf* tail) {
    resbuf* head = tail;
    for (int i = count; i >= 1; --i) {
        resbuf* link = ovutBuildList(4, QStringLiteral("u%1").arg(i).toStdWString().c_str(), 0);
        link->rbnext = head;
        head = link;
    }
    return head;
}

resbuf* chain(resbuf* head, resbuf* tail) {
    resbuf* last = head;
    while (last->rbnext)
        last = last->rbnext;
    last->rbnext = tail;
    return head;
}

struct RecordCase {
    const char* what;
    resbuf* data;
    const char* expected; // colour|size|kind|user 1|user 20|row|flag
};

QString describe(const WireLayerRec* rec) {
    if (!rec)
        return QStringLiteral("none");
    const auto user = [rec](std::size_t i) {
        return i < rec->userValues.size() ? rec->userValues.at(i) : QStringLiteral("-");
    };
    return QStringList{rec->wireColor,
                       rec->wireSize,
                       rec->wireKind,
                       user(0),
                       user(19),
                       QString::number(rec->gridRow),
                       rec->wireFlag ? "true" : "false"}
        .join(u'|');
}

TEST_F(StoreTest, AWireTypeRecordIsReadAsFarAsItsLayoutAllows) {
    const RecordCase cases[] = {
        {"as written",
         chain(ovutBuildList(1, L"RD", 2, L"1.5", 3, L"CABLE", 0),
               users(20, ovutBuildList(90, 7L, 290, 0, 0))),
         "RD|1.5|CABLE|u1|u20|7|false"},
        // Too few: the rest takes its defaults, the row and flag among them.
        {"too few", ovutBuildList(1, L"RD", 2, L"1.5", 0), "RD|1.5||||0|true"},
        // A group of another code is passed over at its place, not taken for the next.
        {"wrong types",
         chain(ovutBuildList(90, 5L, 1, L"RD", 40, 2.5, 0),
               users(20, ovutBuildList(1, L"x", 290, 1, 0))),
         "||WIRE|u1|u20|0|true"},
        // Too many user values: twenty are read, and the row's place holds a 4.
        {"too many",
         chain(ovutBuildList(1, L"RD", 2, L"1.5", 3, L"WIRE", 0),
               users(25, ovutBuildList(90, 3L, 290, 0, 0))),
         "RD|1.5|WIRE|u1|u20|0|true"},
        // Fewer than twenty: the row and the flag fall into the values' places, unread.
        {"row and flag too early",
         ovutBuildList(1, L"RD", 2, L"1.5", 3, L"WIRE", 90, 5L, 290, 0, 0), "RD|1.5|WIRE|||0|true"},
        // Group 90 is read as 16 bits.
        {"row beyond 16 bits",
         chain(ovutBuildList(1, L"RD", 2, L"1.5", 3, L"WIRE", 0),
               users(20, ovutBuildList(90, 70000L, 290, 0, 0))),
         "RD|1.5|WIRE|u1|u20|4464|false"},
        {"empty texts", ovutBuildList(1, L"", 2, L"", 3, L"", 4, L"", 0), "||WIRE|||0|true"},
    };
    for (const RecordCase& c : cases) {
        SCOPED_TRACE(c.what);
        OvDbDatabase* database = makeDrawing({"W"}, QString());
        ASSERT_EQ(
            ZelTestDrawing::setExtensionRecord(layerId(database, "W"), "ZEL_WIRETYPE", c.data),
            Orvex::eOk);
        ovutRelRb(c.data);
        ZelWireTypeRec store;
        EXPECT_EQ(describe(record(store, "W")), c.expected);
        closeAllDocuments();
    }
}

TEST_F(StoreTest, ALaterWriteKeepsWhatAShortRecordHeld) {
    openDefaultNamesProject();
    OvDbDatabase* database = makeDrawing({"W"}, QString());
    resbuf* data = ovutBuildList(1, L"RD", 2, L"1.5", 3, L"CABLE", 4, L"first", 0);
    ASSERT_EQ(ZelTestDrawing::setExtensionRecord(layerId(database, "W"), "ZEL_WIRETYPE", data),
              Orvex::eOk);
    ovutRelRb(data);
    {
        ZelWireTypeRec store;
        std::vector<QString> names;
        store.GetUsrPropNames(names);
        std::vector<QString> values(names.size());
        values.at(1) = "second";
        ASSERT_EQ(store.EditWireType("W", names, values, "RD", "1.5"), Orvex::eOk);
    }
    ZelWireTypeRec again;
    const WireLayerRec* rec = record(again, "W");
    ASSERT_NE(rec, nullptr);
    EXPECT_EQ(rec->wireColor, "RD");
    EXPECT_EQ(rec->wireSize, "1.5");
    EXPECT_EQ(rec->wireKind, "CABLE");
    ASSERT_EQ(rec->userValues.size(), 20u);
    EXPECT_EQ(rec->userValues.at(1), "second");
    EXPECT_EQ(rec->userValues.at(0), "") << "the edit gives every property its value";
}

TEST_F(StoreTest, ADictionaryWhereARecordBelongsIsPassedOverAndKept) {
    OvDbDatabase* database = makeDrawing({"W", "V"}, QStringLiteral("V*"));
    // A dictionary under the record's key of a layer, and under the current record's key.
    resbuf* probe = ovutBuildList(1, L"x", 0);
    ASSERT_EQ(ZelTestDrawing::setExtensionRecord(layerId(database, "V"), "ZEL_WIRETYPE", probe),
              Orvex::eOk);
    ASSERT_EQ(ZelTestDrawing::setNamedRecord(database, "ZEL_WIRETYPE", "OTHER", probe), Orvex::eOk);
    ovutRelRb(probe);
    const auto putDictionary = [](OvDbObjectId owner, const wchar_t* key) {
        OvDbDictionary* dictionary = nullptr;
        ASSERT_EQ(ovdbOpenObject(dictionary, owner, OvDb::kForWrite), Orvex::eOk);
        auto* inner = new OvDbDictionary();
        OvDbObjectId id;
        ASSERT_EQ(dictionary->setAt(key, inner, id), Orvex::eOk);
        inner->close();
        dictionary->close();
    };
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, layerId(database, "W"), OvDb::kForWrite), Orvex::eOk);
    layer->createExtensionDictionary();
    const OvDbObjectId extension = layer->extensionDictionary();
    layer->close();
    putDictionary(extension, L"ZEL_WIRETYPE");
    OvDbDictionary* named = nullptr;
    ASSERT_EQ(database->getNamedObjectsDictionary(named, OvDb::kForRead), Orvex::eOk);
    OvDbObjectId zel;
    ASSERT_EQ(named->getAt(L"ZEL_WIRETYPE", zel), Orvex::eOk);
    named->close();
    putDictionary(zel, L"CURRENT_WIRELAY");

    ZelWireTypeRec store;
    EXPECT_EQ(record(store, "W"), nullptr) << "no record to read";
    EXPECT_NE(record(store, "V"), nullptr);
    resbuf* current = nullptr;
    EXPECT_EQ(store.GetCurWireLayerXrec(current), Orvex::eWireTypeNotApplied);
    EXPECT_EQ(current, nullptr);
    EXPECT_FALSE(store.IsMakeAllValidWire());
    // Neither dictionary is lost to the readers.
    OvDbDictionary* zelDictionary = nullptr;
    ASSERT_EQ(ovdbOpenObject(zelDictionary, zel, OvDb::kForRead), Orvex::eOk);
    EXPECT_TRUE(zelDictionary->has(L"CURRENT_WIRELAY"));
    zelDictionary->close();
}

TEST_F(StoreTest, ACurrentRecordOfOtherTypesGivesWayToTheDefaults) {
    OvDbDatabase* database = makeDrawing({"W1"}, QString());
    ZelWireTypeRec store;
    ASSERT_EQ(addWireType(store, "W1"), Orvex::eOk);
    struct {
        resbuf* data;
        const char* after;
    } cases[] = {
        {ovutBuildList(90, 1L, 1, L"W1", 0), "W1|W1||0"},
        {ovutBuildList(1, L"", 0), "W1|W1||0"},
        {ovutBuildList(1, L"GONE", 1, L"GONE", 1, L"", 70, 1, 0), "W1|W1||0"},
        {ovutBuildList(1, L"W1", 1, L"W1", 1, L"%C", 290, 1, 1, L"extra", 0), "W1|W1|%C|1"},
    };
    for (auto& c : cases) {
        SCOPED_TRACE(c.after);
        ASSERT_EQ(
            ZelTestDrawing::setNamedRecord(database, "ZEL_WIRETYPE", "CURRENT_WIRELAY", c.data),
            Orvex::eOk);
        ovutRelRb(c.data);
        ZelWireTypeRec fresh;
        EXPECT_TRUE(fresh.ResetToDefWireType());
        EXPECT_EQ(currentRecord(database), c.after);
    }
}

TEST_F(StoreTest, APatternListWithEmptyAndOddTokensStillAnswers) {
    makeDrawing({"RD_1", "GN"}, QStringLiteral("BK*, ,,RD*,"));
    ZelWireTypeRec store;
    EXPECT_TRUE(store.IsInWd_m("RD_1"));
    EXPECT_FALSE(store.IsInWd_m("GN"));
    QString pattern;
    EXPECT_TRUE(store.GetWd_mLayerName("rd_1", pattern));
    EXPECT_EQ(pattern, "RD*");
    EXPECT_FALSE(store.GetWd_mLayerName("GN", pattern));
}

} // namespace
