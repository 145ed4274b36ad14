// LLDP of the simulated switch: settings, the neighbour table and the
// counters.
//
// Neighbours live in a fixed pool in the hardware section; owner[] says
// which LLDP port holds each slot, so a port's neighbours are found without
// reading the records.  Every change of the neighbours moves the
// generation word, which the status hash shows.  Counters are not kept per
// frame: a port sends one frame per transmit interval while LLDP sends
// there, and receives one per neighbour and that neighbour's own interval
// (the first on the moment it is heard).
#include "lldp.hpp"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <tuple>
#include <utility>
#include <vector>

#include "model.hpp"
#include "swplatform/records_lldp.hpp"
#include "util.hpp"

namespace swsim::lldp {
namespace {

using layout::kLldpMgmtSlot;
using layout::kLldpNeighbours;
using Stored = layout::LldpNeighbour;
namespace nb = swp::lldp_neighbor;

constexpr uint64_t kNsPerS = 1'000'000'000;

[[noreturn]] void fail(const std::string &what) { throw Error(what); }

layout::LldpConfig &cfg(const View &v) { return v.cfg->lldp; }
layout::LldpHardware &hw(const View &v) { return v.hw->lldp; }

uint32_t uptime_cs(const View &v) { return uint32_t(model::ns_since(v.rt->boot_realtime_ns) / 10'000'000); }

// The LLDP port of a user port the platform calls address; -1 when none.
int slot_at(const View &v, int unit0, int port0) { return model::phys_of(v, unit0, port0); }

std::string slot_name(int slot) {
    return slot == kLldpMgmtSlot ? "the management port"
                                 : "port " + port_name(slot / SW_PORTS_PER_UNIT, slot % SW_PORTS_PER_UNIT);
}

// Calls fn(i, neighbour) for each neighbour of an LLDP port, in pool order.
template <class Fn>
void for_each_at(const View &v, int slot, Fn fn) {
    layout::LldpHardware &h = hw(v);
    for (int i = 0; i < kLldpNeighbours; ++i)
        if (h.owner[i] == slot + 1) fn(i, h.neighbours[i]);
}

// ---- counters -----------------------------------------------------------------------------

bool transmits(uint8_t admin) { return admin == SW_LLDP_TX_ONLY || admin == SW_LLDP_TX_AND_RX; }

uint64_t interval_ns(const View &v) { return uint64_t(std::max(cfg(v).tx_interval, 1)) * kNsPerS; }

// Frames a port has sent since its counting point.
uint64_t tx_frames(const View &v, int slot) {
    if (!transmits(cfg(v).ports[slot].admin)) return 0;
    return model::ns_since(hw(v).counters[slot].tx_since_ns) / interval_ns(v);
}

// Before a port's sending or the interval changes: what it sent so far goes
// into the base, and counting goes on from there (the part of an interval
// already gone is kept).
void fold_tx(const View &v, int slot) {
    layout::LldpPortCounters &c = hw(v).counters[slot];
    const uint64_t n = tx_frames(v, slot);
    c.tx_base += uint32_t(n);
    if (transmits(cfg(v).ports[slot].admin))
        c.tx_since_ns += int64_t(n * interval_ns(v));
    else
        c.tx_since_ns = model::realtime_ns();
}

// Frames received from one neighbour: the one it was heard by, then one per
// its interval.
uint64_t rx_frames(const Stored &n) {
    return model::ns_since(n.since_ns) / (uint64_t(std::max<uint16_t>(n.rx_interval_s, 1)) * kNsPerS) + 1;
}

// Before a neighbour goes or changes: its frames go into the port's bases.
void fold_rx(const View &v, int slot, const Stored &n) {
    layout::LldpPortCounters &c = hw(v).counters[slot];
    const uint64_t frames = rx_frames(n);
    c.rx_base += uint32_t(frames);
    if (n.unknown_tlv_type != 0) c.tlvs_unrecognized_base += uint32_t(frames);
}

void counters_record(const View &v, int slot, uint8_t *record) {
    namespace w = swp::lldp_counters;
    const layout::LldpPortCounters &c = hw(v).counters[slot];
    uint64_t rx = c.rx_base, unrecognized = c.tlvs_unrecognized_base;
    for_each_at(v, slot, [&](int, const Stored &n) {
        const uint64_t frames = rx_frames(n);
        rx += frames;
        if (n.unknown_tlv_type != 0) unrecognized += frames;
    });
    swp::store_word(record, w::kTxFramesTotal, uint32_t(c.tx_base + tx_frames(v, slot)));
    swp::store_word(record, w::kRxFramesDiscarded, c.rx_discarded);
    swp::store_word(record, w::kRxFramesErrors, c.rx_errors);
    swp::store_word(record, w::kRxFramesTotal, uint32_t(rx));
    swp::store_word(record, w::kRxTlvsDiscarded, c.tlvs_discarded);
    swp::store_word(record, w::kRxTlvsUnrecognized, uint32_t(unrecognized));
    swp::store_word(record, w::kRxAgeouts, c.ageouts);
}

// ---- neighbours -----------------------------------------------------------------------------

// A change of the neighbours: the hash moves, the remote tables changed now.
void touch(const View &v) {
    ++hw(v).generation;
    hw(v).last_change_cs = uptime_cs(v);
}

template <std::size_t N>
void take_octets(uint8_t (&dst)[N], const std::string &src) {
    std::memset(dst, 0, N);
    std::memcpy(dst, src.data(), std::min(src.size(), N));
}
template <std::size_t N>
std::string octets_of(const uint8_t (&src)[N], std::size_t len) {
    return std::string(reinterpret_cast<const char *>(src), std::min(len, N));
}

void check(const Neighbour &n) {
    auto range = [](long long value, long long lo, long long hi, const std::string &what) {
        if (value < lo || value > hi)
            fail(what + " " + std::to_string(value) + " is not " + std::to_string(lo) + ".." + std::to_string(hi));
    };
    auto length = [](const std::string &s, std::size_t lo, std::size_t hi, const std::string &what) {
        if (s.size() < lo || s.size() > hi)
            fail(what + " has " + std::to_string(s.size()) + " octets (" + std::to_string(lo) + ".." +
                 std::to_string(hi) + ")");
    };
    range(n.chassis_subtype, 1, 7, "chassis ID subtype");
    length(n.chassis_id, 1, nb::kChassisId.size, "the chassis ID");
    if (n.chassis_subtype == 4 && n.chassis_id.size() != 6) fail("a MAC chassis ID (subtype 4) has 6 octets");
    range(n.port_subtype, 1, 7, "port ID subtype");
    length(n.port_id, 1, nb::kPortId.size, "the port ID");
    length(n.port_desc, 0, nb::kPortDesc.size - 1, "the port description");
    length(n.sys_name, 0, nb::kSysName.size - 1, "the system name");
    length(n.sys_desc, 0, nb::kSysDesc.size - 1, "the system description");
    for (const std::string *s : {&n.port_desc, &n.sys_name, &n.sys_desc})
        if (s->find('\0') != std::string::npos) fail("texts hold no zero octet");
    if (n.has_mgmt) {
        range(n.mgmt_subtype, 1, 255, "management address subtype");
        length(n.mgmt_addr, 1, nb::kMgmtAddr.size, "the management address");
        range(n.mgmt_if_subtype, 1, 3, "management interface numbering");
    }
    if (n.unknown_tlv_type != 0) range(n.unknown_tlv_type, 9, 127, "unknown TLV type");
    length(n.unknown_tlv_info, 0, n.unknown_tlv_type ? nb::kUnknownTlvInfo.size : 0, "the unknown TLV's information");
    range(n.rx_interval_s, 1, 3600, "the neighbour's interval");
}

void store(Stored &s, const Neighbour &n) {
    s.chassis_subtype = uint16_t(n.chassis_subtype);
    take_octets(s.chassis_id, n.chassis_id);
    s.chassis_id_len = uint8_t(n.chassis_id.size());
    s.port_subtype = uint16_t(n.port_subtype);
    take_octets(s.port_id, n.port_id);
    s.port_id_len = uint8_t(n.port_id.size());
    copy_text(s.port_desc, n.port_desc);
    copy_text(s.sys_name, n.sys_name);
    copy_text(s.sys_desc, n.sys_desc);
    s.caps_supported = n.caps_supported;
    s.caps_enabled = n.caps_enabled;
    s.mgmt_present = n.has_mgmt ? 1 : 0;
    s.mgmt_subtype = n.has_mgmt ? uint8_t(n.mgmt_subtype) : 0;
    take_octets(s.mgmt_addr, n.has_mgmt ? n.mgmt_addr : std::string());
    s.mgmt_addr_len = n.has_mgmt ? uint8_t(n.mgmt_addr.size()) : 0;
    s.mgmt_if_subtype = n.has_mgmt ? uint8_t(n.mgmt_if_subtype) : 0;
    s.mgmt_if_id = n.has_mgmt ? n.mgmt_if_id : 0;
    s.unknown_tlv_type = uint8_t(n.unknown_tlv_type);
    take_octets(s.unknown_tlv_info, n.unknown_tlv_info);
    s.unknown_tlv_len = uint16_t(n.unknown_tlv_type ? n.unknown_tlv_info.size() : 0);
    s.rx_interval_s = uint16_t(n.rx_interval_s);
}

Neighbour loaded(const Stored &s) {
    Neighbour n;
    n.chassis_subtype = s.chassis_subtype;
    n.chassis_id = octets_of(s.chassis_id, s.chassis_id_len);
    n.port_subtype = s.port_subtype;
    n.port_id = octets_of(s.port_id, s.port_id_len);
    n.port_desc = text_of(s.port_desc);
    n.sys_name = text_of(s.sys_name);
    n.sys_desc = text_of(s.sys_desc);
    n.caps_supported = s.caps_supported;
    n.caps_enabled = s.caps_enabled;
    n.has_mgmt = s.mgmt_present != 0;
    n.mgmt_subtype = s.mgmt_subtype;
    n.mgmt_addr = octets_of(s.mgmt_addr, s.mgmt_addr_len);
    n.mgmt_if_subtype = s.mgmt_if_subtype;
    n.mgmt_if_id = s.mgmt_if_id;
    n.unknown_tlv_type = s.unknown_tlv_type;
    n.unknown_tlv_info = octets_of(s.unknown_tlv_info, s.unknown_tlv_len);
    n.rx_interval_s = s.rx_interval_s;
    n.remote_index = s.remote_index;
    n.time_mark = s.time_mark;
    return n;
}

// What a neighbour announces, its bookkeeping left out, as it is stored
// (fields that do not apply read as cleared).
bool same_announcement(const Stored &s, const Neighbour &n) {
    Stored heard{};
    store(heard, n);
    auto key = [](const Neighbour &x) {
        return std::tie(x.chassis_subtype, x.chassis_id, x.port_subtype, x.port_id, x.port_desc, x.sys_name, x.sys_desc,
                        x.caps_supported, x.caps_enabled, x.has_mgmt, x.mgmt_subtype, x.mgmt_addr, x.mgmt_if_subtype,
                        x.mgmt_if_id, x.unknown_tlv_type, x.unknown_tlv_info, x.rx_interval_s);
    };
    const Neighbour a = loaded(s), b = loaded(heard);
    return key(a) == key(b);
}

bool same_identity(const Stored &s, const Neighbour &n) {
    return s.chassis_subtype == n.chassis_subtype && octets_of(s.chassis_id, s.chassis_id_len) == n.chassis_id &&
           s.port_subtype == n.port_subtype && octets_of(s.port_id, s.port_id_len) == n.port_id;
}

// Pool position of a port's neighbour; -1 when it has none of that index.
int find(const View &v, int slot, int32_t remote_index) {
    int at = -1;
    for_each_at(v, slot, [&](int i, const Stored &s) {
        if (s.remote_index == remote_index) at = i;
    });
    return at;
}

// The neighbour at pool position i announces n from now on.
void announce(View &v, int slot, int i, const Neighbour &n) {
    Stored &s = hw(v).neighbours[i];
    fold_rx(v, slot, s);
    store(s, n);
    s.time_mark = uptime_cs(v);
    s.since_ns = model::realtime_ns();
    touch(v);
}

// A port's neighbours as records, by remote index, in a malloc'ed array.
int give_neighbours(const View &v, int slot, uint8_t **records, int *count) {
    if (slot < 0 || !records || !count) return -1;
    std::vector<std::pair<int32_t, int>> order;
    for_each_at(v, slot, [&](int i, const Stored &s) { order.emplace_back(s.remote_index, i); });
    std::sort(order.begin(), order.end());
    uint8_t *out = nullptr;
    if (!order.empty()) {
        out = static_cast<uint8_t *>(std::malloc(order.size() * nb::kSize));
        if (!out) return -1;
        for (std::size_t k = 0; k < order.size(); ++k) nb::encode(hw(v).neighbours[order[k].second], out + k * nb::kSize);
    }
    *records = out;
    *count = int(order.size());
    return 0;
}

int give_intf(const View &v, int slot, uint8_t *record) {
    if (slot < 0 || !record) return -1;
    const layout::LldpPortConfig &p = cfg(v).ports[slot];
    swp::lldp_intf::Record r;
    r.admin_status = p.admin;
    r.notify = p.notify;
    r.tlvs = p.tlvs;
    if (slot == kLldpMgmtSlot) {
        copy_text(r.port_id, sizeof r.port_id, "mgmt");
        copy_text(r.mgmt_desc, sizeof r.mgmt_desc, cfg(v).mgmt_port_desc);
    } else {
        copy_text(r.port_id, sizeof r.port_id, port_name(slot / SW_PORTS_PER_UNIT, slot % SW_PORTS_PER_UNIT).c_str());
    }
    swp::lldp_intf::encode(r, record);
    return 0;
}

int give_counters(const View &v, int slot, uint8_t *record) {
    if (slot < 0 || !record) return -1;
    counters_record(v, slot, record);
    return 0;
}

// ---- per-port settings ---------------------------------------------------------------------

int set_admin(const View &v, int slot, int status) {
    if (slot < 0 || status < SW_LLDP_TX_ONLY || status > SW_LLDP_DISABLED) return -1;
    fold_tx(v, slot);
    cfg(v).ports[slot].admin = uint8_t(status);
    return 0;
}
int set_notify(const View &v, int slot, int on) {
    if (slot < 0 || (on != 0 && on != 1)) return -1;
    cfg(v).ports[slot].notify = uint8_t(on);
    return 0;
}
int set_tlv(const View &v, int slot, uint8_t bit, int on) {
    if (slot < 0 || (on != 0 && on != 1)) return -1;
    uint8_t &tlvs = cfg(v).ports[slot].tlvs;
    tlvs = on ? uint8_t(tlvs | bit) : uint8_t(tlvs & ~bit);
    return 0;
}

// ---- timers ------------------------------------------------------------------------------------

struct Timer {
    int32_t layout::LldpConfig::*field;
    int lo, hi, factory;
};
constexpr Timer kTxInterval{&layout::LldpConfig::tx_interval, 5, 32768, 30};
constexpr Timer kTxHold{&layout::LldpConfig::tx_hold, 2, 10, 4};
constexpr Timer kReinitDelay{&layout::LldpConfig::reinit_delay, 1, 10, 2};
constexpr Timer kTxDelay{&layout::LldpConfig::tx_delay, 1, 8192, 2};
constexpr Timer kNotificationInterval{&layout::LldpConfig::notification_interval, 5, 3600, 5};

int get_timer(const View &v, const Timer &t) { return cfg(v).*t.field; }
int set_timer(const View &v, const Timer &t, int value) {
    if (value < t.lo || value > t.hi) return -1;
    // Frames sent so far were sent at the interval of their time.
    if (t.field == kTxInterval.field)
        for (int slot = 0; slot < layout::kLldpPorts; ++slot) fold_tx(v, slot);
    cfg(v).*t.field = value;
    return 0;
}

// The OID of the switch's management address as BER (tag, length,
// contents); throws when it does not fit the record.
void encode_oid(const std::vector<uint32_t> &subids, uint8_t *out, uint8_t &len) {
    constexpr std::size_t kRoom = swp::lldp_global::kMgmtOid.size;
    if (subids.size() < 2 || subids[0] > 2 || (subids[0] < 2 && subids[1] >= 40))
        fail("an OID starts with 0, 1 or 2 and then, under 0 and 1, a number below 40");
    std::vector<uint8_t> content;
    auto put = [&](uint64_t x) {
        uint8_t groups[10];
        int n = 0;
        do groups[n++] = uint8_t(x & 0x7f);
        while ((x >>= 7) != 0);
        while (n-- > 0) content.push_back(uint8_t(groups[n] | (n ? 0x80 : 0)));
    };
    put(uint64_t(subids[0]) * 40 + subids[1]);
    for (std::size_t i = 2; i < subids.size(); ++i) put(subids[i]);
    if (content.size() + 2 > kRoom) fail("the OID takes more than " + std::to_string(kRoom) + " octets");
    std::memset(out, 0, kRoom);
    out[0] = 6;
    out[1] = uint8_t(content.size());
    std::memcpy(out + 2, content.data(), content.size());
    len = uint8_t(content.size() + 2);
}

}  // namespace

// ---- the platform calls ------------------------------------------------------------------

namespace calls {

int cfg_get_lldp_global_info(const View &v, uint8_t *record) {
    if (!record) return -1;
    const layout::LldpConfig &c = cfg(v);
    swp::lldp_global::Record r;
    std::memcpy(r.chassis_mac, v.cfg->unit_mac[0], 6);
    r.mgmt_ipv4 = c.mgmt_ipv4;
    r.mgmt_is_mac = c.mgmt_is_mac;
    r.mgmt_if_id = c.mgmt_if_id;
    std::memcpy(r.mgmt_oid, c.mgmt_oid, sizeof r.mgmt_oid);
    r.mgmt_oid_len = std::min<uint8_t>(c.mgmt_oid_len, uint8_t(sizeof r.mgmt_oid));
    copy_text(r.sys_desc, sizeof r.sys_desc, c.sys_desc);
    r.caps_supported = c.caps_supported;
    r.caps_enabled = c.caps_enabled;
    swp::lldp_global::encode(r, record);
    return 0;
}

int cfg_get_lldp_global_stats_info(const View &v, uint8_t *record) {
    namespace w = swp::lldp_global_stats;
    if (!record) return -1;
    const layout::LldpHardware &h = hw(v);
    swp::store_word(record, w::kLastChangeTime, h.last_change_cs);
    swp::store_word(record, w::kInserts, h.inserts);
    swp::store_word(record, w::kDeletes, h.deletes);
    swp::store_word(record, w::kDrops, h.drops);
    swp::store_word(record, w::kAgeouts, h.ageouts);
    return 0;
}

int cfg_get_lldp_intf_info(const View &v, int unit0, int port0, uint8_t *record) {
    return give_intf(v, slot_at(v, unit0, port0), record);
}
int cfg_get_lldp_intf_mgmt_info(const View &v, uint8_t *record) { return give_intf(v, kLldpMgmtSlot, record); }
int cfg_get_lldp_status_intf_counters(const View &v, int unit0, int port0, uint8_t *record) {
    return give_counters(v, slot_at(v, unit0, port0), record);
}
int cfg_get_lldp_mgmt_status_intf_counters(const View &v, uint8_t *record) {
    return give_counters(v, kLldpMgmtSlot, record);
}
int cfg_get_lldp_neighbors_info(const View &v, int unit0, int port0, uint8_t **records, int *count) {
    return give_neighbours(v, slot_at(v, unit0, port0), records, count);
}
int cfg_get_lldp_mgmt_neighbors_info(const View &v, uint8_t **records, int *count) {
    return give_neighbours(v, kLldpMgmtSlot, records, count);
}

// 48 hexadecimal digits and a zero: the neighbour generation, the switch's
// boot (a switch built anew starts another series) and the neighbour count.
int cfg_lldp_status_get_hash(const View &v, uint8_t *hash) {
    if (!hash) return -1;
    const layout::LldpHardware &h = hw(v);
    char text[64];
    std::snprintf(text, sizeof text, "%016" PRIx64 "%016" PRIx64 "%016" PRIx64, h.generation,
                  uint64_t(v.rt->boot_realtime_ns), uint64_t(h.count));
    std::memcpy(hash, text, SW_LLDP_HASH_SIZE);
    return 0;
}

// Each per-port setting has a management port variant.
#define SWSIM_LLDP_PORT_SETTING(name, set)                                                   \
    int cfg_set_lldp_port_##name(const View &v, int unit0, int port0, int value) {           \
        return set(v, slot_at(v, unit0, port0), value);                                      \
    }                                                                                        \
    int cfg_set_lldp_mgmt_port_##name(const View &v, int value) { return set(v, kLldpMgmtSlot, value); }
#define SWSIM_LLDP_TLV_SETTER(bit) [](const View &v, int slot, int on) { return set_tlv(v, slot, bit, on); }
SWSIM_LLDP_PORT_SETTING(adminStatus, set_admin)
SWSIM_LLDP_PORT_SETTING(notificationEnable, set_notify)
SWSIM_LLDP_PORT_SETTING(portDescEnable, SWSIM_LLDP_TLV_SETTER(SW_LLDP_TLV_PORT_DESC))
SWSIM_LLDP_PORT_SETTING(sysNameEnable, SWSIM_LLDP_TLV_SETTER(SW_LLDP_TLV_SYS_NAME))
SWSIM_LLDP_PORT_SETTING(sysDescEnable, SWSIM_LLDP_TLV_SETTER(SW_LLDP_TLV_SYS_DESC))
SWSIM_LLDP_PORT_SETTING(sysCapEnable, SWSIM_LLDP_TLV_SETTER(SW_LLDP_TLV_SYS_CAP))
#undef SWSIM_LLDP_TLV_SETTER
#undef SWSIM_LLDP_PORT_SETTING

#define SWSIM_LLDP_TIMER(name, timer)                                                        \
    int cfg_get_lldp_##name(const View &v) { return get_timer(v, timer); }                  \
    int cfg_set_lldp_##name(const View &v, int value) { return set_timer(v, timer, value); }
SWSIM_LLDP_TIMER(msgTxInterval, kTxInterval)
SWSIM_LLDP_TIMER(msgTxHold, kTxHold)
SWSIM_LLDP_TIMER(reinitDelay, kReinitDelay)
SWSIM_LLDP_TIMER(txDelay, kTxDelay)
SWSIM_LLDP_TIMER(notificationInterval, kNotificationInterval)
#undef SWSIM_LLDP_TIMER

}  // namespace calls

