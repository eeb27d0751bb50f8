#include "ovcore/OvApDocManager.h"

#include "ovcore/OvApDocManagerReactor.h"
#include "ovcore/OvDrawingLock.h"
#include "ovcore/OvGuard.h"
#include "ovcore/OvLisp.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

OvApDocManager* s_manager = nullptr;

// Paths compare after links are resolved; a file not there yet keeps its name in its
// folder's resolved path.
QString normalPath(const QString& path) {
    const QFileInfo file(path);
    if (file.exists())
        return file.canonicalFilePath();
    const QString folder = QFileInfo(file.absolutePath()).canonicalFilePath();
    return folder.isEmpty() ? file.absoluteFilePath() : QDir(folder).filePath(file.fileName());
}

void say(const QString& text) {
    ovutPrintf(L"\n; %ls\n", text.toStdWString().c_str());
}

QString describeLock(const OvDrawingLockInfo& lock) {
    return QStringLiteral("%1 on %2 (process %3) since %4")
        .arg(lock.user.isEmpty() ? QStringLiteral("another user") : lock.user, lock.machine)
        .arg(lock.pid)
        .arg(lock.time.isValid() ? lock.time.toLocalTime().toString(Qt::ISODate)
                                 : QStringLiteral("an unknown time"));
}

} // namespace

OvApDocManager* ovDocManagerPtr() {
    return s_manager;
}

OvApDocManager* OvApDocManager::create() {
    if (!s_manager)
        s_manager = new OvApDocManager;
    return s_manager;
}

void OvApDocManager::destroy() {
    OvApDocManager* manager = s_manager;
    if (!manager || manager->m_destroying)
        return;
    manager->m_destroying = true;
    manager->closeAllDocuments();
    manager->notify([](OvApDocManagerReactor* r) { r->documentManagerToBeDestroyed(); });
    s_manager = nullptr;
    delete manager;
}

OvApDocManager::OvApDocManager() = default;

OvApDocManager::~OvApDocManager() {
    if (s_manager == this)
        s_manager = nullptr;
    m_reactors.clear();
    if (m_current)
        switchContext(nullptr);
    for (const auto& doc : m_documents) {
        ovcore::lisp::forgetDocument(doc.get());
        doc->m_drawingLock.release();
    }
}

template <typename F> void OvApDocManager::notify(F&& notification) {
    // A reactor may remove itself, or another, while being told.
    const std::vector<OvApDocManagerReactor*> reactors = m_reactors;
    for (OvApDocManagerReactor* reactor : reactors) {
        if (std::find(m_reactors.begin(), m_reactors.end(), reactor) == m_reactors.end())
            continue;
        const std::size_t openBefore = ovdbOpenObjectCount();
        ovcore::guardedCall(L"document reactor", 0, [&] {
            notification(reactor);
            return 0;
        });
        ovcore::checkObjectsLeftOpen(openBefore, L"document reactor");
    }
}

QList<OvApDocument*> OvApDocManager::documents() const {
    QList<OvApDocument*> list;
    for (const auto& doc : m_documents)
        list << doc.get();
    return list;
}

OvApDocument* OvApDocManager::document(const OvDbDatabase* database) const {
    for (const auto& doc : m_documents) {
        if (database && doc->database() == database)
            return doc.get();
    }
    return nullptr;
}

OvApDocument* OvApDocManager::documentForFile(const QString& path) const {
    if (path.isEmpty())
        return nullptr;
    const QString wanted = normalPath(path);
    for (const auto& doc : m_documents) {
        if (!doc->fileName().isEmpty() && normalPath(doc->fileName()) == wanted)
            return doc.get();
    }
    return nullptr;
}

bool OvApDocManager::owns(const OvApDocument* doc) const {
    return doc && std::any_of(m_documents.begin(), m_documents.end(),
                              [doc](const auto& d) { return d.get() == doc; });
}

Orvex::ErrorStatus OvApDocManager::fail(Orvex::ErrorStatus status, const QString& message) {
    m_lastError = message;
    return status;
}

QString OvApDocManager::nextTitle() {
    return QStringLiteral("Drawing%1.dwg").arg(++m_untitled);
}

OvApDocument* OvApDocManager::switchContext(OvApDocument* doc) {
    OvApDocument* previous = m_current;
    m_current = doc;
    OvDbHostApplicationServices::getRefPtr()->setWorkingDatabase(doc ? doc->database() : nullptr);
    ovcore::lisp::setCurrentDocument(doc);
    return previous;
}

