// Drawing: entmod, entupd, handent, regapp, and selection sets with ssget and its kin.
//
// Like the other drawing functions these never raise a LISP error for bad input: they say
// why at the command line and give nil. The selection sets themselves are Scheme values;
// the C++ side only lists and picks entities.
#include "lispLib.h"

#include "cadDrawing.h"
#include "cadLispArgs.h"
#include "lispConvert.h"
#include "lispGuile.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvEdInput.h"
#include "ovcore/OvEdInputProvider.h"

#include <set>
#include <string>
#include <utility>

namespace ovcore::lisp::detail {

namespace {

SCM entmod(SCM list) {
    return run("entmod", [&]() -> SCM {
        cad::Chain data;
        if (!dataArg("entmod", list, data))
            return SCM_EOL;
        QString error;
        return cad::modifyObject(data.get(), &error) ? list : failed("entmod", error);
    });
}

SCM entupd(SCM name) {
    return run("entupd", [&]() -> SCM {
        ov_name n;
        if (!nameArg("entupd", name, n))
            return SCM_EOL;
        QString error;
        // The view draws from the drawing, so a live entity is all there is to check.
        return cad::updateEntity(n, &error) ? name : failed("entupd", error);
    });
}

SCM handent(SCM handle) {
    return run("handent", [&]() -> SCM {
        QString text;
        if (!textArg("handent", handle, text))
            return SCM_EOL;
        ov_name n;
        QString error;
        return cad::handleEntity(text, n, &error) ? nameValue(n) : failed("handent", error);
    });
}

SCM regapp(SCM application) {
    return run("regapp", [&]() -> SCM {
        QString text;
        if (!textArg("regapp", application, text))
            return SCM_EOL;
        QString error;
        const int done = cad::registerApplication(text, &error);
        return done == 1 ? application : failed("regapp", error);
    });
}

SCM modelSpaceEntities() {
    return run("ssget", [&]() -> SCM {
        QString error;
        const std::vector<OvDbObjectId> ids = cad::modelSpaceEntities(&error);
        if (!error.isEmpty())
            return failed("ssget", error);
        SCM list = SCM_EOL;
        for (auto it = ids.rbegin(); it != ids.rend(); ++it) {
            ov_name n;
            if (cad::nameOfId(*it, n))
                list = scm_cons(nameValue(n), list);
        }
        return list;
    });
}

// Picks one entity after another until the user ends the selection; in a batch run, until
// the pick queue is empty, which ends a selection quietly rather than as a cancel.
SCM pickEntities(SCM single) {
    return run("ssget", [&]() -> SCM {
        OvEdInputProvider* provider = ovedInputProvider();
        OvEdBatchInput& batch = OvEdBatchInput::instance();
        const bool fromQueue = provider == &batch;
        std::set<std::pair<std::int64_t, std::int64_t>> seen;
        SCM picked = SCM_EOL;
        const std::wstring prompt = QStringLiteral("\nSelect objects: ").toStdWString();
        while (!fromQueue || batch.pendingPicks() > 0) {
            ov_name n;
            double point[3];
            const int status = ovedEntSel(prompt.c_str(), n, point);
            if (status == RTCAN)
                break;
            if (status == RTNORM && seen.insert({n[0], n[1]}).second)
                picked = scm_cons(nameValue(n), picked);
            if (scm_is_true(single) && status == RTNORM)
                break;
        }
        return scm_reverse(picked);
    });
}

} // namespace

void defineLibraryDrawingPrimitives() {
    scm_c_define_gsubr("entmod", 1, 0, 0, reinterpret_cast<scm_t_subr>(entmod));
    scm_c_define_gsubr("entupd", 1, 0, 0, reinterpret_cast<scm_t_subr>(entupd));
    scm_c_define_gsubr("handent", 1, 0, 0, reinterpret_cast<scm_t_subr>(handent));
    scm_c_define_gsubr("regapp", 1, 0, 0, reinterpret_cast<scm_t_subr>(regapp));
    scm_c_define_gsubr("%model-space-entities", 0, 0, 0,
                       reinterpret_cast<scm_t_subr>(modelSpaceEntities));
    scm_c_define_gsubr("%pick-entities", 1, 0, 0, reinterpret_cast<scm_t_subr>(pickEntities));
}

} // namespace ovcore::lisp::detail
