// A process killed at any step of a write to the shared state holds nobody
// up: readers never wait on what it left, the next writer takes over, and
// the state is as before the write or as after it, never in between.
//
// Each test arms a crash step (swsim::crash_at) in a child, lets the child
// die there and carries on in this process.  alarm() turns a wait that never
// ends into a failed run instead of a hung one.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <thread>

#include "raw_state.hpp"
#include "support.hpp"

namespace {

using namespace std::chrono_literals;
using simtest::RawState;
using simtest::SwitchTest;
using Take = int (*)(cfg_lock_t *);
namespace stat = swp::stat;

cfg_lock_t *config_lock() { return cfg_lock_table[2]; }

// Runs `write` in a child armed to die at `step`; true if it died there.
template <class Write>
bool dies_at(const std::string &step, Write write) {
    pid_t child = simtest::fork_child([&] {
        swsim::crash_at(step);
        write();
        return 0;
    });
    return simtest::wait_exit(child) == -SIGKILL;
}

uint64_t counter(int stat_number) {
    uint64_t value = 0;
    EXPECT_EQ(bcmd_snmp_stat_get(0, 0, stat_number, &value), 0);
    return value;
}

// The dead writer meant to set InOctets from 1000 to 5000.  Before its copy
// began nothing of that write counts; once it began, the write is the truth.
// Other counters come through whole either way.
TEST_F(SwitchTest, ACounterWriterKilledAtAnyStepLeavesTheCountersWholeAndFree) {
    struct Case {
        const char *step;
        uint32_t seq_parity;  // what the dead writer left
        uint64_t in_octets;   // what readers and the next writer see
    };
    const Case cases[] = {{"counter-claimed", 0, 1000},
                          {"counter-prepared", 0, 1000},
                          {"counter-copying", 1, 5000},
                          {"counter-copied", 0, 5000}};
    RawState raw(state_);
    ASSERT_TRUE(raw.ok());
    sw_->set_traffic(0, 0, 0);  // counters stand still: exact values
    for (const Case &c : cases) {
        SCOPED_TRACE(c.step);
        sw_->set_counter(0, 0, stat::kInOctets, 1000);
        sw_->set_counter(0, 0, stat::kOutUcast, 42);
        ASSERT_TRUE(dies_at(c.step, [&] { swsim::Switch(state_).set_counter(0, 0, stat::kInOctets, 5000); }));
        EXPECT_EQ(raw.counters(0).seq % 2, c.seq_parity);
        EXPECT_NE(raw.counters(0).writer, 0u) << "the dead writer still holds the port";

        alarm(10);
        EXPECT_EQ(counter(stat::kInOctets), c.in_octets);
        EXPECT_EQ(counter(stat::kHCInOctets), c.in_octets);
        EXPECT_EQ(counter(stat::kOutUcast), 42u);
        sw_->set_counter(0, 0, stat::kOutOctets, 7);  // takes over the lock and the port
        alarm(0);
        EXPECT_EQ(raw.counters(0).seq % 2, 0u);
        EXPECT_EQ(raw.counters(0).writer, 0u);
        EXPECT_EQ(counter(stat::kInOctets), c.in_octets);
        EXPECT_EQ(counter(stat::kOutUcast), 42u);
        EXPECT_EQ(counter(stat::kOutOctets), 7u);
    }
}

// A writer frozen half way through its copy holds up no reader, and
// finishes its write when it runs again.
TEST_F(SwitchTest, ACounterWriterFrozenHalfWayHoldsUpNoReader) {
    RawState raw(state_);
    ASSERT_TRUE(raw.ok());
    sw_->set_traffic(0, 0, 0);
    sw_->set_counter(0, 0, stat::kInOctets, 1000);
    pid_t child = simtest::fork_child([&] {
        swsim::crash_at("counter-copying", SIGSTOP);
        swsim::Switch(state_).set_counter(0, 0, stat::kInOctets, 5000);
        return 0;
    });
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, WUNTRACED), child);
    ASSERT_TRUE(WIFSTOPPED(status));
    EXPECT_EQ(raw.counters(0).seq % 2, 1u);
    alarm(10);
    EXPECT_EQ(counter(stat::kInOctets), 5000u);
    alarm(0);
    kill(child, SIGCONT);
    EXPECT_EQ(simtest::wait_exit(child), 0);
    EXPECT_EQ(raw.counters(0).seq % 2, 0u);
    EXPECT_EQ(counter(stat::kInOctets), 5000u);
}

