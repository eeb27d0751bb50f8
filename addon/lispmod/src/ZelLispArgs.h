#pragma once

#include "ovdb/resbuf.h"

#include <QString>

#include <vector>

// The arguments of a LISP call, one per element of the top level of the chain: a list
// argument spans its brackets. The chain stays the caller's and must outlive this object.
class ZelLispArgs {
public:
    explicit ZelLispArgs(const resbuf* chain);

    int count() const { return static_cast<int>(m_args.size()); }
    // The first link of argument `index`; null past the end.
    const resbuf* at(int index) const;

    bool isString(int index) const;
    QString string(int index) const;
    // RTSHORT or RTLONG.
    bool isInteger(int index) const;
    int integer(int index) const;
    // Missing arguments count as nil, as LISP passes none for them.
    bool isNil(int index) const;
    // Argument `index` as a chain of its own, owned by the caller (a list keeps its
    // brackets); null for a missing argument or when out of memory.
    resbuf* copy(int index) const;

private:
    struct Span {
        const resbuf* first;
        const resbuf* last;
    };
    std::vector<Span> m_args;
};
