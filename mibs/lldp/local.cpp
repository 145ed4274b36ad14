// The LLDP access layer, the switch's side: what it announces (the local
// system scalars, lldpLocPortTable, lldpLocManAddrTable), its per-port
// settings (lldpPortConfigTable), its timers and its counters.
//
// A port index 1024 is the management port: each of its reads and writes
// goes to the platform's management variant of the call.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "agent/ifindex.hpp"
#include "mibs/bridge/platform_value.hpp"
#include "mibs/lldp/access.hpp"
#include "mibs/lldp/ipc.hpp"
#include "swplatform/platform.h"
#include "swplatform/records_lldp.hpp"

namespace lldp {

Port port_of(int32_t index) {
    if (index == kMgmtPort) return {0, 0, true};
    if (index >= 513 && index <= 640) return {0, index - 1, false};
    // Any 32-bit index a manager sends: one beyond the ports names no port.
    const int32_t n = index_minus(index, 1);
    return {n / SW_PORTS_PER_UNIT, n % SW_PORTS_PER_UNIT, false};
}

uint8_t capability_octet(uint32_t bits) {
    uint8_t octet = 0;
    for (int k = 0; k <= 6; ++k)
        if (bits & (1u << k)) octet = uint8_t(octet | 0x80u >> k);
    return octet;
}

std::size_t format_mac(const uint8_t *mac, char *out) {
    return std::size_t(std::snprintf(out, 18, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4],
                                      mac[5]));
}

const uint32_t *zero_dot_zero(std::size_t *len) {
    static const uint32_t oid[2] = {0, 0};
    *len = sizeof oid;
    return oid;
}

}  // namespace lldp

