// CFM delay measurement probes of the simulated switch.
#include "cfm.hpp"

#include <algorithm>
#include <cstring>
#include <tuple>

#include "model.hpp"
#include "scenario_field.hpp"
#include "util.hpp"

namespace swsim::cfm {
namespace {

constexpr uint32_t kMaxDelayUs = 10'000'000;  // 10 s: beyond it a reply counts as lost
constexpr uint32_t kDefaultDelayUs = 100, kDefaultJitterUs = 20;

layout::CfmConfig &probes(const View &v) { return v.cfg->cfm; }

// The probes in use, numbers ascending.
std::pair<const layout::CfmProbe *, const layout::CfmProbe *> listed(const View &v) {
    const layout::CfmConfig &c = probes(v);
    return {c.probes, c.probes + std::min<uint32_t>(c.count, SW_CFM_PROBES)};
}
// The first probe numbered `id` or above.
const layout::CfmProbe *from(const View &v, uint32_t id) {
    const auto [begin, end] = listed(v);
    return std::lower_bound(begin, end, id, [](const layout::CfmProbe &q, uint32_t x) { return q.id < x; });
}
// The probe numbered `id`, nullptr when there is none.
const layout::CfmProbe *find(const View &v, uint32_t id) {
    const layout::CfmProbe *p = from(v, id);
    return p != listed(v).second && p->id == id ? p : nullptr;
}

sw_cfm_probe_t record(const layout::CfmProbe &p) {
    sw_cfm_probe_t out{};
    out.id = p.id;
    out.unit0 = p.unit0;
    out.port0 = p.port0;
    std::memcpy(out.target, p.target, sizeof out.target);
    return out;
}

// The two-way delay of measurement k: the path's delay and a jitter that
// depends on nothing but the probe and k.
uint32_t delay_of(const layout::CfmProbe &p, uint64_t k) {
    uint64_t x = (uint64_t(p.id) << 40) ^ k;  // splitmix64
    x += 0x9e3779b97f4a7c15ull;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ull;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebull;
    x ^= x >> 31;
    return p.delay_us + uint32_t(x % (uint64_t(p.jitter_us) + 1));
}

bool link_up(const View &v, const layout::CfmProbe &p) {
    return model::port_exists(v, p.unit0, p.port0) && v.status->units[p.unit0].present &&
           v.status->units[p.unit0].ports[p.port0].link;
}

sw_cfm_dm_result_t result(const View &v, const layout::CfmProbe &p) {
    sw_cfm_dm_result_t r{};
    if (!link_up(v, p)) return r;
    const uint64_t k = model::ns_since(v.rt->boot_realtime_ns) / 1'000'000'000;
    const uint32_t now = delay_of(p, k);
    const uint32_t before = k > 0 ? delay_of(p, k - 1) : now;
    r.valid = 1;
    r.delay_us = now;
    r.variation_us = now > before ? now - before : before - now;
    return r;
}

void check(const View &v, const Switch::CfmProbeSettings &s) {
    if (s.id < 1 || s.id > SW_CFM_PROBE_MAX_ID) throw Error("probes are numbered 1..65535");
    if (!model::port_exists(v, s.unit0, s.port0))
        throw Error("no port " + std::to_string(s.unit0 + 1) + "/" + std::to_string(s.port0 + 1));
    if (s.delay_us < 1 || s.delay_us > kMaxDelayUs || s.jitter_us > kMaxDelayUs - s.delay_us)
        throw Error("a path's delay is 1 us .. 10 s, its jitter included");
}

}  // namespace

void defaults(View &v) { std::memset(&probes(v), 0, sizeof probes(v)); }

void build(View &v, const Field &f, const std::function<std::vector<std::pair<int, int>>(const Field &)> &select) {
    defaults(v);
    f.expect_object({"probes"});
    if (!f.has("probes")) return;
    const std::vector<Field> items = f.at("probes").items();
    if (items.size() > SW_CFM_PROBES) f.at("probes").fail("holds at most 64 probes");
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Field &item = items[i];
        item.expect_object({"id", "port", "target", "delay_us", "jitter_us"});
        Switch::CfmProbeSettings s;
        s.id = uint32_t(item.integer("id", 1, SW_CFM_PROBE_MAX_ID, int64_t(i + 1)));
        if (!item.has("port")) item.fail("needs a port");
        const auto ports = select(item.at("port"));
        if (ports.size() != 1 || ports[0].second >= layout::kTrunkPortBase) item.at("port").fail("must be one port, U/P");
        std::tie(s.unit0, s.port0) = ports[0];
        if (!item.has("target") || !parse_mac(item.at("target").text(17), s.target))
            item.fail("needs a target, the remote MEP's MAC address like 02:00:5e:20:00:01");
        s.delay_us = uint32_t(item.integer("delay_us", 1, kMaxDelayUs, kDefaultDelayUs));
        s.jitter_us = uint32_t(item.integer("jitter_us", 0, kMaxDelayUs, kDefaultJitterUs));
        try {
            ops::add(v, s);
        } catch (const Error &e) {
            item.fail(e.what());
        }
    }
}

