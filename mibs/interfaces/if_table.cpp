// The interfaces group: ifTable, ifXTable and ifStackTable, and the scalars
// ifTableLastChange and ifStackLastChange (ifNumber lives with the index
// model).  Rows are interface indexes; a trunk is addressed in the platform
// as unit0 0, port0 512 + trunk0, and VLAN interfaces have no counters.
#include <array>
#include <cstring>

#include "agent/ifindex.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "swplatform/statistics.hpp"
#include "swplatform/records.hpp"
#include "tables/catalogue.hpp"

namespace {

constexpr int kConfigLock = 2;

using namespace swp::stat;  // the platform's statistic numbers

// The trunk range as the interface texts (and the setters that follow them)
// test it, one below the conversions' 513 .. 640.
bool text_trunk(int32_t i) { return i >= 512 && i <= 639; }
// The trunk an index stands for where a trunk is expected: 513 and up count
// from trunk0 0; anything lower is taken as trunk (index - 1), so 512 names
// trunk0 511, which the platform does not have.
int trunk_of(int32_t i) { return ifindex_is_trunk(i) ? ifindex_to_trunk0(i) : index_minus(i, 1); }
int32_t vid_of(int32_t i) { return index_minus(i, 1000); }

struct Port {
    int unit0, port0;
    explicit Port(int32_t ifindex) : unit0(ifindex_to_unit0(ifindex)), port0(ifindex_to_port0(ifindex)) {}
};

uint32_t counter32(int32_t i, int stat) { return ifindex_stat_low32(i, stat); }

uint64_t counter64(int32_t i, int stat) {
    uint64_t value = 0;
    if (ifindex_is_vlan(i)) return value;
    const Port p(i);
    bcmd_snmp_stat_get(p.unit0, p.port0, stat, &value);
    return value;
}

// ---- speeds ----------------------------------------------------------------

constexpr uint32_t kSpeedCap = 4294967295u;  // ifSpeed of anything faster than a Gauge32 holds
constexpr uint32_t kTrunkCapMbps = 4000;      // a trunk above this reports kSpeedCap

struct PortSpeed {
    uint32_t mbps, if_speed;
};
constexpr std::array<PortSpeed, 4> kPortSpeeds{{{10, 10000000}, {100, 100000000}, {1000, 1000000000}, {10000, kSpeedCap}}};

const sw_port_status_t *port_status(int unit0, int port0) {
    const sw_status_t *st = get_status();
    if (st == nullptr || unit0 < 0 || unit0 >= SW_MAX_UNITS || port0 < 0 || port0 >= SW_PORTS_PER_UNIT) return nullptr;
    return &st->units[unit0].ports[port0];
}

// A port's speed in Mbit/s: the current speed while the link is up, the
// second speed word while it is down.
uint32_t port_mbps(int unit0, int port0) {
    const sw_port_status_t *ps = port_status(unit0, port0);
    if (ps == nullptr) return 0;
    return ps->link != 0 ? ps->speed : ps->speed2;
}

// The members of a trunk whose link is up, their speeds added (Mbit/s).
uint64_t trunk_mbps(int trunk0) {
    const uint8_t *image = cfg_get_cfg();
    uint64_t sum = 0;
    if (image == nullptr || trunk0 < 0 || trunk0 >= SW_MAX_TRUNKS) return sum;
    for (int unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0) {
        if (!ifindex_unit_present(unit0)) continue;
        for (int port0 = 0; port0 < unit_port_count(unit0) && port0 < SW_PORTS_PER_UNIT; ++port0) {
            const sw_port_status_t *ps = port_status(unit0, port0);
            if (swp::cfg_image::trunk_has_member(image, trunk0, unit0, port0) && ps->link != 0) sum += ps->speed;
        }
    }
    return sum;
}

// ---- stack -----------------------------------------------------------------

constexpr uint32_t kStackMembership = 0x1f3;  // every membership but forbidden
constexpr int kLastWalkedVlan = 4093;          // 4094 is never walked

bool vlan_member(int32_t port_ifindex, int vid) {
    uint32_t flags = 0;
    const Port p(port_ifindex);
    return cfg_get_vlan_port_member(p.unit0, p.port0, vid, &flags) == 0 && (flags & kStackMembership) != 0;
}

// A platform yes/no answer; a failure (negative) is no.
bool yes(int answer) { return answer > 0; }

void add_vlan_layer(void *(*create)(int32_t, int32_t), int vid) {
    ifindex_for_each_port([&](int unit0, int port0) {
        const int32_t lower = port_to_ifindex(unit0, port0);
        if (vlan_member(lower, vid)) create(1000 + vid, lower);
    });
}

// ---- texts -----------------------------------------------------------------

template <size_t N>
const uint8_t *text_result(char (&buf)[N], size_t *len) {
    buf[N - 1] = '\0';
    *len = std::strlen(buf);
    return reinterpret_cast<const uint8_t *>(buf);
}

}  // namespace

