// Rate limits, storm control, queue counters and mirroring of the simulated
// switch, and the transceiver changes that go with the optics.
//
// Queue counters are not kept per packet: a port's eight egress queues share
// what the port sends and drops, in fixed proportions (queue 0, best effort,
// carries most), so they move with the port's offered load like the port's
// own counters; a counter set from outside keeps the difference as an offset.
#include "traffic.hpp"

#include <string>

#include "model.hpp"
#include "swplatform/records_traffic.hpp"
#include "util.hpp"

namespace swsim::traffic {
namespace {

using layout::TrafficIfaceConfig;

[[noreturn]] void fail(const std::string &what) { throw Error(what); }

// Per mille of the port's sent and dropped traffic that each queue carries.
constexpr uint32_t kSentShare[SW_QUEUES] = {400, 200, 100, 100, 50, 50, 50, 50};
constexpr uint32_t kDropShare[SW_QUEUES] = {600, 200, 100, 50, 25, 25, 0, 0};
// Bytes of a dropped frame: drops happen under load, to full-size frames.
constexpr uint64_t kDroppedFrameBytes = 1518;

uint64_t share(uint64_t total, uint32_t per_mille) {
    return mul_div(total, per_mille, 1000);
}

// What the load gave queue q of a physical port.
uint64_t load_counter(const View &v, int phys, int kind, int q) {
    switch (kind) {
    case Switch::kSentPackets: return share(model::counter(v, phys, stat::kOutFrames), kSentShare[q]);
    case Switch::kSentBytes: return share(model::counter(v, phys, stat::kOutOctets), kSentShare[q]);
    case Switch::kDroppedPackets: return share(model::counter(v, phys, stat::kOutDiscards), kDropShare[q]);
    default: return share(model::counter(v, phys, stat::kOutDiscards), kDropShare[q]) * kDroppedFrameBytes;
    }
}

uint64_t phys_queue_counter(const View &v, int phys, int kind, int q) {
    return load_counter(v, phys, kind, q) + v.hw->traffic.queue_offset[phys][kind][q];
}

// The traffic configuration of the port or configured trunk a call
// addresses; `body` runs on it, -1 when the address names neither.
template <class Body>
int with_config(const View &v, int unit0, int port0, Body body) {
    const int iface = model::iface_of(v, unit0, port0);
    return iface < 0 ? -1 : body(iface, v.cfg->traffic.ifaces[iface]);
}

template <class T>
int give(T *out, T value) {
    if (!out) return -1;
    *out = value;
    return 0;
}

uint32_t burst_of(const TrafficIfaceConfig &c, int d) { return c.burst_kb[d] ? c.burst_kb[d] : SW_BURST_DEFAULT_KB; }
uint32_t storm_pps_of(const TrafficIfaceConfig &c) { return c.bcast_pps ? c.bcast_pps : SW_BCAST_DEFAULT_PPS; }

// Rate limits of one direction, written once for both.
int get_rate(const View &v, int unit0, int port0, int d, uint32_t *kbps) {
    return with_config(v, unit0, port0, [&](int, auto &c) { return give(kbps, c.rate_kbps[d]); });
}
int set_rate(const View &v, int unit0, int port0, int d, uint32_t kbps) {
    return with_config(v, unit0, port0, [&](int, auto &c) {
        if (kbps > SW_RATE_MAX_KBPS) return -1;
        c.rate_kbps[d] = kbps;
        return 0;
    });
}
int get_burst(const View &v, int unit0, int port0, int d, uint32_t *kbytes) {
    return with_config(v, unit0, port0, [&](int, auto &c) { return give(kbytes, burst_of(c, d)); });
}
int set_burst(const View &v, int unit0, int port0, int d, uint32_t kbytes) {
    return with_config(v, unit0, port0, [&](int, auto &c) {
        if (kbytes < 1 || kbytes > SW_BURST_MAX_KB) return -1;
        c.burst_kb[d] = kbytes;
        return 0;
    });
}
int default_burst(const View &v, int unit0, int port0, int d) {
    return with_config(v, unit0, port0, [&](int, auto &c) {
        c.burst_kb[d] = 0;
        return 0;
    });
}

bool is_mirror_destination(const View &v, int iface) {
    const layout::TrafficConfig &t = v.cfg->traffic;
    return t.mirror_to_set && !model::is_trunk_iface(iface) &&
           iface == model::phys_index(t.mirror_to_unit0, t.mirror_to_port0);
}

// Fills the counter area of one kind for a port or trunk.
int queue_counters(const View &v, int unit0, int port0, int kind, uint8_t *area, size_t size) {
    if (!area || size < swp::queue_area::kSize) return -1;
    const int iface = model::iface_of(v, unit0, port0);
    if (iface < 0) return -1;
    for (int q = 0; q < SW_QUEUES; ++q) swp::queue_area::store(area, std::size_t(q), queue_counter(v, iface, kind, q));
    return 0;
}

int check_traffic_iface(const View &v, int unit0, int port0) { return model::ops::check_iface(v, unit0, port0); }

void check_fitted(const View &v, int unit0, int port0) {
    model::ops::check_port(v, unit0, port0);
    if (!v.status->units[unit0].ports[port0].sfp_present)
        fail("port " + port_name(unit0, port0) + " has no transceiver fitted");
}

}  // namespace

uint64_t queue_counter(const View &v, int iface, int kind, int q) {
    if (!model::is_trunk_iface(iface)) return phys_queue_counter(v, iface, kind, q);
    uint64_t total = 0;
    model::for_each_trunk_member(v, iface - model::kPhysPorts,
                                 [&](int u, int p) { total += phys_queue_counter(v, model::phys_index(u, p), kind, q); });
    return total;
}

// ---- the platform calls ------------------------------------------------------------------

namespace calls {

#define SWSIM_RATE_CALLS(dir, d)                                                                       \
    int cfg_get_port_rate_##dir(const View &v, int unit0, int port0, uint32_t *kbps) {               \
        return get_rate(v, unit0, port0, d, kbps);                                                   \
    }                                                                                                \
    int cfg_set_port_rate_##dir(const View &v, int unit0, int port0, uint32_t kbps) {                \
        return set_rate(v, unit0, port0, d, kbps);                                                   \
    }                                                                                                \
    int cfg_get_port_burst_##dir(const View &v, int unit0, int port0, uint32_t *kbytes) {            \
        return get_burst(v, unit0, port0, d, kbytes);                                                \
    }                                                                                                \
    int cfg_set_port_burst_##dir(const View &v, int unit0, int port0, uint32_t kbytes) {             \
        return set_burst(v, unit0, port0, d, kbytes);                                                \
    }                                                                                                \
    int cfg_set_default_port_rate_##dir(const View &v, int unit0, int port0) {                       \
        return set_rate(v, unit0, port0, d, 0);                                                      \
    }                                                                                                \
    int cfg_set_default_port_burst_##dir(const View &v, int unit0, int port0) {                      \
        return default_burst(v, unit0, port0, d);                                                    \
    }
