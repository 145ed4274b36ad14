// RMON through a real snmpd over scenarios/default.json: statistics and
// history rows a manager creates and watches fill with the simulated
// traffic; an alarm crossing its threshold fires its event, which the agent
// logs and whose command script it writes and runs, and whose risingAlarm
// Debian's snmptrapd receives; the engine's clear-all walks the agent over
// its loop-back session while other managers walk and set.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "fixture.hpp"
#include "tests/common/script_file_turn.hpp"
#include "trap_daemon.hpp"

namespace it {
namespace {

using namespace std::chrono_literals;

const Oid kEtherStatsEntry = parse_oid("1.3.6.1.2.1.16.1.1.1");
const Oid kHistoryControlEntry = parse_oid("1.3.6.1.2.1.16.2.1.1");
const Oid kEtherHistoryEntry = parse_oid("1.3.6.1.2.1.16.2.2.1");
const Oid kAlarmEntry = parse_oid("1.3.6.1.2.1.16.3.1.1");
enum : uint32_t { kStatsDataSource = 2, kStatsOctets = 4, kStatsPkts = 5, kStatsOwner = 20, kStatsStatus = 21 };
enum : uint32_t { kHistDataSource = 2, kHistBuckets = 3, kHistGranted = 4, kHistInterval = 5, kHistStatus = 7 };

Oid at(const Oid &entry, uint32_t column, uint32_t index) { return child(entry, {column, index}); }
SetValue object_id(Oid oid, Oid value) { return {std::move(oid), kObjectId, 0, {}, std::move(value)}; }
Oid if_index(uint32_t x) { return {1, 3, 6, 1, 2, 1, 2, 2, 1, 1, x}; }

class Rmon : public AgentTest<Rmon> {
protected:
    // The agent's events write the switch's one script file: the suite
    // holds its turn from before the agent starts until it has stopped.
    static inline std::unique_ptr<testing_support::ScriptFileTurn> script_file_turn_;
    static void SetUpTestSuite() {
        script_file_turn_ = std::make_unique<testing_support::ScriptFileTurn>();
        AgentTest<Rmon>::SetUpTestSuite();
    }
    static void TearDownTestSuite() {
        AgentTest<Rmon>::TearDownTestSuite();
        script_file_turn_.reset();
    }
    std::string agent_log() {
        std::ifstream in(agent().log_path());
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }
    // Waits (bounded) until `done` holds.
    template <class Done>
    bool eventually(Done done, std::chrono::milliseconds limit = 8s) {
        for (auto end = std::chrono::steady_clock::now() + limit; std::chrono::steady_clock::now() < end;) {
            if (done()) return true;
            std::this_thread::sleep_for(100ms);
        }
        return done();
    }
};

TEST_F(Rmon, AManagersStatisticsRowCountsTheTraffic) {
    const uint32_t row = 20;
    ASSERT_EQ(set_one(SetValue::integer32(at(kEtherStatsEntry, kStatsStatus, row), 2)), kNoError);
    EXPECT_EQ(must_get(at(kEtherStatsEntry, kStatsStatus, row)).integer, 3) << "under creation";
    ASSERT_EQ(set_one(object_id(at(kEtherStatsEntry, kStatsDataSource, row), if_index(8))), kNoError);
    ASSERT_EQ(set_one(SetValue::octets(at(kEtherStatsEntry, kStatsOwner, row), "noc")), kNoError);
    // What is refused, and leaves the row as it is.
    EXPECT_EQ(set_one(object_id(at(kEtherStatsEntry, kStatsDataSource, row), if_index(641))), kGenErr);
    EXPECT_EQ(set_one(object_id(at(kEtherStatsEntry, kStatsDataSource, row), parse_oid("1.3.6.1.2.1.2.2.1.2.5"))),
              kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(at(kEtherStatsEntry, kStatsDataSource, row), 5)), kWrongType);
    EXPECT_EQ(set_one(SetValue::integer32(at(kEtherStatsEntry, kStatsStatus, row), 5)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::octets(at(kEtherStatsEntry, kStatsOwner, row), std::string(128, 'o'))), kWrongLength);
    EXPECT_EQ(must_get(at(kEtherStatsEntry, kStatsDataSource, row)).objid, if_index(8));
    ASSERT_EQ(set_one(SetValue::integer32(at(kEtherStatsEntry, kStatsStatus, row), 1)), kNoError);
    EXPECT_EQ(set_one(SetValue::integer32(at(kEtherStatsEntry, kStatsStatus, row), 1)), kGenErr) << "repeated";
    EXPECT_EQ(must_get(at(kEtherStatsEntry, kStatsOwner, row)).bytes, "noc");

