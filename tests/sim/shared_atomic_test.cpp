// The 64-bit words that processes share: each operation is whole even when
// several processes and threads race on the same word (on a 32-bit PowerPC,
// where the processor has no 64-bit atomics, through the machine-wide guard).
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <thread>
#include <vector>

#include "shared_atomic.hpp"

namespace {

// Words of one shared page, as the state file's are: aligned, seen by every process.
struct Words {
    alignas(8) uint64_t sum;
    alignas(8) uint64_t claimed;  // 0 free, else the holder's mark
    alignas(8) uint64_t inside;   // holders inside at once: never above 1
    alignas(8) uint64_t worst;
    alignas(8) uint64_t ready;  // workers waiting for the start
};

constexpr int kRounds = 10000;
constexpr int kProcesses = 2, kThreads = 2;
constexpr uint64_t kHigh = uint64_t(1) << 40;  // both halves of the word change

// Each worker adds across the word's halves and takes a claim word by
// compare-and-swap, counting who is inside meanwhile.
void work(Words &w, uint64_t mark) {
    swsim::shared::add_fetch(w.ready, uint64_t{1});  // all start together, so that they race
    while (swsim::shared::load(w.ready) < uint64_t(kProcesses) * kThreads) {
    }
    for (int i = 0; i < kRounds; ++i) {
        swsim::shared::add_fetch(w.sum, kHigh + 1);
        while (!swsim::shared::cas(w.claimed, uint64_t{0}, mark)) {
        }
        const uint64_t now = swsim::shared::add_fetch(w.inside, uint64_t{1});
        if (now > swsim::shared::load(w.worst)) swsim::shared::store(w.worst, now);
        swsim::shared::sub_fetch(w.inside, uint64_t{1});
        EXPECT_TRUE(swsim::shared::cas(w.claimed, mark, uint64_t{0}));
    }
}

TEST(SharedWords, OperationsStayWholeAcrossProcessesAndThreads) {
    void *page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(page, MAP_FAILED);
    Words &w = *new (page) Words{};
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            std::vector<std::thread> threads;
            for (int t = 0; t < kThreads; ++t)
                threads.emplace_back([&w, p, t] { work(w, uint64_t(p * kThreads + t + 1) << 33 | 1); });
            for (std::thread &t : threads) t.join();
            _exit(::testing::Test::HasFailure() ? 1 : 0);
        }
        children.push_back(child);
    }
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a claim was lost";
    }
    const uint64_t n = uint64_t(kProcesses) * kThreads * kRounds;
    EXPECT_EQ(swsim::shared::load(w.sum), n * (kHigh + 1)) << "additions were lost";
    EXPECT_EQ(swsim::shared::load(w.worst), 1u) << "two holders of the claim word at once";
    EXPECT_EQ(swsim::shared::load(w.claimed), 0u);
    munmap(page, 4096);
}

}  // namespace
