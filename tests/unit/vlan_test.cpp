// VLAN member port lists, the VLAN tables' row life cycle and change flags,
// port VLAN settings with the trunk check, and the traffic-class numbering.
#include <set>

#include "agent/vlan_members.hpp"
#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

// The zero-based ports of unit 0 that a list of a one-unit switch sets.
template <class Get, class... Index>
std::set<int> members(Get get, Index... index) {
    const std::vector<uint8_t> list = read_octets(get, index...);
    EXPECT_EQ(list.size(), 32u);
    std::set<int> out;
    for (size_t k = 0; k < list.size(); ++k)
        for (int b = 0; b < 8; ++b)
            if (list[k] & (0x80 >> b)) out.insert(int(k) * 8 + b);
    return out;
}

class VlanTest : public SwitchTest {
protected:
    // One unit of 28 ports; trunk 2 holds ports 27 and 28.  VLAN 10: port 1
    // tagged, 2 untagged, 3 forbidden, 4 registered by GVRP, 5 with the
    // legacy dynamic bit alone.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}],
                   "trunks": [{"id": 2, "members": ["1/27", "1/28"]}],
                   "vlans": [{"vid": 1, "name": "default", "untagged": ["all", "trunks"]},
                             {"vid": 10, "name": "office", "tagged": ["1/1"], "untagged": ["1/2"], "forbidden": ["1/3"]},
                             {"vid": 20, "name": "voice"}]})";
    }
    void SetUp() override {
        SwitchTest::SetUp();
        sw().vlan_register(10, 0, 3, true);
        sw().vlan_set_member(10, 0, 4, SW_VLAN_DYNAMIC);
        sw().journal_clear();
    }
    uint32_t flags(int vid, int port0) {
        for (const auto &m : sw().vlan(vid).members)
            if (m.unit0 == 0 && m.port0 == port0) return m.flags;
        return 0;
    }
    // The names of the VLAN-changing platform calls that `body` makes.
    template <class Body>
    std::vector<std::string> changes_of(Body &&body) {
        std::vector<std::string> out;
        for (const auto &c : calls_of(body))
            if (c.call.rfind("cfg_vlan_", 0) == 0 && c.call != "cfg_vlan_exists" && c.call != "cfg_vlan_is_active")
                out.push_back(c.call + "(" + c.args + ")");
        return out;
    }
};

TEST_F(VlanTest, EachListReadsItsKindsOfMembership) {
    EXPECT_EQ(members(get_dot1qVlanStaticEgressPorts, 10), (std::set<int>{0, 1, 3}));
    EXPECT_EQ(members(get_dot1qVlanForbiddenEgressPorts, 10), (std::set<int>{2}));
    EXPECT_EQ(members(get_dot1qVlanStaticUntaggedPorts, 10), (std::set<int>{1, 3}));
    // Current egress takes every flag but forbidden, the legacy bit of port 4 too.
    EXPECT_EQ(members(get_dot1qVlanCurrentEgressPorts, 0, 10), (std::set<int>{0, 1, 3, 4}));
    EXPECT_EQ(members(get_dot1qVlanCurrentUntaggedPorts, 0, 10), (std::set<int>{1, 3}));
    // A port whose membership cannot be read is left out.
    sw().fault_set("cfg_get_vlan_port_member", -1, 1);
    EXPECT_EQ(members(get_dot1qVlanStaticEgressPorts, 10), (std::set<int>{1, 3}));
}

