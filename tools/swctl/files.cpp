// swctl's commands for the file store: what it holds, the last TFTP
// transfer and the restarts asked for, the port TFTP transfers go to, and
// files loaded into it or copied out of it.
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
    std::string kind = "config", slot, name, path;
    int port = 69;
};

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
    std::printf("last transfer: %s%s%s\nrestarts asked for: %u\n",
                f.tftp_state >= 0 && f.tftp_state < 4 ? kStates[f.tftp_state] : "?",
                f.tftp_error.empty() ? "" : ": ", f.tftp_error.c_str(), f.restarts);
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
}

}  // namespace swctl
