// Building a state file from a scenario (scenarios/README.md has the schema).
//
// Every field is checked as it is read; a problem is reported as
// "ORIGIN: FIELD.PATH: problem" and nothing is written to the state path.
#include <fstream>
#include <algorithm>
#include <initializer_list>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <netinet/in.h>
#include <unistd.h>

#include "chassis.hpp"
#include "helpers.hpp"
#include "ifaces.hpp"
#include "l2proto.hpp"
#include "lldp_scenario.hpp"
#include "rmon_scenario.hpp"
#include "model.hpp"
#include "routing.hpp"
#include "scenario_field.hpp"
#include "state_install.hpp"
#include "vlans.hpp"
#include "traffic.hpp"
#include "services.hpp"
#include "auth.hpp"
#include "files.hpp"
#include "filters.hpp"
#include "cfm.hpp"
#include "traps.hpp"
#include "util.hpp"

namespace swsim {
namespace {

using nlohmann::json;

// ---- the builder -----------------------------------------------------------------------------

constexpr uint32_t kCopperCaps = cap::k10Half | cap::k10Full | cap::k100Half | cap::k100Full | cap::k1000Full |
                                 cap::kAutoneg | cap::kPause | cap::kAsymPause;
constexpr uint32_t kSfpCaps = cap::k1000Full | cap::k10GFull | cap::kAutoneg | cap::kPause;

class Builder {
public:
    Builder(View &v, const Source &src) : v_(v), src_(src) {}

    void build(const Field &root) {
        root.expect_object({"description", "system", "units", "ports", "trunks", "vlans", "fdb", "vlan_settings",
                            "transceivers", "traffic", "stp", "igmp", "eaps", "interfaces", "chassis", "lldp",
                            "routing", "traps", "services", "rmon", "auth", "files", "filters", "cfm"});
        if (root.has("description")) root.at("description").text(4096);
        system(root.has("system") ? root.at("system") : empty("system"));
        units(root);
        if (root.has("trunks")) trunks(root.at("trunks"));
        if (root.has("ports"))
            for (const Field &f : root.at("ports").items()) port_item(f);
        if (root.has("vlans"))
            for (const Field &f : root.at("vlans").items()) vlan_item(f);
        else
            default_vlan();
        vlans::boot_defaults(v_);
        if (root.has("vlan_settings")) vlan_settings(root.at("vlan_settings"));
        services(root.has("services") ? root.at("services") : empty("services"));
        auth::build(v_, root.has("auth") ? root.at("auth") : empty("auth"));
        files::build(v_, root.has("files") ? root.at("files") : empty("files"));
        if (root.has("fdb"))
            for (const Field &f : root.at("fdb").items()) fdb_item(f);
        port_controls(root);
        interfaces(root.has("interfaces") ? root.at("interfaces") : empty("interfaces"));
        for (int u = 0; u < SW_MAX_UNITS; ++u) model::refresh_unit(v_, u);
        l2proto(root);
        chassis(root.has("chassis") ? root.at("chassis") : empty("chassis"));
        lldp::scenario(v_, root.has("lldp") ? root.at("lldp") : empty("lldp"), [this](const Field &f) { return select(f); });
        routing::build(v_, root.has("routing") ? root.at("routing") : empty("routing"));
        filters::build(v_, root.has("filters") ? root.at("filters") : empty("filters"),
                       [this](const Field &f) { return select(f); });
        cfm::build(v_, root.has("cfm") ? root.at("cfm") : empty("cfm"), [this](const Field &f) { return select(f); });
        if (root.has("traps")) traps(root.at("traps"));
        rmon::scenario(v_, root.has("rmon") ? root.at("rmon") : empty("rmon"), [this](const Field &f) { return select(f); });
        // A switch that just booted has no VLAN changes to report.
        sw_status_t &s = *v_.status;
        s.vlan_changed_stack[0] = s.vlan_changed_stack[1] = 0;
        s.vlan_changed_current = s.vlan_changed_static = s.vlan_changed_private = 0;
    }

private:
    Field empty(const char *path) { return Field(src_, empty_, path); }

    // ---- system ----

    void system(const Field &f) {
        f.expect_object({"name", "contact", "location", "timezone", "mac_ageing", "base_mac", "equipment",
                         "firmware", "product", "serial_no", "vendor_id", "clock_offset_s"});
        layout::ConfigModel &c = *v_.cfg;
        copy_text(c.hostname, f.text("name", SW_TEXT_SIZE - 1, "switch"));
        copy_text(c.contact, f.text("contact", SW_TEXT_SIZE - 1, ""));
        copy_text(c.location, f.text("location", SW_TEXT_SIZE - 1, ""));
        copy_text(c.tz_name, std::string("UTC"));
        if (f.has("timezone")) {
            Field tz = f.at("timezone");
            tz.expect_object({"name", "offset_min"});
            copy_text(c.tz_name, tz.text("name", SW_TZ_NAME_SIZE - 1, "UTC"));
            c.tz_offset_min = int32_t(tz.integer("offset_min", -720, 840, 0));
        }
        c.mac_ageing = int32_t(f.integer("mac_ageing", 10, 1000000, 300));
        std::string base = f.text("base_mac", 17, "02:00:5e:10:00:00");
        if (!parse_mac(base, base_mac_)) f.at("base_mac").fail("must be a MAC address like 02:00:5e:10:00:00");
        for (int u = 0; u < SW_MAX_UNITS; ++u) mac_add(base_mac_, uint64_t(u) << 8, c.unit_mac[u]);

        Field eq = f.has("equipment") ? f.at("equipment") : empty("system.equipment");
        eq.expect_object({"name", "oid", "vendor_url"});
        copy_text(c.equip_name, eq.text("name", SW_TEXT_SIZE - 1, "VX7300"));
        copy_text(c.vendor_url, eq.text("vendor_url", sizeof c.vendor_url - 1, "https://switch.example.net/"));
        std::vector<uint32_t> oid = {1, 3, 6, 1, 4, 1, 99999, 1, 1};
        if (eq.has("oid")) {
            oid.clear();
            auto parts = eq.at("oid").items();
            if (parts.size() < 2 || parts.size() > 16) eq.at("oid").fail("must have 2..16 sub-identifiers");
            for (const Field &p : parts) oid.push_back(uint32_t(p.integer(0, UINT32_MAX)));
        }
        std::copy(oid.begin(), oid.end(), c.equip_oid);
        c.equip_oid_len = uint32_t(oid.size());

        sw_status_t &s = *v_.status;
        Field fw = f.has("firmware") ? f.at("firmware") : empty("system.firmware");
        fw.expect_object({"version", "boot", "date"});
        copy_text(s.fw_version, fw.text("version", 31, "3.2.7 build 1142"));
        copy_text(s.boot_version, fw.text("boot", 31, "1.4.2"));
        copy_text(s.fw_date, fw.text("date", 31, "Mon Mar 18 09:30:00 UTC 2024"));
        copy_text(s.product, f.text("product", 31, "VX7300"));
        s.serial_no = uint64_t(f.integer("serial_no", 0, INT64_MAX, 730012345));
        s.vendor_id = uint32_t(f.integer("vendor_id", 0, UINT32_MAX, 99999));
        v_.rt->clock_offset_s = f.integer("clock_offset_s", -(int64_t(1) << 40), int64_t(1) << 40, 0);
    }

