// RMON Ethernet statistics and history (etherStatsTable, historyControlTable,
// etherHistoryTable).  The RMON engine of the platform keeps the rows,
// samples the counters and stores the histories; the accessors read its
// records and turn writes of data source, owner, buckets, interval and
// status into its calls.  A row's data source is an ifIndex of ifTable.
#include <cstdlib>
#include <cstring>
#include <string>

#include "mibs/rmon/rmon.hpp"
#include "swplatform/platform.h"
#include "swplatform/records_rmon.hpp"
#include "tables/catalogue.hpp"

namespace snmpapi::rmon {
namespace {

using namespace swp::rmon;

// The calls and record fields of the two control tables, so that their
// data source, owner and status writes are written once.
struct ControlTable {
    int (*get_all)(uint8_t **);
    size_t list_size;  // bytes of one row of get_all
    int (*get_conf)(int32_t, uint8_t *);
    int (*set_conf)(const uint8_t *);
    int (*set_status)(int32_t, int32_t);
    int (*create)(int32_t);
    int (*activate)(const uint8_t *conf);  // builds the configuration record from the control record
    int (*del)(int32_t);
    int (*del_pre)(int32_t, uint8_t *);
    swp::Field unit, port, status, owner;
};

using Conf = uint8_t[hist_conf::kSize];  // large enough for either control record
static_assert(hist_conf::kSize >= stat_conf::kSize);

// Owner text copied into a configuration record's 32-byte owner field.
void copy_owner(uint8_t *to, swp::Field to_field, const uint8_t *from, swp::Field from_field) {
    char text[33] = {};
    std::memcpy(text, text_at(from, from_field), from_field.size);
    strncpy_safe(text_field(to, to_field), text, to_field.size);
}

int activate_statistic(const uint8_t *conf) {
    uint8_t rec[stat_activate::kSize] = {};
    store_i32(rec, stat_activate::kIndex, load_i32(conf, stat_conf::kIndex));
    store_i32(rec, stat_activate::kUnit, load_i32(conf, stat_conf::kUnit));
    store_i32(rec, stat_activate::kPort, load_i32(conf, stat_conf::kPort));
    copy_owner(rec, stat_activate::kOwner, conf, stat_conf::kOwner);
    return cfg_set_rmon_statistic(rec);
}

int activate_history(const uint8_t *conf) {
    uint8_t rec[hist_activate::kSize] = {};
    store_i32(rec, hist_activate::kIndex, load_i32(conf, hist_conf::kIndex));
    store_i32(rec, hist_activate::kUnit, load_i32(conf, hist_conf::kUnit));
    store_i32(rec, hist_activate::kPort, load_i32(conf, hist_conf::kPort));
    store_i32(rec, hist_activate::kInterval, load_i32(conf, hist_conf::kInterval));
    store_i32(rec, hist_activate::kRequested, load_i32(conf, hist_conf::kRequested));
    copy_owner(rec, hist_activate::kOwner, conf, hist_conf::kOwner);
    return cfg_set_rmon_history(rec);
}

const ControlTable kStatistics = {bcmd_rmon_statistic_get_all, stat_list::kSize, bcmd_rmon_statistic_get_conf, bcmd_rmon_statistic_set_conf,
                                  bcmd_rmon_statistic_set_status, bcmd_rmon_statistic_create,
                                  activate_statistic, cfg_del_rmon_statistic,
                                  cfg_del_rmon_statistic_pre, stat_conf::kUnit,
                                  stat_conf::kPort, stat_conf::kStatus, stat_conf::kOwner};
const ControlTable kHistory = {bcmd_rmon_history_get_all, hist_list::kSize, bcmd_rmon_history_get_conf, bcmd_rmon_history_set_conf,
                               bcmd_rmon_history_set_status, bcmd_rmon_history_create,
                               activate_history, cfg_del_rmon_history,
                               cfg_del_rmon_history_pre, hist_conf::kUnit,
                               hist_conf::kPort, hist_conf::kStatus, hist_conf::kOwner};

// The ifIndex column of ifTable; a data source is it plus one ifIndex.
constexpr uint32_t kIfIndexColumn[] = {1, 3, 6, 1, 2, 1, 2, 2, 1, 1};
constexpr size_t kPrefix = sizeof kIfIndexColumn / sizeof kIfIndexColumn[0];
constexpr size_t kDataSourceBytes = (kPrefix + 1) * 4;

const uint32_t *get_data_source(const ControlTable &t, int32_t index, size_t *len) {
    static uint32_t oid[kPrefix + 1] = {1, 3, 6, 1, 2, 1, 2, 2, 1, 1, 0};
    Conf conf;
    if (t.get_conf(index, conf) < 0) {
        *len = 0;
        return nullptr;
    }
    oid[kPrefix] = uint32_t(load_i32(conf, t.unit) * 64 + load_i32(conf, t.port) + 1);
    *len = sizeof oid;
    return oid;
}

const uint8_t *get_owner(const ControlTable &t, int32_t index, size_t *len) {
    static char owner[33];
    Conf conf;
    owner[0] = '\0';
    if (t.get_conf(index, conf) == 0) std::memcpy(owner, text_at(conf, t.owner), t.owner.size);
    owner[32] = '\0';
    *len = std::strlen(owner);
    return reinterpret_cast<const uint8_t *>(owner);
}

int set_owner(const ControlTable &t, int32_t index, const uint8_t *text, size_t len) {
    Conf conf;
    if (t.get_conf(index, conf) < 0 || !text) return -1;
    std::string copy(reinterpret_cast<const char *>(text), len);
    strncpy_safe(text_field(conf, t.owner), copy.c_str(), len + 1 > t.owner.size ? t.owner.size : len + 1);
    return t.set_conf(conf);
}

int set_status(const ControlTable &t, int32_t index, int32_t v) {
    Conf conf;
    if (const int rc = t.get_conf(index, conf); rc < 0) {
        // A createRequest to an index the engine does not know makes the row.
        return v == SW_RMON_CREATE_REQUEST ? t.create(index) : rc;
    }
    const int32_t current = load_i32(conf, t.status);
    if (v < SW_RMON_VALID || v > SW_RMON_INVALID || v == current) return -1;
    if (current == SW_RMON_UNDER_CREATION) return v == SW_RMON_VALID ? t.activate(conf) : t.set_status(index, v);
    if (current == SW_RMON_VALID) {
        if (v == SW_RMON_INVALID) return t.del(index);
        if (v == SW_RMON_UNDER_CREATION) {
            if (const int rc = t.del_pre(index, cfg_get_cfg()); rc < 0) return rc;
        }
    }
    return t.set_status(index, v);
}

// The data source write: -1 for an OID that is not an ifIndex of ifTable,
// -3 for one that names no usable interface.
int set_data_source(const ControlTable &t, int32_t index, const uint32_t *oid, size_t len) {
    if (!oid || len != kDataSourceBytes || std::memcmp(oid, kIfIndexColumn, sizeof kIfIndexColumn) != 0) return -1;
    const uint32_t x = oid[kPrefix];
    int32_t unit0, port0;
    if (x >= 513 && x <= 640) {
        unit0 = 0;
        port0 = int32_t(x) - 1;
    } else {
        if (x < 1 || x > 512) return -3;
        unit0 = int32_t(x - 1) / 64;
        port0 = int32_t(x - 1) % 64;
    }
    const sw_status_t *st = get_status();
    if (!st || (st->units[unit0].present == 0 && st->units[unit0].status2 == 0)) return -3;
    if (x <= 512 && port0 >= cfg_equip_get_user_eth_ports(unit0)) return -3;
    Conf conf;
    if (const int rc = t.get_conf(index, conf); rc < 0) return rc;
    store_i32(conf, t.unit, unit0);
    store_i32(conf, t.port, port0);
    return t.set_conf(conf);
}

// Rows of a control table from the engine's list: one per record.
int populate(const ControlTable &t, void *(*create)(int32_t)) {
    uint8_t *records = nullptr;
    const int bytes = t.get_all(&records);
    if (bytes < 0) return -1;
    const size_t count = size_t(bytes) / t.list_size;
    for (size_t i = 0; i < count; ++i) create(load_i32(records + i * t.list_size, stat_conf::kIndex));
    std::free(records);
    return 0;
}

int row_exists(const ControlTable &t, void (*remove)(int32_t), int32_t index) {
    Conf conf;
    if (t.get_conf(index, conf) < 0) {
        remove(index);
        return 0;
    }
    return 1;
}

int32_t get_status(const ControlTable &t, int32_t index) {
    Conf conf;
    return t.get_conf(index, conf) == 0 ? load_i32(conf, t.status) : 0;
}

}  // namespace

int statistic_counter(int32_t index, int counter, uint32_t *out) {
    uint8_t c[stat_counters::kSize];
    if (!out || counter < 1 || counter > stat_counters::kCount || bcmd_rmon_statistic_get(index, c) < 0) return -1;
    *out = uint32_t(load_u64(c, stat_counters::offset(counter)));
    return 0;
}

}  // namespace snmpapi::rmon

