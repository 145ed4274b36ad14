// Byte layouts of the layer-2 protocol records (l2proto.h): the spanning-tree
// bridge and port state records, the ring status entries and the static
// multicast group records of the configuration image.  Big-endian, described
// once, read and written only through the codecs below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "swplatform/records.hpp"

namespace swp {

// A bridge identifier as the records carry it: 16-bit priority, 6-octet MAC.
struct BridgeId {
    uint16_t prio = 0;
    uint8_t mac[6] = {};
};

inline BridgeId load_bridge_id(const uint8_t *p) {
    BridgeId id;
    id.prio = load_be16(p);
    std::memcpy(id.mac, p + 2, 6);
    return id;
}
inline void store_bridge_id(uint8_t *p, const BridgeId &id) {
    store_be16(p, id.prio);
    std::memcpy(p + 2, id.mac, 6);
}

// ---- Spanning-tree bridge state (cfg_get_stp_state) ------------------------

namespace stp_state {
inline constexpr std::size_t kSize = SW_STP_STATE_SIZE;
inline constexpr Field kRootId{28, 8};          // designated root: priority 28, MAC 30..35
inline constexpr Field kRootCost{44, 4};
inline constexpr Field kTimeSinceChange{52, 4}; // hundredths of a second
inline constexpr Field kChangeCount{60, 1};     // wraps after 255
inline constexpr Field kRootPort{62, 2};
inline constexpr Field kMaxAge{64, 4};
inline constexpr Field kHelloTime{68, 4};
inline constexpr Field kForwardDelay{72, 4};
static_assert(kRootId.offset == 28 && kRootId.end() == 36);
static_assert(kRootCost.offset == 44 && kTimeSinceChange.offset == 52);
static_assert(kChangeCount.offset == 60 && kRootPort.offset == 62);
static_assert(kMaxAge.offset == 64 && kHelloTime.offset == 68 && kForwardDelay.offset == 72);
static_assert(kRootId.end() <= kRootCost.offset && kRootCost.end() <= kTimeSinceChange.offset);
static_assert(kTimeSinceChange.end() <= kChangeCount.offset && kChangeCount.end() <= kRootPort.offset);
static_assert(kRootPort.end() == kMaxAge.offset && kForwardDelay.end() <= kSize);

struct Record {
    BridgeId root;
    uint32_t root_cost = 0;
    uint32_t time_since_change = 0;
    uint8_t change_count = 0;
    uint16_t root_port = 0;
    uint32_t max_age = 0;
    uint32_t hello_time = 0;
    uint32_t forward_delay = 0;
};

inline Record decode(const uint8_t *p) {
    Record r;
    r.root = load_bridge_id(p + kRootId.offset);
    r.root_cost = load_be32(p + kRootCost.offset);
    r.time_since_change = load_be32(p + kTimeSinceChange.offset);
    r.change_count = p[kChangeCount.offset];
    r.root_port = load_be16(p + kRootPort.offset);
    r.max_age = load_be32(p + kMaxAge.offset);
    r.hello_time = load_be32(p + kHelloTime.offset);
    r.forward_delay = load_be32(p + kForwardDelay.offset);
    return r;
}

inline void encode(const Record &r, uint8_t *p) {
    std::memset(p, 0, kSize);
    store_bridge_id(p + kRootId.offset, r.root);
    store_be32(p + kRootCost.offset, r.root_cost);
    store_be32(p + kTimeSinceChange.offset, r.time_since_change);
    p[kChangeCount.offset] = r.change_count;
    store_be16(p + kRootPort.offset, r.root_port);
    store_be32(p + kMaxAge.offset, r.max_age);
    store_be32(p + kHelloTime.offset, r.hello_time);
    store_be32(p + kForwardDelay.offset, r.forward_delay);
}
}  // namespace stp_state

// ---- Spanning-tree port state (cfg_get_stp_port_state) ---------------------

namespace stp_port_state {
inline constexpr std::size_t kSize = SW_STP_PORT_STATE_SIZE;
inline constexpr Field kState{12, 4};             // SW_STP_DISABLED .. SW_STP_FORWARDING
inline constexpr Field kPathCost{16, 4};
inline constexpr Field kDesignatedRoot{20, 8};    // priority 20, MAC 22..27
inline constexpr Field kDesignatedCost{36, 4};
inline constexpr Field kDesignatedBridge{44, 8};  // priority 44, MAC 46..51
inline constexpr Field kDesignatedPort{52, 2};    // as on the wire
inline constexpr Field kOperPointToPoint{129, 1};
inline constexpr Field kOperEdge{130, 1};
static_assert(kState.offset == 12 && kPathCost.offset == 16 && kDesignatedRoot.offset == 20);
static_assert(kDesignatedCost.offset == 36 && kDesignatedBridge.offset == 44 && kDesignatedPort.offset == 52);
static_assert(kOperPointToPoint.offset == 129 && kOperEdge.offset == 130);
static_assert(kState.end() == kPathCost.offset && kPathCost.end() == kDesignatedRoot.offset);
static_assert(kDesignatedRoot.end() <= kDesignatedCost.offset);
static_assert(kDesignatedCost.end() <= kDesignatedBridge.offset);
static_assert(kDesignatedBridge.end() == kDesignatedPort.offset);
static_assert(kDesignatedPort.end() <= kOperPointToPoint.offset && kOperEdge.end() <= kSize);

struct Record {
    uint32_t state = 0;
    uint32_t path_cost = 0;
    BridgeId designated_root;
    uint32_t designated_cost = 0;
    BridgeId designated_bridge;
    uint8_t designated_port[2] = {};
    uint8_t oper_point_to_point = 0;
    uint8_t oper_edge = 0;
};

inline Record decode(const uint8_t *p) {
    Record r;
    r.state = load_be32(p + kState.offset);
    r.path_cost = load_be32(p + kPathCost.offset);
    r.designated_root = load_bridge_id(p + kDesignatedRoot.offset);
    r.designated_cost = load_be32(p + kDesignatedCost.offset);
    r.designated_bridge = load_bridge_id(p + kDesignatedBridge.offset);
    std::memcpy(r.designated_port, p + kDesignatedPort.offset, kDesignatedPort.size);
    r.oper_point_to_point = p[kOperPointToPoint.offset];
    r.oper_edge = p[kOperEdge.offset];
    return r;
}

inline void encode(const Record &r, uint8_t *p) {
    std::memset(p, 0, kSize);
    store_be32(p + kState.offset, r.state);
    store_be32(p + kPathCost.offset, r.path_cost);
    store_bridge_id(p + kDesignatedRoot.offset, r.designated_root);
    store_be32(p + kDesignatedCost.offset, r.designated_cost);
    store_bridge_id(p + kDesignatedBridge.offset, r.designated_bridge);
    std::memcpy(p + kDesignatedPort.offset, r.designated_port, kDesignatedPort.size);
    p[kOperPointToPoint.offset] = r.oper_point_to_point;
    p[kOperEdge.offset] = r.oper_edge;
}
}  // namespace stp_port_state

// ---- Ring status entries (status_get_eaps) ---------------------------------

namespace eaps_status {
inline constexpr std::size_t kEntrySize = 76;
inline constexpr std::size_t kSize = SW_EAPS_DOMAINS * kEntrySize;
inline constexpr Field kDomain{0, 4};  // the domain's own identifier
inline constexpr Field kState{4, 4};   // the ring state, the platform's codes
static_assert(kDomain.end() == kState.offset && kState.end() <= kEntrySize);

inline uint32_t state(const uint8_t *block, int id) {
    return load_be32(block + std::size_t(id) * kEntrySize + kState.offset);
}
inline void set_entry(uint8_t *block, int id, uint32_t state) {
    uint8_t *e = block + std::size_t(id) * kEntrySize;
    store_be32(e + kDomain.offset, uint32_t(id));
    store_be32(e + kState.offset, state);
}
}  // namespace eaps_status

// ---- Static multicast groups (configuration image) -------------------------
//
// 128 records of 68 32-bit words: word 0 non-zero while in use, word 1 the
// IPv4 group, word 3 the VLAN, words 4 + 8 * unit0 + port0 / 32 the unit's
// port bitmap, port0 at bit (port0 % 32) from the least significant end.

namespace igmp_groups {
inline constexpr std::size_t kRecords = 128;
inline constexpr std::size_t kWords = 68;
inline constexpr std::size_t kRecordSize = kWords * 4;
inline constexpr std::size_t kInUseWord = 0;
inline constexpr std::size_t kGroupWord = 1;
inline constexpr std::size_t kVlanWord = 3;
inline constexpr std::size_t kBitmapWord = 4;
inline constexpr std::size_t kWordsPerUnit = 8;  // 256 ports a unit
inline constexpr std::size_t kOffset = 0x1200000;  // 18 MiB into the image
inline constexpr std::size_t kSize = kRecords * kRecordSize;
static_assert(kRecordSize == 272);
static_assert(kBitmapWord + SW_MAX_UNITS * kWordsPerUnit == kWords);
static_assert(cfg_image::kTrunkMembersOffset + cfg_image::kTrunkMembersSize <= kOffset);
static_assert(kOffset + kSize <= cfg_image::kSize);

inline uint8_t *record(uint8_t *image, std::size_t i) { return image + kOffset + i * kRecordSize; }
inline const uint8_t *record(const uint8_t *image, std::size_t i) { return image + kOffset + i * kRecordSize; }
inline uint32_t word(const uint8_t *rec, std::size_t w) { return load_be32(rec + w * 4); }
inline void set_word(uint8_t *rec, std::size_t w, uint32_t v) { store_be32(rec + w * 4, v); }
inline std::size_t bitmap_word(int unit0, int port0) {
    return kBitmapWord + std::size_t(unit0) * kWordsPerUnit + std::size_t(port0) / 32;
}
inline bool has_port(const uint8_t *rec, int unit0, int port0) {
    return (word(rec, bitmap_word(unit0, port0)) >> (port0 % 32)) & 1u;
}
}  // namespace igmp_groups

}  // namespace swp
