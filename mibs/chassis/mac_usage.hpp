// The MAC address table usage of the units (switchMacAddrUsageTable): a
// cached count per unit that a short-lived worker thread refreshes.  What
// the tests see of it beside get_swMacAddrUsageValue.  No net-snmp here.
#pragma once

#include <pthread.h>

#include <cstdint>

namespace snmpapi::chassis {

// How the worker is started: pthread_create, unless a test stands in for it
// (null puts pthread_create back).
using WorkerStart = int (*)(pthread_t *, const pthread_attr_t *, void *(*)(void *), void *);
void set_worker_start(WorkerStart start);

// The cache of one unit, read under its mutex.
struct MacUsageSnapshot {
    uint32_t count;
    uint64_t last_refresh;  // uptime_cs() of the last refresh started or finished, 0 never
    bool in_progress;
};
MacUsageSnapshot mac_usage_snapshot(uint32_t unit0);
// Forgets every unit's count (a new switch under the same process).
void mac_usage_reset();

}  // namespace snmpapi::chassis
