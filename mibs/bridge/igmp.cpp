// IGMP snooping: the switch-wide snooping settings, the statically configured
// multicast groups (records of the configuration image) and the multicast
// router ports of each VLAN, as port lists.
#include <algorithm>
#include <array>
#include <vector>

#include "agent/ifindex.hpp"
#include "agent/port_list.hpp"
#include "mibs/bridge/igmp_groups.hpp"
#include "mibs/bridge/platform_value.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace pl = snmpapi::port_list;
namespace groups = swp::igmp_groups;

namespace snmpapi::igmp {

GroupPorts group_ports(const uint8_t *image, uint32_t vlan, uint32_t group) {
    GroupPorts ports{};
    for (std::size_t i = 0; i < groups::kRecords; ++i) {
        const uint8_t *rec = groups::record(image, i);
        if (!matches(rec, vlan, group)) continue;
        for (std::size_t w = 0; w < ports.size(); ++w) ports[w] |= groups::word(rec, groups::kBitmapWord + w);
    }
    return ports;
}

bool has_port(const GroupPorts &ports, int unit0, int port0) {
    if (unit0 < 0 || unit0 >= SW_MAX_UNITS || port0 < 0 || port0 >= int(groups::kWordsPerUnit * 32)) return false;
    return (ports[groups::bitmap_word(unit0, port0) - groups::kBitmapWord] >> (port0 % 32)) & 1u;
}

}  // namespace snmpapi::igmp

