// VLAN life cycle, membership writes and the port VLAN settings: the platform
// calls of swplatform/vlans.h over the state file, and the changes a control
// handle or a scenario makes to them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "state_file.hpp"

// The platform calls; contract.cpp wraps each with its fault and journal hook.
namespace swsim::vlans_impl {
int cfg_vlan_create(const View &v, int vid, int flags, int owner);
int cfg_vlan_enable(const View &v, int vid);
int cfg_vlan_disable(const View &v, int vid);
int cfg_vlan_destroy(const View &v, int vid);
int cfg_set_vlan_name(const View &v, int vid, const char *name);
int cfg_set_vlan_port_member(const View &v, int unit0, int port0, int vid, uint32_t flags, int dynamic);
int cfg_get_pvid(const View &v, int unit0, int port0, int *pvid);
int cfg_set_pvid(const View &v, int unit0, int port0, int pvid);
int cfg_get_port_discard(const View &v, int unit0, int port0, int *mode);
int cfg_set_port_discard(const View &v, int unit0, int port0, int mode);
int cfg_get_ingress_filtering(const View &v, int unit0, int port0, int *on);
int cfg_set_ingress_filtering(const View &v, int unit0, int port0, int on);
int cfg_get_gvrp_enable_port(const View &v, int unit0, int port0, int *on);
int cfg_set_gvrp_enable_port(const View &v, int unit0, int port0, int on);
int cfg_get_gvrp_enable(const View &v);
int cfg_set_gvrp_enable(const View &v, int on);
int cfg_get_vlan_dhcp_client(const View &v, int vid);
int cfg_set_vlan_dhcp_client(const View &v, int on);
int cfg_get_default_priority(const View &v, int unit0, int port0);
int cfg_set_default_priority(const View &v, int unit0, int port0, int priority);
}  // namespace swsim::vlans_impl

namespace swsim::vlans {
// A switch that boots: every interface's PVID is the lowest VLAN it is an
// untagged member of (VLAN 1 when none), everything else off.
void boot_defaults(View &v);
// GVRP registration of a port in a VLAN: adds (or, with on false, withdraws)
// the dynamic membership flags `flags` (SW_VLAN_DYNAMIC_* bits).
void set_dynamic_member(View &v, int vid, int unit0, int port0, uint32_t flags, bool on);
void set_active(View &v, int vid, bool active);
}  // namespace swsim::vlans
