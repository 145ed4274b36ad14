// swctl's commands for the switch's management services: management
// address and servers, access filters, time and logging, trap destinations,
// and the events that make the platform raise notifications.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "swsim/control.hpp"

namespace swctl {

using Action = std::function<void(swsim::Switch &)>;
// Adds a command under `parent` that runs `act` on the live switch.
using AddCommand =
    std::function<CLI::App *(CLI::App *parent, const std::string &name, const std::string &help, Action act)>;

void add_services(CLI::App &app, const AddCommand &add);

// "swctl show services".
void show_services(const swsim::Switch &sw);

}  // namespace swctl
