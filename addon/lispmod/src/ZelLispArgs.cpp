#include "ZelLispArgs.h"

#include "ovdb/ovut.h"

ZelLispArgs::ZelLispArgs(const resbuf* chain) {
    const resbuf* link = chain;
    while (link) {
        const resbuf* first = link;
        // A list runs to its matching end; a stray end closes nothing and stands alone.
        int depth = 0;
        for (;;) {
            if (link->restype == RTLB)
                ++depth;
            else if (link->restype == RTLE && depth > 0)
                --depth;
            if (depth == 0 || !link->rbnext)
                break;
            link = link->rbnext;
        }
        m_args.push_back({first, link});
        link = link->rbnext;
    }
}

const resbuf* ZelLispArgs::at(int index) const {
    return index >= 0 && index < count() ? m_args[static_cast<size_t>(index)].first : nullptr;
}

bool ZelLispArgs::isString(int index) const {
    const resbuf* link = at(index);
    return link && link->restype == RTSTR && link->resval.rstring;
}

QString ZelLispArgs::string(int index) const {
    return isString(index) ? QString::fromWCharArray(at(index)->resval.rstring) : QString();
}

bool ZelLispArgs::isInteger(int index) const {
    const resbuf* link = at(index);
    return link && (link->restype == RTSHORT || link->restype == RTLONG);
}

int ZelLispArgs::integer(int index) const {
    const resbuf* link = at(index);
    if (!link)
        return 0;
    if (link->restype == RTSHORT)
        return link->resval.rint;
    if (link->restype == RTLONG)
        return link->resval.rlong;
    return 0;
}

bool ZelLispArgs::isNil(int index) const {
    const resbuf* link = at(index);
    return !link || link->restype == RTNIL;
}

resbuf* ZelLispArgs::copy(int index) const {
    if (index < 0 || index >= count())
        return nullptr;
    const Span& span = m_args[static_cast<size_t>(index)];
    resbuf* copied = ovutCopyChain(span.first);
    // The copy runs on to the end of the chain: cut it after the argument's last link.
    resbuf* tail = copied;
    for (const resbuf* link = span.first; tail && link != span.last; link = link->rbnext)
        tail = tail->rbnext;
    if (tail) {
        ovutRelRb(tail->rbnext);
        tail->rbnext = nullptr;
    }
    return copied;
}
