// The tables served on the row-store pattern with a difference of their own.
// No net-snmp here.
#pragma once

#include <algorithm>
#include <string_view>

namespace snmpapi {

// The VRRP tables rebuild their rows at every refresh: the rows in the
// container are removed and the platform's rows added again.  Their create
// function traces "Adding row\n".
inline constexpr std::string_view kRebuiltTables[] = {"vrrpOperTable", "vrrpAssoIpAddrTable", "vrrpRouterStatsTable"};

// Tables whose handler traces no per-column message.
inline constexpr std::string_view kQuietTables[] = {"filterCounterInfoTable", "filterCounterValueTable",
                                                     "vrrpAssoIpAddrTable", "vrrpOperTable", "vrrpRouterStatsTable"};

inline bool is_one_of(std::string_view name, const auto &list) {
    return std::find(std::begin(list), std::end(list), name) != std::end(list);
}

}  // namespace snmpapi
