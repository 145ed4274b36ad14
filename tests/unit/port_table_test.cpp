// portTable: speed/duplex, flow control, capability bits, auto-negotiation,
// port types, trunk membership and the answers on platform failures.
#include "fixture.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class PortTableTest : public SwitchTest {
protected:
    // Trunk 1 holds 1/20, trunk 7 holds 1/21; ports 25..28 are SFP cages.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}],
                   "trunks": [{"id": 1, "members": ["1/20"]}, {"id": 7, "members": ["1/21"]}],
                   "ports": [{"select": "1/1", "link": true, "peer_speed": 100},
                             {"select": "1/2", "link": true, "peer_speed": 100, "half_duplex": true},
                             {"select": "1/3", "pause": 3}, {"select": "1/4", "pause": 1},
                             {"select": "1/5", "link": true, "pause": 2},
                             {"select": "1/26", "link": true, "sfp": true, "peer_speed": 10000}]})";
    }
    static constexpr int32_t kTrunk1 = 513;  // takes any speed and capability
    static std::string caps(int32_t i) { return read_text(get_portCapabilities, i); }
};

TEST_F(PortTableTest, SpeedDuplexConfigurationRoundTrips) {
    for (int32_t v = 1; v <= 8; ++v) {
        EXPECT_EQ(set_portSpeedDpxCfg(kTrunk1, v), 0) << v;
        EXPECT_EQ(get_portSpeedDpxCfg(kTrunk1), v) << v;
    }
    // 0 and 9 make no call; 8 sets the speed only.
    for (int32_t bad : {0, 9, -1}) {
        auto made = calls_of([&] { EXPECT_LT(set_portSpeedDpxCfg(kTrunk1, bad), 0); });
        EXPECT_TRUE(made.empty()) << bad;
    }
    auto made = calls_of([&] { set_portSpeedDpxCfg(kTrunk1, 8); });
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].call, "cfg_set_port_speed");
    EXPECT_EQ(made[0].args, "0,512,10000");
    // The result is the sum of both platform results.
    sw().fault_set("cfg_set_port_duplex", -5, 1);
    EXPECT_EQ(set_portSpeedDpxCfg(kTrunk1, 3), -5);
}

TEST_F(PortTableTest, AutonegotiationOverridesTheConfiguredSpeed) {
    ASSERT_EQ(set_portSpeedDpxCfg(1, 5), 0);
    EXPECT_EQ(get_portAutonegotiation(1), 2);
    EXPECT_EQ(set_portAutonegotiation(1, 1), 0);
    EXPECT_EQ(get_portAutonegotiation(1), 1);
    EXPECT_EQ(get_portSpeedDpxCfg(1), 1);
    auto made = calls_of([] { EXPECT_EQ(set_portAutonegotiation(1, 2), 0); });
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].args, "0,0,0");
    EXPECT_EQ(get_portAutonegotiation(1), 2);
}

TEST_F(PortTableTest, SpeedDuplexAndFlowControlNumbering) {
    // 1/1 100 full, 1/2 100 half, 1/26 10G, 1/3 down.
    const std::pair<int32_t, int32_t> speed_duplex[] = {{1, 5}, {2, 4}, {26, 8}, {3, 9}};
    for (auto [port, status] : speed_duplex) EXPECT_EQ(get_portSpeedDpxStatus(port), status) << port;
    // Configured pause 3 / 1 / 0 with the link down.
    const struct {
        int32_t port, cfg, status;
    } flow[] = {{3, 4, 3}, {4, 6, 5}, {6, 2, 6}};
    for (const auto &f : flow) {
        EXPECT_EQ(get_portFlowCtrlCfg(f.port), f.cfg) << f.port;
        EXPECT_EQ(get_portFlowCtrlStatus(f.port), f.status) << f.port;
    }
    // Link up: the negotiated words, not the configuration.
    sw().fault_set("cfg_get_port_pause", -1, -1);
    EXPECT_EQ(get_portFlowCtrlStatus(5), 4);
    EXPECT_EQ(get_portFlowCtrlStatus(3), 6);
    sw().fault_clear();
    // Writes are accepted and change nothing.
    EXPECT_TRUE(calls_of([] { EXPECT_EQ(set_portFlowCtrlCfg(3, 6), 0); }).empty());
    EXPECT_EQ(get_portFlowCtrlCfg(3), 4);
    sw().fault_set("bcmd_get_port_info", -2, -1);
    EXPECT_EQ(get_portSpeedDpxStatus(1), 1);
    EXPECT_EQ(get_portFlowCtrlStatus(1), 1);
}

