// The bridge between modules and LISP: who owns a definition, how a handler's status and
// exceptions reach LISP, and ovedInvoke in both directions.
#include "OvcoreTest.h"

#include "ovcore/OvRxAppMsgCode.h"

#include <QTemporaryDir>

#include <stdexcept>

namespace lisp = ovcore::lisp;

namespace {

// A module's entry point with no registered handlers: message 5 for each of its functions.
int s_entryMessage = -1;
int s_entryFunCode = -1;
int entryPoint(int message, void*) {
    s_entryMessage = message;
    s_entryFunCode = ovedGetFunCode();
    ovedRetStr(L"from the entry point");
    return OvRx::kRetOK;
}

// Documents and modules of the bridge's own, outside the document manager.
class LispBridge : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        lisp::setCurrentDocument(&document);
    }
    void TearDown() override {
        lisp::forgetModule(&otherModule);
        lisp::forgetDocument(&document);
        lisp::forgetDocument(&otherDocument);
        lisp::setCurrentDocument(nullptr);
        OvcoreTest::TearDown();
    }
    // Calls through ovedInvoke as a module does; releases the call chain and gives the
    // result in LISP notation ("error" for a failed call).
    QString invoke(resbuf* call) {
        resbuf* result = nullptr;
        const int status = ovedInvoke(call, &result);
        ovutRelRb(call);
        const QString value = status == RTNORM ? lisp::toLispNotation(result) : "error";
        EXPECT_TRUE(status == RTNORM || !result);
        ovutRelRb(result);
        return value;
    }
    int occurrences(const QString& text) const { return output().count(text); }

    int document = 0;
    int otherDocument = 0;
    int otherModule = 0;
};

TEST_F(LispBridge, DefinitionsBelongToTheirDocumentAndNumber) {
    define(L"zel_here", 1, [] { return ovedRetStr(L"here") == RTNORM ? 1 : 3; });
    eval("(setq only-here 1)");
    EXPECT_EQ(eval("(zel_here)"), "\"here\"");

    lisp::setCurrentDocument(&otherDocument);
    EXPECT_TRUE(evalFailing("(zel_here)").error.contains("zel_here"));
    evalFailing("only-here");
    // Names are exact: no case folding, and a leading blank makes another name.
    lisp::setCurrentDocument(&document);
    evalFailing("(ZEL_HERE)");
    evalFailing("(| zel_here|)");

    // A closed document's definitions go; a document opened later starts afresh even at the
    // same address.
    lisp::forgetDocument(&document);
    lisp::setCurrentDocument(&document);
    evalFailing("(zel_here)");
    evalFailing("only-here");

    // ovedUndef takes a definition away only with the number it was defined with.
    define(L"zel_gone", 4, [] { return 1; });
    EXPECT_EQ(ovedUndef(L"zel_gone", 5), RTERROR);
    EXPECT_EQ(eval("(zel_gone)"), "nil");
    EXPECT_EQ(ovedUndef(L"zel_gone", 4), RTNORM);
    evalFailing("(zel_gone)");
    EXPECT_EQ(ovedUndef(L"zel_gone", 4), RTERROR);
    EXPECT_EQ(ovedDefun(L"", 1), RTERROR);
}

