#pragma once

#include "ovdb/OvDbObjectId.h"

#include <vector>

// Walks a fixed list of object ids, such as the attributes of a block reference.
class OvDbObjectIterator {
public:
    explicit OvDbObjectIterator(std::vector<OvDbObjectId> ids);
    ~OvDbObjectIterator();

    void start() { m_pos = 0; }
    bool done() const { return m_pos >= m_ids.size(); }
    void step() {
        if (m_pos < m_ids.size())
            ++m_pos;
    }
    // Null when done.
    OvDbObjectId objectId() const;

private:
    std::vector<OvDbObjectId> m_ids;
    std::size_t m_pos = 0;
};
