// RMON statistics, history, alarms and events: the accessors and the
// engine's callbacks against the simulated engine, with its journal and
// fault injection.  The engine's thread is paused: every sample and request
// is made by the test.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "fixture.hpp"
#include "mibs/rmon/rmon.hpp"
#include "swplatform/records_rmon.hpp"
#include "tests/common/script_file_turn.hpp"
#include "tables/catalogue.hpp"

namespace {
// What clear-all asked of the loop-back walk, and what the walk answers.
struct WalkLog {
    std::vector<std::vector<uint32_t>> columns;
    std::vector<int> answers;  // popped front; 0 when empty
};
WalkLog &walks() {
    static WalkLog log;
    return log;
}
}  // namespace

// The loop-back walk needs a running agent (tests/integration): here it
// records its column and answers as the test says.
int recording_walk(const uint32_t *column, size_t length) {
    walks().columns.emplace_back(column, column + length);
    if (walks().answers.empty()) return 0;
    const int rc = walks().answers.front();
    walks().answers.erase(walks().answers.begin());
    return rc;
}

extern "C" {
void etherStatsTable_removeEntry(int32_t i) { unit::rows().removed.push_back("etherStatsTable " + std::to_string(i)); }
void historyControlTable_removeEntry(int32_t i) {
    unit::rows().removed.push_back("historyControlTable " + std::to_string(i));
}
void etherHistoryTable_removeEntry(int32_t i, int32_t s) {
    unit::rows().removed.push_back("etherHistoryTable " + std::to_string(i) + "." + std::to_string(s));
}
}

namespace unit {
namespace {

using namespace swp::rmon;
using Oid = std::vector<uint32_t>;
using Alarm = swsim::Switch::RmonAlarm;
using Event = swsim::Switch::RmonEvent;

Oid if_index_oid(uint32_t x) { return {1, 3, 6, 1, 2, 1, 2, 2, 1, 1, x}; }

Event event(int32_t index, const std::string &description = "", int32_t script = 0) {
    Event e;
    e.index = index;
    e.description = description;
    e.script = script;
    return e;
}
Alarm alarm_on(int32_t index, const std::string &variable) {
    Alarm a;
    a.index = index;
    a.variable = variable;
    return a;
}

class RmonTest : public SwitchTest {
protected:
    // Events fired here write the switch's one script file.
    testing_support::ScriptFileTurn script_file_turn_;
    // Two units of 8 ports, trunk 1 configured; the engine's thread paused.
    std::string scenario() const override {
        return R"({"units": [{"ports": 8, "sfp_ports": 0}, {"ports": 8, "sfp_ports": 0}],
                   "trunks": [{"id": 1, "members": ["1/7", "1/8"]}],
                   "rmon": {"paused": true}})";
    }
    void SetUp() override {
        SwitchTest::SetUp();
        walks() = WalkLog{};
        snmpapi::rmon::set_status_walk(recording_walk);
        ::mkdir("/var/cli-commands", 0755);
        ::mkdir("/var/cli-commands/tmp", 0755);
    }
    // A statistics or history row made as a manager does: createRequest.
    void create_statistic(int32_t i) { ASSERT_EQ(set_etherStatsStatus(i, SW_RMON_CREATE_REQUEST), 0); }
    Oid data_source(const uint32_t *(*get)(int32_t, size_t *), int32_t i) {
        size_t len = 0;
        const uint32_t *p = get(i, &len);
        return p ? Oid(p, p + len / 4) : Oid{};
    }
    std::vector<std::string> vxlog_lines(auto &&body) {
        std::vector<std::string> out;
        for (const auto &c : calls_named("vxlog", body)) out.push_back(c.args);
        return out;
    }
};

// ---- data sources, owners and status ----------------------------------------------------------

