// Port authentication: the 802.1X status and action writers and their
// enumerations, rows for ports only, the authenticator's state, statistics
// and sessions as supplicants log on and off, with the RADIUS client's
// counters that follow them, and platform failures answered neutrally.
#include <functional>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

// The row checks of the port authentication tables report the rows they drop.
extern "C" {
#define AUTH_REMOVER(table) \
    void table##_removeEntry(int32_t i) { unit::rows().removed.push_back(#table " " + std::to_string(i)); }
AUTH_REMOVER(dot1xPaePortTable)
AUTH_REMOVER(dot1xAuthConfigTable)
AUTH_REMOVER(dot1xAuthStatsTable)
AUTH_REMOVER(dot1xAuthDiagTable)
AUTH_REMOVER(dot1xAuthSessionStatsTable)
AUTH_REMOVER(dot1xSuppConfigTable)
AUTH_REMOVER(dot1xSuppStatsTable)
AUTH_REMOVER(radiusMultipleServerTable)
AUTH_REMOVER(radiusAuthServerTable)
#undef AUTH_REMOVER
}

namespace unit {
namespace {

using Calls = std::vector<std::string>;

constexpr int32_t kPort5 = 5;  // unit 1 port 5: unit0 0, port0 4
const uint8_t kMac[6] = {0x02, 0, 0, 0, 0x01, 0x05};

class AuthTest : public SwitchTest {
protected:
    std::string scenario() const override {
        return R"({"trunks": [{"id": 1, "members": ["1/20", "1/21"]}], "ports": [{"select": ["1/5"], "link": true}],
                   "auth": {"dot1x": true, "radius_key": "s3cret", "radius_retransmit": 2,
                            "radius_servers": ["192.0.2.11", "192.0.2.12"]}})";
    }
};

// ---- writers and their enumerations --------------------------------------------------

TEST_F(AuthTest, WritersMapTheirEnumerationsToThePlatform) {
    const struct {
        const char *object;
        int (*set)(int32_t, int32_t);
        int32_t value;
        Calls calls;
        int result;
    } cases[] = {
        // TruthValue settings: true(1) is 1, false(2) is 0, nothing else.
        {"dot1xAuthReAuthEnabled", set_dot1xAuthReAuthEnabled, 1, {"cfg_set_dot1x_port_param(0,4,8,1)"}, 0},
        {"dot1xAuthReAuthEnabled", set_dot1xAuthReAuthEnabled, 2, {"cfg_set_dot1x_port_param(0,4,8,0)"}, 0},
        {"dot1xAuthReAuthEnabled", set_dot1xAuthReAuthEnabled, 0, {}, -1},
        {"dot1xAuthKeyTxEnabled", set_dot1xAuthKeyTxEnabled, 1, {"cfg_set_dot1x_port_param(0,4,9,1)"}, 0},
        {"dot1xAuthKeyTxEnabled", set_dot1xAuthKeyTxEnabled, 3, {}, -1},
        // inactive(1) is 0, active(2) is 1.
        {"dot1xSuppAccessCtrlWithAuth", set_dot1xSuppAccessCtrlWithAuth, 2, {"cfg_set_dot1x_port_param(0,4,14,1)"}, 0},
        {"dot1xSuppAccessCtrlWithAuth", set_dot1xSuppAccessCtrlWithAuth, 1, {"cfg_set_dot1x_port_param(0,4,14,0)"}, 0},
        {"dot1xSuppAccessCtrlWithAuth", set_dot1xSuppAccessCtrlWithAuth, 0, {}, -1},
        // Port control and directions travel as the MIB numbers them.
        {"dot1xAuthAuthControlledPortControl", set_dot1xAuthAuthControlledPortControl, 3,
         {"cfg_set_dot1x_port_param(0,4,1,3)"}, 0},
        {"dot1xAuthAdminControlledDirections", set_dot1xAuthAdminControlledDirections, 1,
         {"cfg_set_dot1x_port_param(0,4,0,1)"}, 0},
        // Actions: true(1) acts, false(2) does nothing, others are refused.
        {"dot1xPaePortInitialize", set_dot1xPaePortInitialize, 1, {"cfg_dot1x_port_initialize(0,4)"}, 0},
        {"dot1xPaePortInitialize", set_dot1xPaePortInitialize, 2, {}, 0},
        {"dot1xPaePortInitialize", set_dot1xPaePortInitialize, 3, {}, -1},
        {"dot1xPaePortReauthenticate", set_dot1xPaePortReauthenticate, 2, {}, 0},
        {"dot1xPaePortReauthenticate", set_dot1xPaePortReauthenticate, 0, {}, -1},
    };
    for (const auto &c : cases) {
        int result = 0;
        EXPECT_EQ(call_texts([&] { result = c.set(kPort5, c.value); }), c.calls) << c.object << " " << c.value;
        EXPECT_EQ(result, c.result) << c.object << " " << c.value;
    }
    // The switch-wide control: enabled(1) and disabled(2) only.
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_dot1xPaeSystemAuthControl(2), 0); }), Calls{"cfg_set_dot1x_enable(0)"});
    EXPECT_EQ(get_dot1xPaeSystemAuthControl(), 2);
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_dot1xPaeSystemAuthControl(0), -1); }), Calls{});
    EXPECT_EQ(get_dot1xPaeSystemAuthControl(), 2);
}

