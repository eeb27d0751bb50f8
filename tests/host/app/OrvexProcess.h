#pragma once

#include "../ovdb/OvdbBuild.h"

#include "ovdb/ovdb.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Runs the built orvex as a process. The add-on folder is an empty one of the test's own
// unless a test names another, so that the build tree's add-on does not mix in.
class OrvexProcess {
public:
    struct Result {
        int exitCode = -1;
        QString out;
        QString err;
    };

    OrvexProcess() : m_environment(QProcessEnvironment::systemEnvironment()) {
        setAddonFolder(m_emptyAddon.path());
    }

    void setProgram(const QString& program) { m_program = program; }
    void setAddonFolder(const QString& folder) {
        m_environment.insert(QStringLiteral("ORVEX_ADDON_DIR"), folder);
    }
    void setEnvironment(const QString& name, const QString& value) {
        m_environment.insert(name, value);
    }

    // Starts orvex without waiting, for a test that runs several at once or stops one.
    void start(QProcess& process, const QStringList& arguments) const {
        process.setProcessEnvironment(m_environment);
        process.start(m_program, arguments);
    }
    // Waits for a started orvex; its exit status, or -1 when it crashed or hung.
    static int finish(QProcess& process) {
        if (!process.waitForFinished(180000)) { // a sanitizer build starts slowly
            process.kill();
            process.waitForFinished();
            ADD_FAILURE() << "orvex did not finish: "
                          << process.arguments().join(u' ').toStdString();
            return -1;
        }
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    Result run(const QStringList& arguments) const {
        QProcess process;
        start(process, arguments);
        Result result;
        result.exitCode = finish(process);
        result.out = QString::fromUtf8(process.readAllStandardOutput());
        result.err = QString::fromUtf8(process.readAllStandardError());
        return result;
    }

    // orvex --batch --no-module ARGUMENTS, the usual run of a test.
    static Result batch(const QStringList& arguments) {
        return OrvexProcess().run(QStringList{"--batch", "--no-module"} + arguments);
    }
    static QStringList evals(const QStringList& expressions) {
        QStringList arguments;
        for (const QString& expression : expressions)
            arguments << QStringLiteral("--eval") << expression;
        return arguments;
    }
    // The lines of the output that start with `prefix`, in order.
    static QStringList linesOf(const QString& out, const QString& prefix) {
        QStringList lines = out.split(u'\n');
        lines.removeIf([&](const QString& line) { return !line.startsWith(prefix); });
        return lines;
    }

    static QString testModule() { return QStringLiteral(ORVEX_TEST_MODULE); }

    static QString writeFile(const QString& path, const QByteArray& text) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile out(path);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly)) << path.toStdString();
        out.write(text);
        return path;
    }
    static QByteArray readFile(const QString& path) {
        QFile in(path);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }

    // A new drawing with one more layer, saved by the host's own database.
    static QString writeDrawing(const QString& path, const QString& layerName) {
        OvDbDatabase db;
        EXPECT_FALSE(ovdbtest::addLayer(db, layerName).isNull());
        EXPECT_EQ(db.saveAs(path.toStdWString().c_str()), Orvex::eOk);
        return path;
    }
    // Whether a drawing file holds a layer of that name, as the host writes it.
    static bool hasLayer(const QString& path, const QString& layerName) {
        return readFile(path).contains("\"name\":\"" + layerName.toUtf8() + "\"");
    }

private:
    QString m_program = QStringLiteral(ORVEX_PROGRAM);
    QProcessEnvironment m_environment;
    QTemporaryDir m_emptyAddon;
};