// A handler's status or exception ends the evaluation with one error and leaves no call open.
TEST_F(LispBridge, StatusAndExceptionsOfAHandler) {
    int throws = 0;
    define(L"zel_one", 1, [] { return 1; });
    define(L"zel_norm", 2, [] { return ovedRetT() == RTNORM ? RTNORM : 3; });
    define(L"zel_fails", 3, [] {
        ovedRetStr(L"ignored");
        return 3;
    });
    define(L"zel_rterror", 4, [] { return RTERROR; });
    define(L"zel_odd", 5, [] { return 42; });
    define(L"zel_throws", 6, [&throws]() -> int {
        ++throws;
        ovedRetStr(L"partial");
        throw std::runtime_error("bad index");
    });
    QStringList called;
    auto restore = lisp::setCallObserver([&called](const QString& name) { called << name; });

    EXPECT_EQ(eval("(zel_one)"), "nil");
    EXPECT_EQ(eval("(zel_norm)"), "T");
    const lisp::EvalResult failed =
        evalFailing("(progn (princ \"before\") (zel_fails) (princ \"after\"))");
    EXPECT_TRUE(failed.error.contains("zel_fails")) << failed.error.toStdString();
    EXPECT_TRUE(output().contains("before"));
    EXPECT_FALSE(output().contains("after")) << "the error ends the evaluation";
    EXPECT_EQ(occurrences("; error: "), 1) << output().toStdString();
    EXPECT_TRUE(evalFailing("(zel_rterror)").error.contains("zel_rterror"));
    EXPECT_TRUE(evalFailing("(zel_odd)").error.contains("42"));
    EXPECT_TRUE(evalFailing("(zel_throws)").error.contains("zel_throws"));
    EXPECT_EQ(throws, 1);
    EXPECT_TRUE(output().contains("bad index")) << output().toStdString();
    EXPECT_EQ(occurrences("; error: "), 1) << output().toStdString();
    EXPECT_EQ(ovedGetFunCode(), RTERROR) << "no call is left open";
    EXPECT_EQ(ovedGetArgs(), nullptr);
    EXPECT_EQ(ovedRetStr(L"x"), RTERROR);
    // A LISP error can be caught like any Scheme exception.
    EXPECT_EQ(eval("(catch #t (lambda () (zel_fails)) (lambda (key . args) key))"), "lisp-error");

    // The observer hears every call of a module's function, whatever its outcome.
    restore();
    eval("(zel_one)");
    EXPECT_EQ(called, QStringList({"zel_one", "zel_norm", "zel_fails", "zel_rterror", "zel_odd",
                                   "zel_throws", "zel_fails"}));
}

TEST_F(LispBridge, ATextHoldingANulNeverReachesAHandler) {
    static int s_calls = 0;
    s_calls = 0;
    define(L"zel_take", 1, [] {
        ++s_calls;
        return ovedRetT() == RTNORM ? RTNORM : 3;
    });
    eval("(setq nul (string (integer->char 0)))");
    // Anywhere in the arguments: a text, a symbol, a group of drawing data in a list.
    const struct {
        const char* call;
        const char* argument;
    } cases[] = {
        {"(zel_take (string-append \"BU_0.75\" nul \"junk\"))", "argument 1"},
        {"(zel_take \"A\" (string->symbol (string-append \"B\" nul)))", "argument 2"},
        {"(zel_take 1 2 (list (cons 1 (string-append nul \"x\"))))", "argument 3"},
        {"(zel_take (list \"a\" (list (string-append \"b\" nul))))", "argument 1"},
    };
    for (const auto& c : cases) {
        const lisp::EvalResult failed = evalFailing(c.call);
        EXPECT_TRUE(failed.error.startsWith("zel_take: bad argument: "))
            << failed.error.toStdString();
        EXPECT_TRUE(failed.error.contains(c.argument)) << failed.error.toStdString();
        EXPECT_TRUE(failed.error.contains("NUL")) << failed.error.toStdString();
    }
    EXPECT_EQ(s_calls, 0);
    EXPECT_EQ(eval("(zel_take \"BU_0.75\")"), "T");
    EXPECT_EQ(s_calls, 1);
}

