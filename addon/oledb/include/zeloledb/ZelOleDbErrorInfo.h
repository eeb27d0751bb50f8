#pragma once

#include <QString>

// One error of the project database layer: what the provider said, about which database
// file, and the statement that failed, if a statement did.
class ZelOleDbErrorInfo {
public:
    // Codes of this layer's own; any other non-zero code is SQLite's result code.
    enum Code : int {
        NoError = 0,
        BadConnectString = -1,
        ProviderRefused = -2,
        NoConnection = -3,
        StatementRefused = -4,
    };

    ZelOleDbErrorInfo() = default;
    ZelOleDbErrorInfo(int code, const QString& description, const QString& source,
                      const QString& statement = QString());

    bool IsEmpty() const { return m_code == NoError; }
    int GetErrorCode() const { return m_code; }
    QString GetDescription() const { return m_description; }
    // The database file the error is about; empty when no file was reached.
    QString GetSource() const { return m_source; }
    QString GetStatement() const { return m_statement; }
    // The provider's error text: the description and the file.
    QString GetText() const;

private:
    int m_code = NoError;
    QString m_description;
    QString m_source;
    QString m_statement;
};
