// Interfaces and trunks: link up/down notification switches, error-blocked
// ports, VLAN names and the trunk configuration calls.
#include "ifaces.hpp"

#include "model.hpp"
#include "util.hpp"

extern "C" {
uint32_t uptime_ifTableLastChange = 0;
}

namespace swsim {

namespace model {

void note_iface_change(View &v) {
    const int64_t up = realtime_ns() - v.rt->boot_realtime_ns;
    v.hw->ifaces_ext.if_table_last_change = up <= 0 ? 0 : uint32_t(up / 10'000'000);
}

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

int cfg_set_vlan_name(const View &v, int vid, const char *name) {
    if (!model::vid_in_range(vid) || !v.cfg->vlans[vid].exists || !name) return -1;
    char(&dst)[SW_TEXT_SIZE] = v.cfg->vlans[vid].name;
    if (strnlen(name, sizeof dst) >= sizeof dst) return -1;
    copy_text(dst, sizeof dst, name);
    return 0;
}

int cfg_trunk_count_link_up(const View &v, int trunk0) {
    if (!trunk_configured(v, trunk0)) return -1;
    int up = 0;
    for (int u = 0; u < SW_MAX_UNITS; ++u)
        for (int p = 0; p < SW_PORTS_PER_UNIT; ++p)
            if (model::trunk_has(v, trunk0, u, p) && v.status->units[u].ports[p].link) ++up;
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
}  // namespace swsim
