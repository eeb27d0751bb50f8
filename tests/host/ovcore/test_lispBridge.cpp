// The bridge between modules and LISP: who owns a definition, how a handler's status and
// exceptions reach LISP, and ovedInvoke in both directions.
#include "ovcore/OvLisp.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovcore/OvRxAppMsgCode.h"
#include "ovcore/oved.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <functional>
#include <map>
#include <stdexcept>
#include <string>

namespace lisp = ovcore::lisp;

#if defined(__SANITIZE_ADDRESS__)
// Guile's collector keeps pointers to what libguile allocates in memory that LeakSanitizer
// does not scan, so every program that boots Guile runs without leak detection.
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
#endif

namespace {

std::map<int, std::function<int()>> s_handlers;

int callHandler() {
    return s_handlers.at(ovedGetFunCode())();
}

// A module's entry point with no registered handlers: message 5 for each of its functions.
int s_entryMessage = -1;
int s_entryFunCode = -1;
int entryPoint(int message, void*) {
    s_entryMessage = message;
    s_entryFunCode = ovedGetFunCode();
    ovedRetStr(L"from the entry point");
    return OvRx::kRetOK;
}

class LispBridge : public ::testing::Test {
protected:
    void SetUp() override {
        lisp::initialize();
        ovutSetOutputSink([this](std::string_view text) { output.append(text); });
        lisp::setCurrentDocument(&document);
        lisp::setActiveModule(&module, nullptr);
    }
    void TearDown() override {
        lisp::setActiveModule(nullptr, nullptr);
        lisp::forgetModule(&module);
        lisp::forgetModule(&otherModule);
        lisp::forgetDocument(&document);
        lisp::forgetDocument(&otherDocument);
        lisp::setCurrentDocument(nullptr);
        ovutResetOutputSink();
        s_handlers.clear();
    }
    void define(const wchar_t* name, int number, std::function<int()> body) {
        ASSERT_EQ(ovedDefun(name, number), RTNORM);
        ASSERT_EQ(ovedRegFunc(callHandler, number), RTNORM);
        s_handlers[number] = std::move(body);
    }
    QString eval(const QString& text) {
        const lisp::EvalResult result = lisp::evalString(text);
        EXPECT_TRUE(result.ok) << text.toStdString() << ": " << result.error.toStdString();
        return result.value;
    }
    lisp::EvalResult evalFailing(const QString& text) {
        output.clear();
        const lisp::EvalResult result = lisp::evalString(text);
        EXPECT_FALSE(result.ok) << text.toStdString() << " gave " << result.value.toStdString();
        return result;
    }
    int occurrences(const std::string& text) const {
        int count = 0;
        for (std::size_t at = output.find(text); at != std::string::npos;
             at = output.find(text, at + 1))
            ++count;
        return count;
    }

