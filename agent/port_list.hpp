// Port lists: the octet strings that carry a set of switch ports (VLAN
// egress, untagged and forbidden ports, trunk members, IGMP snooping ports).
//
// Ports are (unit0, port0); within an octet the lowest port is the most
// significant bit (mask 0x80 >> port0 % 8).  The two directions use different
// layouts, and both are what managers of this switch rely on:
//
//   read   8 octets per unit (ports 0 .. 63): unit0 u, port0 p is octet
//          8u + p/8; the reported length is 32 octets per unit up to the
//          highest present unit.
//   write  32 octets per unit (ports 0 .. 255): octet 32u + p/8, units 0 ..
//          status_get_num_units() - 1.  Only the seven high bits of each
//          octet are looked at, so port0 7, 15, 23, ... of a unit are never
//          changed by a write.
//
// On a single unit the two layouts coincide.
#pragma once

#include <cstddef>
#include <cstdint>

#include "swplatform/platform.h"

namespace snmpapi::port_list {

inline constexpr size_t kOctetsPerUnit = 32;     // written layout, reported length
inline constexpr size_t kReadOctetsPerUnit = 8;  // read layout: 64 ports per unit
inline constexpr size_t kAreaSize = SW_MAX_UNITS * kOctetsPerUnit;

// What the write walk found for a port.
enum class Bit {
    set,     // bit set, within the supplied length
    clear,   // bit clear, within the supplied length
    beyond,  // the port's octet lies beyond the supplied length
};

namespace detail {
using HasPortFn = bool (*)(void *ctx, int unit0, int port0);
using VisitFn = int (*)(void *ctx, int unit0, int port0, Bit bit);
void read(uint8_t *area, size_t clear, size_t *length, HasPortFn has_port, void *ctx);
int write_walk(const uint8_t *octets, size_t length, VisitFn visit, void *ctx);
}  // namespace detail

// Read side: clears the first `clear` octets of `area` (at most kAreaSize),
// then for every present unit u sets *length = 32 * (u + 1) and sets the bit
// of each port p below cfg_equip_get_user_eth_ports(u) (asked again after
// every port; ports from 64 up are not represented) for which has_port(u, p)
// is true.  With no unit present *length is left as it was.
template <class HasPort>
void read(uint8_t *area, size_t clear, size_t *length, HasPort has_port) {
    detail::read(
        area, clear, length,
        [](void *ctx, int unit0, int port0) { return static_cast<bool>((*static_cast<HasPort *>(ctx))(unit0, port0)); },
        &has_port);
}

// Write side: the seven-bit walk over units 0 .. status_get_num_units() - 1,
// octets 0 .. 31 of each, bits 0x80 .. 0x02 (port 8k + b, ports not below the
// unit's user port count skipped), calling visit(unit0, port0, Bit).  The
// supplied length counts down per octet across units; octets beyond it are
// never read.  A negative result of visit ends the walk and is returned;
// otherwise 0.
template <class Visit>
int write_walk(const uint8_t *octets, size_t length, Visit visit) {
    return detail::write_walk(
        octets, length,
        [](void *ctx, int unit0, int port0, Bit bit) {
            return static_cast<int>((*static_cast<Visit *>(ctx))(unit0, port0, bit));
        },
        &visit);
}

}  // namespace snmpapi::port_list
