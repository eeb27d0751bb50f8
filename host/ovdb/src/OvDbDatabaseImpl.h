#pragma once

#include "OvDbHandleMap.h"
#include "OvDbStub.h"
#include "ovdb/OvDbDatabase.h"

#include <deque>
#include <unordered_map>
#include <vector>

// The contents of a database. A read builds a fresh one and swaps it in only when the
// whole file made sense.
struct OvDbDatabase::Impl {
    explicit Impl(OvDbDatabase* database) : db(database) {}
    ~Impl();

    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    // A stub for a new handle (0: the next of the seed). Null when the handle is taken.
    OvDbStub* newStub(std::uint64_t handle = 0);

    OvDbDatabase* db;
    std::deque<OvDbStub> stubs;
    OvDbHandleMap byHandle;
    std::uint64_t handseed = 1;
    int dbmod = 0;
    std::size_t openObjects = 0;
    unsigned saveGeneration = 0;

    OvDbStub* layerTable = nullptr;
    OvDbStub* linetypeTable = nullptr;
    OvDbStub* blockTable = nullptr;
    OvDbStub* namedObjects = nullptr;
    OvDbStub* clayer = nullptr;
    // Records the drawing cannot do without.
    OvDbStub* layerZero = nullptr;
    OvDbStub* continuous = nullptr;
    OvDbStub* byLayer = nullptr;
    OvDbStub* byBlock = nullptr;
    OvDbStub* modelSpace = nullptr;
    OvDbStub* paperSpace = nullptr;

    // The block references of each block definition, in the order in which they entered
    // the drawing, so that finding the references of a block costs their number and not a
    // walk of every entity. Entities are only ever appended to their block, so this order
    // is also their order within any one block. An entry stays when its reference is
    // erased (it may be revived) and is dropped when the reference inserts another block.
    struct BlockReferenceEntry {
        std::uint64_t order;
        OvDbStub* reference;
    };
    std::unordered_map<const OvDbStub*, std::vector<BlockReferenceEntry>> blockReferences;
    // Live entities (attributes included) on each layer, kept as entities are added,
    // erased, revived and moved, so that usage data costs the layers, not the entities.
    std::unordered_map<const OvDbStub*, std::size_t> layerUse;
    void useLayer(const OvDbStub* layer, bool using_) {
        if (!layer)
            return;
        if (using_)
            ++layerUse[layer];
        else if (const auto it = layerUse.find(layer); it != layerUse.end() && it->second > 0)
            --it->second;
    }
    std::uint64_t nextReferenceOrder = 0;
    // A reference new to the drawing comes last.
    void indexBlockReference(OvDbStub* reference, const OvDbStub* block);
    // A reference that inserts another block now keeps its place among the references.
    void moveBlockReference(OvDbStub* reference, const OvDbStub* from, const OvDbStub* to);
};
