#pragma once

#include "OvDbAccess.h"
#include "ovdb/OvDbObjectId.h"

#include <vector>

// The walk that table and block iterators share: a position in the owner's list of ids,
// which the iterator looks up afresh at every step, so that it keeps working after its
// owner was closed and sees records added or erased since.
namespace ovdbcursor {

using IdList = std::vector<OvDbObjectId>;

inline bool done(const IdList* list, long long pos) {
    return !list || pos < 0 || pos >= static_cast<long long>(list->size());
}

inline void skipErased(const IdList* list, long long& pos, bool forward) {
    while (!done(list, pos) && !OvDbAccess::isLive((*list)[pos].stub()))
        pos += forward ? 1 : -1;
}

inline void start(const IdList* list, long long& pos, bool atBeginning, bool skipDeleted) {
    pos = atBeginning ? 0 : (list ? static_cast<long long>(list->size()) : 0) - 1;
    if (skipDeleted)
        skipErased(list, pos, atBeginning);
}

inline void step(const IdList* list, long long& pos, bool forward, bool skipDeleted) {
    if (done(list, pos))
        return;
    pos += forward ? 1 : -1;
    if (skipDeleted)
        skipErased(list, pos, forward);
}

inline OvDbObjectId current(const IdList* list, long long pos) {
    return done(list, pos) ? OvDbObjectId() : (*list)[pos];
}

} // namespace ovdbcursor
