/*
 * Per-port traffic controls of the switch platform: ingress and egress rate
 * limits, broadcast storm control, the counters of the eight egress queues
 * and port mirroring.  Part of the platform contract (included by
 * platform.h); the conventions of platform.h hold: ports and trunks are
 * addressed as (unit0, port0), a trunk as unit0 0, port0 512 + trunk0, and a
 * negative result is a failure that leaves out arguments untouched.
 */
#ifndef SWPLATFORM_TRAFFIC_H
#define SWPLATFORM_TRAFFIC_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Rate limits ---------------------------------------------------------
 * A rate in kbit/s; 0 is no limit, which is also the default rate.  A burst
 * in kbytes, 1 .. SW_BURST_MAX_KB; the default burst is SW_BURST_DEFAULT_KB.
 */
#define SW_RATE_MAX_KBPS 10000000u
#define SW_BURST_MAX_KB 16384u
#define SW_BURST_DEFAULT_KB 512u

int cfg_get_port_rate_ingress(int unit0, int port0, uint32_t *kbps);
int cfg_set_port_rate_ingress(int unit0, int port0, uint32_t kbps);
int cfg_get_port_burst_ingress(int unit0, int port0, uint32_t *kbytes);
int cfg_set_port_burst_ingress(int unit0, int port0, uint32_t kbytes);
int cfg_set_default_port_rate_ingress(int unit0, int port0);
int cfg_set_default_port_burst_ingress(int unit0, int port0);

int cfg_get_port_rate_egress(int unit0, int port0, uint32_t *kbps);
int cfg_set_port_rate_egress(int unit0, int port0, uint32_t kbps);
int cfg_get_port_burst_egress(int unit0, int port0, uint32_t *kbytes);
int cfg_set_port_burst_egress(int unit0, int port0, uint32_t kbytes);
int cfg_set_default_port_rate_egress(int unit0, int port0);
int cfg_set_default_port_burst_egress(int unit0, int port0);

/* ---- Broadcast storm control ---------------------------------------------
 * While enabled, received broadcast above the threshold (packets per second,
 * 1 .. SW_BCAST_MAX_PPS; default SW_BCAST_DEFAULT_PPS) is dropped.
 */
#define SW_BCAST_MAX_PPS 14880952u /* 64-byte frames at 10 Gbit/s */
#define SW_BCAST_DEFAULT_PPS 3000u

int cfg_get_port_rate_bcast_enable(int unit0, int port0, uint8_t *enabled);
int cfg_set_port_rate_bcast_enable(int unit0, int port0, uint8_t enabled); /* 0 or 1 */
int cfg_get_port_rate_bcast_value(int unit0, int port0, uint32_t *pps);
int cfg_set_port_rate_bcast_value(int unit0, int port0, uint32_t pps);

/* ---- Egress queue counters -----------------------------------------------
 * Each call fills an area of SW_QUEUE_AREA_SIZE bytes: eight 64-bit counts,
 * queue 0 first, big-endian (records_traffic.hpp gives the layout); size is
 * the area's size in bytes and must be at least SW_QUEUE_AREA_SIZE.  A trunk
 * counts what its members count.
 */
#define SW_QUEUES 8
#define SW_QUEUE_AREA_SIZE (SW_QUEUES * 8)

int cfg_get_queue_pkts_cnt(int unit0, int port0, uint8_t *area, size_t size);
int cfg_get_queue_bytes_cnt(int unit0, int port0, uint8_t *area, size_t size);
int cfg_get_queue_dropped_pkts(int unit0, int port0, uint8_t *area, size_t size);
int cfg_get_queue_dropped_bytes(int unit0, int port0, uint8_t *area, size_t size);

/* ---- Port mirroring ------------------------------------------------------
 * What a port or trunk copies to the mirror destination port.  The
 * destination is one physical port, which is not mirrored itself;
 * cfg_get_mirror_to fails while no destination is set.
 */
#define SW_MIRROR_NONE 0
#define SW_MIRROR_RX 1   /* received traffic */
#define SW_MIRROR_TX 2   /* transmitted traffic */
#define SW_MIRROR_BOTH 3

int cfg_get_port_mirror(int unit0, int port0, int *mode);
int cfg_set_port_mirror(int unit0, int port0, int mode);
int cfg_get_mirror_to(int *unit0, int *port0);
int cfg_set_mirror_to(int unit0, int port0);

#ifdef __cplusplus
}
#endif

#endif
