#include "support/ZelTestHost.h"

#include "lisp/ZelLispFunctions.h"
#include "shell/ResourceOverride.h"
#include "shell/ZelLibraryEntry.h"
#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestProject.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovcore/oved.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovdb.h"
#include "ovdb/ovut.h"
#include "platform/Resources.h"
#include "zeloledb/ZelOleDbConnectionCache.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

QString notation(resbuf* chain) {
    const QString text = chain ? ovcore::lisp::toLispNotation(chain) : QString();
    ovutRelRb(chain);
    return text;
}

void setEnvironment(const char* name, const QByteArray& value) {
    if (value.isNull())
        qunsetenv(name);
    else
        qputenv(name, value);
}

// The module's LISP functions in the order of their numbers.
const std::pair<const wchar_t*, int (*)()> kModuleFunctions[] = {
    {L"zel_wire_type_sel", zel_wire_type_sel},
    {L"zel_get_current_wiretype", zel_get_current_wiretype},
    {L"zel_reset_current_wiretype", zel_reset_current_wiretype},
    {L"zel_get_wiretype_settings", zel_get_wiretype_settings},
    {L"zel_query_wiretype", zel_query_wiretype},
    {L"zel_add_wiretype", zel_add_wiretype},
    {L"zel_edit_wiretype", zel_edit_wiretype},
    {L"zel_rename_wire_properties", zel_rename_wire_properties},
    {L"zel_set_current_wiretype", zel_set_current_wiretype},
    {L"zel_get_active_dwg_wiretype", zel_get_active_dwg_wiretype},
    {L"zel_remove_wiretype", zel_remove_wiretype},
    {L"zel_set_default_wiretype", zel_set_default_wiretype},
    {L"zel_get_default_wiretype", zel_get_default_wiretype},
    {L"zel_get_dwg_wiretype_settings", zel_get_dwg_wiretype_settings},
    {L"zel_get_wiretype_layer_info", zel_get_wiretype_layer_info},
    {L"zel_invoke_importwt_dlg", zel_invoke_importwt_dlg},
};

} // namespace

