// The module's LISP read and write functions, called from LISP as the add-on calls them.

#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"

#include "ovdb/ovdb.h"
#include "platform/Resources.h"
#include "zelpm/ZelPrmProjectManager.h"

namespace {

QString repeated(const QString& item, int count) {
    QStringList items;
    for (int i = 0; i < count; ++i)
        items << item;
    return items.join(' ');
}

// The record a layer listed in WIRELAYS without one of its own reads as.
const QString kListedRecord =
    "((1 . \"\") (2 . \"\") (3 . \"WIRE\") " + repeated("(4 . \"\")", 20) + " (90 . 0) (290 . 1))";

// The functions defined in each drawing made, under their numbers; the add-on's reread of
// the drawing settings is a stand-in that counts its calls.
class LispTest : public ZelTestHost {
protected:
    OvDbDatabase* makeDrawing(const QStringList& layers,
                              const std::optional<QString>& wireLays = QString(),
                              const QString& fileName = QStringLiteral("drawing.dwg")) {
        OvDbDatabase* database = ZelTestHost::makeDrawing(layers, wireLays, fileName);
        defineModuleFunctions();
        evalLisp("(setq rereads 0)"
                 "(defun c:wd_reread_dwg_params () (setq rereads (1+ rereads)))"
                 "(vl-orvex-defun 'c:wd_reread_dwg_params)");
        return database;
    }

    // The value of a LISP expression in LISP notation; an error fails the test.
    QString lisp(const QString& text) { return evalLisp(text).value; }

    // A call that is to fail with the error its handler reports.
    void expectFailure(const QString& text) {
        const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(text);
        EXPECT_FALSE(result.ok) << text.toStdString();
        EXPECT_TRUE(result.error.contains("the function reported an error"))
            << text.toStdString() << ": " << result.error.toStdString();
    }

    QString layerInfo(const QString& layer) {
        return lisp("(zel_get_wiretype_layer_info \"\" \"" + layer + "\")");
    }

