#include "lispGuile.h"
#include "lispUnits.h"

#include "cadLisp.h"
#include "lispConvert.h"
#include "lispDispatch.h"
#include "lispLib.h"
#include "lispState.h"

#include "ovdb/ovut.h"

#include <clocale>
#include <exception>
#include <string>

namespace ovcore::lisp::detail {

namespace {

HostProcedures s_procedures;

// --- Primitives: C++ under Scheme. Each catches its own C++ exceptions and raises a
// LISP error only once every C++ object of its frame is gone.

struct PrimitiveFailure {
    bool failed = false;
    SCM message = SCM_BOOL_F;
};

void raiseIfFailed(const PrimitiveFailure& failure) {
    if (failure.failed)
        scm_error(lispErrorKey(), nullptr, "~A", scm_list_1(failure.message), SCM_BOOL_F);
}

template <typename F> void runPrimitive(PrimitiveFailure* failure, F&& body) {
    try {
        body();
    } catch (const std::exception& e) {
        failure->failed = true;
        failure->message = toScheme(QStringLiteral("internal error: %1").arg(e.what()));
    } catch (...) {
        failure->failed = true;
        failure->message = toScheme(QStringLiteral("internal error"));
    }
}

SCM printTextPrimitive(SCM text) {
    PrimitiveFailure failure;
    if (!scm_is_string(text))
        scm_wrong_type_arg("%print-text", 1, text);
    runPrimitive(&failure, [&] {
        const std::wstring wide = fromScheme(text).toStdWString();
        ovutPrintf(L"%ls", wide.c_str());
    });
    raiseIfFailed(failure);
    return SCM_UNSPECIFIED;
}

SCM notationPrimitive(SCM value, SCM write) {
    PrimitiveFailure failure;
    SCM result = SCM_BOOL_F;
    runPrimitive(&failure, [&] { result = toScheme(notation(value, scm_is_true(write))); });
    raiseIfFailed(failure);
    return result;
}

SCM exportForInvokePrimitive(SCM name) {
    PrimitiveFailure failure;
    if (!scm_is_string(name))
        scm_wrong_type_arg("%export-for-invoke", 1, name);
    runPrimitive(&failure, [&] {
        LispState::instance().currentDocument().exported.insert(fromScheme(name));
    });
    raiseIfFailed(failure);
    return SCM_UNSPECIFIED;
}

SCM currentDocumentIdPrimitive() {
    PrimitiveFailure failure;
    int id = 0;
    runPrimitive(&failure, [&] { id = LispState::instance().currentDocument().id; });
    raiseIfFailed(failure);
    return scm_from_int(id);
}

void definePrimitives(void*) {
    scm_c_define_gsubr("%print-text", 1, 0, 0, reinterpret_cast<scm_t_subr>(printTextPrimitive));
    scm_c_define_gsubr("%lisp-notation", 2, 0, 0, reinterpret_cast<scm_t_subr>(notationPrimitive));
    scm_c_define_gsubr("%export-for-invoke", 1, 0, 0,
                       reinterpret_cast<scm_t_subr>(exportForInvokePrimitive));
    scm_c_define_gsubr("%current-document-id", 0, 0, 0,
                       reinterpret_cast<scm_t_subr>(currentDocumentIdPrimitive));
    scm_c_define_gsubr("%call-module-function", 3, 0, 0,
                       reinterpret_cast<scm_t_subr>(callModuleFunctionPrimitive));
    scm_c_export("%print-text", "%lisp-notation", "%export-for-invoke", "%current-document-id",
                 "%call-module-function", nullptr);
}

void noModuleSetup(void*) {}

// --- Calls from C++ into Scheme.

struct CallData {
    SCM (*body)(void*);
    void* data;
    SchemeOutcome* outcome;
};

SCM catchBody(void* data) {
    auto* call = static_cast<CallData*>(data);
    return call->body(call->data);
}

SCM catchHandler(void* data, SCM key, SCM args) {
    auto* call = static_cast<CallData*>(data);
    call->outcome->ok = false;
    call->outcome->key = key;
    call->outcome->args = args;
    return SCM_BOOL_F;
}

void* barrierBody(void* data) {
    auto* call = static_cast<CallData*>(data);
    call->outcome->ok = true;
    const SCM value =
        scm_c_catch(SCM_BOOL_T, catchBody, call, catchHandler, call, nullptr, nullptr);
    if (call->outcome->ok)
        call->outcome->value = value;
    return call;
}

struct ApplyData {
    SCM procedure;
    SCM args;
};

SCM applyBody(void* data) {
    auto* apply = static_cast<ApplyData*>(data);
    return scm_apply_0(apply->procedure, apply->args);
}

struct BootData {
    SCM hostModule;
};

SCM lookup(SCM module, const char* name) {
    return scm_variable_ref(scm_c_module_lookup(module, name));
}

SCM bootBody(void* data) {
    auto* boot = static_cast<BootData*>(data);
    scm_c_define_module("orvex host primitives", definePrimitives, nullptr);
    boot->hostModule = scm_c_define_module("orvex host", noModuleSetup, nullptr);
    runLispUnit(LispUnit::Boot, boot->hostModule);
    defineCadFunctions(boot->hostModule);
    defineLibraryFunctions(boot->hostModule);

    const SCM m = boot->hostModule;
    HostProcedures p;
    p.entityNameType = lookup(m, "<entity-name>");
    p.errorMessage = lookup(m, "%error-message");
    p.evalString = lookup(m, "%eval-string");
    p.loadFile = lookup(m, "%load-file");
    p.invoke = lookup(m, "%invoke");
    p.lookup = lookup(m, "%lookup");
    p.define = lookup(m, "%define!");
    p.undefine = lookup(m, "%undefine!");
    p.defineModuleFunction = lookup(m, "%define-module-function!");
    p.forgetDocument = lookup(m, "%forget-document");
    p.objectToString = scm_variable_ref(scm_c_lookup("object->string"));
    s_procedures = p;
    return SCM_UNSPECIFIED;
}

void protectProcedures() {
    for (SCM value :
         {s_procedures.entityNameType, s_procedures.errorMessage, s_procedures.evalString,
          s_procedures.loadFile, s_procedures.invoke, s_procedures.lookup, s_procedures.define,
          s_procedures.undefine, s_procedures.defineModuleFunction, s_procedures.forgetDocument,
          s_procedures.objectToString})
        scm_gc_protect_object(value);
}

} // namespace

SCM evalForms(const char* text, SCM module) {
    const SCM port = scm_open_input_string(scm_from_utf8_string(text));
    SCM value = SCM_UNSPECIFIED;
    for (SCM form = scm_read(port); !SCM_EOF_OBJECT_P(form); form = scm_read(port))
        value = scm_eval(form, module);
    return value;
}

bool ensureBooted() {
    LispState& state = LispState::instance();
    if (state.booted)
        return !state.bootFailed && state.thread == std::this_thread::get_id();
    state.booted = true;
    state.thread = std::this_thread::get_id();

    // Guile installs the locale of the environment, which would change how the C library
    // formats numbers for the rest of the host; the host keeps its own.
    const char* current = std::setlocale(LC_ALL, nullptr);
    const std::string locale = current ? current : "C";
    scm_init_guile();
    std::setlocale(LC_ALL, locale.c_str());

    BootData boot{SCM_BOOL_F};
    const SchemeOutcome outcome = protectedCall(bootBody, &boot);
    if (!outcome.ok) {
        state.bootFailed = true;
        // The error formatter may be what failed, so the key alone is shown.
        state.bootError = QStringLiteral("the LISP environment could not start: %1 %2")
                              .arg(notation(outcome.key, true), notation(outcome.args, true));
        printError(state.bootError);
        return false;
    }
    protectProcedures();
    return true;
}

const HostProcedures& hostProcedures() {
    return s_procedures;
}

SchemeOutcome protectedCall(SCM (*body)(void* data), void* data) {
    SchemeOutcome outcome;
    CallData call{body, data, &outcome};
    if (!scm_c_with_continuation_barrier(barrierBody, &call)) {
        outcome.ok = false;
        outcome.key = lispErrorKey();
        outcome.args = SCM_EOL;
    }
    return outcome;
}

SchemeOutcome protectedApply(SCM procedure, SCM args) {
    ApplyData apply{procedure, args};
    return protectedCall(applyBody, &apply);
}

QString errorMessage(const SchemeOutcome& outcome) {
    if (outcome.ok)
        return {};
    if (scm_is_true(s_procedures.errorMessage)) {
        const SchemeOutcome text =
            protectedApply(s_procedures.errorMessage, scm_list_2(outcome.key, outcome.args));
        if (text.ok && scm_is_string(text.value))
            return fromScheme(text.value);
    }
    return notation(outcome.key, true);
}

bool wasReported(const SchemeOutcome& outcome) {
    return !outcome.ok && scm_is_eq(outcome.key, hostExceptionKey());
}

void printError(const QString& message) {
    const std::wstring wide = message.toStdWString();
    ovutPrintf(L"\n; error: %ls\n", wide.c_str());
}

SCM toScheme(const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    return scm_from_utf8_stringn(utf8.constData(), static_cast<size_t>(utf8.size()));
}

QString fromScheme(SCM string) {
    size_t length = 0;
    char* utf8 = scm_to_utf8_stringn(string, &length);
    const QString text = QString::fromUtf8(utf8, static_cast<qsizetype>(length));
    free(utf8);
    return text;
}

SCM lispErrorKey() {
    return scm_from_utf8_symbol("lisp-error");
}

SCM hostExceptionKey() {
    return scm_from_utf8_symbol("host-exception");
}

} // namespace ovcore::lisp::detail
