#pragma once

#include "ovdb/OvDbIdPair.h"

#include <unordered_map>
#include <vector>

class OvDbDatabase;

namespace OvDb {
// What a clone does with a record whose name the destination already has.
enum DuplicateRecordCloning : int {
    kDrcNotApplicable = 0,
    kDrcIgnore = 1,
    kDrcReplace = 2,
    kDrcXrefMangleName = 3,
    kDrcMangleName = 4,
};
} // namespace OvDb

// The outcome of a clone: for each source object met, what stands for it now.
class OvDbIdMapping {
public:
    OvDbIdMapping() = default;

    // Fills the pair whose key is pair.key(); false when the key was not met.
    bool compute(OvDbIdPair& pair) const;
    // Adds or replaces the pair of its key.
    bool assign(const OvDbIdPair& pair);
    bool del(OvDbObjectId key);

    std::size_t size() const { return m_pairs.size(); }
    // The pairs in the order they were made.
    std::vector<OvDbIdPair> pairs() const;

    OvDbDatabase* origDb() const { return m_orig; }
    OvDbDatabase* destDb() const { return m_dest; }
    int duplicateRecordCloning() const { return m_drc; }
    void setDatabases(OvDbDatabase* orig, OvDbDatabase* dest) {
        m_orig = orig;
        m_dest = dest;
    }
    void setDuplicateRecordCloning(int drc) { m_drc = drc; }

private:
    std::unordered_map<OvDbObjectId, std::size_t> m_index;
    std::vector<OvDbIdPair> m_pairs;
    OvDbDatabase* m_orig = nullptr;
    OvDbDatabase* m_dest = nullptr;
    int m_drc = OvDb::kDrcIgnore;
};
