// MAC address table usage: the refresh rule of the per-unit cache, told by
// the journal of the platform's counts and a count that can be held, and a
// stampede of reads while workers run.
#include <pthread.h>
#include <sched.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include "fixture.hpp"
#include "mibs/chassis/mac_usage.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

using snmpapi::chassis::mac_usage_snapshot;

// Workers started through the module's seam and those that have ended, so
// that a test knows when a detached refresh is over.
std::atomic<int> g_started{0}, g_ended{0};

struct Trampoline {
    void *(*body)(void *);
    void *arg;
};
void *run_counted(void *p) {
    const Trampoline t = *static_cast<Trampoline *>(p);
    delete static_cast<Trampoline *>(p);
    t.body(t.arg);
    ++g_ended;
    return nullptr;
}
int counted_start(pthread_t *thread, const pthread_attr_t *attr, void *(*body)(void *), void *arg) {
    auto *t = new Trampoline{body, arg};
    const int rc = pthread_create(thread, attr, run_counted, t);
    if (rc != 0) {
        delete t;
        return rc;
    }
    ++g_started;
    return 0;
}

class MacUsageTest : public SwitchTest {
protected:
    // Unit 1 is the management processor; unit 2 has learned three
    // addresses, unit 1 one; unit 3 is not part of the stack.
    std::string scenario() const override {
        return R"({"units": [{"ports": 8}, {"ports": 8}],
                   "fdb": [{"mac": "00:00:5e:00:53:01", "vid": 1, "port": "2/1"},
                           {"mac": "00:00:5e:00:53:02", "vid": 1, "port": "2/2"},
                           {"mac": "00:00:5e:00:53:03", "vid": 1, "port": "2/3"},
                           {"mac": "00:00:5e:00:53:04", "vid": 1, "port": "1/1"}],
                   "chassis": {"mac_summary_ms": 0}})";
    }
    static constexpr int32_t kUnit = 2;
    static constexpr uint64_t kBoot = 360000;  // the first read happens an hour after boot

    void SetUp() override {
        SwitchTest::SetUp();
        snmpapi::chassis::mac_usage_reset();
        snmpapi::chassis::set_worker_start(counted_start);
        sw().set_uptime_cs(kBoot);
    }
    void TearDown() override {
        sw().set_mac_summary(0, false);
        wait_idle();
        snmpapi::chassis::mac_usage_reset();
        SwitchTest::TearDown();
    }

    // Waits (without a deadline of its own: a held count ends within the
    // simulator's limit) until every worker started has ended.
    static void wait_idle() {
        while (g_ended != g_started) sched_yield();
    }
    // Waits until the worker started for the unit has taken up its count.
    static void wait_counting(uint32_t unit0 = kUnit - 1) {  // polls: the worker sets the flag first
        while (!mac_usage_snapshot(unit0).in_progress) sched_yield();
    }

    // The counts the platform was asked for since the journal was cleared,
    // as their request words.
    std::vector<std::string> counts() {
        std::vector<std::string> out;
        for (const auto &c : sw().journal())
            if (c.call == "cfg_get_mac_address_table_summary") out.push_back(c.args);
        return out;
    }
    // A read, once the worker it may have started is done, and how many
    // counts it asked the platform for.
    struct Read {
        int32_t value;
        size_t counts;
    };
    Read read(int32_t unit = kUnit) {
        sw().journal_clear();
        const int32_t value = get_swMacAddrUsageValue(unit);
        wait_idle();
        return {value, counts().size()};
    }
    void first_read() {
        ASSERT_EQ(read().value, 0);
        ASSERT_EQ(mac_usage_snapshot(kUnit - 1).count, 3u);
    }
    // Moves the switch's clock to `cs` after the unit's last refresh.
    void after_last_refresh(int64_t cs) {
        sw().set_uptime_cs(uint64_t(int64_t(mac_usage_snapshot(kUnit - 1).last_refresh) + cs));
    }
};

TEST_F(MacUsageTest, TheFirstReadWaitsForTheCountAndStillAnswersZero) {
    // The request names unit0 1 in the most significant byte of its fifth word.
    sw().journal_clear();
    EXPECT_EQ(get_swMacAddrUsageValue(kUnit), 0);
    EXPECT_EQ(counts(), (std::vector<std::string>{"608,-273,0,0,16777216,0,0"}));
    const auto s = mac_usage_snapshot(kUnit - 1);
    EXPECT_EQ(s.count, 3u) << "the first count is in the cache once the read returns";
    EXPECT_FALSE(s.in_progress);
    EXPECT_GE(s.last_refresh, kBoot);
    const Read second = read();
    EXPECT_EQ(second.value, 3);
    EXPECT_EQ(second.counts, 0u);
}

TEST_F(MacUsageTest, ACountIsRefreshedAtMostEveryThirtySeconds) {
    first_read();
    struct Case {
        int64_t after_cs;  // since the last refresh
        bool refresh;
    };
    const Case cases[] = {
        {1000, false}, {2950, false},  // within 30 s
        {3050, true},                  // past them: a refresh, started now
        {2950, false}, {3050, true},
        {-6000, false},                // the clock went back: the cache
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.after_cs);
        after_last_refresh(c.after_cs);
        const Read r = read();
        EXPECT_EQ(r.value, 3);
        EXPECT_EQ(r.counts, c.refresh ? 1u : 0u);
        wait_idle();
    }
}

// The difference of two times since boot is taken in 64 bits: a read 2^32
// hundredths of a second (497 days) after the last refresh is due, though
// the low 32 bits of the two times are 100 apart.
TEST_F(MacUsageTest, TheTimeSinceTheLastRefreshIsSixtyFourBits) {
    sw().set_uptime_cs((uint64_t(1) << 32) + 5000);
    first_read();
    EXPECT_GT(mac_usage_snapshot(kUnit - 1).last_refresh, uint64_t(1) << 32) << "kept whole";
    after_last_refresh(2950);
    EXPECT_EQ(read().counts, 0u);
    after_last_refresh((int64_t(1) << 32) + 100);
    EXPECT_EQ(read().counts, 1u);
}

