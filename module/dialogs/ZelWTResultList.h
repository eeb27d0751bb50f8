#pragma once

#include <QString>

#include <array>

struct resbuf;

// The answer of the dialogs that choose one wire type for the add-on's LISP code: five
// strings, the layer name first, then four flags as "0" or "1" whose meaning lies with the
// LISP caller. The chain belongs to the caller, who releases it with ovutRelRb.
resbuf* ZelBuildWTResultList(const std::array<QString, 5>& elements);
