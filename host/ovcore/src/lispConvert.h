#pragma once

#include "ovdb/resbuf.h"

#include <libguile.h>

#include <QString>

// Conversions between value chains and Scheme values. None of them raises a Scheme
// exception: a value or a chain that cannot be converted gives false and a message.
namespace ovcore::lisp::detail {

// How the top level of a chain is read.
enum class ChainShape {
    Items, // the Scheme list of its elements (arguments of a call)
    Value, // nothing: nil; one element: that element; more: the list of them
    List,  // one bracketed list: that list; anything else: the list of its elements
};

bool chainToScheme(const resbuf* chain, ChainShape shape, SCM* value, QString* error);

// One value as a chain: nil is an RTNIL link, a list is RTLB ... RTLE.
bool schemeToChain(SCM value, resbuf** chain, QString* error);

// Each element of a proper list as a value of its own, one after the other.
bool schemeItemsToChain(SCM items, resbuf** chain, QString* error);

// LISP notation; `write` quotes and escapes strings (prin1), otherwise they stand as they
// are (princ). The unspecified value reads as nothing.
QString notation(SCM value, bool write);

SCM makeEntityName(const std::int64_t words[2]);
bool isEntityName(SCM value);

} // namespace ovcore::lisp::detail
