#include "owner.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace swsim::owner {
namespace {

// What /proc/PID/stat (or a thread's stat) says: the state letter and the
// start time in clock ticks after boot.
struct ProcStat {
    bool readable = false;
    char state = '?';
    unsigned long long start = 0;
};

ProcStat read_stat(const char *path) {
    ProcStat st;
    int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return st;
    char buf[1024];
    ssize_t n = ::read(fd, buf, sizeof buf - 1);
    close(fd);
    if (n <= 0) return st;
    buf[n] = '\0';
    const char *p = std::strrchr(buf, ')');  // the command name may hold anything
    if (!p || std::sscanf(p + 1, " %c%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s%*s %llu", &st.state,
                          &st.start) != 2)
        return st;
    st.readable = true;
    return st;
}

// Read through the leader thread's entry, which carries the same start time
// as /proc/PID/stat: a process's own /proc/PID/stat is made up by emulators
// (qemu-user) and would disagree with what other processes read of it.
ProcStat process_stat(uint64_t pid) {
    char path[64];
    const auto n = static_cast<unsigned long long>(pid);
    std::snprintf(path, sizeof path, "/proc/%llu/task/%llu/stat", n, n);
    return read_stat(path);
}

bool exited(char state) { return state == 'Z' || state == 'X'; }

uint64_t token_of(const ProcStat &st) { return st.readable ? st.start % kFieldMask + 1 : 0; }

// The leader of a thread group shows as a zombie once its own thread has
// exited, while other threads may still run: the process is dead only when
// none of its threads is alive.
bool any_thread_alive(uint64_t pid) {
    char dir[48];
    std::snprintf(dir, sizeof dir, "/proc/%llu/task", static_cast<unsigned long long>(pid));
    DIR *d = opendir(dir);
    if (!d) return false;
    bool alive = false;
    while (dirent *e = readdir(d)) {
        if (e->d_name[0] == '.') continue;
        char path[sizeof dir + sizeof e->d_name + 8];
        std::snprintf(path, sizeof path, "%s/%s/stat", dir, e->d_name);
        const ProcStat st = read_stat(path);
        if (st.readable && !exited(st.state)) {
            alive = true;
            break;
        }
    }
    closedir(d);
    return alive;
}

std::atomic<uint64_t> g_pid{0};  // 0 until known (again after fork)
std::atomic<uint64_t> g_token{0};

void forget_self_in_child() { g_pid.store(0); }

}  // namespace

Id self() {
    static const bool registered = pthread_atfork(nullptr, nullptr, forget_self_in_child) == 0;
    (void)registered;
    uint64_t pid = g_pid.load(std::memory_order_acquire);
    if (pid == 0) {
        pid = uint64_t(getpid());
        g_token.store(token_of(process_stat(pid)), std::memory_order_relaxed);
        g_pid.store(pid, std::memory_order_release);
    }
    return {pid, g_token.load(std::memory_order_relaxed)};
}

bool dead(uint64_t pid, uint64_t token) {
    if (pid == 0) return true;
    const ProcStat st = process_stat(pid);
    if (!st.readable) return kill(pid_t(pid), 0) != 0 && errno == ESRCH;
    if (token != 0 && token_of(st) != token) return true;  // the pid was given to a later process
    return exited(st.state) && !any_thread_alive(pid);
}

bool Backoff::pause() {
    constexpr unsigned kSpins = 64;          // yield this often first
    constexpr unsigned kCheckEvery = 16;     // then sleep, checking every 16 naps
    constexpr long kNapNs = 200'000;         // of 0.2 ms
    ++rounds_;
    if (rounds_ <= kSpins) {
        sched_yield();
        return rounds_ == kSpins;
    }
    timespec nap{0, kNapNs};
    nanosleep(&nap, nullptr);
    return (rounds_ - kSpins) % kCheckEvery == 0;
}

}  // namespace swsim::owner
