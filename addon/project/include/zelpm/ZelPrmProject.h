#pragma once

#include "zelpm/ZelPmMiscProjSettings.h"
#include "zelpm/ZelPrmProjectId.h"

#include <QString>
#include <QStringList>

#include <memory>

// A project as its project file describes it: a name, drawings, numbered settings and a
// project database. Paths are held absolute and clean; the file gives them relative to
// itself. docs/project.md describes the file.
class ZelPrmProject {
public:
    // The format tag and the newest version of the project file that this code reads.
    static const char* const kFormat;
    static constexpr int kVersion = 1;

    // Reads a project file. Null, with a message naming the file and the fault, when it
    // cannot be read or is not a project file of a version this code knows.
    static std::unique_ptr<ZelPrmProject> fromFile(const QString& path, ZelPrmProjectId id,
                                                   QString* error);

    // `path` made absolute (against `base` when it is relative) and clean.
    static QString absoluteCleanPath(const QString& path, const QString& base);

    ZelPrmProjectId id() const { return m_id; }
    QString name() const { return m_name; }
    QString filePath() const { return m_filePath; }
    QStringList drawings() const { return m_drawings; }
    // Empty when the project has no database.
    QString databasePath() const { return m_databasePath; }
    // Whether `file`, made absolute against the working folder and clean, is one of the
    // drawings. Compared with case, as the file system does.
    bool containsFile(const QString& file) const;

    ZelPmMiscProjSettings* getMiscProjSettings() { return &m_settings; }
    const ZelPmMiscProjSettings* getMiscProjSettings() const { return &m_settings; }

private:
    ZelPrmProject() = default;

    ZelPrmProjectId m_id;
    QString m_name;
    QString m_filePath;
    QStringList m_drawings;
    QString m_databasePath;
    ZelPmMiscProjSettings m_settings;
};
