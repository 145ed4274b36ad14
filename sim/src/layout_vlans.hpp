// State of the VLAN settings that are not VLAN membership: per interface
// (ports, then trunks) PVID, discard mode, ingress filtering, GVRP and
// default priority; switch-wide GVRP and the management VLAN's address
// method.  One member of ConfigModel.
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

inline constexpr int kVlanIfaces = SW_MAX_UNITS * SW_PORTS_PER_UNIT + SW_MAX_TRUNKS;

struct VlanPortConfig {
    uint16_t pvid;          // 1 .. 4094
    uint8_t discard;        // 0 admit all, 1 discard tagged, 2 discard untagged
    uint8_t ingress_filter;
    uint8_t gvrp;
    uint8_t default_priority;  // 0 .. 7
    uint8_t reserved[2];
};

struct VlanSettings {
    VlanPortConfig ports[kVlanIfaces];
    uint8_t gvrp;         // GVRP enabled on the switch
    uint8_t dhcp_client;  // VLAN 1's address comes from DHCP
    uint8_t reserved[2];
};

}  // namespace swsim::layout
