#pragma once

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvLisp.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovcore/oved.h"
#include "ovdb/ovdb.h"
#include "zeloledb/ZelOleDbHelper.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

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

// The add-on's tests: files in a temporary folder, which is also the per-user data folder,
// no active project before or after, and on request a host started in-process, which must
// end with nothing open and no object misused. With the add-on's LISP side loaded, LISP
// functions are called through ovedInvoke as the wire type module calls them.
class AddonTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_temp.isValid());
        qputenv("XDG_DATA_HOME", QFile::encodeName(path("data")));
        GetProjectManager()->closeProject();
    }
    void TearDown() override {
        if (m_host.isRunning()) {
            EXPECT_EQ(ovdbOpenObjectCount(), 0u)
                << ovdbOpenObjectDescriptions().join(u';').toStdString();
            EXPECT_EQ(ovcore::openObjectViolations(), 0);
            EXPECT_EQ(ovdbTakeProtocolViolations(), QStringList());
            m_host.shutdown();
            ovutResetOutputSink();
        }
        GetProjectManager()->closeProject();
        QDir::setCurrent(m_oldCurrent);
        if (m_oldDataHome.isNull())
            qunsetenv("XDG_DATA_HOME");
        else
            qputenv("XDG_DATA_HOME", m_oldDataHome);
    }

    static QString demo(const QString& name) { return QStringLiteral(ZEL_DEMO_DIR "/") + name; }
    static QString connectString(const QString& database) {
        QString connect;
        ZelOleDbHelper::FormatConnectString(connect, database, nullptr, nullptr,
                                            L"Microsoft.ACE.OLEDB.12.0", L"Jet OLEDB:Engine Type=5",
                                            nullptr);
        return connect;
    }
    static std::wstring wide(const QString& text) { return text.toStdWString(); }
    static QString quoted(const QString& text) { return u'"' + text + u'"'; }

    QString path(const QString& name) const { return m_temp.filePath(name); }
    QString writeFile(const QString& name, const QByteArray& text) {
        QDir().mkpath(QFileInfo(path(name)).absolutePath());
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
        file.write(text);
        return file.fileName();
    }
    // A copy of a demo drawing, writable.
    QString copyDemo(const QString& name) {
        EXPECT_TRUE(QFile::copy(demo("drawings/" + name), path(name)));
        QFile(path(name)).setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        return path(name);
    }

    void startHost() {
        ovutSetOutputSink([this](std::string_view text) { m_output.append(text); });
        ASSERT_TRUE(m_host.init());
        ovcore::resetOpenObjectViolations();
        ovdbTakeProtocolViolations();
    }
    QString output() const { return QString::fromStdString(m_output); }

    // Opens a drawing (a new one for an empty path) in the running host, with the add-on's
    // LISP side in it as the orvex program sets it up: ZelAddonLisp.ovm, which defines its
    // functions in every document, and the Scheme files of addon-lisp/.
    OvApDocument* openWithAddon(const QString& drawing = {}) {
        OvApDocument* doc = nullptr;
        const Orvex::ErrorStatus es = drawing.isEmpty()
                                          ? ovDocManagerPtr()->newDocument({}, &doc)
                                          : ovDocManagerPtr()->openDocument(drawing, &doc);
        EXPECT_EQ(es, Orvex::eOk) << ovDocManagerPtr()->lastErrorMessage().toStdString();
        const QString bin = QFileInfo(QFile::symLinkTarget("/proc/self/exe")).absolutePath();
        EXPECT_TRUE(OvModuleLoader::instance().load(bin + "/ZelAddonLisp.ovm"))
            << OvModuleLoader::instance().lastError().toStdString();
        const QDir scheme(bin + "/addon-lisp");
        for (const QString& file : scheme.entryList({"*.scm"}, QDir::Files, QDir::Name)) {
            const ovcore::lisp::EvalResult loaded = ovcore::lisp::loadFile(scheme.filePath(file));
            EXPECT_TRUE(loaded.ok) << file.toStdString() << ": " << loaded.error.toStdString();
        }
        return doc;
    }

    // Calls through ovedInvoke a chain of the function's name and its arguments, which is
    // released here; gives the result in LISP notation. A failed call fails the test.
    QString invoke(resbuf* call) {
        resbuf* result = nullptr;
        EXPECT_EQ(ovedInvoke(call, &result), RTNORM) << output().toStdString();
        ovutRelRb(call);
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

    QTemporaryDir m_temp;
    OvHost m_host;
    std::string m_output;
    QString m_oldCurrent = QDir::currentPath();
    QByteArray m_oldDataHome = qgetenv("XDG_DATA_HOME");
};