SWSIM_RATE_CALLS(ingress, layout::kIngress)
SWSIM_RATE_CALLS(egress, layout::kEgress)
#undef SWSIM_RATE_CALLS

int cfg_get_port_rate_bcast_enable(const View &v, int unit0, int port0, uint8_t *enabled) {
    return with_config(v, unit0, port0, [&](int, auto &c) { return give(enabled, c.bcast_enable); });
}
int cfg_set_port_rate_bcast_enable(const View &v, int unit0, int port0, uint8_t enabled) {
    return with_config(v, unit0, port0, [&](int, auto &c) {
        if (enabled > 1) return -1;
        c.bcast_enable = enabled;
        return 0;
    });
}
int cfg_get_port_rate_bcast_value(const View &v, int unit0, int port0, uint32_t *pps) {
    return with_config(v, unit0, port0, [&](int, auto &c) { return give(pps, storm_pps_of(c)); });
}
int cfg_set_port_rate_bcast_value(const View &v, int unit0, int port0, uint32_t pps) {
    return with_config(v, unit0, port0, [&](int, auto &c) {
        if (pps < 1 || pps > SW_BCAST_MAX_PPS) return -1;
        c.bcast_pps = pps;
        return 0;
    });
}

int cfg_get_queue_pkts_cnt(const View &v, int unit0, int port0, uint8_t *area, size_t size) {
    return queue_counters(v, unit0, port0, Switch::kSentPackets, area, size);
}
int cfg_get_queue_bytes_cnt(const View &v, int unit0, int port0, uint8_t *area, size_t size) {
    return queue_counters(v, unit0, port0, Switch::kSentBytes, area, size);
}
int cfg_get_queue_dropped_pkts(const View &v, int unit0, int port0, uint8_t *area, size_t size) {
    return queue_counters(v, unit0, port0, Switch::kDroppedPackets, area, size);
}
int cfg_get_queue_dropped_bytes(const View &v, int unit0, int port0, uint8_t *area, size_t size) {
    return queue_counters(v, unit0, port0, Switch::kDroppedBytes, area, size);
}

