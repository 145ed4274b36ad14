// The interface index: one signed 32-bit index space shared by ifIndex,
// dot1dBasePort and the port index of the private port tables.
//
//   1 .. 512      port0 of unit0, (unit0 * 64) + port0 + 1 (a block of 64 per unit)
//   513 .. 640    trunk, 513 + trunk0
//   1001 .. 5094  VLAN interface, 1000 + vid
//
// The platform counts units, ports and trunks from zero; a trunk handed to a
// port-addressed platform call is unit0 0, port0 512 + trunk0 (= ifIndex - 1).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "swplatform/platform.h"

extern "C" {
int ifindex_is_trunk(int32_t ifindex);  // 513 .. 640
int ifindex_is_vlan(int32_t ifindex);   // 1001 .. 5094
int32_t ifindex_to_unit0(int32_t ifindex);
int32_t ifindex_to_port0(int32_t ifindex);
int32_t ifindex_to_trunk0(int32_t ifindex);
int32_t port_to_ifindex(int32_t unit0, int32_t port0);
int32_t trunk_to_ifindex(int32_t trunk0);

// Interface name and description; the text lives in a buffer owned by the
// function and is overwritten by its next call.
const uint8_t *get_ifName(int32_t ifindex, size_t *len);
const uint8_t *get_ifDescr(int32_t ifindex, size_t *len);
}

// Adds a row through `create` for every port of every present unit (units and
// ports ascending), then, when with_trunks is set, for every configured
// non-empty trunk.  Returns 0.
int ifindex_populate(void *(*create)(int32_t), bool with_trunks);

// The row check of the interface-indexed tables: 1 while the port's unit is
// present, the trunk is configured and non-empty, or the index is a VLAN
// interface.  A vanished port or trunk row is removed through `remove` before
// 0 is answered; an index whose unit is out of range answers 0 and is left.
int ifindex_row_exists(int32_t ifindex, void (*remove)(int32_t));

// Whether unit0 (0 .. 7) is in the stack now.
bool ifindex_unit_present(int unit0);

// The platform's unit and port counts, held to what the interface index can
// address (8 units of 64 ports): a damaged answer never makes a walk run
// beyond the stack.
inline int stack_unit_count() { return std::clamp(status_get_num_units(), 0, SW_MAX_UNITS); }
inline int unit_port_count(int unit0) { return std::clamp(cfg_equip_get_user_eth_ports(unit0), 0, SW_PORTS_PER_UNIT); }

// How often a walk over the ports asks a unit's port count: before every
// port (the row populations, which see a unit shrink at once), or once per
// unit (walks repeated many times in one request, such as one per trunk).
enum class PortCount { before_every_port, once_per_unit };

// Calls visit(unit0, port0) for every port of every present unit, units and
// ports ascending.
template <class Visit>
void ifindex_for_each_port(Visit &&visit, PortCount asked = PortCount::before_every_port) {
    for (int unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0) {
        if (!ifindex_unit_present(unit0)) continue;
        for (int port0 = 0, ports = unit_port_count(unit0); port0 < ports; ++port0) {
            visit(unit0, port0);
            if (asked == PortCount::before_every_port) ports = unit_port_count(unit0);
        }
    }
}

// ---- Small helpers shared by the accessors ----------------------------------

// index - base for an index as a manager sent it: any 32-bit sub-identifier
// can arrive, and one beyond the object's range wraps (to a value that names
// nothing on the switch) instead of overflowing.
constexpr int32_t index_minus(int32_t index, int32_t base) {
    return static_cast<int32_t>(static_cast<uint32_t>(index) - static_cast<uint32_t>(base));
}

// A SET's octet string as the zero-terminated text the platform takes.
inline std::string received_text(const uint8_t *bytes, size_t len) {
    return bytes != nullptr ? std::string(reinterpret_cast<const char *>(bytes), len) : std::string();
}

// The low 32 bits of 64-bit platform statistic `stat` of a port or trunk (the
// buffer is cleared first: a failing read answers 0).
uint32_t port_stat_low32(int unit0, int port0, int stat);
// The same for the row of an interface-indexed table: a VLAN interface has no
// counters of its own and answers 0 without asking the platform.
uint32_t ifindex_stat_low32(int32_t ifindex, int stat);
