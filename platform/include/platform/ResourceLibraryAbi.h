#pragma once

// The contract between a resource library and its loader. A resource library is
// plain data: it exports one C function through which the loader asks for an
// entry by kind and number. Strings are UTF-8; every entry's data is followed by
// a NUL byte that `size` does not count.

#include <cstddef>

namespace platform {

// The numbers are those of the Windows resource types, so that a number read in
// an old resource script means the same here.
enum class ResourceKind : int {
    Menu = 4,
    Dialog = 5,
    String = 6,
};

// bool zelResourceLookup(int kind, unsigned id, const char** data, std::size_t* size)
// True with `*data` and `*size` set when the library holds the entry; false with
// `*data` null and `*size` 0 otherwise. Either pointer may be null.
using ResourceLookupFunction = bool (*)(int kind, unsigned id, const char** data,
                                        std::size_t* size);

inline constexpr char kResourceLookupSymbol[] = "zelResourceLookup";

} // namespace platform
