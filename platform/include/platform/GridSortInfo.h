#pragma once

namespace platform {

// One key of a row sort: the column whose text decides, and the direction. Text
// compares as a person reads it (locale-aware), without regard to case unless
// `caseSensitive` is set.
struct GridSortInfo {
    int col = 1;
    bool ascending = true;
    bool caseSensitive = false;
};

} // namespace platform
