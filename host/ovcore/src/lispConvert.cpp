#include "lispConvert.h"

#include "lispGuile.h"

#include "ovdb/ovut.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace ovcore::lisp::detail {

namespace {

// Nesting deeper than this is taken for a cycle through the cars of a structure.
constexpr int kMaxDepth = 2000;

// Group codes that a link of drawing data carries; the LISP types start at RTNONE.
constexpr int kFirstGroupCode = -5;

bool isGroupCode(int code) {
    return code >= kFirstGroupCode && code < RTNONE;
}

// --- Chain to Scheme

SCM pointList(const double* p, int count) {
    SCM list = SCM_EOL;
    for (int i = count - 1; i >= 0; --i)
        list = scm_cons(scm_from_double(p[i]), list);
    return list;
}

SCM stringOf(const wchar_t* text) {
    return toScheme(text ? QString::fromWCharArray(text) : QString());
}

bool readItem(const resbuf*& link, SCM* out, QString* error, int depth);

bool readGroupLink(const resbuf* link, SCM* out, QString* error) {
    const int code = link->restype;
    const SCM key = scm_from_int(code);
    const ovu_resval& v = link->resval;
    switch (ovutValueKind(code)) {
    case OvRbValueKind::String:
    case OvRbValueKind::Handle:
        *out = scm_cons(key, stringOf(v.rstring));
        return true;
    case OvRbValueKind::Int16:
        *out = scm_cons(key, scm_from_short(v.rint));
        return true;
    case OvRbValueKind::Bool:
        *out = scm_cons(key, scm_from_int(v.rint != 0));
        return true;
    case OvRbValueKind::Int32:
        *out = scm_cons(key, scm_from_int32(v.rlong));
        return true;
    case OvRbValueKind::Real:
        *out = scm_cons(key, scm_from_double(v.rreal));
        return true;
    case OvRbValueKind::Point:
        *out = scm_cons(key, pointList(v.rpoint, 3));
        return true;
    case OvRbValueKind::Name:
        *out = scm_cons(key, makeEntityName(v.rlname));
        return true;
    case OvRbValueKind::Binary: {
        const short length = v.rbinary.buf ? std::max<short>(v.rbinary.clen, 0) : 0;
        const SCM bytes = scm_c_make_bytevector(static_cast<size_t>(length));
        if (length)
            std::memcpy(SCM_BYTEVECTOR_CONTENTS(bytes), v.rbinary.buf, length);
        *out = scm_cons(key, bytes);
        return true;
    }
    case OvRbValueKind::None:
        // Markers such as the start of extended data: a list of the code alone.
        *out = scm_list_1(key);
        return true;
    case OvRbValueKind::Unknown:
        break;
    }
    *error = QStringLiteral("group code %1 is not known").arg(code);
    return false;
}

// The links after an RTLB, up to its RTLE. "RTLB a b RTDOTE c RTLE" is (a b . c).
bool readListBody(const resbuf*& link, SCM* out, QString* error, int depth) {
    SCM reversed = SCM_EOL;
    SCM tail = SCM_EOL;
    for (;;) {
        if (!link) {
            *error = QStringLiteral("a list is not closed: RTLB without RTLE");
            return false;
        }
        if (link->restype == RTLE) {
            link = link->rbnext;
            break;
        }
        if (link->restype == RTDOTE) {
            if (scm_is_null(reversed)) {
                *error = QStringLiteral("a dotted pair has nothing before RTDOTE");
                return false;
            }
            link = link->rbnext;
            if (!link || link->restype == RTLE) {
                *error = QStringLiteral("a dotted pair has nothing after RTDOTE");
                return false;
            }
            if (!readItem(link, &tail, error, depth + 1))
                return false;
            if (!link || link->restype != RTLE) {
                *error = QStringLiteral("a dotted pair must end with RTLE after one value");
                return false;
            }
            link = link->rbnext;
            break;
        }
        SCM item = SCM_EOL;
        if (!readItem(link, &item, error, depth + 1))
            return false;
        reversed = scm_cons(item, reversed);
    }
    *out = scm_reverse_x(reversed, tail);
    return true;
}

bool readItem(const resbuf*& link, SCM* out, QString* error, int depth) {
    if (depth > kMaxDepth) {
        *error = QStringLiteral("lists are nested too deeply");
        return false;
    }
    const resbuf* here = link;
    const ovu_resval& v = here->resval;
    switch (here->restype) {
    case RTLB:
        link = here->rbnext;
        return readListBody(link, out, error, depth);
    case RTLE:
        *error = QStringLiteral("RTLE without RTLB");
        return false;
    case RTDOTE:
        *error = QStringLiteral("RTDOTE outside a list");
        return false;
    case RTNIL:
        *out = SCM_EOL;
        break;
    case RTT:
        *out = SCM_BOOL_T;
        break;
    case RTNONE:
    case RTVOID:
        *out = SCM_UNSPECIFIED;
        break;
    case RTREAL:
    case RTANG:
    case RTORINT:
        *out = scm_from_double(v.rreal);
        break;
    case RTPOINT:
        *out = pointList(v.rpoint, 2);
        break;
    case RT3DPOINT:
        *out = pointList(v.rpoint, 3);
        break;
    case RTSHORT:
        *out = scm_from_short(v.rint);
        break;
    case RTLONG:
        *out = scm_from_int32(v.rlong);
        break;
    case RTSTR:
        *out = stringOf(v.rstring);
        break;
    case RTDXF0:
        // Group 0 in the LISP form that keeps it apart from the end of a chain.
        *out = scm_cons(scm_from_int(0), stringOf(v.rstring));
        break;
    case RTENAME:
        *out = makeEntityName(v.rlname);
        break;
    default:
        if (!isGroupCode(here->restype)) {
            *error =
                QStringLiteral("a value of type %1 cannot be passed to LISP").arg(here->restype);
            return false;
        }
        if (!readGroupLink(here, out, error))
            return false;
        break;
    }
    link = here->rbnext;
    return true;
}

// --- Scheme to chain

class ChainBuilder {
public:
    ~ChainBuilder() { ovutRelRb(m_head); }
    bool append(resbuf* link) {
        if (!link)
            return false;
        if (m_tail)
            m_tail->rbnext = link;
        else
            m_head = link;
        m_tail = link;
        while (m_tail->rbnext)
            m_tail = m_tail->rbnext;
        return true;
    }
    bool appendCode(int code) { return append(ovutNewRb(code)); }
    resbuf* take() {
        resbuf* head = m_head;
        m_head = m_tail = nullptr;
        return head;
    }

private:
    resbuf* m_head = nullptr;
    resbuf* m_tail = nullptr;
};

resbuf* stringLink(int code, SCM text) {
    resbuf* link = ovutNewRb(code);
    if (!link)
        return nullptr;
    const std::wstring wide = fromScheme(text).toStdWString();
    if (ovutNewString(wide.c_str(), link->resval.rstring) != RTNORM) {
        ovutRelRb(link);
        return nullptr;
    }
    return link;
}

bool isExactIn(SCM value, std::int64_t low, std::int64_t high) {
    return scm_is_exact_integer(value) && scm_is_signed_integer(value, low, high);
}

bool isInexactReal(SCM value) {
    return scm_is_real(value) && scm_is_true(scm_inexact_p(value));
}

void entityNameWords(SCM name, std::int64_t words[2]) {
    for (int i = 0; i < 2; ++i) {
        const SCM word = scm_struct_ref(name, scm_from_int(i));
        words[i] = isExactIn(word, std::numeric_limits<std::int64_t>::min(),
                             std::numeric_limits<std::int64_t>::max())
                       ? scm_to_int64(word)
                       : 0;
    }
}

// False for a list that does not end (its cdrs come back round).
bool endsAfterCdrs(SCM list) {
    SCM slow = list;
    SCM fast = list;
    while (scm_is_pair(fast)) {
        fast = scm_cdr(fast);
        if (!scm_is_pair(fast))
            return true;
        fast = scm_cdr(fast);
        slow = scm_cdr(slow);
        if (scm_is_eq(fast, slow))
            return false;
    }
    return true;
}

// A pair that stands for one link of drawing data: (code . atom) with an atom of the
// code's kind, or (code x y z) of reals for a point group. Null when the pair is not one;
// `failed` when it is one but the link could not be made.
resbuf* groupLinkOf(SCM pair, bool* failed) {
    *failed = false;
    const SCM car = scm_car(pair);
    if (!isExactIn(car, kFirstGroupCode, RTNONE - 1))
        return nullptr;
    const int code = scm_to_int(car);
    const SCM cdr = scm_cdr(pair);
    const OvRbValueKind kind = ovutValueKind(code);

    if (kind == OvRbValueKind::Point) {
        const long length = scm_ilength(cdr);
        if (length != 2 && length != 3)
            return nullptr;
        double p[3] = {0, 0, 0};
        int i = 0;
        for (SCM rest = cdr; scm_is_pair(rest); rest = scm_cdr(rest), ++i) {
            if (!isInexactReal(scm_car(rest)))
                return nullptr;
            p[i] = scm_to_double(scm_car(rest));
        }
        resbuf* link = ovutNewRb(code);
        if (link)
            std::memcpy(link->resval.rpoint, p, sizeof p);
        *failed = !link;
        return link;
    }
    if (kind == OvRbValueKind::None) {
        if (code >= 0 || !scm_is_null(cdr))
            return nullptr;
        resbuf* link = ovutNewRb(code);
        *failed = !link;
        return link;
    }
    if (scm_is_pair(cdr) || scm_is_null(cdr))
        return nullptr;

    resbuf* link = nullptr;
    switch (kind) {
    case OvRbValueKind::String:
    case OvRbValueKind::Handle:
        if (!scm_is_string(cdr))
            return nullptr;
        link = stringLink(code, cdr);
        break;
    case OvRbValueKind::Int16:
        if (!isExactIn(cdr, std::numeric_limits<short>::min(), std::numeric_limits<short>::max()))
            return nullptr;
        if ((link = ovutNewRb(code)))
            link->resval.rint = static_cast<short>(scm_to_int(cdr));
        break;
    case OvRbValueKind::Bool:
        if (!isExactIn(cdr, 0, 1) && !scm_is_bool(cdr))
            return nullptr;
        if ((link = ovutNewRb(code)))
            link->resval.rint = scm_is_bool(cdr) ? scm_is_true(cdr) : scm_to_int(cdr);
        break;
    case OvRbValueKind::Int32:
        if (!isExactIn(cdr, std::numeric_limits<std::int32_t>::min(),
                       std::numeric_limits<std::int32_t>::max()))
            return nullptr;
        if ((link = ovutNewRb(code)))
            link->resval.rlong = scm_to_int32(cdr);
        break;
    case OvRbValueKind::Real:
        if (!scm_is_real(cdr))
            return nullptr;
        if ((link = ovutNewRb(code)))
            link->resval.rreal = scm_to_double(cdr);
        break;
    case OvRbValueKind::Name:
        if (!isEntityName(cdr))
            return nullptr;
        if ((link = ovutNewRb(code)))
            entityNameWords(cdr, link->resval.rlname);
        break;
    case OvRbValueKind::Binary: {
        if (!scm_is_bytevector(cdr))
            return nullptr;
        const size_t length = SCM_BYTEVECTOR_LENGTH(cdr);
        if (length > static_cast<size_t>(std::numeric_limits<short>::max()))
            return nullptr;
        link = ovutBuildList(code, static_cast<int>(length), SCM_BYTEVECTOR_CONTENTS(cdr), 0);
        break;
    }
    default:
        return nullptr;
    }
    *failed = !link;
    return link;
}

bool writeValue(SCM value, ChainBuilder& out, QString* error, int depth);

bool writeList(SCM list, ChainBuilder& out, QString* error, int depth) {
    if (!endsAfterCdrs(list)) {
        *error = QStringLiteral("a circular list cannot be passed");
        return false;
    }
    if (!out.appendCode(RTLB))
        return false;
    SCM rest = list;
    for (; scm_is_pair(rest); rest = scm_cdr(rest)) {
        if (!writeValue(scm_car(rest), out, error, depth + 1))
            return false;
    }
    if (!scm_is_null(rest)) {
        if (!out.appendCode(RTDOTE) || !writeValue(rest, out, error, depth + 1))
            return false;
    }
    return out.appendCode(RTLE);
}

// C++ takes a text up to its first NUL character: a text holding one would be acted on
// cut short, so it is refused before it crosses.
bool holdsNul(SCM text) {
    return scm_is_string(text) &&
           scm_is_true(scm_string_index(text, SCM_MAKE_CHAR(0), SCM_UNDEFINED, SCM_UNDEFINED));
}

bool refuseNul(SCM text, QString* error) {
    if (!holdsNul(text))
        return false;
    // A long text is shown by its start: that is where one finds it again.
    QString shown = notation(text, true);
    if (shown.size() > 80)
        shown = shown.left(76) + QStringLiteral("...\"");
    *error = QStringLiteral("a text holding a NUL character cannot be passed: %1").arg(shown);
    return true;
}

bool writeValue(SCM value, ChainBuilder& out, QString* error, int depth) {
    if (depth > kMaxDepth) {
        *error = QStringLiteral("lists are nested too deeply");
        return false;
    }
    if (refuseNul(value, error) ||
        (scm_is_symbol(value) && refuseNul(scm_symbol_to_string(value), error)) ||
        (scm_is_pair(value) && refuseNul(scm_cdr(value), error)))
        return false;
    bool made = true;
    if (scm_is_null(value) || scm_is_false(value)) {
        made = out.appendCode(RTNIL);
    } else if (scm_is_eq(value, SCM_BOOL_T)) {
        made = out.appendCode(RTT);
    } else if (scm_is_eq(value, SCM_UNSPECIFIED)) {
        made = out.appendCode(RTVOID);
    } else if (scm_is_exact_integer(value)) {
        if (isExactIn(value, std::numeric_limits<short>::min(),
                      std::numeric_limits<short>::max())) {
            resbuf* link = ovutNewRb(RTSHORT);
            if (link)
                link->resval.rint = static_cast<short>(scm_to_int(value));
            made = out.append(link);
        } else if (isExactIn(value, std::numeric_limits<std::int32_t>::min(),
                             std::numeric_limits<std::int32_t>::max())) {
            resbuf* link = ovutNewRb(RTLONG);
            if (link)
                link->resval.rlong = scm_to_int32(value);
            made = out.append(link);
        } else {
            *error = QStringLiteral("integer out of range: %1").arg(notation(value, true));
            return false;
        }
    } else if (scm_is_real(value)) {
        resbuf* link = ovutNewRb(RTREAL);
        if (link)
            link->resval.rreal = scm_to_double(value);
        made = out.append(link);
    } else if (scm_is_string(value)) {
        made = out.append(stringLink(RTSTR, value));
    } else if (scm_is_symbol(value)) {
        made = out.append(stringLink(RTSTR, scm_symbol_to_string(value)));
    } else if (isEntityName(value)) {
        resbuf* link = ovutNewRb(RTENAME);
        if (link)
            entityNameWords(value, link->resval.rlname);
        made = out.append(link);
    } else if (scm_is_pair(value)) {
        bool failed = false;
        if (resbuf* link = groupLinkOf(value, &failed))
            made = out.append(link);
        else if (failed)
            made = false;
        else
            return writeList(value, out, error, depth);
    } else {
        *error = QStringLiteral("this value cannot be passed: %1").arg(notation(value, true));
        return false;
    }
    if (!made)
        *error = QStringLiteral("out of memory");
    return made;
}

// --- Notation

QString realText(double value) {
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value < 0 ? QStringLiteral("-inf") : QStringLiteral("inf");
    QString text = QString::number(value, 'g', 6);
    const qsizetype exponent = text.indexOf(QLatin1Char('e'));
    const QString mantissa = exponent < 0 ? text : text.left(exponent);
    // A real always shows that it is one: 2.0, 1.0e+20.
    if (!mantissa.contains(QLatin1Char('.')))
        text.insert(exponent < 0 ? text.size() : exponent, QStringLiteral(".0"));
    return text;
}

QString quoted(const QString& text) {
    QString out;
    out.reserve(text.size() + 2);
    out += QLatin1Char('"');
    for (const QChar c : text) {
        switch (c.unicode()) {
        case '"':
            out += QStringLiteral("\\\"");
            break;
        case '\\':
            out += QStringLiteral("\\\\");
            break;
        case '\n':
            out += QStringLiteral("\\n");
            break;
        case '\r':
            out += QStringLiteral("\\r");
            break;
        case '\t':
            out += QStringLiteral("\\t");
            break;
        case 0x1b:
            out += QStringLiteral("\\e");
            break;
        case 0:
            out += QStringLiteral("\\000");
            break;
        default:
            out += c;
        }
    }
    out += QLatin1Char('"');
    return out;
}

QString entityNameText(SCM name) {
    std::int64_t words[2];
    entityNameWords(name, words);
    // The second word is the entity's handle, which tells one entity from another; the
    // first only names the drawing.
    return QStringLiteral("<Entity name: %1>")
        .arg(QString::number(static_cast<quint64>(words[1]), 16));
}

void appendNotation(QString& out, SCM value, bool write, int depth) {
    if (depth > kMaxDepth) {
        out += QStringLiteral("...");
    } else if (scm_is_null(value) || scm_is_false(value)) {
        out += QStringLiteral("nil");
    } else if (scm_is_eq(value, SCM_BOOL_T)) {
        out += QLatin1Char('T');
    } else if (scm_is_eq(value, SCM_UNSPECIFIED)) {
        if (depth > 0)
            out += QStringLiteral("#<unspecified>");
    } else if (scm_is_exact_integer(value)) {
        out += fromScheme(scm_number_to_string(value, scm_from_int(10)));
    } else if (scm_is_real(value)) {
        out += realText(scm_to_double(value));
    } else if (scm_is_string(value)) {
        out += write ? quoted(fromScheme(value)) : fromScheme(value);
    } else if (scm_is_symbol(value)) {
        out += fromScheme(scm_symbol_to_string(value));
    } else if (isEntityName(value)) {
        out += entityNameText(value);
    } else if (scm_is_pair(value)) {
        if (!endsAfterCdrs(value)) {
            out += QStringLiteral("#<circular list>");
            return;
        }
        out += QLatin1Char('(');
        SCM rest = value;
        bool first = true;
        for (; scm_is_pair(rest); rest = scm_cdr(rest)) {
            if (!first)
                out += QLatin1Char(' ');
            first = false;
            appendNotation(out, scm_car(rest), write, depth + 1);
        }
        if (!scm_is_null(rest)) {
            out += QStringLiteral(" . ");
            appendNotation(out, rest, write, depth + 1);
        }
        out += QLatin1Char(')');
    } else {
        const SCM printer = hostProcedures().objectToString;
        const SchemeOutcome text =
            scm_is_true(printer) ? protectedApply(printer, scm_list_1(value)) : SchemeOutcome{};
        out += text.ok && scm_is_string(text.value) ? fromScheme(text.value)
                                                    : QStringLiteral("#<object>");
    }
}

} // namespace

