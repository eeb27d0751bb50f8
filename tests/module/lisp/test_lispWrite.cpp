// The LISP functions that change wire types, called from LISP as the add-on calls them.

#include "LispTest.h"

#include "shell/ResourceOverride.h"

#include "platform/Resources.h"
#include "zeldefun/ZelQvxBlockRef.h"

namespace {

QString emptyValues(int count) {
    QStringList items;
    for (int i = 0; i < count; ++i)
        items << "(4 . \"\")";
    return items.join(' ');
}

} // namespace

class LispWriteTest : public LispTest {
protected:
    QString layerInfo(const QString& layer) {
        return lisp("(zel_get_wiretype_layer_info \"\" \"" + layer + "\")");
    }

    static void setClayer(OvDbDatabase* database, const QString& layer) {
        ASSERT_EQ(database->setClayer(layerId(database, layer)), Orvex::eOk);
    }
};

TEST_F(LispWriteTest, AnAddedWireTypeIsInTheSavedDrawing) {
    OvDbDatabase* database = makeDrawing({"PLAIN"}, QString());
    EXPECT_EQ(lisp("(zel_add_wiretype \"RED_2.5\" \"_COLOR\" \"red\")"), "nil");
    EXPECT_EQ(clayerName(database), "RED_2.5");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    EXPECT_EQ(lisp("(> rereads 0)"), "T") << "the add-on is told of the new WIRELAYS";

    const QString path = activeDocument()->fileName();
    ASSERT_EQ(ovDocManagerPtr()->saveDocument(activeDocument()), Orvex::eOk);
    closeAllDocuments();

    OvDbDatabase saved(false, true);
    ASSERT_EQ(saved.readDwgFile(path.toStdWString().c_str()), Orvex::eOk);
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, layerId(&saved, "RED_2.5"), OvDb::kForRead), Orvex::eOk);
    EXPECT_EQ(layer->color().colorIndex(), 1);
    layer->close();
    EXPECT_EQ(wireRecord(&saved, "RED_2.5"),
              "((1 . \"\") (2 . \"\") (3 . \"WIRE\") (90 . 0) (290 . 1))");

    ZelQvxBlockRef blockRef;
    QString wireLays;
    ASSERT_TRUE(blockRef.open(path, 32, false));
    ASSERT_TRUE(blockRef.find("WD_M", 0, 0));
    EXPECT_TRUE(blockRef.getAttributeTextString("WIRELAYS", wireLays, true));
    blockRef.close();
    EXPECT_EQ(wireLays, "RED*");
}

TEST_F(LispWriteTest, AddTakesItsPairsPlainOrAsOneList) {
    OvDbDatabase* database = makeDrawing({}, QString());
    openDefaultNamesProject();
    EXPECT_EQ(lisp("(zel_add_wiretype '(\"BLUE_1\" \"_LTYPE\" \"dashed\" \"_lweight\" \"0.29\""
                   " \"Color\" \"BLUE\" \"Flag\" \"0\" \"USER3\" \"x\" \"Wire Size\" \"1.5\"))"),
              "nil");
    EXPECT_EQ(layerInfo("BLUE_1"), "(\"256\" \"DASHED\" \"0.3\")");
    EXPECT_EQ(wireRecord(database, "BLUE_1"), "((1 . \"BLUE\") (2 . \"1.5\") (3 . \"WIRE\") " +
                                                  emptyValues(2) + " (4 . \"x\") " +
                                                  emptyValues(17) + " (90 . 0) (290 . 0))");

    // Unknown colours and linetypes keep the starting values; a key without value ends it.
    lisp("(zel_add_wiretype \"C1\" \"_COLOR\" \"mauve\" \"_LTYPE\" \"NOSUCH\")");
    EXPECT_EQ(layerInfo("C1"), "(\"256\" \"Continuous\" \"-0.03\")");
    lisp("(zel_add_wiretype \"C2\" \"_LTYPE\" \"HIDDEN\" \"_COLOR\")");
    EXPECT_EQ(layerInfo("C2"), "(\"256\" \"HIDDEN\" \"-0.03\")");
    lisp("(zel_add_wiretype \"C3\" \"_color\" \"3\")");
    EXPECT_EQ(layerInfo("C3"), "(\"3\" \"Continuous\" \"-0.03\")");

    // The name's invalid characters go when properties are given.
    lisp("(zel_add_wiretype \"A/B\" \"Wire Size\" \"4\")");
    EXPECT_TRUE(layerId(database, "AB").isValid());
}