TEST_F(VlanTest, EgressWriteAddsTaggedMembersAndKeepsExistingOnes) {
    // Octet 0 = 0xff (ports 0..7, port 7 never looked at), octet 1 = 0x00,
    // octets 2..31 not supplied.  VLAN 1 has every port untagged.
    sw().vlan_set_member(10, 0, 7, SW_VLAN_UNTAGGED);
    sw().vlan_set_member(10, 0, 20, SW_VLAN_TAGGED);
    ASSERT_EQ(set_dot1qVlanStaticEgressPorts(10, bytes("\xff\x00"), 2), 0);
    EXPECT_EQ(flags(10, 0), SW_VLAN_TAGGED);
    EXPECT_EQ(flags(10, 1), SW_VLAN_UNTAGGED);      // untagged stays untagged
    EXPECT_EQ(flags(10, 2), SW_VLAN_TAGGED);        // forbidden had no egress flag
    EXPECT_EQ(flags(10, 3), SW_VLAN_DYNAMIC_GVRP);  // dynamic counts as a member
    EXPECT_EQ(flags(10, 4), SW_VLAN_TAGGED);        // the legacy bit belongs to no list
    EXPECT_EQ(flags(10, 6), SW_VLAN_TAGGED);
    EXPECT_EQ(flags(10, 7), SW_VLAN_UNTAGGED);      // low bit: untouched
    EXPECT_EQ(flags(10, 20), 0u);                   // beyond the length: removed

    // Clearing removes every kind of egress membership, dynamic included,
    // and leaves forbidden ports alone.
    sw().vlan_set_member(10, 0, 2, SW_VLAN_FORBIDDEN);
    ASSERT_EQ(set_dot1qVlanStaticEgressPorts(10, bytes("\x01"), 1), 0);
    for (int p : {0, 1, 3, 4, 6}) EXPECT_EQ(flags(10, p), 0u) << p;
    EXPECT_EQ(flags(10, 2), SW_VLAN_FORBIDDEN);
    EXPECT_EQ(flags(10, 7), SW_VLAN_UNTAGGED);
}

TEST_F(VlanTest, UntaggedAndForbiddenWritesRewriteTheMembership) {
    ASSERT_EQ(set_dot1qVlanStaticUntaggedPorts(10, bytes("\xd0"), 1), 0);  // ports 0, 1, 3
    EXPECT_EQ(flags(10, 0), SW_VLAN_UNTAGGED);  // tagged becomes untagged only
    EXPECT_EQ(flags(10, 3), SW_VLAN_UNTAGGED);  // dynamic flag dropped
    EXPECT_EQ(flags(10, 2), SW_VLAN_FORBIDDEN);
    ASSERT_EQ(set_dot1qVlanForbiddenEgressPorts(10, bytes("\x80"), 1), 0);
    EXPECT_EQ(flags(10, 0), SW_VLAN_FORBIDDEN);
    EXPECT_EQ(flags(10, 2), 0u);  // no longer forbidden: no membership at all
    EXPECT_EQ(flags(10, 1), SW_VLAN_UNTAGGED);
    // A set bit always rewrites, even a port that is forbidden already.
    EXPECT_EQ(count_calls("cfg_set_vlan_port_member",
                          [] { EXPECT_EQ(set_dot1qVlanForbiddenEgressPorts(10, bytes("\x80"), 1), 0); }),
              1u);
}

TEST_F(VlanTest, ListWritesFailWithoutChangeOrStopAtTheFirstFailure) {
    EXPECT_EQ(count_calls("cfg_set_vlan_port_member",
                          [] { EXPECT_EQ(set_dot1qVlanStaticEgressPorts(30, bytes("\xff"), 1), -1); }),
              0u);
    EXPECT_EQ(set_dot1qVlanStaticUntaggedPorts(30, bytes("\xff"), 1), -1);
    // The first failing write (port 0 leaving) ends the walk: ports 5 and 6 are never tried.
    sw().fault_set("cfg_set_vlan_port_member", -1, -1);
    EXPECT_EQ(count_calls("cfg_set_vlan_port_member",
                          [] { EXPECT_EQ(set_dot1qVlanStaticEgressPorts(10, bytes("\x06"), 1), -1); }),
              1u);
    sw().fault_clear();
    EXPECT_EQ(flags(10, 0), SW_VLAN_TAGGED);
}

