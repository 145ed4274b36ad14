// State of port authentication in the simulated switch's file: the 802.1X
// and RADIUS settings (a member of ConfigModel) and what the authenticators
// and the RADIUS client are doing and counted (a member of Hardware).
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

inline constexpr int kAuthPorts = SW_MAX_UNITS * SW_PORTS_PER_UNIT;

struct RadiusServerConfig {
    uint8_t in_use;
    uint8_t reserved[3];
    uint32_t address;  // host order
    uint32_t port, retransmit, timeout;
    char key[SW_RADIUS_KEY_SIZE];
    uint8_t reserved2[3];
};

struct AuthConfig {
    uint8_t dot1x_on;
    uint8_t reserved[3];
    uint32_t params[kAuthPorts][SW_DOT1X_PARAMS];  // SW_DOT1X_* of each port
    uint32_t radius_port, radius_retransmit, radius_timeout;
    char radius_key[SW_RADIUS_KEY_SIZE];
    uint8_t reserved2[3];
    RadiusServerConfig servers[SW_RADIUS_SERVERS];
};

// A port's authenticator: the platform's record as it stands, plus where
// the session began so that its time and counters can be derived.
struct AuthPort {
    sw_dot1x_port_t status;
    uint8_t supplicant;           // a supplicant is attached (logged on)
    uint8_t server;               // RADIUS slot of the request in flight, 0xff none
    uint8_t reserved[2];
    int64_t session_start_ns;     // realtime; 0 while no session runs
    int64_t request_sent_ns;      // realtime of the request in flight
    uint64_t start_octets_rx, start_octets_tx;  // port counters when the session began
    uint64_t start_frames_rx, start_frames_tx;
};

struct AuthHardware {
    AuthPort ports[kAuthPorts];
    sw_radius_counters_t servers[SW_RADIUS_SERVERS];
    uint8_t server_down[SW_RADIUS_SERVERS];  // set by the operator: the server never answers
    uint8_t reserved[3];
};

}  // namespace swsim::layout
