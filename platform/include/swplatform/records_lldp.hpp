// Byte layouts of the LLDP records (lldp.h): the switch's own record, a
// port's record and counters, the remote table statistics and the
// neighbour record.  Big-endian, each described once, read and written only
// through the codecs below.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "swplatform/records.hpp"

namespace swp {

// A text field: the bytes up to its first zero, never past the field.
inline std::size_t field_text_len(const uint8_t *p, Field f) {
    const void *end = std::memchr(p + f.offset, 0, f.size);
    return end ? std::size_t(static_cast<const uint8_t *>(end) - (p + f.offset)) : f.size;
}
// Stores text (at most the field's size less its terminating zero).
inline void store_text(uint8_t *p, Field f, const char *text) {
    const std::size_t n = std::min(std::strlen(text), f.size - 1);
    std::memcpy(p + f.offset, text, n);
    std::memset(p + f.offset + n, 0, f.size - n);
}

// A record of consecutive 32-bit words, each named by an enumerator.
template <class Word>
uint32_t load_word(const uint8_t *p, Word w) {
    return load_be32(p + std::size_t(w) * 4);
}
template <class Word>
void store_word(uint8_t *p, Word w, uint32_t v) {
    store_be32(p + std::size_t(w) * 4, v);
}

// ---- The switch's LLDP record (cfg_get_lldp_global_info) -------------------

namespace lldp_global {
inline constexpr std::size_t kSize = SW_LLDP_GLOBAL_SIZE;
inline constexpr Field kChassisMac{10, 6};
inline constexpr Field kMgmtIpv4{16, 4};
inline constexpr Field kMgmtIsMac{20, 1};  // non-zero: the management address is the MAC
inline constexpr Field kMgmtIfId{24, 4};   // interface number of the management address
// The management address OID as BER: tag 6, length, contents; kMgmtOidLen
// counts the field's octets, tag and length included.
inline constexpr Field kMgmtOid{28, 128};
inline constexpr Field kMgmtOidLen{156, 1};
inline constexpr Field kSysDesc{413, 256};
inline constexpr Field kCapsSupported{670, 2};  // bit k: capability k
inline constexpr Field kCapsEnabled{672, 2};
static_assert(kChassisMac.offset == 10 && kChassisMac.end() == 16);
static_assert(kMgmtIpv4.offset == 16 && kMgmtIsMac.offset == 20);
static_assert(kMgmtOid.offset == 28 && kMgmtOidLen.offset == 156 && kMgmtOid.end() == kMgmtOidLen.offset);
static_assert(kSysDesc.offset == 413 && kSysDesc.end() == 669);
static_assert(kCapsSupported.offset == 670 && kCapsEnabled.offset == 672);
static_assert(kChassisMac.end() <= kMgmtIpv4.offset && kMgmtIpv4.end() <= kMgmtIsMac.offset);
static_assert(kMgmtIsMac.end() <= kMgmtIfId.offset && kMgmtIfId.end() <= kMgmtOid.offset);
static_assert(kMgmtOidLen.end() <= kSysDesc.offset && kSysDesc.end() <= kCapsSupported.offset);
static_assert(kCapsSupported.end() == kCapsEnabled.offset && kCapsEnabled.end() <= kSize);

struct Record {
    uint8_t chassis_mac[6] = {};
    uint32_t mgmt_ipv4 = 0;  // host order
    uint8_t mgmt_is_mac = 0;
    int32_t mgmt_if_id = 0;
    uint8_t mgmt_oid[kMgmtOid.size] = {};
    uint8_t mgmt_oid_len = 0;
    char sys_desc[kSysDesc.size] = {};
    uint16_t caps_supported = 0;
    uint16_t caps_enabled = 0;
};

inline void encode(const Record &r, uint8_t *p) {
    std::memset(p, 0, kSize);
    std::memcpy(p + kChassisMac.offset, r.chassis_mac, kChassisMac.size);
    store_be32(p + kMgmtIpv4.offset, r.mgmt_ipv4);
    p[kMgmtIsMac.offset] = r.mgmt_is_mac;
    store_be32(p + kMgmtIfId.offset, uint32_t(r.mgmt_if_id));
    std::memcpy(p + kMgmtOid.offset, r.mgmt_oid, kMgmtOid.size);
    p[kMgmtOidLen.offset] = r.mgmt_oid_len;
    store_text(p, kSysDesc, r.sys_desc);
    store_be16(p + kCapsSupported.offset, r.caps_supported);
    store_be16(p + kCapsEnabled.offset, r.caps_enabled);
}
}  // namespace lldp_global

// ---- The remote table statistics (cfg_get_lldp_global_stats_info) ----------

namespace lldp_global_stats {
inline constexpr std::size_t kSize = SW_LLDP_GLOBAL_STATS_SIZE;
enum Word : std::size_t { kLastChangeTime, kInserts, kDeletes, kDrops, kAgeouts, kWords };
static_assert(kWords * 4 == kSize);
}  // namespace lldp_global_stats

// ---- A port's LLDP record (cfg_get_lldp_intf_info and _mgmt_) --------------

namespace lldp_intf {
inline constexpr std::size_t kSize = SW_LLDP_INTF_SIZE;
inline constexpr Field kAdminStatus{2, 1};  // SW_LLDP_TX_ONLY .. SW_LLDP_DISABLED
inline constexpr Field kNotify{3, 1};       // non-zero: notifications on
inline constexpr Field kTlvs{4, 4};         // SW_LLDP_TLV_* bits
inline constexpr Field kPortId{12, 255};    // text
inline constexpr Field kMgmtDesc{267, 256}; // text: the management port's description
static_assert(kAdminStatus.offset == 2 && kNotify.offset == 3 && kTlvs.offset == 4);
static_assert(kPortId.offset == 12 && kMgmtDesc.offset == 267 && kPortId.end() == kMgmtDesc.offset);
static_assert(kTlvs.end() <= kPortId.offset && kMgmtDesc.end() <= kSize);

struct Record {
    uint8_t admin_status = 0;
    uint8_t notify = 0;
    uint32_t tlvs = 0;
    char port_id[kPortId.size] = {};
    char mgmt_desc[kMgmtDesc.size] = {};
};

inline void encode(const Record &r, uint8_t *p) {
    std::memset(p, 0, kSize);
    p[kAdminStatus.offset] = r.admin_status;
    p[kNotify.offset] = r.notify;
    store_be32(p + kTlvs.offset, r.tlvs);
    store_text(p, kPortId, r.port_id);
    store_text(p, kMgmtDesc, r.mgmt_desc);
}
}  // namespace lldp_intf

// ---- A port's counters (cfg_get_lldp_status_intf_counters and _mgmt_) ------

namespace lldp_counters {
inline constexpr std::size_t kSize = SW_LLDP_COUNTERS_SIZE;
enum Word : std::size_t {
    kTxFramesTotal,
    kRxFramesDiscarded,
    kRxFramesErrors,
    kRxFramesTotal,
    kRxTlvsDiscarded,
    kRxTlvsUnrecognized,
    kRxAgeouts,
    kWords
};
static_assert(kWords * 4 == kSize);
}  // namespace lldp_counters

// ---- One neighbour (cfg_get_lldp_neighbors_info and _mgmt_) ----------------

namespace lldp_neighbor {
inline constexpr std::size_t kSize = SW_LLDP_NEIGHBOR_SIZE;
inline constexpr Field kTimeMark{0, 4};        // uptime (1/100 s) when heard or changed
inline constexpr Field kRemoteIndex{4, 4};     // signed
inline constexpr Field kChassisSubtype{8, 2};
inline constexpr Field kChassisId{10, 255};
inline constexpr Field kChassisIdLen{265, 1};
inline constexpr Field kPortSubtype{266, 2};
inline constexpr Field kPortId{268, 255};
inline constexpr Field kPortIdLen{523, 1};
inline constexpr Field kPortDesc{524, 256};    // text
inline constexpr Field kSysName{780, 256};     // text
inline constexpr Field kSysDesc{1036, 256};    // text
inline constexpr Field kCapsSupported{1292, 2};  // bit k: capability k
inline constexpr Field kCapsEnabled{1294, 2};
inline constexpr Field kMgmtSubtype{1309, 1};  // address family (1 IPv4, 2 IPv6, 6 MAC)
inline constexpr Field kMgmtAddr{1310, 31};
inline constexpr Field kMgmtAddrLen{1341, 1};
inline constexpr Field kMgmtIfSubtype{1342, 1};  // interface numbering (2 ifIndex, 3 system port)
inline constexpr Field kMgmtPresent{1343, 1};    // 1: the neighbour announced a management address
inline constexpr Field kMgmtIfId{1344, 4};
inline constexpr Field kUnknownTlvType{4061, 1};
inline constexpr Field kUnknownTlvLen{4062, 2};
inline constexpr Field kUnknownTlvInfo{4064, 511};
static_assert(kTimeMark.offset == 0 && kRemoteIndex.offset == 4 && kChassisSubtype.offset == 8);
static_assert(kChassisId.offset == 10 && kChassisId.end() == 265 && kChassisIdLen.offset == 265);
static_assert(kPortSubtype.offset == 266 && kPortId.offset == 268 && kPortId.end() == 523);
static_assert(kPortIdLen.offset == 523);
static_assert(kMgmtSubtype.offset == 1309 && kMgmtAddr.offset == 1310 && kMgmtAddr.end() == 1341);
static_assert(kMgmtAddrLen.offset == 1341 && kUnknownTlvType.offset == 4061);
static_assert(kTimeMark.end() == kRemoteIndex.offset && kRemoteIndex.end() == kChassisSubtype.offset);
static_assert(kChassisSubtype.end() == kChassisId.offset && kChassisIdLen.end() == kPortSubtype.offset);
static_assert(kPortSubtype.end() == kPortId.offset && kPortIdLen.end() == kPortDesc.offset);
static_assert(kPortDesc.end() == kSysName.offset && kSysName.end() == kSysDesc.offset);
static_assert(kSysDesc.end() == kCapsSupported.offset && kCapsSupported.end() == kCapsEnabled.offset);
static_assert(kCapsEnabled.end() <= kMgmtSubtype.offset && kMgmtAddrLen.end() == kMgmtIfSubtype.offset);
static_assert(kMgmtIfSubtype.end() == kMgmtPresent.offset && kMgmtPresent.end() == kMgmtIfId.offset);
static_assert(kMgmtIfId.end() <= kUnknownTlvType.offset && kUnknownTlvType.end() == kUnknownTlvLen.offset);
static_assert(kUnknownTlvLen.end() <= kUnknownTlvInfo.offset && kUnknownTlvInfo.end() <= kSize);

struct Record {
    uint32_t time_mark = 0;
    int32_t remote_index = 0;
    uint16_t chassis_subtype = 0;
    uint8_t chassis_id[kChassisId.size] = {};
    uint8_t chassis_id_len = 0;
    uint16_t port_subtype = 0;
    uint8_t port_id[kPortId.size] = {};
    uint8_t port_id_len = 0;
    char port_desc[kPortDesc.size] = {};
    char sys_name[kSysName.size] = {};
    char sys_desc[kSysDesc.size] = {};
    uint16_t caps_supported = 0;
    uint16_t caps_enabled = 0;
    uint8_t mgmt_subtype = 0;
    uint8_t mgmt_addr[kMgmtAddr.size] = {};
    uint8_t mgmt_addr_len = 0;
    uint8_t mgmt_if_subtype = 0;
    uint8_t mgmt_present = 0;
    int32_t mgmt_if_id = 0;
    uint8_t unknown_tlv_type = 0;
    uint16_t unknown_tlv_len = 0;
    uint8_t unknown_tlv_info[kUnknownTlvInfo.size] = {};
};

inline void encode(const Record &r, uint8_t *p) {
    std::memset(p, 0, kSize);
    store_be32(p + kTimeMark.offset, r.time_mark);
    store_be32(p + kRemoteIndex.offset, uint32_t(r.remote_index));
    store_be16(p + kChassisSubtype.offset, r.chassis_subtype);
    std::memcpy(p + kChassisId.offset, r.chassis_id, kChassisId.size);
    p[kChassisIdLen.offset] = r.chassis_id_len;
    store_be16(p + kPortSubtype.offset, r.port_subtype);
    std::memcpy(p + kPortId.offset, r.port_id, kPortId.size);
    p[kPortIdLen.offset] = r.port_id_len;
    store_text(p, kPortDesc, r.port_desc);
    store_text(p, kSysName, r.sys_name);
    store_text(p, kSysDesc, r.sys_desc);
    store_be16(p + kCapsSupported.offset, r.caps_supported);
    store_be16(p + kCapsEnabled.offset, r.caps_enabled);
    p[kMgmtSubtype.offset] = r.mgmt_subtype;
    std::memcpy(p + kMgmtAddr.offset, r.mgmt_addr, kMgmtAddr.size);
    p[kMgmtAddrLen.offset] = r.mgmt_addr_len;
    p[kMgmtIfSubtype.offset] = r.mgmt_if_subtype;
    p[kMgmtPresent.offset] = r.mgmt_present;
    store_be32(p + kMgmtIfId.offset, uint32_t(r.mgmt_if_id));
    p[kUnknownTlvType.offset] = r.unknown_tlv_type;
    store_be16(p + kUnknownTlvLen.offset, r.unknown_tlv_len);
    std::memcpy(p + kUnknownTlvInfo.offset, r.unknown_tlv_info, kUnknownTlvInfo.size);
}

// Field readers of one record (p: its first byte).  A length is held to its
// field, whatever the record says.
inline uint32_t time_mark(const uint8_t *p) { return load_be32(p + kTimeMark.offset); }
inline int32_t remote_index(const uint8_t *p) { return int32_t(load_be32(p + kRemoteIndex.offset)); }
inline uint16_t chassis_subtype(const uint8_t *p) { return load_be16(p + kChassisSubtype.offset); }
inline std::size_t chassis_id_len(const uint8_t *p) { return std::min<std::size_t>(p[kChassisIdLen.offset], kChassisId.size); }
inline uint16_t port_subtype(const uint8_t *p) { return load_be16(p + kPortSubtype.offset); }
inline std::size_t port_id_len(const uint8_t *p) { return std::min<std::size_t>(p[kPortIdLen.offset], kPortId.size); }
inline uint16_t caps_supported(const uint8_t *p) { return load_be16(p + kCapsSupported.offset); }
inline uint16_t caps_enabled(const uint8_t *p) { return load_be16(p + kCapsEnabled.offset); }
inline uint8_t mgmt_subtype(const uint8_t *p) { return p[kMgmtSubtype.offset]; }
inline std::size_t mgmt_addr_len(const uint8_t *p) { return std::min<std::size_t>(p[kMgmtAddrLen.offset], kMgmtAddr.size); }
inline uint8_t mgmt_if_subtype(const uint8_t *p) { return p[kMgmtIfSubtype.offset]; }
inline bool mgmt_present(const uint8_t *p) { return p[kMgmtPresent.offset] == 1; }
inline int32_t mgmt_if_id(const uint8_t *p) { return int32_t(load_be32(p + kMgmtIfId.offset)); }
inline uint8_t unknown_tlv_type(const uint8_t *p) { return p[kUnknownTlvType.offset]; }
inline std::size_t unknown_tlv_len(const uint8_t *p) {
    return std::min<std::size_t>(load_be16(p + kUnknownTlvLen.offset), kUnknownTlvInfo.size);
}
}  // namespace lldp_neighbor

}  // namespace swp
