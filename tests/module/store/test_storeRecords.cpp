// Records, keys, user property names, and the two kinds of record kept in a drawing.

#include "StoreTest.h"

#include "store/SplitPropertyList.h"

#include <QLoggingCategory>

namespace {

int s_quoteMessages = 0;

void countQuoteMessages(QtMsgType, const QMessageLogContext& context, const QString& text) {
    if (QLatin1String(context.category) == QLatin1String("zel.wiretype.store") &&
        text.contains(QLatin1String("Find double quote")))
        ++s_quoteMessages;
}

std::vector<QString> split(const QString& line) {
    std::vector<QString> names{"stale"};
    SplitPropertyList(line, names);
    return names;
}

std::vector<QString> padded(std::vector<QString> names) {
    names.resize(20);
    return names;
}

// A wire type record: strings, `userValues` values "u1"..., then row and flag unless row < 0.
resbuf* wireChain(const QStringList& strings, int userValues, int row = -1, bool flag = false) {
    resbuf head{};
    resbuf* tail = &head;
    const auto append = [&](resbuf* link) {
        for (tail->rbnext = link; tail->rbnext;)
            tail = tail->rbnext;
    };
    for (int i = 0; i < strings.size(); ++i)
        append(ovutBuildList(i + 1, strings[i].toStdWString().c_str(), 0));
    for (int i = 0; i < userValues; ++i)
        append(ovutBuildList(4, QStringLiteral("u%1").arg(i + 1).toStdWString().c_str(), 0));
    if (row >= 0)
        append(ovutBuildList(90, row, 290, flag ? 1 : 0, 0));
    return head.rbnext;
}

} // namespace

TEST(SplitPropertyList, TakesQuotedNamesAndAlwaysYieldsTwenty) {
    // The debugger message is off unless asked for, as a debugger would ask.
    QLoggingCategory::setFilterRules(QStringLiteral("zel.wiretype.store.debug=true"));
    const QtMessageHandler previous = qInstallMessageHandler(countQuoteMessages);
    EXPECT_EQ(split(" a ,\"b,c\", d "), padded({"a", "b,c", "d"}));
    EXPECT_EQ(s_quoteMessages, 1);
    // A quote that never closes swallows the rest.
    EXPECT_EQ(split("x,\"open,y"), padded({"x"}));
    QStringList many;
    for (int i = 1; i <= 25; ++i)
        many << QStringLiteral("p%1").arg(i);
    EXPECT_EQ(split(many.join(u',')).back(), "p20");
    s_quoteMessages = 0;
    EXPECT_EQ(split(QString()), padded({}));
    EXPECT_EQ(s_quoteMessages, 0);
    qInstallMessageHandler(previous);
}

TEST_F(StoreTest, KeysNumberTheLoadAndACollisionTakesTheCountersNextValue) {
    EXPECT_EQ(ZelWireTypeRec::GetNextKey(), 1);
    EXPECT_EQ(ZelWireTypeRec::GetNextKey(), 2);
    ZelWireTypeRec::ResetKey();

    OvDbDatabase* database = makeDrawing({"W1", "W2", "W3", "PLAIN"}, QStringLiteral("W*"));
    ZelWireTypeRec store;
    QString name;
    EXPECT_FALSE(store.FindLayerInMap(1, name)) << "no load before it is needed";
    EXPECT_FALSE(database->isModified()) << "building a store writes nothing";
    EXPECT_EQ(layerNames(store.GetCurDwgWireTypeInfo()), QStringList({"W1", "W2", "W3"}));
    ASSERT_TRUE(store.FindLayerInMap(3, name));
    EXPECT_EQ(name, "W3");

    EXPECT_EQ(addWireType(store, "W7", {}, {}, 7), Orvex::eOk);
    EXPECT_EQ(addWireType(store, "W8", {}, {}, 7), Orvex::eOk);
    ASSERT_TRUE(store.FindLayerInMap(7, name));
    EXPECT_EQ(name, "W7");
    ASSERT_TRUE(store.FindLayerInMap(4, name)) << "the taken key 7 gives the counter's 4";
    EXPECT_EQ(name, "W8");
}

TEST_F(StoreTest, UserPropertyNamesComeFromTheProjectOrDefault) {
    makeDrawing({});
    std::vector<QString> names;
    EXPECT_FALSE(ZelWireTypeRec().GetUserPropNamesFrmWdp(names)) << "no project";
    EXPECT_EQ(names, padded({}));

    openProject(ZelTestProject::write(tempPath("project"), "p", {activeDocument()->fileName()},
                                      QString(), {{33, "Cable,\"Len, m\""}}));
    ZelWireTypeRec inProject;
    inProject.GetUsrPropNames(names);
    EXPECT_EQ(names[0], "Cable");
    EXPECT_EQ(names[1], "Len, m");
    EXPECT_EQ(names[2], "USER3");
    EXPECT_EQ(names[19], "USER20");

    makeDrawing({}, QString(), "outside.dwg");
    EXPECT_TRUE(ZelWireTypeRec().GetUserPropNamesFrmWdp(names));
    EXPECT_EQ(names[0], "USER1");
}

