// The private chassis objects: one row per present unit in switchInfoTable
// (identity, power, fans, alarms, temperature and load), the unit's power
// supply bays, fan positions and alarm inputs (switchIndivPowerTable,
// switchIndivFanTable, switchIndivAlarmTable), the stack's alarm outputs
// (switchIndivAlarmOutTable), its management processor units
// (switchMpuTable) and the scalars switchNumber, swSlotNumber and
// swChassisModel.  The same hardware as the inventory of entity.cpp.
#include <cstring>

#include "mibs/chassis/units.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace {

using namespace snmpapi::chassis;

// The stack's shape; all zero when the platform cannot tell.
sw_chassis_info_t chassis_info() {
    sw_chassis_info_t info{};
    if (cfg_chassis_get_info(&info) < 0) info = sw_chassis_info_t{};
    return info;
}

// ---- power supplies and fans --------------------------------------------------------

using ModuleCall = int (*)(int, int, sw_module_status_t *);

struct ModuleKind {
    ModuleCall get;
    uint32_t sw_chassis_info_t::*positions;
    uint32_t most;  // positions the platform can have
};
constexpr ModuleKind kPsus{cfg_chassis_get_psu, &sw_chassis_info_t::psu_bays, SW_MAX_PSUS};
constexpr ModuleKind kFans{cfg_chassis_get_fan, &sw_chassis_info_t::fans, SW_MAX_FANS};

// A unit's positions of one kind, within what the platform can hold.
int positions(const ModuleKind &kind, const sw_chassis_info_t &info) {
    const uint32_t n = info.*kind.positions;
    return static_cast<int>(n < kind.most ? n : kind.most);
}

// The state of one position (1-based), SW_MODULE_ABSENT when unreadable.
uint32_t module_state(const ModuleKind &kind, uint32_t unit0, int32_t position) {
    sw_module_status_t m{};
    if (kind.get(static_cast<int>(unit0), static_cast<int>(index_minus(position, 1)), &m) < 0) return SW_MODULE_ABSENT;
    return m.state;
}

struct ModuleCount {
    int ok = 0, failed = 0, absent = 0;
};
ModuleCount count_modules(const ModuleKind &kind, uint32_t unit0) {
    ModuleCount c;
    for (int p = 1, n = positions(kind, chassis_info()); p <= n; ++p) {
        switch (module_state(kind, unit0, p)) {
        case SW_MODULE_OK: ++c.ok; break;
        case SW_MODULE_ABSENT: ++c.absent; break;
        default: ++c.failed; break;
        }
    }
    return c;
}

// swIndivPowerStatus, swIndivFanStatus: ok(1), failed(2), absent(3).
int32_t module_status(const ModuleKind &kind, int32_t unit, int32_t position) {
    switch (module_state(kind, unit0_of(unit), position)) {
    case SW_MODULE_OK: return 1;
    case SW_MODULE_FAILED: return 2;
    default: return 3;
    }
}

int psu_bays(const sw_chassis_info_t &info) { return positions(kPsus, info); }
int fan_positions(const sw_chassis_info_t &info) { return positions(kFans, info); }
int32_t psu_status(int32_t unit, int32_t bay) { return module_status(kPsus, unit, bay); }
int32_t fan_status_of(int32_t unit, int32_t fan) { return module_status(kFans, unit, fan); }

// ---- rows of (unit, position) -----------------------------------------------------------

// Adds (unit, 1 .. n) for every present unit.
void populate_positions(void *(*create)(int32_t, int32_t), int n) {
    for (uint32_t unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0)
        if (unit_present(unit0))
            for (int32_t p = 1; p <= n; ++p) create(static_cast<int32_t>(unit0) + 1, p);
}

// A row of a present unit's position within n; an index outside the stack
// answers 0 and is left alone, any other stale row is removed.
int position_exists(int32_t unit, int32_t position, int n, void (*remove)(int32_t, int32_t)) {
    const uint32_t unit0 = unit0_of(unit);
    if (unit0 >= SW_MAX_UNITS) return 0;
    if (unit_present(unit0) && static_cast<uint32_t>(index_minus(position, 1)) < static_cast<uint32_t>(n)) return 1;
    remove(unit, position);
    return 0;
}

// normal(1) and alarm(2) of the alarm columns.
constexpr int32_t kNormal = 1, kAlarm = 2;

// ---- alarms ----------------------------------------------------------------------------

int alarm_inputs(const sw_chassis_info_t &info) {
    return static_cast<int>(info.alarm_inputs < SW_MAX_ALARM_INPUTS ? info.alarm_inputs : SW_MAX_ALARM_INPUTS);
}
int alarm_outputs(const sw_chassis_info_t &info) {
    return static_cast<int>(info.alarm_outputs < SW_MAX_ALARM_OUTPUTS ? info.alarm_outputs : SW_MAX_ALARM_OUTPUTS);
}

bool alarm_raised(uint32_t unit0, int32_t input) {
    int raised = 0;
    return cfg_chassis_get_alarm_input(static_cast<int>(unit0), static_cast<int>(index_minus(input, 1)), &raised) == 0 &&
           raised != 0;
}