void ZelTestHost::SetUp() {
    m_temp = std::make_unique<QTemporaryDir>();
    ASSERT_TRUE(m_temp->isValid());
    m_oldCurrent = QDir::currentPath();
    // Null when unset, so that TearDown unsets it again.
    m_oldDataHome = qgetenv("XDG_DATA_HOME");
    m_oldConfigHome = qgetenv("XDG_CONFIG_HOME");
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
    ZelWireTypeRec::ResetKey();
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

void ZelTestHost::defineModuleFunctions() {
    static const int module = 0;
    ovcore::lisp::setActiveModule(&module, nullptr);
    int number = 0;
    for (const auto& [name, handler] : kModuleFunctions) {
        ovedDefun(name, ++number);
        ovedRegFunc(handler, number);
    }
    ovcore::lisp::setActiveModule(nullptr, nullptr);
}

QStringList ZelTestHost::moduleFunctionNames() {
    QStringList names;
    for (const auto& function : kModuleFunctions)
        names << QString::fromWCharArray(function.first);
    return names;
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

QString ZelTestHost::moduleString(unsigned id) {
    const ResourceOverride resources;
    return platform::loadString(id);
}

OvDbDatabase* ZelTestHost::makeDrawing(const QStringList& layers,
                                       const std::optional<QString>& wireLays,
                                       const QString& fileName) {
    OvApDocument* document = newDocument();
    OvDbDatabase* database = document->database();
    for (const QString& layer : layers)
        ZelTestDrawing::addLayer(database, layer);
    m_wdm = wireLays ? ZelTestDrawing::addWdmBlock(database, *wireLays) : OvDbObjectId();
    EXPECT_EQ(ovDocManagerPtr()->saveDocumentAs(document, tempPath(fileName)), Orvex::eOk);
    return database;
}

QString ZelTestHost::wireLays() const {
    return ZelTestDrawing::attributeText(m_wdm, QStringLiteral("WIRELAYS"));
}

void ZelTestHost::openDefaultNamesProject() {
    openProject(ZelTestProject::write(tempPath("project"), "defaults", {}, QString()));
}

void ZelTestHost::openWireTypeProject(const char* inserts) {
    const QByteArray sql =
        QByteArray(
            "CREATE TABLE WIRETYPE (DWGIX TEXT, LAYNAME TEXT, WIRECOLOR TEXT, WIRESIZE TEXT,"
            " FLAG INTEGER, USERCOUNT INTEGER);"
            "CREATE TABLE WIRETYPE_USR (DWGIX TEXT, LAYNAME TEXT, USER INTEGER, VALUE TEXT);") +
        inserts;
    const QString database = ZelTestProject::writeDatabase(tempPath("project.db"), sql.constData());
    openProject(ZelTestProject::write(tempPath("p"), "p", {}, database));
}

OvDbObjectId ZelTestHost::layerId(OvDbDatabase* database, const QString& name) {
    OvDbLayerTable* table = nullptr;
    OvDbObjectId id;
    if (database->getLayerTable(table, OvDb::kForRead) == Orvex::eOk) {
        table->getIdAt(name, id);
        table->close();
    }
    return id;
}

QString ZelTestHost::clayerName(OvDbDatabase* database) {
    OvDbLayerTableRecord* layer = nullptr;
    if (ovdbOpenObject(layer, database->clayer(), OvDb::kForRead) != Orvex::eOk)
        return QString();
    const QString name = layer->name();
    layer->close();
    return name;
}

QString ZelTestHost::wireRecord(OvDbDatabase* database, const QString& layer) {
    return notation(
        ZelTestDrawing::extensionRecord(layerId(database, layer), QStringLiteral("ZEL_WIRETYPE")));
}

QString ZelTestHost::currentRecord(OvDbDatabase* database) {
    resbuf* chain = ZelTestDrawing::namedRecord(database, QStringLiteral("ZEL_WIRETYPE"),
                                                QStringLiteral("CURRENT_WIRELAY"));
    if (chain == nullptr)
        return QStringLiteral("none");
    QStringList parts;
    for (const resbuf* link = chain; link != nullptr; link = link->rbnext) {
        if (link->restype == 1)
            parts << QString::fromWCharArray(link->resval.rstring);
        else if (link->restype == 290)
            parts << QString::number(link->resval.rint);
    }
    ovutRelRb(chain);
    return parts.join(u'|');
}

void ZelTestHost::setCurrentRecord(OvDbDatabase* database, const QString& defaultLayer,
                                   const QString& currentLayer, bool makeAllValidWire,
                                   const QString& format) {
    resbuf* chain = ovutBuildList(1, defaultLayer.toStdWString().c_str(), 1,
                                  currentLayer.toStdWString().c_str(), 1,
                                  format.toStdWString().c_str(), 290, makeAllValidWire, 0);
    EXPECT_EQ(ZelTestDrawing::setNamedRecord(database, QStringLiteral("ZEL_WIRETYPE"),
                                             QStringLiteral("CURRENT_WIRELAY"), chain),
              Orvex::eOk);
    ovutRelRb(chain);
}

const WireLayerRec* ZelTestHost::record(ZelWireTypeRec& store, const QString& layer) {
    for (const auto& entry : store.GetCurDwgWireTypeInfo()) {
        if (entry.second->layerName.compare(layer, Qt::CaseInsensitive) == 0)
            return entry.second;
    }
    return nullptr;
}

QStringList ZelTestHost::layerNames(const std::map<int, WireLayerRec*>& records) {
    QStringList names;
    for (const auto& entry : records)
        names << entry.second->layerName;
    return names;
}

Orvex::ErrorStatus ZelTestHost::addWireType(ZelWireTypeRec& store, const QString& name,
                                            std::vector<QString> names, std::vector<QString> values,
                                            long key) {
    return store.AddNewWireType(key, name, names, values, QString(), QString(), "WIRE", OvCmColor(),
                                OvDbObjectId(), OvDb::kLnWtByLwDefault, 0, true);
}
