#include "OvcoreTest.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvApDocManagerReactor.h"
#include "ovcore/OvDrawingLock.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbHostApplicationServices.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>
#include <QTemporaryDir>

#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

namespace {

QString titleOf(const OvApDocument* doc) {
    return doc ? doc->docTitle() : QStringLiteral("-");
}

// Writes down every notification as "<slot> <what>".
class Recorder : public OvApDocManagerReactor {
public:
    QStringList events;
    bool veto = false;

    void note(int slot, const OvApDocument* d, const QString& more = {}) {
        events << QStringLiteral("%1 %2%3").arg(slot).arg(titleOf(d), more);
    }
    static QString change(OvAp::DocLockMode from, OvAp::DocLockMode to, const wchar_t* cmd) {
        return QStringLiteral(" %1>%2 %3").arg(from).arg(to).arg(QString::fromWCharArray(cmd));
    }
    void documentCreateStarted(OvApDocument* d) override { note(1, d); }
    void documentCreated(OvApDocument* d) override { note(2, d); }
    void documentToBeDestroyed(OvApDocument* d) override {
        // The document about to go is still whole and still listed.
        const bool whole = d->database() && ovDocManagerPtr()->documents().contains(d);
        note(3, d, whole ? "" : " (gone)");
    }
    void documentDestroyed(const wchar_t* fileName) override {
        events << "4 " + QString::fromWCharArray(fileName);
    }
    void documentCreateCanceled(OvApDocument* d) override { note(5, d); }
    void documentLockModeWillChange(OvApDocument* d, OvAp::DocLockMode from, OvAp::DocLockMode to,
                                    const wchar_t* cmd) override {
        note(6, d, change(from, to, cmd));
        if (veto)
            ovDocManagerPtr()->vetoLockModeChange();
    }
    void documentLockModeChangeVetoed(OvApDocument* d, const wchar_t* cmd) override {
        note(7, d, ' ' + QString::fromWCharArray(cmd));
    }
    void documentLockModeChanged(OvApDocument* d, OvAp::DocLockMode from, OvAp::DocLockMode to,
                                 const wchar_t* cmd) override {
        note(8, d, change(from, to, cmd));
    }
    void documentBecameCurrent(OvApDocument* d) override { note(9, d); }
    void documentToBeActivated(OvApDocument* d) override { note(10, d); }
    void documentToBeDeactivated(OvApDocument* d) override { note(11, d); }
    void documentActivationModified(bool on) override { events << QStringLiteral("12 %1").arg(on); }
    void documentActivated(OvApDocument* d) override { note(13, d); }
    void documentManagerToBeDestroyed() override { events << "14"; }
};

// Leaves at its first notification.
class OneShot : public OvApDocManagerReactor {
public:
    int told = 0;
    void documentCreateStarted(OvApDocument*) override {
        ++told;
        ovDocManagerPtr()->removeReactor(this);
    }
    void documentCreated(OvApDocument*) override { ++told; }
};

class Thrower : public OvApDocManagerReactor {
public:
    void documentCreated(OvApDocument*) override { throw std::runtime_error("reactor failed"); }
};

class HostDocuments : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        ASSERT_TRUE(dir.isValid());
        docs = ovDocManagerPtr();
        ASSERT_NE(docs, nullptr);
    }
    QString path(const QString& name) const { return QDir(dir.path()).filePath(name); }
    OvDbDatabase* working() const {
        return OvDbHostApplicationServices::getRefPtr()->workingDatabase();
    }
    // A drawing on disk, made by the host itself.
    QString makeDrawing(const QString& name) {
        OvApDocument* doc = nullptr;
        EXPECT_EQ(docs->newDocument({}, &doc), Orvex::eOk);
        const QString file = path(name);
        EXPECT_EQ(docs->saveDocumentAs(doc, file), Orvex::eOk)
            << docs->lastErrorMessage().toStdString();
        EXPECT_EQ(docs->closeDocument(doc), Orvex::eOk);
        return QFileInfo(file).canonicalFilePath();
    }

    QTemporaryDir dir;
    OvApDocManager* docs = nullptr;
};

