// The static multicast group records of the configuration image, as the IGMP
// snooping tables read them: which records match a (VLAN, group) row, and
// the ports of all matching records merged.  In a record each unit's ports
// are eight 32-bit words, port0 at bit (port0 % 32) of word port0 / 32 from
// the least significant end; port lists want the most significant bit first,
// which has_port answers port by port.  No net-snmp here.
#pragma once

#include <array>
#include <cstdint>

#include "swplatform/records_l2proto.hpp"

namespace snmpapi::igmp {

namespace groups = swp::igmp_groups;

// The bitmap words of every unit, in record order (unit0 * 8 + port0 / 32).
using GroupPorts = std::array<uint32_t, SW_MAX_UNITS * groups::kWordsPerUnit>;

inline bool in_use(const uint8_t *rec) { return groups::word(rec, groups::kInUseWord) != 0; }
inline bool matches(const uint8_t *rec, uint32_t vlan, uint32_t group) {
    return in_use(rec) && groups::word(rec, groups::kVlanWord) == vlan &&
           groups::word(rec, groups::kGroupWord) == group;
}

// The OR of the port bitmaps of every in-use record of (vlan, group); all
// zero when none matches.
GroupPorts group_ports(const uint8_t *image, uint32_t vlan, uint32_t group);

// Whether (unit0, port0) is in `ports`; false outside 8 units of 256 ports.
bool has_port(const GroupPorts &ports, int unit0, int port0);

}  // namespace snmpapi::igmp
