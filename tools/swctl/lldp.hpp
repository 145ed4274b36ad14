// swctl's LLDP commands: the neighbours the switch hears, and lldpd's
// neighbours imported.  Registered from main.cpp with the tool's own ways
// of making a command and reading a port.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <utility>

#include "swsim/control.hpp"

namespace swctl {

using Action = std::function<void(swsim::Switch &)>;
// Adds a command under `parent` that runs `act` on the live switch.
using AddCommand = std::function<CLI::App *(CLI::App *parent, const std::string &name, const std::string &help, Action act)>;
// "U/P" counted from one, as (unit0, port0); throws swsim::Error.
using ParsePort = std::function<std::pair<int, int>(const std::string &)>;

void add_lldp_commands(CLI::App &app, const AddCommand &add, const ParsePort &parse_port);

}  // namespace swctl