// ---- settings and changes --------------------------------------------------------------------

void defaults(View &v) {
    layout::LldpConfig &c = cfg(v);
    layout::LldpHardware &h = hw(v);
    for (const Timer *t : {&kTxInterval, &kTxHold, &kReinitDelay, &kTxDelay, &kNotificationInterval})
        c.*(t->field) = t->factory;
    const int64_t now = model::realtime_ns();
    for (int slot = 0; slot < layout::kLldpPorts; ++slot) {
        c.ports[slot] = layout::LldpPortConfig{SW_LLDP_TX_AND_RX, 0, 0x0f, 0};
        h.counters[slot].tx_since_ns = now;
    }
    copy_text(c.sys_desc, std::string(v.status->product) + " Ethernet switch, firmware " + v.status->fw_version);
    copy_text(c.mgmt_port_desc, std::string("Management port"));
    c.caps_supported = 1u << 2 | 1u << 4;  // bridge, router
    c.caps_enabled = 1u << 2;
    c.mgmt_is_mac = 0;
    c.mgmt_ipv4 = 0xc000020a;  // 192.0.2.10
    c.mgmt_if_id = 1001;       // the interface of VLAN 1
    encode_oid({1, 3, 6, 1, 2, 1, 2, 2, 1, 1}, c.mgmt_oid, c.mgmt_oid_len);  // ifIndex
    h.next_remote_index = 1;
}

