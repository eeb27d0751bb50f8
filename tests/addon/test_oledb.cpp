// The project database as the wire type module reaches it: connect strings, the module's
// statements on the demo database, statements that would write, and the connection cache.
#include "AddonTest.h"

#include "zeloledb/ZelOleDbCommand.h"
#include "zeloledb/ZelOleDbConnection.h"
#include "zeloledb/ZelOleDbConnectionCache.h"

#include <QCryptographicHash>

#include <tuple>

#include <sys/stat.h>

namespace {

class OleDb : public AddonTest {
protected:
    void SetUp() override {
        AddonTest::SetUp();
        ASSERT_EQ(demoDb.OpenFromInitializationString(connectString(demo("demo.db"))), 0)
            << demoDb.GetErrorInfo().toStdString();
    }
    // Runs a statement on the demo database; the command stays the caller's to read.
    int execute(ZelOleDbCommand& command, const QString& sql) {
        command.SetConnection(&demoDb);
        command.SetCommandText(sql);
        return command.Execute();
    }
    // The first column of the first row of a statement on the demo database.
    QString firstField(const QString& sql) {
        ZelOleDbCommand command;
        EXPECT_EQ(execute(command, sql), ZelOleDbCommand::ExecuteRowset) << sql.toStdString();
        return command.FetchNext() == ZelOleDbCommand::FetchRow ? command.FieldAsString(1)
                                                                : QString();
    }

    ZelOleDbConnection demoDb;
};

TEST_F(OleDb, AnyPathOpens) {
    // Paths that need quoting open like any other, a blank or a quote at the start included.
    QDir::setCurrent(m_temp.path());
    for (const QString folder : {"a;b\"c", "x;'y", "\"q", " lead"}) {
        const QString database = folder + "/demo.db";
        ASSERT_TRUE(QDir().mkpath(folder));
        ASSERT_TRUE(QFile::copy(demo("demo.db"), database));
        ZelOleDbConnection connection;
        EXPECT_EQ(connection.OpenFromInitializationString(connectString(database)), 0)
            << connection.GetErrorInfo().toStdString();
        EXPECT_TRUE(connection.GetDataSource().endsWith(database));
    }
}

TEST_F(OleDb, LayerNamesCompareWithoutCaseAndFieldsAreNullOutsideARow) {
    // The module's statements give the layer name as the drafter typed it.
    EXPECT_EQ(firstField("SELECT WIRECOLOR FROM WIRETYPE WHERE DWGIX = '1' AND LAYNAME = 'rd_1.5'"),
              "RD");

    // Columns are numbered from 1; outside a row every field is null.
    ZelOleDbCommand command;
    ASSERT_EQ(execute(command, "SELECT [USER], [VALUE] FROM WIRETYPE_USR WHERE "
                               "LAYNAME = 'GNYE_2.5' AND [USER] = 3"),
              ZelOleDbCommand::ExecuteRowset);
    EXPECT_EQ(command.GetColumnName(1), QStringLiteral("USER"));
    EXPECT_TRUE(command.IsNull(1));
    ASSERT_EQ(command.FetchNext(), ZelOleDbCommand::FetchRow);
    EXPECT_EQ(command.FieldAsLong(1), 3);
    EXPECT_TRUE(!command.IsNull(1) && command.IsNull(2) && command.IsNull(0) && command.IsNull(3));
    EXPECT_EQ(command.FetchNext(), ZelOleDbCommand::FetchEnd);
}

TEST_F(OleDb, StatementsThatWouldWriteAreRefusedAndTheFileStaysAsItWas) {
    const auto hash = [] {
        QFile file(demo("demo.db"));
        return file.open(QIODevice::ReadOnly)
                   ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256)
                   : QByteArray();
    };
    const QByteArray before = hash();
    for (const QString sql :
         {"INSERT INTO WIRETYPE (DWGIX, LAYNAME) VALUES (1, 'NEW')",
          "UPDATE WIRETYPE SET WIRECOLOR = 'XX'", "DELETE FROM WIRETYPE_USR", "DROP TABLE WIRETYPE",
          "CREATE TEMP TABLE T (A)", "PRAGMA query_only = OFF", "SELECT 1; DROP TABLE WIRETYPE",
          "ATTACH DATABASE '/tmp/zel-attached.db' AS other"}) {
        ZelOleDbCommand command;
        EXPECT_EQ(execute(command, sql), ZelOleDbCommand::ExecuteFailed) << sql.toStdString();
        EXPECT_EQ(command.GetErrorStatement(), sql);
        EXPECT_EQ(command.GetLastError().GetErrorCode(), ZelOleDbErrorInfo::StatementRefused)
            << sql.toStdString() << ": " << command.GetErrorInfo().toStdString();
    }
    EXPECT_FALSE(QFile::exists("/tmp/zel-attached.db"));
    ZelOleDbCommand count;
    ASSERT_EQ(execute(count, "SELECT COUNT(*) FROM WIRETYPE"), ZelOleDbCommand::ExecuteRowset);
    ASSERT_EQ(count.FetchNext(), ZelOleDbCommand::FetchRow);
    EXPECT_EQ(count.FieldAsLong(1), 9);
    demoDb.Close();
    EXPECT_EQ(hash(), before);
}

