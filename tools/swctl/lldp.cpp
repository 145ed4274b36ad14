// swctl lldp: show, add, change and remove the neighbours heard on a port
// ("U/P", or "mgmt" for the management port), and import what Debian's
// lldpd sees (`lldpcli -f json show neighbors details`).
#include "lldp.hpp"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <vector>

namespace swctl {
namespace {

using swsim::Error;
using Neighbour = swsim::Switch::LldpNeighbour;

// Capability names by bit, as LLDP numbers them.
const char *const kCapabilities[] = {"other", "repeater", "bridge", "wlan", "router", "telephone", "docsis", "station"};

std::string hex(const std::string &octets) {
    std::string out;
    char two[3];
    for (unsigned char c : octets) {
        std::snprintf(two, sizeof two, "%02x", c);
        out += two;
    }
    return out;
}

// An identifier's octets: "0x4142" in hexadecimal, a MAC address for a MAC
// subtype, else the text itself.
std::string octets(const std::string &text, bool mac, const std::string &what) {
    if (text.size() > 2 && text.compare(0, 2, "0x") == 0) {
        const std::string digits = text.substr(2);
        if (digits.size() % 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
            throw Error("'" + text + "' is not " + what + " in hexadecimal (0x and two digits an octet)");
        std::string out;
        for (std::size_t i = 0; i < digits.size(); i += 2) out += char(std::stoi(digits.substr(i, 2), nullptr, 16));
        return out;
    }
    if (!mac) return text;
    unsigned v[6];
    char tail;
    if (text.size() != 17 || std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%c", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &tail) != 6)
        throw Error("'" + text + "' is not a MAC address (aa:bb:cc:dd:ee:ff)");
    std::string out;
    for (unsigned b : v) out += char(b);
    return out;
}

bool looks_like_mac(const std::string &text) {
    if (text.size() != 17) return false;
    unsigned v[6];
    char tail;
    return std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%c", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &tail) == 6;
}

uint16_t capability_bits(const std::string &list) {
    uint16_t bits = 0;
    std::stringstream words(list);
    for (std::string word; std::getline(words, word, ',');) {
        if (word.empty()) continue;
        int k = 0;
        while (k < 8 && word != kCapabilities[k]) ++k;
        if (k == 8)
            throw Error("'" + word + "' is not a capability (other, repeater, bridge, wlan, router, telephone, docsis, station)");
        bits = uint16_t(bits | 1u << k);
    }
    return bits;
}

std::string capability_list(uint16_t bits) {
    std::string out;
    for (int k = 0; k < 8; ++k)
        if (bits & (1u << k)) out += (out.empty() ? "" : ",") + std::string(kCapabilities[k]);
    return out.empty() ? "-" : out;
}

// An address: IPv4, IPv6 or MAC, with its address family.
void parse_address(const std::string &text, Neighbour &n) {
    unsigned a[4];
    char tail;
    if (std::sscanf(text.c_str(), "%u.%u.%u.%u%c", &a[0], &a[1], &a[2], &a[3], &tail) == 4 && a[0] < 256 && a[1] < 256 &&
        a[2] < 256 && a[3] < 256) {
        n.mgmt_subtype = 1;
        n.mgmt_addr = {char(a[0]), char(a[1]), char(a[2]), char(a[3])};
    } else if (looks_like_mac(text)) {
        n.mgmt_subtype = 6;
        n.mgmt_addr = octets(text, true, "a MAC address");
    } else {
        throw Error("'" + text + "' is not an IPv4 or MAC address (or none)");
    }
    n.has_mgmt = true;
}

std::string address_text(const Neighbour &n) {
    if (!n.has_mgmt) return "-";
    const auto *a = reinterpret_cast<const unsigned char *>(n.mgmt_addr.data());
    char buf[64];
    if (n.mgmt_subtype == 1 && n.mgmt_addr.size() == 4) {
        std::snprintf(buf, sizeof buf, "%u.%u.%u.%u", a[0], a[1], a[2], a[3]);
        return buf;
    }
    return std::to_string(n.mgmt_subtype) + ":" + hex(n.mgmt_addr);
}

// An identifier as the switch shows it: a MAC in colon form, else text when
// it prints, else hexadecimal.
std::string id_text(int subtype, bool mac_subtype, const std::string &id) {
    if (mac_subtype && id.size() == 6) {
        std::string out;
        for (std::size_t i = 0; i < 6; ++i) out += (i ? ":" : "") + hex(id.substr(i, 1));
        return std::to_string(subtype) + ":" + out;
    }
    for (unsigned char c : id)
        if (c < 0x20 || c > 0x7e) return std::to_string(subtype) + ":0x" + hex(id);
    return std::to_string(subtype) + ":" + id;
}

// What add and change take besides the identifiers; unset options leave a
// neighbour's value as it is.
struct Options {
    std::optional<int> chassis_subtype, port_subtype, interval;
    std::optional<std::string> port_desc, sys_name, sys_desc, caps, enabled, mgmt, unknown;
    std::optional<int32_t> mgmt_if;
    std::string port, index, chassis, port_id;

    void declare(CLI::App *cmd) {
        cmd->add_option("--chassis-subtype", chassis_subtype, "Chassis ID subtype 1..7 (default: 4 for a MAC, else 7)");
        cmd->add_option("--port-subtype", port_subtype, "Port ID subtype 1..7 (default 5, interface name; 3: MAC)");
        cmd->add_option("--port-desc", port_desc, "Port description");
        cmd->add_option("--sys-name", sys_name, "System name");
        cmd->add_option("--sys-desc", sys_desc, "System description");
        cmd->add_option("--caps", caps, "Capabilities it has: other,repeater,bridge,wlan,router,telephone,docsis,station");
        cmd->add_option("--enabled", enabled, "Capabilities enabled (same names)");
        cmd->add_option("--mgmt", mgmt, "Management address: IPv4 or MAC, or none");
        cmd->add_option("--mgmt-if", mgmt_if, "Interface number of the management address (ifIndex)");
        cmd->add_option("--unknown-tlv", unknown, "A TLV the switch does not know: TYPE:HEX (type 9..127), or none");
        cmd->add_option("--interval", interval, "Seconds between its frames (1..3600, default 30)");
    }

    void apply(Neighbour &n) const {
        if (port_desc) n.port_desc = *port_desc;
        if (sys_name) n.sys_name = *sys_name;
        if (sys_desc) n.sys_desc = *sys_desc;
        if (caps) n.caps_supported = capability_bits(*caps);
        if (enabled) n.caps_enabled = capability_bits(*enabled);
        if (mgmt && *mgmt == "none") {
            n.has_mgmt = false;
            n.mgmt_addr.clear();
        } else if (mgmt) {
            parse_address(*mgmt, n);
        }
        if (mgmt_if) n.mgmt_if_id = *mgmt_if;
        if (unknown && *unknown == "none") {
            n.unknown_tlv_type = 0;
            n.unknown_tlv_info.clear();
        } else if (unknown) {
            const auto colon = unknown->find(':');
            if (colon == std::string::npos) throw Error("'" + *unknown + "' is not TYPE:HEX");
            try {
                n.unknown_tlv_type = std::stoi(unknown->substr(0, colon));
            } catch (const std::exception &) {
                throw Error("'" + *unknown + "' is not TYPE:HEX");
            }
            n.unknown_tlv_info = octets("0x" + unknown->substr(colon + 1), false, "the TLV's information");
        }
        if (interval) n.rx_interval_s = *interval;
    }
};

}  // namespace

void add_lldp_commands(CLI::App &app, const AddCommand &add, const ParsePort &parse_port) {
    static Options o;
    static bool aged = false;
    static std::string file;
    static std::vector<std::string> targets;

    auto port_of = [parse_port](const std::string &text) -> std::pair<int, int> {
        if (text == "mgmt") return {swsim::Switch::kLldpMgmtUnit, 0};
        return parse_port(text);
    };
    auto index_of = [](const std::string &text) {
        try {
            std::size_t used = 0;
            const long v = std::stol(text, &used);
            if (used == text.size() && v > 0 && v <= INT32_MAX) return int32_t(v);
        } catch (const std::exception &) {
        }
        throw Error("'" + text + "' is not a remote index (1..2147483647)");
    };

    auto *lldp = app.add_subcommand("lldp", "LLDP neighbours: show, add, change, remove, import from lldpd");
    lldp->require_subcommand(1);

    auto *show = add(lldp, "show", "The neighbours of a port, or of every port", [port_of](swsim::Switch &sw) {
        std::vector<std::pair<int, int>> ports;
        if (!o.port.empty()) {
            ports.push_back(port_of(o.port));
        } else {
            for (int u = 0; u < SW_MAX_UNITS; ++u)
                for (int p = 0; sw.unit(u).known && p < sw.unit(u).ports; ++p) ports.emplace_back(u, p);
            ports.emplace_back(swsim::Switch::kLldpMgmtUnit, 0);
        }
        std::printf("%-6s %-6s %-10s %-26s %-22s %-16s %-15s %s\n", "port", "index", "time mark", "chassis", "port id",
                    "system name", "management", "capabilities/enabled unknown-TLV");
        for (auto [u, p] : ports) {
            const std::string name =
                u == swsim::Switch::kLldpMgmtUnit ? "mgmt" : std::to_string(u + 1) + "/" + std::to_string(p + 1);
            for (const Neighbour &n : sw.lldp_neighbours(u, p))
                std::printf("%-6s %-6d %-10u %-26s %-22s %-16s %-15s %s/%s %s\n", name.c_str(), n.remote_index, n.time_mark,
                            id_text(n.chassis_subtype, n.chassis_subtype == 4, n.chassis_id).c_str(),
                            id_text(n.port_subtype, n.port_subtype == 3, n.port_id).c_str(), n.sys_name.c_str(),
                            address_text(n).c_str(), capability_list(n.caps_supported).c_str(),
                            capability_list(n.caps_enabled).c_str(),
                            n.unknown_tlv_type ? (std::to_string(n.unknown_tlv_type) + ":" + hex(n.unknown_tlv_info)).c_str()
                                               : "-");
        }
    });
    show->add_option("port", o.port, "UNIT/PORT or mgmt");

    auto *hear = add(lldp, "add", "A neighbour is heard on a port (one with the same IDs there is updated)",
                     [port_of](swsim::Switch &sw) {
                         Neighbour n;
                         n.chassis_subtype = o.chassis_subtype.value_or(looks_like_mac(o.chassis) ? 4 : 7);
                         n.chassis_id = octets(o.chassis, n.chassis_subtype == 4, "a chassis ID");
                         n.port_subtype = o.port_subtype.value_or(5);
                         n.port_id = octets(o.port_id, n.port_subtype == 3, "a port ID");
                         o.apply(n);
                         auto [u, p] = port_of(o.port);
                         std::printf("remote index %d\n", sw.lldp_hear(u, p, n));
                     });
    hear->add_option("port", o.port, "UNIT/PORT or mgmt")->required();
    hear->add_option("chassis", o.chassis, "Chassis ID: a MAC address, text, or 0x and hexadecimal")->required();
    hear->add_option("port-id", o.port_id, "Port ID: text, a MAC address (--port-subtype 3), or 0x and hexadecimal")
        ->required();
    o.declare(hear);

    auto *change = add(lldp, "change", "Change what a neighbour announces (its time mark moves)",
                       [port_of, index_of](swsim::Switch &sw) {
                           auto [u, p] = port_of(o.port);
                           const int32_t index = index_of(o.index);
                           std::optional<Neighbour> found;
                           for (const Neighbour &n : sw.lldp_neighbours(u, p))
                               if (n.remote_index == index) found = n;
                           if (!found) throw Error("port " + o.port + " has no neighbour " + o.index);
                           Neighbour n = *found;
                           if (o.chassis_subtype) n.chassis_subtype = *o.chassis_subtype;
                           if (o.port_subtype) n.port_subtype = *o.port_subtype;
                           o.apply(n);
                           sw.lldp_change(u, p, index, n);
                       });
    change->add_option("port", o.port, "UNIT/PORT or mgmt")->required();
    change->add_option("index", o.index, "Remote index of the neighbour (see lldp show)")->required();
    o.declare(change);

    auto *remove = add(lldp, "remove", "A neighbour goes (all: every neighbour of the port)",
                       [port_of, index_of](swsim::Switch &sw) {
                           auto [u, p] = port_of(o.port);
                           sw.lldp_remove(u, p, o.index == "all" ? 0 : index_of(o.index), aged);
                       });
    remove->add_option("port", o.port, "UNIT/PORT or mgmt")->required();
    remove->add_option("index", o.index, "Remote index, or all")->required();
    remove->add_flag("--aged", aged, "It timed out (counted as an ageout) rather than said goodbye");

    auto *import = add(lldp, "import", "Hear the neighbours lldpd lists (lldpcli -f json show neighbors details)",
                       [port_of](swsim::Switch &sw) {
                           std::ifstream in(file);
                           if (!in) throw Error(file + ": cannot be read");
                           const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
                           std::vector<swsim::Switch::LldpImportTarget> to;
                           for (const std::string &t : targets) {
                               const auto eq = t.find('=');
                               auto [u, p] = port_of(eq == std::string::npos ? t : t.substr(eq + 1));
                               to.push_back({eq == std::string::npos ? "" : t.substr(0, eq), u, p});
                           }
                           std::printf("%d neighbours heard\n", sw.lldp_import(text, to));
                       });
    import->add_option("file", file, "lldpcli's JSON output (-f json or -f json0)")->required();
    import->add_option("targets", targets, "IFACE=PORT: lldpd's interface onto a port; PORT alone: every interface")
        ->required();
}

}  // namespace swctl
