#include "ovcore/OvOpenObjectCheck.h"

#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"

namespace ovcore {

namespace {
int s_violations = 0;
} // namespace

bool checkObjectsLeftOpen(std::size_t before, const wchar_t* where) {
    const std::size_t now = ovdbOpenObjectCount();
    if (now <= before)
        return true;
    ++s_violations;
    const QString open = ovdbOpenObjectDescriptions().join(QStringLiteral("; "));
    ovutPrintf(L"\n; warning: %d object(s) left open by %ls (open now: %ls)\n",
               static_cast<int>(now - before), where ? where : L"a call",
               open.toStdWString().c_str());
    return false;
}

int openObjectViolations() {
    return s_violations;
}

void resetOpenObjectViolations() {
    s_violations = 0;
}

} // namespace ovcore