int cfg_get_port_mirror(const View &v, int unit0, int port0, int *mode) {
    return with_config(v, unit0, port0, [&](int, auto &c) { return give(mode, int(c.mirror)); });
}
// The destination port is not mirrored itself.
int cfg_set_port_mirror(const View &v, int unit0, int port0, int mode) {
    return with_config(v, unit0, port0, [&](int iface, auto &c) {
        if (mode < SW_MIRROR_NONE || mode > SW_MIRROR_BOTH) return -1;
        if (mode != SW_MIRROR_NONE && is_mirror_destination(v, iface)) return -1;
        c.mirror = uint8_t(mode);
        return 0;
    });
}
int cfg_get_mirror_to(const View &v, int *unit0, int *port0) {
    const layout::TrafficConfig &t = v.cfg->traffic;
    if (!unit0 || !port0 || !t.mirror_to_set) return -1;
    *unit0 = t.mirror_to_unit0;
    *port0 = t.mirror_to_port0;
    return 0;
}
// A physical port that is not mirrored itself.
int cfg_set_mirror_to(const View &v, int unit0, int port0) {
    const int phys = model::phys_of(v, unit0, port0);
    if (phys < 0 || v.cfg->traffic.ifaces[phys].mirror != SW_MIRROR_NONE) return -1;
    layout::TrafficConfig &t = v.cfg->traffic;
    t.mirror_to_unit0 = unit0;
    t.mirror_to_port0 = port0;
    t.mirror_to_set = 1;
    return 0;
}

}  // namespace calls

// ---- changes from outside ------------------------------------------------------------------