TEST_F(LispWriteTest, AddRoundsWeightsThroughSinglePrecision) {
    makeDrawing({}, QString());
    const QStringList weights[] = {{"0.25", "0.25"},   {"0.57", "0.6"}, {"-0.03", "-0.03"},
                                   {"-0.05", "-0.03"}, {"9", "2.11"},   {"junk", "0"}};
    int n = 0;
    for (const QStringList& weight : weights) {
        const QString name = "W" + QString::number(++n);
        lisp("(zel_add_wiretype \"" + name + "\" \"_LWEIGHT\" \"" + weight[0] + "\")");
        // 0.57 is 56.99... in double precision, which would round to 0.53.
        EXPECT_EQ(layerInfo(name), "(\"256\" \"Continuous\" \"" + weight[1] + "\")")
            << weight[0].toStdString();
    }
}

TEST_F(LispWriteTest, AddFailsWithoutANameOrOnAKeyThatIsNoText) {
    OvDbDatabase* database = makeDrawing({}, QString());
    expectFailure("(zel_add_wiretype)");
    expectFailure("(zel_add_wiretype \"\")");
    expectFailure("(zel_add_wiretype nil)");
    expectFailure("(zel_add_wiretype 5 \"_COLOR\" \"red\")");
    expectFailure("(zel_add_wiretype \"X\" \"_COLOR\" \"red\" 7 \"a\")");
    EXPECT_FALSE(layerId(database, "X").isValid());
    // A name alone goes the strict way, where an invalid character is refused.
    expectFailure("(zel_add_wiretype \"A/B\")");
    EXPECT_EQ(wireLays(), "");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // A property without its value leaves the values short: the index error reaches the
    // host, which reports it; the layer made before stays and the resources are switched back.
    const ovcore::lisp::EvalResult result =
        ovcore::lisp::evalString("(zel_add_wiretype \"SHORT\" \"Wire Color\")");
    EXPECT_FALSE(result.ok);
    EXPECT_TRUE(layerId(database, "SHORT").isValid());
    EXPECT_EQ(platform::currentResourceHandle(), platform::hostResourceHandle());
}

TEST_F(LispWriteTest, AddOnAnExistingLayer) {
    OvDbDatabase* database = makeDrawing({"RED_1", "PLAIN"}, "RED*");
    ZelTestDrawing::addLayer(database, "OLIVE", 3);
    // Already a wire type: it only becomes the current layer.
    EXPECT_EQ(lisp("(zel_add_wiretype \"red_1\" \"_COLOR\" \"blue\")"), "nil");
    EXPECT_EQ(layerInfo("RED_1"), "(\"7\" \"Continuous\" \"-0.03\")");
    EXPECT_TRUE(wireRecord(database, "RED_1").isEmpty());
    EXPECT_EQ(clayerName(database), "RED_1");

    // A plain layer named alone keeps its look and becomes a wire type.
    EXPECT_EQ(lisp("(zel_add_wiretype \"olive\")"), "nil");
    EXPECT_EQ(layerInfo("OLIVE"), "(\"3\" \"Continuous\" \"-0.03\")");
    EXPECT_FALSE(wireRecord(database, "OLIVE").isEmpty());
    EXPECT_EQ(wireLays(), "RED*,OLI*");

    // Named alone inside a list, the list end is an empty pair list: the starting look.
    ZelTestDrawing::addLayer(database, "TEAL", 4);
    EXPECT_EQ(lisp("(zel_add_wiretype '(\"TEAL\"))"), "nil");
    EXPECT_EQ(layerInfo("TEAL"), "(\"256\" \"Continuous\" \"-0.03\")");
}

TEST_F(LispWriteTest, EditSetsPropertiesByNameOrAlias) {
    OvDbDatabase* database = makeDrawing({"RED_1"}, "RED*");
    openDefaultNamesProject();
    EXPECT_EQ(lisp("(zel_edit_wiretype \"red_1\" \"color\" \"RED\" \"Wire Size\" \"2.5\""
                   " \"USER1\" \"a\" \"flag\" \"0\")"),
              "nil");
    EXPECT_EQ(wireRecord(database, "RED_1"), "((1 . \"RED\") (2 . \"2.5\") (3 . \"WIRE\") "
                                             "(4 . \"a\") " +
                                                 emptyValues(19) + " (90 . 0) (290 . 0))");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // In a list, and with a value that is no text, which is then read as the next key.
    EXPECT_EQ(lisp("(zel_edit_wiretype '(\"RED_1\" \"Wire Color\" 5 \"GREEN\"))"), "nil");
    EXPECT_TRUE(wireRecord(database, "RED_1").startsWith("((1 . \"GREEN\") (2 . \"2.5\")"));

    expectFailure("(zel_edit_wiretype \"NOPE\" \"Wire Size\" \"1\")");
    expectFailure("(zel_edit_wiretype)");
    expectFailure("(zel_edit_wiretype 5 \"RED_1\")");
}

