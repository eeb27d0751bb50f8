#include "zelpm/ZelPrmProjectManager.h"

#include "zeloledb/ZelOleDbConnectionCache.h"

ZelPrmProjectManager::ZelPrmProjectManager() = default;

ZelPrmProjectManager::~ZelPrmProjectManager() = default;

ZelPrmProjectManager* GetProjectManager() {
    static ZelPrmProjectManager manager;
    return &manager;
}

bool ZelPrmProjectManager::openProject(const QString& path, QString* error) {
    closeProject();
    if (++m_lastSerial == 0)
        ++m_lastSerial;
    QString why;
    std::unique_ptr<ZelPrmProject> project = ZelPrmProject::fromFile(path, {m_lastSerial}, &why);
    if (!project) {
        if (error)
            *error = why;
        return false;
    }
    m_project = std::move(project);
    return true;
}

void ZelPrmProjectManager::closeProject() {
    if (!m_project)
        return;
    m_project.reset();
    // Connections to the old project's database are of no further use.
    ZelOleDbConnectionCache::GetCacheManager()->Clear();
}

bool ZelPrmProjectManager::getActiveProjectID(ZelPrmProjectId& id) const {
    if (!m_project)
        return false;
    id = m_project->id();
    return true;
}

ZelPrmProject* ZelPrmProjectManager::getProject(const ZelPrmProjectId& id) const {
    if (!m_project || id.isNull() || !(m_project->id() == id))
        return nullptr;
    return m_project.get();
}

bool ZelPrmProjectManager::isFileInProject(const wchar_t* file, const ZelPrmProjectId& id) const {
    const ZelPrmProject* project = getProject(id);
    if (!project || !file)
        return false;
    return project->containsFile(QString::fromWCharArray(file));
}
