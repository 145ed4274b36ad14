// swctl verbs of the chassis: power supplies and fans fitted, failed or
// pulled, alarm inputs raised and cleared, alarm outputs forced, processor
// and memory load, temperature, the time since boot, how long a count of a
// unit's address table takes, and the device information of the status
// block; `chassis` shows it all.  Units and positions count from one:
// "psu 2/1 absent" pulls the power supply of bay 1 of unit 2.
#include <cstdio>
#include <map>
#include <memory>

#include "verbs.hpp"

namespace swctl {
namespace {

using swsim::Error;
using swsim::Switch;

// A module's state by its words: ok/running, failed/stopped, absent/pulled.
int module_state(const std::string &word) {
    static const std::map<std::string, int> words = {
        {"ok", SW_MODULE_OK},         {"running", SW_MODULE_OK},    {"failed", SW_MODULE_FAILED},
        {"stopped", SW_MODULE_FAILED}, {"absent", SW_MODULE_ABSENT}, {"pulled", SW_MODULE_ABSENT}};
    auto it = words.find(word);
    if (it == words.end()) throw Error("'" + word + "' is not ok, failed or absent (also running, stopped, pulled)");
    return it->second;
}

const char *state_name(uint32_t state) {
    return state == SW_MODULE_OK ? "ok" : state == SW_MODULE_FAILED ? "failed" : "absent";
}

const char *role_name(int role) { return role == SW_MPU_ACTIVE ? "active" : role == SW_MPU_STANDBY ? "standby" : ""; }

void show_chassis(const Switch &sw) {
    const sw_chassis_info_t c = sw.chassis();
    char agent[16];
    ip_uint32_to_str(c.agent_address, agent, sizeof agent);
    const Switch::DeviceInfo d = sw.device_info();
    std::printf("model %u, %u unit positions, %u power supply bays, %u fans, %u alarm inputs a unit\n", c.model,
                c.slots, c.psu_bays, c.fans, c.alarm_inputs);
    std::printf("agent %s:%u\nboot %s, firmware date %s, serial %llu, model word %u\n", agent, c.agent_port,
                d.boot_version.c_str(), d.fw_date.c_str(), (unsigned long long)d.serial_no, d.model_word);
    std::printf("alarm outputs:");
    for (uint32_t o = 0; o < c.alarm_outputs; ++o) std::printf(" %u %s", o + 1, sw.alarm_output(int(o)) ? "on" : "off");
    std::printf("\n%-5s %-8s %-6s %-5s %-5s %-5s %-24s %-24s %s\n", "unit", "mpu", "temp", "cpu%", "mem%", "mac",
                "power supplies", "fans", "alarms raised");
    for (int u = 0; u < SW_MAX_UNITS; ++u) {
        if (!sw.unit(u).present) continue;
        std::string psus, fans, alarms;
        for (uint32_t b = 0; b < c.psu_bays; ++b) psus += std::string(b ? "," : "") + state_name(sw.module(Switch::kPsu, u, int(b)).state);
        for (uint32_t f = 0; f < c.fans; ++f) fans += std::string(f ? "," : "") + state_name(sw.module(Switch::kFan, u, int(f)).state);
        const Switch::UnitEnvironment env = sw.environment(u);
        for (uint32_t a = 0; a < c.alarm_inputs; ++a)
            if (env.alarms_raised & (1u << a)) alarms += (alarms.empty() ? "" : ",") + std::to_string(a + 1);
        int mac = 0;
        for (const auto &e : sw.fdb()) mac += e.unit0 == u;
        std::printf("%-5d %-8s %-6d %-5u %-5u %-5d %-24s %-24s %s\n", u + 1, role_name(env.mpu_role), env.temperature_c,
                    env.cpu, env.mem, mac, psus.c_str(), fans.c_str(), alarms.empty() ? "-" : alarms.c_str());
    }
}

// The state of the verbs being parsed (CLI11 fills it; one command runs).
struct Args {
    std::string a, b, model;
    bool on = false, steady = false, hold = false, cs = false;
    Switch::Load load;
    std::string boot, date, serial, model_word;
};

}  // namespace

void add_chassis_verbs(CLI::App &app, const Verbs &v) {
    static Args args;

    for (auto kind : {Switch::kPsu, Switch::kFan}) {
        const bool psu = kind == Switch::kPsu;
        auto *cmd = v.add(&app, psu ? "psu" : "fan",
                          psu ? "Fit, fail or pull the power supply of a unit's bay (UNIT/BAY)"
                              : "Run, stop or pull the fan module of a unit's fan position (UNIT/FAN)",
                          [kind, v](Switch &sw) {
                              const auto [unit0, position0] = v.port(args.a);
                              sw.set_module(kind, unit0, position0, module_state(args.b), args.model);
                          });
        cmd->add_option("position", args.a, psu ? "UNIT/BAY, e.g. 1/2" : "UNIT/FAN, e.g. 1/3")->required();
        cmd->add_option("state", args.b, "ok, failed or absent (also running, stopped, pulled)")->required();
        cmd->add_option("--model", args.model, "Model of the module fitted");
    }

    auto *alarm = v.add(&app, "alarm", "Raise or clear an alarm input of a unit (UNIT/INPUT)", [v](Switch &sw) {
        const auto [unit0, input0] = v.port(args.a);
        sw.set_alarm_input(unit0, input0, args.on);
    });
    alarm->add_option("input", args.a, "UNIT/INPUT, e.g. 1/2")->required();
    v.add_state(alarm, args.on, "raise", "clear");

    auto *out = v.add(&app, "alarm-out", "Force an alarm output of the stack on, or leave it to the alarms (off)",
                      [v](Switch &sw) { sw.set_alarm_output(v.index(args.a, "alarm output number"), args.on); });
    out->add_option("output", args.a, "Output number (from 1)")->required();
    v.add_state(out, args.on, "on", "off");

    auto *load = v.add(&app, "load", "Set a unit's processor and memory load, percent", [v](Switch &sw) {
        if (args.steady) args.load.cpu_swing = args.load.mem_swing = 0;
        sw.set_load(v.index(args.a, "unit number"), args.load);
    });
    load->add_option("unit", args.a, "Unit number")->required();
    load->add_option("--cpu", args.load.cpu, "Processor load")->capture_default_str();
    load->add_option("--mem", args.load.mem, "Memory use")->capture_default_str();
    load->add_option("--cpu-swing", args.load.cpu_swing, "How far the processor reading swings either way")
        ->capture_default_str();
    load->add_option("--mem-swing", args.load.mem_swing, "How far the memory reading swings either way")
        ->capture_default_str();
    load->add_flag("--steady", args.steady, "Readings do not swing");

    auto *temp = v.add(&app, "temperature", "Set a unit's temperature with every fan running, degrees Celsius",
                       [v](Switch &sw) {
                           sw.set_temperature(v.index(args.a, "unit number"), v.integer(args.b, "temperature"));
                       });
    temp->add_option("unit", args.a, "Unit number")->required();
    temp->add_option("celsius", args.b, "-40..125")->required();

    auto *uptime = v.add(&app, "uptime", "Make the switch have booted that long ago", [](Switch &sw) {
        if (args.a.empty() || args.a.size() > 18 || args.a.find_first_not_of("0123456789") != std::string::npos)
            throw Error("'" + args.a + "' is not a time since boot");
        const uint64_t n = std::stoull(args.a);
        sw.set_uptime_cs(args.cs ? n : n * 100);
    });
    uptime->add_option("time", args.a, "Seconds (hundredths with --cs)")->required();
    uptime->add_flag("--cs", args.cs, "The time is in hundredths of a second");

    auto *summary = v.add(&app, "mac-count", "How long counting a unit's address table takes; --hold makes counts wait",
                          [v](Switch &sw) {
                              const int ms = v.integer(args.a, "time in ms");
                              if (ms < 0) throw Error("a count cannot take negative time");
                              sw.set_mac_summary(uint32_t(ms), args.hold);
                          });
    summary->add_option("ms", args.a, "Milliseconds a count takes")->required();
    summary->add_flag("--hold", args.hold, "Counts wait until the next mac-count without --hold");

    auto *device = v.add(&app, "device", "Set the device information of the status block (options not given stay)",
                         [v](Switch &sw) {
                             Switch::DeviceInfo d = sw.device_info();
                             if (!args.boot.empty()) d.boot_version = args.boot;
                             if (!args.date.empty()) d.fw_date = args.date;
                             if (!args.serial.empty()) d.serial_no = uint64_t(std::stoull(args.serial));
                             if (!args.model_word.empty()) d.model_word = uint32_t(v.integer(args.model_word, "model word"));
                             sw.set_device_info(d);
                         });
    device->add_option("--boot", args.boot, "Boot loader version");
    device->add_option("--date", args.date, "Firmware build date, e.g. \"Tue Mar 02 14:05:00 UTC 2021\"");
    device->add_option("--serial", args.serial, "Serial number")->check(CLI::Number);
    device->add_option("--model-word", args.model_word, "Model word (also the vendor code)");

    v.add(&app, "chassis", "Show the chassis: shape, modules, alarms, load and device information",
          [](Switch &sw) { show_chassis(sw); });
}

}  // namespace swctl
