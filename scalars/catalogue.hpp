// Declarations of the accessors of every scalar served by this build, made
// from the scalar catalogue.  Accessors are defined with these exact C
// signatures in scalars/ and mibs/<area>/.  No net-snmp here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "agent/mib_types.hpp"

#define SA_SCALAR_SETTER_RO(name, type)
#define SA_SCALAR_SETTER_RW(name, type) \
    extern "C" ::snmpapi::SetFn<::snmpapi::NoKeys, ::snmpapi::Type::type> set_##name;
#define SA_SCALAR_DECL_COMMON_ON(name, access, type) \
    extern "C" ::snmpapi::GetFn<::snmpapi::NoKeys, ::snmpapi::Type::type> get_##name; \
    SA_SCALAR_SETTER_##access(name, type)
#define SA_SCALAR_DECL_COMMON_LATER(name, access, type)
#define SA_SCALAR_DECL_CHASSIS_ON(name, access, type) \
    extern "C" ::snmpapi::GetFn<::snmpapi::NoKeys, ::snmpapi::Type::INTEGER> get_##name;
#define SA_SCALAR_DECL_CHASSIS_LATER(name, access, type)
#define SA_SCALAR_DECL_OSPF_ON(name, access, type)
#define SA_SCALAR_DECL_OSPF_LATER(name, access, type)
#define SA_SCALAR_DECL_RIP_ON(name, access, type)
#define SA_SCALAR_DECL_RIP_LATER(name, access, type)
#define SCALAR(name, access, type, range, handler, state, ...) \
    SA_SCALAR_DECL_##handler##_##state(name, access, type)
#include "scalars/catalogue.def"
#undef SCALAR