TEST_F(StoreTest, TheReaderIsNotTheMirrorOfTheWriter) {
    OvDbDatabase* database = makeDrawing({"SHORT", "FULL", "BLANKKIND", "TWO"});
    const auto put = [&](const QString& layer, resbuf* chain) {
        ZelTestDrawing::setExtensionRecord(layerId(database, layer), "ZEL_WIRETYPE", chain);
        ovutRelRb(chain);
    };
    // Fewer than 20 user values: row and flag fall into the value places and are ignored.
    put("SHORT", wireChain({"RED", "1.5", "WIRE"}, 0, 5, false));
    // Group 90 is read as 16 bits.
    put("FULL", wireChain({"BLU", "2.5", "WIRE"}, 20, 70000, false));
    put("BLANKKIND", wireChain({"A", "B", ""}, 0));
    put("TWO", wireChain({"A", "B"}, 0));

    ZelWireTypeRec store;
    const WireLayerRec* shortRec = record(store, "SHORT");
    EXPECT_EQ(shortRec->wireColor, "RED");
    EXPECT_EQ(shortRec->userValues, padded({}));
    EXPECT_EQ(shortRec->gridRow, 0);
    EXPECT_TRUE(shortRec->wireFlag);
    EXPECT_EQ(shortRec->nameFormatMask, 255);
    const WireLayerRec* full = record(store, "FULL");
    EXPECT_EQ(full->userValues.back(), "u20");
    EXPECT_EQ(full->gridRow, 4464);
    EXPECT_FALSE(full->wireFlag);
    EXPECT_EQ(record(store, "BLANKKIND")->wireKind, "WIRE");
    EXPECT_TRUE(record(store, "TWO")->wireKind.isEmpty()) << "repaired only when a third exists";

    // What the default wire type is written with: no user values at all.
    std::vector<QString> none;
    ASSERT_EQ(store.AddNewWireType(0, "BARE", none, none, "RED", "1.5", "WIRE", OvCmColor(),
                                   OvDbObjectId(), OvDb::kLnWtByLwDefault, 5, false),
              Orvex::eOk);
    EXPECT_EQ(wireRecord(database, "BARE"),
              "((1 . \"RED\") (2 . \"1.5\") (3 . \"WIRE\") (90 . 5) (290 . 0))");
}

TEST_F(StoreTest, TheCurrentRecordFallsBackOnWhatWasStored) {
    OvDbDatabase* database = makeDrawing({"A", "B"});
    ZelWireTypeRec store;
    resbuf* chain = nullptr;
    EXPECT_EQ(store.GetCurWireLayerXrec(chain), Orvex::eKeyNotFound);
    EXPECT_FALSE(store.IsMakeAllValidWire());
    EXPECT_TRUE(currentRecord(database).isEmpty()) << "asking makes no default";

    ASSERT_TRUE(store.SetCurWireLayerXrec("", "", "", true));
    EXPECT_EQ(currentRecord(database), "((1 . \"\") (1 . \"\") (1 . \"\") (290 . 1))");
    EXPECT_TRUE(store.IsMakeAllValidWire());

    ASSERT_TRUE(store.SetCurWireLayerXrec("A", "B", "F", true));
    // An open current layer takes the stored default, not the stored current layer.
    ASSERT_TRUE(store.SetCurWireLayerXrec("A", "", "", false));
    EXPECT_EQ(currentRecord(database), "((1 . \"A\") (1 . \"A\") (1 . \"F\") (290 . 0))");
    ASSERT_EQ(store.GetCurWireLayerXrec(chain), Orvex::eOk);
    EXPECT_EQ(ovcore::lisp::toLispNotation(chain), currentRecord(database));
    ovutRelRb(chain);

    // The dictionary without the current record: 340, and no chain.
    makeDrawing({}, QString(), "second.dwg");
    resbuf* other = ovutBuildList(1, L"x", 0);
    ZelTestDrawing::setNamedRecord(workingDatabase(), "ZEL_WIRETYPE", "OTHER", other);
    ovutRelRb(other);
    chain = nullptr;
    EXPECT_EQ(ZelWireTypeRec().GetCurWireLayerXrec(chain), Orvex::eWireTypeNotApplied);
    EXPECT_EQ(chain, nullptr);
}

TEST_F(StoreTest, RemovingARecordKeepsTheEmptyDictionaryAndAConvertedLayerGetsNone) {
    OvDbDatabase* database = makeDrawing({"W1", "PLAIN"});
    TestStore store;
    ASSERT_EQ(addWireType(store, "W1"), Orvex::eOk);
    ASSERT_FALSE(wireRecord(database, "W1").isEmpty());
    EXPECT_TRUE(store.RemoveWireTypeXrec("w1"));
    EXPECT_TRUE(wireRecord(database, "W1").isEmpty());
    const auto dictionaryOf = [&](const QString& layer) {
        OvDbLayerTableRecord* record = nullptr;
        EXPECT_EQ(ovdbOpenObject(record, layerId(database, layer), OvDb::kForRead), Orvex::eOk);
        const OvDbObjectId id = record->extensionDictionary();
        record->close();
        return id;
    };
    EXPECT_TRUE(dictionaryOf("W1").isValid() && !dictionaryOf("W1").isErased());

    WireLayerRec converted;
    converted.layerName = "PLAIN";
    converted.editState = 6;
    EXPECT_TRUE(store.SetWireTypeXrec(&converted));
    EXPECT_TRUE(dictionaryOf("PLAIN").isNull());
    EXPECT_FALSE(store.RemoveWireTypeXrec("MISSING"));
}
