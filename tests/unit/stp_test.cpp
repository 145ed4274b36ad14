// Spanning tree: the state records as the platform lays them out, the bridge
// and port writes with their accepted ranges, the trunk test of the BRIDGE-MIB
// port writers, and the answers on platform failures.
#include <vector>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/records_l2proto.hpp"
#include "tables/catalogue.hpp"
#include "tables/descriptors.hpp"

namespace unit {
namespace {

using Octets = std::vector<uint8_t>;

Octets octets(const uint8_t *p, size_t len) { return Octets(p, p + len); }

// ---- the records, byte by byte ------------------------------------------------

TEST(StpRecords, BridgeStateFieldsSitAtTheirOffsets) {
    uint8_t raw[swp::stp_state::kSize] = {};
    const uint8_t root[8] = {0x80, 0x00, 0x00, 0x01, 0x02, 0x03, 0x04, 0x05};
    std::memcpy(raw + 28, root, 8);
    raw[44 + 2] = 0x4e, raw[44 + 3] = 0x20;      // root cost 20000
    raw[52 + 1] = 0x01;                          // 65536 centiseconds
    raw[60] = 0xfe;                              // one octet of change count
    raw[62] = 0x02, raw[63] = 0x01;              // root port 513
    raw[64 + 2] = 0x07, raw[64 + 3] = 0xd0;      // 2000
    raw[68 + 3] = 0xc8;                          // 200
    raw[72 + 2] = 0x05, raw[72 + 3] = 0xdc;      // 1500
    const auto r = swp::stp_state::decode(raw);
    EXPECT_EQ(r.root.prio, 0x8000);
    EXPECT_EQ(octets(r.root.mac, 6), (Octets{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(r.root_cost, 20000u);
    EXPECT_EQ(r.time_since_change, 65536u);
    EXPECT_EQ(r.change_count, 0xfe);
    EXPECT_EQ(r.root_port, 513);
    EXPECT_EQ(r.max_age, 2000u);
    EXPECT_EQ(r.hello_time, 200u);
    EXPECT_EQ(r.forward_delay, 1500u);
    uint8_t again[swp::stp_state::kSize];
    swp::stp_state::encode(r, again);
    EXPECT_EQ(octets(again, sizeof again), octets(raw, sizeof raw));
}

TEST(StpRecords, PortStateFieldsSitAtTheirOffsets) {
    uint8_t raw[swp::stp_port_state::kSize] = {};
    raw[15] = 3;                                                 // forwarding
    raw[16] = 0x01, raw[17] = 0x31, raw[18] = 0x2d, raw[19] = 0; // 20000000
    const uint8_t droot[8] = {0x10, 0x00, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff};
    const uint8_t dbridge[8] = {0x80, 0x01, 0x02, 0x00, 0x5e, 0x10, 0x00, 0x00};
    std::memcpy(raw + 20, droot, 8);
    raw[36 + 3] = 4;
    std::memcpy(raw + 44, dbridge, 8);
    raw[52] = 0x80, raw[53] = 0x19;
    raw[129] = 1;
    raw[130] = 2;  // told apart from point-to-point
    const auto r = swp::stp_port_state::decode(raw);
    EXPECT_EQ(r.state, 3u);
    EXPECT_EQ(r.path_cost, 20000000u);
    EXPECT_EQ(r.designated_root.prio, 0x1000);
    EXPECT_EQ(octets(r.designated_root.mac, 6), octets(droot + 2, 6));
    EXPECT_EQ(r.designated_cost, 4u);
    EXPECT_EQ(r.designated_bridge.prio, 0x8001);
    EXPECT_EQ(octets(r.designated_port, 2), (Octets{0x80, 0x19}));
    EXPECT_EQ(r.oper_point_to_point, 1);
    EXPECT_EQ(r.oper_edge, 2);
    uint8_t again[swp::stp_port_state::kSize];
    swp::stp_port_state::encode(r, again);
    EXPECT_EQ(octets(again, sizeof again), octets(raw, sizeof raw));
}

// ---- over the simulated switch -------------------------------------------------

class StpTest : public SwitchTest {
protected:
    // One unit of 28 ports (1/1-1/10 up, 1/11 down), trunk 1 on 1/20-21 (up).
    std::string scenario() const override {
        return R"({"system": {"base_mac": "02:00:5e:10:00:00"}, "units": [{"ports": 28}],
                   "trunks": [{"id": 1, "members": ["1/20", "1/21"]}],
                   "ports": [{"select": ["1/1-10", "1/20-21"], "link": true, "peer_speed": 1000}],
                   "stp": {"topology_changes": 300}})";
    }
    static constexpr int32_t kTrunk1 = 513;
    // The arguments of the last call of `call` that `body` makes.
    template <class Body>
    std::string args_of(const std::string &call, Body &&body) {
        const auto made = calls_named(call, body);
        return made.empty() ? "(not called)" : made.back().args;
    }
};

TEST_F(StpTest, BridgeScalarsFromTheStateRecord) {
    EXPECT_EQ(get_dot1dStpTopChanges(), 44u);  // 300 in one octet
    // This bridge is the root: its own identifier.
    EXPECT_EQ(read_octets(get_dot1dStpDesignatedRoot), (Octets{0x80, 0, 0x02, 0x00, 0x5e, 0x10, 0x00, 0x00}));
    EXPECT_EQ(get_dot1dStpRootPort(), 0);

    swsim::Switch::StpRoot root;
    root.prio = 32768;
    const uint8_t mac[6] = {0, 1, 2, 3, 4, 5};
    std::memcpy(root.mac, mac, 6);
    root.cost = 40000;
    root.unit0 = 0, root.port0 = 512;  // heard on trunk 1
    root.max_age = 2200, root.hello = 300, root.fwd_delay = 1600;
    sw().stp_set_root(root);
    EXPECT_EQ(read_octets(get_dot1dStpDesignatedRoot), (Octets{0x80, 0x00, 0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(get_dot1dStpRootCost(), 40000);
    EXPECT_EQ(get_dot1dStpRootPort(), kTrunk1);
    EXPECT_EQ(get_dot1dStpMaxAge(), 2200);
    EXPECT_EQ(get_dot1dStpHelloTime(), 300);
    EXPECT_EQ(get_dot1dStpForwardDelay(), 1600);
    EXPECT_EQ(get_dot1dStpTopChanges(), 45u);
    EXPECT_LT(get_dot1dStpTimeSinceTopologyChange(), 100u);  // just now, in centiseconds

    // A failed state read: the root has no value; the others read zeros.
    sw().fault_set("cfg_get_stp_state", -1, -1);
    EXPECT_TRUE(read_octets(get_dot1dStpDesignatedRoot).empty());
    EXPECT_EQ(get_dot1dStpMaxAge(), 0);
}

TEST_F(StpTest, BridgeWritesReachThePlatformWithinTheirRanges) {
    struct Setting {
        const char *scalar;
        int (*set)(int32_t);
        int32_t (*get)(void);
        const char *call;
        int32_t value;
        int32_t lo, hi;
    };
    const Setting settings[] = {
        {"dot1dStpPriority", set_dot1dStpPriority, get_dot1dStpPriority, "cfg_set_stp_prio", 4096, 0, 65535},
        {"dot1dStpBridgeMaxAge", set_dot1dStpBridgeMaxAge, get_dot1dStpBridgeMaxAge, "cfg_set_stp_maxage", 2500, 600, 4000},
        {"dot1dStpBridgeHelloTime", set_dot1dStpBridgeHelloTime, get_dot1dStpBridgeHelloTime, "cfg_set_stp_hello", 150, 100, 1000},
        {"dot1dStpBridgeForwardDelay", set_dot1dStpBridgeForwardDelay, get_dot1dStpBridgeForwardDelay, "cfg_set_stp_ftime", 2000, 400, 3000},
    };
    for (const Setting &s : settings) {
        SCOPED_TRACE(s.scalar);
        const snmpapi::ScalarDesc *d = snmpapi::find_scalar(s.scalar);
        ASSERT_NE(d, nullptr);
        EXPECT_TRUE(d->served);
        EXPECT_TRUE(d->range.accepts(uint32_t(s.lo)) && d->range.accepts(uint32_t(s.hi)));
        EXPECT_FALSE(d->range.accepts(uint32_t(s.lo - 1)) || d->range.accepts(uint32_t(s.hi + 1)));
        EXPECT_EQ(args_of(s.call, [&] { EXPECT_EQ(s.set(s.value), 0); }), "1," + std::to_string(s.value));
        EXPECT_EQ(s.get(), s.value);
        sw().fault_set(s.call, -4, 1);
        EXPECT_EQ(s.set(s.lo), -4);
        EXPECT_EQ(s.get(), s.value);
    }
    // A failed read shows 0, never the platform's -1.
    sw().fault_set("cfg_get_stp_hello", -1, 1);
    EXPECT_EQ(get_dot1dStpBridgeHelloTime(), 0);
    sw().fault_set("cfg_get_stp_port_cost", -1, 1);
    EXPECT_EQ(get_dot1dStpPortPathCost(1), 0);

    // Switch-wide: status 2 writes 0; protocol type 1 is force mode 0.
    EXPECT_EQ(args_of("cfg_set_stp_domain_enabled", [] { EXPECT_EQ(set_staSystemStatus(2), 0); }), "1,0");
    EXPECT_EQ(get_staSystemStatus(), 2);
    EXPECT_EQ(get_staProtocolType(), 1);
    ASSERT_EQ(set_staProtocolType(2), 0);
    EXPECT_EQ(sw().stp().force_mode, 2);
    EXPECT_EQ(get_staProtocolType(), 2);
    EXPECT_EQ(args_of("cfg_set_stp_forcemode", [] { EXPECT_EQ(set_staProtocolType(1), 0); }), "0");
    EXPECT_EQ(get_staProtocolType(), 1);
}

TEST_F(StpTest, PortStateCodesAndFailedReads) {
    EXPECT_EQ(get_dot1dStpPortState(1), 5);    // up: forwarding
    EXPECT_EQ(get_dot1dStpPortState(11), 1);   // down: disabled
    const int32_t expected[] = {1, 2, 4, 5};
    for (int code = 0; code <= 3; ++code) {
        sw().stp_set_port_state(0, 1, code);
        EXPECT_EQ(get_dot1dStpPortState(2), expected[code]) << code;
    }
    EXPECT_EQ(read_octets(get_dot1dStpPortDesignatedPort, kTrunk1), (Octets{0x82, 0x01}));
    sw().fault_set("cfg_get_stp_port_state", -1, -1);
    EXPECT_EQ(get_dot1dStpPortState(2), 0);
    EXPECT_EQ(get_dot1dStpPortDesignatedCost(2), -1);
    EXPECT_EQ(get_staPortLongPathCost(2), -1);
    EXPECT_EQ(get_staPortOperEdgePort(2), 0);
    EXPECT_EQ(get_staPortOperPointToPoint(2), 2);
    for (auto get : {get_dot1dStpPortDesignatedRoot, get_dot1dStpPortDesignatedBridge, get_dot1dStpPortDesignatedPort})
        EXPECT_TRUE(read_octets(get, 2).empty());
}

TEST_F(StpTest, PortWritesWithTheTrunkTest) {
    EXPECT_EQ(args_of("cfg_set_stp_port_prio", [] { EXPECT_EQ(set_dot1dStpPortPriority(3, 64), 0); }), "1,0,2,64");
    EXPECT_EQ(args_of("cfg_set_stp_port_cost", [] { EXPECT_EQ(set_dot1dStpPortPathCost(kTrunk1, 4000), 0); }),
              "1,0,512,4000");
    EXPECT_EQ(get_dot1dStpPortPathCost(kTrunk1), 4000);
    EXPECT_EQ(get_staPortLongPathCost(kTrunk1), 4000);

    // A trunk that does not exist fails before any write; 512 asks trunk 511.
    for (auto set : {set_dot1dStpPortPriority, set_dot1dStpPortEnable, set_dot1dStpPortPathCost}) {
        EXPECT_EQ(call_texts([&] { EXPECT_EQ(set(520, 16), -1); }), std::vector<std::string>{"cfg_check_trunk(7)"});
        EXPECT_EQ(calls_of([&] { set(512, 16); }).at(0).args, "511");
    }
    // The private table makes no trunk test.
    EXPECT_EQ(call_texts([] { set_staPortLongPathCost(520, 16); }),
              std::vector<std::string>{"cfg_set_stp_port_cost(1,0,519,16)"});

    sw().fault_set("cfg_set_stp_port_cost", -3, 1);
    EXPECT_EQ(set_dot1dStpPortPathCost(3, 100), -3);
}

TEST_F(StpTest, EnableAndEdgeWritesMapTwoToZero) {
    auto passed = [&](auto set, int32_t value, const char *call) { return args_of(call, [&] { set(4, value); }); };
    EXPECT_EQ(passed(set_dot1dStpPortEnable, 1, "cfg_set_stp_port_enabled"), "1,0,3,1");
    EXPECT_EQ(passed(set_dot1dStpPortEnable, 2, "cfg_set_stp_port_enabled"), "1,0,3,0");
    EXPECT_EQ(passed(set_dot1dStpPortEnable, 7, "cfg_set_stp_port_enabled"), "1,0,3,7");
    EXPECT_EQ(get_dot1dStpPortEnable(4), 2);
    EXPECT_EQ(get_staPortSystemStatus(4), 2);
    EXPECT_EQ(set_staPortSystemStatus(4, 1), 0);
    EXPECT_EQ(get_dot1dStpPortEnable(4), 1);

    EXPECT_EQ(passed(set_staPortAdminEdgePort, 2, "cfg_set_stp_port_edge"), "0,3,0");
    EXPECT_EQ(get_staPortAdminEdgePort(4), 2);
}

}  // namespace
}  // namespace unit
