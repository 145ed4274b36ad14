// CFM delay measurement probes (cfmProbeDmTable): the two-way delay probes
// the switch runs from a local MEP on a port toward a remote MEP, by probe
// number, with the last measurement of each.  A probe without a measurement
// (its port's link down, its unit absent) keeps its row and reads delay 0
// and variation 0.
#include <cstring>

#include "agent/ifindex.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

bool probe(int32_t index, sw_cfm_probe_t &out) {
    return index >= 1 && index <= SW_CFM_PROBE_MAX_ID && cfg_get_cfm_probe(uint32_t(index), &out) >= 0;
}

sw_cfm_dm_result_t result(int32_t index) {
    sw_cfm_dm_result_t r{};
    if (index < 1 || index > SW_CFM_PROBE_MAX_ID || bcmd_get_cfm_dm_result(uint32_t(index), &r) < 0 || !r.valid)
        return {};
    return r;
}

}  // namespace

extern "C" {

int init_index_cfmProbeDmTable(void *(*create)(int32_t)) {
    sw_cfm_probe_t p{};
    for (uint32_t after = 0; cfg_get_cfm_probe_next(after, &p) >= 0 && p.id > after; after = p.id)
        create(int32_t(p.id));
    return 0;
}
int exists_entry_cfmProbeDmTable(int32_t index) {
    sw_cfm_probe_t p{};
    if (probe(index, p)) return 1;
    cfmProbeDmTable_removeEntry(index);
    return 0;
}

// The local MEP's port by its interface index; 0 for no probe.
int32_t get_cfmProbeDmPort(int32_t index) {
    sw_cfm_probe_t p{};
    return probe(index, p) ? port_to_ifindex(p.unit0, p.port0) : 0;
}
// The remote MEP's MAC address; empty for no probe.
const uint8_t *get_cfmProbeDmTarget(int32_t index, size_t *len) {
    static uint8_t mac[6];
    sw_cfm_probe_t p{};
    *len = probe(index, p) ? sizeof mac : 0;
    std::memcpy(mac, p.target, sizeof mac);
    return mac;
}
uint32_t get_cfmProbeDmDelay(int32_t index) { return result(index).delay_us; }
uint32_t get_cfmProbeDmDelayVariation(int32_t index) { return result(index).variation_us; }

}  // extern "C"
