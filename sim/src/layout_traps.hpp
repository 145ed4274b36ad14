// State of the trap service in the simulated switch's file: the trap
// destinations (configuration, a member of ConfigModel) and what the service
// has sent (hardware, a member of Hardware).
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

// One destination slot.  A slot is filled completely before `addr.family`
// marks it in use, and freed by clearing the family first, so that a reader
// that does not hold the configuration lock sees a whole destination or none.
struct TrapDest {
    sw_ip_addr_t addr;  // family SW_ADDR_NONE: free
    uint8_t version;    // SW_TRAP_V1 or SW_TRAP_V2C
    uint8_t reserved[2];
    char community[SW_TRAP_COMMUNITY_SIZE];
};

struct TrapsConfig {
    TrapDest dests[SW_TRAP_DESTS];
    // UDP port the destinations listen on: 162 on a real network; tests
    // point it at a receiver of their own.
    uint16_t udp_port;
    // Whether notifications may leave this machine: while 0 the simulated
    // switch sends to loopback destinations only and withholds the rest.
    uint8_t beyond_loopback;
    uint8_t reserved;
};

// Notifications raised, datagrams sent by destination slot, and the
// datagrams the network refused or the switch withheld.
struct TrapsHardware {
    uint64_t sent[SW_TRAP_DESTS];
    uint64_t notifications;
    uint64_t failed;
    uint64_t withheld;  // datagrams for destinations beyond loopback, not sent
    uint32_t request_id;  // of the last SNMPv2c notification
    uint32_t reserved;
};

}  // namespace swsim::layout