using namespace snmpapi::rmon;
using namespace swp::rmon;

// The counter columns of etherStatsTable and the engine's counter each reads.
#define SA_RMON_STAT_COUNTERS(X)                                   \
    X(etherStatsDropEvents, stat_counters::kDropEvents)            \
    X(etherStatsOctets, stat_counters::kOctets)                    \
    X(etherStatsPkts, stat_counters::kPkts)                        \
    X(etherStatsBroadcastPkts, stat_counters::kBroadcast)          \
    X(etherStatsMulticastPkts, stat_counters::kMulticast)          \
    X(etherStatsCRCAlignErrors, stat_counters::kCrcAlign)          \
    X(etherStatsUndersizePkts, stat_counters::kUndersize)          \
    X(etherStatsOversizePkts, stat_counters::kOversize)            \
    X(etherStatsFragments, stat_counters::kFragments)              \
    X(etherStatsJabbers, stat_counters::kJabbers)                  \
    X(etherStatsCollisions, stat_counters::kCollisions)            \
    X(etherStatsPkts64Octets, stat_counters::kPkts64)              \
    X(etherStatsPkts65to127Octets, stat_counters::kPkts65to127)    \
    X(etherStatsPkts128to255Octets, stat_counters::kPkts128to255)  \
    X(etherStatsPkts256to511Octets, stat_counters::kPkts256to511)  \
    X(etherStatsPkts512to1023Octets, stat_counters::kPkts512to1023) \
    X(etherStatsPkts1024to1518Octets, stat_counters::kPkts1024to1518)

