// Spanning tree, IGMP snooping and ring protection through a real snmpd over
// scenarios/default.json: the root heard on trunk 1, port 1/26 held blocking,
// groups on VLANs 10 and 200, ring domains 0 and 5.
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

TEST_F(L2Protocols, SpanningTreeStateAsTheSwitchReportsIt) {
    // Root bridge 4096/00:00:5e:00:53:01 heard on trunk 1.
    EXPECT_EQ(must_get(stp(5)).bytes, std::string("\x10\x00\x00\x00\x5e\x00\x53\x01", 8));
    EXPECT_EQ(must_get(stp(7)).integer, trunk_index(0));
    EXPECT_EQ(must_get(stp(6)).integer, 20000);
    EXPECT_EQ(must_get(stp(13)).integer, 200);  // bridge hello time
    EXPECT_EQ(must_get(stp_port(3, port_index(0, 25))).integer, 2);  // 1/26 blocking
    EXPECT_EQ(must_get(stp_port(3, port_index(0, 0))).integer, 5);   // 1/1 forwarding
    EXPECT_EQ(must_get(stp_port(3, port_index(0, 19))).integer, 1);  // 1/20: link down

    // The port table lists the ports and trunks like the other bridge tables.
    EXPECT_EQ(row_indexes(reader().walk(child(kStpPortEntry, {1})), child(kStpPortEntry, {1})),
              expected_port_rows(sw()));

    const int64_t changes = must_get(stp(4)).integer;
    sw().stp_topology_change();
    EXPECT_EQ(must_get(stp(4)).integer, (changes + 1) % 256);
    EXPECT_LT(must_get(stp(3)).integer, 500);
}

TEST_F(L2Protocols, PortPriorityAndPathCostWrites) {
    const uint32_t port3 = port_index(0, 2);
    EXPECT_EQ(set_one(SetValue::integer32(stp_port(2, port3), 64)), kNoError);
    EXPECT_EQ(sw().stp_port(0, 2).prio, 64);
    EXPECT_EQ(must_get(stp_port(2, port3)).integer, 64);
    EXPECT_EQ(set_one(SetValue::integer32(stp_port(5, port3), 100)), kNoError);
    EXPECT_EQ(sw().stp_port(0, 2).cost, 100u);
    EXPECT_EQ(must_get(child(kSwitch, {5, 2, 1, 3, port3})).integer, 100);  // staPortLongPathCost

    // Outside the column's range: wrongValue; refused by the platform (not
    // a step of 16): genErr; a trunk that does not exist: genErr.
    EXPECT_EQ(set_one(SetValue::integer32(stp_port(5, port3), 70000)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::integer32(stp_port(2, port3), 100)), kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(stp_port(2, trunk_index(9)), 32)), kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(stp_port(3, port3), 1)), kNotWritable);
    EXPECT_EQ(sw().stp_port(0, 2).prio, 64);
    EXPECT_EQ(sw().stp_port(0, 2).cost, 100u);

    // Bridge timers and the protocol type.
    EXPECT_EQ(set_one(SetValue::integer32(stp(12), 2400)), kNoError);
    EXPECT_EQ(sw().stp().max_age, 2400);
    EXPECT_EQ(set_one(SetValue::integer32(stp(12), 500)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::integer32(child(kSwitch, {5, 3, 0}), 2)), kNoError);
    EXPECT_EQ(sw().stp().force_mode, 2);
}

TEST_F(L2Protocols, IgmpChangesShowAtOnce) {
    // Router ports of VLAN 10: 1/25 (octet 3, 0x80).
    const Oid router_10 = child(kIgmp, {9, 1, 2, 10});
    std::string ports = must_get(router_10).bytes;
    ASSERT_EQ(ports.size(), 64u);  // two units
    EXPECT_EQ(uint8_t(ports[3]), 0x80);
    sw().igmp_set_router_port(10, 1, 24, true);  // 2/25: unit 2 reads at octet 8
    EXPECT_EQ(uint8_t(must_get(router_10).bytes[11]), 0x80);
    EXPECT_EQ(must_get(child(kIgmp, {8, 1, 2, 10})).bytes, must_get(router_10).bytes);

    // A write through SNMP: 1/2 only (written layout, 32 octets a unit).
    EXPECT_EQ(set_one(SetValue::octets(router_10, std::string("\x40", 1))), kNoError);
    EXPECT_EQ(sw().igmp_router_ports(10), (std::vector<std::pair<int, int>>{{0, 1}}));
    EXPECT_EQ(uint8_t(must_get(router_10).bytes[0]), 0x40);

    // A VLAN that gets its first router port gets a row.
    const Oid router_100 = child(kIgmp, {9, 1, 2, 100});
    EXPECT_TRUE(reader().get({router_100}).varbinds.at(0).is_exception());
    sw().igmp_set_router_port(100, 0, 0, true);
    EXPECT_EQ(uint8_t(must_get(router_100).bytes[0]), 0x80);

    // Static groups are indexed by VLAN and group address, octets in order:
    // 239.1.1.1 on VLAN 10 has ports 1/1-4.
    const Oid group = child(kIgmp, {11, 1, 3, 10, 239, 1, 1, 1});
    EXPECT_EQ(uint8_t(must_get(group).bytes.at(0)), 0xf0);
    const std::vector<VarBind> groups = reader().walk(child(kIgmp, {11, 1, 3}));
    ASSERT_FALSE(groups.empty());
    EXPECT_EQ(groups.front().oid, group);

    // The response time is the query interval; snooping off and on again.
    EXPECT_EQ(set_one(SetValue::integer32(child(kIgmp, {5, 0}), 10)), kNoError);
    EXPECT_EQ(must_get(child(kIgmp, {4, 0})).integer, 10);
    EXPECT_EQ(set_one(SetValue::integer32(child(kIgmp, {1, 0}), 2)), kNoError);
    EXPECT_EQ(must_get(child(kIgmp, {1, 0})).integer, 2);
    EXPECT_EQ(set_one(SetValue::integer32(child(kIgmp, {7, 0}), 3)), kWrongValue);
}

TEST_F(L2Protocols, RingDomainsAndTheirStates) {
    auto ids = row_indexes(reader().walk(child(kEapsEntry, {1})), child(kEapsEntry, {1}));
    EXPECT_EQ(ids, (std::vector<uint32_t>{0, 5}));
    EXPECT_EQ(must_get(child(kEapsEntry, {2, 0})).bytes, "ring-core");
    EXPECT_EQ(must_get(child(kEapsEntry, {3, 0})).integer, 1);
    EXPECT_EQ(must_get(child(kEapsEntry, {4, 5})).integer, 1);

    sw().eaps_set_state(5, 3);
    EXPECT_EQ(must_get(child(kEapsEntry, {4, 5})).integer, 3);
    sw().eaps_create(9, "ring-lab", false, 4);
    EXPECT_EQ(must_get(child(kEapsEntry, {2, 9})).bytes, "ring-lab");
    sw().eaps_delete(9);
    EXPECT_TRUE(reader().get({child(kEapsEntry, {2, 9})}).varbinds.at(0).is_exception());
    EXPECT_EQ(set_one(SetValue::integer32(child(kEapsEntry, {4, 5}), 1)), kNotWritable);
}

}  // namespace
}  // namespace it
