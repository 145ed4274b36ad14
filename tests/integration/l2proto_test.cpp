// Spanning tree, IGMP snooping and ring protection through a real snmpd over
// scenarios/default.json: the root heard on trunk 1, a router port on VLAN
// 10, ring domains 0 and 5.
#include "fixture.hpp"

namespace it {
namespace {

class L2Protocols : public AgentTest<L2Protocols> {};

const Oid kDot1dStp = {1, 3, 6, 1, 2, 1, 17, 2};
const Oid kSwitch = {1, 3, 6, 1, 4, 1, 99999, 3, 5, 201, 1};

TEST_F(L2Protocols, SpanningTreeShowsTheRootAndAPortCostInBothTables) {
    // Root bridge 4096/00:00:5e:00:53:01 heard on trunk 1.
    EXPECT_EQ(must_get(child(kDot1dStp, {5, 0})).bytes, std::string("\x10\x00\x00\x00\x5e\x00\x53\x01", 8));
    EXPECT_EQ(must_get(child(kDot1dStp, {7, 0})).integer, trunk_index(0));

    const uint32_t port3 = port_index(0, 2);
    EXPECT_EQ(set_one(SetValue::integer32(child(kDot1dStp, {15, 1, 5, port3}), 100)), kNoError);
    EXPECT_EQ(sw().stp_port(0, 2).cost, 100u);
    EXPECT_EQ(must_get(child(kSwitch, {5, 2, 1, 3, port3})).integer, 100);  // staPortLongPathCost
}

TEST_F(L2Protocols, IgmpRouterPortsAreReadEightAndWrittenThirtyTwoOctetsAUnit) {
    // Read: 1/25 is octet 3, 0x80, of 8 octets a unit padded to 32 a present unit.
    const Oid router_10 = child(kSwitch, {9, 9, 1, 2, 10});
    std::string ports(64, '\0');
    ports[3] = '\x80';
    EXPECT_EQ(must_get(router_10).bytes, ports);

    // Written: 1/2 only.
    EXPECT_EQ(set_one(SetValue::octets(router_10, std::string("\x40", 1))), kNoError);
    EXPECT_EQ(sw().igmp_router_ports(10), (std::vector<std::pair<int, int>>{{0, 1}}));
}

TEST_F(L2Protocols, RingDomainsFollowTheSwitch) {
    const Oid eaps_entry = child(kSwitch, {24, 1, 1});
    EXPECT_EQ(row_indexes(reader().walk(child(eaps_entry, {1})), child(eaps_entry, {1})), (std::vector<uint32_t>{0, 5}));
    sw().eaps_set_state(5, 3);
    EXPECT_EQ(must_get(child(eaps_entry, {4, 5})).integer, 3);
}

}  // namespace
}  // namespace it