TEST_F(AuthTest, SettingsOutsideThePlatformsRangesAreRefusedAndKept) {
    const struct {
        int (*set)(int32_t, uint32_t);
        uint32_t (*get)(int32_t);
        uint32_t bad, good;
    } cases[] = {
        {set_dot1xAuthQuietPeriod, get_dot1xAuthQuietPeriod, 65536, 0},
        {set_dot1xAuthServerTimeout, get_dot1xAuthServerTimeout, 0, 65535},
        {set_dot1xAuthReAuthPeriod, get_dot1xAuthReAuthPeriod, 0, 7200},
        {set_dot1xSuppMaxStart, get_dot1xSuppMaxStart, 0, 9},
    };
    for (const auto &c : cases) {
        const uint32_t before = c.get(kPort5);
        EXPECT_LT(c.set(kPort5, c.bad), 0);
        EXPECT_EQ(c.get(kPort5), before);
        EXPECT_EQ(c.set(kPort5, c.good), 0);
        EXPECT_EQ(c.get(kPort5), c.good);
    }
    // A trunk has no authenticator: nothing reaches the platform.
    EXPECT_EQ(call_texts([] { EXPECT_LT(set_dot1xAuthQuietPeriod(513, 5), 0); }), Calls{});
}

// ---- rows ----------------------------------------------------------------------------

TEST_F(AuthTest, RowsArePortsOnlyAndGoWithTheirUnit) {
    int (*const populate[])(void *(*)(int32_t)) = {init_index_dot1xPaePortTable, init_index_dot1xAuthConfigTable,
                                                   init_index_dot1xAuthStatsTable, init_index_dot1xAuthDiagTable,
                                                   init_index_dot1xAuthSessionStatsTable,
                                                   init_index_dot1xSuppConfigTable, init_index_dot1xSuppStatsTable};
    for (auto init : populate) {
        rows().clear();
        init(add_int_row);
        ASSERT_FALSE(rows().ints.empty());
        for (int32_t i : rows().ints) EXPECT_LE(i, 512) << "a trunk or VLAN row " << i;
        EXPECT_EQ(rows().ints.front(), 1);
    }
    EXPECT_EQ(exists_entry_dot1xAuthConfigTable(513), 0);
    EXPECT_EQ(exists_entry_dot1xAuthConfigTable(kPort5), 1);
    sw().set_unit_present(0, false);
    rows().clear();
    EXPECT_EQ(exists_entry_dot1xAuthStatsTable(kPort5), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"dot1xAuthStatsTable 5"});
}

// ---- sessions ------------------------------------------------------------------------

