#pragma once

#include "ovdb/OvDbObjectId.h"
#include "ovdb/resbuf.h"

// Entity names of the LISP bridge. A name holds the session number of its database and
// the object's handle, so it stays good for the session and a name of a database that is
// gone is refused, never followed.

// RTNORM and the id, or RTERROR (id null) for a name of no live object.
int ovdbGetObjectId(OvDbObjectId& id, const ov_name name);
// RTNORM, or RTERROR (name zeroed) for an id that names nothing.
int ovdbGetOvName(ov_name name, OvDbObjectId id);

// The live database with that session number, or null.
OvDbDatabase* ovdbDatabaseOfSession(std::int64_t sessionNumber);
