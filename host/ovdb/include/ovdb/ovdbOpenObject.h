#pragma once

#include "ovdb/OvDbObject.h"

#include <QStringList>

#include <cstddef>

// Opens an object of a database. Many readers or one writer: opening for write an object
// open for read fails with eWasOpenForRead, and for read one open for write with
// eWasOpenForWrite. An erased object opens only with `openErased` (else eWasErased).
// eNullObjectId for the null id, eInvalidObjectId for an id whose object is gone.
// `object` is null on failure.
Orvex::ErrorStatus ovdbOpenObject(OvDbObject*& object, OvDbObjectId id, OvDb::OpenMode mode,
                                  bool openErased = false);
// The same, refusing an object not derived from `cls` with eWrongObjectType.
Orvex::ErrorStatus ovdbOpenObject(OvDbObject*& object, OvDbObjectId id, const OvRxClass* cls,
                                  OvDb::OpenMode mode, bool openErased = false);

template <class T>
Orvex::ErrorStatus ovdbOpenObject(T*& object, OvDbObjectId id, OvDb::OpenMode mode,
                                  bool openErased = false) {
    OvDbObject* opened = nullptr;
    const Orvex::ErrorStatus es = ovdbOpenObject(opened, id, T::desc(), mode, openErased);
    object = es == Orvex::eOk ? static_cast<T*>(opened) : nullptr;
    return es;
}

// Objects of every database open now, and one line on each (class, handle, name, mode),
// so that the host can report what a command or a LISP call left open.
std::size_t ovdbOpenObjectCount();
QStringList ovdbOpenObjectDescriptions();

// Breaches of the open and close protocol seen since the last take: an object used
// while not open as needed, closed when not open, deleted while in a database, or left
// open when its database was deleted. Each is also logged (category "orvex.ovdb").
std::size_t ovdbProtocolViolationCount();
QStringList ovdbTakeProtocolViolations();