bool chainToScheme(const resbuf* chain, ChainShape shape, SCM* value, QString* error) {
    const bool bracketed = chain && chain->restype == RTLB;
    SCM reversed = SCM_EOL;
    int count = 0;
    for (const resbuf* link = chain; link; ++count) {
        SCM item = SCM_EOL;
        if (!readItem(link, &item, error, 0))
            return false;
        reversed = scm_cons(item, reversed);
    }
    const SCM items = scm_reverse_x(reversed, SCM_EOL);
    switch (shape) {
    case ChainShape::Items:
        *value = items;
        break;
    case ChainShape::Value:
        *value = count == 1 ? scm_car(items) : items;
        break;
    case ChainShape::List:
        *value = count == 1 && bracketed ? scm_car(items) : items;
        break;
    }
    return true;
}

bool schemeToChain(SCM value, resbuf** chain, QString* error) {
    *chain = nullptr;
    ChainBuilder out;
    if (!writeValue(value, out, error, 0))
        return false;
    *chain = out.take();
    return true;
}

bool schemeItemsToChain(SCM items, resbuf** chain, QString* error) {
    *chain = nullptr;
    if (scm_ilength(items) < 0) {
        *error = QStringLiteral("the arguments are not a proper list");
        return false;
    }
    ChainBuilder out;
    int position = 1;
    for (SCM rest = items; scm_is_pair(rest); rest = scm_cdr(rest), ++position) {
        if (!writeValue(scm_car(rest), out, error, 0)) {
            *error = QStringLiteral("argument %1: %2").arg(position).arg(*error);
            return false;
        }
    }
    *chain = out.take();
    return true;
}

QString notation(SCM value, bool write) {
    QString out;
    appendNotation(out, value, write, 0);
    return out;
}

SCM makeEntityName(const std::int64_t words[2]) {
    // Made directly rather than through the record's constructor, so that no Scheme code
    // runs (and nothing can throw) while a chain is converted.
    return scm_make_struct_no_tail(hostProcedures().entityNameType,
                                   scm_list_2(scm_from_int64(words[0]), scm_from_int64(words[1])));
}

bool isEntityName(SCM value) {
    const SCM type = hostProcedures().entityNameType;
    return scm_is_true(type) && SCM_STRUCTP(value) && scm_is_eq(scm_struct_vtable(value), type);
}

} // namespace ovcore::lisp::detail
