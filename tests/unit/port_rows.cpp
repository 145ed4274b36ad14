#include "port_rows.hpp"

#include <string>

#include "row_store.hpp"

namespace unit {
void *add_int_int_row(int32_t index, int32_t second) {
    rows().keys.push_back(std::to_string(index) + "/" + std::to_string(second));
    return &rows();
}
}  // namespace unit

namespace {
void removed(const char *table, const std::string &key) { unit::rows().removed.push_back(table + (" " + key)); }
}  // namespace

extern "C" {
void dot3StatsTable_removeEntry(int32_t i) { removed("dot3StatsTable", std::to_string(i)); }
void ddTransceiversTable_removeEntry(int32_t i) { removed("ddTransceiversTable", std::to_string(i)); }
void rateLimitPortTable_removeEntry(int32_t i) { removed("rateLimitPortTable", std::to_string(i)); }
void bcastStormTable_removeEntry(int32_t i) { removed("bcastStormTable", std::to_string(i)); }
void mirrorTable_removeEntry(int32_t i) { removed("mirrorTable", std::to_string(i)); }
void queuePortTable_removeEntry(int32_t i, int32_t q) {
    removed("queuePortTable", std::to_string(i) + "/" + std::to_string(q));
}
}