    // A drawing on disk, not open: BLUE_1 and BLUE_2 listed in its WIRELAYS, GREEN not.
    QString writeOtherDrawing() {
        OvDbDatabase other(true, true);
        for (const char* layer : {"BLUE_1", "BLUE_2", "GREEN"})
            ZelTestDrawing::addLayer(&other, layer, 5);
        ZelTestDrawing::addWdmBlock(&other, "BLU*");
        const QString path = tempPath("other.dwg");
        EXPECT_TRUE(ZelTestDrawing::save(&other, path));
        return path;
    }
};

TEST_F(LispTest, TheCurrentAndTheDefaultWireTypeAreMadeOnceRepairedResetAndSet) {
    OvDbDatabase* bare = makeDrawing({}, QString(), "bare.dwg");
    // Outside the module's resources the default wire type has no name, so nothing is made.
    EXPECT_EQ(lisp("(zel_get_default_wiretype)"), "\"\"");
    EXPECT_FALSE(layerId(bare, "WIRES").isValid());
    EXPECT_EQ(currentRecord(bare), "none");
    clearOutput();
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"WIRES\"");
    EXPECT_TRUE(layerId(bare, "WIRES").isValid());
    EXPECT_EQ(currentRecord(bare), "WIRES|WIRES||0");
    const QString made = platform::formatText(moduleString(155), "WIRES");
    EXPECT_EQ(output().count(made), 1) << output().toStdString();
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    clearOutput();
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"WIRES\"");
    EXPECT_FALSE(output().contains(made)) << output().toStdString();

    // A current layer that is gone takes the first wire layer.
    OvDbDatabase* database = makeDrawing({"RED_1", "PLAIN"}, "RED*");
    setCurrentRecord(database, "GONE", "GONE");
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"RED_1\"");
    EXPECT_EQ(currentRecord(database), "RED_1|RED_1||0");

    // An empty current layer means the default one.
    setCurrentRecord(database, "RED_1", "");
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"RED_1\"");

    // A current layer that is no wire type becomes one.
    setCurrentRecord(database, "RED_1", "PLAIN");
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"PLAIN\"");
    EXPECT_FALSE(wireRecord(database, "PLAIN").isEmpty());
    EXPECT_EQ(wireLays(), "RED*,PLA*");

    // A dictionary without its current record: the default wire type is made and announced.
    OvDbDatabase* other = makeDrawing({"RED_1"}, "RED*", "second.dwg");
    resbuf* unrelated = ovutBuildList(1, L"x", 0);
    ZelTestDrawing::setNamedRecord(other, "ZEL_WIRETYPE", "OTHER", unrelated);
    ovutRelRb(unrelated);
    clearOutput();
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"WIRES\"");
    EXPECT_TRUE(output().contains(moduleString(156))) << output().toStdString();
    EXPECT_EQ(currentRecord(other), "WIRES|WIRES||0");

    // The default wire type is the first of the record or any existing layer set.
    database = makeDrawing({"RED_1", "RED_2", "PLAIN"}, "RED*", "third.dwg");
    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_set_default_wiretype \"NOPE\")"), "nil");
    EXPECT_EQ(currentRecord(database), "none") << "nothing is written";
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 4);

    EXPECT_EQ(lisp("(zel_get_default_wiretype)"), "\"RED_1\"");
    EXPECT_EQ(currentRecord(database), "RED_1|RED_1||0");
    setCurrentRecord(database, "RED_2", "RED_1");
    EXPECT_EQ(lisp("(zel_get_default_wiretype)"), "\"RED_2\"");

    EXPECT_EQ(lisp("(zel_set_default_wiretype \"plain\")"), "\"plain\"");
    EXPECT_EQ(currentRecord(database), "plain|RED_1||0");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // Reset follows the drawing's wire layer.
    setCurrentRecord(database, "RED_1", "RED_1");
    ASSERT_EQ(database->setClayer(layerId(database, "RED_2")), Orvex::eOk);
    EXPECT_EQ(lisp("(zel_reset_current_wiretype)"), "\"RED_2\"");
    EXPECT_EQ(currentRecord(database), "RED_1|RED_2||0");

    // On a layer that is no wire type the stored current layer stays.
    ASSERT_EQ(database->setClayer(layerId(database, "PLAIN")), Orvex::eOk);
    EXPECT_EQ(lisp("(zel_reset_current_wiretype)"), "\"RED_2\"");

    // Only a missing default layer brings the first wire layer in.
    setCurrentRecord(database, "GONE", "RED_2");
    EXPECT_EQ(lisp("(zel_reset_current_wiretype)"), "\"RED_1\"");
    EXPECT_EQ(currentRecord(database), "GONE|RED_1||0");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // Set takes any layer, else the first wire layer, and keeps the rest of the record.
    setCurrentRecord(database, "RED_2", "RED_2", true);
    EXPECT_EQ(lisp("(zel_set_current_wiretype \"plain\")"), "\"plain\"");
    EXPECT_EQ(currentRecord(database), "RED_2|plain||1");
    EXPECT_EQ(lisp("(zel_set_current_wiretype \"NOPE\")"), "\"RED_1\"");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // Without wire types or record, the default wire type is made and the request dropped.
    bare = makeDrawing({"PLAIN"}, QString(), "fourth.dwg");
    clearOutput();
    EXPECT_EQ(lisp("(zel_set_current_wiretype \"PLAIN\")"), "\"WIRES\"");
    EXPECT_TRUE(output().contains(moduleString(156))) << output().toStdString();
    EXPECT_EQ(currentRecord(bare), "WIRES|WIRES||0");
}

TEST_F(LispTest, TheSettingsAreThreeListsOfTheColumnNamesAndAQueryReadsTheProject) {
    makeDrawing({});
    openDefaultNamesProject();
    QStringList names{moduleString(161), moduleString(162)};
    for (int i = 1; i <= 20; ++i)
        names << moduleString(107).toUpper() + QString::number(i);
    names << moduleString(118);
    const QString expected = "((\"" + names.join("\" \"") + "\") (" + repeated("15", 23) + ") (" +
                             repeated("\"L\"", 23) + "))";
    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_get_wiretype_settings)"), expected);
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // A query reads the project database.
    openWireTypeProject("INSERT INTO WIRETYPE VALUES ('1', 'RED_15', 'RED', '1.5', 1, 1);"
                        "INSERT INTO WIRETYPE_USR VALUES ('1', 'RED_15', 2, 'second');");

    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_query_wiretype \"1\" \"RED_15\")"),
              "(\"RED\" \"1.5\" \"\" \"second\" " + repeated("\"\"", 18) + " \"1\")");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    const QString empty = "(" + repeated("\"\"", 23) + ")";
    EXPECT_EQ(lisp("(zel_query_wiretype \"7\" \"RED_15\")"), empty);

    GetProjectManager()->closeProject();
    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_query_wiretype \"1\" \"RED_15\")"), "nil");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 4) << "no key reset on nil";
}

