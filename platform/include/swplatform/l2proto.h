/*
 * Layer-2 protocols of the switch platform: spanning tree, IGMP snooping and
 * Ethernet ring protection.  Included by platform.h; same conventions
 * (zero-based units and ports, port0 512 + trunk0 on unit0 0 for a trunk,
 * negative result = failure).
 *
 * Fixed-layout records (spanning-tree state, ring status entries, the static
 * multicast group records of the configuration image) are byte arrays in the
 * target's order; records_l2proto.hpp describes them.
 */
#ifndef SWPLATFORM_L2PROTO_H
#define SWPLATFORM_L2PROTO_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Spanning tree ------------------------------------------------------ */

/* Every call that takes an instance serves instance 1 (the common tree).
 * Times are in hundredths of a second, priorities as on the wire. */
#define SW_STP_INSTANCE 1
#define SW_STP_STATE_SIZE 80       /* bytes of the bridge state record */
#define SW_STP_PORT_STATE_SIZE 136 /* bytes of a port state record */

/* Port states of the port state record. */
#define SW_STP_DISABLED 0
#define SW_STP_BLOCKING 1
#define SW_STP_LEARNING 2
#define SW_STP_FORWARDING 3

/* Administrative link type of a port. */
#define SW_STP_LINK_P2P 1    /* point-to-point */
#define SW_STP_LINK_SHARED 2 /* shared medium */
#define SW_STP_LINK_AUTO 3   /* point-to-point while full duplex */

/* Fill `record` (SW_STP_STATE_SIZE / SW_STP_PORT_STATE_SIZE bytes); 0 on
 * success. */
int cfg_get_stp_state(int instance, uint8_t *record);
int cfg_get_stp_port_state(int instance, int unit0, int port0, uint8_t *record);

/* Bridge priority 0..61440 in steps of 4096; max age 600..4000, hello time
 * 100..1000, forward delay 400..3000 (hundredths of a second).  Getters
 * return the value. */
int cfg_get_stp_prio(int instance);
int cfg_set_stp_prio(int instance, int prio);
int cfg_get_stp_maxage(int instance);
int cfg_set_stp_maxage(int instance, int centiseconds);
int cfg_get_stp_hello(int instance);
int cfg_set_stp_hello(int instance, int centiseconds);
int cfg_get_stp_ftime(int instance);
int cfg_set_stp_ftime(int instance, int centiseconds);

/* Spanning tree on the switch: non-zero while on.  Force mode: 0 normal
 * (rapid), 2 compatible with 802.1D-1998, 3 multiple instances. */
int cfg_get_stp_enabled(void);
int cfg_set_stp_domain_enabled(int instance, int on); /* 0 or 1 */
int cfg_get_stp_forcemode(void);
int cfg_set_stp_forcemode(int mode); /* 0 .. 3 */

/* Per port or trunk: priority 0..240 in steps of 16, path cost
 * 1..200000000, spanning tree on the port 0/1. */
int cfg_get_stp_port_prio(int instance, int unit0, int port0);
int cfg_set_stp_port_prio(int instance, int unit0, int port0, int prio);
int cfg_get_stp_port_cost(int instance, int unit0, int port0);
int cfg_set_stp_port_cost(int instance, int unit0, int port0, int cost);
int cfg_get_stp_port_enabled(int instance, int unit0, int port0);
int cfg_set_stp_port_enabled(int instance, int unit0, int port0, int on);
/* Administrative edge port (0/1) and link type (SW_STP_LINK_*). */
int cfg_get_stp_port_edge(int unit0, int port0);
int cfg_set_stp_port_edge(int unit0, int port0, int on);
int cfg_get_stp_port_linktype(int unit0, int port0);
int cfg_set_stp_port_linktype(int unit0, int port0, int type);

/* ---- IGMP snooping ------------------------------------------------------ */

/* Switch-wide settings: enable and querier 0/1, version 1..3, query count
 * 2..10, query interval 1..3600 s (it also bounds the response time),
 * query timeout 300..500 s.  Getters return the value. */
int cfg_get_igmp_enable(void);
int cfg_set_igmp_enable(int on);
int cfg_get_igmp_enable_querier(void);
int cfg_set_igmp_enable_querier(int on);
int cfg_get_igmp_version(void);
int cfg_set_igmp_version(int version);
int cfg_get_igmp_query_count(void);
int cfg_set_igmp_query_count(int count);
int cfg_get_igmp_query_interval(void);
int cfg_set_igmp_query_interval(int seconds);
int cfg_get_igmp_query_timeout(void);
int cfg_set_igmp_query_timeout(int seconds);

/* Multicast router port of a VLAN: non-zero while it is one.  Making a port
 * a router port fails for a VLAN that does not exist. */
int cfg_get_igmp_router_port(int unit0, int port0, int vid);
int cfg_set_igmp_router_port(int unit0, int port0, int vid, int on);

/* Adds (on 1) or removes (on 0) a user port to or from the static group
 * `group` (IPv4, host order) of VLAN `vid`.  `learned` is 0 for static
 * configuration.  The group records live in the configuration image
 * (records_l2proto.hpp); a group left without ports is freed.  Adding fails
 * for a VLAN that does not exist, a group address that is not multicast or
 * when every record is in use. */
int cfg_set_igmp_set_mcast(int unit0, int port0, int vid, uint32_t group, int learned, int on);

/* ---- Ethernet ring protection ------------------------------------------- */

#define SW_EAPS_DOMAINS 64
#define SW_EAPS_NAME_SIZE 48

/* `id` itself when domain id (0 .. 63) is configured, else -1. */
int verify_created_eaps_domain(int id);
/* The domain's name (terminated), or NULL when it is not configured. */
const char *cfg_get_eaps_name(int id);
/* Non-zero when this switch is the ring's master node; -1 when the domain is
 * not configured. */
int cfg_get_eaps_is_master(int id);
/* The ring status block: SW_EAPS_DOMAINS entries (records_l2proto.hpp),
 * kept current by the platform; valid for the life of the process. */
const uint8_t *status_get_eaps(void);

#ifdef __cplusplus
}
#endif

#endif
