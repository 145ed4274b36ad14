// The private per-port traffic controls: ingress and egress rate limits
// (rateLimitPortTable), broadcast storm control (bcastStormTable), the
// counters of the eight egress queues (queuePortTable), port mirroring
// (mirrorTable, mirrorDestinationPort) and the weighted round-robin settings
// (prioWrrTable, prioQueueMode), which are accepted but not applied.
//
// Rows are interface indexes of ports and trunks; a trunk is handed to the
// platform as unit0 0, port0 512 + trunk0.
#include "agent/ifindex.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "swplatform/records_traffic.hpp"
#include "tables/catalogue.hpp"

namespace {

struct Port {
    int unit0, port0;
    explicit Port(int32_t ifindex) : unit0(ifindex_to_unit0(ifindex)), port0(ifindex_to_port0(ifindex)) {}
};

constexpr int32_t kEnabled = 1, kDisabled = 2;

// ---- rate limits --------------------------------------------------------------

// The platform calls of one direction of a rate limit.
struct RateCalls {
    int (*get_rate)(int, int, uint32_t *);
    int (*set_rate)(int, int, uint32_t);
    int (*get_burst)(int, int, uint32_t *);
    int (*set_burst)(int, int, uint32_t);
    int (*default_rate)(int, int);
    int (*default_burst)(int, int);
};
constexpr RateCalls kIngress{cfg_get_port_rate_ingress, cfg_set_port_rate_ingress,
                             cfg_get_port_burst_ingress, cfg_set_port_burst_ingress,
                             cfg_set_default_port_rate_ingress, cfg_set_default_port_burst_ingress};
constexpr RateCalls kEgress{cfg_get_port_rate_egress, cfg_set_port_rate_egress,
                            cfg_get_port_burst_egress, cfg_set_port_burst_egress,
                            cfg_set_default_port_rate_egress, cfg_set_default_port_burst_egress};

// Enabling a limit always sets this pair (kbit/s, kbytes); a manager sets its
// own rate and burst afterwards.
constexpr uint32_t kEnabledRate = 1000000, kEnabledBurst = 4096;

// The configured rate, or nothing when it cannot be read.
bool read_rate(const Port &p, const RateCalls &c, uint32_t &rate) { return c.get_rate(p.unit0, p.port0, &rate) == 0; }

int32_t limit_status(int32_t i, const RateCalls &c) {
    uint32_t rate = 0;
    return read_rate(Port(i), c, rate) && rate != 0 ? kEnabled : kDisabled;
}

// Two platform calls; the first failure stops the sequence and is the result.
int limit_pair(const Port &p, int (*first)(int, int, uint32_t), uint32_t a, int (*second)(int, int, uint32_t),
               uint32_t b) {
    const int r = first(p.unit0, p.port0, a);
    return r < 0 ? r : second(p.unit0, p.port0, b);
}

// Any value but enabled and disabled is accepted and changes nothing.
int set_limit_status(int32_t i, int32_t value, const RateCalls &c) {
    const Port p(i);
    if (value == kEnabled) return limit_pair(p, c.set_rate, kEnabledRate, c.set_burst, kEnabledBurst);
    if (value != kDisabled) return 0;
    const int r = c.default_rate(p.unit0, p.port0);
    return r < 0 ? r : c.default_burst(p.unit0, p.port0);
}

int32_t limit_rate(int32_t i, const RateCalls &c) {
    uint32_t rate = 0;
    return read_rate(Port(i), c, rate) ? static_cast<int32_t>(rate) : 0;
}

// A limit that is off has no burst, whatever the platform holds.
int32_t limit_burst(int32_t i, const RateCalls &c) {
    const Port p(i);
    uint32_t rate = 0, burst = 0;
    if (!read_rate(p, c, rate) || rate == 0) return 0;
    return c.get_burst(p.unit0, p.port0, &burst) == 0 ? static_cast<int32_t>(burst) : 0;
}

// A rate or burst goes to the platform as it is.
int limit_write(int32_t i, int (*set)(int, int, uint32_t), int32_t value) {
    const Port p(i);
    return set(p.unit0, p.port0, static_cast<uint32_t>(value));
}

// ---- queue counters -----------------------------------------------------------

using QueueCall = int (*)(int, int, uint8_t *, size_t);

// One platform call per read; a failed call leaves the area cleared: 0.
uint64_t queue_counter(int32_t i, int32_t queue, QueueCall call) {
    uint8_t area[swp::queue_area::kSize] = {};
    const Port p(i);
    call(p.unit0, p.port0, area, sizeof area);
    // Rows carry queues 0 .. 7 only.
    return queue >= 0 && queue < SW_QUEUES ? swp::queue_area::load(area, std::size_t(queue)) : 0;
}

// The interface index model adds and removes rows by interface index alone;
// the queue number of the row at hand travels beside it.
int32_t g_row_queue = 0;
void *(*g_create_queue_row)(int32_t, int32_t) = nullptr;
void *create_queue_row(int32_t i) { return g_create_queue_row(i, g_row_queue); }
void remove_queue_row(int32_t i) { queuePortTable_removeEntry(i, g_row_queue); }

// ---- mirroring ------------------------------------------------------------------

// mirrorType: rx(1), tx(2), both(3), none(4); the platform says none with 0.
constexpr int32_t kMirrorNone = 4;

}  // namespace

