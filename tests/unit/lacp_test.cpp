// Link aggregation tables over a switch whose ports hear LACP partners:
// trunks as aggregators, the state octets as BITS, port lists, the debug
// states and the answers on platform failures.
#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class LacpTest : public SwitchTest {
protected:
    // 1/1 and 1/2 hear partner A (key 7), 1/3 hears partner B; 1/4 runs
    // LACP with nobody answering; trunk 1 is static with 1/10.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}],
                   "trunks": [{"id": 1, "members": ["1/10"]}],
                   "ports": [{"select": "1/1-10", "link": true, "peer_speed": 1000}],
                   "interfaces": {"lacp_system_priority": 4096, "lacp": [
                     {"select": "1/1-2", "priority": 100,
                      "partner": {"system": "00:1b:21:00:00:0a", "key": 7, "port": 11, "short_timeout": true},
                      "counters": {"rx_marker": 4294967299}},
                     {"select": "1/3", "partner": {"system": "00:1b:21:00:00:0b", "key": 9, "system_priority": 200}},
                     {"select": "1/4"}]}})";
    }
    // A partner that will not aggregate, heard on `port0`.
    void hear_individual(int port0) {
        swsim::Switch::LacpPartner lone;
        lone.aggregatable = false;
        sw().lacp_set_partner(0, port0, lone);
    }
};

TEST_F(LacpTest, TrunksAreAggregatorsSpokenForByTheirLeadMember) {
    // Trunk 1 is taken: partner A's ports form trunk 2, partner B's trunk 3.
    EXPECT_EQ(init_index_dot3adAggTable(add_int_row), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{513, 514, 515}));
    EXPECT_EQ(get_dot3adAggPortSelectedAggID(1), 514);
    EXPECT_EQ(get_dot3adAggPortAttachedAggID(2), 514);
    EXPECT_EQ(get_dot3adAggPortSelectedAggID(4), 0) << "nobody answers 1/4";
    EXPECT_EQ(get_dot3adAggPortSelectedAggID(10), 513) << "a static trunk is an aggregator too";
    EXPECT_EQ(get_dot3adAggPartnerOperKey(514), 7);
    EXPECT_EQ(read_text(get_dot3adAggPartnerSystemID, 515), std::string("\x00\x1b\x21\x00\x00\x0b", 6));

    // LACP off: the port is no longer selected.
    EXPECT_EQ(set_lacpPortStatus(1, 2), 0);
    EXPECT_EQ(get_lacpPortStatus(1), 2);
    EXPECT_EQ(get_dot3adAggPortSelectedAggID(1), 0);
    EXPECT_LT(set_lacpPortStatus(1, 3), 0);
    // The platform does not answer: nothing is reported.
    sw().fault_set("cfg_get_lacp_port", -1, 2);
    EXPECT_EQ(get_dot3adAggPortPartnerOperKey(3), 0);
    EXPECT_EQ(get_lacpPortStatus(3), 2);
}

TEST_F(LacpTest, StatesAreBitsWithActivityFirst) {
    // Activity, aggregation, synchronization, collecting, distributing; the
    // partner of 1/1 asked for the short timeout; nobody answers 1/4
    // (defaulted); 1/5 runs no LACP; the static member 1/10 is in sync.
    const struct {
        const uint8_t *(*get)(int32_t, size_t *);
        int32_t port;
        std::string bits;
    } cases[] = {{get_dot3adAggPortActorOperState, 1, "\xbc"},   {get_dot3adAggPortActorAdminState, 1, "\xa0"},
                 {get_dot3adAggPortPartnerOperState, 1, "\xfc"}, {get_dot3adAggPortPartnerOperState, 3, "\xbc"},
                 {get_dot3adAggPortActorOperState, 4, "\xa2"},   {get_dot3adAggPortActorOperState, 5, "\x20"},
                 {get_dot3adAggPortPartnerOperState, 5, std::string(1, '\0')},
                 {get_dot3adAggPortActorOperState, 10, "\x3c"}};
    for (const auto &c : cases) EXPECT_EQ(read_text(c.get, c.port), c.bits) << c.port;
    // An individual partner leaves the port on its own.
    hear_individual(2);
    EXPECT_EQ(get_dot3adAggPortAggregateOrIndividual(3), 2);
    EXPECT_EQ(get_dot3adAggPortAggregateOrIndividual(1), 1);
}

TEST_F(LacpTest, PortListsAndCounterWidth) {
    std::string expected(32, '\0');
    expected[0] = '\xc0';
    EXPECT_EQ(read_text(get_dot3adAggPortListPorts, 2), expected);
    expected[0] = '\0';
    expected[2] = '\x08';  // 1/21 alone
    EXPECT_EQ(read_text(get_dot3adAggPortListPorts, 21), expected);
    // Counter32 of a 64-bit count.
    EXPECT_EQ(get_dot3adAggPortStatsMarkerPDUsRx(1), 3u);
}

TEST_F(LacpTest, DebugStatesOfEachPhase) {
    struct Debug {
        int32_t port, rx, mux, actor_churn, partner_churn;
        const char *reason;
    };
    const Debug cases[] = {
        {1, 1, 6, 1, 1, "Collecting and distributing"},  // current, forwarding
        {4, 3, 1, 2, 2, "No partner heard"},             // defaulted, churning
        {5, 5, 1, 3, 3, "LACP is off"},
        {20, 6, 1, 3, 3, "Link is down"},
    };
    auto check = [](const Debug &c) {
        SCOPED_TRACE(c.port);
        EXPECT_EQ(get_dot3adAggPortDebugRxState(c.port), c.rx);
        EXPECT_EQ(get_dot3adAggPortDebugMuxState(c.port), c.mux);
        EXPECT_EQ(get_dot3adAggPortDebugActorChurnState(c.port), c.actor_churn);
        EXPECT_EQ(get_dot3adAggPortDebugPartnerChurnState(c.port), c.partner_churn);
        EXPECT_EQ(read_text(get_dot3adAggPortDebugMuxReason, c.port), c.reason);
    };
    for (const auto &c : cases) check(c);
    // 1/4 hears a partner that will not aggregate: current, but detached.
    hear_individual(3);
    check({4, 1, 1, 3, 1, "Partner heard, not aggregating"});
}

}  // namespace
}  // namespace unit
