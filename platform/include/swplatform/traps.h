/*
 * The platform's trap service and the trap destinations it sends to.
 * Part of the platform contract (included from platform.h); the conventions
 * of platform.h hold (a negative result is a failure).
 *
 * The switch keeps up to SW_TRAP_DESTS trap destinations, each an address,
 * a community and a notification version.  The trap service sends the
 * switch's notifications to every destination, as an SNMPv1 Trap-PDU or an
 * SNMPv2c SNMPv2-Trap-PDU as the destination's version says:
 *
 *   linkDown, linkUp           an interface's link went down or came up
 *                              (interfaces whose notifications are switched
 *                              off by cfg_set_trap_enable_port send none)
 *   authenticationFailure      a management service of the platform (web,
 *                              Telnet, SSH login) refused a login
 *   risingAlarm, fallingAlarm  the RMON engine saw an alarm cross a threshold
 *
 * Platform services do not send the last two themselves: they hand them to
 * the callbacks that the agent registered with register_trap, which forward
 * them to send_trap_snmp_authentication_fail and send_trap_rmon_alarm.
 * While no callback is
 * registered in the process that raises a notification, the service sends it
 * at once.
 *
 * Sending never blocks: each notification is one UDP datagram per
 * destination, and a destination that cannot be reached is skipped.
 */
#ifndef SWPLATFORM_TRAPS_H
#define SWPLATFORM_TRAPS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Addresses ------------------------------------------------------------
 * The platform's address record: 17 bytes, the family (0 none, 4 IPv4,
 * 6 IPv6) then the address in network order (IPv4 in the first 4 bytes).
 */
#define SW_ADDR_NONE 0
#define SW_ADDR_IPV4 4
#define SW_ADDR_IPV6 6
typedef struct sw_ip_addr {
    uint8_t family;
    uint8_t bytes[16];
} sw_ip_addr_t;

/* Prints an address record: dotted IPv4, IPv6 text, or "" for none.  Needs
 * 46 bytes at most (INET6_ADDRSTRLEN).  Negative when the record is not an
 * address or the buffer is too small. */
int ip_addr_to_str(const sw_ip_addr_t *addr, char *buf, size_t size);

/* ---- Trap destinations ----------------------------------------------------
 * Slots 0 .. SW_TRAP_DESTS - 1; an address is in at most one slot.
 * Communities are texts of up to SW_TRAP_COMMUNITY_SIZE - 1 characters.
 */
#define SW_TRAP_DESTS 5
#define SW_TRAP_COMMUNITY_SIZE 33
#define SW_TRAP_V1 1  /* SNMPv1 Trap-PDU */
#define SW_TRAP_V2C 2 /* SNMPv2c SNMPv2-Trap-PDU */

/* Fills *addr from a slot; a free slot gives family SW_ADDR_NONE.  Fails for
 * a slot outside the range. */
int cfg_get_snmp_trap_host(int slot, sw_ip_addr_t *addr);
/* Adds a destination (an IPv4 or IPv6 address text) in the first free slot;
 * fails when the address is malformed or listed already, the community too
 * long, the version not SW_TRAP_V1 or SW_TRAP_V2C, or every slot in use. */
int cfg_add_snmp_trap_host(const char *addr, const char *community, int version);
/* Fails when no slot holds the address. */
int cfg_del_snmp_trap_host(const char *addr);
/* The destination's community, in storage of the platform that the next
 * call may change; NULL when no slot holds the address. */
const char *cfg_get_snmp_trap_host_community(const char *addr);
int cfg_set_snmp_trap_host_community(const char *addr, const char *community);
/* SW_TRAP_V1 or SW_TRAP_V2C; negative when no slot holds the address. */
int cfg_get_snmp_trap_host_version(const char *addr);
int cfg_set_snmp_trap_host_version(const char *addr, int version);

/* ---- The trap service -----------------------------------------------------*/

/* Services whose logins fail, for authentication-failure notifications. */
#define SW_SERVICE_WEB 1
#define SW_SERVICE_TELNET 2
#define SW_SERVICE_SSH 3
#define SW_SERVICE_CONSOLE 4

/* Sends authenticationFailure (SNMPv2-MIB snmpTraps 5; SNMPv1 generic trap
 * 4) for a login to `service` (SW_SERVICE_*) that was refused to `peer` (an
 * address text, may be NULL).  The notification carries no variables; the
 * event log gets a line naming the service and the peer.  Result: the
 * number of destinations sent to, negative when the switch's state cannot be
 * read. */
int send_trap_snmp_authentication_fail(int service, const char *peer);

/* RMON sample types (alarmSampleType). */
#define SW_RMON_ABSOLUTE 1
#define SW_RMON_DELTA 2
/* Sends risingAlarm (rising non-zero) or fallingAlarm (RMON-MIB
 * notifications 1.3.6.1.2.1.16.0.1 and .0.2; SNMPv1 enterprise rmon,
 * specific trap 1 or 2) with the variables alarmIndex, alarmVariable,
 * alarmSampleType, alarmValue and alarmRisingThreshold or
 * alarmFallingThreshold of the alarm: `variable` holds the sampled object's
 * OID as variable_len sub-identifiers (at most 128).  Result as above; also
 * negative for an OID that is missing or too long. */
int send_trap_rmon_alarm(int32_t alarm_index, int rising, const uint32_t *variable, size_t variable_len,
                         int32_t sample_type, int32_t value, int32_t threshold);

/* The callbacks an agent registers: called with the same arguments as the
 * send calls above, by the platform service that raises the notification. */
typedef void (*sw_trap_auth_fail_fn)(int service, const char *peer);
typedef void (*sw_trap_rmon_alarm_fn)(int32_t alarm_index, int rising, const uint32_t *variable,
                                      size_t variable_len, int32_t sample_type, int32_t value, int32_t threshold);
/* Replaces this process's callbacks (NULL: the service sends itself). */
int register_trap(sw_trap_auth_fail_fn auth_fail, sw_trap_rmon_alarm_fn rmon_alarm);

#ifdef __cplusplus
}
#endif

#endif
