// Statistic numbers of bcmd_snmp_stat_get, shared by the agent and the
// simulated switch.  The high-capacity counters and their 32-bit forms are
// the same counts; the non-unicast and frame counters are sums of the
// multicast/broadcast/unicast ones.
#pragma once

// X(name, number) for every statistic the switch counts; swp::stat::k<name>
// is its number and swp::stat::kNamed lists them with their names.
#define SWP_STATISTICS(X)                                                                                 \
    X(InOctets, 0) X(InUcast, 1) X(InNUcast, 2) X(InDiscards, 3) X(InErrors, 4)                           \
    X(InUnknownProtos, 5) X(OutOctets, 6) X(OutUcast, 7) X(OutNUcast, 8)                                  \
    X(OutDiscards, 9) X(OutErrors, 10) X(OutQLen, 11)                                                     \
    X(DelayExceededDiscards, 16) X(MtuExceededDiscards, 17) X(InFrames, 18)                               \
    X(OutFrames, 19) X(BridgeInDiscards, 20)                                                              \
    /* dot3StatsTable order */                                                                            \
    X(AlignmentErrors, 42) X(FcsErrors, 43) X(SingleCollisions, 44)                                       \
    X(MultipleCollisions, 45) X(SqeTestErrors, 46) X(DeferredTransmissions, 47)                           \
    X(LateCollisions, 48) X(ExcessiveCollisions, 49) X(InternalMacTxErrors, 50)                           \
    X(CarrierSenseErrors, 51) X(FrameTooLongs, 52) X(InternalMacRxErrors, 53)                             \
    X(SymbolErrors, 54) X(InUnknownOpcodes, 55)                                                           \
    /* ifXTable order */                                                                                  \
    X(HCInOctets, 58) X(HCInUcast, 59) X(HCInMulticast, 60) X(HCInBroadcast, 61)                          \
    X(HCOutOctets, 62) X(HCOutUcast, 63) X(HCOutMulticast, 64) X(HCOutBroadcast, 65)

namespace swp::stat {

#define SWP_STAT_NUMBER(name, number) k##name = number,
enum : int { SWP_STATISTICS(SWP_STAT_NUMBER) };
#undef SWP_STAT_NUMBER

struct Named {
    int number;
    const char *name;
};

#define SWP_STAT_NAMED(name, number) {number, #name},
inline constexpr Named kNamed[] = {SWP_STATISTICS(SWP_STAT_NAMED)};
#undef SWP_STAT_NAMED

}  // namespace swp::stat