// The value columns of etherHistoryTable and the sample value each reads.
#define SA_RMON_HISTORY_VALUES(X)                            \
    X(etherHistoryDropEvents, hist_sample::kDropEvents)      \
    X(etherHistoryOctets, hist_sample::kOctets)              \
    X(etherHistoryPkts, hist_sample::kPkts)                  \
    X(etherHistoryBroadcastPkts, hist_sample::kBroadcast)    \
    X(etherHistoryMulticastPkts, hist_sample::kMulticast)    \
    X(etherHistoryCRCAlignErrors, hist_sample::kCrcAlign)    \
    X(etherHistoryUndersizePkts, hist_sample::kUndersize)    \
    X(etherHistoryOversizePkts, hist_sample::kOversize)      \
    X(etherHistoryFragments, hist_sample::kFragments)        \
    X(etherHistoryJabbers, hist_sample::kJabbers)            \
    X(etherHistoryCollisions, hist_sample::kCollisions)

namespace {


// The samples a valid history row keeps: (n - g, n] of n taken, g granted.
bool sample_kept(const uint8_t *conf, int32_t sample) {
    const int32_t n = load_i32(conf, hist_conf::kTaken), g = load_i32(conf, hist_conf::kGranted);
    return load_i32(conf, hist_conf::kStatus) == SW_RMON_VALID && sample > n - g && sample <= n;
}

uint32_t sample_value(int32_t index, int32_t sample, int value) {
    uint8_t values[hist_sample::kSize] = {};
    bcmd_rmon_history_get(index, sample, values);
    return uint32_t(load_u64(values, hist_sample::offset(value)));
}

}  // namespace

extern "C" {

// ---- the rows, data source, owner and status of both control tables ----------

#define SA_RMON_CONTROL_TABLE(table, prefix, desc)                                                         \
    int init_index_##table(void *(*create)(int32_t)) { return populate(desc, create); }                   \
    int exists_entry_##table(int32_t i) { return row_exists(desc, table##_removeEntry, i); }              \
    int32_t get_##prefix##Index(int32_t i) { return i; }                                                  \
    const uint32_t *get_##prefix##DataSource(int32_t i, size_t *len) { return get_data_source(desc, i, len); } \
    int set_##prefix##DataSource(int32_t i, const uint32_t *oid, size_t len) {                            \
        return set_data_source(desc, i, oid, len);                                                        \
    }                                                                                                     \
    const uint8_t *get_##prefix##Owner(int32_t i, size_t *len) { return get_owner(desc, i, len); }        \
    int set_##prefix##Owner(int32_t i, const uint8_t *text, size_t len) { return set_owner(desc, i, text, len); } \
    int32_t get_##prefix##Status(int32_t i) { return get_status(desc, i); }                               \
    int set_##prefix##Status(int32_t i, int32_t v) { return set_status(desc, i, v); }
