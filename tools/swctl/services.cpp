// swctl's commands for the switch's management services.
#include "services.hpp"

#include <cstdio>
#include <map>
#include <memory>
#include <vector>

#include "swplatform/platform.h"

namespace swctl {
namespace {

using swsim::Error;

const std::map<std::string, int> kServices = {
    {"web", SW_SERVICE_WEB}, {"telnet", SW_SERVICE_TELNET}, {"ssh", SW_SERVICE_SSH}, {"console", SW_SERVICE_CONSOLE}};

// "1.3.6.1.2.1.2.2.1.10.1"
std::vector<uint32_t> parse_oid(const std::string &text) {
    std::vector<uint32_t> oid;
    std::size_t at = text.empty() || text[0] != '.' ? 0 : 1;
    while (at <= text.size()) {
        const std::size_t dot = std::min(text.find('.', at), text.size());
        const std::string part = text.substr(at, dot - at);
        if (part.empty() || part.size() > 10 || part.find_first_not_of("0123456789") != std::string::npos ||
            std::stoull(part) > UINT32_MAX)
            throw Error("'" + text + "' is not an OID (numbers and dots, e.g. 1.3.6.1.2.1.2.2.1.10.1)");
        oid.push_back(uint32_t(std::stoul(part)));
        at = dot + 1;
    }
    return oid;
}

// The options of the commands, alive as long as the command line.
struct Options {
    std::string address, community = "public", service, peer, variable, direction;
    int version = SW_TRAP_V2C, port = 162, index = 1, value = 0, threshold = 0;
    bool delta = false;
};

void show_traps(const swsim::Switch &sw) {
    const auto t = sw.traps();
    std::printf("trap port   %d\nsent        %llu notifications (%llu datagrams refused)\n", t.port,
                (unsigned long long)t.notifications, (unsigned long long)t.failed);
    std::printf("%-4s %-40s %-7s %-10s %s\n", "slot", "trap destination", "version", "sent", "community");
    for (const auto &d : t.destinations)
        std::printf("%-4d %-40s %-7s %-10llu %s\n", d.slot + 1, d.address.c_str(), d.version == SW_TRAP_V1 ? "v1" : "v2c",
                    (unsigned long long)d.sent, d.community.c_str());
}

void add_traps(CLI::App &app, const AddCommand &add, Options &o) {
    auto *trap = app.add_subcommand("trap", "Trap destinations and the notifications the platform raises");
    trap->require_subcommand(1);
    auto *dest = add(trap, "add", "Add a trap destination", [&o](swsim::Switch &sw) {
        sw.trap_add(o.address, o.community, o.version);
    });
    dest->add_option("address", o.address, "IPv4 or IPv6 address")->required();
    dest->add_option("--community", o.community, "Community of its notifications")->capture_default_str();
    dest->add_option("--version", o.version, "1 SNMPv1 Trap-PDU, 2 SNMPv2c")->check(CLI::Range(1, 2))->capture_default_str();
    auto *remove = add(trap, "remove", "Remove a trap destination", [&o](swsim::Switch &sw) { sw.trap_remove(o.address); });
    remove->add_option("address", o.address, "Its address")->required();
    auto *port = add(trap, "port", "The UDP port trap destinations listen on", [&o](swsim::Switch &sw) {
        sw.set_trap_port(o.port);
    });
    port->add_option("port", o.port, "1..65535 (162 on a real network)")->required();
    add(trap, "show", "Trap destinations and what was sent", [](swsim::Switch &sw) { show_traps(sw); });

    auto *alarm = add(trap, "rmon-alarm", "The RMON engine reports an alarm crossing a threshold",
                      [&o](swsim::Switch &sw) {
                          swsim::Switch::RmonAlarmNotice a;
                          a.alarm_index = o.index;
                          a.rising = o.direction == "rising";
                          a.variable = parse_oid(o.variable);
                          a.sample_type = o.delta ? SW_RMON_DELTA : SW_RMON_ABSOLUTE;
                          a.value = o.value;
                          a.threshold = o.threshold;
                          sw.report_rmon_alarm(a);
                      });
    alarm->add_option("index", o.index, "alarmIndex")->required();
    alarm->add_option("direction", o.direction, "rising or falling")
        ->required()
        ->check(CLI::IsMember({"rising", "falling"}));
    alarm->add_option("variable", o.variable, "The sampled object's OID")->required();
    alarm->add_option("--value", o.value, "The sampled value")->capture_default_str();
    alarm->add_option("--threshold", o.threshold, "The threshold crossed")->capture_default_str();
    alarm->add_flag("--delta", o.delta, "A delta sample (else absolute)");

    auto *login = add(&app, "login-fail", "A management service refuses a login: authenticationFailure",
                      [&o](swsim::Switch &sw) { sw.report_login_failure(kServices.at(o.service), o.peer); });
    login->add_option("service", o.service, "web, telnet, ssh or console")
        ->required()
        ->check(CLI::IsMember({"web", "telnet", "ssh", "console"}));
    login->add_option("peer", o.peer, "Address the login came from");
}

}  // namespace

void add_services(CLI::App &app, const AddCommand &add) {
    static Options options;
    add_traps(app, add, options);
}

void show_services(const swsim::Switch &sw) { show_traps(sw); }

}  // namespace swctl
