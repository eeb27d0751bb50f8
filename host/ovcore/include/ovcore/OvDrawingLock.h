#pragma once

#include "ovcore/OvDrawingLockInfo.h"

#include <QString>

#include <optional>

// A drawing open for editing has a lock file beside it, "<drawing file>.ovlock": a small
// JSON object naming its holder {"user", "machine", "pid", "start", "boot", "time"}. The
// holder keeps an open-file-description lock on that file for as long as the drawing is
// open, so taking the lock is one atomic step that two processes can never both win, and
// a holder that dies lets go of it with its last descriptor.
class OvDrawingLock {
public:
    enum class Outcome {
        Taken,      // ours now; nobody held it
        TakenStale, // ours now; the record left by a holder that is gone was replaced
        Held,       // a live holder has it: open read-only
        NoLockFile, // the folder allows no lock file: edit without one
    };

    OvDrawingLock() = default;
    ~OvDrawingLock();
    OvDrawingLock(OvDrawingLock&& other) noexcept;
    OvDrawingLock& operator=(OvDrawingLock&& other) noexcept;
    OvDrawingLock(const OvDrawingLock&) = delete;
    OvDrawingLock& operator=(const OvDrawingLock&) = delete;

    // Tries to take the lock of `drawing`. `holder` gets the record found, if any: the
    // live holder's for Held, the gone holder's for TakenStale.
    Outcome acquire(const QString& drawing, std::optional<OvDrawingLockInfo>* holder = nullptr);
    // Removes the lock file and lets go; nothing when not held.
    void release();
    bool isHeld() const { return m_fd >= 0; }
    const QString& drawing() const { return m_drawing; }

private:
    int m_fd = -1;
    QString m_drawing;
};

QString ovDrawingLockPath(const QString& drawing);
// Nothing when there is no lock file or it cannot be read as one.
std::optional<OvDrawingLockInfo> ovReadDrawingLock(const QString& drawing);
// The record this process writes.
OvDrawingLockInfo ovOwnDrawingLock();
// True when the record names a holder of this machine that is gone: its process ended, or
// its number now belongs to a process started at another time or in another boot. A
// record of another machine cannot be judged and stands.
bool ovIsDrawingLockStale(const OvDrawingLockInfo& info);
// True when the record names this very process.
bool ovIsOwnDrawingLock(const OvDrawingLockInfo& info);
// True when a live process holds the lock of `drawing` (this one included): the file is
// locked by its holder, or its record names a holder that is still there.
bool ovIsDrawingLockLive(const QString& drawing, const OvDrawingLockInfo& info);
// True when there is no lock file afterwards.
bool ovRemoveDrawingLock(const QString& drawing);
