// Scenarios: what the shipped ones build, and how a bad one is reported.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

#include "support.hpp"

namespace {

using simtest::SwitchTest;
using simtest::TempDir;
using swsim::Switch;

// The complaint of building a scenario.
std::string build_error(const std::string &state, const std::string &json) {
    return simtest::complaint([&] { swsim::create_state_from_json(state, json, "scenarios/x.json"); });
}

// One case of each kind of complaint, over the areas of a scenario.
TEST_F(TempDir, ABadFieldIsNamedWithItsFile) {
    const std::pair<const char *, const char *> cases[] = {
        {R"({"units": [{"ports": 8}, {"ports": 65}]})", "scenarios/x.json: units[1].ports: must be 1..64"},
        {R"({"sytem": {}})", "scenarios/x.json: sytem: unknown field"},
        {R"({"system": {"name": 5}})", "scenarios/x.json: system.name: must be a string"},
        {R"({"vlans": [{"vid": 4095}]})", "scenarios/x.json: vlans[0].vid: must be 1..4094"},
        {R"({"vlans": [{"vid": 2, "tagged": ["1/30"]}]})",
         "scenarios/x.json: vlans[0].tagged[0]: unit 1 has ports 1..28"},
        {R"({"trunks": [{"id": 1, "members": ["3/1"]}]})",
         "scenarios/x.json: trunks[0].members[0]: no unit 3 in this stack"},
        {R"({"trunks": [{"id": 1}, {"id": 1}]})", "scenarios/x.json: trunks[1].id: trunk 1 already exists"},
        {R"({"ports": [{"select": "1/1", "sfp": true}]})",
         "scenarios/x.json: ports[0].sfp: port 1/1 has no transceiver cage"},
        {R"({"ports": [{"link": true}]})", "scenarios/x.json: ports[0]: needs a select field"},
        {R"({"fdb": [{"mac": "00:11", "vid": 1, "port": "1/1"}]})",
         "scenarios/x.json: fdb[0].mac: must be a MAC address like 00:11:22:33:44:55"},
        {R"({"vlan_settings": {"ports": [{"select": "1/1", "pvid": 9}]}})",
         "scenarios/x.json: vlan_settings.ports[0].pvid: VLAN 9 does not exist"},
        {R"({"transceivers": [{"select": "1/25"}]})",
         "scenarios/x.json: transceivers[0].select: port 1/25 has no transceiver fitted"},
        {R"({"traffic": {"mirror_to": "1/1", "ports": [{"select": "1/1-2", "mirror": "rx"}]}})",
         "scenarios/x.json: traffic.ports[0].mirror: port 1/1 is the mirror destination"},
        {R"({"trunks": [{"id": 1, "members": ["1/1"]}], "traffic": {"mirror_to": "T1"}})",
         "scenarios/x.json: traffic.mirror_to: must name one port"},
        {R"({"stp": {"priority": 1000}})", "scenarios/x.json: stp.priority: must be a multiple of 4096"},
        {R"({"stp": {"ports": [{"select": "1/1", "state": "listening"}]}})",
         "scenarios/x.json: stp.ports[0].state: must be one of auto, disabled, blocking, learning, forwarding"},
        {R"({"igmp": {"groups": [{"vid": 1, "group": "10.0.0.1", "ports": "1/1"}]}})",
         "scenarios/x.json: igmp.groups[0]: the group address is not an IPv4 multicast address"},
        {R"({"trunks": [{"id": 1, "members": "1/1"}], "igmp": {"router_ports": [{"vid": 1, "ports": "T1"}]}})",
         "scenarios/x.json: igmp.router_ports[0].ports: IGMP snooping takes user ports, not trunks"},
    };
    for (auto [json, message] : cases) EXPECT_EQ(build_error(state_, json), message) << json;
    EXPECT_NE(build_error(state_, "{").find("scenarios/x.json: not valid JSON"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(state_)) << "nothing is left behind";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_), {}), 0);

    EXPECT_EQ(simtest::complaint([&] { swsim::create_state(state_, dir_ + "/none.json"); }),
              dir_ + "/none.json: cannot read the scenario");
}

