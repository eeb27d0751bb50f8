#include "support/ZelTestProject.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>
#include <sqlite3.h>

QString ZelTestProject::write(const QString& folder, const QString& name,
                              const QStringList& drawings, const QString& database,
                              const std::map<int, QString>& settings) {
    QJsonObject numbered;
    for (const auto& [number, text] : settings)
        numbered.insert(QString::number(number), text);
    QJsonObject project{{QStringLiteral("format"), QStringLiteral("zel-project")},
                        {QStringLiteral("version"), 1},
                        {QStringLiteral("name"), name},
                        {QStringLiteral("drawings"), QJsonArray::fromStringList(drawings)},
                        {QStringLiteral("settings"), numbered}};
    if (!database.isEmpty())
        project.insert(QStringLiteral("database"), database);

    QDir().mkpath(folder);
    const QString path = QDir(folder).filePath(name + QStringLiteral(".zpj"));
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(QJsonDocument(project).toJson());
    return path;
}

QString ZelTestProject::writeDatabase(const QString& path, const char* sql) {
    sqlite3* db = nullptr;
    EXPECT_EQ(sqlite3_open(path.toUtf8().constData(), &db), SQLITE_OK);
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, &error), SQLITE_OK) << error;
    sqlite3_free(error);
    sqlite3_close(db);
    return path;
}

QString ZelTestProject::demoDatabase() {
    return QStringLiteral(ZEL_DEMO_DIR "/demo.db");
}
