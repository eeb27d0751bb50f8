#pragma once

#include "ovdb/OvDbObjectId.h"

#include <QString>

class OvDbDatabase;
class ZelOleDbCommand;
class ZelOleDbConnection;

// The services through which the module reaches the rest of the add-on: its LISP
// functions, its global values and the project database. Plain functions without state.
//
// Every service that calls LISP first asks for the active document: with none the LISP
// machinery is not there, and the service returns false at once (or takes the other road
// its comment names). Chains built for a call and chains that come back are released on
// every path.

// The project database's provider and extended properties, as the connect string names
// them.
extern const wchar_t* s_projectDbProvider;
extern const wchar_t* s_projectDbProperties;

// "wd_cfg_read_dwg_params": the add-on reads the active drawing's WD_M settings. True when
// the call went through.
bool ReadDwgParams();
// "c:wd_reread_dwg_params", after each change of WIRELAYS, so that the add-on sees it.
bool RereadDwgParams();
// " wdupda_chkdwglockstatus" (the leading blank belongs to the name) with (path), 2 and
// nil: true when the answer is a list that starts with a string (the holder of the lock).
bool IsDrawingLocked(const QString& path);
// "c:zel_upd_unlock_dwgs" with (path) and 1. True when the call went through.
bool UnlockDrawing(const QString& path);
// The add-on's per-user folder: through "zel_get_var" with "GBL_wd_usr" when a document is
// active, else the global value "GBL_wd_usr". `text` is set only from a string answer.
// Always true.
bool GetUserFolder(QString& text);
// The value of a LISP symbol when it is a string; `text` is emptied first.
bool GetLispString(const QString& symbol, QString& text);
// Defines the Scheme function `name` as callable through ovedInvoke, by evaluating
// "(vl-orvex-defun 'name)" with "veval-str+". True when the call went through.
bool DefineLispSymbol(const QString& name);

// A connection to the active project's database: the cached one, else a new one, which the
// caller hands to the connection cache or deletes. False (with `*connection` null) when
// there is no project, no database or the open fails; a failed open prints the provider's
// error text at the command line.
bool OpenProjectConnection(ZelOleDbConnection** connection);
// Runs `sql` on the project database in the caller's `command`, which keeps the rows. On
// success the connection goes back to the cache. A failed statement prints its text and
// the error, upper-cased, unless that text holds "DROP"; false.
bool ExecuteProjectQuery(const QString& sql, ZelOleDbCommand& command);

// The folder of the loaded module `moduleFile` (by file name), without a closing "/"; a
// module not loaded gives the folder of the program. Empty when the path has no "/".
bool GetModuleFolder(QString& folder, const QString& moduleFile);
// Adds a "/" unless the path ends in one already; an empty path becomes "/".
void AppendBackslash(QString& path);

// Copies one object of `sourceDatabase` (a linetype of another drawing) into the table
// `ownerId` of the drawing; the copy's id (or the record already there under that name)
// in `result`. True when the clone gave an id.
bool CloneObjectToOwner(OvDbObjectId& result, OvDbObjectId objectId, OvDbDatabase* sourceDatabase,
                        OvDbObjectId ownerId);
