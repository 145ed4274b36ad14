// IPv4 addresses between the MIB's IpAddress values (host-order words) and
// the platform's dotted texts, through the platform's own conversions; a
// failed conversion gives its negative result.  No net-snmp here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "swplatform/platform.h"

namespace snmpapi::services {

// "a.b.c.d" and its zero.
inline constexpr std::size_t kDottedSize = 17;
using Dotted = char[kDottedSize];

inline int to_dotted(uint32_t addr, Dotted &text) {
    text[0] = '\0';
    return ip_uint32_to_str(addr, text, sizeof text);
}

// The address a slot's text names; false when the text is none.
inline bool from_dotted(const char *text, uint32_t &addr) { return ip_str_to_uint32(text, &addr) == 0; }

// A text from the platform as an octet-string answer (empty for none).
inline const uint8_t *text_answer(const char *text, std::size_t *len) {
    static const char empty[] = "";
    if (text == nullptr) text = empty;
    *len = std::strlen(text);
    return reinterpret_cast<const uint8_t *>(text);
}

// Switches: the platform's 1/0 as the MIB's enabled(1)/disabled(2).
inline constexpr int32_t kEnabled = 1, kDisabled = 2;
inline int32_t enabled_if(int platform_answer) { return platform_answer != 0 ? kEnabled : kDisabled; }

}  // namespace snmpapi::services
