// The routing tables that answer GET and GETNEXT themselves (the route
// tables, OSPF and RIP), each described once as data: its OID, its index
// objects, its columns and how the platform finds its rows by key.  One
// engine serves them all: a GET finds the row of exactly the index asked
// for; a GETNEXT finds, column by column, the first row that follows the
// OID asked for.  Every answer is one platform find (two when a column has
// no row after the one asked for), whatever the size of the table.  No
// net-snmp here; the handlers that use it are in routing_agent.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "mibs/routing/index_bound.hpp"
#include "swplatform/platform.h"
#include "tables/descriptors.hpp"

namespace snmpapi::routing {

// Room for one row of any of the tables, as the platform returns it.
union RowData {
    sw_route_t route;
    sw_ospf_area_t area;
    sw_ospf_if_t oif;
    sw_ospf_virt_if_t virt_if;
    sw_ospf_nbr_t nbr;
    sw_ospf_virt_nbr_t virt_nbr;
    sw_ospf_lsa_t lsa;
    sw_ospf_aggregate_t aggregate;
    sw_rip_if_t rip_if;
    sw_rip_peer_t peer;
};

inline constexpr std::size_t kMaxKeyWords = 8;

struct HandColumn {
    unsigned number;
    const char *name;
    Value (*get)(const RowData &row);  // strings point into the row
};

struct HandTable {
    const char *name;
    Oid oid;  // the table; rows are oid.1.<column>.<index>
    std::span<const Part> index;
    std::span<const HandColumn> columns;  // the accessible ones, ascending
    // Finds a row by key (SW_FIND_* mode) and gives the row's own key
    // words; false when there is none (or the platform failed).
    bool (*find)(int mode, const uint32_t *key, RowData &row, uint32_t *row_key);
};

// Their OIDs, by name (hand_tables.def).
namespace oids {
#define HAND_TABLE(name, ...) inline constexpr Oid name{__VA_ARGS__};
#include "mibs/routing/hand_tables.def"
#undef HAND_TABLE
}  // namespace oids

// All of them, in registration order.
std::span<const HandTable> hand_tables();
const HandTable *find_hand_table(const char *name);

// One answer: the object's full OID and its value.
struct HandAnswer {
    std::vector<uint32_t> oid;
    Value value;
};

// GET of `name`: nothing when it names no object of the table.
std::optional<HandAnswer> hand_get(const HandTable &t, std::span<const uint32_t> name, RowData &row);
// GETNEXT from `name` (with `inclusive`, `name` itself if it is an object):
// nothing when no object of the table follows it.
std::optional<HandAnswer> hand_next(const HandTable &t, std::span<const uint32_t> name, RowData &row,
                                    bool inclusive = false);

// ---- helpers for the tables' descriptions ----

inline Value word_value(Type type, uint32_t word) {
    Value v;
    v.type = type;
    v.word = word;
    return v;
}
inline Value bytes_value(const void *bytes, std::size_t len) {
    Value v;
    v.type = Type::OCTET_STR;
    v.bytes = bytes;
    v.len = len;
    return v;
}
// The OBJECT IDENTIFIER 0.0.
Value null_oid_value();
}  // namespace snmpapi::routing