    sw().set_link(0, 7, true);
    sw().set_traffic(0, 7, 5000);
    const auto first = must_get(at(kEtherStatsEntry, kStatsPkts, row)).integer;
    EXPECT_TRUE(eventually([&] { return must_get(at(kEtherStatsEntry, kStatsPkts, row)).integer > first + 1000; }))
        << "the counters move with the port's traffic";
    EXPECT_GT(must_get(at(kEtherStatsEntry, kStatsOctets, row)).integer, 0);
    // The row is in the walk, and goes with invalid.
    EXPECT_EQ(row_indexes(reader().walk(child(kEtherStatsEntry, {kStatsStatus})), child(kEtherStatsEntry, {kStatsStatus})),
              (std::vector<uint32_t>{1, 2, 3, 4, row}));
    ASSERT_EQ(set_one(SetValue::integer32(at(kEtherStatsEntry, kStatsStatus, row), 4)), kNoError);
    EXPECT_TRUE(reader().get({at(kEtherStatsEntry, kStatsStatus, row)}).varbinds.at(0).is_exception());
    sw().set_traffic(0, 7, 0);
}

TEST_F(Rmon, HistorySamplesAccumulateAtTheChosenInterval) {
    const uint32_t row = 9;
    ASSERT_EQ(set_one(SetValue::integer32(at(kHistoryControlEntry, kHistStatus, row), 2)), kNoError);
    ASSERT_EQ(set_one(object_id(at(kHistoryControlEntry, kHistDataSource, row), if_index(6))), kNoError);
    EXPECT_EQ(set_one(SetValue::integer32(at(kHistoryControlEntry, kHistInterval, row), 3601)), kWrongValue);
    ASSERT_EQ(set_one(SetValue::integer32(at(kHistoryControlEntry, kHistInterval, row), 1)), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(at(kHistoryControlEntry, kHistBuckets, row), 3)), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(at(kHistoryControlEntry, kHistStatus, row), 1)), kNoError);
    EXPECT_EQ(must_get(at(kHistoryControlEntry, kHistGranted, row)).integer, 3);
    sw().set_link(0, 5, true);
    sw().set_traffic(0, 5, 1000);
    const Oid samples = child(kEtherHistoryEntry, {2, row});
    auto kept = [&] { return row_indexes(reader().walk(samples), samples); };
    ASSERT_TRUE(eventually([&] { return kept().size() == 3 && kept().front() > 1; }, 10s))
        << "three buckets, the oldest samples dropped";
    const std::vector<uint32_t> now = kept();
    EXPECT_EQ(now[1], now[0] + 1);
    EXPECT_GT(must_get(child(kEtherHistoryEntry, {6, row, now[2]})).integer, 0) << "packets of the interval";
    ASSERT_EQ(set_one(SetValue::integer32(at(kHistoryControlEntry, kHistStatus, row), 4)), kNoError);
    EXPECT_TRUE(kept().empty());
    sw().set_traffic(0, 5, 0);
}

