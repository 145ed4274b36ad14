// The simulated switch's VLAN calls: life cycle, membership rules, the change
// flags, port VLAN settings from a scenario, and swctl's GVRP verbs.
#include "support.hpp"

namespace {

using simtest::SwitchTest;

constexpr const char *kVlanSwitch = R"({"units": [{"ports": 8}],
    "trunks": [{"id": 1, "members": ["1/7", "1/8"]}],
    "vlans": [{"vid": 1, "untagged": ["1/1-4", "T1"]}, {"vid": 30, "untagged": ["1/5"]}, {"vid": 40}],
    "vlan_settings": {"gvrp": true, "ports": [{"select": ["1/2", "T1"], "pvid": 40, "acceptable": "tagged",
                                              "ingress_filtering": true, "gvrp": true, "priority": 6}]}})";

class SimVlans : public SwitchTest {
protected:
    void SetUp() override {
        TempDir::SetUp();
        boot(kVlanSwitch);
    }
    static int setting(int (*get)(int, int, int *), int unit0, int port0) {
        int v = -99;
        EXPECT_EQ(get(unit0, port0, &v), 0);
        return v;
    }
};

// A port's PVID is its untagged VLAN unless the scenario names one; the
// settings apply to trunks (port 512 on) as to ports.
TEST_F(SimVlans, ScenarioSettingsAndDefaultPvids) {
    EXPECT_EQ(setting(cfg_get_pvid, 0, 0), 1);
    EXPECT_EQ(setting(cfg_get_pvid, 0, 4), 30);  // its untagged VLAN
    EXPECT_EQ(setting(cfg_get_pvid, 0, 5), 1);   // untagged nowhere
    for (int port0 : {1, 512}) {
        EXPECT_EQ(setting(cfg_get_pvid, 0, port0), 40) << port0;
        EXPECT_EQ(setting(cfg_get_port_discard, 0, port0), 2) << port0;
        EXPECT_EQ(setting(cfg_get_ingress_filtering, 0, port0), 1) << port0;
        EXPECT_EQ(cfg_get_default_priority(0, port0), 6) << port0;
    }
    int untouched = 7;
    EXPECT_EQ(cfg_get_pvid(0, 513, &untouched), -1);  // trunk 2 is not configured
    EXPECT_EQ(untouched, 7);
}

TEST_F(SimVlans, LifeCycleAndMembershipRules) {
    ASSERT_EQ(cfg_vlan_create(50, 0, 0), 0);
    EXPECT_EQ(cfg_vlan_is_active(50), 0);  // created out of service
    EXPECT_EQ(cfg_vlan_create(50, 0, 0), -1);
    EXPECT_EQ(cfg_vlan_enable(50), 0);
    EXPECT_EQ(cfg_vlan_is_active(50), 1);
    EXPECT_EQ(cfg_set_vlan_name(50, "lab"), 0);
    EXPECT_EQ(cfg_set_vlan_name(50, std::string(64, 'x').c_str()), -1);

    EXPECT_EQ(cfg_set_vlan_port_member(0, 0, 50, SW_VLAN_TAGGED | SW_VLAN_UNTAGGED, 0), -1);
    EXPECT_EQ(cfg_set_vlan_port_member(0, 0, 50, SW_VLAN_FORBIDDEN | SW_VLAN_DYNAMIC_GVRP, 0), -1);
    EXPECT_EQ(cfg_set_vlan_port_member(0, 0, 50, 0x100, 0), -1);  // not storable
    EXPECT_EQ(cfg_set_vlan_port_member(0, 0, 51, SW_VLAN_TAGGED, 0), -1);
    EXPECT_EQ(cfg_set_vlan_port_member(0, 512, 50, SW_VLAN_UNTAGGED | SW_VLAN_DYNAMIC_GVRP, 0), 0);
    uint32_t m = 0;
    EXPECT_EQ(cfg_get_vlan_port_member(0, 512, 50, &m), 0);
    EXPECT_EQ(m, SW_VLAN_UNTAGGED | SW_VLAN_DYNAMIC_GVRP);
    EXPECT_THROW(sw_->vlan_set_member(50, 0, 0, SW_VLAN_TAGGED | SW_VLAN_UNTAGGED), swsim::Error);

    // Destroying a VLAN moves its ports' PVIDs back to VLAN 1; VLAN 1 stays.
    ASSERT_EQ(cfg_set_pvid(0, 3, 50), 0);
    EXPECT_EQ(cfg_vlan_destroy(50), 0);
    EXPECT_EQ(setting(cfg_get_pvid, 0, 3), 1);
    EXPECT_EQ(cfg_vlan_exists(50), 0);
    EXPECT_EQ(cfg_vlan_destroy(1), -1);
    EXPECT_EQ(cfg_set_pvid(0, 3, 50), -1);
    EXPECT_EQ(cfg_set_port_discard(0, 3, 3), -1);
    EXPECT_EQ(cfg_set_default_priority(0, 3, 8), -1);
}

