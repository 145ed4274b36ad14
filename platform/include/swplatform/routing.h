/*
 * Routing of the switch platform: the IP interfaces of the VLANs, the
 * routing table, VRRP virtual routers, and the OSPF and RIP protocol state.
 * Part of the platform contract (included by platform.h); its conventions
 * hold: a negative result is a failure that leaves out arguments untouched.
 *
 * Tables are read one record at a time by key.  Every find call takes a mode
 * and the key words of a record, and fills `out` with
 *   SW_FIND_EXACT  the record with exactly that key,
 *   SW_FIND_FROM   the first record whose key is that key or follows it,
 *   SW_FIND_AFTER  the first record whose key follows it,
 * in the order of the key words, each compared as an unsigned 32-bit number
 * (addresses in host order).  The result is 0 when a record was found,
 * SW_NOT_FOUND when there is none, negative on failure.  A find costs the
 * same whatever the size of the table.
 *
 * Addresses are IPv4 in host order; a VLAN interface is named by its VID.
 */
#ifndef SWPLATFORM_ROUTING_H
#define SWPLATFORM_ROUTING_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define SW_FIND_EXACT 0
#define SW_FIND_FROM 1
#define SW_FIND_AFTER 2
#define SW_NOT_FOUND 1

/* ---- IP interfaces: key (addr) --------------------------------------------- */

typedef struct sw_ip_iface {
    uint32_t addr;
    uint32_t mask;
    int32_t vid;         /* the VLAN interface that holds it */
    uint32_t reasm_max;  /* largest datagram it reassembles, bytes */
} sw_ip_iface_t;

int cfg_ip_addr_find(int mode, uint32_t addr, sw_ip_iface_t *out);

/* ---- Routing table: key (dest, prefix_len, next_hop) -------------------------
 * The routes the switch forwards by, one per destination prefix and next
 * hop.  A directly connected network has next hop 0.0.0.0. */

#define SW_ROUTE_CONNECTED 1 /* a network of one of the switch's interfaces */
#define SW_ROUTE_STATIC 2    /* configured */
#define SW_ROUTE_OSPF 3
#define SW_ROUTE_RIP 4
#define SW_ROUTE_BLACKHOLE 5 /* configured: drops what it matches */

typedef struct sw_route {
    uint32_t dest;
    uint32_t prefix_len; /* 0 .. 32 */
    uint32_t next_hop;
    int32_t vid;         /* outgoing VLAN interface; 0 for a blackhole */
    uint32_t source;     /* SW_ROUTE_* */
    uint32_t metric;
    uint32_t age_s;      /* seconds since the route was installed */
} sw_route_t;

int cfg_route_find(int mode, uint32_t dest, uint32_t prefix_len, uint32_t next_hop, sw_route_t *out);
/* Number of routes (negative on failure). */
int cfg_route_count(void);

/* ---- VRRP: key (vid, vrid) --------------------------------------------------- */

#define SW_VRRP_MAX_ADDRS 16
/* Counters of a virtual router, in this order. */
enum sw_vrrp_counter {
    SW_VRRP_BECOME_MASTER,
    SW_VRRP_ADVERTISE_RCVD,
    SW_VRRP_ADVERTISE_INTERVAL_ERRORS,
    SW_VRRP_AUTH_FAILURES,
    SW_VRRP_IP_TTL_ERRORS,
    SW_VRRP_PRIORITY_ZERO_RCVD,
    SW_VRRP_PRIORITY_ZERO_SENT,
    SW_VRRP_INVALID_TYPE_RCVD,
    SW_VRRP_ADDRESS_LIST_ERRORS,
    SW_VRRP_INVALID_AUTH_TYPE,
    SW_VRRP_AUTH_TYPE_MISMATCH,
    SW_VRRP_PACKET_LENGTH_ERRORS,
    SW_VRRP_COUNTERS
};
#define SW_VRRP_INITIALIZE 1
#define SW_VRRP_BACKUP 2
#define SW_VRRP_MASTER 3

