// Two processes on one drawing, a holder that is gone, and a run killed while it saves:
// no change is ever lost without an error, and the file is always a whole drawing.

#include "OrvexProcess.h"

#include "ovcore/OvDrawingLock.h"

#include <QDirIterator>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QSysInfo>
#include <QThread>

#include <csignal>

namespace {

class DrawingLocks : public ::testing::Test {
protected:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    // orvex --batch --no-module DRAWING, adding layer `layer` and saving back.
    static QStringList addLayerAndSave(const QString& drawing, const QString& layer) {
        const QString make = QStringLiteral("(entmake (list (cons 0 \"LAYER\") (cons 2 \"%1\")))");
        return {"--batch", "--no-module", drawing, "--eval", make.arg(layer), "--save"};
    }
    // The files of the folder other than those named: stray temporary files of a save.
    QStringList strays(const QStringList& expected) const {
        QStringList found;
        QDirIterator it(m_folder.path(), QDir::Files | QDir::Hidden);
        while (it.hasNext()) {
            const QString name = QFileInfo(it.next()).fileName();
            if (!expected.contains(name))
                found << name;
        }
        return found;
    }
    static qint64 startOf(qint64 pid) {
        const QByteArray stat = OrvexProcess::readFile(QStringLiteral("/proc/%1/stat").arg(pid));
        const QList<QByteArray> fields =
            stat.mid(stat.lastIndexOf(')') + 1).simplified().split(' ');
        return fields.size() > 19 ? fields.at(19).toLongLong() : 0;
    }