    // ---- units and their ports ----

    void units(const Field &root) {
        if (!root.has("units")) {
            unit(empty("units[0]"), 0);
            return;
        }
        Field f = root.at("units");
        if (f.is_object()) {
            // One description for `count` identical units.
            f.expect_object({"count", "present", "ports", "sfp_ports", "model", "version", "build_date"});
            int count = int(f.at("count").integer(1, SW_MAX_UNITS));
            for (int u = 0; u < count; ++u) unit(f, u);
            return;
        }
        auto items = f.items();
        if (items.empty() || items.size() > SW_MAX_UNITS) f.fail("must list 1..8 units");
        for (std::size_t u = 0; u < items.size(); ++u) {
            items[u].expect_object({"present", "ports", "sfp_ports", "mpu", "model", "serial", "version", "build_date"});
            unit(items[u], int(u));
        }
    }

    void unit(const Field &f, int unit0) {
        sw_unit_status_t &u = v_.status->units[unit0];
        const int ports = int(f.integer("ports", 1, SW_PORTS_PER_UNIT, 28));
        const int sfp = int(f.integer("sfp_ports", 0, ports, std::min(4, ports)));
        u.present = f.boolean("present", true);
        u.status2 = 1;
        u.is_mpu = f.boolean("mpu", unit0 == 0);
        u.user_ports = uint32_t(ports);
        copy_text(u.model, f.text("model", 31, "VX7300-" + std::to_string(ports)));
        copy_text(u.serial, f.text("serial", 31, "SIM7300100" + std::to_string(unit0 + 1)));
        copy_text(u.version, f.text("version", 31, "B1"));
        copy_text(u.build_date, f.text("build_date", 31, "2023-11-20"));
        for (int p = 0; p < ports; ++p) default_port(unit0, p, p >= ports - sfp);
    }

    void default_port(int unit0, int port0, bool sfp) {
        const int phys = model::phys_index(unit0, port0);
        layout::IfaceConfig &c = v_.cfg->ifaces[phys];
        layout::PortHardware &hw = v_.hw->ports[phys];
        c = layout::IfaceConfig{};
        c.admin = 1;
        c.autoneg = 1;
        c.duplex = 1;
        c.mtu = 1500;
        c.type = sfp ? port_type::kSfpPlus : port_type::kCopper;
        c.mdix = sfp ? 2 : 1;
        c.caps = sfp ? kSfpCaps : kCopperCaps;
        mac_add(v_.cfg->unit_mac[unit0], uint64_t(port0) + 1, c.mac);
        hw = layout::PortHardware{};
        hw.sfp_slot = sfp;
        hw.peer_full = 1;
        hw.hw_caps = c.caps;
    }

    // ---- port selections ----
    //
    // "all", "U/P", "U/P-Q", "U/*": ports, counted from one; "T<n>" or
    // "T<a>-<b>": trunks; "trunks": every configured trunk.

    std::vector<std::pair<int, int>> select(const Field &f) {
        std::vector<std::pair<int, int>> out;
        if (f.is_array()) {
            for (const Field &item : f.items()) {
                auto part = select(item);
                out.insert(out.end(), part.begin(), part.end());
            }
            return out;
        }
        const std::string s = f.text(64);
        auto number = [&](const std::string &t) {
            if (t.empty() || t.size() > 4 || t.find_first_not_of("0123456789") != std::string::npos)
                f.fail("'" + s + "' is not a port selection (all, U/P, U/P-Q, U/*, Tn, Ta-b, trunks)");
            return std::stoi(t);
        };
        auto range = [&](const std::string &t, int &lo, int &hi) {
            auto dash = t.find('-');
            lo = number(t.substr(0, dash));
            hi = dash == std::string::npos ? lo : number(t.substr(dash + 1));
        };
        if (s == "all") {
            for (int u = 0; u < SW_MAX_UNITS; ++u)
                for (int p = 0; p < int(v_.status->units[u].user_ports); ++p) out.emplace_back(u, p);
        } else if (s == "trunks") {
            for (int t = 0; t < SW_MAX_TRUNKS; ++t)
                if (v_.cfg->trunks[t].configured) out.emplace_back(0, layout::kTrunkPortBase + t);
        } else if (s[0] == 'T') {
            int lo, hi;
            range(s.substr(1), lo, hi);
            for (int t = lo; t <= hi; ++t) {
                if (t < 1 || t > SW_MAX_TRUNKS || !v_.cfg->trunks[t - 1].configured)
                    f.fail("trunk " + std::to_string(t) + " is not configured");
                out.emplace_back(0, layout::kTrunkPortBase + t - 1);
            }
        } else {
            auto slash = s.find('/');
            if (slash == std::string::npos) number("");
            const int unit = number(s.substr(0, slash));
            const std::string rest = s.substr(slash + 1);
            if (unit < 1 || unit > SW_MAX_UNITS || !v_.status->units[unit - 1].status2)
                f.fail("no unit " + std::to_string(unit) + " in this stack");
            const int ports = int(v_.status->units[unit - 1].user_ports);
            int lo = 1, hi = ports;
            if (rest != "*") range(rest, lo, hi);
            if (lo < 1 || hi > ports || lo > hi)
                f.fail("unit " + std::to_string(unit) + " has ports 1.." + std::to_string(ports));
            for (int p = lo; p <= hi; ++p) out.emplace_back(unit - 1, p - 1);
        }
        return out;
    }

