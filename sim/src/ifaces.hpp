// Interfaces and trunks in the simulated switch: the platform calls of
// swplatform/ifaces.h (namespace ifaces_impl, picked up by the call
// catalogue of contract.cpp) and the bookkeeping the model does for them.
#pragma once

#include <cstdint>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim {

namespace model {
// An interface appeared or went away (unit joined or left, trunk created,
// destroyed, filled or emptied): stamps the interface table's change time.
void note_iface_change(View &v);
// Copies the change time into this process's uptime_ifTableLastChange.
void publish_iface_change(const View &v);

// LACP: ports that run it, are up and hear an aggregatable partner are
// aggregated with the ports that hear the same partner system and key, in
// dynamic trunks that LACP forms and dissolves.  Run after every change of
// links, LACP settings or partners.
void lacp_reconcile(View &v);
sw_lacp_port_t lacp_port(const View &v, int phys);
// The LACP defaults of a new switch.
void lacp_defaults(View &v);
// Control-side LACP changes (they throw Error on a bad request).
void lacp_set_partner(View &v, int unit0, int port0, const Switch::LacpPartner &partner);
void lacp_clear_partner(View &v, int unit0, int port0);
void lacp_set_counter(View &v, int unit0, int port0, int counter, uint64_t value);
}  // namespace model

namespace ifaces_impl {
int cfg_get_trap_enable_port(const View &v, int unit0, int port0, uint8_t *enabled);
int cfg_set_trap_enable_port(const View &v, int unit0, int port0, int enabled);
int cfg_port_is_error_blocked(const View &v, int unit0, int port0);
int cfg_trunk_count_link_up(const View &v, int trunk0);
int cfg_create_trunk(const View &v, int trunk0);
int cfg_destroy_trunk(const View &v, int trunk0);
int cfg_add_port_to_trunk(const View &v, int trunk0, int unit0, int port0, int flags);
int cfg_remove_port_from_trunk(const View &v, int trunk0, int unit0, int port0);
int cfg_get_lacp_port(const View &v, int unit0, int port0, sw_lacp_port_t *info);
int cfg_set_lacp_port_enable(const View &v, int unit0, int port0, int enabled);
int cfg_set_lacp_port_priority(const View &v, int unit0, int port0, int priority);
int cfg_get_lacp_system_priority(const View &v);
int cfg_set_lacp_system_priority(const View &v, int priority);
int cfg_get_lacp_last_change(const View &v, uint32_t *cs);
}  // namespace ifaces_impl

}  // namespace swsim
