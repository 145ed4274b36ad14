// Spanning tree, IGMP snooping and ring protection through a real snmpd over
// scenarios/default.json: the root heard on trunk 1, port 1/26 held blocking,
// a router port on VLAN 10, ring domains 0 and 5.
#include "fixture.hpp"

namespace it {
namespace {

class L2Protocols : public AgentTest<L2Protocols> {};

const Oid kDot1dStp = {1, 3, 6, 1, 2, 1, 17, 2};
const Oid kStpPortEntry = child(kDot1dStp, {15, 1});
const Oid kSwitch = {1, 3, 6, 1, 4, 1, 99999, 3, 5, 201, 1};
const Oid kIgmp = child(kSwitch, {9});
const Oid kEapsEntry = child(kSwitch, {24, 1, 1});

Oid stp(uint32_t scalar) { return child(kDot1dStp, {scalar, 0}); }
Oid stp_port(uint32_t column, uint32_t index) { return child(kStpPortEntry, {column, index}); }

TEST_F(L2Protocols, SpanningTreeReadsTheSwitchsRecordsAndWritesAPort) {
    // Root bridge 4096/00:00:5e:00:53:01 heard on trunk 1.
    EXPECT_EQ(must_get(stp(5)).bytes, std::string("\x10\x00\x00\x00\x5e\x00\x53\x01", 8));
    EXPECT_EQ(must_get(stp(7)).integer, trunk_index(0));
    EXPECT_EQ(must_get(stp(6)).integer, 20000);
    EXPECT_EQ(must_get(stp_port(3, port_index(0, 25))).integer, 2);  // 1/26 blocking
    EXPECT_EQ(must_get(stp_port(3, port_index(0, 19))).integer, 1);  // 1/20: link down

    const uint32_t port3 = port_index(0, 2);
    EXPECT_EQ(set_one(SetValue::integer32(stp_port(5, port3), 100)), kNoError);
    EXPECT_EQ(sw().stp_port(0, 2).cost, 100u);
    EXPECT_EQ(must_get(child(kSwitch, {5, 2, 1, 3, port3})).integer, 100);  // staPortLongPathCost
    EXPECT_EQ(set_one(SetValue::integer32(stp_port(2, trunk_index(9)), 32)), kGenErr) << "no trunk 10";
}

TEST_F(L2Protocols, IgmpRouterPortsAreWrittenAndReadInTheirOwnLayouts) {
    // Read: units 8 octets apart (1/25 is octet 3, 0x80; 2/25 octet 11) in a
    // string of 32 octets a present unit.
    const Oid router_10 = child(kIgmp, {9, 1, 2, 10});
    std::string ports = must_get(router_10).bytes;
    ASSERT_EQ(ports.size(), 64u);
    EXPECT_EQ(uint8_t(ports[3]), 0x80);
    sw().igmp_set_router_port(10, 1, 24, true);
    EXPECT_EQ(uint8_t(must_get(router_10).bytes[11]), 0x80);

    // Written: 32 octets a unit; 1/2 only.
    EXPECT_EQ(set_one(SetValue::octets(router_10, std::string("\x40", 1))), kNoError);
    EXPECT_EQ(sw().igmp_router_ports(10), (std::vector<std::pair<int, int>>{{0, 1}}));
    EXPECT_EQ(uint8_t(must_get(router_10).bytes[0]), 0x40);
}

TEST_F(L2Protocols, RingDomainsFollowTheSwitch) {
    EXPECT_EQ(row_indexes(reader().walk(child(kEapsEntry, {1})), child(kEapsEntry, {1})),
              (std::vector<uint32_t>{0, 5}));
    sw().eaps_set_state(5, 3);
    EXPECT_EQ(must_get(child(kEapsEntry, {4, 5})).integer, 3);
    EXPECT_EQ(set_one(SetValue::integer32(child(kEapsEntry, {4, 5}), 1)), kNotWritable);
}

}  // namespace
}  // namespace it
