// The command line of orvex and LISP in a batch run: values on lines of their own, errors
// that do not stop the run, and the exit status that sums it up.

#include "OrvexProcess.h"

namespace {

TEST(OrvexCommandLine, HelpSucceedsAndWrongCommandLinesExit2RunningNothing) {
    auto r = OrvexProcess().run({"--help"});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    for (const char* option :
         {"--project", "--no-module", "--script", "--save-as", "ORVEX_ADDON_DIR"})
        EXPECT_TRUE(r.out.contains(QLatin1String(option))) << option;

    const QList<QStringList> wrong = {
        {"--batch", "--frobnicate"},
        {"--batch", "--eval"},
        {"--batch", "--save", "--save-as", "x.dwg"},
        {"--batch", "--module", "m.ovm", "--no-module"},
        {"--batch", "--save=yes"},
        {}, // without --batch orvex is the desktop program, which refuses the batch options
    };
    for (const QStringList& arguments : wrong) {
        r = OrvexProcess().run(QStringList{"--eval", "(princ \"ran\")"} + arguments);
        EXPECT_EQ(r.exitCode, 2) << arguments.join(u' ').toStdString();
        EXPECT_TRUE(r.err.startsWith(QLatin1String("orvex: "))) << r.err.toStdString();
        EXPECT_TRUE(r.out.isEmpty()) << r.out.toStdString();
    }
    // The desktop program's refusal, the last, names the option the run lacks.
    EXPECT_TRUE(r.err.contains(QLatin1String("--batch"))) << r.err.toStdString();
}

TEST(OrvexEval, ValuesPrintInLispNotationEachOnALineOfItsOwn) {
    // Text without a final newline gets one before the value, text that ends its line gets
    // no blank line, and a value that prints as nothing gives no line.
    const auto r =
        OrvexProcess::batch(OrvexProcess::evals({"(+ 1 2)", "nil", "T", R"("say \"hi\" Größe")",
                                                 R"((list 1 "a" (list 2.5 nil) (cons 3 4)))",
                                                 R"((princ "abc"))", "(progn (princ \"def\n\") 5)",
                                                 "(princ)", "(progn (princ \"ghi\") (princ))"}) +
                            QStringList{"--eval=(* 6 7)"});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_EQ(r.out.toStdString(),
              "3\nnil\nT\n\"say \\\"hi\\\" Größe\"\n(1 \"a\" (2.5 nil) (3 . 4))\n"
              "abc\n\"abc\"\ndef\n5\nghi\n42\n");
}

// The host's own functions are loaded as the bytecode built with it, which keeps the names
// of their arguments; evaluated from source (ORVEX_LISP_SOURCE), they would not.
TEST(OrvexEval, TheHostsFunctionsAreLoadedCompiled) {
    const QStringList arguments =
        QStringList{"--batch", "--no-module"} +
        OrvexProcess::evals({"(cdr (assq 'rest ((@ (system vm program) program-arguments-alist) "
                             "/=)))"});
    EXPECT_EQ(OrvexProcess().run(arguments).out.toStdString(), "more\n");
    OrvexProcess fromSource;
    fromSource.setEnvironment(QStringLiteral("ORVEX_LISP_SOURCE"), QStringLiteral("1"));
    EXPECT_EQ(fromSource.run(arguments).out.toStdString(), "rest\n");
}

// A LISP error, in an expression or a script, is printed and the run goes on to exit 1.
TEST(OrvexEval, ExpressionsComeFirstThenScriptsAndErrorsDoNotStopTheRun) {
    QTemporaryDir folder;
    const QString first = OrvexProcess::writeFile(
        folder.filePath("first.lsp"), "(setq trail (append trail (list \"s1\")))\n(princ \"one\")");
    const QString second = OrvexProcess::writeFile(
        folder.filePath("second.lsp"),
        "(setq trail (append trail (list \"s2\")))\n(car 5)\n(princ \"after\")");
    const QString third = OrvexProcess::writeFile(folder.filePath("third.lsp"), "trail\n");
    auto r = OrvexProcess::batch({"--script", first, "--eval", "(+ 1", "--eval",
                                  "(setq trail (list \"e1\"))", "--script", second, "--script",
                                  third, "--script", folder.filePath("missing.lsp")});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_LT(r.out.indexOf(QLatin1String("; error: ")), r.out.indexOf(QLatin1String("(\"e1\")")));
    EXPECT_TRUE(r.out.contains(QLatin1String("\n(\"e1\")\none\n\"one\"\n"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QLatin1String("\n(\"e1\" \"s1\" \"s2\")\n"))) << r.out.toStdString();
    EXPECT_FALSE(r.out.contains(QLatin1String("after"))) << "the failing script stops at its error";
    EXPECT_EQ(r.out.count(QLatin1String("; error: ")), 3) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QLatin1String("missing.lsp"))) << r.out.toStdString();
}

} // namespace
