// The dialect's common functions that scripts bring along: each group with ordinary
// arguments, the edge values the dialect defines and wrong arguments; selection sets over a
// drawing of a few hundred entities; commands of a module with their arguments answered.
#include "OvcoreTest.h"

#include "ovcore/OvEdInput.h"
#include "ovcore/OvRxDynamicLinker.h"
#include "ovcore/OvRxSystemRegistry.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace lisp = ovcore::lisp;

namespace {

class LispLibrary : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        ASSERT_TRUE(m_folder.isValid());
        // The settings store goes to the test's own folder.
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_folder.path());
        newDocument();
        clearOutput();
    }
    void TearDown() override {
        QDir::setCurrent(m_previousFolder);
        OvcoreTest::TearDown();
    }

    QTemporaryDir m_folder;
    QString m_previousFolder = QDir::currentPath();
};

TEST_F(LispLibrary, NumbersAreThirtyTwoBitIntegersOrReals) {
    expectValues({
        {"(+ 2147483647 1)", "-2147483648"},
        {"(* 65536 65536)", "0"},
        {"(+ 2147483647 1.0)", "2.14748e+09"},
        {"(/ -7 2)", "-3"},
        {"(/ 7 2.0)", "3.5"},
        {"(/ 5)", "5"},
        {"(rem -7 2)", "-1"},
        {"(rem 7.5 2)", "1.5"},
        {"(lsh 1 31)", "-2147483648"},
        {"(lsh -1 -28)", "15"},
        {"(lsh 1 32)", "0"},
        {"(boole 6 12 10)", "6"},
        {"(boole 7 12 10)", "14"},
        {"(fix -2.7)", "-2"},
        {"(fix 3e9)", "3.0e+09"},
        {"(max 1 2.0)", "2.0"},
        {"(expt 2 10)", "1024"},
        {"(expt 2 -1)", "0"},
        {"(expt 2.0 -1)", "0.5"},
        {"(abs -2147483648)", "-2147483648"},
        {"(< 1 2 3)", "T"},
        {"(< 1 3 2)", "nil"},
        {"(>= \"b\" \"a\")", "T"},
    });
    expectErrors({
        {"(/ 1 0)", "divide by zero"},
        {"(rem 5 0)", "divide by zero"},
        {"(+ 1 \"2\")", "+: bad argument type"},
        {"(boole 16 1 1)", "boole"},
        {"(sqrt -1)", "sqrt"},
        {"(log 0)", "log"},
        {"(< 1 \"a\")", "<"},
    });
}

TEST_F(LispLibrary, TextsCodesWildcardsAndUnitModes) {
    expectValues({
        {"(ascii \"Ü\")", "220"},
        {"(chr 8364)", "\"€\""},
        {"(wcmatch \"RED_2.5\" \"RED*,BLU*\")", "T"},
        {"(snvalid \"\")", "nil"},
        {"(snvalid \"X|Y\")", "nil"},
        {"(snvalid \"X|Y\" 1)", "T"},
        {"(snvalid \"|Y\" 1)", "nil"},
        {"(rtos 15.5)", "\"15.5000\""},
        {"(rtos 15.5 1 3)", "\"1.550E+01\""},
        {"(rtos 0.000125 1 2)", "\"1.25E-04\""},
        {"(rtos 9.99 1 1)", "\"1.0E+01\""},
        {"(rtos 15.5 2 0)", "\"16\""},
        {"(rtos -1.25 2 1)", "\"-1.3\""},
        {"(rtos 15.5 3 2)", "\"1'-3.50\\\"\""},
        {"(rtos 15.5 4 2)", "\"1'-3 1/2\\\"\""},
        {"(rtos 24 4 2)", "\"2'\""},
        {"(rtos 0.75 4 3)", "\"3/4\\\"\""},
        {"(rtos 15.5 5 2)", "\"15 1/2\""},
        {"(rtos 2 2 8)", "\"2.00000000\""},
        {"(distof \"1'-3 1/2\\\"\" 4)", "15.5"},
        {"(distof \"15 1/2\" 5)", "15.5"},
        {"(distof \"-2.5e1\")", "-25.0"},
        {"(distof \"\")", "nil"},
        {"(distof \"1/0\" 5)", "nil"},
        {"(angtos (/ pi 4))", "\"45\""},
        {"(angtos (- (/ pi 2)) 0 0)", "\"270\""},
        {"(angtos 0.5 1 4)", "\"28d38'52\\\"\""},
        {"(angtos pi 2 1)", "\"200.0g\""},
        {"(angtos 1 3 3)", "\"1.000r\""},
        {"(angtos (/ pi 4) 4 2)", "\"N 45d0' E\""},
        {"(angtos (* pi 1.25) 4 0)", "\"S 45d W\""},
        {"(angtof \"90\")", "1.5708"},
        {"(angtof \"45d30'\" 1)", "0.794125"},
        {"(angtof \"200g\" 2)", "3.14159"},
        {"(angtof \"N 45d E\" 4)", "0.785398"},
        {"(angtof \"W\" 4)", "3.14159"},
        {"(angtof \"north\" 4)", "nil"},
        {"(read \"\")", "nil"},
    });
    expectErrors({
        {"(chr -1)", "chr"},
        {"(rtos 1.0 2 9)", "rtos"},
        {"(rtos 1.0 6 2)", "rtos"},
        {"(rtos 1.0 0)", "rtos"},
        {"(angtos 1 5)", "angtos"},
        {"(angtos 1 0 -2)", "angtos"},
        {"(distof \"1\" 7)", "distof"},
    });
}

