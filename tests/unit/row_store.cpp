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
void *add_gauge_row(uint32_t index) {
    rows().ints.push_back(static_cast<int32_t>(index));
    return &rows();
}
void *add_mac_row(const uint8_t *mac, size_t len) {
    rows().keys.push_back(mac_text(mac, len));
    return &rows();
}
void *add_pair_row(int32_t first, int32_t second) {
    rows().keys.push_back(std::to_string(first) + "." + std::to_string(second));
    return &rows();
}
void *add_fdb_row(uint32_t fid, const uint8_t *mac, size_t len) {
    rows().keys.push_back(std::to_string(fid) + "/" + mac_text(mac, len));
    return &rows();
}

}  // namespace unit

using unit::rows;

extern "C" {
void portTable_removeEntry(int32_t i) { rows().removed.push_back("portTable " + std::to_string(i)); }
void dot1dBasePortTable_removeEntry(int32_t i) { rows().removed.push_back("dot1dBasePortTable " + std::to_string(i)); }
void dot1dTpPortTable_removeEntry(int32_t i) { rows().removed.push_back("dot1dTpPortTable " + std::to_string(i)); }
void dot1dTpFdbTable_removeEntry(const uint8_t *mac, size_t len) {
    rows().removed.push_back("dot1dTpFdbTable " + unit::mac_text(mac, len));
}
void dot1qTpFdbTable_removeEntry(uint32_t fid, const uint8_t *mac, size_t len) {
    rows().removed.push_back("dot1qTpFdbTable " + std::to_string(fid) + "/" + unit::mac_text(mac, len));
}
void *trunkTable_createEntry(int32_t trunk) {
    rows().created.push_back("trunkTable " + std::to_string(trunk));
    return &rows();
}
// Integer-indexed tables whose rows go through their row check.
#define UNIT_INT_ROW_REMOVER(table) \
    void table##_removeEntry(int32_t i) { rows().removed.push_back(#table " " + std::to_string(i)); }
UNIT_INT_ROW_REMOVER(trunkTable)
UNIT_INT_ROW_REMOVER(lacpPortTable)
UNIT_INT_ROW_REMOVER(dot3adAggTable)
UNIT_INT_ROW_REMOVER(dot3adAggPortTable)
UNIT_INT_ROW_REMOVER(dot3adAggPortListTable)
UNIT_INT_ROW_REMOVER(dot3adAggPortStatsTable)
UNIT_INT_ROW_REMOVER(dot3adAggPortDebugTable)
UNIT_INT_ROW_REMOVER(ifTable)
UNIT_INT_ROW_REMOVER(ifXTable)
#undef UNIT_INT_ROW_REMOVER
void ifStackTable_removeEntry(int32_t higher, int32_t lower) {
    rows().removed.push_back("ifStackTable " + std::to_string(higher) + "." + std::to_string(lower));
}
}
