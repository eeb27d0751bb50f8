#pragma once

#include "zeloledb/ZelOleDbErrorInfo.h"

#include <QString>

#include <memory>

struct sqlite3;

// A read-only session on a project database. The only provider accepted is
// "Microsoft.ACE.OLEDB.12.0", the one the module names; the file behind it is SQLite.
class ZelOleDbConnection {
public:
    // The provider that this layer serves.
    static const wchar_t* const kProvider;

    ZelOleDbConnection();
    ~ZelOleDbConnection();
    ZelOleDbConnection(const ZelOleDbConnection&) = delete;
    ZelOleDbConnection& operator=(const ZelOleDbConnection&) = delete;

    // Opens the database named by `Data Source`, read-only and query-only. 0 on success;
    // otherwise the error code (see ZelOleDbErrorInfo) and GetErrorInfo tells why.
    // `allowPrompt` is accepted for the callers' sake: this provider never prompts.
    int OpenFromInitializationString(const QString& connect, bool allowPrompt = false);
    void Close();
    bool IsOpen() const { return m_db != nullptr; }

    QString GetConnectString() const { return m_connect; }
    QString GetDataSource() const { return m_dataSource; }

    // The provider's text of the last error on this connection (its open or a statement
    // run on it); empty when there was none. `clear` forgets the error once read.
    QString GetErrorInfo(bool clear = false);
    const ZelOleDbErrorInfo& GetLastError() const { return m_error; }
    void SetLastError(const ZelOleDbErrorInfo& error) { m_error = error; }

    // The SQLite session. A command holds a share of it, so that rows already fetched stay
    // readable even when the connection object goes away first.
    std::shared_ptr<sqlite3> GetSession() const { return m_db; }

private:
    int fail(int code, const QString& description);

    QString m_connect;
    QString m_dataSource;
    std::shared_ptr<sqlite3> m_db;
    ZelOleDbErrorInfo m_error;
};
