#pragma once

#include "ovdb/ovdbEntityName.h"
#include "ovdb/resbuf.h"

#include <QString>

class OvEdInputProvider;

// Editor input of the host catalogue. The answers come from the current input provider:
// the desktop's windows, or the batch queues (OvEdBatchInput) when there is no window.

// The entity's data as group codes, as CAD LISP's entget has them: (-1) the name, (0) the
// type ("LINE", "INSERT", "ATTRIB", "SEQEND", "LAYER", "LTYPE", "BLOCK_RECORD",
// "DICTIONARY", "XRECORD"), (330) the owner's handle, (5) the handle, then the type's own
// groups: (8) layer, (62) colour unless by layer, (10) and (11) points, (66 . 1) when
// attributes follow, (2) block name or tag, (1) text, (6) linetype, (370) lineweight.
// The chain belongs to the caller (ovutRelRb); null for a name of no live object.
resbuf* ovdbEntGet(const ov_name name);

// Lets the user pick one entity of the working drawing. RTNORM with its name and the point
// (an attribute picks its INSERT); RTCAN when the user cancels; RTERROR when the pick
// found no entity. `prompt` may be null ("Select object: ").
int ovedEntSel(const wchar_t* prompt, ov_name name, double point[3]);

// The host's file dialog. On RTNORM `result` becomes an RTSTR link whose text the host
// allocated (freed with the link by ovutRelRb, or alone by ovutDelBuffer); on RTCAN it is
// left as it was. RTERROR for a null result.
int ovedGetFileD(const wchar_t* title, const wchar_t* defaultPath, const wchar_t* extension,
                 int flags, resbuf* result);

// One line of input from the command line after `prompt` (may be null): RTNORM with the
// text, empty for Enter alone; RTCAN when the user cancels.
int ovedGetString(const wchar_t* prompt, QString& text);

// Opens help at a topic; without a window, prints "Help: file topic". RTNORM.
int ovedHelp(const wchar_t* file, const wchar_t* topic, int command);

// Sets the provider of the editor's input and returns the one before; null puts the batch
// provider back. The host does not own the provider.
OvEdInputProvider* ovedSetInputProvider(OvEdInputProvider* provider);
OvEdInputProvider* ovedInputProvider();
