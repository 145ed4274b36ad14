// Port authentication of the simulated switch: the 802.1X authenticators of
// the ports with the supplicants that an operator attaches (swctl dot1x),
// and the RADIUS client whose per-server counters follow their requests.
// The platform calls of swplatform/auth.h are in namespace calls, the View
// first like the calls of contract.cpp.
#pragma once

#include <string>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim {
class Field;
}

namespace swsim::auth {

// The defaults of a new switch: port authentication off, every port under
// automatic control, the RADIUS defaults (port 1812, 3 retransmissions,
// 5 seconds) and no server.
void defaults(View &v);

// Supplicants, as an operator drives them; they throw Error naming what
// is wrong (no such port, authentication off, nothing to answer).
// The "auth" part of a scenario (scenarios/README.md), over the defaults.
void build(View &v, const Field &f);

namespace ops {
// A supplicant logs on: its EAPOL-Start and identity answer arrive and the
// authenticator asks the RADIUS servers in slot order.  A server that is
// down times out after its retransmissions; the first one up holds the
// request until it answers (accept or reject below).  With no server up the
// port is held.
void supplicant_start(View &v, int unit0, int port0, const std::string &user, const uint8_t mac[6]);
// The RADIUS server answers the port's pending request.
void radius_answer(View &v, int unit0, int port0, bool accept);
// The supplicant logs off.
void supplicant_logoff(View &v, int unit0, int port0);
// A server stops or starts answering (slot 0 ..).
void set_server_down(View &v, int slot, bool down);
}  // namespace ops

Switch::Dot1xPortInfo port_info(const View &v, int unit0, int port0);
std::vector<Switch::RadiusServerInfo> radius_info(const View &v);

// The platform's view of a port, derived now (session time and counters).
int port_status(const View &v, int unit0, int port0, sw_dot1x_port_t *out);

std::string damage(const View &v);

namespace calls {
int cfg_get_dot1x_enable(const View &v);
int cfg_set_dot1x_enable(const View &v, int on);
int cfg_get_dot1x_port_param(const View &v, int unit0, int port0, int param, uint32_t *value);
int cfg_set_dot1x_port_param(const View &v, int unit0, int port0, int param, uint32_t value);
int cfg_dot1x_port_initialize(const View &v, int unit0, int port0);
int cfg_dot1x_port_reauthenticate(const View &v, int unit0, int port0);
int status_dot1x_port(const View &v, int unit0, int port0, sw_dot1x_port_t *out);
int cfg_get_radius_port(const View &v);
int cfg_set_radius_port(const View &v, int port);
int cfg_get_radius_retransmit(const View &v);
int cfg_set_radius_retransmit(const View &v, int count);
int cfg_get_radius_timeout(const View &v);
int cfg_set_radius_timeout(const View &v, int seconds);
int cfg_get_radius_key(const View &v, char *buf, size_t size);
int cfg_set_radius_key(const View &v, const char *key);
int cfg_get_radius_server(const View &v, int slot, sw_radius_server_t *out);
int cfg_set_radius_server_address(const View &v, int slot, uint32_t address);
int cfg_set_radius_server_port(const View &v, int slot, int port);
int cfg_set_radius_server_retransmit(const View &v, int slot, int count);
int cfg_set_radius_server_timeout(const View &v, int slot, int seconds);
int cfg_set_radius_server_key(const View &v, int slot, const char *key);
int cfg_del_radius_server(const View &v, int slot);
int status_radius_server(const View &v, int slot, sw_radius_counters_t *out);
}  // namespace calls

}  // namespace swsim::auth

// The catalogue lines of the calls above, for contract.cpp:
// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_AUTH_CALLS(X)                                                                                  \
    X(int, cfg_get_dot1x_enable, (void), (), -1)                                                              \
    X(int, cfg_set_dot1x_enable, (int on), (on), -1)                                                          \
    X(int, cfg_get_dot1x_port_param, (int unit0, int port0, int param, uint32_t *value),                      \
      (unit0, port0, param, value), -1)                                                                       \
    X(int, cfg_set_dot1x_port_param, (int unit0, int port0, int param, uint32_t value),                       \
      (unit0, port0, param, value), -1)                                                                       \
    X(int, cfg_dot1x_port_initialize, (int unit0, int port0), (unit0, port0), -1)                             \
    X(int, cfg_dot1x_port_reauthenticate, (int unit0, int port0), (unit0, port0), -1)                         \
    X(int, status_dot1x_port, (int unit0, int port0, sw_dot1x_port_t *out), (unit0, port0, out), -1)          \
    X(int, cfg_get_radius_port, (void), (), -1)                                                               \
    X(int, cfg_set_radius_port, (int port), (port), -1)                                                       \
    X(int, cfg_get_radius_retransmit, (void), (), -1)                                                         \
    X(int, cfg_set_radius_retransmit, (int count), (count), -1)                                               \
    X(int, cfg_get_radius_timeout, (void), (), -1)                                                            \
    X(int, cfg_set_radius_timeout, (int seconds), (seconds), -1)                                              \
    X(int, cfg_get_radius_key, (char *buf, size_t size), (buf, size), -1)                                     \
    X(int, cfg_set_radius_key, (const char *key), (key), -1)                                                  \
    X(int, cfg_get_radius_server, (int slot, sw_radius_server_t *out), (slot, out), -1)                       \
    X(int, cfg_set_radius_server_address, (int slot, uint32_t address), (slot, address), -1)                  \
    X(int, cfg_set_radius_server_port, (int slot, int port), (slot, port), -1)                                \
    X(int, cfg_set_radius_server_retransmit, (int slot, int count), (slot, count), -1)                        \
    X(int, cfg_set_radius_server_timeout, (int slot, int seconds), (slot, seconds), -1)                       \
    X(int, cfg_set_radius_server_key, (int slot, const char *key), (slot, key), -1)                           \
    X(int, cfg_del_radius_server, (int slot), (slot), -1)                                                     \
    X(int, status_radius_server, (int slot, sw_radius_counters_t *out), (slot, out), -1)
