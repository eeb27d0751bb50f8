// The entry points of the colour, linetype and lineweight pickers.
#include "ovui/OvUi.h"

#include "OvColorDialog.h"
#include "OvPickerDialogs.h"
#include "OvUiInput.h"

#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovut.h"

#include <QApplication>

#include <string>

namespace {

// The pickers need a widget application; a core-only batch run says so and cancels.
bool canShowDialogs(const wchar_t* what) {
    if (qobject_cast<QApplication*>(QCoreApplication::instance()))
        return true;
    ovutPrintf(L"\nThe %ls dialog needs a window system; it is cancelled.\n", what);
    return false;
}

} // namespace

int ovedSetColorDialogTrueColor(OvCmColor& color, int allowMeta, const OvCmColor& curLayerColor,
                                int /*tab: the index colours are the only page*/) {
    if (!canShowDialogs(L"colour"))
        return 0;
    OvColorDialog dialog(color, allowMeta != 0, curLayerColor, ovuiDialogParent());
    if (dialog.exec() != QDialog::Accepted)
        return 0;
    color = dialog.color();
    return 1;
}

int ovedLinetypeDialog(const OvDbObjectId& oldId, int includeByBlockByLayer, wchar_t*& newName,
                       OvDbObjectId& newId) {
    if (!canShowDialogs(L"linetype"))
        return 0;
    OvDbDatabase* database = OvDbHostApplicationServices::getRefPtr()->workingDatabase();
    if (!database) {
        ovutPrintf(L"\nThere is no drawing whose linetypes could be chosen.\n");
        return 0;
    }
    OvLinetypeDialog dialog(ovuiLinetypesOf(database, includeByBlockByLayer != 0), oldId,
                            ovuiDialogParent());
    if (dialog.exec() != QDialog::Accepted || !dialog.chosen())
        return 0;
    const OvLinetypeEntry chosen = *dialog.chosen();
    wchar_t* name = nullptr;
    const std::wstring wide = chosen.name.toStdWString();
    if (ovutNewString(wide.c_str(), name) != RTNORM)
        return 0;
    newName = name;
    newId = chosen.id;
    return 1;
}

int ovedLineWeightDialog(OvDb::LineWeight oldWeight, int includeByBlockByLayer,
                         OvDb::LineWeight& newWeight) {
    if (!canShowDialogs(L"lineweight"))
        return 0;
    OvLineWeightDialog dialog(oldWeight, includeByBlockByLayer != 0, ovuiDialogParent());
    if (dialog.exec() != QDialog::Accepted)
        return 0;
    newWeight = dialog.chosen();
    return 1;
}
