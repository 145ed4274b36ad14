// The interfaces group: speeds and their caps, types by range, counter
// widths, the status columns, the writable columns and the interface stack.
#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

using Calls = std::vector<std::string>;

class IfTableTest : public SwitchTest {
protected:
    // Unit 1: 1/1-8 up at 1000 in trunk 1 (first three) and trunk 2 (next
    // five); 1/9 down with 100 configured; 1/26 a 10G cage that is up.
    // Trunk 3 exists and is empty; VLAN 30 holds 1/10 untagged.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}],
                   "trunks": [{"id": 1, "members": ["1/1", "1/2", "1/3"]},
                              {"id": 2, "members": ["1/4", "1/5", "1/6", "1/7", "1/8"]},
                              {"id": 3}],
                   "ports": [{"select": "1/1-8", "link": true, "peer_speed": 1000},
                             {"select": "1/9", "speed": 100},
                             {"select": "1/10-12", "link": true, "peer_speed": 100},
                             {"select": "1/26", "link": true, "sfp": true, "peer_speed": 10000}],
                   "vlans": [{"vid": 1, "name": "default", "untagged": ["1/11-12"]},
                             {"vid": 30, "name": "lab", "untagged": ["1/10"]},
                             {"vid": 4094, "name": "last", "untagged": ["1/12"]}]})";
    }
    static std::string alias(int32_t i) { return read_text(get_ifAlias, i); }
    // The stack population as the table handler runs it: under the read lock.
    std::vector<std::string> stack_rows() {
        rows().clear();
        lock_read(cfg_lock_table[2]);
        init_index_ifStackTable(add_pair_row);
        const int still_held = lock_free(cfg_lock_table[2]);
        EXPECT_EQ(still_held, 0) << "the population gives the lock back as it found it";
        return rows().keys;
    }
};

TEST_F(IfTableTest, SpeedsOfPortsAndTrunks) {
    struct Speed {
        int32_t index;
        uint32_t bps, mbps;
    };
    auto check = [](std::initializer_list<Speed> speeds) {
        for (const Speed &s : speeds) {
            EXPECT_EQ(get_ifSpeed(s.index), s.bps) << s.index;
            EXPECT_EQ(get_ifHighSpeed(s.index), s.mbps) << s.index;
        }
    };
    // Trunk 1: three members at 1000; trunk 2: five, above the 4000 Mbit/s
    // cap.  A port that is down reports its second speed word (1/9, 1/11).
    // VLAN interfaces have no speed; indexes beyond the stack read 0.
    check({{513, 3000000000u, 3000}, {514, 4294967295u, 5000}, {9, 100000000u, 100}, {11, 100000000u, 100},
           {26, 4294967295u, 10000}, {1030, 0, 0}, {5095, 0, 0}});
    // Only members whose link is up count; a speed the mapping does not know reads 0.
    sw().set_link(0, 0, false);
    get_status()->units[0].ports[10].speed = 2500;
    check({{513, 2000000000u, 2000}, {11, 0, 0}});
}

TEST_F(IfTableTest, TypesFollowTheTextTrunkRange) {
    const std::pair<int32_t, int32_t> types[] = {{1, 6}, {511, 6}, {512, 161}, {639, 161}, {640, 6}, {1001, 135}, {5094, 135}};
    for (auto [index, type] : types) EXPECT_EQ(get_ifType(index), type) << index;
}

TEST_F(IfTableTest, CountersKeepTheirWidth) {
    sw().set_link(0, 9, false);  // no traffic moves while the link is down
    const uint64_t big = (uint64_t(7) << 32) + 5;
    sw().set_counter(0, 9, 0, big);
    sw().set_counter(0, 9, 62, (uint64_t(1) << 32) - 1);
    EXPECT_EQ(get_ifInOctets(10), 5u);
    EXPECT_EQ(get_ifHCInOctets(10), big);
    EXPECT_EQ(get_ifOutOctets(10), 4294967295u);
    EXPECT_EQ(get_ifHCOutOctets(10), 4294967295u);
    // The multicast and broadcast counters of both widths read one count.
    sw().set_counter(0, 9, 60, big + 1);
    sw().set_counter(0, 9, 65, big + 2);
    EXPECT_EQ(get_ifInMulticastPkts(10), 6u);
    EXPECT_EQ(get_ifHCInMulticastPkts(10), big + 1);
    EXPECT_EQ(get_ifOutBroadcastPkts(10), 7u);
    EXPECT_EQ(get_ifHCOutBroadcastPkts(10), big + 2);
    // A VLAN interface has no counters and asks the platform nothing.
    EXPECT_TRUE(calls_of([] {
                    EXPECT_EQ(get_ifInOctets(1030), 0u);
                    EXPECT_EQ(get_ifHCInOctets(1030), 0u);
                    EXPECT_EQ(get_ifOutQLen(1030), 0u);
                }).empty());
    // A failing read answers 0.
    sw().fault_set("bcmd_snmp_stat_get", -1, 2);
    EXPECT_EQ(get_ifInOctets(10), 0u);
    EXPECT_EQ(get_ifHCInOctets(10), 0u);
}

TEST_F(IfTableTest, OperationalStatus) {
    EXPECT_EQ(get_ifOperStatus(1), 1);
    EXPECT_EQ(get_ifOperStatus(9), 2);
    sw().set_error_blocked(0, 0, true);
    EXPECT_EQ(get_ifOperStatus(1), 5);
    EXPECT_EQ(get_ifOperStatus(513), 1);
    for (int p = 0; p < 3; ++p) sw().set_link(0, p, false);
    EXPECT_EQ(get_ifOperStatus(513), 2);
    sw().fault_set("bcmd_get_port_info", -3, 1);
    EXPECT_EQ(get_ifOperStatus(2), 4);
}

