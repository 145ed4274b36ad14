// The trap service of the simulated switch: the platform calls of
// swplatform/traps.h (namespace calls, the View first like the calls of
// contract.cpp), the notifications the switch raises, and their encoding as
// SNMPv1 and SNMPv2c datagrams sent to the trap destinations.
//
// Who raises what:
//   - link changes made from outside (swctl, a control handle): every change
//     runs inside a LinkWatch, which sends linkUp/linkDown for each
//     interface whose link it changed, once the change is complete;
//   - a platform service refusing a login: raise_authentication_failure;
//   - the RMON engine seeing an alarm cross a threshold: raise_rmon_alarm.
// The last two go through the callbacks that register_trap stored in this
// process (the agent's forwarders), or are sent at once when there are none.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim::traps {

// The datagrams of one or more notifications, to send once the state they
// were read from may be let go.  Sending never blocks and never throws.
class Outbox {
public:
    struct Datagram {
        sw_ip_addr_t to;
        uint16_t port;
        int slot;  // destination slot, for the counters
        std::vector<uint8_t> bytes;
    };
    void add(Datagram d) { datagrams_.push_back(std::move(d)); }
    bool empty() const { return datagrams_.empty(); }
    const std::vector<Datagram> &datagrams() const { return datagrams_; }
    // Sends every datagram; counts what went out and what the network
    // refused in the switch's trap counters.  Answers the number sent.
    int send(const View &v);

private:
    std::vector<Datagram> datagrams_;
};

// A notification before it is encoded for a destination.
struct Variable {
    enum Kind : uint8_t { kInteger, kOctets, kObjectId, kTimeTicks };
    std::vector<uint32_t> name;
    Kind kind = kInteger;
    int64_t integer = 0;
    std::string octets;
    std::vector<uint32_t> objid;
};
struct Notification {
    std::vector<uint32_t> trap_oid;  // the SNMPv2 snmpTrapOID
    std::vector<Variable> variables;
};

// The notification's datagram for one destination version (SW_TRAP_V1 or
// SW_TRAP_V2C).  Version 1 follows the SNMPv2-to-SNMPv1 mapping: a standard
// trap of snmpTraps becomes its generic trap with the switch's sysObjectID as
// enterprise; any other E.0.S becomes enterprise E, specific trap S.
std::vector<uint8_t> encode(const View &v, const Notification &n, int version, const std::string &community,
                            uint32_t request_id);

// Encodes the notification for every destination in use into `out`.
void address(const View &v, const Notification &n, Outbox &out);

// The notifications of the switch.
Notification link_change(const View &v, int iface, bool up);
Notification authentication_failure();
Notification rmon_alarm(int32_t alarm_index, bool rising, const uint32_t *variable, size_t variable_len,
                        int32_t sample_type, int32_t value, int32_t threshold);

// Runs around a change of the switch: remembers every interface's link, and
// afterwards adds a linkUp or linkDown for each interface that exists before
// and after and whose link changed (unless its notifications are off).
class LinkWatch {
public:
    explicit LinkWatch(const View &v);
    void collect(const View &v, Outbox &out) const;

private:
    std::vector<int8_t> link_;  // by interface: -1 absent, 0 down, 1 up
};

// A platform service raises a notification: through the callback this
// process registered, or sent from `v` at once.
void raise_authentication_failure(const View &v, int service, const char *peer);
void raise_rmon_alarm(const View &v, int32_t alarm_index, bool rising, const uint32_t *variable, size_t variable_len,
                      int32_t sample_type, int32_t value, int32_t threshold);

// The trap service's state, for control handles.
Switch::TrapInfo info(const View &v);

// Control-side changes (they throw Error naming the problem).
namespace ops {
void add_destination(View &v, const std::string &addr, const std::string &community, int version);
void remove_destination(View &v, const std::string &addr);
void set_port(View &v, int port);
void set_beyond_loopback(View &v, bool on);
}  // namespace ops

// Damage the state check looks for: "" when none.
std::string damage(const View &v);

// The platform calls.
namespace calls {
int ip_addr_to_str(const sw_ip_addr_t *addr, char *buf, size_t size);
int register_trap(sw_trap_auth_fail_fn auth_fail, sw_trap_rmon_alarm_fn rmon_alarm);
int cfg_get_snmp_trap_host(const View &v, int slot, sw_ip_addr_t *addr);
int cfg_add_snmp_trap_host(const View &v, const char *addr, const char *community, int version);
int cfg_del_snmp_trap_host(const View &v, const char *addr);
const char *cfg_get_snmp_trap_host_community(const View &v, const char *addr);
int cfg_set_snmp_trap_host_community(const View &v, const char *addr, const char *community);
int cfg_get_snmp_trap_host_version(const View &v, const char *addr);
int cfg_set_snmp_trap_host_version(const View &v, const char *addr, int version);
int send_trap_snmp_authentication_fail(const View &v, int service, const char *peer);
int send_trap_rmon_alarm(const View &v, int32_t alarm_index, int rising, const uint32_t *variable,
                         size_t variable_len, int32_t sample_type, int32_t value, int32_t threshold);
}  // namespace calls

}  // namespace swsim::traps

// The catalogue lines of the calls above, for contract.cpp:
// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_TRAPS_CALLS(X)                                                                              \
    X(int, cfg_get_snmp_trap_host, (int slot, sw_ip_addr_t *addr), (slot, addr), -1)                       \
    X(int, cfg_add_snmp_trap_host, (const char *addr, const char *community, int version),                 \
      (addr, community, version), -1)                                                                      \
    X(int, cfg_del_snmp_trap_host, (const char *addr), (addr), -1)                                         \
    X(const char *, cfg_get_snmp_trap_host_community, (const char *addr), (addr), nullptr)                 \
    X(int, cfg_set_snmp_trap_host_community, (const char *addr, const char *community), (addr, community), -1) \
    X(int, cfg_get_snmp_trap_host_version, (const char *addr), (addr), -1)                                 \
    X(int, cfg_set_snmp_trap_host_version, (const char *addr, int version), (addr, version), -1)           \
    X(int, send_trap_snmp_authentication_fail, (int service, const char *peer), (service, peer), -1)       \
    X(int, send_trap_rmon_alarm,                                                                           \
      (int32_t alarm_index, int rising, const uint32_t *variable, size_t variable_len, int32_t sample_type, \
       int32_t value, int32_t threshold),                                                                  \
      (alarm_index, rising, variable, variable_len, sample_type, value, threshold), -1)
// P(return type, name, parameters, arguments): calls that need no state.
#define SWSIM_TRAPS_HELPER_CALLS(P)                                                                       \
    P(int, ip_addr_to_str, (const sw_ip_addr_t *addr, char *buf, size_t size), (addr, buf, size))          \
    P(int, register_trap, (sw_trap_auth_fail_fn auth_fail, sw_trap_rmon_alarm_fn rmon_alarm),              \
      (auth_fail, rmon_alarm))