TEST_F(RmonTest, DataSourceNamesAPortOrTrunkByIfIndex) {
    struct Case {
        Oid oid;
        int result;
        int unit0, port0;  // selected when result is 0
    };
    Oid twelve = if_index_oid(3);
    twelve.push_back(1);
    Oid wrong_prefix = if_index_oid(3);
    wrong_prefix[9] = 2;  // ifDescr, not ifIndex
    const Case cases[] = {
        {if_index_oid(65), 0, 1, 0},     {if_index_oid(3), 0, 0, 2},     {if_index_oid(513), 0, 0, 512},
        {if_index_oid(641), -3, 0, 0},   {if_index_oid(0), -3, 0, 0},    {if_index_oid(129), -3, 0, 0},
        {if_index_oid(9), -3, 0, 0},     {twelve, -1, 0, 0},             {wrong_prefix, -1, 0, 0},
    };
    struct Column {
        int (*set)(int32_t, const uint32_t *, size_t);
        const uint32_t *(*get)(int32_t, size_t *);
    };
    for (auto [set, get] : {Column{set_etherStatsDataSource, get_etherStatsDataSource},
                            Column{set_historyControlDataSource, get_historyControlDataSource}}) {
        ASSERT_EQ(set_etherStatsStatus(1, SW_RMON_CREATE_REQUEST), 0);
        ASSERT_EQ(set_historyControlStatus(1, SW_RMON_CREATE_REQUEST), 0);
        for (const Case &c : cases) {
            SCOPED_TRACE(c.oid.back());
            ASSERT_EQ(set(1, c.oid.data(), c.oid.size() * 4), c.result);
            if (c.result == 0) {
                EXPECT_EQ(data_source(get, 1), c.oid) << "reads back what was written";
            }
        }
        EXPECT_EQ(set(1, nullptr, 44), -1);
        EXPECT_EQ(set(2, if_index_oid(3).data(), 44), -1) << "no such row";
    }
    // unit 1 port 0 is 65 in either table's record.
    ASSERT_EQ(set_etherStatsDataSource(1, if_index_oid(65).data(), 44), 0);
    EXPECT_EQ(sw().rmon().statistics.at(0).unit0, 1);
    EXPECT_EQ(sw().rmon().statistics.at(0).port0, 0);
}

// Either presence mark of the status block will do: a unit the stack knows
// though it is not present still takes a data source.
TEST_F(RmonTest, DataSourceOfAKnownUnitIsTaken) {
    sw().set_unit_present(1, false);
    create_statistic(1);
    EXPECT_EQ(set_etherStatsDataSource(1, if_index_oid(65).data(), 44), 0);
    EXPECT_EQ(set_etherStatsDataSource(1, if_index_oid(513).data(), 44), 0) << "a trunk is on unit 0";
    sw().fault_set("cfg_equip_get_user_eth_ports", -1, 1);
    EXPECT_EQ(set_etherStatsDataSource(1, if_index_oid(2).data(), 44), -3) << "no port count, no port";
}

TEST_F(RmonTest, StatusTransitionsFollowTheRowsLife) {
    using Calls = std::vector<std::string>;
    auto platform_calls = [&](auto body) {
        Calls out;
        for (const auto &c : calls_of(body))
            if (c.call.find("rmon") != std::string::npos) out.push_back(c.call + "(" + c.args + ")");
        return out;
    };
    // createRequest to an unknown index makes the row under creation.
    EXPECT_EQ(platform_calls([&] { EXPECT_EQ(set_etherStatsStatus(4, 2), 0); }),
              (Calls{"bcmd_rmon_statistic_get_conf(4)", "bcmd_rmon_statistic_create(4)"}));
    EXPECT_EQ(get_etherStatsStatus(4), SW_RMON_UNDER_CREATION);
    EXPECT_EQ(set_etherStatsStatus(4, 3), -1) << "the status it has";
    EXPECT_EQ(set_etherStatsStatus(4, 5), -1);
    EXPECT_EQ(set_etherStatsStatus(4, 0), -1);
    // underCreation -> valid: the row is activated through the configuration.
    EXPECT_EQ(platform_calls([&] { EXPECT_EQ(set_etherStatsStatus(4, 1), 0); }),
              (Calls{"bcmd_rmon_statistic_get_conf(4)", "cfg_set_rmon_statistic()"}));
    EXPECT_EQ(get_etherStatsStatus(4), SW_RMON_VALID);
    EXPECT_EQ(set_etherStatsStatus(4, 1), -1) << "a repeated status is refused";
    // valid -> underCreation: out of the saved configuration first; a
    // failure there leaves the row valid.
    sw().fault_set("cfg_del_rmon_statistic_pre", -7, 1);
    EXPECT_EQ(set_etherStatsStatus(4, 3), -7);
    EXPECT_EQ(get_etherStatsStatus(4), SW_RMON_VALID);
    EXPECT_EQ(platform_calls([&] { EXPECT_EQ(set_etherStatsStatus(4, 3), 0); }),
              (Calls{"bcmd_rmon_statistic_get_conf(4)", "cfg_del_rmon_statistic_pre(4)",
                     "bcmd_rmon_statistic_set_status(4,3)"}));
    ASSERT_EQ(set_etherStatsStatus(4, 1), 0);
    // valid -> invalid deletes it; the row check then removes it.
    EXPECT_EQ(platform_calls([&] { EXPECT_EQ(set_etherStatsStatus(4, 4), 0); }),
              (Calls{"bcmd_rmon_statistic_get_conf(4)", "cfg_del_rmon_statistic(4)"}));
    EXPECT_EQ(exists_entry_etherStatsTable(4), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"etherStatsTable 4"});
    EXPECT_EQ(set_etherStatsStatus(4, 1), -1) << "gone";
    // History the same way, with its own calls.
    EXPECT_EQ(set_historyControlStatus(2, 2), 0);
    EXPECT_EQ(platform_calls([&] { EXPECT_EQ(set_historyControlStatus(2, 1), 0); }),
              (Calls{"bcmd_rmon_history_get_conf(2)", "cfg_set_rmon_history()"}));
    EXPECT_EQ(platform_calls([&] { EXPECT_EQ(set_historyControlStatus(2, 4), 0); }),
              (Calls{"bcmd_rmon_history_get_conf(2)", "cfg_del_rmon_history(2)"}));
}

