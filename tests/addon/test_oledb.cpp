#include "zeloledb/ZelOleDbCommand.h"
#include "zeloledb/ZelOleDbConnection.h"
#include "zeloledb/ZelOleDbConnectionCache.h"
#include "zeloledb/ZelOleDbHelper.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace {

const QString kDemoDb = QStringLiteral(ZEL_DEMO_DIR "/demo.db");
// The texts the wire type module passes for the project database.
const wchar_t* const kProvider = L"Microsoft.ACE.OLEDB.12.0";
const wchar_t* const kProperties = L"Jet OLEDB:Engine Type=5";

// The module's three statements of a wire type query, as it formats them.
QString firstQuery(const QString& dwg, const QString& layer) {
    return QStringLiteral("SELECT WIRECOLOR, WIRESIZE FROM WIRETYPE W WHERE W.DWGIX = '%1' AND "
                          "W.LAYNAME = '%2'")
        .arg(dwg, layer);
}
QString secondQuery(const QString& dwg, const QString& layer) {
    return QStringLiteral("SELECT U.[USER], U.[VALUE] FROM WIRETYPE_USR U, WIRETYPE W WHERE "
                          "U.DWGIX = '%1' AND U.LAYNAME = '%2' AND W.DWGIX = U.DWGIX AND "
                          "U.LAYNAME = W.LAYNAME")
        .arg(dwg, layer);
}
QString thirdQuery(const QString& dwg, const QString& layer) {
    return QStringLiteral("SELECT FLAG FROM WIRETYPE W WHERE W.DWGIX = '%1' AND W.LAYNAME = '%2'")
        .arg(dwg, layer);
}

QString connectStringFor(const QString& path) {
    QString connect;
    EXPECT_TRUE(ZelOleDbHelper::FormatConnectString(connect, path, nullptr, nullptr, kProvider,
                                                    kProperties, nullptr));
    return connect;
}

std::unique_ptr<ZelOleDbConnection> openDemo() {
    auto connection = std::make_unique<ZelOleDbConnection>();
    EXPECT_EQ(connection->OpenFromInitializationString(connectStringFor(kDemoDb), false), 0)
        << connection->GetErrorInfo().toStdString();
    return connection;
}