TEST_F(LispLibrary, ListsAndSymbolsAreSafeOnCircularLists) {
    expectValues({
        {"(subst 'x 'a '(a (b a) c a))", "(x (b x) c x)"},
        {"(subst \"new\" \"old\" '(\"old\" 1))", "(\"new\" 1)"},
        {"(subst '(q) 1 '(1 . 1))", "((q) q)"},
        {"(cadddr '(1 2 3 4))", "4"},
        {"(cadddr '(1 2))", "nil"},
        {"(boundp 'never-set)", "nil"},
        {"(progn (setq bset nil) (boundp 'bset))", "nil"},
        {"(progn (set 'bset 5) (boundp 'bset))", "T"},
        {"bset", "5"},
        {"(apply '+ '(1 2 3))", "6"},
        {"(apply 'list nil)", "nil"},
        {"(member 2 '(1 2 3))", "(2 3)"},
        {"(assoc 2 '((1 . a) (2 . b)))", "(2 . b)"},
        // A list that is shared, not circular, is fine.
        {"(progn (setq shared '(a b)) (subst 'z 'a (list shared shared)))", "((z b) (z b))"},
    });
    // A list whose end points back to its start: every walker refuses it, none loops.
    eval(QStringLiteral("(setq ring (list 1 2 3))"));
    eval(QStringLiteral("(set-cdr! (cddr ring) ring)"));
    eval(QStringLiteral("(setq inner (list 1 2))"));
    eval(QStringLiteral("(set-car! inner inner)"));
    expectErrors({
        {"(last ring)", "last"},
        {"(subst 0 1 ring)", "subst"},
        {"(subst 0 1 inner)", "subst"},
        {"(length ring)", "length"},
        {"(mapcar '1+ ring)", "mapcar"},
        {"(apply '+ ring)", "apply"},
        {"(foreach x ring x)", "foreach"},
        {"(set nil 1)", "set"},
    });
    // The circular list itself is still there and usable, and compares without looping.
    eval(QStringLiteral("(setq twin (list 1 2 3) other (list 1 2 4))"));
    eval(QStringLiteral("(set-cdr! (cddr twin) twin)"));
    eval(QStringLiteral("(set-cdr! (cddr other) other)"));
    expectValues({{"(nth 4 ring)", "2"},
                  {"(equal ring twin)", "T"},
                  {"(equal ring other)", "nil"},
                  {"(/= ring other)", "T"}});
}

