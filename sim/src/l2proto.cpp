#include "l2proto.hpp"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "model.hpp"
#include "util.hpp"

namespace swsim::l2proto {
namespace {

static_assert(layout::kL2Ifaces == layout::kIfaces);

namespace groups = swp::igmp_groups;
using model::iface_of;

[[noreturn]] void fail(const std::string &what) { throw Error(what); }

layout::L2ProtoConfig &cfg(const View &v) { return v.cfg->l2proto; }
layout::L2ProtoHardware &live(const View &v) { return v.hw->l2proto; }

bool in(int v, int lo, int hi) { return v >= lo && v <= hi; }

// Sets `field` when `value` passes; -1 otherwise.
template <class T>
int store(T &field, int value, bool ok) {
    if (!ok) return -1;
    field = T(value);
    return 0;
}

// ---- spanning tree ---------------------------------------------------------------

constexpr int kStpInstance = SW_STP_INSTANCE;
constexpr int kPrioStep = 4096, kPortPrioStep = 16;
constexpr int kMaxPathCost = 200000000;
// Tree on, not an edge, link type from duplex, priority 128; 802.1D-2004
// costs: 20000 for a gigabit port, 2000 for a trunk.
constexpr layout::StpPortConfig kPortStpDefaults{1, 0, SW_STP_LINK_AUTO, 128, 20000};
constexpr layout::StpPortConfig kTrunkStpDefaults{1, 0, SW_STP_LINK_AUTO, 128, 2000};

swp::BridgeId own_bridge_id(const View &v) {
    swp::BridgeId id;
    id.prio = uint16_t(cfg(v).stp_prio);
    std::memcpy(id.mac, v.cfg->unit_mac[0], 6);
    return id;
}

bool is_root_bridge(const View &v) { return live(v).stp.root_port == 0; }

swp::BridgeId root_id(const View &v) {
    if (is_root_bridge(v)) return own_bridge_id(v);
    swp::BridgeId id;
    id.prio = live(v).stp.root_prio;
    std::memcpy(id.mac, live(v).stp.root_mac, 6);
    return id;
}

// The state a port is in: what the protocol set, or, left to itself, disabled
// while the link is down or the tree is off on the port, else forwarding.
int port_state(const View &v, int iface) {
    const uint8_t forced = live(v).stp_ports[iface].state;
    if (!model::port_info(v, iface).link || !cfg(v).stp_ports[iface].enabled) return SW_STP_DISABLED;
    return forced == layout::kStpAuto ? SW_STP_FORWARDING : forced;
}

bool oper_point_to_point(const View &v, int iface) {
    switch (cfg(v).stp_ports[iface].linktype) {
    case SW_STP_LINK_P2P:
        return true;
    case SW_STP_LINK_SHARED:
        return false;
    default:
        return model::port_info(v, iface).duplex == 1;
    }
}

// Port identifier as on the wire: four bits of priority, twelve of number.
void port_id(const View &v, int iface, uint8_t out[2]) {
    const uint16_t id = uint16_t((cfg(v).stp_ports[iface].prio >> 4) << 12 | ((iface + 1) & 0xfff));
    swp::store_be16(out, id);
}

swp::stp_port_state::Record port_record(const View &v, int iface) {
    const layout::StpPortConfig &c = cfg(v).stp_ports[iface];
    const layout::StpBridgeLive &b = live(v).stp;
    swp::stp_port_state::Record r;
    r.state = uint32_t(port_state(v, iface));
    r.path_cost = c.cost;
    r.designated_root = root_id(v);
    const bool root_port = !is_root_bridge(v) && b.root_port == uint32_t(iface) + 1;
    if (root_port) {
        // The upstream bridge is designated for this segment.
        r.designated_bridge = root_id(v);
        r.designated_cost = b.root_cost > c.cost ? b.root_cost - c.cost : 0;
        swp::store_be16(r.designated_port, 0x8001);
    } else {
        r.designated_bridge = own_bridge_id(v);
        r.designated_cost = is_root_bridge(v) ? 0 : b.root_cost;
        port_id(v, iface, r.designated_port);
    }
    r.oper_point_to_point = oper_point_to_point(v, iface) ? 1 : 0;
    r.oper_edge = c.edge && model::port_info(v, iface).link ? 1 : 0;
    return r;
}

// The interface a spanning-tree call addresses, or -1.
int stp_iface(const View &v, int instance, int unit0, int port0) {
    return instance == kStpInstance ? iface_of(v, unit0, port0) : -1;
}

// One spanning-tree setting of the interface a call addresses (-1: none).
template <class T>
int port_setting(const View &v, int iface, T layout::StpPortConfig::*field) {
    return iface < 0 ? -1 : int(cfg(v).stp_ports[iface].*field);
}
template <class T>
int set_port_setting(const View &v, int iface, T layout::StpPortConfig::*field, int value, bool ok) {
    return iface < 0 ? -1 : store(cfg(v).stp_ports[iface].*field, value, ok);
}

// ---- IGMP ------------------------------------------------------------------------

bool is_multicast(uint32_t group) { return (group >> 28) == 0xe; }

uint8_t *group_record(const View &v, std::size_t i) { return groups::record(v.image, i); }

// The record of (vid, group), or -1.
int find_group(const View &v, int vid, uint32_t group) {
    for (std::size_t i = 0; i < groups::kRecords; ++i) {
        const uint8_t *rec = group_record(v, i);
        if (groups::word(rec, groups::kInUseWord) && groups::word(rec, groups::kGroupWord) == group &&
            groups::word(rec, groups::kVlanWord) == uint32_t(vid))
            return int(i);
    }
    return -1;
}

bool group_empty(const uint8_t *rec) {
    for (std::size_t w = groups::kBitmapWord; w < groups::kWords; ++w)
        if (groups::word(rec, w)) return false;
    return true;
}

// A new group's record is marked in use once it is complete, with its
// first port.
int set_group_port(const View &v, int unit0, int port0, int vid, uint32_t group, bool on) {
    if (model::phys_of(v, unit0, port0) < 0 || !model::vid_in_range(vid)) return -1;
    int i = find_group(v, vid, group);
    const bool fresh = i < 0;
    if (fresh) {
        if (!on) return 0;
        if (!v.cfg->vlans[vid].exists || !is_multicast(group)) return -1;
        for (std::size_t k = 0; k < groups::kRecords && i < 0; ++k)
            if (!groups::word(group_record(v, k), groups::kInUseWord)) i = int(k);
        if (i < 0) return -1;  // every record in use
        uint8_t *rec = group_record(v, std::size_t(i));
        std::memset(rec, 0, groups::kRecordSize);
        groups::set_word(rec, groups::kGroupWord, group);
        groups::set_word(rec, groups::kVlanWord, uint32_t(vid));
    }
    uint8_t *rec = group_record(v, std::size_t(i));
    const std::size_t w = groups::bitmap_word(unit0, port0);
    const uint32_t bit = 1u << (port0 % 32);
    const uint32_t word = groups::word(rec, w);
    groups::set_word(rec, w, on ? word | bit : word & ~bit);
    if (fresh) groups::set_word(rec, groups::kInUseWord, 1);
    if (group_empty(rec)) std::memset(rec, 0, groups::kRecordSize);
    return 0;
}

uint8_t *router_byte(const View &v, int vid, int unit0, int port0) {
    return &cfg(v).igmp_router[vid][unit0][port0 / 8];
}

// ---- ring protection ---------------------------------------------------------------

bool domain_in_range(int id) { return id >= 0 && id < SW_EAPS_DOMAINS; }
bool domain_created(const View &v, int id) { return domain_in_range(id) && cfg(v).eaps[id].created; }

void check_domain(int id) {
    if (!domain_in_range(id)) fail("no ring domain " + std::to_string(id) + " (domains are 0..63)");
}

}  // namespace

// ---- the platform calls -------------------------------------------------------------

namespace calls {

int cfg_get_stp_state(const View &v, int instance, uint8_t *record) {
    if (instance != kStpInstance || !record) return -1;
    const layout::StpBridgeLive &b = live(v).stp;
    const layout::L2ProtoConfig &c = cfg(v);
    swp::stp_state::Record r;
    r.root = root_id(v);
    r.time_since_change = uint32_t(model::ns_since(b.last_change_ns) / 10'000'000);
    r.change_count = uint8_t(b.changes);
    if (is_root_bridge(v)) {
        r.max_age = uint32_t(c.stp_max_age);
        r.hello_time = uint32_t(c.stp_hello);
        r.forward_delay = uint32_t(c.stp_fwd_delay);
    } else {
        r.root_cost = b.root_cost;
        r.root_port = uint16_t(b.root_port);  // the port's number: interface + 1
        r.max_age = b.root_max_age;
        r.hello_time = b.root_hello;
        r.forward_delay = b.root_fwd_delay;
    }
    swp::stp_state::encode(r, record);
    return 0;
}

int cfg_get_stp_port_state(const View &v, int instance, int unit0, int port0, uint8_t *record) {
    const int iface = stp_iface(v, instance, unit0, port0);
    if (iface < 0 || !record) return -1;
    swp::stp_port_state::encode(port_record(v, iface), record);
    return 0;
}

int cfg_get_stp_prio(const View &v, int instance) { return instance == kStpInstance ? cfg(v).stp_prio : -1; }
int cfg_set_stp_prio(const View &v, int instance, int prio) {
    return store(cfg(v).stp_prio, prio, instance == kStpInstance && in(prio, 0, 61440) && prio % kPrioStep == 0);
}
int cfg_get_stp_maxage(const View &v, int instance) { return instance == kStpInstance ? cfg(v).stp_max_age : -1; }
int cfg_set_stp_maxage(const View &v, int instance, int cs) {
    return store(cfg(v).stp_max_age, cs, instance == kStpInstance && in(cs, 600, 4000));
}
int cfg_get_stp_hello(const View &v, int instance) { return instance == kStpInstance ? cfg(v).stp_hello : -1; }
int cfg_set_stp_hello(const View &v, int instance, int cs) {
    return store(cfg(v).stp_hello, cs, instance == kStpInstance && in(cs, 100, 1000));
}
int cfg_get_stp_ftime(const View &v, int instance) { return instance == kStpInstance ? cfg(v).stp_fwd_delay : -1; }
int cfg_set_stp_ftime(const View &v, int instance, int cs) {
    return store(cfg(v).stp_fwd_delay, cs, instance == kStpInstance && in(cs, 400, 3000));
}
int cfg_get_stp_enabled(const View &v) { return cfg(v).stp_enabled; }
int cfg_set_stp_domain_enabled(const View &v, int instance, int on) {
    return store(cfg(v).stp_enabled, on, instance == kStpInstance && in(on, 0, 1));
}
int cfg_get_stp_forcemode(const View &v) { return cfg(v).stp_force_mode; }
int cfg_set_stp_forcemode(const View &v, int mode) { return store(cfg(v).stp_force_mode, mode, in(mode, 0, 3)); }

int cfg_get_stp_port_prio(const View &v, int instance, int unit0, int port0) {
    return port_setting(v, stp_iface(v, instance, unit0, port0), &layout::StpPortConfig::prio);
}
int cfg_set_stp_port_prio(const View &v, int instance, int unit0, int port0, int prio) {
    return set_port_setting(v, stp_iface(v, instance, unit0, port0), &layout::StpPortConfig::prio, prio,
                            in(prio, 0, 240) && prio % kPortPrioStep == 0);
}
int cfg_get_stp_port_cost(const View &v, int instance, int unit0, int port0) {
    return port_setting(v, stp_iface(v, instance, unit0, port0), &layout::StpPortConfig::cost);
}
int cfg_set_stp_port_cost(const View &v, int instance, int unit0, int port0, int cost) {
    return set_port_setting(v, stp_iface(v, instance, unit0, port0), &layout::StpPortConfig::cost, cost,
                            in(cost, 1, kMaxPathCost));
}
int cfg_get_stp_port_enabled(const View &v, int instance, int unit0, int port0) {
    return port_setting(v, stp_iface(v, instance, unit0, port0), &layout::StpPortConfig::enabled);
}
int cfg_set_stp_port_enabled(const View &v, int instance, int unit0, int port0, int on) {
    return set_port_setting(v, stp_iface(v, instance, unit0, port0), &layout::StpPortConfig::enabled, on,
                            in(on, 0, 1));
}
int cfg_get_stp_port_edge(const View &v, int unit0, int port0) {
    return port_setting(v, iface_of(v, unit0, port0), &layout::StpPortConfig::edge);
}
int cfg_set_stp_port_edge(const View &v, int unit0, int port0, int on) {
    return set_port_setting(v, iface_of(v, unit0, port0), &layout::StpPortConfig::edge, on, in(on, 0, 1));
}
int cfg_get_stp_port_linktype(const View &v, int unit0, int port0) {
    return port_setting(v, iface_of(v, unit0, port0), &layout::StpPortConfig::linktype);
}
int cfg_set_stp_port_linktype(const View &v, int unit0, int port0, int type) {
    return set_port_setting(v, iface_of(v, unit0, port0), &layout::StpPortConfig::linktype, type,
                            in(type, SW_STP_LINK_P2P, SW_STP_LINK_AUTO));
}

int cfg_get_igmp_enable(const View &v) { return cfg(v).igmp_enabled; }
int cfg_set_igmp_enable(const View &v, int on) { return store(cfg(v).igmp_enabled, on, in(on, 0, 1)); }
int cfg_get_igmp_enable_querier(const View &v) { return cfg(v).igmp_querier; }
int cfg_set_igmp_enable_querier(const View &v, int on) { return store(cfg(v).igmp_querier, on, in(on, 0, 1)); }
int cfg_get_igmp_version(const View &v) { return cfg(v).igmp_version; }
int cfg_set_igmp_version(const View &v, int version) { return store(cfg(v).igmp_version, version, in(version, 1, 3)); }
int cfg_get_igmp_query_count(const View &v) { return cfg(v).igmp_query_count; }
int cfg_set_igmp_query_count(const View &v, int n) { return store(cfg(v).igmp_query_count, n, in(n, 2, 10)); }
int cfg_get_igmp_query_interval(const View &v) { return cfg(v).igmp_query_interval; }
int cfg_set_igmp_query_interval(const View &v, int s) { return store(cfg(v).igmp_query_interval, s, in(s, 1, 3600)); }
int cfg_get_igmp_query_timeout(const View &v) { return cfg(v).igmp_query_timeout; }
int cfg_set_igmp_query_timeout(const View &v, int s) { return store(cfg(v).igmp_query_timeout, s, in(s, 300, 500)); }

int cfg_get_igmp_router_port(const View &v, int unit0, int port0, int vid) {
    if (model::phys_of(v, unit0, port0) < 0 || !model::vid_in_range(vid)) return -1;
    return (*router_byte(v, vid, unit0, port0) >> (port0 % 8)) & 1;
}
int cfg_set_igmp_router_port(const View &v, int unit0, int port0, int vid, int on) {
    if (model::phys_of(v, unit0, port0) < 0 || !model::vid_in_range(vid) || !in(on, 0, 1)) return -1;
    if (on && !v.cfg->vlans[vid].exists) return -1;
    uint8_t &b = *router_byte(v, vid, unit0, port0);
    const uint8_t bit = uint8_t(1u << (port0 % 8));
    b = on ? uint8_t(b | bit) : uint8_t(b & ~bit);
    return 0;
}
int cfg_set_igmp_set_mcast(const View &v, int unit0, int port0, int vid, uint32_t group, int learned, int on) {
    if (learned != 0 || !in(on, 0, 1)) return -1;  // only static groups are configured
    return set_group_port(v, unit0, port0, vid, group, on != 0);
}

int verify_created_eaps_domain(const View &v, int id) { return domain_created(v, id) ? id : -1; }
const char *cfg_get_eaps_name(const View &v, int id) { return domain_created(v, id) ? cfg(v).eaps[id].name : nullptr; }
int cfg_get_eaps_is_master(const View &v, int id) { return domain_created(v, id) ? cfg(v).eaps[id].master : -1; }
const uint8_t *status_get_eaps(const View &v) { return live(v).eaps_status; }

}  // namespace calls

// ---- factory settings --------------------------------------------------------------

void defaults(View &v) {
    layout::L2ProtoConfig &c = cfg(v);
    c.stp_enabled = 1;
    c.stp_force_mode = 0;
    c.stp_prio = 32768;
    c.stp_max_age = 2000;
    c.stp_hello = 200;
    c.stp_fwd_delay = 1500;
    for (int i = 0; i < layout::kIfaces; ++i) {
        c.stp_ports[i] = model::is_trunk_iface(i) ? kTrunkStpDefaults : kPortStpDefaults;
        live(v).stp_ports[i].state = layout::kStpAuto;
    }
    c.igmp_enabled = 0;
    c.igmp_querier = 0;
    c.igmp_version = 2;
    c.igmp_query_count = 2;
    c.igmp_query_interval = 125;
    c.igmp_query_timeout = 300;
    live(v).stp = layout::StpBridgeLive{};
    live(v).stp.last_change_ns = model::realtime_ns();
}

void forget_vlan(const View &v, int vid) {
    if (!model::vid_in_range(vid)) return;
    std::memset(cfg(v).igmp_router[vid], 0, sizeof cfg(v).igmp_router[vid]);
    for (std::size_t i = 0; i < groups::kRecords; ++i) {
        uint8_t *rec = group_record(v, i);
        if (groups::word(rec, groups::kInUseWord) && groups::word(rec, groups::kVlanWord) == uint32_t(vid))
            std::memset(rec, 0, groups::kRecordSize);
    }
}

void reset_trunk(const View &v, int trunk0) {
    const int iface = layout::kPhysPorts + trunk0;
    cfg(v).stp_ports[iface] = kTrunkStpDefaults;
    live(v).stp_ports[iface].state = layout::kStpAuto;
}

// ---- changes from outside ----------------------------------------------------------

namespace ops {

void stp_topology_change(View &v) {
    ++live(v).stp.changes;
    live(v).stp.last_change_ns = model::realtime_ns();
}

void stp_set_port_state(View &v, int unit0, int port0, int state) {
    const int iface = model::ops::check_iface(v, unit0, port0);
    if (state < -1 || state > SW_STP_FORWARDING)
        fail("spanning-tree state " + std::to_string(state) + " is not 0..3 (disabled, blocking, learning, forwarding)");
    live(v).stp_ports[iface].state = state < 0 ? layout::kStpAuto : uint8_t(state);
}

void stp_set_root(View &v, const Switch::StpRoot &root) {
    const int iface = model::ops::check_iface(v, root.unit0, root.port0);
    if (!in(root.prio, 0, 65535)) fail("root priority " + std::to_string(root.prio) + " is not 0..65535");
    layout::StpBridgeLive &b = live(v).stp;
    b.root_prio = uint16_t(root.prio);
    std::memcpy(b.root_mac, root.mac, 6);
    b.root_cost = root.cost;
    b.root_port = uint32_t(iface) + 1;
    b.root_max_age = uint32_t(root.max_age);
    b.root_hello = uint32_t(root.hello);
    b.root_fwd_delay = uint32_t(root.fwd_delay);
    stp_topology_change(v);
}

void stp_become_root(View &v) {
    layout::StpBridgeLive &b = live(v).stp;
    const uint32_t changes = b.changes;
    b = layout::StpBridgeLive{};
    b.changes = changes;
    stp_topology_change(v);
}

void stp_set_port(View &v, int unit0, int port0, const Switch::StpPortSettings &s) {
    const int iface = model::ops::check_iface(v, unit0, port0);
    layout::StpPortConfig c = cfg(v).stp_ports[iface];
    auto take = [](auto &field, int64_t value, int64_t lo, int64_t hi, const char *what) {
        if (value < 0) return;
        if (value < lo || value > hi)
            fail(std::string(what) + " " + std::to_string(value) + " is not " + std::to_string(lo) + ".." +
                 std::to_string(hi));
        field = static_cast<std::remove_reference_t<decltype(field)>>(value);
    };
    take(c.enabled, s.enabled, 0, 1, "spanning tree on/off");
    take(c.edge, s.edge, 0, 1, "edge port");
    take(c.linktype, s.linktype, SW_STP_LINK_P2P, SW_STP_LINK_AUTO, "link type");
    take(c.prio, s.prio, 0, 240, "port priority");
    take(c.cost, s.cost, 1, kMaxPathCost, "path cost");
    if (s.prio >= 0 && s.prio % kPortPrioStep != 0) fail("port priority must be a multiple of 16");
    cfg(v).stp_ports[iface] = c;
}

void igmp_set_group_port(View &v, int vid, uint32_t group, int unit0, int port0, bool member) {
    model::ops::check_vid(vid);
    model::ops::check_port(v, unit0, port0);
    if (member && !v.cfg->vlans[vid].exists) fail("VLAN " + std::to_string(vid) + " does not exist");
    if (!is_multicast(group)) fail("the group address is not an IPv4 multicast address");
    if (set_group_port(v, unit0, port0, vid, group, member) != 0) fail("every static group record is in use");
}

void igmp_set_router_port(View &v, int vid, int unit0, int port0, bool on) {
    model::ops::check_vid(vid);
    model::ops::check_port(v, unit0, port0);
    if (calls::cfg_set_igmp_router_port(v, unit0, port0, vid, on ? 1 : 0) != 0)
        fail("VLAN " + std::to_string(vid) + " does not exist");
}

void eaps_create(View &v, int id, const std::string &name, bool master, uint32_t state) {
    check_domain(id);
    layout::EapsConfig &d = cfg(v).eaps[id];
    if (d.created) fail("ring domain " + std::to_string(id) + " already exists");
    if (name.empty() || name.size() >= SW_EAPS_NAME_SIZE) fail("a ring domain's name is 1..47 characters");
    d = layout::EapsConfig{};
    d.master = master ? 1 : 0;
    copy_text(d.name, name);
    swp::eaps_status::set_entry(live(v).eaps_status, id, state);
    d.created = 1;  // complete: the domain exists
}

void eaps_delete(View &v, int id) {
    check_domain(id);
    if (!cfg(v).eaps[id].created) fail("ring domain " + std::to_string(id) + " does not exist");
    cfg(v).eaps[id] = layout::EapsConfig{};
    std::memset(live(v).eaps_status + std::size_t(id) * swp::eaps_status::kEntrySize, 0,
                swp::eaps_status::kEntrySize);
}

void eaps_set_state(View &v, int id, uint32_t state) {
    check_domain(id);
    if (!cfg(v).eaps[id].created) fail("ring domain " + std::to_string(id) + " does not exist");
    swp::eaps_status::set_entry(live(v).eaps_status, id, state);
}

}  // namespace ops

// ---- reads of the control handle -----------------------------------------------------

Switch::StpInfo stp_info(const View &v) {
    const layout::L2ProtoConfig &c = cfg(v);
    const layout::StpBridgeLive &b = live(v).stp;
    Switch::StpInfo s;
    s.enabled = c.stp_enabled != 0;
    s.force_mode = c.stp_force_mode;
    s.prio = c.stp_prio;
    s.max_age = c.stp_max_age;
    s.hello = c.stp_hello;
    s.fwd_delay = c.stp_fwd_delay;
    s.root_bridge = is_root_bridge(v);
    const swp::BridgeId root = root_id(v);
    s.root_prio = root.prio;
    std::memcpy(s.root_mac, root.mac, 6);
    s.root_cost = s.root_bridge ? 0 : b.root_cost;
    if (!s.root_bridge) {
        const int iface = int(std::min<uint32_t>(b.root_port, layout::kIfaces)) - 1;
        s.root_unit0 = model::is_trunk_iface(iface) ? 0 : iface / SW_PORTS_PER_UNIT;
        s.root_port0 = model::is_trunk_iface(iface) ? iface : iface % SW_PORTS_PER_UNIT;
    }
    s.changes = b.changes;
    return s;
}

Switch::StpPortInfo stp_port_info(const View &v, int unit0, int port0) {
    const int iface = model::ops::check_iface(v, unit0, port0);
    const layout::StpPortConfig &c = cfg(v).stp_ports[iface];
    Switch::StpPortInfo p;
    p.state = port_state(v, iface);
    p.forced = live(v).stp_ports[iface].state != layout::kStpAuto;
    p.enabled = c.enabled != 0;
    p.edge = c.edge != 0;
    p.linktype = c.linktype;
    p.prio = c.prio;
    p.cost = c.cost;
    return p;
}

std::vector<Switch::IgmpGroupInfo> igmp_groups(const View &v) {
    std::vector<Switch::IgmpGroupInfo> out;
    for (std::size_t i = 0; i < groups::kRecords; ++i) {
        const uint8_t *rec = group_record(v, i);
        if (!groups::word(rec, groups::kInUseWord)) continue;
        Switch::IgmpGroupInfo g;
        g.vid = int(groups::word(rec, groups::kVlanWord));
        g.group = groups::word(rec, groups::kGroupWord);
        for (int u = 0; u < SW_MAX_UNITS; ++u)
            for (int p = 0; p < int(groups::kWordsPerUnit * 32); ++p)
                if (groups::has_port(rec, u, p)) g.ports.emplace_back(u, p);
        out.push_back(std::move(g));
    }
    return out;
}

std::vector<std::pair<int, int>> igmp_router_ports(const View &v, int vid) {
    model::ops::check_vid(vid);
    std::vector<std::pair<int, int>> out;
    for (int u = 0; u < SW_MAX_UNITS; ++u)
        for (int p = 0; p < SW_PORTS_PER_UNIT; ++p)
            if ((cfg(v).igmp_router[vid][u][p / 8] >> (p % 8)) & 1) out.emplace_back(u, p);
    return out;
}

Switch::EapsInfo eaps_info(const View &v, int id) {
    check_domain(id);
    Switch::EapsInfo e;
    const layout::EapsConfig &d = cfg(v).eaps[id];
    e.created = d.created != 0;
    e.master = d.master != 0;
    e.name = text_of(d.name);
    e.state = swp::eaps_status::state(live(v).eaps_status, id);
    return e;
}

}  // namespace swsim::l2proto
