// The platform calls of swplatform/platform.h over the state file.
//
// Each call is one line of the catalogue below; the macro that expands it
// records the call in the journal and fires an armed fault before the real
// work in namespace impl.  While neither is in use that costs one relaxed
// load of the hot word: the agent makes millions of these calls per request.
//
// cfg_init() maps the file named by SWSIM_STATE.  Until it succeeds every
// call that needs the switch fails: int calls return -1, get_status() and
// cfg_get_cfg() return zeroed static blocks, text getters return NULL.  The
// helpers (ip_*, strncpy_safe, parse_time, systemf, vxlog) work regardless.
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

#include "chassis.hpp"
#include "helpers.hpp"
#include "hooks.hpp"
#include "ifaces.hpp"
#include "locks.hpp"
#include "model.hpp"
#include "shared_atomic.hpp"
#include "traffic.hpp"
#include "traps.hpp"
#include "services.hpp"
#include "auth.hpp"
#include "files.hpp"
#include "filters.hpp"
#include "cfm.hpp"
#include "util.hpp"
#include "vlans.hpp"

namespace swsim {
namespace {

// ---- the open state of this process ---------------------------------------------

struct Platform {
    std::mutex init_mutex;
    std::unique_ptr<StateFile> file;
    // Files replaced by platform_reopen(): kept mapped and open because
    // pointers into them were handed out.
    std::vector<std::unique_ptr<StateFile>> retired;
    View view;
    bool atfork_registered = false;
};

Platform &platform() {
    static Platform *p = new Platform;  // never destroyed: calls may come late in exit
    return *p;
}

uint32_t g_idle_hot = 0;
std::atomic<uint32_t *> g_hot{&g_idle_hot};
std::atomic<const View *> g_view{nullptr};
std::atomic<int> g_fd{-1};

sw_status_t g_zero_status;
uint8_t g_zero_image[SW_CFG_IMAGE_SIZE];

cfg_lock g_locks[CFG_LOCK_COUNT];
thread_local int t_reads[CFG_LOCK_COUNT];
thread_local bool t_writes[CFG_LOCK_COUNT];

void init_locks() {
    for (int i = 0; i < CFG_LOCK_COUNT; ++i) locks::init(g_locks[i], i);
}

// A forked child gets descriptors of its own so that its locks are its own;
// locks the parent's threads held are not held by the child.
void after_fork_in_child() {
    Platform &p = platform();
    if (p.file) p.file->reopen_descriptor();
    init_locks();
    for (int i = 0; i < CFG_LOCK_COUNT; ++i) {
        t_reads[i] = 0;
        t_writes[i] = false;
    }
}

int open_platform(bool replace) {
    Platform &p = platform();
    std::lock_guard guard(p.init_mutex);
    if (p.file && !replace) return 0;
    if (!p.atfork_registered) {
        init_locks();
        pthread_atfork(nullptr, nullptr, after_fork_in_child);
        p.atfork_registered = true;
    }
    const std::string path = default_state_path();
    std::unique_ptr<StateFile> file;
    try {
        file = StateFile::open(path);
    } catch (const Error &e) {
        std::fprintf(stderr, "swsim: %s\n", e.what());
        if (p.file) {  // a reopen that failed leaves no switch behind
            g_view.store(nullptr, std::memory_order_release);
            g_hot.store(&g_idle_hot, std::memory_order_release);
            p.file->keep_mapping();
            p.retired.push_back(std::move(p.file));
        }
        return -1;
    }
    if (p.file) {
        p.file->keep_mapping();
        p.retired.push_back(std::move(p.file));
    }
    p.file = std::move(file);
    p.view = p.file->view();
    g_fd.store(p.file->fd(), std::memory_order_release);
    g_view.store(&p.view, std::memory_order_release);
    g_hot.store(&p.view.rt->hot, std::memory_order_release);
    return 0;
}

const View *current() { return g_view.load(std::memory_order_acquire); }

// ---- journal arguments --------------------------------------------------------------
//
// In arguments as text: numbers in decimal, strings in double quotes, a lock
// as its index, the address-table query as its seven words; out arguments
// (other pointers) are left out.

struct ArgText {
    char buf[layout::kJournalArgsSize] = {};
    std::size_t n = 0;

