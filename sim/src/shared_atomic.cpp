#include "shared_atomic.hpp"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>

namespace swsim::shared {
namespace {

constexpr unsigned kStripes = 64;
constexpr uintptr_t kPage = 4096;

// One byte of the lock file per stripe.  Record locks (fcntl F_SETLKW) belong
// to the process: the kernel drops them when it dies, and a child made by
// fork holds none of its parent's.
constexpr const char *kLockFiles[] = {"/dev/shm/swsim-shared-words.lock", "/tmp/swsim-shared-words.lock"};

struct Stripes {
    std::mutex mutex[kStripes];
};
Stripes &stripes() {
    static Stripes *s = new Stripes;  // never destroyed: used late in exit
    return *s;
}
void reset_in_child() {
    for (std::mutex &m : stripes().mutex) new (&m) std::mutex;  // another thread may have held one
}

int lock_file() {
    static const int fd = [] {
        pthread_atfork(nullptr, nullptr, reset_in_child);
        for (const char *path : kLockFiles) {
            const int f = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
            if (f < 0) continue;
            fchmod(f, 0666);  // every user of the machine's state files
            return f;
        }
        std::fprintf(stderr, "swsim: cannot open a lock file for shared words (%s)\n", kLockFiles[0]);
        std::abort();
    }();
    return fd;
}

void lock_byte(unsigned stripe, short type) {
    struct flock range {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = off_t(stripe);
    range.l_len = 1;
    while (fcntl(lock_file(), type == F_UNLCK ? F_SETLK : F_SETLKW, &range) != 0 && errno == EINTR) {
    }
}

}  // namespace

Guard::Guard(const void *word) : stripe_(unsigned(reinterpret_cast<uintptr_t>(word) % kPage / 8 % kStripes)) {
    lock_file();  // registers the fork handler before the first mutex is taken
    stripes().mutex[stripe_].lock();
    lock_byte(stripe_, F_WRLCK);
}

Guard::~Guard() {
    lock_byte(stripe_, F_UNLCK);
    stripes().mutex[stripe_].unlock();
}

}  // namespace swsim::shared
