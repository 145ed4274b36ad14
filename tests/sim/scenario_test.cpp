// Scenarios: what the shipped ones build, and how a bad one is reported.
#include <chrono>
#include <filesystem>
#include <fstream>

#include "support.hpp"

namespace {

using simtest::SwitchTest;
using simtest::TempDir;
using simtest::build_error;

TEST_F(TempDir, ABadFieldIsNamedWithItsFile) {
    const std::pair<const char *, const char *> cases[] = {
        {R"({"units": [{"ports": 8}, {"ports": 65}]})", "scenarios/x.json: units[1].ports: must be 1..64"},
        {R"({"sytem": {}})", "scenarios/x.json: sytem: unknown field"},
        {R"({"system": {"name": 5}})", "scenarios/x.json: system.name: must be a string"},
        {R"({"system": {"timezone": {"offset_min": 900}}})",
         "scenarios/x.json: system.timezone.offset_min: must be -720..840"},
        {R"({"units": {"count": 9}})", "scenarios/x.json: units.count: must be 1..8"},
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
        {R"({"fdb": [{"mac": "00:11:22:33:44:55", "vid": 9, "port": "1/1"}]})",
         "scenarios/x.json: fdb[0]: VLAN 9 does not exist"},
        {R"({"units": [{"present": "yes"}]})", "scenarios/x.json: units[0].present: must be true or false"},
    };
    for (auto [json, message] : cases) EXPECT_EQ(build_error(state_, json), message) << json;
    EXPECT_NE(build_error(state_, "{").find("scenarios/x.json: not valid JSON"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(state_)) << "nothing is left behind";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_), {}), 0);

    try {
        swsim::create_state(state_, dir_ + "/none.json");
        FAIL();
    } catch (const swsim::Error &e) {
        EXPECT_EQ(std::string(e.what()), dir_ + "/none.json: cannot read the scenario");
    }
}

TEST_F(SwitchTest, TheDefaultScenarioIsSmallButAlive) {
    swsim::create_state(state_, SCENARIO_DIR "/default.json");
    swsim::Switch sw(state_);
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
    EXPECT_FALSE(sw.system().hostname.empty());
    EXPECT_FALSE(sw.system().location.empty());
}

TEST_F(SwitchTest, TheMaxScenarioFillsEveryLimit) {
    swsim::create_state(state_, SCENARIO_DIR "/max.json");
    ASSERT_EQ(swsim::platform_reopen(), 0);
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
