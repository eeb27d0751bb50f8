#pragma once

// What the LISP handlers share: reading their argument chains, reading the drawing's
// current wire layer record, and making the default wire type when a drawing has no
// usable record. Not part of the module's interface.

#include <QString>

#include <memory>

class OvDbDatabase;
class ZelWireTypeRec;
struct resbuf;

namespace zellisp {

// A chain that goes back to the host with ovutRelRb on every path.
using ChainPtr = std::unique_ptr<resbuf, int (*)(resbuf*)>;
ChainPtr adoptChain(resbuf* chain);

// Puts `links` (one link or a chain) after `tail`, the last link of the chain that starts at
// `head` (null: find it), and returns the new last link.
resbuf* appendChain(ChainPtr& head, resbuf* tail, resbuf* links);

// The release step of every object a handler opens: close what is in a database, delete
// a new object that never got there.
template <class T> void releaseObject(T*& object) {
    if (!object)
        return;
    if (!object->objectId().isNull())
        object->close();
    else
        delete object;
    object = nullptr;
}

// The text of a LISP string argument (5005); empty for a missing link or any other type.
QString lispString(const resbuf* link);

// The text of any link that carries one, whatever its type: a LISP string or a text group
// of drawing data. Empty for the rest (numbers, brackets, nil).
QString linkText(const resbuf* link);

// Past a leading list begin (5016), if there is one.
const resbuf* skipListBegin(const resbuf* link);

// The host's working database, fetched anew at each call.
OvDbDatabase* workingDatabase();

// The names of the current wire layer record: the default layer from the first element and
// the current layer from the second, each only where it is a text group 1. With `makeAllValidWire`,
// also the flag from the fourth element when that is a bool group 290, else false.
void readCurrentRecord(const resbuf* chain, QString& defaultLayer, QString& currentLayer,
                       bool* makeAllValidWire = nullptr);

// The repair for a drawing without a current wire layer record: the wire type named by
// string 110 is made, written as both default and current layer, and the command line is
// told. The caller has switched to the module's resources. Returns the name.
QString createDefaultWireType(ZelWireTypeRec& store);

} // namespace zellisp
