// State of the simulated switch's CFM delay measurement probes in its file
// (a member of ConfigModel): the probes in the order of their numbers, each
// with what the network between its two MEPs does to the frames.
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

struct CfmProbe {
    uint32_t id;  // 1 .. SW_CFM_PROBE_MAX_ID
    int32_t unit0, port0;
    uint8_t target[6];
    uint8_t reserved[2];
    uint32_t delay_us;   // the path's two-way delay at its least
    uint32_t jitter_us;  // how far above it a measurement may lie
};

struct CfmConfig {
    uint32_t count;  // probes[0 .. count - 1] in use, numbers ascending
    uint32_t reserved;
    CfmProbe probes[SW_CFM_PROBES];
};

}  // namespace swsim::layout
