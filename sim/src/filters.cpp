// Packet filters of the simulated switch and their counters.
#include "filters.hpp"

#include <cstring>

#include "model.hpp"
#include "scenario_field.hpp"
#include "util.hpp"

namespace swsim::filters {
namespace {

bool slot_ok(int direction, int filter0) {
    return (direction == SW_FILTER_INGRESS || direction == SW_FILTER_EGRESS) && filter0 >= 0 && filter0 < SW_FILTERS;
}
layout::FilterConfig *filter_in_use(const View &v, int direction, int filter0) {
    if (!slot_ok(direction, filter0)) return nullptr;
    layout::FilterConfig &f = v.cfg->filters.filters[direction][filter0];
    return f.in_use ? &f : nullptr;
}
bool applied(const layout::FilterConfig &f, int phys) { return f.ports[phys / 8] >> (phys % 8) & 1; }

}  // namespace

void defaults(View &v) {
    std::memset(&v.cfg->filters, 0, sizeof v.cfg->filters);
    std::memset(&v.hw->filters, 0, sizeof v.hw->filters);
}

void build(View &v, const Field &f, const std::function<std::vector<std::pair<int, int>>(const Field &)> &select) {
    defaults(v);
    f.expect_object({"ingress", "egress"});
    for (const int direction : {SW_FILTER_INGRESS, SW_FILTER_EGRESS}) {
        const char *key = direction == SW_FILTER_INGRESS ? "ingress" : "egress";
        if (!f.has(key)) continue;
        const std::vector<Field> items = f.at(key).items();
        if (items.size() > SW_FILTERS) f.at(key).fail("holds at most 16 filters");
        for (std::size_t i = 0; i < items.size(); ++i) {
            const Field &item = items[i];
            item.expect_object({"name", "rule", "ports", "pps", "packet_bytes"});
            Switch::FilterSettings s;
            s.name = item.text("name", SW_FILTER_TEXT_SIZE - 1, "filter-" + std::to_string(i + 1));
            s.rule = item.text("rule", SW_FILTER_TEXT_SIZE - 1, "deny any any");
            if (item.has("ports")) s.ports = select(item.at("ports"));
            s.pps = uint64_t(item.integer("pps", 0, 20'000'000, 0));
            s.packet_bytes = int(item.integer("packet_bytes", 64, 9216, 64));
            ops::set(v, direction, int(i), s);
        }
    }
}

namespace ops {
void set(View &v, int direction, int filter0, const Switch::FilterSettings &s) {
    if (!slot_ok(direction, filter0)) throw Error("filters are 1..16 in each direction");
    if (s.name.empty() || s.name.size() >= SW_FILTER_TEXT_SIZE || s.rule.size() >= SW_FILTER_TEXT_SIZE)
        throw Error("a filter's name is 1..63 characters, its rule up to 63");
    if (s.packet_bytes < 64 || s.packet_bytes > 9216) throw Error("packets are 64..9216 bytes");
    layout::FilterConfig f{};
    for (auto [unit0, port0] : s.ports) {
        if (!model::port_exists(v, unit0, port0))
            throw Error("no port " + std::to_string(unit0 + 1) + "/" + std::to_string(port0 + 1));
        const int phys = model::phys_index(unit0, port0);
        f.ports[phys / 8] = uint8_t(f.ports[phys / 8] | 1 << (phys % 8));
    }
    f.in_use = 1;
    copy_text(f.name, s.name);
    copy_text(f.rule, s.rule);
    v.cfg->filters.filters[direction][filter0] = f;
    v.hw->filters.counting[direction][filter0] = {s.pps, uint32_t(s.packet_bytes), 0, model::realtime_ns()};
}
void remove(View &v, int direction, int filter0) {
    if (!filter_in_use(v, direction, filter0)) throw Error("no such filter");
    std::memset(&v.cfg->filters.filters[direction][filter0], 0, sizeof(layout::FilterConfig));
    std::memset(&v.hw->filters.counting[direction][filter0], 0, sizeof(layout::FilterCounting));
}
}  // namespace ops

std::string damage(const View &v) {
    for (const auto &dir : v.hw->filters.counting)
        for (const auto &c : dir)
            if (c.packet_bytes > 9216) return "a filter's packet size is beyond 9216 bytes";
    return {};
}

namespace calls {

int cfg_get_filter(const View &v, int direction, int filter0, sw_filter_t *out) {
    if (!slot_ok(direction, filter0) || !out) return -1;
    const layout::FilterConfig &f = v.cfg->filters.filters[direction][filter0];
    std::memset(out, 0, sizeof *out);
    out->in_use = f.in_use;
    if (f.in_use) {
        copy_text(out->name, sizeof out->name, f.name);
        copy_text(out->rule, sizeof out->rule, f.rule);
    }
    return 0;
}
int cfg_filter_on_port(const View &v, int direction, int filter0, int unit0, int port0) {
    const layout::FilterConfig *f = filter_in_use(v, direction, filter0);
    if (!f || !model::port_exists(v, unit0, port0)) return -1;
    return applied(*f, model::phys_index(unit0, port0)) ? 1 : 0;
}
int bcmd_get_filter_counter(const View &v, int direction, int filter0, int unit0, int port0, uint64_t *packets,
                            uint64_t *octets) {
    if (cfg_filter_on_port(v, direction, filter0, unit0, port0) != 1 || !packets || !octets) return -1;
    const layout::FilterCounting &c = v.hw->filters.counting[direction][filter0];
    const uint64_t ms = model::ns_since(c.applied_ns) / 1'000'000;
    *packets = mul_div(c.pps, ms, 1000);
    *octets = *packets * c.packet_bytes;
    return 0;
}

}  // namespace calls

}  // namespace swsim::filters
