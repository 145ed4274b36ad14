// Port authentication of the simulated switch: 802.1X authenticators driven
// by operator-attached supplicants, and the RADIUS client they ask.
#include "auth.hpp"

#include <algorithm>
#include <cstring>

#include "helpers.hpp"
#include "model.hpp"
#include "scenario_field.hpp"
#include "util.hpp"

namespace swsim::auth {
namespace {

using layout::AuthPort;

// Authenticator PAE and backend states, termination causes (the MIB's).
enum : uint32_t { kPaeDisconnected = 2, kPaeConnecting = 3, kPaeAuthenticating = 4, kPaeAuthenticated = 5,
                  kPaeHeld = 7, kPaeForceAuth = 8, kPaeForceUnauth = 9 };
enum : uint32_t { kBackendResponse = 2, kBackendFail = 4, kBackendTimeout = 5, kBackendIdle = 6 };
enum : uint32_t { kCauseLogoff = 1, kCauseRestart = 3, kCauseReauthFailed = 4, kCauseForceUnauth = 5,
                  kCauseReInit = 6 };
enum : int { kControlForceUnauth = 1, kControlAuto = 2, kControlForceAuth = 3 };
// Counter positions: dot1xAuthStatsTable columns 1 .. 10, less one.
enum { kFramesRx, kFramesTx, kStartRx, kLogoffRx, kRespIdRx, kRespRx, kReqIdTx, kReqTx };
// dot1xAuthDiagTable columns 1 .. 18, less one.
enum { kEntersConnecting, kLogoffWhileConnecting, kEntersAuthenticating, kSuccessWhileAuthenticating,
       kTimeoutsWhileAuthenticating, kFailWhileAuthenticating, kReauthsWhileAuthenticating,
       kStartsWhileAuthenticating, kLogoffWhileAuthenticating, kReauthsWhileAuthenticated,
       kStartsWhileAuthenticated, kLogoffWhileAuthenticated, kBackendResponses, kBackendChallenges,
       kBackendOtherRequests, kBackendNonNak, kBackendSuccesses, kBackendFails };
constexpr uint8_t kNoServer = 0xff;
constexpr uint32_t kEapolVersion = 2;

struct Range {
    uint32_t lo, hi, initial;
};
// SW_DOT1X_* in order.
constexpr Range kParams[SW_DOT1X_PARAMS] = {
    {0, 1, 0},     {1, 3, kControlAuto}, {0, 65535, 60}, {1, 65535, 30}, {1, 65535, 30},
    {1, 65535, 30}, {1, 10, 2},          {1, 0xffffffffu, 3600}, {0, 1, 0}, {0, 1, 0},
    {0, 65535, 60}, {1, 65535, 30},      {1, 65535, 30}, {1, 65535, 3},  {0, 1, 0}};

constexpr uint32_t kReserved = 0xe0000000;  // multicast and reserved from here

layout::AuthConfig &cfg(const View &v) { return v.cfg->auth; }
layout::AuthHardware &hw(const View &v) { return v.hw->auth; }

AuthPort *port_of(const View &v, int unit0, int port0) {
    const int phys = model::phys_of(v, unit0, port0);
    return phys < 0 ? nullptr : &hw(v).ports[phys];
}
uint32_t &param(const View &v, int unit0, int port0, int p) {
    return cfg(v).params[model::phys_index(unit0, port0)][p];
}
bool slot_ok(int slot) { return slot >= 0 && slot < SW_RADIUS_SERVERS; }
layout::RadiusServerConfig *server_in_use(const View &v, int slot) {
    return slot_ok(slot) && cfg(v).servers[slot].in_use ? &cfg(v).servers[slot] : nullptr;
}

uint32_t cs_since(int64_t ns) { return uint32_t(model::ns_since(ns) / 10'000'000); }

// The port's counters that a session's statistics are taken from.
struct Traffic {
    uint64_t octets_rx, octets_tx, frames_rx, frames_tx;
};
Traffic traffic_now(const View &v, int phys) {
    namespace s = swp::stat;
    return {model::counter(v, phys, s::kHCInOctets), model::counter(v, phys, s::kHCOutOctets),
            model::counter(v, phys, s::kHCInUcast), model::counter(v, phys, s::kHCOutUcast)};
}
// The running session's time and counters, into the record.
void session_figures(const View &v, int phys, const AuthPort &p, sw_dot1x_port_t &s) {
    if (p.session_start_ns == 0) return;
    const Traffic t = traffic_now(v, phys);
    s.session_time_cs = cs_since(p.session_start_ns);
    s.session_octets_rx = t.octets_rx - p.start_octets_rx;
    s.session_octets_tx = t.octets_tx - p.start_octets_tx;
    s.session_frames_rx = uint32_t(t.frames_rx - p.start_frames_rx);
    s.session_frames_tx = uint32_t(t.frames_tx - p.start_frames_tx);
}

void begin_session(const View &v, int phys, AuthPort &p) {
    const Traffic t = traffic_now(v, phys);
    p.session_start_ns = model::realtime_ns();
    p.start_octets_rx = t.octets_rx;
    p.start_octets_tx = t.octets_tx;
    p.start_frames_rx = t.frames_rx;
    p.start_frames_tx = t.frames_tx;
    sw_dot1x_port_t &s = p.status;
    ++s.session_number;
    s.session_method = 1;
    s.terminate_cause = SW_DOT1X_NOT_TERMINATED;
    s.session_time_cs = 0;
    s.session_octets_rx = s.session_octets_tx = 0;
    s.session_frames_rx = s.session_frames_tx = 0;
}
// The session's figures stay as they were when it ended.
void end_session(const View &v, int phys, AuthPort &p, uint32_t cause) {
    if (p.session_start_ns == 0) return;
    session_figures(v, phys, p, p.status);
    p.session_start_ns = 0;
    p.status.terminate_cause = cause;
}

// A request in flight is dropped: the server's pending count falls.
void drop_request(const View &v, AuthPort &p) {
    if (p.server != kNoServer && server_in_use(v, p.server))
        hw(v).servers[p.server].pending_requests -= hw(v).servers[p.server].pending_requests > 0;
    p.server = kNoServer;
}

// The authenticator asks the servers in slot order (see ops::supplicant_start).
void send_request(const View &v, AuthPort &p) {
    sw_dot1x_port_t &s = p.status;
    s.pae_state = kPaeAuthenticating;
    s.backend_state = kBackendResponse;
    ++s.diag_counters[kEntersAuthenticating];
    for (int slot = 0; slot < SW_RADIUS_SERVERS; ++slot) {
        const layout::RadiusServerConfig *server = server_in_use(v, slot);
        if (!server) continue;
        sw_radius_counters_t &c = hw(v).servers[slot];
        ++c.access_requests;
        if (hw(v).server_down[slot]) {
            c.access_retransmissions += server->retransmit;
            c.timeouts += server->retransmit + 1;
            c.reachable = 0;
            continue;
        }
        ++c.pending_requests;
        p.server = uint8_t(slot);
        p.request_sent_ns = model::realtime_ns();
        return;
    }
    // Nobody answered.
    s.backend_state = kBackendTimeout;
    ++s.diag_counters[kTimeoutsWhileAuthenticating];
    s.pae_state = kPaeHeld;
}

[[noreturn]] void fail(const std::string &what) { throw Error(what); }

AuthPort &operator_port(View &v, int unit0, int port0) {
    AuthPort *p = port_of(v, unit0, port0);
    if (!p) fail("no port " + std::to_string(unit0 + 1) + "/" + std::to_string(port0 + 1));
    return *p;
}

void init_port(AuthPort &p) {
    std::memset(&p, 0, sizeof p);
    p.server = kNoServer;
    p.status.pae_state = kPaeDisconnected;
    p.status.backend_state = kBackendIdle;
    p.status.terminate_cause = SW_DOT1X_NOT_TERMINATED;
    p.status.supp_pae_state = 1;      // disconnected
    p.status.supp_backend_state = 2;  // idle
}

int set_range(uint32_t &field, int value, int lo, int hi) {
    if (value < lo || value > hi) return -1;
    field = uint32_t(value);
    return 0;
}
int set_key(char (&field)[SW_RADIUS_KEY_SIZE], const char *key) {
    if (!key || strnlen(key, SW_RADIUS_KEY_SIZE) >= SW_RADIUS_KEY_SIZE) return -1;
    copy_text(field, key);
    return 0;
}

}  // namespace

void defaults(View &v) {
    layout::AuthConfig &c = cfg(v);
    c.dot1x_on = 0;
    for (auto &port : c.params)
        for (int i = 0; i < SW_DOT1X_PARAMS; ++i) port[i] = kParams[i].initial;
    c.radius_port = 1812;
    c.radius_retransmit = 3;
    c.radius_timeout = 5;
    std::memset(c.radius_key, 0, sizeof c.radius_key);
    std::memset(c.servers, 0, sizeof c.servers);
    for (AuthPort &p : hw(v).ports) init_port(p);
    std::memset(hw(v).servers, 0, sizeof hw(v).servers);
    std::memset(hw(v).server_down, 0, sizeof hw(v).server_down);
}

int port_status(const View &v, int unit0, int port0, sw_dot1x_port_t *out) {
    const AuthPort *p = port_of(v, unit0, port0);
    if (!p || !out) return -1;
    const int phys = model::phys_index(unit0, port0);
    sw_dot1x_port_t s = p->status;
    session_figures(v, phys, *p, s);
    s.oper_directions = param(v, unit0, port0, SW_DOT1X_ADMIN_DIRECTIONS);
    const uint32_t control = param(v, unit0, port0, SW_DOT1X_PORT_CONTROL);
    if (control == kControlForceAuth) s.pae_state = kPaeForceAuth;
    if (control == kControlForceUnauth) s.pae_state = kPaeForceUnauth;
    s.authorized = !cfg(v).dot1x_on || s.pae_state == kPaeAuthenticated || s.pae_state == kPaeForceAuth ||
                   (s.pae_state == kPaeAuthenticating && p->session_start_ns != 0);
    *out = s;
    return 0;
}

Switch::Dot1xPortInfo port_info(const View &v, int unit0, int port0) {
    Switch::Dot1xPortInfo info;
    if (port_status(v, unit0, port0, &info.status) < 0)
        fail("no port " + std::to_string(unit0 + 1) + "/" + std::to_string(port0 + 1));
    const AuthPort &p = *port_of(v, unit0, port0);
    info.supplicant = p.supplicant != 0;
    info.server = p.server == kNoServer ? -1 : p.server;
    std::copy(std::begin(cfg(v).params[model::phys_index(unit0, port0)]),
              std::end(cfg(v).params[model::phys_index(unit0, port0)]), info.params);
    return info;
}

std::vector<Switch::RadiusServerInfo> radius_info(const View &v) {
    std::vector<Switch::RadiusServerInfo> out;
    for (int slot = 0; slot < SW_RADIUS_SERVERS; ++slot) {
        Switch::RadiusServerInfo info;
        info.slot = slot;
        calls::cfg_get_radius_server(v, slot, &info.server);
        info.counters = hw(v).servers[slot];
        info.down = hw(v).server_down[slot] != 0;
        out.push_back(info);
    }
    return out;
}

void build(View &v, const Field &f) {
    defaults(v);
    f.expect_object({"dot1x", "radius_port", "radius_retransmit", "radius_timeout", "radius_key", "radius_servers",
                     "radius_down"});
    auto check = [](const Field &where, int rc) {
        if (rc < 0) where.fail("is not accepted");
    };
    if (f.has("dot1x")) cfg(v).dot1x_on = f.at("dot1x").boolean();
    if (f.has("radius_port")) calls::cfg_set_radius_port(v, int(f.at("radius_port").integer(1, 65535)));
    if (f.has("radius_retransmit")) calls::cfg_set_radius_retransmit(v, int(f.at("radius_retransmit").integer(1, 30)));
    if (f.has("radius_timeout")) calls::cfg_set_radius_timeout(v, int(f.at("radius_timeout").integer(1, 65535)));
    if (f.has("radius_key")) copy_text(cfg(v).radius_key, f.at("radius_key").text(SW_RADIUS_KEY_SIZE - 1));
    if (f.has("radius_servers")) {
        const std::vector<Field> servers = f.at("radius_servers").items();
        if (servers.size() > SW_RADIUS_SERVERS) f.at("radius_servers").fail("holds at most 5 servers");
        for (std::size_t i = 0; i < servers.size(); ++i) {
            uint32_t addr = 0;
            const std::string text = servers[i].text(15);
            check(servers[i], helpers::ip_str_to_uint32(text.c_str(), &addr));
            check(servers[i], calls::cfg_set_radius_server_address(v, int(i), addr));
        }
    }
    if (f.has("radius_down"))
        for (const Field &slot : f.at("radius_down").items())
            hw(v).server_down[slot.integer(1, SW_RADIUS_SERVERS) - 1] = 1;
}

namespace ops {

void supplicant_start(View &v, int unit0, int port0, const std::string &user, const uint8_t mac[6]) {
    AuthPort &p = operator_port(v, unit0, port0);
    if (!cfg(v).dot1x_on) fail("port authentication is off");
    if (param(v, unit0, port0, SW_DOT1X_PORT_CONTROL) != kControlAuto)
        fail("port " + std::to_string(unit0 + 1) + "/" + std::to_string(port0 + 1) +
             " is not under automatic control");
    if (user.empty() || user.size() >= SW_DOT1X_USER_SIZE) fail("a user name is 1..63 characters");
    const int phys = model::phys_index(unit0, port0);
    sw_dot1x_port_t &s = p.status;
    // A supplicant that starts again ends what it had.
    if (s.pae_state == kPaeAuthenticated) ++s.diag_counters[kStartsWhileAuthenticated];
    if (s.pae_state == kPaeAuthenticating) ++s.diag_counters[kStartsWhileAuthenticating];
    end_session(v, phys, p, kCauseRestart);
    drop_request(v, p);
    // EAPOL-Start in, EAP-Request/Identity out, EAP-Response/Identity in.
    s.auth_counters[kFramesRx] += 2;
    ++s.auth_counters[kStartRx];
    ++s.auth_counters[kRespIdRx];
    ++s.auth_counters[kFramesTx];
    ++s.auth_counters[kReqIdTx];
    s.last_eapol_version = kEapolVersion;
    std::memcpy(s.last_eapol_source, mac, 6);
    s.pae_state = kPaeConnecting;
    ++s.diag_counters[kEntersConnecting];
    ++s.diag_counters[kBackendResponses];
    copy_text(s.session_user, user);
    p.supplicant = 1;
    send_request(v, p);
}

void radius_answer(View &v, int unit0, int port0, bool accept) {
    AuthPort &p = operator_port(v, unit0, port0);
    if (p.server == kNoServer) fail("no RADIUS request of this port is waiting for an answer");
    const int phys = model::phys_index(unit0, port0);
    sw_dot1x_port_t &s = p.status;
    if (server_in_use(v, p.server)) {
        sw_radius_counters_t &c = hw(v).servers[p.server];
        c.pending_requests -= c.pending_requests > 0;
        ++(accept ? c.access_accepts : c.access_rejects);
        c.round_trip_cs = cs_since(p.request_sent_ns);
        c.reachable = 1;
    }
    p.server = kNoServer;
    // EAP-Success or EAP-Failure out.
    ++s.auth_counters[kFramesTx];
    ++s.auth_counters[kReqTx];
    s.backend_state = kBackendIdle;
    if (accept) {
        ++s.diag_counters[kSuccessWhileAuthenticating];
        ++s.diag_counters[kBackendSuccesses];
        s.pae_state = kPaeAuthenticated;
        if (p.session_start_ns == 0) begin_session(v, phys, p);
    } else {
        ++s.diag_counters[kFailWhileAuthenticating];
        ++s.diag_counters[kBackendFails];
        s.backend_state = kBackendFail;
        s.pae_state = kPaeHeld;
        end_session(v, phys, p, kCauseReauthFailed);
    }
}

void supplicant_logoff(View &v, int unit0, int port0) {
    AuthPort &p = operator_port(v, unit0, port0);
    if (!p.supplicant) fail("no supplicant is logged on to this port");
    sw_dot1x_port_t &s = p.status;
    ++s.auth_counters[kFramesRx];
    ++s.auth_counters[kLogoffRx];
    if (s.pae_state == kPaeAuthenticated) ++s.diag_counters[kLogoffWhileAuthenticated];
    if (s.pae_state == kPaeAuthenticating) ++s.diag_counters[kLogoffWhileAuthenticating];
    if (s.pae_state == kPaeConnecting) ++s.diag_counters[kLogoffWhileConnecting];
    drop_request(v, p);
    end_session(v, model::phys_index(unit0, port0), p, kCauseLogoff);
    p.supplicant = 0;
    s.pae_state = kPaeDisconnected;
    s.backend_state = kBackendIdle;
}

void set_server_down(View &v, int slot, bool down) {
    if (!slot_ok(slot)) fail("RADIUS servers are 1.." + std::to_string(SW_RADIUS_SERVERS));
    hw(v).server_down[slot] = down;
}

}  // namespace ops

std::string damage(const View &v) {
    for (int i = 0; i < layout::kAuthPorts; ++i)
        for (int k = 0; k < SW_DOT1X_PARAMS; ++k)
            if (cfg(v).params[i][k] < kParams[k].lo || cfg(v).params[i][k] > kParams[k].hi)
                return "the 802.1X setting " + std::to_string(k) + " of port " + std::to_string(i) + " is out of range";
    for (const AuthPort &p : hw(v).ports)
        if (p.server != kNoServer && !slot_ok(p.server)) return "an 802.1X request names no RADIUS slot";
    return {};
}

namespace calls {

int cfg_get_dot1x_enable(const View &v) { return cfg(v).dot1x_on; }
int cfg_set_dot1x_enable(const View &v, int on) {
    if (on != 0 && on != 1) return -1;
    cfg(v).dot1x_on = uint8_t(on);
    return 0;
}

int cfg_get_dot1x_port_param(const View &v, int unit0, int port0, int p, uint32_t *value) {
    if (!port_of(v, unit0, port0) || p < 0 || p >= SW_DOT1X_PARAMS || !value) return -1;
    *value = param(v, unit0, port0, p);
    return 0;
}
int cfg_set_dot1x_port_param(const View &v, int unit0, int port0, int p, uint32_t value) {
    AuthPort *port = port_of(v, unit0, port0);
    if (!port || p < 0 || p >= SW_DOT1X_PARAMS || value < kParams[p].lo || value > kParams[p].hi) return -1;
    param(v, unit0, port0, p) = value;
    // Forcing the port unauthorized ends its session.
    if (p == SW_DOT1X_PORT_CONTROL && value == kControlForceUnauth) {
        drop_request(v, *port);
        end_session(v, model::phys_index(unit0, port0), *port, kCauseForceUnauth);
        port->supplicant = 0;
        port->status.pae_state = kPaeDisconnected;
    }
    return 0;
}

int cfg_dot1x_port_initialize(const View &v, int unit0, int port0) {
    AuthPort *p = port_of(v, unit0, port0);
    if (!p) return -1;
    drop_request(v, *p);
    end_session(v, model::phys_index(unit0, port0), *p, kCauseReInit);
    p->supplicant = 0;
    p->status.pae_state = kPaeDisconnected;
    p->status.backend_state = kBackendIdle;
    return 0;
}

int cfg_dot1x_port_reauthenticate(const View &v, int unit0, int port0) {
    AuthPort *p = port_of(v, unit0, port0);
    if (!p || p->status.pae_state != kPaeAuthenticated || param(v, unit0, port0, SW_DOT1X_PORT_CONTROL) != kControlAuto)
        return -1;
    ++p->status.diag_counters[kReauthsWhileAuthenticated];
    ++p->status.auth_counters[kFramesTx];
    ++p->status.auth_counters[kReqIdTx];
    send_request(v, *p);
    return 0;
}

int status_dot1x_port(const View &v, int unit0, int port0, sw_dot1x_port_t *out) {
    return port_status(v, unit0, port0, out);
}

int cfg_get_radius_port(const View &v) { return int(cfg(v).radius_port); }
int cfg_set_radius_port(const View &v, int port) { return set_range(cfg(v).radius_port, port, 1, 65535); }
int cfg_get_radius_retransmit(const View &v) { return int(cfg(v).radius_retransmit); }
int cfg_set_radius_retransmit(const View &v, int count) { return set_range(cfg(v).radius_retransmit, count, 1, 30); }
int cfg_get_radius_timeout(const View &v) { return int(cfg(v).radius_timeout); }
int cfg_set_radius_timeout(const View &v, int seconds) { return set_range(cfg(v).radius_timeout, seconds, 1, 65535); }
int cfg_get_radius_key(const View &v, char *buf, size_t size) { return text_out(cfg(v).radius_key, buf, size); }
int cfg_set_radius_key(const View &v, const char *key) { return set_key(cfg(v).radius_key, key); }

int cfg_get_radius_server(const View &v, int slot, sw_radius_server_t *out) {
    if (!slot_ok(slot) || !out) return -1;
    const layout::RadiusServerConfig &s = cfg(v).servers[slot];
    std::memset(out, 0, sizeof *out);
    out->in_use = s.in_use;
    if (!s.in_use) return 0;
    out->address = s.address;
    out->port = s.port;
    out->retransmit = s.retransmit;
    out->timeout = s.timeout;
    copy_text(out->key, sizeof out->key, s.key);
    return 0;
}
int cfg_set_radius_server_address(const View &v, int slot, uint32_t address) {
    if (!slot_ok(slot) || address == 0 || address >= kReserved) return -1;
    for (int i = 0; i < SW_RADIUS_SERVERS; ++i)
        if (i != slot && cfg(v).servers[i].in_use && cfg(v).servers[i].address == address) return -1;
    layout::RadiusServerConfig &s = cfg(v).servers[slot];
    if (!s.in_use) {
        s.in_use = 1;
        s.port = cfg(v).radius_port;
        s.retransmit = cfg(v).radius_retransmit;
        s.timeout = cfg(v).radius_timeout;
        copy_text(s.key, sizeof s.key, cfg(v).radius_key);
        std::memset(&hw(v).servers[slot], 0, sizeof hw(v).servers[slot]);
    }
    s.address = address;
    return 0;
}
int cfg_set_radius_server_port(const View &v, int slot, int port) {
    layout::RadiusServerConfig *s = server_in_use(v, slot);
    return s ? set_range(s->port, port, 1, 65535) : -1;
}
int cfg_set_radius_server_retransmit(const View &v, int slot, int count) {
    layout::RadiusServerConfig *s = server_in_use(v, slot);
    return s ? set_range(s->retransmit, count, 1, 30) : -1;
}
int cfg_set_radius_server_timeout(const View &v, int slot, int seconds) {
    layout::RadiusServerConfig *s = server_in_use(v, slot);
    return s ? set_range(s->timeout, seconds, 1, 65535) : -1;
}
int cfg_set_radius_server_key(const View &v, int slot, const char *key) {
    layout::RadiusServerConfig *s = server_in_use(v, slot);
    return s ? set_key(s->key, key) : -1;
}
int cfg_del_radius_server(const View &v, int slot) {
    layout::RadiusServerConfig *s = server_in_use(v, slot);
    if (!s) return -1;
    std::memset(s, 0, sizeof *s);
    std::memset(&hw(v).servers[slot], 0, sizeof hw(v).servers[slot]);
    return 0;
}
int status_radius_server(const View &v, int slot, sw_radius_counters_t *out) {
    if (!server_in_use(v, slot) || !out) return -1;
    *out = hw(v).servers[slot];
    return 0;
}

}  // namespace calls

}  // namespace swsim::auth
