// The catalogue's LISP functions (ovcore/oved.h).
#include "ovcore/oved.h"

#include "lispConvert.h"
#include "lispGuile.h"
#include "lispState.h"

#include "ovdb/ovut.h"

using ovcore::lisp::detail::LispState;
namespace detail = ovcore::lisp::detail;

namespace {

QString textOf(const wchar_t* text) {
    return text ? QString::fromWCharArray(text) : QString();
}

int setValue(resbuf* link) {
    if (!link)
        return RTERROR;
    return LispState::instance().setResult(link, LispState::ResultKind::Value) ? RTNORM : RTERROR;
}

// The host's own function that a module may always invoke.
bool isHostInvokable(const QString& name) {
    return name == QLatin1String("veval-str+");
}

} // namespace

int ovedDefun(const wchar_t* name, int funcNumber) {
    const QString text = textOf(name);
    if (text.isEmpty() || !detail::ensureBooted())
        return RTERROR;
    LispState& state = LispState::instance();
    LispState::Document& document = state.currentDocument();
    document.functions[text] = LispState::ModuleFunction{state.activeSerial(), funcNumber};
    const detail::SchemeOutcome outcome =
        detail::protectedApply(detail::hostProcedures().defineModuleFunction,
                               scm_list_2(scm_from_int(document.id), detail::toScheme(text)));
    if (!outcome.ok) {
        document.functions.erase(text);
        return RTERROR;
    }
    return RTNORM;
}

int ovedUndef(const wchar_t* name, int funcNumber) {
    const QString text = textOf(name);
    if (text.isEmpty() || !detail::ensureBooted())
        return RTERROR;
    LispState::Document& document = LispState::instance().currentDocument();
    const auto it = document.functions.find(text);
    if (it == document.functions.end() || it->second.number != funcNumber)
        return RTERROR;
    document.functions.erase(it);
    detail::protectedApply(detail::hostProcedures().undefine,
                           scm_list_2(scm_from_int(document.id), detail::toScheme(text)));
    return RTNORM;
}

int ovedRegFunc(int (*handler)(), int funcNumber) {
    auto& handlers = LispState::instance().activeModule().handlers;
    if (handler)
        handlers[funcNumber] = handler;
    else
        handlers.erase(funcNumber);
    return RTNORM;
}

int ovedGetFunCode() {
    const LispState::CallFrame* call = LispState::instance().currentCall();
    return call ? call->funCode : RTERROR;
}

resbuf* ovedGetArgs() {
    const LispState::CallFrame* call = LispState::instance().currentCall();
    return call ? call->args : nullptr;
}

int ovedRetList(const resbuf* chain) {
    LispState& state = LispState::instance();
    if (!state.currentCall())
        return RTERROR;
    resbuf* copy = ovutCopyChain(chain);
    if (chain && !copy)
        return RTERROR;
    return state.setResult(copy, LispState::ResultKind::List) ? RTNORM : RTERROR;
}

int ovedRetStr(const wchar_t* text) {
    if (!LispState::instance().currentCall())
        return RTERROR;
    return setValue(ovutBuildList(RTSTR, text ? text : L"", 0));
}

int ovedRetNil() {
    return setValue(ovutNewRb(RTNIL));
}

int ovedRetT() {
    return setValue(ovutNewRb(RTT));
}

int ovedRetInt(int value) {
    const bool isShort = value >= -32768 && value <= 32767;
    resbuf* link = ovutNewRb(isShort ? RTSHORT : RTLONG);
    if (link && isShort)
        link->resval.rint = static_cast<short>(value);
    else if (link)
        link->resval.rlong = value;
    return setValue(link);
}

int ovedRetReal(double value) {
    resbuf* link = ovutNewRb(RTREAL);
    if (link)
        link->resval.rreal = value;
    return setValue(link);
}

int ovedRetName(const ov_name name) {
    resbuf* link = ovutNewRb(RTENAME);
    if (link) {
        link->resval.rlname[0] = name[0];
        link->resval.rlname[1] = name[1];
    }
    return setValue(link);
}

int ovedInvoke(const resbuf* args, resbuf** result) {
    if (result)
        *result = nullptr;
    if (!detail::ensureBooted())
        return RTERROR;
    if (!args || args->restype != RTSTR || !args->resval.rstring || !*args->resval.rstring) {
        detail::printError(
            QStringLiteral("ovedInvoke: the chain must start with the function's name"));
        return RTERROR;
    }
    LispState& state = LispState::instance();
    const QString name = textOf(args->resval.rstring);
    const LispState::Document& document = state.currentDocument();
    if (!document.functions.count(name) && !document.exported.count(name) &&
        !isHostInvokable(name)) {
        detail::printError(QStringLiteral("no function definition: %1").arg(name));
        return RTERROR;
    }
    if (state.nesting >= LispState::kMaxNesting) {
        detail::printError(QStringLiteral("%1: calls are nested too deeply").arg(name));
        return RTERROR;
    }
    SCM arguments = SCM_EOL;
    QString error;
    if (!detail::chainToScheme(args->rbnext, detail::ChainShape::Items, &arguments, &error)) {
        detail::printError(QStringLiteral("%1: bad argument: %2").arg(name, error));
        return RTERROR;
    }
    ++state.nesting;
    const detail::SchemeOutcome outcome = detail::protectedApply(
        detail::hostProcedures().invoke,
        scm_list_3(scm_from_int(document.id), detail::toScheme(name), arguments));
    --state.nesting;
    if (!outcome.ok) {
        if (!detail::wasReported(outcome))
            detail::printError(detail::errorMessage(outcome));
        return RTERROR;
    }
    if (scm_is_null(outcome.value) || scm_is_false(outcome.value))
        return RTNORM;
    resbuf* chain = nullptr;
    if (!detail::schemeToChain(outcome.value, &chain, &error)) {
        detail::printError(QStringLiteral("%1: bad result: %2").arg(name, error));
        return RTERROR;
    }
    if (result)
        *result = chain;
    else
        ovutRelRb(chain);
    return RTNORM;
}

int ovedGetSym(const wchar_t* name, resbuf** value) {
    if (value)
        *value = nullptr;
    const QString text = textOf(name);
    if (!value || text.isEmpty() || !detail::ensureBooted())
        return RTERROR;
    const int id = LispState::instance().currentDocument().id;
    const detail::SchemeOutcome outcome = detail::protectedApply(
        detail::hostProcedures().lookup, scm_list_2(scm_from_int(id), detail::toScheme(text)));
    if (!outcome.ok || !scm_is_pair(outcome.value))
        return RTERROR;
    QString error;
    return detail::schemeToChain(scm_car(outcome.value), value, &error) ? RTNORM : RTERROR;
}

int ovedPutSym(const wchar_t* name, const resbuf* value) {
    const QString text = textOf(name);
    if (text.isEmpty() || !detail::ensureBooted())
        return RTERROR;
    SCM converted = SCM_EOL;
    QString error;
    if (!detail::chainToScheme(value, detail::ChainShape::Value, &converted, &error))
        return RTERROR;
    const int id = LispState::instance().currentDocument().id;
    const detail::SchemeOutcome outcome =
        detail::protectedApply(detail::hostProcedures().define,
                               scm_list_3(scm_from_int(id), detail::toScheme(text), converted));
    return outcome.ok ? RTNORM : RTERROR;
}
