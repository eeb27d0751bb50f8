#pragma once

#include "ovcore/OvHost.h"
#include "ovcore/OvLisp.h"
#include "platform/MessageBoxScript.h"
#include "support/ZelTestPrinters.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <string>

class OvApDocument;
class OvDbDatabase;

// A test with a running host: the module's resources attached (ZelWireTypeRes.so beside the
// test program), the command line captured, message boxes answered from a script, the
// per-user folders redirected into a temporary folder, no project active. At the end of
// each test no database object may be open and no call may have left one open.
class ZelTestHost : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A new drawing (the host's default one), which becomes the active and current
    // document; its database is the working database.
    OvApDocument* newDocument();
    // Opens a drawing file into a new active document; null (and a test failure) when the
    // host refuses it.
    OvApDocument* openDocument(const QString& path);
    OvApDocument* activeDocument() const;
    OvDbDatabase* workingDatabase() const;
    void closeAllDocuments();

    // Evaluates LISP text in the current document; a failure fails the test.
    ovcore::lisp::EvalResult evalLisp(const QString& text);

    // What ovutPrintf printed since the start or the last clear.
    QString output() const;
    void clearOutput();

    // Opens a project file as the active project; false (and a test failure) when refused.
    bool openProject(const QString& projectFile);

    // A path in the test's own temporary folder, its folder made.
    QString tempPath(const QString& name) const;
    // The folder of the test program (build/bin).
    static QString programFolder();

    platform::MessageBoxScript& messages() { return *m_messages; }

private:
    OvHost m_host;
    std::string m_output;
    std::unique_ptr<QTemporaryDir> m_temp;
    std::unique_ptr<platform::MessageBoxScript> m_messages;
    QByteArray m_oldDataHome;
    QByteArray m_oldConfigHome;
    QString m_oldCurrent;
};
