#include "lisp/ZelLispDialogs.h"

#include "dialogs/ZelConvWTDlg.h"
#include "dialogs/ZelSetWTDlg.h"
#include "lisp/ZelLispArgs.h"
#include "shell/ResourceOverride.h"

#include "ovcore/oved.h"
#include "ovdb/ovut.h"
#include "ovdb/resbuf.h"
#include "ovui/OvUi.h"

#include <QApplication>

namespace {

// The wire to start from: a plain entity name, or the first element of a list such as
// entsel gives. Anything else means no wire.
void readEntity(const resbuf* link, ov_name name) {
    name[0] = 0;
    name[1] = 0;
    if (link && link->restype == RTLB)
        link = link->rbnext;
    if (!link || link->restype != RTENAME)
        return;
    name[0] = link->resval.rlname[0];
    name[1] = link->resval.rlname[1];
}

} // namespace

int zel_wire_type_sel() {
    // A host without windows (a bare test program) cannot show a dialog: say so and
    // answer nil rather than abort.
    if (!qobject_cast<QApplication*>(QCoreApplication::instance())) {
        ovutPrintf(L"\nzel_wire_type_sel: the wire type dialogs need the host's windows.\n");
        ovedRetNil();
        return 1;
    }

    const resbuf* args = ovedGetArgs();
    // Exactly "1" sets the wire type; every other mode changes wires.
    const bool setMode = zellisp::lispString(args).compare(QStringLiteral("1")) == 0;
    ov_name entity = {0, 0};
    readEntity(args ? args->rbnext : nullptr, entity);

    resbuf* result = nullptr;
    {
        const ResourceOverride resources;
        QWidget* frame = ovedGetOrvexFrame();
        if (setMode) {
            ZelSetWTDlg dialog(frame, true);
            dialog.DoModal();
            result = dialog.GetResult();
        } else {
            ZelConvWTDlg dialog(entity, frame, false);
            // Each pick on screen ends one modal run; the same dialog opens again with
            // what the pick chose.
            while (dialog.DoModal() == ZelConvWTDlg::kPickCode) {
            }
            result = dialog.GetResult();
        }
    }

    if (result) {
        ovedRetList(result);
        ovutRelRb(result);
    } else {
        ovedRetNil();
    }
    return 1;
}