typedef struct sw_vrrp_router {
    int32_t vid;
    uint32_t vrid;          /* 1 .. 255 */
    uint32_t state;         /* SW_VRRP_INITIALIZE, _BACKUP, _MASTER */
    uint32_t enabled;       /* administratively up */
    uint32_t priority;      /* 1 .. 255 */
    uint32_t master_addr;   /* the master's primary address */
    uint32_t primary_addr;  /* this router's address on the VLAN */
    uint32_t adv_interval;  /* seconds */
    uint32_t preempt;       /* non-zero: preempts a lower priority master */
    uint32_t up_since_cs;   /* uptime_cs() when it last left initialize; 0 never */
    uint32_t addr_count;    /* virtual addresses, ascending */
    uint32_t addrs[SW_VRRP_MAX_ADDRS];
    uint32_t counters[SW_VRRP_COUNTERS];
} sw_vrrp_router_t;

typedef struct sw_vrrp_globals {
    uint32_t checksum_errors;
    uint32_t version_errors;
    uint32_t vrid_errors;
    uint32_t notifications; /* non-zero: VRRP notifications are sent */
} sw_vrrp_globals_t;

int cfg_vrrp_find(int mode, int32_t vid, uint32_t vrid, sw_vrrp_router_t *out);
int cfg_vrrp_get_globals(sw_vrrp_globals_t *out);
int cfg_vrrp_set_notifications(int on); /* 0 or 1 */

/* ---- OSPF ----------------------------------------------------------------------
 * Areas, interfaces, virtual links, neighbours and the link-state database of
 * the switch's OSPF router.  Interfaces and neighbours are keyed by address
 * and, for an unnumbered link, the interface index (else 0). */

typedef struct sw_ospf_area { /* key (area_id) */
    uint32_t area_id;
    uint32_t import_as_extern; /* 1 external, 2 no external (stub), 3 NSSA */
    uint32_t spf_runs;
    uint32_t abr_count;
    uint32_t asbr_count;
    uint32_t lsa_count;
    uint32_t lsa_cksum_sum;
    uint32_t summary;          /* 1 no area summary, 2 send area summary */
    uint32_t stub_cost;        /* default cost sent into a stub or NSSA area */
} sw_ospf_area_t;

typedef struct sw_ospf_if { /* key (addr, addressless) */
    uint32_t addr;
    uint32_t addressless;
    uint32_t area_id;
    int32_t vid;
    uint32_t type;        /* 1 broadcast, 2 NBMA, 3 point-to-point, 5 point-to-multipoint */
    uint32_t enabled;
    uint32_t priority;
    uint32_t transit_delay;
    uint32_t retrans_interval;
    uint32_t hello_interval;
    uint32_t dead_interval;
    uint32_t poll_interval;
    uint32_t state;       /* 1 down .. 7 other DR, as OSPF-MIB's ospfIfState */
    uint32_t dr;          /* designated router's address and router ID */
    uint32_t bdr;
    uint32_t dr_id;
    uint32_t bdr_id;
    uint32_t events;
    uint32_t cost;        /* metric of TOS 0 */
    uint32_t lsa_count;   /* link-local LSAs */
    uint32_t lsa_cksum_sum;
} sw_ospf_if_t;

typedef struct sw_ospf_virt_if { /* key (area_id, neighbor) */
    uint32_t area_id;     /* transit area */
    uint32_t neighbor;    /* router ID of the far end */
    uint32_t transit_delay;
    uint32_t retrans_interval;
    uint32_t hello_interval;
    uint32_t dead_interval;
    uint32_t state;       /* 1 down, 4 point-to-point */
    uint32_t events;
} sw_ospf_virt_if_t;

/* Neighbour states, as OSPF-MIB's ospfNbrState. */
#define SW_OSPF_NBR_DOWN 1
#define SW_OSPF_NBR_ATTEMPT 2
#define SW_OSPF_NBR_INIT 3
#define SW_OSPF_NBR_TWO_WAY 4
#define SW_OSPF_NBR_EXCHANGE_START 5
#define SW_OSPF_NBR_EXCHANGE 6
#define SW_OSPF_NBR_LOADING 7
#define SW_OSPF_NBR_FULL 8

typedef struct sw_ospf_nbr { /* key (addr, addressless) */
    uint32_t addr;
    uint32_t addressless;
    uint32_t router_id;
    uint32_t options;
    uint32_t priority;
    uint32_t state;       /* SW_OSPF_NBR_* */
    uint32_t events;
    uint32_t retrans_qlen;
    uint32_t permanent;   /* configured (NBMA) rather than discovered */
} sw_ospf_nbr_t;

