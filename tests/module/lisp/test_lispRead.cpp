// The LISP functions that read wire types, called from LISP as the add-on calls them.

#include "LispTest.h"

#include "shell/ResourceOverride.h"

#include "platform/Resources.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <sqlite3.h>

namespace {

QString moduleString(unsigned id) {
    const ResourceOverride resources;
    return platform::loadString(id);
}

QString repeated(const QString& item, int count) {
    QStringList items;
    for (int i = 0; i < count; ++i)
        items << item;
    return items.join(' ');
}

// The record a layer listed in WIRELAYS without one of its own reads as.
const QString kListedRecord =
    "((1 . \"\") (2 . \"\") (3 . \"WIRE\") " + repeated("(4 . \"\")", 20) + " (90 . 0) (290 . 1))";

} // namespace

class LispReadTest : public LispTest {
protected:
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

TEST_F(LispReadTest, TheCurrentWireTypeOfABareDrawingIsMadeOnce) {
    OvDbDatabase* database = makeDrawing({}, QString());
    clearOutput();
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"WIRES\"");
    EXPECT_TRUE(layerId(database, "WIRES").isValid());
    EXPECT_EQ(currentRecord(database), "((1 . \"WIRES\") (1 . \"WIRES\") (1 . \"\") (290 . 0))");
    const QString made = platform::formatText(moduleString(155), "WIRES");
    EXPECT_EQ(output().count(made), 1) << output().toStdString();
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);

    clearOutput();
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"WIRES\"");
    EXPECT_FALSE(output().contains(made)) << output().toStdString();
}

TEST_F(LispReadTest, TheCurrentWireTypeIsRepairedWhenItsLayerIsGoneOrNotAWireType) {
    OvDbDatabase* database = makeDrawing({"RED_1", "PLAIN"}, "RED*");
    setCurrentRecord(database, "GONE", "GONE");
    EXPECT_EQ(lisp("(zel_get_current_wiretype)"), "\"RED_1\"");
    EXPECT_EQ(currentRecord(database), "((1 . \"RED_1\") (1 . \"RED_1\") (1 . \"\") (290 . 0))");

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
    EXPECT_EQ(currentRecord(other), "((1 . \"WIRES\") (1 . \"WIRES\") (1 . \"\") (290 . 0))");
}

TEST_F(LispReadTest, TheDefaultWireTypeIsTheFirstOfTheRecordOrEmpty) {
    // Outside the module's resources the default wire type has no name, so nothing is made.
    OvDbDatabase* bare = makeDrawing({}, QString());
    EXPECT_EQ(lisp("(zel_get_default_wiretype)"), "\"\"");
    EXPECT_FALSE(layerId(bare, "WIRES").isValid());
    EXPECT_TRUE(currentRecord(bare).isEmpty());

    OvDbDatabase* database = makeDrawing({"RED_1", "RED_2"}, "RED*", "second.dwg");
    EXPECT_EQ(lisp("(zel_get_default_wiretype)"), "\"RED_1\"");
    EXPECT_EQ(currentRecord(database), "((1 . \"RED_1\") (1 . \"RED_1\") (1 . \"\") (290 . 0))");
    setCurrentRecord(database, "RED_2", "RED_1");
    EXPECT_EQ(lisp("(zel_get_default_wiretype)"), "\"RED_2\"");
}

TEST_F(LispReadTest, TheSettingsAreThreeListsOfTheColumnNames) {
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
}

