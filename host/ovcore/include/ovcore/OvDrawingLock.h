#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

// A drawing open for editing has a lock file beside it, "<drawing file>.ovlock", a small
// JSON object naming who holds it: {"user", "machine", "pid", "time"}. Another session
// that finds the lock of a live process opens the drawing read-only.
struct OvDrawingLockInfo {
    QString user;
    QString machine;
    qint64 pid = 0;
    QDateTime time;
};

QString ovDrawingLockPath(const QString& drawing);
// Nothing when there is no lock file or it cannot be read as one.
std::optional<OvDrawingLockInfo> ovReadDrawingLock(const QString& drawing);
// The lock this process would write now.
OvDrawingLockInfo ovOwnDrawingLock();
// Writes this process's lock, atomically; false when the folder does not allow it.
bool ovWriteDrawingLock(const QString& drawing);
// True when the lock was left by a process of this machine that is gone.
bool ovIsDrawingLockStale(const OvDrawingLockInfo& info);
// True when the lock is held by this very process.
bool ovIsOwnDrawingLock(const OvDrawingLockInfo& info);
// True when there is no lock file afterwards.
bool ovRemoveDrawingLock(const QString& drawing);
