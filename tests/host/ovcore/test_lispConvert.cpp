// Values crossing the LISP bridge: Scheme values into argument chains, result chains back
// into Scheme values, and the notation the host prints.
#include "ovcore/OvLisp.h"
#include "ovcore/oved.h"
#include "ovdb/ovut.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

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

std::vector<int> typesOf(const resbuf* chain) {
    std::vector<int> types;
    for (; chain; chain = chain->rbnext)
        types.push_back(chain->restype);
    return types;
}

const resbuf* linkAt(const resbuf* chain, int index) {
    for (int i = 0; chain && i < index; ++i)
        chain = chain->rbnext;
    return chain;
}

class LispConvert : public ::testing::Test {
protected:
    void SetUp() override {
        lisp::initialize();
        ovutSetOutputSink([this](std::string_view text) { output.append(text); });
        lisp::setCurrentDocument(&document);
        lisp::setActiveModule(&module, nullptr);
        // probe: keeps a copy of its arguments and answers with `answer` as a list.
        define(L"probe", 1, [this] {
            ovutRelRb(received);
            received = ovutCopyChain(ovedGetArgs());
            if (answer)
                ovedRetList(answer);
            return 1;
        });
    }
    void TearDown() override {
        ovutRelRb(received);
        ovutRelRb(answer);
        lisp::setActiveModule(nullptr, nullptr);
        lisp::forgetModule(&module);
        lisp::forgetDocument(&document);
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
    void answerWith(resbuf* chain) {
        ovutRelRb(answer);
        answer = chain;
    }

    int document = 0;
    int module = 0;
    std::string output;
    resbuf* received = nullptr;
    resbuf* answer = nullptr;
};

TEST_F(LispConvert, AtomsBecomeTheirLispTypes) {
    eval(QStringLiteral(
        "(probe \"text\" 5 -32768 32767 32768 -32769 2147483647 1.5 1/4 T nil '() #f "
        "'sym)"));
    EXPECT_EQ(typesOf(received),
              (std::vector<int>{RTSTR, RTSHORT, RTSHORT, RTSHORT, RTLONG, RTLONG, RTLONG, RTREAL,
                                RTREAL, RTT, RTNIL, RTNIL, RTNIL, RTSTR}));
    EXPECT_EQ(linkAt(received, 1)->resval.rint, 5);
    EXPECT_EQ(linkAt(received, 2)->resval.rint, -32768);
    EXPECT_EQ(linkAt(received, 4)->resval.rlong, 32768);
    EXPECT_EQ(linkAt(received, 6)->resval.rlong, 2147483647);
    EXPECT_DOUBLE_EQ(linkAt(received, 7)->resval.rreal, 1.5);
    EXPECT_DOUBLE_EQ(linkAt(received, 8)->resval.rreal, 0.25);
    EXPECT_STREQ(linkAt(received, 13)->resval.rstring, L"sym");
}

TEST_F(LispConvert, IntegersBeyond32BitsAreRefused) {
    const lisp::EvalResult result = lisp::evalString(QStringLiteral("(probe 2147483648)"));
    EXPECT_FALSE(result.ok);
    EXPECT_TRUE(result.error.contains(QStringLiteral("probe"))) << result.error.toStdString();
    EXPECT_TRUE(result.error.contains(QStringLiteral("out of range")))
        << result.error.toStdString();
    EXPECT_NE(output.find("; error: "), std::string::npos);
}

TEST_F(LispConvert, NestedListsAndDottedPairsKeepTheirShape) {
    eval(QStringLiteral("(probe '(1 (\"a\" ()) ()) '(\"k\" . \"v\") '(1 2 . 3.5))"));
    EXPECT_EQ(
        typesOf(received),
        (std::vector<int>{RTLB, RTSHORT, RTLB, RTSTR, RTNIL, RTLE, RTNIL, RTLE, // (1 ("a" ()) ())
                          RTLB, RTSTR, RTDOTE, RTSTR, RTLE,                     // ("k" . "v")
                          RTLB, RTSHORT, RTSHORT, RTDOTE, RTREAL, RTLE}));      // (1 2 . 3.5)
    // And back again, unchanged.
    answerWith(ovutCopyChain(received));
    EXPECT_EQ(eval(QStringLiteral("(probe)")),
              QStringLiteral("((1 (\"a\" nil) nil) (\"k\" . \"v\") (1 2 . 3.5))"));
}

TEST_F(LispConvert, StringsWithQuotesAndNonAsciiTextSurviveBothWays) {
    const wchar_t* text = L"say \"hi\" \\ Größe 線 \U0001F600";
    answerWith(ovutBuildList(RTSTR, text, 0));
    EXPECT_EQ(eval(QStringLiteral("(car (probe))")),
              QStringLiteral("\"say \\\"hi\\\" \\\\ Größe 線 \U0001F600\""));
    eval(QStringLiteral("(probe (car (probe)))"));
    ASSERT_EQ(typesOf(received), std::vector<int>{RTSTR});
    EXPECT_STREQ(received->resval.rstring, text);
    // The string is the same one that Scheme sees, character for character.
    EXPECT_EQ(eval(QStringLiteral("(string-length (car (probe)))")),
              QString::number(std::wstring(text).size()));
}

TEST_F(LispConvert, GroupCodeLinksBecomePairsAndComeBackAsLinks) {
    const double point[3] = {1.0, 2.5, 0.0};
    answerWith(ovutBuildList(1, L"first", 90, 70000, 290, 1, 40, 2.5, 10, point, 0));
    EXPECT_EQ(
        eval(QStringLiteral("(probe)")),
        QStringLiteral("((1 . \"first\") (90 . 70000) (290 . 1) (40 . 2.5) (10 1.0 2.5 0.0))"));

    eval(QStringLiteral("(apply probe (probe))"));
    ASSERT_EQ(typesOf(received), (std::vector<int>{1, 90, 290, 40, 10}));
    EXPECT_STREQ(received->resval.rstring, L"first");
    EXPECT_EQ(linkAt(received, 1)->resval.rlong, 70000);
    EXPECT_EQ(linkAt(received, 2)->resval.rint, 1);
    EXPECT_DOUBLE_EQ(linkAt(received, 3)->resval.rreal, 2.5);
    EXPECT_DOUBLE_EQ(linkAt(received, 4)->resval.rpoint[1], 2.5);

    // Group 0 comes in as a link too, and the integer x of a real group is accepted.
    eval(QStringLiteral("(probe '(0 . \"LINE\") '(40 . 3))"));
    ASSERT_EQ(typesOf(received), (std::vector<int>{0, 40}));
    EXPECT_STREQ(received->resval.rstring, L"LINE");
    EXPECT_DOUBLE_EQ(linkAt(received, 1)->resval.rreal, 3.0);
}

TEST_F(LispConvert, PairsThatDoNotFitTheirGroupStayOrdinaryPairs) {
    // 1 is a string group and 62 a 16-bit one; 10 wants reals; 6000 is no group code.
    eval(QStringLiteral("(probe '(1 . 2) '(62 . \"red\") '(10 20 30) '(6000 . \"x\"))"));
    EXPECT_EQ(typesOf(received),
              (std::vector<int>{RTLB,   RTSHORT, RTDOTE,  RTSHORT, RTLE,    RTLB,    RTSHORT,
                                RTDOTE, RTSTR,   RTLE,    RTLB,    RTSHORT, RTSHORT, RTSHORT,
                                RTLE,   RTLB,    RTSHORT, RTDOTE,  RTSTR,   RTLE}));
}

TEST_F(LispConvert, RetListReadsBracketsAsGiven) {
    answerWith(ovutBuildList(RTSTR, L"a", RTSHORT, 2, 0));
    EXPECT_EQ(eval(QStringLiteral("(probe)")), QStringLiteral("(\"a\" 2)"));
    answerWith(ovutBuildList(RTLB, RTSTR, L"a", RTSHORT, 2, RTLE, 0));
    EXPECT_EQ(eval(QStringLiteral("(probe)")), QStringLiteral("(\"a\" 2)"));
    answerWith(ovutBuildList(RTLB, RTSTR, L"a", RTLE, RTLB, RTSTR, L"b", RTLE, 0));
    EXPECT_EQ(eval(QStringLiteral("(probe)")), QStringLiteral("((\"a\") (\"b\"))"));
    answerWith(ovutBuildList(RTLB, RTSTR, L"a", RTLE, RTSTR, L"b", 0));
    EXPECT_EQ(eval(QStringLiteral("(probe)")), QStringLiteral("((\"a\") \"b\")"));
    answerWith(ovutBuildList(RTLB, RTLE, 0));
    EXPECT_EQ(eval(QStringLiteral("(probe)")), QStringLiteral("nil"));
    answerWith(nullptr);
    EXPECT_EQ(eval(QStringLiteral("(probe)")), QStringLiteral("nil"));
}

TEST_F(LispConvert, MalformedResultChainsAreLispErrors) {
    for (resbuf* chain :
         {ovutBuildList(RTLB, RTSTR, L"a", 0), ovutBuildList(RTSTR, L"a", RTLE, 0),
          ovutBuildList(RTLB, RTDOTE, RTSTR, L"a", RTLE, 0),
          ovutBuildList(RTLB, RTSHORT, 1, RTDOTE, RTSHORT, 2, RTSHORT, 3, RTLE, 0)}) {
        answerWith(chain);
        const lisp::EvalResult result = lisp::evalString(QStringLiteral("(probe)"));
        EXPECT_FALSE(result.ok) << lisp::toLispNotation(chain).toStdString();
        EXPECT_TRUE(result.error.startsWith(QStringLiteral("probe: bad result")))
            << result.error.toStdString();
    }
    // The session goes on.
    EXPECT_EQ(eval(QStringLiteral("(+ 1 2)")), QStringLiteral("3"));
}

TEST_F(LispConvert, SingleResultsOfEachKind) {
    define(L"answer", 2, [] {
        const resbuf* args = ovedGetArgs();
        switch (args->resval.rint) {
        case 0:
            return ovedRetStr(L"x\"y") == RTNORM ? 1 : 3;
        case 1:
            return ovedRetT() == RTNORM ? 1 : 3;
        case 2:
            return ovedRetNil() == RTNORM ? 1 : 3;
        case 3:
            return ovedRetInt(100000) == RTNORM ? 1 : 3;
        case 4:
            return ovedRetReal(0.1) == RTNORM ? 1 : 3;
        default: {
            const ov_name name = {7, 0x1a2b};
            return ovedRetName(name);
        }
        }
    });
    EXPECT_EQ(eval(QStringLiteral("(answer 0)")), QStringLiteral("\"x\\\"y\""));
    EXPECT_EQ(eval(QStringLiteral("(answer 1)")), QStringLiteral("T"));
    EXPECT_EQ(eval(QStringLiteral("(answer 2)")), QStringLiteral("nil"));
    EXPECT_EQ(eval(QStringLiteral("(answer 3)")), QStringLiteral("100000"));
    EXPECT_EQ(eval(QStringLiteral("(answer 4)")), QStringLiteral("0.1"));
    EXPECT_EQ(eval(QStringLiteral("(answer 5)")), QStringLiteral("<Entity name: 1a2b>"));
    EXPECT_EQ(
        eval(QStringLiteral("(list (entity-name? (answer 5)) (equal (answer 5) (answer 5)))")),
        QStringLiteral("(T T)"));

    // An entity name goes back as itself, both words kept.
    eval(QStringLiteral("(probe (answer 5) (list 330 (answer 5)))"));
    ASSERT_EQ(typesOf(received), (std::vector<int>{RTENAME, RTLB, RTSHORT, RTENAME, RTLE}));
    EXPECT_EQ(received->resval.rlname[0], 7);
    EXPECT_EQ(received->resval.rlname[1], 0x1a2b);
}

TEST_F(LispConvert, ValuesThatHaveNoChainFormAreRefused) {
    for (const char* expression : {"(probe car)", "(probe (vector 1 2))",
                                   "(probe (let ((l (list 1 2))) "
                                   "(set-cdr! (cdr l) l) l))"}) {
        const lisp::EvalResult result = lisp::evalString(QString::fromUtf8(expression));
        EXPECT_FALSE(result.ok) << expression;
        EXPECT_TRUE(result.error.startsWith(QStringLiteral("probe: bad argument")))
            << result.error.toStdString();
    }
}

TEST_F(LispConvert, NotationOfChains) {
    struct Case {
        resbuf* chain;
        const char* expected;
    };
    const ov_name name = {1, 0xbeef};
    const Case cases[] = {
        {nullptr, "nil"},
        {ovutBuildList(RTNIL, 0), "nil"},
        {ovutBuildList(RTT, 0), "T"},
        {ovutBuildList(RTSTR, L"a\"b\\c\nd", 0), "\"a\\\"b\\\\c\\nd\""},
        {ovutBuildList(RTREAL, 2.0, 0), "2.0"},
        {ovutBuildList(RTREAL, 1.0 / 3, 0), "0.333333"},
        {ovutBuildList(RTREAL, 1e20, 0), "1.0e+20"},
        {ovutBuildList(RTSHORT, -7, 0), "-7"},
        {ovutBuildList(RTLB, RTSHORT, 1, RTDOTE, RTSTR, L"x", RTLE, 0), "(1 . \"x\")"},
        {ovutBuildList(RTSTR, L"a", RTLB, RTNIL, RTT, RTLE, 0), "(\"a\" (nil T))"},
        {ovutBuildList(8, L"0", 0), "(8 . \"0\")"},
        {ovutBuildList(RTENAME, name, 0), "<Entity name: beef>"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(lisp::toLispNotation(c.chain).toStdString(), c.expected);
        ovutRelRb(c.chain);
    }
}

TEST_F(LispConvert, PutSymAndGetSymConvertBothWays) {
    resbuf* value = ovutBuildList(RTLB, RTSTR, L"Größe", RTSHORT, 3, RTLE, 0);
    ASSERT_EQ(ovedPutSym(L"my-list", value), RTNORM);
    ovutRelRb(value);
    EXPECT_EQ(eval(QStringLiteral("my-list")), QStringLiteral("(\"Größe\" 3)"));

    eval(QStringLiteral("(setq folder \"C:/users/été\" nothing nil)"));
    resbuf* read = nullptr;
    ASSERT_EQ(ovedGetSym(L"folder", &read), RTNORM);
    ASSERT_EQ(typesOf(read), std::vector<int>{RTSTR});
    EXPECT_STREQ(read->resval.rstring, L"C:/users/été");
    ovutRelRb(read);
    ASSERT_EQ(ovedGetSym(L"nothing", &read), RTNORM);
    EXPECT_EQ(typesOf(read), std::vector<int>{RTNIL});
    ovutRelRb(read);
    EXPECT_EQ(ovedGetSym(L"never-bound", &read), RTERROR);
    EXPECT_EQ(read, nullptr);
    EXPECT_EQ(ovedGetSym(L"car", &read), RTERROR) << "a procedure has no chain form";
}

} // namespace
