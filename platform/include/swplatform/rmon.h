/*
 * The switch's RMON engine: Ethernet statistics and history rows sampled
 * from the port counters, and the alarm and event engine.  Part of the
 * platform contract (included from platform.h); the conventions of
 * platform.h hold (a negative result is a failure that leaves out arguments
 * untouched).  The records exchanged here are packed byte records whose
 * layout records_rmon.hpp describes; their 32- and 64-bit words are
 * big-endian, as the switch stores them.
 *
 * Statistics and history rows are indexed 1 .. 65535.  A row's life:
 * bcmd_rmon_*_create makes it underCreation (3) watching unit 0 port 0;
 * its data source, owner (and for history the interval and buckets) are
 * written through the set_conf calls; cfg_set_rmon_* activates it (valid,
 * 1: counting starts, the row is saved in the configuration);
 * cfg_del_rmon_* removes it.  bcmd_rmon_*_set_status sets any other status:
 * invalid (4) removes the row, createRequest (2) reads back as
 * underCreation.
 */
#ifndef SWPLATFORM_RMON_H
#define SWPLATFORM_RMON_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define SW_RMON_STATISTICS 256   /* statistics rows the engine keeps */
#define SW_RMON_HISTORIES 64     /* history control rows */
#define SW_RMON_MAX_BUCKETS 50   /* buckets granted at most per history row */
#define SW_RMON_SLOTS 256        /* alarm slots, event slots */
#define SW_RMON_SCRIPTS 16       /* command scripts */

/* RMON EntryStatus. */
#define SW_RMON_VALID 1
#define SW_RMON_CREATE_REQUEST 2
#define SW_RMON_UNDER_CREATION 3
#define SW_RMON_INVALID 4

/* ---- Statistics (etherStatsTable) ----------------------------------------
 * get_all: a malloc'd buffer of every row's list record (first word the row
 * index) in *records, the caller frees it; the result is its size in bytes. */
int bcmd_rmon_statistic_get_all(uint8_t **records);
int bcmd_rmon_statistic_get_conf(int32_t index, uint8_t *conf);          /* 48-byte record */
int bcmd_rmon_statistic_set_conf(const uint8_t *conf);                   /* index inside */
int bcmd_rmon_statistic_get(int32_t index, uint8_t *counters);           /* 17 x 64 bits */
int bcmd_rmon_statistic_set_status(int32_t index, int32_t status);
int bcmd_rmon_statistic_create(int32_t index);
int cfg_set_rmon_statistic(const uint8_t *record);                      /* 44-byte record */
int cfg_del_rmon_statistic(int32_t index);
int cfg_del_rmon_statistic_pre(int32_t index, uint8_t *image);

/* ---- History (historyControlTable, etherHistoryTable) --------------------
 * Samples are numbered from 1; the newest buckets-granted ones are kept. */
int bcmd_rmon_history_get_all(uint8_t **records);
int bcmd_rmon_history_get_conf(int32_t index, uint8_t *conf);            /* 64-byte record */
int bcmd_rmon_history_set_conf(const uint8_t *conf);
int bcmd_rmon_history_get(int32_t index, int32_t sample, uint8_t *values); /* 12 x 64 bits */
/* Start of a sample's interval, seconds since the switch booted; 0 when
 * the sample is not kept. */
uint32_t bcmd_rmon_history_interval_get(int32_t index, int32_t sample);
int bcmd_rmon_history_set_status(int32_t index, int32_t status);
int bcmd_rmon_history_create(int32_t index);
int cfg_set_rmon_history(const uint8_t *record);                        /* 52-byte record */
int cfg_del_rmon_history(int32_t index);
int cfg_del_rmon_history_pre(int32_t index, uint8_t *image);

/* ---- Alarms and events -----------------------------------------------------
 * The engine keeps its alarms and events itself; the configuration keeps
 * their copies in slots of the configuration image (records_rmon.hpp).  A
 * handle names one of the engine's rows (its engine record). */
typedef const void *sw_rmon_handle_t;
int cfg_del_rmon_alarm_pre(sw_rmon_handle_t alarm);
int cfg_del_rmon_event_pre(sw_rmon_handle_t event);
int cfg_set_rmon_alarm_pre(const uint8_t *record);  /* configuration alarm record */
int cfg_set_rmon_event_pre(const uint8_t *record);  /* configuration event record */
/* Hands one configuration slot back to the engine, which (re)creates its row. */
int cfg_set_rmon_alarm_up(const uint8_t *slot);
int cfg_set_rmon_event_up(const uint8_t *slot);

/* The callbacks through which the engine works on the agent's side. */
typedef int (*sw_rmon_delete_fn)(sw_rmon_handle_t row);
typedef int (*sw_rmon_set_fn)(const uint8_t *engine_record);
typedef int (*sw_rmon_all_fn)(void);
typedef int (*sw_rmon_fired_fn)(int event_index, const char *description);
/* Stores this process's callbacks and starts the engine's thread in it. */
int register_rmon(sw_rmon_delete_fn alarm_delete_pre, sw_rmon_delete_fn event_delete_pre,
                  sw_rmon_set_fn alarm_set_pre, sw_rmon_set_fn event_set_pre, sw_rmon_all_fn restore_all,
                  sw_rmon_all_fn clear_all, sw_rmon_fired_fn event_fired);

#ifdef __cplusplus
}
#endif

#endif