    void port_item(const Field &f) {
        f.expect_object({"select", "link", "peer_speed", "half_duplex", "speed", "admin", "description", "mtu",
                         "pause", "traffic", "sfp", "mdix", "counters"});
        if (!f.has("select")) f.fail("needs a select field");
        for (auto [u, p] : select(f.at("select"))) {
            if (u == 0 && p >= layout::kTrunkPortBase) {
                for (const char *key : {"link", "peer_speed", "half_duplex", "sfp", "traffic", "counters"})
                    if (f.has(key)) f.at(key).fail("applies to ports, not trunks");
                port_config(f, model::iface_of(v_, u, p));
                continue;
            }
            const int phys = model::phys_index(u, p);
            layout::PortHardware &hw = v_.hw->ports[phys];
            port_config(f, phys);
            if (f.has("link")) hw.carrier = f.at("link").boolean();
            if (f.has("peer_speed") || f.has("half_duplex")) {
                int speed = int(f.integer("peer_speed", 10, 10000, hw.peer_speed ? hw.peer_speed : 10000));
                at_field(f, [&] { model::ops::set_link_speed(v_, u, p, speed, !f.boolean("half_duplex", false)); });
            }
            if (f.has("sfp")) {
                Field sfp = f.at("sfp");
                Ddm ddm;
                // Optics differ a little from port to port.
                ddm.temperature_c += (phys % 7) * 0.8;
                ddm.rx_power_mw -= (phys % 5) * 0.03;
                at_field(sfp, [&] { model::ops::set_transceiver(v_, u, p, sfp.boolean(), ddm); });
            }
            if (f.has("traffic")) model::set_traffic(v_, phys, uint64_t(f.at("traffic").integer(0, 20'000'000)));
            if (f.has("counters")) counters(f.at("counters"), phys);
        }
    }

    void port_config(const Field &f, int iface) {
        layout::IfaceConfig &c = v_.cfg->ifaces[iface];
        if (f.has("admin")) c.admin = f.at("admin").boolean();
        if (f.has("description")) copy_text(c.description, f.at("description").text(SW_TEXT_SIZE - 1));
        if (f.has("mtu")) c.mtu = uint32_t(f.at("mtu").integer(64, 9216));
        if (f.has("pause")) c.pause = uint32_t(f.at("pause").integer(0, 3));
        if (f.has("mdix")) {
            static const std::map<std::string, uint32_t> kinds = {{"auto", 1}, {"mdi", 2}, {"mdix", 3}};
            auto it = kinds.find(f.at("mdix").text(8));
            if (it == kinds.end()) f.at("mdix").fail("must be auto, mdi or mdix");
            c.mdix = it->second;
        }
        if (f.has("speed")) {
            int speed = int(f.at("speed").integer(0, 10000));
            if (model::set_port_speed(v_, iface, speed) != 0)
                f.at("speed").fail("port cannot run at " + std::to_string(speed) + " Mbit/s");
        }
    }

    // {"STAT": value}: starting values by statistic number.
    void counters(const Field &f, int phys) {
        if (!f.is_object()) f.fail("must be an object of statistic number: value");
        for (auto it = f.raw().begin(); it != f.raw().end(); ++it) {
            Field value(src_, it.value(), f.path() + "." + it.key());
            const std::string &key = it.key();
            if (key.empty() || key.size() > 2 || key.find_first_not_of("0123456789") != std::string::npos ||
                std::stoi(key) >= SW_MAX_STATISTIC)
                value.fail("not a statistic number (0..95)");
            const int stat = std::stoi(key);
            if (!model::stat_settable(stat)) value.fail("is the sum of other statistics; set those");
            model::set_counter(v_, phys, stat, uint64_t(value.integer(0, INT64_MAX)));
        }
    }

    // ---- interfaces ----

    // {"error_blocked": selection, "traps_off": selection,
    //  "lacp_system_priority": n, "lacp": [port items]}
    void interfaces(const Field &f) {
        f.expect_object({"error_blocked", "traps_off", "lacp_system_priority", "lacp"});
        model::lacp_defaults(v_);
        v_.cfg->ifaces_ext.lacp_system_priority = uint16_t(f.integer("lacp_system_priority", 0, 65535, 32768));
        if (f.has("lacp")) {
            // Partners are heard over links that are up.
            for (int u = 0; u < SW_MAX_UNITS; ++u) model::refresh_unit(v_, u);
            for (const Field &item : f.at("lacp").items()) lacp_item(item);
        }
        if (f.has("error_blocked"))
            for (auto [u, p] : select(f.at("error_blocked"))) {
                if (u == 0 && p >= layout::kTrunkPortBase) f.at("error_blocked").fail("applies to ports, not trunks");
                v_.hw->ifaces_ext.error_blocked[model::phys_index(u, p)] = 1;
            }
        if (f.has("traps_off"))
            for (auto [u, p] : select(f.at("traps_off")))
                v_.cfg->ifaces_ext.trap_disabled[model::iface_of(v_, u, p)] = 1;
    }

    // {"select": ports, "enabled": true, "priority": n, "key": n,
    //  "partner": {"system": mac, "system_priority": n, "key": n, "port": n
    //              (the first selected port's; one more for each next port),
    //              "port_priority": n, "short_timeout": false, "aggregatable": true},
    //  "counters": {"rx_marker": n, ...}}
    void lacp_item(const Field &f) {
        f.expect_object({"select", "enabled", "priority", "key", "partner", "counters"});
        if (!f.has("select")) f.fail("needs a select field");
        Switch::LacpPartner partner;
        const bool has_partner = f.has("partner");
        if (has_partner) {
            Field pf = f.at("partner");
            pf.expect_object({"system", "system_priority", "key", "port", "port_priority", "short_timeout", "aggregatable"});
            if (!parse_mac(pf.text("system", 17, ""), partner.system)) pf.fail("needs a system MAC address");
            partner.system_priority = int(pf.integer("system_priority", 0, 65535, 32768));
            partner.key = int(pf.integer("key", 0, 65535, 1));
            partner.port = int(pf.integer("port", 1, 65535, 1));
            partner.port_priority = int(pf.integer("port_priority", 0, 65535, 32768));
            partner.short_timeout = pf.boolean("short_timeout", false);
            partner.aggregatable = pf.boolean("aggregatable", true);
        }
        for (auto [u, p] : select(f.at("select"))) {
            if (u == 0 && p >= layout::kTrunkPortBase) f.at("select").fail("LACP runs on ports, not trunks");
            layout::LacpPortConfig &c = v_.cfg->ifaces_ext.lacp[model::phys_index(u, p)];
            c.enabled = f.boolean("enabled", true);
            c.priority = uint16_t(f.integer("priority", 0, 65535, c.priority));
            c.key = uint16_t(f.integer("key", 1, 65535, c.key));
            if (has_partner) {
                at_field(f.at("partner"), [&] { model::lacp_set_partner(v_, u, p, partner); });
                ++partner.port;
            }
            if (f.has("counters")) {
                Field cf = f.at("counters");
                if (!cf.is_object()) cf.fail("must be an object of counter name: value");
                for (auto it = cf.raw().begin(); it != cf.raw().end(); ++it) {
                    Field value(src_, it.value(), cf.path() + "." + it.key());
                    at_field(value, [&] {
                        model::lacp_set_counter(v_, u, p, Switch::lacp_counter_number(it.key()),
                                                uint64_t(value.integer(0, INT64_MAX)));
                    });
                }
            }
        }
        model::lacp_reconcile(v_);
    }