namespace ops {

int slot_of(const View &v, int unit0, int port0) {
    if (unit0 == Switch::kLldpMgmtUnit) return kLldpMgmtSlot;
    model::ops::check_port(v, unit0, port0);
    return model::phys_index(unit0, port0);
}

int32_t hear(View &v, int slot, const Neighbour &n) {
    check(n);
    int known = -1;
    for_each_at(v, slot, [&](int i, const Stored &s) {
        if (same_identity(s, n)) known = i;
    });
    layout::LldpHardware &h = hw(v);
    if (known >= 0) {
        if (!same_announcement(h.neighbours[known], n)) announce(v, slot, known, n);
        return h.neighbours[known].remote_index;
    }
    const uint16_t *free = std::find(std::begin(h.owner), std::end(h.owner), uint16_t(0));
    if (free == std::end(h.owner)) {
        ++h.drops;
        fail("the neighbour table is full (" + std::to_string(kLldpNeighbours) + " neighbours): dropped");
    }
    const int i = int(free - h.owner);
    Stored &s = h.neighbours[i];
    s = Stored{};
    store(s, n);
    s.remote_index = h.next_remote_index;
    h.next_remote_index = h.next_remote_index >= INT32_MAX || h.next_remote_index < 1 ? 1 : h.next_remote_index + 1;
    s.time_mark = uptime_cs(v);
    s.since_ns = model::realtime_ns();
    h.owner[i] = uint16_t(slot + 1);
    ++h.count;
    ++h.inserts;
    touch(v);
    return s.remote_index;
}

void change(View &v, int slot, int32_t remote_index, const Neighbour &n) {
    check(n);
    const int at = find(v, slot, remote_index);
    if (at < 0) fail(slot_name(slot) + " has no neighbour " + std::to_string(remote_index));
    for_each_at(v, slot, [&](int i, const Stored &s) {
        if (i != at && same_identity(s, n))
            fail("neighbour " + std::to_string(s.remote_index) + " of " + slot_name(slot) +
                 " has these chassis and port IDs already");
    });
    announce(v, slot, at, n);
}

void remove(View &v, int slot, int32_t remote_index, bool aged) {
    layout::LldpHardware &h = hw(v);
    if (remote_index != 0 && find(v, slot, remote_index) < 0)
        fail(slot_name(slot) + " has no neighbour " + std::to_string(remote_index));
    int removed = 0;
    for_each_at(v, slot, [&](int i, Stored &s) {
        if (remote_index != 0 && s.remote_index != remote_index) return;
        fold_rx(v, slot, s);
        s = Stored{};
        h.owner[i] = 0;
        --h.count;
        ++h.deletes;
        ++removed;
        if (aged) {
            ++h.ageouts;
            ++h.counters[slot].ageouts;
        }
    });
    if (removed) touch(v);
}

void set_timers(View &v, int tx_interval, int tx_hold, int reinit_delay, int tx_delay, int notification_interval) {
    const std::pair<const Timer *, int> wanted[] = {{&kTxInterval, tx_interval},
                                                    {&kTxHold, tx_hold},
                                                    {&kReinitDelay, reinit_delay},
                                                    {&kTxDelay, tx_delay},
                                                    {&kNotificationInterval, notification_interval}};
    for (auto [t, value] : wanted)
        if (set_timer(v, *t, value) != 0)
            fail(std::to_string(value) + " is not " + std::to_string(t->lo) + ".." + std::to_string(t->hi));
}

void set_port(View &v, int slot, int admin, bool notify, unsigned tlvs) {
    if (tlvs > 0x0f) fail("TLV bits are 0x01 .. 0x08");
    if (set_admin(v, slot, admin) != 0) fail("admin status " + std::to_string(admin) + " is not 1..4");
    set_notify(v, slot, notify ? 1 : 0);
    cfg(v).ports[slot].tlvs = uint8_t(tlvs);
}

void set_management_oid(View &v, const std::vector<uint32_t> &subids) {
    encode_oid(subids, cfg(v).mgmt_oid, cfg(v).mgmt_oid_len);
}

}  // namespace ops

