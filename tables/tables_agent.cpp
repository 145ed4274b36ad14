// The exported row functions of every built table, made from the catalogue:
//   init_<table>          registers the table and fills its first rows
//   <table>_createEntry   adds a row unless one with that index exists
//   <table>_removeEntry   removes the row with that index, if any
// Each is a thin wrapper over the table's TableRuntime.

#include "tables/catalogue.hpp"
#include "tables/table_runtime.hpp"
#include "tables/tables.hpp"

namespace snmpapi {
namespace {

#define SA_TABLE_RUNTIME_LATER(name, idx)
#define SA_TABLE_RUNTIME_BUILT(name, idx)                                   \
    void name##_refresh() { init_index_##name(&name##_createEntry); }      \
    TableRuntime name##_runtime(#name, &name##_refresh);
#define TABLE(name, access, reg, state, idx, ...) SA_TABLE_RUNTIME_##state(name, idx)
#include "tables/catalogue.def"
#undef TABLE

#define SA_TABLE_ENTRY_LATER(name)
#define SA_TABLE_ENTRY_BUILT(name) {#name, &name##_runtime},
#define TABLE(name, access, reg, state, ...) SA_TABLE_ENTRY_##state(name)
struct BuiltTable {
    const char *name;
    TableRuntime *runtime;
};
constexpr BuiltTable kBuiltTables[] = {
#include "tables/catalogue.def"
};
#undef TABLE

}  // namespace

TableRuntime *find_runtime(std::string_view name) {
    const BuiltTable *t = find_named(std::span<const BuiltTable>(kBuiltTables), name);
    return t ? t->runtime : nullptr;
}

}  // namespace snmpapi

#define SA_TABLE_EXPORTS_LATER(name, idx)
#define SA_TABLE_EXPORTS_BUILT(name, idx)                                                       \
    extern "C" void init_##name(void) { snmpapi::name##_runtime.init(); }                       \
    extern "C" void *name##_createEntry(SA_INDEX_PARAMS(idx)) {                                 \
        return snmpapi::name##_runtime.create_from<snmpapi::tables::name::Key>(SA_INDEX_ARGS(idx)); \
    }                                                                                           \
    extern "C" void name##_removeEntry(SA_INDEX_PARAMS(idx)) {                                  \
        snmpapi::name##_runtime.remove_from<snmpapi::tables::name::Key>(SA_INDEX_ARGS(idx));    \
    }
#define TABLE(name, access, reg, state, idx, ...) SA_TABLE_EXPORTS_##state(name, idx)
#include "tables/catalogue.def"
#undef TABLE
