// The "lldp" part of a scenario (scenarios/README.md): timers, what the
// switch announces, per-port settings and the neighbours heard at boot.
// A template over the scenario reader's Field (scenario.cpp), so that the
// fields are checked and complaints worded as everywhere else; `select`
// turns a port selection into (unit0, port0) pairs.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "lldp.hpp"
#include "model.hpp"
#include "util.hpp"

namespace swsim::lldp {

// Runs a change, reporting its complaint at `where`.
template <class Field, class Body>
void scenario_at(const Field &where, Body body) {
    try {
        body();
    } catch (const Error &e) {
        where.fail(e.what());
    }
}

// The LLDP ports a selection names: "mgmt" is the management port.
template <class Field, class Select>
std::vector<int> scenario_slots(View &v, const Field &f, Select &select) {
    std::vector<int> slots;
    auto one = [&](const Field &item) {
        if (item.raw().is_string() && item.raw().template get<std::string>() == "mgmt") {
            slots.push_back(layout::kLldpMgmtSlot);
            return;
        }
        for (auto [u, p] : select(item)) {
            if (u == 0 && p >= layout::kTrunkPortBase) item.fail("LLDP runs on ports and the management port, not trunks");
            slots.push_back(ops::slot_of(v, u, p));
        }
    };
    if (f.raw().is_array())
        for (const Field &item : f.items()) one(item);
    else
        one(f);
    return slots;
}

// {"supported": [names], "enabled": [names]}: capability bits.
template <class Field>
std::pair<uint16_t, uint16_t> scenario_capabilities(const Field &f, std::pair<uint16_t, uint16_t> dflt) {
    f.expect_object({"supported", "enabled"});
    auto bits = [&](const char *key, uint16_t d) {
        if (!f.has(key)) return d;
        uint16_t out = 0;
        for (const Field &name : f.at(key).items()) {
            const uint16_t bit = capability_bit(name.text(16));
            if (!bit) name.fail("is not other, repeater, bridge, wlan, router, telephone, docsis or station");
            out |= bit;
        }
        return out;
    };
    return {bits("supported", dflt.first), bits("enabled", dflt.second)};
}

// An identifier of subtype `subtype`: six octets of a MAC for subtype
// `mac_subtype`, else the text's octets.
template <class Field>
std::string scenario_identifier(const Field &f, int subtype, int mac_subtype) {
    const std::string text = f.text(255);
    if (subtype != mac_subtype) return text;
    uint8_t mac[6];
    if (!parse_mac(text, mac)) f.fail("must be a MAC address like 00:1b:21:aa:00:01");
    return std::string(reinterpret_cast<char *>(mac), 6);
}

template <class Field>
Neighbour scenario_neighbour(const Field &f) {
    f.expect_object({"port", "chassis_subtype", "chassis_id", "port_subtype", "port_id", "port_description",
                     "system_name", "system_description", "capabilities", "management_address",
                     "management_interface", "unknown_tlv", "interval"});
    Neighbour n;
    if (!f.has("chassis_id") || !f.has("port_id")) f.fail("needs a chassis_id and a port_id");
    uint8_t mac[6];
    const bool mac_chassis = f.at("chassis_id").raw().is_string() &&
                             parse_mac(f.at("chassis_id").raw().template get<std::string>(), mac);
    n.chassis_subtype = int(f.integer("chassis_subtype", 1, 7, mac_chassis ? 4 : 7));
    n.chassis_id = scenario_identifier(f.at("chassis_id"), n.chassis_subtype, 4);
    n.port_subtype = int(f.integer("port_subtype", 1, 7, 5));
    n.port_id = scenario_identifier(f.at("port_id"), n.port_subtype, 3);
    n.port_desc = f.text("port_description", 255, "");
    n.sys_name = f.text("system_name", 255, "");
    n.sys_desc = f.text("system_description", 255, "");
    if (f.has("capabilities"))
        std::tie(n.caps_supported, n.caps_enabled) = scenario_capabilities(f.at("capabilities"), {0, 0});
    if (f.has("management_address")) {
        const Field a = f.at("management_address");
        const std::string text = a.text(45);
        n.mgmt_addr = address_octets(text, n.mgmt_subtype);
        if (n.mgmt_addr.empty()) {
            if (!parse_mac(text, mac)) a.fail("must be an IPv4, IPv6 or MAC address");
            n.mgmt_subtype = 6;
            n.mgmt_addr.assign(reinterpret_cast<char *>(mac), 6);
        }
        n.has_mgmt = true;
        n.mgmt_if_id = int32_t(f.integer("management_interface", 0, INT32_MAX, 0));
    }
    if (f.has("unknown_tlv")) {
        const Field t = f.at("unknown_tlv");
        t.expect_object({"type", "info"});
        n.unknown_tlv_type = int(t.at("type").integer(9, 127));
        const std::string hex = t.text("info", 2 * swp::lldp_neighbor::kUnknownTlvInfo.size, "");
        if (hex.size() % 2 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
            t.at("info").fail("must be octets in hexadecimal, two digits each");
        for (std::size_t i = 0; i < hex.size(); i += 2) n.unknown_tlv_info += char(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    n.rx_interval_s = int(f.integer("interval", 1, 3600, 30));
    return n;
}

// {"generate": N, "ports": selection}: N neighbours on each selected port,
// told apart by their chassis MAC; every second one without a management
// address, every third with an unknown TLV.
inline Neighbour generated_neighbour(int slot, int k) {
    Neighbour n;
    const int unit1 = slot / SW_PORTS_PER_UNIT + 1, port1 = slot % SW_PORTS_PER_UNIT + 1;
    const bool mgmt_port = slot == layout::kLldpMgmtSlot;
    n.chassis_id = std::string("\x02\x11", 2) + char(mgmt_port ? 0xff : unit1) + char(mgmt_port ? 0 : port1) + '\0' +
                   char(k + 1);
    n.port_id = "ge-0/0/" + std::to_string(k + 1);
    n.port_desc = "uplink to " + (mgmt_port ? std::string("mgmt") : std::to_string(unit1) + "/" + std::to_string(port1));
    n.sys_name = "peer-" + std::to_string(slot + 1) + "-" + std::to_string(k + 1);
    n.sys_desc = "Simulated peer switch, release 1." + std::to_string(k);
    n.caps_supported = capability_bit("bridge") | capability_bit("router");
    n.caps_enabled = k % 2 ? capability_bit("router") : capability_bit("bridge");
    if (k % 2 == 0) {
        n.has_mgmt = true;
        n.mgmt_addr = std::string("\x0a", 1) + char(mgmt_port ? 255 : unit1) + char(mgmt_port ? 0 : port1) + char(k + 1);
        n.mgmt_if_id = k + 1;
    }
    if (k % 3 == 2) {
        n.unknown_tlv_type = 100;
        n.unknown_tlv_info = "sim-" + std::to_string(k);
    }
    return n;
}

template <class Field, class Select>
void scenario(View &v, const Field &f, Select select) {
    defaults(v);
    f.expect_object({"tx_interval", "tx_hold", "reinit_delay", "tx_delay", "notification_interval",
                     "system_description", "capabilities", "management_address", "management_interface",
                     "management_oid", "management_port_description", "ports", "neighbours"});
    layout::LldpConfig &c = v.cfg->lldp;
    const int timers[] = {int(f.integer("tx_interval", 5, 32768, c.tx_interval)),
                          int(f.integer("tx_hold", 2, 10, c.tx_hold)),
                          int(f.integer("reinit_delay", 1, 10, c.reinit_delay)),
                          int(f.integer("tx_delay", 1, 8192, c.tx_delay)),
                          int(f.integer("notification_interval", 5, 3600, c.notification_interval))};
    scenario_at(f, [&] { ops::set_timers(v, timers[0], timers[1], timers[2], timers[3], timers[4]); });
    copy_text(c.sys_desc, f.text("system_description", 255, text_of(c.sys_desc)));
    copy_text(c.mgmt_port_desc, f.text("management_port_description", 255, text_of(c.mgmt_port_desc)));
    if (f.has("capabilities"))
        std::tie(c.caps_supported, c.caps_enabled) =
            scenario_capabilities(f.at("capabilities"), {c.caps_supported, c.caps_enabled});
    if (f.has("management_address")) {
        const std::string a = f.at("management_address").text(15);
        int family = 0;
        const std::string octets = address_octets(a, family);
        if (a != "mac" && family != 1) f.at("management_address").fail("must be an IPv4 address or \"mac\"");
        c.mgmt_is_mac = a == "mac";
        if (family == 1) c.mgmt_ipv4 = swp::load_be32(reinterpret_cast<const uint8_t *>(octets.data()));
    }
    c.mgmt_if_id = int32_t(f.integer("management_interface", 0, INT32_MAX, c.mgmt_if_id));
    if (f.has("management_oid")) {
        std::vector<uint32_t> oid;
        for (const Field &s : f.at("management_oid").items()) oid.push_back(uint32_t(s.integer(0, UINT32_MAX)));
        scenario_at(f.at("management_oid"), [&] { ops::set_management_oid(v, oid); });
    }
    if (f.has("ports")) {
        for (const Field &item : f.at("ports").items()) {
            item.expect_object({"select", "admin", "notifications", "tlvs"});
            if (!item.has("select")) item.fail("needs a select field");
            static const std::pair<const char *, int> admins[] = {
                {"tx_only", SW_LLDP_TX_ONLY}, {"rx_only", SW_LLDP_RX_ONLY}, {"tx_and_rx", SW_LLDP_TX_AND_RX},
                {"disabled", SW_LLDP_DISABLED}};
            static const std::pair<const char *, unsigned> tlvs[] = {{"port_desc", SW_LLDP_TLV_PORT_DESC},
                                                                     {"sys_name", SW_LLDP_TLV_SYS_NAME},
                                                                     {"sys_desc", SW_LLDP_TLV_SYS_DESC},
                                                                     {"sys_cap", SW_LLDP_TLV_SYS_CAP}};
            for (int slot : scenario_slots(v, item.at("select"), select)) {
                const layout::LldpPortConfig &now = c.ports[slot];
                int admin = now.admin;
                if (item.has("admin")) {
                    const std::string word = item.at("admin").text(16);
                    admin = 0;
                    for (auto [name, value] : admins) admin = word == name ? value : admin;
                    if (!admin) item.at("admin").fail("must be tx_only, rx_only, tx_and_rx or disabled");
                }
                unsigned bits = now.tlvs;
                if (item.has("tlvs")) {
                    bits = 0;
                    for (const Field &t : item.at("tlvs").items()) {
                        const std::string word = t.text(16);
                        unsigned bit = 0;
                        for (auto [name, value] : tlvs) bit = word == name ? value : bit;
                        if (!bit) t.fail("must be port_desc, sys_name, sys_desc or sys_cap");
                        bits |= bit;
                    }
                }
                ops::set_port(v, slot, admin, item.boolean("notifications", now.notify != 0), bits);
            }
        }
    }
    if (!f.has("neighbours")) return;
    for (const Field &item : f.at("neighbours").items()) {
        if (item.has("generate")) {
            item.expect_object({"generate", "ports"});
            const int per_port = int(item.at("generate").integer(1, 64));
            if (!item.has("ports")) item.fail("needs the ports to generate neighbours on");
            for (int slot : scenario_slots(v, item.at("ports"), select))
                for (int k = 0; k < per_port; ++k)
                    scenario_at(item, [&] { ops::hear(v, slot, generated_neighbour(slot, k)); });
            continue;
        }
        if (!item.has("port")) item.fail("needs the port it is heard on");
        const Neighbour n = scenario_neighbour(item);
        for (int slot : scenario_slots(v, item.at("port"), select)) scenario_at(item, [&] { ops::hear(v, slot, n); });
    }
}

}  // namespace swsim::lldp
