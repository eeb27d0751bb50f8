#pragma once

#include <QString>

#include <utility>
#include <vector>

// Connect strings of the project database, in the OLE DB form
// `Provider=...;Data Source=...;Extended Properties="..."`.
class ZelOleDbHelper {
public:
    using KeyValues = std::vector<std::pair<QString, QString>>;

    // Builds a connect string. Null or empty parts are left out; `other` is appended as
    // it stands (further `key=value` pairs). False, with `connect` emptied, for an empty
    // path.
    static bool FormatConnectString(QString& connect, const QString& path, const wchar_t* user,
                                    const wchar_t* password, const wchar_t* provider,
                                    const wchar_t* extendedProperties, const wchar_t* other);

    // Takes a connect string apart into its pairs, in order, keys trimmed. Values keep
    // their text with the quoting undone. False with a message for a malformed string.
    static bool ParseConnectString(const QString& connect, KeyValues& pairs, QString* error);

    // The value of `key` (compared without regard to case; the last one wins). False when
    // the key is absent.
    static bool FindValue(const KeyValues& pairs, const QString& key, QString& value);

    // A value quoted as the connect string syntax needs it; unchanged when it needs none.
    static QString QuoteValue(const QString& value, bool always = false);
};
