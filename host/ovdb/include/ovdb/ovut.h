#pragma once

#include "ovdb/resbuf.h"

#include <functional>
#include <string_view>

// Chain and text utilities of the host.

// Builds a chain of (code, value) pairs ended by a code 0. RTLB, RTLE, RTNIL, RTT, RTDOTE
// and RTVOID take no value; strings (const wchar_t*) are copied; RTENAME takes a
// const std::int64_t* to an ov_name; points take a const double*; RTRESBUF takes a
// resbuf* whose chain is taken in at that place. Null when out of memory or on an
// unknown code.
resbuf* ovutBuildList(int code, ...);

// Frees a whole chain with its strings; null is harmless. Returns RTNORM.
int ovutRelRb(resbuf* chain);

// One new zero-filled link of that type.
resbuf* ovutNewRb(int code);

// A deep copy of a chain (strings and binary data copied). Null for null.
resbuf* ovutCopyChain(const resbuf* chain);

// Copies text into a new buffer owned by the caller, freed with ovutDelBuffer.
int ovutNewString(const wchar_t* text, wchar_t*& target);
void ovutDelBuffer(void* buffer);

// Prints to the host's command line. The text is a printf format of wide text.
int ovutPrintf(const wchar_t* format, ...);

// Where the command line goes: standard output until the host says otherwise.
// The sink receives the text as UTF-8.
using OvutOutputSink = std::function<void(std::string_view utf8)>;
void ovutSetOutputSink(OvutOutputSink sink);
void ovutResetOutputSink();

// Host wildcard match of text against a pattern: RTNORM (non-zero) on a match, 0 otherwise.
int ovutWcMatch(const wchar_t* text, const wchar_t* pattern);
