#pragma once

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvEdInputProvider.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvLisp.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovcore/oved.h"
#include "ovdb/ovdb.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <map>
#include <ostream>
#include <string>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
// Guile's collector keeps pointers where LeakSanitizer does not look. Each test program has
// one source file, which includes this header.
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
#endif

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

// What a desktop program puts in place of the batch queues: it writes down each request,
// cancels picks, chooses /chosen.dwg and types "typed".
class RecordingProvider : public OvEdInputProvider {
public:
    int entSel(const QString& prompt, ov_name, double[3]) override {
        calls << QStringLiteral("pick ") + prompt;
        return RTCAN;
    }
    int getFileD(const QString& title, const QString& defaultPath, const QString& extension,
                 int flags, QString& path) override {
        calls << QStringLiteral("file %1 %2 %3 %4").arg(title, defaultPath, extension).arg(flags);
        path = QStringLiteral("/chosen.dwg");
        return RTNORM;
    }
    int help(const QString& file, const QString& topic, int command) override {
        calls << QStringLiteral("help %1 %2 %3").arg(file, topic).arg(command);
        return RTNORM;
    }
    int getString(const QString& prompt, QString& text) override {
        calls << QStringLiteral("string ") + prompt;
        text = QStringLiteral("typed");
        return RTNORM;
    }
    QStringList calls;
};

// A running host whose command line the test reads. An object left open by a command,
// message or LISP call fails the test unless the test expects it. Functions that a test
// defines belong to a module of the test's own.
class OvcoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        ovutSetOutputSink([this](std::string_view text) { m_output.append(text); });
        ASSERT_TRUE(m_host.init());
        ovcore::resetOpenObjectViolations();
        OvEdBatchInput::instance().clear();
    }
    void TearDown() override {
        EXPECT_EQ(ovcore::openObjectViolations(), m_expectedViolations);
        ovcore::lisp::setActiveModule(nullptr, nullptr);
        ovcore::lisp::forgetModule(&m_module);
        OvEdBatchInput::instance().clear();
        m_host.shutdown();
        ovutResetOutputSink();
        s_handlers.clear();
    }

    QString output() const { return QString::fromStdString(m_output); }
    void clearOutput() { m_output.clear(); }
    // The lines of the command line that start with `prefix`, in order.
    QStringList linesStartingWith(const QString& prefix) const {
        return output().split(u'\n').filter(
            QRegularExpression('^' + QRegularExpression::escape(prefix)));
    }

    // The test modules are built beside the test programs.
    static QString modulePath(const QString& fileName) {
        const QString exe = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
        return QFileInfo(exe).absolutePath() + u'/' + fileName;
    }

    // A file holding `bytes`, made with its folder; gives its path.
    static QString writeFile(const QString& path, const QByteArray& bytes) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(bytes);
        return path;
    }

    // A new drawing, made current.
    static OvApDocument* newDocument() {
        OvApDocument* doc = nullptr;
        EXPECT_EQ(ovDocManagerPtr()->newDocument(QString(), &doc), Orvex::eOk);
        return doc;
    }

    // A LISP function of the test's module, with `body` as its handler.
    void define(const wchar_t* name, int number, std::function<int()> body) {
        ovcore::lisp::setActiveModule(&m_module, nullptr);
        ASSERT_EQ(ovedDefun(name, number), RTNORM);
        ASSERT_EQ(ovedRegFunc(callHandler, number), RTNORM);
        s_handlers[number] = std::move(body);
    }

    // The value of an expression in LISP notation; a LISP error, or an object of any drawing
    // left open, fails the test.
    QString eval(const QString& expression) {
        const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(expression);
        EXPECT_TRUE(result.ok) << expression.toStdString() << ": " << result.error.toStdString();
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << expression.toStdString() << " left open: "
            << ovdbOpenObjectDescriptions().join(QStringLiteral("; ")).toStdString();
        return result.value;
    }
    // The entity name that an expression gives.
    void entityName(const QString& expression, ov_name name) {
        const QString words = eval(
            QStringLiteral("(list (entity-name-word0 %1) (entity-name-word1 %1))").arg(expression));
        const QStringList parts = words.mid(1, words.size() - 2).split(u' ');
        name[0] = parts.value(0).toLongLong();
        name[1] = parts.value(1).toLongLong();
    }
    // An expression that must end in a LISP error; the command line holds only its output.
    ovcore::lisp::EvalResult evalFailing(const QString& expression) {
        clearOutput();
        const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(expression);
        EXPECT_FALSE(result.ok) << expression.toStdString() << " gave "
                                << result.value.toStdString();
        return result;
    }
    // Evaluates and returns what the command line printed meanwhile.
    QString printed(const QString& expression, QString* value = nullptr) {
        clearOutput();
        const QString v = eval(expression);
        if (value)
            *value = v;
        return output();
    }
    // An expression that must answer nil and say why at the command line.
    void expectRefused(const QString& expression, const QString& message) {
        QString value;
        const QString out = printed(expression, &value);
        EXPECT_EQ(value, QStringLiteral("nil")) << expression.toStdString();
        EXPECT_TRUE(out.contains(message))
            << expression.toStdString() << " printed: " << out.toStdString()
            << " (expected: " << message.toStdString() << ")";
    }
    // Rows of expression and what it says; each is refused in turn, in order.
    void expectRefused(std::initializer_list<std::pair<const char*, const char*>> rows) {
        for (const auto& [expression, message] : rows)
            expectRefused(QString::fromUtf8(expression), QString::fromUtf8(message));
    }
    // Rows of expression and value in LISP notation, evaluated in order.
    void expectValues(std::initializer_list<std::pair<const char*, const char*>> rows) {
        for (const auto& [expression, value] : rows) {
            const ovcore::lisp::EvalResult result =
                ovcore::lisp::evalString(QString::fromUtf8(expression));
            EXPECT_TRUE(result.ok) << expression << ": " << result.error.toStdString();
            EXPECT_EQ(result.value.toStdString(), value) << expression;
        }
    }
    // Rows of expression and a part of its error message, which names the function.
    void expectErrors(std::initializer_list<std::pair<const char*, const char*>> rows) {
        for (const auto& [expression, who] : rows) {
            const ovcore::lisp::EvalResult result = evalFailing(QString::fromUtf8(expression));
            EXPECT_TRUE(result.error.contains(QString::fromUtf8(who)))
                << expression << " failed with: " << result.error.toStdString();
        }
    }

    OvHost m_host;
    std::string m_output;
    int m_expectedViolations = 0;
    int m_module = 0;

private:
    static int callHandler() { return s_handlers.at(ovedGetFunCode())(); }
    static inline std::map<int, std::function<int()>> s_handlers;
};
