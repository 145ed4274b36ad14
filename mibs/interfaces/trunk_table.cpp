// trunkTable: the switch's static trunks (port channels) by trunk ID 1 .. 128
// (the platform's trunk0 + 1), their member ports as a port list, and how
// they were made; rows are created and destroyed through trunkStatus.
#include <algorithm>

#include "agent/ifindex.hpp"
#include "agent/port_list.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

namespace pl = snmpapi::port_list;

constexpr int32_t kMaxTrunkId = SW_MAX_TRUNKS;
enum RowStatus : int32_t { kExists = 1, kAbsent = 2 };
enum Creation : int32_t { kNoTrunk = 0, kStatic = 1, kDynamic = 2 };

int trunk0_of(int32_t trunk) { return index_minus(trunk, 1); }
bool trunk_exists(int32_t trunk) { return cfg_check_trunk(trunk0_of(trunk)) != 0; }

size_t unit_count() { return size_t(stack_unit_count()); }

}  // namespace

extern "C" {

int init_index_trunkTable(void *(*create)(int32_t)) {
    for (int32_t trunk = 1; trunk <= kMaxTrunkId; ++trunk)
        if (trunk_exists(trunk)) create(trunk);
    return 0;
}

int exists_entry_trunkTable(int32_t trunk) {
    if (trunk_exists(trunk)) return 1;
    trunkTable_removeEntry(trunk);
    return 0;
}

const uint8_t *get_trunkPorts(int32_t trunk, size_t *len) {
    static uint8_t area[pl::kAreaSize];
    *len = 0;
    if (cfg_check_trunk(trunk0_of(trunk)) == 0) return area;
    pl::read(area, pl::kReadOctetsPerUnit * unit_count(), len,
             [trunk](int unit0, int port0) { return cfg_check_port_tid(unit0, port0, trunk0_of(trunk)) > 0; });
    return area;
}

// Makes the trunk's members what the list says.  A trunk that does not exist
// is created first.  A port of another trunk ends the write with an error;
// the ports handled before it keep their change.
int set_trunkPorts(int32_t trunk, const uint8_t *octets, size_t length) {
    if (length > pl::kOctetsPerUnit * unit_count()) return -1;
    const int trunk0 = trunk0_of(trunk);
    const int configured = cfg_check_trunk(trunk0);
    if (configured < 0) return -1;  // no such trunk ID
    if (configured == 0) {
        if (cfg_create_trunk(trunk0) < 0) return -1;
        trunkTable_createEntry(trunk);
    }
    return pl::write_walk(octets, length, [trunk0](int unit0, int port0, pl::Bit bit) {
        switch (bit) {
        case pl::Bit::set: {
            const int now = cfg_get_port_tid(unit0, port0);
            if (now < 0) {
                cfg_add_port_to_trunk(trunk0, unit0, port0, 0);
            } else if (now != trunk0) {
                return -1;
            }
            break;
        }
        case pl::Bit::clear:
            cfg_remove_port_from_trunk(trunk0, unit0, port0);
            break;
        case pl::Bit::beyond:
            if (cfg_get_port_tid(unit0, port0) == trunk0) cfg_remove_port_from_trunk(trunk0, unit0, port0);
            break;
        }
        return 0;
    });
}

int32_t get_trunkCreation(int32_t trunk) {
    if (!trunk_exists(trunk)) return kNoTrunk;
    return cfg_is_dynamic_trunk(trunk0_of(trunk)) != 0 ? kDynamic : kStatic;
}

int32_t get_trunkStatus(int32_t trunk) { return trunk_exists(trunk) ? kExists : kAbsent; }

// The row follows at the next refresh (created) or at the next read that
// finds the trunk gone (destroyed).
int set_trunkStatus(int32_t trunk, int32_t value) {
    switch (value) {
    case kExists:
        return trunk_exists(trunk) ? -1 : cfg_create_trunk(trunk0_of(trunk));
    case kAbsent:
        if (!trunk_exists(trunk)) return -1;
        return cfg_destroy_trunk(trunk0_of(trunk)) < 0 ? -1 : 0;
    default:
        return -1;
    }
}

// ---- Scalars ----------------------------------------------------------------

int32_t get_trunkMaxId(void) { return kMaxTrunkId; }

int32_t get_trunkValidNumber(void) {
    int32_t n = 0;
    for (int trunk0 = 0; trunk0 < SW_MAX_TRUNKS; ++trunk0) n += cfg_check_trunk(trunk0) != 0 ? 1 : 0;
    return n;
}

}  // extern "C"
