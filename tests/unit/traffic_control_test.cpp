// Rate limits, storm control, queue counters and mirroring: the platform
// calls each accessor makes, what their results become, and the catalogued
// ranges against what the platform takes.
#include <cstring>
#include <string_view>

#include "fixture.hpp"
#include "tables/catalogue.hpp"
#include "scalars/catalogue.hpp"
#include "tables/descriptors.hpp"

namespace unit {
namespace {

using swsim::Switch;
using Calls = std::vector<std::string>;

class TrafficTest : public SwitchTest {
protected:
    // Two units of 8 ports; trunk 1 = 1/7 + 1/8.
    std::string scenario() const override {
        return R"({"units": [{"ports": 8, "sfp_ports": 0}, {"ports": 8, "sfp_ports": 0}],
                   "trunks": [{"id": 1, "members": ["1/7", "1/8"]}]})";
    }
    static constexpr int32_t kTrunk1 = 513;
};

// One direction of a rate limit: its columns and the platform's call names.
struct Limit {
    Switch::Direction direction;
    int32_t (*get_status)(int32_t);
    int (*set_status)(int32_t, int32_t);
    int32_t (*get_rate)(int32_t);
    int (*set_rate)(int32_t, int32_t);
    int32_t (*get_burst)(int32_t);
    int (*set_burst)(int32_t, int32_t);
    std::string suffix;  // of the platform calls
};
const Limit kLimits[] = {
    {Switch::kIngress, get_rlPortInputStatus, set_rlPortInputStatus, get_rlPortInputRate, set_rlPortInputRate,
     get_rlPortInputBurst, set_rlPortInputBurst, "ingress"},
    {Switch::kEgress, get_rlPortOutputStatus, set_rlPortOutputStatus, get_rlPortOutputRate, set_rlPortOutputRate,
     get_rlPortOutputBurst, set_rlPortOutputBurst, "egress"},
};

TEST_F(TrafficTest, EnablingALimitSetsTheFixedRateAndBurst) {
    for (const Limit &l : kLimits) {
        SCOPED_TRACE(l.suffix);
        EXPECT_EQ(call_texts([&] { EXPECT_EQ(l.set_status(2, 1), 0); }),
                  (Calls{"cfg_set_port_rate_" + l.suffix + "(0,1,1000000)",
                         "cfg_set_port_burst_" + l.suffix + "(0,1,4096)"}));
        EXPECT_EQ(l.get_status(2), 1);
        EXPECT_EQ(l.get_burst(2), 4096);

        // Disabled: the platform's defaults, no limit; the default burst the
        // platform still holds reads 0.
        EXPECT_EQ(call_texts([&] { EXPECT_EQ(l.set_status(2, 2), 0); }),
                  (Calls{"cfg_set_default_port_rate_" + l.suffix + "(0,1)",
                         "cfg_set_default_port_burst_" + l.suffix + "(0,1)"}));
        EXPECT_EQ(l.get_status(2), 2);
        EXPECT_EQ(l.get_rate(2), 0);
        EXPECT_GT(sw().traffic(0, 1).burst_kb[l.direction], 0u);
        EXPECT_EQ(l.get_burst(2), 0);

        // Other values are accepted and make no call.
        EXPECT_TRUE(calls_of([&] { EXPECT_EQ(l.set_status(2, 3), 0); }).empty());
        EXPECT_TRUE(calls_of([&] { EXPECT_EQ(l.set_status(2, 0), 0); }).empty());

        // A rate goes to the platform as it is; a trunk as port0 512.
        EXPECT_EQ(calls_of([&] { EXPECT_EQ(l.set_rate(kTrunk1, 250000), 0); }).at(0).args, "0,512,250000");
    }
    // The two directions are kept apart.
    sw().set_rate_limit(0, 3, Switch::kIngress, 700);
    EXPECT_EQ(get_rlPortInputRate(4), 700);
    EXPECT_EQ(get_rlPortOutputRate(4), 0);
}

