// Changes made from outside the agent: hardware events and operator
// configuration, as the control handle and the scenario builder apply them.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "l2proto.hpp"
#include "ifaces.hpp"
#include "model.hpp"
#include "util.hpp"

namespace swsim::model::ops {
namespace {

[[noreturn]] void fail(const std::string &what) { throw Error(what); }

layout::Fdb &fdb(View &v) { return *v.fdb; }

// Drops the learned addresses that `gone` selects.
template <class Pred>
void fdb_remove_if(View &v, Pred gone) {
    layout::Fdb &t = fdb(v);
    uint32_t n = std::min<uint32_t>(t.count, layout::kFdbCapacity);
    auto end = std::remove_if(t.entries, t.entries + n, gone);
    t.count = uint32_t(end - t.entries);
}

void init_trunk_iface(View &v, int trunk0) {
    layout::IfaceConfig &c = v.cfg->ifaces[kPhysPorts + trunk0];
    c = layout::IfaceConfig{};
    c.admin = 1;
    c.autoneg = 1;
    c.duplex = 1;
    c.caps = cap::kAutoneg | cap::k1000Full | cap::k10GFull;
    c.mtu = 1500;
    c.type = port_type::kTrunk;
    c.mdix = 1;
    mac_add(v.cfg->unit_mac[0], 0x800 + uint64_t(trunk0), c.mac);
}

}  // namespace

void check_port(const View &v, int unit0, int port0) {
    if (!unit_in_range(unit0)) fail("no unit " + std::to_string(human(unit0)) + " (units are 1..8)");
    if (!port_exists(v, unit0, port0)) fail("no port " + port_name(unit0, port0));
}

int check_iface(const View &v, int unit0, int port0) {
    int iface = iface_of(v, unit0, port0);
    if (iface >= 0) return iface;
    if (unit0 == 0 && port0 >= kTrunkPortBase) {
        check_trunk_id(port0 - kTrunkPortBase);
        fail(trunk_name(port0 - kTrunkPortBase) + " is not configured");
    }
    check_port(v, unit0, port0);
    return -1;
}

void check_trunk_id(int trunk0) {
    if (!trunk_in_range(trunk0)) fail("no " + trunk_name(trunk0) + " (trunks are 1..128)");
}

void check_vid(int vid) {
    if (!vid_in_range(vid)) fail("no VLAN " + std::to_string(vid) + " (VLAN IDs are 1..4094)");
}

void set_unit_present(View &v, int unit0, bool present) {
    if (!unit_in_range(unit0)) fail("no unit " + std::to_string(human(unit0)) + " (units are 1..8)");
    sw_unit_status_t &u = v.status->units[unit0];
    if (!u.status2) fail("unit " + std::to_string(human(unit0)) + " is not part of this stack");
    if ((u.present != 0) != present) note_iface_change(v);
    u.present = present ? 1 : 0;
    refresh_unit(v, unit0);
    lacp_reconcile(v);
}

void set_link(View &v, int unit0, int port0, bool up) {
    check_port(v, unit0, port0);
    v.hw->ports[phys_index(unit0, port0)].carrier = up ? 1 : 0;
    refresh_port(v, unit0, port0);
    lacp_reconcile(v);
}

void set_link_speed(View &v, int unit0, int port0, int mbps, bool full_duplex) {
    check_port(v, unit0, port0);
    layout::PortHardware &hw = v.hw->ports[phys_index(unit0, port0)];
    if (mbps == 0 || !speed_supported(hw.hw_caps, mbps))
        fail("port " + port_name(unit0, port0) + " cannot run at " + std::to_string(mbps) + " Mbit/s");
    hw.peer_speed = uint32_t(mbps);
    hw.peer_full = full_duplex ? 1 : 0;
    refresh_port(v, unit0, port0);
}

void set_transceiver(View &v, int unit0, int port0, bool fitted, const Ddm &ddm) {
    check_port(v, unit0, port0);
    if (!v.hw->ports[phys_index(unit0, port0)].sfp_slot)
        fail("port " + port_name(unit0, port0) + " has no transceiver cage");
    sw_port_status_t &st = v.status->units[unit0].ports[port0];
    st.sfp_present = st.sfp_ddm = fitted ? 1 : 0;
    auto clamp_u16 = [](double x) { return uint16_t(std::lround(std::clamp(x, 0.0, 65535.0))); };
    st.ddm_temperature = fitted ? int16_t(std::lround(std::clamp(ddm.temperature_c, -32768.0, 32767.0))) : 0;
    st.ddm_voltage = fitted ? clamp_u16(ddm.voltage_v * 10000.0) : 0;   // 100 uV
    st.ddm_bias = fitted ? clamp_u16(ddm.bias_ma * 10.0) : 0;           // 0.1 mA
    st.ddm_tx_power = fitted ? clamp_u16(ddm.tx_power_mw * 10000.0) : 0; // 0.1 uW
    st.ddm_rx_power = fitted ? clamp_u16(ddm.rx_power_mw * 10000.0) : 0;
    refresh_port(v, unit0, port0);
}

void trunk_create(View &v, int trunk0, bool dynamic) {
    check_trunk_id(trunk0);
    layout::TrunkConfig &t = v.cfg->trunks[trunk0];
    if (t.configured) fail(trunk_name(trunk0) + " already exists");
    init_trunk_iface(v, trunk0);
    l2proto::reset_trunk(v, trunk0);
    t.dynamic = dynamic ? 1 : 0;
    t.configured = 1;  // complete: the trunk exists
}

void trunk_destroy(View &v, int trunk0) {
    check_trunk_id(trunk0);
    layout::TrunkConfig &t = v.cfg->trunks[trunk0];
    if (!t.configured) fail(trunk_name(trunk0) + " is not configured");
    if (!trunk_empty(v, trunk0)) note_iface_change(v);
    for (auto [u, p] : trunk_members(v, trunk0)) swp::cfg_image::set_trunk_member(v.image, trunk0, u, p, false);
    for (int vid = 1; vid <= SW_MAX_VLAN_ID; ++vid) v.cfg->members[vid][kPhysPorts + trunk0] = 0;
    fdb_remove_if(v, [&](const layout::FdbEntry &e) {
        return (e.flags & swp::mac_entry::kFlagTrunk) && e.trunk == trunk0;
    });
    t = layout::TrunkConfig{};  // last: the trunk is gone with nothing of it left
}

void trunk_add_port(View &v, int trunk0, int unit0, int port0) {
    check_trunk_id(trunk0);
    check_port(v, unit0, port0);
    if (!v.cfg->trunks[trunk0].configured) fail(trunk_name(trunk0) + " is not configured");
    int now = trunk_of_port(v, unit0, port0);
    if (now == trunk0) return;
    if (now >= 0) fail("port " + port_name(unit0, port0) + " is already in " + trunk_name(now));
    if (trunk_empty(v, trunk0)) note_iface_change(v);
    swp::cfg_image::set_trunk_member(v.image, trunk0, unit0, port0, true);
}

void trunk_remove_port(View &v, int trunk0, int unit0, int port0) {
    check_trunk_id(trunk0);
    check_port(v, unit0, port0);
    if (!trunk_has(v, trunk0, unit0, port0))
        fail("port " + port_name(unit0, port0) + " is not in " + trunk_name(trunk0));
    swp::cfg_image::set_trunk_member(v.image, trunk0, unit0, port0, false);
    if (trunk_empty(v, trunk0)) note_iface_change(v);
}

void vlan_create(View &v, int vid, const std::string &name, bool dynamic) {
    check_vid(vid);
    layout::VlanConfig &vl = v.cfg->vlans[vid];
    if (vl.exists) fail("VLAN " + std::to_string(vid) + " already exists");
    set_text(vl.name, sizeof vl.name, name, "VLAN name");
    vl.exists = vl.active = 1;
    vl.dynamic = dynamic ? 1 : 0;
    raise_vlan_flags(v);
}

void vlan_delete(View &v, int vid) {
    check_vid(vid);
    if (vid == 1) fail("VLAN 1 is the default VLAN and cannot be deleted");
    layout::VlanConfig &vl = v.cfg->vlans[vid];
    if (!vl.exists) fail("VLAN " + std::to_string(vid) + " does not exist");
    vl = layout::VlanConfig{};
    std::memset(v.cfg->members[vid], 0, sizeof v.cfg->members[vid]);
    l2proto::forget_vlan(v, vid);
    fdb_remove_if(v, [&](const layout::FdbEntry &e) { return e.vid == vid; });
    raise_vlan_flags(v);
}

void vlan_set_member(View &v, int vid, int unit0, int port0, uint32_t flags) {
    check_vid(vid);
    if (!v.cfg->vlans[vid].exists) fail("VLAN " + std::to_string(vid) + " does not exist");
    int iface = check_iface(v, unit0, port0);
    constexpr uint32_t kAll = SW_VLAN_TAGGED | SW_VLAN_UNTAGGED | SW_VLAN_FORBIDDEN | SW_VLAN_DYNAMIC;
    if (flags & ~kAll) fail("VLAN membership flags " + std::to_string(flags) + " are not SW_VLAN_* flags");
    if ((flags & SW_VLAN_TAGGED) && (flags & SW_VLAN_UNTAGGED))
        fail("a port is either a tagged or an untagged member, not both");
    if ((flags & SW_VLAN_FORBIDDEN) && (flags & ~SW_VLAN_FORBIDDEN))
        fail("a forbidden port cannot be a member");
    v.cfg->members[vid][iface] = uint8_t(flags);
}

void fdb_add(View &v, const uint8_t mac[6], int vid, int unit0, int port0, int trunk0, bool is_static) {
    check_vid(vid);
    if (!v.cfg->vlans[vid].exists) fail("VLAN " + std::to_string(vid) + " does not exist");
    check_port(v, unit0, port0);
    // An address learned on a member port is learned on its aggregate.
    if (trunk0 < 0) trunk0 = trunk_of_port(v, unit0, port0);
    if (trunk0 >= 0) {
        check_trunk_id(trunk0);
        if (!trunk_has(v, trunk0, unit0, port0))
            fail("port " + port_name(unit0, port0) + " is not in " + trunk_name(trunk0));
    }
    layout::FdbEntry e{};
    std::memcpy(e.mac, mac, 6);
    e.vid = uint16_t(vid);
    e.unit = int8_t(unit0);
    e.port = uint16_t(port0);
    e.trunk = uint8_t(trunk0 < 0 ? 0 : trunk0);
    e.flags = (trunk0 >= 0 ? swp::mac_entry::kFlagTrunk : 0) | (is_static ? swp::mac_entry::kFlagStatic : 0);
    layout::Fdb &t = fdb(v);
    uint32_t n = std::min<uint32_t>(t.count, layout::kFdbCapacity);
    for (uint32_t i = 0; i < n; ++i)
        if (std::memcmp(t.entries[i].mac, mac, 6) == 0 && t.entries[i].vid == vid) {
            t.entries[i] = e;  // moved
            return;
        }
    if (n >= layout::kFdbCapacity) fail("learned address table full");
    t.entries[n] = e;
    t.count = n + 1;
}

void fdb_clear(View &v) { fdb(v).count = 0; }

void set_counter(View &v, int unit0, int port0, int stat, uint64_t value) {
    check_port(v, unit0, port0);
    if (stat < 0 || stat >= SW_MAX_STATISTIC) fail("no statistic " + std::to_string(stat) + " (0..95)");
    if (!stat_settable(stat)) fail("statistic " + std::to_string(stat) + " is a sum of others; set those");
    model::set_counter(v, phys_index(unit0, port0), stat, value);
}

void set_traffic(View &v, int unit0, int port0, uint64_t pps) {
    check_port(v, unit0, port0);
    if (pps > 20'000'000) fail("traffic above 20000000 packets/s is more than any port carries");
    model::set_traffic(v, phys_index(unit0, port0), pps);
}

void set_text(char *dst, std::size_t size, const std::string &text, const char *what) {
    if (text.size() >= size || text.find('\0') != std::string::npos)
        fail(std::string(what) + " is longer than " + std::to_string(size - 1) + " characters");
    copy_text(dst, size, text.c_str());
}

void set_port_description(View &v, int unit0, int port0, const std::string &text) {
    layout::IfaceConfig &c = v.cfg->ifaces[check_iface(v, unit0, port0)];
    set_text(c.description, sizeof c.description, text, "description");
}

void set_port_admin(View &v, int unit0, int port0, bool enabled) {
    model::set_port_enable(v, check_iface(v, unit0, port0), enabled ? 1 : 0);
}

void set_port_speed(View &v, int unit0, int port0, int mbps) {
    if (model::set_port_speed(v, check_iface(v, unit0, port0), mbps) != 0)
        fail("port " + port_name(unit0, port0) + " cannot be set to " + std::to_string(mbps) + " Mbit/s");
}

}  // namespace swsim::model::ops
