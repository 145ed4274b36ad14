// The request record of cfg_get_mac_address_table_summary: seven 32-bit
// words, all fixed but the fifth, whose most significant byte names the unit
// (unit0) whose table is counted.  The words travel as values; the platform
// gives the constant ones their meaning.
#pragma once

#include <cstddef>
#include <cstdint>

#include "swplatform/platform.h"

namespace swp::mac_summary {

inline constexpr std::size_t kWords = SW_MAC_SUMMARY_WORDS;
inline constexpr uint32_t kWord0 = 0x260;
inline constexpr uint32_t kWord1 = 0xFFFFFEEF;
inline constexpr std::size_t kUnitWord = 4;  // the unit word
inline constexpr unsigned kUnitShift = 24;   // unit0 in its most significant byte
static_assert(kUnitWord < kWords);

// The request for unit0 (0 .. 7).
inline void build(int32_t request[kWords], uint32_t unit0) {
    for (std::size_t i = 0; i < kWords; ++i) request[i] = 0;
    request[0] = static_cast<int32_t>(kWord0);
    request[1] = static_cast<int32_t>(kWord1);
    request[kUnitWord] = static_cast<int32_t>((unit0 & 0xffu) << kUnitShift);
}

// The unit a request names, or -1 when it is not a request this record
// describes (other constant words, other bytes in the unit word).
inline int unit_of(const int32_t request[kWords]) {
    if (static_cast<uint32_t>(request[0]) != kWord0 || static_cast<uint32_t>(request[1]) != kWord1) return -1;
    for (std::size_t i = 2; i < kWords; ++i)
        if (i != kUnitWord && request[i] != 0) return -1;
    const uint32_t unit_word = static_cast<uint32_t>(request[kUnitWord]);
    if ((unit_word & ((1u << kUnitShift) - 1)) != 0) return -1;
    return static_cast<int>(unit_word >> kUnitShift);
}

}  // namespace swp::mac_summary
