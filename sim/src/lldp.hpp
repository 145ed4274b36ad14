// LLDP of the simulated switch: the platform calls of swplatform/lldp.h
// (namespace calls, each taking the View first like the calls of
// contract.cpp: no throwing, no locking, -1 on a bad argument), the
// neighbour table with its counters, and the changes a control handle, a
// scenario or an lldpd import make (namespace ops, which throw Error with a
// message in human numbering).
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim::lldp {

namespace calls {
int cfg_get_lldp_global_info(const View &v, uint8_t *record);
int cfg_get_lldp_global_stats_info(const View &v, uint8_t *record);
int cfg_get_lldp_intf_info(const View &v, int unit0, int port0, uint8_t *record);
int cfg_get_lldp_intf_mgmt_info(const View &v, uint8_t *record);
int cfg_get_lldp_status_intf_counters(const View &v, int unit0, int port0, uint8_t *record);
int cfg_get_lldp_mgmt_status_intf_counters(const View &v, uint8_t *record);
int cfg_get_lldp_neighbors_info(const View &v, int unit0, int port0, uint8_t **records, int *count);
int cfg_get_lldp_mgmt_neighbors_info(const View &v, uint8_t **records, int *count);
int cfg_lldp_status_get_hash(const View &v, uint8_t *hash);
int cfg_set_lldp_port_adminStatus(const View &v, int unit0, int port0, int status);
int cfg_set_lldp_mgmt_port_adminStatus(const View &v, int status);
int cfg_set_lldp_port_notificationEnable(const View &v, int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_notificationEnable(const View &v, int on);
int cfg_set_lldp_port_portDescEnable(const View &v, int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_portDescEnable(const View &v, int on);
int cfg_set_lldp_port_sysNameEnable(const View &v, int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_sysNameEnable(const View &v, int on);
int cfg_set_lldp_port_sysDescEnable(const View &v, int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_sysDescEnable(const View &v, int on);
int cfg_set_lldp_port_sysCapEnable(const View &v, int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_sysCapEnable(const View &v, int on);
int cfg_get_lldp_msgTxInterval(const View &v);
int cfg_set_lldp_msgTxInterval(const View &v, int seconds);
int cfg_get_lldp_msgTxHold(const View &v);
int cfg_set_lldp_msgTxHold(const View &v, int multiplier);
int cfg_get_lldp_reinitDelay(const View &v);
int cfg_set_lldp_reinitDelay(const View &v, int seconds);
int cfg_get_lldp_txDelay(const View &v);
int cfg_set_lldp_txDelay(const View &v, int seconds);
int cfg_get_lldp_notificationInterval(const View &v);
int cfg_set_lldp_notificationInterval(const View &v, int seconds);
}  // namespace calls

// Factory settings of a freshly built switch: LLDP sending and receiving on
// every port with every optional TLV, the timers of LLDP-MIB's defaults, the
// switch announcing its first IP interface.
void defaults(View &v);

using Neighbour = Switch::LldpNeighbour;

namespace ops {
// The LLDP port of a user port or of the management port (unit0
// Switch::kLldpMgmtUnit); throws when there is no such port.
int slot_of(const View &v, int unit0, int port0);
// A neighbour heard on a port: one with the same chassis and port
// identifiers there is updated, else it is added.  Returns its remote index.
int32_t hear(View &v, int slot, const Neighbour &n);
void change(View &v, int slot, int32_t remote_index, const Neighbour &n);
// remote_index 0: every neighbour of the port.  `aged`: they timed out.
void remove(View &v, int slot, int32_t remote_index, bool aged);
// Settings of the scenario builder; they throw Error naming the bad value.
void set_timers(View &v, int tx_interval, int tx_hold, int reinit_delay, int tx_delay, int notification_interval);
void set_port(View &v, int slot, int admin, bool notify, unsigned tlvs);
// The OID the switch gives for its management address (kept as BER).
void set_management_oid(View &v, const std::vector<uint32_t> &subids);
// The neighbours that `lldpcli -f json show neighbors details` printed
// (its json or json0 format), onto the ports `targets` maps lldpd's
// interfaces to.  Returns how many were heard.
int import_lldpd(View &v, const std::string &json_text, const std::vector<Switch::LldpImportTarget> &targets);
}  // namespace ops

std::vector<Neighbour> neighbours(const View &v, int slot);

// The first problem of a damaged state file's LLDP configuration or
// neighbour table ("" when there is none), for the checks of state_check.cpp.
std::string config_damage(const View &v);
std::string hardware_damage(const View &v);

// An IPv4 or IPv6 address as its octets, with its address family (1, 2);
// "" when the text is neither.
std::string address_octets(const std::string &text, int &family);
// The bit of a capability named as lldpd names it (other, repeater, bridge,
// wlan, router, tel or telephone, docsis, station; any case); 0 for none.
uint16_t capability_bit(const std::string &name);

}  // namespace swsim::lldp

// The platform calls above, as the catalogue of contract.cpp takes them:
// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_LLDP_CALLS(X)                                                                             \
    X(int, cfg_get_lldp_global_info, (uint8_t * record), (record), -1)                                   \
    X(int, cfg_get_lldp_global_stats_info, (uint8_t * record), (record), -1)                             \
    X(int, cfg_get_lldp_intf_info, (int unit0, int port0, uint8_t *record), (unit0, port0, record), -1)  \
    X(int, cfg_get_lldp_intf_mgmt_info, (uint8_t * record), (record), -1)                                \
    X(int, cfg_get_lldp_status_intf_counters, (int unit0, int port0, uint8_t *record),                   \
      (unit0, port0, record), -1)                                                                        \
    X(int, cfg_get_lldp_mgmt_status_intf_counters, (uint8_t * record), (record), -1)                     \
    X(int, cfg_get_lldp_neighbors_info, (int unit0, int port0, uint8_t **records, int *count),           \
      (unit0, port0, records, count), -1)                                                                \
    X(int, cfg_get_lldp_mgmt_neighbors_info, (uint8_t * *records, int *count), (records, count), -1)     \
    X(int, cfg_lldp_status_get_hash, (uint8_t * hash), (hash), -1)                                       \
    X(int, cfg_set_lldp_port_adminStatus, (int unit0, int port0, int status), (unit0, port0, status), -1) \
    X(int, cfg_set_lldp_mgmt_port_adminStatus, (int status), (status), -1)                               \
    X(int, cfg_set_lldp_port_notificationEnable, (int unit0, int port0, int on), (unit0, port0, on), -1) \
    X(int, cfg_set_lldp_mgmt_port_notificationEnable, (int on), (on), -1)                                \
    X(int, cfg_set_lldp_port_portDescEnable, (int unit0, int port0, int on), (unit0, port0, on), -1)     \
    X(int, cfg_set_lldp_mgmt_port_portDescEnable, (int on), (on), -1)                                    \
    X(int, cfg_set_lldp_port_sysNameEnable, (int unit0, int port0, int on), (unit0, port0, on), -1)      \
    X(int, cfg_set_lldp_mgmt_port_sysNameEnable, (int on), (on), -1)                                     \
    X(int, cfg_set_lldp_port_sysDescEnable, (int unit0, int port0, int on), (unit0, port0, on), -1)      \
    X(int, cfg_set_lldp_mgmt_port_sysDescEnable, (int on), (on), -1)                                     \
    X(int, cfg_set_lldp_port_sysCapEnable, (int unit0, int port0, int on), (unit0, port0, on), -1)       \
    X(int, cfg_set_lldp_mgmt_port_sysCapEnable, (int on), (on), -1)                                      \
    X(int, cfg_get_lldp_msgTxInterval, (void), (), -1)                                                   \
    X(int, cfg_set_lldp_msgTxInterval, (int seconds), (seconds), -1)                                     \
    X(int, cfg_get_lldp_msgTxHold, (void), (), -1)                                                       \
    X(int, cfg_set_lldp_msgTxHold, (int multiplier), (multiplier), -1)                                   \
    X(int, cfg_get_lldp_reinitDelay, (void), (), -1)                                                     \
    X(int, cfg_set_lldp_reinitDelay, (int seconds), (seconds), -1)                                       \
    X(int, cfg_get_lldp_txDelay, (void), (), -1)                                                         \
    X(int, cfg_set_lldp_txDelay, (int seconds), (seconds), -1)                                           \
    X(int, cfg_get_lldp_notificationInterval, (void), (), -1)                                            \
    X(int, cfg_set_lldp_notificationInterval, (int seconds), (seconds), -1)