TEST_F(LispLibrary, Geometry) {
    expectValues({
        {"(polar '(0 0 5) (/ pi 2) 2)", "(1.22465e-16 2.0 5.0)"},
        {"(distance '(0 0) '(3 4))", "5.0"},
        {"(distance '(0 0) '(3 4 12))", "5.0"},
        {"(angle '(0 0) '(0 -1))", "4.71239"},
        {"(angle '(1 1) '(1 1))", "0.0"},
        {"(inters '(0 0) '(10 10) '(0 10) '(10 0))", "(5.0 5.0)"},
        {"(inters '(0 0 0) '(10 10 10) '(0 10 0) '(10 0 10))", "(5.0 5.0 5.0)"},
        {"(inters '(0 0 0) '(10 0 0) '(0 5 1) '(10 -5 1))", "nil"},
        {"(inters '(0 0) '(1 1) '(0 5) '(1 6))", "nil"},
        {"(inters '(0 0) '(1 1) '(10 0) '(0 10))", "nil"},
        {"(inters '(0 0) '(1 1) '(10 0) '(0 10) nil)", "(5.0 5.0)"},
    });
    expectErrors({{"(polar '(0) 0 1)", "polar"}});
}

TEST_F(LispLibrary, SelectionSetsOfAFewHundredEntitiesAndOfPicks) {
    // 200 lines on RED_1 (every fourth in colour 3), 100 on BLUE_2 in colour 5, running
    // from x 0 to x i; and 20 inserts of block B on RED_1.
    eval(QStringLiteral(
        "(progn"
        " (entmake '((0 . \"LAYER\") (2 . \"RED_1\") (62 . 1)))"
        " (entmake '((0 . \"LAYER\") (2 . \"BLUE_2\") (62 . 5)))"
        " (setq i 0)"
        " (repeat 200 (entmake (list '(0 . \"LINE\") '(8 . \"RED_1\")"
        "   (cons 62 (if (= (rem i 4) 0) 3 256)) '(10 0 0 0) (list 11 (float i) 1.0 0.0)))"
        "   (setq i (1+ i)))"
        " (repeat 100 (entmake (list '(0 . \"LINE\") '(8 . \"BLUE_2\") '(62 . 5) '(10 0 0 0)"
        "   (list 11 (float i) 2.0 0.0))) (setq i (1+ i)))"
        " (repeat 20 (entmake '((0 . \"INSERT\") (2 . \"B\") (8 . \"RED_1\") (10 1 1 0))))"
        " T)"));
    expectValues({
        {"(sslength (ssget \"X\"))", "320"},
        {"(sslength (ssget \"_X\" '((0 . \"LINE\"))))", "300"},
        {"(sslength (ssget \"X\" '((8 . \"red*\"))))", "220"},
        {"(sslength (ssget \"X\" '((0 . \"LINE\") (62 . 256))))", "150"},
        {"(sslength (ssget \"X\" '((-4 . \"<OR\") (62 . 3) (62 . 5) (-4 . \"OR>\"))))", "150"},
        {"(sslength (ssget \"X\" '((-4 . \"<NOT\") (0 . \"LINE\") (-4 . \"NOT>\"))))", "20"},
        {"(sslength (ssget \"X\" '((-4 . \"<XOR\") (8 . \"RED_1\") (0 . \"INSERT\") (-4 . "
         "\"XOR>\"))))",
         "200"},
        {"(sslength (ssget \"X\" '((-4 . \"<AND\") (8 . \"RED_1\") (-4 . \"<NOT\") (62 . 3) (-4 . "
         "\"NOT>\") (-4 . \"AND>\"))))",
         "170"},
        {"(sslength (ssget \"X\" '((-4 . \">,*,*\") (11 249.5 0.0 0.0))))", "50"},
        {"(sslength (ssget \"X\" '((-4 . \"<\") (62 . 4))))", "50"},
        {"(sslength (ssget \"X\" '((-4 . \"&\") (62 . 1))))", "150"},
        {"(sslength (ssget \"X\" '((-4 . \"!=\") (8 . \"RED_1\"))))", "100"},
        {"(sslength (ssget \"X\" '((-4 . \"*\") (11 0.0 0.0 0.0))))", "300"},
        // Eleven lines and the twenty inserts at (1 1).
        {"(sslength (ssget \"W\" '(-1 -1) '(10.5 1.5)))", "31"},
        // Every BLUE_2 line passes y 1.5 between x 150 and 225; no end lies in the window.
        {"(sslength (ssget \"C\" '(100 1.4) '(250 1.6)))", "100"},
        {"(ssget \"W\" '(100 1.4) '(250 1.6))", "nil"},
        // "P" is the last set that ssget made; "L" the last entity.
        {"(sslength (ssget \"X\" '((62 . 3))))", "50"},
        {"(sslength (ssget \"P\"))", "50"},
        {"(sslength (ssget \"P\" '((-4 . \">,>,*\") (11 100.0 -1.0 0.0))))", "24"},
        {"(eq (ssname (ssget \"L\") 0) (entlast))", "T"},
    });
    // A filter that does not parse says why and selects nothing.
    expectRefused({
        {"(ssget \"X\" '((-4 . \"<OR\") (8 . \"A\")))",
         "; ssget: the filter lacks its (-4 . \"OR>\")"},
        {"(ssget \"X\" '((-4 . \"OR>\")))", "closes nothing"},
        {"(ssget \"X\" '((-4 . \"<NOT\") (8 . \"A\") (8 . \"B\") (-4 . \"NOT>\")))",
         "<NOT takes one test"},
        {"(ssget \"X\" '((-4 . \"~\") (8 . \"A\")))", "is not a comparison"},
        {"(ssget \"X\" '((-4 . \"=\")))", "no group after"},
        {"(ssget \"Q\")", "not a selection mode"},
        {"(ssget \"W\" '(0 0))", "two corner points"},
        {"(ssget \"X\" 5)", "not a filter list"},
    });
    // Sets built by hand, of the first two lines and the last insert.
    eval(QStringLiteral("(setq a (entnext) b (entnext a) c (entlast))"));
    expectValues({
        {"(setq s (ssadd a))", "<Selection set: 1>"},
        {"(sslength (ssadd b s))", "2"},
        {"(sslength (ssadd b s))", "2"},
        {"(eq (ssname s 1) b)", "T"},
        {"(ssname s 2)", "nil"},
        {"(eq (ssmemb a s) a)", "T"},
        {"(ssmemb c s)", "nil"},
        {"(ssdel c s)", "nil"},
        {"(sslength (ssdel a s))", "1"},
        {"(eq (ssname s 0) b)", "T"},
    });
    // Picks come from the batch queue: the selection ends when it is used up, a name that
    // is picked twice counts once, and ":S" takes one pick.
    eval(QStringLiteral("(orvex-queue-pick a) (orvex-queue-pick c) (orvex-queue-pick a)"));
    expectValues({{"(sslength (ssget))", "2"}, {"(ssget)", "nil"}});
    eval(QStringLiteral("(orvex-queue-pick b) (orvex-queue-pick c)"));
    expectValues({{"(eq (ssname (ssget \":S\") 0) b)", "T"}, {"(sslength (ssget))", "1"}});
}