TEST_F(Rmon, AnAlarmCrossingFiresItsEventLogScriptAndTrap) {
    TrapDaemon receiver;
    sw().set_trap_port(receiver.port());
    sw().trap_add("127.0.0.1", "public", SW_TRAP_V2C);
    sw().rmon_set_script(2, "", "show interfaces 1/2\n");
    swsim::Switch::RmonEvent e;
    e.index = 5;
    e.description = "port 2 busy";
    e.trap = true;
    e.script = 2;
    sw().rmon_add_event(e);
    swsim::Switch::RmonAlarm a;
    a.index = 5;
    a.variable = "1.3.6.1.2.1.16.1.1.1.5.2";  // etherStatsPkts of row 2 (port 1/2)
    a.interval = 1;
    a.rising = 500;
    a.falling = 0;
    a.rising_event = 5;
    a.falling_event = 5;
    const uint32_t runs = sw().rmon().commands_run;
    sw().rmon_add_alarm(a);
    sw().set_link(0, 1, true);
    sw().set_traffic(0, 1, 20000);
    const std::string trap = receiver.wait_for({"v2 community=public", "OID: .1.3.6.1.2.1.16.0.1"}, 10s);
    EXPECT_NE(trap, "") << "no risingAlarm";
    EXPECT_NE(trap.find(".1.3.6.1.2.1.16.3.1.1.3.5 = OID: .1.3.6.1.2.1.16.1.1.1.5.2"), std::string::npos) << trap;
    EXPECT_TRUE(eventually([&] { return agent_log().find("RMON event 5 (port 2 busy) was fired.") != std::string::npos; }));
    EXPECT_TRUE(eventually([&] { return sw().rmon().commands_run > runs; }));
    EXPECT_EQ(sw().rmon().last_command, "/usr/bin/cli -s /var/cli-commands/tmp/event_fire");
    EXPECT_EQ(sw().rmon().last_script, "2\nshow interfaces 1/2\nend.\n");
    sw().set_traffic(0, 1, 0);
    // Fired on request as well.
    EXPECT_EQ(swctl("rmon fire 1 >/dev/null"), 0);
    EXPECT_TRUE(eventually([&] { return agent_log().find("RMON event 1 (broadcast storm) was fired.") != std::string::npos; }));
    sw().trap_remove("127.0.0.1");
}

TEST_F(Rmon, RestoreAllReappliesTheSavedRows) {
    EXPECT_EQ(sw().rmon_restore_all(), 0);
    const auto r = sw().rmon();
    EXPECT_EQ(r.alarms.size(), r.alarm_slots.size());
    EXPECT_EQ(r.events.size(), r.event_slots.size());
    EXPECT_EQ(swctl("rmon restore-all >/dev/null"), 0);
}

// The module's own alarmTable is empty: the walks of clear-all leave the
// status columns at their first answer and nothing is set.  Many in a row,
// while other managers walk and write, over the agent's loop-back session.
TEST_F(Rmon, ClearAllRunsWhileOthersWalkAndSet) {
    EXPECT_TRUE(reader().walk(kAlarmEntry).empty());
    std::atomic<bool> stop{false};
    std::atomic<int> client_errors{0}, rounds{0};
    std::thread walker([&] {
        Session s(agent().port(), "public");
        while (!stop) {
            if (s.walk(parse_oid("1.3.6.1.2.1.16")).empty()) ++client_errors;
            s.walk(parse_oid("1.3.6.1.2.1.2.2.1.1"));
            ++rounds;
        }
    });
    std::thread setter([&] {
        Session s(agent().port(), "private");
        for (int i = 0; !stop; ++i) {
            const Response r = s.set({SetValue::octets(at(kEtherStatsEntry, kStatsOwner, 1), "o" + std::to_string(i % 10))});
            if (!r.answered || r.error_status != kNoError) ++client_errors;
        }
    });
    int failures = 0;
    for (int i = 0; i < 40; ++i) failures += sw().rmon_clear_all() != 0;
    stop = true;
    walker.join();
    setter.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(client_errors, 0);
    EXPECT_GT(rounds, 0);
    EXPECT_EQ(must_get(at(kEtherStatsEntry, kStatsStatus, 1)).integer, 1) << "statistics are not touched";
}

}  // namespace
}  // namespace it