// The reproduction of the agent spinning for ever: swctl killed between the
// two increments of the sequence word.
TEST_F(SwitchTest, SwctlKilledAtTheCounterCheckpointHoldsNothingUp) {
    RawState raw(state_);
    ASSERT_TRUE(raw.ok());
    const uint64_t before = counter(stat::kInOctets);
    const simtest::SwctlRun killed = swctl("traffic 1/1 5000", "SWSIM_CRASH_AT=counter-copying");
    EXPECT_NE(killed.code, 0);
    EXPECT_NE(killed.code, 1) << "killed, not refused: " << killed.err;
    ASSERT_EQ(raw.counters(0).seq % 2, 1u) << "swctl died with the sequence word odd";

    alarm(10);
    const uint64_t during = counter(stat::kInOctets);
    EXPECT_EQ(sw_->port(0, 0).traffic_pps, 5000u) << "the load swctl was setting";
    ok("traffic 1/1 6000");
    alarm(0);
    EXPECT_EQ(sw_->port(0, 0).traffic_pps, 6000u);
    EXPECT_EQ(raw.counters(0).seq % 2, 0u);
    EXPECT_GE(during, before);
    EXPECT_GE(counter(stat::kInOctets), during) << "counters never go back";
}

// Like an agent killed at a random moment of a storm of ifAdminStatus SETs:
// whatever it held or left half written, this process carries on.
TEST_F(SwitchTest, AWriterKilledAtRandomInASetStormHoldsNothingUp) {
    RawState raw(state_);
    ASSERT_TRUE(raw.ok());
    std::srand(11);
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE(round);
        simtest::Channel started;
        pid_t child = simtest::fork_child([&] {
            started.send();
            for (int i = 0;; ++i) {
                if (lock_write(config_lock()) != 0) return 1;
                cfg_set_port_enabled(0, i % 4, i / 4 % 2);
                lock_free(config_lock());
            }
        });
        ASSERT_TRUE(started.receive());
        std::this_thread::sleep_for(std::chrono::microseconds(std::rand() % 3000));
        kill(child, SIGKILL);
        ASSERT_EQ(simtest::wait_exit(child), -SIGKILL);
        alarm(10);
        ASSERT_EQ(lock_write(config_lock()), 0);
        for (int p = 0; p < 4; ++p) EXPECT_EQ(cfg_set_port_enabled(0, p, 1), 0);
        ASSERT_EQ(lock_free(config_lock()), 0);
        counter(stat::kInOctets);
        alarm(0);
        for (int p = 0; p < 4; ++p) EXPECT_EQ(raw.counters(p).seq % 2, 0u);
    }
}

// A taker of the configuration lock killed at each step of taking it: the
// lock is taken back for both kinds.
TEST_F(SwitchTest, ALockTakerKilledAtAnyStepLeavesTheLockFree) {
    const std::pair<const char *, Take> cases[] = {
        {"lock-claimed", &lock_write}, {"lock-held", &lock_write}, {"lock-reading", &lock_read}};
    RawState raw(state_);
    ASSERT_TRUE(raw.ok());
    for (auto [step, take] : cases) {
        SCOPED_TRACE(step);
        ASSERT_TRUE(dies_at(step, [take] { take(config_lock()); }));
        alarm(10);
        EXPECT_EQ(lock_write(config_lock()), 0);
        EXPECT_EQ(lock_free(config_lock()), 0);
        EXPECT_EQ(lock_read(config_lock()), 0);
        EXPECT_EQ(lock_free(config_lock()), 0);
        alarm(0);
        EXPECT_EQ(raw.lock(2).writer, 0u);
    }
}

