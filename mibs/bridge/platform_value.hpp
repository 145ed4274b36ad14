// Getters never fail: a platform read that fails (a negative answer where
// the value itself is never negative) is shown as 0.  No net-snmp here.
#pragma once

#include <cstdint>

namespace snmpapi {
inline int32_t value_or_zero(int platform_answer) { return platform_answer < 0 ? 0 : platform_answer; }
}  // namespace snmpapi