TEST_F(AuthTest, ASupplicantsSessionMovesStateCountersAndRadius) {
    EXPECT_EQ(get_dot1xAuthPaeState(kPort5), 2);  // disconnected
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 2);
    EXPECT_EQ(read_text(get_dot1xAuthSessionId, kPort5), "");

    sw().dot1x_start(0, 4, "alice", kMac);
    EXPECT_EQ(get_dot1xAuthPaeState(kPort5), 4);          // authenticating
    EXPECT_EQ(get_dot1xAuthBackendAuthState(kPort5), 2);  // response: waiting for the server
    EXPECT_EQ(get_dot1xAuthEapolStartFramesRx(kPort5), 1u);
    EXPECT_EQ(get_dot1xAuthEapolFramesRx(kPort5), 2u);
    EXPECT_EQ(get_dot1xAuthEapolReqIdFramesTx(kPort5), 1u);
    EXPECT_EQ(get_dot1xAuthEntersAuthenticating(kPort5), 1u);
    EXPECT_EQ(read_octets(get_dot1xAuthLastEapolFrameSource, kPort5), std::vector<uint8_t>(kMac, kMac + 6));
    EXPECT_EQ(sw().radius_servers()[0].counters.pending_requests, 1u);

    sw().dot1x_answer(0, 4, true);
    EXPECT_EQ(get_dot1xAuthPaeState(kPort5), 5);  // authenticated
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 1);
    EXPECT_EQ(get_dot1xAuthAuthSuccessWhileAuthenticating(kPort5), 1u);
    EXPECT_EQ(read_text(get_dot1xAuthSessionUserName, kPort5), "alice");
    EXPECT_EQ(read_text(get_dot1xAuthSessionId, kPort5), "5-1");
    EXPECT_EQ(get_dot1xAuthSessionTerminateCause(kPort5), 999);
    EXPECT_EQ(get_dot1xAuthSessionAuthenticMethod(kPort5), 1);
    const auto server = sw().radius_servers()[0].counters;
    EXPECT_EQ(server.access_requests, 1u);
    EXPECT_EQ(server.access_accepts, 1u);
    EXPECT_EQ(server.pending_requests, 0u);

    // Traffic on the port while the session runs is the session's.
    sw().set_traffic(0, 4, 100000);
    usleep(30000);
    EXPECT_GT(get_dot1xAuthSessionFramesRx(kPort5), 0u);
    EXPECT_GT(get_dot1xAuthSessionTime(kPort5), 0u);

    sw().dot1x_logoff(0, 4);
    EXPECT_EQ(get_dot1xAuthPaeState(kPort5), 2);
    EXPECT_EQ(get_dot1xAuthSessionTerminateCause(kPort5), 1);  // supplicantLogoff
    EXPECT_EQ(get_dot1xAuthAuthEapLogoffWhileAuthenticated(kPort5), 1u);
    // An ended session's figures stand still.
    const uint32_t frames = get_dot1xAuthSessionFramesRx(kPort5);
    usleep(20000);
    EXPECT_EQ(get_dot1xAuthSessionFramesRx(kPort5), frames);
}

TEST_F(AuthTest, ServersThatAreDownTimeOutAndTheNextOneIsAsked) {
    sw().radius_server_down(0, true);
    sw().dot1x_start(0, 4, "bob", kMac);
    sw().dot1x_answer(0, 4, false);
    const auto servers = sw().radius_servers();
    // Retransmissions as configured (2), each attempt timing out.
    EXPECT_EQ(servers[0].counters.access_requests, 1u);
    EXPECT_EQ(servers[0].counters.access_retransmissions, 2u);
    EXPECT_EQ(servers[0].counters.timeouts, 3u);
    EXPECT_EQ(servers[1].counters.access_rejects, 1u);
    EXPECT_EQ(get_dot1xAuthPaeState(kPort5), 7);  // held
    EXPECT_EQ(get_dot1xAuthBackendAuthFails(kPort5), 1u);
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 2);

    // With no server up the authenticator times out by itself.
    sw().radius_server_down(1, true);
    sw().dot1x_start(0, 4, "bob", kMac);
    EXPECT_EQ(get_dot1xAuthAuthTimeoutsWhileAuthenticating(kPort5), 1u);
    EXPECT_EQ(get_dot1xAuthBackendAuthState(kPort5), 5);  // timeout
}

