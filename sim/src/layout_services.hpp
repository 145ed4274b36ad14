// State of the management services in the simulated switch's file: the
// configuration (a member of ConfigModel) and what the running daemons use
// (a member of Hardware).  The name servers in use are in the status block.
#pragma once

#include <cstdint>

#include "swplatform/platform.h"

namespace swsim::layout {

// Services with address filters, in the order of their platform calls.
enum FilterService : int { kFilterHttp, kFilterSsh, kFilterSnmp, kFilterTelnet, kFilterServices };

struct LogHost {
    uint8_t version;  // 4 or 6; 0 free
    uint8_t reserved[3];
    char address[SW_LOG_HOST_TEXT_SIZE];
};

struct ServicesConfig {
    uint32_t ip_address;  // management address and mask, host order
    uint32_t ip_mask;
    uint32_t gateway;     // 0: none
    uint32_t dns[2];      // configured name servers
    uint8_t http_on, https_on, telnet_on, ssh_on;
    uint16_t http_port, https_port;
    int32_t ssh_timeout;
    char ssh_key[2][SW_SSH_KEY_SIZE];  // RSA, DSA: "" none
    uint32_t ssh_keys_made;            // keys generated so far: each one is new
    char filters[kFilterServices][SW_IP_FILTER_SLOTS][SW_IP_FILTER_TEXT_SIZE];
    uint8_t sntp_on;
    uint8_t syslog_on;
    uint8_t remote_log_on;
    uint8_t reserved;
    int32_t sntp_interval;
    char sntp_servers[SW_SNTP_SERVERS][16];
    int32_t flash_level, ram_level, remote_level, remote_facility;
    LogHost log_hosts[SW_LOG_SERVERS];
};

struct ServicesHardware {
    int32_t daemon_facility;  // the facility the log daemon runs with
    uint32_t reserved;
};

}  // namespace swsim::layout
