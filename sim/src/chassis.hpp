// The chassis of the simulated switch: power supplies, fans, alarm contacts,
// management processor roles, temperature, the processor and memory monitor
// and the count of a unit's address table (the platform calls of
// swplatform/chassis.h, namespace calls, each taking the View first like the
// calls of contract.cpp), and the changes a control handle or a scenario
// makes (namespace ops, which throw Error in human numbering).
#pragma once

#include <cstdint>
#include <string>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim::chassis {

namespace calls {
int cfg_chassis_get_info(const View &v, sw_chassis_info_t *info);
int cfg_chassis_get_psu(const View &v, int unit0, int bay0, sw_module_status_t *psu);
int cfg_chassis_get_fan(const View &v, int unit0, int fan0, sw_module_status_t *fan);
int cfg_chassis_get_alarm_input(const View &v, int unit0, int input0, int *raised);
int cfg_chassis_get_alarm_output(const View &v, int output0, int *active);
int cfg_chassis_get_mpu_role(const View &v, int unit0);
int cfg_chassis_get_temperature(const View &v, int unit0, int *celsius);
int cfg_cpumon_get_cpu_info(const View &v, int unit0, int selector, uint32_t *percent);
int cfg_cpumon_get_cpu_mem_info(const View &v, int unit0, int selector, uint32_t *percent);
int cfg_get_mac_address_table_summary(const View &v, uint32_t *result, const int32_t request[SW_MAC_SUMMARY_WORDS]);
}  // namespace calls

// Factory chassis of a freshly built switch: two power supply bays (one
// fitted), three fans, two alarm inputs a unit and two alarm outputs.
void defaults(View &v);

namespace ops {
void set_shape(View &v, const sw_chassis_info_t &info);
void set_module(View &v, Switch::ModuleKind kind, int unit0, int position0, int state, const std::string &model);
void set_alarm_input(View &v, int unit0, int input0, bool raised);
void set_alarm_output(View &v, int output0, bool forced);
void set_load(View &v, int unit0, const Switch::Load &load);
void set_temperature(View &v, int unit0, int celsius);
void set_uptime_cs(View &v, uint64_t cs);
void set_mac_summary(View &v, uint32_t delay_ms, bool hold);
void set_device_info(View &v, const Switch::DeviceInfo &info);
}  // namespace ops

Switch::DeviceInfo device_info(const View &v);
sw_module_status_t module(const View &v, Switch::ModuleKind kind, int unit0, int position0);

}  // namespace swsim::chassis

// The catalogue lines of these calls (contract.cpp expands them).
#define SWSIM_CHASSIS_CALLS(X)                                                                            \
    X(int, cfg_chassis_get_info, (sw_chassis_info_t * info), (info), -1)                                  \
    X(int, cfg_chassis_get_psu, (int unit0, int bay0, sw_module_status_t *psu), (unit0, bay0, psu), -1)   \
    X(int, cfg_chassis_get_fan, (int unit0, int fan0, sw_module_status_t *fan), (unit0, fan0, fan), -1)   \
    X(int, cfg_chassis_get_alarm_input, (int unit0, int input0, int *raised), (unit0, input0, raised), -1) \
    X(int, cfg_chassis_get_alarm_output, (int output0, int *active), (output0, active), -1)               \
    X(int, cfg_chassis_get_mpu_role, (int unit0), (unit0), -1)                                            \
    X(int, cfg_chassis_get_temperature, (int unit0, int *celsius), (unit0, celsius), -1)                  \
    X(int, cfg_cpumon_get_cpu_info, (int unit0, int selector, uint32_t *percent),                         \
      (unit0, selector, percent), -1)                                                                     \
    X(int, cfg_cpumon_get_cpu_mem_info, (int unit0, int selector, uint32_t *percent),                     \
      (unit0, selector, percent), -1)                                                                     \
    X(int, cfg_get_mac_address_table_summary, (uint32_t * result, const int32_t request[SW_MAC_SUMMARY_WORDS]), \
      (result, request), -1)
