// Run-time view of the catalogues: every scalar, table and column as data,
// each bound to its accessors through the thunks of row_key.hpp.  The generic
// handlers read nothing else.  No net-snmp here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

#include "agent/mib_types.hpp"
#include "tables/row_key.hpp"

namespace snmpapi {

// An object identifier as 32-bit sub-identifiers.
struct Oid {
    static constexpr size_t kMax = 32;
    uint32_t subids[kMax] = {};
    size_t len = 0;
    constexpr Oid(std::initializer_list<uint32_t> l) {
        for (uint32_t s : l) subids[len++] = s;
    }
    constexpr std::span<const uint32_t> view() const { return {subids, len}; }
};

struct ColumnDesc {
    const char *table;
    unsigned number;
    const char *name;
    Type type;
    GetThunk get;
    SetThunk set;  // null: the column is read-only
    Range range;
};

struct TableDesc {
    const char *name;
    bool writable;    // registered read-write
    bool registered;  // start-up registers it
    bool built;       // its accessors exist in this build
    const IndexKind *index_kinds;
    size_t index_count;
    unsigned lowest_column;
    unsigned highest_column;
    const char *writable_columns;  // space-separated names, as catalogued
    Oid oid;
    ExistsThunk exists;  // the table's row check (built tables only)
};

enum class ScalarHandler : uint8_t { COMMON, CHASSIS, OSPF, RIP };

struct ScalarDesc {
    const char *name;
    bool writable;
    Type type;
    Range range;
    ScalarHandler handler;
    bool served;  // registered by this build
    Oid oid;      // without the instance sub-identifier 0
    GetThunk get;
    SetThunk set;
};

std::span<const TableDesc> all_tables();
std::span<const ColumnDesc> all_columns();
std::span<const ScalarDesc> all_scalars();

// The entry called `name` of a catalogue-made array, or null.
template <class T>
const T *find_named(std::span<const T> entries, std::string_view name) {
    for (const T &e : entries)
        if (name == e.name) return &e;
    return nullptr;
}

const TableDesc *find_table(std::string_view name);
const ScalarDesc *find_scalar(std::string_view name);

}  // namespace snmpapi
