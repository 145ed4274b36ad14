// Access to the built tables by name, for start-up and tests.  Net-snmp edge.
#pragma once

#include <string_view>

namespace snmpapi {

class TableRuntime;

// The runtime of a built table, or null.
TableRuntime *find_runtime(std::string_view name);

}  // namespace snmpapi
