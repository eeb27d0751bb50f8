// The one entry of the resource library.

#include "ResourceTables.h"
#include "platform/ResourceLibraryAbi.h"

#include <algorithm>

extern "C" __attribute__((visibility("default"))) bool
zelResourceLookup(int kind, unsigned id, const char** data, std::size_t* size) {
    const char* foundData = nullptr;
    std::size_t foundSize = 0;
    if (kind == static_cast<int>(platform::ResourceKind::String)) {
        const zelres::StringEntry* end = zelres::kStrings + zelres::kStringCount;
        const zelres::StringEntry* it = std::lower_bound(
            zelres::kStrings, end, id,
            [](const zelres::StringEntry& entry, unsigned wanted) { return entry.id < wanted; });
        if (it != end && it->id == id) {
            // The texts are string literals, so a NUL follows each.
            foundData = it->text.data();
            foundSize = it->text.size();
        }
    } else {
        for (std::size_t i = 0; i < zelres::kFileCount; ++i) {
            if (zelres::kFiles[i].kind == kind && zelres::kFiles[i].id == id) {
                foundData = zelres::kFiles[i].data;
                foundSize = zelres::kFiles[i].size;
                break;
            }
        }
    }
    if (data != nullptr) {
        *data = foundData;
    }
    if (size != nullptr) {
        *size = foundSize;
    }
    return foundData != nullptr;
}