TEST_F(OleDb, AFailingStatementGivesTheProvidersText) {
    ZelOleDbCommand command;
    const QString sql = "SELECT NOSUCH FROM WIRETYPE";
    EXPECT_EQ(execute(command, sql), ZelOleDbCommand::ExecuteFailed);
    EXPECT_EQ(command.GetColumnCount(), 0);
    EXPECT_EQ(command.FetchNext(), ZelOleDbCommand::FetchEnd);
    EXPECT_EQ(command.GetErrorStatement(), sql);
    const QString text = command.GetErrorInfo(false);
    EXPECT_TRUE(text.contains("no such column") && text.contains(demo("demo.db")))
        << text.toStdString();
    EXPECT_EQ(demoDb.GetErrorInfo(true), text);
    EXPECT_TRUE(demoDb.GetErrorInfo().isEmpty());

    // A good statement afterwards clears the failure.
    EXPECT_EQ(execute(command, "SELECT FLAG FROM WIRETYPE"), ZelOleDbCommand::ExecuteRowset);
    EXPECT_TRUE(command.GetErrorStatement().isEmpty());
}

TEST_F(OleDb, AStatementThatRunsTooLongIsStoppedWithAnError) {
    const auto before = ZelOleDbCommand::GetTimeLimit();
    ZelOleDbCommand::SetTimeLimit(std::chrono::milliseconds(200));
    const QString endless = "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) "
                            "SELECT count(*) FROM c";
    // One step that never ends: Execute itself fails.
    ZelOleDbCommand command;
    EXPECT_EQ(execute(command, endless), ZelOleDbCommand::ExecuteFailed);
    EXPECT_TRUE(command.GetErrorInfo().contains("ran longer than 200 ms"))
        << command.GetErrorInfo().toStdString();

    // The next statement on the same connection has its own time.
    EXPECT_EQ(firstField("SELECT WIRESIZE FROM WIRETYPE WHERE LAYNAME = 'BK_1.5'"), "1.5");
    ZelOleDbCommand::SetTimeLimit(before);
}

TEST_F(OleDb, DatabasesThatCannotBeOpenedAreSaidSo) {
    ASSERT_EQ(mkfifo(path("pipe.db").toLocal8Bit().constData(), 0600), 0);
    const QString notes = writeFile("notes.db", QByteArray(4096, 'z'));
    QString other;
    ZelOleDbHelper::FormatConnectString(other, demo("demo.db"), nullptr, nullptr, L"SQLOLEDB",
                                        nullptr, nullptr);
    const int bad = ZelOleDbErrorInfo::BadConnectString;
    const std::tuple<QString, int, const char*> cases[] = {
        {connectString(path("missing.db")), 0, "does not exist"},
        {connectString(m_temp.path()), 0, "folder"},
        {connectString(path("pipe.db")), 0, "not a regular file"},
        {connectString(notes), 0, "not a database"},
        {other, ZelOleDbErrorInfo::ProviderRefused, "SQLOLEDB"},
        {"Provider=x;Data Source=\"/open.db", bad, ""},
        {"Provider=x;junk;", bad, ""},
        {"Data Source=\"a\"b", bad, ""},
        // The demo database exists; the name goes on past a NUL.
        {connectString(demo("demo.db") + QChar(0) + "junk"), bad, "NUL"},
    };
    for (const auto& [connect, code, reason] : cases) {
        ZelOleDbConnection connection;
        const int status = connection.OpenFromInitializationString(connect);
        EXPECT_TRUE(code ? status == code : status != 0) << connect.toStdString() << ": " << status;
        EXPECT_FALSE(connection.IsOpen());
        const QString text = connection.GetErrorInfo();
        EXPECT_TRUE(!text.isEmpty() && text.contains(reason)) << text.toStdString();
    }
    EXPECT_FALSE(QFile::exists(path("missing.db"))) << "a read-only open never makes the file";
    // The provider name is matched without regard to case.
    ZelOleDbHelper::FormatConnectString(other, demo("demo.db"), nullptr, nullptr,
                                        L"microsoft.ace.oledb.12.0", nullptr, nullptr);
    ZelOleDbConnection connection;
    EXPECT_EQ(connection.OpenFromInitializationString(other), 0);
}

TEST_F(OleDb, TheCacheGivesBackTheConnectionItWasGiven) {
    ZelOleDbConnectionCache* cache = ZelOleDbConnectionCache::GetCacheManager();
    cache->Clear();
    const QString connect = connectString(demo("demo.db"));
    EXPECT_EQ(cache->Connect(connect), nullptr);
    auto* connection = new ZelOleDbConnection;
    ASSERT_EQ(connection->OpenFromInitializationString(connect), 0);
    cache->Cache(connection);
    cache->Cache(connection);
    cache->Cache(new ZelOleDbConnection); // a closed connection is not kept
    EXPECT_EQ(cache->GetCount(), 1);
    EXPECT_EQ(cache->Connect(connect), connection);
    EXPECT_EQ(cache->Connect(connectString(demo("demo.db.other"))), nullptr);

    // Rows already fetched outlive the connection they came from.
    ZelOleDbCommand command;
    command.SetConnection(connection);
    command.SetCommandText("SELECT WIRECOLOR FROM WIRETYPE WHERE LAYNAME = 'WH_0.75'");
    ASSERT_EQ(command.Execute(), ZelOleDbCommand::ExecuteRowset);
    cache->Clear();
    EXPECT_EQ(cache->Connect(connect), nullptr);
    ASSERT_EQ(command.FetchNext(), ZelOleDbCommand::FetchRow);
    EXPECT_EQ(command.FieldAsString(1), QStringLiteral("WH"));

    ZelOleDbConnection* opened = cache->Connect(connect, true);
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(cache->Connect(connect), opened);
    EXPECT_EQ(cache->Connect(connectString("/no/such.db"), true), nullptr);
    cache->Clear();
}

} // namespace
