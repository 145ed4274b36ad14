// swctl's commands for the CFM delay measurement probes: the probes the
// switch runs, with their last measurement, and probes added and removed.
#include <cstdio>
#include <string>
#include <tuple>

#include "swplatform/platform.h"
#include "swsim/control.hpp"
#include "verbs.hpp"

namespace swctl {
namespace {

using swsim::Switch;

struct Args {
    std::string id, port, target;
    long long delay_us = 100, jitter_us = 20;
};

void show_probes(const Switch &sw) {
    std::printf("%-6s %-6s %-17s %8s %9s %8s %s\n", "probe", "port", "target", "path-us", "jitter-us", "delay-us",
                "variation-us");
    for (const Switch::CfmProbeInfo &i : sw.cfm_probes()) {
        const sw_cfm_probe_t &p = i.probe;
        const std::string port = std::to_string(p.unit0 + 1) + "/" + std::to_string(p.port0 + 1);
        char target[18];
        std::snprintf(target, sizeof target, "%02x:%02x:%02x:%02x:%02x:%02x", p.target[0], p.target[1], p.target[2],
                      p.target[3], p.target[4], p.target[5]);
        std::printf("%-6u %-6s %-17s %8u %9u ", p.id, port.c_str(), target, i.delay_us, i.jitter_us);
        if (i.result.valid)
            std::printf("%8u %u\n", i.result.delay_us, i.result.variation_us);
        else
            std::printf("%8s %s\n", "-", "- (no measurement: link down)");
    }
}

}  // namespace

void add_cfm_verbs(CLI::App &app, const Verbs &v) {
    static Args args;
    auto *cfm = app.add_subcommand("cfm", "CFM delay measurement probes");
    cfm->require_subcommand(1);
    v.add(cfm, "show", "The probes and their last measurement", [](Switch &sw) { show_probes(sw); });
    auto *probe = cfm->add_subcommand("probe", "Add or remove a probe");
    probe->require_subcommand(1);
    auto *add = v.add(probe, "add", "A probe from a port toward a remote MEP", [v](Switch &sw) {
        Switch::CfmProbeSettings s;
        s.id = uint32_t(v.integer(args.id, "probe number"));
        std::tie(s.unit0, s.port0) = v.port(args.port);
        v.mac(args.target, s.target);
        s.delay_us = uint32_t(args.delay_us);
        s.jitter_us = uint32_t(args.jitter_us);
        sw.cfm_probe_add(s);
    });
    add->add_option("probe", args.id, "Its number, 1..65535")->required();
    add->add_option("port", args.port, "U/P of the local MEP")->required();
    add->add_option("target", args.target, "The remote MEP's MAC address")->required();
    add->add_option("--delay-us", args.delay_us, "The path's two-way delay at its least")
        ->check(CLI::Range(1, 10000000))
        ->capture_default_str();
    add->add_option("--jitter-us", args.jitter_us, "How far above it a measurement may lie")
        ->check(CLI::Range(0, 10000000))
        ->capture_default_str();
    auto *del = v.add(probe, "del", "Remove a probe",
                      [v](Switch &sw) { sw.cfm_probe_remove(uint32_t(v.integer(args.id, "probe number"))); });
    del->add_option("probe", args.id, "Its number")->required();
}

}  // namespace swctl
