// Bridge and VLAN tables the switch does not keep (unkept_columns.def): each
// holds no rows, answers any row as existing, reads 0 or no octets and takes
// any write without effect.  Also the scalars of features it lacks.
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

// Index parameters of each table, as in the table catalogue.
#define SA_KEYS_dot1qPortVlanStatisticsTable int32_t, uint32_t
#define SA_KEYS_dot1qPortVlanHCStatisticsTable int32_t, uint32_t
#define SA_KEYS_dot1qForwardAllTable uint32_t
#define SA_KEYS_dot1qForwardUnregisteredTable uint32_t
#define SA_KEYS_dot1qStaticUnicastTable uint32_t, const uint8_t *, size_t, int32_t
#define SA_KEYS_dot1qStaticMulticastTable uint32_t, const uint8_t *, size_t, int32_t
#define SA_KEYS_dot1qLearningConstraintsTable uint32_t, int32_t
#define SA_KEYS_dot1dPortGarpTable int32_t
#define SA_KEYS_dot1dPortGmrpTable int32_t
#define SA_KEYS_dot1dUserPriorityRegenTable int32_t, int32_t
#define SA_KEYS_dot1dPortOutboundAccessPriorityTable int32_t, int32_t
#define SA_KEYS_dot1dPortPairTable int32_t, int32_t
#define SA_KEYS_dot1dSrPortTable int32_t

#define SA_UNKEPT_ROWS(table)                                                        \
    int init_index_##table(void *(*)(SA_KEYS_##table)) { return 0; }                 \
    int exists_entry_##table(SA_KEYS_##table) { return 1; }

#define SA_UNKEPT_GET_INTEGER(name, ...) int32_t get_##name(__VA_ARGS__) { return 0; }
#define SA_UNKEPT_GET_COUNTER(name, ...) uint32_t get_##name(__VA_ARGS__) { return 0; }
#define SA_UNKEPT_GET_COUNTER64(name, ...) uint64_t get_##name(__VA_ARGS__) { return 0; }
#define SA_UNKEPT_GET_OCTET_STR(name, ...) const uint8_t *get_##name(__VA_ARGS__, size_t *) { return nullptr; }
#define SA_UNKEPT_SET_RO_INTEGER(name, ...)
#define SA_UNKEPT_SET_RO_COUNTER(name, ...)
#define SA_UNKEPT_SET_RO_COUNTER64(name, ...)
#define SA_UNKEPT_SET_RO_OCTET_STR(name, ...)
#define SA_UNKEPT_SET_RW_INTEGER(name, ...) int set_##name(__VA_ARGS__, int32_t) { return 0; }
#define SA_UNKEPT_SET_RW_OCTET_STR(name, ...) int set_##name(__VA_ARGS__, const uint8_t *, size_t) { return 0; }
#define SA_UNKEPT_COLUMN(name, type, access, keys) \
    SA_UNKEPT_GET_##type(name, keys) SA_UNKEPT_SET_##access##_##type(name, keys)

extern "C" {

SA_UNKEPT_ROWS(dot1qPortVlanStatisticsTable)
SA_UNKEPT_ROWS(dot1qPortVlanHCStatisticsTable)
SA_UNKEPT_ROWS(dot1qForwardAllTable)
SA_UNKEPT_ROWS(dot1qForwardUnregisteredTable)
SA_UNKEPT_ROWS(dot1qStaticUnicastTable)
SA_UNKEPT_ROWS(dot1qStaticMulticastTable)
SA_UNKEPT_ROWS(dot1qLearningConstraintsTable)
SA_UNKEPT_ROWS(dot1dPortGarpTable)
SA_UNKEPT_ROWS(dot1dPortGmrpTable)
SA_UNKEPT_ROWS(dot1dUserPriorityRegenTable)
SA_UNKEPT_ROWS(dot1dPortOutboundAccessPriorityTable)
SA_UNKEPT_ROWS(dot1dPortPairTable)
SA_UNKEPT_ROWS(dot1dSrPortTable)

#define COLUMN(table, number, name, type, access, range) SA_UNKEPT_COLUMN(name, type, access, SA_KEYS_##table)
#include "mibs/bridge/unkept_columns.def"
#undef COLUMN

// GMRP and learning constraints are not kept either.
int32_t get_dot1dGmrpStatus(void) { return 0; }
int set_dot1dGmrpStatus(int32_t) { return 0; }
int32_t get_dot1qConstraintSetDefault(void) { return 0; }
int set_dot1qConstraintSetDefault(int32_t) { return 0; }
int32_t get_dot1qConstraintTypeDefault(void) { return 0; }
int set_dot1qConstraintTypeDefault(int32_t) { return 1; }  // success, as any non-negative result

}  // extern "C"
