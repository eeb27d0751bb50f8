#include "zeldefun/ZelQvxDatabase.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/ovdbOpenObject.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString absoluteCleanPath(const QString& path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

OvApDocument* documentOfPath(const QString& path) {
    OvApDocManager* manager = ovDocManagerPtr();
    if (manager == nullptr || path.isEmpty())
        return nullptr;
    const QString wanted = absoluteCleanPath(path);
    const QList<OvApDocument*> documents = manager->documents();
    for (OvApDocument* doc : documents) {
        if (!doc->fileName().isEmpty() && absoluteCleanPath(doc->fileName()) == wanted)
            return doc;
    }
    // The same file reached through a link.
    return manager->documentForFile(path);
}

OvDbDatabase* liveDatabaseOfSession(std::int64_t session) {
    OvApDocManager* manager = ovDocManagerPtr();
    if (manager == nullptr)
        return nullptr;
    const QList<OvApDocument*> documents = manager->documents();
    for (OvApDocument* doc : documents) {
        if (doc->database() != nullptr && doc->database()->sessionNumber() == session)
            return doc->database();
    }
    return nullptr;
}

} // namespace

ZelQvxDatabase::ZelQvxDatabase() = default;

ZelQvxDatabase::~ZelQvxDatabase() {
    closeDatabase();
}

bool ZelQvxDatabase::open(const QString& path, int sharing, bool flag) {
    Q_UNUSED(sharing);
    Q_UNUSED(flag);
    closeDatabase();
    m_lastError.clear();
    if (path.isEmpty()) {
        m_lastError = QStringLiteral("No drawing was named.");
        return false;
    }
    if (OvApDocument* doc = documentOfPath(path); doc != nullptr && doc->database() != nullptr) {
        m_database = doc->database();
        m_liveSession = m_database->sessionNumber();
        m_path = doc->fileName();
        return true;
    }
    if (!QFileInfo(path).isFile()) {
        m_lastError = QStringLiteral("The drawing %1 is neither open nor a file.").arg(path);
        return false;
    }
    auto side = std::make_unique<OvDbDatabase>(false, true);
    const std::wstring widePath = path.toStdWString();
    if (side->readDwgFile(widePath.c_str(), 3, false, nullptr) != Orvex::eOk) {
        m_lastError = side->lastErrorMessage();
        return false;
    }
    m_sideDatabase = std::move(side);
    m_database = m_sideDatabase.get();
    m_path = absoluteCleanPath(path);
    return true;
}

void ZelQvxDatabase::closeDatabase() {
    m_database = nullptr;
    m_sideDatabase.reset();
    m_liveSession = 0;
    m_path.clear();
}

bool ZelQvxDatabase::isOpen() const {
    return database() != nullptr;
}

OvDbDatabase* ZelQvxDatabase::database() const {
    if (m_sideDatabase)
        return m_sideDatabase.get();
    if (m_database == nullptr)
        return nullptr;
    // Never hand out the database of a document that has closed since the open.
    return liveDatabaseOfSession(m_liveSession);
}

bool ZelQvxDatabase::isLiveDocument() const {
    return !m_sideDatabase && database() != nullptr;
}

QString ZelQvxDatabase::path() const {
    return m_path;
}

QString ZelQvxDatabase::lastError() const {
    return m_lastError;
}

QString getSpace(OvDbDatabase* database) {
    if (database == nullptr)
        return QString();
    OvDbBlockTableRecord* space = nullptr;
    if (ovdbOpenObject(space, database->currentSpaceId(), OvDb::kForRead) != Orvex::eOk)
        return QString();
    const QString name = space->name();
    space->close();
    return name;
}
