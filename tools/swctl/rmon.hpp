// swctl's commands for the switch's RMON engine.
#pragma once

#include <functional>
#include <utility>

#include "services.hpp"

namespace swctl {

// `port` turns "U/P" or "Tn" into (unit0, port0).
void add_rmon_commands(CLI::App &app, const AddCommand &add,
                       std::function<std::pair<int, int>(const std::string &)> port);

}  // namespace swctl