QByteArray fileHash(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

// A wire type's 23 values as the module gathers them from the three statements.
struct WireTypeRow {
    QString color, size, flag;
    std::map<long, QString> users;
    bool found = false;
};

WireTypeRow queryWireType(ZelOleDbConnection& connection, const QString& dwg,
                          const QString& layer) {
    WireTypeRow row;
    ZelOleDbCommand command;
    command.SetConnection(&connection);
    command.SetCommandText(firstQuery(dwg, layer));
    EXPECT_NE(command.Execute(), ZelOleDbCommand::ExecuteFailed);
    EXPECT_EQ(command.GetColumnCount(), 2);
    if (command.FetchNext() == ZelOleDbCommand::FetchRow) {
        row.found = true;
        row.color = command.FieldAsString(1);
        row.size = command.FieldAsString(2);
    }
    command.SetCommandText(secondQuery(dwg, layer));
    EXPECT_NE(command.Execute(), ZelOleDbCommand::ExecuteFailed);
    while (command.FetchNext() == ZelOleDbCommand::FetchRow) {
        row.users[command.FieldAsLong(1)] = command.FieldAsString(2);
    }
    command.SetCommandText(thirdQuery(dwg, layer));
    EXPECT_NE(command.Execute(), ZelOleDbCommand::ExecuteFailed);
    while (command.FetchNext() == ZelOleDbCommand::FetchRow)
        row.flag = command.FieldAsString(1);
    return row;
}

TEST(ZelOleDbHelperTest, ConnectStringCarriesProviderPathAndProperties) {
    QString connect;
    ASSERT_TRUE(ZelOleDbHelper::FormatConnectString(connect, QStringLiteral("/p/demo.db"), nullptr,
                                                    nullptr, kProvider, kProperties, nullptr));
    EXPECT_EQ(connect, QStringLiteral("Provider=Microsoft.ACE.OLEDB.12.0;Data Source=/p/demo.db;"
                                      "Extended Properties=\"Jet OLEDB:Engine Type=5\""));
    EXPECT_FALSE(ZelOleDbHelper::FormatConnectString(connect, QString(), nullptr, nullptr,
                                                     kProvider, kProperties, nullptr));
    EXPECT_TRUE(connect.isEmpty());
}

TEST(ZelOleDbHelperTest, AwkwardValuesSurviveTheRoundTrip) {
    const QString paths[] = {QStringLiteral("/a;b/x.db"), QStringLiteral("/a\"b/x.db"),
                             QStringLiteral("/a;'b\"/x.db"), QStringLiteral("\"/q.db"),
                             QStringLiteral(" /lead.db")};
    for (const QString& path : paths) {
        QString connect;
        ASSERT_TRUE(ZelOleDbHelper::FormatConnectString(connect, path, L"me", L"pa;ss", kProvider,
                                                        kProperties, L";Mode=Read"));
        ZelOleDbHelper::KeyValues pairs;
        QString error;
        ASSERT_TRUE(ZelOleDbHelper::ParseConnectString(connect, pairs, &error))
            << connect.toStdString() << ": " << error.toStdString();
        QString value;
        ASSERT_TRUE(ZelOleDbHelper::FindValue(pairs, QStringLiteral("data source"), value));
        EXPECT_EQ(value, path) << connect.toStdString();
        ASSERT_TRUE(ZelOleDbHelper::FindValue(pairs, QStringLiteral("Password"), value));
        EXPECT_EQ(value, QStringLiteral("pa;ss"));
        ASSERT_TRUE(ZelOleDbHelper::FindValue(pairs, QStringLiteral("Mode"), value));
        EXPECT_EQ(value, QStringLiteral("Read"));
    }
}

TEST(ZelOleDbHelperTest, MalformedConnectStringsAreRefused) {
    const QString malformed[] = {QStringLiteral("Provider=x;Data Source=\"/open.db"),
                                 QStringLiteral("Provider=x;junk;"),
                                 QStringLiteral("Data Source=\"a\"b")};
    for (const QString& connect : malformed) {
        ZelOleDbConnection connection;
        EXPECT_EQ(connection.OpenFromInitializationString(connect, false),
                  ZelOleDbErrorInfo::BadConnectString);
        EXPECT_FALSE(connection.GetErrorInfo().isEmpty());
    }
}

TEST(ZelOleDbCommandTest, WireTypeQueriesReadTheDemoDatabase) {
    auto connection = openDemo();
    const WireTypeRow black =
        queryWireType(*connection, QStringLiteral("1"), QStringLiteral("BK_1.5"));
    EXPECT_TRUE(black.found);
    EXPECT_EQ(black.color, QStringLiteral("BK"));
    EXPECT_EQ(black.size, QStringLiteral("1.5"));
    EXPECT_EQ(black.flag, QStringLiteral("1"));
    EXPECT_EQ(black.users, (std::map<long, QString>{{1, QStringLiteral("PVC")},
                                                    {2, QStringLiteral("300/500 V")},
                                                    {3, QStringLiteral("70 °C")}}));

    // The same layer name in the other drawing has values of its own.
    const WireTypeRow imported =
        queryWireType(*connection, QStringLiteral("2"), QStringLiteral("BK_1.5"));
    EXPECT_EQ(imported.users.at(1), QStringLiteral("Rubber"));

    // Layer names compare without regard to case; a flag of 0 and user value 20 come through.
    const WireTypeRow red =
        queryWireType(*connection, QStringLiteral("1"), QStringLiteral("rd_1.5"));
    EXPECT_EQ(red.color, QStringLiteral("RD"));
    EXPECT_EQ(red.flag, QStringLiteral("0"));
    EXPECT_EQ(red.users.at(20), QStringLiteral("Heat-resistant"));

    const WireTypeRow earth =
        queryWireType(*connection, QStringLiteral("1"), QStringLiteral("GNYE_2.5"));
    EXPECT_TRUE(earth.users.at(3).isEmpty()) << "a null value reads as an empty text";

    const WireTypeRow unknown =
        queryWireType(*connection, QStringLiteral("9"), QStringLiteral("BK_1.5"));
    EXPECT_FALSE(unknown.found);
    EXPECT_TRUE(unknown.users.empty());
    EXPECT_TRUE(unknown.flag.isEmpty());
}

TEST(ZelOleDbCommandTest, ColumnsAreNumberedFromOne) {
    auto connection = openDemo();
    ZelOleDbCommand command;
    command.SetConnection(connection.get());
    command.SetCommandText(QStringLiteral("SELECT [USER], [VALUE] FROM WIRETYPE_USR WHERE "
                                          "LAYNAME = 'GNYE_2.5' AND [USER] = 3"));
    ASSERT_EQ(command.Execute(), ZelOleDbCommand::ExecuteRowset);
    EXPECT_EQ(command.GetColumnName(1), QStringLiteral("USER"));
    EXPECT_TRUE(command.IsNull(1)) << "no field before the first fetch";
    ASSERT_EQ(command.FetchNext(), ZelOleDbCommand::FetchRow);
    EXPECT_EQ(command.FieldAsLong(1), 3);
    EXPECT_FALSE(command.IsNull(1));
    EXPECT_TRUE(command.IsNull(2));
    EXPECT_TRUE(command.IsNull(0));
    EXPECT_TRUE(command.IsNull(3));
    EXPECT_EQ(command.FetchNext(), ZelOleDbCommand::FetchEnd);
    EXPECT_EQ(command.FetchNext(), ZelOleDbCommand::FetchEnd);
    EXPECT_TRUE(command.IsNull(1));
}

TEST(ZelOleDbCommandTest, StatementsThatWouldWriteAreRefused) {
    const QByteArray before = fileHash(kDemoDb);
    auto connection = openDemo();
    const QString statements[] = {
        QStringLiteral("INSERT INTO WIRETYPE (DWGIX, LAYNAME) VALUES (1, 'NEW')"),
        QStringLiteral("UPDATE WIRETYPE SET WIRECOLOR = 'XX'"),
        QStringLiteral("DELETE FROM WIRETYPE_USR"),
        QStringLiteral("DROP TABLE WIRETYPE"),
        QStringLiteral("CREATE TEMP TABLE T (A)"),
        QStringLiteral("PRAGMA query_only = OFF"),
        QStringLiteral("ATTACH DATABASE '/tmp/zel-attached.db' AS other"),
        QStringLiteral("SELECT 1; DROP TABLE WIRETYPE"),
    };
    for (const QString& sql : statements) {
        ZelOleDbCommand command;
        command.SetConnection(connection.get());
        command.SetCommandText(sql);
        EXPECT_EQ(command.Execute(), ZelOleDbCommand::ExecuteFailed) << sql.toStdString();
        EXPECT_EQ(command.GetErrorStatement(), sql);
        EXPECT_FALSE(command.GetErrorInfo().isEmpty());
        EXPECT_EQ(command.GetLastError().GetErrorCode(), ZelOleDbErrorInfo::StatementRefused)
            << sql.toStdString() << ": " << command.GetErrorInfo().toStdString();
    }
    EXPECT_FALSE(QFile::exists(QStringLiteral("/tmp/zel-attached.db")));

    ZelOleDbCommand count;
    count.SetConnection(connection.get());
    count.SetCommandText(QStringLiteral("SELECT COUNT(*) FROM WIRETYPE"));
    ASSERT_EQ(count.Execute(), ZelOleDbCommand::ExecuteRowset);
    ASSERT_EQ(count.FetchNext(), ZelOleDbCommand::FetchRow);
    EXPECT_EQ(count.FieldAsLong(1), 9);
    connection.reset();
    EXPECT_EQ(fileHash(kDemoDb), before);
}

TEST(ZelOleDbCommandTest, FailingStatementGivesTheProvidersText) {
    auto connection = openDemo();
    ZelOleDbCommand command;
    command.SetConnection(connection.get());
    const QString sql = QStringLiteral("SELECT NOSUCH FROM WIRETYPE");
    command.SetCommandText(sql);
    EXPECT_EQ(command.Execute(), ZelOleDbCommand::ExecuteFailed);
    EXPECT_EQ(command.GetColumnCount(), 0);
    EXPECT_EQ(command.FetchNext(), ZelOleDbCommand::FetchEnd);
    EXPECT_EQ(command.GetErrorStatement(), sql);
    const QString text = command.GetErrorInfo(false);
    EXPECT_TRUE(text.contains(QLatin1String("no such column"))) << text.toStdString();
    EXPECT_TRUE(text.contains(kDemoDb)) << text.toStdString();
    EXPECT_EQ(connection->GetErrorInfo(true), text);
    EXPECT_TRUE(connection->GetErrorInfo().isEmpty());

    // A good statement afterwards clears the failure.
    command.SetCommandText(thirdQuery(QStringLiteral("1"), QStringLiteral("BK_1.5")));
    EXPECT_EQ(command.Execute(), ZelOleDbCommand::ExecuteRowset);
    EXPECT_TRUE(command.GetErrorStatement().isEmpty());

    ZelOleDbCommand unattached;
    unattached.SetCommandText(sql);
    EXPECT_EQ(unattached.Execute(), ZelOleDbCommand::ExecuteFailed);
    EXPECT_FALSE(unattached.GetErrorInfo().isEmpty());
}

TEST(ZelOleDbConnectionTest, DatabasesThatCannotBeOpened) {
    QTemporaryDir temp;
    ASSERT_TRUE(temp.isValid());
    const QString missing = temp.filePath(QStringLiteral("missing.db"));
    ZelOleDbConnection connection;
    EXPECT_NE(connection.OpenFromInitializationString(connectStringFor(missing), false), 0);
    EXPECT_FALSE(connection.IsOpen());
    QString text = connection.GetErrorInfo();
    EXPECT_TRUE(text.contains(missing)) << text.toStdString();
    EXPECT_TRUE(text.contains(QLatin1String("does not exist"))) << text.toStdString();
    EXPECT_FALSE(QFile::exists(missing)) << "a read-only open never makes the file";

    EXPECT_NE(connection.OpenFromInitializationString(connectStringFor(temp.path()), false), 0);
    EXPECT_TRUE(connection.GetErrorInfo().contains(QLatin1String("folder")));

    const QString notDb = temp.filePath(QStringLiteral("notes.db"));
    QFile file(notDb);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'z'));
    file.close();
    EXPECT_NE(connection.OpenFromInitializationString(connectStringFor(notDb), false), 0);
    text = connection.GetErrorInfo();
    EXPECT_TRUE(text.contains(QLatin1String("not a database"))) << text.toStdString();
    EXPECT_TRUE(text.contains(notDb)) << text.toStdString();

    // A folder whose name needs quoting in the connect string opens like any other.
    const QString awkward = temp.filePath(QStringLiteral("a;b\"c/demo.db"));
    ASSERT_TRUE(QDir().mkpath(QFileInfo(awkward).absolutePath()));
    ASSERT_TRUE(QFile::copy(kDemoDb, awkward));
    EXPECT_EQ(connection.OpenFromInitializationString(connectStringFor(awkward), false), 0)
        << connection.GetErrorInfo().toStdString();
    EXPECT_EQ(connection.GetDataSource(), awkward);
}

