// Layout of the simulated switch's state file.
//
// Every piece of switch state lives in one file that each user maps shared:
// the agent (through cfg_init), the control tool and tests (through
// swsim::Switch).  The file is a header page followed by page-aligned
// sections; the header records the size of every section so that a file made
// by a different build is refused instead of misread.
//
//   header    magic, layout version, total size, section table; from
//             kLockBase the cross-process configuration locks (SharedLock)
//   runtime   hot-path word, clock offset, boot time, fault table, journal
//             sequence numbers
//   status    the sw_status_t block handed out by get_status()
//   image     the configuration image (SW_CFG_IMAGE_SIZE bytes); our own
//             ConfigModel sits at offset 0, the fixed areas of records.hpp
//             (trunk member bitmaps) at their offsets
//   hardware  what the wire and the optics say: carrier, link partner, SFP
//   stats     per-port counters (base, rate, checkpoint) under a sequence word
//   fdb       the learned address table
//   journal   ring of recorded platform calls
//
// Fields are host-endian except inside the image's fixed areas.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>

#include "swplatform/platform.h"
#include "swplatform/records.hpp"
#include "layout_vlans.hpp"
#include "layout_traffic.hpp"
#include "layout_l2proto.hpp"
#include "layout_ifaces.hpp"
#include "layout_chassis.hpp"
#include "layout_lldp.hpp"
#include "layout_routing.hpp"
#include "layout_traps.hpp"
#include "layout_services.hpp"
#include "layout_rmon.hpp"
#include "layout_auth.hpp"
#include "layout_files.hpp"
#include "layout_filters.hpp"
#include "layout_cfm.hpp"

