#pragma once

// What the fuzz targets share: a scratch folder for inputs that readers take as files,
// and a reader of the fuzzer's bytes.

#include <QDir>
#include <QFile>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <unistd.h>

namespace fuzzsupport {

// A file in a folder of this process's own, in memory where the system offers one.
inline QString scratchFile(const QString& name) {
    const QString base = QDir("/dev/shm").exists() ? QStringLiteral("/dev/shm") : QDir::tempPath();
    const QString folder = QStringLiteral("%1/zel-fuzz-%2").arg(base).arg(getpid());
    QDir().mkpath(folder);
    return folder + u'/' + name;
}

inline bool writeScratch(const QString& path, const uint8_t* data, size_t size) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size)) ==
           static_cast<qint64>(size);
}

// Takes the fuzzer's bytes front to back; once they are used up, zeros.
class Bytes {
public:
    Bytes(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    bool empty() const { return m_at >= m_size; }
    size_t left() const { return m_size - m_at; }
    uint8_t byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    template <typename T> T value() {
        T out{};
        const size_t n = std::min(sizeof(T), left());
        std::memcpy(&out, m_data + m_at, n);
        m_at += n;
        return out;
    }
    // A UTF-8 text of up to `max` bytes, ending at the first byte 0xff.
    QString text(size_t max = 64) {
        const size_t start = m_at;
        while (m_at < m_size && m_at - start < max && m_data[m_at] != 0xff)
            ++m_at;
        const QString out = QString::fromUtf8(reinterpret_cast<const char*>(m_data + start),
                                              static_cast<qsizetype>(m_at - start));
        if (m_at < m_size && m_data[m_at] == 0xff)
            ++m_at;
        return out;
    }
    // The rest as UTF-8.
    QString rest() {
        const QString out = QString::fromUtf8(reinterpret_cast<const char*>(m_data + m_at),
                                              static_cast<qsizetype>(left()));
        m_at = m_size;
        return out;
    }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_at = 0;
};

} // namespace fuzzsupport
