// swctl's commands for the file store: what it holds, the last TFTP
// transfer and the restarts asked for, the port TFTP transfers go to, and
// files loaded into it or copied out of it; and the packet filters whose
// counters the filter-counter tables show.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "swplatform/platform.h"
#include "swsim/control.hpp"
#include "verbs.hpp"

namespace swctl {
namespace {

using swsim::Switch;

struct Args {
    std::string kind = "config", slot, name, path, direction = "in", rule = "deny any any", ports;
    int port = 69, packet_bytes = 64;
    long long pps = 0;
};

int direction_of(const std::string &text) { return text == "out" ? SW_FILTER_EGRESS : SW_FILTER_INGRESS; }

int kind_of(const std::string &text) { return text == "firmware" ? SW_FILE_FIRMWARE : SW_FILE_CONFIG; }

void show_files(const Switch &sw) {
    const Switch::FilesInfo f = sw.files();
    std::printf("%-8s %-4s %-7s %-9s %-10s %s\n", "kind", "file", "startup", "bytes", "crc32", "name");
    auto row = [](const char *kind, int slot, const sw_file_info_t &i) {
        if (i.in_use)
            std::printf("%-8s %-4d %-7s %-9u %08x   %s\n", kind, slot + 1, i.startup ? "yes" : "", i.size, i.crc32, i.name);
    };
    for (int s = 0; s < SW_FIRMWARE_SLOTS; ++s) row("firmware", s, f.firmware[s]);
    for (int s = 0; s < SW_CONFIG_SLOTS; ++s) row("config", s, f.config[s]);
    static const char *const kStates[] = {"none yet", "in progress", "succeeded", "failed"};
    const uint32_t a = f.tftp_server;
    std::printf("tftp server %u.%u.%u.%u port %d, file \"%s\", configuration file %d\n", a >> 24, a >> 16 & 255,
                a >> 8 & 255, a & 255, f.tftp_port, f.tftp_file.c_str(), f.tftp_config_slot + 1);
    static const char *const kRestarts[] = {"none", "warm", "cold", "factory reset"};
    std::printf("last transfer: %s%s%s\nrestarts asked for: %u (last: %s)\n",
                f.tftp_state >= 0 && f.tftp_state < 4 ? kStates[f.tftp_state] : "?",
                f.tftp_error.empty() ? "" : ": ", f.tftp_error.c_str(), f.restarts,
                f.last_restart >= 0 && f.last_restart < 4 ? kRestarts[f.last_restart] : "?");
}

}  // namespace

void add_files_verbs(CLI::App &app, const Verbs &v) {
    static Args args;
    auto *files = app.add_subcommand("files", "The file store, TFTP transfers and restarts");
    files->require_subcommand(1);
    v.add(files, "show", "Stored files, the last transfer, restarts", [](Switch &sw) { show_files(sw); });
    auto *port = v.add(files, "tftp-port", "The UDP port the switch's TFTP transfers go to",
                       [](Switch &sw) { sw.set_tftp_port(args.port); });
    port->add_option("port", args.port, "1..65535 (69 on a real network)")->required();
    auto *load = v.add(files, "load", "Store a file of this machine in the switch", [v](Switch &sw) {
        std::ifstream in(args.path, std::ios::binary);
        if (!in) throw swsim::Error("cannot read " + args.path);
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        sw.file_store(kind_of(args.kind), v.index(args.slot, "file number"), args.name, bytes);
    });
    load->add_option("kind", args.kind, "firmware or config")->required()->check(CLI::IsMember({"firmware", "config"}));
    load->add_option("file", args.slot, "Its number in the store (firmware 1..2, config 1..4)")->required();
    load->add_option("name", args.name, "Its name in the store")->required();
    load->add_option("path", args.path, "The file to load")->required();
    auto *save = v.add(files, "save", "Copy a stored file to this machine", [v](Switch &sw) {
        const std::vector<uint8_t> bytes = sw.file_bytes(kind_of(args.kind), v.index(args.slot, "file number"));
        std::ofstream out(args.path, std::ios::binary);
        out.write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
        if (!out) throw swsim::Error("cannot write " + args.path);
    });
    save->add_option("kind", args.kind, "firmware or config")->required()->check(CLI::IsMember({"firmware", "config"}));
    save->add_option("file", args.slot, "Its number in the store")->required();
    save->add_option("path", args.path, "Where to write it")->required();

    auto *filter = app.add_subcommand("filter", "Packet filters on ports and the packets they match");
    filter->require_subcommand(1);
    auto *set = v.add(filter, "set", "Put a filter into a slot (its counts start from zero)", [v](Switch &sw) {
        Switch::FilterSettings s;
        s.name = args.name;
        s.rule = args.rule;
        s.pps = uint64_t(args.pps);
        s.packet_bytes = args.packet_bytes;
        for (std::size_t at = 0; at < args.ports.size();) {
            const std::size_t comma = std::min(args.ports.find(',', at), args.ports.size());
            s.ports.push_back(v.port(args.ports.substr(at, comma - at)));
            at = comma + 1;
        }
        sw.filter_set(direction_of(args.direction), v.index(args.slot, "filter number"), s);
    });
    set->add_option("direction", args.direction, "in or out")->required()->check(CLI::IsMember({"in", "out"}));
    set->add_option("filter", args.slot, "1..16")->required();
    set->add_option("name", args.name, "Its name")->required();
    set->add_option("ports", args.ports, "U/P,U/P,... it is applied on")->required();
    set->add_option("--rule", args.rule, "Its rule as text")->capture_default_str();
    set->add_option("--pps", args.pps, "Packets it matches a second on each port")->check(CLI::Range(0, 20000000));
    set->add_option("--packet-bytes", args.packet_bytes, "Their size")->check(CLI::Range(64, 9216))->capture_default_str();
    auto *remove = v.add(filter, "remove", "Remove a filter", [v](Switch &sw) {
        sw.filter_remove(direction_of(args.direction), v.index(args.slot, "filter number"));
    });
    remove->add_option("direction", args.direction, "in or out")->required()->check(CLI::IsMember({"in", "out"}));
    remove->add_option("filter", args.slot, "1..16")->required();
}

}  // namespace swctl
