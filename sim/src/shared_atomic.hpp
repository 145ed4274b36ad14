// Atomic operations on the 64-bit words that processes share in the state
// file (declared alignas(layout::kShared)).
//
// Where the processor has 64-bit atomic instructions (x86, either width)
// these are the compiler's own.  A 32-bit PowerPC has none: there the
// compiler calls libatomic, whose locks are private to one process, so two
// processes could both take a lock word.  On such a processor every operation
// here holds a lock that all processes see instead: one of kStripes bytes of
// a lock file of the machine, taken with an open file description lock (the
// kernel drops it when its holder dies), with the process's own mutex of that
// stripe (the file lock does not keep out the threads of the same process).
// The stripe is chosen by the word's place in its page, which is the same in
// every process's mapping of the file.
#pragma once

#include <cstdint>

namespace swsim::shared {

inline constexpr bool kNative = __atomic_always_lock_free(sizeof(uint64_t), nullptr);

// Holds the stripe of `word` for a scope (only where kNative is false).
class Guard {
public:
    explicit Guard(const void *word);
    ~Guard();
    Guard(const Guard &) = delete;
    Guard &operator=(const Guard &) = delete;

private:
    unsigned stripe_;
};

template <class T>
T load(const T &w, int order = __ATOMIC_SEQ_CST) {
    if constexpr (kNative) {
        return __atomic_load_n(&w, order);
    } else {
        Guard g(&w);
        return *const_cast<const volatile T *>(&w);
    }
}

template <class T>
void store(T &w, T v, int order = __ATOMIC_SEQ_CST) {
    if constexpr (kNative) {
        __atomic_store_n(&w, v, order);
    } else {
        Guard g(&w);
        *const_cast<volatile T *>(&w) = v;
    }
}

// Replaces `expect` by `want`; false (and nothing changed) if `w` held another value.
template <class T>
bool cas(T &w, T expect, T want, int order = __ATOMIC_SEQ_CST) {
    if constexpr (kNative) {
        return __atomic_compare_exchange_n(&w, &expect, want, false, order,
                                           order == __ATOMIC_ACQ_REL ? __ATOMIC_ACQUIRE : order);
    } else {
        Guard g(&w);
        volatile T &word = *const_cast<volatile T *>(&w);
        if (word != expect) return false;
        word = want;
        return true;
    }
}

// Adds `d` (wrapping) and returns the new value.
template <class T>
T add_fetch(T &w, T d, int order = __ATOMIC_SEQ_CST) {
    if constexpr (kNative) {
        return __atomic_add_fetch(&w, d, order);
    } else {
        Guard g(&w);
        volatile T &word = *const_cast<volatile T *>(&w);
        const T now = T(word + d);
        word = now;
        return now;
    }
}
template <class T>
T sub_fetch(T &w, T d, int order = __ATOMIC_SEQ_CST) {
    return add_fetch(w, T(T(0) - d), order);
}

}  // namespace swsim::shared
