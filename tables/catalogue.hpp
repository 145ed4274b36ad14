// Compile-time view of the table catalogue: one type per table carrying its
// index types, and the declarations of every row function and column accessor
// that the catalogues name.  Accessors are defined in mibs/<area>/ with these
// exact C signatures; a mismatch is a compile error.  No net-snmp here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "agent/mib_types.hpp"
#include "agent/pp.h"

namespace snmpapi::tables {
#define TABLE(name, access, reg, state, idx, ...) \
    struct name {                                  \
        using Key = SA_INDEX_KEY(idx);             \
        static constexpr const char *table_name = #name; \
    };
#include "tables/catalogue.def"
#undef TABLE
}  // namespace snmpapi::tables

// Row functions of every built table.
#define SA_ROW_FUNCTIONS_LATER(name)
#define SA_ROW_FUNCTIONS_BUILT(name)                                                     \
    extern "C" {                                                                         \
    void init_##name(void);                                                              \
    ::snmpapi::CreateEntryFn<::snmpapi::tables::name::Key> name##_createEntry;           \
    ::snmpapi::RemoveEntryFn<::snmpapi::tables::name::Key> name##_removeEntry;           \
    ::snmpapi::InitIndexFn<::snmpapi::tables::name::Key> init_index_##name;              \
    ::snmpapi::ExistsEntryFn<::snmpapi::tables::name::Key> exists_entry_##name;          \
    }
#define TABLE(name, access, reg, state, ...) SA_ROW_FUNCTIONS_##state(name)
#include "tables/catalogue.def"
#undef TABLE

// Column accessors.
#define SA_COLUMN_SETTER_RO(table, name, type)
#define SA_COLUMN_SETTER_RW(table, name, type) \
    extern "C" ::snmpapi::SetFn<::snmpapi::tables::table::Key, ::snmpapi::Type::type> set_##name;
#define COLUMN(table, number, name, type, access, range)                                         \
    extern "C" ::snmpapi::GetFn<::snmpapi::tables::table::Key, ::snmpapi::Type::type> get_##name; \
    SA_COLUMN_SETTER_##access(table, name, type)
#include "tables/columns.def"
#undef COLUMN
