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
    // An octet-string column's value.
    template <class Get>
    static std::string bits(Get get, int32_t i) {
        size_t len = 0;
        const uint8_t *p = get(i, &len);
        return text(p, len);
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
    EXPECT_EQ(bits(get_dot3adAggPartnerSystemID, 515), std::string("\x00\x1b\x21\x00\x00\x0b", 6));

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
    // Activity, aggregation, synchronization, collecting, distributing.
    EXPECT_EQ(bits(get_dot3adAggPortActorOperState, 1), "\xbc");
    EXPECT_EQ(bits(get_dot3adAggPortActorAdminState, 1), "\xa0");
    // The partner asked for the short timeout.
    EXPECT_EQ(bits(get_dot3adAggPortPartnerOperState, 1), "\xfc");
    EXPECT_EQ(bits(get_dot3adAggPortPartnerOperState, 3), "\xbc");
    // Nobody answers: defaulted; no LACP at all: aggregation only.
    EXPECT_EQ(bits(get_dot3adAggPortActorOperState, 4), "\xa2");
    EXPECT_EQ(bits(get_dot3adAggPortActorOperState, 5), "\x20");
    EXPECT_EQ(bits(get_dot3adAggPortPartnerOperState, 5), std::string(1, '\0'));
    // A static member is in sync without LACP.
    EXPECT_EQ(bits(get_dot3adAggPortActorOperState, 10), "\x3c");
    // An individual partner leaves the port on its own.
    swsim::Switch::LacpPartner lone;
    lone.aggregatable = false;
    sw().lacp_set_partner(0, 2, lone);
    EXPECT_EQ(get_dot3adAggPortAggregateOrIndividual(3), 2);
    EXPECT_EQ(get_dot3adAggPortAggregateOrIndividual(1), 1);
}

TEST_F(LacpTest, PortListsAndCounterWidth) {
    std::string expected(32, '\0');
    expected[0] = '\xc0';
    EXPECT_EQ(bits(get_dot3adAggPortListPorts, 2), expected);
    expected[0] = '\0';
    expected[2] = '\x08';  // 1/21 alone
    EXPECT_EQ(bits(get_dot3adAggPortListPorts, 21), expected);
    // Counter32 of a 64-bit count.
    EXPECT_EQ(get_dot3adAggPortStatsMarkerPDUsRx(1), 3u);
}

TEST_F(LacpTest, DebugStatesOfEachPhase) {
    size_t len = 0;
    auto reason = [&len](int32_t i) {
        const uint8_t *p = get_dot3adAggPortDebugMuxReason(i, &len);
        return text(p, len);
    };
    // current / forwarding; defaulted / churning; LACP off; link down.
    EXPECT_EQ(get_dot3adAggPortDebugRxState(1), 1);
    EXPECT_EQ(get_dot3adAggPortDebugMuxState(1), 6);
    EXPECT_EQ(reason(1), "Collecting and distributing");
    EXPECT_EQ(get_dot3adAggPortDebugActorChurnState(1), 1);
    EXPECT_EQ(get_dot3adAggPortDebugPartnerChurnState(1), 1);
    EXPECT_EQ(get_dot3adAggPortDebugRxState(4), 3);
    EXPECT_EQ(get_dot3adAggPortDebugMuxState(4), 1);
    EXPECT_EQ(reason(4), "No partner heard");
    EXPECT_EQ(get_dot3adAggPortDebugActorChurnState(4), 2);
    EXPECT_EQ(get_dot3adAggPortDebugPartnerChurnState(4), 2);
    EXPECT_EQ(get_dot3adAggPortDebugRxState(5), 5);
    EXPECT_EQ(reason(5), "LACP is off");
    EXPECT_EQ(get_dot3adAggPortDebugPartnerChurnState(5), 3);
    EXPECT_EQ(get_dot3adAggPortDebugRxState(20), 6);
    EXPECT_EQ(reason(20), "Link is down");

    // 1/4 hears a partner that will not aggregate: current, but detached.
    swsim::Switch::LacpPartner lone;
    lone.aggregatable = false;
    sw().lacp_set_partner(0, 3, lone);
    EXPECT_EQ(get_dot3adAggPortDebugRxState(4), 1);
    EXPECT_EQ(get_dot3adAggPortDebugMuxState(4), 1);
    EXPECT_EQ(reason(4), "Partner heard, not aggregating");
}

}  // namespace
}  // namespace unit
