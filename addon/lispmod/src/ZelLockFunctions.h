#pragma once

// LISP functions of drawing locks: the lock file the host writes beside a drawing that it
// opens for editing.
//
// (zel_dwg_lock_info "drawing")  nil when the drawing has no lock file (or one that is not
//                                a lock); otherwise (user machine pid state time), state
//                                being "live" (another process holds it, or a process of
//                                another machine), "stale" (its process is gone) or "own"
//                                (this process), time the lock's time in ISO 8601 or "".
// (zel_dwg_unlock "drawing")     removes the lock, unless it is this process's lock of a
//                                drawing open here, which the host takes away on close.
//                                T when no other process's lock is left; nil with a
//                                message when the lock file cannot be removed.
int zelDwgLockInfo();
int zelDwgUnlock();
