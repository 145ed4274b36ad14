// The units of the stack as the chassis tables see them: the per-unit
// records of the platform's status block, the rows of the tables indexed by
// unit number (1 .. 8) and their row check.  No net-snmp here.
#pragma once

#include <cstdint>

#include "agent/ifindex.hpp"
#include "swplatform/platform.h"

namespace snmpapi::chassis {

// The unit number of a row as unit0, wrapped so that any index outside
// 1 .. 8 lands beyond the stack (a negative one as well).
inline uint32_t unit0_of(int32_t unit) { return static_cast<uint32_t>(index_minus(unit, 1)); }

// The status record of unit0, or null beyond the stack.
inline const sw_unit_status_t *unit_record(uint32_t unit0) {
    if (unit0 >= SW_MAX_UNITS) return nullptr;
    const sw_status_t *st = get_status();
    return st != nullptr ? &st->units[unit0] : nullptr;
}

// A unit in the stack now (its present word is set).
inline bool unit_present(uint32_t unit0) {
    const sw_unit_status_t *u = unit_record(unit0);
    return u != nullptr && u->present != 0;
}

// A unit whose tables are counted: present, or known to the stack through
// its second status byte though its present word is 0.
inline bool unit_counted(uint32_t unit0) {
    const sw_unit_status_t *u = unit_record(unit0);
    return u != nullptr && (u->present != 0 || u->status2 != 0);
}

// Adds a row through `create` for every present unit, in unit order.
inline void populate_present_units(void *(*create)(int32_t)) {
    for (uint32_t unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0)
        if (unit_present(unit0)) create(static_cast<int32_t>(unit0) + 1);
}

// The row check of the tables with one row per present unit: an index
// outside 1 .. 8 answers 0 and is left alone; a unit that has left the
// stack has its row removed through `remove` and answers 0.
inline int unit_row_exists(int32_t unit, void (*remove)(int32_t)) {
    const uint32_t unit0 = unit0_of(unit);
    if (unit0 >= SW_MAX_UNITS) return 0;
    if (unit_present(unit0)) return 1;
    remove(unit);
    return 0;
}

}  // namespace snmpapi::chassis
