// Fault injection and the call journal, both kept in the state file so that
// one process (swctl, a test) can arm them in another (the agent).
//
// Everything here works on the mapping with atomic operations only: several
// processes and threads record and consume at once, and none of them takes a
// lock for it (faults are armed and cleared under the configuration write
// lock).  A process killed at any step leaves nothing that holds up the
// others: a half-written journal slot is skipped, a half-armed fault is
// either armed or not, and the hot word settles at the next change of the
// fault table (layout.hpp tells the hot word's rules).
#pragma once

#include <string>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim::hooks {

// The hot word, and whether it sends calls down the watched path.
inline uint32_t hot(const uint32_t *word) { return __atomic_load_n(word, __ATOMIC_RELAXED); }
inline bool watched(const uint32_t *word) { return hot(word) & layout::kHotWatched; }

// Consumes one firing of a fault armed on `call`; true with *result set when
// the call is to fail.
bool fault_hit(layout::Runtime &rt, const char *call, int *result);
void fault_set(layout::Runtime &rt, const std::string &call, int result, int times);
void fault_clear(layout::Runtime &rt, const std::string &call);
std::vector<FaultInfo> fault_list(const layout::Runtime &rt);

void journal_enable(layout::Runtime &rt, bool on);
bool journal_enabled(const layout::Runtime &rt);
void journal_append(const View &v, const char *call, const char *args);
void journal_clear(layout::Runtime &rt);
std::vector<JournalEntry> journal_read(const View &v);

}  // namespace swsim::hooks
