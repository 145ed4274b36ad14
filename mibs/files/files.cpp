// Firmware images and configuration files: the file store (fileInfoTable),
// the start-up choices (restartFirmware, restartConfig), TFTP transfers
// between the store and a TFTP server (tftpServer, tftpFile,
// tftpFlashConfig, tftpAction) and restarts (restartControl, and
// switchResObj's factory reset).
//
// A transfer runs on its own once tftpAction starts it: reading tftpAction
// tells whether it is in progress, succeeded or failed.
#include <cstdio>
#include <cstring>
#include <ctime>
#include <initializer_list>

#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

constexpr int32_t kTrue = 1, kFalse = 2;
constexpr int32_t kNoDelete = 1, kDelete = 2;

int slots_of(int32_t kind) {
    return kind == SW_FILE_FIRMWARE ? SW_FIRMWARE_SLOTS : kind == SW_FILE_CONFIG ? SW_CONFIG_SLOTS : 0;
}

// The file of a row (kind, slot + 1); in_use 0 when there is none.
sw_file_info_t file(int32_t kind, int32_t index) {
    sw_file_info_t f{};
    if (index < 1 || index > slots_of(kind) || flash_get_file_info(kind, index - 1, &f) < 0) std::memset(&f, 0, sizeof f);
    return f;
}

// The start-up file's slot + 1 of a kind; 0 when none is chosen.
int32_t startup_index(int kind) {
    for (int32_t index = 1; index <= slots_of(kind); ++index)
        if (const sw_file_info_t f = file(kind, index); f.in_use && f.startup) return index;
    return 0;
}
int set_startup_index(int kind, int32_t index) {
    return index >= 1 && index <= slots_of(kind) ? flash_set_startup(kind, index - 1) : -1;
}

// tftpAction: none(1), downloadFirmware(2), downloadConfig(3),
// uploadFirmware(4), uploadConfig(5) are written; inProgress(6),
// succeeded(7) and failed(8) are read.
constexpr int32_t kActionNone = 1, kActionFirst = 2, kActionLast = 5;
constexpr int32_t kInProgress = 6, kSucceeded = 7, kFailed = 8;

// restartControl: none(1), warmRestart(2), coldRestart(3).
constexpr int32_t kRestartNone = 1, kRestartWarm = 2, kRestartCold = 3;
// switchResObj: normal(1), factoryReset(2).
constexpr int32_t kResetNormal = 1, kResetFactory = 2;

// A restart action object's write: its `none` value does nothing, the
// values of `kinds` ask for their restart, any other is refused.
struct RestartValue {
    int32_t value;
    int kind;  // SW_RESTART_*
};
int restart_for(int32_t value, int32_t none, std::initializer_list<RestartValue> kinds) {
    if (value == none) return 0;
    for (const RestartValue &k : kinds)
        if (k.value == value) return cfg_restart(k.kind);
    return -1;
}

}  // namespace

