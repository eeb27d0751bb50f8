#include "ovcore/OvLispExtension.h"

#include "lispGuile.h"
#include "lispState.h"

namespace ovcore::lisp {

namespace {

struct DefineData {
    std::span<const HostPrimitive> primitives;
};

SCM defineBody(void* data) {
    const auto* define = static_cast<DefineData*>(data);
    const SCM hostModule = scm_c_resolve_module("orvex host");
    SCM names = SCM_EOL;
    for (const HostPrimitive& p : define->primitives) {
        scm_c_module_define(hostModule, p.name,
                            scm_c_make_gsubr(p.name, p.required, p.optional, 0, p.function));
        names = scm_cons(scm_from_utf8_symbol(p.name), names);
    }
    // Through the public interface, which the documents use, as the host's own names.
    scm_call_2(scm_variable_ref(scm_c_lookup("module-replace!")), hostModule, names);
    return SCM_UNSPECIFIED;
}

} // namespace

bool defineHostPrimitives(std::span<const HostPrimitive> primitives) {
    if (!detail::ensureBooted())
        return false;
    DefineData data{primitives};
    return detail::protectedCall(defineBody, &data).ok;
}

ProcedureOutcome callProcedure(SCM procedure) {
    ProcedureOutcome result;
    if (!detail::ensureBooted()) {
        result.error = QStringLiteral("the LISP environment is not available");
        return result;
    }
    // In the current document, as an evaluation there: its setq and defun land in that
    // document's environment, and runaway recursion stops with a LISP error.
    detail::LispState& state = detail::LispState::instance();
    if (state.nesting >= detail::LispState::kMaxNesting) {
        result.error = QStringLiteral("evaluations are nested too deeply");
        return result;
    }
    const SCM hostModule = scm_c_resolve_module("orvex host");
    const auto hostProcedure = [hostModule](const char* name) {
        return scm_variable_ref(scm_c_module_lookup(hostModule, name));
    };
    const detail::SchemeOutcome module = detail::protectedApply(
        hostProcedure("%document-module"), scm_list_1(scm_from_int(state.currentDocument().id)));
    if (!module.ok) {
        result.error = detail::errorMessage(module);
        return result;
    }
    ++state.nesting;
    const detail::SchemeOutcome outcome =
        detail::protectedApply(hostProcedure("%in-module"), scm_list_2(module.value, procedure));
    --state.nesting;
    result.ok = outcome.ok;
    if (!outcome.ok)
        result.error = detail::errorMessage(outcome);
    return result;
}

SCM schemeString(const QString& text) {
    return detail::toScheme(text);
}

QString qtString(SCM string) {
    return detail::fromScheme(string);
}

void raiseLispError(SCM message) {
    scm_error(detail::lispErrorKey(), nullptr, "~A", scm_list_1(message), SCM_BOOL_F);
}

} // namespace ovcore::lisp
