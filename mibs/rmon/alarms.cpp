// RMON alarms and events: the callbacks through which the platform's RMON
// engine stores its alarm and event rows in the switch configuration,
// re-applies them, and reports fired events; and the module's alarmTable,
// which is registered and served empty (the alarms a manager sees are the
// engine's).  Clear-all, which talks SNMP to the agent itself, is in
// clear_all_agent.cpp.
#include <atomic>
#include <cstdio>
#include <cstring>

#include "agent/config_lock.hpp"
#include "mibs/rmon/rmon.hpp"
#include "swplatform/platform.h"
#include "swplatform/records_rmon.hpp"
#include "tables/catalogue.hpp"

using namespace snmpapi;
using namespace snmpapi::rmon;
using namespace swp::rmon;

namespace {

std::atomic<StatusWalk> g_status_walk{nullptr};

// The configuration's record built on the stack from the engine's, with the
// lock held only around the platform's write.
template <size_t N>
int store_locked(int (*store)(const uint8_t *), const uint8_t (&record)[N]) {
    config_write_lock();
    const int rc = store(record);
    config_unlock();
    return rc;
}

int delete_locked(int (*del)(sw_rmon_handle_t), const void *row) {
    config_write_lock();
    const int rc = del(row);
    config_unlock();
    return rc;
}

// Slots of one configuration table, handed back to the engine in order up
// to the first free one.  A negative result returns at once, leaving the
// write lock held.
bool restore_slots(size_t offset, size_t size, int (*up)(const uint8_t *), int &result) {
    const uint8_t *image = cfg_get_cfg();
    for (int slot = 0; slot < SW_RMON_SLOTS; ++slot) {
        const uint8_t *rec = image + offset + size_t(slot) * size;
        if (load_i32(rec, swp::Field{0, 4}) == 0) break;
        result = up(rec);
        if (result < 0) return false;
    }
    return true;
}

}  // namespace

void snmpapi::rmon::set_status_walk(StatusWalk walk) { g_status_walk.store(walk); }