TEST_F(RmonTest, OwnerIsKeptToThirtyOneCharacters) {
    create_statistic(1);
    ASSERT_EQ(set_historyControlStatus(1, 2), 0);
    const std::string forty(40, 'o');
    struct Column {
        int (*set)(int32_t, const uint8_t *, size_t);
        const uint8_t *(*get)(int32_t, size_t *);
    };
    for (auto [set, get] : {Column{set_etherStatsOwner, get_etherStatsOwner},
                            Column{set_historyControlOwner, get_historyControlOwner}}) {
        EXPECT_EQ(set(1, bytes(forty.c_str()), forty.size()), 0);
        EXPECT_EQ(read_text(get, 1), forty.substr(0, 31));
        EXPECT_EQ(set(1, bytes("noc"), 3), 0);
        EXPECT_EQ(read_text(get, 1), "noc");
        EXPECT_EQ(set(1, nullptr, 0), -1);
        EXPECT_EQ(set(9, bytes("x"), 1), -1) << "no such row";
        EXPECT_EQ(read_text(get, 9), "");
    }
    // Activation copies the owner into the configuration record.
    ASSERT_EQ(set_etherStatsStatus(1, 1), 0);
    EXPECT_EQ(sw().rmon().statistics.at(0).owner, "noc");
}

// ---- counters and histories -----------------------------------------------------------------

TEST_F(RmonTest, CountersCountFromActivation) {
    sw().set_counter(0, 2, swsim::stat::kHCInOctets, 5000);
    sw().set_counter(0, 2, swsim::stat::kHCInBroadcast, 40);
    create_statistic(1);
    ASSERT_EQ(set_etherStatsDataSource(1, if_index_oid(3).data(), 44), 0);
    EXPECT_EQ(get_etherStatsOctets(1), 0u) << "no counting under creation";
    ASSERT_EQ(set_etherStatsStatus(1, 1), 0);
    sw().set_counter(0, 2, swsim::stat::kHCInOctets, 5000 + 1234);
    sw().set_counter(0, 2, swsim::stat::kHCInBroadcast, 40 + 7);
    EXPECT_EQ(get_etherStatsOctets(1), 1234u);
    EXPECT_EQ(get_etherStatsBroadcastPkts(1), 7u);
    EXPECT_EQ(get_etherStatsPkts(1), 7u);
    uint32_t value = 0;
    EXPECT_EQ(snmpapi::rmon::statistic_counter(1, stat_counters::kOctets, &value), 0);
    EXPECT_EQ(value, 1234u);
    EXPECT_EQ(snmpapi::rmon::statistic_counter(1, stat_counters::kOctets, nullptr), -1);
    EXPECT_EQ(snmpapi::rmon::statistic_counter(2, stat_counters::kOctets, &value), -1);
    sw().fault_set("bcmd_rmon_statistic_get", -1, 1);
    EXPECT_EQ(get_etherStatsOctets(1), 0u) << "a failing read answers 0";
    // Population lists every row the engine keeps, valid or not.
    create_statistic(7);
    EXPECT_EQ(init_index_etherStatsTable(add_int_row), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 7}));
    sw().fault_set("bcmd_rmon_statistic_get_all", -1, 1);
    EXPECT_EQ(init_index_etherStatsTable(add_int_row), -1);
}

