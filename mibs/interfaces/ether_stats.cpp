// EtherLike-MIB: the Ethernet error and collision counters of every port and
// trunk (dot3StatsTable), and the collision histogram, MAC control, pause and
// high-capacity tables, which the switch registers but does not keep.
//
// Counters are the platform's 64-bit statistics, answered as their low 32
// bits; a trunk is read as unit0 0, port0 512 + trunk0 (the sum over its
// members).
#include "agent/ifindex.hpp"
#include "swplatform/platform.h"
#include "swplatform/statistics.hpp"
#include "tables/catalogue.hpp"

// The counter columns of dot3StatsTable and the platform statistic each
// reads.
#define SA_DOT3_COUNTERS(X)                                                 \
    X(dot3StatsAlignmentErrors, swp::stat::kAlignmentErrors)                \
    X(dot3StatsFCSErrors, swp::stat::kFcsErrors)                            \
    X(dot3StatsSingleCollisionFrames, swp::stat::kSingleCollisions)         \
    X(dot3StatsMultipleCollisionFrames, swp::stat::kMultipleCollisions)     \
    X(dot3StatsSQETestErrors, swp::stat::kSqeTestErrors)                    \
    X(dot3StatsDeferredTransmissions, swp::stat::kDeferredTransmissions)    \
    X(dot3StatsLateCollisions, swp::stat::kLateCollisions)                  \
    X(dot3StatsExcessiveCollisions, swp::stat::kExcessiveCollisions)        \
    X(dot3StatsInternalMacTransmitErrors, swp::stat::kInternalMacTxErrors)  \
    X(dot3StatsCarrierSenseErrors, swp::stat::kCarrierSenseErrors)          \
    X(dot3StatsFrameTooLongs, swp::stat::kFrameTooLongs)                    \
    X(dot3StatsInternalMacReceiveErrors, swp::stat::kInternalMacRxErrors)   \
    X(dot3StatsSymbolErrors, swp::stat::kSymbolErrors)

namespace {

// Unknown MAC control opcodes received.
constexpr int kInUnknownOpcodes = 55;

// dot3StatsDuplexStatus: unknown(1), halfDuplex(2), fullDuplex(3).
enum Duplex : int32_t { kDuplexUnknown = 1, kHalfDuplex = 2, kFullDuplex = 3 };

}  // namespace

extern "C" {

// ---- dot3StatsTable ---------------------------------------------------------

int init_index_dot3StatsTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_dot3StatsTable(int32_t i) { return ifindex_row_exists(i, dot3StatsTable_removeEntry); }

int32_t get_dot3StatsIndex(int32_t i) { return i; }
#define SA_DOT3_COUNTER_GETTER(column, stat) \
    uint32_t get_##column(int32_t i) { return ifindex_stat_low32(i, stat); }
SA_DOT3_COUNTERS(SA_DOT3_COUNTER_GETTER)
#undef SA_DOT3_COUNTER_GETTER

// The MAC chip is not identified: the null identifier 0.0.
const uint32_t *get_dot3StatsEtherChipSet(int32_t, size_t *len) {
    static const uint32_t zero_dot_zero[2] = {0, 0};
    *len = sizeof zero_dot_zero;
    return zero_dot_zero;
}

// From the port's record in the status block.  Trunks and VLAN interfaces
// have no record of their own there and read unknown.
int32_t get_dot3StatsDuplexStatus(int32_t i) {
    const int32_t unit0 = ifindex_to_unit0(i), port0 = ifindex_to_port0(i);
    const sw_status_t *st = get_status();
    if (st == nullptr || unit0 < 0 || unit0 >= SW_MAX_UNITS || port0 < 0 || port0 >= SW_PORTS_PER_UNIT)
        return kDuplexUnknown;
    const sw_port_status_t &port = st->units[unit0].ports[port0];
    if (port.link == 0) return kDuplexUnknown;
    return port.duplex == 1 ? kFullDuplex : kHalfDuplex;
}

int32_t get_dot3StatsRateControlAbility(int32_t) { return 0; }
int32_t get_dot3StatsRateControlStatus(int32_t) { return 0; }

// ---- Tables the switch does not keep: registered, never populated ----------

int init_index_dot3CollTable(void *(*)(int32_t, int32_t)) { return 0; }
int exists_entry_dot3CollTable(int32_t, int32_t) { return 1; }
uint32_t get_dot3CollFrequencies(int32_t, int32_t) { return 0; }

int init_index_dot3ControlTable(void *(*)(int32_t)) { return 0; }
int exists_entry_dot3ControlTable(int32_t) { return 1; }
// No MAC control function: an empty bit set.
const uint8_t *get_dot3ControlFunctionsSupported(int32_t, size_t *len) {
    static const uint8_t none[1] = {0};
    *len = sizeof none;
    return none;
}
uint32_t get_dot3ControlInUnknownOpcodes(int32_t i) { return ifindex_stat_low32(i, kInUnknownOpcodes); }

int init_index_dot3PauseTable(void *(*)(int32_t)) { return 0; }
int exists_entry_dot3PauseTable(int32_t) { return 1; }
int32_t get_dot3PauseAdminMode(int32_t) { return 0; }
// Pause is configured through portFlowCtrlCfg; a write here changes nothing.
int set_dot3PauseAdminMode(int32_t, int32_t) { return 0; }
int32_t get_dot3PauseOperMode(int32_t) { return 0; }

int init_index_dot3HCStatsTable(void *(*)(int32_t)) { return 0; }
int exists_entry_dot3HCStatsTable(int32_t) { return 1; }
uint64_t get_dot3HCStatsAlignmentErrors(int32_t) { return 0; }
uint64_t get_dot3HCStatsFCSErrors(int32_t) { return 0; }
uint64_t get_dot3HCStatsInternalMacTransmitErrors(int32_t) { return 0; }
uint64_t get_dot3HCStatsFrameTooLongs(int32_t) { return 0; }
uint64_t get_dot3HCStatsInternalMacReceiveErrors(int32_t) { return 0; }
uint64_t get_dot3HCStatsSymbolErrors(int32_t) { return 0; }

}  // extern "C"