    int document = 0;
    int otherDocument = 0;
    int module = 0;
    int otherModule = 0;
    std::string output;
};

TEST_F(LispBridge, DefinitionsBelongToTheirDocument) {
    define(L"zel_here", 1, [] { return ovedRetStr(L"here") == RTNORM ? 1 : 3; });
    eval(QStringLiteral("(setq only-here 1)"));
    EXPECT_EQ(eval(QStringLiteral("(zel_here)")), QStringLiteral("\"here\""));

    lisp::setCurrentDocument(&otherDocument);
    EXPECT_TRUE(
        evalFailing(QStringLiteral("(zel_here)")).error.contains(QStringLiteral("zel_here")));
    evalFailing(QStringLiteral("only-here"));
    // Names are exact: no case folding, and a leading blank makes another name.
    lisp::setCurrentDocument(&document);
    evalFailing(QStringLiteral("(ZEL_HERE)"));
    evalFailing(QStringLiteral("(| zel_here|)"));

    // A closed document's definitions go; a document opened later starts afresh even at the
    // same address.
    lisp::forgetDocument(&document);
    lisp::setCurrentDocument(&document);
    evalFailing(QStringLiteral("(zel_here)"));
    evalFailing(QStringLiteral("only-here"));
}

TEST_F(LispBridge, UndefRemovesOnlyWithTheRightNumber) {
    define(L"zel_gone", 4, [] { return 1; });
    EXPECT_EQ(ovedUndef(L"zel_gone", 5), RTERROR);
    EXPECT_EQ(eval(QStringLiteral("(zel_gone)")), QStringLiteral("nil"));
    EXPECT_EQ(ovedUndef(L"zel_gone", 4), RTNORM);
    evalFailing(QStringLiteral("(zel_gone)"));
    EXPECT_EQ(ovedUndef(L"zel_gone", 4), RTERROR);
    EXPECT_EQ(ovedDefun(L"", 1), RTERROR);
    EXPECT_EQ(ovedDefun(nullptr, 1), RTERROR);
}

TEST_F(LispBridge, StatusOfAHandler) {
    define(L"zel_one", 1, [] { return 1; });
    define(L"zel_norm", 2, [] { return ovedRetT() == RTNORM ? RTNORM : 3; });
    define(L"zel_fails", 3, [] {
        ovedRetStr(L"ignored");
        return 3;
    });
    define(L"zel_rterror", 4, [] { return RTERROR; });
    define(L"zel_odd", 5, [] { return 42; });

    EXPECT_EQ(eval(QStringLiteral("(zel_one)")), QStringLiteral("nil"));
    EXPECT_EQ(eval(QStringLiteral("(zel_norm)")), QStringLiteral("T"));

    lisp::EvalResult failed =
        evalFailing(QStringLiteral("(progn (princ \"before\") (zel_fails) (princ \"after\"))"));
    EXPECT_TRUE(failed.error.contains(QStringLiteral("zel_fails"))) << failed.error.toStdString();
    EXPECT_NE(output.find("before"), std::string::npos);
    EXPECT_EQ(output.find("after"), std::string::npos) << "the error ends the evaluation";
    EXPECT_EQ(occurrences("; error: "), 1) << output;

    EXPECT_TRUE(
        evalFailing(QStringLiteral("(zel_rterror)")).error.contains(QStringLiteral("zel_rterror")));
    EXPECT_TRUE(evalFailing(QStringLiteral("(zel_odd)")).error.contains(QStringLiteral("42")));

    // A LISP error can be caught like any Scheme exception.
    EXPECT_EQ(eval(QStringLiteral("(catch #t (lambda () (zel_fails)) (lambda (key . args) key))")),
              QStringLiteral("lisp-error"));
}

TEST_F(LispBridge, AnExceptionInAHandlerIsReportedOnceAndTheSessionGoesOn) {
    int calls = 0;
    define(L"zel_throws", 1, [&calls]() -> int {
        ++calls;
        ovedRetStr(L"partial");
        throw std::runtime_error("bad index");
    });
    const lisp::EvalResult failed = evalFailing(QStringLiteral("(zel_throws)"));
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(failed.error.contains(QStringLiteral("zel_throws")));
    EXPECT_NE(output.find("bad index"), std::string::npos) << output;
    EXPECT_EQ(occurrences("; error: "), 1) << output;

    EXPECT_EQ(eval(QStringLiteral("(+ 1 2)")), QStringLiteral("3"));
    EXPECT_EQ(ovedGetFunCode(), RTERROR) << "no call is left open";
    EXPECT_EQ(ovedGetArgs(), nullptr);
    EXPECT_EQ(ovedRetStr(L"x"), RTERROR);
}

TEST_F(LispBridge, AFunctionOfAnUnloadedModuleIsAClearError) {
    define(L"zel_owned", 1, [] { return ovedRetT() == RTNORM ? 1 : 3; });
    EXPECT_EQ(eval(QStringLiteral("(zel_owned)")), QStringLiteral("T"));
    lisp::forgetModule(&module);
    const lisp::EvalResult failed = evalFailing(QStringLiteral("(zel_owned)"));
    EXPECT_TRUE(failed.error.contains(QStringLiteral("zel_owned")));
    EXPECT_TRUE(failed.error.contains(QStringLiteral("no longer loaded")))
        << failed.error.toStdString();

    // Loaded again at the same address, the module registers anew; the old definition does
    // not come back to life by itself.
    lisp::setActiveModule(&module, nullptr);
    ASSERT_EQ(ovedRegFunc(callHandler, 1), RTNORM);
    evalFailing(QStringLiteral("(zel_owned)"));
    ASSERT_EQ(ovedDefun(L"zel_owned", 1), RTNORM);
    EXPECT_EQ(eval(QStringLiteral("(zel_owned)")), QStringLiteral("T"));
}

TEST_F(LispBridge, HandlersBelongToTheirModule) {
    define(L"zel_mine", 1, [] { return ovedRetStr(L"mine") == RTNORM ? 1 : 3; });
    lisp::setActiveModule(&otherModule, nullptr);
    ASSERT_EQ(ovedDefun(L"other_fn", 1), RTNORM);
    // The other module has no handler for its number 1 (nor an entry point).
    EXPECT_TRUE(
        evalFailing(QStringLiteral("(other_fn)")).error.contains(QStringLiteral("no handler")));
    EXPECT_EQ(eval(QStringLiteral("(zel_mine)")), QStringLiteral("\"mine\""));
}

TEST_F(LispBridge, WithoutAHandlerTheEntryPointGetsMessage5) {
    lisp::setActiveModule(&otherModule, entryPoint);
    ASSERT_EQ(ovedDefun(L"via_entry", 9), RTNORM);
    lisp::setActiveModule(nullptr, nullptr);
    EXPECT_EQ(eval(QStringLiteral("(via_entry 1)")), QStringLiteral("\"from the entry point\""));
    EXPECT_EQ(s_entryMessage, OvRx::kInvkSubrMsg);
    EXPECT_EQ(s_entryFunCode, 9);
}

TEST_F(LispBridge, TheModuleIsActiveWhileItsHandlerRuns) {
    // A handler that defines a function: the definition is its module's, not the caller's.
    define(L"zel_definer", 1, [] {
        ovedDefun(L"zel_defined_later", 2);
        return 1;
    });
    define(L"zel_target", 2, [] { return ovedRetStr(L"owned by the module") == RTNORM ? 1 : 3; });
    lisp::setActiveModule(&otherModule, nullptr);
    eval(QStringLiteral("(zel_definer)"));
    EXPECT_EQ(eval(QStringLiteral("(zel_defined_later)")),
              QStringLiteral("\"owned by the module\""));
}

TEST_F(LispBridge, NestedCallsKeepTheirOwnArgumentsAndResults) {
    define(L"zel_inner", 2, [] {
        const resbuf* args = ovedGetArgs();
        return ovedRetInt(args->resval.rint * 10) == RTNORM ? 1 : 3;
    });
    define(L"zel_outer", 1, [] {
        resbuf* call = ovutBuildList(RTSTR, L"scheme_middle", RTSHORT, 4, 0);
        resbuf* inner = nullptr;
        const int status = ovedInvoke(call, &inner);
        ovutRelRb(call);
        // Our own arguments and function code are still ours.
        const resbuf* mine = ovedGetArgs();
        const bool intact = ovedGetFunCode() == 1 && mine && mine->restype == RTSTR &&
                            std::wstring(mine->resval.rstring) == L"outer";
        resbuf* result = ovutBuildList(RTT, 0);
        if (!intact)
            result->restype = RTNIL;
        if (status == RTNORM && inner)
            result = ovutBuildList(RTRESBUF, result, RTRESBUF, inner, 0);
        ovedRetList(result);
        ovutRelRb(result);
        return 1;
    });
    eval(QStringLiteral(
        "(defun scheme_middle (n) (+ 1 (zel_inner n))) (vl-orvex-defun 'scheme_middle)"));
    EXPECT_EQ(eval(QStringLiteral("(zel_outer \"outer\")")), QStringLiteral("(T 41)"));
}

TEST_F(LispBridge, InvokeCallsExportedSchemeFunctions) {
    // The way a module makes an add-on function callable at drawing load.
    eval(QStringLiteral("(defun wd_join (a b) (list (strcat a \"+\" b) (length (list a b))))"));
    resbuf* call = ovutBuildList(RTSTR, L"veval-str+", RTSTR, L"(vl-orvex-defun 'wd_join)", 0);
    resbuf* result = nullptr;
    ASSERT_EQ(ovedInvoke(call, &result), RTNORM);
    ovutRelRb(call);
    ovutRelRb(result);

    call = ovutBuildList(RTSTR, L"wd_join", RTSTR, L"é", RTSTR, L"\"q\"", 0);
    ASSERT_EQ(ovedInvoke(call, &result), RTNORM);
    ovutRelRb(call);
    EXPECT_EQ(lisp::toLispNotation(result), QStringLiteral("(\"é+\\\"q\\\"\" 2)"));
    ovutRelRb(result);

    // A nil result is a null chain.
    eval(QStringLiteral("(defun wd_nothing () nil) (vl-orvex-defun 'wd_nothing)"));
    call = ovutBuildList(RTSTR, L"wd_nothing", 0);
    result = reinterpret_cast<resbuf*>(&call);
    EXPECT_EQ(ovedInvoke(call, &result), RTNORM);
    EXPECT_EQ(result, nullptr);
    ovutRelRb(call);
}

TEST_F(LispBridge, InvokeRefusesWhatWasNotExported) {
    eval(QStringLiteral("(defun wd_private () 1)"));
    for (const wchar_t* name : {L"wd_private", L"wd_never_defined"}) {
        output.clear();
        resbuf* call = ovutBuildList(RTSTR, name, 0);
        resbuf* result = nullptr;
        EXPECT_EQ(ovedInvoke(call, &result), RTERROR);
        EXPECT_EQ(result, nullptr);
        EXPECT_NE(output.find("; error: "), std::string::npos);
        ovutRelRb(call);
    }
    // Exported in this document only.
    eval(QStringLiteral("(vl-orvex-defun 'wd_private)"));
    lisp::setCurrentDocument(&otherDocument);
    eval(QStringLiteral("(defun wd_private () 2)"));
    resbuf* call = ovutBuildList(RTSTR, L"wd_private", 0);
    resbuf* result = nullptr;
    EXPECT_EQ(ovedInvoke(call, &result), RTERROR);
    lisp::setCurrentDocument(&document);
    EXPECT_EQ(ovedInvoke(call, &result), RTNORM);
    EXPECT_EQ(lisp::toLispNotation(result), QStringLiteral("1"));
    ovutRelRb(result);
    ovutRelRb(call);
}

TEST_F(LispBridge, InvokeUsesTheNameExactlyAsGiven) {
    eval(QStringLiteral("(defun | wdupda_chkdwglockstatus| (paths flag nothing)"
                        "  (list (car paths) flag nothing))"
                        "(vl-orvex-defun '| wdupda_chkdwglockstatus|)"));
    resbuf* call = ovutBuildList(RTSTR, L" wdupda_chkdwglockstatus", RTLB, RTSTR, L"/p/a.dwg", RTLE,
                                 RTSHORT, 2, RTNIL, 0);
    resbuf* result = nullptr;
    ASSERT_EQ(ovedInvoke(call, &result), RTNORM);
    EXPECT_EQ(lisp::toLispNotation(result), QStringLiteral("(\"/p/a.dwg\" 2 nil)"));
    ovutRelRb(result);
    // Without the blank it is another, unknown name.
    call->resval.rstring[0] = L'x';
    EXPECT_EQ(ovedInvoke(call, &result), RTERROR);
    ovutRelRb(call);
}

TEST_F(LispBridge, InvokeReportsALispErrorInside) {
    eval(QStringLiteral("(defun wd_broken (x) (car 5)) (vl-orvex-defun 'wd_broken)"));
    resbuf* call = ovutBuildList(RTSTR, L"wd_broken", RTSHORT, 1, 0);
    resbuf* result = nullptr;
    output.clear();
    EXPECT_EQ(ovedInvoke(call, &result), RTERROR);
    EXPECT_EQ(result, nullptr);
    EXPECT_NE(output.find("; error: car: bad argument type: 5"), std::string::npos) << output;
    // Too many arguments is an error of the call too.
    ovutRelRb(call);
    call = ovutBuildList(RTSTR, L"wd_broken", RTSHORT, 1, RTSHORT, 2, 0);
    EXPECT_EQ(ovedInvoke(call, &result), RTERROR);
    ovutRelRb(call);
    // A chain that does not start with a name.
    call = ovutBuildList(RTSHORT, 1, 0);
    EXPECT_EQ(ovedInvoke(call, &result), RTERROR);
    EXPECT_EQ(ovedInvoke(nullptr, &result), RTERROR);
    ovutRelRb(call);
}

TEST_F(LispBridge, InvokeReachesModuleFunctionsAndVevalStr) {
    // Counts the links of its arguments: "a" and (1 2) are five.
    define(L"zel_count", 1, [] {
        int n = 0;
        for (const resbuf* a = ovedGetArgs(); a; a = a->rbnext)
            ++n;
        return ovedRetInt(n) == RTNORM ? 1 : 3;
    });
    resbuf* call =
        ovutBuildList(RTSTR, L"zel_count", RTSTR, L"a", RTLB, RTSHORT, 1, RTSHORT, 2, RTLE, 0);
    resbuf* result = nullptr;
    ASSERT_EQ(ovedInvoke(call, &result), RTNORM);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->restype, RTSHORT);
    EXPECT_EQ(result->resval.rint, 5);
    ovutRelRb(result);
    ovutRelRb(call);

