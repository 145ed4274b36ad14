// swctl's commands for port authentication: supplicants that log on to a
// port, the RADIUS server's answer, log-offs, servers that stop answering,
// and what the authenticators and the RADIUS client show.
#include <cstdio>
#include <string>

#include "swplatform/platform.h"
#include "swsim/control.hpp"
#include "verbs.hpp"

namespace swctl {
namespace {

using swsim::Switch;

struct Args {
    std::string port, user, mac, server;
    bool on = false;
};

const char *const kPaeStates[] = {"?",          "initialize", "disconnected", "connecting", "authenticating",
                                  "authenticated", "aborting", "held",         "forceAuth",  "forceUnauth", "restart"};
const char *pae_name(uint32_t s) { return s < std::size(kPaeStates) ? kPaeStates[s] : "?"; }

void show_port(const Switch &sw, int unit0, int port0) {
    const Switch::Dot1xPortInfo p = sw.dot1x_port(unit0, port0);
    const sw_dot1x_port_t &s = p.status;
    std::printf("port %d/%d: %s, %s, control %u%s\n", unit0 + 1, port0 + 1, pae_name(s.pae_state),
                s.authorized ? "authorized" : "unauthorized", p.params[SW_DOT1X_PORT_CONTROL],
                p.server >= 0 ? (", request with RADIUS server " + std::to_string(p.server + 1)).c_str() : "");
    std::printf("eapol rx %u tx %u start %u logoff %u\n", s.auth_counters[0], s.auth_counters[1], s.auth_counters[2],
                s.auth_counters[3]);
    if (s.session_number != 0)
        std::printf("session %u of %s: %u.%02u s, %llu octets in, %llu out, cause %u\n", s.session_number,
                    s.session_user, s.session_time_cs / 100, s.session_time_cs % 100,
                    (unsigned long long)s.session_octets_rx, (unsigned long long)s.session_octets_tx,
                    s.terminate_cause);
}

void show_radius(const Switch &sw) {
    std::printf("%-4s %-15s %-5s %-8s %-8s %-8s %-8s %-8s %s\n", "slot", "server", "port", "requests", "accepts",
                "rejects", "timeouts", "pending", "state");
    for (const Switch::RadiusServerInfo &r : sw.radius_servers()) {
        if (!r.server.in_use) continue;
        const uint32_t a = r.server.address;
        const std::string addr = std::to_string(a >> 24) + "." + std::to_string(a >> 16 & 255) + "." +
                                 std::to_string(a >> 8 & 255) + "." + std::to_string(a & 255);
        std::printf("%-4d %-15s %-5u %-8u %-8u %-8u %-8u %-8u %s\n", r.slot + 1, addr.c_str(), r.server.port,
                    r.counters.access_requests, r.counters.access_accepts, r.counters.access_rejects,
                    r.counters.timeouts, r.counters.pending_requests, r.down ? "down" : "up");
    }
}

}  // namespace

void add_auth_verbs(CLI::App &app, const Verbs &v) {
    static Args args;
    auto *dot1x = app.add_subcommand("dot1x", "802.1X supplicants on the ports");
    dot1x->require_subcommand(1);
    auto *start = v.add(dot1x, "start", "A supplicant logs on to a port (its RADIUS request goes out)", [v](Switch &sw) {
        const auto [unit0, port0] = v.port(args.port);
        uint8_t mac[6] = {0x02, 0, 0, 0, uint8_t(unit0 + 1), uint8_t(port0 + 1)};
        if (!args.mac.empty()) v.mac(args.mac, mac);
        sw.dot1x_start(unit0, port0, args.user, mac);
    });
    start->add_option("port", args.port, "U/P")->required();
    start->add_option("user", args.user, "The supplicant's user name")->required();
    start->add_option("--mac", args.mac, "Its MAC address (default 02:00:00:00:U:P)");
    for (const bool accept : {true, false}) {
        auto *answer = v.add(dot1x, accept ? "auth" : "fail",
                             accept ? "The RADIUS server accepts the port's pending request"
                                    : "The RADIUS server rejects the port's pending request",
                             [v, accept](Switch &sw) {
                                 const auto [unit0, port0] = v.port(args.port);
                                 sw.dot1x_answer(unit0, port0, accept);
                             });
        answer->add_option("port", args.port, "U/P")->required();
    }
    auto *logoff = v.add(dot1x, "logoff", "The port's supplicant logs off", [v](Switch &sw) {
        const auto [unit0, port0] = v.port(args.port);
        sw.dot1x_logoff(unit0, port0);
    });
    logoff->add_option("port", args.port, "U/P")->required();
    auto *show = v.add(dot1x, "show", "The port's authenticator and session", [v](Switch &sw) {
        const auto [unit0, port0] = v.port(args.port);
        show_port(sw, unit0, port0);
    });
    show->add_option("port", args.port, "U/P")->required();

    auto *radius = app.add_subcommand("radius", "The RADIUS servers the switch asks");
    radius->require_subcommand(1);
    auto *server = v.add(radius, "server", "A server stops (down) or starts (up) answering", [v](Switch &sw) {
        sw.radius_server_down(v.index(args.server, "RADIUS server slot"), !args.on);
    });
    server->add_option("slot", args.server, "1..5")->required();
    v.add_state(server, args.on, "up", "down");
    v.add(radius, "show", "The servers and what the client counted", [](Switch &sw) { show_radius(sw); });
}

}  // namespace swctl
