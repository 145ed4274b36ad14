// The agent over time: a crash and restart on the same switch, and a unit
// leaving the stack under a running agent.
#include <algorithm>

#include "fixture.hpp"

namespace it {
namespace {

class Restart : public AgentTest<Restart> {};

TEST_F(Restart, WrittenValuesSurviveAKilledAgent) {
    const uint32_t port = port_index(0, 5);
    ASSERT_EQ(set_one(SetValue::octets(oids::kSysName, "survivor")), kNoError);
    ASSERT_EQ(set_one(SetValue::octets(oids::port_column(oids::kPortName, port), "kept across restarts")), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(oids::kTpAgingTime, 450)), kNoError);

    agent().kill_hard();
    ASSERT_FALSE(agent().running());
    agent().start();
    connect();

    EXPECT_EQ(must_get(oids::kSysName).bytes, "survivor");
    EXPECT_EQ(must_get(oids::port_column(oids::kPortName, port)).bytes, "kept across restarts");
    EXPECT_EQ(must_get(oids::kTpAgingTime).integer, 450);
    // And the restarted agent still writes.
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysName, "after restart")), kNoError);
    EXPECT_EQ(sw().system().hostname, "after restart");
}

class Topology : public AgentTest<Topology> {};

const Oid kBasePortColumn = child(oids::kBasePortEntry, {1});
const Oid kPortTrunkColumn = child(oids::kPortEntry, {oids::kPortTrunkIndex});

bool contains(const std::vector<uint32_t> &v, uint32_t x) { return std::find(v.begin(), v.end(), x) != v.end(); }

TEST_F(Topology, RemovedUnitLosesItsRowsAtTheNextRequest) {
    constexpr int kUnit0 = 1;
    ASSERT_TRUE(sw().unit(kUnit0).present);
    const int ports = sw().unit(kUnit0).ports;
    const uint32_t first = port_index(kUnit0, 0);
    // The agent has the unit's rows.
    ASSERT_TRUE(contains(row_indexes(reader().walk(kBasePortColumn), kBasePortColumn), first));

    sw().set_unit_present(kUnit0, false);
    const std::vector<uint32_t> expected = expected_port_rows(sw());
    ASSERT_FALSE(contains(expected, first));
    EXPECT_EQ(must_get(oids::kIfNumber).integer, int64_t(expected.size()));

    // A walk shows exactly the rows of the switch, trunks included; a GET of
    // each of the unit's ports finds the row gone.
    for (const Oid &column : {kBasePortColumn, kPortTrunkColumn})
        EXPECT_EQ(row_indexes(reader().walk(column), column), expected) << to_string(column);
    for (int p = 0; p < ports; ++p) {
        const uint32_t row = port_index(kUnit0, p);
        Response r = reader().get({oids::base_port_column(1, row), oids::port_column(oids::kPortName, row)});
        ASSERT_TRUE(r.answered);
        ASSERT_EQ(r.varbinds.size(), 2u);
        EXPECT_EQ(r.varbinds[0].type, kNoSuchInstance) << describe(r.varbinds[0]);
        EXPECT_EQ(r.varbinds[1].type, kNoSuchInstance) << describe(r.varbinds[1]);
    }

    // Back in the stack: its rows come back with the next request.
    sw().set_unit_present(kUnit0, true);
    const std::vector<uint32_t> restored = expected_port_rows(sw());
    EXPECT_TRUE(contains(restored, first));
    EXPECT_EQ(must_get(oids::base_port_column(1, first)).integer, first);
    for (const Oid &column : {kBasePortColumn, kPortTrunkColumn})
        EXPECT_EQ(row_indexes(reader().walk(column), column), restored) << to_string(column);
}

}  // namespace
}  // namespace it
