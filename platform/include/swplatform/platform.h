/*
 * The switch platform library, as seen by the SNMP module.
 *
 * This header is the whole contract between libsnmpdAPI and the platform:
 * configuration store (cfg_*), hardware counters (bcmd_*), the status block
 * (get_status, status_*), locks, uptime, the switch clock and the small
 * helpers.  On the switch it is implemented by the vendor platform library;
 * here it is implemented by the simulated switch in sim/.
 *
 * Conventions of every call:
 *   - units, ports and trunks count from zero (unit0, port0, trunk0);
 *   - port0 values from 512 up on unit0 0 address trunk (port0 - 512);
 *   - a negative result is a failure, zero or positive is success;
 *   - out arguments are left untouched on failure unless said otherwise.
 *
 * Records whose byte layout is fixed (address-table entries, the query record,
 * the configuration image areas) are byte arrays in the target's order
 * (big-endian); see records.hpp for their layout and codecs.
 */
#ifndef SWPLATFORM_PLATFORM_H
#define SWPLATFORM_PLATFORM_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Limits of the switch stack ---------------------------------------- */

#define SW_MAX_UNITS 8
#define SW_PORTS_PER_UNIT 64
#define SW_MAX_TRUNKS 128
#define SW_MAX_VLAN_ID 4094
#define SW_MAX_STATISTIC 96        /* statistic numbers 0 .. 95 */
#define SW_TEXT_SIZE 64            /* descriptions, names, contact, location */
#define SW_TZ_NAME_SIZE 32         /* time-zone name, terminating zero included */
#define SW_CFG_IMAGE_SIZE 21705581 /* bytes of the configuration image */

/* ---- Status block ------------------------------------------------------- */

/* Live state of one port, kept by the platform in the status block. */
typedef struct sw_port_status {
    uint32_t link;       /* non-zero while the link is up */
    uint32_t speed;      /* current speed in Mbit/s (valid while link != 0) */
    uint32_t speed2;     /* second speed word, Mbit/s: used while link == 0 */
    uint32_t duplex;     /* 1 full duplex, 0 half */
    uint32_t rx_pause;   /* negotiated receive pause, non-zero when on */
    uint32_t tx_pause;   /* negotiated transmit pause, non-zero when on */
    uint8_t sfp_present; /* transceiver flag bytes: diagnostics exist */
    uint8_t sfp_ddm;     /*   only while both are non-zero */
    uint8_t reserved[2];
    /* Transceiver diagnostics, already in the units the MIB reports. */
    int16_t ddm_temperature; /* whole degrees Celsius */
    uint16_t ddm_voltage;    /* 100 microvolt */
    uint16_t ddm_bias;       /* 0.1 milliampere */
    uint16_t ddm_tx_power;   /* 0.1 microwatt */
    uint16_t ddm_rx_power;   /* 0.1 microwatt */
    uint16_t reserved2;
} sw_port_status_t;

/* One stacking unit. */
typedef struct sw_unit_status {
    uint32_t present;   /* non-zero while the unit is in the stack */
    uint8_t status2;    /* second status byte: unit known though not present */
    uint8_t is_mpu;     /* management processor unit */
    uint8_t reserved[2];
    uint32_t user_ports; /* user Ethernet ports of the unit (0 .. 64) */
    char model[32];
    char serial[32];
    char version[32];
    char build_date[32];
    sw_port_status_t ports[SW_PORTS_PER_UNIT];
} sw_unit_status_t;

/* The platform status block: one record per unit in unit order, the
 * switch-wide identity and the change flags that the platform raises. */
typedef struct sw_status {
    sw_unit_status_t units[SW_MAX_UNITS];
    char fw_version[32];   /* firmware version text, "major.minor.release ..." */
    char boot_version[32]; /* boot loader version text */
    char fw_date[32];      /* firmware release date text */
    char product[32];      /* product identifier */
    uint64_t serial_no;    /* switch serial number */
    uint32_t vendor_id;    /* vendor identifier word */
    uint32_t cpu_selector; /* which processor the usage scalars read */
    uint32_t model_word;   /* product model code, also the vendor code of device information */
    /* VLAN change flags: set to 1 by the platform whenever a VLAN is created
     * or deleted; each consumer clears its own. */
    uint8_t vlan_changed_stack[2]; /* the interface stack's pair */
    uint8_t vlan_changed_current;  /* the current VLAN table */
    uint8_t vlan_changed_static;   /* the static VLAN table */
    uint8_t vlan_changed_private;  /* the private VLAN table */
    uint8_t reserved[3];
    /* Name servers in use, IPv4 in host order (0: none): primary, secondary. */
    uint32_t dns_servers[2];
} sw_status_t;