void OvApDocManager::makeActive(OvApDocument* doc) {
    if (m_active == doc) {
        if (m_current != doc) {
            switchContext(doc);
            notify([doc](OvApDocManagerReactor* r) { r->documentBecameCurrent(doc); });
        }
        return;
    }
    if (OvApDocument* old = m_active)
        notify([old](OvApDocManagerReactor* r) { r->documentToBeDeactivated(old); });
    if (!owns(doc))
        return;
    notify([doc](OvApDocManagerReactor* r) { r->documentToBeActivated(doc); });
    if (!owns(doc))
        return;
    m_active = doc;
    switchContext(doc);
    notify([doc](OvApDocManagerReactor* r) { r->documentBecameCurrent(doc); });
    notify([doc](OvApDocManagerReactor* r) { r->documentActivated(doc); });
}

Orvex::ErrorStatus OvApDocManager::addDocument(std::unique_ptr<OvApDocument> owned) {
    OvApDocument* doc = owned.get();
    m_documents.push_back(std::move(owned));
    loadStartupLisp(doc);
    if (!owns(doc))
        return Orvex::eOk; // a start-up file closed it
    OvModuleLoader::instance().documentLoaded(doc);
    if (!owns(doc))
        return Orvex::eOk; // a module closed it while it loaded
    notify([doc](OvApDocManagerReactor* r) { r->documentCreated(doc); });
    if (!owns(doc))
        return Orvex::eOk;
    if (m_activationEnabled) {
        makeActive(doc);
    } else if (!m_current) {
        switchContext(doc);
        notify([doc](OvApDocManagerReactor* r) { r->documentBecameCurrent(doc); });
    }
    return Orvex::eOk;
}

void OvApDocManager::loadStartupLisp(OvApDocument* doc) {
    if (m_startupLispFiles.isEmpty())
        return;
    OvApDocument* previous = switchContext(doc);
    for (const QString& file : m_startupLispFiles) {
        if (!owns(doc))
            break;
        if (m_current != doc)
            switchContext(doc); // a file may have switched documents
        // loadFile reports its own failure at the command line.
        if (!ovcore::lisp::loadFile(file).ok)
            ++m_startupLispFailures;
    }
    switchContext(owns(previous) ? previous : m_active);
}

Orvex::ErrorStatus OvApDocManager::newDocument(const QString& templatePath,
                                               OvApDocument** created) {
    if (created)
        *created = nullptr;
    m_lastError.clear();
    if (m_destroying)
        return fail(Orvex::eNotApplicable, QStringLiteral("the host is shutting down"));
    const bool fromTemplate = !templatePath.isEmpty();
    std::unique_ptr<OvApDocument> owned(
        new OvApDocument(std::make_unique<OvDbDatabase>(!fromTemplate, false), nextTitle()));
    OvApDocument* doc = owned.get();
    notify([doc](OvApDocManagerReactor* r) { r->documentCreateStarted(doc); });
    if (fromTemplate) {
        const std::wstring path = templatePath.toStdWString();
        const Orvex::ErrorStatus es = doc->database()->readDwgFile(path.c_str());
        if (es != Orvex::eOk) {
            notify([doc](OvApDocManagerReactor* r) { r->documentCreateCanceled(doc); });
            return fail(es, QStringLiteral("cannot make a drawing from template \"%1\": %2")
                                .arg(templatePath, doc->database()->lastErrorMessage()));
        }
    }
    const Orvex::ErrorStatus es = addDocument(std::move(owned));
    if (created && owns(doc))
        *created = doc;
    return es;
}

