// Interfaces and trunks: link up/down notification switches, error-blocked
// ports, VLAN names and the trunk configuration calls.
#include "ifaces.hpp"

#include <algorithm>
#include <cstring>

#include "model.hpp"
#include "util.hpp"

extern "C" {
uint32_t uptime_ifTableLastChange = 0;
}

namespace swsim {

namespace model {
namespace {
uint32_t uptime_cs_now(const View &v) { return uint32_t(ns_since(v.rt->boot_realtime_ns) / 10'000'000); }
}  // namespace

void note_iface_change(View &v) { v.hw->ifaces_ext.if_table_last_change = uptime_cs_now(v); }

void publish_iface_change(const View &v) {
    uptime_ifTableLastChange = __atomic_load_n(&v.hw->ifaces_ext.if_table_last_change, __ATOMIC_RELAXED);
}

}  // namespace model

namespace ifaces_impl {
namespace {

bool trunk_configured(const View &v, int trunk0) {
    return model::trunk_in_range(trunk0) && v.cfg->trunks[trunk0].configured;
}

// Runs a model operation that throws only on a bad request (checked by the
// caller first); a refusal all the same answers -1.
template <class Op>
int apply(const View &v, Op op) {
    View mv = v;
    try {
        op(mv);
    } catch (const Error &) {
        return -1;
    }
    return 0;
}

}  // namespace

int cfg_get_trap_enable_port(const View &v, int unit0, int port0, uint8_t *enabled) {
    const int iface = model::iface_of(v, unit0, port0);
    if (iface < 0 || !enabled) return -1;
    *enabled = v.cfg->ifaces_ext.trap_disabled[iface] ? 0 : 1;
    return 0;
}

int cfg_set_trap_enable_port(const View &v, int unit0, int port0, int enabled) {
    const int iface = model::iface_of(v, unit0, port0);
    if (iface < 0 || (enabled != 0 && enabled != 1)) return -1;
    v.cfg->ifaces_ext.trap_disabled[iface] = enabled ? 0 : 1;
    return 0;
}

int cfg_port_is_error_blocked(const View &v, int unit0, int port0) {
    const int phys = model::phys_of(v, unit0, port0);
    return phys < 0 ? -1 : v.hw->ifaces_ext.error_blocked[phys] != 0;
}

int cfg_trunk_count_link_up(const View &v, int trunk0) {
    if (!trunk_configured(v, trunk0)) return -1;
    int up = 0;
    model::for_each_trunk_member(v, trunk0, [&](int u, int p) { up += v.status->units[u].ports[p].link != 0; });
    return up;
}

int cfg_create_trunk(const View &v, int trunk0) {
    if (!model::trunk_in_range(trunk0) || trunk_configured(v, trunk0)) return -1;
    return apply(v, [&](View &mv) { model::ops::trunk_create(mv, trunk0, false); });
}

int cfg_destroy_trunk(const View &v, int trunk0) {
    if (!trunk_configured(v, trunk0)) return -1;
    return apply(v, [&](View &mv) { model::ops::trunk_destroy(mv, trunk0); });
}

int cfg_add_port_to_trunk(const View &v, int trunk0, int unit0, int port0, int flags) {
    if (!trunk_configured(v, trunk0) || model::phys_of(v, unit0, port0) < 0) return -1;
    if (flags != 0 && flags != SW_TRUNK_LACP) return -1;
    const int now = model::trunk_of_port(v, unit0, port0);
    if (now == trunk0) return 0;
    if (now >= 0) return -1;
    return apply(v, [&](View &mv) { model::ops::trunk_add_port(mv, trunk0, unit0, port0); });
}

int cfg_remove_port_from_trunk(const View &v, int trunk0, int unit0, int port0) {
    if (!trunk_configured(v, trunk0) || model::phys_of(v, unit0, port0) < 0) return -1;
    if (!model::trunk_has(v, trunk0, unit0, port0)) return -1;
    return apply(v, [&](View &mv) { model::ops::trunk_remove_port(mv, trunk0, unit0, port0); });
}

}  // namespace ifaces_impl

// ---- LACP -----------------------------------------------------------------------

namespace model {
namespace {

constexpr uint64_t kSlowPeriodNs = 30'000'000'000;  // long timeout: a LACPDU every 30 s
constexpr uint64_t kFastPeriodNs = 1'000'000'000;   // short timeout: every second

bool port_up(const View &v, int phys) {
    const int unit0 = phys / SW_PORTS_PER_UNIT, port0 = phys % SW_PORTS_PER_UNIT;
    return port_exists(v, unit0, port0) && v.status->units[unit0].present &&
           v.status->units[unit0].ports[port0].link != 0;
}

// Who a port would aggregate with: the partner system and key, and its own key.
struct Group {
    uint8_t system[6];
    uint16_t partner_key, actor_key;
    bool operator==(const Group &o) const {
        return std::memcmp(system, o.system, 6) == 0 && partner_key == o.partner_key && actor_key == o.actor_key;
    }
};

Group group_of(const View &v, int phys) {
    Group g{};
    std::memcpy(g.system, v.hw->ifaces_ext.lacp[phys].system, 6);
    g.partner_key = v.hw->ifaces_ext.lacp[phys].key;
    g.actor_key = v.cfg->ifaces_ext.lacp[phys].key;
    return g;
}

bool hears_partner(const View &v, int phys) {
    const layout::LacpPartner &p = v.hw->ifaces_ext.lacp[phys];
    return p.present && port_up(v, phys);
}

bool eligible(const View &v, int phys) {
    return v.cfg->ifaces_ext.lacp[phys].enabled && hears_partner(v, phys) &&
           (v.hw->ifaces_ext.lacp[phys].state & SW_LACP_AGGREGATION);
}

bool formed(const View &v, int trunk0) {
    return v.cfg->trunks[trunk0].configured && v.cfg->ifaces_ext.lacp_formed[trunk0];
}

}  // namespace

void lacp_defaults(View &v) {
    v.cfg->ifaces_ext.lacp_system_priority = 32768;
    for (layout::LacpPortConfig &c : v.cfg->ifaces_ext.lacp) {
        c.priority = 32768;
        c.key = 1;
    }
}

void lacp_reconcile(View &v) {
    bool changed = false;
    // Members that no longer qualify, or hear another partner than their
    // aggregate's first member, leave.
    for (int t = 0; t < SW_MAX_TRUNKS; ++t) {
        if (!formed(v, t)) continue;
        bool have_group = false;
        Group g{};
        for (auto [u, p] : trunk_members(v, t)) {
            const int phys = phys_index(u, p);
            const bool stays = eligible(v, phys) && (!have_group || group_of(v, phys) == g);
            if (stays && !have_group) {
                g = group_of(v, phys);
                have_group = true;
            }
            if (!stays) {
                ops::trunk_remove_port(v, t, u, p);
                ++v.hw->ifaces_ext.lacp[phys].actor_sync_transitions;
                changed = true;
            }
        }
        if (trunk_empty(v, t)) {
            ops::trunk_destroy(v, t);
            v.cfg->ifaces_ext.lacp_formed[t] = 0;
            changed = true;
        }
    }
    // Qualifying ports in no trunk join the aggregate of their group, or
    // start one in the first free trunk.
    for (int phys = 0; phys < kPhysPorts; ++phys) {
        const int u = phys / SW_PORTS_PER_UNIT, p = phys % SW_PORTS_PER_UNIT;
        if (!eligible(v, phys) || trunk_of_port(v, u, p) >= 0) continue;
        const Group g = group_of(v, phys);
        int target = -1;
        for (int t = 0; t < SW_MAX_TRUNKS && target < 0; ++t) {
            if (!formed(v, t)) continue;
            auto members = trunk_members(v, t);
            if (!members.empty() && group_of(v, phys_index(members[0].first, members[0].second)) == g) target = t;
        }
        for (int t = 0; t < SW_MAX_TRUNKS && target < 0; ++t) {
            if (v.cfg->trunks[t].configured) continue;
            ops::trunk_create(v, t, true);
            v.cfg->ifaces_ext.lacp_formed[t] = 1;
            target = t;
        }
        if (target < 0) continue;  // every trunk ID is in use
        ops::trunk_add_port(v, target, u, p);
        ++v.hw->ifaces_ext.lacp[phys].actor_sync_transitions;
        changed = true;
    }
    if (changed) v.hw->ifaces_ext.lacp_last_change = uptime_cs_now(v);
}

namespace {
// LACPDUs exchanged since the partner was first heard (whole periods).  In
// unsigned nanoseconds: the count and the time it spans never overflow,
// whatever the stored start says.
uint64_t periods_heard(const layout::LacpPartner &p, uint64_t *period) {
    *period = (p.state & SW_LACP_TIMEOUT) ? kFastPeriodNs : kSlowPeriodNs;
    return ns_since(p.since_ns) / *period;
}

// The counters' growth so far becomes their base, keeping the phase of the
// periodic LACPDUs.
void fold_counters(View &v, int phys) {
    const sw_lacp_port_t now = lacp_port(v, phys);
    layout::LacpPartner &p = v.hw->ifaces_ext.lacp[phys];
    for (int i = 0; i < SW_LACP_COUNTERS; ++i) p.counters[i] = now.counters[i];
    if (!p.present) return;
    uint64_t period;
    const uint64_t n = periods_heard(p, &period);
    p.since_ns = int64_t(uint64_t(p.since_ns) + n * period);  // at most now
    p.last_rx_cs += uint32_t(n * period / 10'000'000);
}
}  // namespace

void lacp_set_partner(View &v, int unit0, int port0, const Switch::LacpPartner &partner) {
    ops::check_port(v, unit0, port0);
    auto in16 = [](int x, const char *what) {
        if (x < 0 || x > 65535) throw Error(std::string(what) + " must be 0..65535");
        return uint16_t(x);
    };
    const int phys = phys_index(unit0, port0);
    layout::LacpPartner p{};
    p.system_priority = in16(partner.system_priority, "partner system priority");
    p.key = in16(partner.key, "partner key");
    p.port = in16(partner.port, "partner port");
    p.port_priority = in16(partner.port_priority, "partner port priority");
    std::memcpy(p.system, partner.system, 6);
    p.present = 1;
    p.state = SW_LACP_ACTIVITY | SW_LACP_SYNCHRONIZATION | SW_LACP_COLLECTING | SW_LACP_DISTRIBUTING |
              (partner.short_timeout ? SW_LACP_TIMEOUT : 0) | (partner.aggregatable ? SW_LACP_AGGREGATION : 0);
    p.since_ns = realtime_ns();
    p.last_rx_cs = uptime_cs_now(v);
    fold_counters(v, phys);
    const layout::LacpPartner &old = v.hw->ifaces_ext.lacp[phys];
    std::memcpy(p.counters, old.counters, sizeof p.counters);
    ++p.counters[SW_LACP_RX_LACPDU];  // the LACPDU that announced it
    p.actor_churns = old.actor_churns;
    p.partner_churns = old.partner_churns;
    p.actor_sync_transitions = old.actor_sync_transitions;
    p.partner_sync_transitions = old.partner_sync_transitions + (old.present ? 0 : 1);
    p.actor_changes = old.actor_changes;
    p.partner_changes = old.partner_changes + 1;
    v.hw->ifaces_ext.lacp[phys] = p;
    v.hw->ifaces_ext.lacp_last_change = p.last_rx_cs;
    lacp_reconcile(v);
}

void lacp_clear_partner(View &v, int unit0, int port0) {
    ops::check_port(v, unit0, port0);
    const int phys = phys_index(unit0, port0);
    fold_counters(v, phys);
    layout::LacpPartner &p = v.hw->ifaces_ext.lacp[phys];
    if (p.present) {
        // The partner falls silent: both sides see it churn.
        v.hw->ifaces_ext.lacp_last_change = uptime_cs_now(v);
        ++p.partner_churns;
        ++p.partner_sync_transitions;
        ++p.partner_changes;
        if (v.cfg->ifaces_ext.lacp[phys].enabled) ++p.actor_churns;
    }
    p.present = 0;
    lacp_reconcile(v);
}

void lacp_set_counter(View &v, int unit0, int port0, int counter, uint64_t value) {
    ops::check_port(v, unit0, port0);
    if (counter < 0 || counter >= SW_LACP_COUNTERS) throw Error("no LACP counter " + std::to_string(counter));
    const int phys = phys_index(unit0, port0);
    fold_counters(v, phys);  // the growth from now on adds to the value set
    v.hw->ifaces_ext.lacp[phys].counters[counter] = value;
}

sw_lacp_port_t lacp_port(const View &v, int phys) {
    const layout::LacpPortConfig &c = v.cfg->ifaces_ext.lacp[phys];
    const layout::LacpPartner &hw = v.hw->ifaces_ext.lacp[phys];
    const int u = phys / SW_PORTS_PER_UNIT, p = phys % SW_PORTS_PER_UNIT;
    const bool partner = hears_partner(v, phys);
    const bool in_trunk = trunk_of_port(v, u, p) >= 0 && port_up(v, phys);
    sw_lacp_port_t r{};
    r.enabled = c.enabled;
    r.actor_port_priority = c.priority;
    r.actor_key = c.key;
    r.actor_state = SW_LACP_AGGREGATION | (c.enabled ? SW_LACP_ACTIVITY : 0u);
    if (c.enabled && !partner) r.actor_state |= SW_LACP_DEFAULTED;
    if (in_trunk && (partner || !c.enabled))
        r.actor_state |= SW_LACP_SYNCHRONIZATION | SW_LACP_COLLECTING | SW_LACP_DISTRIBUTING;
    for (int i = 0; i < SW_LACP_COUNTERS; ++i) r.counters[i] = hw.counters[i];
    r.actor_churns = hw.actor_churns;
    r.partner_churns = hw.partner_churns;
    r.actor_sync_transitions = hw.actor_sync_transitions;
    r.partner_sync_transitions = hw.partner_sync_transitions;
    r.actor_changes = hw.actor_changes;
    r.partner_changes = hw.partner_changes;
    if (!partner) return r;
    r.partner_present = 1;
    r.partner_system_priority = hw.system_priority;
    std::memcpy(r.partner_system, hw.system, 6);
    r.partner_key = hw.key;
    r.partner_port = hw.port;
    r.partner_port_priority = hw.port_priority;
    r.partner_state = hw.state;
    // LACPDUs flow both ways at the rate the partner asks for.
    uint64_t period;
    const uint64_t n = periods_heard(hw, &period);
    r.counters[SW_LACP_RX_LACPDU] += n;
    if (c.enabled) r.counters[SW_LACP_TX_LACPDU] += n;
    r.last_rx_cs = hw.last_rx_cs + uint32_t(n * period / 10'000'000);
    return r;
}

}  // namespace model

namespace ifaces_impl {

int cfg_get_lacp_port(const View &v, int unit0, int port0, sw_lacp_port_t *info) {
    const int phys = model::phys_of(v, unit0, port0);
    if (phys < 0 || !info) return -1;
    *info = model::lacp_port(v, phys);
    return 0;
}

int cfg_set_lacp_port_enable(const View &v, int unit0, int port0, int enabled) {
    const int phys = model::phys_of(v, unit0, port0);
    if (phys < 0 || (enabled != 0 && enabled != 1)) return -1;
    if (v.cfg->ifaces_ext.lacp[phys].enabled != enabled) {
        v.cfg->ifaces_ext.lacp[phys].enabled = uint8_t(enabled);
        ++v.hw->ifaces_ext.lacp[phys].actor_changes;
        v.hw->ifaces_ext.lacp_last_change = model::uptime_cs_now(v);
    }
    return apply(v, [](View &m) { model::lacp_reconcile(m); });
}

int cfg_set_lacp_port_priority(const View &v, int unit0, int port0, int priority) {
    const int phys = model::phys_of(v, unit0, port0);
    if (phys < 0 || priority < 0 || priority > 65535) return -1;
    v.cfg->ifaces_ext.lacp[phys].priority = uint16_t(priority);
    ++v.hw->ifaces_ext.lacp[phys].actor_changes;
    v.hw->ifaces_ext.lacp_last_change = model::uptime_cs_now(v);
    return 0;
}

int cfg_get_lacp_system_priority(const View &v) { return v.cfg->ifaces_ext.lacp_system_priority; }

int cfg_set_lacp_system_priority(const View &v, int priority) {
    if (priority < 0 || priority > 65535) return -1;
    v.cfg->ifaces_ext.lacp_system_priority = uint16_t(priority);
    v.hw->ifaces_ext.lacp_last_change = model::uptime_cs_now(v);
    return 0;
}

int cfg_get_lacp_last_change(const View &v, uint32_t *cs) {
    if (!cs) return -1;
    *cs = v.hw->ifaces_ext.lacp_last_change;
    return 0;
}

}  // namespace ifaces_impl

}  // namespace swsim