namespace {

using snmpapi::igmp::in_use;
using snmpapi::igmp::matches;

// Every in-use group record as (VLAN, group), VLAN by VLAN, records in
// record order within a VLAN.
std::vector<std::pair<uint32_t, uint32_t>> configured_groups() {
    const uint8_t *image = cfg_get_cfg();
    std::vector<std::pair<uint32_t, uint32_t>> out;
    for (std::size_t i = 0; i < groups::kRecords; ++i) {
        const uint8_t *rec = groups::record(image, i);
        const uint32_t vlan = groups::word(rec, groups::kVlanWord);
        if (in_use(rec) && vlan >= 1 && vlan <= SW_MAX_VLAN_ID)
            out.emplace_back(vlan, groups::word(rec, groups::kGroupWord));
    }
    std::stable_sort(out.begin(), out.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    return out;
}

bool group_configured(uint32_t vlan, uint32_t group) {
    const uint8_t *image = cfg_get_cfg();
    for (std::size_t i = 0; i < groups::kRecords; ++i)
        if (matches(groups::record(image, i), vlan, group)) return true;
    return false;
}

bool is_router_port(int unit0, int port0, uint32_t vlan) {
    return cfg_get_igmp_router_port(unit0, port0, int(vlan)) > 0;
}

// Some user port of a present unit is a router port of the VLAN.
bool has_router_ports(uint32_t vlan) {
    bool found = false;
    for (int unit0 = 0; unit0 < SW_MAX_UNITS && !found; ++unit0) {
        if (get_status()->units[unit0].present == 0) continue;
        for (int port0 = 0; port0 < unit_port_count(unit0) && !found; ++port0)
            found = is_router_port(unit0, port0, vlan);
    }
    return found;
}

const uint8_t *group_port_list(uint8_t *area, uint32_t vlan, uint32_t group, size_t *len) {
    const auto ports = snmpapi::igmp::group_ports(cfg_get_cfg(), vlan, group);
    pl::read(area, pl::kAreaSize, len, [&](int u, int p) { return snmpapi::igmp::has_port(ports, u, p); });
    return area;
}

const uint8_t *router_port_list(uint8_t *area, uint32_t vlan, size_t *len) {
    pl::read(area, pl::kAreaSize, len, [vlan](int u, int p) { return is_router_port(u, p, vlan); });
    return area;
}

// The port-list write of both static tables: every port of the walk is set
// (bit set) or cleared (bit clear, or beyond the value); a failed add ends
// the write, a failed removal does not.
template <class Write>
int write_ports(const uint8_t *octets, size_t length, Write write) {
    return pl::write_walk(octets, length, [&](int unit0, int port0, pl::Bit bit) {
        const int on = bit == pl::Bit::set ? 1 : 0;
        const int result = write(unit0, port0, on);
        return on && result < 0 ? result : 0;
    });
}

// Row populations and checks shared by the static and current tables.
int add_group_rows(void *(*create)(uint32_t, uint32_t), bool active_vlans_only) {
    uint32_t asked = 0;
    bool active = false;
    for (auto [vlan, group] : configured_groups()) {
        if (active_vlans_only && vlan != asked) {
            asked = vlan;
            active = cfg_vlan_is_active(int(vlan)) != 0;
        }
        if (!active_vlans_only || active) create(vlan, group);
    }
    return 0;
}
int group_row_exists(uint32_t vlan, uint32_t group, void (*remove)(uint32_t, uint32_t)) {
    if (group_configured(vlan, group)) return 1;
    remove(vlan, group);
    return 0;
}
int add_router_rows(void *(*create)(uint32_t)) {
    for (uint32_t vlan = 1; vlan <= SW_MAX_VLAN_ID; ++vlan)
        if (has_router_ports(vlan)) create(vlan);
    return 0;
}
int router_row_exists(uint32_t vlan, void (*remove)(uint32_t)) {
    if (has_router_ports(vlan)) return 1;
    remove(vlan);
    return 0;
}

int32_t truth(int flag) { return flag != 0 ? 1 : 2; }

}  // namespace

extern "C" {

// ---- Scalars ----------------------------------------------------------------

int32_t get_igmpSnoopStatus(void) { return truth(cfg_get_igmp_enable()); }
int set_igmpSnoopStatus(int32_t value) { return cfg_set_igmp_enable(value == 1 ? 1 : 0); }
int32_t get_igmpSnoopQuerier(void) { return truth(cfg_get_igmp_enable_querier()); }
int set_igmpSnoopQuerier(int32_t value) { return cfg_set_igmp_enable_querier(value == 1 ? 1 : 0); }
int32_t get_igmpSnoopVersion(void) { return snmpapi::value_or_zero(cfg_get_igmp_version()); }
int set_igmpSnoopVersion(int32_t value) { return cfg_set_igmp_version(value); }
int32_t get_igmpSnoopQueryCount(void) { return snmpapi::value_or_zero(cfg_get_igmp_query_count()); }
int set_igmpSnoopQueryCount(int32_t value) { return cfg_set_igmp_query_count(value); }
int32_t get_igmpSnoopQueryInterval(void) { return snmpapi::value_or_zero(cfg_get_igmp_query_interval()); }
int set_igmpSnoopQueryInterval(int32_t value) { return cfg_set_igmp_query_interval(value); }
// The switch has no response-time setting of its own: this object is bound
// to the query interval, both ways.
int32_t get_igmpSnoopQueryMaxResponseTime(void) { return snmpapi::value_or_zero(cfg_get_igmp_query_interval()); }
int set_igmpSnoopQueryMaxResponseTime(int32_t value) { return cfg_set_igmp_query_interval(value); }
int32_t get_igmpSnoopQueryTimeout(void) { return snmpapi::value_or_zero(cfg_get_igmp_query_timeout()); }
int set_igmpSnoopQueryTimeout(int32_t value) { return cfg_set_igmp_query_timeout(value); }

// ---- igmpSnoopMulticastStaticTable / igmpSnoopMulticastCurrentTable ---------

int init_index_igmpSnoopMulticastStaticTable(void *(*create)(uint32_t, uint32_t)) {
    return add_group_rows(create, false);
}
int exists_entry_igmpSnoopMulticastStaticTable(uint32_t vlan, uint32_t group) {
    return group_row_exists(vlan, group, igmpSnoopMulticastStaticTable_removeEntry);
}
const uint8_t *get_igmpSnoopMulticastStaticPorts(uint32_t vlan, uint32_t group, size_t *len) {
    static uint8_t area[pl::kAreaSize];
    return group_port_list(area, vlan, group, len);
}
int set_igmpSnoopMulticastStaticPorts(uint32_t vlan, uint32_t group, const uint8_t *octets, size_t length) {
    return write_ports(octets, length, [&](int unit0, int port0, int on) {
        return cfg_set_igmp_set_mcast(unit0, port0, int(vlan), group, 0, on);
    });
}

// Groups of active VLANs only; the row check does not ask about the VLAN.
int init_index_igmpSnoopMulticastCurrentTable(void *(*create)(uint32_t, uint32_t)) {
    return add_group_rows(create, true);
}
int exists_entry_igmpSnoopMulticastCurrentTable(uint32_t vlan, uint32_t group) {
    return group_row_exists(vlan, group, igmpSnoopMulticastCurrentTable_removeEntry);
}
const uint8_t *get_igmpSnoopMulticastCurrentPorts(uint32_t vlan, uint32_t group, size_t *len) {
    static uint8_t area[pl::kAreaSize];
    return group_port_list(area, vlan, group, len);
}

// ---- igmpSnoopRouterStaticTable / igmpSnoopRouterCurrentTable ---------------

int init_index_igmpSnoopRouterStaticTable(void *(*create)(uint32_t)) { return add_router_rows(create); }
int exists_entry_igmpSnoopRouterStaticTable(uint32_t vlan) {
    return router_row_exists(vlan, igmpSnoopRouterStaticTable_removeEntry);
}
const uint8_t *get_igmpSnoopRouterStaticPorts(uint32_t vlan, size_t *len) {
    static uint8_t area[pl::kAreaSize];
    return router_port_list(area, vlan, len);
}
int set_igmpSnoopRouterStaticPorts(uint32_t vlan, const uint8_t *octets, size_t length) {
    return write_ports(octets, length, [&](int unit0, int port0, int on) {
        return cfg_set_igmp_router_port(unit0, port0, int(vlan), on);
    });
}

int init_index_igmpSnoopRouterCurrentTable(void *(*create)(uint32_t)) { return add_router_rows(create); }
int exists_entry_igmpSnoopRouterCurrentTable(uint32_t vlan) {
    return router_row_exists(vlan, igmpSnoopRouterCurrentTable_removeEntry);
}
const uint8_t *get_igmpSnoopRouterCurrentPorts(uint32_t vlan, size_t *len) {
    static uint8_t area[pl::kAreaSize];
    return router_port_list(area, vlan, len);
}

}  // extern "C"
