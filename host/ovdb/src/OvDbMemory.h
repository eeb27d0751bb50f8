#pragma once

#include <cstddef>

// Memory for large reads. Most of the time of opening a large drawing that is not spent
// reading it went to page faults, one per 4 KB touched; where the kernel can back memory
// with 2 MB pages instead (transparent huge pages on request), this asks it to.

// Asks for huge pages for the whole 2 MB pages inside [data, data + size), before they are
// first touched. Nothing happens where the kernel does not offer them.
void ovdbAdviseHugePages(void* data, std::size_t size);
