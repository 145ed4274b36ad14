// Routing state of the simulated switch in the state file: one member at the
// end of Hardware.  Every table is an array of records kept sorted by its key
// (the key order of the platform's find calls), so that a find is a binary
// search; counters and the routes' and LSAs' birth times live beside them.
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

inline constexpr int kIpAddrCapacity = 512;
inline constexpr int kRouteCapacity = 16384;
inline constexpr int kVrrpCapacity = 64;
inline constexpr int kOspfAreaCapacity = 32;
inline constexpr int kOspfIfCapacity = 128;
inline constexpr int kOspfVirtCapacity = 16;
inline constexpr int kOspfNbrCapacity = 512;
inline constexpr int kLsaCapacity = 16384;
inline constexpr int kAggregateCapacity = 64;
inline constexpr int kRipIfCapacity = 128;
inline constexpr int kRipPeerCapacity = 128;

// `count` records of `at` in key order.
template <class Slot, int N>
struct Sorted {
    static constexpr int kCapacity = N;
    uint32_t count;
    uint32_t reserved;
    Slot at[N];
};

struct RouteSlot {
    sw_route_t route;      // age_s is made when read
    int64_t installed_ns;  // realtime
};

// An LSA's fields; its advertisement is built from them when read.
struct LsaSlot {
    uint32_t scope;        // SW_OSPF_SCOPE_*
    uint32_t where, where2, type, lsid, router_id;
    int32_t sequence;
    uint32_t metric;       // of summary and external LSAs
    uint32_t mask;         // of network, summary and external LSAs
    uint32_t reserved;
    int64_t born_ns;       // realtime the age counts from
};

struct RipPeerSlot {
    sw_rip_peer_t peer;    // last_update_cs is made when read
    int64_t last_update_ns;
};

struct VrrpSlot {
    sw_vrrp_router_t router;  // up_since_cs is made when read
    int64_t up_since_ns;      // 0: has not left initialize
};

// Protocol-wide values.
struct RoutingGlobals {
    uint32_t ospf_enabled;
    uint32_t router_id;
    uint32_t asbr;            // redistributes external routes
    uint32_t rfc1583;
    uint32_t originate_new_lsas;
    uint32_t rx_new_lsas;
    uint32_t rip_route_changes;
    uint32_t rip_queries;
    sw_vrrp_globals_t vrrp;
};

struct RoutingState {
    RoutingGlobals globals;
    Sorted<sw_ip_iface_t, kIpAddrCapacity> addrs;
    Sorted<RouteSlot, kRouteCapacity> routes;
    Sorted<VrrpSlot, kVrrpCapacity> vrrp;
    Sorted<sw_ospf_area_t, kOspfAreaCapacity> areas;
    Sorted<sw_ospf_if_t, kOspfIfCapacity> ospf_ifs;
    Sorted<sw_ospf_virt_if_t, kOspfVirtCapacity> virt_ifs;
    Sorted<sw_ospf_nbr_t, kOspfNbrCapacity> nbrs;
    Sorted<sw_ospf_virt_nbr_t, kOspfVirtCapacity> virt_nbrs;
    Sorted<LsaSlot, kLsaCapacity> lsas;
    Sorted<sw_ospf_aggregate_t, kAggregateCapacity> aggregates;
    Sorted<sw_rip_if_t, kRipIfCapacity> rip_ifs;
    Sorted<RipPeerSlot, kRipPeerCapacity> rip_peers;
};

}  // namespace swsim::layout
