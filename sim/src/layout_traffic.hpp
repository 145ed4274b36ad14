// State of the per-port traffic controls in the simulated switch's file:
// rate limits, storm control and mirroring (configuration, a member of
// ConfigModel) and the operator's adjustments of the queue counters
// (hardware, a member of Hardware).
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

inline constexpr int kTrafficIfaces = SW_MAX_UNITS * SW_PORTS_PER_UNIT + SW_MAX_TRUNKS;  // ports, then trunks
inline constexpr int kQueueCounterKinds = 4;  // sent packets, sent bytes, dropped packets, dropped bytes

// Directions of a rate limit.
enum Direction : int { kIngress = 0, kEgress = 1 };

struct TrafficIfaceConfig {
    uint32_t rate_kbps[2];  // by Direction; 0 no limit
    uint32_t burst_kb[2];   // by Direction; 0 the default burst
    uint32_t bcast_pps;     // storm threshold; 0 the default
    uint8_t bcast_enable;
    uint8_t mirror;         // SW_MIRROR_*
    uint8_t reserved[2];
};

struct TrafficConfig {
    TrafficIfaceConfig ifaces[kTrafficIfaces];
    uint8_t mirror_to_set;  // a destination is configured
    uint8_t reserved[3];
    int32_t mirror_to_unit0;
    int32_t mirror_to_port0;
};

// A queue counter reads what the port's load gave it plus its offset (mod
// 2^64); setting a counter stores the difference.
struct TrafficHardware {
    uint64_t queue_offset[SW_MAX_UNITS * SW_PORTS_PER_UNIT][kQueueCounterKinds][SW_QUEUES];
};

}  // namespace swsim::layout