TEST_F(LispWriteTest, RemoveTakesTheWireTypeAndLeavesTheLayer) {
    OvDbDatabase* database = makeDrawing({"RED_1", "BLUE_1"}, "RED*,BLU*");
    lisp("(zel_edit_wiretype \"RED_1\" \"Wire Size\" \"1\")");
    ASSERT_FALSE(wireRecord(database, "RED_1").isEmpty());
    EXPECT_EQ(lisp("(zel_remove_wiretype \"RED_1\")"), "nil");
    EXPECT_TRUE(wireRecord(database, "RED_1").isEmpty());
    EXPECT_TRUE(layerId(database, "RED_1").isValid());
    EXPECT_EQ(wireLays(), ",BLU*") << "the comma after a first token stays";
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    EXPECT_EQ(lisp("(zel_remove_wiretype \"NOPE\")"), "nil");
    EXPECT_EQ(lisp("(zel_remove_wiretype)"), "nil");
    EXPECT_EQ(wireLays(), ",BLU*");
}

TEST_F(LispWriteTest, SetCurrentTakesAnyLayerElseTheFirstWireLayer) {
    OvDbDatabase* database = makeDrawing({"RED_1", "RED_2", "PLAIN"}, "RED*");
    setCurrentRecord(database, "RED_2", "RED_2", true);
    EXPECT_EQ(lisp("(zel_set_current_wiretype \"plain\")"), "\"plain\"");
    EXPECT_EQ(currentRecord(database), "((1 . \"RED_2\") (1 . \"plain\") (1 . \"\") (290 . 1))");
    EXPECT_EQ(lisp("(zel_set_current_wiretype \"NOPE\")"), "\"RED_1\"");
    EXPECT_EQ(lisp("(zel_set_current_wiretype 5)"), "\"RED_1\"");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // Without wire types or record, the default wire type is made and the request dropped.
    OvDbDatabase* bare = makeDrawing({"PLAIN"}, QString(), "bare.dwg");
    clearOutput();
    EXPECT_EQ(lisp("(zel_set_current_wiretype \"PLAIN\")"), "\"WIRES\"");
    const ResourceOverride resources;
    EXPECT_TRUE(output().contains(platform::loadString(156))) << output().toStdString();
    EXPECT_EQ(currentRecord(bare), "((1 . \"WIRES\") (1 . \"WIRES\") (1 . \"\") (290 . 0))");
}

TEST_F(LispWriteTest, SetDefaultTakesAnyExistingLayer) {
    OvDbDatabase* database = makeDrawing({"RED_1", "PLAIN"}, "RED*");
    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_set_default_wiretype \"NOPE\")"), "nil");
    EXPECT_TRUE(currentRecord(database).isEmpty()) << "nothing is written";
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 4);

    EXPECT_EQ(lisp("(zel_set_default_wiretype \"plain\")"), "\"plain\"");
    EXPECT_EQ(currentRecord(database), "((1 . \"plain\") (1 . \"RED_1\") (1 . \"\") (290 . 0))");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
}

TEST_F(LispWriteTest, ResetFollowsTheDrawingsWireLayer) {
    OvDbDatabase* database = makeDrawing({"RED_1", "RED_2", "PLAIN"}, "RED*");
    setCurrentRecord(database, "RED_1", "RED_1");
    setClayer(database, "RED_2");
    EXPECT_EQ(lisp("(zel_reset_current_wiretype)"), "\"RED_2\"");
    EXPECT_EQ(currentRecord(database), "((1 . \"RED_1\") (1 . \"RED_2\") (1 . \"\") (290 . 0))");

    // On a layer that is no wire type the stored current layer stays.
    setClayer(database, "PLAIN");
    EXPECT_EQ(lisp("(zel_reset_current_wiretype)"), "\"RED_2\"");

    // Only a missing default layer brings the first wire layer in.
    setCurrentRecord(database, "GONE", "RED_2");
    EXPECT_EQ(lisp("(zel_reset_current_wiretype)"), "\"RED_1\"");
    EXPECT_EQ(currentRecord(database), "((1 . \"GONE\") (1 . \"RED_1\") (1 . \"\") (290 . 0))");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
}
