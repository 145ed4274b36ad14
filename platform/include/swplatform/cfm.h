/*
 * Connectivity fault management (IEEE 802.1ag, ITU-T Y.1731): the two-way
 * delay measurement probes of the switch.  A probe runs from a local
 * maintenance end point (MEP) on a port toward a remote MEP, named by its
 * MAC address: once a second it sends a delay measurement message and
 * times the reply.  Part of the platform contract (included from
 * platform.h); the conventions of platform.h hold (negative result =
 * failure, out arguments untouched on failure).
 *
 * Probes are numbered 1 .. SW_CFM_PROBE_MAX_ID by the operator; the switch
 * runs at most SW_CFM_PROBES of them.
 */
#ifndef SWPLATFORM_CFM_H
#define SWPLATFORM_CFM_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define SW_CFM_PROBES 64
#define SW_CFM_PROBE_MAX_ID 65535

typedef struct {
    uint32_t id;        /* the probe's number */
    int32_t unit0;      /* the port of the local MEP */
    int32_t port0;
    uint8_t target[6];  /* MAC address of the remote MEP */
    uint8_t reserved[2];
} sw_cfm_probe_t;

/* The last completed measurement of a probe. */
typedef struct {
    uint32_t valid;         /* 1 a measurement is there; 0 none (link down, unit absent) */
    uint32_t delay_us;      /* two-way frame delay, microseconds */
    uint32_t variation_us;  /* difference to the measurement before, microseconds */
} sw_cfm_dm_result_t;

/* A probe by its number; fails when there is no such probe. */
int cfg_get_cfm_probe(uint32_t id, sw_cfm_probe_t *out);
/* The probe with the lowest number above `after` (0: the first); fails
 * when there is none. */
int cfg_get_cfm_probe_next(uint32_t after, sw_cfm_probe_t *out);
/* A probe's last measurement; fails when there is no such probe.  A probe
 * whose port's link is down, or whose port's unit is absent, answers
 * valid 0 and zero times. */
int bcmd_get_cfm_dm_result(uint32_t id, sw_cfm_dm_result_t *out);

#ifdef __cplusplus
}
#endif

#endif
