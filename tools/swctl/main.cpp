// swctl: creates and drives a simulated switch.
//
// Units, ports and trunks are numbered as on the switch's front panel, from
// one: port "2/5" is the fifth port of the second unit, trunk 1 is trunk0 0.
// A trunk given where a port is expected is written "T<n>".  Every change is
// made on the live state file under the configuration write lock, so an agent
// serving requests sees it at once.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>

#include "swplatform/platform.h"
#include "swsim/control.hpp"
#include "verbs.hpp"
#include "lldp.hpp"
#include "routing_commands.hpp"
#include "services.hpp"
#include "rmon.hpp"

namespace {

using swsim::Error;

struct PortRef {
    int unit0;
    int port0;  // 512 + trunk0 for a trunk
};

int parse_int(const std::string &text, const std::string &what) {
    try {
        std::size_t used = 0;
        long long v = std::stoll(text, &used, 10);
        if (used == text.size() && v >= INT32_MIN && v <= INT32_MAX) return int(v);
    } catch (const std::exception &) {
    }
    throw Error("'" + text + "' is not a " + what);
}

uint64_t parse_u64(const std::string &text, const std::string &what) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos)
        throw Error("'" + text + "' is not a " + what);
    try {
        return std::stoull(text);
    } catch (const std::exception &) {
        throw Error("'" + text + "' is too large for a " + what);
    }
}

// A number counted from one as a zero-based index, plus `base`.
int parse_index(const std::string &text, const std::string &what, int base = 0) {
    const long long v = (long long)parse_int(text, what) - 1 + base;
    if (v < INT32_MIN || v > INT32_MAX) throw Error("'" + text + "' is not a " + what);
    return int(v);
}

// "U/P" from one; "T<n>" when trunks are allowed.
PortRef parse_port(const std::string &text, bool trunk_ok = false) {
    if (trunk_ok && !text.empty() && (text[0] == 'T' || text[0] == 't'))
        return {0, parse_index(text.substr(1), "trunk number", 512)};
    auto slash = text.find('/');
    if (slash == std::string::npos)
        throw Error("'" + text + "' is not a port (UNIT/PORT, e.g. 1/5" + (trunk_ok ? ", or Tn for a trunk)" : ")"));
    return {parse_index(text.substr(0, slash), "unit number"), parse_index(text.substr(slash + 1), "port number")};
}

int parse_trunk(const std::string &text) { return parse_index(text, "trunk number (1..128)"); }

std::string port_text(int unit0, int port0) {
    if (unit0 == 0 && port0 >= 512) return "T" + std::to_string(port0 - 512 + 1);
    return std::to_string(unit0 + 1) + "/" + std::to_string(port0 + 1);
}

// 1/1-24,2/3,T1 from a sorted list.
std::string port_list(const std::vector<std::pair<int, int>> &ports) {
    std::string out;
    for (std::size_t i = 0; i < ports.size();) {
        std::size_t j = i;
        const bool trunks = ports[i].second >= 512;
        while (j + 1 < ports.size() && ports[j + 1].first == ports[i].first && ports[j + 1].second == ports[j].second + 1 &&
               (ports[j + 1].second >= 512) == trunks)
            ++j;
        if (!out.empty()) out += ",";
        out += port_text(ports[i].first, ports[i].second);
        if (j > i) out += "-" + std::to_string(ports[j].second - (trunks ? 512 : 0) + 1);
        i = j + 1;
    }
    return out.empty() ? "-" : out;
}

std::string mac_text(const uint8_t *m) {
    char buf[18];
    std::snprintf(buf, sizeof buf, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]);
    return buf;
}

