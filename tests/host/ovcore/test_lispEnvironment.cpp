// The host's LISP environment: the CAD LISP forms that scripts rely on, where they differ
// from Guile's, and how errors end an evaluation without ending the host.
#include "OvcoreTest.h"

namespace lisp = ovcore::lisp;

namespace {

class LispEnvironment : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        newDocument();
        clearOutput();
    }
    // The message of the LISP error that the expression ends in, which is also printed.
    QString errorOf(const char* expression) {
        const lisp::EvalResult result = evalFailing(expression);
        EXPECT_TRUE(output().contains("; error: " + result.error)) << output().toStdString();
        return result.error;
    }
};

TEST_F(LispEnvironment, NilIsFalseAndListFunctionsTolerateIt) {
    expectValues({
        {"(if nil 1 2)", "2"},
        {"(if 0 1 2)", "1"},
        {"(if nil 1)", "nil"},
        {"(cond (nil 1) ('() 2) (T 3))", "3"},
        {"(cond ((member 9 '(1 2))) (\"found\"))", "\"found\""},
        {"(and 1 nil 2)", "nil"},
        {"(or nil '() 7)", "7"},
        {"(not nil)", "T"},
        {"(setq i 0 n 0) (while (< i 4) (setq n (+ n i) i (1+ i)))", "4"},
        {"n", "6"},
        {"(setq s 0) (foreach x '(1 2 3) (setq s (+ s x)))", "6"},
        {"(foreach x nil x)", "nil"},
        {"(setq r \"\") (repeat 3 (setq r (strcat r \"ab\")))", "\"ababab\""},
        {"(car nil)", "nil"},
        {"(cdr (assoc 8 '((0 . \"LINE\"))))", "nil"},
        {"(nth 1 '(a b c))", "b"},
        {"(nth 5 '(a b c))", "nil"},
        {"(nth -1 '(a b c))", "nil"},
        {"(last '(1 2 3))", "3"},
        {"(mapcar '1+ '(1 2 3))", "(2 3 4)"},
        {"(atom nil)", "T"},
        {"(type \"a\")", "STR"},
        {"(type 1.0)", "REAL"},
    });
    EXPECT_TRUE(errorOf("(car \"text\")").contains(QStringLiteral("car: bad argument type")));
}

TEST_F(LispEnvironment, SetqDefunAndSeveralFormsAtOnce) {
    expectValues({
        {"(setq a 1 b (+ a 1))", "2"},
        {"(list a b)", "(1 2)"},
        // A local of defun and an argument are set in place; other names become globals.
        {"(defun bump (x / y) (setq y 10 x (+ x y) g x) (list x y))", "bump"},
        {"(bump 5)", "(15 10)"},
        {"g", "15"},
        {"(defun fresh ( / y) y)", "fresh"},
        {"(fresh)", "nil"},
        {"(defun noop ())", "noop"},
        {"(noop)", "nil"},
        {"(defun c:hello () (princ \"hi\") (princ))", "c:hello"},
        {"(c:hello)", ""},
        {"   ; only a comment", ""},
        {"(define (twice x) (* 2 x)) (twice 4)", "8"},
        {"(veval-str+ \"(setq v 5) (* v v)\")", "25"},
        {"v", "5"},
        {"(list \"\\t\\n\" \"\\\\\")", "(\"\\t\\n\" \"\\\\\")"},
    });
    EXPECT_EQ(output(), "hi");
}

TEST_F(LispEnvironment, TextsNumbersAndComparisons) {
    expectValues({
        {"(strcat \"a\" \"\" \"bç\")", "\"abç\""},
        {"(strlen \"Größe\" \"ab\")", "7"},
        {"(strcase \"élan\")", "\"ÉLAN\""},
        {"(strcase \"ABC\" T)", "\"abc\""},
        {"(substr \"wiretype\" 5)", "\"type\""},
        {"(substr \"wire\" 3 10)", "\"re\""},
        {"(substr \"wire\" 9)", "\"\""},
        {"(vl-string-search \"e\" \"wiretype\" 4)", "7"},
        {"(vl-string-search \"zz\" \"wiretype\")", "nil"},
        {"(itoa -42)", "\"-42\""},
        {"(atoi \"  12abc\")", "12"},
        {"(atof \"2.5e2m\")", "250.0"},
        {"(= 1 1.0)", "T"},
        {"(= \"a\" \"a\" \"a\")", "T"},
        {"(= \"a\" \"A\")", "nil"},
        {"(eq nil '())", "T"},
        {"(equal (list 1 \"a\" '(2)) (list 1 \"a\" '(2)))", "T"},
        {"(equal 1.0 1.05 0.1)", "T"},
        {"(equal 1.0 1.5 0.1)", "nil"},
        {"(equal '(1 . 2.0) '(1 . 2))", "T"},
    });
}

TEST_F(LispEnvironment, PrintingGoesToTheCommandLine) {
    expectValues({
        {"(princ \"a\\\"b\")", "\"a\\\"b\""},
        {"(prin1 \"c\")", "\"c\""},
        {"(princ '(\"x\" 1.5 nil))", "(\"x\" 1.5 nil)"},
        {"(print 7)", "7"},
        {"(prompt \"\\nPick: \")", "nil"},
        {"(terpri)", "nil"},
        {"(display \"scheme\") (newline) (write \"w\")", ""},
        {"(vl-prin1-to-string '(\"q\" T))", "\"(\\\"q\\\" T)\""},
        {"(vl-princ-to-string '(\"q\" T))", "\"(q T)\""},
        {"(princ \"100% done\")", "\"100% done\""},
    });
    EXPECT_EQ(output(), "a\"b\"c\"(x 1.5 nil)\n7 \nPick: \nscheme\n\"w\"100% done");
}

TEST_F(LispEnvironment, ErrorsEndTheEvaluationNotTheHost) {
    EXPECT_EQ(errorOf("undefined-thing").toStdString(), "Unbound variable: undefined-thing");
    EXPECT_TRUE(errorOf("(list 1 2").contains(QStringLiteral("end of input")));
    EXPECT_EQ(errorOf("(error \"wire type missing:\" \"RED\")").toStdString(),
              "wire type missing: \"RED\"");
    EXPECT_EQ(errorOf("(throw 'my-key 1 \"two\")").toStdString(), "my-key 1 \"two\"");
    EXPECT_EQ(errorOf("(raise-exception 'boom)").toStdString(), "exception: boom");
    EXPECT_EQ(errorOf("(exit)").toStdString(), "quit / exit abort");
    EXPECT_TRUE(errorOf("(setq 1 2)").contains(QStringLiteral("variable name")));
    EXPECT_TRUE(errorOf("(defun deep (n) (+ 1 (deep n))) (deep 1)")
                    .contains(QStringLiteral("stack overflow")));
    // A continuation cannot jump back into an evaluation that has ended.
    expectValues({{"(define k #f) (+ 1 (call/cc (lambda (c) (set! k c) 1)))", "2"}});
    errorOf("(k 5)");
    expectValues({{"(+ 1 1)", "2"}});
}

} // namespace
