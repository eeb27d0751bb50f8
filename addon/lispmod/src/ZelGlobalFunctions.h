#pragma once

// LISP functions of the add-on's global values (GblPm_GetGblValue, GblPm_SetGblValue).
//
// (zel_gbl_get "name")        the value, or nil. "GBL_wd_usr" is the per-user folder,
//                             made if missing; "GBL_wd_prj" the active project file.
// (zel_gbl_set "name" value)  T when stored; nil forgets the name. Nil, with a message,
//                             for a name that cannot be set (GBL_wd_prj).
int zelGblGet();
int zelGblSet();
