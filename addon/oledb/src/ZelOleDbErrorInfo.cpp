#include "zeloledb/ZelOleDbErrorInfo.h"

ZelOleDbErrorInfo::ZelOleDbErrorInfo(int code, const QString& description, const QString& source,
                                     const QString& statement)
    : m_code(code), m_description(description), m_source(source), m_statement(statement) {}

QString ZelOleDbErrorInfo::GetText() const {
    if (m_code == NoError)
        return QString();
    if (m_source.isEmpty())
        return m_description;
    return QStringLiteral("%1 (project database \"%2\")").arg(m_description, m_source);
}
