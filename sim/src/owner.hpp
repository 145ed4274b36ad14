// Who owns a word in the shared state file, and whether that owner still
// lives.
//
// A process that takes something shared (a lock, a port's counter record)
// writes its identity beside it: its pid and a token of its start time, so
// that a later process given the same pid is not mistaken for it.  Whoever
// finds the thing taken for too long asks whether the owner is dead and, if
// so, takes it back and repairs what the owner left half done.
#pragma once

#include <cstdint>

namespace swsim::owner {

inline constexpr uint64_t kFieldMask = (uint64_t(1) << 22) - 1;  // pid and token fields: 22 bits

struct Id {
    uint64_t pid;
    uint64_t token;  // start time folded into 1 .. 2^22-1; 0 unknown
    // As one word: pid in bits 0-21, token in bits 32-53.
    uint64_t word() const { return pid | token << 32; }
};

inline uint64_t word_pid(uint64_t w) { return w & kFieldMask; }
inline uint64_t word_token(uint64_t w) { return (w >> 32) & kFieldMask; }
// Bits of an owner word that are never set (bit 31 is left to the locks'
// sleeper flag).
inline constexpr uint64_t kWordUnused = ~(kFieldMask | kFieldMask << 32 | uint64_t(1) << 31);

// This process (cached; a forked child finds its own).
Id self();

// True if the recorded owner is gone: no such process, a process that has
// exited but is not reaped yet (a zombie), or a later process with its pid.
bool dead(uint64_t pid, uint64_t token);
inline bool dead(uint64_t w) { return dead(word_pid(w), word_token(w)); }

// Waits a moment before looking again at something another process holds:
// spins first, then sleeps (so the waiter stays cheap and handles signals).
// Returns true every few milliseconds of waiting: time to check the owner.
class Backoff {
public:
    bool pause();

private:
    unsigned rounds_ = 0;
};

}  // namespace swsim::owner
