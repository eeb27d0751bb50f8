// (zel_rename_wire_properties "names"): the drafter renames the user properties in a
// dialog; the answer is always a string, the edited list after OK and the given one after
// Cancel, so the caller can store it either way.

#include "lisp/ZelLispDialogs.h"

#include "dialogs/ZelWirePropDlg.h"
#include "lisp/ZelLispArgs.h"
#include "shell/ResourceOverride.h"

#include "ovcore/oved.h"
#include "ovdb/ovut.h"
#include "ovui/OvUi.h"

#include <QApplication>

int zel_rename_wire_properties() {
    const ResourceOverride resources;
    const QString text = zellisp::lispString(ovedGetArgs());
    // A session without windows cannot ask; the caller keeps the names it has.
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        ovutPrintf(L"\nzel_rename_wire_properties: this session shows no windows; the names "
                   L"stay as they were.\n");
        ovedRetStr(text.toStdWString().c_str());
        return 1;
    }
    QWidget* frame = ovedGetOrvexFrame();
    ZelWirePropDlg dialog(frame, text);
    dialog.DoModal();
    ovedRetStr(dialog.GetProps().toStdWString().c_str());
    return 1;
}
