#include "zelpm/ZelMDIGblManager.h"
#include "zelpm/ZelPmClientApp.h"
#include "zelpm/ZelPrmProjectManager.h"

#include "ovdb/ovut.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const QString kDemoDir = QStringLiteral(ZEL_DEMO_DIR);
const QString kDemoProject = kDemoDir + QStringLiteral("/demo.zpj");

std::wstring wide(const QString& text) {
    return text.toStdWString();
}

QString chainText(const resbuf* chain) {
    if (!chain || chain->restype != RTSTR || !chain->resval.rstring)
        return QString();
    return QString::fromWCharArray(chain->resval.rstring);
}

class ProjectTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_temp.isValid());
        GetProjectManager()->closeProject();
    }
    void TearDown() override {
        GetProjectManager()->closeProject();
        QDir::setCurrent(m_oldCurrent);
    }

    QString writeFile(const QString& name, const QByteArray& text) {
        const QString path = m_temp.filePath(name);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path;
    }

    ZelPrmProjectId openDemo() {
        QString error;
        EXPECT_TRUE(GetProjectManager()->openProject(kDemoProject, &error)) << error.toStdString();
        ZelPrmProjectId id;
        EXPECT_TRUE(GetProjectManager()->getActiveProjectID(id));
        return id;
    }

    QTemporaryDir m_temp;
    QString m_oldCurrent = QDir::currentPath();
};

TEST_F(ProjectTest, DemoProjectHasItsDrawingsSettingsAndDatabase) {
    const ZelPrmProjectId id = openDemo();
    ZelPrmProject* project = GetProjectManager()->getProject(id);
    ASSERT_NE(project, nullptr);
    EXPECT_EQ(project->name(), QStringLiteral("Demo"));
    EXPECT_EQ(project->drawings(),
              QStringList({kDemoDir + QStringLiteral("/drawings/demo.dwg"),
                           kDemoDir + QStringLiteral("/drawings/import.dwg")}));

    QString text = QStringLiteral("left over");
    EXPECT_EQ(project->getMiscProjSettings()->getValue(33, text), 1);
    EXPECT_EQ(text, QStringLiteral("Insulation,\"Voltage, max\",Temperature"));
    EXPECT_EQ(project->getMiscProjSettings()->getValue(34, text), 0);
    EXPECT_TRUE(text.isEmpty());

    wchar_t buffer[260] = {};
    ASSERT_NE(PmGetProjectDb(id, buffer, 260, 0), 0);
    EXPECT_EQ(QString::fromWCharArray(buffer), kDemoDir + QStringLiteral("/demo.db"));
}

TEST_F(ProjectTest, MembershipComparesAbsoluteCleanPathsWithCase) {
    const QString path = writeFile(QStringLiteral("p/m.zpj"),
                                   R"({"format": "zel-project", "version": 1,
                                       "drawings": ["drawings/a.dwg", "./drawings/../b.dwg"]})");
    const QString folder = QFileInfo(path).absolutePath();
    ASSERT_TRUE(QDir().mkpath(folder + QStringLiteral("/drawings")));
    QString error;
    ASSERT_TRUE(GetProjectManager()->openProject(path, &error)) << error.toStdString();
    ZelPrmProjectId id;
    ASSERT_TRUE(GetProjectManager()->getActiveProjectID(id));
    ZelPrmProjectManager* manager = GetProjectManager();
    const auto inProject = [&](const QString& file) {
        return manager->isFileInProject(wide(file).c_str(), id);
    };
    EXPECT_TRUE(inProject(folder + QStringLiteral("/drawings/a.dwg")));
    EXPECT_TRUE(inProject(folder + QStringLiteral("/b.dwg")));
    EXPECT_TRUE(inProject(folder + QStringLiteral("/drawings/../drawings/./a.dwg")));
    EXPECT_TRUE(inProject(folder + QStringLiteral("//drawings//a.dwg")));
    ASSERT_TRUE(QDir::setCurrent(folder + QStringLiteral("/drawings")));
    EXPECT_TRUE(inProject(QStringLiteral("a.dwg")));
    EXPECT_TRUE(inProject(QStringLiteral("../b.dwg")));

    EXPECT_FALSE(inProject(QStringLiteral("A.dwg")));
    EXPECT_FALSE(inProject(QStringLiteral("b.dwg")));
    EXPECT_FALSE(inProject(folder + QStringLiteral("/a.dwg")));
    EXPECT_FALSE(inProject(QString()));
    EXPECT_FALSE(manager->isFileInProject(nullptr, id));
}

