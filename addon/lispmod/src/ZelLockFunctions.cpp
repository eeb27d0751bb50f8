#include "ZelLockFunctions.h"

#include "ZelChainBuilder.h"
#include "ZelLispArgs.h"
#include "ZelLispReturn.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvDrawingLock.h"
#include "ovcore/oved.h"

namespace {

bool pathArgument(const wchar_t* function, QString& path) {
    const ZelLispArgs args(ovedGetArgs());
    if (args.count() != 1 || !args.isString(0) || args.string(0).trimmed().isEmpty()) {
        zelComplain(function, QStringLiteral("give the drawing's path as a text"));
        return false;
    }
    path = args.string(0);
    return true;
}

QString lockState(const QString& drawing, const OvDrawingLockInfo& lock) {
    if (ovIsOwnDrawingLock(lock))
        return QStringLiteral("own");
    return ovIsDrawingLockLive(drawing, lock) ? QStringLiteral("live") : QStringLiteral("stale");
}

} // namespace

int zelDwgLockInfo() {
    QString path;
    if (!pathArgument(L"zel_dwg_lock_info", path))
        return RTNORM;
    const std::optional<OvDrawingLockInfo> lock = ovReadDrawingLock(path);
    if (!lock)
        return zelRetNil();
    ZelChainBuilder chain;
    chain.beginList()
        .string(lock->user)
        .string(lock->machine)
        .integer(lock->pid)
        .string(lockState(path, *lock))
        .string(lock->time.isValid() ? lock->time.toString(Qt::ISODate) : QString())
        .endList();
    return zelRetOwnedList(chain.take());
}

int zelDwgUnlock() {
    QString path;
    if (!pathArgument(L"zel_dwg_unlock", path))
        return RTNORM;
    if (const std::optional<OvDrawingLockInfo> lock = ovReadDrawingLock(path);
        lock && ovIsOwnDrawingLock(*lock)) {
        const OvApDocManager* manager = ovDocManagerPtr();
        if (manager && manager->documentForFile(path))
            return zelRetT();
    }
    if (!ovRemoveDrawingLock(path))
        return zelComplain(
            L"zel_dwg_unlock",
            QStringLiteral("the lock file \"%1\" cannot be removed").arg(ovDrawingLockPath(path)));
    return zelRetT();
}