// A process that died but that nobody reaped (in a container without an init,
// nobody ever does) is dead: what it held is taken back.
TEST_F(SwitchTest, AHolderThatDiedButIsNotReapedHoldsNothing) {
    struct Case {
        const char *held;
        std::function<void()> hold;  // runs in the child, which then dies
        std::function<void()> next;  // what this process then does
    };
    auto take_and_free = [](Take take) {
        return [take] {
            EXPECT_EQ(take(config_lock()), 0);
            EXPECT_EQ(lock_free(config_lock()), 0);
        };
    };
    const Case cases[] = {
        {"the write lock", [] { lock_write(config_lock()); }, take_and_free(&lock_read)},
        {"a read lock", [] { lock_read(config_lock()); }, take_and_free(&lock_write)},
        {"a port's counters half copied",
         [&] {
             swsim::crash_at("counter-copying");
             swsim::Switch(state_).set_counter(0, 0, stat::kInOctets, 5000);
         },
         [&] { sw_->set_counter(0, 0, stat::kOutOctets, 7); }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.held);
        pid_t child = simtest::fork_child([&] {
            c.hold();
            raise(SIGKILL);
            return 0;
        });
        char state = '?';
        for (int tries = 0; tries < 500 && (state = simtest::process_state(child)) != 'Z'; ++tries)
            std::this_thread::sleep_for(10ms);
        ASSERT_EQ(state, 'Z') << "the child should be dead and unreaped";
        auto next = std::async(std::launch::async, c.next);
        const bool done = next.wait_for(5s) == std::future_status::ready;
        EXPECT_TRUE(done) << "a zombie counted as alive";
        EXPECT_EQ(simtest::process_state(child), 'Z') << "nobody reaped it meanwhile";
        EXPECT_EQ(simtest::wait_exit(child), -SIGKILL);  // now it may go (and lets a failed wait end)
        next.get();
    }
}

// Faults are armed or not; the calls go back to their fast path once the
// table is settled.
TEST_F(SwitchTest, AFaultSetterKilledAtAnyStepLeavesTheFaultArmedOrNot) {
    RawState raw(state_);
    ASSERT_TRUE(raw.ok());
    // Undisturbed, the last firing of a fault brings the fast path back.
    sw_->fault_set("cfg_vlan_exists", -9, 1);
    EXPECT_NE(raw.hot() & swsim::layout::kHotWatched, 0u);
    EXPECT_EQ(cfg_vlan_exists(1), -9);
    EXPECT_EQ(cfg_vlan_exists(1), 1);
    EXPECT_EQ(raw.hot() & swsim::layout::kHotWatched, 0u);

    const std::pair<const char *, bool> cases[] = {{"fault-marked", false}, {"fault-armed", true}};
    for (auto [step, armed] : cases) {
        SCOPED_TRACE(step);
        ASSERT_TRUE(dies_at(step, [&] { swsim::Switch(state_).fault_set("cfg_vlan_exists", -9, 2); }));
        alarm(10);
        EXPECT_EQ(sw_->faults().size(), armed ? 1u : 0u);
        for (int i = 0; i < 2; ++i) EXPECT_EQ(cfg_vlan_exists(1), armed ? -9 : 1);
        EXPECT_EQ(cfg_vlan_exists(1), 1);
        sw_->fault_clear();  // the next change of the table settles the hot word
        alarm(0);
        EXPECT_EQ(raw.hot() & swsim::layout::kHotWatched, 0u) << "calls are back on the fast path";
        sw_->fault_set("cfg_vlan_exists", -5, 1);
        EXPECT_EQ(cfg_vlan_exists(1), -5) << "and faults arm as before";
        EXPECT_EQ(cfg_vlan_exists(1), 1);
    }
}

TEST_F(SwitchTest, AJournalWriterKilledHalfWayLeavesTheOthersRecording) {
    sw_->journal_enable(true);
    cfg_vlan_exists(1);
    ASSERT_TRUE(dies_at("journal-writing", [] { cfg_vlan_exists(2); }));
    cfg_vlan_exists(3);
    alarm(10);
    const auto journal = sw_->journal();
    alarm(0);
    ASSERT_EQ(journal.size(), 2u) << "the half-written entry is left out";
    EXPECT_EQ(journal[0].args, "1");
    EXPECT_EQ(journal[1].args, "3");
    EXPECT_EQ(journal[1].seq, journal[0].seq + 2);
}

TEST_F(SwitchTest, CrashStepsAreKnownByName) {
    EXPECT_EQ(swsim::crash_steps().size(), 10u);
    EXPECT_EQ(simtest::complaint([] { swsim::crash_at("counter-nowhere"); }), "no crash step 'counter-nowhere'");
    swsim::crash_at("lock-held", SIGSTOP);
    swsim::crash_at("");  // disarmed: taking the lock goes on
    EXPECT_EQ(lock_write(config_lock()), 0);
    EXPECT_EQ(lock_free(config_lock()), 0);
}

}  // namespace
