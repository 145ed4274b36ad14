// The RMON engine of the simulated switch (see rmon.hpp).
#include "rmon.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>
#include <utility>

#include "model.hpp"
#include "traps.hpp"

namespace swsim::rmon {
namespace {

using namespace swp::rmon;
using layout::RmonHistRow;
using swp::Field;
using layout::RmonStatRow;
namespace st = swp::stat;

constexpr const char *kScriptFile = "/var/cli-commands/tmp/event_fire";
constexpr const char *kScriptDir = "/var/cli-commands/tmp";
constexpr const char *kInterpreter = "/usr/bin/cli";
constexpr int32_t kMaxIndex = 65535;

uint32_t now_s(const View &v) { return uint32_t(model::ns_since(v.rt->boot_realtime_ns) / 1'000'000'000); }

void put_text(char *dst, std::size_t size, const char *src) {
    std::size_t n = src ? strnlen(src, size - 1) : 0;
    std::memcpy(dst, src ? src : "", n);
    std::memset(dst + n, 0, size - n);
}
std::string text_of(const char *p, std::size_t size) { return std::string(p, strnlen(p, size)); }

template <class Row, std::size_t N>
Row *find(Row (&rows)[N], int32_t index) {
    if (index <= 0) return nullptr;
    for (Row &r : rows)
        if (r.index == index) return &r;
    return nullptr;
}
template <class Row, std::size_t N>
Row *free_row(Row (&rows)[N]) {
    for (Row &r : rows)
        if (r.index == 0) return &r;
    return nullptr;
}

// The list of a get_all call: a malloc'd buffer of one record of `size`
// bytes per row in use, filled by fill(row, record); its size in bytes.
template <class Row, std::size_t N, class Fill>
int list_rows(const Row (&rows)[N], std::size_t size, uint8_t **records, Fill fill) {
    if (!records) return -1;
    int n = 0;
    for (const Row &r : rows) n += r.index != 0;
    auto *buf = static_cast<uint8_t *>(std::calloc(std::size_t(std::max(n, 1)), size));
    if (!buf) return -1;
    uint8_t *p = buf;
    for (const Row &r : rows)
        if (r.index != 0) fill(r, std::exchange(p, p + size));
    *records = buf;
    return n * int(size);
}

// The control records of a row.
void stat_conf_of(const RmonStatRow &r, uint8_t *conf) {
    std::memset(conf, 0, stat_conf::kSize);
    store_i32(conf, stat_conf::kIndex, r.index);
    store_i32(conf, stat_conf::kUnit, r.unit0);
    store_i32(conf, stat_conf::kPort, r.port0);
    store_i32(conf, stat_conf::kStatus, r.status);
    put_text(text_field(conf, stat_conf::kOwner), stat_conf::kOwner.size, r.owner);
}
void hist_conf_of(const View &v, const RmonHistRow &r, uint8_t *conf) {
    std::memset(conf, 0, hist_conf::kSize);
    store_i32(conf, hist_conf::kIndex, r.index);
    store_i32(conf, hist_conf::kUnit, r.unit0);
    store_i32(conf, hist_conf::kPort, r.port0);
    store_i32(conf, hist_conf::kInterval, r.interval_s);
    store_i32(conf, hist_conf::kGranted, r.granted);
    store_i32(conf, hist_conf::kRequested, r.requested);
    store_i32(conf, hist_conf::kTaken, v.hw->rmon.samples[&r - v.cfg->rmon.hist].taken);
    store_i32(conf, hist_conf::kStatus, r.status);
    put_text(text_field(conf, hist_conf::kOwner), hist_conf::kOwner.size, r.owner);
}

// ---- counters -------------------------------------------------------------------------------

// The statistics record's counters of an interface now, from its port counters.
// Packet sizes are not counted by the port: the packets are spread over the
// size ranges in fixed shares.
void counters_now(const View &v, int unit0, int port0, uint64_t (&out)[layout::kRmonStatCounters]) {
    std::fill(std::begin(out), std::end(out), 0);
    const int iface = model::iface_of(v, unit0, port0);
    if (iface < 0) return;
    auto c = [&](int stat) { return model::counter(v, iface, stat); };
    auto at = [&](int n) -> uint64_t & { return out[n - 1]; };
    namespace sc = stat_counters;
    const uint64_t pkts = c(st::kHCInUcast) + c(st::kHCInMulticast) + c(st::kHCInBroadcast);
    at(sc::kDropEvents) = c(st::kInDiscards);
    at(sc::kMulticast) = c(st::kHCInMulticast);
    at(sc::kBroadcast) = c(st::kHCInBroadcast);
    at(sc::kOversize) = c(st::kFrameTooLongs);
    at(sc::kOctets) = c(st::kHCInOctets);
    at(sc::kPkts) = pkts;
    at(sc::kCollisions) = c(st::kSingleCollisions) + c(st::kMultipleCollisions) + c(st::kLateCollisions) +
                          c(st::kExcessiveCollisions);
    at(sc::kCrcAlign) = c(st::kFcsErrors) + c(st::kAlignmentErrors);
    static constexpr int kShares[] = {30, 25, 10, 10, 10};  // per cent, 64 .. 1023 octets
    uint64_t spread = 0;
    for (int i = 0; i < 5; ++i) spread += at(sc::kPkts64 + i) = pkts / 100 * kShares[i] + pkts % 100 * kShares[i] / 100;
    at(sc::kPkts1024to1518) = pkts - spread;
}

void row_counters(const View &v, int slot, uint64_t (&out)[layout::kRmonStatCounters]) {
    const RmonStatRow &r = v.cfg->rmon.stats[slot];
    std::fill(std::begin(out), std::end(out), 0);
    if (r.status != SW_RMON_VALID) return;
    counters_now(v, r.unit0, r.port0, out);
    for (int i = 0; i < layout::kRmonStatCounters; ++i) out[i] -= v.hw->rmon.stat_base[slot][i];
}

int stat_slot(const View &v, const RmonStatRow *r) { return int(r - v.cfg->rmon.stats); }
int hist_slot(const View &v, const RmonHistRow *r) { return int(r - v.cfg->rmon.hist); }

void rebase(const View &v, RmonStatRow &r) { counters_now(v, r.unit0, r.port0, v.hw->rmon.stat_base[stat_slot(v, &r)]); }

void restart_history(const View &v, RmonHistRow &r) {
    layout::RmonHistSamples &s = v.hw->rmon.samples[hist_slot(v, &r)];
    std::memset(&s, 0, sizeof s);
    counters_now(v, r.unit0, r.port0, s.last);
    s.next_due_s = now_s(v) + uint32_t(std::max(r.interval_s, 1));
}

int32_t granted_for(int32_t requested) { return std::clamp(requested, 1, SW_RMON_MAX_BUCKETS); }

// A sample of history row r whose interval started at start_s.
void take_sample(const View &v, RmonHistRow &r, uint32_t start_s) {
    layout::RmonHistSamples &s = v.hw->rmon.samples[hist_slot(v, &r)];
    uint64_t now[layout::kRmonStatCounters];
    counters_now(v, r.unit0, r.port0, now);
    uint64_t d[layout::kRmonStatCounters];
    for (int i = 0; i < layout::kRmonStatCounters; ++i) d[i] = now[i] - s.last[i];
    std::copy(std::begin(now), std::end(now), s.last);
    const int bucket = s.taken % SW_RMON_MAX_BUCKETS;
    ++s.taken;
    s.start_s[bucket] = start_s;
    uint64_t *out = s.values[bucket];
    namespace sc = stat_counters;
    namespace hs = hist_sample;
    auto dc = [&](int n) { return d[n - 1]; };
    out[hs::kDropEvents - 1] = dc(sc::kDropEvents);
    out[hs::kOctets - 1] = dc(sc::kOctets);
    out[hs::kPkts - 1] = dc(sc::kPkts);
    out[hs::kBroadcast - 1] = dc(sc::kBroadcast);
    out[hs::kMulticast - 1] = dc(sc::kMulticast);
    out[hs::kCrcAlign - 1] = dc(sc::kCrcAlign);
    out[hs::kUndersize - 1] = dc(sc::kUndersize);
    out[hs::kOversize - 1] = dc(sc::kOversize);
    out[hs::kFragments - 1] = dc(sc::kFragments);
    out[hs::kJabbers - 1] = dc(sc::kJabbers);
    out[hs::kCollisions - 1] = dc(sc::kCollisions);
    // Hundredths of a per cent of the line rate (RFC 2819's formula: 20
    // octets of preamble and gap per packet).
    const int iface = model::iface_of(v, r.unit0, r.port0);
    const uint64_t mbps = iface >= 0 ? model::port_info(v, iface).speed : 0;
    const uint64_t capacity = mbps * 1'000'000 * uint64_t(std::max(r.interval_s, 1));
    const uint64_t bits = (dc(sc::kPkts) * 20 + dc(sc::kOctets)) * 8;
    out[hs::kUtilization - 1] = capacity ? std::min<uint64_t>(bits * 10000 / capacity, 10000) : 0;
}

int sample_bucket(const View &v, int32_t index, int32_t sample) {
    const RmonHistRow *r = find(v.cfg->rmon.hist, index);
    if (!r) return -1;
    const layout::RmonHistSamples &s = v.hw->rmon.samples[hist_slot(v, r)];
    if (sample <= 0 || sample > s.taken || sample <= s.taken - r->granted) return -1;
    return (sample - 1) % SW_RMON_MAX_BUCKETS;
}

// ---- alarm variables ---------------------------------------------------------------------------

std::vector<uint32_t> parse_oid(const char *text) {
    std::vector<uint32_t> out;
    const char *p = text;
    if (*p == '.') ++p;
    while (*p) {
        char *end = nullptr;
        const unsigned long n = std::strtoul(p, &end, 10);
        if (end == p || n > 0xffffffffUL) return {};
        out.push_back(uint32_t(n));
        if (*end == '.') ++end;
        else if (*end) return {};
        p = end;
    }
    return out;
}

// The value of a sampled object: etherStats counters and the interface
// counters of ifTable.  False when the object is not one the engine samples.
bool sample_variable(const View &v, const std::vector<uint32_t> &oid, uint64_t &value) {
    static const std::vector<uint32_t> kEtherStats = {1, 3, 6, 1, 2, 1, 16, 1, 1, 1};
    static const std::vector<uint32_t> kIfEntry = {1, 3, 6, 1, 2, 1, 2, 2, 1};
    // etherStats column -> counter number (columns 3 .. 19)
    static constexpr int kStatOfColumn[] = {1, 14, 15, 3, 2, 17, 4, 12, 5, 13, 16, 6, 7, 8, 9, 10, 11};
    auto under = [&](const std::vector<uint32_t> &prefix) {
        return oid.size() == prefix.size() + 2 && std::equal(prefix.begin(), prefix.end(), oid.begin());
    };
    if (under(kEtherStats)) {
        const uint32_t column = oid[kEtherStats.size()];
        RmonStatRow *r = find(v.cfg->rmon.stats, int32_t(oid.back()));
        if (!r || column < 3 || column > 19 || r->status != SW_RMON_VALID) return false;
        uint64_t c[layout::kRmonStatCounters];
        row_counters(v, stat_slot(v, r), c);
        value = c[kStatOfColumn[column - 3] - 1];
        return true;
    }
    if (under(kIfEntry)) {
        static constexpr std::pair<uint32_t, int> kIfColumns[] = {
            {10, st::kHCInOctets}, {11, st::kHCInUcast}, {13, st::kInDiscards}, {14, st::kInErrors},
            {16, st::kHCOutOctets}, {17, st::kHCOutUcast}, {19, st::kOutDiscards}, {20, st::kOutErrors}};
        const uint32_t column = oid[kIfEntry.size()], x = oid.back();
        int unit0, port0;
        if (x >= 513 && x <= 640) unit0 = 0, port0 = int(x) - 1;
        else if (x >= 1 && x <= 512) unit0 = int(x - 1) / 64, port0 = int(x - 1) % 64;
        else return false;
        const int iface = model::iface_of(v, unit0, port0);
        for (auto [col, stat] : kIfColumns)
            if (col == column && iface >= 0) {
                value = model::counter(v, iface, stat);
                return true;
            }
    }
    return false;
}

int32_t param(const uint8_t *rec, std::size_t i) { return load_i32(rec, alarm::param(i)); }

// Starts an alarm's sampling afresh from now.
void arm(const View &v, layout::RmonEngineAlarm &a) {
    a.last_event = 0;
    a.sampled = 0;
    a.value = 0;
    a.last_raw = 0;
    uint64_t raw = 0;
    if (sample_variable(v, parse_oid(text_at(a.record, alarm::kText)), raw)) a.last_raw = raw;
    a.next_due_s = now_s(v) + uint32_t(std::max(param(a.record, alarm::kInterval), 1));
}

layout::RmonEngineAlarm *engine_alarm(const View &v, int32_t index) {
    if (index <= 0) return nullptr;
    for (auto &a : v.hw->rmon.alarms)
        if (load_i32(a.record, alarm::kIndex) == index) return &a;
    return nullptr;
}
layout::RmonEngineEvent *engine_event(const View &v, int32_t index) {
    if (index <= 0) return nullptr;
    for (auto &e : v.hw->rmon.events)
        if (load_i32(e.record, event::kIndex) == index) return &e;
    return nullptr;
}
template <class Row, std::size_t N>
Row *engine_free(Row (&rows)[N]) {
    for (Row &r : rows)
        if (load_i32(r.record, Field{0, 4}) == 0) return &r;
    return nullptr;
}

// ---- configuration slots -------------------------------------------------------------------------

// The slot holding `index` among the used slots, or the first free one
// (-1 when neither): the first free slot ends the list.
int slot_for(const uint8_t *base, std::size_t size, int32_t index, bool or_free) {
    for (int i = 0; i < SW_RMON_SLOTS; ++i) {
        const int32_t at = int32_t(swp::load_be32(base + std::size_t(i) * size));
        if (at == 0) return or_free ? i : -1;
        if (at == index) return i;
    }
    return -1;
}
// Removes a slot, moving the ones behind it up so that the list stays whole.
void remove_slot(uint8_t *base, std::size_t size, int slot) {
    int last = slot;
    while (last + 1 < SW_RMON_SLOTS && swp::load_be32(base + std::size_t(last + 1) * size) != 0) ++last;
    std::memmove(base + std::size_t(slot) * size, base + std::size_t(slot + 1) * size, std::size_t(last - slot) * size);
    std::memset(base + std::size_t(last) * size, 0, size);
}
uint8_t *alarm_slots(const View &v) { return v.image + cfg_area::kAlarmSlots; }
uint8_t *event_slots(const View &v) { return v.image + cfg_area::kEventSlots; }

// Engine event record <- configuration event record (the community one byte
// narrower).
void engine_event_from_config(const uint8_t *cfg, uint8_t *eng) {
    std::memset(eng, 0, event::engine::kSize);
    std::memcpy(eng, cfg, event::kScript.end());
    put_text(text_field(eng, event::engine::kCommunity), event::engine::kCommunity.size,
             text_at(cfg, event::config::kCommunity));
    put_text(text_field(eng, event::engine::kOwner), event::engine::kOwner.size, text_at(cfg, event::config::kOwner));
}

// ---- callbacks of this process -------------------------------------------------------------------

struct Callbacks {
    std::atomic<sw_rmon_delete_fn> alarm_delete{nullptr}, event_delete{nullptr};
    std::atomic<sw_rmon_set_fn> alarm_set{nullptr}, event_set{nullptr};
    std::atomic<sw_rmon_all_fn> restore_all{nullptr}, clear_all{nullptr};
    std::atomic<sw_rmon_fired_fn> fired{nullptr};
};
Callbacks g_cb;
std::once_flag g_thread_once;

// The engine's thread: a pass every 200 ms, requests as they come.
void engine_thread() {
    using namespace std::chrono_literals;
    for (;;) {
        std::this_thread::sleep_for(50ms);
        const View *v = current_view();
        if (!v || __atomic_load_n(&v->hw->rmon.paused, __ATOMIC_ACQUIRE)) continue;
        __atomic_store_n(&v->hw->rmon.engine_pid, uint32_t(::getpid()), __ATOMIC_RELAXED);
        serve_request(*v);
        static thread_local int ticks = 0;
        if (++ticks % 4) continue;
        if (engine_lock(*v, true) != 0) continue;
        std::vector<Fired> fired = pass(*v, now_s(*v));
        engine_lock(*v, false);
        deliver(*v, fired);
    }
}

}  // namespace

// ---- the platform calls -----------------------------------------------------------------------------

namespace calls {

// The list carries each row's configuration; its counter part stays zero
// (reading every row's counters for a list would cost a walk of the table
// as many counter reads as it has rows for each request).
int bcmd_rmon_statistic_get_all(const View &v, uint8_t **records) {
    return list_rows(v.cfg->rmon.stats, stat_list::kSize, records,
                     [&](const RmonStatRow &r, uint8_t *p) { stat_conf_of(r, p); });
}

int bcmd_rmon_statistic_get_conf(const View &v, int32_t index, uint8_t *conf) {
    const RmonStatRow *r = find(v.cfg->rmon.stats, index);
    if (!r || !conf) return -1;
    stat_conf_of(*r, conf);
    return 0;
}

int bcmd_rmon_statistic_set_conf(const View &v, const uint8_t *conf) {
    if (!conf) return -1;
    RmonStatRow *r = find(v.cfg->rmon.stats, load_i32(conf, stat_conf::kIndex));
    const int32_t unit0 = load_i32(conf, stat_conf::kUnit), port0 = load_i32(conf, stat_conf::kPort);
    if (!r || model::iface_of(v, unit0, port0) < 0) return -1;
    const bool moved = unit0 != r->unit0 || port0 != r->port0;
    r->unit0 = unit0;
    r->port0 = port0;
    put_text(r->owner, sizeof r->owner, text_at(conf, stat_conf::kOwner));
    if (moved && r->status == SW_RMON_VALID) rebase(v, *r);
    return 0;
}

int bcmd_rmon_statistic_get(const View &v, int32_t index, uint8_t *counters) {
    const RmonStatRow *r = find(v.cfg->rmon.stats, index);
    if (!r || !counters) return -1;
    uint64_t c[layout::kRmonStatCounters];
    row_counters(v, stat_slot(v, r), c);
    for (int n = 1; n <= stat_counters::kCount; ++n) store_u64(counters, stat_counters::offset(n), c[n - 1]);
    return 0;
}

int bcmd_rmon_statistic_set_status(const View &v, int32_t index, int32_t status) {
    RmonStatRow *r = find(v.cfg->rmon.stats, index);
    if (!r || status < SW_RMON_VALID || status > SW_RMON_INVALID) return -1;
    if (status == SW_RMON_INVALID) {
        *r = RmonStatRow{};
        return 0;
    }
    if (status == SW_RMON_VALID && r->status != SW_RMON_VALID) rebase(v, *r);
    r->status = status == SW_RMON_CREATE_REQUEST ? SW_RMON_UNDER_CREATION : status;
    return 0;
}

int bcmd_rmon_statistic_create(const View &v, int32_t index) {
    if (index <= 0 || index > kMaxIndex || find(v.cfg->rmon.stats, index)) return -1;
    RmonStatRow *r = free_row(v.cfg->rmon.stats);
    if (!r) return -1;
    *r = RmonStatRow{};
    r->index = index;
    r->status = SW_RMON_UNDER_CREATION;
    return 0;
}

int cfg_set_rmon_statistic(const View &v, const uint8_t *rec) {
    if (!rec) return -1;
    RmonStatRow *r = find(v.cfg->rmon.stats, load_i32(rec, stat_activate::kIndex));
    const int32_t unit0 = load_i32(rec, stat_activate::kUnit), port0 = load_i32(rec, stat_activate::kPort);
    if (!r || model::iface_of(v, unit0, port0) < 0) return -1;
    r->unit0 = unit0;
    r->port0 = port0;
    put_text(r->owner, sizeof r->owner, text_at(rec, stat_activate::kOwner));
    r->status = SW_RMON_VALID;
    rebase(v, *r);
    return 0;
}

int cfg_del_rmon_statistic(const View &v, int32_t index) {
    RmonStatRow *r = find(v.cfg->rmon.stats, index);
    if (!r) return -1;
    *r = RmonStatRow{};
    return 0;
}

// The saved row is the row itself: taking it out of the saved configuration
// needs the row and the image, and changes nothing else.
int cfg_del_rmon_statistic_pre(const View &v, int32_t index, uint8_t *image) {
    return find(v.cfg->rmon.stats, index) && image == v.image ? 0 : -1;
}

int bcmd_rmon_history_get_all(const View &v, uint8_t **records) {
    return list_rows(v.cfg->rmon.hist, hist_list::kSize, records, [&](const RmonHistRow &r, uint8_t *p) {
        hist_conf_of(v, r, p);
        const int32_t taken = load_i32(p, hist_conf::kTaken);
        if (taken > 0) bcmd_rmon_history_get(v, r.index, taken, p + hist_list::kNewest.offset);
    });
}

int bcmd_rmon_history_get_conf(const View &v, int32_t index, uint8_t *conf) {
    const RmonHistRow *r = find(v.cfg->rmon.hist, index);
    if (!r || !conf) return -1;
    hist_conf_of(v, *r, conf);
    return 0;
}

// A valid row's data source and interval are fixed (RFC 2819); the
// buckets requested may change, and the grant follows.
int bcmd_rmon_history_set_conf(const View &v, const uint8_t *conf) {
    if (!conf) return -1;
    RmonHistRow *r = find(v.cfg->rmon.hist, load_i32(conf, hist_conf::kIndex));
    if (!r) return -1;
    const int32_t unit0 = load_i32(conf, hist_conf::kUnit), port0 = load_i32(conf, hist_conf::kPort);
    const int32_t interval = load_i32(conf, hist_conf::kInterval), requested = load_i32(conf, hist_conf::kRequested);
    if (model::iface_of(v, unit0, port0) < 0 || interval < 1 || interval > 3600 || requested < 1 || requested > 65535)
        return -1;
    if (r->status == SW_RMON_VALID && (unit0 != r->unit0 || port0 != r->port0 || interval != r->interval_s)) return -1;
    r->unit0 = unit0;
    r->port0 = port0;
    r->interval_s = interval;
    r->requested = requested;
    r->granted = granted_for(requested);
    put_text(r->owner, sizeof r->owner, text_at(conf, hist_conf::kOwner));
    return 0;
}

int bcmd_rmon_history_get(const View &v, int32_t index, int32_t sample, uint8_t *values) {
    const int bucket = sample_bucket(v, index, sample);
    if (bucket < 0 || !values) return -1;
    const RmonHistRow *r = find(v.cfg->rmon.hist, index);
    const uint64_t *in = v.hw->rmon.samples[hist_slot(v, r)].values[bucket];
    for (int n = 1; n <= hist_sample::kCount; ++n) store_u64(values, hist_sample::offset(n), in[n - 1]);
    return 0;
}

uint32_t bcmd_rmon_history_interval_get(const View &v, int32_t index, int32_t sample) {
    const int bucket = sample_bucket(v, index, sample);
    if (bucket < 0) return 0;
    return v.hw->rmon.samples[hist_slot(v, find(v.cfg->rmon.hist, index))].start_s[bucket];
}

int bcmd_rmon_history_set_status(const View &v, int32_t index, int32_t status) {
    RmonHistRow *r = find(v.cfg->rmon.hist, index);
    if (!r || status < SW_RMON_VALID || status > SW_RMON_INVALID) return -1;
    if (status == SW_RMON_INVALID) {
        std::memset(&v.hw->rmon.samples[hist_slot(v, r)], 0, sizeof(layout::RmonHistSamples));
        *r = RmonHistRow{};
        return 0;
    }
    if (status == SW_RMON_VALID && r->status != SW_RMON_VALID) restart_history(v, *r);
    r->status = status == SW_RMON_CREATE_REQUEST ? SW_RMON_UNDER_CREATION : status;
    return 0;
}

int bcmd_rmon_history_create(const View &v, int32_t index) {
    if (index <= 0 || index > kMaxIndex || find(v.cfg->rmon.hist, index)) return -1;
    RmonHistRow *r = free_row(v.cfg->rmon.hist);
    if (!r) return -1;
    *r = RmonHistRow{};
    r->index = index;
    r->interval_s = 1800;  // RFC 2819's defaults
    r->requested = 50;
    r->granted = granted_for(r->requested);
    r->status = SW_RMON_UNDER_CREATION;
    std::memset(&v.hw->rmon.samples[hist_slot(v, r)], 0, sizeof(layout::RmonHistSamples));
    return 0;
}

int cfg_set_rmon_history(const View &v, const uint8_t *rec) {
    if (!rec) return -1;
    RmonHistRow *r = find(v.cfg->rmon.hist, load_i32(rec, hist_activate::kIndex));
    const int32_t unit0 = load_i32(rec, hist_activate::kUnit), port0 = load_i32(rec, hist_activate::kPort);
    const int32_t interval = load_i32(rec, hist_activate::kInterval);
    const int32_t requested = load_i32(rec, hist_activate::kRequested);
    if (!r || model::iface_of(v, unit0, port0) < 0 || interval < 1 || interval > 3600 || requested < 1 ||
        requested > 65535)
        return -1;
    r->unit0 = unit0;
    r->port0 = port0;
    r->interval_s = interval;
    r->requested = requested;
    r->granted = granted_for(requested);
    put_text(r->owner, sizeof r->owner, text_at(rec, hist_activate::kOwner));
    r->status = SW_RMON_VALID;
    restart_history(v, *r);
    return 0;
}

int cfg_del_rmon_history(const View &v, int32_t index) { return bcmd_rmon_history_set_status(v, index, SW_RMON_INVALID); }

int cfg_del_rmon_history_pre(const View &v, int32_t index, uint8_t *image) {
    return find(v.cfg->rmon.hist, index) && image == v.image ? 0 : -1;
}

int cfg_del_rmon_alarm_pre(const View &v, sw_rmon_handle_t alarm) {
    if (!alarm) return -1;
    const int32_t index = load_i32(static_cast<const uint8_t *>(alarm), alarm::kIndex);
    const int slot = index > 0 ? slot_for(alarm_slots(v), alarm::kSize, index, false) : -1;
    if (slot < 0) return -1;
    remove_slot(alarm_slots(v), alarm::kSize, slot);
    return 0;
}

int cfg_del_rmon_event_pre(const View &v, sw_rmon_handle_t event) {
    if (!event) return -1;
    const int32_t index = load_i32(static_cast<const uint8_t *>(event), event::kIndex);
    const int slot = index > 0 ? slot_for(event_slots(v), event::config::kSize, index, false) : -1;
    if (slot < 0) return -1;
    remove_slot(event_slots(v), event::config::kSize, slot);
    return 0;
}

int cfg_set_rmon_alarm_pre(const View &v, const uint8_t *record) {
    const int32_t index = record ? load_i32(record, alarm::kIndex) : 0;
    const int slot = index > 0 ? slot_for(alarm_slots(v), alarm::kSize, index, true) : -1;
    if (slot < 0) return -1;
    std::memcpy(alarm_slots(v) + std::size_t(slot) * alarm::kSize, record, alarm::kSize);
    return 0;
}

int cfg_set_rmon_event_pre(const View &v, const uint8_t *record) {
    const int32_t index = record ? load_i32(record, event::kIndex) : 0;
    const int slot = index > 0 ? slot_for(event_slots(v), event::config::kSize, index, true) : -1;
    if (slot < 0) return -1;
    std::memcpy(event_slots(v) + std::size_t(slot) * event::config::kSize, record, event::config::kSize);
    return 0;
}

int cfg_set_rmon_alarm_up(const View &v, const uint8_t *slot) {
    const int32_t index = slot ? load_i32(slot, alarm::kIndex) : 0;
    if (index <= 0) return -1;
    layout::RmonEngineAlarm *a = engine_alarm(v, index);
    if (!a) a = engine_free(v.hw->rmon.alarms);
    if (!a) return -1;
    std::memcpy(a->record, slot, alarm::kSize);
    arm(v, *a);
    return 0;
}

int cfg_set_rmon_event_up(const View &v, const uint8_t *slot) {
    const int32_t index = slot ? load_i32(slot, event::kIndex) : 0;
    if (index <= 0) return -1;
    layout::RmonEngineEvent *e = engine_event(v, index);
    if (!e) e = engine_free(v.hw->rmon.events);
    if (!e) return -1;
    engine_event_from_config(slot, e->record);
    return 0;
}

int register_rmon(sw_rmon_delete_fn alarm_delete_pre, sw_rmon_delete_fn event_delete_pre, sw_rmon_set_fn alarm_set_pre,
                  sw_rmon_set_fn event_set_pre, sw_rmon_all_fn restore_all, sw_rmon_all_fn clear_all,
                  sw_rmon_fired_fn event_fired) {
    g_cb.alarm_delete.store(alarm_delete_pre);
    g_cb.event_delete.store(event_delete_pre);
    g_cb.alarm_set.store(alarm_set_pre);
    g_cb.event_set.store(event_set_pre);
    g_cb.restore_all.store(restore_all);
    g_cb.clear_all.store(clear_all);
    g_cb.fired.store(event_fired);
    // The directory of the event action's script file, as the switch has it.
    ::mkdir("/var/cli-commands", 0755);
    ::mkdir(kScriptDir, 0755);
    std::call_once(g_thread_once, [] { std::thread(engine_thread).detach(); });
    return 0;
}

}  // namespace calls

// ---- the engine -----------------------------------------------------------------------------------

std::vector<Fired> pass(const View &v, uint32_t now) {
    std::vector<Fired> fired;
    for (RmonHistRow &r : v.cfg->rmon.hist) {
        if (r.index == 0 || r.status != SW_RMON_VALID) continue;
        layout::RmonHistSamples &s = v.hw->rmon.samples[hist_slot(v, &r)];
        const uint32_t interval = uint32_t(std::max(r.interval_s, 1));
        if (now < s.next_due_s) continue;
        // Far behind (a paused engine): one sample now, not a burst.
        if (now - s.next_due_s >= interval) s.next_due_s = now;
        take_sample(v, r, s.next_due_s - interval);
        s.next_due_s += interval;
    }
    for (auto &a : v.hw->rmon.alarms) {
        const int32_t index = load_i32(a.record, alarm::kIndex);
        if (index == 0 || now < a.next_due_s) continue;
        const uint32_t interval = uint32_t(std::max(param(a.record, alarm::kInterval), 1));
        a.next_due_s = std::max(a.next_due_s + interval, now);
        const std::vector<uint32_t> oid = parse_oid(text_at(a.record, alarm::kText));
        uint64_t raw = 0;
        if (!sample_variable(v, oid, raw)) continue;
        const int32_t sample_type = param(a.record, alarm::kSampleType) & 0xff;
        const int32_t startup = param(a.record, alarm::kSampleType) >> 8 & 0xff;
        const int32_t value = int32_t(uint32_t(sample_type == SW_RMON_ABSOLUTE ? raw : raw - a.last_raw));
        const bool first = !a.sampled;
        a.sampled = 1;
        a.last_raw = raw;
        a.value = value;
        const int32_t rising = param(a.record, alarm::kRising), falling = param(a.record, alarm::kFalling);
        int crossed = 0;
        if (value >= rising && a.last_event != 1 && (!first || (startup & 1))) crossed = 1;
        else if (value <= falling && a.last_event != 2 && (!first || (startup & 2))) crossed = 2;
        if (!crossed) continue;
        a.last_event = uint8_t(crossed);
        const int32_t event_index = param(a.record, crossed == 1 ? alarm::kRisingEvent : alarm::kFallingEvent);
        layout::RmonEngineEvent *e = engine_event(v, event_index);
        if (!e) continue;
        ++e->fired;
        fired.push_back(Fired{event_index, text_of(text_at(e->record, event::kDescription), event::kDescription.size),
                              e->record[event::kTrap.offset] != 0, index, crossed == 1, oid, sample_type, value,
                              crossed == 1 ? rising : falling});
    }
    return fired;
}

void deliver(const View &v, const std::vector<Fired> &fired) {
    for (const Fired &f : fired) {
        if (sw_rmon_fired_fn fn = g_cb.fired.load()) fn(f.event_index, f.description.c_str());
        if (f.trap)
            traps::raise_rmon_alarm(v, f.alarm_index, f.rising, f.variable.data(), f.variable.size(), f.sample_type,
                                    f.value, f.threshold);
    }
}

bool serve_request(const View &v) {
    layout::RmonHardware &h = v.hw->rmon;
    const uint32_t seq = __atomic_load_n(&h.request_seq, __ATOMIC_ACQUIRE);
    if (seq == __atomic_load_n(&h.done_seq, __ATOMIC_ACQUIRE)) return false;
    int result = -1;
    const int32_t arg = h.request_arg;
    switch (h.request_kind) {
    case layout::kRmonFire:
        if (sw_rmon_fired_fn fn = g_cb.fired.load()) {
            std::string description;
            if (engine_lock(v, true) == 0) {
                if (layout::RmonEngineEvent *e = engine_event(v, arg)) {
                    ++e->fired;
                    description = text_of(text_at(e->record, event::kDescription), event::kDescription.size);
                }
                engine_lock(v, false);
            }
            result = fn(arg, description.c_str());
        }
        break;
    case layout::kRmonRestoreAll:
        if (sw_rmon_all_fn fn = g_cb.restore_all.load()) result = fn();
        break;
    case layout::kRmonClearAll:
        if (sw_rmon_all_fn fn = g_cb.clear_all.load()) result = fn();
        break;
    default: break;
    }
    h.result = result;
    __atomic_store_n(&h.done_seq, seq, __ATOMIC_RELEASE);
    return true;
}

bool note_command(const View &v, const char *command) {
    const std::string prefix = std::string(kInterpreter) + " ";
    if (!command || std::strncmp(command, prefix.c_str(), prefix.size()) != 0) return false;
    layout::RmonHardware &h = v.hw->rmon;
    std::string script;
    const char *file = std::strrchr(command, ' ') + 1;
    if (std::ifstream in{file}) {
        std::ostringstream text;
        text << in.rdbuf();
        script = text.str();
    }
    put_text(h.last_command, sizeof h.last_command, command);
    put_text(h.last_script, sizeof h.last_script, script.c_str());
    __atomic_add_fetch(&h.commands_run, 1, __ATOMIC_RELEASE);
    return ::access(kInterpreter, X_OK) != 0;  // run it where the switch has it
}

// ---- control side ---------------------------------------------------------------------------------------

void alarm_record(const Switch::RmonAlarm &a, uint8_t *rec) {
    std::memset(rec, 0, alarm::kSize);
    store_i32(rec, alarm::kIndex, a.index);
    put_text(text_field(rec, alarm::kText), alarm::kText.size, a.variable.c_str());
    store_i32(rec, alarm::param(alarm::kInterval), a.interval);
    store_i32(rec, alarm::param(alarm::kSampleType), (a.sample_type & 0xff) | (a.startup & 0xff) << 8);
    store_i32(rec, alarm::param(alarm::kRising), a.rising);
    store_i32(rec, alarm::param(alarm::kFalling), a.falling);
    store_i32(rec, alarm::param(alarm::kRisingEvent), a.rising_event);
    store_i32(rec, alarm::param(alarm::kFallingEvent), a.falling_event);
    put_text(text_field(rec, alarm::kOwner), alarm::kOwner.size, a.owner.c_str());
}

void event_record(const Switch::RmonEvent &e, uint8_t *rec) {
    std::memset(rec, 0, event::engine::kSize);
    store_i32(rec, event::kIndex, e.index);
    put_text(text_field(rec, event::kDescription), event::kDescription.size, e.description.c_str());
    rec[event::kLog.offset] = e.log;
    rec[event::kTrap.offset] = e.trap;
    store_i32(rec, event::kScript, e.script);
    put_text(text_field(rec, event::engine::kCommunity), event::engine::kCommunity.size, e.community.c_str());
    put_text(text_field(rec, event::engine::kOwner), event::engine::kOwner.size, e.owner.c_str());
}

namespace {
Switch::RmonAlarm alarm_of(const uint8_t *rec) {
    Switch::RmonAlarm a;
    a.index = load_i32(rec, alarm::kIndex);
    a.variable = text_of(text_at(rec, alarm::kText), alarm::kText.size);
    a.interval = param(rec, alarm::kInterval);
    a.sample_type = param(rec, alarm::kSampleType) & 0xff;
    a.startup = param(rec, alarm::kSampleType) >> 8 & 0xff;
    a.rising = param(rec, alarm::kRising);
    a.falling = param(rec, alarm::kFalling);
    a.rising_event = param(rec, alarm::kRisingEvent);
    a.falling_event = param(rec, alarm::kFallingEvent);
    a.owner = text_of(text_at(rec, alarm::kOwner), alarm::kOwner.size);
    return a;
}
Switch::RmonEvent event_of(const uint8_t *rec, Field community, Field owner) {
    Switch::RmonEvent e;
    e.index = load_i32(rec, event::kIndex);
    e.description = text_of(text_at(rec, event::kDescription), event::kDescription.size);
    e.log = rec[event::kLog.offset] != 0;
    e.trap = rec[event::kTrap.offset] != 0;
    e.script = load_i32(rec, event::kScript);
    e.community = text_of(text_at(rec, community), community.size);
    e.owner = text_of(text_at(rec, owner), owner.size);
    return e;
}
void check_index(int32_t index) {
    if (index < 1 || index > kMaxIndex) throw Error("index " + std::to_string(index) + ": must be 1..65535");
}
}  // namespace

namespace ops {

void set_paused(View &v, bool paused) { __atomic_store_n(&v.hw->rmon.paused, uint32_t(paused), __ATOMIC_RELEASE); }

void add_statistic(View &v, int32_t index, int unit0, int port0, const std::string &owner) {
    check_index(index);
    if (model::iface_of(v, unit0, port0) < 0) throw Error("no such port or trunk");
    if (owner.size() > 31) throw Error("an owner has at most 31 characters");
    RmonStatRow *r = find(v.cfg->rmon.stats, index);
    if (!r) r = free_row(v.cfg->rmon.stats);
    if (!r) throw Error("every statistics row is in use");
    *r = RmonStatRow{index, unit0, port0, SW_RMON_VALID, {}};
    put_text(r->owner, sizeof r->owner, owner.c_str());
    rebase(v, *r);
}

void add_history(View &v, int32_t index, int unit0, int port0, int interval_s, int buckets, const std::string &owner) {
    check_index(index);
    if (model::iface_of(v, unit0, port0) < 0) throw Error("no such port or trunk");
    if (interval_s < 1 || interval_s > 3600) throw Error("interval: must be 1..3600 seconds");
    if (buckets < 1 || buckets > 65535) throw Error("buckets: must be 1..65535");
    if (owner.size() > 31) throw Error("an owner has at most 31 characters");
    RmonHistRow *r = find(v.cfg->rmon.hist, index);
    if (!r) r = free_row(v.cfg->rmon.hist);
    if (!r) throw Error("every history row is in use");
    *r = RmonHistRow{index, unit0, port0, interval_s, buckets, granted_for(buckets), SW_RMON_VALID, {}};
    put_text(r->owner, sizeof r->owner, owner.c_str());
    restart_history(v, *r);
}

void take_samples(View &v, int32_t index, int count) {
    RmonHistRow *r = find(v.cfg->rmon.hist, index);
    if (!r || r->status != SW_RMON_VALID) throw Error("no valid history row " + std::to_string(index));
    const uint32_t now = now_s(v);
    for (int i = 0; i < count; ++i) take_sample(v, *r, now);
}

void add_alarm(View &v, const Switch::RmonAlarm &a) {
    check_index(a.index);
    if (parse_oid(a.variable.c_str()).empty()) throw Error("variable: a dotted OID");
    uint8_t rec[alarm::kSize];
    alarm_record(a, rec);
    if (calls::cfg_set_rmon_alarm_pre(v, rec) < 0 || calls::cfg_set_rmon_alarm_up(v, rec) < 0)
        throw Error("every alarm slot is in use");
}

void add_event(View &v, const Switch::RmonEvent &e) {
    check_index(e.index);
    if (e.script < 0 || e.script > SW_RMON_SCRIPTS) throw Error("script: must be 0..16");
    uint8_t cfg[event::config::kSize] = {};
    store_i32(cfg, event::kIndex, e.index);
    put_text(text_field(cfg, event::kDescription), event::kDescription.size, e.description.c_str());
    cfg[event::kLog.offset] = e.log;
    cfg[event::kTrap.offset] = e.trap;
    store_i32(cfg, event::kScript, e.script);
    put_text(text_field(cfg, event::config::kCommunity), event::config::kCommunity.size, e.community.c_str());
    put_text(text_field(cfg, event::config::kOwner), event::config::kOwner.size, e.owner.c_str());
    if (calls::cfg_set_rmon_event_pre(v, cfg) < 0 || calls::cfg_set_rmon_event_up(v, cfg) < 0)
        throw Error("every event slot is in use");
}

void set_script(View &v, int number, const std::string &name, const std::string &commands, bool enabled) {
    if (number < 1 || number > SW_RMON_SCRIPTS) throw Error("script number: must be 1..16");
    if (name.size() >= script::kName.size || commands.size() >= script::kCommands.size)
        throw Error("a script's name or commands are too long");
    uint8_t *rec = v.image + cfg_area::script_record(number);
    std::memset(rec, 0, script::kSize);
    put_text(text_field(rec, script::kName), script::kName.size, name.c_str());
    put_text(text_field(rec, script::kCommands), script::kCommands.size, commands.c_str());
    rec[script::kFlag1.offset] = rec[script::kFlag2.offset] = enabled;
}

uint32_t post(View &v, int32_t kind, int32_t arg) {
    layout::RmonHardware &h = v.hw->rmon;
    h.request_kind = kind;
    h.request_arg = arg;
    return __atomic_add_fetch(&h.request_seq, 1, __ATOMIC_RELEASE);
}

}  // namespace ops

Switch::RmonInfo info(const View &v) {
    Switch::RmonInfo out;
    const layout::RmonHardware &h = v.hw->rmon;
    out.paused = __atomic_load_n(&h.paused, __ATOMIC_ACQUIRE) != 0;
    for (const RmonStatRow &r : v.cfg->rmon.stats)
        if (r.index) out.statistics.push_back({r.index, r.unit0, r.port0, r.status, text_of(r.owner, sizeof r.owner)});
    for (const RmonHistRow &r : v.cfg->rmon.hist)
        if (r.index)
            out.histories.push_back({r.index, r.unit0, r.port0, r.status, r.interval_s, r.requested, r.granted,
                                     h.samples[&r - v.cfg->rmon.hist].taken, text_of(r.owner, sizeof r.owner)});
    for (const auto &a : h.alarms)
        if (load_i32(a.record, alarm::kIndex)) out.alarms.push_back({alarm_of(a.record), a.value, a.last_event});
    for (const auto &e : h.events)
        if (load_i32(e.record, event::kIndex))
            out.events.push_back({event_of(e.record, event::engine::kCommunity, event::engine::kOwner), e.fired});
    for (int i = 0; i < SW_RMON_SLOTS; ++i) {
        const uint8_t *rec = v.image + cfg_area::alarm_slot(i);
        if (!load_i32(rec, alarm::kIndex)) break;
        out.alarm_slots.push_back(alarm_of(rec));
    }
    for (int i = 0; i < SW_RMON_SLOTS; ++i) {
        const uint8_t *rec = v.image + cfg_area::event_slot(i);
        if (!load_i32(rec, event::kIndex)) break;
        out.event_slots.push_back(event_of(rec, event::config::kCommunity, event::config::kOwner));
    }
    out.commands_run = __atomic_load_n(&h.commands_run, __ATOMIC_ACQUIRE);
    out.last_command = text_of(h.last_command, sizeof h.last_command);
    out.last_script = text_of(h.last_script, sizeof h.last_script);
    return out;
}

std::string damage(const View &v) {
    for (const RmonStatRow &r : v.cfg->rmon.stats)
        if (r.index && (r.index < 0 || r.index > kMaxIndex || r.status < 1 || r.status > 4))
            return "RMON statistics row " + std::to_string(r.index) + " is damaged";
    for (const RmonHistRow &r : v.cfg->rmon.hist)
        if (r.index && (r.index < 0 || r.index > kMaxIndex || r.granted < 0 || r.granted > SW_RMON_MAX_BUCKETS))
            return "RMON history row " + std::to_string(r.index) + " is damaged";
    return "";
}

}  // namespace swsim::rmon
