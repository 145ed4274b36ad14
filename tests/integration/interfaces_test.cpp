// The interfaces group through a real snmpd over scenarios/default.json:
// walks of ifTable and ifXTable against the switch, writes, and changes made
// on the switch while the agent runs.
#include <algorithm>
#include <map>

#include "fixture.hpp"

namespace it {
namespace {

class Interfaces : public AgentTest<Interfaces> {};

const Oid kIfEntry = parse_oid("1.3.6.1.2.1.2.2.1");
const Oid kIfXEntry = parse_oid("1.3.6.1.2.1.31.1.1.1");
const Oid kIfStackStatus = parse_oid("1.3.6.1.2.1.31.1.2.1.3");
Oid if_column(uint32_t column, uint32_t index) { return child(kIfEntry, {column, index}); }
Oid ifx_column(uint32_t column, uint32_t index) { return child(kIfXEntry, {column, index}); }

std::map<Oid, VarBind> by_oid(const std::vector<VarBind> &walk) {
    std::map<Oid, VarBind> cells;
    for (const VarBind &vb : walk) cells[vb.oid] = vb;
    return cells;
}

TEST_F(Interfaces, WalksListEveryPortAndTrunkWithTheirState) {
    const std::vector<uint32_t> rows = expected_port_rows(sw());
    const std::vector<VarBind> if_walk = reader().walk(kIfEntry);
    const std::vector<VarBind> ifx_walk = reader().walk(kIfXEntry);
    for (uint32_t column = 1; column <= 22; ++column)
        EXPECT_EQ(row_indexes(if_walk, child(kIfEntry, {column})), rows) << "ifTable column " << column;
    for (uint32_t column = 1; column <= 19; ++column)
        EXPECT_EQ(row_indexes(ifx_walk, child(kIfXEntry, {column})), rows) << "ifXTable column " << column;
    ASSERT_EQ(must_get(oids::kIfNumber).integer, int64_t(rows.size()));

    const std::map<Oid, VarBind> cell = by_oid(if_walk), xcell = by_oid(ifx_walk);
    for (uint32_t index : rows) {
        const bool trunk = index > 512;
        const int unit0 = trunk ? 0 : int(index - 1) / 64, port0 = trunk ? int(index) - 1 : int(index - 1) % 64;
        const swsim::PortInfo port = sw().port(unit0, port0);
        const std::string at = "index " + std::to_string(index);
        EXPECT_EQ(cell.at(if_column(3, index)).integer, trunk ? 161 : 6) << at;
        EXPECT_EQ(cell.at(if_column(5, index)).type, kGauge32) << at;
        EXPECT_EQ(cell.at(if_column(7, index)).integer, port.admin ? 1 : 2) << at;
        const bool blocked = !trunk && sw().error_blocked(unit0, port0);
        EXPECT_EQ(cell.at(if_column(8, index)).integer, !port.link ? 2 : blocked ? 5 : 1) << at;
        EXPECT_EQ(cell.at(if_column(10, index)).type, kCounter32) << at;
        EXPECT_EQ(xcell.at(ifx_column(6, index)).type, kCounter64) << at;
        EXPECT_EQ(xcell.at(ifx_column(18, index)).bytes, port.description) << at;
        if (port.link && !trunk) {
            EXPECT_EQ(xcell.at(ifx_column(15, index)).integer, port.speed) << at;
        }
        const std::string name = xcell.at(ifx_column(1, index)).bytes;
        EXPECT_EQ(name, trunk ? "port-ch-" + std::to_string(index - 512)
                              : "eth-" + std::to_string(unit0 + 1) + "/" + std::to_string(port0 + 1));
    }
    // Trunk 1 (1/23, 1/24, both up at 1000) is one 2 Gbit/s interface.
    EXPECT_EQ(cell.at(if_column(5, trunk_index(0))).integer, 2000000000);
    EXPECT_EQ(xcell.at(ifx_column(15, trunk_index(0))).integer, 2000);
    // The 64-bit counters agree with the switch; the 32-bit ones are their
    // low half.
    sw().set_counter(0, 19, 0, (uint64_t(3) << 32) + 77);  // 1/20: link down, nothing moves
    EXPECT_EQ(must_get(ifx_column(6, 20)).integer, int64_t((uint64_t(3) << 32) + 77));
    EXPECT_EQ(must_get(if_column(10, 20)).integer, 77);
}

TEST_F(Interfaces, WritesReachTheSwitch) {
    const uint32_t port = port_index(0, 10);  // 1/11
    EXPECT_EQ(set_one(SetValue::integer32(if_column(7, port), 2)), kNoError);
    EXPECT_FALSE(sw().port(0, 10).admin);
    EXPECT_EQ(must_get(if_column(8, port)).integer, 2) << "a disabled port goes down";
    EXPECT_EQ(set_one(SetValue::integer32(if_column(7, port), 1)), kNoError);
    EXPECT_TRUE(sw().port(0, 10).admin);

    EXPECT_EQ(set_one(SetValue::octets(ifx_column(18, port), "camera, gate 3")), kNoError);
    EXPECT_EQ(sw().port(0, 10).description, "camera, gate 3");
    EXPECT_EQ(set_one(SetValue::integer32(ifx_column(14, port), 2)), kNoError);
    EXPECT_FALSE(sw().trap_enabled(0, 10));
    EXPECT_EQ(must_get(ifx_column(14, port)).integer, 2);

    // Refusals: out of range, a value the switch cannot take, read-only.
    EXPECT_EQ(set_one(SetValue::integer32(if_column(7, port), 4)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::integer32(if_column(7, port), 3)), kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(ifx_column(16, port), 1)), kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(if_column(4, port), 9000)), kNotWritable);
    EXPECT_TRUE(sw().port(0, 10).admin);
}