TEST_F(LispReadTest, AQueryReadsTheProjectDatabase) {
    const QString path = tempPath("project.db");
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.toUtf8().constData(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "CREATE TABLE WIRETYPE (DWGIX TEXT, LAYNAME TEXT, WIRECOLOR TEXT,"
                           " WIRESIZE TEXT, FLAG INTEGER, USERCOUNT INTEGER);"
                           "CREATE TABLE WIRETYPE_USR (DWGIX TEXT, LAYNAME TEXT, USER INTEGER,"
                           " VALUE TEXT);"
                           "INSERT INTO WIRETYPE VALUES ('1', 'RED_15', 'RED', '1.5', 1, 1);"
                           "INSERT INTO WIRETYPE_USR VALUES ('1', 'RED_15', 2, 'second');",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);
    makeDrawing({});
    openProject(ZelTestProject::write(tempPath("p"), "p", {}, path));

    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_query_wiretype \"1\" \"RED_15\")"),
              "(\"RED\" \"1.5\" \"\" \"second\" " + repeated("\"\"", 18) + " \"1\")");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    const QString empty = "(" + repeated("\"\"", 23) + ")";
    EXPECT_EQ(lisp("(zel_query_wiretype \"7\" \"RED_15\")"), empty);
    // A drawing index given as a number is no text: the query runs with an empty one.
    EXPECT_EQ(lisp("(zel_query_wiretype 1 \"RED_15\")"), empty);

    GetProjectManager()->closeProject();
    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_query_wiretype \"1\" \"RED_15\")"), "nil");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 4) << "no key reset on nil";
}

TEST_F(LispReadTest, TheActiveWireTypesOfThisOrAnotherDrawing) {
    const QString other = writeOtherDrawing();
    makeDrawing({"RED_1", "PLAIN", "RED_2"}, "RED*");
    EXPECT_EQ(lisp("(zel_get_active_dwg_wiretype)"), "(\"RED_1\" \"RED_2\")");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    EXPECT_EQ(lisp("(zel_get_active_dwg_wiretype \"" + other + "\")"), "(\"BLUE_1\" \"BLUE_2\")");
    EXPECT_EQ(lisp("(zel_get_active_dwg_wiretype \"" + tempPath("missing.dwg") + "\")"), "nil");

    makeDrawing({"PLAIN"}, QString(), "plain.dwg");
    EXPECT_EQ(lisp("(zel_get_active_dwg_wiretype)"), "nil");
}

TEST_F(LispReadTest, TheStoredRecordOfALayerComesBackAsItIs) {
    const QString other = writeOtherDrawing();
    OvDbDatabase* database = makeDrawing({"RED_1", "RED_2", "PLAIN"}, "RED_1");
    resbuf* stored = ovutBuildList(1, L"RED", 2, L"2.5", 3, L"WIRE", 90, 3, 290, 0, 0);
    ZelTestDrawing::setExtensionRecord(layerId(database, "RED_2"), "ZEL_WIRETYPE", stored);
    ovutRelRb(stored);
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"RED_2\")"),
              "((1 . \"RED\") (2 . \"2.5\") (3 . \"WIRE\") (90 . 3) (290 . 0))");

    // Listed in WIRELAYS without a record: the default record, here and in another drawing.
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"red_1\")"), kListedRecord);
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"BLUE_2\" \"" + other + "\")"), kListedRecord);

    for (const char* call :
         {"(zel_get_dwg_wiretype_settings \"PLAIN\")", "(zel_get_dwg_wiretype_settings \"NOPE\")",
          "(zel_get_dwg_wiretype_settings)", "(zel_get_dwg_wiretype_settings 5)"})
        EXPECT_EQ(lisp(call), "nil") << call;
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"GREEN\" \"" + other + "\")"), "nil");
    EXPECT_EQ(lisp("(zel_get_dwg_wiretype_settings \"RED_1\" \"" + tempPath("missing.dwg") + "\")"),
              "nil");
}

TEST_F(LispReadTest, TheLayerInfoOfThisOrAnotherDrawing) {
    const QString other = writeOtherDrawing();
    OvDbDatabase* database = makeDrawing({"PLAIN"});
    ZelTestDrawing::addLayer(database, "RED_1", 1);
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info \"\" \"red_1\")"),
              "(\"1\" \"Continuous\" \"-0.03\")");
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info nil \"PLAIN\")"),
              "(\"7\" \"Continuous\" \"-0.03\")");
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info \"" + other + "\" \"GREEN\")"),
              "(\"5\" \"Continuous\" \"-0.03\")");

    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info \"" + tempPath("missing.dwg") + "\" \"RED_1\")"),
              "nil");
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info \"\" \"NOPE\")"), "nil");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 0);
    ZelWireTypeRec::m_nKey = 4;
    EXPECT_EQ(lisp("(zel_get_wiretype_layer_info \"\")"), "nil");
    EXPECT_EQ(ZelWireTypeRec::m_nKey, 4) << "an empty layer leaves the store alone";
}
