#pragma once

#include <cstddef>

// Objects must be closed within the call that opened them. The host counts the open
// objects around every call into a module (command, message, LISP function) and reports
// what a call left open at the command line ("; warning: ... left open").
namespace ovcore {

// Compares the open objects now with `before`; reports and counts a call that left some
// open. `where` names the call ("command WIRETYPESEL1"). True when nothing was left open.
bool checkObjectsLeftOpen(std::size_t before, const wchar_t* where);
// Calls that left objects open since the last reset.
int openObjectViolations();
void resetOpenObjectViolations();

} // namespace ovcore