TEST_F(Interfaces, SwitchChangesShowAtTheNextRequest) {
    const uint32_t port = port_index(1, 5);  // 2/6, up
    ASSERT_EQ(must_get(if_column(8, port)).integer, 1);
    sw().set_link(1, 5, false);
    EXPECT_EQ(must_get(if_column(8, port)).integer, 2);
    sw().set_error_blocked(1, 5, true);
    sw().set_link(1, 5, true);
    EXPECT_EQ(must_get(if_column(8, port)).integer, 5) << "up but blocked: dormant";
    sw().set_error_blocked(1, 5, false);

    // A trunk that comes into use appears in both tables and in the stack,
    // and the interface table's change time moves.
    const Oid last_change = parse_oid("1.3.6.1.2.1.31.1.5.0");
    const int64_t before = must_get(last_change).integer;
    sw().trunk_create(9);
    sw().trunk_add_port(9, 1, 9);  // 2/10
    const uint32_t trunk = trunk_index(9);
    // The first request after the change addresses the new rows.
    EXPECT_EQ(must_get(ifx_column(1, trunk)).bytes, "port-ch-10");
    EXPECT_EQ(must_get(if_column(2, port_index(1, 9))).bytes, "Trunk Member port on Trunk ID 10");
    EXPECT_EQ(must_get(child(kIfStackStatus, {trunk, port_index(1, 9)})).integer, 1);
    EXPECT_GT(must_get(last_change).integer, before);

    // Gone again: the rows answer no more.
    sw().trunk_destroy(9);
    Response r = reader().get({ifx_column(1, trunk), child(kIfStackStatus, {trunk, port_index(1, 9)})});
    ASSERT_TRUE(r.answered);
    ASSERT_EQ(r.varbinds.size(), 2u);
    EXPECT_EQ(r.varbinds[0].type, kNoSuchInstance);
    EXPECT_EQ(r.varbinds[1].type, kNoSuchInstance);

    // A new VLAN stacks over its members once the switch reports the change.
    sw().vlan_create(77, "cams");
    sw().vlan_set_member(77, 1, 11, SW_VLAN_UNTAGGED);
    const std::vector<VarBind> stack = reader().walk(child(kIfStackStatus, {1077}));
    ASSERT_EQ(stack.size(), 1u);
    EXPECT_EQ(stack[0].oid, child(kIfStackStatus, {1077, port_index(1, 11)}));
}

TEST_F(Interfaces, TrunksAreMadeAndFilledThroughSnmp) {
    const Oid entry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.3.3.1");
    auto column = [&](uint32_t c, uint32_t trunk) { return child(entry, {c, trunk}); };
    const Oid valid = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.3.2.0");
    const int64_t before = must_get(valid).integer;

    ASSERT_EQ(set_one(SetValue::integer32(column(4, 9), 1)), kNoError);
    EXPECT_TRUE(sw().trunk(8).configured);
    EXPECT_EQ(must_get(valid).integer, before + 1);
    EXPECT_EQ(set_one(SetValue::integer32(column(4, 9), 1)), kGenErr) << "exists already";

    // 1/10 and 1/11: bits 0x40 and 0x20 of octet 1.
    ASSERT_EQ(set_one(SetValue::octets(column(2, 9), std::string("\x00\x60", 2))), kNoError);
    EXPECT_EQ(sw().trunk(8).members, (std::vector<std::pair<int, int>>{{0, 9}, {0, 10}}));
    std::string expected(64, '\0');  // two units, 32 octets each
    expected[1] = 0x60;
    EXPECT_EQ(must_get(column(2, 9)).bytes, expected);
    EXPECT_EQ(must_get(column(3, 9)).integer, 1);
    EXPECT_EQ(must_get(if_column(2, trunk_index(8))).bytes, "Trunk Port ID 0009");

    // 1/23 belongs to trunk 1: refused, the trunk keeps its members.
    EXPECT_EQ(set_one(SetValue::octets(column(2, 9), std::string("\x00\x60\x02", 3))), kGenErr);
    EXPECT_EQ(sw().trunk(8).members.size(), 2u);
    EXPECT_EQ(sw().trunk(0).members.size(), 2u);
    EXPECT_EQ(set_one(SetValue::integer32(column(4, 9), 3)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::integer32(column(3, 9), 1)), kNotWritable);

    // Writing the ports of a trunk that does not exist makes it, row and all.
    ASSERT_EQ(set_one(SetValue::octets(column(2, 12), std::string("\x00\x00\x40", 3))), kNoError);
    EXPECT_EQ(sw().trunk(11).members, (std::vector<std::pair<int, int>>{{0, 17}}));
    EXPECT_EQ(must_get(column(4, 12)).integer, 1);

    ASSERT_EQ(set_one(SetValue::integer32(column(4, 9), 2)), kNoError);
    EXPECT_FALSE(sw().trunk(8).configured);
    EXPECT_EQ(sw().port(0, 9).trunk0, -1);
    Response r = reader().get({column(3, 9)});
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].type, kNoSuchInstance);
    EXPECT_EQ(set_one(SetValue::integer32(column(4, 9), 2)), kGenErr) << "nothing to destroy";
}

