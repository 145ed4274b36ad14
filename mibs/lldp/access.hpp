// What the parts of the LLDP access layer share: the LLDP port numbering,
// value formats, and the neighbour cache of the three remote tables.  No
// net-snmp here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace lldp {

// LLDP port indexes: 64 × unit0 + port0 + 1 for a user port, as ifIndex;
// 513 .. 640 reach the platform as unit0 0, port0 index − 1; 1024 is the
// switch's management port, which has calls of its own.
inline constexpr int32_t kMgmtPort = 1024;
inline constexpr int kCacheSlots = kMgmtPort + 1;

struct Port {
    int unit0 = 0;
    int port0 = 0;
    bool mgmt = false;
};
Port port_of(int32_t index);

// Capability bits k = 0..6 of a platform word as a BITS octet: bit k is
// 0x80 >> k.  (Station only, bit 7, has no place in the octet.)
uint8_t capability_octet(uint32_t bits);

// A MAC address as the platform prints it ("%M"): six lowercase hex pairs
// joined by colons.  `out` holds at least 18 bytes; returns the length.
std::size_t format_mac(const uint8_t *mac, char *out);

// The OID 0.0, where the switch has no OID to give.
const uint32_t *zero_dot_zero(std::size_t *len);

// ---- the neighbour cache -------------------------------------------------------------------------
//
// Neighbour records as the platform returned them, one slot per LLDP port
// index (0 .. 1024), shared by the three remote tables.  Each table is a
// consumer: it refreshes the cache from its population and has its rows
// added through its own callback.

enum class Consumer { kRemote, kManAddr, kUnknownTlv };
inline constexpr int kConsumers = 3;

// Calls visit(local port, record) for every neighbour record, unless the
// platform's LLDP status hash is the one of the last refresh and this
// consumer has filled its rows since.  0 when a port's neighbours could not
// be read (the next refresh tries again), else 1.
int refresh_neighbours(Consumer who, void (*visit)(void *context, int32_t port, const uint8_t *record), void *context);
template <class Visit>
int refresh_neighbours(Consumer who, Visit &&visit) {
    using V = std::remove_reference_t<Visit>;
    return refresh_neighbours(
        who, [](void *c, int32_t port, const uint8_t *record) { (*static_cast<V *>(c))(port, record); }, &visit);
}

// The first cached record of the port with this time mark and remote
// index, or null.
const uint8_t *find_neighbour(uint32_t time_mark, int32_t port, int32_t remote_index);

}  // namespace lldp
