// Cost of the work a table handler does before it serves a request: take the
// configuration read lock, re-run the table's population over the row store,
// free the lock.  Runs in process against the simulated switch of a scenario
// (default: scenarios/max.json) and prints nanoseconds per refresh and per row
// for some large tables, so that changes to the row store or to the
// platform calls can be compared without the network in the way.
//
//   refresh_bench [SCENARIO] [REFRESHES]
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "agent/config_lock.hpp"
#include "swplatform/platform.h"
#include "swsim/control.hpp"
#include "tables/catalogue.hpp"
#include "tables/table_runtime.hpp"
#include "tables/tables.hpp"

namespace fs = std::filesystem;

namespace {

struct Subject {
    const char *table;
    void (*init)();
    void (*populate)();
};

#define SA_SUBJECT(name) \
    {#name, &init_##name, [] { init_index_##name(&name##_createEntry); }}
const Subject kSubjects[] = {SA_SUBJECT(portTable), SA_SUBJECT(dot1dBasePortTable), SA_SUBJECT(dot1dTpPortTable),
                             SA_SUBJECT(queuePortTable), SA_SUBJECT(ifStackTable)};
#undef SA_SUBJECT

double time_ns(const Subject &s, int refreshes) {
    const auto t0 = std::chrono::steady_clock::now();
    for (int i = 0; i < refreshes; ++i) {
        snmpapi::config_read_lock();
        s.populate();
        snmpapi::config_unlock();
    }
    const auto t1 = std::chrono::steady_clock::now();
    return std::chrono::duration<double, std::nano>(t1 - t0).count() / refreshes;
}

}  // namespace

int main(int argc, char **argv) {
    const std::string scenario = argc > 1 ? argv[1] : std::string(SOURCE_DIR) + "/scenarios/max.json";
    const int refreshes = argc > 2 ? std::atoi(argv[2]) : 20000;
    const fs::path dir = fs::temp_directory_path() / ("refresh-bench-" + std::to_string(getpid()));
    fs::create_directories(dir);
    const std::string state = (dir / "switch.state").string();
    swsim::create_state(state, scenario);
    setenv("SWSIM_STATE", state.c_str(), 1);
    if (swsim::platform_reopen() < 0) {
        std::fprintf(stderr, "cannot open the simulated switch\n");
        return 1;
    }
    init_agent("refresh_bench");
    init_snmp("refresh_bench");

    std::printf("%-22s %6s %14s %10s\n", "table", "rows", "ns/refresh", "ns/row");
    for (const Subject &s : kSubjects) {
        s.init();
        const size_t rows = snmpapi::find_runtime(s.table)->row_count();
        time_ns(s, refreshes / 10);  // warm-up
        const double ns = time_ns(s, refreshes);
        std::printf("%-22s %6zu %14.0f %10.2f\n", s.table, rows, ns, rows ? ns / double(rows) : 0.0);
    }
    fs::remove_all(dir);
    return 0;
}
