// LISP functions of the host that libraries outside the core define at run time. Each is a
// small Scheme procedure of the host module that passes its arguments, with its number, to
// one primitive; the primitive converts them to a chain and calls the library's function.
#include "ovcore/OvLisp.h"

#include "cadLispArgs.h"
#include "lispConvert.h"
#include "lispGuile.h"

#include "ovdb/ovut.h"

#include <QRegularExpression>

#include <vector>

namespace ovcore::lisp {

namespace {

struct Definition {
    QByteArray name;
    HostFunction function;
};

std::vector<Definition>& definitions() {
    static std::vector<Definition> all;
    return all;
}

SCM callHostFunction(SCM number, SCM args) {
    if (!scm_is_integer(number))
        return SCM_EOL;
    const std::size_t index = scm_to_size_t(number);
    if (index >= definitions().size())
        return SCM_EOL;
    // Copied: the function may define further functions while it runs.
    const Definition definition = definitions()[index];
    const char* who = definition.name.constData();
    return detail::run(who, [&]() -> SCM {
        resbuf* raw = nullptr;
        QString error;
        if (!detail::schemeItemsToChain(args, &raw, &error))
            return detail::failed(who, error);
        const ovcore::cad::Chain arguments(raw);
        const ovcore::cad::Chain result(definition.function(arguments.get()));
        SCM value = SCM_EOL;
        if (!detail::chainToScheme(result.get(), detail::ChainShape::Value, &value, &error))
            return detail::failed(who, error);
        return value;
    });
}

struct DefineData {
    QByteArray source;
};

SCM defineBody(void* data) {
    auto* define = static_cast<DefineData*>(data);
    const SCM module = scm_c_resolve_module("orvex host");
    if (scm_is_false(scm_module_variable(module, scm_from_utf8_symbol("%host-function-call"))))
        scm_c_module_define(module, "%host-function-call",
                            scm_c_make_gsubr("%host-function-call", 2, 0, 0,
                                             reinterpret_cast<scm_t_subr>(callHostFunction)));
    return detail::evalForms(define->source.constData(), module);
}

} // namespace

bool defineHostFunction(const QString& name, HostFunction function) {
    static const QRegularExpression plainName(QStringLiteral("^[a-z][a-z0-9-]*$"));
    if (!function || !plainName.match(name).hasMatch())
        return false;
    initialize();
    if (!detail::ensureBooted())
        return false;
    std::size_t index = definitions().size();
    for (std::size_t i = 0; i < definitions().size(); ++i) {
        if (definitions()[i].name == name.toUtf8())
            index = i;
    }
    if (index == definitions().size())
        definitions().push_back({name.toUtf8(), std::move(function)});
    else
        definitions()[index].function = std::move(function);
    // Replacing, like the host's other names, so that documents take it without a warning.
    DefineData data{QStringLiteral("(define (%1 . args) (%host-function-call %2 args))\n"
                                   "(module-replace! (current-module) '(%1))")
                        .arg(name)
                        .arg(index)
                        .toUtf8()};
    const detail::SchemeOutcome outcome = detail::protectedCall(defineBody, &data);
    if (!outcome.ok)
        detail::printError(detail::errorMessage(outcome));
    return outcome.ok;
}

} // namespace ovcore::lisp
