// The project as the wire type module asks about it: membership, settings, the database,
// and files that are not projects.
#include "AddonTest.h"

#include "zelpm/ZelPmClientApp.h"

#include <QRegularExpression>

#include <vector>

#include <sys/stat.h>

namespace {

class Project : public AddonTest {
protected:
    ZelPrmProjectId open(const QString& file) {
        QString error;
        EXPECT_TRUE(GetProjectManager()->openProject(file, &error)) << error.toStdString();
        ZelPrmProjectId id;
        EXPECT_TRUE(GetProjectManager()->getActiveProjectID(id));
        return id;
    }
};

TEST_F(Project, AProjectGivesItsNameAndItsDatabasePathOnlyIntoABufferThatFits) {
    const ZelPrmProjectId id = open(demo("demo.zpj"));
    ZelPrmProject* project = GetProjectManager()->getProject(id);
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->name(), QStringLiteral("Demo"));

    // The database path must fit the buffer with its terminator, and nothing is written
    // past the size given.
    const std::wstring expected = wide(demo("demo.db"));
    const int exact = static_cast<int>(expected.size()) + 1;
    std::vector<wchar_t> buffer(exact + 8, L'x');
    ASSERT_NE(PmGetProjectDb(id, buffer.data(), exact, 0), 0);
    EXPECT_EQ(std::wstring(buffer.data()), expected);
    std::fill(buffer.begin(), buffer.end(), L'x');
    EXPECT_EQ(PmGetProjectDb(id, buffer.data(), exact - 1, 0), 0);
    EXPECT_EQ(buffer[0], L'\0');
    EXPECT_EQ(buffer[exact - 1], L'x');
    EXPECT_EQ(PmGetProjectDb(id, nullptr, 260, 0), 0);

    // A project without database or settings has neither.
    const ZelPrmProjectId bare =
        open(writeFile("bare.zpj", R"({"format": "zel-project", "version": 1})"));
    EXPECT_EQ(GetProjectManager()->getProject(bare)->name(), QStringLiteral("bare"));
    QString value = QStringLiteral("left over");
    EXPECT_EQ(GetProjectManager()->getProject(bare)->getMiscProjSettings()->getValue(33, value), 0);
    EXPECT_TRUE(value.isEmpty());
    EXPECT_EQ(PmGetProjectDb(bare, buffer.data(), 260, 0), 0);
}

TEST_F(Project, MembershipComparesAbsoluteCleanPathsWithCase) {
    const QString file = writeFile("p/m.zpj", R"({"format": "zel-project", "version": 1,
                                       "drawings": ["drawings/a.dwg", "./drawings/../b.dwg"]})");
    const QString folder = QFileInfo(file).absolutePath();
    ASSERT_TRUE(QDir().mkpath(folder + "/drawings"));
    const ZelPrmProjectId id = open(file);
    const auto inProject = [&](const QString& drawing) {
        return GetProjectManager()->isFileInProject(wide(drawing).c_str(), id);
    };
    for (const char* drawing :
         {"/drawings/a.dwg", "/b.dwg", "/drawings/../drawings/./a.dwg", "//drawings//a.dwg"})
        EXPECT_TRUE(inProject(folder + drawing)) << drawing;
    ASSERT_TRUE(QDir::setCurrent(folder + "/drawings"));
    EXPECT_TRUE(inProject("a.dwg"));
    EXPECT_TRUE(inProject("../b.dwg"));
    for (const QString& drawing : QStringList{"A.dwg", "b.dwg", folder + "/a.dwg", QString()})
        EXPECT_FALSE(inProject(drawing)) << drawing.toStdString();
    EXPECT_FALSE(GetProjectManager()->isFileInProject(nullptr, id));

    // An id of a project that was closed names nothing.
    const ZelPrmProjectId next = open(file);
    EXPECT_EQ(GetProjectManager()->getProject(id), nullptr);
    EXPECT_FALSE(inProject(folder + "/b.dwg"));
    wchar_t buffer[260] = {L'x'};
    EXPECT_EQ(PmGetProjectDb(id, buffer, 260, 0), 0);
    EXPECT_EQ(buffer[0], L'\0');
    GetProjectManager()->closeProject();
    EXPECT_EQ(GetProjectManager()->getProject(next), nullptr);
    ZelPrmProjectId none;
    EXPECT_FALSE(GetProjectManager()->getActiveProjectID(none));
}

TEST_F(Project, AFileThatIsNoProjectLeavesNoProjectActive) {
    const std::pair<const char*, const char*> cases[] = {
        {"{\"format\": \"zel-project\",\n \"version\": 1,,}", "JSON (.*) on line 2"},
        {"[1, 2]", "no JSON object"},
        {R"({"format": "zel-drawing", "version": 1})", "not a project file"},
        {R"({"format": "zel-project", "version": 2})", "newer"},
        {R"({"format": "zel-project", "version": 1, "drawings": ["a.dwg", 7]})", "drawing 2"},
        {R"({"format": "zel-project", "version": 1, "drawings": ["a.dwg", "./a.dwg"]})",
         "listed twice"},
        {R"({"format": "zel-project", "version": 1, "settings": {"x33": "a"}})",
         "not named by a number"},
        {R"({"format": "zel-project", "version": 1, "settings": {"33": 5}})",
         "setting 33 is a number"},
        {R"({"format": "zel-project", "version": 1, "database": ["x.db"]})",
         "\"database\" must be"},
    };
    // A pipe would wait for a writer for ever, a device give bytes without end.
    ASSERT_EQ(mkfifo(path("pipe.zpj").toLocal8Bit().constData(), 0600), 0);
    std::vector<std::pair<QString, QString>> files = {{path("missing.zpj"), "does not exist"},
                                                      {m_temp.path(), "folder"},
                                                      {path("pipe.zpj"), "not a regular file"},
                                                      {"/dev/zero", "not a regular file"}};
    int n = 0;
    for (const auto& [content, reason] : cases)
        files.emplace_back(writeFile(QStringLiteral("bad%1.zpj").arg(++n), content), reason);
    for (const auto& [file, reason] : files) {
        open(demo("demo.zpj"));
        QString error;
        EXPECT_FALSE(GetProjectManager()->openProject(file, &error)) << file.toStdString();
        EXPECT_TRUE(error.contains(file) && error.contains(QRegularExpression(reason)))
            << error.toStdString();
        ZelPrmProjectId id;
        EXPECT_FALSE(GetProjectManager()->getActiveProjectID(id)) << file.toStdString();
    }
}

} // namespace
