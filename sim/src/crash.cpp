#include "crash.hpp"

#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "swsim/control.hpp"

namespace swsim {
namespace crash {
namespace {

// By Step.
const std::vector<std::string> kNames = {
    "counter-claimed", "counter-prepared", "counter-copying", "counter-copied", "lock-claimed",
    "lock-held",       "lock-reading",     "fault-marked",    "fault-armed",    "journal-writing"};
static_assert(kStepCount == 10);

std::atomic<int> g_signal{SIGKILL};

// SWSIM_CRASH_AT="STEP" or "STEP:SIGNAL", read as the library loads.
int armed_from_environment() {
    const char *env = std::getenv("SWSIM_CRASH_AT");
    if (!env || !*env) return 0;
    std::string text = env;
    if (auto colon = text.find(':'); colon != std::string::npos) {
        g_signal.store(std::atoi(text.c_str() + colon + 1));
        text.resize(colon);
    }
    auto it = std::find(kNames.begin(), kNames.end(), text);
    return it == kNames.end() ? 0 : int(it - kNames.begin()) + 1;
}

}  // namespace

std::atomic<int> g_armed{armed_from_environment()};

void fire(Step step) {
    int expected = step + 1;
    if (g_armed.compare_exchange_strong(expected, 0)) raise(g_signal.load());
}

}  // namespace crash

void crash_at(const std::string &step, int signal) {
    if (step.empty()) {
        crash::g_armed.store(0);
        return;
    }
    auto it = std::find(crash::kNames.begin(), crash::kNames.end(), step);
    if (it == crash::kNames.end()) throw Error("no crash step '" + step + "'");
    crash::g_signal.store(signal);
    crash::g_armed.store(int(it - crash::kNames.begin()) + 1);
}

const std::vector<std::string> &crash_steps() { return crash::kNames; }

}  // namespace swsim