/* The status block lives in memory shared with the platform; the pointer
 * stays valid for the life of the process. */
sw_status_t *get_status(void);
int status_get_num_units(void);
const char *status_get_hw_model(int unit0);

/* ---- Start-up and locks ------------------------------------------------- */

/* Opens the platform library; must precede every other call. */
int cfg_init(void);

/* Read/write locks shared by every user of the configuration, across
 * processes.  lock_free releases either kind.  A lock held by a process that
 * dies is released with it. */
typedef struct cfg_lock cfg_lock_t;
#define CFG_LOCK_COUNT 4
extern cfg_lock_t *cfg_lock_table[CFG_LOCK_COUNT];
int lock_read(cfg_lock_t *lock);
int lock_write(cfg_lock_t *lock);
int lock_free(cfg_lock_t *lock);

/* ---- Time --------------------------------------------------------------- */

uint32_t uptime(void);    /* seconds since the switch started */
uint64_t uptime_cs(void); /* hundredths of a second since the switch started */
/* The switch clock (on the switch: the C library's time and stime). */
time_t sys_clock_get(void);
int sys_clock_set(time_t t);
/* Parses "hh:mm:ss"; negative when the text is not a time of day. */
int parse_time(const char *text, int *hours, int *minutes, int *seconds);

/* ---- Equipment and identity --------------------------------------------- */

int cfg_equip_get_user_eth_ports(int unit0);
int cfg_equip_get_is_mpu(int unit0);
/* Equipment OID as 32-bit sub-identifiers; *len receives its length in bytes. */
const uint32_t *cfg_equip_get_int_oid(size_t *len);
const char *cfg_equip_get_name_vx7300(const sw_status_t *status);
const char *cfg_equip_get_vendor_url(void);
int cfg_get_unit_mac(int unit0, uint8_t mac[6]);

/* Texts are copied into buf (size bytes, always terminated). */
int cfg_get_hostname(char *buf, size_t size);
int cfg_set_hostname(const char *name);
int cfg_get_snmpd_sys_contact(char *buf, size_t size);
int cfg_set_snmpd_sys_contact(const char *text);
int cfg_get_snmpd_sys_location(char *buf, size_t size);
int cfg_set_snmpd_sys_location(const char *text);
/* Zone name (SW_TZ_NAME_SIZE bytes) and offset in minutes east of UTC. */
int cfg_get_timezone(char *name, int *offset_min);
int cfg_set_timezone(const char *name, int offset_min);

/* Configuration image: SW_CFG_IMAGE_SIZE bytes (records.hpp gives the areas
 * the module reads directly). */
uint8_t *cfg_get_cfg(void);
/* Integrity hashes of hardware and status; *len receives the byte count. */
const uint8_t *bcmd_get_hw_hash(size_t *len);
const uint8_t *bcmd_get_status_hash(size_t *len);

/* ---- Ports -------------------------------------------------------------- */

/* Port information as the switch chip reports it now. */
typedef struct sw_port_info {
    uint32_t link;     /* non-zero while up */
    uint32_t speed;    /* Mbit/s */
    uint32_t duplex;   /* 1 full */
    uint32_t rx_pause; /* negotiated pause, non-zero when on */
    uint32_t tx_pause;
} sw_port_info_t;

int bcmd_get_port_info(int unit0, int port0, sw_port_info_t *info);
/* 64-bit statistic number `stat` of a port or trunk. */
int bcmd_snmp_stat_get(int unit0, int port0, int stat, uint64_t *value);

