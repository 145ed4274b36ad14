// Small value makers shared by the routing tables' column lists.
#pragma once

#include "mibs/routing/hand_table.hpp"

namespace snmpapi::routing {

inline Value integer(int64_t v) { return word_value(Type::INTEGER, uint32_t(v)); }
inline Value ip(uint32_t v) { return word_value(Type::IPADDRESS, v); }
inline Value counter(uint32_t v) { return word_value(Type::COUNTER, v); }
inline Value gauge(uint32_t v) { return word_value(Type::GAUGE, v); }
inline Value ticks(uint32_t v) { return word_value(Type::TIMETICKS, v); }
inline Value empty_string() { return bytes_value("", 0); }

// TruthValue and the enabled/disabled pairs: 1 for non-zero, else 2.
inline int32_t truth(uint32_t on) { return on ? 1 : 2; }
// RowStatus of a row that exists: active(1).
inline constexpr int32_t kActive = 1;

// The interface index of a VLAN interface (0: none).
inline int32_t vlan_ifindex(int32_t vid) { return vid > 0 && vid <= 4094 ? 1000 + vid : 0; }

inline uint32_t prefix_mask(uint32_t prefix_len) { return prefix_len == 0 ? 0 : ~0u << (32 - (prefix_len > 32 ? 32 : prefix_len)); }

}  // namespace snmpapi::routing