TEST_F(TempDir, TheDefaultScenarioIsSmallButAlive) {
    swsim::create_state(state_, SCENARIO_DIR "/default.json");
    Switch sw(state_);
    for (int u : {0, 1}) {
        EXPECT_TRUE(sw.unit(u).present);
        EXPECT_EQ(sw.unit(u).ports, 28);
    }
    EXPECT_FALSE(sw.unit(2).known);
    int up = 0, fitted = 0, moving = 0;
    std::set<int> speeds;
    for (int u : {0, 1})
        for (int p = 0; p < 28; ++p) {
            auto port = sw.port(u, p);
            up += port.link;
            fitted += port.sfp_fitted;
            moving += port.link && port.traffic_pps > 0;
            if (port.link) speeds.insert(port.speed);
        }
    EXPECT_GT(up, 40);
    EXPECT_GE(fitted, 2);
    EXPECT_GT(moving, 30);
    EXPECT_GE(speeds.size(), 3u);
    EXPECT_EQ(sw.trunk(0).members.size(), 2u);
    EXPECT_TRUE(sw.trunk(3).dynamic);
    EXPECT_EQ(sw.trunk(3).members.size(), 2u);
    for (int vid : {1, 10, 20, 100}) EXPECT_FALSE(sw.vlan(vid).name.empty()) << vid;
    auto fdb = sw.fdb();
    EXPECT_EQ(fdb.size(), 50u);
    EXPECT_GE(std::count_if(fdb.begin(), fdb.end(), [](auto &e) { return e.is_static; }), 2);
    EXPECT_GE(std::count_if(fdb.begin(), fdb.end(), [](auto &e) { return e.trunk0 >= 0; }), 2);

    // Traffic controls on ports and trunks; optics in the platform's units
    // (0.05 mW is 500 tenths of a microwatt).
    EXPECT_EQ(sw.traffic(0, 0).burst_kb[Switch::kIngress], 256u);
    EXPECT_EQ(sw.traffic(0, 512).rate_kbps[Switch::kEgress], 2000000u);
    EXPECT_TRUE(sw.traffic(1, 0).storm_control);
    EXPECT_EQ(sw.traffic(0, 6).mirror, SW_MIRROR_BOTH);
    EXPECT_EQ(sw.mirror_to(), std::make_pair(0, 21));
    EXPECT_EQ(sw.transceiver(0, 25).rx_power, 500);
    EXPECT_TRUE(sw.transceiver(1, 24).fitted);
    EXPECT_FALSE(sw.transceiver(1, 24).diagnostics);
}

TEST_F(SwitchTest, TheMaxScenarioFillsEveryLimit) {
    swsim::create_state(state_, SCENARIO_DIR "/max.json");
    ASSERT_EQ(swsim::platform_reopen(), 0);
    Switch sw(state_);
    EXPECT_EQ(status_get_num_units(), 8);
    for (int u = 0; u < 8; ++u) EXPECT_EQ(cfg_equip_get_user_eth_ports(u), 64);
    for (int t = 0; t < 128; ++t) {
        EXPECT_EQ(cfg_check_trunk(t), 1);
        EXPECT_EQ(cfg_is_trunk_empty(t), 0);
    }
    int count = 0;
    uint8_t *entries = nullptr;
    const int32_t all[7] = {};
    ASSERT_EQ(cfg_get_mac_address_table(&count, &entries, all), 0);
    EXPECT_GE(count, 5000);
    std::free(entries);

    int mirrored = 0, limited = 0;
    for (int u = 0; u < SW_MAX_UNITS; ++u)
        for (int p = 0; p < SW_PORTS_PER_UNIT; ++p) {
            auto t = sw.traffic(u, p);
            mirrored += t.mirror != SW_MIRROR_NONE;
            limited += t.rate_kbps[0] && t.rate_kbps[1] && t.storm_control;
        }
    EXPECT_EQ(limited, 512);
    EXPECT_EQ(mirrored, 511) << "every port but the destination";
    EXPECT_EQ(sw.traffic(0, 512 + 127).mirror, SW_MIRROR_RX);

    // Every group record and ring domain is used: a new group cannot be
    // made, a known one still grows.
    EXPECT_EQ(sw.igmp_groups().size(), 128u);
    EXPECT_EQ(sw.igmp_groups()[0].ports.size(), 64u);
    for (int id = 0; id < SW_EAPS_DOMAINS; ++id) ASSERT_EQ(verify_created_eaps_domain(id), id);
    for (int vid = 1; vid <= SW_MAX_VLAN_ID; vid += 409) EXPECT_EQ(cfg_get_igmp_router_port(0, 0, vid), 1) << vid;
    EXPECT_EQ(cfg_set_igmp_set_mcast(0, 9, 1, 0xef7f0001, 0, 1), -1);
    EXPECT_THROW(sw.igmp_set_group_port(1, 0xef7f0001, 0, 9, true), swsim::Error);
    EXPECT_EQ(cfg_set_igmp_set_mcast(0, 9, 1, 0xef010001, 0, 1), 0);

    // Every VLAN against every port and trunk, as one large walk does.
    const auto start = std::chrono::steady_clock::now();
    long members = 0;
    for (int vid = 1; vid <= SW_MAX_VLAN_ID; ++vid) {
        ASSERT_EQ(cfg_vlan_exists(vid), 1);
        for (int i = 0; i < 640; ++i) {
            uint32_t flags = 0;
            int unit0 = i < 512 ? i / 64 : 0, port0 = i < 512 ? i % 64 : i;
            if (cfg_get_vlan_port_member(unit0, port0, vid, &flags) == 0 && flags) ++members;
        }
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    // VLAN 1 has the 256 ports outside trunks and the 128 trunks (members of
    // a trunk are in VLANs through it); VLANs 2..4094 have the two uplinks
    // 7/64 and 8/64 and trunk 1.
    EXPECT_EQ(members, (256 + 128) + 4093L * 3);
    EXPECT_LT(seconds, 5.0) << "2.6 million membership reads";
}

}  // namespace
