// swsim::Switch: a control handle on a live state file.
#include <cstdlib>
#include <chrono>
#include <cstring>
#include <thread>

#include "chassis.hpp"
#include "hooks.hpp"
#include "ifaces.hpp"
#include "l2proto.hpp"
#include "lldp.hpp"
#include "locks.hpp"
#include "model.hpp"
#include "rmon.hpp"
#include "routing.hpp"
#include "shared_atomic.hpp"
#include "traffic.hpp"
#include "services.hpp"
#include "auth.hpp"
#include "files.hpp"
#include "filters.hpp"
#include "cfm.hpp"
#include "traps.hpp"
#include "util.hpp"
#include "vlans.hpp"

namespace swsim {

namespace {
// The configuration lock of cfg_lock_table that changes from outside take.
constexpr int kConfigLock = 2;
}  // namespace

bool statistic_settable(int stat) { return model::stat_settable(stat); }

std::string default_state_path() {
    const char *env = std::getenv("SWSIM_STATE");
    return env && *env ? env : kDefaultStatePath;
}

struct Switch::Impl {
    std::unique_ptr<StateFile> file;
    cfg_lock lock{};

    View &v() { return file->view(); }
    const View &v() const { return file->view(); }

    // Runs a change under the configuration write lock; the links it
    // changed are notified to the trap destinations once it is done.
    template <class Change>
    void change(Change body) {
        traps::Outbox notifications;
        {
            locks::WriteGuard guard(lock, file->fd());
            const traps::LinkWatch links(v());
            body(v());
            links.collect(v(), notifications);
        }
        notifications.send(v());
    }
};

Switch::Switch(const std::string &state_path) : impl_(std::make_unique<Impl>()) {
    impl_->file = StateFile::open(state_path);
    locks::init(impl_->lock, kConfigLock);
}

Switch::~Switch() = default;

const std::string &Switch::path() const { return impl_->file->path(); }

// ---- hardware events -----------------------------------------------------------------

void Switch::set_unit_present(int unit0, bool present) {
    impl_->change([&](View &v) { model::ops::set_unit_present(v, unit0, present); });
}
void Switch::set_link(int unit0, int port0, bool up) {
    impl_->change([&](View &v) { model::ops::set_link(v, unit0, port0, up); });
}
void Switch::set_link_speed(int unit0, int port0, int mbps, bool full_duplex) {
    impl_->change([&](View &v) { model::ops::set_link_speed(v, unit0, port0, mbps, full_duplex); });
}
void Switch::trunk_create(int trunk0, bool dynamic) {
    impl_->change([&](View &v) { model::ops::trunk_create(v, trunk0, dynamic); });
}
void Switch::trunk_destroy(int trunk0) {
    impl_->change([&](View &v) { model::ops::trunk_destroy(v, trunk0); });
}
void Switch::trunk_add_port(int trunk0, int unit0, int port0) {
    impl_->change([&](View &v) { model::ops::trunk_add_port(v, trunk0, unit0, port0); });
}
void Switch::trunk_remove_port(int trunk0, int unit0, int port0) {
    impl_->change([&](View &v) { model::ops::trunk_remove_port(v, trunk0, unit0, port0); });
}
void Switch::vlan_create(int vid, const std::string &name, bool dynamic) {
    impl_->change([&](View &v) { model::ops::vlan_create(v, vid, name, dynamic); });
}
void Switch::vlan_delete(int vid) {
    impl_->change([&](View &v) { model::ops::vlan_delete(v, vid); });
}
void Switch::vlan_set_member(int vid, int unit0, int port0, uint32_t flags) {
    impl_->change([&](View &v) { model::ops::vlan_set_member(v, vid, unit0, port0, flags); });
}
void Switch::fdb_add(const uint8_t mac[6], int vid, int unit0, int port0, int trunk0, bool is_static) {
    impl_->change([&](View &v) { model::ops::fdb_add(v, mac, vid, unit0, port0, trunk0, is_static); });
}
void Switch::fdb_clear() {
    impl_->change([&](View &v) { model::ops::fdb_clear(v); });
}
void Switch::set_counter(int unit0, int port0, int stat, uint64_t value) {
    impl_->change([&](View &v) { model::ops::set_counter(v, unit0, port0, stat, value); });
}
void Switch::set_traffic(int unit0, int port0, uint64_t packets_per_second) {
    impl_->change([&](View &v) { model::ops::set_traffic(v, unit0, port0, packets_per_second); });
}
void Switch::set_transceiver(int unit0, int port0, bool fitted, const Ddm &readings) {
    impl_->change([&](View &v) { model::ops::set_transceiver(v, unit0, port0, fitted, readings); });
}

// ---- operator configuration ------------------------------------------------------------

void Switch::set_hostname(const std::string &name) {
    impl_->change([&](View &v) { model::ops::set_text(v.cfg->hostname, sizeof v.cfg->hostname, name, "host name"); });
}
void Switch::set_port_description(int unit0, int port0, const std::string &text) {
    impl_->change([&](View &v) { model::ops::set_port_description(v, unit0, port0, text); });
}
void Switch::set_port_admin(int unit0, int port0, bool enabled) {
    impl_->change([&](View &v) { model::ops::set_port_admin(v, unit0, port0, enabled); });
}
void Switch::set_port_speed(int unit0, int port0, int mbps) {
    impl_->change([&](View &v) { model::ops::set_port_speed(v, unit0, port0, mbps); });
}
void Switch::set_clock_offset(int64_t seconds) {
    if (seconds < -layout::kMaxClockS || seconds > layout::kMaxClockS)
        throw Error("clock offset " + std::to_string(seconds) + " s would take the clock past the years 1970 .. 9999");
    impl_->change([&](View &v) { shared::store(v.rt->clock_offset_s, int64_t(seconds), __ATOMIC_RELAXED); });
}

// ---- faults and journal ------------------------------------------------------------------

void Switch::fault_set(const std::string &call, int result, int times) {
    impl_->change([&](View &v) { hooks::fault_set(*v.rt, call, result, times); });
}
void Switch::fault_clear(const std::string &call) {
    impl_->change([&](View &v) { hooks::fault_clear(*v.rt, call); });
}
std::vector<FaultInfo> Switch::faults() const { return hooks::fault_list(*impl_->v().rt); }
void Switch::journal_enable(bool on) { hooks::journal_enable(*impl_->v().rt, on); }
bool Switch::journal_enabled() const { return hooks::journal_enabled(*impl_->v().rt); }
void Switch::journal_clear() { hooks::journal_clear(*impl_->v().rt); }
std::vector<JournalEntry> Switch::journal() const { return hooks::journal_read(impl_->v()); }

// ---- reads ----------------------------------------------------------------------------------

UnitInfo Switch::unit(int unit0) const {
    if (!model::unit_in_range(unit0)) throw Error("no unit " + std::to_string(human(unit0)) + " (units are 1..8)");
    const sw_unit_status_t &u = impl_->v().status->units[unit0];
    return UnitInfo{u.status2 != 0,     u.present != 0,       u.is_mpu != 0,       int(u.user_ports),
                    text_of(u.model), text_of(u.serial), text_of(u.version), text_of(u.build_date)};
}

PortInfo Switch::port(int unit0, int port0) const {
    const View &v = impl_->v();
    const int iface = model::ops::check_iface(v, unit0, port0);
    const layout::IfaceConfig &c = v.cfg->ifaces[iface];
    const sw_port_info_t live = model::port_info(v, iface);
    PortInfo info;
    info.link = live.link;
    info.speed = int(live.speed);
    info.full_duplex = live.duplex;
    info.admin = c.admin;
    info.config_speed = int(c.speed);
    info.mtu = int(c.mtu);
    info.type = int(c.type);
    info.description = text_of(c.description);
    if (!model::is_trunk_iface(iface)) {
        const layout::PortHardware &hw = v.hw->ports[iface];
        info.carrier = hw.carrier;
        info.trunk0 = model::trunk_of_port(v, unit0, port0);
        info.sfp_slot = hw.sfp_slot;
        info.sfp_fitted = v.status->units[unit0].ports[port0].sfp_present;
        info.traffic_pps = model::offered_load(v, iface);
    }
    return info;
}

TrunkInfo Switch::trunk(int trunk0) const {
    model::ops::check_trunk_id(trunk0);
    const View &v = impl_->v();
    const layout::TrunkConfig &t = v.cfg->trunks[trunk0];
    return TrunkInfo{t.configured != 0, t.dynamic != 0, model::trunk_members(v, trunk0)};
}

VlanInfo Switch::vlan(int vid) const {
    model::ops::check_vid(vid);
    const View &v = impl_->v();
    const layout::VlanConfig &c = v.cfg->vlans[vid];
    VlanInfo info{c.exists != 0, c.active != 0, c.dynamic != 0, text_of(c.name), {}};
    for (int i = 0; i < layout::kIfaces; ++i) {
        uint32_t flags = v.cfg->members[vid][i];
        if (!flags) continue;
        if (model::is_trunk_iface(i))
            info.members.push_back({0, layout::kTrunkPortBase + i - layout::kPhysPorts, flags});
        else
            info.members.push_back({i / SW_PORTS_PER_UNIT, i % SW_PORTS_PER_UNIT, flags});
    }
    return info;
}

std::vector<int> Switch::vlan_ids() const {
    std::vector<int> ids;
    for (int vid = 1; vid <= SW_MAX_VLAN_ID; ++vid)
        if (impl_->v().cfg->vlans[vid].exists) ids.push_back(vid);
    return ids;
}

std::vector<FdbInfo> Switch::fdb() const {
    const layout::Fdb &t = *impl_->v().fdb;
    std::vector<FdbInfo> out;
    for (uint32_t i = 0; i < std::min<uint32_t>(t.count, layout::kFdbCapacity); ++i) {
        const layout::FdbEntry &e = t.entries[i];
        FdbInfo f{};
        std::memcpy(f.mac, e.mac, 6);
        f.vid = e.vid;
        f.unit0 = e.unit;
        f.port0 = e.port;
        f.trunk0 = (e.flags & swp::mac_entry::kFlagTrunk) ? e.trunk : -1;
        f.is_static = e.flags & swp::mac_entry::kFlagStatic;
        out.push_back(f);
    }
    return out;
}

SystemInfo Switch::system() const {
    const View &v = impl_->v();
    SystemInfo s;
    s.hostname = text_of(v.cfg->hostname);
    s.contact = text_of(v.cfg->contact);
    s.location = text_of(v.cfg->location);
    s.tz_name = text_of(v.cfg->tz_name);
    s.fw_version = text_of(v.status->fw_version);
    s.tz_offset_min = v.cfg->tz_offset_min;
    s.mac_ageing = v.cfg->mac_ageing;
    int64_t up = model::realtime_ns() - v.rt->boot_realtime_ns;
    s.uptime_s = up > 0 ? uint32_t(up / 1'000'000'000) : 0;
    s.clock_offset_s = v.rt->clock_offset_s;
    return s;
}

uint64_t Switch::counter(int unit0, int port0, int stat) const {
    const View &v = impl_->v();
    const int iface = model::ops::check_iface(v, unit0, port0);
    if (stat < 0 || stat >= SW_MAX_STATISTIC) throw Error("no statistic " + std::to_string(stat) + " (0..95)");
    return model::counter(v, iface, stat);
}

void Switch::save() { impl_->file->sync(); }

// ---- vlans ----

void Switch::vlan_register(int vid, int unit0, int port0, bool on, uint32_t flags) {
    impl_->change([&](View &v) { vlans::set_dynamic_member(v, vid, unit0, port0, flags, on); });
}
void Switch::vlan_set_active(int vid, bool active) {
    impl_->change([&](View &v) { vlans::set_active(v, vid, active); });
}

// ---- transceivers and traffic controls ------------------------------------------------------

void Switch::set_transceiver_readings(int unit0, int port0, const Ddm &readings) {
    impl_->change([&](View &v) { traffic::ops::set_transceiver_readings(v, unit0, port0, readings); });
}
void Switch::set_transceiver_diagnostics(int unit0, int port0, bool available) {
    impl_->change([&](View &v) { traffic::ops::set_transceiver_diagnostics(v, unit0, port0, available); });
}
Switch::TransceiverInfo Switch::transceiver(int unit0, int port0) const {
    return traffic::transceiver_info(impl_->v(), unit0, port0);
}
void Switch::set_rate_limit(int unit0, int port0, Direction direction, uint32_t kbps, uint32_t burst_kb) {
    impl_->change([&](View &v) { traffic::ops::set_rate_limit(v, unit0, port0, direction, kbps, burst_kb); });
}
void Switch::set_storm_control(int unit0, int port0, bool enabled, uint32_t pps) {
    impl_->change([&](View &v) { traffic::ops::set_storm_control(v, unit0, port0, enabled, pps); });
}
void Switch::set_mirror(int unit0, int port0, int mode) {
    impl_->change([&](View &v) { traffic::ops::set_mirror(v, unit0, port0, mode); });
}
void Switch::set_mirror_to(int unit0, int port0) {
    impl_->change([&](View &v) { traffic::ops::set_mirror_to(v, unit0, port0); });
}
std::pair<int, int> Switch::mirror_to() const {
    const layout::TrafficConfig &t = impl_->v().cfg->traffic;
    return t.mirror_to_set ? std::pair{int(t.mirror_to_unit0), int(t.mirror_to_port0)} : std::pair{-1, -1};
}
void Switch::set_queue_counter(int unit0, int port0, QueueCounter kind, int queue, uint64_t value) {
    impl_->change([&](View &v) { traffic::ops::set_queue_counter(v, unit0, port0, kind, queue, value); });
}
Switch::TrafficInfo Switch::traffic(int unit0, int port0) const {
    return traffic::traffic_info(impl_->v(), unit0, port0);
}
// ---- layer-2 protocols ----

void Switch::stp_topology_change() {
    impl_->change([&](View &v) { l2proto::ops::stp_topology_change(v); });
}
void Switch::stp_set_port_state(int unit0, int port0, int state) {
    impl_->change([&](View &v) { l2proto::ops::stp_set_port_state(v, unit0, port0, state); });
}
void Switch::stp_set_root(const StpRoot &root) {
    impl_->change([&](View &v) { l2proto::ops::stp_set_root(v, root); });
}
void Switch::stp_become_root() {
    impl_->change([&](View &v) { l2proto::ops::stp_become_root(v); });
}
void Switch::stp_set_port(int unit0, int port0, const StpPortSettings &settings) {
    impl_->change([&](View &v) { l2proto::ops::stp_set_port(v, unit0, port0, settings); });
}
Switch::StpInfo Switch::stp() const { return l2proto::stp_info(impl_->v()); }
Switch::StpPortInfo Switch::stp_port(int unit0, int port0) const {
    return l2proto::stp_port_info(impl_->v(), unit0, port0);
}
void Switch::igmp_set_group_port(int vid, uint32_t group, int unit0, int port0, bool member) {
    impl_->change([&](View &v) { l2proto::ops::igmp_set_group_port(v, vid, group, unit0, port0, member); });
}
void Switch::igmp_set_router_port(int vid, int unit0, int port0, bool on) {
    impl_->change([&](View &v) { l2proto::ops::igmp_set_router_port(v, vid, unit0, port0, on); });
}
std::vector<Switch::IgmpGroupInfo> Switch::igmp_groups() const { return l2proto::igmp_groups(impl_->v()); }
std::vector<std::pair<int, int>> Switch::igmp_router_ports(int vid) const {
    return l2proto::igmp_router_ports(impl_->v(), vid);
}
void Switch::eaps_create(int id, const std::string &name, bool master, uint32_t state) {
    impl_->change([&](View &v) { l2proto::ops::eaps_create(v, id, name, master, state); });
}
void Switch::eaps_delete(int id) {
    impl_->change([&](View &v) { l2proto::ops::eaps_delete(v, id); });
}
void Switch::eaps_set_state(int id, uint32_t state) {
    impl_->change([&](View &v) { l2proto::ops::eaps_set_state(v, id, state); });
}
Switch::EapsInfo Switch::eaps(int id) const { return l2proto::eaps_info(impl_->v(), id); }

// ---- interfaces ----

void Switch::set_error_blocked(int unit0, int port0, bool blocked) {
    impl_->change([&](View &v) {
        model::ops::check_port(v, unit0, port0);
        v.hw->ifaces_ext.error_blocked[model::phys_index(unit0, port0)] = blocked ? 1 : 0;
    });
}
bool Switch::error_blocked(int unit0, int port0) const {
    const View &v = impl_->v();
    model::ops::check_port(v, unit0, port0);
    return v.hw->ifaces_ext.error_blocked[model::phys_index(unit0, port0)] != 0;
}
bool Switch::trap_enabled(int unit0, int port0) const {
    const View &v = impl_->v();
    return v.cfg->ifaces_ext.trap_disabled[model::ops::check_iface(v, unit0, port0)] == 0;
}
uint32_t Switch::if_table_last_change() const { return impl_->v().hw->ifaces_ext.if_table_last_change; }

void Switch::lacp_set_partner(int unit0, int port0, const LacpPartner &partner) {
    impl_->change([&](View &v) { model::lacp_set_partner(v, unit0, port0, partner); });
}
void Switch::lacp_clear_partner(int unit0, int port0) {
    impl_->change([&](View &v) { model::lacp_clear_partner(v, unit0, port0); });
}
void Switch::lacp_enable(int unit0, int port0, bool enabled) {
    impl_->change([&](View &v) {
        model::ops::check_port(v, unit0, port0);
        ifaces_impl::cfg_set_lacp_port_enable(v, unit0, port0, enabled ? 1 : 0);
    });
}
void Switch::lacp_set_key(int unit0, int port0, int key) {
    impl_->change([&](View &v) {
        model::ops::check_port(v, unit0, port0);
        if (key < 1 || key > 65535) throw Error("LACP key must be 1..65535");
        v.cfg->ifaces_ext.lacp[model::phys_index(unit0, port0)].key = uint16_t(key);
        ++v.hw->ifaces_ext.lacp[model::phys_index(unit0, port0)].actor_changes;
        model::lacp_reconcile(v);
    });
}
void Switch::lacp_set_counter(int unit0, int port0, int counter, uint64_t value) {
    impl_->change([&](View &v) { model::lacp_set_counter(v, unit0, port0, counter, value); });
}
int Switch::lacp_counter_number(const std::string &name) {
    static const char *const names[SW_LACP_COUNTERS] = {"rx_lacpdu",  "rx_marker", "rx_marker_response",
                                                        "rx_unknown", "rx_illegal", "tx_lacpdu",
                                                        "tx_marker",  "tx_marker_response"};
    for (int i = 0; i < SW_LACP_COUNTERS; ++i)
        if (name == names[i]) return i;
    throw Error("'" + name + "' is not an LACP counter (rx_lacpdu, rx_marker, rx_marker_response, rx_unknown, "
                "rx_illegal, tx_lacpdu, tx_marker, tx_marker_response)");
}
sw_lacp_port_t Switch::lacp_port(int unit0, int port0) const {
    const View &v = impl_->v();
    model::ops::check_port(v, unit0, port0);
    return model::lacp_port(v, model::phys_index(unit0, port0));
}

// ---- chassis ----

void Switch::set_module(ModuleKind kind, int unit0, int position0, int state, const std::string &model) {
    impl_->change([&](View &v) { chassis::ops::set_module(v, kind, unit0, position0, state, model); });
}
sw_module_status_t Switch::module(ModuleKind kind, int unit0, int position0) const {
    return chassis::module(impl_->v(), kind, unit0, position0);
}
void Switch::set_alarm_input(int unit0, int input0, bool raised) {
    impl_->change([&](View &v) { chassis::ops::set_alarm_input(v, unit0, input0, raised); });
}
void Switch::set_alarm_output(int output0, bool forced) {
    impl_->change([&](View &v) { chassis::ops::set_alarm_output(v, output0, forced); });
}
void Switch::set_load(int unit0, const Load &load) {
    impl_->change([&](View &v) { chassis::ops::set_load(v, unit0, load); });
}
void Switch::set_temperature(int unit0, int celsius) {
    impl_->change([&](View &v) { chassis::ops::set_temperature(v, unit0, celsius); });
}
void Switch::set_uptime_cs(uint64_t cs) {
    impl_->change([&](View &v) { chassis::ops::set_uptime_cs(v, cs); });
}
// No lock: a count that is held waits on this without taking one, and the
// agent may be inside a request.
void Switch::set_mac_summary(uint32_t delay_ms, bool hold) { chassis::ops::set_mac_summary(impl_->v(), delay_ms, hold); }
void Switch::set_device_info(const DeviceInfo &info) {
    impl_->change([&](View &v) { chassis::ops::set_device_info(v, info); });
}
Switch::DeviceInfo Switch::device_info() const { return chassis::device_info(impl_->v()); }
sw_chassis_info_t Switch::chassis() const {
    sw_chassis_info_t info{};
    chassis::calls::cfg_chassis_get_info(impl_->v(), &info);
    return info;
}
Switch::UnitEnvironment Switch::environment(int unit0) const {
    const View &v = impl_->v();
    if (!model::unit_in_range(unit0) || !v.status->units[unit0].present)
        throw Error("unit " + std::to_string(human(unit0)) + " is not present");
    UnitEnvironment e;
    e.mpu_role = chassis::calls::cfg_chassis_get_mpu_role(v, unit0);
    chassis::calls::cfg_chassis_get_temperature(v, unit0, &e.temperature_c);
    chassis::calls::cfg_cpumon_get_cpu_info(v, unit0, SW_CPUMON_ACTIVE, &e.cpu);
    chassis::calls::cfg_cpumon_get_cpu_mem_info(v, unit0, SW_CPUMON_ACTIVE, &e.mem);
    for (int a = 0; a < SW_MAX_ALARM_INPUTS; ++a) {
        int raised = 0;
        if (chassis::calls::cfg_chassis_get_alarm_input(v, unit0, a, &raised) == 0 && raised) e.alarms_raised |= 1u << a;
    }
    return e;
}
bool Switch::alarm_output(int output0) const {
    int active = 0;
    if (chassis::calls::cfg_chassis_get_alarm_output(impl_->v(), output0, &active) != 0)
        throw Error("the stack has no alarm output " + std::to_string(human(output0)));
    return active != 0;
}

// ---- LLDP ----

int32_t Switch::lldp_hear(int unit0, int port0, const LldpNeighbour &neighbour) {
    int32_t index = 0;
    impl_->change([&](View &v) { index = lldp::ops::hear(v, lldp::ops::slot_of(v, unit0, port0), neighbour); });
    return index;
}
void Switch::lldp_change(int unit0, int port0, int32_t remote_index, const LldpNeighbour &neighbour) {
    impl_->change([&](View &v) { lldp::ops::change(v, lldp::ops::slot_of(v, unit0, port0), remote_index, neighbour); });
}
void Switch::lldp_remove(int unit0, int port0, int32_t remote_index, bool aged) {
    impl_->change([&](View &v) { lldp::ops::remove(v, lldp::ops::slot_of(v, unit0, port0), remote_index, aged); });
}
std::vector<Switch::LldpNeighbour> Switch::lldp_neighbours(int unit0, int port0) const {
    const View &v = impl_->v();
    return lldp::neighbours(v, lldp::ops::slot_of(v, unit0, port0));
}
int Switch::lldp_import(const std::string &json_text, const std::vector<LldpImportTarget> &targets) {
    int heard = 0;
    impl_->change([&](View &v) { heard = lldp::ops::import_lldpd(v, json_text, targets); });
    return heard;
}

// ---- routing ----------------------------------------------------------------------------------

void Switch::ip_addr_add(int vid, uint32_t addr, int prefix_len) {
    impl_->change([&](View &v) { routing::ops::ip_addr_add(v, vid, addr, prefix_len); });
}
void Switch::ip_addr_remove(uint32_t addr) {
    impl_->change([&](View &v) { routing::ops::ip_addr_remove(v, addr); });
}
std::vector<sw_ip_iface_t> Switch::ip_addrs() const { return routing::ip_addrs(impl_->v()); }
void Switch::route_add(const Route &route) {
    impl_->change([&](View &v) { routing::ops::route_add(v, route); });
}
void Switch::route_remove(uint32_t dest, int prefix_len, uint32_t next_hop) {
    impl_->change([&](View &v) { routing::ops::route_remove(v, dest, prefix_len, next_hop); });
}
std::vector<sw_route_t> Switch::routes() const { return routing::routes(impl_->v()); }
void Switch::ospf_set_neighbor_state(uint32_t addr, int state) {
    impl_->change([&](View &v) { routing::ops::ospf_set_neighbor_state(v, addr, state); });
}
std::vector<sw_ospf_nbr_t> Switch::ospf_neighbors() const { return routing::ospf_neighbors(impl_->v()); }
void Switch::ospf_age_lsas(uint32_t seconds, uint32_t type) {
    impl_->change([&](View &v) { routing::ops::ospf_age_lsas(v, seconds, type); });
}
std::vector<sw_ospf_lsa_t> Switch::ospf_lsas() const { return routing::ospf_lsas(impl_->v()); }
void Switch::vrrp_set_state(int vid, int vrid, int state) {
    impl_->change([&](View &v) { routing::ops::vrrp_set_state(v, vid, vrid, state); });
}
std::vector<sw_vrrp_router_t> Switch::vrrp_routers() const { return routing::vrrp_routers(impl_->v()); }
Switch::FrrImport Switch::import_frr(const std::string &routes_json, const std::string &neighbors_json,
                                     const std::vector<std::pair<std::string, int>> &vlans) {
    FrrImport result;
    impl_->change([&](View &v) { result = routing::ops::import_frr(v, routes_json, neighbors_json, vlans); });
    return result;
}
// ---- trap service ---------------------------------------------------------------------------

void Switch::trap_add(const std::string &address, const std::string &community, int version) {
    impl_->change([&](View &v) { traps::ops::add_destination(v, address, community, version); });
}
void Switch::trap_remove(const std::string &address) {
    impl_->change([&](View &v) { traps::ops::remove_destination(v, address); });
}
void Switch::set_trap_port(int port) {
    impl_->change([&](View &v) { traps::ops::set_port(v, port); });
}
void Switch::set_trap_beyond_loopback(bool allowed) {
    impl_->change([&](View &v) { traps::ops::set_beyond_loopback(v, allowed); });
}
Switch::TrapInfo Switch::traps() const { return traps::info(impl_->v()); }

// Raised without the configuration lock: the callbacks of an agent in this
// process may take it.
void Switch::report_login_failure(int service, const std::string &peer) {
    if (service < SW_SERVICE_WEB || service > SW_SERVICE_CONSOLE)
        throw Error("service " + std::to_string(service) + " (1 web, 2 telnet, 3 ssh, 4 console)");
    traps::raise_authentication_failure(impl_->v(), service, peer.c_str());
}
void Switch::report_rmon_alarm(const RmonAlarmNotice &a) {
    if (a.variable.empty() || a.variable.size() > 128)
        throw Error("an alarm's variable is an OID of 1..128 sub-identifiers");
    traps::raise_rmon_alarm(impl_->v(), a.alarm_index, a.rising, a.variable.data(), a.variable.size(), a.sample_type,
                            a.value, a.threshold);
}

// ---- management services ----------------------------------------------------------------------

Switch::ServicesInfo Switch::services() const { return services::info(impl_->v()); }
void Switch::service_set(const std::string &setting, const std::string &value) {
    impl_->change([&](View &v) { services::set(v, setting, value); });
}
void Switch::service_add(const std::string &list, const std::string &value) {
    impl_->change([&](View &v) { services::list_add(v, list, value); });
}
void Switch::service_remove(const std::string &list, const std::string &value) {
    impl_->change([&](View &v) { services::list_remove(v, list, value); });
}
void Switch::ssh_keys(const std::string &kind, bool create) {
    impl_->change([&](View &v) { services::ssh_keys(v, kind, create); });
}
const std::vector<Switch::ServiceSetting> &Switch::service_settings() { return services::settings(); }
const std::vector<Switch::ServiceSetting> &Switch::service_lists() { return services::lists(); }

// ---- port authentication ----------------------------------------------------------------------

void Switch::dot1x_start(int unit0, int port0, const std::string &user, const uint8_t mac[6]) {
    impl_->change([&](View &v) { auth::ops::supplicant_start(v, unit0, port0, user, mac); });
}
void Switch::dot1x_answer(int unit0, int port0, bool accept) {
    impl_->change([&](View &v) { auth::ops::radius_answer(v, unit0, port0, accept); });
}
void Switch::dot1x_logoff(int unit0, int port0) {
    impl_->change([&](View &v) { auth::ops::supplicant_logoff(v, unit0, port0); });
}
void Switch::radius_server_down(int slot, bool down) {
    impl_->change([&](View &v) { auth::ops::set_server_down(v, slot, down); });
}
Switch::Dot1xPortInfo Switch::dot1x_port(int unit0, int port0) const { return auth::port_info(impl_->v(), unit0, port0); }
std::vector<Switch::RadiusServerInfo> Switch::radius_servers() const { return auth::radius_info(impl_->v()); }

// ---- file store, TFTP and restarts --------------------------------------------------------------

Switch::FilesInfo Switch::files() const { return files::info(impl_->v()); }
std::vector<uint8_t> Switch::file_bytes(int kind, int slot) const { return files::file_bytes(impl_->v(), kind, slot); }
void Switch::file_store(int kind, int slot, const std::string &name, const std::vector<uint8_t> &bytes) {
    impl_->change([&](View &v) { files::ops::store(v, kind, slot, name, bytes); });
}
void Switch::set_tftp_port(int port) {
    impl_->change([&](View &v) { files::ops::set_tftp_port(v, port); });
}

// ---- packet filters ---------------------------------------------------------------------------

void Switch::filter_set(int direction, int filter0, const FilterSettings &settings) {
    impl_->change([&](View &v) { filters::ops::set(v, direction, filter0, settings); });
}
void Switch::filter_remove(int direction, int filter0) {
    impl_->change([&](View &v) { filters::ops::remove(v, direction, filter0); });
}

// ---- CFM delay measurement probes ----------------------------------------------------------------

void Switch::cfm_probe_add(const CfmProbeSettings &settings) {
    impl_->change([&](View &v) { cfm::ops::add(v, settings); });
}
void Switch::cfm_probe_remove(uint32_t id) {
    impl_->change([&](View &v) { cfm::ops::remove(v, id); });
}
std::vector<Switch::CfmProbeInfo> Switch::cfm_probes() const { return cfm::info(impl_->v()); }

}  // namespace swsim

// ---- RMON engine ------------------------------------------------------------------------------

namespace swsim {
namespace {
// A request answered by the engine's thread in the agent, or by this process
// while the engine is paused.  Clear-all walks the agent over SNMP: it may
// take a while under load.
int rmon_request(View &v, int32_t kind, int32_t arg) {
    const uint32_t seq = rmon::ops::post(v, kind, arg);
    if (__atomic_load_n(&v.hw->rmon.paused, __ATOMIC_ACQUIRE)) {
        rmon::serve_request(v);
    } else {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (int32_t(__atomic_load_n(&v.hw->rmon.done_seq, __ATOMIC_ACQUIRE) - seq) < 0) {
            if (std::chrono::steady_clock::now() > deadline)
                throw Error("no RMON engine answered (the agent registers it when it starts)");
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    return v.hw->rmon.result;
}
}  // namespace

Switch::RmonInfo Switch::rmon() const { return rmon::info(impl_->v()); }
void Switch::rmon_pause(bool paused) { rmon::ops::set_paused(impl_->v(), paused); }
void Switch::rmon_add_statistic(int32_t index, int unit0, int port0, const std::string &owner) {
    impl_->change([&](View &v) { rmon::ops::add_statistic(v, index, unit0, port0, owner); });
}
void Switch::rmon_add_history(int32_t index, int unit0, int port0, int interval_s, int buckets, const std::string &owner) {
    impl_->change([&](View &v) { rmon::ops::add_history(v, index, unit0, port0, interval_s, buckets, owner); });
}
void Switch::rmon_add_alarm(const RmonAlarm &alarm) {
    impl_->change([&](View &v) { rmon::ops::add_alarm(v, alarm); });
}
void Switch::rmon_add_event(const RmonEvent &event) {
    impl_->change([&](View &v) { rmon::ops::add_event(v, event); });
}
void Switch::rmon_set_script(int number, const std::string &name, const std::string &commands, bool enabled) {
    impl_->change([&](View &v) { rmon::ops::set_script(v, number, name, commands, enabled); });
}
void Switch::rmon_take_samples(int32_t index, int count) {
    impl_->change([&](View &v) { rmon::ops::take_samples(v, index, count); });
}
void Switch::rmon_step() {
    std::vector<rmon::Fired> fired;
    impl_->change([&](View &v) { fired = rmon::pass(v, uint32_t(model::ns_since(v.rt->boot_realtime_ns) / 1'000'000'000)); });
    rmon::deliver(impl_->v(), fired);
}
int Switch::rmon_fire_event(int32_t event_index) { return rmon_request(impl_->v(), layout::kRmonFire, event_index); }
int Switch::rmon_restore_all() { return rmon_request(impl_->v(), layout::kRmonRestoreAll, 0); }
int Switch::rmon_clear_all() { return rmon_request(impl_->v(), layout::kRmonClearAll, 0); }

}  // namespace swsim
