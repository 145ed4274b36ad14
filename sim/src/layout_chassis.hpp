// State of the chassis in the simulated switch's file: the stack's fixed
// shape (bays, fan positions, alarm contacts), what is fitted in each unit
// and how it fares, the processor and memory load, and how long a count of
// a unit's address table takes.  One block appended to the hardware section.
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

// A power supply or fan module in its bay or position.
struct ChassisModule {
    uint8_t state;  // SW_MODULE_*
    uint8_t reserved[3];
    char model[SW_MODEL_SIZE];
};

struct ChassisUnit {
    ChassisModule psus[SW_MAX_PSUS];
    ChassisModule fans[SW_MAX_FANS];
    uint8_t alarm_raised[SW_MAX_ALARM_INPUTS];
    int32_t temperature_c;  // with every fan running
    // Processor and memory load in percent: base, and how far the reading
    // swings around it either way (0: steady).
    uint32_t cpu_base, cpu_swing;
    uint32_t mem_base, mem_swing;
};

struct ChassisHardware {
    sw_chassis_info_t info;
    uint8_t alarm_output_forced[SW_MAX_ALARM_OUTPUTS];
    // A count of a unit's address table takes this long; while `hold` is
    // set it waits (at most kMacSummaryHoldLimitMs), so that tests can catch
    // a count in progress.
    uint32_t mac_summary_ms;
    uint32_t mac_summary_hold;
    ChassisUnit units[SW_MAX_UNITS];
};

inline constexpr uint32_t kMacSummaryMaxMs = 60000;
inline constexpr uint32_t kMacSummaryHoldLimitMs = 20000;

}  // namespace swsim::layout
