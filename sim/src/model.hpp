// The switch model: how configuration, hardware state, counters and tables
// relate, over a View of the state file.
//
// Queries and the small setters here are what the platform calls use: they
// never throw, never allocate and never lock (the agent holds the locks).
// The operations in namespace ops are the bigger changes a control handle or
// a scenario makes; they throw Error with a message in human numbering.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim::model {

using layout::kIfaces;
using layout::kPhysPorts;
using layout::kTrunkPortBase;

inline bool unit_in_range(int unit0) { return unit0 >= 0 && unit0 < SW_MAX_UNITS; }
inline bool trunk_in_range(int trunk0) { return trunk0 >= 0 && trunk0 < SW_MAX_TRUNKS; }
inline bool vid_in_range(int vid) { return vid >= 1 && vid <= SW_MAX_VLAN_ID; }
inline int phys_index(int unit0, int port0) { return unit0 * SW_PORTS_PER_UNIT + port0; }
inline bool is_trunk_iface(int iface) { return iface >= kPhysPorts; }

// Addressing, inline: nearly every platform call starts here.
// A physical port of a unit that belongs to the stack.
inline bool port_exists(const View &v, int unit0, int port0) {
    return unit_in_range(unit0) && port0 >= 0 &&
           uint32_t(port0) < std::min<uint32_t>(v.status->units[unit0].user_ports, SW_PORTS_PER_UNIT);
}
// Like iface_of, but physical ports only.
inline int phys_of(const View &v, int unit0, int port0) {
    return port_exists(v, unit0, port0) ? phys_index(unit0, port0) : -1;
}
// Interface index of a port or of a configured trunk (unit0 0, port0
// 512 + trunk0); -1 when the address names neither.
inline int iface_of(const View &v, int unit0, int port0) {
    if (unit0 == 0 && port0 >= kTrunkPortBase) {
        int trunk0 = port0 - kTrunkPortBase;
        if (!trunk_in_range(trunk0) || !v.cfg->trunks[trunk0].configured) return -1;
        return kPhysPorts + trunk0;
    }
    return phys_of(v, unit0, port0);
}

// ---- trunks (member bitmaps in the image are the truth) ----------------------

inline bool trunk_has(const View &v, int trunk0, int unit0, int port0) {
    return swp::cfg_image::trunk_has_member(v.image, trunk0, unit0, port0);
}
// Word w (ports 32w .. 32w + 31, bit p % 32 each) of a trunk's member
// bitmap for one unit.
inline uint32_t trunk_member_word(const View &v, int trunk0, int unit0, int w) {
    return swp::load_be32(v.image + swp::cfg_image::trunk_member_word_offset(trunk0, unit0, w * 32));
}
inline constexpr int kTrunkMemberWords = int(swp::cfg_image::kTrunkMemberWordsPerUnit);
// Calls fn(unit0, port0) for each member of a trunk, in port order, reading
// the member bitmap a word at a time.
template <class Fn>
void for_each_trunk_member(const View &v, int trunk0, Fn fn) {
    for (int u = 0; u < SW_MAX_UNITS; ++u)
        for (int w = 0; w < kTrunkMemberWords; ++w)
            for (uint32_t bits = trunk_member_word(v, trunk0, u, w); bits; bits &= bits - 1)
                fn(u, w * 32 + std::countr_zero(bits));
}
int trunk_of_port(const View &v, int unit0, int port0);  // -1: none
bool trunk_empty(const View &v, int trunk0);
std::vector<std::pair<int, int>> trunk_members(const View &v, int trunk0);

// ---- links ----------------------------------------------------------------------

uint32_t max_speed(uint32_t caps);
bool speed_supported(uint32_t hw_caps, int mbps);
// Recomputes the status block of a port from configuration and hardware, and
// checkpoints its counters.
void refresh_port(View &v, int unit0, int port0);
void refresh_unit(View &v, int unit0);
sw_port_info_t port_info(const View &v, int iface);

// ---- counters -------------------------------------------------------------------

uint64_t counter(const View &v, int iface, int stat);
// The packets/s offered to a physical port each way.
uint64_t offered_load(const View &v, int phys);
// Statistic numbers that are a count of their own (not a sum of others).
bool stat_settable(int stat);
void set_counter(View &v, int phys, int stat, uint64_t value);
void set_traffic(View &v, int phys, uint64_t pps);

// ---- configuration setters of the platform calls (-1 on a bad value) ----------

int set_port_speed(View &v, int iface, int mbps);
int set_port_autoneg(View &v, int iface, bool on);
int set_port_duplex(View &v, int iface, int full);
int set_port_enable(View &v, int iface, int enabled);
int set_port_pause(View &v, int iface, int pause);
int set_port_capabilities(View &v, int iface, uint32_t mask);

// ---- VLANs ----------------------------------------------------------------------

// Every consumer of VLAN changes learns that the VLAN set changed.
void raise_vlan_flags(View &v);

// ---- identity -------------------------------------------------------------------

void hardware_hash(const View &v, uint8_t out[16]);
void status_hash(const View &v, uint8_t out[16]);
uint64_t monotonic_ns();
int64_t realtime_ns();
// Realtime nanoseconds since `then` (0 if it lies ahead), whatever `then` holds.
uint64_t ns_since(int64_t then);

// ---- bigger changes ---------------------------------------------------------------

namespace ops {
void check_port(const View &v, int unit0, int port0);  // physical
int check_iface(const View &v, int unit0, int port0);  // port or configured trunk
void check_trunk_id(int trunk0);
void check_vid(int vid);

void set_unit_present(View &v, int unit0, bool present);
void set_link(View &v, int unit0, int port0, bool up);
void set_link_speed(View &v, int unit0, int port0, int mbps, bool full_duplex);
void set_transceiver(View &v, int unit0, int port0, bool fitted, const Ddm &ddm);
void trunk_create(View &v, int trunk0, bool dynamic);
void trunk_destroy(View &v, int trunk0);
void trunk_add_port(View &v, int trunk0, int unit0, int port0);
void trunk_remove_port(View &v, int trunk0, int unit0, int port0);
void vlan_create(View &v, int vid, const std::string &name, bool dynamic);
void vlan_delete(View &v, int vid);
void vlan_set_member(View &v, int vid, int unit0, int port0, uint32_t flags);
void fdb_add(View &v, const uint8_t mac[6], int vid, int unit0, int port0, int trunk0, bool is_static);
void fdb_clear(View &v);
void set_counter(View &v, int unit0, int port0, int stat, uint64_t value);
void set_traffic(View &v, int unit0, int port0, uint64_t pps);
void set_text(char *dst, std::size_t size, const std::string &text, const char *what);
void set_port_description(View &v, int unit0, int port0, const std::string &text);
void set_port_admin(View &v, int unit0, int port0, bool enabled);
void set_port_speed(View &v, int unit0, int port0, int mbps);
}  // namespace ops

}  // namespace swsim::model
