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
// A text field into a caller's buffer, whole or not at all: 0, or -1 when
// it does not fit.
template <std::size_t N>
inline int text_out(const char (&src)[N], char *buf, std::size_t size) {
    const std::size_t n = strnlen(src, N - 1);
    if (!buf || n >= size) return -1;
    std::memcpy(buf, src, n);
    buf[n] = '\0';
    return 0;
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

// (a * b) / d rounded down, of the exact 128-bit product, for d > 0 (a
// quotient beyond 64 bits keeps its low 64).  The portable form serves
// 32-bit targets, which have no 128-bit integer.
inline uint64_t mul_div_portable(uint64_t a, uint64_t b, uint64_t d) {
    const uint64_t a0 = uint32_t(a), a1 = a >> 32, b0 = uint32_t(b), b1 = b >> 32;
    const uint64_t p00 = a0 * b0, p01 = a0 * b1, p10 = a1 * b0, p11 = a1 * b1;
    const uint64_t mid = (p00 >> 32) + uint32_t(p01) + uint32_t(p10);
    const uint64_t lo = mid << 32 | uint32_t(p00);
    const uint64_t hi = p11 + (p01 >> 32) + (p10 >> 32) + (mid >> 32);
    if (hi == 0) return lo / d;
    uint64_t rem = 0, q = 0;
    for (int bit = 127; bit >= 0; --bit) {  // long division, one bit at a time
        const bool carry = rem >> 63;
        rem = rem << 1 | ((bit >= 64 ? hi >> (bit - 64) : lo >> bit) & 1);
        q <<= 1;
        if (carry || rem >= d) {
            rem -= d;
            q |= 1;
        }
    }
    return q;
}
inline uint64_t mul_div(uint64_t a, uint64_t b, uint64_t d) {
#ifdef __SIZEOF_INT128__
    return uint64_t((unsigned __int128)a * b / d);
#else
    return mul_div_portable(a, b, d);
#endif
}

// Human names: units, ports and trunks count from one.  The number of a
// zero-based index, wide enough for any int.
inline long long human(int index0) { return (long long)index0 + 1; }
std::string port_name(int unit0, int port0);  // "1/5", or "trunk 3" for 512+
std::string trunk_name(int trunk0);           // "trunk 3"

}  // namespace swsim