extern "C" {

// ---- TFTP -------------------------------------------------------------------------------

const uint8_t *get_tftpFile(size_t *len) {
    static char name[SW_FILE_NAME_SIZE];
    if (cfg_get_tftp_file(name, sizeof name) < 0) name[0] = '\0';
    name[sizeof name - 1] = '\0';
    *len = std::strlen(name);
    return reinterpret_cast<const uint8_t *>(name);
}
// The name arrives as bytes; the platform takes text (no zero byte inside).
int set_tftpFile(const uint8_t *bytes, size_t len) {
    char name[SW_FILE_NAME_SIZE];
    if (len >= sizeof name || (len > 0 && std::memchr(bytes, '\0', len) != nullptr)) return -1;
    if (len > 0) std::memcpy(name, bytes, len);
    name[len] = '\0';
    return cfg_set_tftp_file(name);
}

uint32_t get_tftpServer(void) {
    uint32_t addr = 0;
    return cfg_get_tftp_server(&addr) < 0 ? 0 : addr;
}
int set_tftpServer(uint32_t addr) { return cfg_set_tftp_server(addr); }

// The configuration file (1 .. 4) that configuration transfers use.
int32_t get_tftpFlashConfig(void) {
    const int slot = cfg_get_tftp_config_slot();
    return slot < 0 ? 0 : slot + 1;
}
int set_tftpFlashConfig(int32_t index) { return cfg_set_tftp_config_slot(index - 1); }

int32_t get_tftpAction(void) {
    switch (flash_tftp_state(nullptr)) {
    case SW_TFTP_IDLE: return kActionNone;
    case SW_TFTP_RUNNING: return kInProgress;
    case SW_TFTP_DONE: return kSucceeded;
    case SW_TFTP_FAILED: return kFailed;
    default: return 0;
    }
}
// A transfer's value starts it (SW_TFTP_DOWNLOAD_FIRMWARE .. in the same
// order); none(1) forgets the last outcome; the read-only states are refused.
int set_tftpAction(int32_t value) {
    if (value == kActionNone) return flash_tftp_clear();
    if (value < kActionFirst || value > kActionLast) return -1;
    return flash_tftp_start(SW_TFTP_DOWNLOAD_FIRMWARE + (value - kActionFirst));
}

// ---- start-up files and restarts ----------------------------------------------------------

int32_t get_restartFirmware(void) { return startup_index(SW_FILE_FIRMWARE); }
int set_restartFirmware(int32_t index) { return set_startup_index(SW_FILE_FIRMWARE, index); }
int32_t get_restartConfig(void) { return startup_index(SW_FILE_CONFIG); }
int set_restartConfig(int32_t index) { return set_startup_index(SW_FILE_CONFIG, index); }

int32_t get_restartControl(void) { return kRestartNone; }
int set_restartControl(int32_t value) {
    return restart_for(value, kRestartNone, {{kRestartWarm, SW_RESTART_WARM}, {kRestartCold, SW_RESTART_COLD}});
}
// Factory reset: the start-up configuration file takes the factory
// configuration and the whole switch restarts.
int32_t get_switchResObj(void) { return kResetNormal; }
int set_switchResObj(int32_t value) { return restart_for(value, kResetNormal, {{kResetFactory, SW_RESTART_FACTORY}}); }

// ---- fileInfoTable ----------------------------------------------------------------------

int init_index_fileInfoTable(void *(*create)(int32_t, int32_t)) {
    for (int32_t kind : {SW_FILE_FIRMWARE, SW_FILE_CONFIG})
        for (int32_t index = 1; index <= slots_of(kind); ++index)
            if (file(kind, index).in_use) create(kind, index);
    return 0;
}
int exists_entry_fileInfoTable(int32_t kind, int32_t index) {
    if (file(kind, index).in_use) return 1;
    fileInfoTable_removeEntry(kind, index);
    return 0;
}

const uint8_t *get_fileInfoFileName(int32_t kind, int32_t index, size_t *len) {
    static char name[SW_FILE_NAME_SIZE];
    const sw_file_info_t f = file(kind, index);
    std::memcpy(name, f.name, sizeof name);
    name[sizeof name - 1] = '\0';
    *len = std::strlen(name);
    return reinterpret_cast<const uint8_t *>(name);
}
int32_t get_fileInfoFileSize(int32_t kind, int32_t index) { return int32_t(file(kind, index).size); }
// "YYYY-MM-DD HH:MM:SS" in UTC; "" for no file.
const uint8_t *get_fileInfoCreationTime(int32_t kind, int32_t index, size_t *len) {
    static char text[32];
    const sw_file_info_t f = file(kind, index);
    const time_t at = time_t(f.created);
    tm parts{};
    *len = f.in_use && gmtime_r(&at, &parts) ? std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts) : 0;
    return reinterpret_cast<const uint8_t *>(text);
}
int32_t get_fileInfoIsStartUp(int32_t kind, int32_t index) {
    const sw_file_info_t f = file(kind, index);
    return f.in_use ? (f.startup ? kTrue : kFalse) : 0;
}
// true(1) chooses the file; false(2) is accepted for a file that is not the
// start-up one (some file always is) and refused for the one that is.
int set_fileInfoIsStartUp(int32_t kind, int32_t index, int32_t value) {
    if (value == kTrue) return set_startup_index(kind, index);
    const sw_file_info_t f = file(kind, index);
    return value == kFalse && f.in_use && !f.startup ? 0 : -1;
}
int32_t get_fileInfoDelete(int32_t, int32_t) { return kNoDelete; }
int set_fileInfoDelete(int32_t kind, int32_t index, int32_t value) {
    if (value == kNoDelete) return 0;
    if (value != kDelete || index < 1 || index > slots_of(kind)) return -1;
    return flash_delete_file(kind, index - 1);
}
uint32_t get_fileInfoChecksum(int32_t kind, int32_t index) { return file(kind, index).crc32; }
int32_t get_fileInfoFileType(int32_t kind, int32_t index) { return file(kind, index).in_use ? kind : 0; }

}  // extern "C"
