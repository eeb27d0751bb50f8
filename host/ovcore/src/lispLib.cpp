#include "lispLib.h"

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
    for (const char* source : {libraryNumbersSource(), libraryTextsSource(), libraryListsSource(),
                               libraryGeometrySource(), libraryDrawingSource(),
                               libraryInputSource(), libraryFilesSource()})
        scm_eval_string_in_module(scm_from_utf8_string(source), module);
    return SCM_UNSPECIFIED;
}

} // namespace

void defineLibraryFunctions(SCM hostModule) {
    scm_c_call_with_current_module(hostModule, defineAll, nullptr);
}

} // namespace ovcore::lisp::detail