namespace ops {
void add(View &v, const Switch::CfmProbeSettings &s) {
    check(v, s);
    layout::CfmConfig &c = probes(v);
    if (find(v, s.id)) throw Error("probe " + std::to_string(s.id) + " exists already");
    if (c.count >= SW_CFM_PROBES) throw Error("the switch runs at most 64 probes");
    layout::CfmProbe p{};
    p.id = s.id;
    p.unit0 = s.unit0;
    p.port0 = s.port0;
    std::memcpy(p.target, s.target, sizeof p.target);
    p.delay_us = s.delay_us;
    p.jitter_us = s.jitter_us;
    layout::CfmProbe *at = c.probes + (from(v, s.id) - c.probes);
    std::move_backward(at, c.probes + c.count, c.probes + c.count + 1);
    *at = p;
    ++c.count;
}
void remove(View &v, uint32_t id) {
    layout::CfmConfig &c = probes(v);
    const layout::CfmProbe *p = find(v, id);
    if (!p) throw Error("no probe " + std::to_string(id));
    layout::CfmProbe *at = c.probes + (p - c.probes);
    std::move(at + 1, c.probes + c.count, at);
    --c.count;
    std::memset(&c.probes[c.count], 0, sizeof c.probes[c.count]);
}
}  // namespace ops

std::vector<Switch::CfmProbeInfo> info(const View &v) {
    std::vector<Switch::CfmProbeInfo> out;
    for (auto [p, end] = listed(v); p != end; ++p) out.push_back({record(*p), result(v, *p), p->delay_us, p->jitter_us});
    return out;
}

std::string damage(const View &v) {
    const layout::CfmConfig &c = probes(v);
    if (c.count > SW_CFM_PROBES) return "the CFM probe count is " + std::to_string(c.count) + " (at most 64)";
    for (uint32_t i = 0; i < c.count; ++i) {
        const layout::CfmProbe &p = c.probes[i];
        const std::string name = "CFM probe " + std::to_string(i + 1) + " of the list";
        if (p.id < 1 || p.id > SW_CFM_PROBE_MAX_ID || (i > 0 && p.id <= c.probes[i - 1].id))
            return name + " has number " + std::to_string(p.id) + " (1 .. 65535, ascending)";
        if (!model::unit_in_range(p.unit0) || p.port0 < 0 || p.port0 >= SW_PORTS_PER_UNIT)
            return name + " is on unit0 " + std::to_string(p.unit0) + " port0 " + std::to_string(p.port0) + " (no such port)";
        if (p.delay_us > kMaxDelayUs || p.jitter_us > kMaxDelayUs - p.delay_us)
            return name + "'s path delay is beyond 10 s";
    }
    return {};
}

namespace calls {

int cfg_get_cfm_probe(const View &v, uint32_t id, sw_cfm_probe_t *out) {
    const layout::CfmProbe *p = find(v, id);
    if (!p || !out) return -1;
    *out = record(*p);
    return 0;
}
int cfg_get_cfm_probe_next(const View &v, uint32_t after, sw_cfm_probe_t *out) {
    if (!out || after >= SW_CFM_PROBE_MAX_ID) return -1;
    const layout::CfmProbe *p = from(v, after + 1);
    if (p == listed(v).second) return -1;
    *out = record(*p);
    return 0;
}
int bcmd_get_cfm_dm_result(const View &v, uint32_t id, sw_cfm_dm_result_t *out) {
    const layout::CfmProbe *p = find(v, id);
    if (!p || !out) return -1;
    *out = result(v, *p);
    return 0;
}

}  // namespace calls

}  // namespace swsim::cfm
