// VLAN member port lists over the platform's per-port membership flags.
#include "agent/vlan_members.hpp"

#include "agent/port_list.hpp"
#include "swplatform/platform.h"

namespace pl = snmpapi::port_list;

extern "C" {

const uint8_t *snmp_vlan_get_member_bitmap(uint32_t vlan, uint32_t mask, size_t *length) {
    static uint8_t area[pl::kAreaSize];
    pl::read(area, sizeof area, length, [&](int unit0, int port0) {
        uint32_t m = 0;
        return cfg_get_vlan_port_member(unit0, port0, static_cast<int>(vlan), &m) == 0 && (m & mask) != 0;
    });
    return area;
}

int snmp_vlan_set_member_bitmap(uint32_t vlan, uint32_t test_mask, uint32_t clear_mask, uint32_t set_value,
                                const uint8_t *octets, size_t length) {
    const int vid = static_cast<int>(vlan);
    if (cfg_vlan_exists(vid) <= 0) return -1;
    return pl::write_walk(octets, length, [&](int unit0, int port0, pl::Bit bit) {
        uint32_t m = 0;
        if (cfg_get_vlan_port_member(unit0, port0, vid, &m) != 0) return 0;  // unreadable: left alone
        const bool join = bit == pl::Bit::set && (m & test_mask) == 0;
        const bool leave = bit != pl::Bit::set && (m & clear_mask) != 0;
        if (!join && !leave) return 0;
        return cfg_set_vlan_port_member(unit0, port0, vid, join ? set_value : 0, 0) < 0 ? -1 : 0;
    });
}

}  // extern "C"
