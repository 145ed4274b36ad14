// Module entry.  snmpd loads libsnmpdAPI with `dlmod` and calls
// init_libsnmpdAPI once, before serving any request: it opens the platform
// library and then registers every scalar and table, in a fixed order.
// Results are not examined: a registration that fails does not stop the
// ones after it.

#include <string_view>

#include "swplatform/platform.h"
#include "tables/catalogue.hpp"
#include "tables/table_runtime.hpp"
#include "tables/tables.hpp"

extern "C" void init_scalars(void);
extern "C" void init_lldp(void);
// The routing tables that answer GET and GETNEXT themselves (mibs/routing/).
extern "C" void init_ipCidrRouteTable(void);
extern "C" void init_inetCidrRouteTable(void);
extern "C" void init_rip2Table(void);
extern "C" void init_ospfTables(void);
extern "C" void init_rmon(void);
extern "C" void init_trap(void);

namespace {

struct Step {
    const char *name;
    void (*call)();      // a start-up function of this build
    const char *table;   // or the table whose initialiser this step runs
};

#define SA_STEP_ON(fn) {#fn, [] { fn(); }, nullptr},
#define SA_STEP_LATER(fn)
#define STEP(fn, state) SA_STEP_##state(fn)
#define TABLE_STEP(table) {"init_" #table, nullptr, #table},
constexpr Step kStartup[] = {
#include "agent/startup.def"
};
#undef STEP
#undef TABLE_STEP

}  // namespace

extern "C" void init_libsnmpdAPI(void) {
    for (const Step &step : kStartup) {
        if (step.call) {
            step.call();
        } else if (snmpapi::TableRuntime *t = snmpapi::find_runtime(step.table)) {
            t->init();  // the body of init_<table>
        }
    }
}