TEST_F(VlanTest, RowStatusTransitionsMakeTheirPlatformCalls) {
    using V = std::vector<std::string>;
    EXPECT_EQ(changes_of([] { EXPECT_EQ(set_dot1qVlanStaticRowStatus(100, 4), 0); }),
              (V{"cfg_vlan_create(100,0,0)", "cfg_vlan_enable(100)"}));
    EXPECT_EQ(get_dot1qVlanStaticRowStatus(100), 1);
    // createAndGo on an existing VLAN: the create fails, the enable runs, the
    // sum is negative.
    EXPECT_EQ(changes_of([] { EXPECT_EQ(set_dot1qVlanStaticRowStatus(100, 4), -1); }),
              (V{"cfg_vlan_create(100,0,0)", "cfg_vlan_enable(100)"}));
    EXPECT_EQ(changes_of([] { EXPECT_EQ(set_dot1qVlanStaticRowStatus(101, 5), 0); }), (V{"cfg_vlan_create(101,0,0)"}));
    EXPECT_EQ(get_dot1qVlanStaticRowStatus(101), 3);
    EXPECT_EQ(changes_of([] { EXPECT_EQ(set_dot1qVlanStaticRowStatus(101, 1), 0); }), (V{"cfg_vlan_enable(101)"}));
    EXPECT_EQ(changes_of([] { EXPECT_EQ(set_dot1qVlanStaticRowStatus(101, 2), 0); }), (V{"cfg_vlan_disable(101)"}));
    // destroy: an inactive VLAN is destroyed at once, an active one is disabled first.
    EXPECT_EQ(changes_of([] { EXPECT_EQ(set_dot1qVlanStaticRowStatus(101, 6), 0); }), (V{"cfg_vlan_destroy(101)"}));
    EXPECT_EQ(changes_of([] { EXPECT_EQ(set_dot1qVlanStaticRowStatus(100, 6), 0); }),
              (V{"cfg_vlan_disable(100)", "cfg_vlan_destroy(100)"}));
    EXPECT_FALSE(sw().vlan(100).exists);
    // Refused: activating a VLAN that does not exist, notReady, unknown values,
    // destroying the default VLAN.
    for (int32_t s : {1, 2, 3, 7, 0})
        EXPECT_EQ(changes_of([&] { EXPECT_EQ(set_dot1qVlanStaticRowStatus(102, s), -1); }), V{}) << s;
    EXPECT_EQ(set_dot1qVlanStaticRowStatus(1, 6), -1);
    EXPECT_TRUE(sw().vlan(1).exists);
}

TEST_F(VlanTest, VlanRowsFollowEachTablesChangeFlag) {
    // The flags that the platform raised for this client have been seen:
    // VLAN 1 alone although 10 and 20 exist.
    sw_status_t *status = get_status();
    status->vlan_changed_static = status->vlan_changed_current = status->vlan_changed_private = 0;
    init_index_dot1qVlanStaticTable(add_gauge_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1}));

    sw().vlan_create(30, "lab");  // the platform raises every table's flag
    rows().clear();
    init_index_dot1qVlanStaticTable(add_gauge_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 1, 10, 20, 30}));
    EXPECT_EQ(get_status()->vlan_changed_static, 0);
    rows().clear();
    init_index_dot1qVlanStaticTable(add_gauge_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1}));

    // The other tables keep their own flags.
    EXPECT_EQ(get_status()->vlan_changed_current, 1);
    init_index_dot1qVlanCurrentTable(add_pair_row);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"0.1", "0.1", "0.10", "0.20", "0.30"}));
    rows().clear();
    init_index_vlanTable(add_gauge_row);
    EXPECT_EQ(rows().ints.size(), 5u);
    EXPECT_EQ(get_status()->vlan_changed_private, 0);

    // A VLAN that has gone loses its row when it is next checked.
    sw().vlan_delete(30);
    EXPECT_EQ(exists_entry_dot1qVlanStaticTable(30), 0);
    EXPECT_EQ(exists_entry_dot1qVlanCurrentTable(0, 30), 0);
    EXPECT_EQ(exists_entry_vlanTable(20), 1);
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"dot1qVlanStaticTable 30", "dot1qVlanCurrentTable 0.30"}));
}

