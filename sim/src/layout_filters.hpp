// State of the simulated switch's packet filters in its file: the filters
// and the ports they are applied on (a member of ConfigModel) and what
// drives their counters (a member of Hardware).
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

struct FilterConfig {
    uint8_t in_use;
    uint8_t reserved[3];
    char name[SW_FILTER_TEXT_SIZE];
    char rule[SW_FILTER_TEXT_SIZE];
    uint8_t ports[SW_MAX_UNITS * SW_PORTS_PER_UNIT / 8];  // physical ports, bit (unit0 * 64 + port0)
};

struct FiltersConfig {
    FilterConfig filters[2][SW_FILTERS];  // SW_FILTER_INGRESS, SW_FILTER_EGRESS
};

// A filter matches `pps` packets of `packet_bytes` octets a second on each
// of its ports, from `applied_ns` (realtime) on.
struct FilterCounting {
    uint64_t pps;
    uint32_t packet_bytes;
    uint32_t reserved;
    int64_t applied_ns;
};

struct FiltersHardware {
    FilterCounting counting[2][SW_FILTERS];
};

}  // namespace swsim::layout
