// Values crossing the LISP bridge: Scheme values into argument chains, result chains back
// into Scheme values, and the notation the host prints.
#include "OvcoreTest.h"

#include <vector>

namespace lisp = ovcore::lisp;

namespace {

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

class LispConvert : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        newDocument();
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
        OvcoreTest::TearDown();
    }
    void answerWith(resbuf* chain) {
        ovutRelRb(answer);
        answer = chain;
    }

    resbuf* received = nullptr;
    resbuf* answer = nullptr;
};

TEST_F(LispConvert, ArgumentsKeepTheirTypesAndShape) {
    eval("(probe \"text\" 5 -32768 32767 32768 -32769 2147483647 1.5 1/4 T nil '() #f 'sym)");
    EXPECT_EQ(typesOf(received),
              (std::vector<int>{RTSTR, RTSHORT, RTSHORT, RTSHORT, RTLONG, RTLONG, RTLONG, RTREAL,
                                RTREAL, RTT, RTNIL, RTNIL, RTNIL, RTSTR}));
    EXPECT_EQ(linkAt(received, 2)->resval.rint, -32768);
    EXPECT_EQ(linkAt(received, 6)->resval.rlong, 2147483647);
    EXPECT_DOUBLE_EQ(linkAt(received, 8)->resval.rreal, 0.25);
    EXPECT_STREQ(linkAt(received, 13)->resval.rstring, L"sym");

    // Nested lists and dotted pairs keep their shape.
    eval("(probe '(1 (\"a\" ()) ()) '(\"k\" . \"v\") '(1 2 . 3.5))");
    EXPECT_EQ(
        typesOf(received),
        (std::vector<int>{RTLB, RTSHORT, RTLB, RTSTR, RTNIL, RTLE, RTNIL, RTLE, // (1 ("a" ()) ())
                          RTLB, RTSTR, RTDOTE, RTSTR, RTLE,                     // ("k" . "v")
                          RTLB, RTSHORT, RTSHORT, RTDOTE, RTREAL, RTLE}));      // (1 2 . 3.5)
    // And back again, unchanged.
    answerWith(ovutCopyChain(received));
    EXPECT_EQ(eval("(probe)"), "((1 (\"a\" nil) nil) (\"k\" . \"v\") (1 2 . 3.5))");
}

TEST_F(LispConvert, StringsWithQuotesAndNonAsciiTextSurviveBothWays) {
    const wchar_t* text = L"say \"hi\" \\ Größe 線 \U0001F600";
    answerWith(ovutBuildList(RTSTR, text, 0));
    EXPECT_EQ(eval("(car (probe))"), QStringLiteral("\"say \\\"hi\\\" \\\\ Größe 線 \U0001F600\""));
    eval("(probe (car (probe)))");
    ASSERT_EQ(typesOf(received), std::vector<int>{RTSTR});
    EXPECT_STREQ(received->resval.rstring, text);
    // The string is the same one that Scheme sees, character for character.
    EXPECT_EQ(eval("(string-length (car (probe)))"), QString::number(std::wstring(text).size()));
}

TEST_F(LispConvert, GroupCodeLinksBecomePairsAndComeBackAsLinks) {
    const double point[3] = {1.0, 2.5, 0.0};
    answerWith(ovutBuildList(1, L"first", 90, 70000, 290, 1, 40, 2.5, 10, point, 0));
    EXPECT_EQ(eval("(probe)"),
              "((1 . \"first\") (90 . 70000) (290 . 1) (40 . 2.5) (10 1.0 2.5 0.0))");
    eval("(apply probe (probe))");
    ASSERT_EQ(typesOf(received), (std::vector<int>{1, 90, 290, 40, 10}));
    EXPECT_STREQ(received->resval.rstring, L"first");
    EXPECT_EQ(linkAt(received, 1)->resval.rlong, 70000);
    EXPECT_DOUBLE_EQ(linkAt(received, 4)->resval.rpoint[1], 2.5);

    // Group 0 comes in as a link too, and the integer x of a real group is accepted.
    eval("(probe '(0 . \"LINE\") '(40 . 3))");
    ASSERT_EQ(typesOf(received), (std::vector<int>{0, 40}));
    EXPECT_DOUBLE_EQ(linkAt(received, 1)->resval.rreal, 3.0);

    // Pairs that do not fit their group stay ordinary pairs: 1 is a string group, 62 a
    // 16-bit one, 10 wants reals, and 6000 is no group code.
    eval("(probe '(1 . 2) '(62 . \"red\") '(10 20 30) '(6000 . \"x\"))");
    EXPECT_EQ(typesOf(received),
              (std::vector<int>{RTLB,   RTSHORT, RTDOTE,  RTSHORT, RTLE,    RTLB,    RTSHORT,
                                RTDOTE, RTSTR,   RTLE,    RTLB,    RTSHORT, RTSHORT, RTSHORT,
                                RTLE,   RTLB,    RTSHORT, RTDOTE,  RTSTR,   RTLE}));
}