TEST_F(RmonTest, HistoryOffersTheNewestGrantedSamples) {
    sw().rmon_add_history(5, 0, 0, 30, 50);
    sw().rmon_add_history(6, 0, 1, 30, 10);
    sw().rmon_take_samples(5, 120);
    sw().rmon_take_samples(6, 3);
    EXPECT_EQ(get_historyControlBucketsGranted(5), 50);
    EXPECT_EQ(init_index_etherHistoryTable(add_pair_row<int32_t>), 0);
    std::vector<std::string> expected;
    for (int s = 71; s <= 120; ++s) expected.push_back("5." + std::to_string(s));
    for (int s = 1; s <= 3; ++s) expected.push_back("6." + std::to_string(s));
    EXPECT_EQ(rows().keys, expected);
    struct Case {
        int32_t index, sample, exists;
    };
    for (const Case &c : {Case{5, 70, 0}, Case{5, 71, 1}, Case{5, 120, 1}, Case{5, 121, 0}, Case{6, 4, 0},
                          Case{6, 1, 1}, Case{9, 1, 0}}) {
        SCOPED_TRACE(std::to_string(c.index) + "." + std::to_string(c.sample));
        EXPECT_EQ(exists_entry_etherHistoryTable(c.index, c.sample), c.exists);
    }
    EXPECT_EQ(get_etherHistorySampleIndex(5, 99), 99);
    // A row that is not valid offers no samples.
    ASSERT_EQ(set_historyControlStatus(6, 3), 0);
    EXPECT_EQ(exists_entry_etherHistoryTable(6, 1), 0);
}

TEST_F(RmonTest, HistorySamplesCarryTheIntervalsTraffic) {
    sw().rmon_add_history(1, 0, 3, 10, 5);
    sw().set_counter(0, 3, swsim::stat::kHCInOctets, 100000);
    sw().set_counter(0, 3, swsim::stat::kHCInMulticast, 30);
    sw().rmon_take_samples(1, 1);
    sw().set_counter(0, 3, swsim::stat::kHCInOctets, 100500);
    sw().rmon_take_samples(1, 1);
    EXPECT_EQ(get_etherHistoryOctets(1, 1), 100000u);
    EXPECT_EQ(get_etherHistoryMulticastPkts(1, 1), 30u);
    EXPECT_EQ(get_etherHistoryOctets(1, 2), 500u);
    EXPECT_EQ(get_etherHistoryMulticastPkts(1, 2), 0u);
    EXPECT_EQ(get_etherHistoryIntervalStart(1, 2), bcmd_rmon_history_interval_get(1, 2) * 100);
    EXPECT_EQ(get_etherHistoryOctets(1, 3), 0u) << "not taken yet";
}

TEST_F(RmonTest, HistoryIntervalAndBucketsAreChecked) {
    ASSERT_EQ(set_historyControlStatus(1, 2), 0);
    struct Case {
        int (*set)(int32_t, int32_t);
        int32_t (*get)(int32_t);
        int32_t value;
        int result;
    };
    const Case cases[] = {
        {set_historyControlInterval, get_historyControlInterval, 3600, 0},
        {set_historyControlInterval, get_historyControlInterval, 3601, -1},
        {set_historyControlInterval, get_historyControlInterval, 0, -1},
        {set_historyControlInterval, get_historyControlInterval, 1, 0},
        {set_historyControlBucketsRequested, get_historyControlBucketsRequested, 65535, 0},
        {set_historyControlBucketsRequested, get_historyControlBucketsRequested, 65536, -1},
        {set_historyControlBucketsRequested, get_historyControlBucketsRequested, 0, -1},
        {set_historyControlBucketsRequested, get_historyControlBucketsRequested, 20, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.value);
        const int32_t before = c.get(1);
        EXPECT_EQ(c.set(1, c.value), c.result);
        EXPECT_EQ(c.get(1), c.result == 0 ? c.value : before);
    }
    EXPECT_EQ(get_historyControlBucketsGranted(1), 20);
    sw().fault_set("bcmd_rmon_history_get_conf", -4, 1);
    EXPECT_EQ(set_historyControlInterval(1, 60), -4) << "the read's failure is the result";
}

