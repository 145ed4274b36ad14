// The test fixture: one agent (and one simulated switch) per test suite,
// shared by the suite's tests, with a read and a write session to it; the
// agent's log is checked for faults of the module after every test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <swsim/control.hpp>

#include "agent_process.hpp"
#include "snmp_client.hpp"

namespace it {

// OIDs several suites use.
namespace oids {
inline const Oid kSystem = parse_oid("1.3.6.1.2.1.1");
inline const Oid kSysDescr = child(kSystem, {1, 0});
inline const Oid kSysContact = child(kSystem, {4, 0});
inline const Oid kSysName = child(kSystem, {5, 0});
inline const Oid kIfNumber = parse_oid("1.3.6.1.2.1.2.1.0");
inline const Oid kBasePortEntry = parse_oid("1.3.6.1.2.1.17.1.4.1");  // + column, port
inline const Oid kTpAgingTime = parse_oid("1.3.6.1.2.1.17.4.2.0");
inline const Oid kPrivate = parse_oid("1.3.6.1.4.1.99999");
inline const Oid kPortEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.2.1.1");  // + column, index

// portTable columns
enum PortColumn : uint32_t {
    kPortName = 2,
    kPortType = 3,
    kPortSpeedDpxCfg = 4,
    kPortAutonegotiation = 7,
    kPortTrunkIndex = 11,
};
inline Oid port_column(uint32_t column, uint32_t index) { return child(kPortEntry, {column, index}); }
inline Oid base_port_column(uint32_t column, uint32_t index) { return child(kBasePortEntry, {column, index}); }
}  // namespace oids

// The switch's interface index of a port (platform numbering from 0).
inline uint32_t port_index(int unit0, int port0) { return uint32_t(unit0 * 64 + port0 + 1); }
inline uint32_t trunk_index(int trunk0) { return uint32_t(513 + trunk0); }

// The indexes of the port rows the switch has now: the ports of the present
// units, then the configured trunks that have members.
inline std::vector<uint32_t> expected_port_rows(const swsim::Switch &sw) {
    std::vector<uint32_t> rows;
    for (int u = 0; u < 8; ++u) {
        const swsim::UnitInfo unit = sw.unit(u);
        for (int p = 0; unit.present && p < unit.ports; ++p) rows.push_back(port_index(u, p));
    }
    for (int t = 0; t < 128; ++t) {
        const swsim::TrunkInfo trunk = sw.trunk(t);
        if (trunk.configured && !trunk.members.empty()) rows.push_back(trunk_index(t));
    }
    return rows;
}

// The last sub-identifier of each varbind whose OID lies under prefix.
inline std::vector<uint32_t> row_indexes(const std::vector<VarBind> &walk, const Oid &column_prefix) {
    std::vector<uint32_t> rows;
    for (const VarBind &vb : walk)
        if (starts_with(vb.oid, column_prefix) && vb.oid.size() > column_prefix.size()) rows.push_back(vb.oid.back());
    return rows;
}

template <class Suite>
class AgentTest : public ::testing::Test {
protected:
    // The scenario of the suite's switch; a suite may name its own.
    static constexpr const char *kScenario = "scenarios/default.json";
    // Options of the suite's agent configuration (scripts/make-snmpd-conf.sh).
    static std::vector<std::string> agent_options() { return {}; }
    static inline std::unique_ptr<AgentProcess> agent_;
    static inline std::unique_ptr<swsim::Switch> switch_;

    static void SetUpTestSuite() {
        try {
            agent_ = std::make_unique<AgentProcess>(Suite::kScenario, Suite::agent_options());
            switch_ = std::make_unique<swsim::Switch>(agent_->state_path());
        } catch (const std::exception &e) {
            agent_.reset();
            ADD_FAILURE() << "cannot start the agent: " << e.what();
        }
    }
    static void TearDownTestSuite() {
        if (agent_) {
            agent_->stop();
            report_problems();
        }
        switch_.reset();
        agent_.reset();
    }
    static void report_problems() {
        for (const std::string &line : agent_->problems()) ADD_FAILURE() << "agent log: " << line;
    }

    void SetUp() override {
        ASSERT_TRUE(agent_) << "the agent did not start";
        connect();
    }
    void TearDown() override { report_problems(); }

    // (Re)opens the sessions, for instance after a restart on a new port;
    // each request is tried three times, timeout_ms each.
    void connect(int timeout_ms = 2000) {
        read_ = std::make_unique<Session>(agent_->port(), "public", timeout_ms);
        write_ = std::make_unique<Session>(agent_->port(), "private", timeout_ms);
    }

    AgentProcess &agent() { return *agent_; }
    swsim::Switch &sw() { return *switch_; }
    // swctl `args` on the suite's switch, as an operator types it; its exit status.
    int swctl(const std::string &args) {
        const std::string cmd = std::string(SWCTL_PATH) + " --state " + agent().state_path() + " " + args;
        return std::system(cmd.c_str());
    }
    Session &reader() { return *read_; }
    Session &writer() { return *write_; }

    // GET of one object that must answer a value.
    VarBind must_get(const Oid &oid) {
        Response r = read_->get({oid});
        EXPECT_EQ(r.error_status, kNoError) << "GET " << to_string(oid);
        if (r.varbinds.size() != 1) {
            ADD_FAILURE() << "GET " << to_string(oid) << ": " << r.varbinds.size() << " varbinds";
            return {};
        }
        EXPECT_FALSE(r.varbinds[0].is_exception()) << describe(r.varbinds[0]);
        return r.varbinds[0];
    }

    // The type a GET of one object answers (kNull when no varbind came back).
    uint8_t type_of(const Oid &oid) {
        Response r = read_->get({oid});
        return r.varbinds.size() == 1 ? r.varbinds[0].type : uint8_t(kNull);
    }

    // SET of one object with the write community; answers the error status
    // (-1 when the agent did not answer).
    long set_one(const SetValue &value) {
        Response r = write_->set({value});
        return r.answered ? r.error_status : -1;
    }

private:
    std::unique_ptr<Session> read_, write_;
};

}  // namespace it
