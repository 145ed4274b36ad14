// The LLDP tables and scalars: each row function, column accessor and
// scalar accessor forwards to the access layer's function of the same
// object (ipc.hpp) with the same arguments and result, so that the LLDP
// MIB has one implementation whatever reaches it.  init_lldp keeps its
// place in the start-up order and has nothing to do.
#include "agent/pp.h"
#include "mibs/lldp/ipc.hpp"

// Index parameters of each LLDP table, as the table catalogue lists them.
#define SA_LLDP_IDX_lldpConfigManAddrTable INDEXES(IDX_INTEGER, IDX_OCTET_STR)
#define SA_LLDP_IDX_lldpLocManAddrTable INDEXES(IDX_INTEGER, IDX_OCTET_STR)
#define SA_LLDP_IDX_lldpLocPortTable INDEXES(IDX_INTEGER)
#define SA_LLDP_IDX_lldpPortConfigTable INDEXES(IDX_INTEGER)
#define SA_LLDP_IDX_lldpRemManAddrTable \
    INDEXES(IDX_TIMETICKS, IDX_INTEGER, IDX_INTEGER, IDX_INTEGER, IDX_IMPLIED_OCTET_STR)
#define SA_LLDP_IDX_lldpRemOrgDefInfoTable \
    INDEXES(IDX_TIMETICKS, IDX_INTEGER, IDX_INTEGER, IDX_OCTET_STR, IDX_INTEGER, IDX_INTEGER)
#define SA_LLDP_IDX_lldpRemTable INDEXES(IDX_TIMETICKS, IDX_INTEGER, IDX_INTEGER)
#define SA_LLDP_IDX_lldpRemUnknownTLVTable INDEXES(IDX_TIMETICKS, IDX_INTEGER, IDX_INTEGER, IDX_INTEGER)
#define SA_LLDP_IDX_lldpStatsRxPortTable INDEXES(IDX_INTEGER)
#define SA_LLDP_IDX_lldpStatsTxPortTable INDEXES(IDX_INTEGER)

// Results by value type; strings and OIDs add their out length.
#define SA_LLDP_RET_INTEGER int32_t
#define SA_LLDP_RET_COUNTER uint32_t
#define SA_LLDP_RET_GAUGE uint32_t
#define SA_LLDP_RET_TIMETICKS uint32_t
#define SA_LLDP_RET_OCTET_STR const uint8_t *
#define SA_LLDP_RET_OBJECT_ID const uint32_t *
#define SA_LLDP_LEN_PARAM_INTEGER
#define SA_LLDP_LEN_PARAM_COUNTER
#define SA_LLDP_LEN_PARAM_GAUGE
#define SA_LLDP_LEN_PARAM_TIMETICKS
#define SA_LLDP_LEN_PARAM_OCTET_STR , size_t *len
#define SA_LLDP_LEN_PARAM_OBJECT_ID , size_t *len
#define SA_LLDP_LEN_ARG_INTEGER
#define SA_LLDP_LEN_ARG_COUNTER
#define SA_LLDP_LEN_ARG_GAUGE
#define SA_LLDP_LEN_ARG_TIMETICKS
#define SA_LLDP_LEN_ARG_OCTET_STR , len
#define SA_LLDP_LEN_ARG_OBJECT_ID , len
// What a setter receives after the index.
#define SA_LLDP_VALUE_PARAM_INTEGER , int32_t value
#define SA_LLDP_VALUE_PARAM_OCTET_STR , const uint8_t *value, size_t value_len
#define SA_LLDP_VALUE_ARG_INTEGER , value
#define SA_LLDP_VALUE_ARG_OCTET_STR , value, value_len

// ---- tables ------------------------------------------------------------------------------------

#define SA_LLDP_SET_RO(table, name, type)
#define SA_LLDP_SET_RW(table, name, type)                                                                      \
    extern "C" int set_##name(SA_INDEX_PARAMS(SA_LLDP_IDX_##table) SA_LLDP_VALUE_PARAM_##type) {              \
        return set_ipc_##name(SA_INDEX_ARGS(SA_LLDP_IDX_##table) SA_LLDP_VALUE_ARG_##type);                    \
    }
#define COLUMN(table, number, name, type, access, range)                                                       \
    extern "C" SA_LLDP_RET_##type get_##name(SA_INDEX_PARAMS(SA_LLDP_IDX_##table) SA_LLDP_LEN_PARAM_##type) { \
        return get_ipc_##name(SA_INDEX_ARGS(SA_LLDP_IDX_##table) SA_LLDP_LEN_ARG_##type);                      \
    }                                                                                                          \
    SA_LLDP_SET_##access(table, name, type)
#include "mibs/lldp/columns.def"
#undef COLUMN

// ---- rows and scalars ------------------------------------------------------------------------

#define LLDP_TABLE(table)                                                                          \
    extern "C" int init_index_##table(::snmpapi::CreateEntryFn<::snmpapi::tables::table::Key> *create) { \
        return init_ipc_index_##table(create);                                                     \
    }                                                                                              \
    extern "C" int exists_entry_##table(SA_INDEX_PARAMS(SA_LLDP_IDX_##table)) {                    \
        return exists_ipc_entry_##table(SA_INDEX_ARGS(SA_LLDP_IDX_##table));                       \
    }
// A scalar has no index: a string getter takes its out length alone.
#define SA_LLDP_SCALAR_PARAM_INTEGER void
#define SA_LLDP_SCALAR_PARAM_GAUGE void
#define SA_LLDP_SCALAR_PARAM_TIMETICKS void
#define SA_LLDP_SCALAR_PARAM_OCTET_STR size_t *len
#define SA_LLDP_SCALAR_ARG_INTEGER
#define SA_LLDP_SCALAR_ARG_GAUGE
#define SA_LLDP_SCALAR_ARG_TIMETICKS
#define SA_LLDP_SCALAR_ARG_OCTET_STR len
#define SA_LLDP_SCALAR_SET_RO(name)
#define SA_LLDP_SCALAR_SET_RW(name) \
    extern "C" int set_##name(int32_t value) { return set_ipc_##name(value); }
#define LLDP_SCALAR(name, type, access)                                                                \
    extern "C" SA_LLDP_RET_##type get_##name(SA_LLDP_SCALAR_PARAM_##type) {                           \
        return get_ipc_##name(SA_LLDP_SCALAR_ARG_##type);                                              \
    }                                                                                                  \
    SA_LLDP_SCALAR_SET_##access(name)
#include "mibs/lldp/objects.def"
#undef LLDP_TABLE
#undef LLDP_SCALAR

extern "C" void init_lldp(void) {}
