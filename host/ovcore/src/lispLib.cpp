#include "lispLib.h"
#include "lispUnits.h"

#include <initializer_list>

namespace ovcore::lisp::detail {

namespace {

SCM defineAll(void*) {
    defineLibraryTextPrimitives();
    defineLibraryDrawingPrimitives();
    defineLibraryInputPrimitives();
    defineLibraryFilePrimitives();
    const SCM module = scm_current_module();
    // In order: later groups use what earlier ones define (texts use the numbers' checks).
    for (LispUnit unit : {LispUnit::Numbers, LispUnit::Texts, LispUnit::Lists, LispUnit::Geometry,
                          LispUnit::Drawing, LispUnit::Input, LispUnit::Files})
        runLispUnit(unit, module);
    return SCM_UNSPECIFIED;
}

} // namespace

void defineLibraryFunctions(SCM hostModule) {
    scm_c_call_with_current_module(hostModule, defineAll, nullptr);
}

} // namespace ovcore::lisp::detail
