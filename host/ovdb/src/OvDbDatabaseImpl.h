#pragma once

#include "OvDbStub.h"
#include "ovdb/OvDbDatabase.h"

#include <deque>
#include <unordered_map>

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
    std::unordered_map<std::uint64_t, OvDbStub*> byHandle;
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
};
