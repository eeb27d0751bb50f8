#pragma once

#include "zelpm/ZelPrmProject.h"
#include "zelpm/ZelPrmProjectId.h"

#include <QString>

#include <memory>

// Holds the one active project of the session.
class ZelPrmProjectManager {
public:
    ZelPrmProjectManager();
    ~ZelPrmProjectManager();
    ZelPrmProjectManager(const ZelPrmProjectManager&) = delete;
    ZelPrmProjectManager& operator=(const ZelPrmProjectManager&) = delete;

    // Closes the active project, then reads `path` and makes it the active project. A file
    // that cannot be read leaves no project active, false and the reason in `error`.
    bool openProject(const QString& path, QString* error = nullptr);
    void closeProject();

    // True, with the id, when a project is active.
    bool getActiveProjectID(ZelPrmProjectId& id) const;
    // The project of that id; null for an id that names no open project.
    ZelPrmProject* getProject(const ZelPrmProjectId& id) const;
    ZelPrmProject* activeProject() const { return m_project.get(); }
    // Whether the drawing `file` belongs to the project `id`; false for an unknown id.
    bool isFileInProject(const wchar_t* file, const ZelPrmProjectId& id) const;

private:
    std::unique_ptr<ZelPrmProject> m_project;
    quint32 m_lastSerial = 0;
};

// The process-wide project manager.
ZelPrmProjectManager* GetProjectManager();