TEST_F(VlanTest, StatusScalarsAndSmallWrites) {
    EXPECT_EQ(get_dot1qVlanStatus(0, 10), 2);
    sw().vlan_create(40, "", true);
    EXPECT_EQ(get_dot1qVlanStatus(0, 40), 3);
    EXPECT_EQ(get_dot1qVlanStatus(0, 41), 0);
    EXPECT_EQ(get_dot1qNumVlans(), 4u);
    EXPECT_EQ(get_dot1qNextFreeLocalVlanIndex(), 2);
    for (int vid = 2; vid <= 9; ++vid) sw().vlan_create(vid);
    EXPECT_EQ(get_dot1qNextFreeLocalVlanIndex(), 11);

    // A missing VLAN's name is not asked to change.
    EXPECT_EQ(count_calls("cfg_set_vlan_name", [] { EXPECT_EQ(set_dot1qVlanStaticName(30, bytes("x"), 1), -1); }), 0u);

    // GVRP: 0 disables like 2.  The address method belongs to VLAN 1 alone.
    EXPECT_EQ(set_dot1qGvrpStatus(1), 0);
    EXPECT_EQ(get_dot1qGvrpStatus(), 1);
    EXPECT_EQ(set_dot1qGvrpStatus(0), 0);
    EXPECT_EQ(get_dot1qGvrpStatus(), 2);
    EXPECT_EQ(set_vlanAddressMethod(1, 2), 0);
    EXPECT_EQ(get_vlanAddressMethod(1), 2);
    EXPECT_EQ(get_vlanAddressMethod(5), 1);
    EXPECT_EQ(set_vlanAddressMethod(5, 2), -1);
    EXPECT_EQ(set_vlanAddressMethod(1, 3), -1);
    EXPECT_EQ(get_vlanAddressMethod(1), 2);
}

constexpr int32_t kTrunk2 = 514;

TEST_F(VlanTest, PortSettingsReadAndWriteThroughThePortOrTrunk) {
    ASSERT_EQ(set_dot1qPvid(kTrunk2, 20), 0);
    EXPECT_EQ(get_dot1qPvid(kTrunk2), 20u);

    EXPECT_EQ(get_dot1qPortAcceptableFrameTypes(1), 1);
    ASSERT_EQ(set_dot1qPortAcceptableFrameTypes(1, 2), 0);
    EXPECT_EQ(get_dot1qPortAcceptableFrameTypes(1), 2);
    EXPECT_EQ(count_calls("cfg_set_port_discard", [] { EXPECT_EQ(set_dot1qPortAcceptableFrameTypes(1, 3), 0); }), 0u);
    EXPECT_EQ(get_dot1qPortAcceptableFrameTypes(1), 2);
    ASSERT_EQ(cfg_set_port_discard(0, 0, 1), 0);  // discard tagged: no MIB value
    EXPECT_EQ(get_dot1qPortAcceptableFrameTypes(1), 0);

    // Ingress filtering: 2 clears, anything else sets.  GVRP: only 0 clears,
    // so writing disabled(2) enables it.
    ASSERT_EQ(set_dot1qPortIngressFiltering(1, 7), 0);
    EXPECT_EQ(get_dot1qPortIngressFiltering(1), 1);
    ASSERT_EQ(set_dot1qPortIngressFiltering(1, 2), 0);
    EXPECT_EQ(get_dot1qPortIngressFiltering(1), 2);
    ASSERT_EQ(set_dot1qPortGvrpStatus(1, 2), 0);
    EXPECT_EQ(get_dot1qPortGvrpStatus(1), 1);
    ASSERT_EQ(set_dot1qPortGvrpStatus(1, 0), 0);
    EXPECT_EQ(get_dot1qPortGvrpStatus(1), 2);

    sw().fault_set("cfg_get_pvid", -1, 1);
    EXPECT_EQ(get_dot1qPvid(kTrunk2), 0u);
}

