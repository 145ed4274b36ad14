// The agent over time: a crash and restart on the same switch, and a unit
// leaving the stack under a running agent.
#include <algorithm>
#include <fstream>

#include "fixture.hpp"

namespace it {
namespace {

class Restart : public AgentTest<Restart> {};

TEST_F(Restart, WrittenValuesSurviveAKilledAgent) {
    const Oid port_name = oids::port_column(oids::kPortName, port_index(0, 5));
    ASSERT_EQ(set_one(SetValue::octets(oids::kSysName, "survivor")), kNoError);
    ASSERT_EQ(set_one(SetValue::octets(port_name, "kept across restarts")), kNoError);
    ASSERT_EQ(set_one(SetValue::integer32(oids::kTpAgingTime, 450)), kNoError);

    agent().kill_hard();
    agent().start();
    connect();

    EXPECT_EQ(must_get(oids::kSysName).bytes, "survivor");
    EXPECT_EQ(must_get(port_name).bytes, "kept across restarts");
    EXPECT_EQ(must_get(oids::kTpAgingTime).integer, 450);
    EXPECT_EQ(set_one(SetValue::octets(oids::kSysName, "after restart")), kNoError);
    EXPECT_EQ(sw().system().hostname, "after restart");
}

class Topology : public AgentTest<Topology> {};

TEST_F(Topology, RemovedUnitLosesItsRowsAtTheNextRequest) {
    constexpr int kUnit0 = 1;
    const uint32_t first = port_index(kUnit0, 0);
    const Oid base_ports = child(oids::kBasePortEntry, {1});
    const Oid port_trunks = child(oids::kPortEntry, {oids::kPortTrunkIndex});
    // A walk shows exactly the rows of the switch, trunks included.
    const auto expect_rows_of_the_switch = [&] {
        const std::vector<uint32_t> expected = expected_port_rows(sw());
        for (const Oid &column : {base_ports, port_trunks})
            EXPECT_EQ(row_indexes(reader().walk(column), column), expected) << to_string(column);
        return std::count(expected.begin(), expected.end(), first) == 1;
    };
    ASSERT_TRUE(expect_rows_of_the_switch());
    const int ports = sw().unit(kUnit0).ports;

    sw().set_unit_present(kUnit0, false);
    EXPECT_EQ(must_get(oids::kIfNumber).integer, int64_t(expected_port_rows(sw()).size()));
    EXPECT_FALSE(expect_rows_of_the_switch());
    for (int p = 0; p < ports; ++p) {
        const uint32_t row = port_index(kUnit0, p);
        EXPECT_EQ(type_of(oids::base_port_column(1, row)), kNoSuchInstance) << row;
        EXPECT_EQ(type_of(oids::port_column(oids::kPortName, row)), kNoSuchInstance) << row;
    }

    // Back in the stack: its rows come back with the next request.
    sw().set_unit_present(kUnit0, true);
    EXPECT_EQ(must_get(oids::base_port_column(1, first)).integer, first);
    EXPECT_TRUE(expect_rows_of_the_switch());
}

// A damaged state file at start-up: the platform library refuses it (by an
// exception thrown and caught inside snmpd) and the agent still comes up
// and answers, with no report of the sanitizer in its log.
class Startup : public AgentTest<Startup> {};

TEST_F(Startup, AgentOnADamagedStateFileStillAnswers) {
    agent().stop();
    char magic[8] = {};
    {
        std::fstream f(agent().state_path(), std::ios::in | std::ios::out | std::ios::binary);
        f.read(magic, sizeof magic);
        f.seekp(0);
        f.write("damaged!", sizeof magic);
    }
    EXPECT_NO_THROW(agent().start());
    connect();
    EXPECT_TRUE(reader().get({parse_oid("1.3.6.1.2.1.1.3.0")}).answered);
    EXPECT_TRUE(reader().get({oids::kSysName}).answered);

    // The switch mended, the agent serves it again.
    agent().stop();
    {
        std::fstream f(agent().state_path(), std::ios::in | std::ios::out | std::ios::binary);
        f.write(magic, sizeof magic);
    }
    agent().start();
    connect();
    EXPECT_EQ(must_get(oids::kSysName).bytes, sw().system().hostname);
}

}  // namespace
}  // namespace it
