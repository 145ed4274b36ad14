// Crash points: named steps of the writes to shared state at which a test
// can make the writing process stop dead (SIGKILL) or freeze (SIGSTOP), to
// prove that whoever comes next recovers.  Unarmed, a point costs one
// relaxed load.
#pragma once

#include <atomic>

namespace swsim::crash {

enum Step : int {
    kCounterClaimed,   // a port's counter writer word is taken, nothing written
    kCounterPrepared,  // the new counters are written aside, the sequence word still even
    kCounterCopying,   // the sequence word odd, the live counters half copied
    kCounterCopied,    // the sequence word even again, the writer word not given back
    kLockClaimed,      // a writer has claimed a lock and waits for its readers
    kLockHeld,         // a write lock has just been taken
    kLockReading,      // a reader has counted itself in, before looking at the writer
    kFaultMarked,      // the hot word says a fault is being armed, no slot armed yet
    kFaultArmed,       // a fault slot is armed, the hot word not settled
    kJournalWriting,   // a journal slot is taken and half written
    kStepCount
};

extern std::atomic<int> g_armed;  // the armed step + 1; 0 none

[[gnu::cold]] void fire(Step step);
inline void point(Step step) {
    if (g_armed.load(std::memory_order_relaxed) == step + 1) [[unlikely]]
        fire(step);
}

}  // namespace swsim::crash
