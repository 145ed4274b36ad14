// 802.1X port authentication (IEEE8021-PAE-MIB): the switch's switch
// (dot1xPaeSystemAuthControl), the ports' PAE and authenticator settings,
// the authenticator's state, EAPOL statistics, state-machine diagnostics and
// sessions, and the supplicant side that the ports never run.
//
// Rows are the interface indexes of the ports (trunks have no port
// authentication); each read asks the platform for the port's record.
#include <cstdio>
#include <cstring>

#include "agent/ifindex.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

constexpr int32_t kTrue = 1, kFalse = 2;

struct Port {
    int unit0, port0;
    explicit Port(int32_t ifindex) : unit0(ifindex_to_unit0(ifindex)), port0(ifindex_to_port0(ifindex)) {}
};

// The port's record; a zeroed one when the platform cannot give it.
sw_dot1x_port_t record(int32_t i) {
    sw_dot1x_port_t r{};
    const Port p(i);
    if (ifindex_is_trunk(i) || status_dot1x_port(p.unit0, p.port0, &r) < 0) std::memset(&r, 0, sizeof r);
    return r;
}

uint32_t param(int32_t i, int which) {
    const Port p(i);
    uint32_t value = 0;
    if (ifindex_is_trunk(i) || cfg_get_dot1x_port_param(p.unit0, p.port0, which, &value) < 0) return 0;
    return value;
}
int set_param(int32_t i, int which, uint32_t value) {
    if (ifindex_is_trunk(i)) return -1;
    const Port p(i);
    return cfg_set_dot1x_port_param(p.unit0, p.port0, which, value);
}

// TruthValue over the platform's 1/0 switch; a value read as 0 is unknown.
int32_t truth_param(int32_t i, int which) {
    const Port p(i);
    uint32_t value = 0;
    if (ifindex_is_trunk(i) || cfg_get_dot1x_port_param(p.unit0, p.port0, which, &value) < 0) return 0;
    return value != 0 ? kTrue : kFalse;
}
int set_truth_param(int32_t i, int which, int32_t value) {
    if (value != kTrue && value != kFalse) return -1;
    return set_param(i, which, value == kTrue ? 1 : 0);
}

// An action column: true(1) runs the action, false(2) does nothing.
int port_action(int32_t i, int32_t value, int (*action)(int, int)) {
    if (value == kFalse) return 0;
    if (value != kTrue || ifindex_is_trunk(i)) return -1;
    const Port p(i);
    return action(p.unit0, p.port0);
}

// authorized(1) or unauthorized(2).
int32_t port_status(uint32_t authorized) { return authorized != 0 ? 1 : 2; }

// A MAC address in a static area of the caller's.
const uint8_t *mac_of(const uint8_t (&src)[6], uint8_t (&area)[6], size_t *len) {
    std::memcpy(area, src, sizeof area);
    *len = sizeof area;
    return area;
}

int populate_ports(void *(*create)(int32_t)) { return ifindex_populate(create, false); }

}  // namespace

