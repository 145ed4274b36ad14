// switchMacAddrUsageTable: how many entries each unit's MAC address table
// holds.
//
// Counting a unit's table is slow on the platform, so the count is kept per
// unit and refreshed by a short-lived worker thread, at most every 30
// seconds.  A reply never waits for a refresh except the unit's very first,
// and never answers a count newer than the one the cache held when the
// request began: the first read of a unit waits for the count and still
// answers 0, and the fresh count is answered from the next read on.
//
// The worker is the module's only thread.  One mutex guards the eight unit
// contexts; the platform count is made outside it, and the worker takes no
// configuration lock (the table handler holds it around the read).
#include "mibs/chassis/mac_usage.hpp"

#include <cstdlib>

#include "mibs/chassis/units.hpp"
#include "swplatform/records_chassis.hpp"
#include "tables/catalogue.hpp"

pthread_mutex_t Mac_address_table_context_mutex = PTHREAD_MUTEX_INITIALIZER;

namespace snmpapi::chassis {
namespace {

// A refresh is due once this many hundredths of a second have passed.
constexpr int64_t kRefreshInterval = 3000;

struct MacUsageContext {
    uint32_t count;         // last count read; 0 until the first refresh succeeds
    uint64_t last_refresh;  // uptime_cs() when the last refresh started or finished; 0 never
    uint8_t in_progress;    // a worker is counting this unit
};
MacUsageContext g_context[SW_MAX_UNITS];

WorkerStart g_start = pthread_create;

bool lock() { return pthread_mutex_lock(&Mac_address_table_context_mutex) == 0; }
void unlock() { pthread_mutex_unlock(&Mac_address_table_context_mutex); }

void *refresh_worker(void *arg) {
    const uint32_t unit0 = *static_cast<uint32_t *>(arg);
    std::free(arg);
    if (unit0 >= SW_MAX_UNITS || !unit_counted(unit0)) return nullptr;
    if (!lock()) return nullptr;
    g_context[unit0].in_progress = 1;
    unlock();

    int32_t request[swp::mac_summary::kWords];
    swp::mac_summary::build(request, unit0);
    uint32_t count = 0;
    const int rc = cfg_get_mac_address_table_summary(&count, request);

    // Without the mutex the flag stays set, and the unit keeps answering
    // its cached count without refreshing again.
    if (!lock()) return nullptr;
    MacUsageContext &c = g_context[unit0];
    if (rc == 0) {
        c.count = count;
        c.last_refresh = uptime_cs();
    }
    c.in_progress = 0;
    unlock();
    return nullptr;
}

}  // namespace

void set_worker_start(WorkerStart start) { g_start = start != nullptr ? start : pthread_create; }

MacUsageSnapshot mac_usage_snapshot(uint32_t unit0) {
    MacUsageSnapshot s{0, 0, false};
    if (unit0 >= SW_MAX_UNITS || !lock()) return s;
    s = MacUsageSnapshot{g_context[unit0].count, g_context[unit0].last_refresh, g_context[unit0].in_progress != 0};
    unlock();
    return s;
}

void mac_usage_reset() {
    if (!lock()) return;
    for (MacUsageContext &c : g_context) c = MacUsageContext{};
    unlock();
}

}  // namespace snmpapi::chassis

using namespace snmpapi::chassis;

extern "C" {

// Units that are management processors count no addresses of their own:
// they get no row.
int init_index_switchMacAddrUsageTable(void *(*create)(int32_t)) {
    for (uint32_t unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0)
        if (unit_present(unit0) && cfg_equip_get_is_mpu(static_cast<int>(unit0)) == 0)
            create(static_cast<int32_t>(unit0) + 1);
    return 0;
}

int exists_entry_switchMacAddrUsageTable(int32_t unit) {
    return unit_row_exists(unit, switchMacAddrUsageTable_removeEntry);
}

int32_t get_swMacAddrUsageValue(int32_t unit) {
    const uint32_t unit0 = unit0_of(unit);
    if (unit0 >= SW_MAX_UNITS || !unit_counted(unit0)) return 0;

    if (!lock()) return 0;
    const MacUsageContext seen = g_context[unit0];
    unlock();

    if (seen.in_progress) return static_cast<int32_t>(seen.count);
    if (seen.last_refresh != 0) {
        const int64_t since = static_cast<int64_t>(uptime_cs() - seen.last_refresh);
        if (since < 0 || since <= kRefreshInterval) return static_cast<int32_t>(seen.count);
    }

    if (!lock()) return 0;
    g_context[unit0].last_refresh = uptime_cs();
    unlock();

    auto *arg = static_cast<uint32_t *>(std::malloc(sizeof(uint32_t)));
    if (arg == nullptr) return 0;
    *arg = unit0;
    pthread_t worker;
    if (g_start(&worker, nullptr, refresh_worker, arg) != 0) {
        std::free(arg);
        return 0;
    }
    if (seen.last_refresh == 0)
        pthread_join(worker, nullptr);
    else
        pthread_detach(worker);
    return static_cast<int32_t>(seen.count);
}

}  // extern "C"
