#include "ZelProjectFunctions.h"

#include "ZelChainBuilder.h"
#include "ZelLispArgs.h"
#include "ZelLispReturn.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/oved.h"
#include "ovdb/ovut.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <string>

namespace {

ZelPrmProject* activeProject() {
    ZelPrmProjectManager* manager = GetProjectManager();
    return manager ? manager->activeProject() : nullptr;
}

} // namespace

void zelPutProjectSymbol() {
    const ZelPrmProject* project = activeProject();
    if (!project) {
        ovedPutSym(L"GBL_wd_prj", nullptr);
        return;
    }
    ZelChainBuilder chain;
    resbuf* value = chain.string(project->filePath()).take();
    ovedPutSym(L"GBL_wd_prj", value);
    ovutRelRb(value);
}

void zelPutProjectSymbolEverywhere() {
    OvApDocManager* manager = ovDocManagerPtr();
    OvApDocument* current = manager ? manager->curDocument() : nullptr;
    // LISP symbols live in each document's own environment: visit each, then come back.
    if (current) {
        for (OvApDocument* doc : manager->documents()) {
            if (doc != current && manager->setCurDocument(doc) == Orvex::eOk)
                zelPutProjectSymbol();
        }
        manager->setCurDocument(current);
    }
    zelPutProjectSymbol();
}

int zelProjectOpen() {
    const ZelLispArgs args(ovedGetArgs());
    if (args.count() != 1 || !args.isString(0) || args.string(0).trimmed().isEmpty())
        return zelComplain(L"zel_project_open", QStringLiteral("give the project file as a text"));
    ZelPrmProjectManager* manager = GetProjectManager();
    QString error;
    const bool opened = manager && manager->openProject(args.string(0), &error);
    // A failed open closes the project that was active, so the symbol changes either way.
    zelPutProjectSymbolEverywhere();
    if (!opened)
        return zelComplain(L"zel_project_open", error);
    return zelRetT();
}

int zelProjectClose() {
    if (ZelPrmProjectManager* manager = GetProjectManager())
        manager->closeProject();
    zelPutProjectSymbolEverywhere();
    return zelRetT();
}

int zelProjectActive() {
    const ZelPrmProject* project = activeProject();
    return project ? zelRetString(project->filePath()) : zelRetNil();
}

int zelProjectSetting() {
    const ZelLispArgs args(ovedGetArgs());
    if (args.count() != 1 || !args.isInteger(0))
        return zelComplain(L"zel_project_setting",
                           QStringLiteral("give the number of the setting, a whole number"));
    const ZelPrmProject* project = activeProject();
    if (!project)
        return zelRetNil();
    QString text;
    if (project->getMiscProjSettings()->getValue(args.integer(0), text) != 1)
        return zelRetNil();
    return zelRetString(text);
}

int zelProjectDrawings() {
    const ZelPrmProject* project = activeProject();
    if (!project || project->drawings().isEmpty())
        return zelRetNil();
    ZelChainBuilder chain;
    chain.beginList();
    for (const QString& drawing : project->drawings())
        chain.string(drawing);
    chain.endList();
    return zelRetOwnedList(chain.take());
}