extern "C" {

// ---- dot1xPaeSystemAuthControl --------------------------------------------------------

// enabled(1), disabled(2).
int32_t get_dot1xPaeSystemAuthControl(void) { return cfg_get_dot1x_enable() == 1 ? 1 : 2; }
int set_dot1xPaeSystemAuthControl(int32_t value) {
    if (value != 1 && value != 2) return -1;
    return cfg_set_dot1x_enable(value == 1 ? 1 : 0);
}

// ---- row functions: every port of the stack ------------------------------------------

#define SA_DOT1X_ROWS(table)                                                                          \
    int init_index_##table(void *(*create)(int32_t)) { return populate_ports(create); }                \
    int exists_entry_##table(int32_t i) { return !ifindex_is_trunk(i) && ifindex_row_exists(i, table##_removeEntry); }
SA_DOT1X_ROWS(dot1xPaePortTable)
SA_DOT1X_ROWS(dot1xAuthConfigTable)
SA_DOT1X_ROWS(dot1xAuthStatsTable)
SA_DOT1X_ROWS(dot1xAuthDiagTable)
SA_DOT1X_ROWS(dot1xAuthSessionStatsTable)
SA_DOT1X_ROWS(dot1xSuppConfigTable)
SA_DOT1X_ROWS(dot1xSuppStatsTable)
#undef SA_DOT1X_ROWS

// ---- dot1xPaePortTable ------------------------------------------------------------------

// The 2004 edition of the protocol.
uint32_t get_dot1xPaePortProtocolVersion(int32_t) { return 2; }
// BITS: dot1xPaePortAuthCapable(0) only; the ports are no supplicants.
const uint8_t *get_dot1xPaePortCapabilities(int32_t, size_t *len) {
    static const uint8_t kAuthCapable[1] = {0x80};
    *len = sizeof kAuthCapable;
    return kAuthCapable;
}
int32_t get_dot1xPaePortInitialize(int32_t) { return kFalse; }
int set_dot1xPaePortInitialize(int32_t i, int32_t value) { return port_action(i, value, cfg_dot1x_port_initialize); }
int32_t get_dot1xPaePortReauthenticate(int32_t) { return kFalse; }
int set_dot1xPaePortReauthenticate(int32_t i, int32_t value) {
    return port_action(i, value, cfg_dot1x_port_reauthenticate);
}

// ---- dot1xAuthConfigTable -----------------------------------------------------------------

int32_t get_dot1xAuthPaeState(int32_t i) { return int32_t(record(i).pae_state); }
int32_t get_dot1xAuthBackendAuthState(int32_t i) { return int32_t(record(i).backend_state); }
// both(0), in(1).
int32_t get_dot1xAuthAdminControlledDirections(int32_t i) { return int32_t(param(i, SW_DOT1X_ADMIN_DIRECTIONS)); }
int set_dot1xAuthAdminControlledDirections(int32_t i, int32_t v) {
    return set_param(i, SW_DOT1X_ADMIN_DIRECTIONS, uint32_t(v));
}
int32_t get_dot1xAuthOperControlledDirections(int32_t i) { return int32_t(record(i).oper_directions); }
int32_t get_dot1xAuthAuthControlledPortStatus(int32_t i) {
    const sw_dot1x_port_t r = record(i);
    return r.pae_state == 0 ? 0 : port_status(r.authorized);
}
// forceUnauthorized(1), auto(2), forceAuthorized(3): the platform's numbers.
int32_t get_dot1xAuthAuthControlledPortControl(int32_t i) { return int32_t(param(i, SW_DOT1X_PORT_CONTROL)); }
int set_dot1xAuthAuthControlledPortControl(int32_t i, int32_t v) {
    return set_param(i, SW_DOT1X_PORT_CONTROL, uint32_t(v));
}
// Periods and counts: the platform's number as it is.
#define SA_DOT1X_NUMBER(column, which) \
    uint32_t get_##column(int32_t i) { return param(i, which); }
#define SA_DOT1X_SETTABLE_NUMBER(column, which) \
    SA_DOT1X_NUMBER(column, which)              \
    int set_##column(int32_t i, uint32_t v) { return set_param(i, which, v); }
SA_DOT1X_SETTABLE_NUMBER(dot1xAuthQuietPeriod, SW_DOT1X_QUIET_PERIOD)
SA_DOT1X_NUMBER(dot1xAuthTxPeriod, SW_DOT1X_TX_PERIOD)
SA_DOT1X_NUMBER(dot1xAuthSuppTimeout, SW_DOT1X_SUPP_TIMEOUT)
SA_DOT1X_SETTABLE_NUMBER(dot1xAuthServerTimeout, SW_DOT1X_SERVER_TIMEOUT)
SA_DOT1X_NUMBER(dot1xAuthMaxReq, SW_DOT1X_MAX_REQ)
SA_DOT1X_SETTABLE_NUMBER(dot1xAuthReAuthPeriod, SW_DOT1X_REAUTH_PERIOD)
SA_DOT1X_SETTABLE_NUMBER(dot1xSuppHeldPeriod, SW_DOT1X_SUPP_HELD_PERIOD)
SA_DOT1X_SETTABLE_NUMBER(dot1xSuppAuthPeriod, SW_DOT1X_SUPP_AUTH_PERIOD)
SA_DOT1X_SETTABLE_NUMBER(dot1xSuppStartPeriod, SW_DOT1X_SUPP_START_PERIOD)
SA_DOT1X_SETTABLE_NUMBER(dot1xSuppMaxStart, SW_DOT1X_SUPP_MAX_START)
#undef SA_DOT1X_SETTABLE_NUMBER
#undef SA_DOT1X_NUMBER
int32_t get_dot1xAuthReAuthEnabled(int32_t i) { return truth_param(i, SW_DOT1X_REAUTH_ENABLED); }
int set_dot1xAuthReAuthEnabled(int32_t i, int32_t v) { return set_truth_param(i, SW_DOT1X_REAUTH_ENABLED, v); }
int32_t get_dot1xAuthKeyTxEnabled(int32_t i) { return truth_param(i, SW_DOT1X_KEY_TX_ENABLED); }
int set_dot1xAuthKeyTxEnabled(int32_t i, int32_t v) { return set_truth_param(i, SW_DOT1X_KEY_TX_ENABLED, v); }

// ---- counters of dot1xAuthStatsTable, dot1xAuthDiagTable, dot1xSuppStatsTable --------------

#define SA_DOT1X_COUNTER(name, field, n) \
    uint32_t get_##name(int32_t i) { return record(i).field[n]; }
#define SA_AUTH_STAT(name, n) SA_DOT1X_COUNTER(name, auth_counters, n)
#define SA_AUTH_DIAG(name, n) SA_DOT1X_COUNTER(name, diag_counters, n)
#define SA_SUPP_STAT(name, n) SA_DOT1X_COUNTER(name, supp_counters, n)
SA_AUTH_STAT(dot1xAuthEapolFramesRx, 0)
SA_AUTH_STAT(dot1xAuthEapolFramesTx, 1)
SA_AUTH_STAT(dot1xAuthEapolStartFramesRx, 2)
SA_AUTH_STAT(dot1xAuthEapolLogoffFramesRx, 3)
SA_AUTH_STAT(dot1xAuthEapolRespIdFramesRx, 4)
SA_AUTH_STAT(dot1xAuthEapolRespFramesRx, 5)
SA_AUTH_STAT(dot1xAuthEapolReqIdFramesTx, 6)
SA_AUTH_STAT(dot1xAuthEapolReqFramesTx, 7)
SA_AUTH_STAT(dot1xAuthInvalidEapolFramesRx, 8)
SA_AUTH_STAT(dot1xAuthEapLengthErrorFramesRx, 9)
SA_AUTH_DIAG(dot1xAuthEntersConnecting, 0)
SA_AUTH_DIAG(dot1xAuthEapLogoffsWhileConnecting, 1)
SA_AUTH_DIAG(dot1xAuthEntersAuthenticating, 2)
SA_AUTH_DIAG(dot1xAuthAuthSuccessWhileAuthenticating, 3)
SA_AUTH_DIAG(dot1xAuthAuthTimeoutsWhileAuthenticating, 4)
SA_AUTH_DIAG(dot1xAuthAuthFailWhileAuthenticating, 5)
SA_AUTH_DIAG(dot1xAuthAuthReauthsWhileAuthenticating, 6)
SA_AUTH_DIAG(dot1xAuthAuthEapStartsWhileAuthenticating, 7)
SA_AUTH_DIAG(dot1xAuthAuthEapLogoffWhileAuthenticating, 8)
SA_AUTH_DIAG(dot1xAuthAuthReauthsWhileAuthenticated, 9)
SA_AUTH_DIAG(dot1xAuthAuthEapStartsWhileAuthenticated, 10)
SA_AUTH_DIAG(dot1xAuthAuthEapLogoffWhileAuthenticated, 11)
SA_AUTH_DIAG(dot1xAuthBackendResponses, 12)
SA_AUTH_DIAG(dot1xAuthBackendAccessChallenges, 13)
SA_AUTH_DIAG(dot1xAuthBackendOtherRequestsToSupplicant, 14)
SA_AUTH_DIAG(dot1xAuthBackendNonNakResponsesFromSupplicant, 15)
SA_AUTH_DIAG(dot1xAuthBackendAuthSuccesses, 16)
SA_AUTH_DIAG(dot1xAuthBackendAuthFails, 17)
SA_SUPP_STAT(dot1xSuppEapolFramesRx, 0)
SA_SUPP_STAT(dot1xSuppEapolFramesTx, 1)
SA_SUPP_STAT(dot1xSuppEapolStartFramesTx, 2)
SA_SUPP_STAT(dot1xSuppEapolLogoffFramesTx, 3)
SA_SUPP_STAT(dot1xSuppEapolRespIdFramesTx, 4)
SA_SUPP_STAT(dot1xSuppEapolRespFramesTx, 5)
SA_SUPP_STAT(dot1xSuppEapolReqIdFramesRx, 6)
SA_SUPP_STAT(dot1xSuppEapolReqFramesRx, 7)
SA_SUPP_STAT(dot1xSuppInvalidEapolFramesRx, 8)
SA_SUPP_STAT(dot1xSuppEapLengthErrorFramesRx, 9)
#undef SA_SUPP_STAT
#undef SA_AUTH_DIAG
#undef SA_AUTH_STAT
#undef SA_DOT1X_COUNTER

uint32_t get_dot1xAuthLastEapolFrameVersion(int32_t i) { return record(i).last_eapol_version; }
const uint8_t *get_dot1xAuthLastEapolFrameSource(int32_t i, size_t *len) {
    static uint8_t area[6];
    return mac_of(record(i).last_eapol_source, area, len);
}
uint32_t get_dot1xSuppLastEapolFrameVersion(int32_t i) { return record(i).supp_last_eapol_version; }
const uint8_t *get_dot1xSuppLastEapolFrameSource(int32_t i, size_t *len) {
    static uint8_t area[6];
    return mac_of(record(i).supp_last_eapol_source, area, len);
}

// ---- dot1xAuthSessionStatsTable ------------------------------------------------------------

uint64_t get_dot1xAuthSessionOctetsRx(int32_t i) { return record(i).session_octets_rx; }
uint64_t get_dot1xAuthSessionOctetsTx(int32_t i) { return record(i).session_octets_tx; }
uint32_t get_dot1xAuthSessionFramesRx(int32_t i) { return record(i).session_frames_rx; }
uint32_t get_dot1xAuthSessionFramesTx(int32_t i) { return record(i).session_frames_tx; }
// "<port>-<number>": the port's interface index and its session count; ""
// before the port's first session.
const uint8_t *get_dot1xAuthSessionId(int32_t i, size_t *len) {
    static char text[32];
    const sw_dot1x_port_t r = record(i);
    const int n = r.session_number == 0 ? 0 : std::snprintf(text, sizeof text, "%d-%u", i, r.session_number);
    *len = n > 0 ? size_t(n) : 0;
    return reinterpret_cast<const uint8_t *>(text);
}
// remoteAuthServer(1), localAuthServer(2).
int32_t get_dot1xAuthSessionAuthenticMethod(int32_t i) { return int32_t(record(i).session_method); }
uint32_t get_dot1xAuthSessionTime(int32_t i) { return record(i).session_time_cs; }
int32_t get_dot1xAuthSessionTerminateCause(int32_t i) { return int32_t(record(i).terminate_cause); }
const uint8_t *get_dot1xAuthSessionUserName(int32_t i, size_t *len) {
    static char text[SW_DOT1X_USER_SIZE];
    const sw_dot1x_port_t r = record(i);
    std::memcpy(text, r.session_user, sizeof text);
    text[sizeof text - 1] = '\0';
    *len = std::strlen(text);
    return reinterpret_cast<const uint8_t *>(text);
}

// ---- dot1xSuppConfigTable -----------------------------------------------------------------

int32_t get_dot1xSuppPaeState(int32_t i) { return int32_t(record(i).supp_pae_state); }
int32_t get_dot1xSuppControlledPortStatus(int32_t i) {
    const sw_dot1x_port_t r = record(i);
    return r.supp_pae_state == 0 ? 0 : port_status(r.supp_authorized);
}
// inactive(1), active(2).
int32_t get_dot1xSuppAccessCtrlWithAuth(int32_t i) {
    const int32_t truth = truth_param(i, SW_DOT1X_SUPP_ACCESS_CTRL);
    return truth == 0 ? 0 : truth == kTrue ? 2 : 1;
}
int set_dot1xSuppAccessCtrlWithAuth(int32_t i, int32_t v) {
    if (v != 1 && v != 2) return -1;
    return set_param(i, SW_DOT1X_SUPP_ACCESS_CTRL, v == 2 ? 1 : 0);
}
int32_t get_dot1xSuppBackendState(int32_t i) { return int32_t(record(i).supp_backend_state); }

}  // extern "C"
