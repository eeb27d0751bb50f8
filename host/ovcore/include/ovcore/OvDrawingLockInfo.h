#pragma once

#include <QDateTime>
#include <QString>

// Who holds a drawing's lock, as the lock file records it. A process number alone does
// not tell a holder apart once numbers are reused (after a crash, in containers above
// all), so the record also carries the process's start time and the boot it ran in.
struct OvDrawingLockInfo {
    QString user;
    QString machine;
    qint64 pid = 0;
    // Clock ticks since boot at which the holder started; 0 when the record has none.
    qint64 start = 0;
    // The kernel's boot id; empty when the record has none.
    QString boot;
    QDateTime time;
};
