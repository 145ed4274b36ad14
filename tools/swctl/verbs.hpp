// What the command line of main.cpp lends to the verbs of each area, so that
// an area's verbs live in a file of their own (registered from main.cpp).
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <utility>

#include "swsim/control.hpp"

namespace swctl {

using Action = std::function<void(swsim::Switch &)>;

struct Verbs {
    // A subcommand of `parent` that runs `act` on the live switch.
    std::function<CLI::App *(CLI::App *parent, const std::string &name, const std::string &help, Action act)> add;
    // The positional on/off state of `cmd` into `on`, also named by the
    // verb's own two words.
    std::function<CLI::Option *(CLI::App *cmd, bool &on, const std::string &on_word, const std::string &off_word)>
        add_state;
    // "U/P" counted from one as (unit0, port0).
    std::function<std::pair<int, int>(const std::string &text)> port;
    // A number counted from one as a zero-based index; `what` names it in errors.
    std::function<int(const std::string &text, const std::string &what)> index;
    std::function<int(const std::string &text, const std::string &what)> integer;
    // "aa:bb:cc:dd:ee:ff" into mac.
    std::function<void(const std::string &text, uint8_t mac[6])> mac;
};

// The chassis: power supplies, fans, alarms, load, uptime, device information.
void add_chassis_verbs(CLI::App &app, const Verbs &verbs);
// Port authentication: 802.1X supplicants and the RADIUS servers.
void add_auth_verbs(CLI::App &app, const Verbs &verbs);
// The file store, TFTP transfers and restarts.
void add_files_verbs(CLI::App &app, const Verbs &verbs);
// CFM delay measurement probes.
void add_cfm_verbs(CLI::App &app, const Verbs &verbs);

}  // namespace swctl
