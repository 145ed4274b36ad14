// State of the interfaces, trunks and link aggregation that the base layout
// does not hold: one block appended to the configuration model and one to
// the hardware section.
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

// LACP settings of a port.
struct LacpPortConfig {
    uint8_t enabled;  // runs LACP, in active mode
    uint8_t reserved;
    uint16_t priority;  // actor port priority
    uint16_t key;       // actor key
    uint16_t reserved2;
};

// Configuration (ConfigModel::ifaces_ext).  The scenario builder sets the
// LACP defaults; everything else defaults to zero.
struct IfacesConfig {
    // Link up/down notifications switched off, by interface (ports, then trunks).
    uint8_t trap_disabled[SW_MAX_UNITS * SW_PORTS_PER_UNIT + SW_MAX_TRUNKS];
    uint16_t lacp_system_priority;
    uint16_t reserved;
    LacpPortConfig lacp[SW_MAX_UNITS * SW_PORTS_PER_UNIT];
    // Dynamic trunks that LACP formed here (and so dissolves again); other
    // dynamic trunks are left as they are.
    uint8_t lacp_formed[SW_MAX_TRUNKS];
};

// What the link partner of a port announces in its LACPDUs, and the
// protocol counters.  The LACPDU counters grow while a partner is heard:
// base + time since `since_ns` / the sender's periodic interval.
struct LacpPartner {
    uint8_t present;
    uint8_t state;  // SW_LACP_* bits
    uint16_t system_priority;
    uint8_t system[6];
    uint16_t key;
    uint16_t port;
    uint16_t port_priority;
    uint32_t last_rx_cs;
    int64_t since_ns;  // realtime when the partner was first heard
    uint64_t counters[SW_LACP_COUNTERS];  // bases
    // Protocol events, as in sw_lacp_port_t.
    uint32_t actor_churns, partner_churns;
    uint32_t actor_sync_transitions, partner_sync_transitions;
    uint32_t actor_changes, partner_changes;
};

// Hardware and live state (Hardware::ifaces_ext).
struct IfacesHardware {
    // uptime_cs() when an interface last appeared or went away.
    uint32_t if_table_last_change;
    uint32_t reserved;
    // Ports blocked by an error condition while their link is up.
    uint8_t error_blocked[SW_MAX_UNITS * SW_PORTS_PER_UNIT];
    uint32_t lacp_last_change;  // uptime_cs() of the last LACP change
    uint32_t reserved2;
    LacpPartner lacp[SW_MAX_UNITS * SW_PORTS_PER_UNIT];
};

}  // namespace swsim::layout
