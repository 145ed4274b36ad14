// Byte layouts of the records that the platform exchanges with the module.
//
// The switch is a 32-bit big-endian machine and these records cross the
// platform boundary as raw bytes in its order.  Each record is described once
// here: its size, the offset of every field, and load/store helpers that work
// the same on any host.  Nothing here depends on the host's byte order or
// word size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "swplatform/platform.h"

namespace swp {

// ---- Big-endian field access -----------------------------------------------

inline uint16_t load_be16(const uint8_t *p) { return uint16_t(p[0] << 8 | p[1]); }
inline uint32_t load_be32(const uint8_t *p) {
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
}
inline void store_be16(uint8_t *p, uint16_t v) {
    p[0] = uint8_t(v >> 8);
    p[1] = uint8_t(v);
}
inline void store_be32(uint8_t *p, uint32_t v) {
    p[0] = uint8_t(v >> 24);
    p[1] = uint8_t(v >> 16);
    p[2] = uint8_t(v >> 8);
    p[3] = uint8_t(v);
}

// A field of a fixed-layout record: its offset and size in bytes.
struct Field {
    std::size_t offset;
    std::size_t size;
    constexpr std::size_t end() const { return offset + size; }
};

// ---- Learned address table entry (28 bytes) --------------------------------

namespace mac_entry {
inline constexpr std::size_t kSize = 28;
inline constexpr Field kFlags{0, 4};   // 32-bit flags
inline constexpr Field kMac{4, 6};     // MAC address
inline constexpr Field kFid{10, 2};    // FDB identifier (VLAN), 16-bit
inline constexpr Field kUnit{13, 1};   // unit0, signed 8-bit
inline constexpr Field kPort{16, 4};   // port0 within the unit, 32-bit
inline constexpr Field kTrunk{21, 1};  // trunk0, 8-bit
inline constexpr uint32_t kFlagTrunk = 0x80;   // learned on a trunk
inline constexpr uint32_t kFlagStatic = 0x20;  // static entry
static_assert(kFlags.end() <= kMac.offset && kMac.end() <= kFid.offset);
static_assert(kFid.end() <= kUnit.offset && kUnit.end() <= kPort.offset);
static_assert(kPort.end() <= kTrunk.offset && kTrunk.end() <= kSize);

// A decoded view of one entry.
struct Entry {
    uint32_t flags = 0;
    uint8_t mac[6] = {};
    uint16_t fid = 0;
    int8_t unit = 0;
    uint32_t port = 0;
    uint8_t trunk = 0;
};

inline Entry decode(const uint8_t *p) {
    Entry e;
    e.flags = load_be32(p + kFlags.offset);
    std::memcpy(e.mac, p + kMac.offset, kMac.size);
    e.fid = load_be16(p + kFid.offset);
    e.unit = static_cast<int8_t>(p[kUnit.offset]);
    e.port = load_be32(p + kPort.offset);
    e.trunk = p[kTrunk.offset];
    return e;
}

inline void encode(const Entry &e, uint8_t *p) {
    std::memset(p, 0, kSize);
    store_be32(p + kFlags.offset, e.flags);
    std::memcpy(p + kMac.offset, e.mac, kMac.size);
    store_be16(p + kFid.offset, e.fid);
    p[kUnit.offset] = static_cast<uint8_t>(e.unit);
    store_be32(p + kPort.offset, e.port);
    p[kTrunk.offset] = e.trunk;
}
}  // namespace mac_entry

// The query record of the address-table call: seven 32-bit words.
namespace mac_query {
inline constexpr std::size_t kWords = 7;
}

// ---- Platform query record (OSPF general group, RIP globals): 2,548 bytes --

namespace query_record {
inline constexpr std::size_t kSize = 2548;
inline constexpr Field kCount{0, 4};            // request sub-identifier count
inline constexpr Field kRequest{4, 40};         // 10 request sub-identifiers
inline constexpr Field kReserved{44, 473};
inline constexpr std::size_t kZeroByte = 517;   // cleared explicitly
inline constexpr Field kAnswerNameLen{524, 4};  // in sub-identifiers
inline constexpr Field kAnswerName{528, 512};   // up to 128 sub-identifiers
inline constexpr Field kAnswerValueLen{1040, 4};
inline constexpr Field kAnswerValue{1044, 1500};
inline constexpr Field kAnswerType{2544, 1};
inline constexpr Field kTail{2545, 3};
inline constexpr std::size_t kRequestSubids = 10;
inline constexpr std::size_t kAnswerSubids = 128;
static_assert(kCount.end() == kRequest.offset && kRequest.end() == kReserved.offset);
static_assert(kReserved.end() == kZeroByte && kZeroByte < kAnswerNameLen.offset);
static_assert(kAnswerNameLen.end() == kAnswerName.offset);
static_assert(kAnswerName.size == kAnswerSubids * 4 && kRequest.size == kRequestSubids * 4);
static_assert(kAnswerName.end() == kAnswerValueLen.offset);
static_assert(kAnswerValueLen.end() == kAnswerValue.offset);
static_assert(kAnswerValue.end() == kAnswerType.offset && kTail.end() == kSize);
static_assert(kSize == SW_QUERY_RECORD_SIZE);

// The request: the record cleared, the count word 10 and the first 10
// sub-identifiers of `name` (0 beyond its length).
inline void set_request(uint8_t *rec, const uint32_t *name, std::size_t len) {
    std::memset(rec, 0, kSize);
    store_be32(rec + kCount.offset, uint32_t(kRequestSubids));
    for (std::size_t i = 0; i < kRequestSubids; ++i)
        store_be32(rec + kRequest.offset + 4 * i, i < len ? name[i] : 0);
    rec[kZeroByte] = 0;
}
inline uint32_t request_subid(const uint8_t *rec, std::size_t i) { return load_be32(rec + kRequest.offset + 4 * i); }

// The answer, as the platform writes it and the module reads it.
inline uint32_t answer_name_len(const uint8_t *rec) { return load_be32(rec + kAnswerNameLen.offset); }
inline uint32_t answer_subid(const uint8_t *rec, std::size_t i) { return load_be32(rec + kAnswerName.offset + 4 * i); }
inline uint32_t answer_value_len(const uint8_t *rec) { return load_be32(rec + kAnswerValueLen.offset); }
inline const uint8_t *answer_value(const uint8_t *rec) { return rec + kAnswerValue.offset; }
inline uint8_t answer_type(const uint8_t *rec) { return rec[kAnswerType.offset]; }
inline void set_answer_name(uint8_t *rec, const uint32_t *name, std::size_t len) {
    len = len < kAnswerSubids ? len : kAnswerSubids;
    store_be32(rec + kAnswerNameLen.offset, uint32_t(len));
    for (std::size_t i = 0; i < len; ++i) store_be32(rec + kAnswerName.offset + 4 * i, name[i]);
}
inline void set_answer_value(uint8_t *rec, uint8_t type, const uint8_t *bytes, std::size_t len) {
    len = len < kAnswerValue.size ? len : kAnswerValue.size;
    store_be32(rec + kAnswerValueLen.offset, uint32_t(len));
    std::memcpy(rec + kAnswerValue.offset, bytes, len);
    rec[kAnswerType.offset] = type;
}
// An integer-like answer: one big-endian 32-bit word.
inline void set_answer_word(uint8_t *rec, uint8_t type, uint32_t value) {
    uint8_t word[4];
    store_be32(word, value);
    set_answer_value(rec, type, word, sizeof word);
}
}  // namespace query_record

// ---- Areas of the configuration image --------------------------------------
//
// The configuration image (cfg_get_cfg, SW_CFG_IMAGE_SIZE bytes) is the
// platform's saved configuration.  Most of it is the platform's own business;
// the areas below are read by the module directly and so have fixed places.
// All words are big-endian.

namespace cfg_image {
inline constexpr std::size_t kSize = SW_CFG_IMAGE_SIZE;

// Trunk member bitmaps: for each trunk0 and each unit0, two 32-bit words; port0
// is bit (port0 % 32), counted from the least significant bit, of word
// (port0 / 32).
inline constexpr std::size_t kTrunkMembersOffset = 0x1000000;  // 16 MiB
inline constexpr std::size_t kTrunkMemberWordsPerUnit = SW_PORTS_PER_UNIT / 32;
inline constexpr std::size_t kTrunkMembersSize =
    SW_MAX_TRUNKS * SW_MAX_UNITS * kTrunkMemberWordsPerUnit * 4;

inline constexpr std::size_t trunk_member_word_offset(int trunk0, int unit0, int port0) {
    return kTrunkMembersOffset +
           ((std::size_t(trunk0) * SW_MAX_UNITS + std::size_t(unit0)) * kTrunkMemberWordsPerUnit +
            std::size_t(port0) / 32) * 4;
}
inline bool trunk_has_member(const uint8_t *image, int trunk0, int unit0, int port0) {
    return (load_be32(image + trunk_member_word_offset(trunk0, unit0, port0)) >> (port0 % 32)) & 1u;
}
inline void set_trunk_member(uint8_t *image, int trunk0, int unit0, int port0, bool member) {
    uint8_t *w = image + trunk_member_word_offset(trunk0, unit0, port0);
    uint32_t bit = 1u << (port0 % 32);
    uint32_t v = load_be32(w);
    store_be32(w, member ? (v | bit) : (v & ~bit));
}

// The platform's own configuration records start at offset 0 and must end
// before the first fixed area.
inline constexpr std::size_t kPlatformAreaSize = kTrunkMembersOffset;
static_assert(kTrunkMembersOffset + kTrunkMembersSize < kSize);
}  // namespace cfg_image

}  // namespace swp
