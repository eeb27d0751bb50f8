#pragma once

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvLisp.h"
#include "ovdb/ovdb.h"

#include <gtest/gtest.h>

#include <string>

#if defined(__SANITIZE_ADDRESS__)
// Guile's collector keeps pointers where LeakSanitizer does not look.
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
#endif

// A running host with one new drawing, whose command line the test reads. Every
// evaluation must leave no object of any drawing open.
class CadFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ovutSetOutputSink([this](std::string_view text) { m_output.append(text); });
        ASSERT_TRUE(m_host.init());
        ASSERT_EQ(ovDocManagerPtr()->newDocument(QString(), &m_document), Orvex::eOk);
        OvEdBatchInput::instance().clear();
    }
    void TearDown() override {
        OvEdBatchInput::instance().clear();
        m_host.shutdown();
        ovutResetOutputSink();
    }

    OvDbDatabase* db() const { return m_document->database(); }

    // The value of an expression in LISP notation; a LISP error fails the test.
    std::string eval(const std::string& expression) {
        const ovcore::lisp::EvalResult result =
            ovcore::lisp::evalString(QString::fromStdString(expression));
        EXPECT_TRUE(result.ok) << expression << ": " << result.error.toStdString();
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << expression << " left open: "
            << ovdbOpenObjectDescriptions().join(QStringLiteral("; ")).toStdString();
        return result.value.toStdString();
    }

    // Evaluates and returns what the command line printed meanwhile.
    std::string printed(const std::string& expression, std::string* value = nullptr) {
        m_output.clear();
        const std::string v = eval(expression);
        if (value)
            *value = v;
        return m_output;
    }

    // An expression that must answer nil and say why at the command line.
    void expectRefused(const std::string& expression, const std::string& message) {
        std::string value;
        const std::string out = printed(expression, &value);
        EXPECT_EQ(value, "nil") << expression;
        EXPECT_NE(out.find(message), std::string::npos)
            << expression << " printed: " << out << " (expected: " << message << ")";
    }

    OvHost m_host;
    OvApDocument* m_document = nullptr;
    std::string m_output;
};