    // ---- trunks ----

    void trunks(const Field &f) {
        if (f.is_object()) {
            // Trunks 1..generate, `members` consecutive ports each, from port 1/1 on.
            f.expect_object({"generate", "members", "dynamic_every"});
            const int n = int(f.at("generate").integer(1, SW_MAX_TRUNKS));
            const int per = int(f.integer("members", 1, 8, 2));
            const int dyn_every = int(f.integer("dynamic_every", 0, SW_MAX_TRUNKS, 0));
            std::vector<std::pair<int, int>> ports = all_ports();
            if (std::size_t(n * per) > ports.size()) f.fail("the stack has too few ports for these trunks");
            for (int t = 0; t < n; ++t) {
                model::ops::trunk_create(v_, t, dyn_every && (t + 1) % dyn_every == 0);
                for (int m = 0; m < per; ++m) {
                    auto [u, p] = ports[std::size_t(t * per + m)];
                    model::ops::trunk_add_port(v_, t, u, p);
                }
            }
            return;
        }
        for (const Field &item : f.items()) {
            item.expect_object({"id", "dynamic", "members", "description"});
            if (!item.has("id")) item.fail("needs an id (1..128)");
            const int t = int(item.at("id").integer(1, SW_MAX_TRUNKS)) - 1;
            at_field(item.at("id"), [&] { model::ops::trunk_create(v_, t, item.boolean("dynamic", false)); });
            if (item.has("description"))
                copy_text(v_.cfg->ifaces[layout::kPhysPorts + t].description,
                          item.at("description").text(SW_TEXT_SIZE - 1));
            if (!item.has("members")) continue;
            Field members = item.at("members");
            for (auto [u, p] : select(members)) {
                if (u == 0 && p >= layout::kTrunkPortBase) members.fail("a trunk's members are ports");
                at_field(members, [&] { model::ops::trunk_add_port(v_, t, u, p); });
            }
        }
    }

    std::vector<std::pair<int, int>> all_ports() const {
        std::vector<std::pair<int, int>> out;
        for (int u = 0; u < SW_MAX_UNITS; ++u)
            for (int p = 0; p < int(v_.status->units[u].user_ports); ++p) out.emplace_back(u, p);
        return out;
    }

    // ---- VLANs ----

    void default_vlan() {
        model::ops::vlan_create(v_, 1, "default", false);
        for (auto [u, p] : all_ports())
            if (model::trunk_of_port(v_, u, p) < 0) v_.cfg->members[1][model::phys_index(u, p)] = SW_VLAN_UNTAGGED;
    }

    void vlan_item(const Field &f) {
        f.expect_object({"vid", "range", "name", "dynamic", "active", "untagged", "tagged", "forbidden"});
        int lo, hi;
        if (f.has("vid") == f.has("range")) f.fail("needs either vid or range");
        if (f.has("vid")) {
            lo = hi = int(f.at("vid").integer(1, SW_MAX_VLAN_ID));
        } else {
            auto r = f.at("range").items();
            if (r.size() != 2) f.at("range").fail("must be [first, last]");
            lo = int(r[0].integer(1, SW_MAX_VLAN_ID));
            hi = int(r[1].integer(lo, SW_MAX_VLAN_ID));
        }
        const std::string name = f.text("name", SW_TEXT_SIZE - 1, "");
        const bool dynamic = f.boolean("dynamic", false);
        const bool active = f.boolean("active", true);
        struct Membership {
            const char *key;
            uint32_t flags;
            std::vector<std::pair<int, int>> ports;
        };
        Membership kinds[] = {{"untagged", SW_VLAN_UNTAGGED, {}}, {"tagged", SW_VLAN_TAGGED, {}},
                              {"forbidden", SW_VLAN_FORBIDDEN, {}}};
        for (Membership &m : kinds)
            if (f.has(m.key)) {
                // Ports that are trunk members join VLANs through their trunk.
                for (auto [u, p] : select(f.at(m.key))) {
                    const bool trunk_member = p < layout::kTrunkPortBase && model::trunk_of_port(v_, u, p) >= 0;
                    if (!trunk_member || m.flags == SW_VLAN_FORBIDDEN) m.ports.emplace_back(u, p);
                }
            }
        for (int vid = lo; vid <= hi; ++vid) {
            std::string vname = name;
            for (auto at = vname.find("{vid}"); at != std::string::npos; at = vname.find("{vid}"))
                vname.replace(at, 5, std::to_string(vid));
            if (vname.size() >= SW_TEXT_SIZE) f.at("name").fail("is too long once {vid} is filled in");
            at_field(f, [&] { model::ops::vlan_create(v_, vid, vname, dynamic); });
            v_.cfg->vlans[vid].active = active;
            for (const Membership &m : kinds)
                for (auto [u, p] : m.ports) {
                    // Dynamic VLANs' members registered through GVRP.
                    const uint32_t gvrp = dynamic && m.flags != SW_VLAN_FORBIDDEN ? SW_VLAN_DYNAMIC : 0;
                    v_.cfg->members[vid][model::iface_of(v_, u, p)] = uint8_t(m.flags | gvrp);
                }
        }
    }

    // ---- vlan settings: GVRP, the management address method, port VLAN settings ----

