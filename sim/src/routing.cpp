#include "routing.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "helpers.hpp"
#include "model.hpp"
#include "scenario_field.hpp"

namespace swsim::routing {
namespace {

using layout::Sorted;

[[noreturn]] void fail(const std::string &what) { throw Error(what); }

layout::RoutingState &st(const View &v) { return v.hw->routing; }

std::string addr_text(uint32_t a) {
    char buf[16];
    helpers::ip_uint32_to_str(a, buf, sizeof buf);
    return buf;
}
uint32_t mask_of(uint32_t prefix_len) { return prefix_len == 0 ? 0 : ~0u << (32 - std::min(prefix_len, 32u)); }

// ---- sorted tables -------------------------------------------------------------------
//
// key_of gives each kind of record its key, in the order of the find calls.

template <size_t K>
using Key = std::array<uint32_t, K>;

// Keys are ordered word by word as unsigned numbers.  Not with std::array's
// own ordering: GCC 12's libstdc++ orders arrays of unsigned words on a
// big-endian target with a memcmp over a quarter of their bytes.
template <size_t K>
bool key_less(const Key<K> &a, const Key<K> &b) {
    for (size_t i = 0; i < K; ++i)
        if (a[i] != b[i]) return a[i] < b[i];
    return false;
}

Key<1> key_of(const sw_ip_iface_t &a) { return {a.addr}; }
Key<3> key_of(const layout::RouteSlot &s) { return {s.route.dest, s.route.prefix_len, s.route.next_hop}; }
Key<2> key_of(const layout::VrrpSlot &s) { return {uint32_t(s.router.vid), s.router.vrid}; }
Key<1> key_of(const sw_ospf_area_t &a) { return {a.area_id}; }
Key<2> key_of(const sw_ospf_if_t &i) { return {i.addr, i.addressless}; }
Key<2> key_of(const sw_ospf_virt_if_t &i) { return {i.area_id, i.neighbor}; }
Key<2> key_of(const sw_ospf_nbr_t &n) { return {n.addr, n.addressless}; }
Key<2> key_of(const sw_ospf_virt_nbr_t &n) { return {n.area_id, n.router_id}; }
Key<6> key_of(const layout::LsaSlot &s) { return {s.scope, s.where, s.where2, s.type, s.lsid, s.router_id}; }
Key<4> key_of(const sw_ospf_aggregate_t &a) { return {a.area_id, a.lsdb_type, a.net, a.mask}; }
Key<1> key_of(const sw_rip_if_t &i) { return {i.addr}; }
Key<2> key_of(const layout::RipPeerSlot &s) { return {s.peer.addr, s.peer.domain}; }

template <class Slot>
using KeyOf = decltype(key_of(std::declval<const Slot &>()));

// The records in use; a damaged count is held to the capacity.
template <class Slot, int N>
std::pair<Slot *, Slot *> span_of(Sorted<Slot, N> &t) {
    return {t.at, t.at + std::min<uint32_t>(t.count, N)};
}

template <class Slot, int N>
const Slot *find(Sorted<Slot, N> &t, int mode, const KeyOf<Slot> &key) {
    auto [b, e] = span_of(t);
    const Slot *it = mode == SW_FIND_AFTER
                         ? std::upper_bound(b, e, key, [](const auto &k, const Slot &s) { return key_less(k, key_of(s)); })
                         : std::lower_bound(b, e, key, [](const Slot &s, const auto &k) { return key_less(key_of(s), k); });
    if (it == e || (mode == SW_FIND_EXACT && key_of(*it) != key)) return nullptr;
    return it;
}

// Adds a record, or replaces the one with its key.
template <class Slot, int N>
Slot &upsert(Sorted<Slot, N> &t, const Slot &s, const char *what) {
    auto [b, e] = span_of(t);
    Slot *it = std::lower_bound(b, e, key_of(s), [](const Slot &x, const auto &k) { return key_less(key_of(x), k); });
    if (it != e && key_of(*it) == key_of(s)) return *it = s;
    if (e - b >= N) fail(std::string("the ") + what + " table is full (" + std::to_string(N) + ")");
    std::memmove(it + 1, it, std::size_t(e - it) * sizeof(Slot));
    *it = s;
    t.count = uint32_t(e - b + 1);
    return *it;
}

template <class Slot, int N>
bool erase(Sorted<Slot, N> &t, const KeyOf<Slot> &key) {
    auto [b, e] = span_of(t);
    Slot *it = std::lower_bound(b, e, key, [](const Slot &x, const auto &k) { return key_less(key_of(x), k); });
    if (it == e || key_of(*it) != key) return false;
    std::memmove(it, it + 1, std::size_t(e - it - 1) * sizeof(Slot));
    t.count = uint32_t(e - b - 1);
    return true;
}

template <class Slot, int N, class Pred>
void erase_if(Sorted<Slot, N> &t, Pred pred) {
    auto [b, e] = span_of(t);
    t.count = uint32_t(std::remove_if(b, e, pred) - b);
}

// Appends without keeping order (bulk loads); sort_unique() restores it.
template <class Slot, int N>
void append(Sorted<Slot, N> &t, const Slot &s, const char *what) {
    auto [b, e] = span_of(t);
    if (e - b >= N) fail(std::string("the ") + what + " table is full (" + std::to_string(N) + ")");
    *e = s;
    t.count = uint32_t(e - b + 1);
}
// The last record of each key is kept.
template <class Slot, int N>
void sort_unique(Sorted<Slot, N> &t) {
    auto [b, e] = span_of(t);
    std::stable_sort(b, e, [](const Slot &x, const Slot &y) { return key_less(key_of(x), key_of(y)); });
    Slot *out = b;
    for (Slot *it = b; it != e; ++it) {
        if (it + 1 != e && key_of(it[0]) == key_of(it[1])) continue;
        *out++ = *it;
    }
    t.count = uint32_t(out - b);
}

template <class Slot, int N>
std::vector<Slot> all_of(Sorted<Slot, N> &t) {
    auto [b, e] = span_of(t);
    return std::vector<Slot>(b, e);
}

// Runs a find and copies what it found (a `make` turns a stored slot into
// the record handed out).
template <class Out, class Slot, int N, class Make>
int answer(Sorted<Slot, N> &t, int mode, const KeyOf<Slot> &key, Out *out, Make make) {
    if (!out || mode < SW_FIND_EXACT || mode > SW_FIND_AFTER) return -1;
    const Slot *s = find(t, mode, key);
    if (!s) return SW_NOT_FOUND;
    *out = make(*s);
    return 0;
}
constexpr auto as_is = [](const auto &s) { return s; };

uint32_t seconds_since(int64_t ns) { return uint32_t(model::ns_since(ns) / 1'000'000'000); }
uint32_t uptime_cs_at(const View &v, int64_t ns) {
    return ns <= v.rt->boot_realtime_ns ? 0 : uint32_t((ns - v.rt->boot_realtime_ns) / 10'000'000);
}

// ---- LSAs ----------------------------------------------------------------------------

// OSPF's Fletcher checksum of an LSA (the age field left out), placed so that
// the sums over the whole LSA come to zero.
uint16_t lsa_checksum(const uint8_t *lsa, std::size_t length) {
    constexpr std::size_t kFrom = 2, kAt = 16;  // age excluded; checksum field
    int32_t c0 = 0, c1 = 0;
    for (std::size_t i = kFrom; i < length; ++i) {
        c0 = (c0 + ((i == kAt || i == kAt + 1) ? 0 : lsa[i])) % 255;
        c1 = (c1 + c0) % 255;
    }
    const int32_t place = int32_t(length - kAt - 1);  // bytes after the checksum's first octet
    int32_t x = ((place * c0 - c1) % 255 + 255) % 255;
    if (x == 0) x = 255;
    int32_t y = (510 - c0 - x) % 255;
    if (y == 0) y = 255;
    return uint16_t(x << 8 | y);
}

uint32_t lsa_age(const layout::LsaSlot &s) { return std::min<uint32_t>(seconds_since(s.born_ns), SW_OSPF_MAX_AGE); }

// The advertisement as on the wire: the 20-byte header, then a body that
// fits the type.
std::size_t lsa_bytes(const View &v, const layout::LsaSlot &s, uint32_t age, uint8_t out[SW_OSPF_LSA_MAX]) {
    std::memset(out, 0, SW_OSPF_LSA_MAX);
    uint8_t *body = out + 20;
    std::size_t length = 24;
    switch (s.type) {
    case 2:  // network: mask, then the routers attached (the DR itself)
        swp::store_be32(body, s.mask);
        swp::store_be32(body + 4, s.router_id);
        length = 28;
        break;
    case 3:
    case 4:  // summary: mask, TOS 0 metric
        swp::store_be32(body, s.mask);
        swp::store_be32(body + 4, s.metric & 0xffffff);
        length = 28;
        break;
    case 5:
    case 7:  // external: mask, E bit and metric, forwarding address, tag
        swp::store_be32(body, s.mask);
        swp::store_be32(body + 4, 0x80000000u | (s.metric & 0xffffff));
        length = 36;
        break;
    default:  // router LSA without links, opaque LSAs: four octets
        break;
    }
    (void)v;
    swp::store_be16(out, uint16_t(age));
    out[2] = 0x02;  // options: E
    out[3] = uint8_t(s.type);
    swp::store_be32(out + 4, s.lsid);
    swp::store_be32(out + 8, s.router_id);
    swp::store_be32(out + 12, uint32_t(s.sequence));
    swp::store_be16(out + 18, uint16_t(length));
    swp::store_be16(out + 16, lsa_checksum(out, length));
    return length;
}

sw_ospf_lsa_t lsa_record(const View &v, const layout::LsaSlot &s) {
    sw_ospf_lsa_t r{};
    r.where = s.where;
    r.where2 = s.where2;
    r.type = s.type;
    r.lsid = s.lsid;
    r.router_id = s.router_id;
    r.sequence = s.sequence;
    r.age = lsa_age(s);
    r.length = uint32_t(lsa_bytes(v, s, r.age, r.advertisement));
    r.checksum = swp::load_be16(r.advertisement + 16);
    return r;
}

// Counts and checksum sums of the LSAs of each area and interface, kept with
// them; done after every change of the database.
void refresh_lsa_sums(const View &v) {
    layout::RoutingState &r = st(v);
    auto [ab, ae] = span_of(r.areas);
    for (auto *a = ab; a != ae; ++a) a->lsa_count = a->lsa_cksum_sum = 0;
    auto [ib, ie] = span_of(r.ospf_ifs);
    for (auto *i = ib; i != ie; ++i) i->lsa_count = i->lsa_cksum_sum = 0;
    auto [lb, le] = span_of(r.lsas);
    uint8_t bytes[SW_OSPF_LSA_MAX];
    for (auto *l = lb; l != le; ++l) {
        lsa_bytes(v, *l, 0, bytes);
        const uint32_t sum = swp::load_be16(bytes + 16);
        if (l->scope == SW_OSPF_SCOPE_AREA) {
            if (auto *a = const_cast<sw_ospf_area_t *>(find(r.areas, SW_FIND_EXACT, {l->where}))) {
                ++a->lsa_count;
                a->lsa_cksum_sum += sum;
            }
        } else if (l->scope == SW_OSPF_SCOPE_LINK) {
            if (auto *i = const_cast<sw_ospf_if_t *>(find(r.ospf_ifs, SW_FIND_EXACT, {l->where, l->where2}))) {
                ++i->lsa_count;
                i->lsa_cksum_sum += sum;
            }
        }
    }
}

// Type-5 LSAs: their count and checksum sum.
std::pair<uint32_t, uint32_t> external_sums(const View &v) {
    uint32_t count = 0, sum = 0;
    uint8_t bytes[SW_OSPF_LSA_MAX];
    auto [b, e] = span_of(st(v).lsas);
    const auto *first = std::lower_bound(b, e, Key<6>{SW_OSPF_SCOPE_AS, 0, 0, 0, 0, 0},
                                         [](const layout::LsaSlot &s, const Key<6> &k) { return key_less(key_of(s), k); });
    for (const auto *l = first; l != e && l->scope == SW_OSPF_SCOPE_AS; ++l) {
        lsa_bytes(v, *l, 0, bytes);
        ++count;
        sum += swp::load_be16(bytes + 16);
    }
    return {count, sum};
}

// ---- the query record ------------------------------------------------------------------

constexpr uint8_t kAsnInteger = 0x02, kAsnIpAddress = 0x40, kAsnCounter = 0x41, kAsnGauge = 0x42;
constexpr uint32_t kTrue = 1, kFalse = 2;

// Answers the object named by a query record's request under `group` (the
// group's OID, then the object's number and the instance 0), with `value`
// giving (type, word) for an object number, false for none.
template <class Value>
int answer_query(uint8_t *record, std::initializer_list<uint32_t> group, Value value) {
    namespace q = swp::query_record;
    if (!record || swp::load_be32(record + q::kCount.offset) != q::kRequestSubids) return -1;
    uint32_t name[q::kRequestSubids];
    for (std::size_t i = 0; i < q::kRequestSubids; ++i) name[i] = q::request_subid(record, i);
    q::set_answer_name(record, name, q::kRequestSubids);
    const bool in_group = std::equal(group.begin(), group.end(), name);
    uint8_t type = 0;
    uint32_t word = 0;
    if (in_group && group.size() + 2 == q::kRequestSubids && name[q::kRequestSubids - 1] == 0 &&
        value(name[group.size()], type, word))
        q::set_answer_word(record, type, word);
    return 0;
}

}  // namespace

// ---- the platform calls ----------------------------------------------------------------

namespace calls {

int cfg_ip_addr_find(const View &v, int mode, uint32_t addr, sw_ip_iface_t *out) {
    return answer(st(v).addrs, mode, {addr}, out, as_is);
}
int cfg_route_find(const View &v, int mode, uint32_t dest, uint32_t prefix_len, uint32_t next_hop, sw_route_t *out) {
    return answer(st(v).routes, mode, {dest, prefix_len, next_hop}, out, [](const layout::RouteSlot &s) {
        sw_route_t r = s.route;
        r.age_s = seconds_since(s.installed_ns);
        return r;
    });
}
int cfg_route_count(const View &v) { return int(std::min<uint32_t>(st(v).routes.count, layout::kRouteCapacity)); }
int cfg_vrrp_find(const View &v, int mode, int32_t vid, uint32_t vrid, sw_vrrp_router_t *out) {
    return answer(st(v).vrrp, mode, {uint32_t(vid), vrid}, out, [&](const layout::VrrpSlot &s) {
        sw_vrrp_router_t r = s.router;
        r.up_since_cs = s.up_since_ns ? uptime_cs_at(v, s.up_since_ns) : 0;
        r.addr_count = std::min<uint32_t>(r.addr_count, SW_VRRP_MAX_ADDRS);
        return r;
    });
}
int cfg_vrrp_get_globals(const View &v, sw_vrrp_globals_t *out) {
    if (!out) return -1;
    *out = st(v).globals.vrrp;
    return 0;
}
int cfg_vrrp_set_notifications(const View &v, int on) {
    if (on != 0 && on != 1) return -1;
    st(v).globals.vrrp.notifications = uint32_t(on);
    return 0;
}
int cfg_ospf_area_find(const View &v, int mode, uint32_t area_id, sw_ospf_area_t *out) {
    return answer(st(v).areas, mode, {area_id}, out, as_is);
}
int cfg_ospf_if_find(const View &v, int mode, uint32_t addr, uint32_t addressless, sw_ospf_if_t *out) {
    return answer(st(v).ospf_ifs, mode, {addr, addressless}, out, as_is);
}
int cfg_ospf_virt_if_find(const View &v, int mode, uint32_t area_id, uint32_t neighbor, sw_ospf_virt_if_t *out) {
    return answer(st(v).virt_ifs, mode, {area_id, neighbor}, out, as_is);
}
int cfg_ospf_nbr_find(const View &v, int mode, uint32_t addr, uint32_t addressless, sw_ospf_nbr_t *out) {
    return answer(st(v).nbrs, mode, {addr, addressless}, out, as_is);
}
int cfg_ospf_virt_nbr_find(const View &v, int mode, uint32_t area_id, uint32_t router_id, sw_ospf_virt_nbr_t *out) {
    return answer(st(v).virt_nbrs, mode, {area_id, router_id}, out, as_is);
}
// The LSAs of one scope are searched as a table of their own.
int cfg_ospf_lsa_find(const View &v, int mode, int scope, uint32_t where, uint32_t where2, uint32_t type,
                      uint32_t lsid, uint32_t router_id, sw_ospf_lsa_t *out) {
    if (!out || mode < SW_FIND_EXACT || mode > SW_FIND_AFTER || scope < SW_OSPF_SCOPE_AREA || scope > SW_OSPF_SCOPE_LINK)
        return -1;
    const layout::LsaSlot *s = find(st(v).lsas, mode, {uint32_t(scope), where, where2, type, lsid, router_id});
    if (!s || s->scope != uint32_t(scope)) return SW_NOT_FOUND;
    *out = lsa_record(v, *s);
    return 0;
}
int cfg_ospf_aggregate_find(const View &v, int mode, uint32_t area_id, uint32_t lsdb_type, uint32_t net, uint32_t mask,
                            sw_ospf_aggregate_t *out) {
    return answer(st(v).aggregates, mode, {area_id, lsdb_type, net, mask}, out, as_is);
}
int cfg_rip_if_find(const View &v, int mode, uint32_t addr, sw_rip_if_t *out) {
    return answer(st(v).rip_ifs, mode, {addr}, out, as_is);
}
int cfg_rip_peer_find(const View &v, int mode, uint32_t addr, uint32_t domain, sw_rip_peer_t *out) {
    return answer(st(v).rip_peers, mode, {addr, domain}, out, [&](const layout::RipPeerSlot &s) {
        sw_rip_peer_t p = s.peer;
        p.last_update_cs = uptime_cs_at(v, s.last_update_ns);
        return p;
    });
}

int get_ospfGeneral(const View &v, uint8_t *record) {
    const layout::RoutingGlobals &g = st(v).globals;
    return answer_query(record, {1, 3, 6, 1, 2, 1, 14, 1}, [&](uint32_t object, uint8_t &type, uint32_t &word) {
        auto set = [&](uint8_t t, uint32_t w) {
            type = t;
            word = w;
            return true;
        };
        switch (object) {
        case 1: return set(kAsnIpAddress, g.router_id);
        case 2: return set(kAsnInteger, g.ospf_enabled ? 1 : 2);
        case 3: return set(kAsnInteger, 2);
        case 4: {
            auto [b, e] = span_of(st(v).ospf_ifs);
            const bool abr = std::any_of(b, e, [&](const sw_ospf_if_t &i) { return i.area_id != b->area_id; });
            return set(kAsnInteger, abr ? kTrue : kFalse);
        }
        case 5: return set(kAsnInteger, g.asbr ? kTrue : kFalse);
        case 6: return set(kAsnGauge, external_sums(v).first);
        case 7: return set(kAsnInteger, external_sums(v).second);
        case 8: return set(kAsnInteger, kFalse);
        case 9: return set(kAsnCounter, g.originate_new_lsas);
        case 10: return set(kAsnCounter, g.rx_new_lsas);
        case 11: return set(kAsnInteger, uint32_t(-1));
        case 12: return set(kAsnInteger, 0);
        case 13: return set(kAsnInteger, 0);
        case 14: return set(kAsnInteger, kFalse);
        case 15: return set(kAsnInteger, g.rfc1583 ? kTrue : kFalse);
        case 16: return set(kAsnInteger, kTrue);
        case 21: return set(kAsnInteger, 1);  // not restarting
        case 22: return set(kAsnGauge, 0);
        case 23: return set(kAsnInteger, 1);  // none
        default: return false;
        }
    });
}

int get_rip2Globals(const View &v, uint8_t *record) {
    const layout::RoutingGlobals &g = st(v).globals;
    return answer_query(record, {1, 3, 6, 1, 2, 1, 23, 1}, [&](uint32_t object, uint8_t &type, uint32_t &word) {
        type = kAsnCounter;
        word = object == 1 ? g.rip_route_changes : g.rip_queries;
        return object == 1 || object == 2;
    });
}

}  // namespace calls

// ---- changes ---------------------------------------------------------------------------------

namespace {

void check_prefix_len(int prefix_len) {
    if (prefix_len < 0 || prefix_len > 32) fail("prefix length " + std::to_string(prefix_len) + " is not 0..32");
}

std::string prefix_text(uint32_t dest, uint32_t prefix_len) { return addr_text(dest) + "/" + std::to_string(prefix_len); }

// The VLAN interface whose network holds `addr`, or 0.
int vid_for(const View &v, uint32_t addr) {
    auto [b, e] = span_of(st(v).addrs);
    for (auto *a = b; a != e; ++a)
        if (a->mask && (addr & a->mask) == (a->addr & a->mask)) return a->vid;
    return 0;
}

layout::RouteSlot make_route(const View &v, const Switch::Route &r) {
    check_prefix_len(r.prefix_len);
    const uint32_t plen = uint32_t(r.prefix_len);
    if (r.dest & ~mask_of(plen)) fail(prefix_text(r.dest, plen) + " has bits beyond its prefix length");
    if (r.source < SW_ROUTE_CONNECTED || r.source > SW_ROUTE_BLACKHOLE)
        fail("route source " + std::to_string(r.source) + " is not 1..5");
    const bool gateway = r.source != SW_ROUTE_CONNECTED && r.source != SW_ROUTE_BLACKHOLE;
    if (gateway != (r.next_hop != 0))
        fail(gateway ? "a route of this source needs a next hop" : "a connected or blackhole route has no next hop");
    layout::RouteSlot s{};
    s.route.dest = r.dest;
    s.route.prefix_len = plen;
    s.route.next_hop = r.next_hop;
    s.route.source = uint32_t(r.source);
    s.route.metric = r.metric;
    s.route.vid = r.source == SW_ROUTE_BLACKHOLE ? 0 : r.vid ? r.vid : vid_for(v, r.next_hop);
    if (r.source != SW_ROUTE_BLACKHOLE && !model::vid_in_range(s.route.vid))
        fail("next hop " + addr_text(r.next_hop) + " of " + prefix_text(r.dest, plen) + " is on no VLAN interface's network");
    s.installed_ns = model::realtime_ns();
    return s;
}

void note_route_change(View &v, uint32_t source) {
    if (source == SW_ROUTE_RIP) ++st(v).globals.rip_route_changes;
}

uint32_t parse_addr(const Field &f) {
    uint32_t a = 0;
    const std::string text = f.text(15);
    if (helpers::ip_str_to_uint32(text.c_str(), &a) != 0) f.fail("'" + text + "' is not an IPv4 address");
    return a;
}
std::pair<uint32_t, int> parse_prefix(const Field &f) {
    uint32_t a = 0, m = 0;
    const std::string text = f.text(18);
    if (helpers::ip_addr_prefix_to_addr_mask(text.c_str(), &a, &m) != 0) f.fail("'" + text + "' is not an address/length");
    return {a, helpers::ip_mask_to_prefix(m)};
}

int name_code(const Field &f, const std::vector<std::pair<const char *, int>> &names) {
    const std::string text = f.text(32);
    std::string known;
    for (auto &[n, code] : names) {
        if (text == n) return code;
        known += (known.empty() ? "" : ", ") + std::string(n);
    }
    f.fail("'" + text + "' is not one of " + known);
}

const std::vector<std::pair<const char *, int>> kNbrStates = {
    {"down", 1}, {"attempt", 2}, {"init", 3}, {"two_way", 4}, {"exchange_start", 5}, {"exchange", 6}, {"loading", 7}, {"full", 8}};
const std::vector<std::pair<const char *, int>> kIfStates = {
    {"down", 1}, {"loopback", 2}, {"waiting", 3}, {"point_to_point", 4}, {"dr", 5}, {"backup", 6}, {"other", 7}};
const std::vector<std::pair<const char *, int>> kSources = {
    {"connected", SW_ROUTE_CONNECTED}, {"static", SW_ROUTE_STATIC}, {"ospf", SW_ROUTE_OSPF},
    {"rip", SW_ROUTE_RIP}, {"blackhole", SW_ROUTE_BLACKHOLE}};
const std::vector<std::pair<const char *, int>> kVrrpStates = {
    {"initialize", SW_VRRP_INITIALIZE}, {"backup", SW_VRRP_BACKUP}, {"master", SW_VRRP_MASTER}};

layout::LsaSlot lsa(uint32_t scope, uint32_t where, uint32_t where2, uint32_t type, uint32_t lsid, uint32_t router,
                    uint32_t mask = 0, uint32_t metric = 0) {
    layout::LsaSlot s{};
    s.scope = scope;
    s.where = where;
    s.where2 = where2;
    s.type = type;
    s.lsid = lsid;
    s.router_id = router;
    s.sequence = int32_t(0x80000001u);
    s.mask = mask;
    s.metric = metric;
    s.born_ns = model::realtime_ns();
    return s;
}

// ---- the scenario ----

class Builder {
public:
    explicit Builder(View &v) : v_(v), r_(st(v)) {}

    void build(const Field &f) {
        r_ = layout::RoutingState{};
        f.expect_object({"interfaces", "routes", "ospf", "rip", "vrrp", "generate"});
        each(f, "interfaces", &Builder::interface);
        each(f, "routes", &Builder::route);
        if (f.has("ospf")) ospf(f.at("ospf"));
        if (f.has("rip")) rip(f.at("rip"));
        each(f, "vrrp", &Builder::vrrp);
        if (f.has("generate")) generate(f.at("generate"));
        sort_unique(r_.routes);
        sort_unique(r_.lsas);
        refresh_lsa_sums(v_);
    }

private:
    // Runs `item` on every element of the list `key`, if there is one.
    void each(const Field &f, const char *key, void (Builder::*item)(const Field &)) {
        if (f.has(key))
            for (const Field &i : f.at(key).items()) (this->*item)(i);
    }

    void interface(const Field &f) {
        f.expect_object({"vlan", "address"});
        const int vid = int(f.at("vlan").integer(1, SW_MAX_VLAN_ID));
        auto [addr, plen] = parse_prefix(f.at("address"));
        at_field(f, [&] { ops::ip_addr_add(v_, vid, addr, plen); });
    }

    void route(const Field &f) {
        f.expect_object({"prefix", "next_hop", "vlan", "protocol", "metric", "blackhole"});
        Switch::Route r;
        std::tie(r.dest, r.prefix_len) = parse_prefix(f.at("prefix"));
        if (f.has("next_hop")) r.next_hop = parse_addr(f.at("next_hop"));
        r.vid = int(f.integer("vlan", 0, SW_MAX_VLAN_ID, 0));
        r.source = f.has("protocol") ? name_code(f.at("protocol"), kSources) : SW_ROUTE_STATIC;
        if (f.boolean("blackhole", false)) r.source = SW_ROUTE_BLACKHOLE;
        r.metric = uint32_t(f.integer("metric", 0, 16777215, r.source == SW_ROUTE_STATIC ? 1 : 0));
        at_field(f, [&] { append(r_.routes, make_route(v_, r), "route"); });
    }

    void ospf(const Field &f) {
        f.expect_object({"router_id", "areas", "interfaces", "neighbors", "virtual_links", "aggregates", "external",
                         "lsas", "rfc1583"});
        layout::RoutingGlobals &g = r_.globals;
        g.ospf_enabled = 1;
        g.router_id = parse_addr(f.at("router_id"));
        g.rfc1583 = f.boolean("rfc1583", true);
        each(f, "areas", &Builder::area);
        each(f, "interfaces", &Builder::ospf_if);
        each(f, "neighbors", &Builder::neighbor);
        each(f, "virtual_links", &Builder::virtual_link);
        each(f, "aggregates", &Builder::aggregate);
        each(f, "external", &Builder::external);
        if (f.has("lsas")) generated_lsas(f.at("lsas"));
        g.originate_new_lsas = r_.lsas.count;
        g.rx_new_lsas = r_.lsas.count * 3;
    }

    void area(const Field &f) {
        f.expect_object({"id", "type", "cost", "summary", "spf_runs"});
        sw_ospf_area_t a{};
        a.area_id = parse_addr(f.at("id"));
        a.import_as_extern = f.has("type") ? uint32_t(name_code(f.at("type"), {{"normal", 1}, {"stub", 2}, {"nssa", 3}})) : 1;
        a.stub_cost = uint32_t(f.integer("cost", 0, 16777215, 1));
        a.summary = f.boolean("summary", true) ? 2 : 1;
        a.spf_runs = uint32_t(f.integer("spf_runs", 0, UINT32_MAX, 4));
        upsert(r_.areas, a, "OSPF area");
        // This router's own router-LSA in every area it joins.
        append(r_.lsas, lsa(SW_OSPF_SCOPE_AREA, a.area_id, 0, 1, r_.globals.router_id, r_.globals.router_id), "LSA");
    }

    uint32_t known_area(const Field &f) {
        const uint32_t id = parse_addr(f);
        if (!find(r_.areas, SW_FIND_EXACT, {id})) f.fail("area " + addr_text(id) + " is not among ospf.areas");
        return id;
    }

    void ospf_if(const Field &f) {
        f.expect_object({"address", "area", "type", "cost", "priority", "state", "hello", "dead"});
        sw_ospf_if_t i{};
        i.addr = parse_addr(f.at("address"));
        const sw_ip_iface_t *a = find(r_.addrs, SW_FIND_EXACT, {i.addr});
        if (!a) f.at("address").fail(addr_text(i.addr) + " is not an address of a VLAN interface");
        i.vid = a->vid;
        i.area_id = known_area(f.at("area"));
        i.type = f.has("type") ? uint32_t(name_code(f.at("type"), {{"broadcast", 1}, {"nbma", 2}, {"point_to_point", 3}, {"point_to_multipoint", 5}})) : 1;
        i.enabled = 1;
        i.priority = uint32_t(f.integer("priority", 0, 255, 1));
        i.transit_delay = 1;
        i.retrans_interval = 5;
        i.hello_interval = uint32_t(f.integer("hello", 1, 65535, 10));
        i.dead_interval = uint32_t(f.integer("dead", 1, 65535, 40));
        i.poll_interval = 120;
        i.state = f.has("state") ? uint32_t(name_code(f.at("state"), kIfStates)) : 5;
        i.cost = uint32_t(f.integer("cost", 1, 65535, 10));
        i.events = 3;
        if (i.state == 5) {  // this router is the DR of the link
            i.dr = i.addr;
            i.dr_id = r_.globals.router_id;
            append(r_.lsas, lsa(SW_OSPF_SCOPE_AREA, i.area_id, 0, 2, i.addr, r_.globals.router_id, a->mask), "LSA");
        }
        upsert(r_.ospf_ifs, i, "OSPF interface");
        // A link-local opaque LSA on every interface.
        append(r_.lsas, lsa(SW_OSPF_SCOPE_LINK, i.addr, 0, 9, 0x04000000u, r_.globals.router_id), "LSA");
    }

    void neighbor(const Field &f) {
        f.expect_object({"address", "router_id", "state", "priority", "permanent"});
        sw_ospf_nbr_t n{};
        n.addr = parse_addr(f.at("address"));
        n.router_id = parse_addr(f.at("router_id"));
        n.state = f.has("state") ? uint32_t(name_code(f.at("state"), kNbrStates)) : SW_OSPF_NBR_FULL;
        n.priority = uint32_t(f.integer("priority", 0, 255, 1));
        n.permanent = f.boolean("permanent", false);
        n.options = 0x02;
        n.events = n.state;
        upsert(r_.nbrs, n, "OSPF neighbour");
        // A full neighbour's router-LSA is in the database of its link's area.
        auto [b, e] = span_of(r_.ospf_ifs);
        for (auto *i = b; i != e; ++i) {
            const sw_ip_iface_t *a = find(r_.addrs, SW_FIND_EXACT, {i->addr});
            if (a && (n.addr & a->mask) == (a->addr & a->mask)) {
                if (n.state == SW_OSPF_NBR_FULL)
                    append(r_.lsas, lsa(SW_OSPF_SCOPE_AREA, i->area_id, 0, 1, n.router_id, n.router_id), "LSA");
                if (i->state != 5 && n.priority > 0 && i->dr == 0) {  // the first neighbour that may be is the DR
                    i->dr = n.addr;
                    i->dr_id = n.router_id;
                }
                return;
            }
        }
        f.at("address").fail(addr_text(n.addr) + " is on no OSPF interface's network");
    }

    void virtual_link(const Field &f) {
        f.expect_object({"area", "neighbor", "address", "state"});
        sw_ospf_virt_if_t l{};
        l.area_id = known_area(f.at("area"));
        l.neighbor = parse_addr(f.at("neighbor"));
        l.transit_delay = 1;
        l.retrans_interval = 5;
        l.hello_interval = 10;
        l.dead_interval = 60;
        sw_ospf_virt_nbr_t n{};
        n.area_id = l.area_id;
        n.router_id = l.neighbor;
        n.addr = parse_addr(f.at("address"));
        n.options = 0x02;
        n.state = f.has("state") ? uint32_t(name_code(f.at("state"), kNbrStates)) : SW_OSPF_NBR_FULL;
        l.state = n.state == SW_OSPF_NBR_FULL ? 4 : 1;
        l.events = n.events = 2;
        upsert(r_.virt_ifs, l, "virtual link");
        upsert(r_.virt_nbrs, n, "virtual neighbour");
    }

    void aggregate(const Field &f) {
        f.expect_object({"area", "type", "prefix", "advertise", "tag"});
        sw_ospf_aggregate_t a{};
        a.area_id = known_area(f.at("area"));
        a.lsdb_type = f.has("type") ? uint32_t(name_code(f.at("type"), {{"summary", 3}, {"nssa", 7}})) : 3;
        auto [net, plen] = parse_prefix(f.at("prefix"));
        a.net = net;
        a.mask = mask_of(uint32_t(plen));
        a.advertise = f.boolean("advertise", true);
        a.route_tag = uint32_t(f.integer("tag", 0, UINT32_MAX, 0));
        upsert(r_.aggregates, a, "area aggregate");
    }

    void external(const Field &f) {
        f.expect_object({"prefix", "metric"});
        auto [net, plen] = parse_prefix(f.at("prefix"));
        append(r_.lsas, lsa(SW_OSPF_SCOPE_AS, 0, 0, 5, net, r_.globals.router_id, mask_of(uint32_t(plen)),
                            uint32_t(f.integer("metric", 0, 16777215, 20))), "LSA");
        r_.globals.asbr = 1;
    }

    // `count` summary LSAs of 10.128.0.0/24 upwards from the first full
    // neighbour, in the first area.
    void generated_lsas(const Field &f) {
        const int64_t count = f.integer(0, layout::kLsaCapacity / 2);
        if (count == 0) return;
        if (r_.areas.count == 0) f.fail("needs an area");
        uint32_t from = r_.globals.router_id;
        auto [b, e] = span_of(r_.nbrs);
        for (auto *n = b; n != e; ++n)
            if (n->state == SW_OSPF_NBR_FULL) {
                from = n->router_id;
                break;
            }
        for (int64_t k = 0; k < count; ++k)
            append(r_.lsas, lsa(SW_OSPF_SCOPE_AREA, r_.areas.at[0].area_id, 0, 3, 0x0a800000u + uint32_t(k << 8), from,
                                0xffffff00u, uint32_t(10 + k % 100)), "LSA");
    }

    void rip(const Field &f) {
        f.expect_object({"interfaces", "peers", "queries"});
        if (f.has("interfaces"))
            for (const Field &i : f.at("interfaces").items()) {
                sw_rip_if_t r{};
                r.addr = parse_addr(i);
                if (!find(r_.addrs, SW_FIND_EXACT, {r.addr})) i.fail(addr_text(r.addr) + " is not an address of a VLAN interface");
                r.sent_updates = 120;
                upsert(r_.rip_ifs, r, "RIP interface");
            }
        if (f.has("peers"))
            for (const Field &p : f.at("peers").items()) {
                p.expect_object({"address", "domain", "version", "bad_packets", "bad_routes"});
                layout::RipPeerSlot s{};
                s.peer.addr = parse_addr(p.at("address"));
                s.peer.domain = uint32_t(p.integer("domain", 0, 65535, 0));
                s.peer.version = uint32_t(p.integer("version", 1, 2, 2));
                s.peer.rcv_bad_packets = uint32_t(p.integer("bad_packets", 0, UINT32_MAX, 0));
                s.peer.rcv_bad_routes = uint32_t(p.integer("bad_routes", 0, UINT32_MAX, 0));
                s.last_update_ns = model::realtime_ns();
                upsert(r_.rip_peers, s, "RIP peer");
            }
        r_.globals.rip_queries = uint32_t(f.integer("queries", 0, UINT32_MAX, 0));
    }

    void vrrp(const Field &f) {
        f.expect_object({"vlan", "vrid", "priority", "addresses", "state", "interval", "preempt"});
        layout::VrrpSlot s{};
        sw_vrrp_router_t &r = s.router;
        r.vid = int32_t(f.at("vlan").integer(1, SW_MAX_VLAN_ID));
        r.vrid = uint32_t(f.at("vrid").integer(1, 255));
        r.priority = uint32_t(f.integer("priority", 1, 255, 100));
        r.adv_interval = uint32_t(f.integer("interval", 1, 255, 1));
        r.preempt = f.boolean("preempt", true);
        r.enabled = 1;
        auto [b, e] = span_of(r_.addrs);
        for (auto *a = b; a != e; ++a)
            if (a->vid == r.vid) r.primary_addr = a->addr;
        if (!r.primary_addr) f.at("vlan").fail("VLAN " + std::to_string(r.vid) + " has no address");
        if (!f.has("addresses")) f.fail("needs addresses");
        auto addrs = f.at("addresses").items();
        if (addrs.empty() || addrs.size() > SW_VRRP_MAX_ADDRS) f.at("addresses").fail("must list 1..16 addresses");
        for (const Field &a : addrs) r.addrs[r.addr_count++] = parse_addr(a);
        std::sort(r.addrs, r.addrs + r.addr_count);
        r.state = SW_VRRP_INITIALIZE;
        upsert(r_.vrrp, s, "VRRP router");
        const int state = f.has("state") ? name_code(f.at("state"), kVrrpStates) : SW_VRRP_MASTER;
        at_field(f, [&] { ops::vrrp_set_state(v_, r.vid, int(r.vrid), state); });
    }

    // Synthetic load: `routes` static /24 routes of 100.64.0.0 upwards
    // through `next_hop`.
    void generate(const Field &f) {
        f.expect_object({"routes", "next_hop"});
        const int64_t count = f.integer("routes", 0, layout::kRouteCapacity - 512, 0);
        if (count == 0) return;
        Switch::Route r;
        r.prefix_len = 24;
        r.next_hop = parse_addr(f.at("next_hop"));
        for (int64_t k = 0; k < count; ++k) {
            r.dest = 0x64400000u + uint32_t(k << 8);
            r.metric = uint32_t(k % 3 + 1);
            r.source = k % 2 ? SW_ROUTE_OSPF : SW_ROUTE_STATIC;
            at_field(f, [&] { append(r_.routes, make_route(v_, r), "route"); });
        }
    }

    View &v_;
    layout::RoutingState &r_;
};

}  // namespace

void build(View &v, const Field &f) { Builder(v).build(f); }

// ---- changes from outside -----------------------------------------------------------------

namespace ops {

void ip_addr_add(View &v, int vid, uint32_t addr, int prefix_len) {
    model::ops::check_vid(vid);
    if (!v.cfg->vlans[vid].exists) fail("VLAN " + std::to_string(vid) + " does not exist");
    if (prefix_len < 1 || prefix_len > 32) fail("prefix length " + std::to_string(prefix_len) + " is not 1..32");
    const uint32_t mask = mask_of(uint32_t(prefix_len));
    if (addr == 0 || (prefix_len < 31 && ((addr & ~mask) == 0 || (addr | mask) == ~0u)))
        fail(addr_text(addr) + "/" + std::to_string(prefix_len) + " is no host address");
    sw_ip_iface_t a{addr, mask, vid, 18024};
    upsert(st(v).addrs, a, "address");
    layout::RouteSlot s{};
    s.route = sw_route_t{addr & mask, uint32_t(prefix_len), 0, vid, SW_ROUTE_CONNECTED, 0, 0};
    s.installed_ns = model::realtime_ns();
    upsert(st(v).routes, s, "route");
}

void ip_addr_remove(View &v, uint32_t addr) {
    const sw_ip_iface_t *a = find(st(v).addrs, SW_FIND_EXACT, {addr});
    if (!a) fail(addr_text(addr) + " is not an address of the switch");
    const sw_ip_iface_t gone = *a;
    erase(st(v).addrs, {addr});
    erase(st(v).routes, {gone.addr & gone.mask, uint32_t(helpers::ip_mask_to_prefix(gone.mask)), 0});
}

void route_add(View &v, const Switch::Route &route) {
    upsert(st(v).routes, make_route(v, route), "route");
    note_route_change(v, uint32_t(route.source));
}

void route_remove(View &v, uint32_t dest, int prefix_len, uint32_t next_hop) {
    check_prefix_len(prefix_len);
    const layout::RouteSlot *s = find(st(v).routes, SW_FIND_EXACT, {dest, uint32_t(prefix_len), next_hop});
    if (!s) fail("no route to " + prefix_text(dest, uint32_t(prefix_len)) + " via " + addr_text(next_hop));
    const uint32_t source = s->route.source;
    erase(st(v).routes, {dest, uint32_t(prefix_len), next_hop});
    note_route_change(v, source);
}

void ospf_set_neighbor_state(View &v, uint32_t addr, int state) {
    if (state < SW_OSPF_NBR_DOWN || state > SW_OSPF_NBR_FULL) fail("neighbour state " + std::to_string(state) + " is not 1..8");
    auto *n = const_cast<sw_ospf_nbr_t *>(find(st(v).nbrs, SW_FIND_FROM, {addr, 0}));
    if (!n || n->addr != addr) fail("no OSPF neighbour " + addr_text(addr));
    if (n->state != uint32_t(state)) ++n->events;
    n->state = uint32_t(state);
}

void ospf_age_lsas(View &v, uint32_t seconds, uint32_t type) {
    auto [b, e] = span_of(st(v).lsas);
    int aged = 0;
    for (auto *l = b; l != e; ++l) {
        if (type != 0 && l->type != type) continue;
        l->born_ns -= int64_t(std::min<uint32_t>(seconds, SW_OSPF_MAX_AGE)) * 1'000'000'000;
        ++aged;
    }
    if (aged == 0 && type != 0) fail("no LSA of type " + std::to_string(type));
}

void vrrp_set_state(View &v, int vid, int vrid, int state) {
    if (state < SW_VRRP_INITIALIZE || state > SW_VRRP_MASTER) fail("VRRP state " + std::to_string(state) + " is not 1..3");
    auto *s = const_cast<layout::VrrpSlot *>(find(st(v).vrrp, SW_FIND_EXACT, {uint32_t(vid), uint32_t(vrid)}));
    if (!s) fail("no VRRP router " + std::to_string(vrid) + " on VLAN " + std::to_string(vid));
    sw_vrrp_router_t &r = s->router;
    if (state == SW_VRRP_MASTER && r.state != SW_VRRP_MASTER) ++r.counters[SW_VRRP_BECOME_MASTER];
    if (state == SW_VRRP_INITIALIZE) s->up_since_ns = 0;
    else if (r.state == SW_VRRP_INITIALIZE || !s->up_since_ns) s->up_since_ns = model::realtime_ns();
    r.master_addr = state == SW_VRRP_MASTER ? r.primary_addr : state == SW_VRRP_BACKUP ? r.primary_addr + 1 : 0;
    r.counters[SW_VRRP_ADVERTISE_RCVD] += state == SW_VRRP_BACKUP ? 10 : 0;
    r.state = uint32_t(state);
}

// ---- FRRouting's JSON ----

namespace {

using nlohmann::json;

// "00:01:02", "1d02h03m", "2w3d04h": seconds.
int64_t frr_uptime_s(const std::string &text) {
    int h = 0, m = 0, sec = 0;
    if (std::sscanf(text.c_str(), "%d:%d:%d", &h, &m, &sec) == 3) return int64_t(h) * 3600 + m * 60 + sec;
    int64_t total = 0, number = 0;
    for (char c : text) {
        if (c >= '0' && c <= '9') {
            number = number * 10 + (c - '0');
            continue;
        }
        const int64_t unit = c == 'w' ? 604800 : c == 'd' ? 86400 : c == 'h' ? 3600 : c == 'm' ? 60 : c == 's' ? 1 : 0;
        total += number * unit;
        number = 0;
    }
    return total;
}

// The VID of an FRR interface name: from the map, else the digits it ends in.
int frr_vid(const std::string &name, const std::vector<std::pair<std::string, int>> &vlans) {
    for (const auto &[n, vid] : vlans)
        if (n == name) return vid;
    std::size_t digits = name.size();
    while (digits > 0 && std::isdigit(static_cast<unsigned char>(name[digits - 1]))) --digits;
    if (digits == name.size() || name.size() - digits > 4) return 0;
    const int vid = std::stoi(name.substr(digits));
    return model::vid_in_range(vid) ? vid : 0;
}

uint32_t frr_addr(const json &j, const char *key) {
    uint32_t a = 0;
    if (j.contains(key) && j[key].is_string()) helpers::ip_str_to_uint32(j[key].get<std::string>().c_str(), &a);
    return a;
}

json parse_json(const std::string &text, const char *what) {
    try {
        return json::parse(text);
    } catch (const json::exception &e) {
        fail(std::string(what) + ": not valid JSON (" + e.what() + ")");
    }
}

const std::vector<std::pair<const char *, int>> kFrrSources = {
    {"connected", SW_ROUTE_CONNECTED}, {"kernel", SW_ROUTE_STATIC}, {"static", SW_ROUTE_STATIC},
    {"ospf", SW_ROUTE_OSPF}, {"rip", SW_ROUTE_RIP}};

// The selected routes of one prefix, one per active next hop.
void frr_prefix(View &v, const json &entries, std::vector<layout::RouteSlot> &out, Switch::FrrImport &count,
                const std::vector<std::pair<std::string, int>> &vlans) {
    if (!entries.is_array()) return;
    for (const json &e : entries) {
        if (!e.value("selected", false)) continue;
        uint32_t dest = 0, mask = 0;
        const std::string prefix = e.value("prefix", "");
        int source = 0;
        for (auto &[name, code] : kFrrSources)
            if (e.value("protocol", "") == name) source = code;
        if (helpers::ip_addr_prefix_to_addr_mask(prefix.c_str(), &dest, &mask) != 0 || source == 0 ||
            !e.contains("nexthops") || !e["nexthops"].is_array()) {
            ++count.skipped;
            continue;
        }
        const int64_t age = frr_uptime_s(e.value("uptime", "0"));
        for (const json &nh : e["nexthops"]) {
            if (!nh.is_object() || !nh.value("active", false)) continue;
            Switch::Route r;
            r.dest = dest & mask;
            r.prefix_len = helpers::ip_mask_to_prefix(mask);
            r.metric = uint32_t(e.value("metric", 0));
            r.source = nh.value("blackhole", false) ? SW_ROUTE_BLACKHOLE : source;
            r.next_hop = r.source == SW_ROUTE_CONNECTED || r.source == SW_ROUTE_BLACKHOLE ? 0 : frr_addr(nh, "ip");
            r.vid = frr_vid(nh.value("interfaceName", ""), vlans);
            try {
                layout::RouteSlot s = make_route(v, r);
                s.installed_ns -= age * 1'000'000'000;
                out.push_back(s);
                ++count.routes;
            } catch (const Error &) {
                ++count.skipped;  // an interface that is no VLAN of the switch
            }
        }
    }
}

int frr_nbr_state(const std::string &state) {
    const std::string word = state.substr(0, state.find('/'));
    static const std::vector<std::pair<const char *, int>> names = {
        {"Down", 1}, {"Deleted", 1}, {"Attempt", 2}, {"Init", 3}, {"2-Way", 4}, {"ExStart", 5},
        {"Exchange", 6}, {"Loading", 7}, {"Full", 8}};
    for (auto &[n, code] : names)
        if (word == n) return code;
    return 0;
}

}  // namespace

Switch::FrrImport import_frr(View &v, const std::string &routes_json, const std::string &neighbors_json,
                             const std::vector<std::pair<std::string, int>> &vlans) {
    Switch::FrrImport count;
    layout::RoutingState &r = st(v);
    // Everything is read before anything changes.
    std::vector<layout::RouteSlot> routes;
    std::vector<sw_ospf_nbr_t> nbrs;
    if (!routes_json.empty()) {
        const json doc = parse_json(routes_json, "the routes");
        if (!doc.is_object()) fail("the routes: not an object of prefixes");
        for (auto it = doc.begin(); it != doc.end(); ++it) frr_prefix(v, it.value(), routes, count, vlans);
        if (routes.size() > std::size_t(layout::kRouteCapacity)) fail("more routes than the routing table holds");
    }
    if (!neighbors_json.empty()) {
        const json doc = parse_json(neighbors_json, "the OSPF neighbours");
        if (!doc.is_object() || !doc.contains("neighbors") || !doc["neighbors"].is_object())
            fail("the OSPF neighbours: no \"neighbors\" object");
        for (auto it = doc["neighbors"].begin(); it != doc["neighbors"].end(); ++it) {
            for (const json &e : it.value().is_array() ? it.value() : json::array()) {
                sw_ospf_nbr_t n{};
                helpers::ip_str_to_uint32(it.key().c_str(), &n.router_id);
                n.addr = frr_addr(e, e.contains("ifaceAddress") ? "ifaceAddress" : "address");
                n.priority = uint32_t(e.value("nbrPriority", e.value("priority", 1)));
                n.state = uint32_t(frr_nbr_state(e.value("nbrState", e.value("state", ""))));
                n.options = 0x02;
                n.events = n.state;
                if (!n.addr || !n.state) {
                    ++count.skipped;
                    continue;
                }
                nbrs.push_back(n);
                ++count.neighbors;
            }
        }
        if (nbrs.size() > std::size_t(layout::kOspfNbrCapacity)) fail("more neighbours than the table holds");
    }
    if (!routes_json.empty()) {
        r.routes.count = 0;
        for (const auto &s : routes) append(r.routes, s, "route");
        sort_unique(r.routes);
    }
    if (!neighbors_json.empty()) {
        r.nbrs.count = 0;
        for (const auto &n : nbrs) append(r.nbrs, n, "OSPF neighbour");
        sort_unique(r.nbrs);
    }
    return count;
}

}  // namespace ops

// ---- reads ------------------------------------------------------------------------------------

std::vector<sw_ip_iface_t> ip_addrs(const View &v) { return all_of(st(v).addrs); }
std::vector<sw_route_t> routes(const View &v) {
    std::vector<sw_route_t> out;
    for (const auto &s : all_of(st(v).routes)) {
        out.push_back(s.route);
        out.back().age_s = seconds_since(s.installed_ns);
    }
    return out;
}
std::vector<sw_ospf_nbr_t> ospf_neighbors(const View &v) { return all_of(st(v).nbrs); }
std::vector<sw_ospf_lsa_t> ospf_lsas(const View &v) {
    std::vector<sw_ospf_lsa_t> out;
    for (const auto &s : all_of(st(v).lsas)) out.push_back(lsa_record(v, s));
    return out;
}
std::vector<sw_vrrp_router_t> vrrp_routers(const View &v) {
    std::vector<sw_vrrp_router_t> out;
    for (const auto &s : all_of(st(v).vrrp)) out.push_back(s.router);
    return out;
}

std::string damage(const View &v) {
    const layout::RoutingState &r = st(v);
    auto over = [](const char *what, uint32_t count, int capacity) -> std::string {
        return count > uint32_t(capacity) ? std::string("the ") + what + " count " + std::to_string(count) +
                                                " is beyond the table's " + std::to_string(capacity)
                                          : "";
    };
    for (const std::string &p : {over("address", r.addrs.count, r.addrs.kCapacity), over("route", r.routes.count, r.routes.kCapacity),
                                 over("VRRP router", r.vrrp.count, r.vrrp.kCapacity), over("LSA", r.lsas.count, r.lsas.kCapacity),
                                 over("OSPF neighbour", r.nbrs.count, r.nbrs.kCapacity)})
        if (!p.empty()) return p;
    for (uint32_t i = 0; i < std::min<uint32_t>(r.routes.count, r.routes.kCapacity); ++i)
        if (r.routes.at[i].route.prefix_len > 32)
            return "route " + std::to_string(i) + "'s prefix length " + std::to_string(r.routes.at[i].route.prefix_len) +
                   " is beyond 32";
    for (uint32_t i = 0; i < std::min<uint32_t>(r.vrrp.count, r.vrrp.kCapacity); ++i)
        if (r.vrrp.at[i].router.addr_count > SW_VRRP_MAX_ADDRS)
            return "VRRP router " + std::to_string(i) + "'s address count is beyond 16";
    return "";
}

}  // namespace swsim::routing
