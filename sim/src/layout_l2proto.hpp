// State of the layer-2 protocols in the state file: what the operator
// configures (spanning tree, IGMP snooping, ring domains: one member at the
// end of ConfigModel) and what the protocols themselves reach (the tree's
// root and port roles, topology changes, ring states: one member at the end
// of Hardware).  The static multicast groups are records of the image
// (records_l2proto.hpp) and live there.
#pragma once

#include <cstdint>

#include "swplatform/platform.h"
#include "swplatform/records_l2proto.hpp"

namespace swsim::layout {

inline constexpr int kL2Ifaces = SW_MAX_UNITS * SW_PORTS_PER_UNIT + SW_MAX_TRUNKS;

struct StpPortConfig {
    uint8_t enabled;   // spanning tree on the port
    uint8_t edge;      // administrative edge port
    uint8_t linktype;  // SW_STP_LINK_*
    uint8_t prio;      // 0..240, steps of 16
    uint32_t cost;     // 1..200000000
};

struct EapsConfig {
    uint8_t created;
    uint8_t master;  // this switch is the ring's master node
    uint8_t reserved[2];
    char name[SW_EAPS_NAME_SIZE];
};

struct L2ProtoConfig {
    // spanning tree
    uint8_t stp_enabled;
    uint8_t stp_force_mode;
    uint8_t reserved[2];
    int32_t stp_prio;
    int32_t stp_max_age;    // hundredths of a second
    int32_t stp_hello;
    int32_t stp_fwd_delay;
    StpPortConfig stp_ports[kL2Ifaces];
    // IGMP snooping
    uint8_t igmp_enabled;
    uint8_t igmp_querier;
    uint8_t igmp_version;
    uint8_t reserved2;
    int32_t igmp_query_count;
    int32_t igmp_query_interval;  // seconds
    int32_t igmp_query_timeout;   // seconds
    // router ports: bit port0 % 8 of byte port0 / 8, per VLAN and unit
    uint8_t igmp_router[SW_MAX_VLAN_ID + 1][SW_MAX_UNITS][SW_PORTS_PER_UNIT / 8];
    // ring protection
    EapsConfig eaps[SW_EAPS_DOMAINS];
};

// What the tree has converged to.  A zero root_port means this bridge is the
// root; otherwise root, root cost and the root's timers come from the BPDUs
// it received on root_port (an interface number: ports, then trunks).
struct StpBridgeLive {
    uint16_t root_prio;
    uint8_t root_mac[6];
    uint32_t root_cost;
    uint32_t root_port;   // interface number + 1; 0: this bridge is root
    uint32_t changes;     // topology changes since boot
    int64_t last_change_ns;  // realtime of the last change (boot: none yet)
    uint32_t root_max_age, root_hello, root_fwd_delay;
};

// A port's state as the protocol set it; kStpAuto lets the model derive it
// from link and configuration.
inline constexpr uint8_t kStpAuto = 0xff;
struct StpPortLive {
    uint8_t state;  // SW_STP_* or kStpAuto
    uint8_t reserved[3];
};

struct L2ProtoHardware {
    StpBridgeLive stp;
    StpPortLive stp_ports[kL2Ifaces];
    uint8_t eaps_status[swp::eaps_status::kSize];  // big-endian entries
};

}  // namespace swsim::layout