TEST_F(ProjectTest, AnIdOfAClosedProjectNamesNothing) {
    const ZelPrmProjectId first = openDemo();
    const ZelPrmProjectId second = openDemo();
    EXPECT_FALSE(first == second);
    ZelPrmProjectManager* manager = GetProjectManager();
    EXPECT_EQ(manager->getProject(first), nullptr);
    EXPECT_NE(manager->getProject(second), nullptr);
    const std::wstring drawing = wide(kDemoDir + QStringLiteral("/drawings/demo.dwg"));
    EXPECT_FALSE(manager->isFileInProject(drawing.c_str(), first));

    wchar_t buffer[260] = {L'x'};
    EXPECT_EQ(PmGetProjectDb(first, buffer, 260, 0), 0);
    EXPECT_EQ(buffer[0], L'\0');

    manager->closeProject();
    ZelPrmProjectId none;
    EXPECT_FALSE(manager->getActiveProjectID(none));
    EXPECT_EQ(manager->getProject(second), nullptr);
    EXPECT_EQ(manager->getProject(ZelPrmProjectId()), nullptr);
}

TEST_F(ProjectTest, DatabasePathMustFitTheBufferWithItsTerminator) {
    const ZelPrmProjectId id = openDemo();
    const std::wstring expected = wide(kDemoDir + QStringLiteral("/demo.db"));
    const int exact = static_cast<int>(expected.size()) + 1;

    std::vector<wchar_t> buffer(exact + 8, L'x');
    ASSERT_NE(PmGetProjectDb(id, buffer.data(), exact, 0), 0);
    EXPECT_EQ(std::wstring(buffer.data()), expected);

    std::fill(buffer.begin(), buffer.end(), L'x');
    EXPECT_EQ(PmGetProjectDb(id, buffer.data(), exact - 1, 0), 0);
    EXPECT_EQ(buffer[0], L'\0');
    EXPECT_EQ(buffer[exact - 1], L'x') << "nothing is written past the size given";

    EXPECT_EQ(PmGetProjectDb(id, nullptr, 260, 0), 0);
    EXPECT_EQ(PmGetProjectDb(id, buffer.data(), 0, 0), 0);
}

TEST_F(ProjectTest, ProjectWithoutDatabaseOrSettings) {
    const QString path =
        writeFile(QStringLiteral("bare.zpj"), R"({"format": "zel-project", "version": 1})");
    ASSERT_TRUE(GetProjectManager()->openProject(path));
    ZelPrmProjectId id;
    ASSERT_TRUE(GetProjectManager()->getActiveProjectID(id));
    ZelPrmProject* project = GetProjectManager()->getProject(id);
    EXPECT_EQ(project->name(), QStringLiteral("bare"));
    QString text;
    EXPECT_EQ(project->getMiscProjSettings()->getValue(33, text), 0);
    wchar_t buffer[260];
    EXPECT_EQ(PmGetProjectDb(id, buffer, 260, 0), 0);
}

TEST_F(ProjectTest, UnreadableProjectFileLeavesNoProjectActive) {
    struct Case {
        const char* file;
        QByteArray text; // null: the file is not written
        const char* expected;
    };
    const std::vector<Case> cases = {
        {"missing.zpj", QByteArray(), "does not exist"},
        {"bad.zpj", "{\"format\": \"zel-project\",\n \"version\": 1,,}", "JSON (.*) on line 2"},
        {"list.zpj", "[1, 2]", "no JSON object"},
        {"drawing.zpj", R"({"format": "zel-project", "version": 1, "drawings": ["a.dwg", 7]})",
         "drawing 2"},
        {"format.zpj", R"({"format": "zel-drawing", "version": 1})", "not a project file"},
        {"newer.zpj", R"({"format": "zel-project", "version": 2})", "newer"},
        {"drawings.zpj", R"({"format": "zel-project", "version": 1, "drawings": "a.dwg"})",
         "\"drawings\" must be a list"},
        {"twice.zpj",
         R"({"format": "zel-project", "version": 1, "drawings": ["a.dwg", "./a.dwg"]})",
         "listed twice"},
        {"key.zpj", R"({"format": "zel-project", "version": 1, "settings": {"x33": "a"}})",
         "not named by a number"},
        {"value.zpj", R"({"format": "zel-project", "version": 1, "settings": {"33": 5}})",
         "setting 33 is a number"},
        {"database.zpj", R"({"format": "zel-project", "version": 1, "database": ["x.db"]})",
         "\"database\" must be"},
    };
    for (const Case& c : cases) {
        openDemo();
        const QString path = c.text.isNull() ? m_temp.filePath(QLatin1String(c.file))
                                             : writeFile(QLatin1String(c.file), c.text);
        QString error;
        EXPECT_FALSE(GetProjectManager()->openProject(path, &error)) << c.file;
        EXPECT_TRUE(error.contains(path)) << error.toStdString();
        EXPECT_TRUE(error.contains(QRegularExpression(QLatin1String(c.expected))))
            << error.toStdString();
        ZelPrmProjectId id;
        EXPECT_FALSE(GetProjectManager()->getActiveProjectID(id)) << c.file;
    }
    QString error;
    EXPECT_FALSE(GetProjectManager()->openProject(m_temp.path(), &error));
    EXPECT_TRUE(error.contains(QLatin1String("folder"))) << error.toStdString();
}

