#include "ovcore/OvDrawingLock.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <limits>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A lock record is tiny; anything large is not one of ours.
constexpr qint64 kMaxRecord = 64 * 1024;

QString userName() {
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_name)
        return QString::fromLocal8Bit(entry->pw_name);
    return qEnvironmentVariable("USER");
}

QByteArray readSmallFile(const char* path) {
    QFile file(QString::fromLocal8Bit(path));
    return file.open(QIODevice::ReadOnly) ? file.read(4096) : QByteArray();
}

QString bootId() {
    static const QString id =
        QString::fromLatin1(readSmallFile("/proc/sys/kernel/random/boot_id")).trimmed();
    return id;
}

// The start time of a process in clock ticks since boot, the 22nd field of its stat line;
// 0 when it cannot be read. The command name, field 2, may hold blanks and parentheses,
// so the count starts after its last ')'.
qint64 processStart(qint64 pid) {
    const QByteArray stat = readSmallFile(QByteArray("/proc/" + QByteArray::number(pid) + "/stat"));
    const qsizetype close = stat.lastIndexOf(')');
    if (close < 0)
        return 0;
    const QList<QByteArray> fields = stat.mid(close + 1).simplified().split(' ');
    // After the name come the state (field 3) and the rest; the start time is field 22.
    constexpr qsizetype kStartField = 22 - 3;
    if (fields.size() <= kStartField)
        return 0;
    bool ok = false;
    const qint64 start = fields.at(kStartField).toLongLong(&ok);
    return ok ? start : 0;
}

std::optional<OvDrawingLockInfo> parseRecord(const QByteArray& data) {
    QJsonParseError error{};
    const QJsonDocument json = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError || !json.isObject())
        return std::nullopt;
    const QJsonObject object = json.object();
    if (!object.value(u"pid").isDouble() || !object.value(u"machine").isString())
        return std::nullopt;
    OvDrawingLockInfo info;
    info.user = object.value(u"user").toString();
    info.machine = object.value(u"machine").toString();
    info.pid = static_cast<qint64>(object.value(u"pid").toDouble());
    info.start = static_cast<qint64>(object.value(u"start").toDouble());
    info.boot = object.value(u"boot").toString();
    info.time = QDateTime::fromString(object.value(u"time").toString(), Qt::ISODateWithMs);
    return info;
}