Orvex::ErrorStatus OvApDocManager::openDocument(const QString& path, OvApDocument** opened,
                                                bool readOnly) {
    if (opened)
        *opened = nullptr;
    m_lastError.clear();
    if (m_destroying)
        return fail(Orvex::eNotApplicable, QStringLiteral("the host is shutting down"));
    if (path.isEmpty())
        return fail(Orvex::eInvalidInput, QStringLiteral("cannot open a drawing: no file named"));
    const QString file = normalPath(path);

    // The lock is taken before the drawing is read, in one step that only one process
    // can win: whoever reads the drawing for editing is the only one who may save it.
    OvDrawingLock lock;
    std::optional<OvDrawingLockInfo> holder;
    const OvDrawingLock::Outcome outcome =
        readOnly ? OvDrawingLock::Outcome::NoLockFile : lock.acquire(file, &holder);
    const QString name = QFileInfo(file).fileName();
    if (outcome == OvDrawingLock::Outcome::Held) {
        readOnly = true;
        say(!holder
                ? QStringLiteral("\"%1\" is in use by another process: opened read-only").arg(name)
            : ovIsOwnDrawingLock(*holder)
                ? QStringLiteral("\"%1\" is open in another document: opened read-only").arg(name)
                : QStringLiteral("\"%1\" is in use by %2: opened read-only")
                      .arg(name, describeLock(*holder)));
    }

    std::unique_ptr<OvApDocument> owned(
        new OvApDocument(std::make_unique<OvDbDatabase>(false, false), name));
    OvApDocument* doc = owned.get();
    doc->m_fileName = file;
    doc->m_readOnly = readOnly;
    notify([doc](OvApDocManagerReactor* r) { r->documentCreateStarted(doc); });
    const std::wstring widePath = file.toStdWString();
    const Orvex::ErrorStatus es = doc->database()->readDwgFile(widePath.c_str());
    if (es != Orvex::eOk) {
        // `lock` goes with this scope: a drawing that cannot be read leaves no lock.
        notify([doc](OvApDocManagerReactor* r) { r->documentCreateCanceled(doc); });
        return fail(es, QStringLiteral("cannot open \"%1\": %2")
                            .arg(path, doc->database()->lastErrorMessage()));
    }
    if (outcome == OvDrawingLock::Outcome::TakenStale && holder)
        say(QStringLiteral("\"%1\" was left locked by %2, which has ended: lock removed")
                .arg(name, describeLock(*holder)));
    // A folder that allows no lock file is edited without one.
    doc->m_drawingLock = std::move(lock);
    const Orvex::ErrorStatus added = addDocument(std::move(owned));
    if (opened && owns(doc))
        *opened = doc;
    return added;
}

Orvex::ErrorStatus OvApDocManager::closeDocument(OvApDocument* doc) {
    m_lastError.clear();
    if (!owns(doc) || doc->m_closing)
        return fail(Orvex::eInvalidInput, QStringLiteral("no such document to close"));
    doc->m_closing = true;
    if (m_active == doc)
        notify([doc](OvApDocManagerReactor* r) { r->documentToBeDeactivated(doc); });
    notify([doc](OvApDocManagerReactor* r) { r->documentToBeDestroyed(doc); });
    OvModuleLoader::instance().documentToBeUnloaded(doc);

    const bool wasActive = m_active == doc;
    auto it = std::find_if(m_documents.begin(), m_documents.end(),
                           [doc](const auto& d) { return d.get() == doc; });
    std::unique_ptr<OvApDocument> owned = std::move(*it);
    m_documents.erase(it);
    if (wasActive)
        m_active = nullptr;
    if (m_current == doc)
        switchContext(nullptr);
    const std::wstring fileName = doc->fileName().toStdWString();
    ovcore::lisp::forgetDocument(doc);
    doc->m_drawingLock.release();
    owned.reset();
    notify([&fileName](OvApDocManagerReactor* r) { r->documentDestroyed(fileName.c_str()); });

    if (m_destroying)
        return Orvex::eOk;
    if (wasActive && !m_documents.empty())
        makeActive(m_documents.back().get());
    else if (!m_current && m_active)
        makeActive(m_active);
    return Orvex::eOk;
}

Orvex::ErrorStatus OvApDocManager::closeAllDocuments() {
    // The last opened first; a document a reactor closed meanwhile is skipped.
    const QList<OvApDocument*> docs = documents();
    for (auto it = docs.rbegin(); it != docs.rend(); ++it) {
        if (owns(*it) && !(*it)->m_closing)
            closeDocument(*it);
    }
    return Orvex::eOk;
}

Orvex::ErrorStatus OvApDocManager::activateDocument(OvApDocument* doc) {
    m_lastError.clear();
    if (!owns(doc) || doc->m_closing)
        return fail(Orvex::eInvalidInput, QStringLiteral("no such document to activate"));
    if (!m_activationEnabled)
        return fail(Orvex::eNotApplicable, QStringLiteral("document activation is disabled"));
    makeActive(doc);
    return Orvex::eOk;
}

Orvex::ErrorStatus OvApDocManager::setCurDocument(OvApDocument* doc) {
    m_lastError.clear();
    if (!owns(doc))
        return fail(Orvex::eInvalidInput, QStringLiteral("no such document"));
    if (m_current != doc) {
        switchContext(doc);
        notify([doc](OvApDocManagerReactor* r) { r->documentBecameCurrent(doc); });
    }
    return Orvex::eOk;
}

