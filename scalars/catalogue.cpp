// The scalar catalogue, expanded into data.

#include "scalars/catalogue.hpp"
#include "tables/descriptors.hpp"

namespace snmpapi {
namespace {

#define RANGE(lo, hi) ::snmpapi::Range{true, lo, hi}
#define NO_RANGE ::snmpapi::Range{}
#define SIZE(lo, hi) ::snmpapi::Range{true, lo, hi}

// ---- Scalars ---------------------------------------------------------------
#define SA_SCALAR_GET_COMMON_ON(name, type) &get_thunk<NoKeys, Type::type, &get_##name>
#define SA_SCALAR_GET_CHASSIS_ON(name, type) &get_thunk<NoKeys, Type::INTEGER, &get_##name>
#define SA_SCALAR_GET_COMMON_LATER(name, type) nullptr
#define SA_SCALAR_GET_CHASSIS_LATER(name, type) nullptr
#define SA_SCALAR_GET_OSPF_LATER(name, type) nullptr
#define SA_SCALAR_GET_RIP_LATER(name, type) nullptr
#define SA_SCALAR_GET_OSPF_ON(name, type) nullptr  // through the query record
#define SA_SCALAR_GET_RIP_ON(name, type) nullptr
#define SA_SCALAR_SET_RW_COMMON_ON(name, type) &set_thunk<NoKeys, Type::type, &set_##name>
#define SA_SCALAR_SET_RW_COMMON_LATER(name, type) nullptr
#define SA_SCALAR_SET_RO_COMMON_ON(name, type) nullptr
#define SA_SCALAR_SET_RO_COMMON_LATER(name, type) nullptr
#define SA_SCALAR_SET_RO_CHASSIS_ON(name, type) nullptr
#define SA_SCALAR_SET_RO_CHASSIS_LATER(name, type) nullptr
#define SA_SCALAR_SET_RO_OSPF_LATER(name, type) nullptr
#define SA_SCALAR_SET_RO_RIP_LATER(name, type) nullptr
#define SA_SCALAR_SET_RO_OSPF_ON(name, type) nullptr
#define SA_SCALAR_SET_RO_RIP_ON(name, type) nullptr
#define SCALAR(name, access, type, range, handler, state, ...)                       \
    ScalarDesc{#name,                                                                 \
               std::string_view(#access) == "RW",                                     \
               Type::type,                                                            \
               range,                                                                 \
               ScalarHandler::handler,                                                \
               std::string_view(#state) == "ON",                                      \
               Oid{__VA_ARGS__},                                                      \
               SA_SCALAR_GET_##handler##_##state(name, type),                         \
               SA_SCALAR_SET_##access##_##handler##_##state(name, type)},
constexpr ScalarDesc kScalars[] = {
#include "scalars/catalogue.def"
};
#undef SCALAR

}  // namespace

std::span<const ScalarDesc> all_scalars() { return kScalars; }

const ScalarDesc *find_scalar(std::string_view name) { return find_named(all_scalars(), name); }

}  // namespace snmpapi