    void raw(const char *s, std::size_t len) {
        for (std::size_t i = 0; i < len && n + 1 < sizeof buf; ++i) buf[n++] = s[i];
        buf[n] = '\0';
    }
    void sep() {
        if (n) raw(",", 1);
    }
    void number(long long v) {
        char tmp[24];
        sep();
        raw(tmp, std::size_t(std::snprintf(tmp, sizeof tmp, "%lld", v)));
    }
    void unsigned_number(unsigned long long v) {
        char tmp[24];
        sep();
        raw(tmp, std::size_t(std::snprintf(tmp, sizeof tmp, "%llu", v)));
    }
    void text(const char *s) {
        sep();
        if (!s) return raw("NULL", 4);
        raw("\"", 1);
        for (; *s; ++s) {
            if (*s == '"' || *s == '\\') raw("\\", 1);
            raw(s, 1);
        }
        raw("\"", 1);
    }
};

template <class T>
void add_arg(ArgText &out, T value) {
    if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
        out.number(value);
    } else if constexpr (std::is_integral_v<T>) {
        out.unsigned_number(value);
    } else if constexpr (std::is_same_v<T, const char *>) {
        out.text(value);
    } else if constexpr (std::is_same_v<T, cfg_lock_t *>) {
        out.number(value ? value->index : -1);
    } else if constexpr (std::is_same_v<T, const int32_t *>) {
        for (std::size_t i = 0; i < swp::mac_query::kWords; ++i) out.number(value ? value[i] : 0);
    }
    // Anything else is an out argument or a block handed back in.
}

// Journal and faults, on the slow path only.  Returns the result an armed
// fault imposes on an int call.
template <class Ret, class... Args>
std::optional<Ret> watched_call(std::string_view name, Args... args) {
    const View *v = current();
    if (!v) return std::nullopt;
    uint32_t hot = hooks::hot(&v->rt->hot);
    if (hot & layout::kHotJournal) {
        ArgText text;
        (add_arg(text, args), ...);
        hooks::journal_append(*v, name.data(), text.buf);
    }
    if constexpr (std::is_same_v<Ret, int>) {
        int result;
        if ((hot & layout::kHotFaults) && hooks::fault_hit(*v->rt, name.data(), &result)) return result;
    }
    return std::nullopt;
}

// For the calls that cannot fail.
template <class... Args>
void note_call(std::string_view name, Args... args) {
    watched_call<bool>(name, args...);
}

inline bool watched() { return hooks::watched(g_hot.load(std::memory_order_relaxed)); }

// ---- the calls -----------------------------------------------------------------------

namespace impl {

using namespace ifaces_impl;
using model::iface_of;
using model::phys_of;

// Copies a stored text to a caller's buffer, never reading past its field.
template <std::size_t N>
int give_text(const char (&text)[N], char *buf, size_t size) {
    if (!buf || size == 0) return -1;
    const std::size_t n = std::min(strnlen(text, N), size - 1);
    std::memcpy(buf, text, n);
    buf[n] = '\0';
    return 0;
}

int take_text(char *dst, std::size_t dst_size, const char *text) {
    if (!text || strnlen(text, dst_size) >= dst_size) return -1;
    copy_text(dst, dst_size, text);
    return 0;
}

template <class T>
int give(T *out, T value) {
    if (!out) return -1;
    *out = value;
    return 0;
}

// Runs `body` on the configuration of the interface a call addresses.
template <class Body>
int with_iface(const View &v, int unit0, int port0, Body body) {
    int iface = iface_of(v, unit0, port0);
    return iface < 0 ? -1 : body(iface, v.cfg->ifaces[iface]);
}

sw_status_t *get_status(const View &v) { return v.status; }
int status_get_num_units(const View &v) {
    int n = 0;
    for (const sw_unit_status_t &u : v.status->units) n += u.present ? 1 : 0;
    return n;
}
const char *status_get_hw_model(const View &v, int unit0) {
    return model::unit_in_range(unit0) ? v.status->units[unit0].model : nullptr;
}

int lock_op(const View &v, cfg_lock_t *lock, bool write, bool release) {
    int i = 0;
    while (i < CFG_LOCK_COUNT && lock != &g_locks[i]) ++i;
    if (i == CFG_LOCK_COUNT) return -1;
    const int fd = g_fd.load(std::memory_order_acquire);
    (void)v;
    if (release) {
        if (t_writes[i]) {
            t_writes[i] = false;
            return locks::release_write(*lock, fd);
        }
        if (t_reads[i] == 0) return -1;  // not held by this thread
        --t_reads[i];
        return locks::release_read(*lock, fd);
    }
    if (t_writes[i] || (write && t_reads[i])) return -1;  // would deadlock on itself
    if (write) {
        if (locks::write(*lock, fd) != 0) return -1;
        t_writes[i] = true;
    } else {
        if (locks::read(*lock, fd) != 0) return -1;
        ++t_reads[i];
    }
    model::publish_iface_change(v);
    return 0;
}
int lock_read(const View &v, cfg_lock_t *lock) { return lock_op(v, lock, false, false); }
int lock_write(const View &v, cfg_lock_t *lock) { return lock_op(v, lock, true, false); }
int lock_free(const View &v, cfg_lock_t *lock) { return lock_op(v, lock, false, true); }

uint64_t uptime_units(const View &v, uint64_t unit_ns) { return model::ns_since(v.rt->boot_realtime_ns) / unit_ns; }
uint32_t uptime(const View &v) { return uint32_t(uptime_units(v, 1'000'000'000)); }
uint64_t uptime_cs(const View &v) { return uptime_units(v, 10'000'000); }

// The offset is kept within the clock's range (a damaged one as well).
time_t sys_clock_get(const View &v) {
    const int64_t offset = shared::load(v.rt->clock_offset_s, __ATOMIC_RELAXED);
    const int64_t now = int64_t(time(nullptr)) + std::clamp(offset, -layout::kMaxClockS, layout::kMaxClockS);
    return time_t(std::min(now, layout::kMaxClockS));
}
int sys_clock_set(const View &v, time_t t) {
    if (t < 0 || t > layout::kMaxClockS) return -1;
    shared::store(v.rt->clock_offset_s, int64_t(t - time(nullptr)), __ATOMIC_RELAXED);
    return 0;
}

// A count beyond what a unit can have is damage, not ports.
int cfg_equip_get_user_eth_ports(const View &v, int unit0) {
    if (!model::unit_in_range(unit0)) return -1;
    const uint32_t ports = v.status->units[unit0].user_ports;
    return ports <= SW_PORTS_PER_UNIT ? int(ports) : -1;
}
int cfg_equip_get_is_mpu(const View &v, int unit0) {
    return model::unit_in_range(unit0) ? v.status->units[unit0].is_mpu != 0 : -1;
}
// A length beyond the stored sub-identifiers is damage: no OID.
const uint32_t *cfg_equip_get_int_oid(const View &v, size_t *len) {
    const uint32_t n = v.cfg->equip_oid_len;
    const bool whole = n <= std::size(v.cfg->equip_oid);
    if (len) *len = whole ? n * sizeof(uint32_t) : 0;
    return whole ? v.cfg->equip_oid : nullptr;
}
const char *cfg_equip_get_name_vx7300(const View &v, const sw_status_t *) { return v.cfg->equip_name; }
const char *cfg_equip_get_vendor_url(const View &v) { return v.cfg->vendor_url; }
int cfg_get_unit_mac(const View &v, int unit0, uint8_t mac[6]) {
    if (!mac || !model::unit_in_range(unit0) || !v.status->units[unit0].status2) return -1;
    std::memcpy(mac, v.cfg->unit_mac[unit0], 6);
    return 0;
}

int cfg_get_hostname(const View &v, char *buf, size_t size) { return give_text(v.cfg->hostname, buf, size); }
int cfg_set_hostname(const View &v, const char *name) {
    return take_text(v.cfg->hostname, sizeof v.cfg->hostname, name);
}
int cfg_get_snmpd_sys_contact(const View &v, char *buf, size_t size) { return give_text(v.cfg->contact, buf, size); }
int cfg_set_snmpd_sys_contact(const View &v, const char *text) {
    return take_text(v.cfg->contact, sizeof v.cfg->contact, text);
}
int cfg_get_snmpd_sys_location(const View &v, char *buf, size_t size) {
    return give_text(v.cfg->location, buf, size);
}
int cfg_set_snmpd_sys_location(const View &v, const char *text) {
    return take_text(v.cfg->location, sizeof v.cfg->location, text);
}
int cfg_get_timezone(const View &v, char *name, int *offset_min) {
    if (!name || !offset_min) return -1;
    copy_text(name, SW_TZ_NAME_SIZE, v.cfg->tz_name);
    *offset_min = v.cfg->tz_offset_min;
    return 0;
}
int cfg_set_timezone(const View &v, const char *name, int offset_min) {
    if (offset_min < -720 || offset_min > 840) return -1;
    if (take_text(v.cfg->tz_name, sizeof v.cfg->tz_name, name) != 0) return -1;
    v.cfg->tz_offset_min = offset_min;
    return 0;
}

uint8_t *cfg_get_cfg(const View &v) { return v.image; }
const uint8_t *bcmd_get_hw_hash(const View &v, size_t *len) {
    thread_local uint8_t hash[16];
    model::hardware_hash(v, hash);
    if (len) *len = sizeof hash;
    return hash;
}
const uint8_t *bcmd_get_status_hash(const View &v, size_t *len) {
    thread_local uint8_t hash[16];
    model::status_hash(v, hash);
    if (len) *len = sizeof hash;
    return hash;
}

int bcmd_get_port_info(const View &v, int unit0, int port0, sw_port_info_t *info) {
    int iface = iface_of(v, unit0, port0);
    if (iface < 0 || !info) return -1;
    *info = model::port_info(v, iface);
    return 0;
}
int bcmd_snmp_stat_get(const View &v, int unit0, int port0, int stat, uint64_t *value) {
    int iface = iface_of(v, unit0, port0);
    if (iface < 0 || !value || stat < 0 || stat >= SW_MAX_STATISTIC) return -1;
    *value = model::counter(v, iface, stat);
    return 0;
}

int cfg_get_port_description(const View &v, int unit0, int port0, char *buf, size_t size) {
    return with_iface(v, unit0, port0, [&](int, auto &c) { return give_text(c.description, buf, size); });
}
int cfg_set_port_description(const View &v, int unit0, int port0, const char *text) {
    return with_iface(v, unit0, port0,
                      [&](int, auto &c) { return take_text(c.description, sizeof c.description, text); });
}
int cfg_get_port_type_vx7300(const View &v, int unit0, int port0) {
    return with_iface(v, unit0, port0, [](int, auto &c) { return int(c.type); });
}
int cfg_get_port_enabled(const View &v, int unit0, int port0, int *enabled) {
    return with_iface(v, unit0, port0, [&](int, auto &c) { return give(enabled, int(c.admin)); });
}
int cfg_get_port_autoneg(const View &v, int unit0, int port0, int *on) {
    return with_iface(v, unit0, port0, [&](int, auto &c) { return give(on, int(c.autoneg)); });
}
int cfg_get_port_speed(const View &v, int unit0, int port0, int *mbps) {
    return with_iface(v, unit0, port0, [&](int, auto &c) { return give(mbps, int(c.speed)); });
}
int cfg_get_port_duplex(const View &v, int unit0, int port0, int *full) {
    return with_iface(v, unit0, port0, [&](int, auto &c) { return give(full, int(c.duplex)); });
}
int cfg_get_port_pause(const View &v, int unit0, int port0, int *pause) {
    return with_iface(v, unit0, port0, [&](int, auto &c) { return give(pause, int(c.pause)); });
}
int cfg_get_port_mdix(const View &v, int unit0, int port0, int *mdix) {
    return with_iface(v, unit0, port0, [&](int, auto &c) { return give(mdix, int(c.mdix)); });
}
int cfg_get_port_capabilities(const View &v, int unit0, int port0, uint32_t *mask) {
    return with_iface(v, unit0, port0, [&](int, auto &c) { return give(mask, c.caps); });
}
int cfg_get_port_mtu(const View &v, int unit0, int port0) {
    return with_iface(v, unit0, port0, [](int, auto &c) { return int(c.mtu); });
}
int cfg_get_port_mac(const View &v, int unit0, int port0, uint8_t mac[6]) {
    return with_iface(v, unit0, port0, [&](int, auto &c) {
        if (!mac) return -1;
        std::memcpy(mac, c.mac, 6);
        return 0;
    });
}

// Setters that the link follows.
#define SWSIM_PORT_SETTER(name, type, setter)                                             \
    int name(const View &v, int unit0, int port0, type value) {                           \
        View mv = v;                                                                      \
        return with_iface(v, unit0, port0, [&](int i, auto &) { return setter(mv, i, value); }); \
    }
SWSIM_PORT_SETTER(cfg_set_port_enabled, int, model::set_port_enable)
SWSIM_PORT_SETTER(cfg_set_port_autoneg, int, [](View &m, int i, int on) { return model::set_port_autoneg(m, i, on != 0); })
SWSIM_PORT_SETTER(cfg_set_port_speed, int, model::set_port_speed)
SWSIM_PORT_SETTER(cfg_set_port_duplex, int, model::set_port_duplex)
SWSIM_PORT_SETTER(cfg_set_port_pause, int, model::set_port_pause)
SWSIM_PORT_SETTER(cfg_set_port_capabilities, uint32_t, model::set_port_capabilities)
#undef SWSIM_PORT_SETTER

// No trunk exists outside 0 .. 127: 0, as for a free one.
int cfg_check_trunk(const View &v, int trunk0) {
    return model::trunk_in_range(trunk0) && v.cfg->trunks[trunk0].configured != 0;
}
int cfg_is_trunk_empty(const View &v, int trunk0) {
    return model::trunk_in_range(trunk0) ? model::trunk_empty(v, trunk0) : -1;
}
int cfg_is_dynamic_trunk(const View &v, int trunk0) {
    return model::trunk_in_range(trunk0) ? v.cfg->trunks[trunk0].dynamic != 0 : -1;
}
int cfg_get_port_tid(const View &v, int unit0, int port0) {
    return phys_of(v, unit0, port0) < 0 ? -1 : model::trunk_of_port(v, unit0, port0);
}
int cfg_check_port_tid(const View &v, int unit0, int port0, int trunk0) {
    if (phys_of(v, unit0, port0) < 0 || !model::trunk_in_range(trunk0)) return -1;
    return v.cfg->trunks[trunk0].configured && model::trunk_has(v, trunk0, unit0, port0);
}

int cfg_vlan_exists(const View &v, int vid) { return model::vid_in_range(vid) ? v.cfg->vlans[vid].exists != 0 : -1; }
int cfg_vlan_is_active(const View &v, int vid) {
    return model::vid_in_range(vid) ? (v.cfg->vlans[vid].exists && v.cfg->vlans[vid].active) : -1;
}
int cfg_is_vlan_dynamic(const View &v, int vid) {
    return model::vid_in_range(vid) ? (v.cfg->vlans[vid].exists && v.cfg->vlans[vid].dynamic) : -1;
}
int cfg_get_vlan_name(const View &v, int vid, char *buf, size_t size) {
    if (!model::vid_in_range(vid) || !v.cfg->vlans[vid].exists) return -1;
    return give_text(v.cfg->vlans[vid].name, buf, size);
}
// A VLAN that does not exist has no members to report: -1.
int cfg_get_vlan_port_member(const View &v, int unit0, int port0, int vid, uint32_t *flags) {
    if (!flags || !model::vid_in_range(vid) || !v.cfg->vlans[vid].exists) return -1;
    int iface = iface_of(v, unit0, port0);
    if (iface < 0) return -1;
    *flags = v.cfg->members[vid][iface];
    return 0;
}

// Query words: all zero selects every entry.  When word0 has bit 6 (64) set,
// an entry is selected only if its flags have no bit outside word1 (so
// 64, ~0x20 selects the dynamic entries); a non-zero word2 selects one VLAN.
int cfg_get_mac_address_table(const View &v, int *count, uint8_t **entries, const int32_t query[7]) {
    if (!count || !entries) return -1;
    const bool by_flags = query && (query[0] & 64);
    const uint32_t allowed = query ? uint32_t(query[1]) : 0;
    const int vid = query ? query[2] : 0;
    const layout::Fdb &t = *v.fdb;
    const uint32_t n = std::min<uint32_t>(__atomic_load_n(&t.count, __ATOMIC_ACQUIRE), layout::kFdbCapacity);
    auto selected = [&](const layout::FdbEntry &e) {
        return (!by_flags || (e.flags & ~allowed) == 0) && (vid == 0 || e.vid == vid);
    };
    int k = 0;
    for (uint32_t i = 0; i < n; ++i) k += selected(t.entries[i]);
    uint8_t *out = nullptr;
    if (k > 0) {
        out = static_cast<uint8_t *>(std::malloc(std::size_t(k) * swp::mac_entry::kSize));
        if (!out) return -1;
        uint8_t *p = out;
        for (uint32_t i = 0; i < n && p < out + std::size_t(k) * swp::mac_entry::kSize; ++i) {
            const layout::FdbEntry &e = t.entries[i];
            if (!selected(e)) continue;
            swp::mac_entry::Entry rec;
            rec.flags = e.flags;
            std::memcpy(rec.mac, e.mac, 6);
            rec.fid = e.vid;
            rec.unit = e.unit;
            rec.port = e.port;
            rec.trunk = e.trunk;
            swp::mac_entry::encode(rec, p);
            p += swp::mac_entry::kSize;
        }
    }
    *count = k;
    *entries = out;
    return 0;
}
int cfg_get_mac_ageing(const View &v) { return v.cfg->mac_ageing; }
int cfg_set_mac_ageing(const View &v, int seconds) {
    if (seconds < 10 || seconds > 1000000) return -1;
    v.cfg->mac_ageing = seconds;
    return 0;
}

}  // namespace impl

// VLAN calls live in vlans.cpp.
namespace impl {
using namespace swsim::vlans_impl;
}  // namespace impl
// The traffic controls live in traffic.cpp.
namespace impl {
using namespace traffic::calls;
}
// The chassis calls live in chassis.cpp.
namespace impl {
using namespace chassis::calls;
}
// The trap service lives in traps.cpp.
namespace impl {
using namespace traps::calls;
}
// The management services live in services.cpp.
namespace impl {
using namespace services::calls;
}
// Port authentication lives in auth.cpp.
namespace impl {
using namespace auth::calls;
}
// The file store, TFTP and restarts live in files.cpp.
namespace impl {
using namespace files::calls;
}
// Packet filters live in filters.cpp.
namespace impl {
using namespace filters::calls;
}
// CFM delay measurement probes live in cfm.cpp.
namespace impl {
using namespace cfm::calls;
}

// Pure helpers keep their own names in namespace helpers.
namespace impl {
using helpers::ip_addr_prefix_to_addr_mask;
using helpers::ip_mask_to_prefix;
using helpers::ip_str_to_uint32;
using helpers::ip_uint32_to_str;
using helpers::parse_time;
using helpers::strncpy_safe;
}  // namespace impl

}  // namespace
}  // namespace swsim

// ---- layer-2 protocols (l2proto.cpp) -------------------------------------------------------

#include "l2proto.hpp"
namespace swsim {
namespace {
namespace impl {
using namespace l2proto::calls;
}
}  // namespace
}  // namespace swsim

// ---- LLDP (lldp.cpp) -------------------------------------------------------------------------

#include "lldp.hpp"
namespace swsim {
namespace {
namespace impl {
using namespace lldp::calls;
}
}  // namespace
}  // namespace swsim

#define SWSIM_L2PROTO_CALLS(X)                                                                         \
    X(int, cfg_get_stp_state, (int instance, uint8_t *record), (instance, record), -1)                  \
    X(int, cfg_get_stp_port_state, (int instance, int unit0, int port0, uint8_t *record),               \
      (instance, unit0, port0, record), -1)                                                             \
    X(int, cfg_get_stp_prio, (int instance), (instance), -1)                                            \
    X(int, cfg_set_stp_prio, (int instance, int prio), (instance, prio), -1)                            \
    X(int, cfg_get_stp_maxage, (int instance), (instance), -1)                                          \
    X(int, cfg_set_stp_maxage, (int instance, int cs), (instance, cs), -1)                              \
    X(int, cfg_get_stp_hello, (int instance), (instance), -1)                                           \
    X(int, cfg_set_stp_hello, (int instance, int cs), (instance, cs), -1)                               \
    X(int, cfg_get_stp_ftime, (int instance), (instance), -1)                                           \
    X(int, cfg_set_stp_ftime, (int instance, int cs), (instance, cs), -1)                               \
    X(int, cfg_get_stp_enabled, (void), (), -1)                                                         \
    X(int, cfg_set_stp_domain_enabled, (int instance, int on), (instance, on), -1)                      \
    X(int, cfg_get_stp_forcemode, (void), (), -1)                                                       \
    X(int, cfg_set_stp_forcemode, (int mode), (mode), -1)                                               \
    X(int, cfg_get_stp_port_prio, (int instance, int unit0, int port0), (instance, unit0, port0), -1)   \
    X(int, cfg_set_stp_port_prio, (int instance, int unit0, int port0, int prio),                       \
      (instance, unit0, port0, prio), -1)                                                               \
    X(int, cfg_get_stp_port_cost, (int instance, int unit0, int port0), (instance, unit0, port0), -1)   \
    X(int, cfg_set_stp_port_cost, (int instance, int unit0, int port0, int cost),                       \
      (instance, unit0, port0, cost), -1)                                                               \
    X(int, cfg_get_stp_port_enabled, (int instance, int unit0, int port0), (instance, unit0, port0), -1) \
    X(int, cfg_set_stp_port_enabled, (int instance, int unit0, int port0, int on),                      \
      (instance, unit0, port0, on), -1)                                                                 \
    X(int, cfg_get_stp_port_edge, (int unit0, int port0), (unit0, port0), -1)                           \
    X(int, cfg_set_stp_port_edge, (int unit0, int port0, int on), (unit0, port0, on), -1)               \
    X(int, cfg_get_stp_port_linktype, (int unit0, int port0), (unit0, port0), -1)                       \
    X(int, cfg_set_stp_port_linktype, (int unit0, int port0, int type), (unit0, port0, type), -1)       \
    X(int, cfg_get_igmp_enable, (void), (), -1)                                                         \
    X(int, cfg_set_igmp_enable, (int on), (on), -1)                                                     \
    X(int, cfg_get_igmp_enable_querier, (void), (), -1)                                                 \
    X(int, cfg_set_igmp_enable_querier, (int on), (on), -1)                                             \
    X(int, cfg_get_igmp_version, (void), (), -1)                                                        \
    X(int, cfg_set_igmp_version, (int version), (version), -1)                                          \
    X(int, cfg_get_igmp_query_count, (void), (), -1)                                                    \
    X(int, cfg_set_igmp_query_count, (int count), (count), -1)                                          \
    X(int, cfg_get_igmp_query_interval, (void), (), -1)                                                 \
    X(int, cfg_set_igmp_query_interval, (int seconds), (seconds), -1)                                   \
    X(int, cfg_get_igmp_query_timeout, (void), (), -1)                                                  \
    X(int, cfg_set_igmp_query_timeout, (int seconds), (seconds), -1)                                    \
    X(int, cfg_get_igmp_router_port, (int unit0, int port0, int vid), (unit0, port0, vid), -1)          \
    X(int, cfg_set_igmp_router_port, (int unit0, int port0, int vid, int on), (unit0, port0, vid, on), -1) \
    X(int, cfg_set_igmp_set_mcast, (int unit0, int port0, int vid, uint32_t group, int learned, int on), \
      (unit0, port0, vid, group, learned, on), -1)                                                      \
    X(int, verify_created_eaps_domain, (int id), (id), -1)                                              \
    X(const char *, cfg_get_eaps_name, (int id), (id), nullptr)                                         \
    X(int, cfg_get_eaps_is_master, (int id), (id), -1)                                                  \
    X(const uint8_t *, status_get_eaps, (void), (), g_zero_eaps_status)

namespace swsim {
namespace {
const uint8_t g_zero_eaps_status[swp::eaps_status::kSize] = {};
}
}  // namespace swsim

// ---- routing (routing.cpp) ------------------------------------------------------------------

#include "routing.hpp"
namespace swsim {
namespace {
namespace impl {
using namespace routing::calls;
}
}  // namespace
}  // namespace swsim

// ---- RMON engine (rmon.cpp) -----------------------------------------------------------------

#include "rmon.hpp"
namespace swsim {
namespace {
namespace impl {
using namespace rmon::calls;
}
}  // namespace
}  // namespace swsim

// ---- the catalogue ------------------------------------------------------------------------
//
// X(return type, name, parameters, arguments, result while no state is open)
// for the calls that work on the switch; P(...) without the last for helpers.

#define SWSIM_STATE_CALLS(X)                                                                           \
    X(sw_status_t *, get_status, (void), (), &g_zero_status)                                            \
    X(int, status_get_num_units, (void), (), -1)                                                        \
    X(const char *, status_get_hw_model, (int unit0), (unit0), nullptr)                                 \
    X(int, lock_read, (cfg_lock_t * lock), (lock), -1)                                                  \
    X(int, lock_write, (cfg_lock_t * lock), (lock), -1)                                                 \
    X(uint32_t, uptime, (void), (), 0)                                                                  \
    X(uint64_t, uptime_cs, (void), (), 0)                                                               \
    X(time_t, sys_clock_get, (void), (), time_t(-1))                                                    \
    X(int, sys_clock_set, (time_t t), (t), -1)                                                          \
    X(int, cfg_equip_get_user_eth_ports, (int unit0), (unit0), -1)                                      \
    X(int, cfg_equip_get_is_mpu, (int unit0), (unit0), -1)                                              \
    X(const uint32_t *, cfg_equip_get_int_oid, (size_t * len), (len), nullptr)                          \
    X(const char *, cfg_equip_get_name_vx7300, (const sw_status_t *status), (status), nullptr)          \
    X(const char *, cfg_equip_get_vendor_url, (void), (), nullptr)                                      \
    X(int, cfg_get_unit_mac, (int unit0, uint8_t mac[6]), (unit0, mac), -1)                             \
    X(int, cfg_get_hostname, (char *buf, size_t size), (buf, size), -1)                                 \
    X(int, cfg_set_hostname, (const char *name), (name), -1)                                            \
    X(int, cfg_get_snmpd_sys_contact, (char *buf, size_t size), (buf, size), -1)                        \
    X(int, cfg_set_snmpd_sys_contact, (const char *text), (text), -1)                                   \
    X(int, cfg_get_snmpd_sys_location, (char *buf, size_t size), (buf, size), -1)                       \
    X(int, cfg_set_snmpd_sys_location, (const char *text), (text), -1)                                  \
    X(int, cfg_get_timezone, (char *name, int *offset_min), (name, offset_min), -1)                     \
    X(int, cfg_set_timezone, (const char *name, int offset_min), (name, offset_min), -1)                \
    X(uint8_t *, cfg_get_cfg, (void), (), g_zero_image)                                                 \
    X(const uint8_t *, bcmd_get_hw_hash, (size_t * len), (len), nullptr)                                \
    X(const uint8_t *, bcmd_get_status_hash, (size_t * len), (len), nullptr)                            \
    X(int, bcmd_get_port_info, (int unit0, int port0, sw_port_info_t *info), (unit0, port0, info), -1)  \
    X(int, bcmd_snmp_stat_get, (int unit0, int port0, int stat, uint64_t *value),                       \
      (unit0, port0, stat, value), -1)                                                                  \
    X(int, cfg_get_port_description, (int unit0, int port0, char *buf, size_t size),                    \
      (unit0, port0, buf, size), -1)                                                                    \
    X(int, cfg_set_port_description, (int unit0, int port0, const char *text), (unit0, port0, text), -1) \
    X(int, cfg_get_port_type_vx7300, (int unit0, int port0), (unit0, port0), -1)                        \
    X(int, cfg_get_port_enabled, (int unit0, int port0, int *enabled), (unit0, port0, enabled), -1)      \
    X(int, cfg_set_port_enabled, (int unit0, int port0, int enabled), (unit0, port0, enabled), -1)       \
    X(int, cfg_get_port_autoneg, (int unit0, int port0, int *on), (unit0, port0, on), -1)               \
    X(int, cfg_set_port_autoneg, (int unit0, int port0, int on), (unit0, port0, on), -1)                \
    X(int, cfg_get_port_speed, (int unit0, int port0, int *mbps), (unit0, port0, mbps), -1)             \
    X(int, cfg_set_port_speed, (int unit0, int port0, int mbps), (unit0, port0, mbps), -1)              \
    X(int, cfg_get_port_duplex, (int unit0, int port0, int *full), (unit0, port0, full), -1)            \
    X(int, cfg_set_port_duplex, (int unit0, int port0, int full), (unit0, port0, full), -1)             \
    X(int, cfg_get_port_pause, (int unit0, int port0, int *pause), (unit0, port0, pause), -1)           \
    X(int, cfg_set_port_pause, (int unit0, int port0, int pause), (unit0, port0, pause), -1)            \
    X(int, cfg_get_port_mdix, (int unit0, int port0, int *mdix), (unit0, port0, mdix), -1)              \
    X(int, cfg_get_port_capabilities, (int unit0, int port0, uint32_t *mask), (unit0, port0, mask), -1) \
    X(int, cfg_set_port_capabilities, (int unit0, int port0, uint32_t mask), (unit0, port0, mask), -1)  \
    X(int, cfg_get_port_mtu, (int unit0, int port0), (unit0, port0), -1)                                \
    X(int, cfg_get_port_mac, (int unit0, int port0, uint8_t mac[6]), (unit0, port0, mac), -1)          \
    X(int, cfg_check_trunk, (int trunk0), (trunk0), -1)                                                 \
    X(int, cfg_is_trunk_empty, (int trunk0), (trunk0), -1)                                              \
    X(int, cfg_is_dynamic_trunk, (int trunk0), (trunk0), -1)                                            \
    X(int, cfg_get_port_tid, (int unit0, int port0), (unit0, port0), -1)                                \
    X(int, cfg_check_port_tid, (int unit0, int port0, int trunk0), (unit0, port0, trunk0), -1)          \
    X(int, cfg_vlan_exists, (int vid), (vid), -1)                                                       \
    X(int, cfg_vlan_is_active, (int vid), (vid), -1)                                                    \
    X(int, cfg_is_vlan_dynamic, (int vid), (vid), -1)                                                   \
    X(int, cfg_get_vlan_name, (int vid, char *buf, size_t size), (vid, buf, size), -1)                  \
    X(int, cfg_get_vlan_port_member, (int unit0, int port0, int vid, uint32_t *flags),                  \
      (unit0, port0, vid, flags), -1)                                                                   \
    X(int, cfg_get_mac_ageing, (void), (), -1)                                                          \
    X(int, cfg_set_mac_ageing, (int seconds), (seconds), -1)                                           \
    /* ---- vlans ---- */                                                                               \
    X(int, cfg_vlan_create, (int vid, int flags, int owner), (vid, flags, owner), -1)                   \
    X(int, cfg_vlan_enable, (int vid), (vid), -1)                                                       \
    X(int, cfg_vlan_disable, (int vid), (vid), -1)                                                      \
    X(int, cfg_vlan_destroy, (int vid), (vid), -1)                                                      \
    X(int, cfg_set_vlan_name, (int vid, const char *name), (vid, name), -1)                             \
    X(int, cfg_set_vlan_port_member, (int unit0, int port0, int vid, uint32_t flags, int dynamic),      \
      (unit0, port0, vid, flags, dynamic), -1)                                                          \
    X(int, cfg_get_pvid, (int unit0, int port0, int *pvid), (unit0, port0, pvid), -1)                   \
    X(int, cfg_set_pvid, (int unit0, int port0, int pvid), (unit0, port0, pvid), -1)                    \
    X(int, cfg_get_port_discard, (int unit0, int port0, int *mode), (unit0, port0, mode), -1)           \
    X(int, cfg_set_port_discard, (int unit0, int port0, int mode), (unit0, port0, mode), -1)            \
    X(int, cfg_get_ingress_filtering, (int unit0, int port0, int *on), (unit0, port0, on), -1)          \
    X(int, cfg_set_ingress_filtering, (int unit0, int port0, int on), (unit0, port0, on), -1)           \
    X(int, cfg_get_gvrp_enable_port, (int unit0, int port0, int *on), (unit0, port0, on), -1)           \
    X(int, cfg_set_gvrp_enable_port, (int unit0, int port0, int on), (unit0, port0, on), -1)            \
    X(int, cfg_get_gvrp_enable, (void), (), -1)                                                         \
    X(int, cfg_set_gvrp_enable, (int on), (on), -1)                                                     \
    X(int, cfg_get_vlan_dhcp_client, (int vid), (vid), -1)                                              \
    X(int, cfg_set_vlan_dhcp_client, (int on), (on), -1)                                                \
    X(int, cfg_get_default_priority, (int unit0, int port0), (unit0, port0), -1)                        \
    X(int, cfg_set_default_priority, (int unit0, int port0, int priority), (unit0, port0, priority), -1) \
    /* traffic controls */                                                                             \
    X(int, cfg_get_port_rate_ingress, (int unit0, int port0, uint32_t *kbps), (unit0, port0, kbps), -1) \
    X(int, cfg_set_port_rate_ingress, (int unit0, int port0, uint32_t kbps), (unit0, port0, kbps), -1)  \
    X(int, cfg_get_port_burst_ingress, (int unit0, int port0, uint32_t *kb), (unit0, port0, kb), -1)    \
    X(int, cfg_set_port_burst_ingress, (int unit0, int port0, uint32_t kb), (unit0, port0, kb), -1)     \
    X(int, cfg_set_default_port_rate_ingress, (int unit0, int port0), (unit0, port0), -1)               \
    X(int, cfg_set_default_port_burst_ingress, (int unit0, int port0), (unit0, port0), -1)              \
    X(int, cfg_get_port_rate_egress, (int unit0, int port0, uint32_t *kbps), (unit0, port0, kbps), -1)  \
    X(int, cfg_set_port_rate_egress, (int unit0, int port0, uint32_t kbps), (unit0, port0, kbps), -1)   \
    X(int, cfg_get_port_burst_egress, (int unit0, int port0, uint32_t *kb), (unit0, port0, kb), -1)     \
    X(int, cfg_set_port_burst_egress, (int unit0, int port0, uint32_t kb), (unit0, port0, kb), -1)      \
    X(int, cfg_set_default_port_rate_egress, (int unit0, int port0), (unit0, port0), -1)                \
    X(int, cfg_set_default_port_burst_egress, (int unit0, int port0), (unit0, port0), -1)               \
    X(int, cfg_get_port_rate_bcast_enable, (int unit0, int port0, uint8_t *on), (unit0, port0, on), -1) \
    X(int, cfg_set_port_rate_bcast_enable, (int unit0, int port0, uint8_t on), (unit0, port0, on), -1)  \
    X(int, cfg_get_port_rate_bcast_value, (int unit0, int port0, uint32_t *pps), (unit0, port0, pps), -1) \
    X(int, cfg_set_port_rate_bcast_value, (int unit0, int port0, uint32_t pps), (unit0, port0, pps), -1) \
    X(int, cfg_get_queue_pkts_cnt, (int unit0, int port0, uint8_t *c, size_t size), (unit0, port0, c, size), -1) \
    X(int, cfg_get_queue_bytes_cnt, (int unit0, int port0, uint8_t *c, size_t size), (unit0, port0, c, size), -1) \
    X(int, cfg_get_queue_dropped_pkts, (int unit0, int port0, uint8_t *c, size_t size), (unit0, port0, c, size), -1) \
    X(int, cfg_get_queue_dropped_bytes, (int unit0, int port0, uint8_t *c, size_t size), (unit0, port0, c, size), -1) \
    X(int, cfg_get_port_mirror, (int unit0, int port0, int *mode), (unit0, port0, mode), -1)            \
    X(int, cfg_set_port_mirror, (int unit0, int port0, int mode), (unit0, port0, mode), -1)             \
    X(int, cfg_get_mirror_to, (int *unit0, int *port0), (unit0, port0), -1)                            \
    X(int, cfg_set_mirror_to, (int unit0, int port0), (unit0, port0), -1)                             \
    /* ---- interfaces and trunks ---- */                                                              \
    X(int, cfg_get_trap_enable_port, (int unit0, int port0, uint8_t *enabled), (unit0, port0, enabled), -1) \
    X(int, cfg_set_trap_enable_port, (int unit0, int port0, int enabled), (unit0, port0, enabled), -1)  \
    X(int, cfg_port_is_error_blocked, (int unit0, int port0), (unit0, port0), -1)                       \
    X(int, cfg_trunk_count_link_up, (int trunk0), (trunk0), -1)                                         \
    X(int, cfg_create_trunk, (int trunk0), (trunk0), -1)                                                \
    X(int, cfg_destroy_trunk, (int trunk0), (trunk0), -1)                                               \
    X(int, cfg_add_port_to_trunk, (int trunk0, int unit0, int port0, int flags),                        \
      (trunk0, unit0, port0, flags), -1)                                                                \
    X(int, cfg_remove_port_from_trunk, (int trunk0, int unit0, int port0), (trunk0, unit0, port0), -1) \
    X(int, cfg_get_lacp_port, (int unit0, int port0, sw_lacp_port_t *info), (unit0, port0, info), -1)   \
    X(int, cfg_set_lacp_port_enable, (int unit0, int port0, int enabled), (unit0, port0, enabled), -1)  \
    X(int, cfg_set_lacp_port_priority, (int unit0, int port0, int priority), (unit0, port0, priority), -1) \
    X(int, cfg_get_lacp_system_priority, (void), (), -1)                                                \
    X(int, cfg_set_lacp_system_priority, (int priority), (priority), -1)                                \
    X(int, cfg_get_lacp_last_change, (uint32_t * cs), (cs), -1)                                         \
    SWSIM_L2PROTO_CALLS(X)                                                                             \
    SWSIM_CHASSIS_CALLS(X)                                                                             \
    SWSIM_LLDP_CALLS(X)                                                                                \
    SWSIM_ROUTING_CALLS(X)                                                                             \
    SWSIM_TRAPS_CALLS(X)                                                                               \
    SWSIM_SERVICES_CALLS(X)                                                                            \
    SWSIM_RMON_CALLS(X)                                                                                \
    SWSIM_AUTH_CALLS(X)                                                                                \
    SWSIM_FILES_CALLS(X)                                                                               \
    SWSIM_FILTERS_CALLS(X)                                                                             \
    SWSIM_CFM_CALLS(X)

#define SWSIM_HELPER_CALLS(P)                                                                          \
    P(int, ip_str_to_uint32, (const char *text, uint32_t *addr), (text, addr))                          \
    P(int, ip_uint32_to_str, (uint32_t addr, char *buf, size_t size), (addr, buf, size))                \
    P(int, ip_mask_to_prefix, (uint32_t mask), (mask))                                                  \
    P(int, ip_addr_prefix_to_addr_mask, (const char *text, uint32_t *addr, uint32_t *mask),             \
      (text, addr, mask))                                                                               \
    P(char *, strncpy_safe, (char *dst, const char *src, size_t size), (dst, src, size))                \
    P(int, parse_time, (const char *text, int *hours, int *minutes, int *seconds),                      \
      (text, hours, minutes, seconds))                                                                  \
    SWSIM_TRAPS_HELPER_CALLS(P)                                                                       \
    SWSIM_RMON_HELPER_CALLS(P)

// (a, b) -> (first, a, b); () -> (first)
#define SWSIM_EXPAND(...) __VA_ARGS__
#define SWSIM_PREPEND_I(first, ...) (first __VA_OPT__(, ) __VA_ARGS__)
#define SWSIM_PREPEND(first, args) SWSIM_PREPEND_I(first, SWSIM_EXPAND args)

using namespace swsim;

// The journal and the faults are looked at only while a control handle
// watches the switch; that path is kept out of line, so that an unwatched
// call is a load, a test and the model's answer.
#define SWSIM_DEFINE_STATE_CALL(ret, name, params, args, closed)                      \
    static inline ret name##_answer params {                                          \
        const View *v = current();                                                    \
        if (!v) return closed;                                                        \
        return impl::name SWSIM_PREPEND(*v, args);                                    \
    }                                                                                 \
    [[gnu::noinline, gnu::cold]] static ret name##_watched params {                   \
        if (auto forced = watched_call<ret> SWSIM_PREPEND(#name, args)) return *forced; \
        return name##_answer args;                                                    \
    }                                                                                 \
    extern "C" [[gnu::flatten]] ret name params {                                     \
        if (watched()) [[unlikely]] return name##_watched args;                       \
        return name##_answer args;                                                    \
    }

#define SWSIM_DEFINE_HELPER_CALL(ret, name, params, args)                             \
    extern "C" ret name params {                                                      \
        if (watched()) [[unlikely]] {                                                 \
            if (auto forced = watched_call<ret> SWSIM_PREPEND(#name, args)) return *forced; \
        }                                                                             \
        return impl::name args;                                                       \
    }

extern "C" {
cfg_lock_t *cfg_lock_table[CFG_LOCK_COUNT] = {&g_locks[0], &g_locks[1], &g_locks[2], &g_locks[3]};
}

SWSIM_STATE_CALLS(SWSIM_DEFINE_STATE_CALL)
SWSIM_HELPER_CALLS(SWSIM_DEFINE_HELPER_CALL)

// ---- calls written out --------------------------------------------------------------------

// A client that attaches has not seen any VLAN yet: the platform raises the
// VLAN change flags for it, so that its VLAN tables list every VLAN once
// (after a restart of the agent as well as at the switch's boot).
extern "C" int cfg_init(void) {
    int rc = open_platform(false);
    if (rc == 0 && watched()) note_call("cfg_init");
    if (rc == 0) model::raise_vlan_flags(platform().view);
    return rc;
}

// A forced failure of lock_free still frees the lock: a platform that kept a
// lock it was asked to free would leave every other user of the switch
// waiting for good, and no caller can do anything about a failed release.
extern "C" int lock_free(cfg_lock_t *lock) {
    std::optional<int> forced;
    if (watched()) [[unlikely]]
        forced = watched_call<int>("lock_free", lock);
    const View *v = current();
    const int rc = v ? impl::lock_free(*v, lock) : -1;
    return forced ? *forced : rc;
}

// A fault of -150 is the platform's "partial answer": the table comes back
// as well.  Any other fault leaves the caller with no table at all.
extern "C" int cfg_get_mac_address_table(int *count, uint8_t **entries, const int32_t query[7]) {
    constexpr int kPartialAnswer = -150;
    auto no_table = [&](int result) {
        if (count) *count = 0;
        if (entries) *entries = nullptr;
        return result;
    };
    std::optional<int> forced;
    if (watched()) [[unlikely]]
        forced = watched_call<int>("cfg_get_mac_address_table", count, entries, query);
    const View *v = current();
    if (!v) return no_table(-1);
    if (forced && *forced != kPartialAnswer) return no_table(*forced);
    int rc = impl::cfg_get_mac_address_table(*v, count, entries, query);
    return rc == 0 && forced ? *forced : rc;
}

extern "C" int systemf(const char *fmt, ...) {
    if (!fmt) return -1;
    va_list ap;
    va_start(ap, fmt);
    char *command = nullptr;
    int n = vasprintf(&command, fmt, ap);
    va_end(ap);
    if (n < 0) return -1;
    std::unique_ptr<char, decltype(&std::free)> owned(command, &std::free);
    if (watched()) {
        if (auto forced = watched_call<int>("systemf", static_cast<const char *>(command))) return *forced;
    }
    if (const View *v = current(); v && rmon::note_command(*v, command)) return 0;
    return helpers::run_shell(command);
}

extern "C" void vxlog(int level, const char *fmt, ...) {
    if (!fmt) return;
    char message[1024];
    va_list ap;
    va_start(ap, fmt);
    std::vsnprintf(message, sizeof message, fmt, ap);
    va_end(ap);
    if (watched()) note_call("vxlog", level, static_cast<const char *>(message));
    helpers::log_line(level, message);
}

// ---- control side ---------------------------------------------------------------------------

namespace swsim {

const View *current_view() { return current(); }
int engine_lock(const View &v, bool take) {
    return take ? impl::lock_write(v, &g_locks[2]) : impl::lock_free(v, &g_locks[2]);  // the configuration lock
}

int platform_reopen() {
    const int rc = open_platform(true);
    if (rc == 0) model::raise_vlan_flags(platform().view);
    return rc;
}

const std::vector<std::string> &faultable_calls() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> out;
#define SWSIM_NAME_IF_INT(ret, name, ...) \
    if (std::is_same_v<ret, int>) out.emplace_back(#name);
        SWSIM_STATE_CALLS(SWSIM_NAME_IF_INT)
        SWSIM_HELPER_CALLS(SWSIM_NAME_IF_INT)
#undef SWSIM_NAME_IF_INT
        out.emplace_back("lock_free");
        out.emplace_back("cfg_get_mac_address_table");
        out.emplace_back("systemf");
        return out;
    }();
    return names;
}

}  // namespace swsim
