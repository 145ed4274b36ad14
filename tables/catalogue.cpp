// The table and column catalogues, expanded into data.

#include <cstring>

#include "tables/catalogue.hpp"
#include "tables/descriptors.hpp"

namespace snmpapi {
namespace {

#define RANGE(lo, hi) ::snmpapi::Range{true, lo, hi}
#define NO_RANGE ::snmpapi::Range{}
#define SIZE(lo, hi) ::snmpapi::Range{true, lo, hi}
#define WRITABLE(names) names

// ---- Columns ---------------------------------------------------------------
#define SA_COLUMN_SET_RO(table, name, type) nullptr
#define SA_COLUMN_SET_RW(table, name, type) &set_thunk<tables::table::Key, Type::type, &set_##name>
#define COLUMN(table, number, name, type, access, range)                                       \
    ColumnDesc{#table, number, #name, Type::type,                                              \
               &get_thunk<tables::table::Key, Type::type, &get_##name>,                        \
               SA_COLUMN_SET_##access(table, name, type), range},
constexpr ColumnDesc kColumns[] = {
#include "tables/columns.def"
};
#undef COLUMN

// ---- Tables ----------------------------------------------------------------
#define SA_TABLE_EXISTS_BUILT(name) &exists_thunk<tables::name::Key, &exists_entry_##name>
#define SA_TABLE_EXISTS_LATER(name) nullptr
#define TABLE(name, access, reg, state, idx, lo, hi, writable, ...)                      \
    TableDesc{#name,                                                                       \
              std::string_view(#access) == "RW",                                          \
              std::string_view(#reg) == "REGISTERED",                                     \
              std::string_view(#state) == "BUILT",                                        \
              tables::name::Key::kinds,                                                   \
              tables::name::Key::count,                                                   \
              lo,                                                                         \
              hi,                                                                         \
              writable,                                                                   \
              Oid{__VA_ARGS__},                                                           \
              SA_TABLE_EXISTS_##state(name)},
constexpr TableDesc kTables[] = {
#include "tables/catalogue.def"
};
#undef TABLE

}  // namespace

std::span<const TableDesc> all_tables() { return kTables; }
std::span<const ColumnDesc> all_columns() { return kColumns; }

const TableDesc *find_table(std::string_view name) { return find_named(all_tables(), name); }

}  // namespace snmpapi
