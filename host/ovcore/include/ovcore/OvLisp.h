#pragma once

#include "ovdb/resbuf.h"

#include <QString>

#include <functional>

// The host's side of the LISP bridge: what the document manager, the module loader and
// the batch runner tell it. Everything here runs on the thread that called initialize().
namespace ovcore::lisp {

using EntryPoint = int (*)(int message, void* packet);

// Boots Guile once (later calls do nothing) and defines the host's Scheme environment.
// The other functions call it when needed.
void initialize();

// Definitions made from now on belong to this document, and calls look in its table.
// Null stands for the default context, used when no document manager is there.
void setCurrentDocument(const void* document);

// A closed document's definitions go with it.
void forgetDocument(const void* document);

// The module whose code runs now: its ovedDefun and ovedRegFunc belong to it. The entry
// point, when given, is kept for the module's functions that have no registered handler
// (they are called with message 5). Null clears.
void setActiveModule(const void* module, EntryPoint entry);

// At unload: the module's functions stay defined, and calling one is a clear LISP error.
void forgetModule(const void* module);

struct EvalResult {
    bool ok = false;
    QString value; // in LISP notation
    QString error;
};

// Reads and evaluates every form of the text in the current document; the value is that
// of the last form. An error is printed as "; error: ..." and returned.
EvalResult evalString(const QString& expression);

// Evaluates a Scheme/LISP file (UTF-8) in the current document.
EvalResult loadFile(const QString& path);

// A chain in LISP notation: nil, T, "strings" with escapes, (lists), (a . b), numbers,
// <Entity name: 1a2b>. A chain of several elements reads as the list of them.
QString toLispNotation(const resbuf* chain);

// Called after each call of a module's function, with the function's name, whatever the
// call's outcome. Returns a function that puts the previous observer back.
std::function<void()> setCallObserver(std::function<void(const QString& functionName)> afterCall);

// A LISP function of the host that a library outside the core provides (the host's dialogs).
// It is defined in the host module, so that every document has it, and a later definition of
// the same name replaces it. The function receives the call's arguments as a chain (null for
// none; the host frees it) and returns its value as a chain that the host frees (null for
// nil). It says what is wrong with its arguments itself, at the command line. False when the
// LISP environment is not usable or the name is not a plain symbol name.
using HostFunction = std::function<resbuf*(const resbuf* args)>;
bool defineHostFunction(const QString& name, HostFunction function);

} // namespace ovcore::lisp
