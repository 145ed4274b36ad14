// The LLDP access layer: every LLDP table's row population, row check and
// column accessors, and the LLDP scalars, as exported C functions named
// after their MIB objects with the prefixes get_ipc_, set_ipc_,
// init_ipc_index_ and exists_ipc_entry_.  The tables and scalars
// themselves (get_lldpRemChassisId, init_index_lldpRemTable, ...) forward
// to them unchanged (forwarders.cpp).  Signatures are those of the
// catalogued accessors.  No net-snmp here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "agent/mib_types.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

#define SA_LLDP_IPC_SETTER_RO(table, name, type)
#define SA_LLDP_IPC_SETTER_RW(table, name, type) \
    extern "C" ::snmpapi::SetFn<::snmpapi::tables::table::Key, ::snmpapi::Type::type> set_ipc_##name;
#define COLUMN(table, number, name, type, access, range)                                              \
    extern "C" ::snmpapi::GetFn<::snmpapi::tables::table::Key, ::snmpapi::Type::type> get_ipc_##name; \
    SA_LLDP_IPC_SETTER_##access(table, name, type)
#include "mibs/lldp/columns.def"
#undef COLUMN
#undef SA_LLDP_IPC_SETTER_RO
#undef SA_LLDP_IPC_SETTER_RW

#define SA_LLDP_IPC_SCALAR_SETTER_RO(name, type)
#define SA_LLDP_IPC_SCALAR_SETTER_RW(name, type) \
    extern "C" ::snmpapi::SetFn<::snmpapi::NoKeys, ::snmpapi::Type::type> set_ipc_##name;
#define LLDP_SCALAR(name, type, access)                                                  \
    extern "C" ::snmpapi::GetFn<::snmpapi::NoKeys, ::snmpapi::Type::type> get_ipc_##name; \
    SA_LLDP_IPC_SCALAR_SETTER_##access(name, type)
#define LLDP_TABLE(table)                                                                 \
    extern "C" ::snmpapi::InitIndexFn<::snmpapi::tables::table::Key> init_ipc_index_##table; \
    extern "C" ::snmpapi::ExistsEntryFn<::snmpapi::tables::table::Key> exists_ipc_entry_##table;
#include "mibs/lldp/objects.def"
#undef LLDP_TABLE
#undef LLDP_SCALAR
#undef SA_LLDP_IPC_SCALAR_SETTER_RO
#undef SA_LLDP_IPC_SCALAR_SETTER_RW
