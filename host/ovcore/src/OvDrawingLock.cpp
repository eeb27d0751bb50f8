#include "ovcore/OvDrawingLock.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSysInfo>

#include <cerrno>
#include <csignal>
#include <limits>
#include <pwd.h>
#include <unistd.h>

namespace {

QString userName() {
    if (const passwd* entry = getpwuid(getuid()); entry && entry->pw_name)
        return QString::fromLocal8Bit(entry->pw_name);
    return qEnvironmentVariable("USER");
}

} // namespace

QString ovDrawingLockPath(const QString& drawing) {
    return drawing + QStringLiteral(".ovlock");
}

std::optional<OvDrawingLockInfo> ovReadDrawingLock(const QString& drawing) {
    QFile file(ovDrawingLockPath(drawing));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    // A lock file is tiny; anything large is not one of ours.
    const QByteArray data = file.read(64 * 1024);
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
    info.time = QDateTime::fromString(object.value(u"time").toString(), Qt::ISODateWithMs);
    return info;
}

OvDrawingLockInfo ovOwnDrawingLock() {
    OvDrawingLockInfo info;
    info.user = userName();
    info.machine = QSysInfo::machineHostName();
    info.pid = QCoreApplication::applicationPid();
    info.time = QDateTime::currentDateTimeUtc();
    return info;
}

bool ovWriteDrawingLock(const QString& drawing) {
    const OvDrawingLockInfo own = ovOwnDrawingLock();
    QJsonObject object;
    object.insert(u"user", own.user);
    object.insert(u"machine", own.machine);
    object.insert(u"pid", static_cast<double>(own.pid));
    object.insert(u"time", own.time.toString(Qt::ISODateWithMs));
    QSaveFile file(ovDrawingLockPath(drawing));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(QJsonDocument(object).toJson(QJsonDocument::Compact));
    return file.commit();
}

bool ovIsDrawingLockStale(const OvDrawingLockInfo& info) {
    // Only a process of this machine can be looked at; a lock of another machine stands.
    if (info.machine != QSysInfo::machineHostName())
        return false;
    if (info.pid <= 0 || info.pid > std::numeric_limits<pid_t>::max())
        return true;
    if (info.pid == QCoreApplication::applicationPid())
        return false;
    return kill(static_cast<pid_t>(info.pid), 0) != 0 && errno == ESRCH;
}

bool ovIsOwnDrawingLock(const OvDrawingLockInfo& info) {
    return info.machine == QSysInfo::machineHostName() &&
           info.pid == QCoreApplication::applicationPid();
}

bool ovRemoveDrawingLock(const QString& drawing) {
    const QString path = ovDrawingLockPath(drawing);
    return !QFile::exists(path) || QFile::remove(path);
}
