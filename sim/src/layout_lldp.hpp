// LLDP state of the simulated switch's file: what the operator configures
// (timers, per-port settings, what the switch announces: one member at the
// end of ConfigModel) and what the wire brings (the neighbours heard on each
// port, the counters and the remote table statistics: one member at the end
// of Hardware).
#pragma once

#include <cstdint>

#include "swplatform/platform.h"
#include "swplatform/records_lldp.hpp"

namespace swsim::layout {

// LLDP ports: the user ports (by physical index), then the management port.
inline constexpr int kLldpPorts = SW_MAX_UNITS * SW_PORTS_PER_UNIT + 1;
inline constexpr int kLldpMgmtSlot = kLldpPorts - 1;
// Neighbours the switch can hold at once, all ports together.
inline constexpr int kLldpNeighbours = 2048;

namespace lldp_nb = swp::lldp_neighbor;

struct LldpPortConfig {
    uint8_t admin;   // SW_LLDP_TX_ONLY .. SW_LLDP_DISABLED
    uint8_t notify;  // 0 or 1
    uint8_t tlvs;    // SW_LLDP_TLV_* bits
    uint8_t reserved;
};

struct LldpConfig {
    int32_t tx_interval;  // seconds
    int32_t tx_hold;
    int32_t reinit_delay;
    int32_t tx_delay;
    int32_t notification_interval;
    LldpPortConfig ports[kLldpPorts];
    // What the switch announces about itself.
    char sys_desc[lldp_nb::kSysDesc.size];
    char mgmt_port_desc[swp::lldp_intf::kMgmtDesc.size];
    uint16_t caps_supported;  // bit k: capability k
    uint16_t caps_enabled;
    uint8_t mgmt_is_mac;       // the management address announced is the chassis MAC
    uint8_t mgmt_oid_len;      // octets of mgmt_oid (BER, tag and length included)
    uint8_t reserved[2];
    uint32_t mgmt_ipv4;        // host order
    int32_t mgmt_if_id;        // interface number of the management address
    uint8_t mgmt_oid[swp::lldp_global::kMgmtOid.size];
};

// One neighbour as heard on a port: what it announces, as the platform's
// record holds it (host order; the time mark is uptime_cs() when it was
// heard first or changed last), and when and how often it sends.
struct LldpNeighbour : lldp_nb::Record {
    uint16_t rx_interval_s;    // how often the neighbour sends (1 .. 3600 s)
    uint16_t reserved[3];
    int64_t since_ns;          // realtime when heard first (its frames count from here)
};

// A port's LLDP counters.  Frames received count on from the neighbours'
// own clocks: base + for each neighbour (now - since_ns) / rx_interval_s;
// what a neighbour that goes had counted is added to the base.  Frames sent
// count one per transmit interval since tx_since_ns while the port sends.
struct LldpPortCounters {
    uint32_t tx_base;
    uint32_t rx_base;
    uint32_t rx_discarded;
    uint32_t rx_errors;
    uint32_t tlvs_discarded;
    uint32_t tlvs_unrecognized_base;
    uint32_t ageouts;
    uint32_t reserved;
    int64_t tx_since_ns;
};

struct LldpHardware {
    // owner[i]: the LLDP port (slot + 1) of neighbours[i]; 0 while it is free.
    uint16_t owner[kLldpNeighbours];
    uint32_t count;            // neighbours held
    int32_t next_remote_index;
    uint64_t generation;       // moves with every change of the neighbours
    // The remote table statistics.
    uint32_t last_change_cs;
    uint32_t inserts, deletes, drops, ageouts;
    uint32_t reserved;
    LldpPortCounters counters[kLldpPorts];
    LldpNeighbour neighbours[kLldpNeighbours];
};

}  // namespace swsim::layout
