// Texts: characters and codes, wildcard matching, and numbers, distances and angles
// written and read in the dialect's unit modes.
#include "lispLib.h"

#include "lispGuile.h"

#include "ovdb/OvDbSymbolTableRecord.h"
#include "ovdb/ovut.h"

#include <string>

namespace ovcore::lisp::detail {

namespace {

// The Scheme wrappers check the types; these only compute.
SCM wcmatchPrimitive(SCM text, SCM pattern) {
    if (!scm_is_string(text) || !scm_is_string(pattern))
        return SCM_BOOL_F;
    const std::wstring t = fromScheme(text).toStdWString();
    const std::wstring p = fromScheme(pattern).toStdWString();
    return scm_from_bool(ovutWcMatch(t.c_str(), p.c_str()) == RTNORM);
}

SCM validNamePrimitive(SCM name) {
    if (!scm_is_string(name))
        return SCM_BOOL_F;
    return scm_from_bool(OvDbSymbolTableRecord::isValidName(fromScheme(name)));
}

} // namespace

void defineLibraryTextPrimitives() {
    scm_c_define_gsubr("%wcmatch", 2, 0, 0, reinterpret_cast<scm_t_subr>(wcmatchPrimitive));
    scm_c_define_gsubr("%valid-name", 1, 0, 0, reinterpret_cast<scm_t_subr>(validNamePrimitive));
}

} // namespace ovcore::lisp::detail
