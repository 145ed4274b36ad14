// The file store of the simulated switch: firmware images and configuration
// files, TFTP transfers done for real by a thread of the process that asked
// (the agent), and restarts, which are recorded and start the uptime again.
// The platform calls of swplatform/files.h are in namespace calls, the View
// first like the calls of contract.cpp.
#pragma once

#include <string>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim {
class Field;
}

namespace swsim::files {

// The defaults of a new switch: firmware image 1 ("switch-fw-1.0.0.bin")
// and configuration file 1 ("startup-config") stored and chosen for
// start-up, no TFTP server, TFTP port 69, configuration slot 1.
void defaults(View &v);
// The "files" part of a scenario (scenarios/README.md), over the defaults.
void build(View &v, const Field &f);

namespace ops {
// Stores a file (kind SW_FILE_*, slot from 0) as an operator loads it.
void store(View &v, int kind, int slot, const std::string &name, const std::vector<uint8_t> &bytes);
void set_tftp_port(View &v, int port);
}  // namespace ops

Switch::FilesInfo info(const View &v);
std::vector<uint8_t> file_bytes(const View &v, int kind, int slot);

std::string damage(const View &v);

namespace calls {
int flash_get_file_info(const View &v, int kind, int slot, sw_file_info_t *out);
int flash_set_startup(const View &v, int kind, int slot);
int flash_delete_file(const View &v, int kind, int slot);
int cfg_get_tftp_server(const View &v, uint32_t *addr);
int cfg_set_tftp_server(const View &v, uint32_t addr);
int cfg_get_tftp_file(const View &v, char *buf, size_t size);
int cfg_set_tftp_file(const View &v, const char *name);
int cfg_get_tftp_config_slot(const View &v);
int cfg_set_tftp_config_slot(const View &v, int slot);
int flash_tftp_start(const View &v, int action);
int flash_tftp_state(const View &v, int *action);
int flash_tftp_clear(const View &v);
int cfg_restart(const View &v, int kind);
}  // namespace calls

}  // namespace swsim::files

// The catalogue lines of the calls above, for contract.cpp:
// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_FILES_CALLS(X)                                                                                 \
    X(int, flash_get_file_info, (int kind, int slot, sw_file_info_t *out), (kind, slot, out), -1)             \
    X(int, flash_set_startup, (int kind, int slot), (kind, slot), -1)                                         \
    X(int, flash_delete_file, (int kind, int slot), (kind, slot), -1)                                         \
    X(int, cfg_get_tftp_server, (uint32_t *addr), (addr), -1)                                                 \
    X(int, cfg_set_tftp_server, (uint32_t addr), (addr), -1)                                                  \
    X(int, cfg_get_tftp_file, (char *buf, size_t size), (buf, size), -1)                                      \
    X(int, cfg_set_tftp_file, (const char *name), (name), -1)                                                 \
    X(int, cfg_get_tftp_config_slot, (void), (), -1)                                                          \
    X(int, cfg_set_tftp_config_slot, (int slot), (slot), -1)                                                  \
    X(int, flash_tftp_start, (int action), (action), -1)                                                      \
    X(int, flash_tftp_state, (int *action), (action), -1)                                                     \
    X(int, flash_tftp_clear, (void), (), -1)                                                                  \
    X(int, cfg_restart, (int kind), (kind), -1)
