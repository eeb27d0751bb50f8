#pragma once

#include <cstdint>
#include <memory>

class OvDbStub;

// The stubs of a database by handle. A drawing holds a million objects and a read looks
// each up once or twice: one flat table of slots, probed in a row, costs no allocation
// per object and a sixth of the memory of a node per entry. Handle 0 names no object, so
// it marks an empty slot. Entries are never removed: a stub outlives its object.
class OvDbHandleMap {
public:
    OvDbStub* find(std::uint64_t handle) const {
        if (handle == 0 || m_size == 0)
            return nullptr;
        for (std::size_t i = slotOf(handle);; i = (i + 1) & m_mask) {
            const Slot& slot = m_slots[i];
            if (slot.handle == handle)
                return slot.stub;
            if (slot.handle == 0)
                return nullptr;
        }
    }
    bool contains(std::uint64_t handle) const { return find(handle) != nullptr; }

    // False when the handle is taken (or is 0).
    bool insert(std::uint64_t handle, OvDbStub* stub) {
        OvDbStub** slot = claim(handle);
        if (slot)
            *slot = stub;
        return slot != nullptr;
    }
    // The place of a new handle's stub, to be set before the next insert; null when the
    // handle is taken (or is 0). One probe where a test and an insert would take two.
    OvDbStub** claim(std::uint64_t handle) {
        if (handle == 0)
            return nullptr;
        if ((m_size + 1) * 4 > capacity() * 3)
            grow(capacity() == 0 ? 16 : capacity() * 2);
        for (std::size_t i = slotOf(handle);; i = (i + 1) & m_mask) {
            Slot& slot = m_slots[i];
            if (slot.handle == handle)
                return nullptr;
            if (slot.handle == 0) {
                slot = {handle, nullptr};
                ++m_size;
                return &slot.stub;
            }
        }
    }

    // Room for `count` entries without growing.
    void reserve(std::size_t count) {
        std::size_t wanted = 16;
        while (wanted * 3 < count * 4)
            wanted *= 2;
        if (wanted > capacity())
            grow(wanted);
    }
    std::size_t size() const { return m_size; }

private:
    struct Slot {
        std::uint64_t handle;
        OvDbStub* stub;
    };

    std::size_t capacity() const { return m_slots ? m_mask + 1 : 0; }
    std::size_t slotOf(std::uint64_t handle) const {
        // Handles are given out one after another, so a run of them takes a run of slots:
        // a read that meets them in order finds its slots in the cache. High bits are
        // folded in, so that handles far apart do not all meet in one place.
        return static_cast<std::size_t>(handle ^ handle >> 21 ^ handle >> 42) & m_mask;
    }
    void grow(std::size_t newCapacity) {
        std::unique_ptr<Slot[]> old = std::move(m_slots);
        const std::size_t oldCapacity = old ? m_mask + 1 : 0;
        m_slots = std::make_unique<Slot[]>(newCapacity);
        m_mask = newCapacity - 1;
        m_size = 0;
        for (std::size_t i = 0; i < oldCapacity; ++i) {
            if (old[i].handle != 0)
                insert(old[i].handle, old[i].stub);
        }
    }

    std::unique_ptr<Slot[]> m_slots;
    std::size_t m_mask = 0;
    std::size_t m_size = 0;
};
