// Byte layout of the records of the RMON engine (swplatform/rmon.h) and of
// its slots in the configuration image.  Described once here; words are
// big-endian as the switch stores them, so the same bytes read the same on
// every host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "swplatform/records.hpp"
#include "swplatform/rmon.h"

namespace swp::rmon {

inline int32_t load_i32(const uint8_t *rec, Field f) { return int32_t(load_be32(rec + f.offset)); }
inline void store_i32(uint8_t *rec, Field f, int32_t v) { store_be32(rec + f.offset, uint32_t(v)); }
inline uint64_t load_u64(const uint8_t *rec, std::size_t offset) {
    return uint64_t(load_be32(rec + offset)) << 32 | load_be32(rec + offset + 4);
}
inline void store_u64(uint8_t *rec, std::size_t offset, uint64_t v) {
    store_be32(rec + offset, uint32_t(v >> 32));
    store_be32(rec + offset + 4, uint32_t(v));
}
// A NUL-terminated text field: the text up to its NUL or the field's end.
inline const char *text_at(const uint8_t *rec, Field f) { return reinterpret_cast<const char *>(rec + f.offset); }
inline std::size_t text_len(const uint8_t *rec, Field f) { return strnlen(text_at(rec, f), f.size); }
inline char *text_field(uint8_t *rec, Field f) { return reinterpret_cast<char *>(rec + f.offset); }

// ---- Statistics ------------------------------------------------------------

namespace stat_conf {  // bcmd_rmon_statistic_get_conf / set_conf
inline constexpr std::size_t kSize = 48;
inline constexpr Field kIndex{0, 4}, kUnit{4, 4}, kPort{8, 4}, kStatus{12, 4}, kOwner{16, 32};
static_assert(kIndex.end() == kUnit.offset && kUnit.end() == kPort.offset && kPort.end() == kStatus.offset);
static_assert(kStatus.end() == kOwner.offset && kOwner.end() == kSize);
}  // namespace stat_conf

// Seventeen 64-bit counters (bcmd_rmon_statistic_get), numbered from 1.
namespace stat_counters {
enum : int {
    kDropEvents = 1, kMulticast, kBroadcast, kUndersize, kFragments, kPkts64, kPkts65to127, kPkts128to255,
    kPkts256to511, kPkts512to1023, kPkts1024to1518, kOversize, kJabbers, kOctets, kPkts, kCollisions,
    kCrcAlign, kCount = kCrcAlign
};
inline constexpr std::size_t kSize = kCount * 8;
inline constexpr std::size_t offset(int n) { return std::size_t(n - 1) * 8; }
static_assert(kSize == 136 && offset(kCrcAlign) + 8 == kSize);
}  // namespace stat_counters

namespace stat_list {  // one row of bcmd_rmon_statistic_get_all (the counters may be left zero)
inline constexpr std::size_t kSize = 232;
inline constexpr Field kConf{0, stat_conf::kSize};
inline constexpr Field kCounters{stat_conf::kSize, stat_counters::kSize};
static_assert(kCounters.end() <= kSize);
}  // namespace stat_list

namespace stat_activate {  // cfg_set_rmon_statistic
inline constexpr std::size_t kSize = 44;
inline constexpr Field kIndex{0, 4}, kUnit{4, 4}, kPort{8, 4}, kOwner{12, 32};
static_assert(kPort.end() == kOwner.offset && kOwner.end() == kSize);
}  // namespace stat_activate

// ---- History -----------------------------------------------------------------

namespace hist_conf {  // bcmd_rmon_history_get_conf / set_conf
inline constexpr std::size_t kSize = 64;
inline constexpr Field kIndex{0, 4}, kUnit{4, 4}, kPort{8, 4}, kInterval{12, 4}, kGranted{16, 4},
    kRequested{20, 4}, kTaken{24, 4}, kStatus{28, 4}, kOwner{32, 32};
static_assert(kPort.end() == kInterval.offset && kInterval.end() == kGranted.offset);
static_assert(kGranted.end() == kRequested.offset && kRequested.end() == kTaken.offset);
static_assert(kTaken.end() == kStatus.offset && kStatus.end() == kOwner.offset && kOwner.end() == kSize);
}  // namespace hist_conf

// Twelve 64-bit values of one sample (bcmd_rmon_history_get), MIB order,
// numbered from 1.
namespace hist_sample {
enum : int {
    kDropEvents = 1, kOctets, kPkts, kBroadcast, kMulticast, kCrcAlign, kUndersize, kOversize, kFragments,
    kJabbers, kCollisions, kUtilization, kCount = kUtilization
};
inline constexpr std::size_t kSize = kCount * 8;
inline constexpr std::size_t offset(int n) { return std::size_t(n - 1) * 8; }
static_assert(kSize == 96);
}  // namespace hist_sample

namespace hist_list {  // one row of bcmd_rmon_history_get_all
inline constexpr std::size_t kSize = 176;
inline constexpr Field kConf{0, hist_conf::kSize};
inline constexpr Field kNewest{hist_conf::kSize, hist_sample::kSize};  // newest sample, zero if none
static_assert(kNewest.end() <= kSize);
}  // namespace hist_list

namespace hist_activate {  // cfg_set_rmon_history
inline constexpr std::size_t kSize = 52;
inline constexpr Field kIndex{0, 4}, kUnit{4, 4}, kPort{8, 4}, kInterval{12, 4}, kRequested{16, 4},
    kOwner{20, 32};
static_assert(kRequested.end() == kOwner.offset && kOwner.end() == kSize);
}  // namespace hist_activate

// ---- Alarms and events ---------------------------------------------------------

// The alarm record, the same for the engine and the configuration.  The
// text carries the sampled variable's OID in dotted form; the parameters
// are, in order: interval (seconds), sample type (low byte; the startup
// alarm in the next byte), rising threshold, falling threshold, rising
// event index, falling event index.
namespace alarm {
inline constexpr std::size_t kSize = 188;
inline constexpr std::size_t kParams = 6;
inline constexpr Field kIndex{0, 4}, kText{4, 128}, kOwner{156, 32};
inline constexpr Field param(std::size_t i) { return Field{132 + i * 4, 4}; }
enum : std::size_t { kInterval, kSampleType, kRising, kFalling, kRisingEvent, kFallingEvent };
static_assert(kIndex.end() == kText.offset && kText.end() == param(0).offset);
static_assert(param(kParams - 1).end() == kOwner.offset && kOwner.end() == kSize);
}  // namespace alarm

// The event record: up to the script number the same on both sides; the
// configuration's community is one byte wider than the engine's.  The two
// flags: write the event log (first), send a notification (second).
namespace event {
inline constexpr Field kIndex{0, 4}, kDescription{4, 128}, kLog{132, 1}, kTrap{133, 1}, kScript{134, 4};
static_assert(kIndex.end() == kDescription.offset && kDescription.end() == kLog.offset);
static_assert(kLog.end() == kTrap.offset && kTrap.end() == kScript.offset);
namespace engine {
inline constexpr std::size_t kSize = 202;
inline constexpr Field kCommunity{138, 32}, kOwner{170, 32};
static_assert(kScript.end() == kCommunity.offset && kCommunity.end() == kOwner.offset && kOwner.end() == kSize);
}  // namespace engine
namespace config {
inline constexpr std::size_t kSize = 203;
inline constexpr Field kCommunity{138, 33}, kOwner{171, 32};
static_assert(kScript.end() == kCommunity.offset && kCommunity.end() == kOwner.offset && kOwner.end() == kSize);
}  // namespace config
}  // namespace event

// A command script of the switch's command-line interpreter, numbered from 1.
namespace script {
inline constexpr std::size_t kSize = 1314;
inline constexpr Field kName{0, 288}, kCommands{288, 1024}, kFlag1{1312, 1}, kFlag2{1313, 1};
static_assert(kName.end() == kCommands.offset && kCommands.end() == kFlag1.offset && kFlag2.end() == kSize);
}  // namespace script

// Where the configuration image keeps them: alarm slots, the event slots
// right behind, then the command scripts.
namespace cfg_area {
inline constexpr std::size_t kAlarmSlots = cfg_image::kTrunkMembersOffset + 0x100000;
inline constexpr std::size_t kEventSlots = kAlarmSlots + SW_RMON_SLOTS * alarm::kSize;
inline constexpr std::size_t kScripts = kEventSlots + SW_RMON_SLOTS * event::config::kSize;
inline constexpr std::size_t kEnd = kScripts + SW_RMON_SCRIPTS * script::kSize;
static_assert(cfg_image::kTrunkMembersOffset + cfg_image::kTrunkMembersSize <= kAlarmSlots);
static_assert(kEnd <= cfg_image::kSize);
inline constexpr std::size_t alarm_slot(int slot) { return kAlarmSlots + std::size_t(slot) * alarm::kSize; }
inline constexpr std::size_t event_slot(int slot) { return kEventSlots + std::size_t(slot) * event::config::kSize; }
// Script number n (1-based).
inline constexpr std::size_t script_record(int n) { return kScripts + std::size_t(n - 1) * script::kSize; }
}  // namespace cfg_area

}  // namespace swp::rmon
