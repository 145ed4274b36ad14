// The layer-2 protocols of the simulated switch: spanning tree, IGMP snooping
// and ring protection.  `calls` holds the platform calls of l2proto.h (same
// rules as the other calls: no throwing, no locking, -1 on a bad argument);
// `ops` the changes of the control handle and the scenario builder, which
// throw Error with a message in human numbering.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim::l2proto {

namespace calls {
int cfg_get_stp_state(const View &v, int instance, uint8_t *record);
int cfg_get_stp_port_state(const View &v, int instance, int unit0, int port0, uint8_t *record);
int cfg_get_stp_prio(const View &v, int instance);
int cfg_set_stp_prio(const View &v, int instance, int prio);
int cfg_get_stp_maxage(const View &v, int instance);
int cfg_set_stp_maxage(const View &v, int instance, int centiseconds);
int cfg_get_stp_hello(const View &v, int instance);
int cfg_set_stp_hello(const View &v, int instance, int centiseconds);
int cfg_get_stp_ftime(const View &v, int instance);
int cfg_set_stp_ftime(const View &v, int instance, int centiseconds);
int cfg_get_stp_enabled(const View &v);
int cfg_set_stp_domain_enabled(const View &v, int instance, int on);
int cfg_get_stp_forcemode(const View &v);
int cfg_set_stp_forcemode(const View &v, int mode);
int cfg_get_stp_port_prio(const View &v, int instance, int unit0, int port0);
int cfg_set_stp_port_prio(const View &v, int instance, int unit0, int port0, int prio);
int cfg_get_stp_port_cost(const View &v, int instance, int unit0, int port0);
int cfg_set_stp_port_cost(const View &v, int instance, int unit0, int port0, int cost);
int cfg_get_stp_port_enabled(const View &v, int instance, int unit0, int port0);
int cfg_set_stp_port_enabled(const View &v, int instance, int unit0, int port0, int on);
int cfg_get_stp_port_edge(const View &v, int unit0, int port0);
int cfg_set_stp_port_edge(const View &v, int unit0, int port0, int on);
int cfg_get_stp_port_linktype(const View &v, int unit0, int port0);
int cfg_set_stp_port_linktype(const View &v, int unit0, int port0, int type);

int cfg_get_igmp_enable(const View &v);
int cfg_set_igmp_enable(const View &v, int on);
int cfg_get_igmp_enable_querier(const View &v);
int cfg_set_igmp_enable_querier(const View &v, int on);
int cfg_get_igmp_version(const View &v);
int cfg_set_igmp_version(const View &v, int version);
int cfg_get_igmp_query_count(const View &v);
int cfg_set_igmp_query_count(const View &v, int count);
int cfg_get_igmp_query_interval(const View &v);
int cfg_set_igmp_query_interval(const View &v, int seconds);
int cfg_get_igmp_query_timeout(const View &v);
int cfg_set_igmp_query_timeout(const View &v, int seconds);
int cfg_get_igmp_router_port(const View &v, int unit0, int port0, int vid);
int cfg_set_igmp_router_port(const View &v, int unit0, int port0, int vid, int on);
int cfg_set_igmp_set_mcast(const View &v, int unit0, int port0, int vid, uint32_t group, int learned, int on);

int verify_created_eaps_domain(const View &v, int id);
const char *cfg_get_eaps_name(const View &v, int id);
int cfg_get_eaps_is_master(const View &v, int id);
const uint8_t *status_get_eaps(const View &v);
}  // namespace calls

// Factory settings of a freshly built switch.
void defaults(View &v);
// What goes with a VLAN that is deleted: its router ports and static groups.
void forget_vlan(const View &v, int vid);
// A trunk that is (re)created starts from the factory spanning-tree settings.
void reset_trunk(const View &v, int trunk0);

namespace ops {
void stp_topology_change(View &v);
void stp_set_port_state(View &v, int unit0, int port0, int state);
void stp_set_root(View &v, const Switch::StpRoot &root);
void stp_become_root(View &v);
void stp_set_port(View &v, int unit0, int port0, const Switch::StpPortSettings &s);
void igmp_set_group_port(View &v, int vid, uint32_t group, int unit0, int port0, bool member);
void igmp_set_router_port(View &v, int vid, int unit0, int port0, bool on);
void eaps_create(View &v, int id, const std::string &name, bool master, uint32_t state);
void eaps_delete(View &v, int id);
void eaps_set_state(View &v, int id, uint32_t state);
}  // namespace ops

Switch::StpInfo stp_info(const View &v);
Switch::StpPortInfo stp_port_info(const View &v, int unit0, int port0);
std::vector<Switch::IgmpGroupInfo> igmp_groups(const View &v);
std::vector<std::pair<int, int>> igmp_router_ports(const View &v, int vid);
Switch::EapsInfo eaps_info(const View &v, int id);

}  // namespace swsim::l2proto
