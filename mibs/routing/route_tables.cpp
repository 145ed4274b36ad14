// The switch's IPv4 addresses (ipAddrTable) and routing table, seen through
// IP-FORWARD-MIB's ipCidrRouteTable and inetCidrRouteTable and their counts.
//
// Both route tables list the platform's routes in its key order
// (destination, prefix length, next hop), which is the OID order of each:
// a longer prefix has the larger mask, and a connected route's next hop
// 0.0.0.0 (unknown, with no octets, in inetCidrRouteTable) comes first.
// The type of service is always 0 and the routing policy 0.0.
#include "mibs/routing/values.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace snmpapi::routing {
namespace {

bool find_route(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    if (cfg_route_find(mode, k[0], k[1], k[2], &row.route) != 0) return false;
    key[0] = row.route.dest;
    key[1] = row.route.prefix_len;
    key[2] = row.route.next_hop;
    return true;
}

// ipCidrRouteType / inetCidrRouteType: local(3) for a connected network,
// remote(4) through a gateway; a blackhole is reject(2) in ipCidrRouteTable,
// which has no other way to say it, and blackhole(5) in inetCidrRouteTable.
int32_t route_type(const sw_route_t &r, bool has_blackhole) {
    switch (r.source) {
    case SW_ROUTE_CONNECTED: return 3;
    case SW_ROUTE_BLACKHOLE: return has_blackhole ? 5 : 2;
    default: return 4;
    }
}
// IANAipRouteProtocol: local(2), netmgmt(3), rip(8), ospf(13).
int32_t route_proto(const sw_route_t &r) {
    switch (r.source) {
    case SW_ROUTE_CONNECTED: return 2;
    case SW_ROUTE_RIP: return 8;
    case SW_ROUTE_OSPF: return 13;
    default: return 3;
    }
}

constexpr Part kCidrIndex[] = {Part::IPV4, Part::MASK_AS_PREFIX, Part::ZERO, Part::IPV4};
constexpr HandColumn kCidrColumns[] = {
    {1, "ipCidrRouteDest", [](const RowData &r) { return ip(r.route.dest); }},
    {2, "ipCidrRouteMask", [](const RowData &r) { return ip(prefix_mask(r.route.prefix_len)); }},
    {3, "ipCidrRouteTos", [](const RowData &) { return integer(0); }},
    {4, "ipCidrRouteNextHop", [](const RowData &r) { return ip(r.route.next_hop); }},
    {5, "ipCidrRouteIfIndex", [](const RowData &r) { return integer(vlan_ifindex(r.route.vid)); }},
    {6, "ipCidrRouteType", [](const RowData &r) { return integer(route_type(r.route, false)); }},
    {7, "ipCidrRouteProto", [](const RowData &r) { return integer(route_proto(r.route)); }},
    {8, "ipCidrRouteAge", [](const RowData &r) { return integer(int32_t(r.route.age_s & 0x7fffffff)); }},
    {9, "ipCidrRouteInfo", [](const RowData &) { return null_oid_value(); }},
    {10, "ipCidrRouteNextHopAS", [](const RowData &) { return integer(0); }},
    {11, "ipCidrRouteMetric1", [](const RowData &r) { return integer(int32_t(r.route.metric)); }},
    {12, "ipCidrRouteMetric2", [](const RowData &) { return integer(-1); }},
    {13, "ipCidrRouteMetric3", [](const RowData &) { return integer(-1); }},
    {14, "ipCidrRouteMetric4", [](const RowData &) { return integer(-1); }},
    {15, "ipCidrRouteMetric5", [](const RowData &) { return integer(-1); }},
    {16, "ipCidrRouteStatus", [](const RowData &) { return integer(kActive); }},
};

// The index objects (columns 1 to 6) are not accessible.
constexpr Part kInetIndex[] = {Part::INET_IPV4, Part::U32, Part::NO_POLICY, Part::INET_NEXT_HOP};
constexpr HandColumn kInetColumns[] = {
    {7, "inetCidrRouteIfIndex", [](const RowData &r) { return integer(vlan_ifindex(r.route.vid)); }},
    {8, "inetCidrRouteType", [](const RowData &r) { return integer(route_type(r.route, true)); }},
    {9, "inetCidrRouteProto", [](const RowData &r) { return integer(route_proto(r.route)); }},
    {10, "inetCidrRouteAge", [](const RowData &r) { return gauge(r.route.age_s); }},
    {11, "inetCidrRouteNextHopAS", [](const RowData &) { return gauge(0); }},
    {12, "inetCidrRouteMetric1", [](const RowData &r) { return integer(int32_t(r.route.metric)); }},
    {13, "inetCidrRouteMetric2", [](const RowData &) { return integer(-1); }},
    {14, "inetCidrRouteMetric3", [](const RowData &) { return integer(-1); }},
    {15, "inetCidrRouteMetric4", [](const RowData &) { return integer(-1); }},
    {16, "inetCidrRouteMetric5", [](const RowData &) { return integer(-1); }},
    {17, "inetCidrRouteStatus", [](const RowData &) { return integer(kActive); }},
};

uint32_t route_count() {
    const int n = cfg_route_count();
    return n < 0 ? 0 : uint32_t(n);
}

// One address of the switch; a failing find reads as all zero.
sw_ip_iface_t address(uint32_t addr) {
    sw_ip_iface_t a{};
    if (cfg_ip_addr_find(SW_FIND_EXACT, addr, &a) != 0) a = sw_ip_iface_t{};
    return a;
}

}  // namespace

extern const HandTable kRouteTables[] = {
    {"ipCidrRouteTable", oids::ipCidrRouteTable, kCidrIndex, kCidrColumns, find_route},
    {"inetCidrRouteTable", oids::inetCidrRouteTable, kInetIndex, kInetColumns, find_route},
};

}  // namespace snmpapi::routing

using snmpapi::routing::address;

extern "C" {

uint32_t get_ipCidrRouteNumber(void) { return snmpapi::routing::route_count(); }
uint32_t get_inetCidrRouteNumber(void) { return snmpapi::routing::route_count(); }

// ---- ipAddrTable ------------------------------------------------------------------

int init_index_ipAddrTable(void *(*create)(uint32_t)) {
    sw_ip_iface_t a{};
    for (int mode = SW_FIND_FROM; cfg_ip_addr_find(mode, a.addr, &a) == 0; mode = SW_FIND_AFTER) create(a.addr);
    return 0;
}

int exists_entry_ipAddrTable(uint32_t addr) {
    sw_ip_iface_t a{};
    if (cfg_ip_addr_find(SW_FIND_EXACT, addr, &a) == 0) return 1;
    ipAddrTable_removeEntry(addr);
    return 0;
}

uint32_t get_ipAdEntAddr(uint32_t addr) { return address(addr).addr; }
int32_t get_ipAdEntIfIndex(uint32_t addr) { return snmpapi::routing::vlan_ifindex(address(addr).vid); }
uint32_t get_ipAdEntNetMask(uint32_t addr) { return address(addr).mask; }
// The last bit of the broadcast address: the switch broadcasts to all ones.
int32_t get_ipAdEntBcastAddr(uint32_t addr) { return address(addr).addr ? 1 : 0; }
int32_t get_ipAdEntReasmMaxSize(uint32_t addr) { return int32_t(address(addr).reasm_max & 0xffff); }

}  // extern "C"