TEST(ZelOleDbConnectionTest, OtherProvidersAreRefused) {
    ZelOleDbConnection connection;
    QString connect;
    ASSERT_TRUE(ZelOleDbHelper::FormatConnectString(connect, kDemoDb, nullptr, nullptr, L"SQLOLEDB",
                                                    nullptr, nullptr));
    EXPECT_EQ(connection.OpenFromInitializationString(connect, false),
              ZelOleDbErrorInfo::ProviderRefused);
    EXPECT_TRUE(connection.GetErrorInfo().contains(QLatin1String("SQLOLEDB")));

    ASSERT_TRUE(ZelOleDbHelper::FormatConnectString(connect, kDemoDb, nullptr, nullptr, nullptr,
                                                    nullptr, nullptr));
    EXPECT_EQ(connection.OpenFromInitializationString(connect, false),
              ZelOleDbErrorInfo::BadConnectString);
    // The provider name is matched without regard to case.
    ASSERT_TRUE(ZelOleDbHelper::FormatConnectString(connect, kDemoDb, nullptr, nullptr,
                                                    L"microsoft.ace.oledb.12.0", nullptr, nullptr));
    EXPECT_EQ(connection.OpenFromInitializationString(connect, false), 0);
}

TEST(ZelOleDbConnectionCacheTest, GivesBackTheConnectionItWasGiven) {
    ZelOleDbConnectionCache* cache = ZelOleDbConnectionCache::GetCacheManager();
    ASSERT_NE(cache, nullptr);
    EXPECT_EQ(cache, ZelOleDbConnectionCache::GetCacheManager());
    cache->Clear();
    const QString connect = connectStringFor(kDemoDb);
    EXPECT_EQ(cache->Connect(connect, false), nullptr);

    auto* connection = new ZelOleDbConnection;
    ASSERT_EQ(connection->OpenFromInitializationString(connect, false), 0);
    cache->Cache(connection);
    cache->Cache(connection);
    EXPECT_EQ(cache->GetCount(), 1);
    EXPECT_EQ(cache->Connect(connect, false), connection);
    EXPECT_EQ(cache->Connect(connectStringFor(kDemoDb + QStringLiteral(".other")), false), nullptr);

    // A closed connection is not kept.
    cache->Cache(new ZelOleDbConnection);
    EXPECT_EQ(cache->GetCount(), 1);

    // Rows already fetched outlive the connection they came from.
    ZelOleDbCommand command;
    command.SetConnection(connection);
    command.SetCommandText(firstQuery(QStringLiteral("2"), QStringLiteral("WH_0.75")));
    ASSERT_EQ(command.Execute(), ZelOleDbCommand::ExecuteRowset);
    cache->Clear();
    EXPECT_EQ(cache->Connect(connect, false), nullptr);
    ASSERT_EQ(command.FetchNext(), ZelOleDbCommand::FetchRow);
    EXPECT_EQ(command.FieldAsString(1), QStringLiteral("WH"));

    ZelOleDbConnection* opened = cache->Connect(connect, true);
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(cache->Connect(connect, false), opened);
    EXPECT_EQ(cache->Connect(connectStringFor(QStringLiteral("/no/such.db")), true), nullptr);
    cache->Clear();
}

} // namespace
