#include "ovdb/OvDbObjectIterator.h"

OvDbObjectIterator::OvDbObjectIterator(std::vector<OvDbObjectId> ids) : m_ids(std::move(ids)) {}

OvDbObjectIterator::~OvDbObjectIterator() = default;

OvDbObjectId OvDbObjectIterator::objectId() const {
    return done() ? OvDbObjectId() : m_ids[m_pos];
}