// swIndivAlarmStatus: normal(1), alarm(2).
int32_t alarm_status(int32_t unit, int32_t input) { return alarm_raised(unit0_of(unit), input) ? kAlarm : kNormal; }

int raised_alarms(uint32_t unit0) {
    int n = 0;
    for (int32_t a = 1, inputs = alarm_inputs(chassis_info()); a <= inputs; ++a) n += alarm_raised(unit0, a);
    return n;
}

// ---- unit summaries ------------------------------------------------------------------------

// swInfoPowerStatus: normal(1), degraded(2) while a fitted supply has failed
// and another works, failed(3) when no fitted supply works.  A unit without
// bays is powered otherwise: normal.
int32_t power_status(uint32_t unit0) {
    const ModuleCount c = count_modules(kPsus, unit0);
    if (c.ok + c.failed + c.absent == 0) return 1;
    if (c.ok == 0) return 3;
    return c.failed != 0 ? 2 : 1;
}

// swInfoFanStatus: normal(1) while every fan position has a running fan.
int32_t fan_status(uint32_t unit0) {
    const ModuleCount c = count_modules(kFans, unit0);
    return c.failed + c.absent == 0 ? 1 : 2;
}

// A text field of the unit's status record, never read past the field.
template <size_t N>
const uint8_t *unit_text(int32_t unit, char (sw_unit_status_t::*field)[N], size_t *len) {
    const sw_unit_status_t *u = unit_record(unit0_of(unit));
    if (u == nullptr) {
        *len = 0;
        return nullptr;
    }
    *len = strnlen(u->*field, N);
    return reinterpret_cast<const uint8_t *>(u->*field);
}

int32_t percent(int (*call)(int, int, uint32_t *), uint32_t unit0) {
    uint32_t value = 0;
    return call(static_cast<int>(unit0), SW_CPUMON_ACTIVE, &value) < 0 ? 0 : static_cast<int32_t>(value);
}

int32_t temperature(uint32_t unit0) {
    int celsius = 0;
    return cfg_chassis_get_temperature(static_cast<int>(unit0), &celsius) < 0 ? 0 : celsius;
}

// The present units that are management processors.
bool is_mpu_row(uint32_t unit0) {
    return unit_present(unit0) && cfg_chassis_get_mpu_role(static_cast<int>(unit0)) > SW_MPU_NONE;
}

}  // namespace

extern "C" {

// ---- scalars ------------------------------------------------------------------------------

int32_t get_switchNumber(void) { return stack_unit_count(); }
int32_t get_swSlotNumber(void) { return static_cast<int32_t>(chassis_info().slots); }
// Read by its own handler without the configuration lock.
int32_t get_swChassisModel(void) { return static_cast<int32_t>(chassis_info().model); }

// ---- switchInfoTable ------------------------------------------------------------------------

int init_index_switchInfoTable(void *(*create)(int32_t)) {
    populate_present_units(create);
    return 0;
}
int exists_entry_switchInfoTable(int32_t unit) { return unit_row_exists(unit, switchInfoTable_removeEntry); }

const uint8_t *get_swInfoUnitModel(int32_t unit, size_t *len) { return unit_text(unit, &sw_unit_status_t::model, len); }
const uint8_t *get_swInfoSerialNumber(int32_t unit, size_t *len) { return unit_text(unit, &sw_unit_status_t::serial, len); }
const uint8_t *get_swInfoHardwareVersion(int32_t unit, size_t *len) {
    return unit_text(unit, &sw_unit_status_t::version, len);
}
const uint8_t *get_swInfoBuildDate(int32_t unit, size_t *len) {
    return unit_text(unit, &sw_unit_status_t::build_date, len);
}
const uint8_t *get_swInfoMacAddress(int32_t unit, size_t *len) {
    static uint8_t mac[6];
    *len = cfg_get_unit_mac(static_cast<int>(unit0_of(unit)), mac) < 0 ? 0 : sizeof mac;
    return mac;
}
int32_t get_swInfoPortNumber(int32_t unit) { return unit_port_count(static_cast<int>(unit0_of(unit))); }

// master(1): the active management processor; backup(2): a standby one;
// member(3): any other unit.
int32_t get_swInfoRole(int32_t unit) {
    switch (cfg_chassis_get_mpu_role(static_cast<int>(unit0_of(unit)))) {
    case SW_MPU_ACTIVE: return 1;
    case SW_MPU_STANDBY: return 2;
    default: return 3;
    }
}
int32_t get_swInfoPowerSupplies(int32_t unit) {
    const ModuleCount c = count_modules(kPsus, unit0_of(unit));
    return c.ok + c.failed;
}
int32_t get_swInfoPowerStatus(int32_t unit) { return power_status(unit0_of(unit)); }
int32_t get_swInfoFans(int32_t unit) {
    const ModuleCount c = count_modules(kFans, unit0_of(unit));
    return c.ok + c.failed;
}
int32_t get_swInfoFanStatus(int32_t unit) { return fan_status(unit0_of(unit)); }
int32_t get_swInfoAlarmInputs(int32_t) { return alarm_inputs(chassis_info()); }
int32_t get_swInfoAlarmStatus(int32_t unit) { return raised_alarms(unit0_of(unit)) != 0 ? kAlarm : kNormal; }
int32_t get_swInfoTemperature(int32_t unit) { return temperature(unit0_of(unit)); }
int32_t get_swInfoCpuUsage(int32_t unit) { return percent(cfg_cpumon_get_cpu_info, unit0_of(unit)); }
int32_t get_swInfoMemUsage(int32_t unit) { return percent(cfg_cpumon_get_cpu_mem_info, unit0_of(unit)); }
// The stack runs one firmware.
const uint8_t *get_swInfoFirmwareVersion(int32_t, size_t *len) {
    const sw_status_t *st = get_status();
    if (st == nullptr) {
        *len = 0;
        return nullptr;
    }
    *len = strnlen(st->fw_version, sizeof st->fw_version);
    return reinterpret_cast<const uint8_t *>(st->fw_version);
}
// ok(1), warning(2): a supply or fan down, or an alarm raised; failure(3):
// no working power supply.
int32_t get_swInfoOperStatus(int32_t unit) {
    const uint32_t unit0 = unit0_of(unit);
    const int32_t power = power_status(unit0);
    if (power == 3) return 3;
    return power != 1 || fan_status(unit0) != 1 || raised_alarms(unit0) != 0 ? 2 : 1;
}

// ---- switchIndivPowerTable, switchIndivFanTable, switchIndivAlarmTable ------------------------
//
// One row per position of each present unit: (unit, position), both also
// readable as columns 1 and 2, and the position's status in column 3.

#define SA_POSITION_TABLE(table, column, count, status)                                              \
    int init_index_##table(void *(*create)(int32_t, int32_t)) {                                      \
        populate_positions(create, count(chassis_info()));                                           \
        return 0;                                                                                    \
    }                                                                                                \
    int exists_entry_##table(int32_t unit, int32_t position) {                                       \
        return position_exists(unit, position, count(chassis_info()), table##_removeEntry);          \
    }                                                                                                \
    int32_t get_##column##Unit(int32_t unit, int32_t) { return unit; }                              \
    int32_t get_##column##Index(int32_t, int32_t position) { return position; }                     \
    int32_t get_##column##Status(int32_t unit, int32_t position) { return status(unit, position); }

