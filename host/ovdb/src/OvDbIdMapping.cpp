#include "ovdb/OvDbIdMapping.h"

bool OvDbIdMapping::compute(OvDbIdPair& pair) const {
    const auto it = m_index.find(pair.key());
    if (it == m_index.end())
        return false;
    pair = m_pairs[it->second];
    return true;
}

bool OvDbIdMapping::assign(const OvDbIdPair& pair) {
    if (pair.key().isNull())
        return false;
    const auto it = m_index.find(pair.key());
    if (it != m_index.end()) {
        m_pairs[it->second] = pair;
        return true;
    }
    m_index.emplace(pair.key(), m_pairs.size());
    m_pairs.push_back(pair);
    return true;
}

bool OvDbIdMapping::del(OvDbObjectId key) {
    const auto it = m_index.find(key);
    if (it == m_index.end())
        return false;
    const std::size_t pos = it->second;
    m_index.erase(it);
    m_pairs.erase(m_pairs.begin() + static_cast<std::ptrdiff_t>(pos));
    for (auto& [id, index] : m_index) {
        if (index > pos)
            --index;
    }
    return true;
}

std::vector<OvDbIdPair> OvDbIdMapping::pairs() const {
    return m_pairs;
}