std::string config_damage(const View &v) {
    const layout::LldpConfig &c = cfg(v);
    if (!std::memchr(c.sys_desc, 0, sizeof c.sys_desc)) return "the LLDP system description runs past its field";
    if (!std::memchr(c.mgmt_port_desc, 0, sizeof c.mgmt_port_desc))
        return "the management port's description runs past its field";
    if (c.mgmt_oid_len > sizeof c.mgmt_oid)
        return "the LLDP management OID has " + std::to_string(c.mgmt_oid_len) + " octets (at most 128)";
    return "";
}

std::string hardware_damage(const View &v) {
    const layout::LldpHardware &h = hw(v);
    uint32_t held = 0;
    for (int i = 0; i < kLldpNeighbours; ++i) {
        if (h.owner[i] == 0) continue;
        ++held;
        const Stored &n = h.neighbours[i];
        const std::string who = "LLDP neighbour " + std::to_string(i);
        if (h.owner[i] > layout::kLldpPorts)
            return who + "'s port is " + std::to_string(h.owner[i]) + " (LLDP ports are 1 .. 513)";
        if (n.mgmt_addr_len > sizeof n.mgmt_addr || n.unknown_tlv_len > sizeof n.unknown_tlv_info)
            return who + " has a length beyond its field";
        for (const char *text : {n.port_desc, n.sys_name, n.sys_desc})
            if (!std::memchr(text, 0, nb::kSysDesc.size)) return who + " has a text that runs past its field";
        if (n.since_ns < 0) return who + " was heard before 1970";
    }
    if (held != h.count) return "the LLDP neighbour count is " + std::to_string(h.count) + " (" + std::to_string(held) + " held)";
    return "";
}

std::vector<Neighbour> neighbours(const View &v, int slot) {
    std::vector<Neighbour> out;
    for_each_at(v, slot, [&](int, const Stored &s) { out.push_back(loaded(s)); });
    std::sort(out.begin(), out.end(), [](const Neighbour &a, const Neighbour &b) { return a.remote_index < b.remote_index; });
    return out;
}

}  // namespace swsim::lldp