namespace {

using lldp::Port;
using lldp::port_of;
namespace global = swp::lldp_global;
namespace intf = swp::lldp_intf;

// A text field of a record, copied to the accessor's own area.
template <std::size_t N>
const uint8_t *text_field(char (&area)[N], const uint8_t *record, swp::Field f, std::size_t *len) {
    *len = std::min(swp::field_text_len(record, f), N);
    std::memcpy(area, record + f.offset, *len);
    return reinterpret_cast<const uint8_t *>(area);
}

// "No value": an empty string.
const uint8_t *no_value(std::size_t *len) {
    *len = 0;
    return nullptr;
}

// The switch's record, cleared when it cannot be read; false then.
bool read_global(uint8_t (&record)[global::kSize]) {
    std::memset(record, 0, sizeof record);
    return cfg_get_lldp_global_info(record) >= 0;
}

// A port's record or counters through the call of a user port or of the
// management port; the area is cleared first, false when the call fails.
bool read_intf(int32_t index, uint8_t (&record)[intf::kSize]) {
    std::memset(record, 0, sizeof record);
    const Port p = port_of(index);
    return (p.mgmt ? cfg_get_lldp_intf_mgmt_info(record) : cfg_get_lldp_intf_info(p.unit0, p.port0, record)) >= 0;
}
uint32_t counter(int32_t index, swp::lldp_counters::Word word) {
    uint8_t record[swp::lldp_counters::kSize] = {};
    const Port p = port_of(index);
    const int rc = p.mgmt ? cfg_get_lldp_mgmt_status_intf_counters(record)
                          : cfg_get_lldp_status_intf_counters(p.unit0, p.port0, record);
    return rc >= 0 ? swp::load_word(record, word) : 0;
}
uint32_t global_stat(swp::lldp_global_stats::Word word) {
    uint8_t record[swp::lldp_global_stats::kSize] = {};
    return cfg_get_lldp_global_stats_info(record) >= 0 ? swp::load_word(record, word) : 0;
}

// A per-port setting: the call of a user port, or of the management port.
struct PortSetting {
    int (*port)(int unit0, int port0, int value);
    int (*mgmt)(int value);
    int write(int32_t index, int value) const {
        const Port p = port_of(index);
        return p.mgmt ? mgmt(value) : port(p.unit0, p.port0, value);
    }
};
constexpr PortSetting kAdminStatus{cfg_set_lldp_port_adminStatus, cfg_set_lldp_mgmt_port_adminStatus};
constexpr PortSetting kNotification{cfg_set_lldp_port_notificationEnable, cfg_set_lldp_mgmt_port_notificationEnable};
// The TLV enables in the order they are written.
constexpr PortSetting kTlvSettings[] = {
    {cfg_set_lldp_port_portDescEnable, cfg_set_lldp_mgmt_port_portDescEnable},
    {cfg_set_lldp_port_sysNameEnable, cfg_set_lldp_mgmt_port_sysNameEnable},
    {cfg_set_lldp_port_sysDescEnable, cfg_set_lldp_mgmt_port_sysDescEnable},
    {cfg_set_lldp_port_sysCapEnable, cfg_set_lldp_mgmt_port_sysCapEnable},
};

// The switch's capabilities (bits of the 16-bit word in `field`) as BITS.
const uint8_t *capabilities(swp::Field field, std::size_t *len) {
    static uint8_t octet;
    uint8_t record[global::kSize];
    read_global(record);
    octet = lldp::capability_octet(swp::load_be16(record + field.offset));
    *len = 1;
    return &octet;
}

// ---- the one management address row ----------------------------------------------------------

constexpr int32_t kAddrIpv4 = 1, kAddrMac = 6;  // address families
constexpr int32_t kIfIndexNumbering = 2;

struct ManAddr {
    int32_t subtype = 0;
    uint8_t octets[6] = {};
    std::size_t len = 0;
    bool is(int32_t s, const uint8_t *a, std::size_t n) const {
        return s == subtype && n == len && (n == 0 || (a && std::memcmp(a, octets, n) == 0));
    }
};

// The switch's management address: its MAC or its IPv4 address; none when
// the record cannot be read.
ManAddr man_addr(const uint8_t *record, bool readable) {
    ManAddr a;
    if (!readable) return a;
    if (record[global::kMgmtIsMac.offset]) {
        a.subtype = kAddrMac;
        a.len = 6;
        std::memcpy(a.octets, record + global::kChassisMac.offset, 6);
    } else {
        a.subtype = kAddrIpv4;
        a.len = 4;
        std::memcpy(a.octets, record + global::kMgmtIpv4.offset, 4);
    }
    return a;
}
bool matches_man_addr(int32_t subtype, const uint8_t *addr, std::size_t len) {
    uint8_t record[global::kSize];
    const bool ok = read_global(record);
    return ok && man_addr(record, ok).is(subtype, addr, len);
}

// The local port rows: the user ports of the present units, then the
// management port.
int populate_ports(void *(*create)(int32_t)) {
    ifindex_populate(create, false);
    create(lldp::kMgmtPort);
    return 1;
}
// A port row stays while its unit is in the stack (or known to it) and has
// the port; the management port always.
int port_row_exists(int32_t index, void (*remove)(int32_t)) {
    if (index == lldp::kMgmtPort) return 1;
    const Port p = port_of(index);
    const sw_status_t *st = get_status();
    const bool unit_known = p.unit0 >= 0 && p.unit0 < SW_MAX_UNITS && st != nullptr &&
                            (st->units[p.unit0].present || st->units[p.unit0].status2);
    if (unit_known && p.port0 >= 0 && p.port0 < unit_port_count(p.unit0)) return 1;
    remove(index);
    return 0;
}

}  // namespace

