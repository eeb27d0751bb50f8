#pragma once

// LISP functions of the project manager, and the LISP global GBL_wd_prj that follows it.
//
// (zel_project_open "file")  T once the project is the active one; nil, with the reason
//                            at the command line, when it cannot be read (no project is
//                            active then).
// (zel_project_close)        T; no project is active afterwards.
// (zel_project_active)       the active project file, or nil.
// (zel_project_setting n)    the text of setting n of the active project, or nil.
// (zel_project_drawings)     the drawings of the active project (absolute paths), or nil.
int zelProjectOpen();
int zelProjectClose();
int zelProjectActive();
int zelProjectSetting();
int zelProjectDrawings();

// Sets GBL_wd_prj of the current document: the active project file, or nil.
void zelPutProjectSymbol();
// The same in every open document, for a change of the active project.
void zelPutProjectSymbolEverywhere();
