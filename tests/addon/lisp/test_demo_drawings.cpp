// The demo project's drawings: what the wire type module finds in them, agreement with the
// demo database, and that the committed files are what the generator writes.
#include "AddonTest.h"

#include "zeldefun/ZelQvxBlockRef.h"
#include "zeloledb/ZelOleDbCommand.h"
#include "zeloledb/ZelOleDbConnection.h"

#include <QProcess>

namespace {

// Readers of the open drawing, in the host's LISP.
const char* const kReaders = R"(
(define (demo-layers)
  (let loop ((l (tblnext "LAYER" T)) (names '()))
    (if l (loop (tblnext "LAYER") (cons (cdr (assoc 2 l)) names)) (reverse names))))
(define (demo-data xrecord) (if (pair? xrecord) (cdr (member (assoc 100 xrecord) xrecord)) nil))
(define (demo-record name)
  (let ((xd (orvex-xdictionary (tblobjname "LAYER" name))))
    (demo-data (and xd (dictsearch xd "ZEL_WIRETYPE")))))
(define (demo-look name)
  (let ((l (tblsearch "LAYER" name)))
    (list (cdr (assoc 62 l)) (strcase (cdr (assoc 6 l))) (cdr (assoc 370 l)))))
(define (demo-lines name)
  (let loop ((e (entnext)) (n 0))
    (if e (loop (entnext e) (if (equal (list (cdr (assoc 0 (entget e))) (cdr (assoc 8 (entget e))))
                                       (list "LINE" name)) (1+ n) n))
          n)))
(define (demo-current)
  (let ((zel (dictsearch (namedobjdict) "ZEL_WIRETYPE")))
    (demo-data (and zel (dictsearch (cdr (assoc -1 zel)) "CURRENT_WIRELAY")))))
)";

class DemoDrawings : public AddonTest {
protected:
    void SetUp() override {
        AddonTest::SetUp();
        startHost();
    }
    // A copy of a demo drawing, open as the current document with the readers defined.
    QString open(const QString& name) {
        const QString file = copyDemo(name);
        EXPECT_EQ(ovDocManagerPtr()->openDocument(file), Orvex::eOk);
        lisp(kReaders);
        return file;
    }
    QString lisp(const QString& expression) {
        const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(expression);
        EXPECT_TRUE(result.ok) << expression.toStdString() << ": " << result.error.toStdString();
        return result.value;
    }
    QStringList layers() {
        const QString names = lisp("(demo-layers)");
        return names.mid(2, names.size() - 4).split("\" \"");
    }
    static QString wirelaysOf(const QString& file) {
        ZelQvxBlockRef wdm;
        QString value = QStringLiteral("(no WD_M)");
        if (wdm.open(file, 32, false) && wdm.find("WD_M", 0, 0))
            wdm.getAttributeTextString("WIRELAYS", value, true);
        return value;
    }
};

TEST_F(DemoDrawings, TheDemoHasEachKindOfLayerWithLinesAndTheTemplateNoWireTypes) {
    const QString wirelays = wirelaysOf(open("demo.dwg"));
    EXPECT_EQ(layers(), QStringList({"0", "TITLE", "DIM", "BK_1.5", "BU_0.75", "GNYE_2.5", "RD_1.5",
                                     "BK_2.5"}));
    for (const QString& name : layers()) {
        const bool wire = name != "0" && name != "TITLE" && name != "DIM";
        bool listed = false;
        for (const QString& pattern : wirelays.split(u','))
            listed = listed || ovutWcMatch(wide(name).c_str(), wide(pattern).c_str()) == RTNORM;
        EXPECT_EQ(listed, wire) << name.toStdString();
        // BK_2.5 is a wire layer by WIRELAYS alone, without a record.
        EXPECT_EQ(lisp("(demo-record \"" + name + "\")") != "nil", wire && name != "BK_2.5")
            << name.toStdString();
        EXPECT_NE(lisp("(demo-lines \"" + name + "\")"), "0") << name.toStdString();
    }
    EXPECT_EQ(lisp("(demo-current)"),
              R"(((1 . "BK_1.5") (1 . "BU_0.75") (1 . "%C_%S") (290 . 0)))");

    EXPECT_EQ(wirelaysOf(open("template.dwt")), QString()) << "an empty WD_M block";
    EXPECT_EQ(lisp("(demo-current)"), "nil");
    EXPECT_EQ(lisp("(length (filter pair? (map demo-record (demo-layers))))"), "0");
}

// Every wire type record of the drawing has its row in the demo database with the same
// values, the layer's look included, and no row lacks its record.
TEST_F(DemoDrawings, AgreeWithTheDemoDatabase) {
    ZelOleDbConnection connection;
    ASSERT_EQ(connection.OpenFromInitializationString(connectString(demo("demo.db"))), 0);
    const auto query = [&connection](ZelOleDbCommand& command, const QString& sql) {
        command.SetConnection(&connection);
        command.SetCommandText(sql);
        EXPECT_EQ(command.Execute(), 0) << command.GetErrorInfo().toStdString();
    };
    for (const auto& [file, drawing] : {std::pair{"demo.dwg", 1}, {"import.dwg", 2}}) {
        const QString path = open(file);
        ZelOleDbCommand rows;
        query(rows, QStringLiteral("SELECT LAYNAME, WIRECOLOR, WIRESIZE, GRIDROW, FLAG, LAYCOLOR, "
                                   "LINETYPE, LINEWEIGHT FROM WIRETYPE WHERE DWGIX = %1")
                        .arg(drawing));
        int count = 0;
        for (; rows.FetchNext() == 1; ++count) {
            const QString name = rows.FieldAsString(1);
            QMap<long, QString> user;
            ZelOleDbCommand values;
            query(values, QStringLiteral("SELECT [USER], [VALUE] FROM WIRETYPE_USR WHERE "
                                         "DWGIX = %1 AND LAYNAME = '%2'")
                              .arg(drawing)
                              .arg(name));
            while (values.FetchNext() == 1)
                user.insert(values.FieldAsLong(1), values.FieldAsString(2));
            QString expected = QStringLiteral("((1 . \"%1\") (2 . \"%2\") (3 . \"WIRE\")")
                                   .arg(rows.FieldAsString(2), rows.FieldAsString(3));
            for (long i = 1; i <= 20; ++i)
                expected += QStringLiteral(" (4 . \"%1\")").arg(user.value(i));
            expected += QStringLiteral(" (90 . %1) (290 . %2))")
                            .arg(rows.FieldAsString(4), rows.FieldAsString(5));
            EXPECT_EQ(lisp("(demo-record \"" + name + "\")"), expected) << file;
            EXPECT_EQ(
                lisp("(demo-look \"" + name + "\")"),
                QStringLiteral("(%1 \"%2\" %3)")
                    .arg(rows.FieldAsString(6), rows.FieldAsString(7), rows.FieldAsString(8)));
        }
        EXPECT_GT(count, 3) << file;
        EXPECT_EQ(lisp("(length (filter pair? (map demo-record (demo-layers))))"),
                  QString::number(count));

        ZelOleDbCommand wirelays;
        query(wirelays, QStringLiteral("SELECT ATTR_VAL FROM WD_M WHERE DWGIX = %1 AND "
                                       "ATTR_NAME = 'WIRELAYS'")
                            .arg(drawing));
        ASSERT_EQ(wirelays.FetchNext(), 1);
        EXPECT_EQ(wirelays.FieldAsString(1), wirelaysOf(path));
    }
}

TEST_F(DemoDrawings, TheCommittedFilesAreWhatTheGeneratorWrites) {
    QProcess generator;
    const QString bin = QFileInfo(QFile::symLinkTarget("/proc/self/exe")).absolutePath();
    generator.start(bin + "/zel-demo-drawings", {m_temp.path()});
    ASSERT_TRUE(generator.waitForFinished(60000));
    ASSERT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();
    for (const char* name : {"demo.dwg", "import.dwg", "template.dwt"}) {
        QFile made(path(name));
        QFile committed(QStringLiteral(ZEL_SOURCE_DIR "/samples/demo/drawings/") + name);
        ASSERT_TRUE(made.open(QIODevice::ReadOnly) && committed.open(QIODevice::ReadOnly));
        EXPECT_TRUE(made.readAll() == committed.readAll())
            << name << " differs: run zel-demo-drawings samples/demo/drawings";
    }
}

} // namespace
