#pragma once

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvLisp.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovcore/oved.h"
#include "ovdb/ovut.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>

#if defined(__SANITIZE_ADDRESS__)
// Guile's collector keeps pointers where LeakSanitizer does not look. Each test program has
// one source file that includes this header.
extern "C" const char* __asan_default_options() {
    return "detect_leaks=0";
}
#endif

// A host started in-process with the add-on's LISP side as the orvex program sets it up:
// ZelAddonLisp.ovm loaded and the Scheme files of addon-lisp/ loaded into each document.
// Files live in a temporary folder, which is also the per-user data folder.
class AddonLispHost : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_temp.isValid());
        m_oldDataHome = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(path(QStringLiteral("data"))));
        ovutSetOutputSink([this](std::string_view text) { m_output.append(text); });
        ASSERT_TRUE(m_host.init());
        ovcore::resetOpenObjectViolations();
    }

    void TearDown() override {
        EXPECT_EQ(ovcore::openObjectViolations(), 0);
        GetProjectManager()->closeProject();
        m_host.shutdown();
        ovutResetOutputSink();
        if (m_oldDataHome.isNull())
            qunsetenv("XDG_DATA_HOME");
        else
            qputenv("XDG_DATA_HOME", m_oldDataHome);
    }

    static QString binFolder() {
        return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
    }

    QString path(const QString& name) const { return m_temp.filePath(name); }

    // A copy of a demo drawing in the temporary folder.
    QString copyDemo(const QString& name) {
        const QString target = path(name);
        EXPECT_TRUE(
            QFile::copy(QStringLiteral(ZEL_SOURCE_DIR "/samples/demo/drawings/") + name, target));
        QFile(target).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        return target;
    }

    // Opens a drawing (a new one for an empty path) with the add-on's LISP side in it.
    OvApDocument* openWithAddon(const QString& drawing = {}) {
        OvApDocument* doc = nullptr;
        const Orvex::ErrorStatus es = drawing.isEmpty()
                                          ? ovDocManagerPtr()->newDocument({}, &doc)
                                          : ovDocManagerPtr()->openDocument(drawing, &doc);
        EXPECT_EQ(es, Orvex::eOk) << ovDocManagerPtr()->lastErrorMessage().toStdString();
        if (!doc)
            return nullptr;
        // Loading defines the module's functions in every open document; later documents
        // get them when they open.
        EXPECT_TRUE(
            OvModuleLoader::instance().load(binFolder() + QStringLiteral("/ZelAddonLisp.ovm")))
            << OvModuleLoader::instance().lastError().toStdString();
        const QDir scheme(binFolder() + QStringLiteral("/addon-lisp"));
        const QStringList files =
            scheme.entryList({QStringLiteral("*.scm")}, QDir::Files, QDir::Name);
        EXPECT_FALSE(files.isEmpty());
        for (const QString& file : files) {
            const ovcore::lisp::EvalResult loaded = ovcore::lisp::loadFile(scheme.filePath(file));
            EXPECT_TRUE(loaded.ok) << file.toStdString() << ": " << loaded.error.toStdString();
        }
        return doc;
    }

    // Calls a LISP function as a module does, through ovedInvoke; the chain is the function's
    // name and its arguments, and is released here. Gives the result in LISP notation.
    QString invoke(resbuf* call, int* status = nullptr) {
        resbuf* result = nullptr;
        const int es = ovedInvoke(call, &result);
        ovutRelRb(call);
        if (status)
            *status = es;
        else
            EXPECT_EQ(es, RTNORM) << output().toStdString();
        const QString value = ovcore::lisp::toLispNotation(result);
        ovutRelRb(result);
        return value;
    }
    // The same with the arguments as ovutBuildList takes them, without the closing 0.
    template <typename... Args> QString call(const wchar_t* function, Args... args) {
        return invoke(ovutBuildList(RTSTR, function, args..., 0));
    }

    // A variable of the current document in LISP notation; "unbound" when it has none.
    QString symbol(const wchar_t* name) {
        resbuf* value = nullptr;
        if (ovedGetSym(name, &value) != RTNORM)
            return QStringLiteral("unbound");
        const QString text = ovcore::lisp::toLispNotation(value);
        ovutRelRb(value);
        return text;
    }

    static QString quoted(const QString& text) { return u'"' + text + u'"'; }
    static std::wstring wide(const QString& text) { return text.toStdWString(); }

    QString output() const { return QString::fromUtf8(m_output); }
    void clearOutput() { m_output.clear(); }

    QTemporaryDir m_temp;
    OvHost m_host;
    std::string m_output;
    QByteArray m_oldDataHome;
};
