#include "zelpm/ZelPmClientApp.h"

#include "zelpm/ZelPrmProjectManager.h"

#include <algorithm>
#include <string>

int PmGetProjectDb(const ZelPrmProjectId& id, wchar_t* buffer, int size, int flags) {
    Q_UNUSED(flags);
    if (!buffer || size <= 0)
        return 0;
    buffer[0] = L'\0';
    const ZelPrmProjectManager* manager = GetProjectManager();
    const ZelPrmProject* project = manager ? manager->getProject(id) : nullptr;
    if (!project || project->databasePath().isEmpty())
        return 0;
    const std::wstring path = project->databasePath().toStdWString();
    if (path.size() + 1 > static_cast<std::size_t>(size))
        return 0;
    std::copy(path.begin(), path.end(), buffer);
    buffer[path.size()] = L'\0';
    return 1;
}
