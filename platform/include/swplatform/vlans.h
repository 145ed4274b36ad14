/*
 * VLANs, port VLAN settings, GVRP and port priorities: the platform calls
 * that change them.  Included from platform.h; same conventions (unit0,
 * port0 from zero, port0 512 + trunk0 on unit0 0 addresses a trunk, negative
 * result = failure, out arguments untouched on failure).
 */
#ifndef SWPLATFORM_VLANS_H
#define SWPLATFORM_VLANS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Memberships granted dynamically (GVRP registration and the like), on top
 * of the static SW_VLAN_* flags of platform.h.  Each makes the port an
 * egress port that sends the VLAN's frames untagged. */
#define SW_VLAN_DYNAMIC_GVRP 0x010u
#define SW_VLAN_DYNAMIC_MASK 0x1f0u

/* VLAN life cycle.  A VLAN is created inactive; enable makes it active. */
int cfg_vlan_create(int vid, int flags, int owner); /* flags, owner: 0 */
int cfg_vlan_enable(int vid);
int cfg_vlan_disable(int vid);
int cfg_vlan_destroy(int vid); /* VLAN 1 cannot be destroyed */
int cfg_set_vlan_name(int vid, const char *name);
/* Replaces the port's membership flags in the VLAN (0: no membership).
 * `dynamic` is 0 for a change by management. */
int cfg_set_vlan_port_member(int unit0, int port0, int vid, uint32_t flags, int dynamic);

/* Port VLAN settings of a port or trunk. */
int cfg_get_pvid(int unit0, int port0, int *pvid);
int cfg_set_pvid(int unit0, int port0, int pvid); /* 1 .. 4094, an existing VLAN */
/* Discard mode: 0 admit all frames, 1 discard tagged, 2 discard untagged. */
int cfg_get_port_discard(int unit0, int port0, int *mode);
int cfg_set_port_discard(int unit0, int port0, int mode);
int cfg_get_ingress_filtering(int unit0, int port0, int *on);
int cfg_set_ingress_filtering(int unit0, int port0, int on);
int cfg_get_gvrp_enable_port(int unit0, int port0, int *on);
int cfg_set_gvrp_enable_port(int unit0, int port0, int on);

/* GVRP on the switch: cfg_get_gvrp_enable answers 1 or 0. */
int cfg_get_gvrp_enable(void);
int cfg_set_gvrp_enable(int on);

/* Whether the management address on a VLAN comes from a DHCP client (1) or
 * is set by the user (0); the management VLAN is VLAN 1. */
int cfg_get_vlan_dhcp_client(int vid);
int cfg_set_vlan_dhcp_client(int on);

/* Default user priority (0 .. 7) of the frames a port receives untagged;
 * cfg_get_default_priority answers it. */
int cfg_get_default_priority(int unit0, int port0);
int cfg_set_default_priority(int unit0, int port0, int priority);

#ifdef __cplusplus
}
#endif

#endif