TEST_F(VlanTest, PortWritesInTheTrunkRangeNeedTheTrunk) {
    struct Case {
        int32_t index;
        const char *asked;  // cfg_check_trunk's argument, "" when not asked
        int result;
    };
    // Trunk 2 (trunk0 1) exists; 512 is checked as trunk 511, which the
    // platform does not know.
    const Case cases[] = {{512, "511", -1}, {513, "0", -1}, {kTrunk2, "1", 0}, {639, "126", -1}, {3, "", 0}, {640, "", -1}};
    using Setter = int (*)(int32_t, int32_t);
    const Setter setters[] = {set_dot1qPortAcceptableFrameTypes, set_dot1qPortIngressFiltering, set_dot1qPortGvrpStatus};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.index);
        const auto calls = calls_of([&] {
            if (c.index == 640) {
                EXPECT_LT(set_dot1qPvid(c.index, 10), 0);  // unchecked; the platform has no trunk 127
                return;
            }
            EXPECT_EQ(set_dot1qPvid(c.index, 10), c.result);
            for (Setter s : setters) EXPECT_EQ(s(c.index, 1), c.result);
        });
        size_t checks = 0, writes = 0;
        for (const auto &call : calls) {
            if (call.call == "cfg_check_trunk") {
                ++checks;
                EXPECT_EQ(call.args, c.asked);
            }
            writes += call.call.rfind("cfg_set_", 0) == 0;
        }
        EXPECT_EQ(checks, *c.asked ? 4u : 0u);
        if (c.result < 0 && *c.asked) {
            EXPECT_EQ(writes, 0u);
        }
    }
}

// ---- traffic classes -------------------------------------------------------

class TrafficClassTest : public SwitchTest {
protected:
    // Units 1 and 3 present with 28 ports, unit 2 known but absent; trunk 5.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}, {"present": false, "ports": 28}, {"ports": 28}],
                   "trunks": [{"id": 5, "members": ["1/1"]}]})";
    }
};

TEST_F(TrafficClassTest, UserPortsAreNumberedAcrossPresentUnits) {
    init_index_dot1dTrafficClassTable(add_pair_row);
    const std::vector<std::string> &keys = rows().keys;
    ASSERT_EQ(keys.size(), (56u + 1u) * 8u);
    EXPECT_EQ(keys.front(), "1.0");
    EXPECT_EQ(keys[8 * 28], "29.0");  // unit 3's first port: 29 here, 129 elsewhere
    EXPECT_EQ(keys[8 * 56 - 1], "56.7");
    EXPECT_EQ(keys[8 * 56], "517.0");
    EXPECT_EQ(keys.back(), "517.7");

    // Only rows in the trunk range 512 .. 639 are checked.
    EXPECT_EQ(exists_entry_dot1dTrafficClassTable(300, 3), 1);
    EXPECT_EQ(exists_entry_dot1dTrafficClassTable(517, 3), 1);
    EXPECT_EQ(exists_entry_dot1dTrafficClassTable(518, 3), 0);
    EXPECT_EQ(exists_entry_dot1dTrafficClassTable(512, 0), 0);
    EXPECT_EQ(rows().removed,
              (std::vector<std::string>{"dot1dTrafficClassTable 518.3", "dot1dTrafficClassTable 512.0"}));

    // The classes are fixed: a write is accepted and asks nothing.
    EXPECT_TRUE(calls_of([] { EXPECT_EQ(set_dot1dTrafficClass(1, 0, 5), 1); }).empty());
}

}  // namespace
}  // namespace unit