    QTemporaryDir m_folder;
    OrvexProcess m_orvex;
};

TEST_F(DrawingLocks, TwoWritersStartedTogetherNeverBothSaveNorLoseAChange) {
    const QString base = OrvexProcess::writeDrawing(path("base.dwg"), "BASE");
    const QString drawing = path("shared.dwg");
    int refusals = 0;
    for (int pair = 0; pair < 100; ++pair) {
        QFile::remove(drawing);
        ASSERT_TRUE(QFile::copy(base, drawing));
        QProcess first;
        QProcess second;
        m_orvex.start(first, addLayerAndSave(drawing, "FIRST"));
        m_orvex.start(second, addLayerAndSave(drawing, "SECOND"));
        const int firstCode = OrvexProcess::finish(first);
        const int secondCode = OrvexProcess::finish(second);
        const QString out =
            QString::fromUtf8(first.readAllStandardOutput() + second.readAllStandardOutput());
        // A run that reports success saved its change; one that lost the lock says so and
        // fails. Both may succeed only one after the other, and then both changes are in.
        EXPECT_TRUE(firstCode == 0 || firstCode == 1) << out.toStdString();
        EXPECT_TRUE(secondCode == 0 || secondCode == 1) << out.toStdString();
        if (firstCode == 0) {
            EXPECT_TRUE(OrvexProcess::hasLayer(drawing, "FIRST")) << "pair " << pair;
        }
        if (secondCode == 0) {
            EXPECT_TRUE(OrvexProcess::hasLayer(drawing, "SECOND")) << "pair " << pair;
        }
        if (firstCode != 0 || secondCode != 0) {
            ++refusals;
            EXPECT_TRUE(out.contains(QLatin1String("opened read-only"))) << out.toStdString();
            EXPECT_TRUE(out.contains(QLatin1String("; error: "))) << out.toStdString();
        }
        EXPECT_FALSE(firstCode != 0 && secondCode != 0) << "one of them always holds the lock";
        EXPECT_FALSE(QFile::exists(ovDrawingLockPath(drawing)));
        if (HasFailure())
            return;
    }
    // Started together, the second nearly always finds the first still at work.
    RecordProperty("refusals", refusals);
    EXPECT_GT(refusals, 0);
}

TEST_F(DrawingLocks, ALockWhoseProcessNumberWasReusedIsStale) {
    const QString drawing = OrvexProcess::writeDrawing(path("site.dwg"), "BASE");
    // The number of a live program, but the record says its holder started at another
    // time: the program that crashed is gone and this one merely has its number.
    QProcess other;
    other.start("sleep", {"30"});
    ASSERT_TRUE(other.waitForStarted());
    const qint64 began = startOf(other.processId());
    ASSERT_GT(began, 0);
    const QJsonObject lock{{"user", "ann"},
                           {"machine", QSysInfo::machineHostName()},
                           {"pid", static_cast<double>(other.processId())},
                           {"start", static_cast<double>(began - 1)},
                           {"time", "2024-05-06T09:30:00.000Z"}};
    OrvexProcess::writeFile(ovDrawingLockPath(drawing), QJsonDocument(lock).toJson());
    EXPECT_TRUE(ovIsDrawingLockStale(*ovReadDrawingLock(drawing)));

    QProcess run;
    m_orvex.start(run, addLayerAndSave(drawing, "MINE"));
    EXPECT_EQ(OrvexProcess::finish(run), 0);
    const QString out = QString::fromUtf8(run.readAllStandardOutput());
    EXPECT_TRUE(out.contains(QLatin1String("which has ended: lock removed"))) << out.toStdString();
    EXPECT_TRUE(OrvexProcess::hasLayer(drawing, "MINE"));
    EXPECT_FALSE(QFile::exists(ovDrawingLockPath(drawing)));

    // The same record with the program's true start time names a live holder.
    QJsonObject live = lock;
    live.insert("start", static_cast<double>(began));
    OrvexProcess::writeFile(ovDrawingLockPath(drawing), QJsonDocument(live).toJson());
    m_orvex.start(run, addLayerAndSave(drawing, "NOT_MINE"));
    EXPECT_EQ(OrvexProcess::finish(run), 1);
    EXPECT_TRUE(QString::fromUtf8(run.readAllStandardOutput()).contains("opened read-only"));
    EXPECT_FALSE(OrvexProcess::hasLayer(drawing, "NOT_MINE"));
    other.kill();
    other.waitForFinished();
}

TEST_F(DrawingLocks, ARunKilledWhileSavingLeavesTheOldOrTheNewDrawing) {
    // Large enough that a save takes a while, so that kills land inside it.
    OvDbDatabase db;
    for (int i = 0; i < 20000; ++i)
        ASSERT_FALSE(ovdbtest::addLayer(db, QStringLiteral("L%1").arg(i)).isNull());
    const QString drawing = path("big.dwg");
    ASSERT_EQ(db.saveAs(drawing.toStdWString().c_str()), Orvex::eOk);

    // How long a whole run takes here, so that the kills spread over all of it.
    QElapsedTimer timer;
    timer.start();
    QProcess run;
    m_orvex.start(run, addLayerAndSave(drawing, "ROUND0"));
    ASSERT_EQ(OrvexProcess::finish(run), 0) << run.readAllStandardOutput().toStdString();
    const int whole = std::max<int>(50, static_cast<int>(timer.elapsed()));

    QByteArray current = OrvexProcess::readFile(drawing);
    int killed = 0;
    for (int round = 1; round <= 24; ++round) {
        const QString layer = QStringLiteral("ROUND%1").arg(round);
        m_orvex.start(run, addLayerAndSave(drawing, layer));
        ASSERT_TRUE(run.waitForStarted());
        QThread::msleep(QRandomGenerator::global()->bounded(whole));
        if (run.state() == QProcess::Running) {
            ::kill(static_cast<pid_t>(run.processId()), SIGKILL);
            ++killed;
        }
        run.waitForFinished();
        const QByteArray after = OrvexProcess::readFile(drawing);
        if (after != current) {
            // Not the old drawing: then the whole new one.
            ASSERT_TRUE(QJsonDocument::fromJson(after).isObject()) << "round " << round;
            ASSERT_TRUE(OrvexProcess::hasLayer(drawing, layer)) << "round " << round;
            current = after;
        }
        ASSERT_EQ(strays({"big.dwg", "big.dwg.ovlock"}), QStringList()) << "round " << round;

        // The next run is not kept from the drawing by the lock the killed one left.
        QProcess next;
        m_orvex.start(next, {"--batch", "--no-module", drawing, "--eval", "(+ 1 2)", "--save"});
        ASSERT_EQ(OrvexProcess::finish(next), 0) << next.readAllStandardOutput().toStdString();
        ASSERT_FALSE(QFile::exists(ovDrawingLockPath(drawing)));
        current = OrvexProcess::readFile(drawing);
    }
    RecordProperty("killed", killed);
    EXPECT_GT(killed, 0);
}

} // namespace