    void vlan_settings(const Field &f) {
        f.expect_object({"gvrp", "dhcp_client", "ports"});
        layout::VlanSettings &s = v_.cfg->vlan_settings;
        s.gvrp = f.boolean("gvrp", false);
        s.dhcp_client = f.boolean("dhcp_client", false);
        if (!f.has("ports")) return;
        for (const Field &item : f.at("ports").items()) {
            item.expect_object({"select", "pvid", "acceptable", "ingress_filtering", "gvrp", "priority"});
            if (!item.has("select")) item.fail("needs a select field");
            int pvid = 0;
            if (item.has("pvid")) {
                pvid = int(item.at("pvid").integer(1, SW_MAX_VLAN_ID));
                if (!v_.cfg->vlans[pvid].exists) item.at("pvid").fail("VLAN " + std::to_string(pvid) + " does not exist");
            }
            static const std::map<std::string, uint8_t> kAcceptable = {{"all", 0}, {"untagged", 1}, {"tagged", 2}};
            uint8_t discard = 0;
            if (item.has("acceptable")) {
                auto it = kAcceptable.find(item.at("acceptable").text(16));
                if (it == kAcceptable.end()) item.at("acceptable").fail("must be all, untagged or tagged");
                discard = it->second;
            }
            for (auto [u, p] : select(item.at("select"))) {
                layout::VlanPortConfig &c = s.ports[model::iface_of(v_, u, p)];
                if (pvid) c.pvid = uint16_t(pvid);
                if (item.has("acceptable")) c.discard = discard;
                if (item.has("ingress_filtering")) c.ingress_filter = item.at("ingress_filtering").boolean();
                if (item.has("gvrp")) c.gvrp = item.at("gvrp").boolean();
                if (item.has("priority")) c.default_priority = uint8_t(item.at("priority").integer(0, 7));
            }
        }
    }

    // ---- learned addresses ----

    void fdb_item(const Field &f) {
        f.expect_object({"mac", "vid", "port", "static", "generate"});
        if (f.has("generate")) {
            const int n = int(f.at("generate").integer(1, layout::kFdbCapacity));
            at_field(f, [&] { generate_fdb(n); });
            return;
        }
        for (const char *key : {"mac", "vid", "port"})
            if (!f.has(key)) f.fail(std::string("needs a ") + key + " field");
        uint8_t mac[6];
        if (!parse_mac(f.at("mac").text(17), mac)) f.at("mac").fail("must be a MAC address like 00:11:22:33:44:55");
        const int vid = int(f.at("vid").integer(1, SW_MAX_VLAN_ID));
        auto ports = select(f.at("port"));
        if (ports.size() != 1 || ports[0].second >= layout::kTrunkPortBase) f.at("port").fail("must name one port");
        at_field(f, [&] {
            model::ops::fdb_add(v_, mac, vid, ports[0].first, ports[0].second, -1, f.boolean("static", false));
        });
    }

    // n dynamic addresses spread over the VLANs and the ports whose link is up.
    void generate_fdb(int n) {
        std::vector<int> vids;
        for (int vid = 1; vid <= SW_MAX_VLAN_ID; ++vid)
            if (v_.cfg->vlans[vid].exists) vids.push_back(vid);
        std::vector<std::pair<int, int>> ports;
        for (auto [u, p] : all_ports())
            if (v_.hw->ports[model::phys_index(u, p)].carrier) ports.emplace_back(u, p);
        if (ports.empty()) ports = all_ports();
        if (vids.empty()) throw Error("learned addresses need a VLAN");
        const uint8_t base[6] = {0x00, 0x1b, 0x21, 0x00, 0x00, 0x00};
        layout::Fdb &t = *v_.fdb;
        for (int i = 0; i < n; ++i) {
            if (t.count >= layout::kFdbCapacity) throw Error("learned address table full");
            auto [u, p] = ports[std::size_t(i) % ports.size()];
            const int trunk0 = model::trunk_of_port(v_, u, p);
            layout::FdbEntry &e = t.entries[t.count++];
            e = layout::FdbEntry{};
            mac_add(base, uint64_t(i) * 7919 + 1, e.mac);  // spread, never repeating
            e.vid = uint16_t(vids[std::size_t(i / int(ports.size())) % vids.size()]);
            e.unit = int8_t(u);
            e.port = uint16_t(p);
            e.trunk = uint8_t(trunk0 < 0 ? 0 : trunk0);
            e.flags = trunk0 >= 0 ? swp::mac_entry::kFlagTrunk : 0;
        }
    }

    // ---- transceiver readings and traffic controls ----

    void port_controls(const Field &root) {
        if (root.has("transceivers"))
            for (const Field &f : root.at("transceivers").items()) transceiver_item(f);
        if (!root.has("traffic")) return;
        Field t = root.at("traffic");
        t.expect_object({"mirror_to", "ports"});
        if (t.has("mirror_to")) {
            auto to = select(t.at("mirror_to"));
            if (to.size() != 1 || to[0].second >= layout::kTrunkPortBase) t.at("mirror_to").fail("must name one port");
            at_field(t.at("mirror_to"), [&] { traffic::ops::set_mirror_to(v_, to[0].first, to[0].second); });
        }
        if (t.has("ports"))
            for (const Field &f : t.at("ports").items()) traffic_item(f);
    }

    // Readings of fitted transceivers, in physical units.
    void transceiver_item(const Field &f) {
        f.expect_object({"select", "temperature_c", "voltage_v", "bias_ma", "tx_power_mw", "rx_power_mw", "diagnostics"});
        if (!f.has("select")) f.fail("needs a select field");
        auto number = [&](const char *key, double lo, double hi, double dflt) {
            if (!f.has(key)) return dflt;
            Field x = f.at(key);
            if (!x.raw().is_number()) x.fail("must be a number");
            const double d = x.raw().get<double>();
            if (d < lo || d > hi) x.fail("must be " + std::to_string(lo) + ".." + std::to_string(hi));
            return d;
        };
        Ddm ddm;
        ddm.temperature_c = number("temperature_c", -40, 125, ddm.temperature_c);
        ddm.voltage_v = number("voltage_v", 0, 6.5, ddm.voltage_v);
        ddm.bias_ma = number("bias_ma", 0, 6553.5, ddm.bias_ma);
        ddm.tx_power_mw = number("tx_power_mw", 0, 6.5535, ddm.tx_power_mw);
        ddm.rx_power_mw = number("rx_power_mw", 0, 6.5535, ddm.rx_power_mw);
        for (auto [u, p] : select(f.at("select")))
            at_field(f.at("select"), [&] {
                traffic::ops::set_transceiver_readings(v_, u, p, ddm);
                traffic::ops::set_transceiver_diagnostics(v_, u, p, f.boolean("diagnostics", true));
            });
    }

