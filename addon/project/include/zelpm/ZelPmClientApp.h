#pragma once

#include "zelpm/ZelPrmProjectId.h"

// Writes the absolute path of the database of project `id` into `buffer`, which holds
// `size` wide characters. Non-zero on success; zero, with an empty buffer when it has room
// for the terminator, when the id names no open project, the project has no database or
// the path with its terminator does not fit. No flags are defined: pass 0.
int PmGetProjectDb(const ZelPrmProjectId& id, wchar_t* buffer, int size, int flags);
