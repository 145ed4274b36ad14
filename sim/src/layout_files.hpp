// State of the simulated switch's file store in its file: the TFTP settings
// (a member of ConfigModel) and the stored files, the last transfer and the
// restarts asked for (a member of Hardware).
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

struct FilesConfig {
    uint32_t tftp_server;  // host order, 0 none
    int32_t tftp_config_slot;
    char tftp_file[SW_FILE_NAME_SIZE];
};

struct FilesHardware {
    sw_file_info_t firmware[SW_FIRMWARE_SLOTS];
    sw_file_info_t config[SW_CONFIG_SLOTS];
    uint8_t firmware_bytes[SW_FIRMWARE_SLOTS][SW_FIRMWARE_MAX_BYTES];
    uint8_t config_bytes[SW_CONFIG_SLOTS][SW_CONFIG_MAX_BYTES];
    uint32_t tftp_port;    // UDP port of the TFTP server (69 on a real network)
    int32_t tftp_state;    // SW_TFTP_*
    int32_t tftp_action;   // of the last transfer
    uint32_t tftp_transfer;  // transfers started so far: a finishing one must be the last
    char tftp_error[128];  // why the last transfer failed
    uint32_t restarts;     // restarts asked for
    int32_t last_restart;  // SW_RESTART_* of the last one
    alignas(8) int64_t last_restart_ns;  // realtime
};

}  // namespace swsim::layout
