// The simulated switch's layer-2 protocols: group records, router ports and
// port costs following the VLANs and trunks they belong to, the tree state,
// and the swctl verbs.
#include "support.hpp"

namespace {

using simtest::SwitchTest;
using simtest::TempDir;

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

TEST_F(TempDir, SwctlLayer2Verbs) {
    ok("create " SCENARIO_DIR "/default.json");
    ok("stp state 1/3 learning");
    ok("stp root 1/25 --priority 8192 --mac 00:11:22:33:44:55 --cost 4");
    std::string out = swctl("stp show").out;
    EXPECT_NE(out.find("root           bridge 8192/00:11:22:33:44:55, cost 4, via 1/25"), std::string::npos) << out;
    EXPECT_NE(out.find("1/3    learning  *"), std::string::npos) << out;
    ok("igmp group 10 239.9.9.9 2/3 on");
    ok("igmp router 20 1/4 on");
    out = swctl("igmp show").out;
    EXPECT_NE(out.find("10    239.9.9.9        2/3"), std::string::npos) << out;
    EXPECT_NE(out.find("20    1/4"), std::string::npos) << out;
    ok("eaps create 9 ring-lab --master --state 3");
    ok("eaps state 9 4");
    out = swctl("eaps show").out;
    EXPECT_NE(out.find("9   ring-lab                 master   4"), std::string::npos) << out;

    ok("eaps delete 9");
    fails("eaps state 9 1", "ring domain 9 does not exist");
    fails("stp state T9 blocking", "trunk 9 is not configured");
}

}  // namespace
