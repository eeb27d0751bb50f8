#include "zeloledb/ZelOleDbCommand.h"

#include "zeloledb/ZelOleDbConnection.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>

namespace {

// Long enough for any honest query on a project database, short enough that a runaway
// one is soon reported.
std::atomic<long long> s_timeLimitMs{10000};

// Virtual machine steps between two looks at the clock.
constexpr int kProgressSteps = 1000;

} // namespace

void ZelOleDbCommand::SetTimeLimit(std::chrono::milliseconds limit) {
    s_timeLimitMs = std::max<long long>(limit.count(), 1);
}

std::chrono::milliseconds ZelOleDbCommand::GetTimeLimit() {
    return std::chrono::milliseconds(s_timeLimitMs.load());
}

int ZelOleDbCommand::onProgress(void* command) {
    auto* self = static_cast<ZelOleDbCommand*>(command);
    if (std::chrono::steady_clock::now() < self->m_deadline)
        return 0;
    self->m_timedOut = true;
    return 1; // SQLite stops the statement with SQLITE_INTERRUPT
}

int ZelOleDbCommand::step() {
    // The handler belongs to the connection, which other commands share: it is set for
    // this step alone.
    sqlite3* db = m_session.get();
    sqlite3_progress_handler(db, kProgressSteps, &ZelOleDbCommand::onProgress, this);
    const int rc = sqlite3_step(m_stmt);
    sqlite3_progress_handler(db, 0, nullptr, nullptr);
    return rc;
}

QString ZelOleDbCommand::stepError(int rc) const {
    if (rc == SQLITE_INTERRUPT && m_timedOut)
        return QStringLiteral("the statement ran longer than %1 ms and was stopped")
            .arg(GetTimeLimit().count());
    return QString::fromUtf8(sqlite3_errmsg(m_session.get()));
}

ZelOleDbCommand::ZelOleDbCommand() = default;

ZelOleDbCommand::~ZelOleDbCommand() {
    Close();
}

void ZelOleDbCommand::SetCommandText(const QString& text) {
    m_text = text;
}

void ZelOleDbCommand::SetConnection(ZelOleDbConnection* connection) {
    m_connection = connection;
}

void ZelOleDbCommand::Close() {
    // The statement goes before the session it belongs to.
    if (m_stmt)
        sqlite3_finalize(m_stmt);
    m_stmt = nullptr;
    m_session.reset();
    m_firstRowPending = false;
    m_onRow = false;
    m_done = false;
}

int ZelOleDbCommand::fail(int code, const QString& description) {
    Close();
    m_error = ZelOleDbErrorInfo(code, description, m_source, m_text);
    if (m_connection)
        m_connection->SetLastError(m_error);
    return ExecuteFailed;
}

int ZelOleDbCommand::Execute() {
    Close();
    m_error = ZelOleDbErrorInfo();
    m_source.clear();
    if (!m_connection || !m_connection->IsOpen())
        return fail(ZelOleDbErrorInfo::NoConnection,
                    QStringLiteral("there is no open connection to the project database"));
    m_session = m_connection->GetSession();
    m_source = m_connection->GetDataSource();
    m_timedOut = false;
    m_deadline = std::chrono::steady_clock::now() + GetTimeLimit();
    sqlite3* db = m_session.get();

    const QByteArray sql = m_text.toUtf8();
    const char* const end = sql.constData() + sql.size();
    const char* tail = nullptr;
    const auto failToPrepare = [this, db](int rc) {
        // The authoriser lets reading through and nothing else.
        if (rc == SQLITE_AUTH)
            return fail(ZelOleDbErrorInfo::StatementRefused,
                        QStringLiteral("only queries can run on the project database, which is "
                                       "read-only"));
        return fail(rc, QString::fromUtf8(sqlite3_errmsg(db)));
    };
    int rc = sqlite3_prepare_v2(db, sql.constData(), static_cast<int>(sql.size()), &m_stmt, &tail);
    if (rc != SQLITE_OK)
        return failToPrepare(rc);

    // SQLite would quietly ignore what follows the first statement; a second statement is
    // refused instead, so that nothing in the text goes unnoticed.
    while (tail && tail < end) {
        sqlite3_stmt* next = nullptr;
        const char* after = nullptr;
        rc = sqlite3_prepare_v2(db, tail, static_cast<int>(end - tail), &next, &after);
        if (next) {
            sqlite3_finalize(next);
            return fail(ZelOleDbErrorInfo::StatementRefused,
                        QStringLiteral("the text holds more than one statement; one at a time "
                                       "can run"));
        }
        if (rc != SQLITE_OK)
            return failToPrepare(rc);
        if (!after || after <= tail)
            break;
        tail = after;
    }

    if (!m_stmt) {
        m_done = true;
        return ExecuteNoRowset;
    }
    // The first row is fetched here, so that an error of the run shows in Execute's status.
    rc = step();
    if (rc == SQLITE_ROW)
        m_firstRowPending = true;
    else if (rc == SQLITE_DONE)
        m_done = true;
    else
        return fail(rc, stepError(rc));
    return sqlite3_column_count(m_stmt) > 0 ? ExecuteRowset : ExecuteNoRowset;
}

int ZelOleDbCommand::FetchNext() {
    m_onRow = false;
    if (!m_stmt)
        return FetchEnd;
    if (m_firstRowPending) {
        m_firstRowPending = false;
        m_onRow = true;
        return FetchRow;
    }
    if (m_done)
        return FetchEnd;
    const int rc = step();
    if (rc == SQLITE_ROW) {
        m_onRow = true;
        return FetchRow;
    }
    m_done = true;
    if (rc == SQLITE_DONE)
        return FetchEnd;
    // The connection may be gone by now; the error stays with the command.
    m_error = ZelOleDbErrorInfo(rc, stepError(rc), m_source, m_text);
    return FetchFailed;
}

int ZelOleDbCommand::GetColumnCount() const {
    return m_stmt ? sqlite3_column_count(m_stmt) : 0;
}

QString ZelOleDbCommand::GetColumnName(int column) const {
    if (!m_stmt || column < 1 || column > sqlite3_column_count(m_stmt))
        return QString();
    return QString::fromUtf8(sqlite3_column_name(m_stmt, column - 1));
}

bool ZelOleDbCommand::hasField(int column) const {
    return m_stmt && m_onRow && column >= 1 && column <= sqlite3_column_count(m_stmt);
}

bool ZelOleDbCommand::IsNull(int column) const {
    return !hasField(column) || sqlite3_column_type(m_stmt, column - 1) == SQLITE_NULL;
}

QString ZelOleDbCommand::FieldAsString(int column) const {
    if (IsNull(column))
        return QString();
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, column - 1));
    const int bytes = sqlite3_column_bytes(m_stmt, column - 1);
    return QString::fromUtf8(text, bytes);
}

long ZelOleDbCommand::FieldAsLong(int column) const {
    if (IsNull(column))
        return 0;
    return static_cast<long>(sqlite3_column_int64(m_stmt, column - 1));
}

QString ZelOleDbCommand::GetErrorStatement() const {
    return m_error.IsEmpty() ? QString() : m_error.GetStatement();
}

QString ZelOleDbCommand::GetErrorInfo(bool clear) {
    const QString text = m_error.GetText();
    if (clear)
        m_error = ZelOleDbErrorInfo();
    return text;
}