extern "C" {

// ---- ifTable ---------------------------------------------------------------

int init_index_ifTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_ifTable(int32_t i) { return ifindex_row_exists(i, ifTable_removeEntry); }

int32_t get_ifIndex(int32_t i) { return i; }

int32_t get_ifType(int32_t i) {
    if (ifindex_is_vlan(i)) return 135;  // l2vlan
    return text_trunk(i) ? 161 : 6;      // ieee8023adLag, ethernetCsmacd
}

int32_t get_ifMtu(int32_t i) {
    if (ifindex_is_vlan(i)) return 0;
    const Port p(i);
    const int mtu = cfg_get_port_mtu(p.unit0, p.port0);
    return mtu > 0 ? mtu : 0;
}

uint32_t get_ifSpeed(int32_t i) {
    if (ifindex_is_vlan(i)) return 0;
    if (ifindex_is_trunk(i)) {
        const uint64_t mbps = trunk_mbps(ifindex_to_trunk0(i));
        return mbps > kTrunkCapMbps ? kSpeedCap : uint32_t(mbps * 1000000u);
    }
    const Port p(i);
    const uint32_t mbps = port_mbps(p.unit0, p.port0);
    for (const PortSpeed &s : kPortSpeeds)
        if (s.mbps == mbps) return s.if_speed;
    return 0;
}

const uint8_t *get_ifPhysAddress(int32_t i, size_t *len) {
    static uint8_t mac[6];
    std::memset(mac, 0, sizeof mac);
    *len = sizeof mac;
    if (ifindex_is_vlan(i)) {
        cfg_get_unit_mac(0, mac);
        return mac;
    }
    const Port p(i);
    if (cfg_get_port_mac(p.unit0, p.port0, mac) < 0) *len = 0;
    return mac;
}

int32_t get_ifAdminStatus(int32_t i) {
    if (ifindex_is_vlan(i)) return cfg_vlan_is_active(vid_of(i)) != 0 ? 1 : 2;
    const Port p(i);
    int enabled = 0;
    cfg_get_port_enabled(p.unit0, p.port0, &enabled);
    return enabled != 0 ? 1 : 2;
}

// A trunk is switched through its port address in one call, as a port is;
// it must be configured first.
int set_ifAdminStatus(int32_t i, int32_t value) {
    if (ifindex_is_vlan(i)) return -1;
    if (text_trunk(i) && cfg_check_trunk(trunk_of(i)) == 0) return -1;
    if (value != 1 && value != 2) return -1;
    const Port p(i);
    return cfg_set_port_enabled(p.unit0, p.port0, value == 1 ? 1 : 0);
}

// 1 up, 2 down, 4 unknown (no answer), 5 dormant: a trunk with no member
// up, or a port blocked by an error condition.
int32_t get_ifOperStatus(int32_t i) {
    const Port p(i);
    sw_port_info_t info{};
    if (bcmd_get_port_info(p.unit0, p.port0, &info) < 0) return 4;
    if (info.link == 0) return 2;
    if (ifindex_is_trunk(i)) return cfg_trunk_count_link_up(ifindex_to_trunk0(i)) != 0 ? 1 : 5;
    return cfg_port_is_error_blocked(p.unit0, p.port0) != 0 ? 5 : 1;
}

uint32_t get_ifLastChange(int32_t) { return 0; }

uint32_t get_ifInOctets(int32_t i) { return counter32(i, kInOctets); }
uint32_t get_ifInUcastPkts(int32_t i) { return counter32(i, kInUcast); }
uint32_t get_ifInNUcastPkts(int32_t i) { return counter32(i, kInNUcast); }
uint32_t get_ifInDiscards(int32_t i) { return counter32(i, kInDiscards); }
uint32_t get_ifInErrors(int32_t i) { return counter32(i, kInErrors); }
uint32_t get_ifInUnknownProtos(int32_t i) { return counter32(i, kInUnknownProtos); }
uint32_t get_ifOutOctets(int32_t i) { return counter32(i, kOutOctets); }
uint32_t get_ifOutUcastPkts(int32_t i) { return counter32(i, kOutUcast); }
uint32_t get_ifOutNUcastPkts(int32_t i) { return counter32(i, kOutNUcast); }
uint32_t get_ifOutDiscards(int32_t i) { return counter32(i, kOutDiscards); }
uint32_t get_ifOutErrors(int32_t i) { return counter32(i, kOutErrors); }
uint32_t get_ifOutQLen(int32_t i) { return counter32(i, kOutQLen); }

const uint32_t *get_ifSpecific(int32_t, size_t *len) {
    static const uint32_t zero_dot_zero[2] = {0, 0};
    *len = sizeof zero_dot_zero;
    return zero_dot_zero;
}

// ---- ifXTable --------------------------------------------------------------

int init_index_ifXTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_ifXTable(int32_t i) { return ifindex_row_exists(i, ifXTable_removeEntry); }

uint32_t get_ifInMulticastPkts(int32_t i) { return counter32(i, kHCInMulticast); }
uint32_t get_ifInBroadcastPkts(int32_t i) { return counter32(i, kHCInBroadcast); }
uint32_t get_ifOutMulticastPkts(int32_t i) { return counter32(i, kHCOutMulticast); }
uint32_t get_ifOutBroadcastPkts(int32_t i) { return counter32(i, kHCOutBroadcast); }
uint64_t get_ifHCInOctets(int32_t i) { return counter64(i, kHCInOctets); }
uint64_t get_ifHCInUcastPkts(int32_t i) { return counter64(i, kHCInUcast); }
uint64_t get_ifHCInMulticastPkts(int32_t i) { return counter64(i, kHCInMulticast); }
uint64_t get_ifHCInBroadcastPkts(int32_t i) { return counter64(i, kHCInBroadcast); }
uint64_t get_ifHCOutOctets(int32_t i) { return counter64(i, kHCOutOctets); }
uint64_t get_ifHCOutUcastPkts(int32_t i) { return counter64(i, kHCOutUcast); }
uint64_t get_ifHCOutMulticastPkts(int32_t i) { return counter64(i, kHCOutMulticast); }
uint64_t get_ifHCOutBroadcastPkts(int32_t i) { return counter64(i, kHCOutBroadcast); }

int32_t get_ifLinkUpDownTrapEnable(int32_t i) {
    const Port p(i);
    uint8_t enabled = 0;
    cfg_get_trap_enable_port(p.unit0, p.port0, &enabled);
    return enabled != 0 ? 1 : 2;
}
int set_ifLinkUpDownTrapEnable(int32_t i, int32_t value) {
    if (ifindex_is_vlan(i) || (value != 1 && value != 2)) return -1;
    const Port p(i);
    return cfg_set_trap_enable_port(p.unit0, p.port0, value == 1 ? 1 : 0);
}

// Mbit/s; a trunk's sum is not capped here.
uint32_t get_ifHighSpeed(int32_t i) {
    if (ifindex_is_vlan(i)) return 0;
    if (ifindex_is_trunk(i)) return uint32_t(trunk_mbps(ifindex_to_trunk0(i)));
    const Port p(i);
    const uint32_t mbps = port_mbps(p.unit0, p.port0);
    for (const PortSpeed &s : kPortSpeeds)
        if (s.mbps == mbps) return mbps;
    return 0;
}

// Ports always see every frame; the mode cannot be changed.
int32_t get_ifPromiscuousMode(int32_t) { return 1; }
int set_ifPromiscuousMode(int32_t, int32_t) { return -1; }

int32_t get_ifConnectorPresent(int32_t) { return 1; }

// A VLAN interface's alias is the VLAN's name; a port's or trunk's is its
// description.
const uint8_t *get_ifAlias(int32_t i, size_t *len) {
    static char alias[SW_TEXT_SIZE];
    alias[0] = '\0';
    if (ifindex_is_vlan(i)) {
        cfg_get_vlan_name(vid_of(i), alias, sizeof alias);
    } else {
        const Port p(i);
        cfg_get_port_description(p.unit0, p.port0, alias, sizeof alias);
    }
    return text_result(alias, len);
}
int set_ifAlias(int32_t i, const uint8_t *bytes, size_t len) {
    const std::string text = received_text(bytes, len);
    if (ifindex_is_vlan(i)) {
        if (cfg_vlan_exists(vid_of(i)) == 0) return -1;
        return cfg_set_vlan_name(vid_of(i), text.c_str());
    }
    if (text_trunk(i) && cfg_check_trunk(trunk_of(i)) == 0) return -1;
    const Port p(i);
    return cfg_set_port_description(p.unit0, p.port0, text.c_str());
}

uint32_t get_ifCounterDiscontinuityTime(int32_t) { return 0; }

// ---- ifStackTable ----------------------------------------------------------

// Trunks over their member ports, VLAN 1 over its members; the other VLANs
// only after the platform reports a change of the VLAN set.  That walk is
// long, so it runs without the configuration lock the caller holds (taken
// back afterwards if it was held).
int init_index_ifStackTable(void *(*create)(int32_t, int32_t)) {
    for (int trunk0 = 0; trunk0 < SW_MAX_TRUNKS; ++trunk0) {
        if (!yes(cfg_check_trunk(trunk0))) continue;
        ifindex_for_each_port(
            [&](int unit0, int port0) {
                if (yes(cfg_check_port_tid(unit0, port0, trunk0)))
                    create(trunk_to_ifindex(trunk0), port_to_ifindex(unit0, port0));
            },
            PortCount::once_per_unit);
    }
    if (yes(cfg_vlan_exists(1))) add_vlan_layer(create, 1);

    sw_status_t *st = get_status();
    if (st == nullptr || (st->vlan_changed_stack[0] == 0 && st->vlan_changed_stack[1] == 0)) return 0;
    st->vlan_changed_stack[0] = st->vlan_changed_stack[1] = 0;
    const bool was_locked = lock_free(cfg_lock_table[kConfigLock]) == 0;
    for (int vid = 2; vid <= kLastWalkedVlan; ++vid)
        if (yes(cfg_vlan_exists(vid))) add_vlan_layer(create, vid);
    if (was_locked) lock_read(cfg_lock_table[kConfigLock]);
    return 0;
}

// A VLAN layer lasts while the VLAN exists and the lower port is still one of
// its members; a trunk layer while the trunk exists and holds the port.  The
// higher index of a trunk layer is taken as a trunk from 513 up, and as
// trunk (index - 1) below.
int exists_entry_ifStackTable(int32_t higher, int32_t lower) {
    bool exists;
    if (ifindex_is_vlan(higher)) {
        exists = yes(cfg_vlan_exists(vid_of(higher))) && vlan_member(lower, vid_of(higher));
    } else {
        const int trunk0 = trunk_of(higher);
        const Port p(lower);
        exists = yes(cfg_check_trunk(trunk0)) && yes(cfg_check_port_tid(p.unit0, p.port0, trunk0));
    }
    if (!exists) ifStackTable_removeEntry(higher, lower);
    return exists ? 1 : 0;
}

// 1 active; a VLAN layer of an inactive VLAN is 3 (notInService).
int32_t get_ifStackStatus(int32_t higher, int32_t) {
    if (!ifindex_is_vlan(higher)) return 1;
    return cfg_vlan_is_active(vid_of(higher)) != 0 ? 1 : 3;
}
// The layering follows the configuration of trunks and VLANs.
int set_ifStackStatus(int32_t, int32_t, int32_t) { return -1; }

// ---- Scalars ---------------------------------------------------------------

uint32_t get_ifTableLastChange(void) { return uptime_ifTableLastChange; }
uint32_t get_ifStackLastChange(void) { return 0; }

}  // extern "C"
