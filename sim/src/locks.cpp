#include "locks.hpp"

#include <fcntl.h>

#include <cerrno>

#include "layout.hpp"
#include "swsim/control.hpp"

namespace swsim::locks {
namespace {

int ofd(const cfg_lock &lock, int fd, short type) {
    struct flock fl {};
    fl.l_type = type;
    fl.l_whence = SEEK_SET;
    fl.l_start = layout::kLockByteBase + lock.index;
    fl.l_len = 1;
    fl.l_pid = 0;
    int cmd = type == F_UNLCK ? F_OFD_SETLK : F_OFD_SETLKW;
    while (fcntl(fd, cmd, &fl) != 0)
        if (errno != EINTR) return -1;
    return 0;
}

}  // namespace

void init(cfg_lock &lock, int index) {
    lock.index = index;
    pthread_rwlock_init(&lock.threads, nullptr);
    pthread_mutex_init(&lock.guard, nullptr);
    lock.readers = 0;
}

int read(cfg_lock &lock, int fd) {
    if (pthread_rwlock_rdlock(&lock.threads) != 0) return -1;
    pthread_mutex_lock(&lock.guard);
    int rc = lock.readers == 0 ? ofd(lock, fd, F_RDLCK) : 0;
    if (rc == 0) ++lock.readers;
    pthread_mutex_unlock(&lock.guard);
    if (rc != 0) pthread_rwlock_unlock(&lock.threads);
    return rc;
}

int write(cfg_lock &lock, int fd) {
    if (pthread_rwlock_wrlock(&lock.threads) != 0) return -1;
    if (ofd(lock, fd, F_WRLCK) != 0) {
        pthread_rwlock_unlock(&lock.threads);
        return -1;
    }
    return 0;
}

int release_read(cfg_lock &lock, int fd) {
    pthread_mutex_lock(&lock.guard);
    if (--lock.readers == 0) ofd(lock, fd, F_UNLCK);
    pthread_mutex_unlock(&lock.guard);
    return pthread_rwlock_unlock(&lock.threads) == 0 ? 0 : -1;
}

int release_write(cfg_lock &lock, int fd) {
    ofd(lock, fd, F_UNLCK);
    return pthread_rwlock_unlock(&lock.threads) == 0 ? 0 : -1;
}

WriteGuard::WriteGuard(cfg_lock &lock, int fd) : lock_(lock), fd_(fd) {
    if (write(lock_, fd_) != 0) throw Error("cannot take the configuration write lock");
}

WriteGuard::~WriteGuard() { release_write(lock_, fd_); }

}  // namespace swsim::locks