    void traffic_item(const Field &f) {
        f.expect_object({"select", "ingress", "egress", "storm_pps", "mirror"});
        if (!f.has("select")) f.fail("needs a select field");
        for (auto [u, p] : select(f.at("select"))) {
            for (int d : {layout::kIngress, layout::kEgress}) {
                const char *key = d == layout::kIngress ? "ingress" : "egress";
                if (!f.has(key)) continue;
                Field limit = f.at(key);
                limit.expect_object({"kbps", "burst_kb"});
                const auto kbps = uint32_t(limit.integer("kbps", 0, SW_RATE_MAX_KBPS, 0));
                const auto burst = uint32_t(limit.integer("burst_kb", 0, SW_BURST_MAX_KB, 0));
                at_field(limit, [&] { traffic::ops::set_rate_limit(v_, u, p, d, kbps, burst); });
            }
            if (f.has("storm_pps")) {
                const auto pps = uint32_t(f.at("storm_pps").integer(1, SW_BCAST_MAX_PPS));
                at_field(f.at("storm_pps"), [&] { traffic::ops::set_storm_control(v_, u, p, true, pps); });
            }
            if (f.has("mirror")) {
                static const std::map<std::string, int> modes = {
                    {"none", SW_MIRROR_NONE}, {"rx", SW_MIRROR_RX}, {"tx", SW_MIRROR_TX}, {"both", SW_MIRROR_BOTH}};
                auto it = modes.find(f.at("mirror").text(8));
                if (it == modes.end()) f.at("mirror").fail("must be none, rx, tx or both");
                at_field(f.at("mirror"), [&] { traffic::ops::set_mirror(v_, u, p, it->second); });
            }
        }
    }

    // ---- layer-2 protocols ----

    void l2proto(const Field &root) {
        l2proto::defaults(v_);
        if (root.has("stp")) stp(root.at("stp"));
        if (root.has("igmp")) igmp(root.at("igmp"));
        if (root.has("eaps") && root.at("eaps").is_object()) {
            // {"generate": N}: domains 0 .. N-1, the first the ring's master.
            Field g = root.at("eaps");
            g.expect_object({"generate"});
            const int n = int(g.at("generate").integer(1, SW_EAPS_DOMAINS));
            for (int id = 0; id < n; ++id)
                l2proto::ops::eaps_create(v_, id, "ring-" + std::to_string(id), id == 0, uint32_t(id % 5));
        } else if (root.has("eaps"))
            for (const Field &f : root.at("eaps").items()) {
                f.expect_object({"id", "name", "master", "state"});
                if (!f.has("id") || !f.has("name")) f.fail("needs an id (0..63) and a name");
                const int id = int(f.at("id").integer(0, SW_EAPS_DOMAINS - 1));
                at_field(f, [&] {
                    l2proto::ops::eaps_create(v_, id, f.at("name").text(SW_EAPS_NAME_SIZE - 1), f.boolean("master", false),
                                              uint32_t(f.integer("state", 0, UINT32_MAX, 0)));
                });
            }
    }

    void stp(const Field &f) {
        f.expect_object({"enabled", "force_mode", "priority", "max_age", "hello", "forward_delay", "root",
                         "topology_changes", "ports"});
        layout::L2ProtoConfig &c = v_.cfg->l2proto;
        c.stp_enabled = f.boolean("enabled", true);
        c.stp_force_mode = uint8_t(f.integer("force_mode", 0, 3, 0));
        c.stp_prio = int32_t(f.integer("priority", 0, 61440, 32768));
        if (c.stp_prio % 4096) f.at("priority").fail("must be a multiple of 4096");
        c.stp_max_age = int32_t(f.integer("max_age", 600, 4000, 2000));
        c.stp_hello = int32_t(f.integer("hello", 100, 1000, 200));
        c.stp_fwd_delay = int32_t(f.integer("forward_delay", 400, 3000, 1500));
        if (f.has("root")) {
            Field r = f.at("root");
            r.expect_object({"priority", "mac", "cost", "port"});
            Switch::StpRoot root;
            root.prio = int(r.integer("priority", 0, 61440, 4096));
            if (!parse_mac(r.text("mac", 17, "00:00:5e:00:53:01"), root.mac))
                r.at("mac").fail("must be a MAC address like 00:11:22:33:44:55");
            root.cost = uint32_t(r.integer("cost", 1, 200000000, 20000));
            if (!r.has("port")) r.fail("needs the port the root is reached on");
            auto ports = select(r.at("port"));
            if (ports.size() != 1) r.at("port").fail("must name one port or trunk");
            root.unit0 = ports[0].first;
            root.port0 = ports[0].second;
            at_field(r, [&] { l2proto::ops::stp_set_root(v_, root); });
        }
        v_.hw->l2proto.stp.changes = uint32_t(f.integer("topology_changes", 0, UINT32_MAX, v_.hw->l2proto.stp.changes));
        if (f.has("ports"))
            for (const Field &p : f.at("ports").items()) stp_port(p);
    }

    void stp_port(const Field &f) {
        f.expect_object({"select", "enabled", "edge", "link_type", "priority", "cost", "state"});
        if (!f.has("select")) f.fail("needs a select field");
        Switch::StpPortSettings s;
        if (f.has("enabled")) s.enabled = f.at("enabled").boolean();
        if (f.has("edge")) s.edge = f.at("edge").boolean();
        s.prio = int(f.integer("priority", 0, 240, -1));
        s.cost = f.integer("cost", 1, 200000000, -1);
        static const std::map<std::string, int> kLinks = {
            {"p2p", SW_STP_LINK_P2P}, {"shared", SW_STP_LINK_SHARED}, {"auto", SW_STP_LINK_AUTO}};
        static const std::map<std::string, int> kStates = {{"auto", -1}, {"disabled", SW_STP_DISABLED},
            {"blocking", SW_STP_BLOCKING}, {"learning", SW_STP_LEARNING}, {"forwarding", SW_STP_FORWARDING}};
        auto pick = [](const Field &k, const std::map<std::string, int> &names, const char *choices) {
            auto it = names.find(k.text(16));
            if (it == names.end()) k.fail(std::string("must be one of ") + choices);
            return it->second;
        };
        if (f.has("link_type")) s.linktype = pick(f.at("link_type"), kLinks, "p2p, shared, auto");
        for (auto [u, p] : select(f.at("select"))) {
            at_field(f, [&] { l2proto::ops::stp_set_port(v_, u, p, s); });
            if (f.has("state")) {
                const int state = pick(f.at("state"), kStates, "auto, disabled, blocking, learning, forwarding");
                at_field(f, [&] { l2proto::ops::stp_set_port_state(v_, u, p, state); });
            }
        }
    }

