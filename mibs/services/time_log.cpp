// The SNTP client (sntpStatus, sntpPollInterval, sntpServerTable) and the
// system log: local logging, remote logging and its servers
// (sysLog*, remoteLog*, remoteLogServerTable).
//
// Server rows are indexed by the server's IPv4 address; a row and a slot of
// the platform's list are the same server when the row's address printed as
// dotted text equals the slot's text.  The status objects deliberately
// differ: sntpStatus takes everything but enabled(1) as off, remoteLogStatus
// takes everything but 0 as on and reads back the platform's own value, and
// sysLogStatus takes disabled(2) as off.
#include <cstring>

#include "mibs/services/address_text.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

using namespace snmpapi::services;

constexpr int kLogSlots = SW_LOG_SERVERS;
constexpr int kIPv4 = 4;

// A slot of the SNTP servers; the read's result (0 on success).
int read_sntp_slot(int slot, Dotted &text) {
    std::memset(text, 0, sizeof text);
    const int rc = sntp_dump_server_ip_addr(slot, text, sizeof text);
    text[sizeof text - 1] = '\0';
    return rc;
}

using LogText = char[SW_LOG_HOST_TEXT_SIZE];

// A remote log server slot, its buffer cleared first; true when it reads.
bool read_log_slot(int slot, LogText &text) {
    std::memset(text, 0, sizeof text);
    const bool ok = cfg_log_get_remote_host(slot, text, sizeof text) == 0;
    text[sizeof text - 1] = '\0';
    return ok;
}

// Whether a remote log server slot holds the address (whatever its version).
bool log_server_listed(uint32_t addr) {
    Dotted want;
    if (to_dotted(addr, want) < 0) return false;
    LogText text;
    for (int slot = 0; slot < kLogSlots; ++slot)
        if (read_log_slot(slot, text) && std::strcmp(text, want) == 0) return true;
    return false;
}

// A server list change by dotted text: add(1), delete(2), anything else -1.
int set_server_status(uint32_t addr, int32_t value, int (*add)(const char *), int (*del)(const char *)) {
    Dotted text;
    if (const int rc = to_dotted(addr, text); rc < 0) return rc;
    if (value == 1) return add(text);
    if (value == 2) return del(text);
    return -1;
}

// The platform reports a full server list as SW_LOG_HOSTS_FULL; the module
// reports it as a plain failure.
int add_log_server(const char *text) {
    const int rc = cfg_log_add_remote_host_ipv4(text);
    return rc == SW_LOG_HOSTS_FULL ? -1 : rc;
}

}  // namespace

extern "C" {

// ---- SNTP ---------------------------------------------------------------------------

int32_t get_sntpStatus(void) { return enabled_if(cfg_get_sntp_enable()); }
int set_sntpStatus(int32_t value) { return cfg_set_sntp_enable(value == kEnabled ? 1 : 0); }
int32_t get_sntpPollInterval(void) { return cfg_get_sntp_interval(); }
int set_sntpPollInterval(int32_t seconds) { return cfg_set_sntp_interval(seconds); }

// A slot that cannot be read stops the list there.
int init_index_sntpServerTable(void *(*create)(uint32_t)) {
    Dotted text;
    for (int slot = 0; slot < SW_SNTP_SERVERS; ++slot) {
        if (read_sntp_slot(slot, text) != 0) return -1;
        uint32_t addr = 0;
        if (text[0] != '\0' && from_dotted(text, addr)) create(addr);
    }
    return 0;
}

// -1 when a slot cannot be read; a row no slot holds goes.
int exists_entry_sntpServerTable(uint32_t addr) {
    Dotted want, text;
    if (to_dotted(addr, want) < 0) return 0;
    for (int slot = 0; slot < SW_SNTP_SERVERS; ++slot) {
        if (read_sntp_slot(slot, text) != 0) return -1;
        if (text[0] != '\0' && std::strcmp(text, want) == 0) return 1;
    }
    sntpServerTable_removeEntry(addr);
    return 0;
}

uint32_t get_sntpServerIp(uint32_t addr) { return addr; }
int set_sntpServerIp(uint32_t, uint32_t) { return 0; }
int32_t get_sntpServerStatus(uint32_t) { return 1; }
int set_sntpServerStatus(uint32_t addr, int32_t value) {
    return set_server_status(addr, value, cfg_add_sntp_server, cfg_del_sntp_server);
}

// ---- local and remote logging --------------------------------------------------------------

int32_t get_sysLogStatus(void) { return enabled_if(cfg_get_syslogd()); }
int set_sysLogStatus(int32_t value) { return cfg_set_syslogd(value == kDisabled || value == 0 ? 0 : 1); }
int32_t get_sysLogHistoryFlashLevel(void) { return cfg_get_flash_level(); }
int set_sysLogHistoryFlashLevel(int32_t level) { return cfg_set_flash_level(level); }
int32_t get_sysLogHistoryRamLevel(void) { return cfg_get_ram_level(); }
int set_sysLogHistoryRamLevel(int32_t level) { return cfg_set_ram_level(level); }

int32_t get_remoteLogStatus(void) { return cfg_get_remote_log(); }
int set_remoteLogStatus(int32_t value) { return cfg_set_remote_log(value != 0 ? 1 : 0); }
int32_t get_remoteLogLevel(void) { return cfg_get_remote_level(); }
int set_remoteLogLevel(int32_t level) { return cfg_set_remote_level(level); }
int32_t get_remoteLogFacilityType(void) { return cfg_get_remote_facility(); }
// A facility the platform took is handed to the log daemon at once.
int set_remoteLogFacilityType(int32_t facility) {
    const int rc = cfg_set_remote_facility(facility);
    if (rc == 0) cfg_log_export_rem_facility();
    return rc;
}

// IPv4 servers only: an IPv6 server is never listed.
int init_index_remoteLogServerTable(void *(*create)(uint32_t)) {
    LogText text;
    for (int slot = 0; slot < kLogSlots; ++slot) {
        if (cfg_log_get_remote_host_addr_version(slot) != kIPv4 || !read_log_slot(slot, text)) continue;
        uint32_t addr = 0;
        if (from_dotted(text, addr)) create(addr);
    }
    return 0;
}

int exists_entry_remoteLogServerTable(uint32_t addr) {
    if (log_server_listed(addr)) return 1;
    remoteLogServerTable_removeEntry(addr);
    return 0;
}

uint32_t get_remoteLogServerIp(uint32_t addr) { return log_server_listed(addr) ? addr : 0; }
int set_remoteLogServerIp(uint32_t, uint32_t) { return -1; }
int32_t get_remoteLogServerStatus(uint32_t addr) { return log_server_listed(addr) ? 1 : 2; }
int set_remoteLogServerStatus(uint32_t addr, int32_t value) {
    return set_server_status(addr, value, add_log_server, cfg_log_del_remote_host);
}

}  // extern "C"
