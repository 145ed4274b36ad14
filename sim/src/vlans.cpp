// The switch's VLANs as the platform calls change them.  Membership flags
// live in ConfigModel::members (one byte per VLAN and interface), the port
// settings in ConfigModel::vlan_settings.
#include "vlans.hpp"

#include <cstring>
#include <string>

#include "model.hpp"

namespace swsim {
namespace {

using model::iface_of;
using model::vid_in_range;

static_assert(layout::kVlanIfaces == layout::kIfaces);

// Flags a membership byte can hold: the static kinds, the legacy dynamic bit
// and the dynamic kinds that fit in a byte.
constexpr uint32_t kStorableFlags = 0xffu;
constexpr uint32_t kStaticFlags = SW_VLAN_TAGGED | SW_VLAN_UNTAGGED;

bool vlan_exists(const View &v, int vid) { return vid_in_range(vid) && v.cfg->vlans[vid].exists; }

// The settings of a port or configured trunk; null when the address names neither.
layout::VlanPortConfig *port_settings(const View &v, int unit0, int port0) {
    const int iface = iface_of(v, unit0, port0);
    return iface < 0 ? nullptr : &v.cfg->vlan_settings.ports[iface];
}

template <class Field>
int read_field(const View &v, int unit0, int port0, int *out, Field field) {
    layout::VlanPortConfig *p = port_settings(v, unit0, port0);
    if (!p || !out) return -1;
    *out = field(*p);
    return 0;
}

template <class Store>
int write_field(const View &v, int unit0, int port0, Store store) {
    layout::VlanPortConfig *p = port_settings(v, unit0, port0);
    if (!p) return -1;
    return store(*p);
}

}  // namespace

namespace vlans_impl {

int cfg_vlan_create(const View &v, int vid, int, int) {
    if (!vid_in_range(vid) || v.cfg->vlans[vid].exists) return -1;
    layout::VlanConfig &c = v.cfg->vlans[vid];
    c = layout::VlanConfig{};
    c.exists = 1;  // inactive until enabled
    View changed = v;
    model::raise_vlan_flags(changed);
    return 0;
}

int cfg_vlan_enable(const View &v, int vid) {
    if (!vlan_exists(v, vid)) return -1;
    v.cfg->vlans[vid].active = 1;
    return 0;
}

int cfg_vlan_disable(const View &v, int vid) {
    if (!vlan_exists(v, vid)) return -1;
    v.cfg->vlans[vid].active = 0;
    return 0;
}

// The default VLAN stays.  Ports whose PVID was the VLAN fall back to VLAN 1.
int cfg_vlan_destroy(const View &v, int vid) {
    if (!vlan_exists(v, vid) || vid == 1) return -1;
    v.cfg->vlans[vid] = layout::VlanConfig{};
    std::memset(v.cfg->members[vid], 0, sizeof v.cfg->members[vid]);
    for (layout::VlanPortConfig &p : v.cfg->vlan_settings.ports)
        if (p.pvid == vid) p.pvid = 1;
    View changed = v;
    model::raise_vlan_flags(changed);
    return 0;
}

int cfg_set_vlan_name(const View &v, int vid, const char *name) {
    if (!vlan_exists(v, vid) || !name) return -1;
    const size_t len = std::strlen(name);
    if (len >= sizeof v.cfg->vlans[vid].name) return -1;
    std::memcpy(v.cfg->vlans[vid].name, name, len + 1);
    return 0;
}

// A port is tagged or untagged, not both; a forbidden port is nothing else.
int cfg_set_vlan_port_member(const View &v, int unit0, int port0, int vid, uint32_t flags, int) {
    if (!vlan_exists(v, vid) || (flags & ~kStorableFlags)) return -1;
    if ((flags & kStaticFlags) == kStaticFlags) return -1;
    if ((flags & SW_VLAN_FORBIDDEN) && flags != SW_VLAN_FORBIDDEN) return -1;
    const int iface = iface_of(v, unit0, port0);
    if (iface < 0) return -1;
    v.cfg->members[vid][iface] = uint8_t(flags);
    return 0;
}

int cfg_get_pvid(const View &v, int unit0, int port0, int *pvid) {
    return read_field(v, unit0, port0, pvid, [](const layout::VlanPortConfig &p) { return int(p.pvid); });
}
int cfg_set_pvid(const View &v, int unit0, int port0, int pvid) {
    if (!vlan_exists(v, pvid)) return -1;
    return write_field(v, unit0, port0, [&](layout::VlanPortConfig &p) { return p.pvid = uint16_t(pvid), 0; });
}

int cfg_get_port_discard(const View &v, int unit0, int port0, int *mode) {
    return read_field(v, unit0, port0, mode, [](const layout::VlanPortConfig &p) { return int(p.discard); });
}
int cfg_set_port_discard(const View &v, int unit0, int port0, int mode) {
    if (mode < 0 || mode > 2) return -1;
    return write_field(v, unit0, port0, [&](layout::VlanPortConfig &p) { return p.discard = uint8_t(mode), 0; });
}

int cfg_get_ingress_filtering(const View &v, int unit0, int port0, int *on) {
    return read_field(v, unit0, port0, on, [](const layout::VlanPortConfig &p) { return int(p.ingress_filter); });
}
int cfg_set_ingress_filtering(const View &v, int unit0, int port0, int on) {
    return write_field(v, unit0, port0, [&](layout::VlanPortConfig &p) { return p.ingress_filter = on != 0, 0; });
}

int cfg_get_gvrp_enable_port(const View &v, int unit0, int port0, int *on) {
    return read_field(v, unit0, port0, on, [](const layout::VlanPortConfig &p) { return int(p.gvrp); });
}
int cfg_set_gvrp_enable_port(const View &v, int unit0, int port0, int on) {
    return write_field(v, unit0, port0, [&](layout::VlanPortConfig &p) { return p.gvrp = on != 0, 0; });
}

int cfg_get_gvrp_enable(const View &v) { return v.cfg->vlan_settings.gvrp; }
int cfg_set_gvrp_enable(const View &v, int on) {
    v.cfg->vlan_settings.gvrp = on != 0;
    return 0;
}

// Only the management VLAN (1) has an address of the switch's own.
int cfg_get_vlan_dhcp_client(const View &v, int vid) {
    if (!vid_in_range(vid)) return -1;
    return vid == 1 ? v.cfg->vlan_settings.dhcp_client : 0;
}
int cfg_set_vlan_dhcp_client(const View &v, int on) {
    v.cfg->vlan_settings.dhcp_client = on != 0;
    return 0;
}

int cfg_get_default_priority(const View &v, int unit0, int port0) {
    const layout::VlanPortConfig *p = port_settings(v, unit0, port0);
    return p ? p->default_priority : -1;
}
int cfg_set_default_priority(const View &v, int unit0, int port0, int priority) {
    if (priority < 0 || priority > 7) return -1;
    return write_field(v, unit0, port0, [&](layout::VlanPortConfig &p) { return p.default_priority = uint8_t(priority), 0; });
}

}  // namespace vlans_impl

namespace vlans {

void boot_defaults(View &v) {
    layout::VlanSettings &s = v.cfg->vlan_settings;
    for (int iface = 0; iface < layout::kIfaces; ++iface) {
        s.ports[iface] = layout::VlanPortConfig{};
        s.ports[iface].pvid = 1;
        for (int vid = 1; vid <= SW_MAX_VLAN_ID; ++vid)
            if (v.cfg->vlans[vid].exists && (v.cfg->members[vid][iface] & SW_VLAN_UNTAGGED)) {
                s.ports[iface].pvid = uint16_t(vid);
                break;
            }
    }
    s.gvrp = 0;
    s.dhcp_client = 0;
}

void set_dynamic_member(View &v, int vid, int unit0, int port0, uint32_t flags, bool on) {
    model::ops::check_vid(vid);
    if (!v.cfg->vlans[vid].exists) throw Error("VLAN " + std::to_string(vid) + " does not exist");
    const int iface = model::ops::check_iface(v, unit0, port0);
    if (flags == 0 || (flags & ~(SW_VLAN_DYNAMIC_MASK & kStorableFlags)))
        throw Error("dynamic membership flags must be SW_VLAN_DYNAMIC_* bits that fit a byte (0x10..0x80)");
    uint8_t &m = v.cfg->members[vid][iface];
    if (m & SW_VLAN_FORBIDDEN) throw Error("the port is forbidden in VLAN " + std::to_string(vid));
    m = uint8_t(on ? (m | flags) : (m & ~flags));
}

void set_active(View &v, int vid, bool active) {
    model::ops::check_vid(vid);
    if (!v.cfg->vlans[vid].exists) throw Error("VLAN " + std::to_string(vid) + " does not exist");
    v.cfg->vlans[vid].active = active ? 1 : 0;
}

}  // namespace vlans
}  // namespace swsim
