#pragma once

#include "ovdb/resbuf.h"

// The LISP bridge of the host catalogue. A module defines functions in the current
// document with ovedDefun and gives each a handler with ovedRegFunc; inside a handler,
// ovedGetFunCode and ovedGetArgs describe the call and one of the ovedRet functions sets
// its result. Chains handed in stay the caller's; chains handed out become the caller's.

// Defines a LISP function of the current document, owned by the module running now.
int ovedDefun(const wchar_t* name, int funcNumber);

// Removes a function of the current document. RTERROR when it was not defined there.
int ovedUndef(const wchar_t* name, int funcNumber);

// The host calls `handler` directly for that number of the module running now; a null
// handler takes the registration back. A handler returns RTNORM or 1 when the call went
// well (nil when it set no result), 3 or RTERROR to have the call fail with a LISP error.
int ovedRegFunc(int (*handler)(), int funcNumber);

// Number of the function being called; RTERROR outside a call.
int ovedGetFunCode();

// The call's arguments, owned by the host and freed after the call; null for none.
resbuf* ovedGetArgs();

// Results of the call being made. ovedRetList sets a copy of the chain (the caller still
// frees it): a chain that is one bracketed list RTLB ... RTLE is that list, any other
// chain becomes the list of its elements. RTERROR outside a call.
int ovedRetList(const resbuf* chain);
int ovedRetStr(const wchar_t* text);
int ovedRetNil();
int ovedRetT();
int ovedRetInt(int value);
int ovedRetReal(double value);
int ovedRetName(const ov_name name);

// Calls a LISP function of the current document: a module's function, or a Scheme
// function exported with (vl-orvex-defun 'name). The first link is the name as RTSTR,
// the rest are the arguments. RTNORM with *result owned by the caller (null for nil);
// RTERROR for an unknown function or a LISP error inside, which is printed.
int ovedInvoke(const resbuf* args, resbuf** result);

// Reads a symbol of the current document: RTNORM with a chain owned by the caller
// (an RTNIL link for nil); RTERROR when the symbol is unbound or its value cannot be
// expressed as a chain.
int ovedGetSym(const wchar_t* name, resbuf** value);

// Sets a symbol of the current document: a chain of one element is that value, a longer
// chain the list of its elements, null nil.
int ovedPutSym(const wchar_t* name, const resbuf* value);
