// Commands and input: (command "NAME" args...), the get... functions with initget, alert.
//
// A command of the host or a module runs at once, inside the call. Its arguments become the
// answers to what it asks, in order: they go before anything a script queued, and what the
// command did not ask for is taken back when it returns, so that it cannot answer a later
// request by surprise.
#include "lispLib.h"

#include "cadDrawing.h"
#include "cadLispArgs.h"
#include "lispConvert.h"
#include "lispGuile.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvEdInput.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "platform/MessageBox.h"

#include <deque>
#include <string>
#include <vector>

namespace ovcore::lisp::detail {

namespace {

SCM readInput(SCM prompt) {
    SCM result = SCM_BOOL_F;
    try {
        const QString text = scm_is_string(prompt) ? fromScheme(prompt) : QString();
        const std::wstring wide = text.toStdWString();
        QString answer;
        if (ovedGetString(wide.c_str(), answer) == RTNORM)
            result = toScheme(answer);
    } catch (...) {
        result = SCM_BOOL_F;
    }
    return result;
}

// 0 ran, 1 no such command, 2 refused, 3 failed (reported), 4 no command stack.
SCM runCommand(SCM name, SCM texts, SCM picks) {
    int status = 4;
    try {
        auto* commands =
            OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
        if (commands && scm_is_string(name)) {
            QString typed = fromScheme(name);
            // ".NAME" asks for the host's own command of that name; there is only one kind here.
            if (typed.startsWith(u'.'))
                typed.remove(0, 1);
            if (!commands->lookupCmd(typed)) {
                status = 1;
            } else {
                std::deque<QString> lines;
                for (SCM rest = texts; scm_is_pair(rest); rest = scm_cdr(rest))
                    lines.push_back(fromScheme(scm_car(rest)));
                std::deque<std::array<std::int64_t, 2>> names;
                for (SCM rest = picks; scm_is_pair(rest); rest = scm_cdr(rest)) {
                    ov_name n;
                    if (nameArg("command", scm_car(rest), n))
                        names.push_back({n[0], n[1]});
                }
                OvEdBatchInput& batch = OvEdBatchInput::instance();
                batch.beginCommandAnswers(lines, names);
                const OvEdCommandStack::RunStatus ran = commands->runCommand(typed);
                const int unused = batch.endCommandAnswers();
                if (ran == OvEdCommandStack::RunStatus::Ran && unused > 0) {
                    const std::wstring text =
                        QStringLiteral("\n; command: %1 argument(s) were not asked for\n")
                            .arg(unused)
                            .toStdWString();
                    ovutPrintf(L"%ls", text.c_str());
                }
                switch (ran) {
                case OvEdCommandStack::RunStatus::Ran:
                    status = 0;
                    break;
                case OvEdCommandStack::RunStatus::Unknown:
                    status = 1;
                    break;
                case OvEdCommandStack::RunStatus::Refused:
                    status = 2;
                    break;
                case OvEdCommandStack::RunStatus::Threw:
                    status = 3;
                    break;
                }
            }
        }
    } catch (...) {
        status = 3;
    }
    return scm_from_int(status);
}

// (command) while a command runs: its remaining answers go, so its next request is
// cancelled. Outside a command there is nothing to cancel.
SCM cancelCommand() {
    OvEdBatchInput::instance().cancelCommandAnswers();
    return SCM_EOL;
}

// (orvex-queue-input "text"): the next request for input answers the text; nil cancels it.
SCM queueInput(SCM text) {
    return run("orvex-queue-input", [&]() -> SCM {
        if (isNil(text)) {
            OvEdBatchInput::instance().queueInputCancel();
            return SCM_BOOL_T;
        }
        QString line;
        if (!textArg("orvex-queue-input", text, line))
            return SCM_EOL;
        OvEdBatchInput::instance().queueInput(line);
        return SCM_BOOL_T;
    });
}

SCM alert(SCM text) {
    return run("alert", [&]() -> SCM {
        platform::appMessageBox(fromScheme(text), platform::MB_OK | platform::MB_ICONINFORMATION);
        return SCM_EOL;
    });
}

} // namespace

void defineLibraryInputPrimitives() {
    scm_c_define_gsubr("%read-input", 1, 0, 0, reinterpret_cast<scm_t_subr>(readInput));
    scm_c_define_gsubr("%run-command", 3, 0, 0, reinterpret_cast<scm_t_subr>(runCommand));
    scm_c_define_gsubr("%cancel-command", 0, 0, 0, reinterpret_cast<scm_t_subr>(cancelCommand));
    scm_c_define_gsubr("%alert", 1, 0, 0, reinterpret_cast<scm_t_subr>(alert));
    scm_c_define_gsubr("orvex-queue-input", 1, 0, 0, reinterpret_cast<scm_t_subr>(queueInput));
}

} // namespace ovcore::lisp::detail