    call = ovutBuildList(RTSTR, L"veval-str+", RTSTR, L"(setq x 20) (+ x 1)", 0);
    ASSERT_EQ(ovedInvoke(call, &result), RTNORM);
    EXPECT_EQ(lisp::toLispNotation(result), QStringLiteral("21"));
    ovutRelRb(result);
    ovutRelRb(call);
    EXPECT_EQ(eval(QStringLiteral("x")), QStringLiteral("20")) << "evaluated in the document";
}

TEST_F(LispBridge, ObserverSeesEveryModuleCall) {
    define(L"zel_ok", 1, [] { return 1; });
    define(L"zel_bad", 2, [] { return 3; });
    QStringList seen;
    auto restore = lisp::setCallObserver([&seen](const QString& name) { seen << name; });
    eval(QStringLiteral("(zel_ok) (car '(1)) (catch #t (lambda () (zel_bad)) (lambda _ nil))"));
    EXPECT_EQ(seen, (QStringList{QStringLiteral("zel_ok"), QStringLiteral("zel_bad")}));
    restore();
    eval(QStringLiteral("(zel_ok)"));
    EXPECT_EQ(seen.size(), 2);
}

TEST_F(LispBridge, LoadFileEvaluatesUtf8InTheCurrentDocument) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("setup.lsp"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("; comment\n(setq greeting \"Grüße\")\n(defun greet () (strcat greeting "
               "\"!\"))\n(greet)\n");
    file.close();
    const lisp::EvalResult loaded = lisp::loadFile(path);
    ASSERT_TRUE(loaded.ok) << loaded.error.toStdString();
    EXPECT_EQ(loaded.value, QStringLiteral("\"Grüße!\""));
    EXPECT_EQ(eval(QStringLiteral("(strlen (greet))")), QStringLiteral("6"));

    output.clear();
    const lisp::EvalResult missing = lisp::loadFile(dir.filePath(QStringLiteral("none.lsp")));
    EXPECT_FALSE(missing.ok);
    EXPECT_TRUE(missing.error.contains(QStringLiteral("none.lsp")));
    EXPECT_NE(output.find("; error: "), std::string::npos);

    QFile broken(dir.filePath(QStringLiteral("broken.lsp")));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("(setq a 1)\n(setq b (list 1 2)\n");
    broken.close();
    const lisp::EvalResult cut = lisp::loadFile(broken.fileName());
    EXPECT_FALSE(cut.ok);
    EXPECT_TRUE(cut.error.contains(QStringLiteral("broken.lsp"))) << cut.error.toStdString();
    EXPECT_EQ(eval(QStringLiteral("a")), QStringLiteral("1")) << "forms before the error stand";
}

} // namespace

TEST_F(LispBridge, AFunctionThatLeavesAnObjectOpenIsReported) {
    OvDbDatabase database;
    OvDbObject* layerTable = nullptr;
    define(L"zel_leaks", 1, [&] {
        ovdbOpenObject(layerTable, database.layerTableId(), OvDb::kForRead);
        return 1;
    });
    ovcore::resetOpenObjectViolations();
    eval(QStringLiteral("(zel_leaks)"));
    EXPECT_EQ(ovcore::openObjectViolations(), 1);
    EXPECT_NE(output.find("left open by LISP function zel_leaks"), std::string::npos) << output;
    ASSERT_NE(layerTable, nullptr);
    layerTable->close();
    ovcore::resetOpenObjectViolations();
}