QByteArray ownRecord() {
    const OvDrawingLockInfo own = ovOwnDrawingLock();
    QJsonObject object;
    object.insert(u"user", own.user);
    object.insert(u"machine", own.machine);
    object.insert(u"pid", static_cast<double>(own.pid));
    object.insert(u"start", static_cast<double>(own.start));
    object.insert(u"boot", own.boot);
    object.insert(u"time", own.time.toString(Qt::ISODateWithMs));
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray readAll(int fd) {
    QByteArray data;
    char buffer[4096];
    for (;;) {
        const ssize_t got = pread(fd, buffer, sizeof buffer, data.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0 || data.size() + got > kMaxRecord)
            return got < 0 ? QByteArray() : data;
        data.append(buffer, got);
    }
}

bool writeAll(int fd, const QByteArray& data) {
    qsizetype done = 0;
    while (done < data.size()) {
        const ssize_t put = pwrite(fd, data.constData() + done, data.size() - done, done);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        done += put;
    }
    return ftruncate(fd, data.size()) == 0;
}

flock wholeFile(short type) {
    flock lock{};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

// True when the descriptor still names the file at `path`: a holder that let go removed
// the file after we opened it, and a lock on that orphan would hold nothing.
bool stillAtPath(int fd, const QByteArray& path) {
    struct stat opened {};
    struct stat named {};
    return fstat(fd, &opened) == 0 && stat(path.constData(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// Whether some open file description holds the lock file: nothing is taken to ask.
std::optional<bool> lockedByAnyone(const QByteArray& path) {
    const int fd = open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    flock probe = wholeFile(F_WRLCK);
    const int rc = fcntl(fd, F_OFD_GETLK, &probe);
    close(fd);
    if (rc != 0)
        return std::nullopt;
    return probe.l_type != F_UNLCK;
}

// A holder that writes its record just now may be read half done; it is read again.
std::optional<OvDrawingLockInfo> readRecordOf(int fd) {
    for (int attempt = 0; attempt < 20; ++attempt) {
        if (std::optional<OvDrawingLockInfo> info = parseRecord(readAll(fd)))
            return info;
        QThread::msleep(5);
    }
    return std::nullopt;
}

} // namespace

QString ovDrawingLockPath(const QString& drawing) {
    return drawing + QStringLiteral(".ovlock");
}

std::optional<OvDrawingLockInfo> ovReadDrawingLock(const QString& drawing) {
    QFile file(ovDrawingLockPath(drawing));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return parseRecord(file.read(kMaxRecord));
}

OvDrawingLockInfo ovOwnDrawingLock() {
    OvDrawingLockInfo info;
    info.user = userName();
    info.machine = QSysInfo::machineHostName();
    info.pid = QCoreApplication::applicationPid();
    static const qint64 ownStart = processStart(info.pid);
    info.start = ownStart;
    info.boot = bootId();
    info.time = QDateTime::currentDateTimeUtc();
    return info;
}

bool ovIsDrawingLockStale(const OvDrawingLockInfo& info) {
    // Only a process of this machine can be looked at; a lock of another machine stands.
    if (info.machine != QSysInfo::machineHostName())
        return false;
    if (!info.boot.isEmpty() && !bootId().isEmpty() && info.boot != bootId())
        return true;
    if (info.pid <= 0 || info.pid > std::numeric_limits<pid_t>::max())
        return true;
    if (kill(static_cast<pid_t>(info.pid), 0) != 0 && errno == ESRCH)
        return true;
    // The number is in use: by the holder only if that process started when the holder
    // did. A record without a start time can be judged by the number alone.
    if (info.start == 0)
        return false;
    const qint64 start = processStart(info.pid);
    return start != 0 && start != info.start;
}

bool ovIsOwnDrawingLock(const OvDrawingLockInfo& info) {
    const OvDrawingLockInfo own = ovOwnDrawingLock();
    return info.machine == own.machine && info.pid == own.pid &&
           (info.start == 0 || info.start == own.start) &&
           (info.boot.isEmpty() || info.boot == own.boot);
}

bool ovIsDrawingLockLive(const QString& drawing, const OvDrawingLockInfo& info) {
    if (lockedByAnyone(QFile::encodeName(ovDrawingLockPath(drawing))).value_or(false))
        return true;
    return !ovIsDrawingLockStale(info);
}

bool ovRemoveDrawingLock(const QString& drawing) {
    const QString path = ovDrawingLockPath(drawing);
    return !QFile::exists(path) || QFile::remove(path);
}

OvDrawingLock::~OvDrawingLock() {
    release();
}

OvDrawingLock::OvDrawingLock(OvDrawingLock&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1)), m_drawing(std::move(other.m_drawing)) {}

OvDrawingLock& OvDrawingLock::operator=(OvDrawingLock&& other) noexcept {
    if (this != &other) {
        release();
        m_fd = std::exchange(other.m_fd, -1);
        m_drawing = std::move(other.m_drawing);
    }
    return *this;
}

OvDrawingLock::Outcome OvDrawingLock::acquire(const QString& drawing,
                                              std::optional<OvDrawingLockInfo>* holder) {
    release();
    if (holder)
        holder->reset();
    const QByteArray path = QFile::encodeName(ovDrawingLockPath(drawing));
    // A few rounds at most: each retry follows a holder that let go between our open and
    // our lock, or a stale file that we could not open for writing and removed.
    for (int round = 0; round < 8; ++round) {
        const int fd = open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
        if (fd < 0) {
            if (errno == EACCES && QFile::exists(QFile::decodeName(path))) {
                // Another user's lock file: live or stale, as its record and lock say.
                std::optional<OvDrawingLockInfo> found = ovReadDrawingLock(drawing);
                if (found && !ovIsDrawingLockLive(drawing, *found)) {
                    if (unlink(path.constData()) == 0)
                        continue;
                }
                if (holder)
                    *holder = found;
                return Outcome::Held;
            }
            return Outcome::NoLockFile;
        }
        flock lock = wholeFile(F_WRLCK);
        if (fcntl(fd, F_OFD_SETLK, &lock) != 0) {
            const int error = errno;
            if (error == EAGAIN || error == EACCES) {
                if (holder)
                    *holder = readRecordOf(fd);
                close(fd);
                return Outcome::Held;
            }
            // A file system without such locks: the record alone decides.
            std::optional<OvDrawingLockInfo> found = parseRecord(readAll(fd));
            if (found && !ovIsDrawingLockStale(*found) && !ovIsOwnDrawingLock(*found)) {
                if (holder)
                    *holder = found;
                close(fd);
                return Outcome::Held;
            }
            if (!writeAll(fd, ownRecord())) {
                close(fd);
                return Outcome::NoLockFile;
            }
            if (holder)
                *holder = found;
            m_fd = fd;
            m_drawing = drawing;
            return found ? Outcome::TakenStale : Outcome::Taken;
        }
        if (!stillAtPath(fd, path)) {
            close(fd);
            continue;
        }
        // Ours. A record left in the file is the one of a holder that let go without
        // removing it, unless it names a live holder that takes no such locks (another
        // machine beyond the reach of our locks, or an older host): that one still counts.
        std::optional<OvDrawingLockInfo> found = parseRecord(readAll(fd));
        if (found && !ovIsOwnDrawingLock(*found) && !ovIsDrawingLockStale(*found)) {
            if (holder)
                *holder = found;
            close(fd);
            return Outcome::Held;
        }
        if (!writeAll(fd, ownRecord())) {
            close(fd);
            return Outcome::NoLockFile;
        }
        if (holder)
            *holder = found;
        m_fd = fd;
        m_drawing = drawing;
        return found ? Outcome::TakenStale : Outcome::Taken;
    }
    return Outcome::NoLockFile;
}

void OvDrawingLock::release() {
    if (m_fd < 0)
        return;
    // The file goes while we still hold it, so that nobody takes an orphan; a file that
    // someone removed and made anew meanwhile is not ours to remove.
    const QByteArray path = QFile::encodeName(ovDrawingLockPath(m_drawing));
    if (stillAtPath(m_fd, path))
        unlink(path.constData());
    close(m_fd);
    m_fd = -1;
    m_drawing.clear();
}
