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

#include "crash.hpp"
#include "owner.hpp"
#include "shared_atomic.hpp"
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

constexpr uint64_t k22 = owner::kFieldMask;  // pid and token fields
constexpr uint64_t kSleepers = uint64_t(1) << 31;
constexpr uint64_t kCount = (uint64_t(1) << 20) - 1;
constexpr long kPatienceNs = 50'000'000;  // sleep this long before checking on owners

uint64_t reader_pid(uint64_t v) { return (v >> 20) & k22; }
uint64_t reader_token(uint64_t v) { return v >> 42; }
uint64_t reader_word(const owner::Id &me) { return me.pid << 20 | me.token << 42; }
bool writer_dead(uint64_t w) { return owner::dead(w & ~kSleepers); }

struct Registry {
    std::mutex mutex;
    std::vector<std::unique_ptr<Mapping>> maps;
    std::vector<std::unique_ptr<Binding>> bindings;
};
Registry &registry() {
    static Registry *r = new Registry;  // never destroyed: locks may be used late in exit
    return *r;
}

void reset_registry_in_child() {
    new (&registry().mutex) std::mutex;  // another thread of the parent may have held it
}

owner::Id self() {
    static const bool registered = pthread_atfork(nullptr, nullptr, reset_registry_in_child) == 0;
    (void)registered;
    return owner::self();
}

// ---- words in the shared page -------------------------------------------------------

uint64_t load(const uint64_t &w) { return shared::load(w); }
bool cas(uint64_t &w, uint64_t expect, uint64_t want) { return shared::cas(w, expect, want); }

// The low 32 bits of a word, where sleepers wait (the sleeper flag and the
// reader count live there): the first four bytes of the word on a
// little-endian machine, the last four on a big-endian one.
uint32_t *low_half(uint64_t &w) {
    constexpr int kLowHalf = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? 1 : 0;
    return reinterpret_cast<uint32_t *>(&w) + kLowHalf;
}

// Sleeps while the low half of `w` reads as the low half of `seen`; false
// if it slept the whole patience (time to look at the owners).
bool sleep_on(uint64_t &w, uint64_t seen) {
    timespec patience{0, kPatienceNs};
    return syscall(SYS_futex, low_half(w), FUTEX_WAIT, uint32_t(seen), &patience, nullptr, 0) == 0 ||
           errno != ETIMEDOUT;
}
void wake_all(uint64_t &w) { syscall(SYS_futex, low_half(w), FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0); }

// Waits a while for the writer `w` (non-zero) to leave; frees the word if
// the writer has died.
void await_writer(SharedLock &l, uint64_t w) {
    if (!(w & kSleepers) && !cas(l.writer, w, w | kSleepers)) return;  // it changed: look again
    w |= kSleepers;
    if (!sleep_on(l.writer, w) && writer_dead(w) && cas(l.writer, w, 0))
        wake_all(l.writer);
}

// Drops one read of this process; a writer waiting for the slot to empty is woken.
void leave(SharedLock &l, uint64_t &slot) {
    if ((shared::sub_fetch(slot, uint64_t{1}) & kCount) == 0 && load(l.writer) != 0)
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
uint64_t *reader_slot(Mapping &m, int index, const owner::Id &me) {
    if (m.slot_pid[index].load(std::memory_order_acquire) == me.pid)
        return m.slot[index].load(std::memory_order_relaxed);
    std::lock_guard guard(registry().mutex);
    if (m.slot_pid[index].load() == me.pid) return m.slot[index].load();
    SharedLock &l = m.locks[index];
    uint64_t *claimed = nullptr;
    for (int pass = 0; pass < 2 && !claimed; ++pass) {
        for (uint64_t &slot : l.readers)
            if (!claimed && cas(slot, 0, reader_word(me))) claimed = &slot;
        for (uint64_t &slot : l.readers) {
            uint64_t v = load(slot);
            if (!claimed && v != 0 && owner::dead(reader_pid(v), reader_token(v))) cas(slot, v, 0);
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
    const owner::Id me = self();
    if (Hold *h = held(lock, me.pid)) {  // again: no waiting, a writer may be waiting for us
        shared::add_fetch(*h->slot, uint64_t{1});
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
        shared::add_fetch(*slot, uint64_t{1});
        crash::point(crash::kLockReading);
        uint64_t w = load(l.writer);
        if (w == 0 || again) break;
        leave(l, *slot);  // a writer holds it or waits for it: it goes first
        await_writer(l, w);
    }
    *free = Hold{&lock, &l, slot, me.pid, 1};
    return 0;
}

int write(cfg_lock &lock, int fd) {
    const owner::Id me = self();
    Binding *b = bind(lock, fd);
    if (!b) return -1;
    SharedLock &l = b->map->locks[lock.index];
    // Claim the writer word (new readers now wait), then wait out the readers.
    for (uint64_t want = me.word(); !cas(l.writer, 0, want); want = me.word() | kSleepers)
        if (uint64_t w = load(l.writer); w != 0) await_writer(l, w);
    crash::point(crash::kLockClaimed);
    for (uint64_t &slot : l.readers)
        for (uint64_t v; ((v = load(slot)) & kCount) != 0;)
            if (!sleep_on(slot, v) && owner::dead(reader_pid(v), reader_token(v))) cas(slot, v, 0);
    lock.written.store(&l);
    crash::point(crash::kLockHeld);
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
    const uint64_t mine = self().word();
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