TEST_F(LispBridge, HandlersBelongToTheirModuleOrGoToItsEntryPoint) {
    define(L"zel_owned", 1, [] { return ovedRetT() == RTNORM ? 1 : 3; });
    EXPECT_EQ(eval("(zel_owned)"), "T");
    lisp::forgetModule(&m_module);
    const lisp::EvalResult failed = evalFailing("(zel_owned)");
    EXPECT_TRUE(failed.error.contains("zel_owned"));
    EXPECT_TRUE(failed.error.contains("no longer loaded")) << failed.error.toStdString();

    // Loaded again at the same address, the module registers anew; the old definition does
    // not come back to life by itself.
    lisp::setActiveModule(&m_module, nullptr);
    ASSERT_EQ(ovedRegFunc([] { return ovedRetT() == RTNORM ? 1 : 3; }, 1), RTNORM);
    evalFailing("(zel_owned)");
    ASSERT_EQ(ovedDefun(L"zel_owned", 1), RTNORM);
    EXPECT_EQ(eval("(zel_owned)"), "T");

    lisp::setActiveModule(&otherModule, nullptr);
    ASSERT_EQ(ovedDefun(L"other_fn", 1), RTNORM);
    // The other module has no handler for its number 1, nor an entry point.
    EXPECT_TRUE(evalFailing("(other_fn)").error.contains("no handler"));
    EXPECT_EQ(eval("(zel_owned)"), "T");
    // A handler taken back leaves its function with none.
    lisp::setActiveModule(&m_module, nullptr);
    ASSERT_EQ(ovedRegFunc(nullptr, 1), RTNORM);
    EXPECT_TRUE(evalFailing("(zel_owned)").error.contains("no handler"));

    lisp::setActiveModule(&otherModule, entryPoint);
    ASSERT_EQ(ovedDefun(L"via_entry", 9), RTNORM);
    lisp::setActiveModule(nullptr, nullptr);
    EXPECT_EQ(eval("(via_entry 1)"), "\"from the entry point\"");
    EXPECT_EQ(s_entryMessage, OvRx::kInvkSubrMsg);
    EXPECT_EQ(s_entryFunCode, 9);

    // The module is active while its handler runs: what the handler defines is its module's,
    // not the caller's.
    define(L"zel_definer", 2, [] {
        ovedDefun(L"zel_defined_later", 3);
        return 1;
    });
    define(L"zel_target", 3, [] { return ovedRetStr(L"owned by the module") == RTNORM ? 1 : 3; });
    lisp::setActiveModule(&otherModule, nullptr);
    eval("(zel_definer)");
    EXPECT_EQ(eval("(zel_defined_later)"), "\"owned by the module\"");
}

TEST_F(LispBridge, InvokeCallsExportedFunctionsAndNestedCallsKeepTheirOwn) {
    define(L"zel_inner", 2,
           [] { return ovedRetInt(ovedGetArgs()->resval.rint * 10) == RTNORM ? 1 : 3; });
    define(L"zel_outer", 1, [] {
        resbuf* call = ovutBuildList(RTSTR, L"scheme_middle", RTSHORT, 4, 0);
        resbuf* inner = nullptr;
        const int status = ovedInvoke(call, &inner);
        ovutRelRb(call);
        // Our own arguments and function code are still ours.
        const resbuf* mine = ovedGetArgs();
        const bool intact = ovedGetFunCode() == 1 && mine && mine->restype == RTSTR &&
                            std::wstring(mine->resval.rstring) == L"outer";
        resbuf* result = ovutBuildList(intact ? RTT : RTNIL, 0);
        if (status == RTNORM && inner)
            result = ovutBuildList(RTRESBUF, result, RTRESBUF, inner, 0);
        ovedRetList(result);
        ovutRelRb(result);
        return 1;
    });
    eval("(defun scheme_middle (n) (+ 1 (zel_inner n))) (vl-orvex-defun 'scheme_middle)");
    EXPECT_EQ(eval("(zel_outer \"outer\")"), "(T 41)");

    // The way a module makes an add-on function callable at drawing load.
    eval("(defun wd_join (a b) (list (strcat a \"+\" b) (length (list a b))))");
    EXPECT_EQ(invoke(ovutBuildList(RTSTR, L"veval-str+", RTSTR, L"(vl-orvex-defun 'wd_join)", 0)),
              "\"wd_join\"");
    EXPECT_EQ(invoke(ovutBuildList(RTSTR, L"wd_join", RTSTR, L"é", RTSTR, L"\"q\"", 0)),
              "(\"é+\\\"q\\\"\" 2)");
    // A nil result is a null chain.
    eval("(defun wd_nothing () nil) (vl-orvex-defun 'wd_nothing)");
    resbuf* result = reinterpret_cast<resbuf*>(&result);
    resbuf* call = ovutBuildList(RTSTR, L"wd_nothing", 0);
    EXPECT_EQ(ovedInvoke(call, &result), RTNORM);
    EXPECT_EQ(result, nullptr);
    ovutRelRb(call);

    // Module functions count their argument links: "a" and (1 2) are five.
    define(L"zel_count", 1, [] {
        int n = 0;
        for (const resbuf* a = ovedGetArgs(); a; a = a->rbnext)
            ++n;
        return ovedRetInt(n) == RTNORM ? 1 : 3;
    });
    EXPECT_EQ(invoke(ovutBuildList(RTSTR, L"zel_count", RTSTR, L"a", RTLB, RTSHORT, 1, RTSHORT, 2,
                                   RTLE, 0)),
              "5");

    // What was not exported fails, and so does a LISP error inside.
    EXPECT_EQ(invoke(ovutBuildList(RTSTR, L"wd_never_defined", 0)), "error");
    EXPECT_TRUE(output().contains("; error: "));
    // Exported in this document only; defined but not exported in the other.
    eval("(defun wd_private () 1) (vl-orvex-defun 'wd_private)");
    lisp::setCurrentDocument(&otherDocument);
    eval("(defun wd_private () 2)");
    EXPECT_EQ(invoke(ovutBuildList(RTSTR, L"wd_private", 0)), "error");
    lisp::setCurrentDocument(&document);
    EXPECT_EQ(invoke(ovutBuildList(RTSTR, L"wd_private", 0)), "1");

    eval("(defun wd_broken (x) (car 5)) (vl-orvex-defun 'wd_broken)");
    clearOutput();
    EXPECT_EQ(invoke(ovutBuildList(RTSTR, L"wd_broken", RTSHORT, 1, 0)), "error");
    EXPECT_TRUE(output().contains("; error: car: bad argument type: 5")) << output().toStdString();
    // Too many arguments, and a chain that does not start with a name.
    EXPECT_EQ(invoke(ovutBuildList(RTSTR, L"wd_broken", RTSHORT, 1, RTSHORT, 2, 0)), "error");
    EXPECT_EQ(invoke(ovutBuildList(RTSHORT, 1, 0)), "error");
    EXPECT_EQ(invoke(nullptr), "error");
}