void parse_mac(const std::string &text, uint8_t mac[6]) {
    unsigned v[6];
    char tail;
    if (text.size() != 17 ||
        std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%c", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &tail) != 6)
        throw Error("'" + text + "' is not a MAC address (aa:bb:cc:dd:ee:ff)");
    for (int i = 0; i < 6; ++i) mac[i] = uint8_t(v[i]);
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

// ---- state words ---------------------------------------------------------------------------
//
// Every verb that switches something on or off takes the same words for its
// two states, and may name them its own way as well ("present"/"absent").

struct StateWords {
    std::string on, off;
};

const std::vector<StateWords> kStateWords = {{"on", "off"},           {"up", "down"}, {"enable", "disable"},
                                             {"enabled", "disabled"}, {"yes", "no"},  {"true", "false"},
                                             {"1", "0"}};
const StateWords kOnOff = kStateWords[0];

// The state `word` names for a verb whose own words are `own`.
std::optional<bool> state_of(const std::string &word, const StateWords &own) {
    const std::string w = lower(word);
    if (w == own.on) return true;
    if (w == own.off) return false;
    for (const StateWords &s : kStateWords) {
        if (w == s.on) return true;
        if (w == s.off) return false;
    }
    return std::nullopt;
}

// "on/off, up/down, ..." without the verb's own words.
std::string state_synonyms(const StateWords &own) {
    std::string also;
    for (const StateWords &s : kStateWords)
        if (s.on != own.on) also += (also.empty() ? "" : ", ") + s.on + "/" + s.off;
    return also;
}

// "present or absent (also on/off, up/down, ...)"
std::string state_help(const StateWords &own) {
    return own.on + " or " + own.off + " (also " + state_synonyms(own) + ")";
}

// The positional "state" of `cmd`: sets `on` from a state word.
CLI::Option *add_state(CLI::App *cmd, bool &on, const StateWords &own) {
    auto to_bool = [own](std::string &word) -> std::string {
        const auto state = state_of(word, own);
        if (!state) return "'" + word + "' is not " + own.on + " or " + own.off;
        word = *state ? "1" : "0";
        return "";
    };
    return cmd->add_option("state", on, state_help(own))->required()->type_name("STATE")->transform(CLI::Validator(to_bool, ""));
}

// ---- statistics ----------------------------------------------------------------------------

// STAT as a number or a name of swsim::stat (any case).
int parse_stat(const std::string &text) {
    for (const auto &s : swsim::stat::kNamed)
        if (lower(text) == lower(s.name)) return s.number;
    return parse_int(text, "statistic number or name (see swctl counter --help)");
}

// The statistics by number and name, three to a line; * marks the sums.
std::string stat_table() {
    std::string text = "Statistics (* the sum of others: set those):\n";
    const std::size_t n = std::size(swsim::stat::kNamed);
    for (std::size_t i = 0; i < n; ++i) {
        const auto &s = swsim::stat::kNamed[i];
        const bool last = i % 3 == 2 || i + 1 == n;
        char cell[40];
        std::snprintf(cell, sizeof cell, "%4d%c %-*s", s.number, swsim::statistic_settable(s.number) ? ' ' : '*',
                      last ? 0 : 22, s.name);
        text += cell + std::string(last ? "\n" : "");
    }
    return text;
}

// Port type codes as the port table shows them.
const char *port_type_name(int type) {
    static const std::map<int, const char *> names = {
        {SW_PORT_TYPE_100TX, "100tx"}, {SW_PORT_TYPE_1000T, "copper"}, {SW_PORT_TYPE_1000X, "sfp"},
        {SW_PORT_TYPE_10GX, "sfp+"},   {SW_PORT_TYPE_100FX, "100fx"},  {SW_PORT_TYPE_TRUNK, "trunk"}};
    auto it = names.find(type);
    return it == names.end() ? "?" : it->second;
}

// ---- show ----------------------------------------------------------------------------------

void show_system(const swsim::Switch &sw) {
    auto s = sw.system();
    std::printf("name        %s\ncontact     %s\nlocation    %s\n", s.hostname.c_str(), s.contact.c_str(),
                s.location.c_str());
    std::printf("time zone   %s (%+d min)\nfirmware    %s\nuptime      %u s\n", s.tz_name.c_str(), s.tz_offset_min,
                s.fw_version.c_str(), s.uptime_s);
    std::printf("clock       %+lld s from this machine\nmac ageing  %d s\n", (long long)s.clock_offset_s, s.mac_ageing);
    std::printf("journal     %s\nfaults      %zu armed\n", sw.journal_enabled() ? "on" : "off", sw.faults().size());
}

void show_units(const swsim::Switch &sw) {
    std::printf("%-5s %-8s %-4s %-6s %-16s %s\n", "unit", "state", "mpu", "ports", "model", "serial");
    for (int u = 0; u < SW_MAX_UNITS; ++u) {
        auto info = sw.unit(u);
        if (!info.known) continue;
        std::printf("%-5d %-8s %-4s %-6d %-16s %s\n", u + 1, info.present ? "present" : "absent", info.mpu ? "yes" : "",
                    info.ports, info.model.c_str(), info.serial.c_str());
    }
}

void show_port_line(const swsim::Switch &sw, int unit0, int port0) {
    auto p = sw.port(unit0, port0);
    std::string speed = p.link ? std::to_string(p.speed) + (p.full_duplex ? " full" : " half") : "-";
    std::string config = p.config_speed ? std::to_string(p.config_speed) : "auto";
    std::string sfp = p.sfp_slot ? (p.sfp_fitted ? "fitted" : "empty") : "";
    std::printf("%-6s %-7s %-4s %-10s %-5s %-6s %-6s %-5s %-9s %s\n", port_text(unit0, port0).c_str(),
                port_type_name(p.type), p.link ? "up" : "down", speed.c_str(),
                config.c_str(), p.admin ? "on" : "off", sfp.c_str(), p.trunk0 >= 0 ? ("T" + std::to_string(p.trunk0 + 1)).c_str() : "",
                p.traffic_pps ? std::to_string(p.traffic_pps).c_str() : "", p.description.c_str());
}

void show_ports(const swsim::Switch &sw) {
    std::printf("%-6s %-7s %-4s %-10s %-5s %-6s %-6s %-5s %-9s %s\n", "port", "type", "link", "speed", "cfg",
                "admin", "sfp", "trunk", "pps", "description");
    for (int u = 0; u < SW_MAX_UNITS; ++u) {
        auto info = sw.unit(u);
        for (int p = 0; info.known && p < info.ports; ++p) show_port_line(sw, u, p);
    }
}

void show_trunks(const swsim::Switch &sw) {
    std::printf("%-5s %-8s %-5s %-7s %s\n", "trunk", "kind", "link", "speed", "members");
    for (int t = 0; t < SW_MAX_TRUNKS; ++t) {
        auto info = sw.trunk(t);
        if (!info.configured) continue;
        auto p = sw.port(0, 512 + t);
        std::printf("T%-4d %-8s %-5s %-7d %s\n", t + 1, info.dynamic ? "lacp" : "static", p.link ? "up" : "down",
                    p.speed, port_list(info.members).c_str());
    }
}

void show_vlans(const swsim::Switch &sw) {
    std::printf("%-5s %-20s %-8s %s\n", "vid", "name", "kind", "members (u untagged, t tagged, f forbidden, d dynamic)");
    for (int vid : sw.vlan_ids()) {
        auto v = sw.vlan(vid);
        std::map<char, std::vector<std::pair<int, int>>> by_kind;
        for (const auto &m : v.members) {
            char k = (m.flags & SW_VLAN_FORBIDDEN) ? 'f'
                     : (m.flags & SW_VLAN_TAGGED)  ? 't'
                     : (m.flags & SW_VLAN_UNTAGGED) ? 'u'
                                                    : 'd';
            by_kind[k].emplace_back(m.unit0, m.port0);
        }
        std::string members;
        for (auto &[k, ports] : by_kind) members += std::string(members.empty() ? "" : " ") + k + ":" + port_list(ports);
        std::printf("%-5d %-20s %-8s %s\n", vid, v.name.c_str(),
                    v.dynamic ? "dynamic" : (v.active ? "static" : "inactive"), members.c_str());
    }
}

void show_fdb(const swsim::Switch &sw) {
    std::printf("%-17s %-5s %-6s %-5s %s\n", "mac", "vid", "port", "trunk", "kind");
    for (const auto &e : sw.fdb())
        std::printf("%-17s %-5d %-6s %-5s %s\n", mac_text(e.mac).c_str(), e.vid, port_text(e.unit0, e.port0).c_str(),
                    e.trunk0 >= 0 ? ("T" + std::to_string(e.trunk0 + 1)).c_str() : "",
                    e.is_static ? "static" : "dynamic");
}

// ---- the command line ------------------------------------------------------------------------

class Tool {
public:
    Tool() : app_("Creates and drives a simulated switch (state file shared with the agent).", "swctl") {
        app_.require_subcommand(1);
        app_.add_option("--state", state_, "State file (default: $SWSIM_STATE or " +
                                               std::string(swsim::kDefaultStatePath) + ")")
            ->default_str(swsim::default_state_path());
        state_ = swsim::default_state_path();
        add_create();
        add_show();
        add_hardware();
        add_trunk();
        add_vlan();
        add_fdb();
        add_counters();
        add_fault();
        add_journal();
        add_port_controls();
        add_l2proto();
        add_ifaces();
        swctl::add_chassis_verbs(app_, verbs());
        swctl::add_auth_verbs(app_, verbs());
        swctl::add_files_verbs(app_, verbs());
        swctl::add_cfm_verbs(app_, verbs());
        swctl::add_lldp_commands(
            app_, [this](CLI::App *parent, const std::string &name, const std::string &help, Action act) {
                return add(parent, name, help, act);
            },
            [](const std::string &text) { return std::make_pair(parse_port(text).unit0, parse_port(text).port0); });
        swctl::add_routing_commands(app_, [this](CLI::App *parent, const std::string &name, const std::string &help,
                                                 Action act) { return add(parent, name, help, act); });
        swctl::add_services(app_, [this](CLI::App *parent, const std::string &name, const std::string &help,
                                         Action act) { return add(parent, name, help, std::move(act)); });
        swctl::add_rmon_commands(
            app_, [this](CLI::App *parent, const std::string &name, const std::string &help,
                         Action act) { return add(parent, name, help, std::move(act)); },
            [](const std::string &text) {
                const PortRef p = parse_port(text, true);
                return std::make_pair(p.unit0, p.port0);
            });
        add("save", "Flush the state file to disk", [](swsim::Switch &sw) { sw.save(); });
    }

    int run(int argc, char **argv) {
        try {
            app_.parse(argc, argv);
            action_();
            return 0;
        } catch (const CLI::CallForHelp &e) {
            return app_.exit(e);
        } catch (const CLI::CallForAllHelp &e) {
            return app_.exit(e);
        } catch (const CLI::ParseError &e) {
            // A command that takes commands: the word where one was expected.
            const CLI::App *at = innermost();
            const std::string help = "(see " + words_of(at, "swctl") + " --help)";
            const std::string chosen = words_of(at);
            const auto left = at->remaining();
            if (at->get_require_subcommand_min() == 0)
                std::cerr << "swctl: " << e.what() << " " << help << "\n";
            else if (!left.empty())
                std::cerr << "swctl: unknown command '" << chosen + (chosen.empty() ? "" : " ") + left.front()
                          << "' " << help << "\n";
            else
                std::cerr << "swctl: missing command" << (chosen.empty() ? "" : " after '" + chosen + "'") << ": "
                          << commands_of(at) << " " << help << "\n";
            return 1;
        } catch (const std::exception &e) {
            std::cerr << "swctl: " << e.what() << "\n";
            return 1;
        }
    }

private:
    using Action = std::function<void(swsim::Switch &)>;

    // The last command the command line chose (the tool itself if none).
    const CLI::App *innermost() const {
        const CLI::App *at = &app_;
        while (!at->get_subcommands().empty()) at = at->get_subcommands().front();
        return at;
    }
    // The words that chose `at`, after `first` ("swctl trunk add").
    static std::string words_of(const CLI::App *at, std::string first = "") {
        std::vector<std::string> words;
        for (; at->get_parent(); at = at->get_parent()) words.insert(words.begin(), at->get_name());
        for (const std::string &w : words) first += (first.empty() ? "" : " ") + w;
        return first;
    }
    // "create, destroy, add or remove"
    static std::string commands_of(const CLI::App *at) {
        std::string text;
        const auto subs = at->get_subcommands({});
        for (std::size_t i = 0; i < subs.size(); ++i)
            text += (i == 0 ? "" : i + 1 == subs.size() ? " or " : ", ") + subs[i]->get_name();
        return text;
    }

    // A subcommand that works on the live switch.
    CLI::App *add(CLI::App *parent, const std::string &name, const std::string &help, Action act) {
        CLI::App *cmd = parent->add_subcommand(name, help);
        cmd->callback([this, act] {
            action_ = [this, act] {
                swsim::Switch sw(state_);
                act(sw);
            };
        });
        return cmd;
    }
    CLI::App *add(const std::string &name, const std::string &help, Action act) { return add(&app_, name, help, act); }

    // What the verbs of the other files borrow.
    swctl::Verbs verbs() {
        swctl::Verbs v;
        v.add = [this](CLI::App *parent, const std::string &name, const std::string &help, Action act) {
            return add(parent, name, help, act);
        };
        v.add_state = [](CLI::App *cmd, bool &on, const std::string &on_word, const std::string &off_word) {
            return add_state(cmd, on, {on_word, off_word});
        };
        v.port = [](const std::string &text) {
            const PortRef p = parse_port(text);
            return std::pair{p.unit0, p.port0};
        };
        v.index = [](const std::string &text, const std::string &what) { return parse_index(text, what); };
        v.integer = [](const std::string &text, const std::string &what) { return parse_int(text, what); };
        v.mac = [](const std::string &text, uint8_t mac[6]) { parse_mac(text, mac); };
        return v;
    }

    void add_create() {
        auto *cmd = app_.add_subcommand("create", "Create the state file from a scenario (switch boots now)");
        cmd->add_option("scenario", scenario_, "Scenario file (JSON)")->required();
        cmd->add_flag("--force", force_, "Replace an existing state file");
        cmd->callback([this] {
            action_ = [this] {
                if (!force_ && std::filesystem::exists(state_))
                    throw Error(state_ + ": exists already (use --force to replace it)");
                swsim::create_state(state_, scenario_);
            };
        });
    }

    void add_show() {
        static const std::map<std::string, void (*)(const swsim::Switch &)> views = {
            {"system", show_system}, {"units", show_units}, {"ports", show_ports},
            {"trunks", show_trunks}, {"vlans", show_vlans}, {"fdb", show_fdb}, {"services", swctl::show_services}};
        auto *cmd = add("show", "Show the switch: units, ports, trunks, vlans, fdb, services or system (default)",
                        [this](swsim::Switch &sw) {
                            if (what_ != "all") return views.at(what_)(sw);
                            for (auto &[name, view] : views) {
                                std::printf("== %s\n", name.c_str());
                                view(sw);
                                std::printf("\n");
                            }
                        });
        cmd->add_option("what", what_, "What to show")
            ->check(CLI::IsMember({"system", "units", "ports", "trunks", "vlans", "fdb", "services", "all"}))
            ->default_val("system");
    }

    void add_hardware() {
        auto *unit = add("unit", "Put a unit into the stack or take it out", [this](swsim::Switch &sw) {
            sw.set_unit_present(parse_index(a_, "unit number"), on_);
        });
        unit->add_option("unit", a_, "Unit number (1..8)")->required();
        add_state(unit, on_, {"present", "absent"});

        auto *link = add("link", "Plug or unplug a port's link partner", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.set_link(p.unit0, p.port0, on_);
        });
        link->add_option("port", a_, "UNIT/PORT")->required();
        add_state(link, on_, {"up", "down"});

        auto *speed = add("speed", "Set the speed and duplex the link partner offers", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.set_link_speed(p.unit0, p.port0, parse_int(b_, "speed in Mbit/s"), !flag_);
        });
        speed->add_option("port", a_, "UNIT/PORT")->required();
        speed->add_option("mbps", b_, "10, 100, 1000 or 10000")->required();
        speed->add_flag("--half", flag_, "Half duplex");

        auto *admin = add("port", "Enable or disable a port or trunk (Tn), as the operator would", [this](swsim::Switch &sw) {
            auto p = parse_port(a_, true);
            sw.set_port_admin(p.unit0, p.port0, on_);
        });
        admin->add_option("port", a_, "UNIT/PORT or Tn")->required();
        add_state(admin, on_, {"enable", "disable"});

        auto *sfp = add("sfp", "Fit or pull a port's transceiver", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.set_transceiver(p.unit0, p.port0, on_);
        });
        sfp->add_option("port", a_, "UNIT/PORT")->required();
        add_state(sfp, on_, {"fitted", "pulled"});
    }

    void add_trunk() {
        auto *trunk = app_.add_subcommand("trunk", "Create, destroy and fill trunks (IDs 1..128)");
        trunk->require_subcommand(1);
        auto *create = add(trunk, "create", "Create a trunk", [this](swsim::Switch &sw) {
            sw.trunk_create(parse_trunk(a_), flag_);
        });
        create->add_option("id", a_, "Trunk ID")->required();
        create->add_flag("--dynamic", flag_, "Formed by LACP");
        auto *destroy = add(trunk, "destroy", "Destroy a trunk", [this](swsim::Switch &sw) {
            sw.trunk_destroy(parse_trunk(a_));
        });
        destroy->add_option("id", a_, "Trunk ID")->required();
        for (bool adding : {true, false}) {
            auto *cmd = add(trunk, adding ? "add" : "remove", adding ? "Add a port to a trunk" : "Remove a port from a trunk",
                            [this, adding](swsim::Switch &sw) {
                                auto p = parse_port(b_);
                                if (adding)
                                    sw.trunk_add_port(parse_trunk(a_), p.unit0, p.port0);
                                else
                                    sw.trunk_remove_port(parse_trunk(a_), p.unit0, p.port0);
                            });
            cmd->add_option("id", a_, "Trunk ID")->required();
            cmd->add_option("port", b_, "UNIT/PORT")->required();
        }
    }

    void add_vlan() {
        auto *vlan = app_.add_subcommand("vlan", "Create, delete and populate VLANs");
        vlan->require_subcommand(1);
        auto *create = add(vlan, "create", "Create a VLAN", [this](swsim::Switch &sw) {
            sw.vlan_create(parse_int(a_, "VLAN ID"), name_, flag_);
        });
        create->add_option("vid", a_, "VLAN ID (1..4094)")->required();
        create->add_option("--name", name_, "VLAN name");
        create->add_flag("--dynamic", flag_, "Learned by GVRP");
        auto *del = add(vlan, "delete", "Delete a VLAN", [this](swsim::Switch &sw) { sw.vlan_delete(parse_int(a_, "VLAN ID")); });
        del->add_option("vid", a_, "VLAN ID")->required();
        auto *member = add(vlan, "member", "Set a port's or trunk's (Tn) membership", [this](swsim::Switch &sw) {
            static const std::map<std::string, uint32_t> kinds = {
                {"tagged", SW_VLAN_TAGGED}, {"untagged", SW_VLAN_UNTAGGED}, {"forbidden", SW_VLAN_FORBIDDEN}, {"none", 0}};
            auto p = parse_port(b_, true);
            sw.vlan_set_member(parse_int(a_, "VLAN ID"), p.unit0, p.port0, kinds.at(c_));
        });
        member->add_option("vid", a_, "VLAN ID")->required();
        member->add_option("port", b_, "UNIT/PORT or Tn")->required();
        member->add_option("kind", c_, "tagged, untagged, forbidden or none")
            ->required()
            ->check(CLI::IsMember({"tagged", "untagged", "forbidden", "none"}));
        // ---- vlans: what GVRP and the operator do to a VLAN at run time ----
        for (bool on : {true, false}) {
            auto *cmd = add(vlan, on ? "register" : "withdraw",
                            on ? "GVRP registers a port or trunk (Tn) in a VLAN: a dynamic membership"
                               : "GVRP withdraws a port's or trunk's dynamic membership",
                            [this, on](swsim::Switch &sw) {
                                auto p = parse_port(b_, true);
                                sw.vlan_register(parse_int(a_, "VLAN ID"), p.unit0, p.port0, on);
                            });
            cmd->add_option("vid", a_, "VLAN ID")->required();
            cmd->add_option("port", b_, "UNIT/PORT or Tn")->required();
        }
        for (bool on : {true, false}) {
            auto *cmd = add(vlan, on ? "activate" : "deactivate", on ? "Put a VLAN in service" : "Take a VLAN out of service",
                            [this, on](swsim::Switch &sw) { sw.vlan_set_active(parse_int(a_, "VLAN ID"), on); });
            cmd->add_option("vid", a_, "VLAN ID")->required();
        }
    }

    void add_fdb() {
        auto *fdb = app_.add_subcommand("fdb", "Learned address table");
        fdb->require_subcommand(1);
        auto *addc = add(fdb, "add", "Add a learned (or --static) address", [this](swsim::Switch &sw) {
            uint8_t mac[6];
            parse_mac(a_, mac);
            auto p = parse_port(c_);
            sw.fdb_add(mac, parse_int(b_, "VLAN ID"), p.unit0, p.port0, -1, flag_);
        });
        addc->add_option("mac", a_, "MAC address aa:bb:cc:dd:ee:ff")->required();
        addc->add_option("vid", b_, "VLAN ID")->required();
        addc->add_option("port", c_, "UNIT/PORT (a trunk member puts it on the trunk)")->required();
        addc->add_flag("--static", flag_, "Static entry");
        add(fdb, "clear", "Empty the table", [](swsim::Switch &sw) { sw.fdb_clear(); });
    }

    void add_counters() {
        auto *counter = add("counter", "Set a port's statistic STAT to VALUE", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.set_counter(p.unit0, p.port0, parse_stat(b_), parse_u64(c_, "counter value"));
        });
        counter->add_option("port", a_, "UNIT/PORT")->required();
        counter->add_option("stat", b_, "Statistic number or name (below)")->required();
        counter->footer(stat_table());
        counter->add_option("value", c_, "Value")->required();
        auto *traffic = add("traffic", "Offer PPS packets per second each way on a port", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.set_traffic(p.unit0, p.port0, parse_u64(b_, "packet rate"));
        });
        traffic->add_option("port", a_, "UNIT/PORT")->required();
        traffic->add_option("pps", b_, "Packets per second")->required();
    }

    void add_fault() {
        auto *fault = app_.add_subcommand("fault", "Make platform calls fail");
        fault->require_subcommand(1);
        auto *set = add(fault, "set", "Make CALL return RESULT (negative)", [this](swsim::Switch &sw) {
            sw.fault_set(a_, parse_int(b_, "result"), times_);
        });
        set->add_option("call", a_, "Platform call name, e.g. cfg_set_port_speed")->required();
        set->add_option("result", b_, "Negative result")->required();
        set->add_option("--times", times_, "Fail this many times (-1: until cleared)")->default_val(-1);
        auto *clear = add(fault, "clear", "Clear the fault of CALL, or all", [this](swsim::Switch &sw) { sw.fault_clear(a_); });
        clear->add_option("call", a_, "Platform call name");
        add(fault, "list", "List armed faults", [](swsim::Switch &sw) {
            for (const auto &f : sw.faults())
                std::printf("%-32s %6d  %s\n", f.call.c_str(), f.result,
                            f.remaining < 0 ? "until cleared" : (std::to_string(f.remaining) + " more").c_str());
        });
    }

    void add_journal() {
        auto *journal = add("journal", "Record platform calls: on, off, clear or show", [this](swsim::Switch &sw) {
            if (a_ == "clear")
                sw.journal_clear();
            else if (a_ == "show")
                for (const auto &e : sw.journal())
                    std::printf("%8llu %s(%s)\n", (unsigned long long)e.seq, e.call.c_str(), e.args.c_str());
            else
                sw.journal_enable(*state_of(a_, kOnOff));
        });
        auto action = [](std::string &word) -> std::string {
            word = lower(word);
            if (word == "clear" || word == "show" || state_of(word, kOnOff)) return "";
            return "'" + word + "' is not on, off, clear or show";
        };
        journal->add_option("action", a_, "on, off, clear or show (for on and off also " + state_synonyms(kOnOff) + ")")
            ->required()
            ->check(CLI::Validator(action, ""));
    }

    // ---- transceivers and traffic controls ----

    void add_port_controls() {
        auto *ddm = add("ddm", "Set the readings of a fitted transceiver (or --none: it reports none)",
                        [this](swsim::Switch &sw) {
                            auto p = parse_port(a_);
                            if (flag_) return sw.set_transceiver_diagnostics(p.unit0, p.port0, false);
                            sw.set_transceiver_readings(p.unit0, p.port0, ddm_);
                            sw.set_transceiver_diagnostics(p.unit0, p.port0, true);
                        });
        ddm->add_option("port", a_, "UNIT/PORT")->required();
        ddm->add_option("--temp", ddm_.temperature_c, "Temperature, degrees Celsius")->capture_default_str();
        ddm->add_option("--vcc", ddm_.voltage_v, "Supply voltage, V")->capture_default_str();
        ddm->add_option("--bias", ddm_.bias_ma, "Laser bias, mA")->capture_default_str();
        ddm->add_option("--tx", ddm_.tx_power_mw, "Transmit power, mW")->capture_default_str();
        ddm->add_option("--rx", ddm_.rx_power_mw, "Receive power, mW")->capture_default_str();
        ddm->add_flag("--none", flag_, "The transceiver reports no diagnostics");

        auto *rate = add("rate-limit", "Limit a port's or trunk's (Tn) traffic; KBPS 0 lifts the limit",
                         [this](swsim::Switch &sw) {
                             auto p = parse_port(a_, true);
                             sw.set_rate_limit(p.unit0, p.port0, b_ == "in" ? swsim::Switch::kIngress : swsim::Switch::kEgress,
                                               uint32_t(parse_u64(c_, "rate in kbit/s")), burst_);
                         });
        rate->add_option("port", a_, "UNIT/PORT or Tn")->required();
        rate->add_option("direction", b_, "in or out")->required()->check(CLI::IsMember({"in", "out"}));
        rate->add_option("kbps", c_, "Rate in kbit/s")->required();
        rate->add_option("--burst", burst_, "Burst in kbytes (0: the default)")->default_val(0);

        auto *storm = add("storm", "Switch broadcast storm control of a port or trunk (Tn) on or off",
                          [this](swsim::Switch &sw) {
                              auto p = parse_port(a_, true);
                              sw.set_storm_control(p.unit0, p.port0, on_, pps_);
                          });
        storm->add_option("port", a_, "UNIT/PORT or Tn")->required();
        add_state(storm, on_, kOnOff);
        storm->add_option("--pps", pps_, "Broadcast packets per second let through (0: the default)")->default_val(0);

        static const std::map<std::string, int> modes = {
            {"none", SW_MIRROR_NONE}, {"rx", SW_MIRROR_RX}, {"tx", SW_MIRROR_TX}, {"both", SW_MIRROR_BOTH}};
        auto *mirror = add("mirror", "Copy a port's or trunk's (Tn) traffic to the mirror destination",
                           [this](swsim::Switch &sw) {
                               auto p = parse_port(a_, true);
                               sw.set_mirror(p.unit0, p.port0, modes.at(b_));
                           });
        mirror->add_option("port", a_, "UNIT/PORT or Tn")->required();
        mirror->add_option("what", b_, "rx, tx, both or none")->required()->check(CLI::IsMember({"rx", "tx", "both", "none"}));
        auto *mirror_to = add("mirror-to", "Set the mirror destination port (none: no destination)", [this](swsim::Switch &sw) {
            if (a_ == "none") return sw.set_mirror_to(0, -1);
            auto p = parse_port(a_);
            sw.set_mirror_to(p.unit0, p.port0);
        });
        mirror_to->add_option("port", a_, "UNIT/PORT or none")->required();

        static const std::map<std::string, swsim::Switch::QueueCounter> kinds = {
            {"sent-packets", swsim::Switch::kSentPackets}, {"sent-bytes", swsim::Switch::kSentBytes},
            {"dropped-packets", swsim::Switch::kDroppedPackets}, {"dropped-bytes", swsim::Switch::kDroppedBytes}};
        auto *queue = add("queue", "Set a counter of an egress queue (0..7) of a port", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.set_queue_counter(p.unit0, p.port0, kinds.at(c_), parse_int(b_, "queue number"),
                                 parse_u64(value_, "counter value"));
        });
        queue->add_option("port", a_, "UNIT/PORT")->required();
        queue->add_option("queue", b_, "Queue 0..7")->required();
        queue->add_option("counter", c_, "sent-packets, sent-bytes, dropped-packets or dropped-bytes")
            ->required()
            ->check(CLI::IsMember({"sent-packets", "sent-bytes", "dropped-packets", "dropped-bytes"}));
        queue->add_option("value", value_, "Value")->required();

        auto *show = add("controls", "Show a port's or trunk's (Tn) transceiver, limits, mirroring and queues",
                         [this](swsim::Switch &sw) {
                             auto p = parse_port(a_, true);
                             show_port_controls(sw, p.unit0, p.port0);
                         });
        show->add_option("port", a_, "UNIT/PORT or Tn")->required();
    }

    static void show_port_controls(const swsim::Switch &sw, int unit0, int port0) {
        if (port0 < 512) {
            auto x = sw.transceiver(unit0, port0);
            if (!x.cage)
                std::printf("transceiver  none (no cage)\n");
            else if (!x.fitted)
                std::printf("transceiver  cage empty\n");
            else if (!x.diagnostics)
                std::printf("transceiver  fitted, no diagnostics\n");
            else
                std::printf("transceiver  %d C, %.4f V, %.1f mA, tx %.4f mW, rx %.4f mW\n", x.temperature_c,
                            x.voltage / 10000.0, x.bias / 10.0, x.tx_power / 10000.0, x.rx_power / 10000.0);
        }
        auto t = sw.traffic(unit0, port0);
        for (int d : {0, 1})
            std::printf("%-12s %s, burst %u kbytes\n", d == 0 ? "ingress" : "egress",
                        t.rate_kbps[d] ? (std::to_string(t.rate_kbps[d]) + " kbit/s").c_str() : "no limit", t.burst_kb[d]);
        std::printf("storm        %s, %u packets/s\n", t.storm_control ? "on" : "off", t.storm_pps);
        static const char *mirrors[] = {"none", "rx", "tx", "both"};
        auto to = sw.mirror_to();
        std::printf("mirror       %s (destination %s)\n", t.mirror >= 0 && t.mirror <= 3 ? mirrors[t.mirror] : "?",
                    to.second < 0 ? "none" : port_text(to.first, to.second).c_str());
        std::printf("%-6s %20s %20s %20s %20s\n", "queue", "sent packets", "sent bytes", "dropped packets", "dropped bytes");
        for (int q = 0; q < SW_QUEUES; ++q)
            std::printf("%-6d %20llu %20llu %20llu %20llu\n", q, (unsigned long long)t.queues[0][q],
                        (unsigned long long)t.queues[1][q], (unsigned long long)t.queues[2][q],
                        (unsigned long long)t.queues[3][q]);
    }

    swsim::Ddm ddm_;
    uint32_t burst_ = 0, pps_ = 0;
    std::string value_;
    // ---- layer-2 protocols ----

    static int stp_state_code(const std::string &name) {
        static const std::map<std::string, int> states = {
            {"auto", -1}, {"disabled", SW_STP_DISABLED}, {"blocking", SW_STP_BLOCKING},
            {"learning", SW_STP_LEARNING}, {"forwarding", SW_STP_FORWARDING}};
        return states.at(name);
    }

    static uint32_t parse_group(const std::string &text) {
        uint32_t group = 0;
        if (ip_str_to_uint32(text.c_str(), &group) != 0) throw Error("'" + text + "' is not an IPv4 group address");
        return group;
    }

    static void show_stp(const swsim::Switch &sw) {
        auto s = sw.stp();
        std::printf("spanning tree  %s, force mode %d\n", s.enabled ? "on" : "off", s.force_mode);
        std::printf("bridge         priority %d, max age %d, hello %d, forward delay %d (1/100 s)\n", s.prio,
                    s.max_age, s.hello, s.fwd_delay);
        std::printf("root           %s %d/%s, cost %u%s\n", s.root_bridge ? "this bridge" : "bridge", s.root_prio,
                    mac_text(s.root_mac).c_str(), s.root_cost,
                    s.root_bridge ? "" : (", via " + port_text(s.root_unit0, s.root_port0)).c_str());
        std::printf("changes        %u\n", s.changes);
        static const char *names[] = {"disabled", "blocking", "learning", "forwarding"};
        std::printf("%-6s %-11s %-4s %-9s %-4s %-5s %s\n", "port", "state", "stp", "cost", "prio", "edge", "link type");
        auto line = [&](int u, int p) {
            auto i = sw.stp_port(u, p);
            static const char *links[] = {"?", "p2p", "shared", "auto"};
            std::printf("%-6s %-10s%s %-4s %-9u %-4d %-5s %s\n", port_text(u, p).c_str(), names[i.state & 3],
                        i.forced ? "*" : " ", i.enabled ? "on" : "off", i.cost, i.prio, i.edge ? "yes" : "",
                        links[i.linktype & 3]);
        };
        for (int u = 0; u < SW_MAX_UNITS; ++u) {
            auto info = sw.unit(u);
            for (int p = 0; info.known && p < info.ports; ++p) line(u, p);
        }
        for (int t = 0; t < SW_MAX_TRUNKS; ++t)
            if (sw.trunk(t).configured) line(0, 512 + t);
    }

    static void show_igmp(const swsim::Switch &sw) {
        auto group_text = [](uint32_t g) {
            char buf[16];
            ip_uint32_to_str(g, buf, sizeof buf);
            return std::string(buf);
        };
        std::printf("%-5s %-16s %s\n", "vlan", "group", "ports");
        for (const auto &g : sw.igmp_groups())
            std::printf("%-5d %-16s %s\n", g.vid, group_text(g.group).c_str(), port_list(g.ports).c_str());
        std::printf("\n%-5s %s\n", "vlan", "router ports");
        for (int vid : sw.vlan_ids()) {
            auto ports = sw.igmp_router_ports(vid);
            if (!ports.empty()) std::printf("%-5d %s\n", vid, port_list(ports).c_str());
        }
    }

    static void show_eaps(const swsim::Switch &sw) {
        std::printf("%-3s %-24s %-8s %s\n", "id", "name", "role", "state");
        for (int id = 0; id < SW_EAPS_DOMAINS; ++id) {
            auto e = sw.eaps(id);
            if (e.created)
                std::printf("%-3d %-24s %-8s %u\n", id, e.name.c_str(), e.master ? "master" : "transit", e.state);
        }
    }

    void add_l2proto() {
        auto *stp = app_.add_subcommand("stp", "Spanning tree: show, port states, topology changes, the root");
        stp->require_subcommand(1);
        add(stp, "show", "Settings, root and port states (* set by 'stp state')", [](swsim::Switch &sw) { show_stp(sw); });
        auto *state = add(stp, "state", "Put a port or trunk (Tn) into a state, or back to auto", [this](swsim::Switch &sw) {
            auto p = parse_port(a_, true);
            sw.stp_set_port_state(p.unit0, p.port0, stp_state_code(b_));
        });
        state->add_option("port", a_, "UNIT/PORT or Tn")->required();
        state->add_option("state", b_, "auto, disabled, blocking, learning or forwarding")
            ->required()
            ->check(CLI::IsMember({"auto", "disabled", "blocking", "learning", "forwarding"}));
        add(stp, "change", "Count a topology change now", [](swsim::Switch &sw) { sw.stp_topology_change(); });
        auto *root = add(stp, "root", "Hear a root bridge on a port or trunk, or 'self' to become root",
                         [this](swsim::Switch &sw) {
                             if (a_ == "self") return sw.stp_become_root();
                             swsim::Switch::StpRoot r;
                             auto p = parse_port(a_, true);
                             r.unit0 = p.unit0;
                             r.port0 = p.port0;
                             r.prio = parse_int(root_prio_, "bridge priority");
                             parse_mac(root_mac_, r.mac);
                             r.cost = uint32_t(parse_u64(root_cost_, "root path cost"));
                             sw.stp_set_root(r);
                         });
        root->add_option("port", a_, "UNIT/PORT, Tn or self")->required();
        root->add_option("--priority", root_prio_, "Root bridge priority")->capture_default_str();
        root->add_option("--mac", root_mac_, "Root bridge MAC address")->capture_default_str();
        root->add_option("--cost", root_cost_, "Root path cost through the port")->capture_default_str();

        auto *igmp = app_.add_subcommand("igmp", "IGMP snooping: static groups and router ports");
        igmp->require_subcommand(1);
        add(igmp, "show", "Static groups and router ports", [](swsim::Switch &sw) { show_igmp(sw); });
        auto *group = add(igmp, "group", "Add a port to a static group or take it out", [this](swsim::Switch &sw) {
            auto p = parse_port(c_);
            sw.igmp_set_group_port(parse_int(a_, "VLAN ID"), parse_group(b_), p.unit0, p.port0, on_);
        });
        group->add_option("vid", a_, "VLAN ID")->required();
        group->add_option("group", b_, "Group address, e.g. 239.1.1.1")->required();
        group->add_option("port", c_, "UNIT/PORT")->required();
        add_state(group, on_, kOnOff);
        auto *router = add(igmp, "router", "Make a port a multicast router port of a VLAN, or not", [this](swsim::Switch &sw) {
            auto p = parse_port(b_);
            sw.igmp_set_router_port(parse_int(a_, "VLAN ID"), p.unit0, p.port0, on_);
        });
        router->add_option("vid", a_, "VLAN ID")->required();
        router->add_option("port", b_, "UNIT/PORT")->required();
        add_state(router, on_, kOnOff);

        auto *eaps = app_.add_subcommand("eaps", "Ring protection domains (IDs 0..63)");
        eaps->require_subcommand(1);
        add(eaps, "show", "Domains, roles and states", [](swsim::Switch &sw) { show_eaps(sw); });
        auto *create = add(eaps, "create", "Configure a domain", [this](swsim::Switch &sw) {
            sw.eaps_create(parse_int(a_, "domain ID"), name_, flag_, uint32_t(parse_u64(ring_state_, "ring state")));
        });
        create->add_option("id", a_, "Domain ID (0..63)")->required();
        create->add_option("name", name_, "Domain name")->required();
        create->add_flag("--master", flag_, "This switch is the ring's master node");
        create->add_option("--state", ring_state_, "Ring state (the platform's code)")->capture_default_str();
        auto *del = add(eaps, "delete", "Remove a domain", [this](swsim::Switch &sw) { sw.eaps_delete(parse_int(a_, "domain ID")); });
        del->add_option("id", a_, "Domain ID")->required();
        auto *st = add(eaps, "state", "Set a domain's ring state", [this](swsim::Switch &sw) {
            sw.eaps_set_state(parse_int(a_, "domain ID"), uint32_t(parse_u64(b_, "ring state")));
        });
        st->add_option("id", a_, "Domain ID")->required();
        st->add_option("state", b_, "Ring state (the platform's code)")->required();
    }

    std::string root_prio_ = "4096", root_mac_ = "00:00:5e:00:53:01", root_cost_ = "20000", ring_state_ = "0";
    // ---- interfaces ----
    void add_ifaces() {
        auto *block = add("block", "Block a port for an error condition (loop, flapping), or release it",
                          [this](swsim::Switch &sw) {
                              auto p = parse_port(a_);
                              sw.set_error_blocked(p.unit0, p.port0, on_);
                          });
        block->add_option("port", a_, "UNIT/PORT")->required();
        add_state(block, on_, kOnOff);

        auto *lacp = app_.add_subcommand("lacp", "LACP: ports that run it, their partners and counters");
        lacp->require_subcommand(1);
        auto *enable = add(lacp, "enable", "Run LACP on a port (on) or stop it (off)", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.lacp_enable(p.unit0, p.port0, on_);
        });
        enable->add_option("port", a_, "UNIT/PORT")->required();
        add_state(enable, on_, kOnOff);
        auto *key = add(lacp, "key", "Set a port's LACP key", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.lacp_set_key(p.unit0, p.port0, parse_int(b_, "key"));
        });
        key->add_option("port", a_, "UNIT/PORT")->required();
        key->add_option("key", b_, "1..65535")->required();
        auto *partner = add(lacp, "partner", "Set what a port's link partner announces, or 'none'", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            if (b_ == "none") return sw.lacp_clear_partner(p.unit0, p.port0);
            parse_mac(b_, partner_.system);
            partner_.short_timeout = flag_;
            partner_.aggregatable = !individual_;
            sw.lacp_set_partner(p.unit0, p.port0, partner_);
        });
        partner->add_option("port", a_, "UNIT/PORT")->required();
        partner->add_option("system", b_, "Partner system MAC address, or none")->required();
        partner->add_option("--key", partner_.key, "Partner key")->default_val(1);
        partner->add_option("--port", partner_.port, "Partner port number")->default_val(1);
        partner->add_option("--priority", partner_.port_priority, "Partner port priority")->default_val(32768);
        partner->add_option("--system-priority", partner_.system_priority, "Partner system priority")->default_val(32768);
        partner->add_flag("--short", flag_, "Partner asks for the short timeout (a LACPDU every second)");
        partner->add_flag("--individual", individual_, "Partner will not aggregate the link");
        auto *counter = add(lacp, "counter", "Set a port's LACP counter", [this](swsim::Switch &sw) {
            auto p = parse_port(a_);
            sw.lacp_set_counter(p.unit0, p.port0, swsim::Switch::lacp_counter_number(b_), parse_u64(c_, "counter value"));
        });
        counter->add_option("port", a_, "UNIT/PORT")->required();
        counter->add_option("name", b_, "rx_lacpdu, rx_marker, rx_marker_response, rx_unknown, rx_illegal, tx_lacpdu, "
                                        "tx_marker or tx_marker_response")->required();
        counter->add_option("value", c_, "Value")->required();
        add(lacp, "show", "Ports that run LACP or hear a partner", [](swsim::Switch &sw) {
            std::printf("%-6s %-4s %-6s %-5s %-17s %-6s %-5s %s\n", "port", "lacp", "key", "trunk", "partner", "key",
                        "state", "lacpdus rx/tx");
            for (int u = 0; u < SW_MAX_UNITS; ++u) {
                if (!sw.unit(u).known) continue;
                for (int p = 0; p < sw.unit(u).ports; ++p) {
                    const sw_lacp_port_t l = sw.lacp_port(u, p);
                    if (!l.enabled && !l.partner_present) continue;
                    const int t = sw.port(u, p).trunk0;
                    char trunk[16] = "";
                    if (t >= 0) std::snprintf(trunk, sizeof trunk, "T%d", t + 1);
                    std::printf("%-6s %-4s %-6u %-5s %-17s %-6u 0x%02x  %llu/%llu\n", port_text(u, p).c_str(),
                                l.enabled ? "on" : "off", l.actor_key, trunk,
                                l.partner_present ? mac_text(l.partner_system).c_str() : "-", l.partner_key,
                                l.actor_state, (unsigned long long)l.counters[SW_LACP_RX_LACPDU],
                                (unsigned long long)l.counters[SW_LACP_TX_LACPDU]);
                }
            }
        });
    }
    swsim::Switch::LacpPartner partner_;
    bool individual_ = false;

    CLI::App app_;
    std::function<void()> action_;
    std::string state_, scenario_, what_, name_, a_, b_, c_;
    bool force_ = false, flag_ = false, on_ = false;
    int times_ = -1;
};

}  // namespace

int main(int argc, char **argv) { return Tool().run(argc, argv); }
