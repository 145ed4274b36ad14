#include "hooks.hpp"

#include <algorithm>
#include <cstring>

#include "crash.hpp"
#include "shared_atomic.hpp"
#include "util.hpp"

namespace swsim::hooks {
namespace {

using layout::FaultSlot;

bool same_call(const FaultSlot &slot, const char *call) {
    return std::strncmp(slot.call, call, layout::kCallNameSize) == 0;
}

bool cas_hot(layout::Runtime &rt, uint32_t &seen, uint32_t want) {
    return __atomic_compare_exchange_n(&rt.hot, &seen, want, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE);
}

// Rewrites the fault bits of the hot word as one step of arming.
template <class Change>
void arming_step(layout::Runtime &rt, Change change) {
    uint32_t seen = __atomic_load_n(&rt.hot, __ATOMIC_ACQUIRE);
    while (!cas_hot(rt, seen, change(seen) + layout::kHotEpochUnit)) {
    }
}

bool any_armed(const layout::Runtime &rt) {
    for (const FaultSlot &slot : rt.faults)
        if (__atomic_load_n(&slot.remaining, __ATOMIC_ACQUIRE) != 0) return true;
    return false;
}

// After a change of the table under the write lock, whether or not an
// earlier writer died half way: the hot word says faults are armed exactly
// when one is, and that nobody arms one now.
void settle(layout::Runtime &rt) {
    arming_step(rt, [&](uint32_t h) {
        h &= ~(layout::kHotArming | layout::kHotFaults);
        return any_armed(rt) ? h | layout::kHotFaults : h;
    });
}

}  // namespace

// Scans the table; a call that finds no slot armed, where the hot word did
// not change since before the scan, puts the calls back on the fast path.
bool fault_hit(layout::Runtime &rt, const char *call, int *result) {
    uint32_t before = __atomic_load_n(&rt.hot, __ATOMIC_ACQUIRE);
    bool armed = false;
    for (FaultSlot &slot : rt.faults) {
        int32_t rem = __atomic_load_n(&slot.remaining, __ATOMIC_ACQUIRE);
        if (rem == 0) continue;
        armed = true;
        if (!same_call(slot, call)) continue;
        int32_t value = slot.result;
        while (rem != 0) {
            if (rem < 0 || __atomic_compare_exchange_n(&slot.remaining, &rem, rem - 1, false, __ATOMIC_ACQ_REL,
                                                       __ATOMIC_ACQUIRE)) {
                *result = value;
                return true;
            }
        }
    }
    if (!armed && (before & layout::kHotFaults) && !(before & layout::kHotArming))
        cas_hot(rt, before, before & ~layout::kHotFaults);
    return false;
}

void fault_set(layout::Runtime &rt, const std::string &call, int result, int times) {
    if (result >= 0) throw Error("fault result must be negative, not " + std::to_string(result));
    if (times == 0 || times < -1) throw Error("fault times must be -1 (until cleared) or at least 1");
    const auto &known = faultable_calls();
    if (std::find(known.begin(), known.end(), call) == known.end())
        throw Error("no platform call '" + call + "' that faults can be armed on");
    fault_clear(rt, call);
    for (FaultSlot &slot : rt.faults) {
        if (__atomic_load_n(&slot.remaining, __ATOMIC_ACQUIRE) != 0) continue;
        arming_step(rt, [](uint32_t h) { return h | layout::kHotFaults | layout::kHotArming; });
        crash::point(crash::kFaultMarked);
        copy_text(slot.call, call);
        slot.result = result;
        __atomic_store_n(&slot.remaining, times, __ATOMIC_RELEASE);
        crash::point(crash::kFaultArmed);
        settle(rt);
        return;
    }
    throw Error("fault table full (" + std::to_string(layout::kFaultSlots) + " armed faults)");
}

void fault_clear(layout::Runtime &rt, const std::string &call) {
    for (FaultSlot &slot : rt.faults)
        if (call.empty() || same_call(slot, call.c_str())) __atomic_store_n(&slot.remaining, 0, __ATOMIC_RELEASE);
    settle(rt);
}

std::vector<FaultInfo> fault_list(const layout::Runtime &rt) {
    std::vector<FaultInfo> out;
    for (const FaultSlot &slot : rt.faults) {
        int32_t rem = __atomic_load_n(&slot.remaining, __ATOMIC_ACQUIRE);
        if (rem != 0)
            out.push_back({text_of(slot.call), slot.result, rem});
    }
    return out;
}

void journal_enable(layout::Runtime &rt, bool on) {
    if (on)
        __atomic_or_fetch(&rt.hot, layout::kHotJournal, __ATOMIC_RELEASE);
    else
        __atomic_and_fetch(&rt.hot, ~layout::kHotJournal, __ATOMIC_RELEASE);
}

bool journal_enabled(const layout::Runtime &rt) { return hot(&rt.hot) & layout::kHotJournal; }

// Each slot is a small seqlock: the stamp is zero while the slot is being
// written and the entry's sequence number once it is complete.
void journal_append(const View &v, const char *call, const char *args) {
    uint64_t seq = shared::add_fetch(v.rt->journal_last, uint64_t{1}, __ATOMIC_RELAXED);
    layout::JournalSlot &slot = v.journal->slots[seq % layout::kJournalSlots];
    shared::store(slot.stamp, uint64_t{0}, __ATOMIC_RELAXED);
    __atomic_thread_fence(__ATOMIC_RELEASE);
    copy_text(slot.call, sizeof slot.call, call);
    crash::point(crash::kJournalWriting);
    copy_text(slot.args, sizeof slot.args, args);
    shared::store(slot.stamp, seq, __ATOMIC_RELEASE);
}

void journal_clear(layout::Runtime &rt) {
    shared::store(rt.journal_cleared, shared::load(rt.journal_last, __ATOMIC_ACQUIRE), __ATOMIC_RELEASE);
}

std::vector<JournalEntry> journal_read(const View &v) {
    uint64_t cleared = shared::load(v.rt->journal_cleared, __ATOMIC_ACQUIRE);
    uint64_t last = shared::load(v.rt->journal_last, __ATOMIC_ACQUIRE);
    // At most one ring's worth after the cleared mark, whatever the words say.
    const uint64_t shown = std::min<uint64_t>(last > cleared ? last - cleared : 0, layout::kJournalSlots);
    std::vector<JournalEntry> out;
    for (uint64_t seq = last - shown + 1, n = 0; n < shown; ++seq, ++n) {
        const layout::JournalSlot &slot = v.journal->slots[seq % layout::kJournalSlots];
        if (shared::load(slot.stamp, __ATOMIC_ACQUIRE) != seq) continue;
        JournalEntry e{seq, text_of(slot.call),
                       text_of(slot.args)};
        __atomic_thread_fence(__ATOMIC_ACQUIRE);
        if (shared::load(slot.stamp, __ATOMIC_RELAXED) == seq) out.push_back(std::move(e));
    }
    return out;
}

}  // namespace swsim::hooks
