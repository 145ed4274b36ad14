#include "locks.hpp"

#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "swsim/control.hpp"

namespace swsim::locks {

using layout::SharedLock;

// This process's one mapping of a state file's header page.  Never unmapped:
// holders may still point into it (the platform keeps replaced files mapped
// for the same reason).
struct Mapping {
    dev_t dev = 0;
    ino_t ino = 0;
    SharedLock *locks = nullptr;
    std::atomic<uint64_t *> slot[CFG_LOCK_COUNT] = {};  // our reader slot per lock
    std::atomic<uint32_t> slot_pid[CFG_LOCK_COUNT] = {};  // the process that claimed it
};

struct Binding {
    int fd;
    Mapping *map;
};

namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "futexes sleep on the low half of a word");

constexpr uint64_t k22 = (uint64_t(1) << 22) - 1;  // pid and token fields
constexpr uint64_t kSleepers = uint64_t(1) << 31;
constexpr uint64_t kCount = (uint64_t(1) << 20) - 1;
constexpr long kPatienceNs = 50'000'000;  // sleep this long before checking on owners

uint64_t writer_pid(uint64_t w) { return w & k22; }
uint64_t writer_token(uint64_t w) { return (w >> 32) & k22; }
uint64_t reader_pid(uint64_t v) { return (v >> 20) & k22; }
uint64_t reader_token(uint64_t v) { return v >> 42; }

// ---- who we are -------------------------------------------------------------------

struct Self {
    uint64_t pid;
    uint64_t token;  // start time folded into 1..2^22-1; 0 unknown
    uint64_t writer() const { return pid | token << 32; }
    uint64_t reader() const { return pid << 20 | token << 42; }
};

// Start time of `pid` (clock ticks after boot, field 22 of /proc/PID/stat) as
// a token: together with the pid it tells a process from a later one that
// was given the same pid.  0 if it cannot be read.
uint64_t start_token(uint64_t pid) {
    char path[40];
    std::snprintf(path, sizeof path, "/proc/%llu/stat", static_cast<unsigned long long>(pid));
    int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return 0;
    char buf[1024];
    ssize_t n = ::read(fd, buf, sizeof buf - 1);
    close(fd);
    if (n <= 0) return 0;
    buf[n] = '\0';
    const char *p = std::strrchr(buf, ')');  // the command name may hold anything
    unsigned long long start = 0;
    if (!p || std::sscanf(p + 1, " %*c%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s %llu", &start) != 1)
        return 0;
    return start % k22 + 1;
}

struct Registry {
    std::mutex mutex;
    std::vector<std::unique_ptr<Mapping>> maps;
    std::vector<std::unique_ptr<Binding>> bindings;
};
Registry &registry() {
    static Registry *r = new Registry;  // never destroyed: locks may be used late in exit
    return *r;
}

std::atomic<uint64_t> g_pid{0};  // 0 until known (again after fork)
std::atomic<uint64_t> g_token{0};

void forget_self_in_child() {
    g_pid.store(0);
    new (&registry().mutex) std::mutex;  // another thread of the parent may have held it
}

Self self() {
    static const bool registered = pthread_atfork(nullptr, nullptr, forget_self_in_child) == 0;
    (void)registered;
    uint64_t pid = g_pid.load(std::memory_order_acquire);
    if (pid == 0) {
        pid = uint64_t(getpid());
        g_token.store(start_token(pid), std::memory_order_relaxed);
        g_pid.store(pid, std::memory_order_release);
    }
    return {pid, g_token.load(std::memory_order_relaxed)};
}

// A recorded owner is dead if its pid is gone or now names a later process.
// A dead process that has not been reaped yet still counts as alive.
bool owner_dead(uint64_t pid, uint64_t token) {
    if (pid == 0) return true;
    if (kill(pid_t(pid), 0) != 0 && errno == ESRCH) return true;
    uint64_t now = token ? start_token(pid) : 0;
    return now != 0 && now != token;
}

// ---- words in the shared page -------------------------------------------------------

