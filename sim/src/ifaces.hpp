// Interfaces and trunks in the simulated switch: the platform calls of
// swplatform/ifaces.h (namespace ifaces_impl, picked up by the call
// catalogue of contract.cpp) and the bookkeeping the model does for them.
#pragma once

#include <cstdint>

#include "state_file.hpp"

namespace swsim {

namespace model {
// An interface appeared or went away (unit joined or left, trunk created,
// destroyed, filled or emptied): stamps the interface table's change time.
void note_iface_change(View &v);
// Copies the change time into this process's uptime_ifTableLastChange.
void publish_iface_change(const View &v);
}  // namespace model

namespace ifaces_impl {
int cfg_get_trap_enable_port(const View &v, int unit0, int port0, uint8_t *enabled);
int cfg_set_trap_enable_port(const View &v, int unit0, int port0, int enabled);
int cfg_port_is_error_blocked(const View &v, int unit0, int port0);
int cfg_set_vlan_name(const View &v, int vid, const char *name);
int cfg_trunk_count_link_up(const View &v, int trunk0);
int cfg_create_trunk(const View &v, int trunk0);
int cfg_destroy_trunk(const View &v, int trunk0);
int cfg_add_port_to_trunk(const View &v, int trunk0, int unit0, int port0, int flags);
int cfg_remove_port_from_trunk(const View &v, int trunk0, int unit0, int port0);
}  // namespace ifaces_impl

}  // namespace swsim