extern "C" {

// ---- the local system ----------------------------------------------------------------------------

int32_t get_ipc_lldpLocChassisIdSubtype(void) { return 4; }  // MAC address

const uint8_t *get_ipc_lldpLocChassisId(size_t *len) {
    static char area[32];
    uint8_t record[global::kSize];
    if (!read_global(record)) return no_value(len);
    *len = lldp::format_mac(record + global::kChassisMac.offset, area);
    return reinterpret_cast<const uint8_t *>(area);
}

const uint8_t *get_ipc_lldpLocSysName(size_t *len) {
    static char area[256];
    if (gethostname(area, sizeof area) != 0) area[0] = '\0';
    *len = strnlen(area, sizeof area);
    return reinterpret_cast<const uint8_t *>(area);
}

const uint8_t *get_ipc_lldpLocSysDesc(size_t *len) {
    static char area[global::kSysDesc.size];
    uint8_t record[global::kSize];
    read_global(record);
    return text_field(area, record, global::kSysDesc, len);
}

const uint8_t *get_ipc_lldpLocSysCapSupported(size_t *len) { return capabilities(global::kCapsSupported, len); }
const uint8_t *get_ipc_lldpLocSysCapEnabled(size_t *len) { return capabilities(global::kCapsEnabled, len); }

// ---- timers --------------------------------------------------------------------------------------

int32_t get_ipc_lldpMessageTxInterval(void) { return snmpapi::value_or_zero(cfg_get_lldp_msgTxInterval()); }
int set_ipc_lldpMessageTxInterval(int32_t value) { return cfg_set_lldp_msgTxInterval(value); }
int32_t get_ipc_lldpMessageTxHoldMultiplier(void) { return snmpapi::value_or_zero(cfg_get_lldp_msgTxHold()); }
int set_ipc_lldpMessageTxHoldMultiplier(int32_t value) { return cfg_set_lldp_msgTxHold(value); }
int32_t get_ipc_lldpReinitDelay(void) { return snmpapi::value_or_zero(cfg_get_lldp_reinitDelay()); }
int set_ipc_lldpReinitDelay(int32_t value) { return cfg_set_lldp_reinitDelay(value); }
int32_t get_ipc_lldpTxDelay(void) { return snmpapi::value_or_zero(cfg_get_lldp_txDelay()); }
int set_ipc_lldpTxDelay(int32_t value) { return cfg_set_lldp_txDelay(value); }
int32_t get_ipc_lldpNotificationInterval(void) { return snmpapi::value_or_zero(cfg_get_lldp_notificationInterval()); }
int set_ipc_lldpNotificationInterval(int32_t value) { return cfg_set_lldp_notificationInterval(value); }

// ---- remote table statistics ----------------------------------------------------------------------

uint32_t get_ipc_lldpStatsRemTablesLastChangeTime(void) {
    return global_stat(swp::lldp_global_stats::kLastChangeTime);
}
uint32_t get_ipc_lldpStatsRemTablesInserts(void) { return global_stat(swp::lldp_global_stats::kInserts); }
uint32_t get_ipc_lldpStatsRemTablesDeletes(void) { return global_stat(swp::lldp_global_stats::kDeletes); }
uint32_t get_ipc_lldpStatsRemTablesDrops(void) { return global_stat(swp::lldp_global_stats::kDrops); }
uint32_t get_ipc_lldpStatsRemTablesAgeouts(void) { return global_stat(swp::lldp_global_stats::kAgeouts); }

// ---- port rows: lldpPortConfigTable, lldpLocPortTable, the statistics tables ----------------------

int init_ipc_index_lldpPortConfigTable(void *(*create)(int32_t)) { return populate_ports(create); }
int exists_ipc_entry_lldpPortConfigTable(int32_t i) { return port_row_exists(i, lldpPortConfigTable_removeEntry); }
int init_ipc_index_lldpLocPortTable(void *(*create)(int32_t)) { return populate_ports(create); }
int exists_ipc_entry_lldpLocPortTable(int32_t i) { return port_row_exists(i, lldpLocPortTable_removeEntry); }
int init_ipc_index_lldpStatsTxPortTable(void *(*create)(int32_t)) { return populate_ports(create); }
int exists_ipc_entry_lldpStatsTxPortTable(int32_t i) { return port_row_exists(i, lldpStatsTxPortTable_removeEntry); }
int init_ipc_index_lldpStatsRxPortTable(void *(*create)(int32_t)) { return populate_ports(create); }
int exists_ipc_entry_lldpStatsRxPortTable(int32_t i) { return port_row_exists(i, lldpStatsRxPortTable_removeEntry); }

// ---- lldpPortConfigTable ----------------------------------------------------------------------------

int32_t get_ipc_lldpPortConfigAdminStatus(int32_t i) {
    uint8_t record[intf::kSize];
    return read_intf(i, record) ? record[intf::kAdminStatus.offset] : 0;
}
int set_ipc_lldpPortConfigAdminStatus(int32_t i, int32_t value) { return kAdminStatus.write(i, value); }

int32_t get_ipc_lldpPortConfigNotificationEnable(int32_t i) {
    uint8_t record[intf::kSize];
    if (!read_intf(i, record)) return 0;
    return record[intf::kNotify.offset] != 0 ? 1 : 2;
}
int set_ipc_lldpPortConfigNotificationEnable(int32_t i, int32_t value) {
    return kNotification.write(i, value == 1 ? 1 : 0);
}

// The four TLV bits sit in the octet's high half (portDesc 0x80 .. sysCap 0x10).
const uint8_t *get_ipc_lldpPortConfigTLVsTxEnable(int32_t i, size_t *len) {
    static uint8_t octet;
    uint8_t record[intf::kSize];
    read_intf(i, record);
    octet = uint8_t(lldp::capability_octet(swp::load_be32(record + intf::kTlvs.offset)) & 0xF0);
    *len = 1;
    return &octet;
}

// The octet's bits are mapped for k = 0..6 only, octet bit 1 << k to
// platform bit 0x80 >> k: octet bit 0x80 (portDesc) is never carried over,
// so a write always turns the port description TLV off, while sysName
// (0x40), sysDesc (0x20) and sysCap (0x10) reach platform bits 0x02, 0x04
// and 0x08.  The switch has always worked this way; managers rely on it.
int set_ipc_lldpPortConfigTLVsTxEnable(int32_t i, const uint8_t *value, size_t len) {
    const uint8_t octet = value != nullptr && len > 0 ? value[0] : 0;
    uint32_t bits = 0;
    for (int k = 0; k <= 6; ++k)
        if (octet & (1u << k)) bits |= 0x80u >> k;
    for (std::size_t t = 0; t < std::size(kTlvSettings); ++t)
        if (const int rc = kTlvSettings[t].write(i, (bits & (1u << t)) ? 1 : 0); rc < 0) return rc;
    return 0;
}

// ---- lldpLocPortTable ---------------------------------------------------------------------------------

int32_t get_ipc_lldpLocPortIdSubtype(int32_t) { return 5; }  // interface name

const uint8_t *get_ipc_lldpLocPortId(int32_t i, size_t *len) {
    static char area[intf::kPortId.size];
    uint8_t record[intf::kSize];
    if (!read_intf(i, record)) return no_value(len);
    return text_field(area, record, intf::kPortId, len);
}

const uint8_t *get_ipc_lldpLocPortDesc(int32_t i, size_t *len) {
    static char area[intf::kMgmtDesc.size];
    if (i != lldp::kMgmtPort) return get_ifDescr(i, len);
    uint8_t record[intf::kSize];
    read_intf(i, record);
    return text_field(area, record, intf::kMgmtDesc, len);
}

// ---- the statistics tables ------------------------------------------------------------------------

uint32_t get_ipc_lldpStatsTxPortFramesTotal(int32_t i) { return counter(i, swp::lldp_counters::kTxFramesTotal); }
uint32_t get_ipc_lldpStatsRxPortFramesDiscardedTotal(int32_t i) {
    return counter(i, swp::lldp_counters::kRxFramesDiscarded);
}
uint32_t get_ipc_lldpStatsRxPortFramesErrors(int32_t i) { return counter(i, swp::lldp_counters::kRxFramesErrors); }
uint32_t get_ipc_lldpStatsRxPortFramesTotal(int32_t i) { return counter(i, swp::lldp_counters::kRxFramesTotal); }
uint32_t get_ipc_lldpStatsRxPortTLVsDiscardedTotal(int32_t i) {
    return counter(i, swp::lldp_counters::kRxTlvsDiscarded);
}
uint32_t get_ipc_lldpStatsRxPortTLVsUnrecognizedTotal(int32_t i) {
    return counter(i, swp::lldp_counters::kRxTlvsUnrecognized);
}
uint32_t get_ipc_lldpStatsRxPortAgeoutsTotal(int32_t i) { return counter(i, swp::lldp_counters::kRxAgeouts); }

// ---- lldpLocManAddrTable: the switch's one management address -------------------------------------

int init_ipc_index_lldpLocManAddrTable(void *(*create)(int32_t, const uint8_t *, size_t)) {
    uint8_t record[global::kSize];
    const bool ok = read_global(record);
    const ManAddr a = man_addr(record, ok);
    if (ok) create(a.subtype, a.octets, a.len);
    return 0;
}
int exists_ipc_entry_lldpLocManAddrTable(int32_t subtype, const uint8_t *addr, size_t len) {
    if (matches_man_addr(subtype, addr, len)) return 1;
    lldpLocManAddrTable_removeEntry(subtype, addr, len);
    return 0;
}

int32_t get_ipc_lldpLocManAddrLen(int32_t subtype, const uint8_t *addr, size_t len) {
    return matches_man_addr(subtype, addr, len) ? int32_t(len) : 0;
}
int32_t get_ipc_lldpLocManAddrIfSubtype(int32_t subtype, const uint8_t *addr, size_t len) {
    return matches_man_addr(subtype, addr, len) ? kIfIndexNumbering : 0;
}
int32_t get_ipc_lldpLocManAddrIfId(int32_t, const uint8_t *, size_t) {
    uint8_t record[global::kSize];
    read_global(record);
    return int32_t(swp::load_be32(record + global::kMgmtIfId.offset));
}

// The OID field holds BER: tag 6, length, then contents.  Its first content
// octet gives two sub-identifiers (c / 40, c mod 40), every later octet one;
// a field without the tag gives one sub-identifier per octet.  Octets are
// never joined into base-128 sub-identifiers, which is how the switch has
// always reported this OID.
const uint32_t *get_ipc_lldpLocManAddrOID(int32_t subtype, const uint8_t *addr, size_t len, size_t *count) {
    static uint32_t area[global::kMgmtOid.size];
    uint8_t record[global::kSize];
    const bool ok = read_global(record);
    if (!ok || !man_addr(record, ok).is(subtype, addr, len)) return lldp::zero_dot_zero(count);
    const std::size_t n = std::min<std::size_t>(record[global::kMgmtOidLen.offset], global::kMgmtOid.size);
    const uint8_t *field = record + global::kMgmtOid.offset;
    if (n == 0 || (field[0] == 6 && n < 3)) return lldp::zero_dot_zero(count);
    std::size_t k = 0;
    if (field[0] == 6) {
        area[k++] = field[2] / 40;
        area[k++] = field[2] % 40;
        for (std::size_t o = 3; o < n; ++o) area[k++] = field[o];
    } else {
        for (std::size_t o = 0; o < n; ++o) area[k++] = field[o];
    }
    *count = k * sizeof(uint32_t);
    return area;
}

// ---- lldpConfigManAddrTable: kept by the switch, never listed ---------------------------------------

int init_ipc_index_lldpConfigManAddrTable(void *(*)(int32_t, const uint8_t *, size_t)) { return 0; }
int exists_ipc_entry_lldpConfigManAddrTable(int32_t, const uint8_t *, size_t) { return 0; }
const uint8_t *get_ipc_lldpConfigManAddrPortsTxEnable(int32_t, const uint8_t *, size_t, size_t *len) {
    return no_value(len);
}
int set_ipc_lldpConfigManAddrPortsTxEnable(int32_t, const uint8_t *, size_t, const uint8_t *, size_t) { return 0; }

}  // extern "C"
