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

/* ---- Link aggregation (LACP) ------------------------------------------- */

/* LACP state octet bits, as carried in LACPDUs. */
#define SW_LACP_ACTIVITY 0x01
#define SW_LACP_TIMEOUT 0x02 /* short timeout */
#define SW_LACP_AGGREGATION 0x04
#define SW_LACP_SYNCHRONIZATION 0x08
#define SW_LACP_COLLECTING 0x10
#define SW_LACP_DISTRIBUTING 0x20
#define SW_LACP_DEFAULTED 0x40
#define SW_LACP_EXPIRED 0x80

/* LACP counters of a port, in sw_lacp_port_t.counters. */
enum sw_lacp_counter {
    SW_LACP_RX_LACPDU,
    SW_LACP_RX_MARKER,
    SW_LACP_RX_MARKER_RESPONSE,
    SW_LACP_RX_UNKNOWN,
    SW_LACP_RX_ILLEGAL,
    SW_LACP_TX_LACPDU,
    SW_LACP_TX_MARKER,
    SW_LACP_TX_MARKER_RESPONSE,
    SW_LACP_COUNTERS
};

/* LACP view of a physical port: the local (actor) settings and state, what
 * the link partner last announced, and the protocol counters. */
typedef struct sw_lacp_port {
    uint32_t enabled;               /* the port runs LACP (active mode) */
    uint32_t actor_port_priority;   /* 0..65535 */
    uint32_t actor_key;             /* operational key */
    uint32_t actor_state;           /* SW_LACP_* bits */
    uint32_t partner_present;       /* a partner's LACPDUs are being received */
    uint32_t partner_system_priority;
    uint8_t partner_system[6];      /* partner system MAC address */
    uint8_t reserved[2];
    uint32_t partner_key;
    uint32_t partner_port;
    uint32_t partner_port_priority;
    uint32_t partner_state;         /* SW_LACP_* bits */
    uint32_t last_rx_cs;            /* uptime_cs() of the last LACPDU received, 0: none */
    uint64_t counters[SW_LACP_COUNTERS];
    /* Protocol events: how often actor and partner lost their partner
     * (churn), went in or out of sync, and changed what they announce. */
    uint32_t actor_churns, partner_churns;
    uint32_t actor_sync_transitions, partner_sync_transitions;
    uint32_t actor_changes, partner_changes;
} sw_lacp_port_t;

int cfg_get_lacp_port(int unit0, int port0, sw_lacp_port_t *info);
/* Starts (1) or stops (0) LACP on a port; the platform then forms and
 * dissolves dynamic trunks with the partners it finds. */
int cfg_set_lacp_port_enable(int unit0, int port0, int enabled);
int cfg_set_lacp_port_priority(int unit0, int port0, int priority);   /* 0..65535 */
int cfg_get_lacp_system_priority(void);                              /* 0..65535 */
int cfg_set_lacp_system_priority(int priority);
/* uptime_cs() of the last change of LACP settings or aggregations. */
int cfg_get_lacp_last_change(uint32_t *cs);

#ifdef __cplusplus
}
#endif

#endif