TEST_F(TrafficTest, FirstFailureStopsTheSequenceAndReadsFallBack) {
    for (const Limit &l : kLimits) {
        SCOPED_TRACE(l.suffix);
        sw().fault_set("cfg_set_port_rate_" + l.suffix, -7, 1);
        EXPECT_EQ(calls_of([&] { EXPECT_EQ(l.set_status(1, 1), -7); }).size(), 1u) << "no burst after a failed rate";
        sw().fault_set("cfg_set_port_burst_" + l.suffix, -4, 1);
        EXPECT_EQ(l.set_status(1, 1), -4);
        sw().fault_set("cfg_set_default_port_rate_" + l.suffix, -3, 1);
        EXPECT_EQ(calls_of([&] { EXPECT_EQ(l.set_status(1, 2), -3); }).size(), 1u);
        sw().fault_set("cfg_set_default_port_burst_" + l.suffix, -2, 1);
        EXPECT_EQ(l.set_status(1, 2), -2);

        sw().set_rate_limit(0, 0, l.direction, 800, 32);
        sw().fault_set("cfg_get_port_rate_" + l.suffix, -1, 3);
        EXPECT_EQ(l.get_status(1), 2);
        EXPECT_EQ(l.get_rate(1), 0);
        EXPECT_EQ(l.get_burst(1), 0);
        sw().fault_set("cfg_get_port_burst_" + l.suffix, -1, 1);
        EXPECT_EQ(l.get_burst(1), 0);
        EXPECT_EQ(l.get_burst(1), 32);
    }
}

TEST_F(TrafficTest, StormControlOffForAnythingButEnabled) {
    for (int32_t v : {2, 3, 0, -1}) {
        ASSERT_EQ(set_bcastStormStatus(3, 1), 0);
        EXPECT_EQ(get_bcastStormStatus(3), 1);
        EXPECT_EQ(call_texts([&] { EXPECT_EQ(set_bcastStormStatus(3, v), 0); }),
                  Calls{"cfg_set_port_rate_bcast_enable(0,2,0)"}) << v;
        EXPECT_EQ(get_bcastStormStatus(3), 2) << v;
    }
    sw().set_storm_control(0, 2, true, 10);
    sw().fault_set("cfg_get_port_rate_bcast_enable", -1, 1);
    sw().fault_set("cfg_get_port_rate_bcast_value", -1, 1);
    EXPECT_EQ(get_bcastStormStatus(3), 2);
    EXPECT_EQ(get_bcastStormPacketRate(3), 0);
}

TEST_F(TrafficTest, QueueCountersByQueueNumber) {
    using Getter = uint64_t (*)(int32_t, int32_t);
    const std::pair<Getter, Switch::QueueCounter> kinds[] = {
        {get_queuePortSentPackets, Switch::kSentPackets},
        {get_queuePortSentBytes, Switch::kSentBytes},
        {get_queuePortDroppedPackets, Switch::kDroppedPackets},
        {get_queuePortDroppedBytes, Switch::kDroppedBytes},
    };
    const std::string calls[] = {"cfg_get_queue_pkts_cnt", "cfg_get_queue_bytes_cnt", "cfg_get_queue_dropped_pkts",
                                 "cfg_get_queue_dropped_bytes"};
    for (size_t k = 0; k < 4; ++k) {
        const auto [get, kind] = kinds[k];
        for (int q = 0; q < 8; ++q) sw().set_queue_counter(0, 0, kind, q, (uint64_t(k + 1) << 40) + 100 * k + q);
        for (int q = 0; q < 8; ++q) {
            SCOPED_TRACE(std::to_string(k) + "/" + std::to_string(q));
            EXPECT_EQ(call_texts([&] { EXPECT_EQ(get(1, q), (uint64_t(k + 1) << 40) + 100 * k + q); }),
                      Calls{calls[k] + "(0,0,64)"});
        }
    }
    // A trunk counts its members.
    sw().set_queue_counter(0, 6, Switch::kSentBytes, 5, 1000);
    sw().set_queue_counter(0, 7, Switch::kSentBytes, 5, 234);
    EXPECT_EQ(get_queuePortSentBytes(kTrunk1, 5), 1234u);
    // A failed read answers 0.
    sw().fault_set("cfg_get_queue_bytes_cnt", -1, 1);
    EXPECT_EQ(get_queuePortSentBytes(kTrunk1, 5), 0u);
}

