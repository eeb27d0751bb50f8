#include "zeloledb/ZelOleDbHelper.h"

namespace {

QString fromWide(const wchar_t* text) {
    return text ? QString::fromWCharArray(text) : QString();
}

void appendPair(QString& connect, const QString& key, const QString& value, bool quote) {
    if (value.isEmpty())
        return;
    if (!connect.isEmpty())
        connect += QLatin1Char(';');
    connect += key + QLatin1Char('=') + ZelOleDbHelper::QuoteValue(value, quote);
}

} // namespace

QString ZelOleDbHelper::QuoteValue(const QString& value, bool always) {
    const bool needed = always || value.contains(QLatin1Char(';')) ||
                        value.startsWith(QLatin1Char('"')) || value.startsWith(QLatin1Char('\'')) ||
                        value != value.trimmed();
    if (!needed)
        return value;
    if (!value.contains(QLatin1Char('"')))
        return QLatin1Char('"') + value + QLatin1Char('"');
    if (!value.contains(QLatin1Char('\'')))
        return QLatin1Char('\'') + value + QLatin1Char('\'');
    QString doubled = value;
    doubled.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + doubled + QLatin1Char('"');
}

bool ZelOleDbHelper::FormatConnectString(QString& connect, const QString& path, const wchar_t* user,
                                         const wchar_t* password, const wchar_t* provider,
                                         const wchar_t* extendedProperties, const wchar_t* other) {
    connect.clear();
    if (path.trimmed().isEmpty())
        return false;
    appendPair(connect, QStringLiteral("Provider"), fromWide(provider), false);
    appendPair(connect, QStringLiteral("Data Source"), path, false);
    appendPair(connect, QStringLiteral("User ID"), fromWide(user), false);
    appendPair(connect, QStringLiteral("Password"), fromWide(password), false);
    // Extended properties hold `key=value` text of their own, so they are always quoted.
    appendPair(connect, QStringLiteral("Extended Properties"), fromWide(extendedProperties), true);
    QString rest = fromWide(other).trimmed();
    while (rest.startsWith(QLatin1Char(';')))
        rest.remove(0, 1);
    if (!rest.isEmpty())
        connect += QLatin1Char(';') + rest;
    return true;
}

bool ZelOleDbHelper::ParseConnectString(const QString& connect, KeyValues& pairs, QString* error) {
    pairs.clear();
    const auto failWith = [error](const QString& message) {
        if (error)
            *error = message;
        return false;
    };
    const qsizetype n = connect.size();
    qsizetype i = 0;
    while (i < n) {
        while (i < n && (connect[i].isSpace() || connect[i] == QLatin1Char(';')))
            ++i;
        if (i >= n)
            break;
        const qsizetype eq = connect.indexOf(QLatin1Char('='), i);
        const qsizetype semi = connect.indexOf(QLatin1Char(';'), i);
        if (eq < 0 || (semi >= 0 && semi < eq))
            return failWith(QStringLiteral("the connect string has a part without \"=\": %1")
                                .arg(connect.mid(i, semi < 0 ? -1 : semi - i)));
        const QString key = connect.mid(i, eq - i).trimmed();
        if (key.isEmpty())
            return failWith(QStringLiteral("the connect string has a value without a key"));
        i = eq + 1;
        while (i < n && connect[i].isSpace() && connect[i] != QLatin1Char(';'))
            ++i;
        QString value;
        if (i < n && (connect[i] == QLatin1Char('"') || connect[i] == QLatin1Char('\''))) {
            const QChar quote = connect[i++];
            bool closed = false;
            while (i < n) {
                if (connect[i] == quote) {
                    if (i + 1 < n && connect[i + 1] == quote) {
                        value += quote;
                        i += 2;
                        continue;
                    }
                    ++i;
                    closed = true;
                    break;
                }
                value += connect[i++];
            }
            if (!closed)
                return failWith(
                    QStringLiteral("the value of \"%1\" lacks its closing quote").arg(key));
            while (i < n && connect[i].isSpace())
                ++i;
            if (i < n && connect[i] != QLatin1Char(';'))
                return failWith(QStringLiteral("text follows the quoted value of \"%1\"").arg(key));
        } else {
            const qsizetype end = connect.indexOf(QLatin1Char(';'), i);
            value = connect.mid(i, end < 0 ? -1 : end - i).trimmed();
            i = end < 0 ? n : end;
        }
        pairs.emplace_back(key, value);
    }
    return true;
}

bool ZelOleDbHelper::FindValue(const KeyValues& pairs, const QString& key, QString& value) {
    bool found = false;
    for (const auto& [k, v] : pairs) {
        if (k.compare(key, Qt::CaseInsensitive) == 0) {
            value = v;
            found = true;
        }
    }
    return found;
}
