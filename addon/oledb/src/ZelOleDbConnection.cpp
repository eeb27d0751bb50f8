#include "zeloledb/ZelOleDbConnection.h"

#include "zeloledb/ZelOleDbHelper.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

const wchar_t* const ZelOleDbConnection::kProvider = L"Microsoft.ACE.OLEDB.12.0";

namespace {

// The file is opened read-only and query-only already; the authoriser closes the last
// doors (ATTACH of another file, PRAGMA, temporary tables) by letting reading through and
// nothing else.
int authorizeReading(void*, int action, const char*, const char*, const char*, const char*) {
    switch (action) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_FUNCTION:
    case SQLITE_RECURSIVE:
        return SQLITE_OK;
    default:
        return SQLITE_DENY;
    }
}

} // namespace

ZelOleDbConnection::ZelOleDbConnection() = default;

ZelOleDbConnection::~ZelOleDbConnection() = default;

int ZelOleDbConnection::fail(int code, const QString& description) {
    m_db.reset();
    m_error = ZelOleDbErrorInfo(code, description, m_dataSource);
    return code;
}

int ZelOleDbConnection::OpenFromInitializationString(const QString& connect, bool allowPrompt) {
    Q_UNUSED(allowPrompt);
    Close();
    m_error = ZelOleDbErrorInfo();
    m_connect = connect;
    m_dataSource.clear();

    ZelOleDbHelper::KeyValues pairs;
    QString problem;
    if (!ZelOleDbHelper::ParseConnectString(connect, pairs, &problem))
        return fail(ZelOleDbErrorInfo::BadConnectString, problem);
    QString provider;
    if (!ZelOleDbHelper::FindValue(pairs, QStringLiteral("Provider"), provider) ||
        provider.trimmed().isEmpty())
        return fail(ZelOleDbErrorInfo::BadConnectString,
                    QStringLiteral("the connect string names no provider"));
    const QString served = QString::fromWCharArray(kProvider);
    if (provider.trimmed().compare(served, Qt::CaseInsensitive) != 0)
        return fail(ZelOleDbErrorInfo::ProviderRefused,
                    QStringLiteral("the provider \"%1\" is not supported: project databases are "
                                   "read through \"%2\"")
                        .arg(provider.trimmed(), served));
    QString path;
    if (!ZelOleDbHelper::FindValue(pairs, QStringLiteral("Data Source"), path) ||
        path.trimmed().isEmpty())
        return fail(ZelOleDbErrorInfo::BadConnectString,
                    QStringLiteral("the connect string names no data source"));
    // The file system would take the name only up to the NUL, another file than the one
    // named: said as it is, not as a missing file.
    if (path.contains(QChar(0)))
        return fail(ZelOleDbErrorInfo::BadConnectString,
                    QStringLiteral("the data source holds a NUL character"));
    // Absolute, so that SQLite never takes a name beginning with "file:" for a URI.
    m_dataSource = QFileInfo(path).absoluteFilePath();
    if (!QFileInfo::exists(m_dataSource))
        return fail(SQLITE_CANTOPEN,
                    QStringLiteral("unable to open database file: the file does not exist"));
    if (QFileInfo(m_dataSource).isDir())
        return fail(SQLITE_CANTOPEN,
                    QStringLiteral("unable to open database file: it is a folder"));
    // Opening a pipe waits for a writer that may never come.
    if (!QFileInfo(m_dataSource).isFile())
        return fail(SQLITE_CANTOPEN,
                    QStringLiteral("unable to open database file: it is not a regular file"));

    sqlite3* raw = nullptr;
    const QByteArray file = QFile::encodeName(m_dataSource);
    const int rc = sqlite3_open_v2(file.constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    m_db.reset(raw, [](sqlite3* db) { sqlite3_close_v2(db); });
    if (rc != SQLITE_OK)
        return fail(rc,
                    raw ? QString::fromUtf8(sqlite3_errmsg(raw)) : QStringLiteral("out of memory"));
    // Another program may be updating the project database; wait for it a little.
    sqlite3_busy_timeout(raw, 2000);
    // Reading the schema here finds a file that is no database at once, not at the first
    // statement.
    char* message = nullptr;
    const int setup = sqlite3_exec(raw, "PRAGMA query_only=ON; SELECT count(*) FROM sqlite_master;",
                                   nullptr, nullptr, &message);
    if (setup != SQLITE_OK) {
        const QString text =
            message ? QString::fromUtf8(message) : QString::fromUtf8(sqlite3_errstr(setup));
        sqlite3_free(message);
        return fail(setup, text);
    }
    sqlite3_set_authorizer(raw, authorizeReading, nullptr);
    return 0;
}

void ZelOleDbConnection::Close() {
    m_db.reset();
}

QString ZelOleDbConnection::GetErrorInfo(bool clear) {
    const QString text = m_error.GetText();
    if (clear)
        m_error = ZelOleDbErrorInfo();
    return text;
}