    void igmp(const Field &f) {
        f.expect_object({"enabled", "querier", "version", "query_count", "query_interval", "query_timeout", "groups",
                         "router_ports"});
        layout::L2ProtoConfig &c = v_.cfg->l2proto;
        c.igmp_enabled = f.boolean("enabled", true);
        c.igmp_querier = f.boolean("querier", false);
        c.igmp_version = uint8_t(f.integer("version", 1, 3, 2));
        c.igmp_query_count = int32_t(f.integer("query_count", 2, 10, 2));
        c.igmp_query_interval = int32_t(f.integer("query_interval", 60, 125, 125));
        c.igmp_query_timeout = int32_t(f.integer("query_timeout", 300, 500, 300));
        if (f.has("groups") && f.at("groups").is_object()) {
            // {"generate": N, "ports": selection}: groups 239.1.0.1 .. on the
            // existing VLANs in turn, each with the selected ports.
            Field g = f.at("groups");
            g.expect_object({"generate", "ports"});
            const int n = int(g.at("generate").integer(1, int(swp::igmp_groups::kRecords)));
            std::vector<int> vids;
            for (int vid = 1; vid <= SW_MAX_VLAN_ID; ++vid)
                if (v_.cfg->vlans[vid].exists) vids.push_back(vid);
            const auto ports = g.has("ports") ? user_ports(g.at("ports")) : std::vector<std::pair<int, int>>{};
            for (int i = 0; i < n; ++i)
                for (auto [u, p] : ports)
                    at_field(g, [&] {
                        l2proto::ops::igmp_set_group_port(v_, vids[std::size_t(i) % vids.size()],
                                                          0xef010001u + uint32_t(i), u, p, true);
                    });
        } else if (f.has("groups"))
            for (const Field &g : f.at("groups").items()) {
                g.expect_object({"vid", "group", "ports"});
                for (const char *key : {"vid", "group", "ports"})
                    if (!g.has(key)) g.fail(std::string("needs a ") + key + " field");
                const int vid = int(g.at("vid").integer(1, SW_MAX_VLAN_ID));
                uint32_t group = 0;
                if (helpers::ip_str_to_uint32(g.at("group").text(15).c_str(), &group) != 0)
                    g.at("group").fail("must be an IPv4 address like 239.1.1.1");
                for (auto [u, p] : user_ports(g.at("ports")))
                    at_field(g, [&] { l2proto::ops::igmp_set_group_port(v_, vid, group, u, p, true); });
            }
        if (f.has("router_ports"))
            for (const Field &r : f.at("router_ports").items()) {
                r.expect_object({"vid", "range", "ports"});
                if (r.has("vid") == r.has("range") || !r.has("ports")) r.fail("needs vid or range, and ports");
                int lo, hi;
                if (r.has("vid")) {
                    lo = hi = int(r.at("vid").integer(1, SW_MAX_VLAN_ID));
                } else {
                    auto range = r.at("range").items();
                    if (range.size() != 2) r.at("range").fail("must be [first, last]");
                    lo = int(range[0].integer(1, SW_MAX_VLAN_ID));
                    hi = int(range[1].integer(lo, SW_MAX_VLAN_ID));
                }
                const auto ports = user_ports(r.at("ports"));
                for (int vid = lo; vid <= hi; ++vid)
                    for (auto [u, p] : ports)
                        at_field(r, [&] { l2proto::ops::igmp_set_router_port(v_, vid, u, p, true); });
            }
    }

    // ---- chassis ----
    //
    // {"model": n, "slots": n, "psu_bays": n, "fans": n, "alarm_inputs": n,
    //  "alarm_outputs": n, "agent_address": "a.b.c.d", "agent_port": n,
    //  "mac_summary_ms": n, "model_word": n,
    //  "units": [{"unit": n or "all", "psus": [state...], "fans": [state...],
    //             "alarms": [raised input...], "psu_model": text,
    //             "fan_model": text, "cpu": %, "mem": %, "cpu_swing": %,
    //             "mem_swing": %, "temperature_c": n}]}
    // with module states "ok", "failed" or "absent", one per bay or position.
    void chassis(const Field &f) {
        f.expect_object({"model", "slots", "psu_bays", "fans", "alarm_inputs", "alarm_outputs", "agent_address",
                         "agent_port", "mac_summary_ms", "model_word", "units"});
        chassis::defaults(v_);
        sw_chassis_info_t info = v_.hw->chassis.info;
        info.model = uint32_t(f.integer("model", 0, UINT32_MAX, info.model));
        info.slots = uint32_t(f.integer("slots", 1, SW_MAX_UNITS, info.slots));
        info.psu_bays = uint32_t(f.integer("psu_bays", 0, SW_MAX_PSUS, info.psu_bays));
        info.fans = uint32_t(f.integer("fans", 0, SW_MAX_FANS, info.fans));
        info.alarm_inputs = uint32_t(f.integer("alarm_inputs", 0, SW_MAX_ALARM_INPUTS, info.alarm_inputs));
        info.alarm_outputs = uint32_t(f.integer("alarm_outputs", 0, SW_MAX_ALARM_OUTPUTS, info.alarm_outputs));
        if (f.has("agent_address") &&
            helpers::ip_str_to_uint32(f.at("agent_address").text(15).c_str(), &info.agent_address) != 0)
            f.at("agent_address").fail("must be an IPv4 address like 192.0.2.10");
        info.agent_port = uint32_t(f.integer("agent_port", 1, 65535, info.agent_port));
        at_field(f, [&] { chassis::ops::set_shape(v_, info); });
        chassis::ops::set_mac_summary(v_, uint32_t(f.integer("mac_summary_ms", 0, layout::kMacSummaryMaxMs, 50)), false);
        v_.status->model_word = uint32_t(f.integer("model_word", 0, UINT32_MAX, v_.status->model_word));
        if (f.has("units"))
            for (const Field &item : f.at("units").items()) chassis_unit(item);
    }