// ---- the engine's callbacks -------------------------------------------------------------------

uint8_t *image_at(std::size_t offset) { return cfg_get_cfg() + offset; }

TEST_F(RmonTest, RestoreAllHandsBackEverySlotUpToTheFirstFree) {
    EXPECT_EQ(count_calls("cfg_set_rmon_alarm_up", [] { EXPECT_EQ(rmon_restore_all(), 0); }), 0u);
    for (int32_t i : {3, 1, 8}) sw().rmon_add_alarm(alarm_on(i, "1.3.6.1.2.1.2.2.1.10.1"));
    for (int32_t i : {2, 4}) sw().rmon_add_event(event(i, "e"));
    // A slot behind a free one is not looked at.
    std::memcpy(image_at(cfg_area::alarm_slot(4)), image_at(cfg_area::alarm_slot(0)), alarm::kSize);
    const auto calls = call_texts([] { EXPECT_EQ(rmon_restore_all(), 0); });
    std::vector<std::string> ups;
    for (const auto &c : calls)
        if (c.find("_up") != std::string::npos) ups.push_back(c);
    EXPECT_EQ(ups, (std::vector<std::string>{"cfg_set_rmon_alarm_up()", "cfg_set_rmon_alarm_up()",
                                             "cfg_set_rmon_alarm_up()", "cfg_set_rmon_event_up()",
                                             "cfg_set_rmon_event_up()"}));
    EXPECT_EQ(calls.front(), "lock_write(2)");
    EXPECT_EQ(calls.back(), "lock_free(2)");
}

TEST_F(RmonTest, RestoreAllStopsAtTheFirstFailureWithTheLockHeld) {
    for (int32_t i : {1, 2, 3}) sw().rmon_add_alarm(alarm_on(i, "1.3.6.1.2.1.2.2.1.10.1"));
    sw().rmon_add_event(event(1, "e"));
    sw().fault_set("cfg_set_rmon_alarm_up", -9, 1);
    const auto calls = call_texts([] { EXPECT_EQ(rmon_restore_all(), -9); });
    EXPECT_EQ(calls, (std::vector<std::string>{"lock_write(2)", "cfg_get_cfg()", "cfg_set_rmon_alarm_up()"}));
    // The lock was left held on purpose; this thread gives it back.
    EXPECT_EQ(lock_free(cfg_lock_table[2]), 0);
    // 256 alarms in use: every slot, and nothing past the table.
    for (int32_t i = 4; i <= SW_RMON_SLOTS; ++i) sw().rmon_add_alarm(alarm_on(i, "1.3.6.1.2.1.2.2.1.10.1"));
    EXPECT_EQ(count_calls("cfg_set_rmon_alarm_up", [] { EXPECT_EQ(rmon_restore_all(), 0); }), size_t(SW_RMON_SLOTS));
}