namespace swsim::layout {

inline constexpr char kMagic[8] = {'S', 'W', 'S', 'I', 'M', 'S', 'T', '\n'};
inline constexpr uint32_t kVersion = 9;
inline constexpr std::size_t kPage = 4096;

inline constexpr int kPhysPorts = SW_MAX_UNITS * SW_PORTS_PER_UNIT;  // 512
inline constexpr int kTrunkPortBase = 512;  // port0 of trunk0 0 on unit0 0
inline constexpr int kIfaces = kPhysPorts + SW_MAX_TRUNKS;           // ports, then trunks
inline constexpr int kVlanSlots = SW_MAX_VLAN_ID + 1;               // indexed by VID
inline constexpr int kFaultSlots = 64;
inline constexpr int kJournalSlots = 4096;
inline constexpr int kFdbCapacity = 32768;
inline constexpr std::size_t kCallNameSize = 40;
inline constexpr std::size_t kJournalArgsSize = 208;
// Cross-process lock i is the SharedLock at kLockBase + i * sizeof(SharedLock)
// of the header page.  An all-zero SharedLock is free.
inline constexpr std::size_t kLockBase = 2048;
inline constexpr int kLockReaderSlots = 63;

// The 64-bit words that processes change with atomic operations are
// declared kShared: aligned to their size on every host.  32-bit x86 aligns a
// uint64_t to 4 bytes only, and an atomic operation on a word that straddles
// a cache line is not atomic (a load) or a split lock that the kernel may trap.
inline constexpr std::size_t kShared = 8;

// writer:     0 free, else the holder (or the writer waiting for readers to
//             leave): pid in bits 0-21, bit 31 set while others sleep on it,
//             the holder's start-time token in bits 32-53.
// readers[i]: one process's read holds: count in bits 0-19, pid in bits
//             20-41, start-time token in bits 42-63; 0 unclaimed.
// Sleepers wait on the low 32 bits of a word (a futex).
struct SharedLock {
    alignas(kShared) uint64_t writer;
    alignas(kShared) uint64_t readers[kLockReaderSlots];
};

enum Section : uint32_t { kRuntime, kStatus, kImage, kHardware, kStats, kFdb, kJournal, kSectionCount };
inline constexpr const char *kSectionNames[kSectionCount] = {
    "runtime", "status", "image", "hardware", "stats", "fdb", "journal"};

struct SectionRef {
    uint64_t offset;
    uint64_t size;
};

struct Header {
    char magic[8];
    uint32_t version;
    uint32_t header_size;
    uint64_t total_size;
    uint32_t section_count;
    uint32_t reserved;
    SectionRef sections[kSectionCount];
};
static_assert(sizeof(Header) <= kLockBase);
static_assert(kLockBase + CFG_LOCK_COUNT * sizeof(SharedLock) <= kPage);

// ---- runtime ----------------------------------------------------------------

// One armed fault.  remaining: 0 free, -1 until cleared, N > 0 that many more.
struct FaultSlot {
    char call[kCallNameSize];
    int32_t result;
    int32_t remaining;
};

// Bits of Runtime::hot.  The word is the only thing a platform call reads
// before its real work when nothing is being watched: while neither
// kHotJournal nor kHotFaults is set, calls take the fast path.  kHotFaults
// is set before a fault slot is armed and cleared only when a look at every
// slot found none armed and nothing changed the word meanwhile; faults are
// armed under the configuration write lock, with kHotArming set meanwhile,
// and every arming step adds kHotEpochUnit so that a look that overlapped
// one is not mistaken for an empty table.
inline constexpr uint32_t kHotJournal = 1;    // journal recording
inline constexpr uint32_t kHotFaults = 2;     // a fault may be armed
inline constexpr uint32_t kHotArming = 4;     // a fault is being armed
inline constexpr uint32_t kHotEpochUnit = 8;  // bits 3-31 count arming steps
inline constexpr uint32_t kHotWatched = kHotJournal | kHotFaults;

// The switch clock stays within 0 .. kMaxClockS seconds (the end of the
// year 9999, or the last second a time_t holds: 19 January 2038 where it is
// 32 bits wide), so clock_offset_s is never more than that either way.
inline constexpr int64_t kMaxClockS = std::min<int64_t>(253402300799, std::numeric_limits<time_t>::max());

struct Runtime {
    uint32_t hot;
    uint32_t reserved;
    alignas(kShared) int64_t clock_offset_s;    // switch clock minus machine clock
    int64_t boot_realtime_ns;  // when the switch "booted" (state created)
    alignas(kShared) uint64_t journal_last;     // last sequence number handed out
    alignas(kShared) uint64_t journal_cleared;  // entries up to this number are hidden
    FaultSlot faults[kFaultSlots];
};

// ---- configuration model (offset 0 of the image) ------------------------------

// Configuration of a port or trunk interface.
struct IfaceConfig {
    char description[SW_TEXT_SIZE];
    uint8_t mac[6];
    uint8_t admin;    // administratively enabled
    uint8_t autoneg;  // speed/duplex negotiated (speed == 0)
    uint32_t speed;   // configured Mbit/s, 0 negotiated
    uint32_t duplex;  // configured duplex, 1 full
    uint32_t pause;   // 0 off, 1 rx, 2 tx, 3 both
    uint32_t caps;    // advertised capabilities (swsim::cap bits)
    uint32_t mtu;
    uint32_t type;    // swsim::port_type
    uint32_t mdix;    // 1 auto, 2 MDI, 3 MDI-X
};

struct TrunkConfig {
    uint8_t configured;
    uint8_t dynamic;  // formed by LACP
    uint8_t reserved[2];
};

struct VlanConfig {
    uint8_t exists;
    uint8_t active;
    uint8_t dynamic;  // learned by GVRP
    uint8_t reserved;
    char name[SW_TEXT_SIZE];
};

struct ConfigModel {
    char hostname[SW_TEXT_SIZE];
    char contact[SW_TEXT_SIZE];
    char location[SW_TEXT_SIZE];
    char tz_name[SW_TZ_NAME_SIZE];
    int32_t tz_offset_min;
    int32_t mac_ageing;
    uint8_t unit_mac[SW_MAX_UNITS][6];
    uint32_t equip_oid[16];
    uint32_t equip_oid_len;  // sub-identifiers
    char equip_name[SW_TEXT_SIZE];
    char vendor_url[128];
    IfaceConfig ifaces[kIfaces];
    TrunkConfig trunks[SW_MAX_TRUNKS];
    VlanConfig vlans[kVlanSlots];
    uint8_t members[kVlanSlots][kIfaces];  // SW_VLAN_* flags
    VlanSettings vlan_settings;
    TrafficConfig traffic;  // rate limits, storm control, mirroring
    L2ProtoConfig l2proto;
    IfacesConfig ifaces_ext;
    LldpConfig lldp;
    TrapsConfig traps;  // trap destinations
    ServicesConfig services;  // management services
    RmonConfig rmon;  // RMON statistics and history rows
    AuthConfig auth;  // 802.1X and RADIUS
    FilesConfig files;  // TFTP settings
    FiltersConfig filters;  // packet filters
    CfmConfig cfm;  // CFM delay measurement probes
};
static_assert(sizeof(ConfigModel) <= swp::cfg_image::kPlatformAreaSize);
static_assert(kTrafficIfaces == kIfaces);

// ---- hardware -----------------------------------------------------------------

struct PortHardware {
    uint8_t carrier;     // cable plugged and partner alive
    uint8_t sfp_slot;    // the port is a transceiver cage
    uint8_t peer_full;   // link partner offers full duplex
    uint8_t reserved;
    uint32_t peer_speed; // best speed the partner offers, Mbit/s (0: any)
    uint32_t hw_caps;    // what the port hardware can do (swsim::cap bits)
    uint32_t last_speed; // speed of the last time the link was up
};

struct Hardware {
    PortHardware ports[kPhysPorts];
    TrafficHardware traffic;  // queue counter offsets
    L2ProtoHardware l2proto;
    IfacesHardware ifaces_ext;
    ChassisHardware chassis;  // bays, fans, alarms, load
    LldpHardware lldp;
    RoutingState routing;  // addresses, routes, VRRP, OSPF, RIP
    TrapsHardware traps;  // what the trap service sent
    ServicesHardware services;  // what the service daemons run with
    RmonHardware rmon;  // RMON engine state
    AuthHardware auth;  // authenticators and the RADIUS client
    FilesHardware files;  // file store, transfers, restarts
    FiltersHardware filters;  // what the filters match
};

// ---- statistics ---------------------------------------------------------------

// A counter reads base + rate * (time the link has been up since checkpoint).
struct Counter {
    uint64_t base;
    uint64_t rate_micro;  // millionths of a count per second
};

struct CounterState {
    uint32_t running;        // counters advance (link up)
    uint32_t reserved;
    uint64_t checkpoint_ns;  // CLOCK_MONOTONIC
    uint64_t traffic_pps;    // offered load that the rates derive from
    Counter c[SW_MAX_STATISTIC];
};

// A port's counters under a sequence word whose writer can die at any step.
// A writer takes the writer word, writes the new state into `next`, turns
// seq odd, copies `next` over `live`, turns seq even and gives the word back.
// Readers never wait: while seq is even they read `live`, while it is odd
// `next` (complete by then), and retry if seq moved meanwhile.  A writer
// that finds the word held by a dead process takes it over and, if seq is
// odd, finishes the copy first.
struct PortCounters {
    uint32_t seq;
    uint32_t reserved;
    alignas(kShared) uint64_t writer;  // owner word (owner.hpp) of the writer, 0 none
    CounterState live;
    CounterState next;
};

struct Stats {
    PortCounters ports[kPhysPorts];
};

// ---- learned address table ------------------------------------------------------

struct FdbEntry {
    uint8_t mac[6];
    uint16_t vid;
    int8_t unit;
    uint8_t trunk;
    uint16_t port;
    uint32_t flags;  // swp::mac_entry::kFlag*
};

struct Fdb {
    uint32_t count;
    uint32_t capacity;
    uint32_t reserved[2];
    FdbEntry entries[kFdbCapacity];
};

// ---- journal --------------------------------------------------------------------

struct JournalSlot {
    alignas(kShared) uint64_t stamp;  // sequence number once complete, 0 while written
    char call[kCallNameSize];
    char args[kJournalArgsSize];
};
static_assert(sizeof(JournalSlot) == 256);

struct Journal {
    JournalSlot slots[kJournalSlots];
};

// ---- the whole file -------------------------------------------------------------

inline constexpr std::size_t page_round(std::size_t n) { return (n + kPage - 1) / kPage * kPage; }

inline constexpr std::size_t kSectionSizes[kSectionCount] = {
    sizeof(Runtime), sizeof(sw_status_t), SW_CFG_IMAGE_SIZE, sizeof(Hardware),
    sizeof(Stats),   sizeof(Fdb),         sizeof(Journal)};

struct Geometry {
    SectionRef sections[kSectionCount];
    uint64_t total;
};

inline constexpr Geometry geometry() {
    Geometry g{};
    uint64_t at = kPage;
    for (uint32_t i = 0; i < kSectionCount; ++i) {
        g.sections[i] = SectionRef{at, kSectionSizes[i]};
        at += page_round(kSectionSizes[i]);
    }
    g.total = at;
    return g;
}

}  // namespace swsim::layout
