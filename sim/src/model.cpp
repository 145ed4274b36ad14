#include "model.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>

#include "crash.hpp"
#include "ifaces.hpp"
#include "owner.hpp"
#include "shared_atomic.hpp"
#include "util.hpp"

namespace swsim::model {
namespace {

using layout::ConfigModel;
using layout::CounterState;
using layout::IfaceConfig;
using layout::PortCounters;
using layout::PortHardware;

IfaceConfig &iface_cfg(View &v, int iface) { return v.cfg->ifaces[iface]; }

// ---- the statistics catalogue ------------------------------------------------------
//
// A statistic is either a count of its own, the same count as another (the
// high-capacity counters and their 32-bit forms), or the sum of others (the
// non-unicast and frame counters).  Own counts advance with the port's
// offered load: `micro` millionths per packet per second, in each direction.

enum class Kind : uint8_t { Own, Same, Sum };

struct StatDef {
    Kind kind = Kind::Own;
    std::array<int8_t, 3> parts{-1, -1, -1};
    uint64_t micro = 0;      // millionths of a count per packet
    bool half_only = false;  // collisions and deferrals: half duplex only
};

constexpr std::array<StatDef, SW_MAX_STATISTIC> make_catalogue() {
    namespace s = stat;
    std::array<StatDef, SW_MAX_STATISTIC> t{};
    auto own = [&t](int n, uint64_t micro, bool half_only = false) {
        t[n] = StatDef{Kind::Own, {-1, -1, -1}, micro, half_only};
    };
    auto same = [&t](int n, int of) { t[n] = StatDef{Kind::Same, {int8_t(of), -1, -1}, 0, false}; };
    auto sum = [&t](int n, int a, int b, int c = -1) {
        t[n] = StatDef{Kind::Sum, {int8_t(a), int8_t(b), int8_t(c)}, 0, false};
    };
    // Received: 420-byte average frames; 90% unicast, 6% multicast, 4% broadcast.
    own(s::kInOctets, 420'000'000);
    own(s::kInUcast, 900'000);
    own(s::kHCInMulticast, 60'000);
    own(s::kHCInBroadcast, 40'000);
    own(s::kInDiscards, 500);
    own(s::kInErrors, 200);
    own(s::kInUnknownProtos, 100);
    // Sent: 380-byte average frames.
    own(s::kOutOctets, 380'000'000);
    own(s::kOutUcast, 920'000);
    own(s::kHCOutMulticast, 50'000);
    own(s::kHCOutBroadcast, 30'000);
    own(s::kOutDiscards, 300);
    own(s::kOutErrors, 100);
    own(s::kDelayExceededDiscards, 10);
    own(s::kMtuExceededDiscards, 50);
    own(s::kAlignmentErrors, 20);
    own(s::kFcsErrors, 80);
    own(s::kSingleCollisions, 2000, true);
    own(s::kMultipleCollisions, 800, true);
    own(s::kDeferredTransmissions, 1500, true);
    own(s::kLateCollisions, 5, true);
    own(s::kExcessiveCollisions, 2, true);
    own(s::kInternalMacTxErrors, 1);
    own(s::kCarrierSenseErrors, 3, true);
    own(s::kFrameTooLongs, 30);
    own(s::kInternalMacRxErrors, 1);
    own(s::kSymbolErrors, 40);
    same(s::kHCInOctets, s::kInOctets);
    same(s::kHCInUcast, s::kInUcast);
    same(s::kHCOutOctets, s::kOutOctets);
    same(s::kHCOutUcast, s::kOutUcast);
    same(s::kBridgeInDiscards, s::kInDiscards);
    sum(s::kInNUcast, s::kHCInMulticast, s::kHCInBroadcast);
    sum(s::kOutNUcast, s::kHCOutMulticast, s::kHCOutBroadcast);
    sum(s::kInFrames, s::kInUcast, s::kHCInMulticast, s::kHCInBroadcast);
    sum(s::kOutFrames, s::kOutUcast, s::kHCOutMulticast, s::kHCOutBroadcast);
    return t;
}
constexpr std::array<StatDef, SW_MAX_STATISTIC> kStats = make_catalogue();

// Value of one own counter at time `now` given a consistent copy of the port.
uint64_t own_value(const CounterState &pc, int stat, uint64_t now) {
    const layout::Counter &c = pc.c[stat];
    if (!pc.running || now <= pc.checkpoint_ns) return c.base;
    return c.base + mul_div(c.rate_micro, now - pc.checkpoint_ns, 1'000'000'000'000'000ull);
}

uint64_t value_of(const CounterState &pc, int stat, uint64_t now) {
    const StatDef &d = kStats[stat];
    switch (d.kind) {
    case Kind::Own:
        return own_value(pc, stat, now);
    case Kind::Same:
        return own_value(pc, d.parts[0], now);
    case Kind::Sum: {
        uint64_t total = 0;
        for (int8_t p : d.parts)
            if (p >= 0) total += own_value(pc, p, now);
        return total;
    }
    }
    return 0;
}

uint64_t load_seq(const PortCounters &pc) { return __atomic_load_n(&pc.seq, __ATOMIC_ACQUIRE); }

// Reads a port's counter state without waiting: `live` while seq is even,
// `next` while it is odd (whole by then, even if its writer died), again if
// seq moved while we read.
template <class Read>
auto read_stable(const PortCounters &pc, Read read) {
    for (;;) {
        const uint32_t s1 = load_seq(pc);
        auto value = read(s1 & 1 ? pc.next : pc.live);
        __atomic_thread_fence(__ATOMIC_ACQUIRE);
        if (__atomic_load_n(&pc.seq, __ATOMIC_RELAXED) == s1) return value;
    }
}

uint64_t read_counter(const PortCounters &pc, int stat) {
    return read_stable(pc, [&](const CounterState &s) { return value_of(s, stat, monotonic_ns()); });
}

// While seq is odd: copies `next` over `live` and turns seq even.
void finish_copy(PortCounters &pc) {
    auto *to = reinterpret_cast<unsigned char *>(&pc.live);
    const auto *from = reinterpret_cast<const unsigned char *>(&pc.next);
    constexpr std::size_t half = sizeof(CounterState) / 2;
    std::memcpy(to, from, half);
    crash::point(crash::kCounterCopying);
    std::memcpy(to + half, from + half, sizeof(CounterState) - half);
    __atomic_add_fetch(&pc.seq, 1, __ATOMIC_RELEASE);
}

void publish(PortCounters &pc) {
    __atomic_add_fetch(&pc.seq, 1, __ATOMIC_ACQ_REL);
    __atomic_thread_fence(__ATOMIC_RELEASE);
    finish_copy(pc);
}

// The right to rewrite one port's counters: the port's writer word.  Taking
// it waits for a live writer and takes over from a dead one, finishing the
// copy the dead one may have left half done.
class CounterWriter {
public:
    explicit CounterWriter(PortCounters &pc) : pc_(pc), me_(owner::self().word()) {
        for (owner::Backoff wait;;) {
            uint64_t w = shared::load(pc.writer, __ATOMIC_ACQUIRE);
            if (w == 0 ? claim(0) : wait.pause() && owner::dead(w) && claim(w)) break;
        }
        if (load_seq(pc) & 1) finish_copy(pc);
    }
    ~CounterWriter() { shared::store(pc_.writer, uint64_t{0}, __ATOMIC_RELEASE); }
    CounterWriter(const CounterWriter &) = delete;
    CounterWriter &operator=(const CounterWriter &) = delete;

private:
    bool claim(uint64_t from) {
        return shared::cas(pc_.writer, from, me_, __ATOMIC_ACQ_REL);
    }
    PortCounters &pc_;
    uint64_t me_;
};

// Folds the growth since the last checkpoint into the bases, starts a new
// checkpoint, lets `edit` change the state (running, offered load, a base)
// and sets the rates for the load and the port's duplex.
template <class Edit>
void checkpoint(PortCounters &pc, bool full_duplex, Edit edit) {
    CounterWriter writer(pc);
    crash::point(crash::kCounterClaimed);
    CounterState &n = pc.next;
    n = pc.live;
    const uint64_t now = monotonic_ns();
    for (int i = 0; i < SW_MAX_STATISTIC; ++i)
        if (kStats[i].kind == Kind::Own) n.c[i].base = own_value(pc.live, i, now);
    n.checkpoint_ns = now;
    edit(n);
    for (int i = 0; i < SW_MAX_STATISTIC; ++i) {
        const StatDef &d = kStats[i];
        bool flows = d.kind == Kind::Own && !(d.half_only && full_duplex);
        n.c[i].rate_micro = flows ? n.traffic_pps * d.micro : 0;
    }
    crash::point(crash::kCounterPrepared);
    publish(pc);
    crash::point(crash::kCounterCopied);
}

uint64_t fnv(const void *data, std::size_t n, uint64_t h) {
    const uint8_t *p = static_cast<const uint8_t *>(data);
    for (std::size_t i = 0; i < n; ++i) h = (h ^ p[i]) * 0x100000001b3ull;
    return h;
}

void hash16(const void *data, std::size_t n, uint8_t out[16]) {
    uint64_t a = fnv(data, n, 0xcbf29ce484222325ull);
    uint64_t b = fnv(data, n, 0x84222325cbf29ce4ull);
    for (int i = 0; i < 8; ++i) {
        out[i] = uint8_t(a >> (56 - 8 * i));
        out[8 + i] = uint8_t(b >> (56 - 8 * i));
    }
}

}  // namespace

// ---- trunks -------------------------------------------------------------------------

int trunk_of_port(const View &v, int unit0, int port0) {
    for (int t = 0; t < SW_MAX_TRUNKS; ++t)
        if (v.cfg->trunks[t].configured && trunk_has(v, t, unit0, port0)) return t;
    return -1;
}

bool trunk_empty(const View &v, int trunk0) {
    for (int u = 0; u < SW_MAX_UNITS; ++u)
        for (int w = 0; w < kTrunkMemberWords; ++w)
            if (trunk_member_word(v, trunk0, u, w)) return false;
    return true;
}

std::vector<std::pair<int, int>> trunk_members(const View &v, int trunk0) {
    std::vector<std::pair<int, int>> out;
    for_each_trunk_member(v, trunk0, [&](int u, int p) { out.emplace_back(u, p); });
    return out;
}

// ---- links --------------------------------------------------------------------------

uint32_t max_speed(uint32_t caps) {
    if (caps & cap::k10GFull) return 10000;
    if (caps & (cap::k1000Full | cap::k1000Half)) return 1000;
    if (caps & (cap::k100Full | cap::k100Half)) return 100;
    if (caps & (cap::k10Full | cap::k10Half)) return 10;
    return 0;
}

bool speed_supported(uint32_t hw_caps, int mbps) {
    switch (mbps) {
    case 0: return hw_caps & cap::kAutoneg;
    case 10: return hw_caps & (cap::k10Full | cap::k10Half);
    case 100: return hw_caps & (cap::k100Full | cap::k100Half);
    case 1000: return hw_caps & (cap::k1000Full | cap::k1000Half);
    case 10000: return hw_caps & cap::k10GFull;
    default: return false;
    }
}

// The link is up when the unit is in the stack, the port is enabled, a
// partner is on the wire and, on a cage, a transceiver is fitted.  A fixed
// speed/duplex is used as configured; a negotiating port gets the best speed
// both ends advertise and the partner's duplex.
void refresh_port(View &v, int unit0, int port0) {
    const int phys = phys_index(unit0, port0);
    const IfaceConfig &cf = iface_cfg(v, phys);
    PortHardware &hw = v.hw->ports[phys];
    sw_port_status_t &st = v.status->units[unit0].ports[port0];
    const bool up = v.status->units[unit0].present && cf.admin && hw.carrier && (!hw.sfp_slot || st.sfp_present);
    uint32_t speed = cf.speed;
    uint32_t full = cf.duplex ? 1 : 0;
    if (cf.speed == 0) {
        speed = max_speed(cf.caps & hw.hw_caps);
        if (speed == 0) speed = max_speed(hw.hw_caps);
        if (hw.peer_speed) speed = std::min(speed, hw.peer_speed);
        full = hw.peer_full;
    }
    if (up) {
        st.speed = speed;
        st.speed2 = speed;
        hw.last_speed = speed;
    } else {
        st.speed = 0;
        st.speed2 = cf.speed ? cf.speed : (hw.last_speed ? hw.last_speed : speed);
    }
    st.link = up;
    st.duplex = full;
    st.rx_pause = up && (cf.pause & 1);
    st.tx_pause = up && (cf.pause & 2);
    checkpoint(v.stats->ports[phys], full, [&](CounterState &n) { n.running = up; });
}

void refresh_unit(View &v, int unit0) {
    for (int p = 0; p < int(v.status->units[unit0].user_ports) && p < SW_PORTS_PER_UNIT; ++p)
        refresh_port(v, unit0, p);
}

sw_port_info_t port_info(const View &v, int iface) {
    sw_port_info_t info{};
    if (!is_trunk_iface(iface)) {
        const sw_port_status_t &st = v.status->units[iface / SW_PORTS_PER_UNIT].ports[iface % SW_PORTS_PER_UNIT];
        info = {st.link, st.speed, st.duplex, st.rx_pause, st.tx_pause};
        return info;
    }
    // An aggregate is up while any member is; its bandwidth is theirs together.
    const int trunk0 = iface - kPhysPorts;
    info.duplex = 1;
    for_each_trunk_member(v, trunk0, [&](int u, int p) {
        const sw_port_status_t &st = v.status->units[u].ports[p];
        if (!st.link) return;
        info.link = 1;
        info.speed += st.speed;
        info.duplex &= st.duplex;
        info.rx_pause |= st.rx_pause;
        info.tx_pause |= st.tx_pause;
    });
    if (!info.link) info.duplex = 0;
    return info;
}

// ---- counters -------------------------------------------------------------------------

uint64_t counter(const View &v, int iface, int stat) {
    if (!is_trunk_iface(iface)) return read_counter(v.stats->ports[iface], stat);
    uint64_t total = 0;
    for_each_trunk_member(v, iface - kPhysPorts,
                          [&](int u, int p) { total += read_counter(v.stats->ports[phys_index(u, p)], stat); });
    return total;
}

uint64_t offered_load(const View &v, int phys) {
    return read_stable(v.stats->ports[phys], [](const CounterState &s) { return s.traffic_pps; });
}
namespace {
bool port_full_duplex(const View &v, int phys) {
    return v.status->units[phys / SW_PORTS_PER_UNIT].ports[phys % SW_PORTS_PER_UNIT].duplex;
}
}  // namespace

bool stat_settable(int stat) { return stat >= 0 && stat < SW_MAX_STATISTIC && kStats[stat].kind != Kind::Sum; }

void set_counter(View &v, int phys, int stat, uint64_t value) {
    const int own = kStats[stat].kind == Kind::Same ? kStats[stat].parts[0] : stat;
    checkpoint(v.stats->ports[phys], port_full_duplex(v, phys), [&](CounterState &n) { n.c[own].base = value; });
}

void set_traffic(View &v, int phys, uint64_t pps) {
    checkpoint(v.stats->ports[phys], port_full_duplex(v, phys), [&](CounterState &n) { n.traffic_pps = pps; });
}

// ---- configuration setters ---------------------------------------------------------------

namespace {
// Applies a configuration change and lets the link follow it.
template <class Change>
int reconfigure(View &v, int iface, Change change) {
    if (!change(iface_cfg(v, iface))) return -1;
    if (!is_trunk_iface(iface)) refresh_port(v, iface / SW_PORTS_PER_UNIT, iface % SW_PORTS_PER_UNIT);
    lacp_reconcile(v);  // aggregates follow their links
    return 0;
}

uint32_t hw_caps_of(const View &v, int iface) {
    // Trunks take whatever their members can; any standard speed is accepted.
    return is_trunk_iface(iface) ? ~0u : v.hw->ports[iface].hw_caps;
}
}  // namespace

int set_port_speed(View &v, int iface, int mbps) {
    const uint32_t hw = hw_caps_of(v, iface);
    return reconfigure(v, iface, [&](IfaceConfig &c) {
        if (!speed_supported(hw, mbps)) return false;
        c.speed = uint32_t(mbps);
        c.autoneg = mbps == 0;
        return true;
    });
}

int set_port_autoneg(View &v, int iface, bool on) {
    if (on) return set_port_speed(v, iface, 0);
    const IfaceConfig &c = iface_cfg(v, iface);
    if (!c.autoneg) return 0;
    // Fixing the speed keeps what the link runs at now (or would run at).
    uint32_t speed;
    if (is_trunk_iface(iface)) {
        speed = 1000;
    } else {
        const sw_port_status_t &st = v.status->units[iface / SW_PORTS_PER_UNIT].ports[iface % SW_PORTS_PER_UNIT];
        speed = st.link ? st.speed : st.speed2;
        if (!speed) speed = max_speed(v.hw->ports[iface].hw_caps);
    }
    return set_port_speed(v, iface, int(speed));
}

int set_port_duplex(View &v, int iface, int full) {
    return reconfigure(v, iface, [&](IfaceConfig &c) {
        if (full != 0 && full != 1) return false;
        c.duplex = uint32_t(full);
        return true;
    });
}

int set_port_enable(View &v, int iface, int enabled) {
    return reconfigure(v, iface, [&](IfaceConfig &c) {
        if (enabled != 0 && enabled != 1) return false;
        c.admin = uint8_t(enabled);
        return true;
    });
}

int set_port_pause(View &v, int iface, int pause) {
    return reconfigure(v, iface, [&](IfaceConfig &c) {
        if (pause < 0 || pause > 3) return false;
        c.pause = uint32_t(pause);
        return true;
    });
}

int set_port_capabilities(View &v, int iface, uint32_t mask) {
    const uint32_t hw = hw_caps_of(v, iface);
    return reconfigure(v, iface, [&](IfaceConfig &c) {
        if ((mask & ~hw) != 0 || max_speed(mask) == 0) return false;
        c.caps = mask;
        return true;
    });
}

// ---- VLANs, identity, time -------------------------------------------------------------------

void raise_vlan_flags(View &v) {
    sw_status_t &s = *v.status;
    s.vlan_changed_stack[0] = s.vlan_changed_stack[1] = 1;
    s.vlan_changed_current = s.vlan_changed_static = s.vlan_changed_private = 1;
}

void hardware_hash(const View &v, uint8_t out[16]) {
    struct {
        uint32_t present[SW_MAX_UNITS];
        uint32_t ports[SW_MAX_UNITS];
        char model[SW_MAX_UNITS][32];
        char serial[SW_MAX_UNITS][32];
    } hw{};
    for (int u = 0; u < SW_MAX_UNITS; ++u) {
        const sw_unit_status_t &us = v.status->units[u];
        hw.present[u] = us.present ? 1 : 0;
        hw.ports[u] = us.user_ports;
        std::memcpy(hw.model[u], us.model, sizeof us.model);
        std::memcpy(hw.serial[u], us.serial, sizeof us.serial);
    }
    hash16(&hw, sizeof hw, out);
}

void status_hash(const View &v, uint8_t out[16]) { hash16(v.status, sizeof *v.status, out); }

uint64_t monotonic_ns() {
    struct timespec ts {};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return uint64_t(ts.tv_sec) * 1'000'000'000ull + uint64_t(ts.tv_nsec);
}

int64_t realtime_ns() {
    struct timespec ts {};
    clock_gettime(CLOCK_REALTIME, &ts);
    return int64_t(ts.tv_sec) * 1'000'000'000 + ts.tv_nsec;
}

uint64_t ns_since(int64_t then) {
    const int64_t now = realtime_ns();
    return now > then ? uint64_t(now) - uint64_t(then) : 0;
}

}  // namespace swsim::model
