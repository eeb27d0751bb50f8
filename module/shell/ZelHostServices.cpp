#include "shell/ZelHostServices.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/oved.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbIdMapping.h"
#include "ovdb/OvDbIdPair.h"
#include "ovdb/ovut.h"
#include "zeloledb/ZelOleDbCommand.h"
#include "zeloledb/ZelOleDbConnection.h"
#include "zeloledb/ZelOleDbConnectionCache.h"
#include "zeloledb/ZelOleDbHelper.h"
#include "zelpm/ZelMDIGblManager.h"
#include "zelpm/ZelPmClientApp.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QFile>
#include <QFileInfo>

#include <link.h>

#include <memory>
#include <string>

const wchar_t* s_projectDbProvider = L"Microsoft.ACE.OLEDB.12.0";
const wchar_t* s_projectDbProperties = L"Jet OLEDB:Engine Type=5";

namespace {

struct ChainRelease {
    void operator()(resbuf* chain) const { ovutRelRb(chain); }
};
using Chain = std::unique_ptr<resbuf, ChainRelease>;

bool hasActiveDocument() {
    const OvApDocManager* manager = ovDocManagerPtr();
    return manager != nullptr && manager->mdiActiveDocument() != nullptr;
}

// Calls a LISP function; the call chain and the result are released here.
int invoke(Chain call, Chain* result = nullptr) {
    if (!call)
        return RTERROR;
    resbuf* raw = nullptr;
    const int status = ovedInvoke(call.get(), &raw);
    Chain answer(raw);
    if (result != nullptr)
        *result = std::move(answer);
    return status;
}

bool invokeWithoutArguments(const wchar_t* name) {
    if (!hasActiveDocument())
        return false;
    return invoke(Chain(ovutBuildList(RTSTR, name, 0))) == RTNORM;
}

bool isString(const resbuf* link) {
    return link != nullptr && link->restype == RTSTR && link->resval.rstring != nullptr;
}

void print(const QString& text) {
    // The text goes as an argument, so that a percent sign in a statement (LIKE 'A%s') cannot
    // make the host read an argument that is not there. Nothing is added to it.
    ovutPrintf(L"%ls", text.toStdWString().c_str());
}

struct ModuleSearch {
    QString fileName;
    QString path;
};

int findModule(dl_phdr_info* info, size_t, void* data) {
    auto* search = static_cast<ModuleSearch*>(data);
    if (info->dlpi_name == nullptr || info->dlpi_name[0] == '\0')
        return 0;
    const QString path = QFile::decodeName(info->dlpi_name);
    if (QFileInfo(path).fileName() != search->fileName)
        return 0;
    search->path = QFileInfo(path).absoluteFilePath();
    return 1;
}

QString loadedModulePath(const QString& moduleFile) {
    ModuleSearch search{moduleFile, QString()};
    if (!moduleFile.isEmpty())
        dl_iterate_phdr(findModule, &search);
    if (!search.path.isEmpty())
        return search.path;
    // Asked for a module that is not loaded, the system names the program itself.
    return QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
}

} // namespace

bool ReadDwgParams() {
    return invokeWithoutArguments(L"wd_cfg_read_dwg_params");
}

bool RereadDwgParams() {
    return invokeWithoutArguments(L"c:wd_reread_dwg_params");
}

bool IsDrawingLocked(const QString& path) {
    if (!hasActiveDocument())
        return false;
    const std::wstring file = path.toStdWString();
    Chain result;
    if (invoke(Chain(ovutBuildList(RTSTR, L" wdupda_chkdwglockstatus", RTLB, RTSTR, file.c_str(),
                                   RTLE, RTSHORT, 2, RTNIL, 0)),
               &result) != RTNORM)
        return false;
    return result && result->restype == RTLB && isString(result->rbnext);
}

bool UnlockDrawing(const QString& path) {
    if (!hasActiveDocument())
        return false;
    const std::wstring file = path.toStdWString();
    return invoke(Chain(ovutBuildList(RTSTR, L"c:zel_upd_unlock_dwgs", RTLB, RTSTR, file.c_str(),
                                      RTLE, RTSHORT, 1, 0))) == RTNORM;
}