TEST_F(RmonTest, SetAndDeleteCallbacksCopyIntoTheConfiguration) {
    uint8_t engine_alarm[alarm::kSize] = {};
    store_i32(engine_alarm, alarm::kIndex, 0x01020304);
    std::strcpy(text_field(engine_alarm, alarm::kText), "1.3.6.1.2.1.16.1.1.1.5.1");
    for (std::size_t p = 0; p < alarm::kParams; ++p) store_i32(engine_alarm, alarm::param(p), int32_t(p * 1000 + 7));
    std::strcpy(text_field(engine_alarm, alarm::kOwner), "ops");
    std::vector<std::string> order;
    for (const auto &c : calls_of([&] { EXPECT_EQ(rmon_alarm_set_pre(engine_alarm), 0); }))
        if (c.call != "strncpy_safe") order.push_back(c.call);
    EXPECT_EQ(order, (std::vector<std::string>{"lock_write", "cfg_set_rmon_alarm_pre", "lock_free"}));
    const uint8_t *slot = image_at(cfg_area::alarm_slot(0));
    // Big-endian on every host, the record copied whole.
    EXPECT_EQ(std::vector<uint8_t>(slot, slot + 4), (std::vector<uint8_t>{1, 2, 3, 4}));
    EXPECT_EQ(std::memcmp(slot, engine_alarm, alarm::kSize), 0);

    uint8_t engine_event[event::engine::kSize] = {};
    store_i32(engine_event, event::kIndex, 6);
    std::strcpy(text_field(engine_event, event::kDescription), "port down");
    engine_event[event::kLog.offset] = 5;
    engine_event[event::kTrap.offset] = 0;
    store_i32(engine_event, event::kScript, 3);
    const std::string community(31, 'c');
    std::strcpy(text_field(engine_event, event::engine::kCommunity), community.c_str());
    std::strcpy(text_field(engine_event, event::engine::kOwner), "me");
    ASSERT_EQ(rmon_event_set_pre(engine_event), 0);
    const auto saved = sw().rmon().event_slots.at(0);
    EXPECT_EQ(saved.index, 6);
    EXPECT_EQ(saved.description, "port down");
    EXPECT_TRUE(saved.log);
    EXPECT_FALSE(saved.trap);
    EXPECT_EQ(saved.script, 3);
    EXPECT_EQ(saved.community, community);
    EXPECT_EQ(saved.owner, "me");
    const uint8_t *ev = image_at(cfg_area::event_slot(0));
    EXPECT_EQ(ev[event::kLog.offset], 1) << "a flag is stored as 0 or 1";
    EXPECT_EQ(text_at(ev, event::config::kOwner), std::string("me")) << "at byte 171";

    // Deleting through the engine's handle; an unknown one fails.
    EXPECT_EQ(rmon_alarm_delete_pre(engine_alarm), 0);
    EXPECT_TRUE(sw().rmon().alarm_slots.empty());
    EXPECT_EQ(rmon_alarm_delete_pre(engine_alarm), -1);
    sw().fault_set("cfg_del_rmon_event_pre", -2, 1);
    EXPECT_EQ(rmon_event_delete_pre(engine_event), -2);
    EXPECT_EQ(rmon_event_delete_pre(engine_event), 0);
    EXPECT_TRUE(sw().rmon().event_slots.empty());
}

TEST_F(RmonTest, FiredEventIsLoggedAndItsScriptWrittenRunAndRemoved) {
    sw().rmon_set_script(1, "uplink", "interface 1/1\nshutdown\n");
    sw().rmon_set_script(2, "", "show version\n");
    sw().rmon_set_script(3, "off", "reload\n", false);
    sw().rmon_set_script(4, "empty", "");
    struct Case {
        Event event;
        const char *description;  // as fired
        std::string log, script;  // "" no script run
    };
    const Case cases[] = {
        {event(3, "port down", 1), "port down", "5,\"RMON event 3 (port down) was fired.\"",
         "1 (uplink)\ninterface 1/1\nshutdown\nend.\n"},
        {event(4, "", 2), nullptr, "5,\"RMON event 4 was fired.\"", "2\nshow version\nend.\n"},
        {event(7, "", 0), "", "5,\"RMON event 7 was fired.\"", ""},
        {event(8, "", 3), "x", "5,\"RMON event 8 (x) was fired.\"", ""},
        {event(9, "", 4), "x", "5,\"RMON event 9 (x) was fired.\"", ""},
        {event(10, "", 0), "nowhere", "5,\"RMON event 11 (nowhere) was fired.\"", ""},
    };
    for (const Case &c : cases) sw().rmon_add_event(c.event);
    for (const Case &c : cases) {
        SCOPED_TRACE(c.log);
        const int fired = c.event.index == 10 ? 11 : c.event.index;  // 11: no such event
        const uint32_t runs = sw().rmon().commands_run;
        std::vector<swsim::JournalEntry> shell;
        const auto logged = vxlog_lines([&] {
            shell = calls_named("systemf", [&] { EXPECT_EQ(rmon_event_fired(fired, c.description), 0); });
        });
        EXPECT_EQ(logged, std::vector<std::string>{c.log});
        if (c.script.empty()) {
            EXPECT_TRUE(shell.empty());
            EXPECT_EQ(sw().rmon().commands_run, runs);
            continue;
        }
        ASSERT_EQ(shell.size(), 1u);
        EXPECT_EQ(shell[0].args, "\"/usr/bin/cli -s /var/cli-commands/tmp/event_fire\"");
        EXPECT_EQ(sw().rmon().last_script, c.script) << "the file as the interpreter found it";
        EXPECT_NE(::access(snmpapi::rmon::kScriptFile, F_OK), 0) << "removed after the run";
    }
}

