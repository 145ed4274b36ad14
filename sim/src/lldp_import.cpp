// Neighbours from Debian's lldpd: what `lldpcli -f json show neighbors
// details` (or `-f json0`) prints, heard on the switch's ports.
//
// The two formats hold the same tree.  json0 keeps every list and names
// things with a "name" field; json drops the list around a single element,
// turns {"value": x} into x, and keys interfaces and chassis by their names.
// The readers below accept both.
//
// lldpd's names of identifier kinds become LLDP's subtypes; a network
// address identifier becomes its address family octet and address; an
// organisationally specific TLV lldpd did not know ("unknown-tlvs") becomes
// the neighbour's unknown TLV, type 127, its OUI, subtype and value as
// information; lldpd's TTL is four times the neighbour's interval.
#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <nlohmann/json.hpp>

#include "lldp.hpp"
#include "util.hpp"

namespace swsim::lldp {
namespace {

using nlohmann::json;

[[noreturn]] void fail(const std::string &what) { throw Error(what); }

// The elements of a list, or the value itself when json format dropped the list.
std::vector<const json *> elements(const json *j) {
    std::vector<const json *> out;
    if (!j) return out;
    if (j->is_array())
        for (const json &e : *j) out.push_back(&e);
    else
        out.push_back(j);
    return out;
}
const json *member(const json *j, const char *key) {
    return j && j->is_object() && j->contains(key) ? &(*j)[key] : nullptr;
}
const json *first(const json *j) {
    auto e = elements(j);
    return e.empty() ? nullptr : e.front();
}
// A leaf's text: "x", [{"value": "x"}] and {"value": "x"} alike.
std::string text(const json *j) {
    if (!j) return "";
    if (j->is_string()) return j->get<std::string>();
    if (j->is_number() || j->is_boolean()) return j->dump();
    if (j->is_array()) return j->empty() ? "" : text(&(*j)[0]);
    return text(member(j, "value"));
}

std::string lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return s;
}

}  // namespace

// An address as its family octet and octets ("" when it is none).
std::string address_octets(const std::string &text, int &family) {
    uint8_t a[16];
    if (inet_pton(AF_INET, text.c_str(), a) == 1) {
        family = 1;
        return std::string(reinterpret_cast<char *>(a), 4);
    }
    if (inet_pton(AF_INET6, text.c_str(), a) == 1) {
        family = 2;
        return std::string(reinterpret_cast<char *>(a), 16);
    }
    return "";
}

// lldpd's capability names: bit k is capability k.
uint16_t capability_bit(const std::string &name) {
    static const std::map<std::string, int> bits = {{"other", 0},     {"repeater", 1}, {"bridge", 2},
                                                    {"wlan", 3},      {"router", 4},   {"tel", 5},
                                                    {"telephone", 5}, {"docsis", 6},   {"station", 7}};
    auto it = bits.find(lower(name));
    return it == bits.end() ? 0 : uint16_t(1u << it->second);
}

namespace {


// "45,46,47": octets in hexadecimal, as lldpcli prints TLV contents.
std::string hex_list(const std::string &text, const std::string &what) {
    std::string out;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        const std::string part = text.substr(at, end - at);
        if (part.empty() || part.size() > 2 || part.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
            fail(what + " '" + text + "' is not a list of hexadecimal octets");
        out += char(std::stoi(part, nullptr, 16));
        at = end + 1;
    }
    return out;
}

// An identifier {"type": kind, "value": text} as a subtype and octets.
struct Kind {
    const char *name;
    int chassis, port;  // subtypes of a chassis and a port ID
};
constexpr Kind kKinds[] = {{"ifalias", 2, 1}, {"mac", 4, 3},  {"ip", 5, 4},         {"ifname", 6, 5},
                           {"local", 7, 7},   {"agentid", 0, 6}, {"unhandled", 1, 2}};

void identifier(const json *id, bool chassis, int &subtype, std::string &octets, const std::string &where) {
    const std::string kind = lower(text(member(id, "type")));
    const std::string value = text(member(id, "value"));
    const Kind *k = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind &x) { return kind == x.name; });
    subtype = k == std::end(kKinds) ? 0 : chassis ? k->chassis : k->port;
    if (subtype == 0) fail(where + ": lldpd's identifier kind '" + kind + "' is not known");
    if (kind == "mac") {
        uint8_t mac[6];
        if (!parse_mac(value, mac)) fail(where + ": '" + value + "' is not a MAC address");
        octets.assign(reinterpret_cast<char *>(mac), 6);
    } else if (kind == "ip") {
        int family = 0;
        const std::string a = address_octets(value, family);
        if (a.empty()) fail(where + ": '" + value + "' is not an address");
        octets = char(family) + a;
    } else {
        octets = value;
    }
}

