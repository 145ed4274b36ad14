// swctl's routing commands: VLAN interface addresses, routes, OSPF
// neighbours and LSAs, VRRP routers, and the import of FRRouting's JSON.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "routing_commands.hpp"

namespace swctl {
namespace {

using swsim::Error;

uint32_t parse_addr(const std::string &text) {
    uint32_t a = 0;
    if (ip_str_to_uint32(text.c_str(), &a) != 0) throw Error("'" + text + "' is not an IPv4 address");
    return a;
}

std::pair<uint32_t, int> parse_prefix(const std::string &text) {
    uint32_t a = 0, m = 0;
    if (ip_addr_prefix_to_addr_mask(text.c_str(), &a, &m) != 0) throw Error("'" + text + "' is not an ADDRESS/LENGTH");
    return {a, ip_mask_to_prefix(m)};
}

std::string addr_text(uint32_t a) {
    char buf[16] = "?";
    ip_uint32_to_str(a, buf, sizeof buf);
    return buf;
}

std::string read_file(const std::string &path) {
    if (path.empty()) return "";
    std::ifstream in(path);
    if (!in) throw Error(path + ": cannot read it");
    std::stringstream text;
    text << in.rdbuf();
    if (text.str().empty()) throw Error(path + ": empty");
    return text.str();
}

int code_of(const std::string &word, const std::vector<std::pair<std::string, int>> &names, const char *what) {
    for (const auto &[n, code] : names)
        if (n == word) return code;
    throw Error("'" + word + "' is not a " + what);
}

const std::vector<std::pair<std::string, int>> kSources = {
    {"connected", SW_ROUTE_CONNECTED}, {"static", SW_ROUTE_STATIC}, {"ospf", SW_ROUTE_OSPF}, {"rip", SW_ROUTE_RIP},
    {"blackhole", SW_ROUTE_BLACKHOLE}};
const std::vector<std::pair<std::string, int>> kNbrStates = {
    {"down", 1}, {"attempt", 2}, {"init", 3}, {"two_way", 4}, {"exchange_start", 5}, {"exchange", 6}, {"loading", 7}, {"full", 8}};
const std::vector<std::pair<std::string, int>> kVrrpStates = {{"initialize", 1}, {"backup", 2}, {"master", 3}};

std::string name_of(int code, const std::vector<std::pair<std::string, int>> &names) {
    for (const auto &[n, c] : names)
        if (c == code) return n;
    return std::to_string(code);
}

// The options of the commands, kept for their callbacks.
struct Options {
    std::string a, b, protocol = "static", routes, neighbors;
    int vlan = 0, metric = -1, type = 0;
    std::vector<std::string> maps;
};

void show_routes(swsim::Switch &sw) {
    std::printf("%-18s %-15s %-5s %-9s %-6s %s\n", "prefix", "next hop", "vlan", "source", "metric", "age");
    for (const sw_route_t &r : sw.routes())
        std::printf("%-18s %-15s %-5d %-9s %-6u %us\n", (addr_text(r.dest) + "/" + std::to_string(r.prefix_len)).c_str(),
                    r.next_hop ? addr_text(r.next_hop).c_str() : "-", r.vid, name_of(int(r.source), kSources).c_str(),
                    r.metric, r.age_s);
}

}  // namespace

void add_routing_commands(CLI::App &app, const AddCommand &add) {
    static Options options;  // the commands' values, as long as the tool runs
    Options *o = &options;

    auto *route = app.add_subcommand("route", "The routing table: show, add and remove routes");
    route->require_subcommand(1);
    add(route, "show", "Every route", [](swsim::Switch &sw) { show_routes(sw); });
    auto *radd = add(route, "add", "Add (or replace) a route", [o](swsim::Switch &sw) {
        swsim::Switch::Route r;
        std::tie(r.dest, r.prefix_len) = parse_prefix(o->a);
        r.source = code_of(o->protocol, kSources, "route source (static, ospf, rip, blackhole, connected)");
        r.next_hop = o->b.empty() ? 0 : parse_addr(o->b);
        r.vid = o->vlan;
        r.metric = o->metric < 0 ? (r.source == SW_ROUTE_STATIC ? 1 : 0) : uint32_t(o->metric);
        sw.route_add(r);
    });
    radd->add_option("prefix", o->a, "Destination, ADDRESS/LENGTH")->required();
    radd->add_option("next_hop", o->b, "Next hop (none for a blackhole or connected route)");
    radd->add_option("--protocol", o->protocol, "static, ospf, rip, blackhole or connected")->capture_default_str();
    radd->add_option("--vlan", o->vlan, "Outgoing VLAN interface (default: the one whose network holds the next hop)");
    radd->add_option("--metric", o->metric, "Metric");
    auto *rdel = add(route, "remove", "Remove a route", [o](swsim::Switch &sw) {
        auto [dest, len] = parse_prefix(o->a);
        sw.route_remove(dest, len, o->b.empty() ? 0 : parse_addr(o->b));
    });
    rdel->add_option("prefix", o->a, "Destination, ADDRESS/LENGTH")->required();
    rdel->add_option("next_hop", o->b, "Its next hop (none: 0.0.0.0)");

    auto *ipaddr = app.add_subcommand("ipaddr", "Addresses of VLAN interfaces (each with its connected route)");
    ipaddr->require_subcommand(1);
    add(ipaddr, "show", "Every address", [](swsim::Switch &sw) {
        for (const sw_ip_iface_t &a : sw.ip_addrs())
            std::printf("vlan %-5d %s/%d\n", a.vid, addr_text(a.addr).c_str(), ip_mask_to_prefix(a.mask));
    });
    auto *iadd = add(ipaddr, "add", "Give a VLAN interface an address", [o](swsim::Switch &sw) {
        auto [addr, len] = parse_prefix(o->b);
        sw.ip_addr_add(o->vlan, addr, len);
    });
    iadd->add_option("vid", o->vlan, "VLAN ID")->required();
    iadd->add_option("address", o->b, "ADDRESS/LENGTH")->required();
    auto *idel = add(ipaddr, "remove", "Take an address away", [o](swsim::Switch &sw) { sw.ip_addr_remove(parse_addr(o->a)); });
    idel->add_option("address", o->a, "Address")->required();

    auto *ospf = app.add_subcommand("ospf", "OSPF: neighbours and their states, the link-state database");
    ospf->require_subcommand(1);
    add(ospf, "neighbors", "Every neighbour", [](swsim::Switch &sw) {
        std::printf("%-15s %-15s %-4s %s\n", "address", "router id", "prio", "state");
        for (const sw_ospf_nbr_t &n : sw.ospf_neighbors())
            std::printf("%-15s %-15s %-4u %s\n", addr_text(n.addr).c_str(), addr_text(n.router_id).c_str(), n.priority,
                        name_of(int(n.state), kNbrStates).c_str());
    });
    auto *nbr = add(ospf, "neighbor", "Put a neighbour into a state", [o](swsim::Switch &sw) {
        sw.ospf_set_neighbor_state(parse_addr(o->a), code_of(o->b, kNbrStates, "neighbour state"));
    });
    nbr->add_option("address", o->a, "Neighbour's address")->required();
    nbr->add_option("state", o->b, "down, attempt, init, two_way, exchange_start, exchange, loading or full")->required();
    add(ospf, "lsas", "The link-state database", [](swsim::Switch &sw) {
        std::printf("%-15s %-4s %-15s %-15s %-10s %-5s %s\n", "area/if", "type", "ls id", "router", "sequence", "age", "checksum");
        for (const sw_ospf_lsa_t &l : sw.ospf_lsas())
            std::printf("%-15s %-4u %-15s %-15s 0x%08x %-5u 0x%04x\n", addr_text(l.where).c_str(), l.type,
                        addr_text(l.lsid).c_str(), addr_text(l.router_id).c_str(), uint32_t(l.sequence), l.age, l.checksum);
    });
    auto *age = add(ospf, "age", "Make LSAs older (up to the maximum age of 3600 s)", [o](swsim::Switch &sw) {
        sw.ospf_age_lsas(uint32_t(std::max(0, o->metric)), uint32_t(o->type));
    });
    age->add_option("seconds", o->metric, "Seconds")->required()->check(CLI::Range(0, 3600));
    age->add_option("--type", o->type, "Only LSAs of this type");

    auto *vrrp = app.add_subcommand("vrrp", "VRRP virtual routers");
    vrrp->require_subcommand(1);
    add(vrrp, "show", "Every virtual router", [](swsim::Switch &sw) {
        for (const sw_vrrp_router_t &r : sw.vrrp_routers())
            std::printf("vlan %-5d vrid %-3u prio %-3u %-10s addresses %u\n", r.vid, r.vrid, r.priority,
                        name_of(int(r.state), kVrrpStates).c_str(), r.addr_count);
    });
    auto *vstate = add(vrrp, "state", "Put a virtual router into a state", [o](swsim::Switch &sw) {
        sw.vrrp_set_state(o->vlan, std::stoi(o->a), code_of(o->b, kVrrpStates, "VRRP state"));
    });
    vstate->add_option("vid", o->vlan, "VLAN ID")->required();
    vstate->add_option("vrid", o->a, "Virtual router ID")->required()->check(CLI::Range(1, 255));
    vstate->add_option("state", o->b, "initialize, backup or master")->required();

    auto *frr = add(&app, "frr-import",
                    "Replace the routes and OSPF neighbours with FRRouting's (vtysh -c 'show ip route json', "
                    "'show ip ospf neighbor json')",
                    [o](swsim::Switch &sw) {
                        std::vector<std::pair<std::string, int>> vlans;
                        for (const std::string &m : o->maps) {
                            const auto eq = m.find('=');
                            if (eq == std::string::npos) throw Error("'" + m + "' is not NAME=VID");
                            vlans.emplace_back(m.substr(0, eq), std::stoi(m.substr(eq + 1)));
                        }
                        if (o->routes.empty() && o->neighbors.empty()) throw Error("give --routes, --ospf-neighbors or both");
                        const auto r = sw.import_frr(read_file(o->routes), read_file(o->neighbors), vlans);
                        std::printf("%d routes, %d neighbours imported, %d left out\n", r.routes, r.neighbors, r.skipped);
                    });
    frr->add_option("--routes", o->routes, "File with the output of 'show ip route json'");
    frr->add_option("--ospf-neighbors", o->neighbors, "File with the output of 'show ip ospf neighbor json'");
    frr->add_option("--vlan", o->maps, "NAME=VID: FRR's interface NAME is VLAN VID (names ending in digits map by them)");
}

}  // namespace swctl
