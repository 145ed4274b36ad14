// Statistic numbers of bcmd_snmp_stat_get, shared by the agent and the
// simulated switch.  The high-capacity counters and their 32-bit forms are
// the same counts; the non-unicast and frame counters are sums of the
// multicast/broadcast/unicast ones.
#pragma once

namespace swp::stat {
enum : int {
    kInOctets = 0, kInUcast = 1, kInNUcast = 2, kInDiscards = 3, kInErrors = 4,
    kInUnknownProtos = 5, kOutOctets = 6, kOutUcast = 7, kOutNUcast = 8,
    kOutDiscards = 9, kOutErrors = 10, kOutQLen = 11,
    kDelayExceededDiscards = 16, kMtuExceededDiscards = 17, kInFrames = 18,
    kOutFrames = 19, kBridgeInDiscards = 20,
    // dot3StatsTable order
    kAlignmentErrors = 42, kFcsErrors = 43, kSingleCollisions = 44,
    kMultipleCollisions = 45, kSqeTestErrors = 46, kDeferredTransmissions = 47,
    kLateCollisions = 48, kExcessiveCollisions = 49, kInternalMacTxErrors = 50,
    kCarrierSenseErrors = 51, kFrameTooLongs = 52, kInternalMacRxErrors = 53,
    kSymbolErrors = 54, kInUnknownOpcodes = 55,
    // ifXTable order
    kHCInOctets = 58, kHCInUcast = 59, kHCInMulticast = 60, kHCInBroadcast = 61,
    kHCOutOctets = 62, kHCOutUcast = 63, kHCOutMulticast = 64, kHCOutBroadcast = 65,
};
}  // namespace swp::stat