// One neighbour entry of lldpd's interface list.
Neighbour neighbour_of(const json &entry, const std::string &where) {
    Neighbour n;
    // The chassis: json keys it by the system name, json0 names it inside.
    const json *chassis = first(member(&entry, "chassis"));
    if (chassis && chassis->is_object() && !chassis->contains("id") && chassis->size() == 1) {
        n.sys_name = chassis->begin().key();
        chassis = &chassis->begin().value();
    } else {
        n.sys_name = text(member(chassis, "name"));
    }
    if (!chassis) fail(where + ": no chassis");
    identifier(first(member(chassis, "id")), true, n.chassis_subtype, n.chassis_id, where + ": chassis id");
    n.sys_desc = text(member(chassis, "descr")).substr(0, 255);
    for (const json *cap : elements(member(chassis, "capability"))) {
        const uint16_t bit = capability_bit(text(member(cap, "type")));
        n.caps_supported |= bit;
        const json *on = member(cap, "enabled");
        if (on && on->is_boolean() && on->get<bool>()) n.caps_enabled |= bit;
    }
    // The first management address, IPv4 before IPv6, with its interface.
    const auto ips = elements(member(chassis, "mgmt-ip"));
    const auto ifaces = elements(member(chassis, "mgmt-iface"));
    for (int want : {1, 2}) {
        for (std::size_t i = 0; i < ips.size() && !n.has_mgmt; ++i) {
            int family = 0;
            const std::string a = address_octets(text(ips[i]), family);
            if (family != want) continue;
            n.has_mgmt = true;
            n.mgmt_subtype = family;
            n.mgmt_addr = a;
            const std::string ifnum = i < ifaces.size() ? text(ifaces[i]) : "";
            n.mgmt_if_subtype = ifnum.empty() ? 1 : 2;
            n.mgmt_if_id = ifnum.empty() ? 0 : int32_t(std::strtol(ifnum.c_str(), nullptr, 10));
        }
    }

    const json *port = first(member(&entry, "port"));
    if (!port) fail(where + ": no port");
    identifier(first(member(port, "id")), false, n.port_subtype, n.port_id, where + ": port id");
    n.port_desc = text(member(port, "descr")).substr(0, 255);
    const long ttl = std::strtol(text(member(port, "ttl")).c_str(), nullptr, 10);
    n.rx_interval_s = int(std::clamp<long>(ttl / 4, 1, 3600));

    const json *tlv = first(member(first(member(&entry, "unknown-tlvs")), "unknown-tlv"));
    if (tlv) {
        const std::string oui = hex_list(text(member(tlv, "oui")), where + ": unknown TLV OUI");
        const long subtype = std::strtol(text(member(tlv, "subtype")).c_str(), nullptr, 10);
        n.unknown_tlv_type = 127;
        n.unknown_tlv_info = (oui + char(subtype) + hex_list(text(member(tlv, "value")), where + ": unknown TLV value"))
                                 .substr(0, swp::lldp_neighbor::kUnknownTlvInfo.size);
    }
    return n;
}

// (interface name, neighbour entry) for every neighbour lldpd listed.
std::vector<std::pair<std::string, const json *>> entries(const json &doc) {
    std::vector<std::pair<std::string, const json *>> out;
    const json *lldp = member(&doc, "lldp");
    if (!lldp) fail("no \"lldp\" object: not what lldpcli -f json prints");
    for (const json *part : elements(lldp)) {
        for (const json *item : elements(member(part, "interface"))) {
            if (!item->is_object()) fail("an interface of the list is not an object");
            if (item->contains("name")) {  // json0
                out.emplace_back(text(member(item, "name")), item);
                continue;
            }
            for (auto it = item->begin(); it != item->end(); ++it)  // json: keyed by name
                for (const json *e : elements(&it.value())) out.emplace_back(it.key(), e);
        }
    }
    return out;
}

}  // namespace

namespace ops {

int import_lldpd(View &v, const std::string &json_text, const std::vector<Switch::LldpImportTarget> &targets) {
    json doc;
    try {
        doc = json::parse(json_text);
    } catch (const json::exception &e) {
        fail(std::string("not JSON: ") + e.what());
    }
    // Everything is read and checked before the first neighbour is heard.
    std::vector<std::pair<int, Neighbour>> heard;
    for (const auto &[iface, entry] : entries(doc)) {
        auto t = std::find_if(targets.begin(), targets.end(), [&](const auto &x) { return x.iface == iface; });
        if (t == targets.end())
            t = std::find_if(targets.begin(), targets.end(), [](const auto &x) { return x.iface.empty(); });
        if (t == targets.end()) fail("lldpd's interface " + iface + " is mapped to no port");
        heard.emplace_back(slot_of(v, t->unit0, t->port0), neighbour_of(*entry, "interface " + iface));
    }
    for (const auto &[slot, n] : heard) {
        try {
            hear(v, slot, n);
        } catch (const Error &e) {
            fail(std::string("a neighbour from lldpd: ") + e.what());
        }
    }
    return int(heard.size());
}

}  // namespace ops
}  // namespace swsim::lldp
