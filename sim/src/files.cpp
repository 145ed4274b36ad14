// The file store of the simulated switch, its TFTP transfers and restarts.
#include "files.hpp"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <thread>

#include "helpers.hpp"
#include "locks.hpp"
#include "model.hpp"
#include "scenario_field.hpp"
#include "shared_atomic.hpp"
#include "tftp.hpp"
#include "util.hpp"

namespace swsim::files {
namespace {

constexpr int kConfigLock = 2;

layout::FilesConfig &cfg(const View &v) { return v.cfg->files; }
layout::FilesHardware &hw(const View &v) { return v.hw->files; }

int slots_of(int kind) { return kind == SW_FILE_FIRMWARE ? SW_FIRMWARE_SLOTS : kind == SW_FILE_CONFIG ? SW_CONFIG_SLOTS : 0; }
std::size_t max_bytes(int kind) { return kind == SW_FILE_FIRMWARE ? SW_FIRMWARE_MAX_BYTES : SW_CONFIG_MAX_BYTES; }
bool slot_ok(int kind, int slot) { return slot >= 0 && slot < slots_of(kind); }
sw_file_info_t &info_of(const View &v, int kind, int slot) {
    return kind == SW_FILE_FIRMWARE ? hw(v).firmware[slot] : hw(v).config[slot];
}
uint8_t *bytes_of(const View &v, int kind, int slot) {
    return kind == SW_FILE_FIRMWARE ? hw(v).firmware_bytes[slot] : hw(v).config_bytes[slot];
}

uint32_t crc32(const uint8_t *p, std::size_t n) {
    uint32_t crc = 0xffffffffu;
    for (std::size_t i = 0; i < n; ++i) {
        crc ^= p[i];
        for (int k = 0; k < 8; ++k) crc = crc & 1 ? (crc >> 1) ^ 0xedb88320u : crc >> 1;
    }
    return ~crc;
}

int64_t switch_clock(const View &v) {
    return int64_t(std::time(nullptr)) + shared::load(v.rt->clock_offset_s, __ATOMIC_RELAXED);
}

// Writes a file into a slot; the first file of its kind becomes the start-up one.
void write_file(const View &v, int kind, int slot, const std::string &name, const uint8_t *data, std::size_t n) {
    sw_file_info_t &f = info_of(v, kind, slot);
    uint8_t *dst = bytes_of(v, kind, slot);
    std::memset(dst, 0, max_bytes(kind));
    if (n > 0) std::memcpy(dst, data, n);
    bool any_startup = false;
    for (int s = 0; s < slots_of(kind); ++s) any_startup |= s != slot && info_of(v, kind, s).startup;
    const uint32_t was_startup = f.in_use && f.startup;
    std::memset(&f, 0, sizeof f);
    f.in_use = 1;
    f.startup = was_startup || !any_startup;
    f.size = uint32_t(n);
    f.crc32 = crc32(dst, n);
    f.created = switch_clock(v);
    copy_text(f.name, name);
}

int startup_slot(const View &v, int kind) {
    for (int s = 0; s < slots_of(kind); ++s)
        if (info_of(v, kind, s).in_use && info_of(v, kind, s).startup) return s;
    return -1;
}

// The configuration a new switch starts from, and what a factory reset
// puts back into the start-up configuration file (the first slot when
// none is chosen).
void write_factory_config(const View &v, int slot) {
    static const char kConfig[] = "hostname switch\n!\nend\n";
    write_file(v, SW_FILE_CONFIG, slot, "startup-config", reinterpret_cast<const uint8_t *>(kConfig), sizeof kConfig - 1);
}

// Where a transfer's file comes from or goes to.
struct Target {
    int kind, slot;
    bool upload;
};
bool target_of(const View &v, int action, Target &t) {
    switch (action) {
    case SW_TFTP_DOWNLOAD_FIRMWARE: {
        const int start = startup_slot(v, SW_FILE_FIRMWARE);
        t = {SW_FILE_FIRMWARE, start == 0 ? 1 : 0, false};
        return true;
    }
    case SW_TFTP_UPLOAD_FIRMWARE: t = {SW_FILE_FIRMWARE, startup_slot(v, SW_FILE_FIRMWARE), true}; return t.slot >= 0;
    case SW_TFTP_DOWNLOAD_CONFIG: t = {SW_FILE_CONFIG, cfg(v).tftp_config_slot, false}; return true;
    case SW_TFTP_UPLOAD_CONFIG: t = {SW_FILE_CONFIG, cfg(v).tftp_config_slot, true}; return true;
    default: return false;
    }
}

// The end of a transfer, written under the configuration lock of the state
// file at `path` when the transfer is still the last one started.
void finish(const std::string &path, uint32_t transfer, const Target &t, const std::string &name,
            const std::string &error, const std::vector<uint8_t> &got) {
    try {
        const auto file = StateFile::open(path);
        cfg_lock lock{};
        locks::init(lock, kConfigLock);
        locks::WriteGuard guard(lock, file->fd());
        const View &v = file->view();
        if (hw(v).tftp_transfer != transfer || hw(v).tftp_state != SW_TFTP_RUNNING) return;
        if (error.empty() && !t.upload) write_file(v, t.kind, t.slot, name, got.data(), got.size());
        hw(v).tftp_state = error.empty() ? SW_TFTP_DONE : SW_TFTP_FAILED;
        copy_text(hw(v).tftp_error, error);
    } catch (const Error &) {
        // The switch went away meanwhile: there is nobody to tell.
    }
}

bool name_ok(const char *name) {
    if (!name) return false;
    const std::size_t n = strnlen(name, SW_FILE_NAME_SIZE);
    if (n == 0 || n >= SW_FILE_NAME_SIZE || name[0] == '/') return false;
    const std::string s(name, n);
    return s != ".." && s.find("../") == std::string::npos && s.find("/..") == std::string::npos;
}

}  // namespace

void defaults(View &v) {
    std::memset(&cfg(v), 0, sizeof cfg(v));
    layout::FilesHardware &h = hw(v);
    std::memset(h.firmware, 0, sizeof h.firmware);
    std::memset(h.config, 0, sizeof h.config);
    h.tftp_port = 69;
    h.tftp_state = SW_TFTP_IDLE;
    h.tftp_action = 0;
    h.tftp_transfer = 0;
    std::memset(h.tftp_error, 0, sizeof h.tftp_error);
    h.restarts = 0;
    h.last_restart = 0;
    h.last_restart_ns = 0;
    static const char kFirmware[] = "switch firmware 1.0.0\n";
    write_file(v, SW_FILE_FIRMWARE, 0, "switch-fw-1.0.0.bin", reinterpret_cast<const uint8_t *>(kFirmware),
               sizeof kFirmware - 1);
    write_factory_config(v, 0);
}

void build(View &v, const Field &f) {
    defaults(v);
    f.expect_object({"tftp_server", "tftp_port", "tftp_file", "configs"});
    if (f.has("tftp_server")) {
        uint32_t addr = 0;
        const std::string text = f.at("tftp_server").text(15);
        if (helpers::ip_str_to_uint32(text.c_str(), &addr) != 0) f.at("tftp_server").fail("is not an IPv4 address");
        cfg(v).tftp_server = addr;
    }
    if (f.has("tftp_port")) hw(v).tftp_port = uint32_t(f.at("tftp_port").integer(1, 65535));
    if (f.has("tftp_file")) {
        const std::string name = f.at("tftp_file").text(SW_FILE_NAME_SIZE - 1);
        if (!name_ok(name.c_str())) f.at("tftp_file").fail("is not a file name");
        copy_text(cfg(v).tftp_file, name);
    }
    if (f.has("configs")) {
        const std::vector<Field> configs = f.at("configs").items();
        if (configs.size() + 1 > SW_CONFIG_SLOTS) f.at("configs").fail("holds at most 3 more configuration files");
        for (std::size_t i = 0; i < configs.size(); ++i) {
            configs[i].expect_object({"name", "text"});
            const std::string name = configs[i].text("name", SW_FILE_NAME_SIZE - 1, "config-" + std::to_string(i + 2));
            const std::string text = configs[i].text("text", SW_CONFIG_MAX_BYTES, "");
            write_file(v, SW_FILE_CONFIG, int(i + 1), name, reinterpret_cast<const uint8_t *>(text.data()), text.size());
        }
    }
}

namespace ops {
void store(View &v, int kind, int slot, const std::string &name, const std::vector<uint8_t> &bytes) {
    if (!slot_ok(kind, slot)) throw Error("no such file slot");
    if (!name_ok(name.c_str())) throw Error("'" + name + "' is not a file name");
    if (bytes.size() > max_bytes(kind)) throw Error("the file is larger than the store takes");
    write_file(v, kind, slot, name, bytes.data(), bytes.size());
}
void set_tftp_port(View &v, int port) {
    if (port < 1 || port > 65535) throw Error("a TFTP port is 1..65535");
    hw(v).tftp_port = uint32_t(port);
}
}  // namespace ops

Switch::FilesInfo info(const View &v) {
    Switch::FilesInfo out;
    for (int s = 0; s < SW_FIRMWARE_SLOTS; ++s) out.firmware[s] = hw(v).firmware[s];
    for (int s = 0; s < SW_CONFIG_SLOTS; ++s) out.config[s] = hw(v).config[s];
    out.tftp_server = cfg(v).tftp_server;
    out.tftp_port = int(hw(v).tftp_port);
    out.tftp_file = text_of(cfg(v).tftp_file);
    out.tftp_config_slot = cfg(v).tftp_config_slot;
    out.tftp_state = hw(v).tftp_state;
    out.tftp_action = hw(v).tftp_action;
    out.tftp_error = text_of(hw(v).tftp_error);
    out.restarts = hw(v).restarts;
    out.last_restart = hw(v).last_restart;
    return out;
}

std::vector<uint8_t> file_bytes(const View &v, int kind, int slot) {
    if (!slot_ok(kind, slot) || !info_of(v, kind, slot).in_use) throw Error("no file in that slot");
    const uint8_t *p = bytes_of(v, kind, slot);
    return std::vector<uint8_t>(p, p + std::min<std::size_t>(info_of(v, kind, slot).size, max_bytes(kind)));
}

std::string damage(const View &v) {
    for (int kind : {SW_FILE_FIRMWARE, SW_FILE_CONFIG})
        for (int s = 0; s < slots_of(kind); ++s)
            if (info_of(v, kind, s).in_use && info_of(v, kind, s).size > max_bytes(kind))
                return "a stored file is larger than its slot";
    if (cfg(v).tftp_config_slot < 0 || cfg(v).tftp_config_slot >= SW_CONFIG_SLOTS)
        return "the TFTP configuration slot is out of range";
    return {};
}

namespace calls {

int flash_get_file_info(const View &v, int kind, int slot, sw_file_info_t *out) {
    if (!slot_ok(kind, slot) || !out) return -1;
    *out = info_of(v, kind, slot);
    return 0;
}
int flash_set_startup(const View &v, int kind, int slot) {
    if (!slot_ok(kind, slot) || !info_of(v, kind, slot).in_use) return -1;
    for (int s = 0; s < slots_of(kind); ++s) info_of(v, kind, s).startup = s == slot;
    return 0;
}
int flash_delete_file(const View &v, int kind, int slot) {
    if (!slot_ok(kind, slot) || !info_of(v, kind, slot).in_use || info_of(v, kind, slot).startup) return -1;
    std::memset(&info_of(v, kind, slot), 0, sizeof(sw_file_info_t));
    std::memset(bytes_of(v, kind, slot), 0, max_bytes(kind));
    return 0;
}

int cfg_get_tftp_server(const View &v, uint32_t *addr) {
    if (!addr) return -1;
    *addr = cfg(v).tftp_server;
    return 0;
}
// Any unicast address, or 0 for none.
int cfg_set_tftp_server(const View &v, uint32_t addr) {
    if (addr >= 0xe0000000u) return -1;
    cfg(v).tftp_server = addr;
    return 0;
}
int cfg_get_tftp_file(const View &v, char *buf, size_t size) { return text_out(cfg(v).tftp_file, buf, size); }
int cfg_set_tftp_file(const View &v, const char *name) {
    if (!name_ok(name)) return -1;
    copy_text(cfg(v).tftp_file, name);
    return 0;
}
int cfg_get_tftp_config_slot(const View &v) { return cfg(v).tftp_config_slot; }
int cfg_set_tftp_config_slot(const View &v, int slot) {
    if (!slot_ok(SW_FILE_CONFIG, slot)) return -1;
    cfg(v).tftp_config_slot = slot;
    return 0;
}

int flash_tftp_start(const View &v, int action) {
    layout::FilesHardware &h = hw(v);
    Target t{};
    if (h.tftp_state == SW_TFTP_RUNNING || !target_of(v, action, t) || cfg(v).tftp_server == 0 ||
        !name_ok(cfg(v).tftp_file))
        return -1;
    std::vector<uint8_t> data;
    if (t.upload) {
        if (!info_of(v, t.kind, t.slot).in_use) return -1;
        data = file_bytes(v, t.kind, t.slot);
    }
    const std::string path = default_state_path();
    const uint32_t transfer = ++h.tftp_transfer;
    h.tftp_state = SW_TFTP_RUNNING;
    h.tftp_action = action;
    std::memset(h.tftp_error, 0, sizeof h.tftp_error);
    const uint32_t server = cfg(v).tftp_server;
    const uint16_t port = uint16_t(h.tftp_port);
    const std::string name = text_of(cfg(v).tftp_file);
    // The transfer runs off the caller's path: the caller holds the
    // configuration lock, which the transfer takes only to record its end.
    try {
        std::thread([=, data = std::move(data)] {
            std::vector<uint8_t> got;
            const std::string error = t.upload ? tftp::put(server, port, name, data)
                                               : tftp::get(server, port, name, max_bytes(t.kind), got);
            finish(path, transfer, t, name, error, got);
        }).detach();
    } catch (const std::system_error &) {
        h.tftp_state = SW_TFTP_FAILED;
        copy_text(h.tftp_error, std::string("no thread for the transfer"));
        return -1;
    }
    return 0;
}
int flash_tftp_state(const View &v, int *action) {
    if (action) *action = hw(v).tftp_action;
    return hw(v).tftp_state;
}
int flash_tftp_clear(const View &v) {
    if (hw(v).tftp_state == SW_TFTP_RUNNING) return -1;
    hw(v).tftp_state = SW_TFTP_IDLE;
    hw(v).tftp_action = 0;
    std::memset(hw(v).tftp_error, 0, sizeof hw(v).tftp_error);
    return 0;
}

int cfg_restart(const View &v, int kind) {
    if (kind != SW_RESTART_WARM && kind != SW_RESTART_COLD && kind != SW_RESTART_FACTORY) return -1;
    if (kind == SW_RESTART_FACTORY) {
        const int slot = startup_slot(v, SW_FILE_CONFIG);
        write_factory_config(v, slot < 0 ? 0 : slot);
    }
    layout::FilesHardware &h = hw(v);
    ++h.restarts;
    h.last_restart = kind;
    const int64_t now = model::realtime_ns();
    h.last_restart_ns = now;
    // Nothing reboots; the switch's uptime starts again from here.
    __atomic_store_n(&v.rt->boot_realtime_ns, now, __ATOMIC_RELAXED);
    return 0;
}

}  // namespace calls

}  // namespace swsim::files
