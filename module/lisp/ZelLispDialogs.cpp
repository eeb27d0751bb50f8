#include "lisp/ZelLispDialogs.h"

#include "dialogs/ZelEditWTDlg.h"
#include "shell/ResourceOverride.h"
#include "shell/ZelHostServices.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvApDocument.h"
#include "ovdb/ovut.h"
#include "ovui/OvUi.h"
#include "zeldefun/ZelQvxBlockRef.h"

#include <QApplication>

void WireTypeSelCommand() {
    // A host without a widget application (a console program) cannot show a dialog: it is
    // told so, and nothing changes.
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        ovutPrintf(L"\nWireTypeSel1: the wire type dialogs need a window system, and this "
                   L"program runs without one.\n");
        return;
    }
    const ResourceOverride resources;
    QWidget* frame = ovedGetOrvexFrame();

    // The add-on's picture of the drawing must be there before the dialog writes
    // WIRELAYS: a drawing without a WD_M block is read once more, and the dialog opens
    // whatever that gives.
    {
        ZelQvxBlockRef reference;
        const OvApDocManager* documents = ovDocManagerPtr();
        const OvApDocument* document = documents ? documents->curDocument() : nullptr;
        const QString fileName = document ? document->fileName() : QString();
        if (reference.open(fileName, 64, false) && !reference.find(QStringLiteral("WD_M"), 0, 0))
            ReadDwgParams();
        reference.close();
    }

    ZelEditWTDlg dialog(frame, false);
    dialog.DoModal();
}