// The three functions that read a drawing, the working one or another on disk.
TEST_F(LispTest, TheReadingFunctionsAnswerForThisOrAnotherDrawing) {
    const QString other = writeOtherDrawing();
    const QString missing = tempPath("missing.dwg");
    OvDbDatabase* database = makeDrawing({"PLAIN"}, "RED_1");
    ZelTestDrawing::addLayer(database, "RED_1", 1);
    ZelTestDrawing::addLayer(database, "RED_2");
    resbuf* stored = ovutBuildList(1, L"RED", 2, L"2.5", 3, L"WIRE", 90, 3, 290, 0, 0);
    ZelTestDrawing::setExtensionRecord(layerId(database, "RED_2"), "ZEL_WIRETYPE", stored);
    ovutRelRb(stored);

    EXPECT_EQ(lisp("(zel_get_active_dwg_wiretype)"), "(\"RED_1\" \"RED_2\")");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    EXPECT_EQ(lisp("(zel_get_active_dwg_wiretype \"" + other + "\")"), "(\"BLUE_1\" \"BLUE_2\")");
    EXPECT_EQ(lisp("(zel_get_active_dwg_wiretype \"" + missing + "\")"), "nil");

    // The stored record of a layer comes back as it is; a layer listed in WIRELAYS without
    // one reads as the default record, here and in another drawing.
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"RED_2\")"),
              "((1 . \"RED\") (2 . \"2.5\") (3 . \"WIRE\") (90 . 3) (290 . 0))");
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"red_1\")"), kListedRecord);
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"blue_2\" \"" + other + "\")"), kListedRecord);
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"PLAIN\")"), "nil");
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"NOPE\")"), "nil");
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"GREEN\" \"" + other + "\")"), "nil");
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"RED_1\" \"" + missing + "\")"), "nil");

    EXPECT_EQ(layerInfo("red_1"), "(\"1\" \"Continuous\" \"-0.03\")");
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info nil \"PLAIN\")"),
              "(\"7\" \"Continuous\" \"-0.03\")");
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info \"" + other + "\" \"green\")"),
              "(\"5\" \"Continuous\" \"-0.03\")");
    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info \"" + missing + "\" \"RED_1\")"), "nil");
    EXPECT_EQ(layerInfo("NOPE"), "nil");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info \"\")"), "nil");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 4) << "an empty layer leaves the store alone";

    makeDrawing({"PLAIN"}, QString(), "plain.dwg");
    EXPECT_EQ(lisp("(zel_get_active_dwg_wiretype)"), "nil");
}

