#include "support/ZelTestHost.h"

#include "shell/ZelLibraryEntry.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"
#include "zeloledb/ZelOleDbConnectionCache.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

void setEnvironment(const char* name, const QByteArray& value) {
    if (value.isNull())
        qunsetenv(name);
    else
        qputenv(name, value);
}

} // namespace

void ZelTestHost::SetUp() {
    m_temp = std::make_unique<QTemporaryDir>();
    ASSERT_TRUE(m_temp->isValid());
    m_oldCurrent = QDir::currentPath();
    m_oldDataHome = qgetenv("XDG_DATA_HOME");
    m_oldConfigHome = qgetenv("XDG_CONFIG_HOME");
    if (!qEnvironmentVariableIsSet("XDG_DATA_HOME"))
        m_oldDataHome = QByteArray();
    if (!qEnvironmentVariableIsSet("XDG_CONFIG_HOME"))
        m_oldConfigHome = QByteArray();
    qputenv("XDG_DATA_HOME", QFile::encodeName(tempPath(QStringLiteral("data"))));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(tempPath(QStringLiteral("config"))));
    QDir().mkpath(tempPath(QStringLiteral("data")));
    QDir().mkpath(tempPath(QStringLiteral("config")));

    ovutSetOutputSink([this](std::string_view text) { m_output.append(text); });
    m_messages = std::make_unique<platform::MessageBoxScript>();
    ASSERT_TRUE(m_host.init());
    ovcore::resetOpenObjectViolations();
    ovdbTakeProtocolViolations();
    GetProjectManager()->closeProject();
    ASSERT_TRUE(ZelAttachResources(programFolder()))
        << "ZelWireTypeRes.so not found beside the test program";
}

void ZelTestHost::TearDown() {
    EXPECT_EQ(ovdbOpenObjectCount(), 0u)
        << "left open: " << ovdbOpenObjectDescriptions().join(QStringLiteral("; ")).toStdString();
    EXPECT_EQ(ovcore::openObjectViolations(), 0) << "a call into the module left objects open";
    const QStringList violations = ovdbTakeProtocolViolations();
    EXPECT_TRUE(violations.isEmpty()) << violations.join(QStringLiteral("; ")).toStdString();

    GetProjectManager()->closeProject();
    ZelOleDbConnectionCache::GetCacheManager()->Clear();
    m_host.shutdown();
    ZelDetachResources();
    m_messages.reset();
    ovutResetOutputSink();
    setEnvironment("XDG_DATA_HOME", m_oldDataHome);
    setEnvironment("XDG_CONFIG_HOME", m_oldConfigHome);
    QDir::setCurrent(m_oldCurrent);
    m_temp.reset();
}

OvApDocument* ZelTestHost::newDocument() {
    OvApDocument* created = nullptr;
    const Orvex::ErrorStatus es = ovDocManagerPtr()->newDocument(QString(), &created);
    EXPECT_EQ(es, Orvex::eOk) << ovDocManagerPtr()->lastErrorMessage().toStdString();
    return created;
}

OvApDocument* ZelTestHost::openDocument(const QString& path) {
    OvApDocument* opened = nullptr;
    const Orvex::ErrorStatus es = ovDocManagerPtr()->openDocument(path, &opened);
    EXPECT_EQ(es, Orvex::eOk) << ovDocManagerPtr()->lastErrorMessage().toStdString();
    return opened;
}

OvApDocument* ZelTestHost::activeDocument() const {
    return ovDocManagerPtr()->mdiActiveDocument();
}

OvDbDatabase* ZelTestHost::workingDatabase() const {
    return OvDbHostApplicationServices::getRefPtr()->workingDatabase();
}

void ZelTestHost::closeAllDocuments() {
    EXPECT_EQ(ovDocManagerPtr()->closeAllDocuments(), Orvex::eOk);
}

ovcore::lisp::EvalResult ZelTestHost::evalLisp(const QString& text) {
    ovcore::lisp::EvalResult result = ovcore::lisp::evalString(text);
    EXPECT_TRUE(result.ok) << text.toStdString() << ": " << result.error.toStdString();
    return result;
}

QString ZelTestHost::output() const {
    return QString::fromUtf8(m_output);
}

void ZelTestHost::clearOutput() {
    m_output.clear();
}

bool ZelTestHost::openProject(const QString& projectFile) {
    QString error;
    const bool opened = GetProjectManager()->openProject(projectFile, &error);
    EXPECT_TRUE(opened) << error.toStdString();
    return opened;
}

QString ZelTestHost::tempPath(const QString& name) const {
    const QString path = m_temp->filePath(name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    return path;
}

QString ZelTestHost::programFolder() {
    return QFileInfo(QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget()).absolutePath();
}
