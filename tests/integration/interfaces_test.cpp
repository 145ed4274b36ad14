// The interfaces group through a real snmpd over scenarios/default.json:
// walks of ifTable and ifXTable against the switch, a port's state changed
// by a manager and by swctl while the agent runs, and trunks made through
// SNMP or by LACP.
#include <cstdlib>

#include "fixture.hpp"

namespace it {
namespace {

class Interfaces : public AgentTest<Interfaces> {};

const Oid kIfEntry = parse_oid("1.3.6.1.2.1.2.2.1");
const Oid kIfXEntry = parse_oid("1.3.6.1.2.1.31.1.1.1");
Oid if_column(uint32_t column, uint32_t index) { return child(kIfEntry, {column, index}); }
Oid ifx_column(uint32_t column, uint32_t index) { return child(kIfXEntry, {column, index}); }

TEST_F(Interfaces, WalksListEveryPortAndTrunkInEveryColumn) {
    const std::vector<uint32_t> rows = expected_port_rows(sw());
    const std::vector<VarBind> if_walk = reader().walk(kIfEntry);
    const std::vector<VarBind> ifx_walk = reader().walk(kIfXEntry);
    for (uint32_t column = 1; column <= 22; ++column)
        EXPECT_EQ(row_indexes(if_walk, child(kIfEntry, {column})), rows) << "ifTable column " << column;
    for (uint32_t column = 1; column <= 19; ++column)
        EXPECT_EQ(row_indexes(ifx_walk, child(kIfXEntry, {column})), rows) << "ifXTable column " << column;
    EXPECT_EQ(must_get(oids::kIfNumber).integer, int64_t(rows.size()));

    // The 64-bit counters travel whole; the 32-bit ones are their low half.
    sw().set_counter(0, 19, 0, (uint64_t(3) << 32) + 77);  // 1/20: link down, nothing moves
    const VarBind hc = must_get(ifx_column(6, 20));
    EXPECT_EQ(hc.type, kCounter64);
    EXPECT_EQ(hc.integer, int64_t((uint64_t(3) << 32) + 77));
    const VarBind low = must_get(if_column(10, 20));
    EXPECT_EQ(low.type, kCounter32);
    EXPECT_EQ(low.integer, 77);
}

TEST_F(Interfaces, PortStateFollowsTheManagerAndTheSwitch) {
    const auto swctl = [&](const std::string &args) {
        const std::string cmd = std::string(SWCTL_PATH) + " --state " + agent().state_path() + " " + args;
        return std::system(cmd.c_str());
    };
    const uint32_t port = port_index(1, 5);  // 2/6, up
    ASSERT_EQ(must_get(if_column(8, port)).integer, 1);
    EXPECT_EQ(set_one(SetValue::integer32(if_column(7, port), 2)), kNoError);
    EXPECT_FALSE(sw().port(1, 5).admin);
    EXPECT_EQ(must_get(if_column(8, port)).integer, 2) << "a disabled port goes down";
    EXPECT_EQ(set_one(SetValue::integer32(if_column(7, port), 1)), kNoError);
    EXPECT_EQ(must_get(if_column(8, port)).integer, 1);

    ASSERT_EQ(swctl("link 2/6 down"), 0);
    EXPECT_EQ(must_get(if_column(8, port)).integer, 2);
    ASSERT_EQ(swctl("block 2/6 on"), 0);
    ASSERT_EQ(swctl("link 2/6 up"), 0);
    EXPECT_EQ(must_get(if_column(8, port)).integer, 5) << "up but blocked: dormant";
    ASSERT_EQ(swctl("block 2/6 off"), 0);
    EXPECT_EQ(must_get(if_column(8, port)).integer, 1);
}

TEST_F(Interfaces, TrunksAreMadeAndFilledThroughSnmp) {
    const Oid entry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.3.3.1");
    auto column = [&](uint32_t c, uint32_t trunk) { return child(entry, {c, trunk}); };

    ASSERT_EQ(set_one(SetValue::integer32(column(4, 9), 1)), kNoError);
    EXPECT_TRUE(sw().trunk(8).configured);
    EXPECT_EQ(set_one(SetValue::integer32(column(4, 9), 1)), kGenErr) << "exists already";

    // 1/10 and 1/11: bits 0x40 and 0x20 of octet 1, written and read.
    ASSERT_EQ(set_one(SetValue::octets(column(2, 9), std::string("\x00\x60", 2))), kNoError);
    const std::vector<std::pair<int, int>> members = {{0, 9}, {0, 10}};
    EXPECT_EQ(sw().trunk(8).members, members);
    std::string expected(64, '\0');
    expected[1] = 0x60;
    EXPECT_EQ(must_get(column(2, 9)).bytes, expected);
    EXPECT_EQ(must_get(if_column(2, trunk_index(8))).bytes, "Trunk Port ID 0009") << "a row at once";

    // 1/23 belongs to trunk 1: refused, the trunk keeps its members.
    EXPECT_EQ(set_one(SetValue::octets(column(2, 9), std::string("\x00\x60\x02", 3))), kGenErr);
    EXPECT_EQ(sw().trunk(8).members, members);
    EXPECT_EQ(sw().trunk(0).members.size(), 2u);

    // Writing the ports of a trunk that does not exist makes it, row and all.
    ASSERT_EQ(set_one(SetValue::octets(column(2, 12), std::string("\x00\x00\x40", 3))), kNoError);
    EXPECT_EQ(sw().trunk(11).members, (std::vector<std::pair<int, int>>{{0, 17}}));
    EXPECT_EQ(must_get(column(4, 12)).integer, 1);

    ASSERT_EQ(set_one(SetValue::integer32(column(4, 9), 2)), kNoError);
    EXPECT_FALSE(sw().trunk(8).configured);
    EXPECT_EQ(sw().port(0, 9).trunk0, -1);
    EXPECT_EQ(type_of(column(3, 9)), kNoSuchInstance);
    EXPECT_EQ(type_of(if_column(2, trunk_index(8))), kNoSuchInstance);
}

// Two ports start LACP towards one partner: the switch forms a trunk, which
// is an aggregator and a trunk row made by LACP; LACP off dissolves it.
TEST_F(Interfaces, LacpPartnersFormAndDissolveATrunk) {
    const Oid agg_partner_key = parse_oid("1.2.840.10006.300.43.1.1.1.1.10");
    const Oid lacp_status = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.4.1.1.2");
    const Oid trunk_creation = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.3.3.1.3");
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
    EXPECT_EQ(must_get(child(agg_partner_key, {trunk_index(trunk0)})).integer, 5);
    EXPECT_EQ(must_get(child(trunk_creation, {uint32_t(trunk0 + 1)})).integer, 2) << "formed by LACP";

    for (int p : {12, 13}) ASSERT_EQ(set_one(SetValue::integer32(child(lacp_status, {port_index(0, p)}), 2)), kNoError);
    EXPECT_FALSE(sw().trunk(trunk0).configured);
    EXPECT_EQ(type_of(child(agg_partner_key, {trunk_index(trunk0)})), kNoSuchInstance);
}

}  // namespace
}  // namespace it
