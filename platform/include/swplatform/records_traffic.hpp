// Byte layout of the egress queue counter area that the queue counter calls
// of swplatform/traffic.h fill: eight 64-bit counters, queue 0 first, each a
// big-endian word as the switch stores it.  Described once here, like the
// records of records.hpp.
#pragma once

#include <cstddef>
#include <cstdint>

#include "swplatform/records.hpp"

namespace swp::queue_area {

inline constexpr std::size_t kQueues = SW_QUEUES;
inline constexpr std::size_t kCounterSize = 8;
inline constexpr std::size_t kSize = SW_QUEUE_AREA_SIZE;

// The counter of queue q.
inline constexpr Field counter(std::size_t q) { return Field{q * kCounterSize, kCounterSize}; }
static_assert(counter(0).offset == 0 && counter(1).offset == 8);
static_assert(counter(kQueues - 1).end() == kSize && kSize == 64);

inline uint64_t load(const uint8_t *area, std::size_t q) {
    const uint8_t *p = area + counter(q).offset;
    return uint64_t(load_be32(p)) << 32 | load_be32(p + 4);
}
inline void store(uint8_t *area, std::size_t q, uint64_t value) {
    uint8_t *p = area + counter(q).offset;
    store_be32(p, uint32_t(value >> 32));
    store_be32(p + 4, uint32_t(value));
}

}  // namespace swp::queue_area