namespace ops {

void set_transceiver_readings(View &v, int unit0, int port0, const Ddm &readings) {
    check_fitted(v, unit0, port0);
    const bool diagnostics = v.status->units[unit0].ports[port0].sfp_ddm;
    model::ops::set_transceiver(v, unit0, port0, true, readings);
    v.status->units[unit0].ports[port0].sfp_ddm = diagnostics;
}

void set_transceiver_diagnostics(View &v, int unit0, int port0, bool available) {
    check_fitted(v, unit0, port0);
    v.status->units[unit0].ports[port0].sfp_ddm = available ? 1 : 0;
}

void set_rate_limit(View &v, int unit0, int port0, int direction, uint32_t kbps, uint32_t burst_kb) {
    check_traffic_iface(v, unit0, port0);
    if (direction != layout::kIngress && direction != layout::kEgress) fail("a rate limit is ingress or egress");
    if (kbps > SW_RATE_MAX_KBPS) fail("rate above " + std::to_string(SW_RATE_MAX_KBPS) + " kbit/s");
    if (burst_kb > SW_BURST_MAX_KB) fail("burst above " + std::to_string(SW_BURST_MAX_KB) + " kbytes");
    set_rate(v, unit0, port0, direction, kbps);
    if (burst_kb)
        set_burst(v, unit0, port0, direction, burst_kb);
    else
        default_burst(v, unit0, port0, direction);
}

void set_storm_control(View &v, int unit0, int port0, bool enabled, uint32_t pps) {
    const int iface = check_traffic_iface(v, unit0, port0);
    if (pps > SW_BCAST_MAX_PPS) fail("storm threshold above " + std::to_string(SW_BCAST_MAX_PPS) + " packets/s");
    TrafficIfaceConfig &c = v.cfg->traffic.ifaces[iface];
    c.bcast_enable = enabled ? 1 : 0;
    c.bcast_pps = pps;
}

void set_mirror(View &v, int unit0, int port0, int mode) {
    check_traffic_iface(v, unit0, port0);
    if (mode < SW_MIRROR_NONE || mode > SW_MIRROR_BOTH) fail("mirror mode " + std::to_string(mode) + " is not 0..3");
    if (calls::cfg_set_port_mirror(v, unit0, port0, mode) != 0)
        fail("port " + port_name(unit0, port0) + " is the mirror destination");
}

void set_mirror_to(View &v, int unit0, int port0) {
    if (port0 < 0) {
        v.cfg->traffic.mirror_to_set = 0;
        return;
    }
    model::ops::check_port(v, unit0, port0);
    if (calls::cfg_set_mirror_to(v, unit0, port0) != 0)
        fail("port " + port_name(unit0, port0) + " is mirrored and cannot be the destination");
}

void set_queue_counter(View &v, int unit0, int port0, int kind, int q, uint64_t value) {
    model::ops::check_port(v, unit0, port0);
    if (kind < 0 || kind >= layout::kQueueCounterKinds) fail("no queue counter kind " + std::to_string(kind));
    if (q < 0 || q >= SW_QUEUES) fail("no queue " + std::to_string(q) + " (queues are 0..7)");
    const int phys = model::phys_index(unit0, port0);
    v.hw->traffic.queue_offset[phys][kind][q] = value - load_counter(v, phys, kind, q);
}

}  // namespace ops

// ---- reads -----------------------------------------------------------------------------------

Switch::TransceiverInfo transceiver_info(const View &v, int unit0, int port0) {
    model::ops::check_port(v, unit0, port0);
    const sw_port_status_t &st = v.status->units[unit0].ports[port0];
    Switch::TransceiverInfo info;
    info.cage = v.hw->ports[model::phys_index(unit0, port0)].sfp_slot;
    info.fitted = st.sfp_present;
    info.diagnostics = st.sfp_present && st.sfp_ddm;
    info.temperature_c = st.ddm_temperature;
    info.voltage = st.ddm_voltage;
    info.bias = st.ddm_bias;
    info.tx_power = st.ddm_tx_power;
    info.rx_power = st.ddm_rx_power;
    return info;
}

Switch::TrafficInfo traffic_info(const View &v, int unit0, int port0) {
    const int iface = check_traffic_iface(v, unit0, port0);
    const TrafficIfaceConfig &c = v.cfg->traffic.ifaces[iface];
    Switch::TrafficInfo info;
    for (int d : {layout::kIngress, layout::kEgress}) {
        info.rate_kbps[d] = c.rate_kbps[d];
        info.burst_kb[d] = burst_of(c, d);
    }
    info.storm_control = c.bcast_enable;
    info.storm_pps = storm_pps_of(c);
    info.mirror = c.mirror;
    for (int kind = 0; kind < layout::kQueueCounterKinds; ++kind)
        for (int q = 0; q < SW_QUEUES; ++q) info.queues[kind][q] = queue_counter(v, iface, kind, q);
    return info;
}

}  // namespace swsim::traffic
