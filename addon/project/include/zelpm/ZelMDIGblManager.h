#pragma once

#include "ovdb/resbuf.h"

// Global values of the add-on, by name (compared without regard to case). They serve the
// module when no document is active and the LISP side is out of reach.
//
// "GBL_wd_usr": the add-on's per-user folder, with a closing "/", made if missing: the
//               folder "Zel/User" in the per-user data folder (XDG_DATA_HOME), unless a
//               value was set for it.
// "GBL_wd_prj": the path of the active project file, or nil. It follows the project
//               manager and cannot be set.
// Other names: what was set, or null.
//
// The chain stays the callee's: it lasts until the next call for the same name.
// Main thread only.
const resbuf* GblPm_GetGblValue(const wchar_t* name);

// Stores a copy of `value` under `name`; a null value forgets the name. False for a null or
// empty name and for the names that cannot be set.
bool GblPm_SetGblValue(const wchar_t* name, const resbuf* value);
