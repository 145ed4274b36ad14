// Routing of the simulated switch: addresses of VLAN interfaces, the routing
// table, VRRP, OSPF and RIP.  `calls` holds the platform calls of routing.h
// (no throwing, no locking, -1 on a bad argument); `ops` the changes of the
// control handle, the scenario builder and the FRR import, which throw Error
// with a message in human terms.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim {
class Field;
}

namespace swsim::routing {

namespace calls {
int cfg_ip_addr_find(const View &v, int mode, uint32_t addr, sw_ip_iface_t *out);
int cfg_route_find(const View &v, int mode, uint32_t dest, uint32_t prefix_len, uint32_t next_hop, sw_route_t *out);
int cfg_route_count(const View &v);
int cfg_vrrp_find(const View &v, int mode, int32_t vid, uint32_t vrid, sw_vrrp_router_t *out);
int cfg_vrrp_get_globals(const View &v, sw_vrrp_globals_t *out);
int cfg_vrrp_set_notifications(const View &v, int on);
int cfg_ospf_area_find(const View &v, int mode, uint32_t area_id, sw_ospf_area_t *out);
int cfg_ospf_if_find(const View &v, int mode, uint32_t addr, uint32_t addressless, sw_ospf_if_t *out);
int cfg_ospf_virt_if_find(const View &v, int mode, uint32_t area_id, uint32_t neighbor, sw_ospf_virt_if_t *out);
int cfg_ospf_nbr_find(const View &v, int mode, uint32_t addr, uint32_t addressless, sw_ospf_nbr_t *out);
int cfg_ospf_virt_nbr_find(const View &v, int mode, uint32_t area_id, uint32_t router_id, sw_ospf_virt_nbr_t *out);
int cfg_ospf_lsa_find(const View &v, int mode, int scope, uint32_t where, uint32_t where2, uint32_t type,
                      uint32_t lsid, uint32_t router_id, sw_ospf_lsa_t *out);
int cfg_ospf_aggregate_find(const View &v, int mode, uint32_t area_id, uint32_t lsdb_type, uint32_t net,
                            uint32_t mask, sw_ospf_aggregate_t *out);
int cfg_rip_if_find(const View &v, int mode, uint32_t addr, sw_rip_if_t *out);
int cfg_rip_peer_find(const View &v, int mode, uint32_t addr, uint32_t domain, sw_rip_peer_t *out);
int get_ospfGeneral(const View &v, uint8_t *record);
int get_rip2Globals(const View &v, uint8_t *record);
}  // namespace calls

// The routing state of a scenario (scenarios/README.md, "routing").
void build(View &v, const Field &f);

namespace ops {
void ip_addr_add(View &v, int vid, uint32_t addr, int prefix_len);
void ip_addr_remove(View &v, uint32_t addr);
void route_add(View &v, const Switch::Route &route);
void route_remove(View &v, uint32_t dest, int prefix_len, uint32_t next_hop);
void ospf_set_neighbor_state(View &v, uint32_t addr, int state);
void ospf_age_lsas(View &v, uint32_t seconds, uint32_t type);
void vrrp_set_state(View &v, int vid, int vrid, int state);
Switch::FrrImport import_frr(View &v, const std::string &routes_json, const std::string &neighbors_json,
                             const std::vector<std::pair<std::string, int>> &vlans);
}  // namespace ops

std::vector<sw_ip_iface_t> ip_addrs(const View &v);
std::vector<sw_route_t> routes(const View &v);
std::vector<sw_ospf_nbr_t> ospf_neighbors(const View &v);
std::vector<sw_ospf_lsa_t> ospf_lsas(const View &v);
std::vector<sw_vrrp_router_t> vrrp_routers(const View &v);

// Damage a state file's routing section may carry, or "".
std::string damage(const View &v);

}  // namespace swsim::routing

// The routing calls for the platform's call catalogue (contract.cpp):
// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_ROUTING_CALLS(X)                                                                          \
    X(int, cfg_ip_addr_find, (int mode, uint32_t addr, sw_ip_iface_t *out), (mode, addr, out), -1)       \
    X(int, cfg_route_find, (int mode, uint32_t dest, uint32_t prefix_len, uint32_t next_hop, sw_route_t *out), \
      (mode, dest, prefix_len, next_hop, out), -1)                                                      \
    X(int, cfg_route_count, (void), (), -1)                                                             \
    X(int, cfg_vrrp_find, (int mode, int32_t vid, uint32_t vrid, sw_vrrp_router_t *out), (mode, vid, vrid, out), -1) \
    X(int, cfg_vrrp_get_globals, (sw_vrrp_globals_t * out), (out), -1)                                  \
    X(int, cfg_vrrp_set_notifications, (int on), (on), -1)                                              \
    X(int, cfg_ospf_area_find, (int mode, uint32_t area_id, sw_ospf_area_t *out), (mode, area_id, out), -1) \
    X(int, cfg_ospf_if_find, (int mode, uint32_t addr, uint32_t addressless, sw_ospf_if_t *out),        \
      (mode, addr, addressless, out), -1)                                                               \
    X(int, cfg_ospf_virt_if_find, (int mode, uint32_t area_id, uint32_t neighbor, sw_ospf_virt_if_t *out), \
      (mode, area_id, neighbor, out), -1)                                                               \
    X(int, cfg_ospf_nbr_find, (int mode, uint32_t addr, uint32_t addressless, sw_ospf_nbr_t *out),      \
      (mode, addr, addressless, out), -1)                                                               \
    X(int, cfg_ospf_virt_nbr_find, (int mode, uint32_t area_id, uint32_t router_id, sw_ospf_virt_nbr_t *out), \
      (mode, area_id, router_id, out), -1)                                                              \
    X(int, cfg_ospf_lsa_find,                                                                           \
      (int mode, int scope, uint32_t where, uint32_t where2, uint32_t type, uint32_t lsid, uint32_t router_id, \
       sw_ospf_lsa_t *out),                                                                             \
      (mode, scope, where, where2, type, lsid, router_id, out), -1)                                     \
    X(int, cfg_ospf_aggregate_find,                                                                     \
      (int mode, uint32_t area_id, uint32_t lsdb_type, uint32_t net, uint32_t mask, sw_ospf_aggregate_t *out), \
      (mode, area_id, lsdb_type, net, mask, out), -1)                                                   \
    X(int, cfg_rip_if_find, (int mode, uint32_t addr, sw_rip_if_t *out), (mode, addr, out), -1)         \
    X(int, cfg_rip_peer_find, (int mode, uint32_t addr, uint32_t domain, sw_rip_peer_t *out),           \
      (mode, addr, domain, out), -1)                                                                    \
    X(int, get_ospfGeneral, (uint8_t * record), (record), -1)                                           \
    X(int, get_rip2Globals, (uint8_t * record), (record), -1)
