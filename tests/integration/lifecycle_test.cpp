// The agent over time: a crash and restart on the same switch, a unit
// leaving the stack under a running agent, and the switch created anew under
// it.
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <thread>

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

class Recreate : public AgentTest<Recreate> {};

// `swctl create --force` while the agent runs: the agent answers for the new
// switch from its next request on, and keeps answering while it happens.
TEST_F(Recreate, TheAgentAnswersForTheSwitchCreatedUnderIt) {
    struct Scenario {
        const char *file, *name;
    };
    const Scenario kMax{"scenarios/max.json", "sw-max"}, kDefault{"scenarios/default.json", "sw-lab-01"};
    const auto inode = [&] {
        struct stat st {};
        EXPECT_EQ(stat(agent().state_path().c_str(), &st), 0);
        return st.st_ino;
    };
    const auto create = [&](const Scenario &s) {
        const std::string cmd = std::string(SWCTL_PATH) + " --state " + agent().state_path() + " create --force " +
                                SOURCE_DIR + "/" + s.file;
        ASSERT_EQ(std::system(cmd.c_str()), 0) << cmd;
        EXPECT_EQ(must_get(oids::kSysName).bytes, s.name);
        EXPECT_EQ(must_get(oids::kIfNumber).integer, int64_t(expected_port_rows(sw()).size())) << s.file;
    };
    const auto the_file = inode();
    ASSERT_EQ(must_get(oids::kSysName).bytes, kDefault.name);
    const int64_t default_ports = must_get(oids::kIfNumber).integer;

    create(kMax);
    EXPECT_EQ(inode(), the_file) << "the same file, rewritten";
    EXPECT_GT(must_get(oids::kIfNumber).integer, default_ports);
    const Oid base_ports = child(oids::kBasePortEntry, {1});
    EXPECT_EQ(row_indexes(reader().walk(base_ports), base_ports), expected_port_rows(sw()));

    // Another manager keeps asking while the switch is replaced back and forth.
    std::atomic<bool> done{false};
    std::vector<std::string> wrong;
    std::thread asker([&] {
        Session session(agent().port(), "public");
        while (!done.load()) {
            const Response r = session.get({oids::kSysName, oids::kIfNumber});
            const bool fine = r.answered && r.error_status == kNoError && r.varbinds.size() == 2 &&
                              (r.varbinds[0].bytes == kMax.name || r.varbinds[0].bytes == kDefault.name) &&
                              r.varbinds[1].type == kInteger;
            if (!fine) wrong.push_back(r.varbinds.empty() ? "no answer" : describe(r.varbinds[0]));
        }
    });
    for (int round = 0; round < 3; ++round) {
        create(kDefault);
        create(kMax);
    }
    done.store(true);
    asker.join();
    EXPECT_TRUE(wrong.empty()) << wrong.size() << " bad answers, the first: " << wrong.front();
    EXPECT_EQ(inode(), the_file);
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
