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
    std::printf("trap port   %d, to %s\nsent        %llu notifications (%llu datagrams refused, %llu withheld)\n",
                t.port, t.beyond_loopback ? "any address" : "loopback addresses only",
                (unsigned long long)t.notifications, (unsigned long long)t.failed, (unsigned long long)t.withheld);
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
    auto *reach = add(trap, "reach", "Send to loopback destinations only (the default) or to any", [&o](swsim::Switch &sw) {
        sw.set_trap_beyond_loopback(o.direction == "any");
    });
    reach->add_option("where", o.direction, "loopback or any")->required()->check(CLI::IsMember({"loopback", "any"}));
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

// "name  what it accepts" lines for a command's help.
std::string described(const std::vector<swsim::Switch::ServiceSetting> &table) {
    std::string text;
    for (const auto &s : table) text += "\n  " + s.name + std::string(s.name.size() < 14 ? 14 - s.name.size() : 1, ' ') + s.accepts;
    return text;
}

void add_management(CLI::App &app, const AddCommand &add, Options &o) {
    auto *mgmt = app.add_subcommand("mgmt", "Management services: address, servers, host keys, filters, SNTP, log");
    mgmt->require_subcommand(1);
    auto *set = add(mgmt, "set", "Change a setting" + described(swsim::Switch::service_settings()),
                    [&o](swsim::Switch &sw) { sw.service_set(o.service, o.address); });
    set->add_option("setting", o.service, "Its name")->required();
    set->add_option("value", o.address, "The new value")->required();
    for (bool adding : {true, false}) {
        auto *cmd = add(mgmt, adding ? "add" : "remove",
                        std::string(adding ? "Add to a list" : "Remove from a list") +
                            described(swsim::Switch::service_lists()),
                        [&o, adding](swsim::Switch &sw) {
                            adding ? sw.service_add(o.service, o.address) : sw.service_remove(o.service, o.address);
                        });
        cmd->add_option("list", o.service, "Its name")->required();
        cmd->add_option("value", o.address, "The value")->required();
    }
    auto *keys = add(mgmt, "keys", "Generate or delete SSH host keys",
                     [&o](swsim::Switch &sw) { sw.ssh_keys(o.peer, o.direction == "generate"); });
    keys->add_option("action", o.direction, "generate or delete")
        ->required()
        ->check(CLI::IsMember({"generate", "delete"}));
    keys->add_option("kind", o.peer, "rsa, dsa or both")->required()->check(CLI::IsMember({"rsa", "dsa", "both"}));
    add(mgmt, "show", "Management services and trap destinations", [](swsim::Switch &sw) { show_services(sw); });
}

std::string address_text(uint32_t a) {
    char buf[16];
    ip_uint32_to_str(a, buf, sizeof buf);
    return buf;
}
std::string list_text(const std::vector<std::string> &items) {
    std::string text;
    for (const auto &i : items) text += (text.empty() ? "" : ", ") + i;
    return text.empty() ? "-" : text;
}
const char *on(bool b) { return b ? "on" : "off"; }
// "ssh-rsa AAAAB3Nz...Wq0= switch-3" shortened to its type, ends and comment.
std::string key_text(const std::string &key) {
    if (key.empty()) return "none";
    const auto sp = key.find(' '), last = key.rfind(' ');
    if (sp == std::string::npos || last <= sp + 24) return key;
    return key.substr(0, sp + 13) + "..." + key.substr(last - 8);
}

void show_management(const swsim::Switch &sw) {
    const auto s = sw.services();
    int prefix = 0;
    for (uint32_t m = s.mask; m & 0x80000000u; m <<= 1) ++prefix;
    std::printf("address     %s/%d%s\ngateway     %s\nname        %s, %s\n", address_text(s.address).c_str(), prefix,
                s.dhcp ? " (DHCP)" : "", address_text(s.gateway).c_str(), address_text(s.dns[0]).c_str(),
                address_text(s.dns[1]).c_str());
    std::printf("http        %s, port %d\nhttps       %s, port %d\ntelnet      %s\nssh         %s, timeout %d s\n",
                on(s.http), s.http_port, on(s.https), s.https_port, on(s.telnet), on(s.ssh), s.ssh_timeout);
    std::printf("rsa key     %s\ndsa key     %s\n", key_text(s.ssh_rsa_key).c_str(), key_text(s.ssh_dsa_key).c_str());
    static const char *kFilters[] = {"http", "ssh", "snmp", "telnet"};
    for (int f = 0; f < 4; ++f)
        std::printf("filter %-6s %s\n", kFilters[f], list_text(s.filters[f]).c_str());
    std::printf("sntp        %s, every %d s, servers %s\n", on(s.sntp), s.sntp_interval, list_text(s.sntp_servers).c_str());
    std::printf("syslog      %s, flash level %d, ram level %d\n", on(s.syslog), s.flash_level, s.ram_level);
    std::printf("remote log  %s, level %d, facility %d (daemon %d), servers %s\n", on(s.remote_log), s.remote_level,
                s.remote_facility, s.daemon_facility, list_text(s.log_servers).c_str());
}

}  // namespace

void add_services(CLI::App &app, const AddCommand &add) {
    static Options options;
    add_management(app, add, options);
    add_traps(app, add, options);
}

void show_services(const swsim::Switch &sw) {
    show_management(sw);
    show_traps(sw);
}

}  // namespace swctl
