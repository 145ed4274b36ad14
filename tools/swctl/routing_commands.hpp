// swctl commands that live in files of their own, each added to the tool by
// one registration function.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "swplatform/platform.h"
#include "swsim/control.hpp"

namespace swctl {

// Adds a command under `parent` that runs `act` on the live switch.
using AddCommand = std::function<CLI::App *(CLI::App *parent, const std::string &name, const std::string &help,
                                            std::function<void(swsim::Switch &)> act)>;

void add_routing_commands(CLI::App &app, const AddCommand &add);

}  // namespace swctl