TEST_F(LispLibrary, EntmodEntupdEntdelHandentRegapp) {
    eval(QStringLiteral("(entmake '((0 . \"LAYER\") (2 . \"RED_1\") (62 . 1)))"));
    eval(QStringLiteral("(entmake '((0 . \"LINE\") (8 . \"RED_1\") (10 0 0 0) (11 1 0 0)))"));
    eval(QStringLiteral("(setq line (entlast) lay (tblobjname \"LAYER\" \"RED_1\"))"));
    expectValues({
        // Only the groups given change; the rest stays.
        {"(progn (entmod (list (cons -1 line) '(10 5 5 0) '(62 . 2))) (cdr (assoc 10 (entget "
         "line))))",
         "(5.0 5.0 0.0)"},
        {"(cdr (assoc 11 (entget line)))", "(1.0 0.0 0.0)"},
        {"(cdr (assoc 62 (entget line)))", "2"},
        // A layer the drawing lacks is made, as entmake makes it.
        {"(progn (entmod (list (cons -1 line) '(8 . \"NEW\"))) (cdr (assoc 8 (entget line))))",
         "\"NEW\""},
        {"(progn (entmod (subst '(62 . -4) '(62 . 1) (entget lay))) (cdr (assoc 62 (tblsearch "
         "\"LAYER\" \"RED_1\"))))",
         "-4"},
        {"(progn (entmod (list (cons -1 lay) '(2 . \"RED_9\") '(370 . 50))) (cdr (assoc 370 "
         "(tblsearch \"LAYER\" \"RED_9\"))))",
         "50"},
        {"(eq (entupd line) line)", "T"},
        {"(eq (handent (cdr (assoc 5 (entget line)))) line)", "T"},
        {"(handent \"FFFFFF\")", "nil"},
        {"(regapp \"ZEL_APP\")", "\"ZEL_APP\""},
        {"(regapp \"zel_app\")", "nil"},
    });
    // Refused as entmake refuses; the entity is left as it was.
    expectRefused({
        {"(entmod (list (cons -1 line) '(62 . 300)))", "not an index colour"},
        {"(entmod (list (cons -1 lay) '(62 . 0)))", "from 1 to 255"},
        {"(entmod (list (cons -1 lay) '(6 . \"NOPE\")))", "no linetype"},
        {"(entmod (list (cons -1 lay) '(370 . 7)))", "lineweight"},
        {"(entmod (list (cons -1 lay) '(2 . \"A*B\")))", "not a valid name"},
        {"(entmod (list (cons -1 (tblobjname \"LAYER\" \"0\")) '(70 . 1)))",
         "current layer cannot be frozen"},
        {"(entmod (list (cons -1 line) '(0 . \"INSERT\")))", "is a LINE, not a INSERT"},
        {"(entmod '((8 . \"X\")))", "(-1 . name)"},
    });
    expectValues({{"(cdr (assoc 62 (entget line)))", "2"}});
    // A line on a locked layer stays as it is.
    eval(QStringLiteral("(entmod (list (cons -1 (tblobjname \"LAYER\" \"NEW\")) '(70 . 4)))"));
    expectRefused(QStringLiteral("(entmod (list (cons -1 line) '(62 . 1)))"),
                  QStringLiteral("locked layer"));
    expectRefused({
        {"(progn (entdel line) (entmod (list (cons -1 line) '(62 . 3))))", "is erased"},
        {"(entupd line)", "; entupd:"},
        {"(handent \"XYZ\")", "not a handle"},
        {"(regapp \"A B<\")", "not a valid application"},
    });
}

