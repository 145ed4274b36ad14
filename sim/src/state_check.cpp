#include "state_check.hpp"

#include <cstring>
#include <functional>
#include <vector>

#include "lldp.hpp"
#include "owner.hpp"
#include "shared_atomic.hpp"
#include "swplatform/records_l2proto.hpp"
#include "rmon.hpp"
#include "routing.hpp"
#include "services.hpp"
#include "auth.hpp"
#include "files.hpp"
#include "filters.hpp"
#include "cfm.hpp"
#include "traps.hpp"

namespace swsim {
namespace {

using layout::kIfaces;
using layout::kPhysPorts;

// A text field holds its terminating zero.
template <std::size_t N>
bool terminated(const char (&field)[N]) {
    return std::memchr(field, 0, N) != nullptr;
}
template <std::size_t N>
std::string unterminated(const char (&field)[N], const std::string &what) {
    return terminated(field) ? "" : what + " runs past its " + std::to_string(N) + " bytes";
}

std::string beyond(const std::string &what, long long value, const std::string &limit) {
    return what + " is " + std::to_string(value) + " (" + limit + ")";
}

// The first problem that `check(i)` reports for i in 0 .. n-1.
std::string first(int n, const std::function<std::string(int)> &check) {
    for (int i = 0; i < n; ++i)
        if (std::string p = check(i); !p.empty()) return p;
    return "";
}

std::string human(const char *what, int index0) { return std::string(what) + " " + std::to_string(index0 + 1); }

// ---- the checks, by section ---------------------------------------------------------

std::string header_locks(const View &v) {
    const auto *locks = reinterpret_cast<const layout::SharedLock *>(
        reinterpret_cast<const uint8_t *>(v.header) + layout::kLockBase);
    return first(CFG_LOCK_COUNT, [&](int i) -> std::string {
        const layout::SharedLock &l = locks[i];
        const uint64_t w = shared::load(l.writer, __ATOMIC_RELAXED);
        if ((w & owner::kWordUnused) || (w != 0 && owner::word_pid(w) == 0))
            return "lock " + std::to_string(i) + " names no process as its writer";
        for (const uint64_t &slot : l.readers) {
            const uint64_t r = shared::load(slot, __ATOMIC_RELAXED);
            if (r != 0 && ((r >> 20) & owner::kFieldMask) == 0)
                return "lock " + std::to_string(i) + " has a reader slot of no process";
        }
        return "";
    });
}

std::string runtime_clock(const View &v) {
    const int64_t offset = v.rt->clock_offset_s;
    if (offset < -layout::kMaxClockS || offset > layout::kMaxClockS)
        return beyond("the clock offset", offset, "the clock stays within the years 1970 .. 9999");
    if (v.rt->boot_realtime_ns < 0) return beyond("the boot time", v.rt->boot_realtime_ns, "before 1970");
    return "";
}

std::string runtime_journal(const View &v) {
    const uint64_t cleared = v.rt->journal_cleared, last = v.rt->journal_last;
    if (last > uint64_t(INT64_MAX) || cleared > last)
        return "the journal's marks are damaged (cleared up to " + std::to_string(cleared) + ", last " +
               std::to_string(last) + ")";
    return "";
}

std::string runtime_faults(const View &v) {
    return first(layout::kFaultSlots, [&](int i) -> std::string {
        const layout::FaultSlot &f = v.rt->faults[i];
        const std::string slot = "fault slot " + std::to_string(i);
        if (f.remaining == 0) return "";
        if (f.remaining < -1) return beyond(slot + "'s count", f.remaining, "-1 or at least 1");
        if (f.result >= 0) return beyond(slot + "'s result", f.result, "faults answer negative results");
        return unterminated(f.call, slot + "'s call name");
    });
}

std::string status_units(const View &v) {
    const sw_status_t &s = *v.status;
    std::string p = first(SW_MAX_UNITS, [&](int u) -> std::string {
        const sw_unit_status_t &unit = s.units[u];
        const std::string name = human("unit", u);
        if (unit.user_ports > SW_PORTS_PER_UNIT)
            return beyond(name + "'s port count", unit.user_ports, "at most " + std::to_string(SW_PORTS_PER_UNIT));
        for (std::string q : {unterminated(unit.model, name + "'s model"), unterminated(unit.serial, name + "'s serial"),
                              unterminated(unit.version, name + "'s version"),
                              unterminated(unit.build_date, name + "'s build date")})
            if (!q.empty()) return q;
        return "";
    });
    if (!p.empty()) return p;
    for (std::string q : {unterminated(s.fw_version, "the firmware version"),
                          unterminated(s.boot_version, "the boot loader version"),
                          unterminated(s.fw_date, "the firmware date"), unterminated(s.product, "the product")})
        if (!q.empty()) return q;
    return "";
}

std::string image_identity(const View &v) {
    const layout::ConfigModel &c = *v.cfg;
    for (std::string q : {unterminated(c.hostname, "the host name"), unterminated(c.contact, "the contact"),
                          unterminated(c.location, "the location"), unterminated(c.tz_name, "the time zone name"),
                          unterminated(c.equip_name, "the equipment name"),
                          unterminated(c.vendor_url, "the vendor URL")})
        if (!q.empty()) return q;
    if (c.tz_offset_min < -720 || c.tz_offset_min > 840)
        return beyond("the time zone offset", c.tz_offset_min, "-720 .. 840 minutes");
    constexpr uint32_t kOidRoom = sizeof c.equip_oid / sizeof c.equip_oid[0];
    if (c.equip_oid_len > kOidRoom)
        return beyond("the equipment OID's length", c.equip_oid_len,
                      "at most " + std::to_string(kOidRoom) + " sub-identifiers");
    return "";
}

std::string image_interfaces(const View &v) {
    const layout::ConfigModel &c = *v.cfg;
    return first(kIfaces, [&](int i) -> std::string {
        const std::string name = "interface " + std::to_string(i);
        if (std::string q = unterminated(c.ifaces[i].description, name + "'s description"); !q.empty()) return q;
        if (c.vlan_settings.ports[i].pvid > SW_MAX_VLAN_ID)
            return beyond(name + "'s PVID", c.vlan_settings.ports[i].pvid, "VLAN IDs are 1 .. 4094");
        return "";
    });
}

std::string image_vlans(const View &v) {
    return first(layout::kVlanSlots,
                 [&](int vid) { return unterminated(v.cfg->vlans[vid].name, "VLAN " + std::to_string(vid) + "'s name"); });
}

std::string image_mirror(const View &v) {
    const layout::TrafficConfig &t = v.cfg->traffic;
    if (t.mirror_to_set && (t.mirror_to_unit0 < 0 || t.mirror_to_unit0 >= SW_MAX_UNITS || t.mirror_to_port0 < 0 ||
                            t.mirror_to_port0 >= SW_PORTS_PER_UNIT))
        return "the mirror destination is unit0 " + std::to_string(t.mirror_to_unit0) + " port0 " +
               std::to_string(t.mirror_to_port0) + " (no such port)";
    return "";
}

std::string image_l2proto(const View &v) {
    std::string p = first(SW_EAPS_DOMAINS, [&](int id) {
        return unterminated(v.cfg->l2proto.eaps[id].name, "ring domain " + std::to_string(id) + "'s name");
    });
    if (!p.empty()) return p;
    namespace groups = swp::igmp_groups;
    return first(int(groups::kRecords), [&](int i) -> std::string {
        const uint8_t *rec = groups::record(v.image, std::size_t(i));
        const uint32_t vid = groups::word(rec, groups::kVlanWord);
        if (groups::word(rec, groups::kInUseWord) && (vid < 1 || vid > SW_MAX_VLAN_ID))
            return beyond("static multicast group record " + std::to_string(i) + "'s VLAN", vid, "1 .. 4094");
        return "";
    });
}

std::string hardware_l2proto(const View &v) {
    const layout::L2ProtoHardware &h = v.hw->l2proto;
    if (h.stp.root_port > uint32_t(kIfaces))
        return beyond("the spanning tree's root port", h.stp.root_port, "interface numbers are 1 .. 640");
    if (h.stp.last_change_ns < 0) return beyond("the last topology change", h.stp.last_change_ns, "before 1970");
    return first(kIfaces, [&](int i) -> std::string {
        const uint8_t s = h.stp_ports[i].state;
        if (s > SW_STP_FORWARDING && s != layout::kStpAuto)
            return beyond("interface " + std::to_string(i) + "'s spanning-tree state", s, "0 .. 3");
        return "";
    });
}

std::string hardware_lacp(const View &v) {
    return first(kPhysPorts, [&](int phys) -> std::string {
        const int64_t since = v.hw->ifaces_ext.lacp[phys].since_ns;
        if (since < 0) return beyond("port " + std::to_string(phys) + "'s LACP partner time", since, "before 1970");
        return "";
    });
}

std::string stats_writers(const View &v) {
    return first(kPhysPorts, [&](int phys) -> std::string {
        const uint64_t w = shared::load(v.stats->ports[phys].writer, __ATOMIC_RELAXED);
        if (w & (owner::kWordUnused | uint64_t(1) << 31))
            return "port " + std::to_string(phys) + "'s counter writer word names no process";
        return "";
    });
}

std::string fdb_entries(const View &v) {
    const layout::Fdb &t = *v.fdb;
    if (t.capacity != layout::kFdbCapacity)
        return beyond("the address table's capacity", t.capacity, "it holds " + std::to_string(layout::kFdbCapacity));
    const uint32_t n = __atomic_load_n(&t.count, __ATOMIC_ACQUIRE);
    if (n > t.capacity) return beyond("the address count", n, "at most " + std::to_string(t.capacity));
    return first(int(n), [&](int i) -> std::string {
        const layout::FdbEntry &e = t.entries[i];
        const std::string entry = "address entry " + std::to_string(i);
        if (e.vid < 1 || e.vid > SW_MAX_VLAN_ID) return beyond(entry + "'s VLAN", e.vid, "1 .. 4094");
        if (e.unit < 0 || e.unit >= SW_MAX_UNITS) return beyond(entry + "'s unit0", e.unit, "0 .. 7");
        if (e.port >= SW_PORTS_PER_UNIT) return beyond(entry + "'s port0", e.port, "0 .. 63");
        if (e.trunk >= SW_MAX_TRUNKS) return beyond(entry + "'s trunk0", e.trunk, "0 .. 127");
        return "";
    });
}

std::string hardware_chassis(const View &v) {
    const sw_chassis_info_t &c = v.hw->chassis.info;
    if (c.slots < 1 || c.slots > SW_MAX_UNITS) return beyond("the number of unit positions", c.slots, "1 .. 8");
    if (c.psu_bays > SW_MAX_PSUS) return beyond("the number of power supply bays", c.psu_bays, "at most 4");
    if (c.fans > SW_MAX_FANS) return beyond("the number of fan positions", c.fans, "at most 8");
    if (c.alarm_inputs > SW_MAX_ALARM_INPUTS) return beyond("the number of alarm inputs", c.alarm_inputs, "at most 8");
    if (c.alarm_outputs > SW_MAX_ALARM_OUTPUTS) return beyond("the number of alarm outputs", c.alarm_outputs, "at most 4");
    return first(SW_MAX_UNITS, [&](int u) -> std::string {
        const layout::ChassisUnit &unit = v.hw->chassis.units[u];
        for (const auto *m : {&unit.psus[0], &unit.fans[0]})
            for (int i = 0; i < (m == &unit.psus[0] ? SW_MAX_PSUS : SW_MAX_FANS); ++i)
                if (!terminated(m[i].model)) return human("unit", u) + "'s module model runs past its " + std::to_string(SW_MODEL_SIZE) + " bytes";
        return "";
    });
}

struct Check {
    const char *section;
    std::string (*problem)(const View &);
};

const Check kChecks[] = {
    {"header", header_locks},       {"runtime", runtime_clock},     {"runtime", runtime_journal},
    {"runtime", runtime_faults},    {"status", status_units},       {"image", image_identity},
    {"image", image_interfaces},    {"image", image_vlans},         {"image", image_mirror},
    {"image", image_l2proto},       {"hardware", hardware_l2proto}, {"hardware", hardware_lacp},
    {"stats", stats_writers},       {"fdb", fdb_entries},           {"hardware", hardware_chassis},
    {"image", lldp::config_damage}, {"hardware", lldp::hardware_damage}, {"hardware", routing::damage},
    {"image", traps::damage},       {"image", services::damage},    {"image", rmon::damage},
    {"image", auth::damage},        {"hardware", files::damage},
    {"hardware", filters::damage},  {"image", cfm::damage},
};

}  // namespace

std::string find_damage(const View &v) {
    for (const Check &c : kChecks)
        if (std::string p = c.problem(v); !p.empty()) return std::string(c.section) + " section: " + p;
    return "";
}

}  // namespace swsim
