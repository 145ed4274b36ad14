// P-BRIDGE priority objects: default user priority of the bridge ports, the
// switch's eight fixed traffic classes and the port capabilities.
#include "agent/ifindex.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

constexpr int32_t kTrafficClasses = 8;
constexpr int32_t kFirstTrunkIndex = 513;

bool trunk_in_use(int trunk0) { return cfg_check_trunk(trunk0) > 0 && cfg_is_trunk_empty(trunk0) == 0; }

}  // namespace

extern "C" {

// ---- dot1dPortPriorityTable -------------------------------------------------

int init_index_dot1dPortPriorityTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_dot1dPortPriorityTable(int32_t i) { return ifindex_row_exists(i, dot1dPortPriorityTable_removeEntry); }

int32_t get_dot1dPortDefaultUserPriority(int32_t i) {
    const int priority = cfg_get_default_priority(ifindex_to_unit0(i), ifindex_to_port0(i));
    return priority >= 0 ? priority : 0;
}
int set_dot1dPortDefaultUserPriority(int32_t i, int32_t priority) {
    return cfg_set_default_priority(ifindex_to_unit0(i), ifindex_to_port0(i), priority);
}

// Eight classes on every port, fixed in the switch chip.
int32_t get_dot1dPortNumTrafficClasses(int32_t) { return kTrafficClasses; }
int set_dot1dPortNumTrafficClasses(int32_t, int32_t) { return -1; }

// ---- dot1dTrafficClassTable -------------------------------------------------
//
// Rows are (port, priority 0 .. 7).  User ports are numbered 1, 2, ... across
// the present units in unit order (not by the 64-per-unit interface index);
// trunks keep their interface index 513 + trunk0.

int init_index_dot1dTrafficClassTable(void *(*create)(int32_t, int32_t)) {
    int32_t n = 1;
    for (int unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0) {
        if (!ifindex_unit_present(unit0)) continue;
        for (int port0 = 0; port0 < unit_port_count(unit0); ++port0, ++n)
            for (int32_t priority = 0; priority < kTrafficClasses; ++priority) create(n, priority);
    }
    for (int trunk0 = 0; trunk0 < SW_MAX_TRUNKS; ++trunk0)
        if (trunk_in_use(trunk0))
            for (int32_t priority = 0; priority < kTrafficClasses; ++priority)
                create(kFirstTrunkIndex + trunk0, priority);
    return 0;
}

// Port numbers are not checked; a trunk row (512 .. 639, 512 as trunk 511)
// lasts while its trunk exists.
int exists_entry_dot1dTrafficClassTable(int32_t port, int32_t priority) {
    if (port < 512 || port > 639) return 1;
    if (cfg_check_trunk(port == 512 ? 511 : port - kFirstTrunkIndex) > 0) return 1;
    dot1dTrafficClassTable_removeEntry(port, priority);
    return 0;
}

int32_t get_dot1dTrafficClass(int32_t, int32_t) { return 1; }
int set_dot1dTrafficClass(int32_t, int32_t, int32_t) { return 1; }  // accepted, nothing to change

// ---- dot1dPortCapabilitiesTable ---------------------------------------------

int init_index_dot1dPortCapabilitiesTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_dot1dPortCapabilitiesTable(int32_t i) {
    return ifindex_row_exists(i, dot1dPortCapabilitiesTable_removeEntry);
}

// dot1qDot1qTagging, dot1qConfigurableAcceptableFrameTypes and
// dot1qIngressFiltering (bits 0, 1, 2).
const uint8_t *get_dot1dPortCapabilities(int32_t, size_t *len) {
    static uint8_t caps;
    caps |= 0xe0;
    *len = 1;
    return &caps;
}

// ---- Scalars ----------------------------------------------------------------

int32_t get_dot1dTrafficClassesEnabled(void) { return 1; }
int set_dot1dTrafficClassesEnabled(int32_t) { return -1; }

}  // extern "C"
