// VLAN member port lists: a VLAN's ports whose membership has a flag of a
// mask, read in the port-list read layout, and port-list writes that turn
// bits into membership changes.
#pragma once

#include <cstddef>
#include <cstdint>

// Masks of the VLAN port-list columns over the platform's membership flags
// (SW_VLAN_* and SW_VLAN_DYNAMIC_*; every dynamic membership sends the VLAN's
// frames untagged).
namespace snmpapi::vlan_mask {
inline constexpr uint32_t kCurrentEgress = 0x1fb;  // every membership but forbidden
inline constexpr uint32_t kUntagged = 0x1f2;       // untagged, static or dynamic
inline constexpr uint32_t kStaticEgress = 0x1f3;   // tagged or untagged members
inline constexpr uint32_t kForbidden = 0x004;
}  // namespace snmpapi::vlan_mask

extern "C" {
// The VLAN's ports whose membership has any flag of `mask`, in a static area
// overwritten by the next call; *length as the port-list reader sets it.
const uint8_t *snmp_vlan_get_member_bitmap(uint32_t vlan, uint32_t mask, size_t *length);

// Writes a port list into the VLAN's memberships (the seven-bit walk): a
// port whose bit is set and whose membership has no flag of test_mask gets
// exactly set_value; a port whose bit is clear (or beyond the length) and
// whose membership has a flag of clear_mask gets no membership.  -1 when the
// VLAN does not exist or a platform write fails (ports written before stay
// written); 0 otherwise.
int snmp_vlan_set_member_bitmap(uint32_t vlan, uint32_t test_mask, uint32_t clear_mask, uint32_t set_value,
                                const uint8_t *octets, size_t length);
}