SA_POSITION_TABLE(switchIndivPowerTable, swIndivPower, psu_bays, psu_status)
SA_POSITION_TABLE(switchIndivFanTable, swIndivFan, fan_positions, fan_status_of)
SA_POSITION_TABLE(switchIndivAlarmTable, swIndivAlarm, alarm_inputs, alarm_status)
#undef SA_POSITION_TABLE

// ---- switchIndivAlarmOutTable -----------------------------------------------------------------

int init_index_switchIndivAlarmOutTable(void *(*create)(int32_t)) {
    for (int32_t o = 1, n = alarm_outputs(chassis_info()); o <= n; ++o) create(o);
    return 0;
}
int exists_entry_switchIndivAlarmOutTable(int32_t output) {
    if (static_cast<uint32_t>(index_minus(output, 1)) < static_cast<uint32_t>(alarm_outputs(chassis_info()))) return 1;
    switchIndivAlarmOutTable_removeEntry(output);
    return 0;
}
int32_t get_swIndivAlarmOutIndex(int32_t output) { return output; }
// off(1), on(2)
int32_t get_swIndivAlarmOutStatus(int32_t output) {
    int active = 0;
    return cfg_chassis_get_alarm_output(static_cast<int>(index_minus(output, 1)), &active) == 0 && active ? 2 : 1;
}

// ---- switchMpuTable -------------------------------------------------------------------------------

int init_index_switchMpuTable(void *(*create)(int32_t)) {
    for (uint32_t unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0)
        if (is_mpu_row(unit0)) create(static_cast<int32_t>(unit0) + 1);
    return 0;
}
int exists_entry_switchMpuTable(int32_t unit) {
    const uint32_t unit0 = unit0_of(unit);
    if (unit0 >= SW_MAX_UNITS) return 0;
    if (is_mpu_row(unit0)) return 1;
    switchMpuTable_removeEntry(unit);
    return 0;
}
int32_t get_swMpuUnit(int32_t unit) { return unit; }
// active(1), standby(2)
int32_t get_swMpuRole(int32_t unit) {
    return cfg_chassis_get_mpu_role(static_cast<int>(unit0_of(unit))) == SW_MPU_ACTIVE ? 1 : 2;
}
int32_t get_swMpuCpuUsage(int32_t unit) { return percent(cfg_cpumon_get_cpu_info, unit0_of(unit)); }
int32_t get_swMpuMemUsage(int32_t unit) { return percent(cfg_cpumon_get_cpu_mem_info, unit0_of(unit)); }
int32_t get_swMpuTemperature(int32_t unit) { return temperature(unit0_of(unit)); }

}  // extern "C"
