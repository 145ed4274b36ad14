// Read/write locks shared by the threads of a process and by processes.
//
// Across processes a lock is an open-file-description lock on one byte of the
// state file's header page: the kernel drops it when the holder dies, even on
// SIGKILL.  OFD locks belong to the descriptor, so the threads of one process
// (sharing it) would not exclude each other; a pthread rwlock orders them
// first, and the byte is locked by the first reader in and unlocked by the
// last reader out, or held by the one writer.
#pragma once

#include <pthread.h>

#include "swplatform/platform.h"

// Completes the platform's opaque cfg_lock_t.
struct cfg_lock {
    int index;  // which byte of the header page
    pthread_rwlock_t threads;
    pthread_mutex_t guard;
    int readers;  // threads of this process reading
};

namespace swsim::locks {

void init(cfg_lock &lock, int index);
// fd is the state file's descriptor; results 0 or -1.
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
