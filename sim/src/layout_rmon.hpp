// State of the RMON engine in the simulated switch's file: the statistics
// and history rows with their data sources (configuration, a member of
// ConfigModel), and what the engine measured and keeps running (hardware, a
// member of Hardware): counter baselines, history samples, the engine's own
// alarm and event rows, the control tool's requests and the interpreter
// commands the event action ran.  The alarm and event slots and the command
// scripts of the configuration live in the image (records_rmon.hpp).
#pragma once

#include <cstdint>

#include "swplatform/platform.h"
#include "swplatform/records_rmon.hpp"

namespace swsim::layout {

inline constexpr int kRmonStatCounters = swp::rmon::stat_counters::kCount;
inline constexpr int kRmonSampleValues = swp::rmon::hist_sample::kCount;

struct RmonStatRow {
    int32_t index;  // 0: free
    int32_t unit0, port0;
    int32_t status;  // SW_RMON_*
    char owner[32];
};

struct RmonHistRow {
    int32_t index;  // 0: free
    int32_t unit0, port0;
    int32_t interval_s;
    int32_t requested, granted;
    int32_t status;
    char owner[32];
};

struct RmonConfig {
    RmonStatRow stats[SW_RMON_STATISTICS];
    RmonHistRow hist[SW_RMON_HISTORIES];
};

// A history row's samples: sample n sits in bucket (n - 1) % SW_RMON_MAX_BUCKETS.
struct RmonHistSamples {
    int32_t taken;         // samples taken so far (the newest one's number)
    uint32_t next_due_s;   // uptime second of the next sample
    uint64_t last[kRmonStatCounters];  // statistics at the last sample
    uint32_t start_s[SW_RMON_MAX_BUCKETS];
    uint64_t values[SW_RMON_MAX_BUCKETS][kRmonSampleValues];
};

struct RmonEngineAlarm {
    uint8_t record[swp::rmon::alarm::kSize];  // engine record; index 0: free
    uint8_t last_event;  // 0 none, 1 rising, 2 falling
    uint8_t sampled;     // a first sample was taken
    uint8_t reserved[2];
    int32_t value;       // last alarmValue
    uint64_t last_raw;   // variable at the last sample
    uint32_t next_due_s;
};

struct RmonEngineEvent {
    uint8_t record[swp::rmon::event::engine::kSize];  // engine record; index 0: free
    uint8_t reserved[2];
    uint32_t fired;  // times fired
};

// Requests of the control tool to the engine's thread in the agent.
enum RmonRequest : int32_t { kRmonNone = 0, kRmonFire = 1, kRmonRestoreAll = 2, kRmonClearAll = 3 };

struct RmonHardware {
    uint64_t stat_base[SW_RMON_STATISTICS][kRmonStatCounters];  // counters at activation
    RmonHistSamples samples[SW_RMON_HISTORIES];
    RmonEngineAlarm alarms[SW_RMON_SLOTS];
    RmonEngineEvent events[SW_RMON_SLOTS];
    uint32_t paused;         // the engine's thread takes no samples and answers no request
    uint32_t engine_pid;     // process whose engine thread runs (0: none)
    uint32_t request_seq;    // raised by the control tool with each request
    uint32_t done_seq;       // the last request the engine answered
    int32_t request_kind;    // RmonRequest
    int32_t request_arg;     // event index to fire
    int32_t result;          // the callback's answer to the last request
    uint32_t commands_run;   // interpreter commands the event action ran
    char last_command[160];
    char last_script[1400];  // the script file's content when it ran
};

}  // namespace swsim::layout