TEST_F(AuthTest, ActionsAndForcedControlEndSessionsWithTheirCause) {
    const struct {
        const char *what;
        std::function<int()> act;
        int32_t cause;
    } cases[] = {
        {"initialize", [] { return set_dot1xPaePortInitialize(kPort5, 1); }, 6},
        {"force unauthorized", [] { return set_dot1xAuthAuthControlledPortControl(kPort5, 1); }, 5},
    };
    for (const auto &c : cases) {
        ASSERT_EQ(set_dot1xAuthAuthControlledPortControl(kPort5, 2), 0);
        sw().dot1x_start(0, 4, "carol", kMac);
        sw().dot1x_answer(0, 4, true);
        EXPECT_EQ(c.act(), 0) << c.what;
        EXPECT_EQ(get_dot1xAuthSessionTerminateCause(kPort5), c.cause) << c.what;
    }
    // Forced control shows in the PAE state and the port's status.
    EXPECT_EQ(get_dot1xAuthPaeState(kPort5), 9);
    ASSERT_EQ(set_dot1xAuthAuthControlledPortControl(kPort5, 3), 0);
    EXPECT_EQ(get_dot1xAuthPaeState(kPort5), 8);
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 1);
}

TEST_F(AuthTest, ReauthenticationNeedsAnAuthenticatedSupplicant) {
    EXPECT_LT(set_dot1xPaePortReauthenticate(kPort5, 1), 0);
    sw().dot1x_start(0, 4, "dave", kMac);
    sw().dot1x_answer(0, 4, true);
    EXPECT_EQ(set_dot1xPaePortReauthenticate(kPort5, 1), 0);
    EXPECT_EQ(get_dot1xAuthAuthReauthsWhileAuthenticated(kPort5), 1u);
    // The port stays authorized while the server is asked again; a reject
    // ends the session.
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 1);
    sw().dot1x_answer(0, 4, false);
    EXPECT_EQ(get_dot1xAuthSessionTerminateCause(kPort5), 4);  // reauthFailed
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 2);
}

TEST_F(AuthTest, AuthenticationOffAuthorizesEveryPort) {
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 2);
    ASSERT_EQ(set_dot1xPaeSystemAuthControl(2), 0);
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 1);
    EXPECT_THROW(sw().dot1x_start(0, 4, "eve", kMac), swsim::Error);
}

TEST_F(AuthTest, PlatformFailuresReadAsNeutralValues) {
    sw().dot1x_start(0, 4, "frank", kMac);
    sw().fault_set("status_dot1x_port", -1, -1);
    sw().fault_set("cfg_get_dot1x_port_param", -1, -1);
    EXPECT_EQ(get_dot1xAuthPaeState(kPort5), 0);
    EXPECT_EQ(get_dot1xAuthAuthControlledPortStatus(kPort5), 0);
    EXPECT_EQ(get_dot1xAuthEapolFramesRx(kPort5), 0u);
    EXPECT_EQ(get_dot1xAuthReAuthEnabled(kPort5), 0);
    EXPECT_EQ(get_dot1xAuthQuietPeriod(kPort5), 0u);
    EXPECT_EQ(read_text(get_dot1xAuthSessionUserName, kPort5), "");
    sw().fault_clear();
    EXPECT_EQ(read_text(get_dot1xAuthSessionUserName, kPort5), "frank");
}

// ---- RADIUS ---------------------------------------------------------------------------