SA_RMON_CONTROL_TABLE(etherStatsTable, etherStats, kStatistics)
SA_RMON_CONTROL_TABLE(historyControlTable, historyControl, kHistory)
#undef SA_RMON_CONTROL_TABLE

// ---- etherStatsTable: the counters -------------------------------------------

#define SA_RMON_COUNTER_GETTER(column, counter) \
    uint32_t get_##column(int32_t i) {          \
        uint32_t value = 0;                     \
        statistic_counter(i, counter, &value);  \
        return value;                           \
    }
SA_RMON_STAT_COUNTERS(SA_RMON_COUNTER_GETTER)
#undef SA_RMON_COUNTER_GETTER

// ---- historyControlTable: buckets and interval ---------------------------------

static int32_t history_field(int32_t i, swp::Field f) {
    uint8_t conf[hist_conf::kSize];
    return bcmd_rmon_history_get_conf(i, conf) == 0 ? load_i32(conf, f) : 0;
}
// Buckets requested and interval: checked, then written into the record.
static int set_history_field(int32_t i, swp::Field f, int32_t v, int32_t hi) {
    if (v < 1 || v > hi) return -1;
    uint8_t conf[hist_conf::kSize];
    if (const int rc = bcmd_rmon_history_get_conf(i, conf); rc < 0) return rc;
    store_i32(conf, f, v);
    return bcmd_rmon_history_set_conf(conf);
}
int32_t get_historyControlBucketsRequested(int32_t i) { return history_field(i, hist_conf::kRequested); }
int set_historyControlBucketsRequested(int32_t i, int32_t v) {
    return set_history_field(i, hist_conf::kRequested, v, 65535);
}
int32_t get_historyControlBucketsGranted(int32_t i) { return history_field(i, hist_conf::kGranted); }
int32_t get_historyControlInterval(int32_t i) { return history_field(i, hist_conf::kInterval); }
int set_historyControlInterval(int32_t i, int32_t v) { return set_history_field(i, hist_conf::kInterval, v, 3600); }

// ---- etherHistoryTable -----------------------------------------------------------

int init_index_etherHistoryTable(void *(*create)(int32_t, int32_t)) {
    uint8_t *records = nullptr;
    const int bytes = bcmd_rmon_history_get_all(&records);
    if (bytes < 0) return -1;
    const size_t count = size_t(bytes) / hist_list::kSize;
    for (size_t i = 0; i < count; ++i) {
        const uint8_t *conf = records + i * hist_list::kSize;
        if (load_i32(conf, hist_conf::kStatus) != SW_RMON_VALID) continue;
        const int32_t index = load_i32(conf, hist_conf::kIndex);
        const int32_t n = load_i32(conf, hist_conf::kTaken), g = load_i32(conf, hist_conf::kGranted);
        for (int32_t s = n > g ? n - g + 1 : 1; s <= n; ++s) create(index, s);
    }
    std::free(records);
    return 0;
}
int exists_entry_etherHistoryTable(int32_t i, int32_t sample) {
    uint8_t conf[hist_conf::kSize];
    if (bcmd_rmon_history_get_conf(i, conf) == 0 && sample_kept(conf, sample)) return 1;
    etherHistoryTable_removeEntry(i, sample);
    return 0;
}

int32_t get_etherHistoryIndex(int32_t i, int32_t) { return i; }
int32_t get_etherHistorySampleIndex(int32_t, int32_t sample) { return sample; }
uint32_t get_etherHistoryIntervalStart(int32_t i, int32_t sample) {
    return bcmd_rmon_history_interval_get(i, sample) * 100;
}
#define SA_RMON_SAMPLE_GETTER(column, value) \
    uint32_t get_##column(int32_t i, int32_t sample) { return sample_value(i, sample, value); }
SA_RMON_HISTORY_VALUES(SA_RMON_SAMPLE_GETTER)
#undef SA_RMON_SAMPLE_GETTER
int32_t get_etherHistoryUtilization(int32_t i, int32_t sample) {
    return int32_t(sample_value(i, sample, hist_sample::kUtilization));
}

}  // extern "C"