TEST_F(HostDocuments, SaveOpenAndTemplates) {
    OvApDocument* doc = newDocument();
    EXPECT_EQ(docs->saveDocument(doc), Orvex::eInvalidInput); // never saved: no file to go to
    ASSERT_EQ(docs->saveDocumentAs(doc, path("plan.dwg")), Orvex::eOk);
    const QString file = QFileInfo(path("plan.dwg")).canonicalFilePath();
    EXPECT_EQ(docs->saveDocument(doc), Orvex::eOk);
    ASSERT_EQ(docs->closeDocument(doc), Orvex::eOk);
    EXPECT_EQ(working(), nullptr); // the last document took its database with it

    OvApDocument* opened = nullptr;
    ASSERT_EQ(docs->openDocument(path("plan.dwg"), &opened), Orvex::eOk);
    EXPECT_EQ(opened->fileName(), file);
    EXPECT_FALSE(opened->isReadOnly());
    EXPECT_EQ(docs->documentForFile(path("plan.dwg")), opened);

    // A drawing from a template has no file of its own.
    OvApDocument* fromTemplate = nullptr;
    ASSERT_EQ(docs->newDocument(file, &fromTemplate), Orvex::eOk);
    EXPECT_TRUE(fromTemplate->fileName().isEmpty());
    EXPECT_TRUE(fromTemplate->docTitle().startsWith(QStringLiteral("Drawing")));
}

TEST_F(HostDocuments, AFileThatCannotBeReadGivesNoDocument) {
    Recorder recorder;
    docs->addReactor(&recorder);
    writeFile(path("junk.dwg"), "this is not a drawing");

    EXPECT_NE(docs->openDocument(path("junk.dwg")), Orvex::eOk);
    EXPECT_TRUE(docs->lastErrorMessage().contains(QStringLiteral("junk.dwg")));
    EXPECT_EQ(docs->documentCount(), 0);
    EXPECT_EQ(recorder.events, QStringList({"1 junk.dwg", "5 junk.dwg"}));
    EXPECT_FALSE(QFile::exists(ovDrawingLockPath(path("junk.dwg"))));

    EXPECT_NE(docs->newDocument(path("missing.dwt")), Orvex::eOk);
    EXPECT_EQ(docs->documentCount(), 0);
}

TEST_F(HostDocuments, ReactorsHearEverythingInOrder) {
    Recorder r;
    docs->addReactor(&r);
    OvApDocument* a = newDocument();
    EXPECT_EQ(r.events, QStringList({"1 Drawing1.dwg", "2 Drawing1.dwg", "10 Drawing1.dwg",
                                     "9 Drawing1.dwg", "13 Drawing1.dwg"}));
    r.events.clear();
    OvApDocument* b = newDocument();
    ASSERT_EQ(docs->saveDocumentAs(b, path("b.dwg")), Orvex::eOk);
    EXPECT_EQ(r.events, QStringList({"1 Drawing2.dwg", "2 Drawing2.dwg", "11 Drawing1.dwg",
                                     "10 Drawing2.dwg", "9 Drawing2.dwg", "13 Drawing2.dwg"}));

    EXPECT_EQ(working(), b->database());

    // Closing the active one hands activation, and the working database, to the one left.
    r.events.clear();
    ASSERT_EQ(docs->closeDocument(b), Orvex::eOk);
    EXPECT_EQ(r.events, QStringList({"11 b.dwg", "3 b.dwg",
                                     "4 " + QFileInfo(path("b.dwg")).canonicalFilePath(),
                                     "10 Drawing1.dwg", "9 Drawing1.dwg", "13 Drawing1.dwg"}));
    EXPECT_EQ(docs->mdiActiveDocument(), a);
    EXPECT_EQ(working(), a->database());
    EXPECT_EQ(docs->closeDocument(b), Orvex::eInvalidInput);

    r.events.clear();
    EXPECT_EQ(docs->lockDocument(a, OvAp::kWrite, L"EDIT"), Orvex::eOk);
    r.veto = true;
    EXPECT_EQ(docs->unlockDocument(a, L"EDIT"), Orvex::eNotApplicable);
    EXPECT_EQ(a->myLockMode(), OvAp::kWrite);
    EXPECT_EQ(r.events, QStringList({"6 Drawing1.dwg 2>4 EDIT", "8 Drawing1.dwg 2>4 EDIT",
                                     "6 Drawing1.dwg 4>2 EDIT", "7 Drawing1.dwg EDIT"}));

    r.events.clear();
    docs->disableDocumentActivation();
    EXPECT_EQ(docs->activateDocument(a), Orvex::eNotApplicable);
    docs->enableDocumentActivation();
    EXPECT_EQ(r.events, QStringList({"12 0", "12 1"}));

    // Shutdown: every document closes, then the manager says it goes, and is gone.
    r.events.clear();
    m_host.shutdown();
    EXPECT_EQ(r.events, QStringList({"11 Drawing1.dwg", "3 Drawing1.dwg", "4 ", "14"}));
    EXPECT_EQ(ovDocManagerPtr(), nullptr);
}