class GlobalValueTest : public ProjectTest {
protected:
    void SetUp() override {
        ProjectTest::SetUp();
        m_oldDataHome = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_temp.filePath(QStringLiteral("data"))));
    }
    void TearDown() override {
        qputenv("XDG_DATA_HOME", m_oldDataHome);
        GblPm_SetGblValue(L"GBL_wd_usr", nullptr);
        ProjectTest::TearDown();
    }
    QByteArray m_oldDataHome;
};

TEST_F(GlobalValueTest, UserFolderIsMadeUnlessSet) {
    const QString expected = m_temp.filePath(QStringLiteral("data/Zel/User/"));
    ASSERT_FALSE(QFileInfo::exists(expected));
    EXPECT_EQ(chainText(GblPm_GetGblValue(L"gbl_WD_usr")), expected);
    EXPECT_TRUE(QFileInfo(expected).isDir());

    const QString own = m_temp.filePath(QStringLiteral("mine/"));
    resbuf* value = ovutBuildList(RTSTR, wide(own).c_str(), 0);
    ASSERT_TRUE(GblPm_SetGblValue(L"GBL_wd_usr", value));
    ovutRelRb(value);
    EXPECT_EQ(chainText(GblPm_GetGblValue(L"GBL_wd_usr")), own);
    EXPECT_TRUE(QFileInfo(own).isDir());
}

TEST_F(GlobalValueTest, ProjectFileFollowsTheActiveProject) {
    const resbuf* none = GblPm_GetGblValue(L"GBL_wd_prj");
    ASSERT_NE(none, nullptr);
    EXPECT_EQ(none->restype, RTNIL);

    openDemo();
    EXPECT_EQ(chainText(GblPm_GetGblValue(L"GBL_wd_prj")), kDemoProject);

    resbuf* value = ovutBuildList(RTSTR, L"/elsewhere.zpj", 0);
    EXPECT_FALSE(GblPm_SetGblValue(L"GBL_wd_prj", value));
    ovutRelRb(value);
    EXPECT_EQ(chainText(GblPm_GetGblValue(L"GBL_wd_prj")), kDemoProject);
}

TEST_F(GlobalValueTest, OtherNamesHoldWhatWasSet) {
    EXPECT_EQ(GblPm_GetGblValue(L"GBL_never_set"), nullptr);
    EXPECT_EQ(GblPm_GetGblValue(nullptr), nullptr);
    EXPECT_FALSE(GblPm_SetGblValue(L"", nullptr));

    resbuf* value = ovutBuildList(RTLB, RTSTR, L"a", RTSHORT, 2, RTLE, 0);
    ASSERT_TRUE(GblPm_SetGblValue(L"GBL_test", value));
    ovutRelRb(value); // the manager keeps a copy of its own
    const resbuf* got = GblPm_GetGblValue(L"gbl_TEST");
    ASSERT_NE(got, nullptr);
    EXPECT_EQ(got->restype, RTLB);
    EXPECT_EQ(chainText(got->rbnext), QStringLiteral("a"));
    EXPECT_EQ(got->rbnext->rbnext->resval.rint, 2);

    EXPECT_TRUE(GblPm_SetGblValue(L"GBL_test", nullptr));
    EXPECT_EQ(GblPm_GetGblValue(L"GBL_test"), nullptr);
}

} // namespace
