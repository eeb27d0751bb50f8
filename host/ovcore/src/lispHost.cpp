// The host-internal side of the bridge (ovcore/OvLisp.h).
#include "ovcore/OvLisp.h"

#include "lispConvert.h"
#include "lispGuile.h"
#include "lispState.h"

#include <QFileInfo>

namespace ovcore::lisp {

using detail::LispState;

namespace {

EvalResult unavailable() {
    EvalResult result;
    const LispState& state = LispState::instance();
    result.error = state.bootFailed ? state.bootError
                                    : QStringLiteral("LISP runs only on the host's main thread");
    detail::printError(result.error);
    return result;
}

EvalResult failure(const QString& message) {
    EvalResult result;
    result.error = message;
    detail::printError(message);
    return result;
}

// Calls one of the host module's evaluators with (text-or-path document-id).
EvalResult evaluate(SCM evaluator, const QString& argument) {
    LispState& state = LispState::instance();
    if (state.nesting >= LispState::kMaxNesting)
        return failure(QStringLiteral("evaluations are nested too deeply"));
    const int id = state.currentDocument().id;
    ++state.nesting;
    const detail::SchemeOutcome outcome =
        detail::protectedApply(evaluator, scm_list_2(detail::toScheme(argument), scm_from_int(id)));
    --state.nesting;
    EvalResult result;
    if (!outcome.ok) {
        result.error = detail::errorMessage(outcome);
        if (!detail::wasReported(outcome))
            detail::printError(result.error);
        return result;
    }
    result.ok = true;
    result.value = detail::notation(outcome.value, true);
    return result;
}

} // namespace

void initialize() {
    detail::ensureBooted();
}

void setCurrentDocument(const void* document) {
    LispState::instance().setCurrentDocument(document);
}

void forgetDocument(const void* document) {
    const int id = LispState::instance().forgetDocument(document);
    if (id && detail::ensureBooted())
        detail::protectedApply(detail::hostProcedures().forgetDocument,
                               scm_list_1(scm_from_int(id)));
}

void setActiveModule(const void* module, EntryPoint entry) {
    LispState::instance().setActiveModule(module, entry);
}

void forgetModule(const void* module) {
    LispState::instance().forgetModule(module);
}

EvalResult evalString(const QString& expression) {
    if (!detail::ensureBooted())
        return unavailable();
    return evaluate(detail::hostProcedures().evalString, expression);
}

EvalResult loadFile(const QString& path) {
    if (!detail::ensureBooted())
        return unavailable();
    const QFileInfo file(path);
    if (!file.isFile() || !file.isReadable())
        return failure(QStringLiteral("cannot read the LISP file %1").arg(path));
    return evaluate(detail::hostProcedures().loadFile, file.absoluteFilePath());
}

QString toLispNotation(const resbuf* chain) {
    if (!detail::ensureBooted())
        return QStringLiteral("<LISP unavailable>");
    SCM value = SCM_EOL;
    QString error;
    if (!detail::chainToScheme(chain, detail::ChainShape::Value, &value, &error))
        return QStringLiteral("<bad chain: %1>").arg(error);
    return detail::notation(value, true);
}

std::function<void()> setCallObserver(std::function<void(const QString& functionName)> afterCall) {
    LispState& state = LispState::instance();
    auto previous = std::move(state.callObserver);
    state.callObserver = std::move(afterCall);
    return [previous = std::move(previous)] { LispState::instance().callObserver = previous; };
}

} // namespace ovcore::lisp