TEST_F(LispConvert, RetListReadsBracketsAsGiven) {
    const std::pair<resbuf*, const char*> cases[] = {
        {ovutBuildList(RTSTR, L"a", RTSHORT, 2, 0), "(\"a\" 2)"},
        {ovutBuildList(RTLB, RTSTR, L"a", RTSHORT, 2, RTLE, 0), "(\"a\" 2)"},
        {ovutBuildList(RTLB, RTSTR, L"a", RTLE, RTLB, RTSTR, L"b", RTLE, 0), "((\"a\") (\"b\"))"},
        {ovutBuildList(RTLB, RTSTR, L"a", RTLE, RTSTR, L"b", 0), "((\"a\") \"b\")"},
        {ovutBuildList(RTLB, RTLE, 0), "nil"},
        {nullptr, "nil"},
    };
    for (const auto& [chain, expected] : cases) {
        answerWith(chain);
        EXPECT_EQ(eval("(probe)"), expected);
    }
}

TEST_F(LispConvert, BadValuesEitherWayAreLispErrorsAndTheSessionGoesOn) {
    for (resbuf* chain :
         {ovutBuildList(RTLB, RTSTR, L"a", 0), ovutBuildList(RTSTR, L"a", RTLE, 0),
          ovutBuildList(RTLB, RTDOTE, RTSTR, L"a", RTLE, 0),
          ovutBuildList(RTLB, RTSHORT, 1, RTDOTE, RTSHORT, 2, RTSHORT, 3, RTLE, 0)}) {
        answerWith(chain);
        const lisp::EvalResult result = evalFailing("(probe)");
        EXPECT_TRUE(result.error.startsWith("probe: bad result")) << result.error.toStdString();
    }
    answerWith(nullptr);
    // Values that have no chain form, and integers beyond 32 bits.
    for (const char* expression :
         {"(probe (vector 1 2))", "(probe (let ((l (list 1 2))) (set-cdr! (cdr l) l) l))",
          "(probe 2147483648)"}) {
        const lisp::EvalResult result = evalFailing(expression);
        EXPECT_TRUE(result.error.startsWith("probe: bad argument") ||
                    result.error.contains("out of range"))
            << result.error.toStdString();
        EXPECT_TRUE(output().contains("; error: "));
    }
    EXPECT_EQ(eval("(+ 1 2)"), "3");
}

// Texts, T, nil and integers are answered by the bridge's test handlers and the module's
// functions; a real and an entity name by none of them.
TEST_F(LispConvert, RealAndEntityNameResults) {
    define(L"answer", 2, [] {
        const ov_name name = {7, 0x1a2b};
        const int status = ovedGetArgs() ? ovedRetName(name) : ovedRetReal(0.1);
        return status == RTNORM ? 1 : 3;
    });
    EXPECT_EQ(eval("(answer)"), "0.1");
    EXPECT_EQ(eval("(answer 5)"), "<Entity name: 1a2b>");
    EXPECT_EQ(eval("(list (entity-name? (answer 5)) (equal (answer 5) (answer 5)))"), "(T T)");

    // An entity name goes back as itself, both words kept.
    eval("(probe (answer 5) (list 330 (answer 5)))");
    ASSERT_EQ(typesOf(received), (std::vector<int>{RTENAME, RTLB, RTSHORT, RTENAME, RTLE}));
    EXPECT_EQ(received->resval.rlname[0], 7);
    EXPECT_EQ(received->resval.rlname[1], 0x1a2b);
}

TEST_F(LispConvert, PutSymAndGetSymConvertBothWays) {
    resbuf* value = ovutBuildList(RTLB, RTSTR, L"Größe", RTSHORT, 3, RTLE, 0);
    ASSERT_EQ(ovedPutSym(L"my-list", value), RTNORM);
    ovutRelRb(value);
    EXPECT_EQ(eval("my-list"), "(\"Größe\" 3)");

    // Texts read back are the add-on's tests' to check; nil comes back as one RTNIL link.
    eval("(setq nothing nil)");
    resbuf* read = nullptr;
    ASSERT_EQ(ovedGetSym(L"nothing", &read), RTNORM);
    EXPECT_EQ(typesOf(read), std::vector<int>{RTNIL});
    ovutRelRb(read);
    EXPECT_EQ(ovedGetSym(L"never-bound", &read), RTERROR);
    EXPECT_EQ(read, nullptr);
    EXPECT_EQ(ovedGetSym(L"car", &read), RTERROR) << "a procedure has no chain form";
}

} // namespace
