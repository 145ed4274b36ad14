// IGMP snooping: the group records' word bitmaps as port lists, the static
// port writes (on/off per port, which failures end a write), the rows of the
// four tables and the settings bound to one another.
#include <vector>

#include "fixture.hpp"
#include "mibs/bridge/igmp_groups.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

namespace groups = swp::igmp_groups;
using Octets = std::vector<uint8_t>;

constexpr uint32_t kGroupA = 0xef010101;  // 239.1.1.1
constexpr uint32_t kGroupB = 0xef020202;  // 239.2.2.2

// A two-part row key as the row store records it.
std::string key(uint32_t vlan, uint32_t group) { return std::to_string(vlan) + "." + std::to_string(group); }

class IgmpTest : public SwitchTest {
protected:
    // Two units of 28 ports; VLAN 20 exists but is not active.
    std::string scenario() const override {
        return R"({"units": {"count": 2, "ports": 28},
                   "vlans": [{"vid": 1, "untagged": "all"}, {"vid": 10}, {"vid": 20, "active": false}],
                   "igmp": {"enabled": true, "version": 2,
                            "groups": [{"vid": 10, "group": "239.1.1.1", "ports": ["1/1", "1/3", "2/2"]},
                                       {"vid": 20, "group": "239.2.2.2", "ports": "1/2"}],
                            "router_ports": [{"vid": 10, "ports": "1/5"}]}})";
    }
    static Octets static_ports(uint32_t vlan, uint32_t group) {
        return read_octets(get_igmpSnoopMulticastStaticPorts, vlan, group);
    }
    // A read port list of the two-unit stack with the given (octet, mask) bits.
    static Octets expected(std::initializer_list<std::pair<int, uint8_t>> bits) {
        Octets o(64, 0);
        for (auto [at, mask] : bits) o[size_t(at)] |= mask;
        return o;
    }
};

TEST_F(IgmpTest, WordBitmapsBecomeMostSignificantFirstOctets) {
    // 1/1, 1/3 and 2/2: unit 1 is read at octet 8.
    EXPECT_EQ(static_ports(10, kGroupA), expected({{0, 0x80}, {0, 0x20}, {8, 0x40}}));
    // No matching record: all zeros, the full length.
    EXPECT_EQ(static_ports(10, kGroupB), expected({}));

    // Records written straight into the image: a second record of the same
    // group adds its ports; ports the units do not have (28 each) are kept
    // in the record but not shown.
    uint8_t *image = cfg_get_cfg();
    uint8_t *rec = groups::record(image, groups::kRecords - 1);
    groups::set_word(rec, groups::kInUseWord, 1);
    groups::set_word(rec, groups::kGroupWord, kGroupA);
    groups::set_word(rec, groups::kVlanWord, 10);
    groups::set_word(rec, groups::bitmap_word(0, 25), 1u << 25);            // 1/26
    groups::set_word(rec, groups::bitmap_word(1, 27), 1u << 27 | 1u << 31);  // 2/28, 2/32
    groups::set_word(rec, groups::bitmap_word(0, 33), 1u << 1);             // 1/34
    const snmpapi::igmp::GroupPorts ports = snmpapi::igmp::group_ports(image, 10, kGroupA);
    EXPECT_TRUE(snmpapi::igmp::has_port(ports, 0, 33));
    EXPECT_TRUE(snmpapi::igmp::has_port(ports, 1, 31));
    EXPECT_FALSE(snmpapi::igmp::has_port(ports, 8, 0));
    EXPECT_EQ(static_ports(10, kGroupA), expected({{0, 0xa0}, {3, 0x40}, {8, 0x40}, {11, 0x10}}));
    // The current table shows the same bits.
    EXPECT_EQ(read_octets(get_igmpSnoopMulticastCurrentPorts, 10, kGroupA), static_ports(10, kGroupA));
}

TEST_F(IgmpTest, StaticGroupRowsAndActiveVlans) {
    EXPECT_EQ(init_index_igmpSnoopMulticastStaticTable(add_pair_row), 0);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{key(10, kGroupA), key(20, kGroupB)}));
    rows().clear();
    EXPECT_EQ(init_index_igmpSnoopMulticastCurrentTable(add_pair_row), 0);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{key(10, kGroupA)}));
    // The current table's check does not ask whether the VLAN is active.
    EXPECT_EQ(exists_entry_igmpSnoopMulticastCurrentTable(20, kGroupB), 1);

    sw().igmp_set_group_port(20, kGroupB, 0, 1, false);  // its last port
    EXPECT_EQ(exists_entry_igmpSnoopMulticastStaticTable(20, kGroupB), 0);
    EXPECT_EQ(exists_entry_igmpSnoopMulticastCurrentTable(20, kGroupB), 0);
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"igmpSnoopMulticastStaticTable " + key(20, kGroupB),
                                                        "igmpSnoopMulticastCurrentTable " + key(20, kGroupB)}));
}

