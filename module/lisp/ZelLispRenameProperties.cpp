// (zel_rename_wire_properties "names"): the drafter renames the user properties in a
// dialog; the answer is always a string, the edited list after OK and the given one after
// Cancel, so the caller can store it either way.

#include "lisp/ZelLispDialogs.h"

#include "dialogs/ZelWirePropDlg.h"
#include "lisp/ZelLispArgs.h"
#include "shell/ResourceOverride.h"

#include "ovcore/oved.h"

int zel_rename_wire_properties() {
    const ResourceOverride resources;
    QWidget* frame = nullptr;
    const QString text = zellisp::lispString(ovedGetArgs());
    ZelWirePropDlg dialog(frame, text);
    dialog.DoModal();
    ovedRetStr(dialog.GetProps().toStdWString().c_str());
    return 1;
}
