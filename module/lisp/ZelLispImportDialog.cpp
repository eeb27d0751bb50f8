// (zel_invoke_importwt_dlg "source" show ("listDrawing" "name" ...)): the wire types of
// another drawing, for the add-on's import. With `show` non-zero the drafter chooses them
// in the import dialog; with 0 nothing is shown and every row comes back as the add-on's
// LISP side gave it. The names after listDrawing are preselected, but only when they were
// listed for this same source.

#include "lisp/ZelLispDialogs.h"

#include "dialogs/ZelImportWTDlg.h"
#include "lisp/ZelLispArgs.h"
#include "shell/ResourceOverride.h"

#include "ovcore/oved.h"
#include "ovdb/ovut.h"
#include "ovui/NqTaskDialog.h"
#include "ovui/OvUi.h"

#include <QApplication>

#include <string>
#include <vector>

using namespace zellisp;

namespace {

struct ImportArgs {
    QString sourceDrawing;
    bool showDialog = true;
    QString listDrawing;
    std::vector<QString> preselected;
};

// The third argument is read flat, brackets and all: strings count, anything else is
// passed over, and the first list end stops the reading.
bool readArgs(const resbuf* args, ImportArgs& out) {
    if (!args)
        return false;
    out.sourceDrawing = lispString(args);
    const resbuf* show = args->rbnext;
    if (!show)
        return true;
    if (show->restype == RTSHORT)
        out.showDialog = show->resval.rint != 0;
    bool first = true;
    for (const resbuf* link = show->rbnext; link && link->restype != RTLE; link = link->rbnext) {
        if (link->restype != RTSTR)
            continue;
        const QString text = lispString(link);
        if (first)
            out.listDrawing = text;
        else
            out.preselected.push_back(text);
        first = false;
    }
    return true;
}

// A batch session may run without a widget application, where no dialog can be made.
bool windowsShown() {
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

resbuf* shortLink(bool value) {
    resbuf* link = ovutNewRb(RTSHORT);
    if (link)
        link->resval.rint = value ? 1 : 0;
    return link;
}

// (sourceDrawing (properties appearance) ...: the head every answer starts with, left open
// for the third element.
ChainPtr answerHead(const QString& sourceDrawing) {
    ChainPtr chain =
        adoptChain(ovutBuildList(RTLB, RTSTR, sourceDrawing.toStdWString().c_str(), RTLB, 0));
    resbuf* tail = appendChain(chain, nullptr, shortLink(ZelImportWTDlg::GetImportProperties()));
    tail = appendChain(chain, tail, shortLink(ZelImportWTDlg::GetImportAppearance()));
    appendChain(chain, tail, ovutBuildList(RTLE, 0));
    return chain;
}

ChainPtr rowsAnswer(const QString& sourceDrawing, const ZelImportWTDlg::Rows& rows) {
    ChainPtr chain = answerHead(sourceDrawing);
    resbuf* tail = appendChain(chain, nullptr, ovutBuildList(RTLB, 0));
    for (const ZelImportWTDlg::RowFields& row : rows) {
        tail = appendChain(chain, tail, ovutBuildList(RTLB, 0));
        for (const QString& field : row)
            tail = appendChain(chain, tail, ovutBuildList(RTSTR, field.toStdWString().c_str(), 0));
        tail = appendChain(chain, tail, ovutBuildList(RTLE, 0));
    }
    appendChain(chain, tail, ovutBuildList(RTLE, RTLE, 0));
    return chain;
}

// Without the dialog the add-on's answer goes back whole, taken into the result.
ChainPtr settingsAnswer(const QString& sourceDrawing, resbuf*& settings) {
    ChainPtr chain = answerHead(sourceDrawing);
    resbuf* tail = appendChain(chain, nullptr, ovutBuildList(RTLB, 0));
    tail = appendChain(chain, tail, settings);
    settings = nullptr;
    appendChain(chain, tail, ovutBuildList(RTLE, RTLE, 0));
    return chain;
}

} // namespace

int zel_invoke_importwt_dlg() {
    const ResourceOverride resources;
    ImportArgs args;
    if (!readArgs(ovedGetArgs(), args)) {
        ovutPrintf(L"\nzel_invoke_importwt_dlg: give the drawing or template to import from.\n");
        ovedRetNil();
        return 1;
    }
    // Names listed for another source would select rows that only share a name.
    if (args.listDrawing.compare(args.sourceDrawing, Qt::CaseInsensitive) != 0)
        args.preselected.clear();

    bool noWireTypes = false;
    const std::wstring source = args.sourceDrawing.toStdWString();
    ChainPtr request = adoptChain(
        ovutBuildList(RTSTR, L"wd_wirlay_get_dwg_wiretype_settings", RTSTR, source.c_str(), 0));
    if (request) {
        resbuf* settings = nullptr;
        const int status = ovedInvoke(request.get(), &settings);
        if (status != RTNORM || !settings || settings->restype == RTNIL) {
            noWireTypes = true;
            ovutRelRb(settings);
        } else if (!args.showDialog) {
            // Every row as it came: no dialog is needed, nor made, so that this also works
            // in a session without windows.
            ChainPtr answer = settingsAnswer(args.sourceDrawing, settings);
            ovedRetList(answer.get());
        } else if (!windowsShown()) {
            // Nobody can choose in a session without windows: no rows rather than a guess.
            ovutPrintf(L"\nzel_invoke_importwt_dlg: this session shows no windows; call it "
                       L"with 0 to have every wire type.\n");
            ovutRelRb(settings);
            ovedRetNil();
            return 1;
        } else {
            // The dialog has no parent window: it is the drafter's one window while it runs.
            ZelImportWTDlg dialog(settings, args.preselected, nullptr);
            const int result = dialog.DoModal();
            ChainPtr answer =
                rowsAnswer(args.sourceDrawing,
                           result == 1 ? dialog.GetChosenRows(true) : dialog.GetPresetRows(true));
            ovutRelRb(settings);
            ovedRetList(answer.get());
        }
    }
    // Without the dialog the caller works on its own and tells its user itself.
    if (args.showDialog && noWireTypes && !windowsShown()) {
        ovutPrintf(L"\nzel_invoke_importwt_dlg: no wire types found in %ls.\n", source.c_str());
    } else if (args.showDialog && noWireTypes) {
        NqTaskDialog notice;
        if (notice.LoadFromFile(L"/ZelTaskDialogsRes;component/TaskDialogs.xaml",
                                L"ZelImportWireType.NoWireTypeFound", nullptr, 0))
            notice.ShowDialog(ovqw_orvexMainWnd());
    }
    return 1;
}
