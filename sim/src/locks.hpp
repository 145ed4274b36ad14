// Read/write locks shared by the threads of a process and by processes.
//
// Each lock is a SharedLock (layout.hpp) in the header page of the state file,
// which every user maps shared.  Taking or freeing an uncontended lock is a
// few atomic operations and no system call; waiters sleep on futexes.  A
// process claims one reader slot per lock and counts its readers there; a
// writer publishes its pid in the writer word, which also keeps new readers
// out while it waits for the readers present to leave (writers do not
// starve).  Owners are recorded as pid plus a start-time token (owner.hpp),
// so a waiter that sleeps for long checks them and takes back what a dead
// process held; a process that has exited but is not reaped yet is dead.
#pragma once

#include <atomic>

#include "layout.hpp"
#include "swplatform/platform.h"

namespace swsim::locks {
struct Binding;  // a descriptor of the state file and its lock page mapping
}

// Completes the platform's opaque cfg_lock_t.
struct cfg_lock {
    int index = 0;                                            // which SharedLock
    std::atomic<swsim::locks::Binding *> bound{nullptr};      // last descriptor used
    std::atomic<swsim::layout::SharedLock *> written{nullptr};  // held for writing
};

namespace swsim::locks {

void init(cfg_lock &lock, int index);
// fd is the state file's descriptor; results 0 or -1.  A thread may take a
// read lock it already holds again; it frees it as many times.
int read(cfg_lock &lock, int fd);
int write(cfg_lock &lock, int fd);
int release_read(cfg_lock &lock, int fd);
int release_write(cfg_lock &lock, int fd);

// Holds the write lock for a scope (throws Error if it cannot be taken).
class WriteGuard {
public:
    WriteGuard(cfg_lock &lock, int fd);
    ~WriteGuard();
    WriteGuard(const WriteGuard &) = delete;
    WriteGuard &operator=(const WriteGuard &) = delete;

private:
    cfg_lock &lock_;
    int fd_;
};

}  // namespace swsim::locks
