#include "row_store.hpp"

#include <cstdio>

#include "tables/catalogue.hpp"

namespace unit {

RowLog &rows() {
    static RowLog log;
    return log;
}

std::string mac_text(const uint8_t *mac, size_t len) {
    std::string s;
    char octet[4];
    for (size_t i = 0; i < len; ++i) {
        std::snprintf(octet, sizeof octet, i ? ":%02x" : "%02x", mac[i]);
        s += octet;
    }
    return s;
}

void *add_int_row(int32_t index) {
    rows().ints.push_back(index);
    return &rows();
}
void *add_gauge_row(uint32_t index) { return add_int_row(static_cast<int32_t>(index)); }
void *add_mac_row(const uint8_t *mac, size_t len) {
    rows().keys.push_back(mac_text(mac, len));
    return &rows();
}
void *add_fdb_row(uint32_t fid, const uint8_t *mac, size_t len) {
    rows().keys.push_back(std::to_string(fid) + "/" + mac_text(mac, len));
    return &rows();
}

}  // namespace unit

namespace {
void removed(const char *table, const std::string &key) { unit::rows().removed.push_back(table + (" " + key)); }
}  // namespace

extern "C" {
// The tables whose row checks the tests reach, by index type.
#define UNIT_INT_TABLES(X)                                                                                  \
    X(portTable) X(ifTable) X(ifXTable) X(dot3StatsTable) X(ddTransceiversTable) X(rateLimitPortTable)      \
    X(bcastStormTable) X(mirrorTable) X(trunkTable) X(lacpPortTable) X(dot3adAggTable) X(dot3adAggPortTable) \
    X(dot3adAggPortListTable) X(dot3adAggPortStatsTable) X(dot3adAggPortDebugTable) X(dot1dBasePortTable)    \
    X(dot1dTpPortTable) X(dot1dStpPortTable) X(staPortTable) X(dot1qPortVlanTable) X(dot1dPortPriorityTable) \
    X(dot1dPortCapabilitiesTable) X(eapsInfoTable)
#define UNIT_GAUGE_TABLES(X) X(dot1qVlanStaticTable) X(vlanTable) X(igmpSnoopRouterStaticTable) X(igmpSnoopRouterCurrentTable)
#define UNIT_INT_PAIR_TABLES(X) X(ifStackTable) X(queuePortTable) X(dot1dTrafficClassTable)
#define UNIT_GAUGE_PAIR_TABLES(X) \
    X(dot1qVlanCurrentTable) X(igmpSnoopMulticastStaticTable) X(igmpSnoopMulticastCurrentTable)

#define UNIT_REMOVER(T, table) \
    void table##_removeEntry(T i) { removed(#table, std::to_string(i)); }
#define UNIT_PAIR_REMOVER(T, table) \
    void table##_removeEntry(T a, T b) { removed(#table, std::to_string(a) + "." + std::to_string(b)); }
#define UNIT_INT_REMOVER(table) UNIT_REMOVER(int32_t, table)
#define UNIT_GAUGE_REMOVER(table) UNIT_REMOVER(uint32_t, table)
#define UNIT_INT_PAIR_REMOVER(table) UNIT_PAIR_REMOVER(int32_t, table)
#define UNIT_GAUGE_PAIR_REMOVER(table) UNIT_PAIR_REMOVER(uint32_t, table)
UNIT_INT_TABLES(UNIT_INT_REMOVER)
UNIT_GAUGE_TABLES(UNIT_GAUGE_REMOVER)
UNIT_INT_PAIR_TABLES(UNIT_INT_PAIR_REMOVER)
UNIT_GAUGE_PAIR_TABLES(UNIT_GAUGE_PAIR_REMOVER)
// Chassis and inventory.
#define UNIT_CHASSIS_INT_TABLES(X)                                                                  \
    X(cpuActiveUsageTable) X(memActiveUsageTable) X(switchInfoTable) X(switchMacAddrUsageTable)     \
    X(switchMpuTable) X(switchIndivAlarmOutTable) X(entPhysicalTable)
#define UNIT_CHASSIS_PAIR_TABLES(X)                                                                 \
    X(switchIndivPowerTable) X(switchIndivFanTable) X(switchIndivAlarmTable) X(entPhysicalContainsTable) \
    X(entAliasMappingTable) X(entLPMappingTable)
UNIT_CHASSIS_INT_TABLES(UNIT_INT_REMOVER)
UNIT_CHASSIS_PAIR_TABLES(UNIT_INT_PAIR_REMOVER)


void dot1dTpFdbTable_removeEntry(const uint8_t *mac, size_t len) { removed("dot1dTpFdbTable", unit::mac_text(mac, len)); }
void dot1qTpFdbTable_removeEntry(uint32_t fid, const uint8_t *mac, size_t len) {
    removed("dot1qTpFdbTable", std::to_string(fid) + "/" + unit::mac_text(mac, len));
}
void *trunkTable_createEntry(int32_t trunk) {
    unit::rows().created.push_back("trunkTable " + std::to_string(trunk));
    return &unit::rows();
}
}
