#pragma once

#include "zeloledb/ZelOleDbErrorInfo.h"

#include <QString>

#include <chrono>
#include <memory>

struct sqlite3;
struct sqlite3_stmt;
class ZelOleDbConnection;

// One statement on the project database and the rows it yields. Columns are numbered
// from 1, as OLE DB numbers them.
class ZelOleDbCommand {
public:
    // Results of Execute.
    enum ExecuteStatus : int {
        ExecuteRowset = 0,   // the statement ran and has result columns (rows or not)
        ExecuteNoRowset = 1, // the statement ran and has no result columns
        ExecuteFailed = 2,   // nothing ran; see GetErrorStatement and GetErrorInfo
    };
    // Results of FetchNext.
    enum FetchStatus : int {
        FetchEnd = 0,
        FetchRow = 1,
        FetchFailed = 2,
    };

    ZelOleDbCommand();
    virtual ~ZelOleDbCommand();
    ZelOleDbCommand(const ZelOleDbCommand&) = delete;
    ZelOleDbCommand& operator=(const ZelOleDbCommand&) = delete;

    virtual void SetCommandText(const QString& text);
    // The connection stays the caller's; it is only used during Execute.
    virtual void SetConnection(ZelOleDbConnection* connection);
    // Runs the statement text on the connection. Only one statement, and only a query:
    // anything that would change the database is refused.
    virtual int Execute();

    QString GetCommandText() const { return m_text; }
    int FetchNext();
    int GetColumnCount() const;
    QString GetColumnName(int column) const;
    // Out of range, or before the first and after the last row, a field is null.
    bool IsNull(int column) const;
    QString FieldAsString(int column) const;
    long FieldAsLong(int column) const;

    // The statement text of the last failure; empty when the last run went well.
    QString GetErrorStatement() const;
    QString GetErrorInfo(bool clear = false);
    const ZelOleDbErrorInfo& GetLastError() const { return m_error; }

    // Drops the rows; the statement text and the connection stay.
    void Close();

    // How long one statement may run, from Execute to its last row, before it is stopped
    // with an error: a query built from a script's text (a recursive one, say) must not
    // hold the host for ever. For every command of the process.
    static void SetTimeLimit(std::chrono::milliseconds limit);
    static std::chrono::milliseconds GetTimeLimit();

private:
    int fail(int code, const QString& description);
    bool hasField(int column) const;
    // sqlite3_step under the time limit of this command's run.
    int step();
    QString stepError(int rc) const;
    static int onProgress(void* command);

    QString m_text;
    ZelOleDbConnection* m_connection = nullptr;
    std::shared_ptr<sqlite3> m_session;
    QString m_source;
    sqlite3_stmt* m_stmt = nullptr;
    bool m_firstRowPending = false;
    bool m_onRow = false;
    bool m_done = false;
    bool m_timedOut = false;
    std::chrono::steady_clock::time_point m_deadline;
    ZelOleDbErrorInfo m_error;
};