TEST_F(LispLibrary, CommandRunsAModuleCommandWithItsArgumentsAnsweredInOrder) {
    auto* linker = OvRxDynamicLinker::cast(ovrxSysRegistry()->at(L"DynamicLinker"));
    ASSERT_TRUE(linker->loadModule(modulePath(QStringLiteral("ovcore_testmodule.ovm"))));
    // A call of command answers nil; what the command line printed meanwhile.
    const auto run = [this](const char* call) {
        QString value;
        const QString out = printed(QString::fromUtf8(call), &value);
        EXPECT_EQ(value, "nil") << call;
        return out.toStdString();
    };
    using ::testing::HasSubstr;
    EXPECT_THAT(run("(command \"TmHello\")"), HasSubstr("[testmodule] hello in"));

    // Arguments answer the command's requests in order, before anything queued already.
    eval(QStringLiteral("(orvex-queue-input \"queued\")"));
    EXPECT_THAT(run("(command \"_TmAsk\" \"one\" 2)"),
                HasSubstr("[testmodule] asked: one|2 (answered)"));
    // Points and reals go as typed; what the command did not ask for is taken back.
    const std::string extra = run("(command \"TmAsk\" '(1 2.5) 0.5 \"extra\")");
    EXPECT_THAT(extra, HasSubstr("asked: 1.0,2.5|0.5 (answered)"));
    EXPECT_THAT(extra, HasSubstr("1 argument(s) were not asked for"));
    expectValues({{"(getstring)", "\"queued\""}});

    // Too few arguments: the command asks the user for the rest, here the desktop's command
    // line, while its arguments still answer first.
    RecordingProvider commandLine;
    OvEdInputProvider* batch = ovedSetInputProvider(&commandLine);
    EXPECT_THAT(run("(command \"TmAsk\" \"only\")"), HasSubstr("asked: only|typed (answered)"));
    EXPECT_EQ(commandLine.calls, QStringList{QStringLiteral("string \nSecond: ")});
    ovedSetInputProvider(batch);
    // In a batch run with nothing queued, the request beyond the arguments is cancelled.
    EXPECT_THAT(run("(command \"TmAsk\" \"only\")"), HasSubstr("asked: only| (cancelled)"));

    expectValues({{"(command)", "nil"}});
    expectErrors({
        {"(command \"NoSuchCommand\" 1)", "command: unknown command \"NoSuchCommand\""},
        {"(command \"\")", "command"},
        {"(command \"TmThrow\")", "command: TmThrow failed"},
    });
    linker->unloadModule(QStringLiteral("ovcore_testmodule.ovm"));
}