TEST_F(LispTest, AddMakesAWireTypeFromItsPairsAndFailsWithoutAName) {
    OvDbDatabase* database = makeDrawing({}, QString());
    EXPECT_EQ(lisp("(zel_add_wiretype \"RED_2.5\" \"_COLOR\" \"red\")"), "nil");
    EXPECT_EQ(clayerName(database), "RED_2.5");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    EXPECT_EQ(lisp("(> rereads 0)"), "T") << "the add-on is told of the new WIRELAYS";
    EXPECT_EQ(layerInfo("RED_2.5"), "(\"1\" \"Continuous\" \"-0.03\")");
    EXPECT_EQ(wireRecord(database, "RED_2.5"),
              "((1 . \"\") (2 . \"\") (3 . \"WIRE\") (90 . 0) (290 . 1))");
    EXPECT_EQ(wireLays(), "RED*");

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

    // Without a name, or on a key that is no text, the call fails and adds nothing.
    const QString lays = wireLays();
    expectFailure("(zel_add_wiretype \"\")");
    expectFailure("(zel_add_wiretype \"X\" \"_COLOR\" \"red\" 7 \"a\")");
    EXPECT_FALSE(layerId(database, "X").isValid());
    // A name alone goes the strict way, where an invalid character is refused.
    expectFailure("(zel_add_wiretype \"A/B\")");
    EXPECT_EQ(wireLays(), lays);
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    // A property without its value leaves the values short: the index error reaches the
    // host, which reports it; the layer made before stays, nothing is left open, the resources
    // are switched back and the drawing takes the next wire type.
    clearOutput();
    const ovcore::lisp::EvalResult result =
        ovcore::lisp::evalString("(zel_add_wiretype \"SHORT\" \"Wire Color\")");
    EXPECT_FALSE(result.ok);
    EXPECT_TRUE(output().contains("exception")) << output().toStdString();
    EXPECT_TRUE(layerId(database, "SHORT").isValid());
    EXPECT_EQ(ovdbOpenObjectCount(), 0u);
    EXPECT_EQ(platform::currentResourceHandle(), platform::hostResourceHandle());
    EXPECT_EQ(lisp("(zel_add_wiretype \"AFTER\")"), "nil");
    EXPECT_EQ(wireLays(), lays + ",AFT*");

    // Under a project's names: pairs plain or as one list.
    openDefaultNamesProject();
    EXPECT_EQ(lisp("(zel_add_wiretype '(\"BLUE_1\" \"_LTYPE\" \"dashed\" \"_lweight\" \"0.29\""
                   " \"Color\" \"BLUE\" \"Flag\" \"0\" \"USER3\" \"x\" \"Wire Size\" \"1.5\"))"),
              "nil");
    EXPECT_EQ(layerInfo("BLUE_1"), "(\"256\" \"DASHED\" \"0.3\")");
    EXPECT_EQ(wireRecord(database, "BLUE_1"),
              "((1 . \"BLUE\") (2 . \"1.5\") (3 . \"WIRE\") " + repeated("(4 . \"\")", 2) +
                  " (4 . \"x\") " + repeated("(4 . \"\")", 17) + " (90 . 0) (290 . 0))");

    // Unknown colours and linetypes keep the starting values; a key without value ends it.
    lisp("(zel_add_wiretype \"C1\" \"_COLOR\" \"mauve\" \"_LTYPE\" \"NOSUCH\")");
    EXPECT_EQ(layerInfo("C1"), "(\"256\" \"Continuous\" \"-0.03\")");
    lisp("(zel_add_wiretype \"C2\" \"_LTYPE\" \"HIDDEN\" \"_COLOR\")");
    EXPECT_EQ(layerInfo("C2"), "(\"256\" \"HIDDEN\" \"-0.03\")");

    // The name's invalid characters go when properties are given.
    lisp("(zel_add_wiretype \"A/B\" \"Wire Size\" \"4\")");
    EXPECT_TRUE(layerId(database, "AB").isValid());
}

TEST_F(LispTest, AddEditAndRemoveOnExistingLayers) {
    OvDbDatabase* database = makeDrawing({"RED_1", "PLAIN"}, "RED*");
    openDefaultNamesProject();
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

    // Edit sets properties by name or alias.
    EXPECT_EQ(lisp("(zel_edit_wiretype \"red_1\" \"color\" \"RED\" \"Wire Size\" \"2.5\""
                   " \"USER1\" \"a\" \"flag\" \"0\")"),
              "nil");
    EXPECT_EQ(wireRecord(database, "RED_1"), "((1 . \"RED\") (2 . \"2.5\") (3 . \"WIRE\") "
                                             "(4 . \"a\") " +
                                                 repeated("(4 . \"\")", 19) +
                                                 " (90 . 0) (290 . 0))");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    // In a list, and with a value that is no text, which is then read as the next key.
    EXPECT_EQ(lisp("(zel_edit_wiretype '(\"RED_1\" \"Wire Color\" 5 \"GREEN\"))"), "nil");
    EXPECT_TRUE(wireRecord(database, "RED_1").startsWith("((1 . \"GREEN\") (2 . \"2.5\")"));
    expectFailure("(zel_edit_wiretype \"NOPE\" \"Wire Size\" \"1\")");

    // Remove takes the wire type and leaves the layer.
    EXPECT_EQ(lisp("(zel_remove_wiretype \"olive\")"), "nil");
    EXPECT_EQ(wireLays(), "RED*,TEA*");
    EXPECT_EQ(lisp("(zel_remove_wiretype \"RED_1\")"), "nil");
    EXPECT_TRUE(wireRecord(database, "RED_1").isEmpty());
    EXPECT_TRUE(layerId(database, "RED_1").isValid());
    EXPECT_EQ(wireLays(), ",TEA*") << "the comma after a first token stays";
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    EXPECT_EQ(lisp("(zel_remove_wiretype \"NOPE\")"), "nil");
    EXPECT_EQ(wireLays(), ",TEA*");
}

} // namespace