// The flags tell the agent to repopulate its VLAN tables: a client that
// attaches hears of every VLAN; creating or deleting a VLAN, by a platform
// call or on the switch, raises every flag; a change of membership none.
TEST_F(SimVlans, ChangeFlagsFollowTheSetOfVlans) {
    sw_status_t *s = get_status();
    auto flags = [s] {
        return std::vector<int>{s->vlan_changed_stack[0], s->vlan_changed_stack[1], s->vlan_changed_current,
                                s->vlan_changed_static, s->vlan_changed_private};
    };
    const std::vector<int> none(5, 0), all(5, 1);
    auto after = [&](auto change) {
        s->vlan_changed_stack[0] = s->vlan_changed_stack[1] = 0;
        s->vlan_changed_current = s->vlan_changed_static = s->vlan_changed_private = 0;
        change();
        return flags();
    };
    EXPECT_EQ(after([] { ASSERT_EQ(cfg_init(), 0); }), all) << "attaching";
    EXPECT_EQ(after([] { ASSERT_EQ(cfg_vlan_create(50, 0, 0), 0); }), all);
    EXPECT_EQ(after([&] {
                  ASSERT_EQ(cfg_set_vlan_port_member(0, 512, 50, SW_VLAN_TAGGED, 0), 0);
                  sw_->vlan_set_member(50, 0, 0, SW_VLAN_TAGGED);
              }),
              none)
        << "membership";
    EXPECT_EQ(after([] { ASSERT_EQ(cfg_vlan_destroy(50), 0); }), all);
    EXPECT_EQ(after([&] { sw_->vlan_create(300, "lab"); }), all);
    EXPECT_EQ(after([&] { sw_->vlan_delete(300); }), all);
    EXPECT_THROW(sw_->vlan_delete(300), swsim::Error);
}

TEST_F(SimVlans, SwctlRegistersAndWithdrawsGvrpMembers) {
    uint32_t m = 0;
    ok("vlan register 40 1/3");
    ASSERT_EQ(cfg_get_vlan_port_member(0, 2, 40, &m), 0);
    EXPECT_EQ(m, SW_VLAN_DYNAMIC_GVRP);
    ok("vlan register 40 T1");
    EXPECT_EQ(sw_->vlan(40).members.size(), 2u);
    ok("vlan withdraw 40 1/3");
    ASSERT_EQ(cfg_get_vlan_port_member(0, 2, 40, &m), 0);
    EXPECT_EQ(m, 0u);
    EXPECT_EQ(swctl("vlan register 41 1/3").code, 1);

    ok("vlan deactivate 40");
    EXPECT_EQ(cfg_vlan_is_active(40), 0);
    ok("vlan activate 40");
    EXPECT_EQ(cfg_vlan_is_active(40), 1);
}

}  // namespace
