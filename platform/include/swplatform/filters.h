/*
 * The switch's packet filters (access-list rules applied to ports, on the
 * way in or out) and their counters.  Part of the platform contract
 * (included from platform.h); the conventions of platform.h hold (negative
 * result = failure, out arguments untouched on failure).
 *
 * Each direction has SW_FILTERS filter slots, counted from 0.  A filter
 * counts, per port it is applied on, the packets it matched and their
 * octets, from when it was applied.
 */
#ifndef SWPLATFORM_FILTERS_H
#define SWPLATFORM_FILTERS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { SW_FILTER_INGRESS = 0, SW_FILTER_EGRESS = 1 };
#define SW_FILTERS 16
#define SW_FILTER_TEXT_SIZE 64 /* name or rule, terminating zero included */

typedef struct {
    uint32_t in_use;                 /* 1 the slot holds a filter */
    char name[SW_FILTER_TEXT_SIZE];  /* "block-telnet" */
    char rule[SW_FILTER_TEXT_SIZE];  /* the rule as configured: "deny tcp any any eq 23" */
} sw_filter_t;

/* A slot's filter; a free slot answers in_use 0.  Fails for a direction or
 * slot out of range. */
int cfg_get_filter(int direction, int filter0, sw_filter_t *out);
/* 1 when the filter is applied on the port, 0 when not; fails for a free
 * slot or a port that does not exist. */
int cfg_filter_on_port(int direction, int filter0, int unit0, int port0);
/* The filter's counts on the port; fails where cfg_filter_on_port does not
 * answer 1. */
int bcmd_get_filter_counter(int direction, int filter0, int unit0, int port0, uint64_t *packets,
                            uint64_t *octets);

#ifdef __cplusplus
}
#endif

#endif