// Past the first read, a refresh runs on while the reply goes: the read
// answers the count it found, reads meanwhile answer it too and start
// nothing, and the new count shows from the first read after the worker.
TEST_F(MacUsageTest, ARefreshInProgressNeverHoldsAReply) {
    first_read();
    const uint8_t mac[6] = {0x00, 0x00, 0x5e, 0x00, 0x53, 0x10};
    sw().fdb_add(mac, 1, kUnit - 1, 4, -1, false);
    sw().set_mac_summary(0, true);
    after_last_refresh(3100);
    sw().journal_clear();
    EXPECT_EQ(get_swMacAddrUsageValue(kUnit), 3) << "the count of when the request began";
    wait_counting();
    after_last_refresh(9000);  // due again, but a worker is counting
    EXPECT_EQ(get_swMacAddrUsageValue(kUnit), 3);
    EXPECT_TRUE(mac_usage_snapshot(kUnit - 1).in_progress);
    sw().set_mac_summary(0, false);
    wait_idle();
    EXPECT_EQ(counts().size(), 1u) << "the read during the count started none";
    EXPECT_EQ(read().value, 4);
}

TEST_F(MacUsageTest, AFailedCountKeepsTheOldCountAndWaitsAnotherThirtySeconds) {
    first_read();
    sw().fault_set("cfg_get_mac_address_table_summary", -1, 1);
    after_last_refresh(3100);
    const uint64_t started = mac_usage_snapshot(kUnit - 1).last_refresh + 3100;
    EXPECT_EQ(read().value, 3);
    wait_idle();
    const auto s = mac_usage_snapshot(kUnit - 1);
    EXPECT_EQ(s.count, 3u);
    EXPECT_GE(s.last_refresh, started) << "the start of the failed refresh";
    EXPECT_LT(s.last_refresh, started + 100);
    after_last_refresh(2950);
    EXPECT_EQ(read().counts, 0u);
}

int refuse_to_start(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *) { return EAGAIN; }

TEST_F(MacUsageTest, AWorkerThatCannotStartAnswersZero) {
    snmpapi::chassis::set_worker_start(refuse_to_start);
    const Read first = read();
    EXPECT_EQ(first.value, 0);
    EXPECT_EQ(first.counts, 0u);
    EXPECT_NE(mac_usage_snapshot(kUnit - 1).last_refresh, 0u) << "the attempt counts as a refresh started";
    snmpapi::chassis::set_worker_start(counted_start);
    EXPECT_EQ(read().counts, 0u) << "within 30 s of the attempt";

    snmpapi::chassis::mac_usage_reset();
    first_read();
    snmpapi::chassis::set_worker_start(refuse_to_start);
    after_last_refresh(3100);
    EXPECT_EQ(read().value, 0) << "a refresh that cannot start answers 0, not the cache";
    EXPECT_EQ(mac_usage_snapshot(kUnit - 1).count, 3u);
    snmpapi::chassis::set_worker_start(counted_start);
}

TEST_F(MacUsageTest, UnitsBeyondTheStackAnswerZeroWithoutAWorker) {
    const int before = g_started;
    for (int32_t unit : {0, 9, -1, 3, INT32_MIN}) {
        SCOPED_TRACE(unit);
        EXPECT_EQ(read(unit).value, 0);
    }
    EXPECT_EQ(g_started, before) << "unit 3 is not part of the stack";
    // A unit that has left the stack but is still known to it is counted.
    sw().set_unit_present(kUnit - 1, false);
    EXPECT_EQ(read().counts, 1u);
    EXPECT_EQ(g_started, before + 1);
}

TEST_F(MacUsageTest, ManagementProcessorUnitsHaveNoRow) {
    EXPECT_EQ(init_index_switchMacAddrUsageTable(add_int_row), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{2})) << "unit 1 is the management processor";
    EXPECT_EQ(exists_entry_switchMacAddrUsageTable(2), 1);
    EXPECT_EQ(exists_entry_switchMacAddrUsageTable(9), 0);
    EXPECT_TRUE(rows().removed.empty()) << "an index beyond the stack is left alone";
    sw().set_unit_present(1, false);
    EXPECT_EQ(exists_entry_switchMacAddrUsageTable(2), 0);
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"switchMacAddrUsageTable 2"}));
    rows().clear();
    EXPECT_EQ(init_index_switchMacAddrUsageTable(add_int_row), 0);
    EXPECT_TRUE(rows().ints.empty());
}

// Reads from several threads while the clock runs ahead, so that detached
// workers keep starting and ending under them: the sanitizer build finds a
// race on the contexts, a leaked argument or a use after free here.
TEST_F(MacUsageTest, ReadsStampedeWhileWorkersRun) {
    first_read();
    sw().set_mac_summary(1, false);
    std::atomic<bool> stop{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> readers;
    for (int t = 0; t < 4; ++t)
        readers.emplace_back([&] {
            while (!stop) {
                const int32_t v = get_swMacAddrUsageValue(kUnit);
                if (v != 3 && v != 0) ++wrong;
            }
        });
    for (int step = 0; step < 200; ++step) {
        after_last_refresh(3100);
        EXPECT_EQ(get_swMacAddrUsageValue(kUnit), 3);
    }
    stop = true;
    for (std::thread &t : readers) t.join();
    wait_idle();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(mac_usage_snapshot(kUnit - 1).count, 3u);
}

}  // namespace
}  // namespace unit
