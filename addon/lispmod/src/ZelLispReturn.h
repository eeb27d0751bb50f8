#pragma once

#include "ovdb/resbuf.h"

#include <QString>

// Results and messages of the add-on's LISP functions. Each ret function sets the result
// of the call being made and returns the status the handler answers with.

// A chain read as one value: nothing is nil, one element that element, several the list
// of them.
int zelRetValue(const resbuf* chain);
int zelRetString(const QString& text);
// A chain the handler built (null: out of memory, answered as nil); released here.
int zelRetOwnedList(resbuf* chain);
int zelRetNil();
int zelRetT();

// A message to the user at the command line, naming the function; the function then
// answers nil rather than failing the LISP call.
int zelComplain(const wchar_t* function, const QString& message);