Orvex::ErrorStatus OvApDocManager::saveDocument(OvApDocument* doc) {
    m_lastError.clear();
    if (!owns(doc))
        return fail(Orvex::eInvalidInput, QStringLiteral("no such document to save"));
    if (doc->fileName().isEmpty())
        return fail(Orvex::eInvalidInput,
                    QStringLiteral("%1 has never been saved: save it as a file first")
                        .arg(doc->docTitle()));
    if (doc->isReadOnly())
        return fail(
            Orvex::eFileAccessErr,
            QStringLiteral("%1 is open read-only: save it as another file").arg(doc->docTitle()));
    const std::wstring path = doc->fileName().toStdWString();
    const Orvex::ErrorStatus es = doc->database()->saveAs(path.c_str());
    if (es != Orvex::eOk)
        return fail(es, QStringLiteral("cannot save \"%1\": %2")
                            .arg(doc->fileName(), doc->database()->lastErrorMessage()));
    return Orvex::eOk;
}

Orvex::ErrorStatus OvApDocManager::saveDocumentAs(OvApDocument* doc, const QString& path) {
    m_lastError.clear();
    if (!owns(doc))
        return fail(Orvex::eInvalidInput, QStringLiteral("no such document to save"));
    if (path.isEmpty())
        return fail(Orvex::eInvalidInput, QStringLiteral("cannot save: no file named"));
    const QString target = normalPath(path);
    if (!doc->fileName().isEmpty() && target == normalPath(doc->fileName()))
        return saveDocument(doc);

    // The target's lock first, so that nobody opens it for editing while we write it.
    OvDrawingLock lock;
    std::optional<OvDrawingLockInfo> holder;
    if (lock.acquire(target, &holder) == OvDrawingLock::Outcome::Held) {
        return fail(
            Orvex::eFileAccessErr,
            !holder
                ? QStringLiteral("cannot save as \"%1\": it is in use by another process").arg(path)
            : ovIsOwnDrawingLock(*holder)
                ? QStringLiteral("cannot save as \"%1\": it is open in another document").arg(path)
                : QStringLiteral("cannot save as \"%1\": it is in use by %2")
                      .arg(path, describeLock(*holder)));
    }
    const std::wstring widePath = target.toStdWString();
    const Orvex::ErrorStatus es = doc->database()->saveAs(widePath.c_str());
    if (es != Orvex::eOk)
        return fail(es, QStringLiteral("cannot save as \"%1\": %2")
                            .arg(path, doc->database()->lastErrorMessage()));

    doc->m_fileName = normalPath(target);
    doc->m_title = QFileInfo(target).fileName();
    doc->m_readOnly = false;
    doc->m_drawingLock = std::move(lock);
    return Orvex::eOk;
}

Orvex::ErrorStatus OvApDocManager::lockDocument(OvApDocument* doc, OvAp::DocLockMode mode,
                                                const wchar_t* globalCmdName) {
    m_lastError.clear();
    if (!owns(doc))
        return fail(Orvex::eInvalidInput, QStringLiteral("no such document to lock"));
    const OvAp::DocLockMode previous = doc->m_lockMode;
    m_lockVetoed = false;
    notify([&](OvApDocManagerReactor* r) {
        r->documentLockModeWillChange(doc, previous, mode, globalCmdName);
    });
    if (m_lockVetoed) {
        m_lockVetoed = false;
        notify(
            [&](OvApDocManagerReactor* r) { r->documentLockModeChangeVetoed(doc, globalCmdName); });
        return fail(Orvex::eNotApplicable, QStringLiteral("the lock mode change was refused"));
    }
    if (!owns(doc))
        return Orvex::eOk;
    doc->m_lockMode = mode;
    notify([&](OvApDocManagerReactor* r) {
        r->documentLockModeChanged(doc, previous, mode, globalCmdName);
    });
    return Orvex::eOk;
}

Orvex::ErrorStatus OvApDocManager::unlockDocument(OvApDocument* doc, const wchar_t* globalCmdName) {
    return lockDocument(doc, OvAp::kNotLocked, globalCmdName);
}

Orvex::ErrorStatus OvApDocManager::disableDocumentActivation() {
    if (m_activationEnabled) {
        m_activationEnabled = false;
        notify([](OvApDocManagerReactor* r) { r->documentActivationModified(false); });
    }
    return Orvex::eOk;
}

Orvex::ErrorStatus OvApDocManager::enableDocumentActivation() {
    if (!m_activationEnabled) {
        m_activationEnabled = true;
        notify([](OvApDocManagerReactor* r) { r->documentActivationModified(true); });
    }
    return Orvex::eOk;
}

void OvApDocManager::addReactor(OvApDocManagerReactor* reactor) {
    if (reactor && std::find(m_reactors.begin(), m_reactors.end(), reactor) == m_reactors.end())
        m_reactors.push_back(reactor);
}

void OvApDocManager::removeReactor(OvApDocManagerReactor* reactor) {
    m_reactors.erase(std::remove(m_reactors.begin(), m_reactors.end(), reactor), m_reactors.end());
}