TEST_F(AuthTest, AServerAddedByItsAddressTakesTheDefaults) {
    ASSERT_EQ(set_radiusServerPortNumber(1645), 0);
    ASSERT_EQ(set_radiusServerTimeout(9), 0);
    ASSERT_EQ(set_radiusServerKey(bytes("other"), 5), 0);
    EXPECT_EQ(call_texts([] { EXPECT_EQ(set_radiusMultipleServerAddress(4, 0xc000020d), 0); }),
              Calls{"cfg_set_radius_server_address(3,3221225997)"});
    EXPECT_EQ(get_radiusMultipleServerPortNumber(4), 1645);
    EXPECT_EQ(get_radiusMultipleServerTimeout(4), 9);
    EXPECT_EQ(get_radiusMultipleServerRetransmit(4), 2);
    EXPECT_EQ(get_radiusMultipleServerStatus(4), 1);
    // The secret is written, never shown.
    EXPECT_EQ(read_text(get_radiusMultipleServerKey, 4), "");
    EXPECT_EQ(read_text(get_radiusServerKey), "");
    EXPECT_EQ(sw().radius_servers()[3].server.key, std::string("other"));
    rows().clear();
    init_index_radiusMultipleServerTable(add_int_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 2, 4}));
}

TEST_F(AuthTest, ServerWritersRefuseWhatTheSlotCannotTake) {
    const struct {
        const char *what;
        std::function<int()> set;
    } refused[] = {
        {"index 0", [] { return set_radiusMultipleServerAddress(0, 0xc000020d); }},
        {"index 6", [] { return set_radiusMultipleServerAddress(6, 0xc000020d); }},
        {"an address another slot holds", [] { return set_radiusMultipleServerAddress(3, 0xc000020b); }},
        {"a multicast address", [] { return set_radiusMultipleServerAddress(3, 0xe0000001); }},
        {"the port of a free slot", [] { return set_radiusMultipleServerPortNumber(3, 1812); }},
        {"valid on a free slot", [] { return set_radiusMultipleServerStatus(3, 1); }},
        {"invalid on a free slot", [] { return set_radiusMultipleServerStatus(3, 2); }},
        {"a key with a zero byte", [] { return set_radiusMultipleServerKey(1, bytes("a\0b"), 3); }},
        {"a key of 65 bytes", [] { return set_radiusMultipleServerKey(1, bytes(std::string(65, 'k').c_str()), 65); }},
    };
    for (const auto &c : refused) EXPECT_LT(c.set(), 0) << c.what;
    EXPECT_EQ(sw().radius_servers()[0].server.key, std::string("s3cret"));
    EXPECT_FALSE(sw().radius_servers()[2].server.in_use);
    // invalid(2) removes the server and its row goes.
    EXPECT_EQ(set_radiusMultipleServerStatus(1, 2), 0);
    rows().clear();
    EXPECT_EQ(exists_entry_radiusAuthServerTable(1), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"radiusAuthServerTable 1"});
}

TEST_F(AuthTest, ClientCountersFollowTheRequestsOfEachServer) {
    sw().dot1x_start(0, 4, "gina", kMac);
    usleep(20000);
    EXPECT_EQ(get_radiusAuthClientPendingRequests(1), 1u);
    sw().dot1x_answer(0, 4, true);
    EXPECT_EQ(get_radiusAuthServerAddress(1), 0xc000020bu);
    EXPECT_EQ(get_radiusAuthClientServerPortNumber(1), 1812);
    EXPECT_EQ(get_radiusAuthClientAccessRequests(1), 1u);
    EXPECT_EQ(get_radiusAuthClientAccessAccepts(1), 1u);
    EXPECT_EQ(get_radiusAuthClientPendingRequests(1), 0u);
    EXPECT_GE(get_radiusAuthClientRoundTripTime(1), 1u);
    EXPECT_EQ(get_radiusMultipleServerReachable(1), 1);
    EXPECT_EQ(get_radiusAuthClientAccessRequests(2), 0u);
    // A free slot and a failing platform read as zero.
    EXPECT_EQ(get_radiusAuthClientAccessRequests(5), 0u);
    sw().fault_set("status_radius_server", -1, 1);
    EXPECT_EQ(get_radiusAuthClientAccessAccepts(1), 0u);
}

}  // namespace
}  // namespace unit