typedef struct sw_ospf_virt_nbr { /* key (area_id, router_id) */
    uint32_t area_id;
    uint32_t router_id;
    uint32_t addr;
    uint32_t options;
    uint32_t state;
    uint32_t events;
    uint32_t retrans_qlen;
} sw_ospf_virt_nbr_t;

/* Scope of an LSA, and what the first two key words are for it:
 *   SW_OSPF_SCOPE_AREA  (area_id, 0)            types 1, 2, 3, 4, 7, 10
 *   SW_OSPF_SCOPE_AS    (0, 0)                  type 5
 *   SW_OSPF_SCOPE_LINK  (if addr, addressless)  type 9 */
#define SW_OSPF_SCOPE_AREA 0
#define SW_OSPF_SCOPE_AS 1
#define SW_OSPF_SCOPE_LINK 2
#define SW_OSPF_LSA_MAX 64 /* bytes of the longest advertisement kept */
#define SW_OSPF_MAX_AGE 3600

typedef struct sw_ospf_lsa { /* key (where, where2, type, lsid, router_id) */
    uint32_t where;
    uint32_t where2;
    uint32_t type;
    uint32_t lsid;
    uint32_t router_id;   /* advertising router */
    int32_t sequence;
    uint32_t age;         /* seconds, up to SW_OSPF_MAX_AGE */
    uint32_t checksum;
    uint32_t length;      /* bytes of advertisement, header included */
    uint8_t advertisement[SW_OSPF_LSA_MAX]; /* as on the wire */
} sw_ospf_lsa_t;

typedef struct sw_ospf_aggregate { /* key (area_id, lsdb_type, net, mask) */
    uint32_t area_id;
    uint32_t lsdb_type;   /* 3 summary, 7 NSSA external */
    uint32_t net;
    uint32_t mask;
    uint32_t advertise;   /* non-zero: advertised, else suppressed */
    uint32_t route_tag;
} sw_ospf_aggregate_t;

int cfg_ospf_area_find(int mode, uint32_t area_id, sw_ospf_area_t *out);
int cfg_ospf_if_find(int mode, uint32_t addr, uint32_t addressless, sw_ospf_if_t *out);
int cfg_ospf_virt_if_find(int mode, uint32_t area_id, uint32_t neighbor, sw_ospf_virt_if_t *out);
int cfg_ospf_nbr_find(int mode, uint32_t addr, uint32_t addressless, sw_ospf_nbr_t *out);
int cfg_ospf_virt_nbr_find(int mode, uint32_t area_id, uint32_t router_id, sw_ospf_virt_nbr_t *out);
int cfg_ospf_lsa_find(int mode, int scope, uint32_t where, uint32_t where2, uint32_t type, uint32_t lsid,
                      uint32_t router_id, sw_ospf_lsa_t *out);
int cfg_ospf_aggregate_find(int mode, uint32_t area_id, uint32_t lsdb_type, uint32_t net, uint32_t mask,
                            sw_ospf_aggregate_t *out);

/* ---- RIP ------------------------------------------------------------------------ */

typedef struct sw_rip_if { /* key (addr) */
    uint32_t addr;
    uint32_t rcv_bad_packets;
    uint32_t rcv_bad_routes;
    uint32_t sent_updates;
} sw_rip_if_t;

typedef struct sw_rip_peer { /* key (addr, domain) */
    uint32_t addr;
    uint32_t domain;          /* the 16-bit routing domain of its updates */
    uint32_t last_update_cs;  /* uptime_cs() of its last update */
    uint32_t version;         /* 1 or 2 */
    uint32_t rcv_bad_packets;
    uint32_t rcv_bad_routes;
} sw_rip_peer_t;

int cfg_rip_if_find(int mode, uint32_t addr, sw_rip_if_t *out);
int cfg_rip_peer_find(int mode, uint32_t addr, uint32_t domain, sw_rip_peer_t *out);

/* ---- Protocol globals through the query record ------------------------------------
 * The OSPF general group and the RIP globals are answered through the query
 * record of records.hpp (SW_QUERY_RECORD_SIZE bytes): the caller puts the
 * requested object's name in, the platform fills in the answer's name, ASN.1
 * type, length and value (integers as big-endian 32-bit words).  An object
 * the platform does not know is answered with length 0. */
#define SW_QUERY_RECORD_SIZE 2548

int get_ospfGeneral(uint8_t *record);
int get_rip2Globals(uint8_t *record);

#ifdef __cplusplus
}
#endif

#endif
