#include "zelpm/ZelPrmProject.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <cmath>

const char* const ZelPrmProject::kFormat = "zel-project";

namespace {

// A project file lists a few dozen drawings at most; anything this large is not one.
constexpr qint64 kMaxFileSize = 16 * 1024 * 1024;

QString jsonTypeName(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("a truth value");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::String:
        return QStringLiteral("a text");
    case QJsonValue::Array:
        return QStringLiteral("a list");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("nothing");
}

} // namespace

QString ZelPrmProject::absoluteCleanPath(const QString& path, const QString& base) {
    return QDir::cleanPath(QDir(base).absoluteFilePath(path));
}

std::unique_ptr<ZelPrmProject> ZelPrmProject::fromFile(const QString& path, ZelPrmProjectId id,
                                                       QString* error) {
    const QString file = path.isEmpty() ? QString() : absoluteCleanPath(path, QDir::currentPath());
    const auto failWith = [&](const QString& why) -> std::unique_ptr<ZelPrmProject> {
        if (error)
            *error = QStringLiteral("Cannot open the project \"%1\": %2.").arg(file, why);
        return nullptr;
    };
    if (file.isEmpty())
        return failWith(QStringLiteral("no project file was named"));
    const QFileInfo info(file);
    if (!info.exists())
        return failWith(QStringLiteral("the file does not exist"));
    if (info.isDir())
        return failWith(QStringLiteral("it is a folder, not a project file"));
    // A pipe or a device would be read until a writer comes or memory runs out.
    if (!info.isFile())
        return failWith(QStringLiteral("it is not a regular file"));
    if (info.size() > kMaxFileSize)
        return failWith(QStringLiteral("the file is too large to be a project file"));
    QFile input(file);
    if (!input.open(QIODevice::ReadOnly))
        return failWith(QStringLiteral("the file cannot be read (%1)").arg(input.errorString()));
    // Read by the size seen, not by the bound: asking for the bound at once would allocate
    // 16 MB for every project opened. The file may have grown since it was looked at, so
    // the read goes on to its end, but never past the bound.
    QByteArray data = input.read(info.size() + 1);
    while (!input.atEnd() && data.size() <= kMaxFileSize) {
        const QByteArray more = input.read(qMin<qint64>(64 * 1024, kMaxFileSize + 1 - data.size()));
        if (more.isEmpty())
            break;
        data += more;
    }
    if (data.size() > kMaxFileSize)
        return failWith(QStringLiteral("the file is too large to be a project file"));

    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        const qsizetype line = data.left(parseError.offset).count('\n') + 1;
        return failWith(QStringLiteral("the file is not valid JSON (%1 on line %2)")
                            .arg(parseError.errorString())
                            .arg(line));
    }
    if (!document.isObject())
        return failWith(QStringLiteral("the file holds no JSON object"));
    const QJsonObject root = document.object();

    if (root.value(QLatin1String("format")).toString() != QLatin1String(kFormat))
        return failWith(QStringLiteral("it is not a project file (\"format\" is not \"%1\")")
                            .arg(QLatin1String(kFormat)));
    const QJsonValue version = root.value(QLatin1String("version"));
    const double number = version.toDouble(-1);
    if (!version.isDouble() || number < 1 || std::floor(number) != number)
        return failWith(QStringLiteral("\"version\" must be a whole number from 1 on"));
    if (number > kVersion)
        return failWith(QStringLiteral("it is of version %1, newer than this program reads (%2)")
                            .arg(QString::number(number, 'g', 16))
                            .arg(kVersion));

    std::unique_ptr<ZelPrmProject> project(new ZelPrmProject);
    project->m_id = id;
    project->m_filePath = file;
    const QString folder = info.absolutePath();

    const QJsonValue name = root.value(QLatin1String("name"));
    if (name.isUndefined() || name.isNull())
        project->m_name = info.completeBaseName();
    else if (name.isString() && !name.toString().trimmed().isEmpty())
        project->m_name = name.toString().trimmed();
    else
        return failWith(QStringLiteral("\"name\" must be a text that is not empty"));

    const QJsonValue drawings = root.value(QLatin1String("drawings"));
    if (!drawings.isUndefined() && !drawings.isArray())
        return failWith(QStringLiteral("\"drawings\" must be a list of paths, not %1")
                            .arg(jsonTypeName(drawings)));
    const QJsonArray drawingList = drawings.toArray();
    for (qsizetype i = 0; i < drawingList.size(); ++i) {
        const QJsonValue entry = drawingList.at(i);
        if (!entry.isString() || entry.toString().trimmed().isEmpty())
            return failWith(
                QStringLiteral("drawing %1 of \"drawings\" is %2, not a path")
                    .arg(i + 1)
                    .arg(entry.isString() ? QStringLiteral("an empty text") : jsonTypeName(entry)));
        const QString drawing = absoluteCleanPath(entry.toString(), folder);
        if (project->m_drawings.contains(drawing))
            return failWith(
                QStringLiteral("the drawing \"%1\" is listed twice").arg(entry.toString()));
        project->m_drawings.append(drawing);
    }

    const QJsonValue database = root.value(QLatin1String("database"));
    if (database.isString()) {
        if (!database.toString().trimmed().isEmpty())
            project->m_databasePath = absoluteCleanPath(database.toString(), folder);
    } else if (!database.isUndefined() && !database.isNull()) {
        return failWith(QStringLiteral("\"database\" must be the path of the project database, "
                                       "not %1")
                            .arg(jsonTypeName(database)));
    }

    const QJsonValue settings = root.value(QLatin1String("settings"));
    if (!settings.isUndefined() && !settings.isObject())
        return failWith(QStringLiteral("\"settings\" must be an object of numbered texts, not %1")
                            .arg(jsonTypeName(settings)));
    const QJsonObject settingMap = settings.toObject();
    for (auto it = settingMap.begin(); it != settingMap.end(); ++it) {
        bool isNumber = false;
        const int index = it.key().toInt(&isNumber);
        if (!isNumber || index < 0)
            return failWith(
                QStringLiteral("the setting \"%1\" is not named by a number").arg(it.key()));
        if (!it.value().isString())
            return failWith(QStringLiteral("setting %1 is %2, not a text")
                                .arg(index)
                                .arg(jsonTypeName(it.value())));
        project->m_settings.setValue(index, it.value().toString());
    }
    return project;
}

bool ZelPrmProject::containsFile(const QString& file) const {
    if (file.isEmpty())
        return false;
    return m_drawings.contains(absoluteCleanPath(file, QDir::currentPath()));
}