TEST_F(Interfaces, LinkAggregationFollowsLacpPartners) {
    const Oid agg_entry = parse_oid("1.2.840.10006.300.43.1.1.1.1");
    const Oid port_entry = parse_oid("1.2.840.10006.300.43.1.2.1.1");
    const Oid stats_entry = parse_oid("1.2.840.10006.300.43.1.2.2.1");
    const Oid lacp_status = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.4.1.1.2");
    auto port_col = [&](uint32_t c, uint32_t i) { return child(port_entry, {c, i}); };

    // Trunk 4 of the scenario runs LACP on 2/23 and 2/24.
    const uint32_t member = port_index(1, 22);
    EXPECT_EQ(must_get(port_col(21, member)).bytes, "\xbc") << "active, aggregatable, in sync, forwarding";
    EXPECT_EQ(must_get(port_col(11, member)).integer, 12);
    EXPECT_EQ(must_get(port_col(13, member)).integer, trunk_index(3));
    EXPECT_EQ(must_get(child(stats_entry, {2, member})).integer, 2) << "marker PDUs received";
    EXPECT_EQ(must_get(child(lacp_status, {member})).integer, 1);
    EXPECT_EQ(must_get(child(parse_oid("1.2.840.10006.300.43.1.2.3.1"), {3, member})).integer, 6)
        << "mux collecting and distributing";
    std::vector<uint32_t> port_rows = expected_port_rows(sw());
    port_rows.erase(std::remove_if(port_rows.begin(), port_rows.end(), [](uint32_t i) { return i > 512; }),
                    port_rows.end());
    EXPECT_EQ(row_indexes(reader().walk(child(port_entry, {2})), child(port_entry, {2})), port_rows)
        << "ports only, no trunks";

    // Two ports start LACP towards one partner: the switch forms a trunk.
    swsim::Switch::LacpPartner partner;
    partner.key = 5;
    for (int p : {12, 13}) {
        ASSERT_EQ(set_one(SetValue::integer32(child(lacp_status, {port_index(0, p)}), 1)), kNoError);
        partner.port = p;
        sw().lacp_set_partner(0, p, partner);
    }
    const int trunk0 = sw().port(0, 12).trunk0;
    ASSERT_GE(trunk0, 0);
    EXPECT_EQ(sw().port(0, 13).trunk0, trunk0);
    const Oid trunk_creation = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.3.3.1.3");
    EXPECT_EQ(must_get(child(agg_entry, {10, trunk_index(trunk0)})).integer, 5) << "partner key";
    EXPECT_EQ(must_get(child(trunk_creation, {uint32_t(trunk0 + 1)})).integer, 2) << "formed by LACP";

    // Writes: the port priority, its range, a read-only column.
    EXPECT_EQ(set_one(SetValue::integer32(port_col(15, port_index(0, 12)), 99)), kNoError);
    EXPECT_EQ(sw().lacp_port(0, 12).actor_port_priority, 99u);
    EXPECT_EQ(set_one(SetValue::integer32(port_col(15, port_index(0, 12)), 70000)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::integer32(port_col(5, port_index(0, 12)), 1)), kNotWritable);

    // LACP off on both: the trunk dissolves and its aggregator goes.
    for (int p : {12, 13}) ASSERT_EQ(set_one(SetValue::integer32(child(lacp_status, {port_index(0, p)}), 2)), kNoError);
    EXPECT_FALSE(sw().trunk(trunk0).configured);
    Response r = reader().get({child(agg_entry, {10, trunk_index(trunk0)})});
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].type, kNoSuchInstance);
}

}  // namespace
}  // namespace it
