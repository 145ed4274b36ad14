// Small helpers shared by the simulator's sources.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace swsim {

// Copies at most size-1 bytes of src and always terminates (size > 0).
inline void copy_text(char *dst, std::size_t size, const char *src) {
    std::size_t n = strnlen(src, size - 1);
    std::memcpy(dst, src, n);
    dst[n] = '\0';
}
template <std::size_t N>
inline void copy_text(char (&dst)[N], const std::string &src) {
    copy_text(dst, N, src.c_str());
}
template <std::size_t N>
inline std::string text_of(const char (&src)[N]) {
    return std::string(src, strnlen(src, N));
}

// Adds n to a MAC address read as a 48-bit number.
inline void mac_add(const uint8_t in[6], uint64_t n, uint8_t out[6]) {
    uint64_t v = 0;
    for (int i = 0; i < 6; ++i) v = v << 8 | in[i];
    v += n;
    for (int i = 5; i >= 0; --i, v >>= 8) out[i] = uint8_t(v);
}

std::string mac_text(const uint8_t mac[6]);
// "aa:bb:cc:dd:ee:ff" (or with '-'); false if malformed.
bool parse_mac(const std::string &text, uint8_t mac[6]);

// Human names: units, ports and trunks count from one.  The number of a
// zero-based index, wide enough for any int.
inline long long human(int index0) { return (long long)index0 + 1; }
std::string port_name(int unit0, int port0);  // "1/5", or "trunk 3" for 512+
std::string trunk_name(int trunk0);           // "trunk 3"

}  // namespace swsim
