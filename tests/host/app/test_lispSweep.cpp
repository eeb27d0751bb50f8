// Every LISP function that the host binds, the add-on defines and the wire type module
// defines, called with wrong types, too few and too many arguments, nil, circular lists,
// very long texts, NUL characters, quotes, backslashes, percent signs, non-ASCII text and
// huge integers, in one orvex run on the demo project: the run lives to its end, every call
// answers or fails with a LISP error of a documented kind, and a function that changes
// nothing leaves the drawing as it was. The functions are found at run time, so that new
// ones join the sweep by themselves.

#include "OrvexProcess.h"

#include <QRegularExpression>
#include <QSet>

namespace {

// The arguments, as LISP text; each is tried alone, twice, and nine times over.
const char* const kValues[] = {
    "nil",
    "T",
    "0",
    "-1",
    "32767",
    "-2147483648",
    "9223372036854775807",
    "-170141183460469231731687303715884105728",
    "2.5",
    "+inf.0",
    "'zz_no_such_function",
    "\"\"",
    "\"BK_1.5\"",
    "\"\\\"quoted\\\"\"",
    "\"back\\\\slash\"",
    "\"%s%d%n%%\"",
    "\"Ünïcødé 電線\"",
    "(make-string 20000 #\\W)",
    "(string-append \"BK_1.5\" (string (integer->char 0)) \"junk\")",
    "'(1 2 3)",
    "'((0 . \"LAYER\") (2 . \"X\"))",
    "(let ((c (list \"BK_1.5\" 2))) (set-cdr! (cdr c) c) c)",
    "(entlast)",
};

// What the drawing functions and the module's functions do to a drawing; every other
// function is one that changes nothing in it.
const QSet<QString> kChangers = {"entmake",
                                 "entmakex",
                                 "entdel",
                                 "dictadd",
                                 "dictremove",
                                 "setvar",
                                 "veval-str+",
                                 "apply",
                                 "mapcar",
                                 "foreach",
                                 "zel_add_wiretype",
                                 "zel_edit_wiretype",
                                 "zel_set_current_wiretype",
                                 "zel_remove_wiretype",
                                 "zel_set_default_wiretype",
                                 "zel_get_current_wiretype",
                                 "zel_reset_current_wiretype",
                                 "zel_get_default_wiretype",
                                 "zel_get_active_dwg_wiretype",
                                 "zel_wire_type_sel",
                                 "zel_rename_wire_properties",
                                 "zel_invoke_importwt_dlg",
                                 "zel_get_wiretype_settings"};

// The drawing functions: bad input is said at the command line and answered with nil;
// only a wrong number of arguments raises an error.
const QSet<QString> kDrawingFunctions = {
    "entget",    "entmake",    "entmakex",   "entdel",       "entnext",    "entlast",
    "tblsearch", "tblnext",    "tblobjname", "namedobjdict", "dictsearch", "dictnext",
    "dictadd",   "dictremove", "getvar",     "setvar",       "layer-list", "orvex-xdictionary"};

QString sweepScript(int seconds) {
    QString values;
    for (const char* value : kValues)
        values += QStringLiteral("  (lambda () %1)\n").arg(QLatin1String(value));
    return QStringLiteral(R"scheme(
(define sweep-values (list
%1))
(define (sweep-functions)
  (let ((names '()))
    (for-each
      (lambda (module)
        (module-for-each
          (lambda (symbol variable)
            (when (and (variable-bound? variable) (procedure? (variable-ref variable))
                       (not (memq symbol names)))
              (set! names (cons symbol names))))
          module))
      (list (resolve-interface '(orvex host)) (current-module)))
    (sort names (lambda (a b) (string<? (symbol->string a) (symbol->string b))))))
(define (sweep-text value)
  (let ((text (vl-prin1-to-string value)))
    (if (> (string-length text) 60) (substring text 0 60) text)))
(define sweep-seconds %2)
;; A call that does not return in time is stopped and said, so that one hang does not hide
;; the rest.
(sigaction SIGALRM (lambda (signal) (throw 'sweep-timeout)))
(define (sweep-call name label arguments)
  (let* ((before (getvar "DBMOD"))
         (answer (catch #t
                   (lambda ()
                     (alarm sweep-seconds)
                     (let ((value (apply (variable-ref (module-variable (current-module) name))
                                         arguments)))
                       (alarm 0)
                       (cons 'ok value)))
                   (lambda (key . args)
                     (alarm 0)
                     (if (eq? key 'sweep-timeout)
                         (cons 'timeout "no answer in time")
                         (cons 'error ((@@ (orvex host) %error-message) key args))))))
         (after (getvar "DBMOD")))
    (princ (string-append "\n@@ " (symbol->string name) "\t" label "\t"
                                (symbol->string (car answer)) "\t"
                                (if (equal before after) "same" "changed") "\t"
                                (let ((text (if (eq? (car answer) 'ok) (sweep-text (cdr answer))
                                                (cdr answer))))
                                  (list->string (map (lambda (c) (if (char=? c #\newline) #\space c))
                                                     (string->list (if (> (string-length text) 200)
                                                                       (substring text 0 200) text)))))
                                "\n"))))
(entmake '((0 . "LINE") (8 . "BK_1.5") (10 0 0 0) (11 1 1 0)))
(for-each
  (lambda (name)
    (sweep-call name "none" '())
    (let loop ((values sweep-values) (i 0))
      (unless (null? values)
        (let ((value ((car values))))
          (sweep-call name (string-append "one " (number->string i)) (list value))
          (sweep-call name (string-append "two " (number->string i)) (list value value))
          (sweep-call name (string-append "nine " (number->string i)) (make-list 9 value)))
        (loop (cdr values) (+ i 1)))))
  (delete 'exit (delete 'quit (sweep-functions))))
(princ "\n@@ sweep done\n")
)scheme")
        .arg(values)
        .arg(seconds);
}

// Far more than any call needs, even in the sanitizer build.
constexpr int kSecondsPerCall = 5;

struct Call {
    QString function;
    QString label;
    QString outcome;
    bool ok = false;
    bool changed = false;
    QString answer;
};

// The sweep over the demo project and drawing; `fromSource` has the host evaluate its own
// Scheme source instead of loading the bytecode built from it.
OrvexProcess::Result runSweep(bool fromSource) {
    QTemporaryDir folder;
    for (const char* name : {"demo.zpj", "demo.db", "drawings/demo.dwg"}) {
        const QString file = folder.filePath(name);
        QDir().mkpath(QFileInfo(file).absolutePath());
        if (!QFile::copy(QStringLiteral(ZEL_DEMO_DIR "/") + name, file)) {
            ADD_FAILURE() << "no demo file " << name;
            return {};
        }
    }
    const QString script = OrvexProcess::writeFile(folder.filePath("sweep.lsp"),
                                                   sweepScript(kSecondsPerCall).toUtf8());
    OrvexProcess orvex;
    // The add-on as the program finds it beside itself.
    orvex.setAddonFolder(QFileInfo(QStringLiteral(ORVEX_PROGRAM)).absolutePath());
    if (fromSource)
        orvex.setEnvironment(QStringLiteral("ORVEX_LISP_SOURCE"), QStringLiteral("1"));
    return orvex.run({"--batch", "--project", folder.filePath("demo.zpj"),
                      folder.filePath("drawings/demo.dwg"), "--script", script});
}

TEST(LispSweep, EveryFunctionAnswersEveryArgumentAndTheRunLives) {
    const OrvexProcess::Result r = runSweep(false);
    ASSERT_TRUE(r.exitCode == 0 || r.exitCode == 1)
        << "the run did not live: " << r.exitCode << r.err.toStdString();
    ASSERT_TRUE(r.out.contains("@@ sweep done")) << r.out.right(3000).toStdString();
    EXPECT_FALSE(r.out.contains("internal error")) << r.out.toStdString();

    std::vector<Call> calls;
    QSet<QString> functions;
    for (const QString& line : OrvexProcess::linesOf(r.out, "@@ ")) {
        const QStringList fields = line.mid(3).split(u'\t');
        if (fields.size() < 5)
            continue;
        calls.push_back({fields[0], fields[1], fields[2], fields[2] == "ok", fields[3] == "changed",
                         fields.mid(4).join(u'\t')});
        functions.insert(fields[0]);
    }
    // Host, add-on and module alike; new functions join by themselves.
    for (const char* name : {"entget", "strcat", "zel_dwg_lock_info", "wd_cfg_read_dwg_params",
                             "zel_remove_wiretype", "zel_query_wiretype", "rtos", "last"})
        EXPECT_TRUE(functions.contains(name)) << name;
    const qsizetype perFunction = 1 + 3 * static_cast<qsizetype>(std::size(kValues));
    EXPECT_EQ(static_cast<qsizetype>(calls.size()), functions.size() * perFunction);

    const QRegularExpression bridgeError(
        "bad argument|the function reported an error|integer out of range");
    for (const Call& call : calls) {
        const std::string where =
            (call.function + " " + call.label + ": " + call.answer).toStdString();
        if (!kChangers.contains(call.function)) {
            EXPECT_FALSE(call.changed) << "changed the drawing: " << where;
        }
        EXPECT_NE(call.outcome, "timeout") << "no answer: " << where;
        if (call.ok || call.outcome == "timeout")
            continue;
        if (kDrawingFunctions.contains(call.function)) {
            EXPECT_TRUE(call.answer.contains("Wrong number of arguments")) << where;
        } else if (call.function.startsWith("zel_") && call.function != "zel_get_var") {
            // The module's and the add-on's C++ functions fail only through the bridge.
            EXPECT_TRUE(call.answer.contains(bridgeError)) << where;
        }
    }
    // A NUL never reaches a module's function: the bridge refuses it and says where.
    for (const Call& call : calls) {
        if (call.function == "zel_remove_wiretype" && call.label == "one 18") {
            EXPECT_TRUE(!call.ok && call.answer.contains("argument 1") &&
                        call.answer.contains("NUL"))
                << call.answer.toStdString();
        }
    }
}

// The bytecode loaded at start is the host's source compiled: every call of the sweep gives
// the same answer both ways, up to the run's folder, the addresses that printed objects
// carry, and the names of a procedure's arguments, which only compiled code keeps.
TEST(LispSweep, TheCompiledHostAnswersAsItsSourceDoes) {
    const auto answers = [](const OrvexProcess::Result& r) {
        QStringList lines = OrvexProcess::linesOf(r.out, "@@ ");
        lines.replaceInStrings(QRegularExpression("[0-9a-f]{8,}"), "#");
        lines.replaceInStrings(QRegularExpression("qt_temp-\\w+"), "folder");
        lines.replaceInStrings(QRegularExpression("#<procedure (\\S+) \\([^)]*\\)>"),
                               "#<procedure \\1>");
        lines.replaceInStrings(
            QRegularExpression("(eval: )?Wrong number of arguments( to #<procedure \\S+>)?"),
            "Wrong number of arguments");
        return lines;
    };
    const QStringList compiled = answers(runSweep(false));
    const QStringList source = answers(runSweep(true));
    ASSERT_TRUE(compiled.contains("@@ sweep done"));
    ASSERT_EQ(compiled.size(), source.size());
    for (qsizetype i = 0; i < compiled.size(); ++i)
        EXPECT_EQ(compiled[i].toStdString(), source[i].toStdString());
}

} // namespace
