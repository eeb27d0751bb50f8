// Wire type data of the project database.

#include "StoreTest.h"

#include "zelpm/ZelPrmProjectManager.h"

#include <sqlite3.h>

namespace {

void exec(sqlite3* db, const char* sql) {
    char* error = nullptr;
    ASSERT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, &error), SQLITE_OK) << error;
}

} // namespace

class StoreProjectTest : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        const QString database = tempPath("project.db");
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(database.toUtf8().constData(), &db), SQLITE_OK);
        exec(db, "CREATE TABLE WIRETYPE (DWGIX TEXT, LAYNAME TEXT, WIRECOLOR TEXT, WIRESIZE TEXT,"
                 " FLAG INTEGER, USERCOUNT INTEGER);"
                 "CREATE TABLE WIRETYPE_USR (DWGIX TEXT, LAYNAME TEXT, USER INTEGER, VALUE TEXT);"
                 "INSERT INTO WIRETYPE VALUES ('1', 'RED_15', 'RED', NULL, 0, 2);"
                 "INSERT INTO WIRETYPE_USR VALUES ('1', 'RED_15', 1, 'first');"
                 "INSERT INTO WIRETYPE_USR VALUES ('1', 'RED_15', 20, NULL);"
                 "INSERT INTO WIRETYPE_USR VALUES ('1', 'RED_15', 19, 'nineteen');"
                 "INSERT INTO WIRETYPE VALUES ('1', 'ZERO', 'BLU', '2.5', 1, 1);"
                 "INSERT INTO WIRETYPE_USR VALUES ('1', 'ZERO', 0, 'over the size');"
                 "INSERT INTO WIRETYPE VALUES ('2', 'BAD', 'GRN', '4', 1, 1);"
                 "INSERT INTO WIRETYPE_USR VALUES ('2', 'BAD', 22, 'too far');");
        sqlite3_close(db);
        makeDrawing({});
        openProject(ZelTestProject::write(tempPath("p"), "p", {}, database));
    }
};

TEST_F(StoreProjectTest, AWireTypeReadsAsTwentyThreeValues) {
    ZelWireTypeRec store;
    std::vector<QString> values;
    ASSERT_TRUE(store.QueryWireType("1", "RED_15", values, 1));
    ASSERT_EQ(values.size(), 23u);
    EXPECT_EQ(values[0], "RED");
    EXPECT_TRUE(values[1].isEmpty()) << "a null is an empty string";
    EXPECT_EQ(values[2], "first");
    EXPECT_EQ(values[20], "nineteen");
    EXPECT_TRUE(values[21].isEmpty());
    EXPECT_EQ(values[22], "0");

    // USER 0 lands on the wire size.
    values.clear();
    ASSERT_TRUE(store.QueryWireType("1", "ZERO", values, 1));
    EXPECT_EQ(values[1], "over the size");
    EXPECT_EQ(values[22], "1");

    values.clear();
    ASSERT_TRUE(store.QueryWireType("9", "UNKNOWN", values, 1));
    EXPECT_EQ(values, std::vector<QString>(23));
}

TEST_F(StoreProjectTest, AUserNumberOutsideTheResultThrows) {
    ZelWireTypeRec store;
    std::vector<QString> values;
    EXPECT_THROW(store.QueryWireType("2", "BAD", values, 1), std::out_of_range);
    ASSERT_EQ(values.size(), 23u);
    EXPECT_EQ(values[0], "GRN") << "what was fetched before stays";
}

TEST_F(StoreProjectTest, TheTextsGoIntoTheStatementAsTheyAre) {
    ZelWireTypeRec store;
    std::vector<QString> values;
    EXPECT_FALSE(store.QueryWireType("1", "O'BRIEN", values, 1));
    EXPECT_TRUE(values.empty());
    EXPECT_TRUE(output().contains("O'BRIEN")) << "the failed statement is printed";

    GetProjectManager()->closeProject();
    EXPECT_FALSE(store.QueryWireType("1", "RED_15", values, 1));
    EXPECT_TRUE(values.empty());
}
