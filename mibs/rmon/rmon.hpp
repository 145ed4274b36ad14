// The RMON module's own parts shared between its files: no net-snmp here.
#pragma once

#include <cstddef>
#include <cstdint>

namespace snmpapi::rmon {

// Counter `counter` (1 .. 17, the order of the engine's statistics record)
// of statistics row `index`, low 32 bits, into *out: 0, or -1 when the
// engine has no such row or no result location is given.
int statistic_counter(int32_t index, int counter, uint32_t *out);

// The status walk of clear-all (rmon_walk_and_invalidate): the net-snmp
// edge hands it over when the module is loaded; without it clear-all fails.
using StatusWalk = int (*)(const uint32_t *column, size_t length);
void set_status_walk(StatusWalk walk);

// The status columns that clear-all invalidates, and the status value.
inline constexpr uint32_t kAlarmStatusColumn[] = {1, 3, 6, 1, 2, 1, 16, 3, 1, 1, 12};
inline constexpr uint32_t kEventStatusColumn[] = {1, 3, 6, 1, 2, 1, 16, 9, 1, 1, 7};
inline constexpr size_t kStatusColumnLength = 11;  // sub-identifiers

// The event action's script file and the command that runs it.
inline constexpr const char *kScriptFile = "/var/cli-commands/tmp/event_fire";
inline constexpr const char *kInterpreterCommand = "/usr/bin/cli -s /var/cli-commands/tmp/event_fire";

}  // namespace snmpapi::rmon

extern "C" {
// The engine's callbacks (init_rmon hands them to register_rmon).
int rmon_alarm_delete_pre(const void *alarm);
int rmon_event_delete_pre(const void *event);
int rmon_alarm_set_pre(const uint8_t *alarm);
int rmon_event_set_pre(const uint8_t *event);
int rmon_restore_all(void);
int rmon_clear_all(void);
int rmon_event_fired(int event_index, const char *description);
// Sets every instance of a status column that the agent serves to
// invalid(4) over an SNMPv1 session to the agent itself; column: `length`
// 32-bit sub-identifiers.  0, or -1 (nothing set then).
int rmon_walk_and_invalidate(const uint32_t *column, size_t length);
void init_rmon(void);
}
