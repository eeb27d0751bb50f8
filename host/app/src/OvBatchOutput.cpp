#include "OvBatchOutput.h"

#include <QByteArray>

#include <cstdio>

void OvBatchOutput::write(std::string_view utf8) {
    if (utf8.empty())
        return;
    std::fwrite(utf8.data(), 1, utf8.size(), stdout);
    // A module or a script may run for long, or crash: what it printed must be out.
    std::fflush(stdout);
    m_atLineStart = utf8.back() == '\n';
}

void OvBatchOutput::write(const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    write(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

void OvBatchOutput::startLine() {
    if (!m_atLineStart)
        write(std::string_view("\n"));
}