TEST_F(RmonTest, FiredEventFailsOnlyWhenTheScriptFileCannotBeOpened) {
    sw().rmon_set_script(1, "", "show version\n");
    sw().rmon_add_event(event(1, "", 1));
    // A directory where the script file goes.
    ASSERT_EQ(::mkdir("/var/cli-commands/tmp/event_fire", 0755), 0) << std::strerror(errno);
    EXPECT_EQ(count_calls("vxlog", [] { EXPECT_EQ(rmon_event_fired(1, "d"), -1); }), 1u);
    ::rmdir("/var/cli-commands/tmp/event_fire");
}

TEST_F(RmonTest, ClearAllWalksAlarmsThenEvents) {
    const Oid alarms(std::begin(snmpapi::rmon::kAlarmStatusColumn), std::end(snmpapi::rmon::kAlarmStatusColumn));
    const Oid events(std::begin(snmpapi::rmon::kEventStatusColumn), std::end(snmpapi::rmon::kEventStatusColumn));
    struct Case {
        std::vector<int> answers;
        int result;
        std::vector<Oid> walked;
    };
    const Case cases[] = {
        {{0, 0}, 0, {alarms, events}},
        {{-1}, -1, {alarms}},
        {{0, -1}, -1, {alarms, events}},
    };
    for (const Case &c : cases) {
        walks() = WalkLog{{}, c.answers};
        EXPECT_EQ(rmon_clear_all(), c.result);
        EXPECT_EQ(walks().columns, c.walked);
    }
    // The control tool's request reaches it through the engine.
    walks() = WalkLog{};
    init_rmon();
    EXPECT_EQ(sw().rmon_clear_all(), 0);
    EXPECT_EQ(walks().columns.size(), 2u);
}

TEST_F(RmonTest, AlarmCrossingFiresItsEventThroughTheCallbacks) {
    init_rmon();
    sw().rmon_add_statistic(1, 0, 0);
    sw().rmon_add_event(event(1, "too much", 0));
    sw().rmon_add_event(event(2, "calm", 0));
    Alarm a = alarm_on(1, "1.3.6.1.2.1.16.1.1.1.4.1");
    a.interval = 1;
    a.rising = 1000;
    a.falling = 10;
    a.rising_event = 1;
    a.falling_event = 2;
    sw().rmon_add_alarm(a);
    sw().set_counter(0, 0, swsim::stat::kHCInOctets, 5000);
    sleep(2);  // the alarm's interval passes
    const auto logged = vxlog_lines([&] { sw().rmon_step(); });
    EXPECT_EQ(logged, std::vector<std::string>{"5,\"RMON event 1 (too much) was fired.\""});
    EXPECT_EQ(sw().rmon().alarms.at(0).value, 5000);
    sleep(2);
    EXPECT_EQ(vxlog_lines([&] { sw().rmon_step(); }),
              std::vector<std::string>{"5,\"RMON event 2 (calm) was fired.\""});
    EXPECT_EQ(sw().rmon().events.at(0).fired, 1u);
}

TEST_F(RmonTest, AlarmTableServesNoRows) {
    EXPECT_EQ(init_index_alarmTable(add_int_row), 0);
    EXPECT_TRUE(rows().ints.empty());
    EXPECT_EQ(exists_entry_alarmTable(1), 1);
    EXPECT_EQ(get_alarmStatus(1), 0);
    EXPECT_EQ(get_alarmInterval(1), 0);
    EXPECT_EQ(set_alarmStatus(1, 4), 0);
    EXPECT_EQ(set_alarmRisingThreshold(1, 5), 0);
    EXPECT_TRUE(sw().rmon().alarm_slots.empty()) << "changes nothing";
}

}  // namespace
}  // namespace unit
