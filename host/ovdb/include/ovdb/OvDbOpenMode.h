#pragma once

namespace OvDb {

// How an object is opened: many readers or one writer at a time.
enum OpenMode : int {
    kForRead = 0,
    kForWrite = 1,
    kForNotify = 2,
};

} // namespace OvDb
