#include "lispUnits.h"

#include "lispGuile.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

// Each unit's bytecode and source, in the library's read-only data, each followed by a NUL
// so that the source is a C string. The paths come from the build.
#define OVCORE_EMBED(symbol, path)                                                                 \
    asm(".pushsection .rodata\n"                                                                   \
        ".balign 16\n"                                                                             \
        ".hidden " #symbol "\n"                                                                    \
        ".globl " #symbol "\n" #symbol ":\n"                                                       \
        ".incbin \"" path "\"\n"                                                                   \
        ".hidden " #symbol "_end\n"                                                                \
        ".globl " #symbol "_end\n" #symbol "_end:\n"                                               \
        ".byte 0\n"                                                                                \
        ".popsection\n");                                                                          \
    extern "C" const char symbol[];                                                                \
    extern "C" const char symbol##_end[];

#define OVCORE_UNIT(name)                                                                          \
    OVCORE_EMBED(ovcore_lisp_##name##_go, OVCORE_LISP_DIR "/" #name ".go")                         \
    OVCORE_EMBED(ovcore_lisp_##name##_scm, OVCORE_LISP_SOURCE_DIR "/" #name ".scm")

OVCORE_UNIT(boot)
OVCORE_UNIT(numbers)
OVCORE_UNIT(texts)
OVCORE_UNIT(lists)
OVCORE_UNIT(geometry)
OVCORE_UNIT(drawing)
OVCORE_UNIT(input)
OVCORE_UNIT(files)

namespace ovcore::lisp::detail {

namespace {

struct Unit {
    const char* bytecode;
    const char* bytecodeEnd;
    const char* source;
};

#define OVCORE_UNIT_ENTRY(name)                                                                    \
    Unit {                                                                                         \
        ovcore_lisp_##name##_go, ovcore_lisp_##name##_go_end, ovcore_lisp_##name##_scm             \
    }

// In the order of LispUnit.
const Unit s_units[] = {OVCORE_UNIT_ENTRY(boot),     OVCORE_UNIT_ENTRY(numbers),
                        OVCORE_UNIT_ENTRY(texts),    OVCORE_UNIT_ENTRY(lists),
                        OVCORE_UNIT_ENTRY(geometry), OVCORE_UNIT_ENTRY(drawing),
                        OVCORE_UNIT_ENTRY(input),    OVCORE_UNIT_ENTRY(files)};

SCM loadBody(void* data) {
    const Unit& unit = *static_cast<const Unit*>(data);
    const auto size = static_cast<size_t>(unit.bytecodeEnd - unit.bytecode);
    // The loader keeps the bytes for as long as the code lives, and may align them anew:
    // it gets a copy of its own.
    const SCM bytes = scm_c_make_bytevector(size);
    std::memcpy(SCM_BYTEVECTOR_CONTENTS(bytes), unit.bytecode, size);
    return scm_call_1(scm_c_public_ref("system vm loader", "load-thunk-from-memory"), bytes);
}

SCM notLoaded(void*, SCM, SCM) {
    return SCM_BOOL_F;
}

SCM runBody(void* data) {
    const Unit& unit = *static_cast<const Unit*>(data);
    static const bool fromSource = std::getenv("ORVEX_LISP_SOURCE") != nullptr;
    if (!fromSource) {
        // Only the loading is caught: an error while the unit's forms run is the unit's.
        const SCM thunk = scm_c_catch(SCM_BOOL_T, loadBody, const_cast<Unit*>(&unit), notLoaded,
                                      nullptr, nullptr, nullptr);
        if (scm_is_true(scm_procedure_p(thunk))) {
            scm_call_0(thunk);
            return SCM_UNSPECIFIED;
        }
    }
    evalForms(unit.source, scm_current_module());
    return SCM_UNSPECIFIED;
}

} // namespace

void runLispUnit(LispUnit unit, SCM module) {
    static_assert(std::size(s_units) == static_cast<size_t>(LispUnit::Files) + 1);
    scm_c_call_with_current_module(module, runBody,
                                   const_cast<Unit*>(&s_units[static_cast<size_t>(unit)]));
}

} // namespace ovcore::lisp::detail