    void chassis_unit(const Field &f) {
        f.expect_object({"unit", "psus", "fans", "alarms", "psu_model", "fan_model", "cpu", "mem", "cpu_swing",
                         "mem_swing", "temperature_c"});
        if (!f.has("unit")) f.fail("needs a unit (1..8 or \"all\")");
        std::vector<int> units;
        if (f.at("unit").raw().is_string()) {
            if (f.at("unit").text(3) != "all") f.at("unit").fail("must be 1..8 or \"all\"");
            for (int u = 0; u < SW_MAX_UNITS; ++u)
                if (v_.status->units[u].status2) units.push_back(u);
        } else {
            const int unit = int(f.at("unit").integer(1, SW_MAX_UNITS));
            if (!v_.status->units[unit - 1].status2) f.at("unit").fail("no unit " + std::to_string(unit) + " in this stack");
            units.push_back(unit - 1);
        }
        static const std::map<std::string, int> kStates = {
            {"ok", SW_MODULE_OK}, {"failed", SW_MODULE_FAILED}, {"absent", SW_MODULE_ABSENT}};
        for (int u : units) {
            for (auto [key, kind] : {std::pair{"psus", Switch::kPsu}, std::pair{"fans", Switch::kFan}}) {
                // Listed positions take their state; a model alone renames every position.
                const std::string model = f.text(kind == Switch::kPsu ? "psu_model" : "fan_model", SW_MODEL_SIZE - 1, "");
                const auto states = f.has(key) ? f.at(key).items() : std::vector<Field>{};
                const layout::ChassisUnit &c = v_.hw->chassis.units[u];
                const uint32_t n = kind == Switch::kPsu ? v_.hw->chassis.info.psu_bays : v_.hw->chassis.info.fans;
                for (std::size_t p = 0; p < std::max<std::size_t>(n, states.size()); ++p) {
                    // A position beyond the unit's is refused by set_module.
                    int state = p < n ? (kind == Switch::kPsu ? c.psus : c.fans)[p].state : SW_MODULE_OK;
                    if (p < states.size()) {
                        auto it = kStates.find(states[p].text(8));
                        if (it == kStates.end()) states[p].fail("must be ok, failed or absent");
                        state = it->second;
                    } else if (model.empty()) {
                        continue;
                    }
                    const Field &where = p < states.size() ? states[p] : f;
                    at_field(where, [&] { chassis::ops::set_module(v_, kind, u, int(p), state, model); });
                }
            }
            if (f.has("alarms"))
                for (const Field &a : f.at("alarms").items())
                    at_field(a, [&] { chassis::ops::set_alarm_input(v_, u, int(a.integer(1, SW_MAX_ALARM_INPUTS)) - 1, true); });
            Switch::Load load;
            const layout::ChassisUnit &c = v_.hw->chassis.units[u];
            load.cpu = uint32_t(f.integer("cpu", 0, 100, c.cpu_base));
            load.mem = uint32_t(f.integer("mem", 0, 100, c.mem_base));
            load.cpu_swing = uint32_t(f.integer("cpu_swing", 0, 100, c.cpu_swing));
            load.mem_swing = uint32_t(f.integer("mem_swing", 0, 100, c.mem_swing));
            chassis::ops::set_load(v_, u, load);
            chassis::ops::set_temperature(v_, u, int(f.integer("temperature_c", -40, 125, c.temperature_c)));
        }
    }

    // ---- management services ----

    // Keys are the names of Switch::service_settings() (a value, or true and
    // false for on and off) and Switch::service_lists() (an array), and
    // ssh_keys: false for a switch without host keys.
    void services(const Field &f) {
        services::defaults(v_);
        if (!f.is_object()) f.fail("must be an object");
        auto known = [](const std::vector<Switch::ServiceSetting> &table, const std::string &key) {
            return std::any_of(table.begin(), table.end(), [&](const auto &s) { return s.name == key; });
        };
        for (auto it = f.raw().begin(); it != f.raw().end(); ++it) {
            const std::string key = it.key();
            const Field item = f.at(key.c_str());
            if (key == "ssh_keys") {
                if (!item.boolean()) services::ssh_keys(v_, "both", false);
            } else if (known(services::settings(), key)) {
                const json &j = item.raw();
                const std::string value = j.is_boolean() ? (j.get<bool>() ? "on" : "off")
                                          : j.is_number_integer() ? std::to_string(j.get<int64_t>())
                                                                  : item.text(64);
                at_field(item, [&] { services::set(v_, key, value); });
            } else if (known(services::lists(), key)) {
                for (const Field &value : item.items()) {
                    const std::string text = value.text(INET6_ADDRSTRLEN);
                    at_field(value, [&] { services::list_add(v_, key, text); });
                }
            } else {
                item.fail("unknown field");
            }
        }
    }

    // ---- trap destinations ----

    void traps(const Field &f) {
        f.expect_object({"port", "beyond_loopback", "destinations"});
        if (f.has("port")) traps::ops::set_port(v_, int(f.at("port").integer(1, 65535)));
        traps::ops::set_beyond_loopback(v_, f.boolean("beyond_loopback", false));
        if (f.has("destinations"))
            for (const Field &d : f.at("destinations").items()) {
                d.expect_object({"address", "community", "version"});
                if (!d.has("address")) d.fail("needs an address");
                const std::string address = d.at("address").text(INET6_ADDRSTRLEN);
                const std::string community = d.text("community", SW_TRAP_COMMUNITY_SIZE - 1, "public");
                const int version = int(d.integer("version", SW_TRAP_V1, SW_TRAP_V2C, SW_TRAP_V2C));
                at_field(d, [&] { traps::ops::add_destination(v_, address, community, version); });
            }
    }

    std::vector<std::pair<int, int>> user_ports(const Field &f) {
        auto ports = select(f);
        for (auto [u, p] : ports)
            if (p >= layout::kTrunkPortBase) f.fail("IGMP snooping takes user ports, not trunks");
        return ports;
    }

    View &v_;
    const Source &src_;
    const json empty_ = json::object();
    uint8_t base_mac_[6] = {};
};

void build(const std::string &state_path, const json &doc, const std::string &origin) {
    Source src{origin};
    // Built beside the target and installed only when complete, so a bad
    // scenario leaves any existing state alone.
    const std::string tmp = state_path + ".new." + std::to_string(getpid());
    std::unique_ptr<StateFile> file;
    try {
        file = StateFile::create(tmp);
        Builder(file->view(), src).build(Field(src, doc, ""));
        file->sync();
    } catch (...) {
        unlink(tmp.c_str());
        throw;
    }
    install_state(*file, tmp, state_path);
}

}  // namespace

void create_state_from_json(const std::string &state_path, const std::string &json_text, const std::string &origin) {
    json doc;
    try {
        doc = json::parse(json_text);
    } catch (const json::parse_error &e) {
        throw Error(origin + ": not valid JSON (" + e.what() + ")");
    }
    build(state_path, doc, origin);
}

void create_state(const std::string &state_path, const std::string &scenario_path) {
    std::ifstream in(scenario_path);
    if (!in) throw Error(scenario_path + ": cannot read the scenario");
    std::stringstream text;
    text << in.rdbuf();
    create_state_from_json(state_path, text.str(), scenario_path);
}

}  // namespace swsim
