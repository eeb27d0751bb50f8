#include "shell/ZelDrawingLoad.h"

#include "lisp/ZelLispFunctions.h"
#include "shell/ZelHostServices.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/oved.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovut.h"
#include "zeldefun/ZelQvxBlockRef.h"

#include <QCollator>
#include <QString>

namespace {

struct LispFunction {
    const wchar_t* name;
    int (*handler)();
};

// In number order: the function number is the position, from 1.
constexpr LispFunction kLispFunctions[] = {
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

// The block whose absence tells a drawing that is not the add-on's.
constexpr const char* kWdMBlock = "WD_M";
// The share mode with which the reconciliation opens the drawing by its name.
constexpr int kLoadOpenMode = 64;
constexpr short kLayerNameGroup = 1;

OvDbDatabase* workingDatabase() {
    static OvDbHostApplicationServices* const services = OvDbHostApplicationServices::getRefPtr();
    return services != nullptr ? services->workingDatabase() : nullptr;
}

QString currentDocumentFileName() {
    const OvApDocManager* manager = ovDocManagerPtr();
    const OvApDocument* document = manager != nullptr ? manager->curDocument() : nullptr;
    return document != nullptr ? document->fileName() : QString();
}

// Layer names as the drafter's locale collates them, without regard to case. A collator of
// our own rather than QString's cached one, which lives on for the rest of the process.
bool differNoCase(const QString& a, const QString& b) {
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator.compare(a.toCaseFolded(), b.toCaseFolded()) != 0;
}

QString layerName(const resbuf* link) {
    if (link == nullptr || link->restype != kLayerNameGroup || link->resval.rstring == nullptr)
        return QString();
    return QString::fromWCharArray(link->resval.rstring);
}

// False when the drawing came from a file that has no WD_M block: such a drawing is not
// the add-on's and keeps what it has. A drawing that cannot be opened by its name (never
// saved) is taken as one that has the block.
bool isAddOnDrawing() {
    ZelQvxBlockRef blockRef;
    if (blockRef.open(currentDocumentFileName(), kLoadOpenMode, false) &&
        !blockRef.find(QString::fromLatin1(kWdMBlock), 0, 0)) {
        blockRef.close();
        return false;
    }
    blockRef.close();
    return true;
}

void reconcile(ZelWireTypeRec& store, const resbuf* chain) {
    const QString defaultLayer = layerName(chain);
    const QString currentLayer = layerName(chain->rbnext);
    OvDbObjectId layerId;
    QString drawingLayer;
    if (store.GetCurrentLayer(layerId, drawingLayer) && differNoCase(currentLayer, drawingLayer) &&
        !store.IsWireLayer(drawingLayer) && differNoCase(currentLayer, defaultLayer))
        store.ResetToDefWireType();
}

} // namespace

void RunDrawingLoad() {
    RegisterLispFunctions();
    DefineLispSymbol(QStringLiteral("wd_cfg_read_dwg_params"));
    DefineLispSymbol(QStringLiteral("wd_wirlay_get_dwg_wiretype_settings"));
    ReconcileCurrentWireType();
}

void RegisterLispFunctions() {
    int number = 1;
    for (const LispFunction& function : kLispFunctions) {
        ovedDefun(function.name, number);
        ovedRegFunc(function.handler, number);
        ++number;
    }
}

void ReconcileCurrentWireType() {
    if (!isAddOnDrawing())
        return;

    ZelWireTypeRec store;
    resbuf* chain = nullptr;
    // Opening a drawing must not mark it as changed: whatever the store writes here, the
    // drawing's modified status afterwards is the one it had.
    OvDbDatabase* database = workingDatabase();
    const int modified = ovdbSetDbmod(database, 0);

    if (store.GetCurWireLayerXrec(chain) == Orvex::eKeyNotFound)
        store.AssignDefaultWireType(chain);
    if (chain != nullptr) {
        reconcile(store, chain);
        ovutRelRb(chain);
    }

    ovdbSetDbmod(database, modified);
}
