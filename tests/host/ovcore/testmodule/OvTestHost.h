#pragma once

#include "ovcore/OvHost.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovdb/ovut.h"

#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <string>

// A running host whose command line the test reads.
class OvTestHost : public ::testing::Test {
protected:
    void SetUp() override {
        ovutSetOutputSink([this](std::string_view text) { m_output.append(text); });
        ASSERT_TRUE(m_host.init());
        ovcore::resetOpenObjectViolations();
    }
    // An object left open by a command, message or LISP call fails the test, unless the
    // test expects it.
    void TearDown() override {
        EXPECT_EQ(ovcore::openObjectViolations(), m_expectedViolations);
        m_host.shutdown();
        ovutResetOutputSink();
    }

    QString output() const { return QString::fromUtf8(m_output); }
    void clearOutput() { m_output.clear(); }
    // The lines of the command line that start with `prefix`, in order.
    QStringList linesStartingWith(const QString& prefix) const {
        QStringList lines;
        for (const QString& line : output().split(u'\n')) {
            if (line.startsWith(prefix))
                lines << line;
        }
        return lines;
    }

    // The test modules are built beside the test programs.
    static QString modulePath(const QString& fileName) {
        const QString exe = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
        return QFileInfo(exe).absolutePath() + u'/' + fileName;
    }

    OvHost m_host;
    std::string m_output;
    int m_expectedViolations = 0;
};
