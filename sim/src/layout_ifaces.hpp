// State of the interfaces, trunks and link aggregation that the base layout
// does not hold: one block appended to the configuration model and one to
// the hardware section.
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

// Configuration (ConfigModel::ifaces_ext).  Zero is the factory default of
// every field, so a fresh state needs no initialisation.
struct IfacesConfig {
    // Link up/down notifications switched off, by interface (ports, then trunks).
    uint8_t trap_disabled[SW_MAX_UNITS * SW_PORTS_PER_UNIT + SW_MAX_TRUNKS];
};

// Hardware and live state (Hardware::ifaces_ext).
struct IfacesHardware {
    // uptime_cs() when an interface last appeared or went away.
    uint32_t if_table_last_change;
    uint32_t reserved;
    // Ports blocked by an error condition while their link is up.
    uint8_t error_blocked[SW_MAX_UNITS * SW_PORTS_PER_UNIT];
};

}  // namespace swsim::layout