TEST_F(IfTableTest, AdministrativeStatus) {
    EXPECT_EQ(set_ifAdminStatus(10, 2), 0);
    EXPECT_FALSE(sw().port(0, 9).admin);
    EXPECT_EQ(get_ifAdminStatus(10), 2);
    // A trunk is switched at its port address in one call.
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_ifAdminStatus(514, 2), 0); }),
              (Calls{"cfg_check_trunk(1)", "cfg_set_port_enabled(0,513,0)"}));
    // Refused without a write: testing(3), a VLAN, an unconfigured trunk.
    for (auto [index, value] : std::initializer_list<std::pair<int32_t, int32_t>>{{10, 3}, {1005, 1}, {520, 1}})
        EXPECT_EQ(count_calls("cfg_set_port_enabled", [&] { EXPECT_LT(set_ifAdminStatus(index, value), 0); }), 0u)
            << index;
    // 512 is tested as trunk 511, which the platform does not have: refused.
    EXPECT_EQ(call_texts([] { EXPECT_LT(set_ifAdminStatus(512, 1), 0); }), Calls{"cfg_check_trunk(511)"});
    // VLAN interfaces read their VLAN's state.
    EXPECT_EQ(get_ifAdminStatus(1030), 1);
    EXPECT_EQ(get_ifAdminStatus(1031), 2);
    sw().fault_set("cfg_set_port_enabled", -2, 1);
    EXPECT_EQ(set_ifAdminStatus(10, 2), -2);
}

TEST_F(IfTableTest, TrapsAliasesAndAddresses) {
    EXPECT_EQ(set_ifLinkUpDownTrapEnable(513, 2), 0);
    EXPECT_FALSE(sw().trap_enabled(0, 512));
    EXPECT_EQ(get_ifLinkUpDownTrapEnable(513), 2);
    EXPECT_LT(set_ifLinkUpDownTrapEnable(10, 0), 0);
    EXPECT_LT(set_ifLinkUpDownTrapEnable(1030, 1), 0);

    // Ports and trunks: the description; VLANs: the VLAN's name.
    EXPECT_EQ(set_ifAlias(10, bytes("to lab bench"), 6), 0);
    EXPECT_EQ(sw().port(0, 9).description, "to lab");
    EXPECT_EQ(alias(1030), "lab");
    EXPECT_EQ(set_ifAlias(1030, bytes("lab-2"), 5), 0);
    EXPECT_EQ(sw().vlan(30).name, "lab-2");
    EXPECT_LT(set_ifAlias(1031, bytes("x"), 1), 0);  // no VLAN 31
    EXPECT_EQ(count_calls("cfg_set_port_description", [] { EXPECT_LT(set_ifAlias(520, bytes("x"), 1), 0); }), 0u);
    // Longer than the platform keeps: refused, nothing changes.
    const std::string long_text(SW_TEXT_SIZE, 'x');
    EXPECT_LT(set_ifAlias(10, bytes(long_text.c_str()), long_text.size()), 0);
    EXPECT_EQ(alias(10), "to lab");

    // A VLAN interface shows the switch's own address; a failed read none.
    auto address = [](int32_t i) {
        const std::vector<uint8_t> mac = read_octets(get_ifPhysAddress, i);
        return mac_text(mac.data(), mac.size());
    };
    EXPECT_EQ(address(1), "02:00:5e:10:00:01");
    EXPECT_EQ(address(1030), "02:00:5e:10:00:00");
    sw().fault_set("cfg_get_port_mac", -1, 1);
    EXPECT_EQ(address(1), "");
}

TEST_F(IfTableTest, StackShowsTrunksAndVlans) {
    const std::vector<std::string> base = {"513.1",  "513.2",  "513.3",  "514.4", "514.5",
                                           "514.6",  "514.7",  "514.8",  "1001.11", "1001.12"};
    std::vector<std::string> all = base;
    all.push_back("1030.10");
    // The other VLANs are walked when the platform reports a change of the
    // VLAN set (as it does to a client that has just attached); 4094 never.
    EXPECT_EQ(stack_rows(), all);
    EXPECT_EQ(get_status()->vlan_changed_stack[0], 0);
    EXPECT_EQ(stack_rows(), base) << "the change has been taken";
    sw().vlan_create(40, "new");
    EXPECT_EQ(stack_rows(), all);

    EXPECT_EQ(get_ifStackStatus(513, 1), 1);
    EXPECT_EQ(get_ifStackStatus(1030, 10), 1);
    EXPECT_LT(set_ifStackStatus(513, 1, 1), 0);

    // Rows go with their layer.
    EXPECT_EQ(exists_entry_ifStackTable(513, 1), 1);
    sw().trunk_remove_port(0, 0, 0);
    EXPECT_EQ(exists_entry_ifStackTable(513, 1), 0);
    sw().vlan_set_member(30, 0, 9, 0);
    EXPECT_EQ(exists_entry_ifStackTable(1030, 10), 0);
    sw().vlan_delete(40);
    EXPECT_EQ(exists_entry_ifStackTable(1040, 10), 0);
    EXPECT_EQ(exists_entry_ifStackTable(1001, 11), 1);
    EXPECT_EQ(rows().removed,
              (std::vector<std::string>{"ifStackTable 513.1", "ifStackTable 1030.10", "ifStackTable 1040.10"}));
}

}  // namespace
}  // namespace unit