TEST_F(IgmpTest, StaticPortWriteSetsAndClearsEveryPort) {
    // Octet 0 = 0xff: ports 1/1..1/7 on, 1/8 untouched; everything beyond the
    // single octet given is cleared.
    sw().igmp_set_group_port(10, kGroupA, 0, 7, true);  // 1/8
    const uint8_t value[1] = {0xff};
    auto made = calls_named("cfg_set_igmp_set_mcast",
                            [&] { EXPECT_EQ(set_igmpSnoopMulticastStaticPorts(10, kGroupA, value, 1), 0); });
    ASSERT_EQ(made.size(), 2u * 25u);  // every user port of both units but ports 8, 16 and 24
    EXPECT_EQ(made[0].args, "0,0,10," + std::to_string(kGroupA) + ",0,1");
    EXPECT_EQ(made[7].args, "0,8,10," + std::to_string(kGroupA) + ",0,0");
    EXPECT_EQ(static_ports(10, kGroupA), expected({{0, 0xff}}));

    // A new group is made by its first port.
    Octets two_units(64, 0);
    two_units[32] = 0x40;  // written layout: unit 1 starts at octet 32
    ASSERT_EQ(set_igmpSnoopMulticastStaticPorts(10, kGroupB, two_units.data(), two_units.size()), 0);
    EXPECT_EQ(static_ports(10, kGroupB), expected({{8, 0x40}}));
}

TEST_F(IgmpTest, FailedAddEndsTheWriteFailedRemovalDoesNot) {
    // First call (port 1/1, bit clear) fails: ignored, the walk goes on.
    sw().fault_set("cfg_set_igmp_set_mcast", -7, 1);
    const uint8_t add_second[1] = {0x40};
    EXPECT_EQ(set_igmpSnoopMulticastStaticPorts(10, kGroupA, add_second, 1), 0);
    EXPECT_EQ(static_ports(10, kGroupA), expected({{0, 0x80 | 0x40}}));  // 1/1 stayed: its removal failed
    // The first call adds a port and fails: the write stops there.
    sw().fault_set("cfg_set_igmp_set_mcast", -7, 1);
    const uint8_t add_first[1] = {0x80};
    EXPECT_EQ(count_calls("cfg_set_igmp_set_mcast",
                          [&] { EXPECT_EQ(set_igmpSnoopMulticastStaticPorts(10, kGroupA, add_first, 1), -7); }),
              1u);
    // A group on a VLAN that does not exist cannot be made.
    EXPECT_LT(set_igmpSnoopMulticastStaticPorts(30, kGroupA, add_first, 1), 0);
}

TEST_F(IgmpTest, RouterPortRowsAndWrites) {
    EXPECT_EQ(init_index_igmpSnoopRouterStaticTable(add_gauge_row), 0);
    EXPECT_EQ(rows().ints, std::vector<int32_t>{10});
    EXPECT_EQ(read_octets(get_igmpSnoopRouterStaticPorts, 10), expected({{0, 0x08}}));
    EXPECT_EQ(read_octets(get_igmpSnoopRouterCurrentPorts, 10), expected({{0, 0x08}}));

    // Router ports on VLAN 1: 1/2 and 2/1; they stop being router ports of 10.
    Octets value(64, 0);
    value[0] = 0x40;
    value[32] = 0x80;
    auto made = calls_named("cfg_set_igmp_router_port",
                            [&] { EXPECT_EQ(set_igmpSnoopRouterStaticPorts(1, value.data(), value.size()), 0); });
    ASSERT_EQ(made.size(), 2u * 25u);
    EXPECT_EQ(made[1].args, "0,1,1,1");
    EXPECT_EQ(read_octets(get_igmpSnoopRouterStaticPorts, 1), expected({{0, 0x40}, {8, 0x80}}));
    ASSERT_EQ(set_igmpSnoopRouterStaticPorts(10, nullptr, 0), 0);
    EXPECT_EQ(exists_entry_igmpSnoopRouterStaticTable(10), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"igmpSnoopRouterStaticTable 10"});
    rows().clear();
    EXPECT_EQ(init_index_igmpSnoopRouterCurrentTable(add_gauge_row), 0);
    EXPECT_EQ(rows().ints, std::vector<int32_t>{1});

    // A unit that leaves takes its router ports out of the rows' reason.
    sw().set_unit_present(1, false);
    sw().igmp_set_router_port(1, 0, 1, false);
    EXPECT_EQ(exists_entry_igmpSnoopRouterCurrentTable(1), 0);

    // A read that fails leaves the port out.
    sw().igmp_set_router_port(1, 0, 3, true);
    sw().fault_set("cfg_get_igmp_router_port", -1, -1);
    EXPECT_EQ(read_octets(get_igmpSnoopRouterStaticPorts, 1), Octets(32, 0));
}

TEST_F(IgmpTest, SettingsAndTheirBindings) {
    // Anything but enabled turns snooping off.
    for (int32_t off : {2, 7}) {
        ASSERT_EQ(set_igmpSnoopStatus(1), 0);
        EXPECT_EQ(call_texts([&] { EXPECT_EQ(set_igmpSnoopStatus(off), 0); }),
                  std::vector<std::string>{"cfg_set_igmp_enable(0)"});
        EXPECT_EQ(get_igmpSnoopStatus(), 2);
    }
    // The maximum response time is the query interval, both ways.
    ASSERT_EQ(set_igmpSnoopQueryMaxResponseTime(10), 0);
    EXPECT_EQ(get_igmpSnoopQueryInterval(), 10);
    ASSERT_EQ(set_igmpSnoopQueryInterval(90), 0);
    EXPECT_EQ(get_igmpSnoopQueryMaxResponseTime(), 90);
    sw().fault_set("cfg_set_igmp_query_interval", -2, 1);
    EXPECT_EQ(set_igmpSnoopQueryMaxResponseTime(20), -2);
    EXPECT_EQ(get_igmpSnoopQueryInterval(), 90);
}

}  // namespace
}  // namespace unit