uint64_t load(const uint64_t &w) { return __atomic_load_n(&w, __ATOMIC_SEQ_CST); }
bool cas(uint64_t &w, uint64_t expect, uint64_t want) {
    return __atomic_compare_exchange_n(&w, &expect, want, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
}

// Sleeps while the low half of `w` reads as the low half of `seen`; false
// if it slept the whole patience (time to look at the owners).
bool sleep_on(uint64_t &w, uint64_t seen) {
    timespec patience{0, kPatienceNs};
    return syscall(SYS_futex, &w, FUTEX_WAIT, uint32_t(seen), &patience, nullptr, 0) == 0 ||
           errno != ETIMEDOUT;
}
void wake_all(uint64_t &w) { syscall(SYS_futex, &w, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0); }

// Waits a while for the writer `w` (non-zero) to leave; frees the word if
// the writer has died.
void await_writer(SharedLock &l, uint64_t w) {
    if (!(w & kSleepers) && !cas(l.writer, w, w | kSleepers)) return;  // it changed: look again
    w |= kSleepers;
    if (!sleep_on(l.writer, w) && owner_dead(writer_pid(w), writer_token(w)) && cas(l.writer, w, 0))
        wake_all(l.writer);
}

// Drops one read of this process; a writer waiting for the slot to empty is woken.
void leave(SharedLock &l, uint64_t &slot) {
    if ((__atomic_sub_fetch(&slot, 1, __ATOMIC_SEQ_CST) & kCount) == 0 && load(l.writer) != 0)
        wake_all(slot);
}

// ---- finding the shared lock -----------------------------------------------------------

Binding *bind(cfg_lock &lock, int fd) {
    Binding *b = lock.bound.load(std::memory_order_acquire);
    if (b && b->fd == fd) return b;
    struct stat st {};
    if (fd < 0 || fstat(fd, &st) != 0) return nullptr;
    Registry &r = registry();
    std::lock_guard guard(r.mutex);
    Mapping *map = nullptr;
    for (auto &m : r.maps)
        if (m->dev == st.st_dev && m->ino == st.st_ino) map = m.get();
    if (!map) {
        void *page = mmap(nullptr, layout::kPage, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        if (page == MAP_FAILED) return nullptr;
        auto m = std::make_unique<Mapping>();
        m->dev = st.st_dev;
        m->ino = st.st_ino;
        m->locks = reinterpret_cast<SharedLock *>(static_cast<uint8_t *>(page) + layout::kLockBase);
        map = r.maps.emplace_back(std::move(m)).get();
    }
    b = nullptr;
    for (auto &known : r.bindings)
        if (known->fd == fd && known->map == map) b = known.get();
    if (!b) b = r.bindings.emplace_back(new Binding{fd, map}).get();
    lock.bound.store(b, std::memory_order_release);
    return b;
}

// This process's reader slot of lock `index`: claimed on first use, after
// taking back slots of dead processes if none is free.  nullptr if full.
uint64_t *reader_slot(Mapping &m, int index, const Self &me) {
    if (m.slot_pid[index].load(std::memory_order_acquire) == me.pid)
        return m.slot[index].load(std::memory_order_relaxed);
    std::lock_guard guard(registry().mutex);
    if (m.slot_pid[index].load() == me.pid) return m.slot[index].load();
    SharedLock &l = m.locks[index];
    uint64_t *claimed = nullptr;
    for (int pass = 0; pass < 2 && !claimed; ++pass) {
        for (uint64_t &slot : l.readers)
            if (!claimed && cas(slot, 0, me.reader())) claimed = &slot;
        for (uint64_t &slot : l.readers) {
            uint64_t v = load(slot);
            if (!claimed && v != 0 && owner_dead(reader_pid(v), reader_token(v))) cas(slot, v, 0);
        }
    }
    if (!claimed) return nullptr;
    m.slot[index].store(claimed);
    m.slot_pid[index].store(me.pid, std::memory_order_release);
    return claimed;
}

// The read locks this thread holds.
struct Hold {
    const cfg_lock *lock;
    SharedLock *shared;
    uint64_t *slot;
    uint64_t pid;  // holds made before a fork are not the child's
    int depth;
};
thread_local Hold t_holds[16];

Hold *held(const cfg_lock &lock, uint64_t pid) {
    for (Hold &h : t_holds)
        if (h.depth > 0 && h.lock == &lock && h.pid == pid) return &h;
    return nullptr;
}

}  // namespace

void init(cfg_lock &lock, int index) {
    lock.index = index;
    lock.bound.store(nullptr);
    lock.written.store(nullptr);
}

int read(cfg_lock &lock, int fd) {
    const Self me = self();
    if (Hold *h = held(lock, me.pid)) {  // again: no waiting, a writer may be waiting for us
        __atomic_add_fetch(h->slot, 1, __ATOMIC_SEQ_CST);
        ++h->depth;
        return 0;
    }
    Binding *b = bind(lock, fd);
    if (!b) return -1;
    SharedLock &l = b->map->locks[lock.index];
    uint64_t *slot = reader_slot(*b->map, lock.index, me);
    Hold *free = nullptr;
    bool again = false;  // already reading it through another handle
    for (Hold &h : t_holds) {
        if (h.depth > 0 && h.pid == me.pid && h.shared == &l) again = true;
        if (h.depth == 0 || h.pid != me.pid) free = &h;
    }
    if (!slot || !free) return -1;
    for (;;) {
        __atomic_add_fetch(slot, 1, __ATOMIC_SEQ_CST);
        uint64_t w = load(l.writer);
        if (w == 0 || again) break;
        leave(l, *slot);  // a writer holds it or waits for it: it goes first
        await_writer(l, w);
    }
    *free = Hold{&lock, &l, slot, me.pid, 1};
    return 0;
}

int write(cfg_lock &lock, int fd) {
    const Self me = self();
    Binding *b = bind(lock, fd);
    if (!b) return -1;
    SharedLock &l = b->map->locks[lock.index];
    // Claim the writer word (new readers now wait), then wait out the readers.
    for (uint64_t want = me.writer(); !cas(l.writer, 0, want); want = me.writer() | kSleepers)
        if (uint64_t w = load(l.writer); w != 0) await_writer(l, w);
    for (uint64_t &slot : l.readers)
        for (uint64_t v; ((v = load(slot)) & kCount) != 0;)
            if (!sleep_on(slot, v) && owner_dead(reader_pid(v), reader_token(v))) cas(slot, v, 0);
    lock.written.store(&l);
    return 0;
}

int release_read(cfg_lock &lock, int) {
    Hold *h = held(lock, self().pid);
    if (!h) return -1;
    leave(*h->shared, *h->slot);
    --h->depth;
    return 0;
}

int release_write(cfg_lock &lock, int) {
    SharedLock *l = lock.written.exchange(nullptr);
    if (!l) return -1;
    const uint64_t mine = self().writer();
    for (uint64_t w = load(l->writer); (w & ~kSleepers) == mine; w = load(l->writer))
        if (cas(l->writer, w, 0)) {
            if (w & kSleepers) wake_all(l->writer);
            return 0;
        }
    return -1;  // taken back by another process (it thought us dead)
}

WriteGuard::WriteGuard(cfg_lock &lock, int fd) : lock_(lock), fd_(fd) {
    if (write(lock_, fd_) != 0) throw Error("cannot take the configuration write lock");
}

WriteGuard::~WriteGuard() { release_write(lock_, fd_); }

}  // namespace swsim::locks
