// The counters' 128-bit scaling (rate x time / unit), in the portable form
// that 32-bit targets use and, where the machine has a 128-bit integer, in
// agreement with it.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "util.hpp"

namespace {

TEST(MulDiv, PortableFormIsExact) {
    constexpr uint64_t kMax = UINT64_MAX;
    const struct {
        uint64_t a, b, d, want;
    } cases[] = {
        {0, 0, 1, 0},
        {7, 3, 2, 10},                                          // rounds down
        {kMax, 1, 1, kMax},
        {kMax, kMax, kMax, kMax},                               // product of 128 bits
        {kMax, 1000, 1000, kMax},
        {kMax, 2, 4, kMax / 2},
        {uint64_t(1) << 63, 4, uint64_t(1) << 63, 4},           // divisor with its top bit set
        {kMax, kMax, 1, 1},                                     // quotient beyond 64 bits: its low 64
        {1'250'000'000'000'000ull, 3'600'000'000'000ull, 1'000'000'000'000'000ull, 4'500'000'000'000ull},
        {123'456'789'012ull, 987, 1000, 121'851'850'754ull},
    };
    for (const auto &c : cases)
        EXPECT_EQ(swsim::mul_div_portable(c.a, c.b, c.d), c.want) << c.a << " * " << c.b << " / " << c.d;
}

#ifdef __SIZEOF_INT128__
TEST(MulDiv, PortableFormAgreesWithTheMachine) {
    std::mt19937_64 random(20240607);
    for (int i = 0; i < 20000; ++i) {
        const int shift = i % 64;
        const uint64_t a = random(), b = random() >> (i % 61), d = (random() >> shift) | 1;
        EXPECT_EQ(swsim::mul_div_portable(a, b, d), uint64_t((unsigned __int128)a * b / d)) << a << " * " << b << " / " << d;
    }
}
#endif

}  // namespace