TEST_F(LispBridge, LoadFileEvaluatesUtf8InTheCurrentDocument) {
    QTemporaryDir dir;
    const lisp::EvalResult loaded = lisp::loadFile(
        writeFile(dir.filePath("setup.lsp"), "; comment\n(setq greeting \"Grüße\")\n(defun greet "
                                             "() (strcat greeting \"!\"))\n(greet)\n"));
    ASSERT_TRUE(loaded.ok) << loaded.error.toStdString();
    EXPECT_EQ(loaded.value, "\"Grüße!\"");
    EXPECT_EQ(eval("(strlen (greet))"), "6");

    clearOutput();
    const lisp::EvalResult missing = lisp::loadFile(dir.filePath("none.lsp"));
    EXPECT_FALSE(missing.ok);
    EXPECT_TRUE(missing.error.contains("none.lsp"));
    EXPECT_TRUE(output().contains("; error: "));

    const lisp::EvalResult cut =
        lisp::loadFile(writeFile(dir.filePath("broken.lsp"), "(setq a 1)\n(setq b (list 1 2)\n"));
    EXPECT_FALSE(cut.ok);
    EXPECT_TRUE(cut.error.contains("broken.lsp")) << cut.error.toStdString();
    EXPECT_EQ(eval("a"), "1") << "forms before the error stand";
}

TEST_F(LispBridge, AFunctionThatLeavesAnObjectOpenIsReported) {
    OvDbDatabase database;
    OvDbObject* layerTable = nullptr;
    define(L"zel_leaks", 1, [&] {
        ovdbOpenObject(layerTable, database.layerTableId(), OvDb::kForRead);
        return 1;
    });
    lisp::evalString("(zel_leaks)");
    EXPECT_EQ(ovcore::openObjectViolations(), 1);
    m_expectedViolations = 1;
    EXPECT_TRUE(output().contains("left open by LISP function zel_leaks"))
        << output().toStdString();
    ASSERT_NE(layerTable, nullptr);
    layerTable->close();
}

} // namespace
