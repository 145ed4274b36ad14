// The RMON engine of the simulated switch: its row records, its passes
// (history samples, alarm crossings) and what a pass raises when no agent
// has registered, the scenario's rmon field, and the swctl verbs.
#include <cstring>
#include <thread>

#include "support.hpp"
#include "swplatform/records_rmon.hpp"
#include "trap_receiver.hpp"

namespace {

using simtest::SwitchTest;
using simtest::TrapReceiver;
using namespace swp::rmon;

class RmonSim : public SwitchTest {};

TEST_F(RmonSim, RowRecordsAreBigEndianAndListedWhole) {
    ASSERT_EQ(bcmd_rmon_statistic_create(0x0102), 0);
    EXPECT_EQ(bcmd_rmon_statistic_create(0x0102), -1) << "made once";
    EXPECT_EQ(bcmd_rmon_statistic_create(0), -1);
    EXPECT_EQ(bcmd_rmon_statistic_create(65536), -1);
    ASSERT_EQ(bcmd_rmon_statistic_create(7), 0);
    uint8_t *records = nullptr;
    ASSERT_EQ(bcmd_rmon_statistic_get_all(&records), int(2 * stat_list::kSize));
    EXPECT_EQ(std::vector<uint8_t>(records, records + 4), (std::vector<uint8_t>{0, 0, 1, 2}));
    EXPECT_EQ(load_i32(records + stat_list::kSize, stat_conf::kIndex), 7);
    EXPECT_EQ(load_i32(records, stat_conf::kStatus), SW_RMON_UNDER_CREATION);
    std::free(records);

    // A data source must be a port or configured trunk of the switch.
    uint8_t conf[stat_conf::kSize];
    ASSERT_EQ(bcmd_rmon_statistic_get_conf(7, conf), 0);
    for (auto [unit0, port0, result] : {std::tuple{1, 7, 0}, std::tuple{1, 8, -1}, std::tuple{0, 512, 0},
                                        std::tuple{0, 513, 0}, std::tuple{0, 514, -1}, std::tuple{2, 0, -1}}) {
        store_i32(conf, stat_conf::kUnit, unit0);
        store_i32(conf, stat_conf::kPort, port0);
        EXPECT_EQ(bcmd_rmon_statistic_set_conf(conf), result) << unit0 << "/" << port0;
    }
    EXPECT_EQ(bcmd_rmon_statistic_set_status(7, SW_RMON_INVALID), 0);
    EXPECT_EQ(bcmd_rmon_statistic_get_conf(7, conf), -1) << "gone";
}

TEST_F(RmonSim, HistoryIsSampledWhenItsIntervalIsDue) {
    sw_->rmon_pause(true);
    sw_->rmon_add_history(3, 0, 0, 1, 2);
    sw_->set_counter(0, 0, swsim::stat::kHCInOctets, 777);
    sw_->rmon_step();
    EXPECT_EQ(sw_->rmon().histories.at(0).taken, 0) << "not due yet";
    for (int i = 1; i <= 3; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1100));
        sw_->rmon_step();
    }
    EXPECT_EQ(sw_->rmon().histories.at(0).taken, 3);
    uint8_t values[hist_sample::kSize];
    EXPECT_EQ(bcmd_rmon_history_get(3, 1, values), -1) << "the oldest beyond the two buckets";
    ASSERT_EQ(bcmd_rmon_history_get(3, 3, values), 0);
    EXPECT_EQ(load_u64(values, hist_sample::offset(hist_sample::kOctets)), 0u) << "no traffic in the last interval";
    EXPECT_GT(bcmd_rmon_history_interval_get(3, 3), bcmd_rmon_history_interval_get(3, 2));
}

