// Processor and memory load: per present unit (cpuActiveUsageTable,
// memActiveUsageTable), for the switch (swCpuUsage, swMemUsage), and the
// standby management processor's tables, which hold no rows.  Every read
// asks the platform's monitor; a failing monitor reads 0.  The platform's
// values are passed through as they come (percent on this switch).
#include "mibs/chassis/units.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace {

using Monitor = int (*)(int, int, uint32_t *);

int32_t monitor(Monitor call, int unit0, int selector) {
    uint32_t value = 0;
    return call(unit0, selector, &value) < 0 ? 0 : static_cast<int32_t>(value);
}

// The selector word of the status block: which processor the switch-wide
// scalars read.
int switch_selector() {
    const sw_status_t *st = get_status();
    return st != nullptr ? static_cast<int>(st->cpu_selector) : 0;
}

}  // namespace

using namespace snmpapi::chassis;

extern "C" {

// One row per present unit, its own processor's reading.
#define SA_ACTIVE_USAGE_TABLE(table, column, call)                                                 \
    int init_index_##table(void *(*create)(int32_t)) {                                             \
        populate_present_units(create);                                                            \
        return 0;                                                                                  \
    }                                                                                              \
    int exists_entry_##table(int32_t unit) { return unit_row_exists(unit, table##_removeEntry); } \
    int32_t get_##column(int32_t unit) { return monitor(call, static_cast<int>(unit0_of(unit)), SW_CPUMON_ACTIVE); }
SA_ACTIVE_USAGE_TABLE(cpuActiveUsageTable, cpuActiveUsageValue, cfg_cpumon_get_cpu_info)
SA_ACTIVE_USAGE_TABLE(memActiveUsageTable, memActiveUsageValue, cfg_cpumon_get_cpu_mem_info)
#undef SA_ACTIVE_USAGE_TABLE

// No rows; the standby management processor's reading whatever the index.
#define SA_STANDBY_USAGE_TABLE(table, column, call)          \
    int init_index_##table(void *(*)(int32_t)) { return 0; } \
    int exists_entry_##table(int32_t) { return 1; }          \
    int32_t get_##column(int32_t) { return monitor(call, 0, SW_CPUMON_STANDBY); }
SA_STANDBY_USAGE_TABLE(cpuStandbyUsageTable, cpuStandbyUsageValue, cfg_cpumon_get_cpu_info)
SA_STANDBY_USAGE_TABLE(memStandbyUsageTable, memStandbyUsageValue, cfg_cpumon_get_cpu_mem_info)
#undef SA_STANDBY_USAGE_TABLE

int32_t get_swCpuUsage(void) { return monitor(cfg_cpumon_get_cpu_info, 0, switch_selector()); }
int32_t get_swMemUsage(void) { return monitor(cfg_cpumon_get_cpu_mem_info, 0, switch_selector()); }

}  // extern "C"
