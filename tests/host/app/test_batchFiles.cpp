// Drawings and the project in a batch run: which drawing is active, what is saved where,
// and files that cannot be read or written.

#include "OrvexProcess.h"

#include "ovcore/OvDrawingLock.h"

#include <QJsonDocument>

namespace {

class OrvexFiles : public ::testing::Test {
protected:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

TEST_F(OrvexFiles, SaveAsWritesTheFirstDrawingThatOpenedAndBadOnesAreReported) {
    const QString notes = OrvexProcess::writeFile(path("notes.dwg"), "just notes\n");
    const QString first = OrvexProcess::writeDrawing(path("first.dwg"), "FIRST");
    const QString second = OrvexProcess::writeDrawing(path("second.dwg"), "SECOND");
    const auto r = OrvexProcess::batch(
        {path("absent.dwg"), notes, first, second, first, "--save-as", path("out.dwg")});
    EXPECT_EQ(r.exitCode, 1) << "for the absent drawing and the notes";
    EXPECT_TRUE(r.out.contains(QLatin1String("absent.dwg"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QLatin1String("notes.dwg"))) << r.out.toStdString();
    EXPECT_EQ(OrvexProcess::readFile(notes), QByteArray("just notes\n"));
    EXPECT_TRUE(OrvexProcess::hasLayer(path("out.dwg"), "FIRST"));
    EXPECT_FALSE(OrvexProcess::hasLayer(path("out.dwg"), "SECOND"));
    // Named twice, opened once: no read-only second copy. Every lock went with the run.
    EXPECT_FALSE(r.out.contains(QLatin1String("read-only"))) << r.out.toStdString();
    for (const QString& file : {first, second, path("out.dwg")})
        EXPECT_FALSE(QFile::exists(ovDrawingLockPath(file))) << file.toStdString();
}

TEST_F(OrvexFiles, SaveWritesEveryDrawingBackToItsFile) {
    // Another JSON layout than the host's, so that the save shows in the files.
    const QStringList files = {OrvexProcess::writeDrawing(path("a.dwg"), "LA"),
                               OrvexProcess::writeDrawing(path("b.dwg"), "LB")};
    for (const QString& file : files)
        OrvexProcess::writeFile(file,
                                QJsonDocument::fromJson(OrvexProcess::readFile(file)).toJson());
    const auto r = OrvexProcess::batch(QStringList{"--save"} + files);
    EXPECT_EQ(r.exitCode, 0) << r.out.toStdString();
    for (const QString& file : files) {
        EXPECT_TRUE(OrvexProcess::readFile(file).startsWith("{\"format\":\"orvex-drawing\","));
        EXPECT_TRUE(OrvexProcess::hasLayer(file, file.endsWith("a.dwg") ? "LA" : "LB"));
    }
}

TEST_F(OrvexFiles, SavesThatFailGiveExit1WithAMessage) {
    const QString source = OrvexProcess::writeDrawing(path("source.dwg"), "SRC");
    auto r = OrvexProcess::batch({source, "--save-as", path("no-such-folder/out.dwg")});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.out.contains(QLatin1String("; error: "))) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QLatin1String("out.dwg"))) << r.out.toStdString();

    // Held by another live process (this test): opened read-only, not saved back.
    OvDrawingLock held;
    ASSERT_EQ(held.acquire(source), OvDrawingLock::Outcome::Taken);
    const QByteArray before = OrvexProcess::readFile(source);
    r = OrvexProcess::batch({source, "--save"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.out.contains(QLatin1String("; error: "))) << r.out.toStdString();
    EXPECT_EQ(OrvexProcess::readFile(source), before);
    EXPECT_TRUE(ovReadDrawingLock(source).has_value()) << "the other process's lock stays";
    held.release();
}

TEST_F(OrvexFiles, AProjectThatCannotBeReadIsReportedAndTheRunGoesOn) {
    const auto r = OrvexProcess::batch({"--project",
                                        OrvexProcess::writeFile(path("bad.zpj"), "{ \"format\": "),
                                        "--eval", "(+ 1 2)"});
    EXPECT_EQ(r.exitCode, 1);
    EXPECT_TRUE(r.out.startsWith(QLatin1String("; error: "))) << r.out.toStdString();
    EXPECT_TRUE(r.out.contains(QLatin1String("bad.zpj"))) << r.out.toStdString();
    EXPECT_TRUE(r.out.endsWith(QLatin1String("\n3\n"))) << r.out.toStdString();
}

} // namespace
