#include "lispDispatch.h"

#include "lispConvert.h"
#include "lispGuile.h"
#include "lispState.h"

#include "ovcore/OvGuard.h"
#include "ovcore/OvOpenObjectCheck.h"
#include "ovcore/OvRxAppMsgCode.h"
#include "ovdb/ovdbOpenObject.h"

#include <climits>
#include <exception>
#include <string>

namespace ovcore::lisp::detail {

namespace {

// What the call came to; plain data, so that the primitive can raise its error once the
// C++ frames below it are gone.
struct Outcome {
    SCM value = SCM_UNSPECIFIED;
    SCM errorKey = SCM_BOOL_F;
    SCM message = SCM_BOOL_F;
};

void fail(Outcome* outcome, const QString& message, bool reported = false) {
    outcome->errorKey = reported ? hostExceptionKey() : lispErrorKey();
    outcome->message = toScheme(message);
}

// A handler's status: RTNORM and 1 are both "done" (the module's contract uses 1); an
// entry point answers 0 for the same. 3 and RTERROR ask for an error.
enum class Verdict { Done, Failed, Unknown };

Verdict verdictOf(int status, bool fromEntryPoint) {
    if (status == RTNORM || status == 1 || (fromEntryPoint && status == OvRx::kRetOK))
        return Verdict::Done;
    if (status == 3 || status == RTERROR)
        return Verdict::Failed;
    return Verdict::Unknown;
}

void notifyObserver(const QString& name) {
    LispState& state = LispState::instance();
    if (!state.callObserver)
        return;
    // Copied, so that an observer may replace itself.
    const auto observer = state.callObserver;
    const std::wstring where = L"the check after " + name.toStdWString();
    guardedCall(where.c_str(), 0, [&] {
        observer(name);
        return 0;
    });
}

void dispatch(SCM documentId, SCM nameValue, SCM args, Outcome* outcome) {
    LispState& state = LispState::instance();
    const QString name = scm_is_string(nameValue) ? fromScheme(nameValue) : QString();
    const int id = scm_is_exact_integer(documentId) && scm_is_signed_integer(documentId, 0, INT_MAX)
                       ? scm_to_int(documentId)
                       : 0;

    LispState::Document* document = state.documentById(id);
    if (!document) {
        fail(outcome,
             QStringLiteral("%1: the drawing that defined this function is closed").arg(name));
        return;
    }
    const auto function = document->functions.find(name);
    if (function == document->functions.end()) {
        fail(outcome, QStringLiteral("%1: the function is no longer defined").arg(name));
        return;
    }
    const LispState::ModuleFunction target = function->second;
    LispState::Module* module = state.moduleBySerial(target.owner);
    if (!module) {
        fail(outcome,
             QStringLiteral("%1: the module that defined this function is no longer loaded")
                 .arg(name));
        return;
    }
    const auto handler = module->handlers.find(target.number);
    const Handler direct = handler == module->handlers.end() ? nullptr : handler->second;
    const EntryPoint entry = module->entry;
    if (!direct && !entry) {
        fail(outcome, QStringLiteral("%1: the module has no handler for it").arg(name));
        return;
    }
    if (state.nesting >= LispState::kMaxNesting) {
        fail(outcome, QStringLiteral("%1: calls are nested too deeply").arg(name));
        return;
    }

    resbuf* chain = nullptr;
    QString error;
    if (!schemeItemsToChain(args, &chain, &error)) {
        fail(outcome, QStringLiteral("%1: bad argument: %2").arg(name, error));
        return;
    }

    // The module's code runs now: what it defines or registers belongs to it.
    const void* previousModule = state.activeModuleKey();
    state.activateSerial(target.owner);
    state.pushCall(target.number, chain);
    ++state.nesting;
    const std::wstring where = name.toStdWString();
    // A module function must close every object it opened before it returns.
    const std::size_t openBefore = ovdbOpenObjectCount();
    bool threw = false;
    int status = RTERROR;
    if (direct)
        status = guardedCall(where.c_str(), int(RTERROR), direct, &threw);
    else
        status = guardedCall(
            where.c_str(), int(RTERROR), [entry] { return entry(OvRx::kInvkSubrMsg, nullptr); },
            &threw);
    --state.nesting;
    LispState::CallFrame frame = state.popCall();
    state.restoreActiveModule(previousModule);
    ovcore::checkObjectsLeftOpen(openBefore, (L"LISP function " + where).c_str());
    notifyObserver(name);

    struct ResultGuard {
        resbuf* chain;
        ~ResultGuard() { ovutRelRb(chain); }
    } result{frame.result};

    if (threw) {
        fail(outcome, QStringLiteral("%1: the function ended with an exception").arg(name), true);
        return;
    }
    switch (verdictOf(status, !direct)) {
    case Verdict::Failed:
        fail(outcome, QStringLiteral("%1: the function reported an error").arg(name));
        return;
    case Verdict::Unknown:
        fail(
            outcome,
            QStringLiteral("%1: the function returned an unknown status %2").arg(name).arg(status));
        return;
    case Verdict::Done:
        break;
    }
    if (frame.kind == LispState::ResultKind::None) {
        outcome->value = SCM_EOL;
        return;
    }
    const ChainShape shape =
        frame.kind == LispState::ResultKind::List ? ChainShape::List : ChainShape::Value;
    SCM value = SCM_EOL;
    if (!chainToScheme(frame.result, shape, &value, &error)) {
        fail(outcome, QStringLiteral("%1: bad result: %2").arg(name, error));
        return;
    }
    outcome->value = value;
}

} // namespace

SCM callModuleFunctionPrimitive(SCM documentId, SCM name, SCM args) {
    Outcome outcome;
    try {
        dispatch(documentId, name, args, &outcome);
    } catch (const std::exception& e) {
        outcome.errorKey = lispErrorKey();
        outcome.message = toScheme(QStringLiteral("internal error: %1").arg(e.what()));
    } catch (...) {
        outcome.errorKey = lispErrorKey();
        outcome.message = toScheme(QStringLiteral("internal error"));
    }
    if (scm_is_true(outcome.errorKey))
        scm_error(outcome.errorKey, nullptr, "~A", scm_list_1(outcome.message), SCM_BOOL_F);
    return outcome.value;
}

} // namespace ovcore::lisp::detail