TEST_F(PortTableTest, CapabilityBits) {
    // Copper: 10/100 half+full, 1000 full, and both pause kinds (bit 7 only).
    EXPECT_EQ(caps(1), std::string("\xf5\x00", 2));
    // The buffer is cleared between calls: the SFP+ port has bits 5, 6 and
    // symmetric pause alone (bit 9).
    EXPECT_EQ(caps(26), std::string("\x06\x40", 2));

    // Bits 0, 8, 9 write 0x1 | 0x800 | 0x400, which reads back as bits 0 and 7.
    auto made = calls_of([] { EXPECT_EQ(set_portCapabilities(kTrunk1, bytes("\x80\xc0"), 2), 0); });
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].args, "0,512,3073");
    EXPECT_EQ(caps(kTrunk1), std::string("\x81\x00", 2));
    // Bits 8 and 9 alone give 0xc00 (which the platform refuses: no speed).
    made = calls_of([] { EXPECT_LT(set_portCapabilities(kTrunk1, bytes("\x00\xc0"), 2), 0); });
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0].args, "0,512,3072");
    // A one-octet value carries bits 0..7 only; bit 7 is both 0x800 and 0x400.
    made = calls_of([] { set_portCapabilities(kTrunk1, bytes("\x41"), 1); });
    EXPECT_EQ(made.at(0).args, "0,512,3074");

    sw().fault_set("cfg_get_port_capabilities", -1, 1);
    EXPECT_EQ(caps(1), std::string("\x00\x00", 2));
}

// Copper, SFP+ and trunk rows read their own types; the trunk index takes
// 512 .. 639 apart without asking the platform.
TEST_F(PortTableTest, PortTypeAndTrunkIndex) {
    EXPECT_EQ(get_portType(1), 6);
    EXPECT_EQ(get_portType(26), 11);
    EXPECT_EQ(get_portType(kTrunk1), 12);
    const std::pair<int32_t, int32_t> trunk_of[] = {{kTrunk1, 1}, {639, 127}, {21, 7}, {20, 1}, {1, 0}};
    for (auto [port, trunk] : trunk_of) EXPECT_EQ(get_portTrunkIndex(port), trunk) << port;
    EXPECT_TRUE(calls_of([] { EXPECT_EQ(get_portTrunkIndex(512), 0); }).empty());
    // A type the table does not know reads other(1); a failed read no trunk.
    sw().fault_set("cfg_get_port_type_vx7300", -1, 1);
    EXPECT_EQ(get_portType(1), 1);
    sw().fault_set("cfg_get_port_tid", -9, 1);
    EXPECT_EQ(get_portTrunkIndex(21), 0);
}

TEST_F(PortTableTest, FailedPlatformCalls) {
    sw().fault_set("cfg_set_port_description", -3, 1);
    EXPECT_EQ(set_portName(1, bytes("x"), 1), -3);
    sw().fault_set("cfg_get_port_description", -1, 1);
    EXPECT_EQ(read_text(get_portName, 1), "");
    sw().fault_set("cfg_set_port_autoneg", -7, 1);
    EXPECT_EQ(set_portAutonegotiation(1, 1), -7);
    sw().fault_set("cfg_get_port_mdix", -1, 1);
    EXPECT_EQ(get_portMdiStatus(26), 1);
}

}  // namespace
}  // namespace unit
