#pragma once

#include <cstddef>

// Memory for large reads. A sixth of the time of opening the 10,000-layer drawing went to
// page faults, one per 4 KB touched; where the kernel can back memory with 2 MB pages
// instead (transparent huge pages on request), this asks it to.

// Asks for huge pages for the whole 2 MB pages inside [data, data + size), before they are
// first touched. Nothing happens where the kernel does not offer them.
void ovdbAdviseHugePages(void* data, std::size_t size);