TEST_F(HostDocuments, AReactorMayLeaveOrFailWhileBeingTold) {
    OneShot once;
    Thrower thrower;
    Recorder after;
    docs->addReactor(&once);
    docs->addReactor(&thrower);
    docs->addReactor(&after);
    docs->addReactor(&after); // once only

    ASSERT_EQ(docs->newDocument(), Orvex::eOk);
    EXPECT_EQ(once.told, 1);
    EXPECT_EQ(after.events.count(QStringLiteral("2 Drawing1.dwg")), 1);
    EXPECT_TRUE(output().contains(
        QStringLiteral("; error: exception in document reactor: reactor failed")));
    EXPECT_EQ(docs->documentCount(), 1);

    // A reactor destroyed without removing itself is not told again.
    {
        Recorder shortLived;
        docs->addReactor(&shortLived);
    }
    EXPECT_EQ(docs->newDocument(), Orvex::eOk);
    docs->removeReactor(&thrower);
    docs->removeReactor(&thrower);
}

class HostDrawingLock : public HostDocuments {
protected:
    // A lock file as another process would leave it.
    void writeLock(const QString& drawing, const QString& machine, qint64 pid) {
        QJsonObject lock{{"user", "someone"},
                         {"machine", machine},
                         {"pid", static_cast<double>(pid)},
                         {"time", "2024-05-01T08:00:00.000Z"}};
        writeFile(ovDrawingLockPath(drawing), QJsonDocument(lock).toJson());
    }
};