TEST_F(LispLibrary, InputFunctionsReadTheQueueWithInitget) {
    auto answer = [this](std::initializer_list<const char*> lines) {
        for (const char* line : lines)
            eval(QStringLiteral("(orvex-queue-input \"%1\")")
                     .arg(QString::fromUtf8(line).replace(u'"', QStringLiteral("\\\""))));
    };
    answer({"two words", "two words", ""});
    expectValues({{"(getstring)", "\"two\""},
                  {"(getstring T \"Name: \")", "\"two words\""},
                  {"(getstring)", "\"\""}});
    // A wrong answer is asked again; Enter gives nil.
    answer({"abc", "99999", "42", ""});
    expectValues({{"(getint \"Count: \")", "42"}, {"(getint)", "nil"}});
    EXPECT_TRUE(output().contains(QLatin1String("Requires an integer between")));
    answer({"0", "-1", "", "2.5"});
    expectValues({{"(progn (initget 7) (getreal))", "2.5"}});
    answer({"2,3", "@1,1", "x"});
    expectValues(
        {{"(getpoint)", "(2.0 3.0 0.0)"}, {"(getpoint '(1 1 1) \"To: \")", "(2.0 2.0 1.0)"}});
    EXPECT_FALSE(evalFailing(QStringLiteral("(getpoint)")).ok);
    answer({"1'-6\"", "3,4"});
    expectValues({{"(getdist)", "18.0"}, {"(getdist '(0 0))", "5.0"}});
    answer({"90", "0,1"});
    expectValues({{"(getangle)", "1.5708"}, {"(getangle '(0 0))", "1.5708"}});
    // Keywords: the capitals are the shortest form; the global name comes back.
    answer({"maybe", "n", "LT", "nein", "last", "Q"});
    expectValues({{"(progn (initget \"Yes No\") (getkword \"Go? \"))", "\"No\""}});
    expectValues({{"(progn (initget 0 \"LType Lweight\") (getkword))", "\"LType\""}});
    expectValues({{"(progn (initget \"Ja Nein _Yes No\") (getkword))", "\"No\""}});
    // initget holds for one request only; getint takes a keyword instead of a number.
    expectValues({{"(progn (initget \"Last\") (getint))", "\"Last\""}});
    expectValues({{"(progn (initget 128) (getint))", "\"Q\""}});
    EXPECT_TRUE(
        evalFailing(QStringLiteral("(getkword)")).error.contains(QLatin1String("getkword")));
    // An empty queue cancels, which ends the script with an error.
    EXPECT_TRUE(
        evalFailing(QStringLiteral("(getstring)")).error.contains(QLatin1String("cancelled")));
}