bool GetUserFolder(QString& text) {
    if (hasActiveDocument()) {
        Chain result;
        if (invoke(Chain(ovutBuildList(RTSTR, L"zel_get_var", RTSTR, L"GBL_wd_usr", 0)), &result) ==
                RTNORM &&
            isString(result.get()))
            text = QString::fromWCharArray(result->resval.rstring);
        return true;
    }
    const resbuf* value = GblPm_GetGblValue(L"GBL_wd_usr");
    if (isString(value))
        text = QString::fromWCharArray(value->resval.rstring);
    return true;
}

bool GetLispString(const QString& symbol, QString& text) {
    text.clear();
    if (!hasActiveDocument())
        return false;
    const std::wstring name = symbol.toStdWString();
    resbuf* raw = nullptr;
    const int status = ovedGetSym(name.c_str(), &raw);
    const Chain value(raw);
    if (status != RTNORM || !isString(value.get()))
        return false;
    text = QString::fromWCharArray(value->resval.rstring);
    return true;
}

bool DefineLispSymbol(const QString& name) {
    if (!hasActiveDocument())
        return false;
    const std::wstring expression = QStringLiteral("(vl-orvex-defun '%1)").arg(name).toStdWString();
    return invoke(Chain(ovutBuildList(RTSTR, L"veval-str+", RTSTR, expression.c_str(), 0))) ==
           RTNORM;
}

bool OpenProjectConnection(ZelOleDbConnection** connection) {
    if (connection == nullptr)
        return false;
    *connection = nullptr;

    ZelPrmProjectManager* manager = GetProjectManager();
    if (manager == nullptr)
        return false;
    ZelPrmProjectId id;
    if (!manager->getActiveProjectID(id))
        return false;
    wchar_t buffer[260] = {};
    if (PmGetProjectDb(id, buffer, 260, 0) == 0)
        return false;
    QString connect;
    if (!ZelOleDbHelper::FormatConnectString(connect, QString::fromWCharArray(buffer), nullptr,
                                             nullptr, s_projectDbProvider, s_projectDbProperties,
                                             nullptr))
        return false;

    if (ZelOleDbConnectionCache* cache = ZelOleDbConnectionCache::GetCacheManager()) {
        if (ZelOleDbConnection* cached = cache->Connect(connect, false)) {
            *connection = cached;
            return true;
        }
    }
    auto fresh = std::make_unique<ZelOleDbConnection>();
    if (fresh->OpenFromInitializationString(connect, false) == 0) {
        *connection = fresh.release();
        return true;
    }
    print(fresh->GetErrorInfo(false));
    return false;
}

bool ExecuteProjectQuery(const QString& sql, ZelOleDbCommand& command) {
    ZelOleDbConnection* connection = nullptr;
    if (!OpenProjectConnection(&connection) || connection == nullptr)
        return false;

    command.SetCommandText(sql);
    command.SetConnection(connection);
    const int status = command.Execute();
    ZelOleDbConnectionCache* cache = ZelOleDbConnectionCache::GetCacheManager();
    if (status != ZelOleDbCommand::ExecuteFailed) {
        if (cache != nullptr)
            cache->Cache(connection);
        else
            delete connection;
        return true;
    }

    const QString report =
        (command.GetErrorStatement() + QLatin1Char('\n') + command.GetErrorInfo(false)).toUpper();
    if (!report.contains(QLatin1String("DROP")))
        print(report);
    // The connection does not go back to the cache; one that the cache never held would
    // otherwise be lost.
    if (cache == nullptr || cache->Connect(connection->GetConnectString(), false) != connection)
        delete connection;
    return false;
}

bool GetModuleFolder(QString& folder, const QString& moduleFile) {
    const QString path = loadedModulePath(moduleFile);
    const qsizetype cut = path.lastIndexOf(QLatin1Char('/'));
    folder = cut < 0 ? QString() : path.left(cut);
    return !path.isEmpty();
}

void AppendBackslash(QString& path) {
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
}

bool CloneObjectToOwner(OvDbObjectId& result, OvDbObjectId objectId, OvDbDatabase* sourceDatabase,
                        OvDbObjectId ownerId) {
    OvDbIdMapping mapping;
    OvDbIdPair pair(objectId, OvDbObjectId::kNull, false);
    const OvDbObjectIdArray ids{objectId};
    if (sourceDatabase == nullptr)
        return false;
    const Orvex::ErrorStatus es =
        sourceDatabase->wblockCloneObjects(ids, ownerId, mapping, 1, false);
    mapping.compute(pair);
    result = pair.value();
    return es == Orvex::eOk && !result.isNull();
}
