#pragma once

#include <QString>
#include <QStringList>

#include <map>

// Project files for tests, written as the add-on reads them.
class ZelTestProject {
public:
    // Writes `folder`/`name`.zpj listing the drawings, the database (empty: none) and the
    // numbered settings; returns its path.
    static QString write(const QString& folder, const QString& name, const QStringList& drawings,
                         const QString& database, const std::map<int, QString>& settings = {});
    // Writes an SQLite project database at `path` by running `sql`; returns the path.
    static QString writeDatabase(const QString& path, const char* sql);
    // The demo project's database, built in the build tree.
    static QString demoDatabase();
};
