#include "zeldefun/ZelQvxDatabase.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/ovdbOpenObject.h"

#include <QDir>
#include <QFileInfo>

#include <sys/stat.h>

#include <list>

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

// What tells one state of a file from another without reading it. A write through a new
// file (the atomic save) changes the inode; a write in place changes the times.
struct FileStamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};

    bool operator==(const FileStamp& o) const {
        return device == o.device && inode == o.inode && size == o.size &&
               modified.tv_sec == o.modified.tv_sec && modified.tv_nsec == o.modified.tv_nsec &&
               changed.tv_sec == o.changed.tv_sec && changed.tv_nsec == o.changed.tv_nsec;
    }
};

bool stampOf(const QString& path, FileStamp& stamp) {
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0 || !S_ISREG(st.st_mode))
        return false;
    stamp.device = st.st_dev;
    stamp.inode = st.st_ino;
    stamp.size = st.st_size;
    stamp.modified = st.st_mtim;
    stamp.changed = st.st_ctim;
    return true;
}

// Drawings read in this process, the most recently used first. Few are kept: a drawing
// read once for a LISP call is asked for again and again within that call (once per
// layer), and across a script's calls, but rarely many at a time.
struct SharedDrawing {
    QString path;
    FileStamp stamp;
    std::shared_ptr<OvDbDatabase> database;
};
constexpr std::size_t kSharedDrawings = 4;

std::list<SharedDrawing>& sharedDrawings() {
    static std::list<SharedDrawing> drawings;
    return drawings;
}

std::shared_ptr<OvDbDatabase> readDrawing(const QString& path, QString& error) {
    auto side = std::make_shared<OvDbDatabase>(false, true);
    const std::wstring widePath = path.toStdWString();
    if (side->readDwgFile(widePath.c_str(), 3, false, nullptr) != Orvex::eOk) {
        error = side->lastErrorMessage();
        return nullptr;
    }
    return side;
}

// The drawing of this file as it is on disk now: the one read before if the file is
// unchanged, else read now (and kept in place of the old one).
std::shared_ptr<OvDbDatabase> sharedDrawing(const QString& path, QString& error) {
    const QString key = QFileInfo(path).canonicalFilePath();
    FileStamp before;
    if (key.isEmpty() || !stampOf(key, before))
        return readDrawing(path, error);
    std::list<SharedDrawing>& drawings = sharedDrawings();
    for (auto it = drawings.begin(); it != drawings.end(); ++it) {
        if (it->path != key)
            continue;
        if (it->stamp == before) {
            drawings.splice(drawings.begin(), drawings, it);
            return drawings.front().database;
        }
        drawings.erase(it);
        break;
    }
    std::shared_ptr<OvDbDatabase> database = readDrawing(key, error);
    FileStamp after;
    // A file written while it was read is not kept: the next open reads it again.
    if (database && stampOf(key, after) && after == before) {
        drawings.push_front({key, before, database});
        if (drawings.size() > kSharedDrawings)
            drawings.pop_back();
    }
    return database;
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
    std::shared_ptr<OvDbDatabase> side = sharedDrawing(path, m_lastError);
    if (!side)
        return false;
    m_sideDatabase = std::move(side);
    m_sideShared = true;
    m_database = m_sideDatabase.get();
    m_path = absoluteCleanPath(path);
    return true;
}

void ZelQvxDatabase::closeDatabase() {
    m_database = nullptr;
    m_sideDatabase.reset();
    m_sideShared = false;
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

OvDbDatabase* ZelQvxDatabase::databaseForWrite() {
    if (!m_sideDatabase || !m_sideShared)
        return database();
    QString error;
    std::shared_ptr<OvDbDatabase> own = readDrawing(m_path, error);
    if (!own)
        return nullptr;
    m_sideDatabase = std::move(own);
    m_sideShared = false;
    m_database = m_sideDatabase.get();
    return m_database;
}

std::shared_ptr<OvDbDatabase> ZelQvxDatabase::sharedFileDrawing(const QString& path,
                                                                QString& error) {
    return sharedDrawing(path, error);
}

void ZelQvxDatabase::clearSharedDrawings() {
    sharedDrawings().clear();
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
