// The <table>_removeEntry functions of the LLDP tables, for the row checks
// under test: each records the row it was asked to remove as
// "<table> a.b.c", a string index as its octets in hexadecimal.
#include <cstdio>
#include <string>

#include "row_store.hpp"
#include "tables/catalogue.hpp"

namespace {

std::string hex(const uint8_t *p, size_t n) {
    std::string out;
    char two[3];
    for (size_t i = 0; i < n; ++i) {
        std::snprintf(two, sizeof two, "%02x", p[i]);
        out += two;
    }
    return out;
}

template <class... Parts>
void removed(const char *table, Parts... parts) {
    std::string key;
    ((key += (key.empty() ? "" : ".") + std::string(parts)), ...);
    unit::rows().removed.push_back(std::string(table) + " " + key);
}

using std::to_string;

}  // namespace

extern "C" {
#define UNIT_LLDP_PORT_TABLES(X) X(lldpPortConfigTable) X(lldpLocPortTable) X(lldpStatsTxPortTable) X(lldpStatsRxPortTable)
#define UNIT_LLDP_PORT_REMOVER(table) \
    void table##_removeEntry(int32_t i) { removed(#table, to_string(i)); }
UNIT_LLDP_PORT_TABLES(UNIT_LLDP_PORT_REMOVER)

void lldpLocManAddrTable_removeEntry(int32_t subtype, const uint8_t *a, size_t n) {
    removed("lldpLocManAddrTable", to_string(subtype), hex(a, n));
}
void lldpRemTable_removeEntry(uint32_t tm, int32_t port, int32_t idx) {
    removed("lldpRemTable", to_string(tm), to_string(port), to_string(idx));
}
void lldpRemManAddrTable_removeEntry(uint32_t tm, int32_t port, int32_t idx, int32_t subtype, const uint8_t *a,
                                     size_t n) {
    removed("lldpRemManAddrTable", to_string(tm), to_string(port), to_string(idx), to_string(subtype), hex(a, n));
}
void lldpRemUnknownTLVTable_removeEntry(uint32_t tm, int32_t port, int32_t idx, int32_t type) {
    removed("lldpRemUnknownTLVTable", to_string(tm), to_string(port), to_string(idx), to_string(type));
}
}
