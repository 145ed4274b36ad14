// The RMON engine of the simulated switch: the platform calls of
// swplatform/rmon.h (namespace calls, the View first like the calls of
// contract.cpp), the engine's sampling and alarm checks, and the thread that
// runs it inside the process that registered the RMON callbacks (the agent).
//
// The engine works in passes: under the configuration write lock a pass
// takes the history samples and alarm samples that are due and notes what
// fired; after the lock is freed it calls the agent's callbacks (event
// fired) and raises the RMON alarm notifications.  Requests of the control
// tool (fire an event, restore all, clear all, add and remove alarms and
// events) are answered by the engine's thread of the agent, which calls the
// matching callback and stores its result.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim {
// The state this process's platform calls use (null while none is open).
const View *current_view();
// Takes (take) or frees configuration lock 2 for writing for the engine's
// thread, without journal or faults: the engine is not a client of the
// platform calls.
int engine_lock(const View &v, bool take);
}  // namespace swsim

namespace swsim::rmon {

namespace calls {
int bcmd_rmon_statistic_get_all(const View &v, uint8_t **records);
int bcmd_rmon_statistic_get_conf(const View &v, int32_t index, uint8_t *conf);
int bcmd_rmon_statistic_set_conf(const View &v, const uint8_t *conf);
int bcmd_rmon_statistic_get(const View &v, int32_t index, uint8_t *counters);
int bcmd_rmon_statistic_set_status(const View &v, int32_t index, int32_t status);
int bcmd_rmon_statistic_create(const View &v, int32_t index);
int cfg_set_rmon_statistic(const View &v, const uint8_t *record);
int cfg_del_rmon_statistic(const View &v, int32_t index);
int cfg_del_rmon_statistic_pre(const View &v, int32_t index, uint8_t *image);
int bcmd_rmon_history_get_all(const View &v, uint8_t **records);
int bcmd_rmon_history_get_conf(const View &v, int32_t index, uint8_t *conf);
int bcmd_rmon_history_set_conf(const View &v, const uint8_t *conf);
int bcmd_rmon_history_get(const View &v, int32_t index, int32_t sample, uint8_t *values);
uint32_t bcmd_rmon_history_interval_get(const View &v, int32_t index, int32_t sample);
int bcmd_rmon_history_set_status(const View &v, int32_t index, int32_t status);
int bcmd_rmon_history_create(const View &v, int32_t index);
int cfg_set_rmon_history(const View &v, const uint8_t *record);
int cfg_del_rmon_history(const View &v, int32_t index);
int cfg_del_rmon_history_pre(const View &v, int32_t index, uint8_t *image);
int cfg_del_rmon_alarm_pre(const View &v, sw_rmon_handle_t alarm);
int cfg_del_rmon_event_pre(const View &v, sw_rmon_handle_t event);
int cfg_set_rmon_alarm_pre(const View &v, const uint8_t *record);
int cfg_set_rmon_event_pre(const View &v, const uint8_t *record);
int cfg_set_rmon_alarm_up(const View &v, const uint8_t *slot);
int cfg_set_rmon_event_up(const View &v, const uint8_t *slot);
int register_rmon(sw_rmon_delete_fn alarm_delete_pre, sw_rmon_delete_fn event_delete_pre, sw_rmon_set_fn alarm_set_pre,
                  sw_rmon_set_fn event_set_pre, sw_rmon_all_fn restore_all, sw_rmon_all_fn clear_all,
                  sw_rmon_fired_fn event_fired);
}  // namespace calls

// What one pass found, to hand to the agent once the lock is free.
struct Fired {
    int32_t event_index;
    std::string description;
    bool trap;
    int32_t alarm_index;
    bool rising;
    std::vector<uint32_t> variable;
    int32_t sample_type, value, threshold;
};
// One engine pass at uptime second now_s; the caller holds the write lock.
std::vector<Fired> pass(const View &v, uint32_t now_s);
// Hands a pass's findings to the agent (no lock held).
void deliver(const View &v, const std::vector<Fired> &fired);
// Answers the control tool's pending request with this process's callbacks
// (no lock held); false when none is pending.
bool serve_request(const View &v);
// The interpreter command the event action runs: recorded with the script
// file's content at that moment; true when it was the interpreter's.
bool note_command(const View &v, const char *command);

// Changes from outside; they throw Error naming what is wrong.
namespace ops {
void set_paused(View &v, bool paused);
void add_statistic(View &v, int32_t index, int unit0, int port0, const std::string &owner);
void add_history(View &v, int32_t index, int unit0, int port0, int interval_s, int buckets, const std::string &owner);
void take_samples(View &v, int32_t index, int count);
// Alarm and event rows straight into the configuration slots and the
// engine (as at boot).
void add_alarm(View &v, const Switch::RmonAlarm &alarm);
void add_event(View &v, const Switch::RmonEvent &event);
void set_script(View &v, int number, const std::string &name, const std::string &commands, bool enabled);
// Posts a request for the engine's thread; answers its sequence number.
uint32_t post(View &v, int32_t kind, int32_t arg);
}  // namespace ops

Switch::RmonInfo info(const View &v);
// Engine records built from the control handle's descriptions.
void alarm_record(const Switch::RmonAlarm &a, uint8_t *rec);
void event_record(const Switch::RmonEvent &e, uint8_t *rec);

// Damage the state check looks for: "" when none.
std::string damage(const View &v);

}  // namespace swsim::rmon

// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_RMON_CALLS(X)                                                                                \
    X(int, bcmd_rmon_statistic_get_all, (uint8_t * *records), (records), -1)                               \
    X(int, bcmd_rmon_statistic_get_conf, (int32_t index, uint8_t *conf), (index, conf), -1)                \
    X(int, bcmd_rmon_statistic_set_conf, (const uint8_t *conf), (conf), -1)                                \
    X(int, bcmd_rmon_statistic_get, (int32_t index, uint8_t *counters), (index, counters), -1)             \
    X(int, bcmd_rmon_statistic_set_status, (int32_t index, int32_t status), (index, status), -1)           \
    X(int, bcmd_rmon_statistic_create, (int32_t index), (index), -1)                                       \
    X(int, cfg_set_rmon_statistic, (const uint8_t *record), (record), -1)                                  \
    X(int, cfg_del_rmon_statistic, (int32_t index), (index), -1)                                           \
    X(int, cfg_del_rmon_statistic_pre, (int32_t index, uint8_t *image), (index, image), -1)                \
    X(int, bcmd_rmon_history_get_all, (uint8_t * *records), (records), -1)                                 \
    X(int, bcmd_rmon_history_get_conf, (int32_t index, uint8_t *conf), (index, conf), -1)                  \
    X(int, bcmd_rmon_history_set_conf, (const uint8_t *conf), (conf), -1)                                  \
    X(int, bcmd_rmon_history_get, (int32_t index, int32_t sample, uint8_t *values), (index, sample, values), -1) \
    X(uint32_t, bcmd_rmon_history_interval_get, (int32_t index, int32_t sample), (index, sample), 0)       \
    X(int, bcmd_rmon_history_set_status, (int32_t index, int32_t status), (index, status), -1)             \
    X(int, bcmd_rmon_history_create, (int32_t index), (index), -1)                                         \
    X(int, cfg_set_rmon_history, (const uint8_t *record), (record), -1)                                    \
    X(int, cfg_del_rmon_history, (int32_t index), (index), -1)                                             \
    X(int, cfg_del_rmon_history_pre, (int32_t index, uint8_t *image), (index, image), -1)                  \
    X(int, cfg_del_rmon_alarm_pre, (sw_rmon_handle_t alarm), (alarm), -1)                                  \
    X(int, cfg_del_rmon_event_pre, (sw_rmon_handle_t event), (event), -1)                                  \
    X(int, cfg_set_rmon_alarm_pre, (const uint8_t *record), (record), -1)                                  \
    X(int, cfg_set_rmon_event_pre, (const uint8_t *record), (record), -1)                                  \
    X(int, cfg_set_rmon_alarm_up, (const uint8_t *slot), (slot), -1)                                       \
    X(int, cfg_set_rmon_event_up, (const uint8_t *slot), (slot), -1)
// P(return type, name, parameters, arguments): calls that need no state.
#define SWSIM_RMON_HELPER_CALLS(P)                                                                         \
    P(int, register_rmon,                                                                                  \
      (sw_rmon_delete_fn alarm_delete_pre, sw_rmon_delete_fn event_delete_pre, sw_rmon_set_fn alarm_set_pre, \
       sw_rmon_set_fn event_set_pre, sw_rmon_all_fn restore_all, sw_rmon_all_fn clear_all,                 \
       sw_rmon_fired_fn event_fired),                                                                      \
      (alarm_delete_pre, event_delete_pre, alarm_set_pre, event_set_pre, restore_all, clear_all, event_fired))