// With no agent registered, the engine raises the notification itself.
TEST_F(RmonSim, AnAlarmCrossingSendsItsNotification) {
    TrapReceiver receiver;
    sw_->set_trap_port(receiver.port());
    sw_->trap_add("127.0.0.1", "public", SW_TRAP_V2C);
    sw_->rmon_pause(true);
    sw_->rmon_add_statistic(1, 0, 1);
    swsim::Switch::RmonEvent e;
    e.index = 2;
    e.trap = true;
    sw_->rmon_add_event(e);
    swsim::Switch::RmonAlarm a;
    a.index = 4;
    a.variable = "1.3.6.1.2.1.2.2.1.10.2";  // ifInOctets of 1/2
    a.interval = 1;
    a.sample_type = SW_RMON_ABSOLUTE;
    a.rising = 1000;
    a.falling = 100;
    a.rising_event = 2;
    a.falling_event = 2;
    sw_->rmon_add_alarm(a);
    sw_->set_counter(0, 1, swsim::stat::kHCInOctets, 5000);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    sw_->rmon_step();
    auto trap = receiver.next_trap();
    ASSERT_TRUE(trap);
    EXPECT_EQ(trap->trap_oid, (simtest::Oid{1, 3, 6, 1, 2, 1, 16, 0, 1}));
    EXPECT_EQ(sw_->rmon().alarms.at(0).value, 5000);
    EXPECT_EQ(sw_->rmon().events.at(0).fired, 1u);
    // Above the threshold again: no second risingAlarm until it fell.
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    sw_->rmon_step();
    EXPECT_FALSE(receiver.next_trap(300));
    sw_->set_counter(0, 1, swsim::stat::kHCInOctets, 50);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    sw_->rmon_step();
    trap = receiver.next_trap();
    ASSERT_TRUE(trap);
    EXPECT_EQ(trap->trap_oid, (simtest::Oid{1, 3, 6, 1, 2, 1, 16, 0, 2}));
}

TEST_F(RmonSim, ScenarioRowsAndTheirRefusals) {
    struct Case {
        const char *rmon, *complaint;
    };
    const Case cases[] = {
        {R"({"statistics": [{"index": 1}]})", "rmon.statistics[0]: needs a port"},
        {R"({"histories": [{"index": 1, "port": "1/1", "interval": 0}]})", "rmon.histories[0].interval: must be 1..3600"},
        {R"({"alarms": [{"index": 1}]})", "rmon.alarms[0]: needs a variable"},
        {R"({"alarms": [{"variable": "1.3.x"}]})", "rmon.alarms[0]: variable: a dotted OID"},
        {R"({"events": [{"script": 17}]})", "rmon.events[0].script: must be 0..16"},
        {R"({"statistics": [{"index": 65535, "port": "1/1-2"}]})", "rmon.statistics[0]: index 65536: must be 1..65535"},
    };
    for (const Case &c : cases) {
        const std::string json = std::string(R"({"units": [{"ports": 8}], "rmon": )") + c.rmon + "}";
        const std::string what = simtest::complaint([&] { swsim::create_state_from_json(state_, json, "s.json"); });
        EXPECT_NE(what.find(c.complaint), std::string::npos) << what;
    }
    swsim::create_state_from_json(state_, R"({"units": [{"ports": 8}, {"ports": 8}],
        "rmon": {"paused": true, "statistics": [{"index": 10, "port": "2/1-3", "owner": "o"}],
                 "events": [{"index": 3, "description": "d", "community": "c"}]}})");
    swsim::Switch sw(state_);
    const auto r = sw.rmon();
    EXPECT_TRUE(r.paused);
    ASSERT_EQ(r.statistics.size(), 3u);
    EXPECT_EQ(r.statistics[2].index, 12);
    EXPECT_EQ(r.statistics[2].unit0, 1);
    EXPECT_EQ(r.statistics[2].port0, 2);
    ASSERT_EQ(r.event_slots.size(), 1u);
    EXPECT_EQ(r.event_slots[0].community, "c");
    EXPECT_EQ(r.events.at(0).row.description, "d");
}

TEST_F(RmonSim, SwctlShowsTheRowsAndAsksTheEngine) {
    ok("rmon statistics 5 1/3 --owner noc");
    ok("rmon history 2 T1 --interval 60 --buckets 80");
    ok("rmon event 1 --description hot --trap");
    ok("rmon alarm 1 1.3.6.1.2.1.16.1.1.1.5.5 --rising 10 --rising-event 1");
    ok("rmon engine paused");
    const auto show = swctl("rmon show");
    EXPECT_EQ(show.code, 0);
    for (const char *part : {"5      1/3    valid          noc", "2      T1     valid          60        50 of 80",
                             "1.3.6.1.2.1.16.1.1.1.5.5", "hot", "saved       1 alarms, 1 events"})
        EXPECT_NE(show.out.find(part), std::string::npos) << part << "\n" << show.out;
    // No agent has registered here: the paused engine answers in swctl,
    // which has no callbacks.
    const auto fire = swctl("rmon fire 1");
    EXPECT_EQ(fire.code, 1);
    EXPECT_EQ(fire.out, "fire: -1\n");
    fails("rmon statistics 0 1/1", "index 0: must be 1..65535");
    fails("rmon history 3 1/1 --interval 3601", "interval: must be 1..3600 seconds");
}

}  // namespace
