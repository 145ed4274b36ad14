// The chassis of the simulated switch.
//
// Power supplies and fans are modules in fixed bays and positions of each
// unit; alarm inputs are contacts of a unit that an operator or a sensor
// raises; the stack's alarm outputs follow them: output 1 is energised while
// a fitted power supply or a fan of a present unit has failed, output 2 while
// an alarm input of a present unit is raised, and any output can be forced.
// The first present management processor unit is the active one, the other
// present ones stand by.  Processor and memory readings swing around their
// base with the time since the switch booted, so that they move between
// readings.  A count of a unit's address table takes time, like on the
// switch, and may be held to catch it in progress.
#include "chassis.hpp"

#include <time.h>

#include <algorithm>
#include <cstdlib>

#include "model.hpp"
#include "swplatform/records_chassis.hpp"
#include "util.hpp"

namespace swsim::chassis {
namespace {

[[noreturn]] void fail(const std::string &what) { throw Error(what); }

const layout::ChassisHardware &hw(const View &v) { return v.hw->chassis; }
layout::ChassisHardware &hw(View &v) { return v.hw->chassis; }

// The shape fields are stored by the scenario and swctl within their limits;
// a damaged file is refused at open (state_check.cpp), so reads only clamp.
uint32_t bays(const View &v) { return std::min<uint32_t>(hw(v).info.psu_bays, SW_MAX_PSUS); }
uint32_t fan_positions(const View &v) { return std::min<uint32_t>(hw(v).info.fans, SW_MAX_FANS); }
uint32_t alarm_inputs(const View &v) { return std::min<uint32_t>(hw(v).info.alarm_inputs, SW_MAX_ALARM_INPUTS); }
uint32_t alarm_outputs(const View &v) { return std::min<uint32_t>(hw(v).info.alarm_outputs, SW_MAX_ALARM_OUTPUTS); }

bool present(const View &v, int unit0) { return model::unit_in_range(unit0) && v.status->units[unit0].present != 0; }
bool known(const View &v, int unit0) {
    return model::unit_in_range(unit0) && (v.status->units[unit0].present != 0 || v.status->units[unit0].status2 != 0);
}

const char *kind_name(Switch::ModuleKind kind) { return kind == Switch::kPsu ? "power supply bay" : "fan position"; }
uint32_t positions(const View &v, Switch::ModuleKind kind) { return kind == Switch::kPsu ? bays(v) : fan_positions(v); }
const char *factory_model(Switch::ModuleKind kind) { return kind == Switch::kPsu ? "PSU-150AC" : "FAN-40"; }

const layout::ChassisModule *module_at(const View &v, Switch::ModuleKind kind, int unit0, int position0) {
    if (!present(v, unit0) || position0 < 0 || uint32_t(position0) >= positions(v, kind)) return nullptr;
    const layout::ChassisUnit &u = hw(v).units[unit0];
    return kind == Switch::kPsu ? &u.psus[position0] : &u.fans[position0];
}

int give_module(const layout::ChassisModule *m, sw_module_status_t *out) {
    if (!m || !out) return -1;
    *out = sw_module_status_t{};
    out->state = m->state <= SW_MODULE_FAILED ? m->state : SW_MODULE_FAILED;
    if (out->state != SW_MODULE_ABSENT) copy_text(out->model, sizeof out->model, m->model);
    return 0;
}

// What the alarm rules say of output o, forcing aside.
bool output_by_rule(const View &v, int output0) {
    for (int u = 0; u < SW_MAX_UNITS; ++u) {
        if (!present(v, u)) continue;
        const layout::ChassisUnit &unit = hw(v).units[u];
        if (output0 == 0) {
            for (uint32_t b = 0; b < bays(v); ++b)
                if (unit.psus[b].state == SW_MODULE_FAILED) return true;
            for (uint32_t f = 0; f < fan_positions(v); ++f)
                if (unit.fans[f].state == SW_MODULE_FAILED) return true;
        } else if (output0 == 1) {
            for (uint32_t a = 0; a < alarm_inputs(v); ++a)
                if (unit.alarm_raised[a]) return true;
        }
    }
    return false;
}

// A triangle wave of the time since boot: -1000 .. 1000 over `period_ms`,
// shifted by `phase_ms`.
int64_t wave(const View &v, uint64_t period_ms, uint64_t phase_ms) {
    const uint64_t at = (model::ns_since(v.rt->boot_realtime_ns) / 1'000'000 + phase_ms) % period_ms;
    const int64_t half = int64_t(period_ms / 2);
    return (std::llabs(int64_t(at) - half) * 2000) / half - 1000;
}

uint32_t reading(uint32_t base, uint32_t swing, int64_t w) {
    const int64_t r = int64_t(base) + (int64_t(swing) * w) / 1000;
    return uint32_t(std::clamp<int64_t>(r, 0, 100));
}

// The unit whose processor a monitor call reads: the unit itself, or for
// the standby selector the stack's standby management processor.
int monitored_unit(const View &v, int unit0, int selector) {
    if (selector == SW_CPUMON_ACTIVE) return present(v, unit0) ? unit0 : -1;
    if (selector != SW_CPUMON_STANDBY || !model::unit_in_range(unit0)) return -1;
    for (int u = 0; u < SW_MAX_UNITS; ++u)
        if (calls::cfg_chassis_get_mpu_role(v, u) == SW_MPU_STANDBY) return u;
    return -1;
}

void sleep_ms(uint32_t ms) {
    timespec ts{time_t(ms / 1000), long(ms % 1000) * 1'000'000};
    while (nanosleep(&ts, &ts) != 0) {
    }
}

void check_unit(const View &v, int unit0) {
    if (!model::unit_in_range(unit0) || !known(v, unit0))
        fail("no unit " + std::to_string(human(unit0)) + " in this stack");
}

void check_percent(uint32_t value, const char *what) {
    if (value > 100) fail(std::string(what) + " " + std::to_string(value) + " is not a percentage (0..100)");
}

}  // namespace

// ---- platform calls -----------------------------------------------------------------

namespace calls {

int cfg_chassis_get_info(const View &v, sw_chassis_info_t *info) {
    if (!info) return -1;
    *info = hw(v).info;
    return 0;
}

int cfg_chassis_get_psu(const View &v, int unit0, int bay0, sw_module_status_t *psu) {
    return give_module(module_at(v, Switch::kPsu, unit0, bay0), psu);
}
int cfg_chassis_get_fan(const View &v, int unit0, int fan0, sw_module_status_t *fan) {
    return give_module(module_at(v, Switch::kFan, unit0, fan0), fan);
}

int cfg_chassis_get_alarm_input(const View &v, int unit0, int input0, int *raised) {
    if (!raised || !present(v, unit0) || input0 < 0 || uint32_t(input0) >= alarm_inputs(v)) return -1;
    *raised = hw(v).units[unit0].alarm_raised[input0] != 0;
    return 0;
}

int cfg_chassis_get_alarm_output(const View &v, int output0, int *active) {
    if (!active || output0 < 0 || uint32_t(output0) >= alarm_outputs(v)) return -1;
    *active = hw(v).alarm_output_forced[output0] || output_by_rule(v, output0);
    return 0;
}

int cfg_chassis_get_mpu_role(const View &v, int unit0) {
    if (!model::unit_in_range(unit0)) return -1;
    if (!present(v, unit0) || !v.status->units[unit0].is_mpu) return SW_MPU_NONE;
    for (int u = 0; u < unit0; ++u)
        if (present(v, u) && v.status->units[u].is_mpu) return SW_MPU_STANDBY;
    return SW_MPU_ACTIVE;
}

// Every fan that does not turn warms the unit.
int cfg_chassis_get_temperature(const View &v, int unit0, int *celsius) {
    if (!celsius || !present(v, unit0)) return -1;
    const layout::ChassisUnit &u = hw(v).units[unit0];
    int t = u.temperature_c;
    for (uint32_t f = 0; f < fan_positions(v); ++f) t += u.fans[f].state == SW_MODULE_OK ? 0 : 4;
    *celsius = t;
    return 0;
}

int cfg_cpumon_get_cpu_info(const View &v, int unit0, int selector, uint32_t *percent) {
    const int u = monitored_unit(v, unit0, selector);
    if (u < 0 || !percent) return -1;
    const layout::ChassisUnit &c = hw(v).units[u];
    *percent = reading(c.cpu_base, c.cpu_swing, wave(v, 60'000, uint64_t(u) * 7'000));
    return 0;
}

int cfg_cpumon_get_cpu_mem_info(const View &v, int unit0, int selector, uint32_t *percent) {
    const int u = monitored_unit(v, unit0, selector);
    if (u < 0 || !percent) return -1;
    const layout::ChassisUnit &c = hw(v).units[u];
    *percent = reading(c.mem_base, c.mem_swing, wave(v, 600'000, uint64_t(u) * 45'000));
    return 0;
}

// Counting takes its time first; the entries are those of the table when
// the count ends.
int cfg_get_mac_address_table_summary(const View &v, uint32_t *result, const int32_t request[SW_MAC_SUMMARY_WORDS]) {
    if (!result || !request) return -1;
    const int unit0 = swp::mac_summary::unit_of(request);
    if (!known(v, unit0)) return -1;
    sleep_ms(std::min(__atomic_load_n(&hw(v).mac_summary_ms, __ATOMIC_RELAXED), layout::kMacSummaryMaxMs));
    for (uint32_t waited = 0; __atomic_load_n(&hw(v).mac_summary_hold, __ATOMIC_ACQUIRE) &&
                              waited < layout::kMacSummaryHoldLimitMs;
         ++waited)
        sleep_ms(1);
    const layout::Fdb &t = *v.fdb;
    const uint32_t n = std::min<uint32_t>(__atomic_load_n(&t.count, __ATOMIC_ACQUIRE), layout::kFdbCapacity);
    uint32_t count = 0;
    for (uint32_t i = 0; i < n; ++i) count += t.entries[i].unit == unit0;
    *result = count;
    return 0;
}

}  // namespace calls

// ---- factory settings -------------------------------------------------------------------

void defaults(View &v) {
    layout::ChassisHardware &c = hw(v);
    c = layout::ChassisHardware{};
    c.info = sw_chassis_info_t{7300, SW_MAX_UNITS, 2, 3, 2, 2, 0xC000020A /* 192.0.2.10 */, 161};
    c.mac_summary_ms = 50;
    for (layout::ChassisUnit &u : c.units) {
        u.psus[0].state = SW_MODULE_OK;
        for (layout::ChassisModule &m : u.psus) copy_text(m.model, factory_model(Switch::kPsu));
        for (layout::ChassisModule &m : u.fans) {
            m.state = SW_MODULE_OK;
            copy_text(m.model, factory_model(Switch::kFan));
        }
        u.temperature_c = 38;
        u.cpu_base = 20;
        u.cpu_swing = 5;
        u.mem_base = 40;
        u.mem_swing = 1;
    }
    v.status->model_word = 7;
}

// ---- changes from outside -------------------------------------------------------------------

namespace ops {

void set_shape(View &v, const sw_chassis_info_t &info) {
    if (info.slots < 1 || info.slots > SW_MAX_UNITS) fail("slots must be 1..8");
    if (info.psu_bays > SW_MAX_PSUS) fail("power supply bays must be 0..4");
    if (info.fans > SW_MAX_FANS) fail("fan positions must be 0..8");
    if (info.alarm_inputs > SW_MAX_ALARM_INPUTS) fail("alarm inputs must be 0..8");
    if (info.alarm_outputs > SW_MAX_ALARM_OUTPUTS) fail("alarm outputs must be 0..4");
    if (info.agent_port < 1 || info.agent_port > 65535) fail("the agent port must be 1..65535");
    hw(v).info = info;
}

void set_module(View &v, Switch::ModuleKind kind, int unit0, int position0, int state, const std::string &model) {
    check_unit(v, unit0);
    if (kind != Switch::kPsu && kind != Switch::kFan) fail("no such kind of module");
    if (position0 < 0 || uint32_t(position0) >= positions(v, kind))
        fail("unit " + std::to_string(human(unit0)) + " has no " + kind_name(kind) + " " +
             std::to_string(human(position0)) + " (it has " + std::to_string(positions(v, kind)) + ")");
    if (state < SW_MODULE_ABSENT || state > SW_MODULE_FAILED) fail("a module is absent, ok or failed");
    layout::ChassisUnit &u = hw(v).units[unit0];
    layout::ChassisModule &m = kind == Switch::kPsu ? u.psus[position0] : u.fans[position0];
    if (!model.empty()) model::ops::set_text(m.model, sizeof m.model, model, "model name");
    m.state = uint8_t(state);
}

void set_alarm_input(View &v, int unit0, int input0, bool raised) {
    check_unit(v, unit0);
    if (input0 < 0 || uint32_t(input0) >= alarm_inputs(v))
        fail("unit " + std::to_string(human(unit0)) + " has alarm inputs 1.." + std::to_string(alarm_inputs(v)));
    hw(v).units[unit0].alarm_raised[input0] = raised;
}

void set_alarm_output(View &v, int output0, bool forced) {
    if (output0 < 0 || uint32_t(output0) >= alarm_outputs(v))
        fail("the stack has alarm outputs 1.." + std::to_string(alarm_outputs(v)));
    hw(v).alarm_output_forced[output0] = forced;
}

void set_load(View &v, int unit0, const Switch::Load &load) {
    check_unit(v, unit0);
    check_percent(load.cpu, "processor load");
    check_percent(load.mem, "memory use");
    check_percent(load.cpu_swing, "processor swing");
    check_percent(load.mem_swing, "memory swing");
    layout::ChassisUnit &u = hw(v).units[unit0];
    u.cpu_base = load.cpu;
    u.cpu_swing = load.cpu_swing;
    u.mem_base = load.mem;
    u.mem_swing = load.mem_swing;
}

void set_temperature(View &v, int unit0, int celsius) {
    check_unit(v, unit0);
    if (celsius < -40 || celsius > 125) fail("temperature must be -40..125 degrees Celsius");
    hw(v).units[unit0].temperature_c = celsius;
}

// Uptime counts from the boot time; a boot before 1970 cannot be stored.
void set_uptime_cs(View &v, uint64_t cs) {
    const int64_t now = model::realtime_ns();
    if (cs > uint64_t(now / 10'000'000)) fail("the switch cannot have booted before 1970");
    __atomic_store_n(&v.rt->boot_realtime_ns, now - int64_t(cs) * 10'000'000, __ATOMIC_RELAXED);
}

void set_mac_summary(View &v, uint32_t delay_ms, bool hold) {
    if (delay_ms > layout::kMacSummaryMaxMs) fail("a count takes at most 60000 ms");
    __atomic_store_n(&hw(v).mac_summary_ms, delay_ms, __ATOMIC_RELAXED);
    __atomic_store_n(&hw(v).mac_summary_hold, uint32_t(hold), __ATOMIC_RELEASE);
}

void set_device_info(View &v, const Switch::DeviceInfo &info) {
    sw_status_t &s = *v.status;
    model::ops::set_text(s.boot_version, sizeof s.boot_version, info.boot_version, "boot version");
    model::ops::set_text(s.fw_date, sizeof s.fw_date, info.fw_date, "firmware date");
    s.serial_no = info.serial_no;
    s.model_word = info.model_word;
}

}  // namespace ops

Switch::DeviceInfo device_info(const View &v) {
    const sw_status_t &s = *v.status;
    return Switch::DeviceInfo{text_of(s.boot_version), text_of(s.fw_date), s.serial_no, s.model_word};
}

sw_module_status_t module(const View &v, Switch::ModuleKind kind, int unit0, int position0) {
    sw_module_status_t m{};
    if (give_module(module_at(v, kind, unit0, position0), &m) != 0)
        fail("unit " + std::to_string(human(unit0)) + " is not present or has no " + kind_name(kind) + " " +
             std::to_string(human(position0)));
    return m;
}

}  // namespace swsim::chassis
