// Filter counters: the switch's packet filters (filterCounterInfoTable,
// filterCounterEgressInfoTable) and what each matched on each port it is
// applied on (filterCounterValueTable, filterCounterEgressValueTable).
// Filters are rows 1 .. 16, the slots plus one; ports are interface indexes.
#include <cstring>

#include "agent/ifindex.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

int slot_of(int32_t index) { return index >= 1 && index <= SW_FILTERS ? int(index - 1) : -1; }

sw_filter_t filter(int direction, int32_t index) {
    sw_filter_t f{};
    const int slot = slot_of(index);
    if (slot < 0 || cfg_get_filter(direction, slot, &f) < 0) std::memset(&f, 0, sizeof f);
    return f;
}

// A filter's name or rule in the caller's static area.
const uint8_t *filter_text(int direction, int32_t index, bool rule, char (&area)[SW_FILTER_TEXT_SIZE], size_t *len) {
    const sw_filter_t f = filter(direction, index);
    std::memcpy(area, rule ? f.rule : f.name, sizeof area);
    area[sizeof area - 1] = '\0';
    *len = std::strlen(area);
    return reinterpret_cast<const uint8_t *>(area);
}

int populate_filters(int direction, void *(*create)(int32_t)) {
    for (int32_t index = 1; index <= SW_FILTERS; ++index)
        if (filter(direction, index).in_use) create(index);
    return 0;
}
int filter_exists(int direction, int32_t index, void (*remove)(int32_t)) {
    if (filter(direction, index).in_use) return 1;
    remove(index);
    return 0;
}

bool on_port(int direction, int32_t index, int32_t ifindex) {
    const int slot = slot_of(index);
    return slot >= 0 && ifindex >= 1 && ifindex <= 512 &&
           cfg_filter_on_port(direction, slot, ifindex_to_unit0(ifindex), ifindex_to_port0(ifindex)) == 1;
}

// Filter by filter, the ports it is applied on.
int populate_values(int direction, void *(*create)(int32_t, int32_t)) {
    for (int32_t index = 1; index <= SW_FILTERS; ++index) {
        if (!filter(direction, index).in_use) continue;
        ifindex_for_each_port([&](int unit0, int port0) {
            const int32_t port = port_to_ifindex(unit0, port0);
            if (on_port(direction, index, port)) create(index, port);
        });
    }
    return 0;
}
int value_exists(int direction, int32_t index, int32_t port, void (*remove)(int32_t, int32_t)) {
    if (on_port(direction, index, port)) return 1;
    remove(index, port);
    return 0;
}

struct Counts {
    uint64_t packets = 0, octets = 0;
};
Counts counts(int direction, int32_t index, int32_t port) {
    Counts c;
    const int slot = slot_of(index);
    if (slot < 0 || port < 1 || port > 512 ||
        bcmd_get_filter_counter(direction, slot, ifindex_to_unit0(port), ifindex_to_port0(port), &c.packets,
                                &c.octets) < 0)
        return {};
    return c;
}

}  // namespace

extern "C" {

#define SA_FILTER_TABLES(info, value, icol, vcol, direction)                                                                  \
    int init_index_##info(void *(*create)(int32_t)) { return populate_filters(direction, create); }               \
    int exists_entry_##info(int32_t i) { return filter_exists(direction, i, info##_removeEntry); }                \
    const uint8_t *get_##icol##Name(int32_t i, size_t *len) {                                                      \
        static char area[SW_FILTER_TEXT_SIZE];                                                                     \
        return filter_text(direction, i, false, area, len);                                                        \
    }                                                                                                              \
    const uint8_t *get_##icol##Rule(int32_t i, size_t *len) {                                                      \
        static char area[SW_FILTER_TEXT_SIZE];                                                                     \
        return filter_text(direction, i, true, area, len);                                                         \
    }                                                                                                              \
    int init_index_##value(void *(*create)(int32_t, int32_t)) { return populate_values(direction, create); }       \
    int exists_entry_##value(int32_t i, int32_t port) { return value_exists(direction, i, port, value##_removeEntry); } \
    uint64_t get_##vcol##Packets(int32_t i, int32_t port) { return counts(direction, i, port).packets; }          \
    uint64_t get_##vcol##Octets(int32_t i, int32_t port) { return counts(direction, i, port).octets; }
SA_FILTER_TABLES(filterCounterInfoTable, filterCounterValueTable, filterCounterInfo, filterCounterValue, SW_FILTER_INGRESS)
SA_FILTER_TABLES(filterCounterEgressInfoTable, filterCounterEgressValueTable, filterCounterEgressInfo,
                 filterCounterEgressValue, SW_FILTER_EGRESS)
#undef SA_FILTER_TABLES

}  // extern "C"
