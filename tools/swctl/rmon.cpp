// swctl's commands for the switch's RMON engine: its rows, its command
// scripts, and the requests its thread in the agent answers through the
// agent's callbacks (fire an event, restore all, clear all).
#include "rmon.hpp"

#include <cstdio>
#include <string>

namespace swctl {
namespace {

struct Options {
    int index = 1, interval = 0, buckets = 50, script = 0, startup = 3, rising = 0, falling = 0;
    int rising_event = 0, falling_event = 0;
    std::string port, owner, variable, description, community = "public", name, commands, state;
    bool absolute = false, trap = false, no_log = false, disabled = false;
};

const char *status_word(int status) {
    static const char *kWords[] = {"?", "valid", "createRequest", "underCreation", "invalid"};
    return status >= 1 && status <= 4 ? kWords[status] : kWords[0];
}

std::string port_text(int unit0, int port0) {
    return port0 >= 512 ? "T" + std::to_string(port0 - 511)
                        : std::to_string(unit0 + 1) + "/" + std::to_string(port0 + 1);
}

void show(const swsim::Switch &sw) {
    const auto r = sw.rmon();
    std::printf("engine      %s\n", r.paused ? "paused" : "running");
    std::printf("%-6s %-6s %-14s %s\n", "stats", "port", "status", "owner");
    for (const auto &s : r.statistics)
        std::printf("%-6d %-6s %-14s %s\n", s.index, port_text(s.unit0, s.port0).c_str(), status_word(s.status),
                    s.owner.c_str());
    std::printf("%-6s %-6s %-14s %-9s %-15s %s\n", "hist", "port", "status", "interval", "buckets", "samples");
    for (const auto &h : r.histories)
        std::printf("%-6d %-6s %-14s %-9d %d of %-10d %d\n", h.index, port_text(h.unit0, h.port0).c_str(),
                    status_word(h.status), h.interval, h.granted, h.requested, h.taken);
    std::printf("%-6s %-32s %-9s %-11s %-11s %s\n", "alarm", "variable", "interval", "rising", "falling", "value");
    for (const auto &a : r.alarms)
        std::printf("%-6d %-32s %-9d %-11s %-11s %d\n", a.row.index, a.row.variable.c_str(), a.row.interval,
                    (std::to_string(a.row.rising) + ">" + std::to_string(a.row.rising_event)).c_str(),
                    (std::to_string(a.row.falling) + ">" + std::to_string(a.row.falling_event)).c_str(), a.value);
    std::printf("%-6s %-6s %-6s %-7s %s\n", "event", "fired", "trap", "script", "description");
    for (const auto &e : r.events)
        std::printf("%-6d %-6u %-6s %-7d %s\n", e.row.index, e.fired, e.row.trap ? "yes" : "no", e.row.script,
                    e.row.description.c_str());
    std::printf("saved       %zu alarms, %zu events\n", r.alarm_slots.size(), r.event_slots.size());
    std::printf("interpreter %u runs%s%s\n", r.commands_run, r.last_command.empty() ? "" : ", last: ",
                r.last_command.c_str());
}

}  // namespace

void add_rmon_commands(CLI::App &app, const AddCommand &add,
                       std::function<std::pair<int, int>(const std::string &)> port) {
    static Options o;
    auto *rmon = app.add_subcommand("rmon", "The RMON engine: statistics, history, alarms and events");
    rmon->require_subcommand(1);
    add(rmon, "show", "The engine's rows, scripts and requests", [](swsim::Switch &sw) { show(sw); });

    auto *stat = add(rmon, "statistics", "Add an etherStats row, valid at once", [port](swsim::Switch &sw) {
        const auto [unit0, port0] = port(o.port);
        sw.rmon_add_statistic(o.index, unit0, port0, o.owner);
    });
    stat->add_option("index", o.index, "etherStatsIndex")->required();
    stat->add_option("port", o.port, "U/P or Tn")->required();
    stat->add_option("--owner", o.owner, "Owner");

    auto *hist = add(rmon, "history", "Add a history control row, valid at once", [port](swsim::Switch &sw) {
        const auto [unit0, port0] = port(o.port);
        sw.rmon_add_history(o.index, unit0, port0, o.interval, o.buckets, o.owner);
    });
    hist->add_option("index", o.index, "historyControlIndex")->required();
    hist->add_option("port", o.port, "U/P or Tn")->required();
    hist->add_option("--interval", o.interval, "Seconds between samples")->required();
    hist->add_option("--buckets", o.buckets, "Buckets requested")->capture_default_str();
    hist->add_option("--owner", o.owner, "Owner");

    auto *samples = add(rmon, "sample", "A history row takes samples now",
                        [](swsim::Switch &sw) { sw.rmon_take_samples(o.index, o.buckets); });
    samples->add_option("index", o.index, "historyControlIndex")->required();
    samples->add_option("count", o.buckets, "How many")->required();

    auto *alarm = add(rmon, "alarm", "Add an alarm to the engine and the configuration", [](swsim::Switch &sw) {
        swsim::Switch::RmonAlarm a;
        a.index = o.index;
        a.variable = o.variable;
        a.interval = o.interval ? o.interval : 5;
        a.sample_type = o.absolute ? SW_RMON_ABSOLUTE : SW_RMON_DELTA;
        a.startup = o.startup;
        a.rising = o.rising;
        a.falling = o.falling;
        a.rising_event = o.rising_event;
        a.falling_event = o.falling_event;
        a.owner = o.owner;
        sw.rmon_add_alarm(a);
    });
    alarm->add_option("index", o.index, "alarmIndex")->required();
    alarm->add_option("variable", o.variable, "The sampled object's OID")->required();
    alarm->add_option("--interval", o.interval, "Seconds between samples (default 5)");
    alarm->add_flag("--absolute", o.absolute, "Absolute samples (else delta)");
    alarm->add_option("--startup", o.startup, "1 rising, 2 falling, 3 both")->check(CLI::Range(1, 3));
    alarm->add_option("--rising", o.rising, "Rising threshold");
    alarm->add_option("--falling", o.falling, "Falling threshold");
    alarm->add_option("--rising-event", o.rising_event, "Event fired on rising");
    alarm->add_option("--falling-event", o.falling_event, "Event fired on falling");
    alarm->add_option("--owner", o.owner, "Owner");

    auto *event = add(rmon, "event", "Add an event to the engine and the configuration", [](swsim::Switch &sw) {
        swsim::Switch::RmonEvent e;
        e.index = o.index;
        e.description = o.description;
        e.log = !o.no_log;
        e.trap = o.trap;
        e.script = o.script;
        e.community = o.community;
        e.owner = o.owner;
        sw.rmon_add_event(e);
    });
    event->add_option("index", o.index, "eventIndex")->required();
    event->add_option("--description", o.description, "Description");
    event->add_flag("--trap", o.trap, "Send a notification when fired");
    event->add_flag("--no-log", o.no_log, "Do not log");
    event->add_option("--script", o.script, "Command script run when fired (0 none)");
    event->add_option("--community", o.community, "Community")->capture_default_str();
    event->add_option("--owner", o.owner, "Owner");

    auto *script = add(rmon, "script", "Set a command script of the interpreter", [](swsim::Switch &sw) {
        sw.rmon_set_script(o.index, o.name, o.commands, !o.disabled);
    });
    script->add_option("number", o.index, "Script number (1..16)")->required();
    script->add_option("commands", o.commands, "Commands (\\n between lines)")->required();
    script->add_option("--name", o.name, "Name");
    script->add_flag("--disabled", o.disabled, "A script that does not run");

    auto *pause = add(rmon, "engine", "Pause or resume the engine's thread in the agent",
                      [](swsim::Switch &sw) { sw.rmon_pause(o.state == "paused"); });
    pause->add_option("state", o.state, "paused or running")->required()->check(CLI::IsMember({"paused", "running"}));
    add(rmon, "step", "One engine pass now, in this process", [](swsim::Switch &sw) { sw.rmon_step(); });

    auto report = [](const char *what, int result) {
        std::printf("%s: %d\n", what, result);
        if (result < 0) throw swsim::Error(std::string(what) + " failed");
    };
    auto *fire = add(rmon, "fire", "The engine fires an event (the agent logs it and runs its script)",
                     [report](swsim::Switch &sw) { report("fire", sw.rmon_fire_event(o.index)); });
    fire->add_option("event", o.index, "eventIndex")->required();
    add(rmon, "restore-all", "The engine asks the agent to re-apply every saved alarm and event",
        [report](swsim::Switch &sw) { report("restore-all", sw.rmon_restore_all()); });
    add(rmon, "clear-all", "The engine asks the agent to invalidate every alarm and event it serves",
        [report](swsim::Switch &sw) { report("clear-all", sw.rmon_clear_all()); });
}

}  // namespace swctl