int cfg_get_port_description(int unit0, int port0, char *buf, size_t size);
int cfg_set_port_description(int unit0, int port0, const char *text);
/* Port type codes. */
#define SW_PORT_TYPE_100TX 5   /* 100BASE-TX copper */
#define SW_PORT_TYPE_1000T 7   /* 10/100/1000BASE-T copper */
#define SW_PORT_TYPE_1000X 10  /* 1000BASE-X SFP cage */
#define SW_PORT_TYPE_10GX 11   /* 10GBASE-X SFP+ cage */
#define SW_PORT_TYPE_100FX 12  /* 100BASE-FX fibre */
#define SW_PORT_TYPE_TRUNK 14  /* port channel */
int cfg_get_port_type_vx7300(int unit0, int port0); /* SW_PORT_TYPE_* */
int cfg_get_port_enabled(int unit0, int port0, int *enabled);
int cfg_set_port_enabled(int unit0, int port0, int enabled);
int cfg_get_port_autoneg(int unit0, int port0, int *on);
int cfg_set_port_autoneg(int unit0, int port0, int on);
int cfg_get_port_speed(int unit0, int port0, int *mbps); /* 0: auto */
int cfg_set_port_speed(int unit0, int port0, int mbps);
int cfg_get_port_duplex(int unit0, int port0, int *full);
int cfg_set_port_duplex(int unit0, int port0, int full);
/* Configured pause: 0 off, 1 receive, 2 transmit, 3 both. */
int cfg_get_port_pause(int unit0, int port0, int *pause);
int cfg_set_port_pause(int unit0, int port0, int pause);
/* MDI state: 1 auto, 2 MDI, 3 MDI-X. */
int cfg_get_port_mdix(int unit0, int port0, int *mdix);
/* Capability mask of a port: what it can advertise. */
#define SW_CAP_10_HALF 0x001u
#define SW_CAP_10_FULL 0x002u
#define SW_CAP_100_HALF 0x004u
#define SW_CAP_100_FULL 0x008u
#define SW_CAP_1000_HALF 0x010u
#define SW_CAP_1000_FULL 0x020u
#define SW_CAP_10G_FULL 0x200u
#define SW_CAP_PAUSE 0x400u      /* symmetric pause */
#define SW_CAP_ASYM_PAUSE 0x800u /* asymmetric pause */
#define SW_CAP_AUTONEG 0x1000u
int cfg_get_port_capabilities(int unit0, int port0, uint32_t *mask);
int cfg_set_port_capabilities(int unit0, int port0, uint32_t mask);
int cfg_get_port_mtu(int unit0, int port0); /* bytes */
int cfg_get_port_mac(int unit0, int port0, uint8_t mac[6]);

/* ---- Trunks ------------------------------------------------------------- */

int cfg_check_trunk(int trunk0);    /* non-zero: trunk configured */
int cfg_is_trunk_empty(int trunk0); /* non-zero: trunk has no member */
int cfg_is_dynamic_trunk(int trunk0);
int cfg_get_port_tid(int unit0, int port0); /* trunk0 of the port, or -1 */
int cfg_check_port_tid(int unit0, int port0, int trunk0);

/* ---- VLANs -------------------------------------------------------------- */

/* Membership flags of a port in a VLAN. */
#define SW_VLAN_TAGGED 0x01    /* static tagged member */
#define SW_VLAN_UNTAGGED 0x02  /* static untagged member */
#define SW_VLAN_FORBIDDEN 0x04 /* forbidden */
#define SW_VLAN_DYNAMIC 0x08   /* dynamic (GVRP) member */

int cfg_vlan_exists(int vid);
int cfg_vlan_is_active(int vid);
int cfg_is_vlan_dynamic(int vid);
int cfg_get_vlan_name(int vid, char *buf, size_t size);
int cfg_get_vlan_port_member(int unit0, int port0, int vid, uint32_t *flags);

/* ---- Bridge ------------------------------------------------------------- */

/* Learned address table: *entries receives a malloc'ed array of *count
 * records of SW_MAC_ENTRY_SIZE bytes (records.hpp), which the caller frees.
 * query: seven 32-bit words, all zero for every entry. */
int cfg_get_mac_address_table(int *count, uint8_t **entries, const int32_t query[7]);
int cfg_get_mac_ageing(void);
int cfg_set_mac_ageing(int seconds);

/* ---- Helpers ------------------------------------------------------------ */

int ip_str_to_uint32(const char *text, uint32_t *addr);
int ip_uint32_to_str(uint32_t addr, char *buf, size_t size);
int ip_mask_to_prefix(uint32_t mask);
int ip_addr_prefix_to_addr_mask(const char *text, uint32_t *addr, uint32_t *mask);
char *strncpy_safe(char *dst, const char *src, size_t size);
int systemf(const char *fmt, ...) __attribute__((format(printf, 1, 2)));
void vxlog(int level, const char *fmt, ...) __attribute__((format(printf, 2, 3)));

#ifdef __cplusplus
}
#endif

#include "swplatform/vlans.h"
#include "swplatform/l2proto.h"
#include "swplatform/ifaces.h"
#include "swplatform/chassis.h"
#include "swplatform/lldp.h"

#endif

#include "swplatform/traffic.h"
#include "swplatform/routing.h"
#include "swplatform/traps.h"
#include "swplatform/services.h"
#include "swplatform/rmon.h"
#include "swplatform/auth.h"
#include "swplatform/files.h"
#include "swplatform/filters.h"
#include "swplatform/cfm.h"