TEST_F(HostDrawingLock, HeldWhileOpenRemovedOnCloseAndAnotherProcesssLockMeansReadOnly) {
    const QString file = makeDrawing(QStringLiteral("site.dwg"));
    EXPECT_FALSE(QFile::exists(ovDrawingLockPath(file)));

    OvApDocument* doc = nullptr;
    ASSERT_EQ(docs->openDocument(file, &doc), Orvex::eOk);
    const std::optional<OvDrawingLockInfo> lock = ovReadDrawingLock(file);
    ASSERT_TRUE(lock.has_value());
    EXPECT_TRUE(ovIsOwnDrawingLock(*lock));
    EXPECT_TRUE(lock->time.isValid());
    EXPECT_FALSE(ovIsDrawingLockStale(*lock));

    // The same file a second time: this session holds it, so read-only.
    OvApDocument* again = nullptr;
    ASSERT_EQ(docs->openDocument(file, &again), Orvex::eOk);
    EXPECT_TRUE(again->isReadOnly());
    EXPECT_TRUE(output().contains(QStringLiteral("is open in another document: opened read-only")));
    ASSERT_EQ(docs->closeDocument(again), Orvex::eOk);
    EXPECT_TRUE(QFile::exists(ovDrawingLockPath(file)));

    ASSERT_EQ(docs->closeDocument(doc), Orvex::eOk);
    EXPECT_FALSE(QFile::exists(ovDrawingLockPath(file)));

    // A live lock of another process: read-only, and saved only elsewhere.
    writeLock(file, QSysInfo::machineHostName(), getppid());
    ASSERT_EQ(docs->openDocument(file, &doc), Orvex::eOk);
    EXPECT_TRUE(doc->isReadOnly());
    EXPECT_TRUE(output().contains(QStringLiteral("\"site.dwg\" is in use by someone on")));
    EXPECT_EQ(docs->saveDocument(doc), Orvex::eFileAccessErr);
    EXPECT_EQ(docs->saveDocumentAs(doc, file), Orvex::eFileAccessErr);
    // Saving elsewhere is allowed, and the copy is ours.
    ASSERT_EQ(docs->saveDocumentAs(doc, path("copy.dwg")), Orvex::eOk);
    EXPECT_FALSE(doc->isReadOnly());
    EXPECT_TRUE(ovIsOwnDrawingLock(*ovReadDrawingLock(path("copy.dwg"))));
}

// A process number means something only on the machine that wrote it: a lock of another
// machine is never stale from here, or two machines sharing a folder would both write.
TEST_F(HostDrawingLock, StalenessIsJudgedOnlyOnThisMachineAndABadLockFileIsNone) {
    OvDrawingLockInfo lock;
    lock.machine = QStringLiteral("elsewhere.example");
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    waitpid(child, nullptr, 0);
    lock.pid = child; // a process that has ended here
    EXPECT_FALSE(ovIsDrawingLockStale(lock));
    lock.machine = QSysInfo::machineHostName();
    EXPECT_TRUE(ovIsDrawingLockStale(lock));

    const QString bad = writeFile(ovDrawingLockPath(path("x.dwg")), "{ not json");
    EXPECT_FALSE(ovReadDrawingLock(path("x.dwg")).has_value());
    EXPECT_TRUE(ovRemoveDrawingLock(path("x.dwg")));
    EXPECT_FALSE(QFile::exists(bad));
}

TEST_F(HostDrawingLock, OneTakerAtATimeAndTheRecordTellsTheHolderApart) {
    const QString file = makeDrawing(QStringLiteral("one.dwg"));
    OvDrawingLock first;
    OvDrawingLock second;
    std::optional<OvDrawingLockInfo> holder;
    ASSERT_EQ(first.acquire(file), OvDrawingLock::Outcome::Taken);
    EXPECT_EQ(second.acquire(file, &holder), OvDrawingLock::Outcome::Held);
    ASSERT_TRUE(holder.has_value());
    EXPECT_TRUE(ovIsOwnDrawingLock(*holder));
    EXPECT_GT(holder->start, 0);
    EXPECT_FALSE(holder->boot.isEmpty());
    EXPECT_TRUE(ovIsDrawingLockLive(file, *holder));

    // Our number with another start time is a process that was here before us.
    OvDrawingLockInfo earlier = *holder;
    earlier.start -= 1;
    EXPECT_FALSE(ovIsOwnDrawingLock(earlier));
    EXPECT_TRUE(ovIsDrawingLockStale(earlier));
    earlier.start = holder->start;
    earlier.boot = QStringLiteral("another-boot");
    EXPECT_TRUE(ovIsDrawingLockStale(earlier));

    first.release();
    EXPECT_FALSE(QFile::exists(ovDrawingLockPath(file)));
    EXPECT_EQ(second.acquire(file), OvDrawingLock::Outcome::Taken);
    // The lock moves with its document, and only one of the two holds it.
    OvDrawingLock moved(std::move(second));
    EXPECT_TRUE(moved.isHeld());
    EXPECT_FALSE(second.isHeld());
}

} // namespace
