/*
 * Interfaces, trunks and link aggregation: the platform calls behind the
 * interfaces group, the trunk table and the LACP tables.  Part of the
 * platform contract (included from platform.h); same conventions.
 */
#ifndef SWPLATFORM_IFACES_H
#define SWPLATFORM_IFACES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Interfaces --------------------------------------------------------- */

/* sysUpTime (hundredths of a second) when an interface last appeared or
 * went away.  The platform keeps it current for readers that hold the
 * configuration lock. */
extern uint32_t uptime_ifTableLastChange;

/* Link up/down notifications of a port or trunk: *enabled is one byte,
 * non-zero while they are sent. */
int cfg_get_trap_enable_port(int unit0, int port0, uint8_t *enabled);
int cfg_set_trap_enable_port(int unit0, int port0, int enabled);

/* Non-zero while the port is blocked by an error condition (loop detected,
 * link flapping, BPDU guard): the link is up but carries no traffic. */
int cfg_port_is_error_blocked(int unit0, int port0);

/* Renames an existing VLAN; the name is at most SW_TEXT_SIZE - 1 bytes. */
int cfg_set_vlan_name(int vid, const char *name);

/* ---- Trunks ------------------------------------------------------------- */

/* Number of member ports of the trunk whose link is up (negative: no such
 * trunk). */
int cfg_trunk_count_link_up(int trunk0);
/* A new static trunk with no members; fails when it exists. */
int cfg_create_trunk(int trunk0);
/* Removes the trunk and frees its member ports; fails when it does not exist. */
int cfg_destroy_trunk(int trunk0);
/* Adds a port that is in no trunk; flags: 0 static member, SW_TRUNK_LACP a
 * member that runs LACP. */
#define SW_TRUNK_LACP 1
int cfg_add_port_to_trunk(int trunk0, int unit0, int port0, int flags);
/* Fails when the port is not a member of the trunk. */
int cfg_remove_port_from_trunk(int trunk0, int unit0, int port0);

#ifdef __cplusplus
}
#endif

#endif
