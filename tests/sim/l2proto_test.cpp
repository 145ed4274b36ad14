// The simulated switch's layer-2 protocols: scenario fields and their
// complaints, the limits of the group records and ring domains, and the
// swctl verbs.
#include <fstream>
#include <sstream>

#include "support.hpp"

namespace {

using simtest::SwitchTest;
using simtest::TempDir;
using simtest::build_error;

TEST_F(TempDir, BadLayer2FieldsAreNamed) {
    const std::pair<const char *, const char *> cases[] = {
        {R"({"stp": {"priority": 1000}})", "scenarios/x.json: stp.priority: must be a multiple of 4096"},
        {R"({"stp": {"ports": [{"select": "1/1", "state": "listening"}]}})",
         "scenarios/x.json: stp.ports[0].state: must be one of auto, disabled, blocking, learning, forwarding"},
        {R"({"stp": {"root": {"priority": 4096}}})", "scenarios/x.json: stp.root: needs the port the root is reached on"},
        {R"({"igmp": {"groups": [{"vid": 1, "group": "10.0.0.1", "ports": "1/1"}]}})",
         "scenarios/x.json: igmp.groups[0]: the group address is not an IPv4 multicast address"},
        {R"({"igmp": {"groups": [{"vid": 7, "group": "239.0.0.1", "ports": "1/1"}]}})",
         "scenarios/x.json: igmp.groups[0]: VLAN 7 does not exist"},
        {R"({"trunks": [{"id": 1, "members": "1/1"}], "igmp": {"router_ports": [{"vid": 1, "ports": "T1"}]}})",
         "scenarios/x.json: igmp.router_ports[0].ports: IGMP snooping takes user ports, not trunks"},
        {R"({"eaps": [{"id": 64, "name": "r"}]})", "scenarios/x.json: eaps[0].id: must be 0..63"},
        {R"({"eaps": [{"id": 1, "name": "a"}, {"id": 1, "name": "b"}]})",
         "scenarios/x.json: eaps[1]: ring domain 1 already exists"},
    };
    for (auto [json, message] : cases) EXPECT_EQ(build_error(state_, json), message) << json;
}

TEST_F(SwitchTest, TheMaxScenarioFillsTheGroupRecordsAndRingDomains) {
    swsim::create_state(state_, SCENARIO_DIR "/max.json");
    ASSERT_EQ(swsim::platform_reopen(), 0);
    swsim::Switch sw(state_);
    EXPECT_EQ(sw.igmp_groups().size(), 128u);
    EXPECT_EQ(sw.igmp_groups()[0].ports.size(), 64u);
    for (int id = 0; id < SW_EAPS_DOMAINS; ++id) ASSERT_EQ(verify_created_eaps_domain(id), id);
    EXPECT_EQ(cfg_get_eaps_is_master(0), 1);
    for (int vid = 1; vid <= SW_MAX_VLAN_ID; vid += 409) EXPECT_EQ(cfg_get_igmp_router_port(0, 0, vid), 1) << vid;
    // No record left: a new group cannot be made, a known one still grows.
    EXPECT_EQ(cfg_set_igmp_set_mcast(0, 9, 1, 0xef7f0001, 0, 1), -1);
    EXPECT_THROW(sw.igmp_set_group_port(1, 0xef7f0001, 0, 9, true), swsim::Error);
    EXPECT_EQ(cfg_set_igmp_set_mcast(0, 9, 1, 0xef010001, 0, 1), 0);
}

TEST_F(SwitchTest, GroupRecordsComeAndGoWithTheirPorts) {
    EXPECT_EQ(cfg_set_igmp_set_mcast(0, 0, 10, 0xef000001, 0, 0), 0);  // nothing to remove
    EXPECT_TRUE(sw_->igmp_groups().empty());
    EXPECT_EQ(cfg_set_igmp_set_mcast(0, 0, 11, 0xef000001, 0, 1), -1);  // no VLAN 11
    EXPECT_EQ(cfg_set_igmp_set_mcast(0, 0, 10, 0x0a000001, 0, 1), -1);  // not multicast
    EXPECT_EQ(cfg_set_igmp_set_mcast(0, 0, 10, 0xef000001, 1, 1), -1);  // only static groups
    ASSERT_EQ(cfg_set_igmp_set_mcast(0, 0, 10, 0xef000001, 0, 1), 0);
    ASSERT_EQ(cfg_set_igmp_set_mcast(1, 3, 10, 0xef000001, 0, 1), 0);
    ASSERT_EQ(sw_->igmp_groups().size(), 1u);
    EXPECT_EQ(sw_->igmp_groups()[0].ports, (std::vector<std::pair<int, int>>{{0, 0}, {1, 3}}));
    ASSERT_EQ(cfg_set_igmp_set_mcast(0, 0, 10, 0xef000001, 0, 0), 0);
    ASSERT_EQ(cfg_set_igmp_set_mcast(1, 3, 10, 0xef000001, 0, 0), 0);
    EXPECT_TRUE(sw_->igmp_groups().empty());

    EXPECT_EQ(cfg_set_igmp_router_port(0, 0, 11, 1), -1);
    EXPECT_EQ(cfg_set_igmp_router_port(0, 0, 11, 0), 0);  // nothing to take away
    EXPECT_EQ(cfg_set_igmp_router_port(0, 512, 10, 1), -1);  // a trunk
}

TEST_F(SwitchTest, DeletedVlansAndRecreatedTrunksStartClean) {
    sw_->igmp_set_group_port(10, 0xef000001, 0, 0, true);
    sw_->igmp_set_router_port(10, 0, 1, true);
    sw_->igmp_set_group_port(1, 0xef000001, 0, 2, true);
    sw_->vlan_delete(10);
    ASSERT_EQ(sw_->igmp_groups().size(), 1u);
    EXPECT_EQ(sw_->igmp_groups()[0].vid, 1);
    EXPECT_TRUE(sw_->igmp_router_ports(10).empty());
    // Through the platform call as well.
    ASSERT_EQ(cfg_vlan_destroy(1) < 0, true);  // the default VLAN stays
    sw_->vlan_create(20);
    ASSERT_EQ(cfg_set_igmp_router_port(1, 1, 20, 1), 0);
    ASSERT_EQ(cfg_vlan_destroy(20), 0);
    EXPECT_EQ(cfg_get_igmp_router_port(1, 1, 20), 0);

    ASSERT_EQ(cfg_set_stp_port_cost(SW_STP_INSTANCE, 0, 512, 77), 0);
    sw_->trunk_destroy(0);
    sw_->trunk_create(0);
    EXPECT_EQ(cfg_get_stp_port_cost(SW_STP_INSTANCE, 0, 512), 2000);
}

TEST_F(SwitchTest, TreeStateFollowsLinksAndTheRoot) {
    uint8_t rec[SW_STP_PORT_STATE_SIZE];
    auto state = [&](int unit0, int port0) {
        return cfg_get_stp_port_state(SW_STP_INSTANCE, unit0, port0, rec) == 0 ? int(rec[15]) : -1;
    };
    EXPECT_EQ(state(0, 0), SW_STP_FORWARDING);
    sw_->set_link(0, 0, false);
    EXPECT_EQ(state(0, 0), SW_STP_DISABLED);
    sw_->stp_set_port_state(0, 1, SW_STP_LEARNING);
    EXPECT_EQ(state(0, 1), SW_STP_LEARNING);
    sw_->stp_set_port_state(0, 1, -1);
    EXPECT_EQ(state(0, 1), SW_STP_FORWARDING);
    EXPECT_EQ(cfg_get_stp_port_state(2, 0, 1, rec), -1);  // one instance only
    EXPECT_EQ(state(0, 515), -1);                         // trunk 4 is not configured

    swsim::Switch::StpRoot root;
    root.unit0 = 0, root.port0 = 512;
    sw_->stp_set_root(root);
    EXPECT_FALSE(sw_->stp().root_bridge);
    EXPECT_EQ(sw_->stp().root_port0, 512);
    sw_->stp_become_root();
    EXPECT_TRUE(sw_->stp().root_bridge);
    EXPECT_EQ(sw_->stp().changes, 2u);
    swsim::Switch::StpPortSettings bad;
    bad.prio = 100;
    EXPECT_THROW(sw_->stp_set_port(0, 0, bad), swsim::Error);
}

class SwctlLayer2 : public TempDir {
protected:
    int run(const std::string &args, std::string *out = nullptr) {
        const std::string file = dir_ + "/out";
        const std::string cmd = std::string(SWCTL_PATH) + " --state " + state_ + " " + args + " >" + file + " 2>&1";
        const int status = std::system(cmd.c_str());
        std::ifstream in(file);
        std::stringstream s;
        s << in.rdbuf();
        if (out) *out = s.str();
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST_F(SwctlLayer2, Verbs) {
    ASSERT_EQ(run("create " SCENARIO_DIR "/default.json"), 0);
    std::string out;
    EXPECT_EQ(run("stp state 1/3 learning"), 0);
    EXPECT_EQ(run("stp root 1/25 --priority 8192 --mac 00:11:22:33:44:55 --cost 4"), 0);
    EXPECT_EQ(run("stp change"), 0);
    ASSERT_EQ(run("stp show", &out), 0);
    EXPECT_NE(out.find("root           bridge 8192/00:11:22:33:44:55, cost 4, via 1/25"), std::string::npos) << out;
    EXPECT_NE(out.find("1/3    learning  *"), std::string::npos) << out;
    EXPECT_EQ(run("igmp group 10 239.9.9.9 2/3 on"), 0);
    EXPECT_EQ(run("igmp router 20 1/4 on"), 0);
    ASSERT_EQ(run("igmp show", &out), 0);
    EXPECT_NE(out.find("10    239.9.9.9        2/3"), std::string::npos) << out;
    EXPECT_NE(out.find("20    1/4"), std::string::npos) << out;
    EXPECT_EQ(run("eaps create 9 ring-lab --master --state 3"), 0);
    EXPECT_EQ(run("eaps state 9 4"), 0);
    ASSERT_EQ(run("eaps show", &out), 0);
    EXPECT_NE(out.find("9   ring-lab                 master   4"), std::string::npos) << out;

    EXPECT_EQ(run("eaps delete 9"), 0);
    EXPECT_EQ(run("eaps state 9 1", &out), 1);
    EXPECT_EQ(out, "swctl: ring domain 9 does not exist\n");
    EXPECT_EQ(run("igmp group 10 10.0.0.1 1/1 on", &out), 1);
    EXPECT_EQ(out, "swctl: the group address is not an IPv4 multicast address\n");
    EXPECT_EQ(run("igmp router 333 1/1 on", &out), 1);
    EXPECT_EQ(out, "swctl: VLAN 333 does not exist\n");
    EXPECT_EQ(run("stp state T9 blocking", &out), 1);
    EXPECT_EQ(out, "swctl: trunk 9 is not configured\n");
}

}  // namespace