extern "C" {

// ---- rateLimitPortTable ---------------------------------------------------------

int init_index_rateLimitPortTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_rateLimitPortTable(int32_t i) { return ifindex_row_exists(i, rateLimitPortTable_removeEntry); }

int32_t get_rlPortInputStatus(int32_t i) { return limit_status(i, kIngress); }
int set_rlPortInputStatus(int32_t i, int32_t value) { return set_limit_status(i, value, kIngress); }
int32_t get_rlPortOutputStatus(int32_t i) { return limit_status(i, kEgress); }
int set_rlPortOutputStatus(int32_t i, int32_t value) { return set_limit_status(i, value, kEgress); }

int32_t get_rlPortInputRate(int32_t i) { return limit_rate(i, kIngress); }
int set_rlPortInputRate(int32_t i, int32_t value) { return limit_write(i, kIngress.set_rate, value); }
int32_t get_rlPortOutputRate(int32_t i) { return limit_rate(i, kEgress); }
int set_rlPortOutputRate(int32_t i, int32_t value) { return limit_write(i, kEgress.set_rate, value); }

int32_t get_rlPortInputBurst(int32_t i) { return limit_burst(i, kIngress); }
int set_rlPortInputBurst(int32_t i, int32_t value) { return limit_write(i, kIngress.set_burst, value); }
int32_t get_rlPortOutputBurst(int32_t i) { return limit_burst(i, kEgress); }
int set_rlPortOutputBurst(int32_t i, int32_t value) { return limit_write(i, kEgress.set_burst, value); }

// ---- bcastStormTable --------------------------------------------------------------

int init_index_bcastStormTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_bcastStormTable(int32_t i) { return ifindex_row_exists(i, bcastStormTable_removeEntry); }

int32_t get_bcastStormStatus(int32_t i) {
    const Port p(i);
    uint8_t on = 0;
    cfg_get_port_rate_bcast_enable(p.unit0, p.port0, &on);
    return on != 0 ? kEnabled : kDisabled;
}
// Anything but enabled turns storm control off.
int set_bcastStormStatus(int32_t i, int32_t value) {
    const Port p(i);
    return cfg_set_port_rate_bcast_enable(p.unit0, p.port0, value == kEnabled ? 1 : 0);
}

int32_t get_bcastStormPacketRate(int32_t i) {
    const Port p(i);
    uint32_t pps = 0;
    cfg_get_port_rate_bcast_value(p.unit0, p.port0, &pps);
    return static_cast<int32_t>(pps);
}
int set_bcastStormPacketRate(int32_t i, int32_t value) {
    const Port p(i);
    return cfg_set_port_rate_bcast_value(p.unit0, p.port0, static_cast<uint32_t>(value));
}

// ---- queuePortTable -------------------------------------------------------------

// Queue by queue, every port and trunk.
int init_index_queuePortTable(void *(*create)(int32_t, int32_t)) {
    g_create_queue_row = create;
    for (g_row_queue = 0; g_row_queue < SW_QUEUES; ++g_row_queue) ifindex_populate(create_queue_row, true);
    return 0;
}
int exists_entry_queuePortTable(int32_t i, int32_t queue) {
    g_row_queue = queue;
    return ifindex_row_exists(i, remove_queue_row);
}

uint64_t get_queuePortSentPackets(int32_t i, int32_t q) { return queue_counter(i, q, cfg_get_queue_pkts_cnt); }
uint64_t get_queuePortSentBytes(int32_t i, int32_t q) { return queue_counter(i, q, cfg_get_queue_bytes_cnt); }
uint64_t get_queuePortDroppedPackets(int32_t i, int32_t q) { return queue_counter(i, q, cfg_get_queue_dropped_pkts); }
uint64_t get_queuePortDroppedBytes(int32_t i, int32_t q) { return queue_counter(i, q, cfg_get_queue_dropped_bytes); }

// ---- mirrorTable and mirrorDestinationPort --------------------------------------

int init_index_mirrorTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_mirrorTable(int32_t i) { return ifindex_row_exists(i, mirrorTable_removeEntry); }

int32_t get_mirrorType(int32_t i) {
    const Port p(i);
    int mode = -1;
    cfg_get_port_mirror(p.unit0, p.port0, &mode);
    if (mode == SW_MIRROR_NONE) return kMirrorNone;
    return mode >= SW_MIRROR_RX && mode <= SW_MIRROR_BOTH ? mode : 0;
}
int set_mirrorType(int32_t i, int32_t value) {
    const Port p(i);
    if (value >= SW_MIRROR_RX && value <= SW_MIRROR_BOTH) return cfg_set_port_mirror(p.unit0, p.port0, value);
    if (value == kMirrorNone) return cfg_set_port_mirror(p.unit0, p.port0, SW_MIRROR_NONE);
    return -1;
}

// The destination's interface index; 0 while there is none.
int32_t get_mirrorDestinationPort(void) {
    int unit0 = 0, port0 = -1;
    cfg_get_mirror_to(&unit0, &port0);
    return port_to_ifindex(unit0, port0);
}
int set_mirrorDestinationPort(int32_t value) {
    const Port p(value);
    return cfg_set_mirror_to(p.unit0, p.port0);
}

// ---- weighted round-robin: accepted, not applied ---------------------------------

int init_index_prioWrrTable(void *(*)(int32_t)) { return 0; }
int exists_entry_prioWrrTable(int32_t) { return 1; }
int32_t get_prioWrrWeight(int32_t) { return 1; }
int set_prioWrrWeight(int32_t, int32_t) { return 1; }
int32_t get_prioQueueMode(void) { return 1; }
int set_prioQueueMode(int32_t) { return 1; }

}  // extern "C"
