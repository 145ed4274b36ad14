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

int init_index_cpuActiveUsageTable(void *(*create)(int32_t)) {
    populate_present_units(create);
    return 0;
}
int exists_entry_cpuActiveUsageTable(int32_t unit) { return unit_row_exists(unit, cpuActiveUsageTable_removeEntry); }
int32_t get_cpuActiveUsageValue(int32_t unit) {
    return monitor(cfg_cpumon_get_cpu_info, static_cast<int>(unit0_of(unit)), SW_CPUMON_ACTIVE);
}

int init_index_memActiveUsageTable(void *(*create)(int32_t)) {
    populate_present_units(create);
    return 0;
}
int exists_entry_memActiveUsageTable(int32_t unit) { return unit_row_exists(unit, memActiveUsageTable_removeEntry); }
int32_t get_memActiveUsageValue(int32_t unit) {
    return monitor(cfg_cpumon_get_cpu_mem_info, static_cast<int>(unit0_of(unit)), SW_CPUMON_ACTIVE);
}

int init_index_cpuStandbyUsageTable(void *(*)(int32_t)) { return 0; }
int exists_entry_cpuStandbyUsageTable(int32_t) { return 1; }
int32_t get_cpuStandbyUsageValue(int32_t) { return monitor(cfg_cpumon_get_cpu_info, 0, SW_CPUMON_STANDBY); }

int init_index_memStandbyUsageTable(void *(*)(int32_t)) { return 0; }
int exists_entry_memStandbyUsageTable(int32_t) { return 1; }
int32_t get_memStandbyUsageValue(int32_t) { return monitor(cfg_cpumon_get_cpu_mem_info, 0, SW_CPUMON_STANDBY); }

int32_t get_swCpuUsage(void) { return monitor(cfg_cpumon_get_cpu_info, 0, switch_selector()); }
int32_t get_swMemUsage(void) { return monitor(cfg_cpumon_get_cpu_mem_info, 0, switch_selector()); }

}  // extern "C"