TEST_F(TrafficTest, QueueRowsQueueByQueue) {
    EXPECT_EQ(init_index_queuePortTable(add_pair_row), 0);
    ASSERT_EQ(rows().keys.size(), 8u * 17u);  // 16 ports and a trunk, 8 queues
    EXPECT_EQ(rows().keys[0], "1.0");
    EXPECT_EQ(rows().keys[16], "513.0");
    EXPECT_EQ(rows().keys[17], "1.1");
    EXPECT_EQ(rows().keys.back(), "513.7");

    EXPECT_EQ(exists_entry_queuePortTable(66, 3), 1);
    sw().set_unit_present(1, false);
    EXPECT_EQ(exists_entry_queuePortTable(3, 3), 1);
    EXPECT_EQ(exists_entry_queuePortTable(65, 6), 0);
    sw().trunk_destroy(0);
    EXPECT_EQ(exists_entry_queuePortTable(kTrunk1, 2), 0);
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"queuePortTable 65.6", "queuePortTable 513.2"}));
}

TEST_F(TrafficTest, MirrorTypeAndDestination) {
    // Platform 0 (not mirrored) reads none(4), and none writes 0.
    EXPECT_EQ(get_mirrorType(1), 4);
    EXPECT_EQ(set_mirrorType(kTrunk1, 3), 0);
    EXPECT_EQ(sw().traffic(0, 512).mirror, 3);
    EXPECT_EQ(get_mirrorType(kTrunk1), 3);
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_mirrorType(kTrunk1, 4), 0); }), Calls{"cfg_set_port_mirror(0,512,0)"});
    EXPECT_EQ(get_mirrorType(kTrunk1), 4);
    for (int32_t bad : {0, 5, -1}) EXPECT_TRUE(calls_of([&] { EXPECT_EQ(set_mirrorType(1, bad), -1); }).empty());
    sw().fault_set("cfg_get_port_mirror", -1, 1);
    EXPECT_EQ(get_mirrorType(1), 0);

    // No destination yet: 0.  Unit 2 port 5 is unit0 1, port0 4: 69.
    EXPECT_EQ(get_mirrorDestinationPort(), 0);
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_mirrorDestinationPort(69), 0); }), Calls{"cfg_set_mirror_to(1,4)"});
    EXPECT_EQ(get_mirrorDestinationPort(), 69);
    sw().fault_set("cfg_get_mirror_to", -1, 1);
    EXPECT_EQ(get_mirrorDestinationPort(), 0);
}

// What the first SET phase lets through, the platform takes: the catalogued
// bounds of every ranged column are written to a port and a trunk, and the
// value above the top is refused by the platform as well.
TEST_F(TrafficTest, CataloguedRangesMatchWhatThePlatformTakes) {
    using SetInt = int (*)(int32_t, int32_t);
    const std::pair<std::string_view, SetInt> setters[] = {
        {"rlPortInputRate", set_rlPortInputRate},   {"rlPortInputBurst", set_rlPortInputBurst},
        {"rlPortOutputRate", set_rlPortOutputRate}, {"rlPortOutputBurst", set_rlPortOutputBurst},
        {"bcastStormPacketRate", set_bcastStormPacketRate},
    };
    for (const auto &[name, set] : setters) {
        const snmpapi::ColumnDesc *c = snmpapi::find_named(snmpapi::all_columns(), name);
        ASSERT_NE(c, nullptr) << name;
        ASSERT_TRUE(c->range.checked) << name;
        for (int32_t i : {1, kTrunk1}) {
            EXPECT_EQ(set(i, int32_t(c->range.lo)), 0) << name << " " << c->range.lo;
            EXPECT_EQ(set(i, int32_t(c->range.hi)), 0) << name << " " << c->range.hi;
            EXPECT_LT(set(i, int32_t(c->range.hi + 1)), 0) << name;
            EXPECT_FALSE(c->range.accepts(uint32_t(c->range.hi + 1))) << name;
        }
    }
    // The status columns take any value (only enabled counts); mirrorType 1..4.
    for (std::string_view name : {"rlPortInputStatus", "rlPortOutputStatus", "bcastStormStatus"})
        EXPECT_FALSE(snmpapi::find_named(snmpapi::all_columns(), name)->range.checked) << name;
    const snmpapi::Range mirror = snmpapi::find_named(snmpapi::all_columns(), std::string_view("mirrorType"))->range;
    EXPECT_TRUE(mirror.accepts(1) && mirror.accepts(4) && !mirror.accepts(0) && !mirror.accepts(5));
}

}  // namespace
}  // namespace unit
