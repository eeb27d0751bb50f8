#pragma once

// The tables that a resource library is built from: its strings, written by hand,
// and its embedded files (dialog templates, menus), generated from the files of
// resources/dialogs and resources/menus.

#include <cstddef>
#include <string_view>

namespace zelres {

struct StringEntry {
    unsigned id;
    std::string_view text;
};

struct FileEntry {
    int kind;
    unsigned id;
    const char* data; // NUL-terminated after `size` bytes
    std::size_t size;
};

extern const StringEntry* const kStrings;
extern const std::size_t kStringCount;

extern const FileEntry* const kFiles;
extern const std::size_t kFileCount;

// The lookup searches the strings by halves: they must stand in rising order of
// number, each number once.
template <std::size_t N> constexpr bool isStrictlyRising(const StringEntry (&entries)[N]) {
    for (std::size_t i = 1; i < N; ++i) {
        if (entries[i - 1].id >= entries[i].id) {
            return false;
        }
    }
    return true;
}

} // namespace zelres
