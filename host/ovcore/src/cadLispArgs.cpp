// Argument reading and reporting shared by the drawing primitives.
#include "cadLispArgs.h"

#include "lispConvert.h"
#include "lispGuile.h"

#include "ovdb/ovut.h"

#include <string>

namespace ovcore::lisp::detail {

using cad::Chain;

void report(const char* who, const QString& message) {
    if (message.isEmpty())
        return;
    const std::wstring text =
        QStringLiteral("\n; %1: %2\n").arg(QLatin1String(who), message).toStdWString();
    ovutPrintf(L"%ls", text.c_str());
}

// nil, after saying why when there is something to say.
SCM failed(const char* who, const QString& message) {
    report(who, message);
    return SCM_EOL;
}

bool badArgument(const char* who, SCM value) {
    report(who, QStringLiteral("bad argument type: %1").arg(notation(value, true)));
    return false;
}

bool given(SCM value) {
    return !SCM_UNBNDP(value);
}

bool isNil(SCM value) {
    return scm_is_null(value) || scm_is_false(value);
}

bool isTrue(SCM value) {
    return given(value) && !isNil(value);
}

bool nameArg(const char* who, SCM value, ov_name name) {
    if (!isEntityName(value))
        return badArgument(who, value);
    resbuf* link = nullptr;
    QString error;
    const bool ok = schemeToChain(value, &link, &error) && link && link->restype == RTENAME;
    if (ok) {
        name[0] = link->resval.rlname[0];
        name[1] = link->resval.rlname[1];
    }
    ovutRelRb(link);
    return ok || badArgument(who, value);
}

bool textArg(const char* who, SCM value, QString& text) {
    if (!scm_is_string(value))
        return badArgument(who, value);
    text = fromScheme(value);
    // What follows a NUL would be lost on the way into the drawing.
    if (text.contains(QChar(0))) {
        report(who, QStringLiteral("bad argument: a text holding a NUL character: %1")
                        .arg(notation(value, true).left(80)));
        return false;
    }
    return true;
}

// A list of two or three real numbers, exact ones included.
bool pointOf(SCM value, double point[3]) {
    const long length = scm_ilength(value);
    if (length != 2 && length != 3)
        return false;
    point[2] = 0.0;
    int i = 0;
    for (SCM rest = value; scm_is_pair(rest); rest = scm_cdr(rest), ++i) {
        if (!scm_is_real(scm_car(rest)))
            return false;
        point[i] = scm_to_double(scm_car(rest));
    }
    return true;
}

// One group of drawing data: what the bridge takes for one, or a point group written with
// integers, (10 0 0 0), as CAD LISP scripts often write them. Null when the item is neither.
namespace {

resbuf* groupLink(SCM item) {
    if (!scm_is_pair(item))
        return nullptr;
    resbuf* chain = nullptr;
    QString error;
    if (schemeToChain(item, &chain, &error) && chain && !chain->rbnext && chain->restype < RTNONE)
        return chain;
    ovutRelRb(chain);
    const SCM code = scm_car(item);
    if (!scm_is_exact_integer(code) || !scm_is_signed_integer(code, -5, RTNONE - 1) ||
        ovutValueKind(scm_to_int(code)) != OvRbValueKind::Point)
        return nullptr;
    double point[3];
    if (!pointOf(scm_cdr(item), point))
        return nullptr;
    resbuf* link = ovutNewRb(scm_to_int(code));
    if (link) {
        for (int i = 0; i < 3; ++i)
            link->resval.rpoint[i] = point[i];
    }
    return link;
}

} // namespace

// A list of groups as a chain, in order.
bool dataArg(const char* who, SCM list, Chain& data) {
    if (scm_ilength(list) <= 0) {
        report(who, QStringLiteral("a list of groups is needed, not %1").arg(notation(list, true)));
        return false;
    }
    resbuf* tail = nullptr;
    for (SCM rest = list; scm_is_pair(rest); rest = scm_cdr(rest)) {
        resbuf* link = groupLink(scm_car(rest));
        const SCM group = scm_car(rest);
        if (!link && scm_is_pair(group) && scm_is_string(scm_cdr(group)) &&
            fromScheme(scm_cdr(group)).contains(QChar(0))) {
            report(who, QStringLiteral("bad argument: a text holding a NUL character: %1")
                            .arg(notation(group, true).left(80)));
            return false;
        }
        if (!link) {
            report(who, QStringLiteral("%1 is not a group of drawing data")
                            .arg(notation(scm_car(rest), true)));
            return false;
        }
        if (tail)
            tail->rbnext = link;
        else
            data.reset(link);
        tail = link;
    }
    return true;
}

SCM listOf(const char* who, const resbuf* chain) {
    SCM value = SCM_EOL;
    QString error;
    if (!chainToScheme(chain, ChainShape::Items, &value, &error))
        return failed(who, error);
    return value;
}

SCM nameValue(const ov_name name) {
    return makeEntityName(name);
}

} // namespace ovcore::lisp::detail
