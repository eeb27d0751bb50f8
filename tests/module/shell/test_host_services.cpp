#include "shell/ZelHostServices.h"

#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"
#include "support/ZelTestProject.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/oved.h"
#include "ovdb/ovdb.h"
#include "zeloledb/ZelOleDbCommand.h"
#include "zeloledb/ZelOleDbConnection.h"
#include "zeloledb/ZelOleDbConnectionCache.h"
#include "zelpm/ZelMDIGblManager.h"

#include <QDir>

namespace {

// The add-on's LISP functions as the services expect them, recording each call in `calls`
// (newest first) and answering what `answer` holds.
const QString kAddOnStandIns = QStringLiteral(R"(
(define calls '())
(define answer '())
(define (record! name args) (set! calls (cons (cons name args) calls)) answer)
(define (wd_cfg_read_dwg_params) (record! "read" '()))
(define (c:wd_reread_dwg_params) (record! "reread" '()))
(define (lock-status files mode extra) (record! "lock" (list files mode extra)))
(define (c:zel_upd_unlock_dwgs files mode) (record! "unlock" (list files mode)))
(define (zel_get_var name) (record! "var" (list name)))
(define (failing) (error "broken on purpose"))
(vl-orvex-defun 'wd_cfg_read_dwg_params)
(vl-orvex-defun 'c:wd_reread_dwg_params)
(vl-orvex-defun 'c:zel_upd_unlock_dwgs)
(vl-orvex-defun 'zel_get_var)
)");

class HostServicesTest : public ZelTestHost {
protected:
    void defineAddOnStandIns() {
        evalLisp(kAddOnStandIns);
        // The lock check's name starts with a blank, and is exported as it stands.
        evalLisp(QStringLiteral("(module-define! (current-module) (string->symbol \" "
                                "wdupda_chkdwglockstatus\") lock-status)"
                                "(vl-orvex-defun \" wdupda_chkdwglockstatus\")"));
    }
    void setAnswer(const QString& lisp) { evalLisp(QStringLiteral("(set! answer %1)").arg(lisp)); }
    QString calls() { return evalLisp(QStringLiteral("calls")).value; }
};

TEST_F(HostServicesTest, WithoutAnActiveDocumentTheLispServicesCallNothing) {
    // The stand-ins live in the host's default context, where a call would reach them.
    defineAddOnStandIns();
    ASSERT_EQ(ovDocManagerPtr()->mdiActiveDocument(), nullptr);
    setAnswer(QStringLiteral("\"x\""));

    EXPECT_FALSE(RereadDwgParams());
    EXPECT_FALSE(IsDrawingLocked(QStringLiteral("/p/a.dwg")));
    EXPECT_FALSE(UnlockDrawing(QStringLiteral("/p/a.dwg")));
    QString text = QStringLiteral("kept");
    EXPECT_FALSE(GetLispString(QStringLiteral("answer"), text));
    EXPECT_TRUE(text.isEmpty());
    EXPECT_FALSE(DefineLispSymbol(QStringLiteral("failing")));
    EXPECT_EQ(calls(), QStringLiteral("nil"));
    // The user folder, always true, is then the add-on's global value: the per-user folder
    // under the redirected data folder, and a value that is no string leaves the text alone.
    QString folder = QStringLiteral("kept");
    EXPECT_TRUE(GetUserFolder(folder));
    EXPECT_EQ(folder, QDir(tempPath(QStringLiteral("data"))).filePath(QStringLiteral("Zel/User/")));
    resbuf* number = ovutBuildList(RTSHORT, 7, 0);
    ASSERT_TRUE(GblPm_SetGblValue(L"GBL_wd_usr", number));
    ovutRelRb(number);
    folder = QStringLiteral("kept");
    EXPECT_TRUE(GetUserFolder(folder));
    EXPECT_EQ(folder, QStringLiteral("kept"));
    GblPm_SetGblValue(L"GBL_wd_usr", nullptr);

    // Called directly the stand-in answers: only the gate kept the services from it.
    resbuf* read = ovutBuildList(RTSTR, L"wd_cfg_read_dwg_params", 0);
    resbuf* result = nullptr;
    EXPECT_EQ(ovedInvoke(read, &result), RTNORM);
    ovutRelRb(read);
    ovutRelRb(result);
    EXPECT_EQ(calls(), QStringLiteral("((\"read\"))"));
}

TEST_F(HostServicesTest, WithADocumentTheCallsReachTheAddOnAndTakeOnlyTheRightKindOfValue) {
    ASSERT_NE(newDocument(), nullptr);
    // Not defined yet: the call fails.
    EXPECT_FALSE(ReadDwgParams());
    EXPECT_FALSE(UnlockDrawing(QStringLiteral("/p/a.dwg")));
    QString folder = QStringLiteral("kept");
    EXPECT_TRUE(GetUserFolder(folder)) << "the call fails, the service does not";
    EXPECT_EQ(folder, QStringLiteral("kept"));

    defineAddOnStandIns();
    EXPECT_TRUE(ReadDwgParams());
    EXPECT_TRUE(RereadDwgParams());
    EXPECT_TRUE(UnlockDrawing(QStringLiteral("/p/a b.dwg"))) << output().toStdString();
    EXPECT_EQ(calls(), QStringLiteral("((\"unlock\" (\"/p/a b.dwg\") 1) (\"reread\") (\"read\"))"));

    // The lock check is true only for a list that starts with a string. The chain as sent:
    // the list of one path, the short 2 and nil.
    evalLisp(QStringLiteral("(set! calls '())"));
    const QString drawing = QStringLiteral("/p/wiring 1.dwg");
    setAnswer(QStringLiteral("'(\"ann\" \"desk-7\" 4242)"));
    EXPECT_TRUE(IsDrawingLocked(drawing));
    EXPECT_EQ(calls(), QStringLiteral("((\"lock\" (\"/p/wiring 1.dwg\") 2 nil))"));
    for (const QString& notLocked : {QStringLiteral("'()"), QStringLiteral("\"ann\""),
                                     QStringLiteral("'(42 \"ann\")"), QStringLiteral("42")}) {
        setAnswer(notLocked);
        EXPECT_FALSE(IsDrawingLocked(drawing)) << notLocked.toStdString();
    }

    evalLisp(QStringLiteral("(define GBL_wd_prj \"/p/demo.zpj\") (define count 3)"));
    QString text;
    EXPECT_TRUE(GetLispString(QStringLiteral("GBL_wd_prj"), text));
    EXPECT_EQ(text, QStringLiteral("/p/demo.zpj"));
    EXPECT_FALSE(GetLispString(QStringLiteral("count"), text));
    EXPECT_TRUE(text.isEmpty());
    // Making a function callable is the drawing load's case; a value that is no function is
    // refused.
    EXPECT_FALSE(DefineLispSymbol(QStringLiteral("count")));

    // With a document LISP answers the user folder, and only a string counts.
    evalLisp(QStringLiteral("(set! calls '())"));
    setAnswer(QStringLiteral("\"/home/ann/zel/\""));
    EXPECT_TRUE(GetUserFolder(folder));
    EXPECT_EQ(folder, QStringLiteral("/home/ann/zel/"));
    EXPECT_EQ(calls(), QStringLiteral("((\"var\" \"GBL_wd_usr\"))"));
    for (const QString& notText : {QStringLiteral("'()"), QStringLiteral("'(\"/x/\")")}) {
        setAnswer(notText);
        folder = QStringLiteral("kept");
        EXPECT_TRUE(GetUserFolder(folder));
        EXPECT_EQ(folder, QStringLiteral("kept")) << notText.toStdString();
    }

    // A LISP error inside is a failed call.
    evalLisp(QStringLiteral("(set! wd_cfg_read_dwg_params failing)"));
    EXPECT_FALSE(ReadDwgParams());
}

class ProjectQueryTest : public ZelTestHost {
protected:
    void openProjectWithDatabase(const QString& database) {
        const QString project = ZelTestProject::write(tempPath(QStringLiteral("project")),
                                                      QStringLiteral("test"), {}, database);
        ASSERT_TRUE(openProject(project));
    }
    static int cachedConnections() {
        return ZelOleDbConnectionCache::GetCacheManager()->GetCount();
    }
};

TEST_F(ProjectQueryTest, StatementRunsOnTheProjectDatabaseAndTheConnectionIsCached) {
    ZelOleDbCommand command;
    EXPECT_FALSE(ExecuteProjectQuery(QStringLiteral("SELECT 1"), command)) << "no project";
    openProjectWithDatabase(QString());
    EXPECT_FALSE(ExecuteProjectQuery(QStringLiteral("SELECT 1"), command)) << "no database";
    EXPECT_TRUE(output().isEmpty());
    // A database that cannot be opened is said, and nothing is cached.
    openProjectWithDatabase(tempPath(QStringLiteral("project/missing.db")));
    ZelOleDbConnection unused;
    ZelOleDbConnection* connection = &unused;
    EXPECT_FALSE(OpenProjectConnection(&connection));
    EXPECT_EQ(connection, nullptr);
    EXPECT_TRUE(output().contains(QStringLiteral("missing.db"))) << output().toStdString();
    EXPECT_EQ(cachedConnections(), 0);

    openProjectWithDatabase(ZelTestProject::demoDatabase());
    const QString sql = QStringLiteral(
        "SELECT [LAYNAME], [WIRECOLOR] FROM [WIRETYPE] WHERE [DWGIX] = 1 ORDER BY [GRIDROW]");
    ASSERT_TRUE(ExecuteProjectQuery(sql, command)) << output().toStdString();
    ASSERT_EQ(command.FetchNext(), ZelOleDbCommand::FetchRow);
    EXPECT_EQ(command.FieldAsString(1), QStringLiteral("BK_1.5"));
    EXPECT_EQ(command.FieldAsString(2), QStringLiteral("BK"));
    EXPECT_EQ(cachedConnections(), 1);

    // The next statement takes the cached connection instead of opening another.
    ZelOleDbConnection* cached = nullptr;
    ASSERT_TRUE(OpenProjectConnection(&cached));
    ZelOleDbConnection* again = nullptr;
    ASSERT_TRUE(OpenProjectConnection(&again));
    EXPECT_EQ(again, cached);
}

TEST_F(ProjectQueryTest, FailedStatementIsPrintedUpperCasedUnlessItMentionsDrop) {
    openProjectWithDatabase(ZelTestProject::demoDatabase());
    ZelOleDbCommand command;
    clearOutput();
    EXPECT_FALSE(ExecuteProjectQuery(
        QStringLiteral("SELECT * FROM [NoSuchTable] WHERE [Layname] LIKE 'w%s%d'"), command));
    // The statement, a line break and the error, upper-cased, and nothing else: the percent
    // signs stay text.
    const QString printed = output();
    EXPECT_TRUE(printed.startsWith(
        QStringLiteral("SELECT * FROM [NOSUCHTABLE] WHERE [LAYNAME] LIKE 'W%S%D'\n")))
        << printed.toStdString();
    EXPECT_EQ(
        printed,
        (command.GetErrorStatement() + QLatin1Char('\n') + command.GetErrorInfo(false)).toUpper());
    EXPECT_EQ(cachedConnections(), 0) << "a failed statement does not give the connection back";

    for (const QString& dropping :
         {QStringLiteral("select * from dropped_rows"), QStringLiteral("DROP TABLE [WIRETYPE]"),
          QStringLiteral("SELECT [x] FROM [WIRETYPE] -- DrOp")}) {
        clearOutput();
        EXPECT_FALSE(ExecuteProjectQuery(dropping, command));
        EXPECT_TRUE(output().isEmpty()) << dropping.toStdString() << ": " << output().toStdString();
    }
}

TEST_F(HostServicesTest, CloneCopiesARecordOfAnotherDrawingIntoTheTable) {
    ASSERT_NE(newDocument(), nullptr);
    OvDbDatabase* drawing = workingDatabase();
    OvDbDatabase source(true, true);
    const OvDbObjectId sourceId =
        ZelTestDrawing::addLayer(&source, QStringLiteral("FROM_OTHER"), 3);

    OvDbObjectId copy;
    ASSERT_TRUE(CloneObjectToOwner(copy, sourceId, &source, drawing->layerTableId()));
    EXPECT_EQ(copy, layerId(drawing, QStringLiteral("FROM_OTHER")));

    // A second clone of the same name maps to the record already there.
    OvDbObjectId second;
    ASSERT_TRUE(CloneObjectToOwner(second, sourceId, &source, drawing->layerTableId()));
    EXPECT_EQ(second, copy);
}

} // namespace
