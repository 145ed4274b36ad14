// The configuration locks: shared between threads and processes, and let go
// when their holder dies.
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <utility>
#include <vector>

#include "support.hpp"

namespace {

using namespace std::chrono_literals;
using simtest::Channel;
using simtest::SwitchTest;
using Take = int (*)(cfg_lock_t *);

// Takes `lock` with `take` (lock_read or lock_write) on another thread; the
// future is ready, with the result, once it has been held and let go.
std::future<int> lock_async(Take take, cfg_lock_t *lock) {
    return std::async(std::launch::async, [take, lock] {
        int rc = take(lock);
        if (rc == 0) lock_free(lock);
        return rc;
    });
}

// A lock held by another process holds off the other kind of taker, and is
// taken back when its holder is killed; other locks stay free meanwhile.
TEST_F(SwitchTest, ALockHeldInAnotherProcessHoldsOffTheOtherKindAndDiesWithIt) {
    const std::pair<Take, Take> cases[] = {{&lock_write, &lock_read}, {&lock_read, &lock_write}};
    for (auto [held_as, wanted_as] : cases) {
        SCOPED_TRACE(held_as == &lock_write ? "held for writing" : "held for reading");
        Channel held;
        pid_t child = simtest::fork_child([&] {
            if (held_as(cfg_lock_table[2]) != 0) return 1;
            held.send();
            pause();
            return 0;
        });
        ASSERT_TRUE(held.receive());
        auto waiter = lock_async(wanted_as, cfg_lock_table[2]);
        EXPECT_EQ(waiter.wait_for(300ms), std::future_status::timeout) << "the child holds the lock";
        EXPECT_EQ(lock_write(cfg_lock_table[1]), 0) << "other locks are free";
        EXPECT_EQ(lock_free(cfg_lock_table[1]), 0);
        kill(child, SIGKILL);
        simtest::wait_exit(child);
        ASSERT_EQ(waiter.wait_for(5s), std::future_status::ready) << "the dead holder's lock was taken back";
        EXPECT_EQ(waiter.get(), 0);
    }
}

TEST_F(SwitchTest, ControlChangesWaitForTheAgentsReaders) {
    ASSERT_EQ(lock_read(cfg_lock_table[2]), 0);
    auto change = std::async(std::launch::async, [&] { sw_->set_link(0, 0, false); });
    EXPECT_EQ(change.wait_for(300ms), std::future_status::timeout);
    EXPECT_EQ(get_status()->units[0].ports[0].link, 1u);
    ASSERT_EQ(lock_free(cfg_lock_table[2]), 0);
    ASSERT_EQ(change.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(get_status()->units[0].ports[0].link, 0u);
}

TEST_F(SwitchTest, AWriteLockClaimDiesWithItsWaitingWriter) {
    ASSERT_EQ(lock_read(cfg_lock_table[3]), 0);
    pid_t child = simtest::fork_child([&] { return lock_write(cfg_lock_table[3]) == 0 ? 0 : 1; });
    // Once the child waits for our read lock, new readers queue behind it.
    std::future<int> queued = lock_async(&lock_read, cfg_lock_table[3]);
    for (int tries = 0; tries < 50 && queued.wait_for(100ms) == std::future_status::ready; ++tries) {
        EXPECT_EQ(queued.get(), 0);
        queued = lock_async(&lock_read, cfg_lock_table[3]);
    }
    ASSERT_EQ(queued.wait_for(0s), std::future_status::timeout) << "readers never queued behind the writer";
    kill(child, SIGKILL);
    EXPECT_EQ(simtest::wait_exit(child), -SIGKILL) << "the writer waited for our read lock";
    ASSERT_EQ(queued.wait_for(5s), std::future_status::ready) << "the dead writer's claim was taken back";
    EXPECT_EQ(queued.get(), 0);
    EXPECT_EQ(lock_free(cfg_lock_table[3]), 0);
    auto writer = lock_async(&lock_write, cfg_lock_table[3]);
    ASSERT_EQ(writer.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(writer.get(), 0);
}

// Two writers bump two counters, yielding between them; three readers check
// that both agree while they hold the read lock.
TEST_F(SwitchTest, ReadAndWriteLocksExcludeEachOtherAcrossThreads) {
    cfg_lock_t *lock = cfg_lock_table[0];
    constexpr int kWrites = 2000;
    std::atomic<int> first{0}, second{0}, torn{0}, reads{0}, failures{0};
    std::atomic<bool> done{false};
    auto under = [&](Take take, auto body) {
        if (take(lock) != 0) return void(++failures);
        body();
        if (lock_free(lock) != 0) ++failures;
    };
    auto write_many = [&] {
        for (int i = 0; i < kWrites; ++i)
            under(&lock_write, [&] {
                first.store(first.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
                std::this_thread::yield();
                second.store(second.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
            });
    };
    auto read_many = [&] {
        while (!done)
            under(&lock_read, [&] {
                const int a = first.load(std::memory_order_relaxed);
                std::this_thread::yield();
                torn += second.load(std::memory_order_relaxed) != a;
                ++reads;
            });
    };
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) readers.emplace_back(read_many);
    std::thread w1(write_many), w2(write_many);
    w1.join();
    w2.join();
    done = true;
    for (auto &t : readers) t.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(torn, 0) << "a reader saw a write half done";
    EXPECT_EQ(second, 2 * kWrites) << "writers excluded each other";
    EXPECT_GT(reads, 0);
}

// Readers share; a thread holding a read lock may take it again even while a
// writer waits (queueing behind the writer would deadlock), but cannot take
// the write lock on top; the writer gets in once every read is freed.
TEST_F(SwitchTest, ReadsShareAndNestWhileAWriterWaits) {
    cfg_lock_t *lock = cfg_lock_table[3];
    ASSERT_EQ(lock_read(lock), 0);
    auto second_reader = lock_async(&lock_read, lock);
    ASSERT_EQ(second_reader.wait_for(5s), std::future_status::ready) << "readers share";
    EXPECT_EQ(second_reader.get(), 0);

    auto writer = lock_async(&lock_write, lock);
    ASSERT_EQ(writer.wait_for(300ms), std::future_status::timeout) << "the writer waits for us";
    alarm(10);  // a nested read queued behind the writer would never return
    EXPECT_EQ(lock_read(lock), 0);
    alarm(0);
    EXPECT_EQ(lock_write(lock), -1) << "a reader cannot take the write lock on top";
    EXPECT_EQ(lock_free(lock), 0);
    EXPECT_EQ(writer.wait_for(300ms), std::future_status::timeout) << "the first read is still held";
    EXPECT_EQ(lock_free(lock), 0);
    ASSERT_EQ(writer.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(writer.get(), 0);
    EXPECT_EQ(lock_free(lock), -1) << "nothing left to free";
}

// Two threads of a child pass a read lock between them so that it is never
// free; a writer in this process still gets in.
TEST_F(SwitchTest, AWriteLockIsNotStarvedByReadersInAnotherProcess) {
    Channel going;
    pid_t child = simtest::fork_child([&] {
        std::atomic<int> turn{0};
        bool first = true;
        auto relay = [&](int me) {
            for (;;) {
                while (turn != me) std::this_thread::yield();
                if (lock_read(cfg_lock_table[0]) != 0) return;
                turn = 1 - me;
                if (me == 0 && std::exchange(first, false)) going.send();
                // Let go once the partner holds it too (or it cannot get in).
                auto until = std::chrono::steady_clock::now() + 20ms;
                while (turn != me && std::chrono::steady_clock::now() < until) std::this_thread::yield();
                lock_free(cfg_lock_table[0]);
            }
        };
        std::thread a(relay, 0), b(relay, 1);
        a.join();
        b.join();
        return 0;
    });
    ASSERT_TRUE(going.receive());
    auto writer = lock_async(&lock_write, cfg_lock_table[0]);
    EXPECT_EQ(writer.wait_for(5s), std::future_status::ready) << "the writer starved";
    kill(child, SIGKILL);
    simtest::wait_exit(child);
    ASSERT_EQ(writer.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(writer.get(), 0);
}

}  // namespace