TEST_F(LispLibrary, FilesSettingsAndVersion) {
    const QString folder = m_folder.path();
    writeFile(folder + QStringLiteral("/support/wires.txt"), "one\r\ntwo\n");
    ASSERT_TRUE(QDir(folder).mkpath(QStringLiteral("work")));
    QDir::setCurrent(folder + QStringLiteral("/work"));
    eval(QStringLiteral("(setq path \"%1/work/out.txt\")").arg(folder));

    expectValues({
        {"(findfile \"wires.txt\")", "nil"},
        {"(findfile \"\")", "nil"},
        {"(wcmatch (ver) \"Orvex LISP #*\")", "T"},
    });
    {
        QSettings store(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Orvex"),
                        QStringLiteral("R26"));
        store.setValue(QStringLiteral("Support/Folders"), folder + QStringLiteral("/support"));
    }
    EXPECT_EQ(eval(QStringLiteral("(findfile \"wires.txt\")")),
              QStringLiteral("\"%1/support/wires.txt\"").arg(folder));
    expectValues({
        {"(setq f (open path \"w\"))",
         QStringLiteral("#<file \"%1/work/out.txt\">").arg(folder).toUtf8().constData()},
        {"(write-line \"Größe\" f)", "\"Größe\""},
        {"(write-char 65 f)", "65"},
        {"(close f)", "nil"},
        {"(close f)", "nil"},
        {"(progn (setq f (open path \"a\")) (write-line \"z\" f) (close f))", "nil"},
        {"(findfile \"out.txt\")",
         QStringLiteral("\"%1/work/out.txt\"").arg(folder).toUtf8().constData()},
        {"(setq f (open path \"r\"))",
         QStringLiteral("#<file \"%1/work/out.txt\">").arg(folder).toUtf8().constData()},
        {"(read-line f)", "\"Größe\""},
        {"(read-char f)", "65"},
        {"(read-char f)", "122"},
        {"(read-char f)", "10"},
        {"(read-line f)", "nil"},
        {"(read-char f)", "nil"},
        {"(close f)", "nil"},
        {"(progn (setq f (open (findfile \"wires.txt\") \"r\")) (list (read-line f) (read-line "
         "f)))",
         "(\"one\" \"two\")"},
        {"(open \"missing.txt\" \"r\")", "nil"},
        {"(getcfg \"AppData/Zel/Unset\")", "nil"},
        {"(setcfg \"AppData/Zel/Last\" \"RED_1\")", "\"RED_1\""},
        {"(getcfg \"AppData/Zel/Last\")", "\"RED_1\""},
        {"(setcfg \"AppData/Zel/Last\" \"\")", "\"\""},
        {"(getcfg \"AppData/Zel/Last\")", "\"\""},
        // The settings store lives in the test folder too.
        {"(vl-directory-files \"..\" \"*\" 1)", "(\"Orvex\" \"support\" \"work\")"},
        {"(vl-directory-files \"../support\" \"*.TXT\" -1)", "(\"wires.txt\")"},
        {"(vl-directory-files \"../support\" \"*.dwg\")", "nil"},
        {"(vl-directory-files \"/no/such/folder\")", "nil"},
    });
    expectErrors({
        {"(open path \"rw\")", "open"},
        {"(progn (close f) (read-line f))", "read-line: the file"},
        {"(progn (setq g (open path \"r\")) (write-line \"x\" g))", "not open for writing"},
        {"(progn (setq g (open path \"w\")) (read-char g))", "not open for reading"},
        {"(write-char -1)", "write-char"},
        {"(getcfg \"Zel/Last\")", "getcfg"},
    });
    eval(QStringLiteral("(close g)"));
    // The value went to the settings store, where the next session finds it.
    QSettings store(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Orvex"),
                    QStringLiteral("R26"));
    EXPECT_TRUE(store.contains(QStringLiteral("AppData/Zel/Last")));
    // Typed input read as lines and characters.
    eval(QStringLiteral("(orvex-queue-input \"ab\")"));
    expectValues({{"(list (read-char) (read-line))", "(97 \"b\")"}});
}

// Every function the dialect's scripts were missing is bound now: those the tests above do
// not call, and every combination of car and cdr to four levels.
TEST_F(LispLibrary, EveryFunctionIsBound) {
    QStringList names = {"1-", "min", "exp", "sin", "cos", ">", "<="};
    for (int depth = 2; depth <= 4; ++depth) {
        for (int bits = 0; bits < (1 << depth); ++bits) {
            QString path;
            for (int k = 0; k < depth; ++k)
                path += (bits & (1 << k)) ? u'd' : u'a';
            names << QStringLiteral("c%1r").arg(path);
        }
    }
    for (const QString& name : names) {
        const lisp::EvalResult result =
            lisp::evalString(QStringLiteral("(procedure? %1)").arg(name));
        EXPECT_TRUE(result.ok && result.value == u"T")
            << name.toStdString() << ": " << result.error.toStdString();
    }
    // No name carries another program's prefix: what is new is the dialect's or the host's.
    const lisp::EvalResult exported = lisp::evalString(QStringLiteral(
        "(let ((found '())) (module-for-each (lambda (name var) (if (string-prefix? \"vlax\" "
        "(symbol->string name)) (setq found (cons name found)))) (module-public-interface "
        "(resolve-module '(orvex host)))) found)"));
    EXPECT_TRUE(exported.ok) << exported.error.toStdString();
    EXPECT_EQ(exported.value, QStringLiteral("nil"));
}

} // namespace