extern "C" {

// ---- the engine's callbacks ------------------------------------------------------------

int rmon_alarm_delete_pre(const void *alarm) { return delete_locked(cfg_del_rmon_alarm_pre, alarm); }
int rmon_event_delete_pre(const void *event) { return delete_locked(cfg_del_rmon_event_pre, event); }

int rmon_alarm_set_pre(const uint8_t *engine) {
    uint8_t rec[alarm::kSize] = {};
    store_i32(rec, alarm::kIndex, load_i32(engine, alarm::kIndex));
    strncpy_safe(text_field(rec, alarm::kText), text_at(engine, alarm::kText), alarm::kText.size);
    std::memcpy(rec + alarm::param(0).offset, engine + alarm::param(0).offset, alarm::kParams * 4);
    strncpy_safe(text_field(rec, alarm::kOwner), text_at(engine, alarm::kOwner), alarm::kOwner.size);
    return store_locked(cfg_set_rmon_alarm_pre, rec);
}

// The engine's community field is 32 bytes, the configuration's 33: the
// copy is bounded by the configuration's width.
int rmon_event_set_pre(const uint8_t *engine) {
    uint8_t rec[event::config::kSize] = {};
    store_i32(rec, event::kIndex, load_i32(engine, event::kIndex));
    strncpy_safe(text_field(rec, event::kDescription), text_at(engine, event::kDescription), event::kDescription.size);
    rec[event::kLog.offset] = engine[event::kLog.offset] != 0;
    rec[event::kTrap.offset] = engine[event::kTrap.offset] != 0;
    std::memcpy(rec + event::kScript.offset, engine + event::kScript.offset, event::kScript.size);
    strncpy_safe(text_field(rec, event::config::kCommunity), text_at(engine, event::engine::kCommunity),
                 event::config::kCommunity.size);
    strncpy_safe(text_field(rec, event::config::kOwner), text_at(engine, event::engine::kOwner),
                 event::config::kOwner.size);
    return store_locked(cfg_set_rmon_event_pre, rec);
}

int rmon_restore_all(void) {
    config_write_lock();
    int result = 0;
    if (!restore_slots(cfg_area::kAlarmSlots, alarm::kSize, cfg_set_rmon_alarm_up, result)) return result;
    if (!restore_slots(cfg_area::kEventSlots, event::config::kSize, cfg_set_rmon_event_up, result)) return result;
    config_unlock();
    return result;
}

// Every alarm, then every event the agent serves, invalidated through the
// agent itself; a failed alarm walk leaves the events alone.
int rmon_clear_all(void) {
    const StatusWalk walk = g_status_walk.load();
    if (!walk) return -1;
    if (const int rc = walk(kAlarmStatusColumn, kStatusColumnLength); rc < 0) return rc;
    const int rc = walk(kEventStatusColumn, kStatusColumnLength);
    return rc < 0 ? rc : 0;
}

int rmon_event_fired(int event_index, const char *description) {
    config_read_lock();
    char suffix[140] = "";
    if (description && *description) std::snprintf(suffix, sizeof suffix, " (%.128s)", description);
    vxlog(5, "RMON event %d%s was fired.", event_index, suffix);
    const uint8_t *image = cfg_get_cfg();
    const uint8_t *slot = nullptr;
    for (int i = 0; i < SW_RMON_SLOTS && !slot; ++i) {
        const uint8_t *rec = image + cfg_area::event_slot(i);
        if (load_i32(rec, event::kIndex) == event_index) slot = rec;
    }
    const int32_t s = slot ? load_i32(slot, event::kScript) : 0;
    const uint8_t *script = s > 0 && s <= SW_RMON_SCRIPTS ? image + cfg_area::script_record(s) : nullptr;
    if (!script || script[script::kFlag1.offset] == 0 || script[script::kFlag2.offset] == 0 ||
        text_len(script, script::kCommands) == 0) {
        config_unlock();
        return 0;
    }
    FILE *file = std::fopen(kScriptFile, "w+");
    if (!file) {
        config_unlock();
        return -1;
    }
    const int name_len = int(text_len(script, script::kName)), commands_len = int(text_len(script, script::kCommands));
    if (name_len > 0)
        std::fprintf(file, "%d (%.*s)\n%.*s", s, name_len, text_at(script, script::kName), commands_len,
                     text_at(script, script::kCommands));
    else
        std::fprintf(file, "%d\n%.*s", s, commands_len, text_at(script, script::kCommands));
    std::fwrite("end.\n", 1, 5, file);
    std::fclose(file);
    config_unlock();
    systemf("%s", kInterpreterCommand);
    std::remove(kScriptFile);
    return 0;
}

void init_rmon(void) {
    register_rmon(rmon_alarm_delete_pre, rmon_event_delete_pre, rmon_alarm_set_pre, rmon_event_set_pre,
                  rmon_restore_all, rmon_clear_all, rmon_event_fired);
}

// ---- alarmTable: registered, never populated ---------------------------------------------

int init_index_alarmTable(void *(*)(int32_t)) { return 0; }
int exists_entry_alarmTable(int32_t) { return 1; }
int32_t get_alarmIndex(int32_t) { return 0; }
int32_t get_alarmInterval(int32_t) { return 0; }
int set_alarmInterval(int32_t, int32_t) { return 0; }
const uint32_t *get_alarmVariable(int32_t, size_t *len) {
    *len = 0;
    return nullptr;
}
int set_alarmVariable(int32_t, const uint32_t *, size_t) { return 0; }
int32_t get_alarmSampleType(int32_t) { return 0; }
int set_alarmSampleType(int32_t, int32_t) { return 0; }
int32_t get_alarmValue(int32_t) { return 0; }
int32_t get_alarmStartupAlarm(int32_t) { return 0; }
int set_alarmStartupAlarm(int32_t, int32_t) { return 0; }
int32_t get_alarmRisingThreshold(int32_t) { return 0; }
int set_alarmRisingThreshold(int32_t, int32_t) { return 0; }
int32_t get_alarmFallingThreshold(int32_t) { return 0; }
int set_alarmFallingThreshold(int32_t, int32_t) { return 0; }
int32_t get_alarmRisingEventIndex(int32_t) { return 0; }
int set_alarmRisingEventIndex(int32_t, int32_t) { return 0; }
int32_t get_alarmFallingEventIndex(int32_t) { return 0; }
int set_alarmFallingEventIndex(int32_t, int32_t) { return 0; }
const uint8_t *get_alarmOwner(int32_t, size_t *len) {
    *len = 0;
    return reinterpret_cast<const uint8_t *>("");
}
int set_alarmOwner(int32_t, const uint8_t *, size_t) { return 0; }
int32_t get_alarmStatus(int32_t) { return 0; }
int set_alarmStatus(int32_t, int32_t) { return 0; }

}  // extern "C"
