/*
 * LLDP of the switch platform: the switch's own LLDP settings and what it
 * announces, per-port settings and counters, and the neighbours heard on
 * each user port and on the management port.  Part of the platform contract
 * (included by platform.h); the conventions of platform.h hold: units and
 * ports count from zero and a negative result is a failure that leaves out
 * arguments untouched.
 *
 * Every call that addresses a port has a variant for the switch's
 * management Ethernet port (the _mgmt_ calls), which is no unit's port.
 *
 * The records are byte arrays in the target's order (big-endian) of fixed
 * sizes; records_lldp.hpp describes their fields.
 */
#ifndef SWPLATFORM_LLDP_H
#define SWPLATFORM_LLDP_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define SW_LLDP_GLOBAL_SIZE 680        /* bytes of the switch's LLDP record */
#define SW_LLDP_GLOBAL_STATS_SIZE 20   /* bytes of the remote table statistics */
#define SW_LLDP_INTF_SIZE 524          /* bytes of a port's LLDP record */
#define SW_LLDP_COUNTERS_SIZE 28       /* bytes of a port's LLDP counters */
#define SW_LLDP_NEIGHBOR_SIZE 13912    /* bytes of one neighbour record */
#define SW_LLDP_HASH_SIZE 49           /* bytes of the LLDP status hash */

/* Administrative status of LLDP on a port (as LLDP-MIB numbers it). */
#define SW_LLDP_TX_ONLY 1
#define SW_LLDP_RX_ONLY 2
#define SW_LLDP_TX_AND_RX 3
#define SW_LLDP_DISABLED 4

/* Optional TLVs a port sends: bits of the interface record's TLV word. */
#define SW_LLDP_TLV_PORT_DESC 0x01u
#define SW_LLDP_TLV_SYS_NAME 0x02u
#define SW_LLDP_TLV_SYS_DESC 0x04u
#define SW_LLDP_TLV_SYS_CAP 0x08u

/* The switch's LLDP record: chassis MAC, management address, system
 * description and capabilities.  `record` holds SW_LLDP_GLOBAL_SIZE bytes. */
int cfg_get_lldp_global_info(uint8_t *record);
/* The remote table statistics (SW_LLDP_GLOBAL_STATS_SIZE bytes): five
 * 32-bit words, last change time (hundredths of a second of uptime),
 * inserts, deletes, drops, ageouts. */
int cfg_get_lldp_global_stats_info(uint8_t *record);

/* A port's LLDP record (SW_LLDP_INTF_SIZE bytes): admin status, notification
 * enable, TLV word, port identifier, management port description. */
int cfg_get_lldp_intf_info(int unit0, int port0, uint8_t *record);
int cfg_get_lldp_intf_mgmt_info(uint8_t *record);
/* A port's counters (SW_LLDP_COUNTERS_SIZE bytes, records_lldp.hpp). */
int cfg_get_lldp_status_intf_counters(int unit0, int port0, uint8_t *record);
int cfg_get_lldp_mgmt_status_intf_counters(uint8_t *record);

/* The neighbours heard on a port: *records receives a malloc'ed array of
 * *count records of SW_LLDP_NEIGHBOR_SIZE bytes (NULL when there are none),
 * which the caller frees. */
int cfg_get_lldp_neighbors_info(int unit0, int port0, uint8_t **records, int *count);
int cfg_get_lldp_mgmt_neighbors_info(uint8_t **records, int *count);
/* SW_LLDP_HASH_SIZE bytes that change whenever a neighbour is heard,
 * changes or goes, on any port. */
int cfg_lldp_status_get_hash(uint8_t *hash);

/* Per-port settings; `on` is 0 or 1, status SW_LLDP_TX_ONLY .. DISABLED. */
int cfg_set_lldp_port_adminStatus(int unit0, int port0, int status);
int cfg_set_lldp_mgmt_port_adminStatus(int status);
int cfg_set_lldp_port_notificationEnable(int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_notificationEnable(int on);
int cfg_set_lldp_port_portDescEnable(int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_portDescEnable(int on);
int cfg_set_lldp_port_sysNameEnable(int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_sysNameEnable(int on);
int cfg_set_lldp_port_sysDescEnable(int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_sysDescEnable(int on);
int cfg_set_lldp_port_sysCapEnable(int unit0, int port0, int on);
int cfg_set_lldp_mgmt_port_sysCapEnable(int on);

/* Switch-wide timers.  Getters return the value.  Accepted: transmit
 * interval 5..32768 s, hold multiplier 2..10, reinitialisation delay
 * 1..10 s, transmit delay 1..8192 s, notification interval 5..3600 s. */
int cfg_get_lldp_msgTxInterval(void);
int cfg_set_lldp_msgTxInterval(int seconds);
int cfg_get_lldp_msgTxHold(void);
int cfg_set_lldp_msgTxHold(int multiplier);
int cfg_get_lldp_reinitDelay(void);
int cfg_set_lldp_reinitDelay(int seconds);
int cfg_get_lldp_txDelay(void);
int cfg_set_lldp_txDelay(int seconds);
int cfg_get_lldp_notificationInterval(void);
int cfg_set_lldp_notificationInterval(int seconds);

#ifdef __cplusplus
}
#endif

#endif
