// The configuration locks: shared between threads and processes, and let go
// when their holder dies.
#include <signal.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "support.hpp"

namespace {

using namespace std::chrono_literals;
using simtest::Channel;
using simtest::SwitchTest;

// Starts taking a read lock on another thread; the future is ready once it is held.
std::future<int> read_lock_async(cfg_lock_t *lock) {
    return std::async(std::launch::async, [lock] {
        int rc = lock_read(lock);
        if (rc == 0) lock_free(lock);
        return rc;
    });
}

TEST_F(SwitchTest, AWriterInAnotherProcessHoldsOffReaders) {
    Channel held, release;
    pid_t child = simtest::fork_child([&] {
        if (lock_write(cfg_lock_table[2]) != 0) return 1;
        held.send();
        release.receive();
        return lock_free(cfg_lock_table[2]) == 0 ? 0 : 2;
    });
    ASSERT_TRUE(held.receive());
    auto reader = read_lock_async(cfg_lock_table[2]);
    EXPECT_EQ(reader.wait_for(300ms), std::future_status::timeout) << "the child holds the write lock";
    EXPECT_EQ(lock_read(cfg_lock_table[1]), 0) << "other locks are free";
    EXPECT_EQ(lock_free(cfg_lock_table[1]), 0);
    release.send();
    ASSERT_EQ(reader.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(reader.get(), 0);
    EXPECT_EQ(simtest::wait_exit(child), 0);
}

TEST_F(SwitchTest, ALockDiesWithItsHolder) {
    Channel held;
    pid_t child = simtest::fork_child([&] {
        if (lock_write(cfg_lock_table[0]) != 0) return 1;
        held.send();
        pause();
        return 0;
    });
    ASSERT_TRUE(held.receive());
    kill(child, SIGKILL);
    simtest::wait_exit(child);
    auto reader = read_lock_async(cfg_lock_table[0]);
    ASSERT_EQ(reader.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(reader.get(), 0);
}

TEST_F(SwitchTest, ThreadsShareReadsAndExcludeWrites) {
    cfg_lock_t *lock = cfg_lock_table[3];
    ASSERT_EQ(lock_read(lock), 0);
    auto second_reader = read_lock_async(lock);
    ASSERT_EQ(second_reader.wait_for(5s), std::future_status::ready) << "readers share";
    EXPECT_EQ(second_reader.get(), 0);

    std::atomic<bool> writing{false};
    auto writer = std::async(std::launch::async, [&] {
        if (lock_write(lock) != 0) return -1;
        writing = true;
        std::this_thread::sleep_for(50ms);
        writing = false;
        return lock_free(lock);
    });
    EXPECT_EQ(writer.wait_for(200ms), std::future_status::timeout) << "the writer waits for the reader";
    EXPECT_EQ(lock_write(lock), -1) << "a reader cannot take the write lock on top";
    EXPECT_EQ(lock_free(lock), 0);
    EXPECT_EQ(lock_free(lock), -1) << "nothing left to free";
    auto reader = std::async(std::launch::async, [&] {
        while (!writing) std::this_thread::yield();
        int rc = lock_read(lock);
        bool excluded = !writing;
        lock_free(lock);
        return rc == 0 && excluded;
    });
    EXPECT_TRUE(reader.get()) << "a reader waits for the writer";
    EXPECT_EQ(writer.get(), 0);
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

}  // namespace
