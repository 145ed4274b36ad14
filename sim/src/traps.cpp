// The trap service of the simulated switch: trap destinations, the switch's
// notifications, their BER encoding and their sending over UDP.
#include "traps.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "helpers.hpp"
#include "model.hpp"
#include "util.hpp"

namespace swsim::traps {
namespace {

using Bytes = std::vector<uint8_t>;
using Oid = std::vector<uint32_t>;
using layout::TrapDest;

constexpr uint16_t kDefaultPort = 162;
constexpr size_t kMaxOid = 128;  // sub-identifiers an OID value may carry

// ---- OIDs of the notifications and their variables ------------------------------------

const Oid kSysUpTime0 = {1, 3, 6, 1, 2, 1, 1, 3, 0};
const Oid kSnmpTrapOid0 = {1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};
const Oid kSnmpTraps = {1, 3, 6, 1, 6, 3, 1, 1, 5};
const Oid kIfEntry = {1, 3, 6, 1, 2, 1, 2, 2, 1};
const Oid kRmonTraps = {1, 3, 6, 1, 2, 1, 16, 0};
const Oid kAlarmEntry = {1, 3, 6, 1, 2, 1, 16, 3, 1, 1};
enum : uint32_t { kLinkDown = 3, kLinkUp = 4, kAuthenticationFailure = 5 };
enum : uint32_t { kIfIndex = 1, kIfAdminStatus = 7, kIfOperStatus = 8 };
enum : uint32_t { kAlarmIndex = 1, kAlarmVariable = 3, kAlarmSampleType = 4, kAlarmValue = 5 };
enum : uint32_t { kAlarmRisingThreshold = 7, kAlarmFallingThreshold = 8 };

Oid with(Oid base, std::initializer_list<uint32_t> tail) {
    base.insert(base.end(), tail);
    return base;
}
bool starts_with(const Oid &oid, const Oid &prefix) {
    return oid.size() > prefix.size() && std::equal(prefix.begin(), prefix.end(), oid.begin());
}

// ---- BER ------------------------------------------------------------------------------

enum : uint8_t {
    kInteger = 0x02,
    kOctetString = 0x04,
    kObjectId = 0x06,
    kSequence = 0x30,
    kIpAddress = 0x40,
    kTimeTicks = 0x43,
    kTrapV1 = 0xa4,
    kTrapV2 = 0xa7,
};

Bytes tlv(uint8_t tag, const Bytes &content) {
    Bytes out{tag};
    const size_t n = content.size();
    if (n < 0x80) {
        out.push_back(uint8_t(n));
    } else {
        uint8_t len[sizeof(size_t)];
        int k = 0;
        for (size_t m = n; m; m >>= 8) len[k++] = uint8_t(m);
        out.push_back(uint8_t(0x80 | k));
        while (k) out.push_back(len[--k]);
    }
    out.insert(out.end(), content.begin(), content.end());
    return out;
}

Bytes sequence(uint8_t tag, std::initializer_list<Bytes> parts) {
    Bytes content;
    for (const Bytes &p : parts) content.insert(content.end(), p.begin(), p.end());
    return tlv(tag, content);
}

// Two's complement, shortest form; unsigned 32-bit types pass their value
// as a non-negative number.
Bytes integer(uint8_t tag, int64_t v) {
    Bytes b;
    for (int shift = 56; shift >= 0; shift -= 8) b.push_back(uint8_t(uint64_t(v) >> shift));
    size_t start = 0;
    while (start + 1 < b.size() && ((b[start] == 0 && !(b[start + 1] & 0x80)) || (b[start] == 0xff && (b[start + 1] & 0x80))))
        ++start;
    return tlv(tag, Bytes(b.begin() + long(start), b.end()));
}

Bytes octets(uint8_t tag, const void *p, size_t n) {
    const auto *bytes = static_cast<const uint8_t *>(p);
    return tlv(tag, Bytes(bytes, bytes + n));
}

void base128(Bytes &out, uint64_t v) {
    uint8_t tmp[10];
    int k = 0;
    do {
        tmp[k++] = uint8_t(v & 0x7f);
        v >>= 7;
    } while (v);
    while (k > 1) out.push_back(uint8_t(tmp[--k] | 0x80));
    out.push_back(tmp[0]);
}

// An OID of fewer than two sub-identifiers is completed with zeros (0.0).
Bytes object_id(const Oid &oid) {
    Bytes content;
    const uint32_t first = oid.empty() ? 0 : oid[0];
    const uint32_t second = oid.size() < 2 ? 0 : oid[1];
    base128(content, uint64_t(first) * 40 + second);
    for (size_t i = 2; i < oid.size(); ++i) base128(content, oid[i]);
    return tlv(kObjectId, content);
}

Bytes varbind(const Oid &name, const Bytes &value) { return sequence(kSequence, {object_id(name), value}); }

Bytes value_of(const Variable &var) {
    switch (var.kind) {
    case Variable::kOctets: return octets(kOctetString, var.octets.data(), var.octets.size());
    case Variable::kObjectId: return object_id(var.objid);
    case Variable::kTimeTicks: return integer(kTimeTicks, var.integer);
    case Variable::kInteger: break;
    }
    return integer(kInteger, var.integer);
}

Variable int_var(Oid name, int64_t v) {
    Variable var;
    var.name = std::move(name);
    var.integer = v;
    return var;
}

// ---- the switch's side ------------------------------------------------------------------

uint32_t uptime_cs(const View &v) { return uint32_t(model::ns_since(v.rt->boot_realtime_ns) / 10'000'000); }

Oid sys_object_id(const View &v) {
    const uint32_t n = std::min<uint32_t>(v.cfg->equip_oid_len, uint32_t(std::size(v.cfg->equip_oid)));
    return Oid(v.cfg->equip_oid, v.cfg->equip_oid + n);
}

// The address the switch sends from, for SNMPv1's agent-addr.
uint32_t agent_address(const View &v) { return v.cfg->services.ip_address; }

uint16_t udp_port(const View &v) {
    const uint16_t port = __atomic_load_n(&v.cfg->traps.udp_port, __ATOMIC_RELAXED);
    return port ? port : kDefaultPort;
}

uint8_t family_of(const TrapDest &d) { return __atomic_load_n(&d.addr.family, __ATOMIC_ACQUIRE); }
bool in_use(const TrapDest &d) {
    const uint8_t f = family_of(d);
    return f == SW_ADDR_IPV4 || f == SW_ADDR_IPV6;
}
bool valid_version(int version) { return version == SW_TRAP_V1 || version == SW_TRAP_V2C; }

// An address text as a record; false when it is neither IPv4 nor IPv6.
bool parse_address(const char *text, sw_ip_addr_t &out) {
    out = sw_ip_addr_t{};
    if (!text) return false;
    uint32_t v4 = 0;
    if (helpers::ip_str_to_uint32(text, &v4) == 0) {
        out.family = SW_ADDR_IPV4;
        const uint32_t be = htonl(v4);
        std::memcpy(out.bytes, &be, 4);
        return true;
    }
    if (inet_pton(AF_INET6, text, out.bytes) == 1) {
        out.family = SW_ADDR_IPV6;
        return true;
    }
    return false;
}

bool same_address(const sw_ip_addr_t &a, const sw_ip_addr_t &b) {
    const size_t n = a.family == SW_ADDR_IPV4 ? 4 : 16;
    return a.family == b.family && std::memcmp(a.bytes, b.bytes, n) == 0;
}

// The slot that holds the address text, or -1.
int find_slot(const View &v, const char *text) {
    sw_ip_addr_t want;
    if (!parse_address(text, want)) return -1;
    for (int i = 0; i < SW_TRAP_DESTS; ++i) {
        const TrapDest &d = v.cfg->traps.dests[i];
        if (in_use(d) && same_address(d.addr, want)) return i;
    }
    return -1;
}

bool community_fits(const char *community) {
    return community && strnlen(community, SW_TRAP_COMMUNITY_SIZE) < SW_TRAP_COMMUNITY_SIZE;
}

// Fills a free slot completely, then marks it in use.
int add(const View &v, const char *text, const char *community, int version) {
    sw_ip_addr_t addr;
    if (!parse_address(text, addr) || !community_fits(community) || !valid_version(version) || find_slot(v, text) >= 0)
        return -1;
    for (TrapDest &d : v.cfg->traps.dests) {
        if (in_use(d)) continue;
        std::memcpy(d.addr.bytes, addr.bytes, sizeof addr.bytes);
        d.version = uint8_t(version);
        copy_text(d.community, sizeof d.community, community);
        __atomic_store_n(&d.addr.family, addr.family, __ATOMIC_RELEASE);
        return 0;
    }
    return -1;
}

int remove(const View &v, const char *text) {
    const int slot = find_slot(v, text);
    if (slot < 0) return -1;
    TrapDest &d = v.cfg->traps.dests[slot];
    __atomic_store_n(&d.addr.family, uint8_t(SW_ADDR_NONE), __ATOMIC_RELEASE);
    std::memset(d.addr.bytes, 0, sizeof d.addr.bytes);
    std::memset(d.community, 0, sizeof d.community);
    d.version = 0;
    return 0;
}

// ---- callbacks of this process ------------------------------------------------------------

std::atomic<sw_trap_auth_fail_fn> g_auth_fail{nullptr};
std::atomic<sw_trap_rmon_alarm_fn> g_rmon_alarm{nullptr};

const char *service_name(int service) {
    switch (service) {
    case SW_SERVICE_WEB: return "web";
    case SW_SERVICE_TELNET: return "telnet";
    case SW_SERVICE_SSH: return "ssh";
    case SW_SERVICE_CONSOLE: return "console";
    }
    return "unknown service";
}

}  // namespace

// ---- encoding ---------------------------------------------------------------------------------

std::vector<uint8_t> encode(const View &v, const Notification &n, int version, const std::string &community,
                            uint32_t request_id) {
    Bytes vars;
    auto append = [&](const Bytes &b) { vars.insert(vars.end(), b.begin(), b.end()); };
    const Bytes community_tlv = octets(kOctetString, community.data(), community.size());
    if (version == SW_TRAP_V1) {
        Oid enterprise;
        uint32_t generic = 6, specific = 0;
        if (starts_with(n.trap_oid, kSnmpTraps) && n.trap_oid.size() == kSnmpTraps.size() + 1) {
            generic = n.trap_oid.back() - 1;
            enterprise = sys_object_id(v);
        } else {
            // E.0.S: enterprise E, specific trap S.
            enterprise.assign(n.trap_oid.begin(), n.trap_oid.end() - std::min<long>(2, long(n.trap_oid.size())));
            specific = n.trap_oid.empty() ? 0 : n.trap_oid.back();
        }
        for (const Variable &var : n.variables) append(varbind(var.name, value_of(var)));
        const uint32_t from = htonl(agent_address(v));
        return sequence(kSequence, {integer(kInteger, 0), community_tlv,
                                    sequence(kTrapV1, {object_id(enterprise), octets(kIpAddress, &from, 4),
                                                       integer(kInteger, generic), integer(kInteger, specific),
                                                       integer(kTimeTicks, uptime_cs(v)), tlv(kSequence, vars)})});
    }
    append(varbind(kSysUpTime0, integer(kTimeTicks, uptime_cs(v))));
    append(varbind(kSnmpTrapOid0, object_id(n.trap_oid)));
    for (const Variable &var : n.variables) append(varbind(var.name, value_of(var)));
    return sequence(kSequence, {integer(kInteger, 1), community_tlv,
                                sequence(kTrapV2, {integer(kInteger, int32_t(request_id)), integer(kInteger, 0),
                                                   integer(kInteger, 0), tlv(kSequence, vars)})});
}

void address(const View &v, const Notification &n, Outbox &out) {
    __atomic_fetch_add(&v.hw->traps.notifications, 1, __ATOMIC_RELAXED);
    const uint16_t port = udp_port(v);
    for (int i = 0; i < SW_TRAP_DESTS; ++i) {
        const TrapDest &d = v.cfg->traps.dests[i];
        if (!in_use(d) || !valid_version(d.version)) continue;
        const uint32_t id = __atomic_add_fetch(&v.hw->traps.request_id, 1, __ATOMIC_RELAXED) & 0x7fffffff;
        Outbox::Datagram dg;
        dg.to = d.addr;
        dg.to.family = family_of(d);
        dg.port = port;
        dg.slot = i;
        dg.bytes = encode(v, n, d.version, std::string(d.community, strnlen(d.community, sizeof d.community)), id);
        out.add(std::move(dg));
    }
}

namespace {
// 127.0.0.0/8, ::1 and ::ffff:127.0.0.0/104.
bool loopback(const sw_ip_addr_t &a) {
    static const uint8_t v6_loopback[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    static const uint8_t v4_mapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    if (a.family == SW_ADDR_IPV4) return a.bytes[0] == 127;
    return std::memcmp(a.bytes, v6_loopback, 16) == 0 || (std::memcmp(a.bytes, v4_mapped, 12) == 0 && a.bytes[12] == 127);
}
}  // namespace

// Non-blocking datagrams: a full socket buffer or an unreachable network
// loses the notification, as UDP would, and holds nobody up.  A simulated
// switch keeps its notifications on this machine unless told otherwise.
int Outbox::send(const View &v) {
    int sent = 0;
    int fds[2] = {-1, -1};  // IPv4, IPv6
    const bool beyond = __atomic_load_n(&v.cfg->traps.beyond_loopback, __ATOMIC_RELAXED) != 0;
    for (const Datagram &d : datagrams_) {
        if (!beyond && !loopback(d.to)) {
            __atomic_fetch_add(&v.hw->traps.withheld, 1, __ATOMIC_RELAXED);
            continue;
        }
        const bool v6 = d.to.family == SW_ADDR_IPV6;
        int &fd = fds[v6];
        if (fd < 0) fd = ::socket(v6 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_storage to{};
        socklen_t len = 0;
        if (v6) {
            auto *a = reinterpret_cast<sockaddr_in6 *>(&to);
            a->sin6_family = AF_INET6;
            a->sin6_port = htons(d.port);
            std::memcpy(&a->sin6_addr, d.to.bytes, 16);
            len = sizeof *a;
        } else {
            auto *a = reinterpret_cast<sockaddr_in *>(&to);
            a->sin_family = AF_INET;
            a->sin_port = htons(d.port);
            std::memcpy(&a->sin_addr, d.to.bytes, 4);
            len = sizeof *a;
        }
        const bool ok = fd >= 0 && ::sendto(fd, d.bytes.data(), d.bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                                            reinterpret_cast<sockaddr *>(&to), len) == ssize_t(d.bytes.size());
        if (ok) {
            ++sent;
            if (d.slot >= 0 && d.slot < SW_TRAP_DESTS) __atomic_fetch_add(&v.hw->traps.sent[d.slot], 1, __ATOMIC_RELAXED);
        } else {
            __atomic_fetch_add(&v.hw->traps.failed, 1, __ATOMIC_RELAXED);
        }
    }
    for (int fd : fds)
        if (fd >= 0) ::close(fd);
    return sent;
}

// ---- the notifications ----------------------------------------------------------------------

Notification link_change(const View &v, int iface, bool up) {
    const int64_t ifindex = iface + 1;  // ports 64 * unit0 + port0 + 1, trunks 513 + trunk0
    Notification n;
    n.trap_oid = with(kSnmpTraps, {up ? kLinkUp : kLinkDown});
    n.variables = {int_var(with(kIfEntry, {kIfIndex, uint32_t(ifindex)}), ifindex),
                   int_var(with(kIfEntry, {kIfAdminStatus, uint32_t(ifindex)}), v.cfg->ifaces[iface].admin ? 1 : 2),
                   int_var(with(kIfEntry, {kIfOperStatus, uint32_t(ifindex)}), up ? 1 : 2)};
    return n;
}

Notification authentication_failure() {
    Notification n;
    n.trap_oid = with(kSnmpTraps, {kAuthenticationFailure});
    return n;
}

Notification rmon_alarm(int32_t alarm_index, bool rising, const uint32_t *variable, size_t variable_len,
                        int32_t sample_type, int32_t value, int32_t threshold) {
    const uint32_t row = uint32_t(alarm_index);
    Notification n;
    n.trap_oid = with(kRmonTraps, {rising ? 1u : 2u});
    Variable sampled;
    sampled.name = with(kAlarmEntry, {kAlarmVariable, row});
    sampled.kind = Variable::kObjectId;
    sampled.objid.assign(variable, variable + variable_len);
    n.variables = {int_var(with(kAlarmEntry, {kAlarmIndex, row}), alarm_index), sampled,
                   int_var(with(kAlarmEntry, {kAlarmSampleType, row}), sample_type),
                   int_var(with(kAlarmEntry, {kAlarmValue, row}), value),
                   int_var(with(kAlarmEntry, {rising ? kAlarmRisingThreshold : kAlarmFallingThreshold, row}), threshold)};
    return n;
}

// ---- link changes ---------------------------------------------------------------------------

namespace {
int8_t link_state(const View &v, int iface) {
    if (model::is_trunk_iface(iface)) {
        if (!v.cfg->trunks[iface - layout::kPhysPorts].configured) return -1;
    } else {
        const sw_unit_status_t &unit = v.status->units[iface / SW_PORTS_PER_UNIT];
        if (!unit.present || uint32_t(iface % SW_PORTS_PER_UNIT) >= std::min<uint32_t>(unit.user_ports, SW_PORTS_PER_UNIT))
            return -1;
    }
    return model::port_info(v, iface).link ? 1 : 0;
}
}  // namespace

LinkWatch::LinkWatch(const View &v) : link_(layout::kIfaces) {
    for (int i = 0; i < layout::kIfaces; ++i) link_[std::size_t(i)] = link_state(v, i);
}

void LinkWatch::collect(const View &v, Outbox &out) const {
    for (int i = 0; i < layout::kIfaces; ++i) {
        const int8_t before = link_[std::size_t(i)], now = link_state(v, i);
        if (before < 0 || now < 0 || before == now || v.cfg->ifaces_ext.trap_disabled[i]) continue;
        address(v, link_change(v, i, now == 1), out);
    }
}

// ---- raising ----------------------------------------------------------------------------------

void raise_authentication_failure(const View &v, int service, const char *peer) {
    if (sw_trap_auth_fail_fn fn = g_auth_fail.load(std::memory_order_acquire)) return fn(service, peer);
    calls::send_trap_snmp_authentication_fail(v, service, peer);
}

void raise_rmon_alarm(const View &v, int32_t alarm_index, bool rising, const uint32_t *variable, size_t variable_len,
                      int32_t sample_type, int32_t value, int32_t threshold) {
    if (sw_trap_rmon_alarm_fn fn = g_rmon_alarm.load(std::memory_order_acquire))
        return fn(alarm_index, rising, variable, variable_len, sample_type, value, threshold);
    calls::send_trap_rmon_alarm(v, alarm_index, rising, variable, variable_len, sample_type, value, threshold);
}

// ---- control side -----------------------------------------------------------------------------

Switch::TrapInfo info(const View &v) {
    Switch::TrapInfo t;
    t.port = udp_port(v);
    t.notifications = __atomic_load_n(&v.hw->traps.notifications, __ATOMIC_RELAXED);
    t.failed = __atomic_load_n(&v.hw->traps.failed, __ATOMIC_RELAXED);
    t.withheld = __atomic_load_n(&v.hw->traps.withheld, __ATOMIC_RELAXED);
    t.beyond_loopback = v.cfg->traps.beyond_loopback != 0;
    for (int i = 0; i < SW_TRAP_DESTS; ++i) {
        const TrapDest &d = v.cfg->traps.dests[i];
        if (!in_use(d)) continue;
        char text[INET6_ADDRSTRLEN] = {};
        calls::ip_addr_to_str(&d.addr, text, sizeof text);
        t.destinations.push_back({i, text, text_of(d.community), d.version,
                                  __atomic_load_n(&v.hw->traps.sent[i], __ATOMIC_RELAXED)});
    }
    return t;
}

namespace ops {
void add_destination(View &v, const std::string &addr, const std::string &community, int version) {
    sw_ip_addr_t parsed;
    if (!parse_address(addr.c_str(), parsed)) throw Error("'" + addr + "' is not an IPv4 or IPv6 address");
    if (find_slot(v, addr.c_str()) >= 0) throw Error("trap destination " + addr + " exists already");
    if (!community_fits(community.c_str()))
        throw Error("community '" + community + "' is longer than " + std::to_string(SW_TRAP_COMMUNITY_SIZE - 1) +
                    " characters");
    if (!valid_version(version)) throw Error("trap version " + std::to_string(version) + " (1 SNMPv1, 2 SNMPv2c)");
    if (add(v, addr.c_str(), community.c_str(), version) != 0)
        throw Error("every trap destination slot is in use (" + std::to_string(SW_TRAP_DESTS) + ")");
}
void remove_destination(View &v, const std::string &addr) {
    if (remove(v, addr.c_str()) != 0) throw Error("no trap destination " + addr);
}
void set_beyond_loopback(View &v, bool on) { v.cfg->traps.beyond_loopback = on; }
void set_port(View &v, int port) {
    if (port < 1 || port > 65535) throw Error("UDP port " + std::to_string(port) + " (1..65535)");
    v.cfg->traps.udp_port = uint16_t(port);
}
}  // namespace ops

std::string damage(const View &v) {
    for (int i = 0; i < SW_TRAP_DESTS; ++i) {
        const TrapDest &d = v.cfg->traps.dests[i];
        const std::string slot = "trap destination " + std::to_string(i);
        if (d.addr.family != SW_ADDR_NONE && d.addr.family != SW_ADDR_IPV4 && d.addr.family != SW_ADDR_IPV6)
            return slot + "'s address family is " + std::to_string(d.addr.family) + " (0, 4 or 6)";
        if (in_use(d) && !valid_version(d.version))
            return slot + "'s version is " + std::to_string(d.version) + " (1 or 2)";
        if (!std::memchr(d.community, 0, sizeof d.community))
            return slot + "'s community runs past its " + std::to_string(sizeof d.community) + " bytes";
    }
    return "";
}

// ---- the platform calls -----------------------------------------------------------------------

namespace calls {

int ip_addr_to_str(const sw_ip_addr_t *addr, char *buf, size_t size) {
    if (!addr || !buf || size == 0) return -1;
    char text[INET6_ADDRSTRLEN] = "";
    switch (addr->family) {
    case SW_ADDR_NONE: break;
    case SW_ADDR_IPV4:
        if (!inet_ntop(AF_INET, addr->bytes, text, sizeof text)) return -1;
        break;
    case SW_ADDR_IPV6:
        if (!inet_ntop(AF_INET6, addr->bytes, text, sizeof text)) return -1;
        break;
    default: return -1;
    }
    if (std::strlen(text) >= size) return -1;
    std::strcpy(buf, text);
    return 0;
}

int register_trap(sw_trap_auth_fail_fn auth_fail, sw_trap_rmon_alarm_fn rmon_alarm) {
    g_auth_fail.store(auth_fail, std::memory_order_release);
    g_rmon_alarm.store(rmon_alarm, std::memory_order_release);
    return 0;
}

int cfg_get_snmp_trap_host(const View &v, int slot, sw_ip_addr_t *addr) {
    if (!addr || slot < 0 || slot >= SW_TRAP_DESTS) return -1;
    const TrapDest &d = v.cfg->traps.dests[slot];
    *addr = sw_ip_addr_t{};
    if (!in_use(d)) return 0;
    std::memcpy(addr->bytes, d.addr.bytes, sizeof addr->bytes);
    addr->family = family_of(d);
    return 0;
}
int cfg_add_snmp_trap_host(const View &v, const char *addr, const char *community, int version) {
    return add(v, addr, community, version);
}
int cfg_del_snmp_trap_host(const View &v, const char *addr) { return remove(v, addr); }
const char *cfg_get_snmp_trap_host_community(const View &v, const char *addr) {
    const int slot = find_slot(v, addr);
    if (slot < 0) return nullptr;
    // A copy that stays whole while the slot changes.
    thread_local char community[SW_TRAP_COMMUNITY_SIZE];
    copy_text(community, sizeof community, v.cfg->traps.dests[slot].community);
    return community;
}
int cfg_set_snmp_trap_host_community(const View &v, const char *addr, const char *community) {
    const int slot = find_slot(v, addr);
    if (slot < 0 || !community_fits(community)) return -1;
    copy_text(v.cfg->traps.dests[slot].community, SW_TRAP_COMMUNITY_SIZE, community);
    return 0;
}
int cfg_get_snmp_trap_host_version(const View &v, const char *addr) {
    const int slot = find_slot(v, addr);
    return slot < 0 ? -1 : v.cfg->traps.dests[slot].version;
}
int cfg_set_snmp_trap_host_version(const View &v, const char *addr, int version) {
    const int slot = find_slot(v, addr);
    if (slot < 0 || !valid_version(version)) return -1;
    v.cfg->traps.dests[slot].version = uint8_t(version);
    return 0;
}

int send_trap_snmp_authentication_fail(const View &v, int service, const char *peer) {
    helpers::log_line(4, (std::string("login to ") + service_name(service) + " refused" +
                          (peer && *peer ? std::string(" from ") + std::string(peer, strnlen(peer, 64)) : ""))
                             .c_str());
    Outbox out;
    address(v, authentication_failure(), out);
    return out.send(v);
}

int send_trap_rmon_alarm(const View &v, int32_t alarm_index, int rising, const uint32_t *variable,
                         size_t variable_len, int32_t sample_type, int32_t value, int32_t threshold) {
    if (!variable || variable_len == 0 || variable_len > kMaxOid) return -1;
    Outbox out;
    address(v, rmon_alarm(alarm_index, rising != 0, variable, variable_len, sample_type, value, threshold), out);
    return out.send(v);
}

}  // namespace calls

}  // namespace swsim::traps
