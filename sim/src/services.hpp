// Management services of the simulated switch: the platform calls of
// swplatform/services.h (namespace calls, the View first like the calls of
// contract.cpp), and the settings and lists a control handle, swctl and a
// scenario change by name.
#pragma once

#include <string>
#include <vector>

#include "state_file.hpp"
#include "swsim/control.hpp"

namespace swsim::services {

// The defaults of a new switch.
void defaults(View &v);
Switch::ServicesInfo info(const View &v);

// Changes by name (Switch::service_settings() lists them); they throw Error
// naming the setting and what it accepts.
void set(View &v, const std::string &setting, const std::string &value);
void list_add(View &v, const std::string &list, const std::string &value);
void list_remove(View &v, const std::string &list, const std::string &value);
// kind "rsa", "dsa" or "both"; create or delete.
void ssh_keys(View &v, const std::string &kind, bool create);
const std::vector<Switch::ServiceSetting> &settings();
const std::vector<Switch::ServiceSetting> &lists();

// Damage the state check looks for: "" when none.
std::string damage(const View &v);

namespace calls {
int cfg_get_ip_default_gw(const View &v, char *buf, size_t size);
int cfg_set_ip_default_gw(const View &v, const char *gateway, int family);
int cfg_set_ip_dns_servers(const View &v, int which, uint32_t addr);
int cfg_get_httpd_enable(const View &v);
int cfg_set_httpd_enable(const View &v, int on);
int cfg_get_httpd_port(const View &v);
int cfg_set_httpd_port(const View &v, int port);
int cfg_set_httpsd_enable(const View &v, int on);
int cfg_get_httpsd_port(const View &v);
int cfg_set_httpsd_port(const View &v, int port);
int cfg_get_telnetd(const View &v);
int cfg_set_telnetd(const View &v, int on);
int cfg_get_sshd_enable(const View &v);
int cfg_set_sshd_enable(const View &v, int on);
int cfg_get_sshd_timeout(const View &v);
int cfg_set_sshd_timeout(const View &v, int seconds);
const char *cfg_ssh_get_key_rsa(const View &v);
const char *cfg_ssh_get_key_dsa(const View &v);
int cfg_ssh_create_keys_rsa(const View &v);
int cfg_ssh_create_keys_dsa(const View &v);
int cfg_ssh_reset_keys_rsa(const View &v);
int cfg_ssh_reset_keys_dsa(const View &v);
#define SWSIM_FILTER_CALL_DECLS(service)                                         \
    int cfg_get_ip_filter_##service(const View &v, int slot, char *buf, size_t size); \
    int cfg_add_ip_filter_##service(const View &v, const char *filter);          \
    int cfg_del_ip_filter_##service(const View &v, const char *filter);
SWSIM_FILTER_CALL_DECLS(http)
SWSIM_FILTER_CALL_DECLS(ssh)
SWSIM_FILTER_CALL_DECLS(snmp)
SWSIM_FILTER_CALL_DECLS(telnet)
#undef SWSIM_FILTER_CALL_DECLS
int cfg_get_sntp_enable(const View &v);
int cfg_set_sntp_enable(const View &v, int on);
int cfg_get_sntp_interval(const View &v);
int cfg_set_sntp_interval(const View &v, int seconds);
int sntp_dump_server_ip_addr(const View &v, int slot, char *buf, size_t size);
int cfg_add_sntp_server(const View &v, const char *addr);
int cfg_del_sntp_server(const View &v, const char *addr);
int cfg_get_syslogd(const View &v);
int cfg_set_syslogd(const View &v, int on);
int cfg_get_flash_level(const View &v);
int cfg_set_flash_level(const View &v, int level);
int cfg_get_ram_level(const View &v);
int cfg_set_ram_level(const View &v, int level);
int cfg_get_remote_log(const View &v);
int cfg_set_remote_log(const View &v, int on);
int cfg_get_remote_level(const View &v);
int cfg_set_remote_level(const View &v, int level);
int cfg_get_remote_facility(const View &v);
int cfg_set_remote_facility(const View &v, int facility);
int cfg_log_export_rem_facility(const View &v);
int cfg_log_get_remote_host_addr_version(const View &v, int slot);
int cfg_log_get_remote_host(const View &v, int slot, char *buf, size_t size);
int cfg_log_add_remote_host_ipv4(const View &v, const char *addr);
int cfg_log_del_remote_host(const View &v, const char *addr);
}  // namespace calls

}  // namespace swsim::services

// The catalogue lines of the calls above, for contract.cpp:
// X(return type, name, parameters, arguments, result while no state is open).
#define SWSIM_FILTER_CALLS(X, service)                                                                   \
    X(int, cfg_get_ip_filter_##service, (int slot, char *buf, size_t size), (slot, buf, size), -1)        \
    X(int, cfg_add_ip_filter_##service, (const char *filter), (filter), -1)                               \
    X(int, cfg_del_ip_filter_##service, (const char *filter), (filter), -1)
#define SWSIM_SERVICES_CALLS(X)                                                                          \
    X(int, cfg_get_ip_default_gw, (char *buf, size_t size), (buf, size), -1)                              \
    X(int, cfg_set_ip_default_gw, (const char *gateway, int family), (gateway, family), -1)               \
    X(int, cfg_set_ip_dns_servers, (int which, uint32_t addr), (which, addr), -1)                         \
    X(int, cfg_get_httpd_enable, (void), (), -1)                                                          \
    X(int, cfg_set_httpd_enable, (int on), (on), -1)                                                      \
    X(int, cfg_get_httpd_port, (void), (), -1)                                                            \
    X(int, cfg_set_httpd_port, (int port), (port), -1)                                                    \
    X(int, cfg_set_httpsd_enable, (int on), (on), -1)                                                     \
    X(int, cfg_get_httpsd_port, (void), (), -1)                                                           \
    X(int, cfg_set_httpsd_port, (int port), (port), -1)                                                   \
    X(int, cfg_get_telnetd, (void), (), -1)                                                               \
    X(int, cfg_set_telnetd, (int on), (on), -1)                                                           \
    X(int, cfg_get_sshd_enable, (void), (), -1)                                                           \
    X(int, cfg_set_sshd_enable, (int on), (on), -1)                                                       \
    X(int, cfg_get_sshd_timeout, (void), (), -1)                                                          \
    X(int, cfg_set_sshd_timeout, (int seconds), (seconds), -1)                                            \
    X(const char *, cfg_ssh_get_key_rsa, (void), (), nullptr)                                             \
    X(const char *, cfg_ssh_get_key_dsa, (void), (), nullptr)                                             \
    X(int, cfg_ssh_create_keys_rsa, (void), (), -1)                                                       \
    X(int, cfg_ssh_create_keys_dsa, (void), (), -1)                                                       \
    X(int, cfg_ssh_reset_keys_rsa, (void), (), -1)                                                        \
    X(int, cfg_ssh_reset_keys_dsa, (void), (), -1)                                                        \
    SWSIM_FILTER_CALLS(X, http)                                                                          \
    SWSIM_FILTER_CALLS(X, ssh)                                                                           \
    SWSIM_FILTER_CALLS(X, snmp)                                                                          \
    SWSIM_FILTER_CALLS(X, telnet)                                                                        \
    X(int, cfg_get_sntp_enable, (void), (), -1)                                                           \
    X(int, cfg_set_sntp_enable, (int on), (on), -1)                                                       \
    X(int, cfg_get_sntp_interval, (void), (), -1)                                                         \
    X(int, cfg_set_sntp_interval, (int seconds), (seconds), -1)                                           \
    X(int, sntp_dump_server_ip_addr, (int slot, char *buf, size_t size), (slot, buf, size), -1)           \
    X(int, cfg_add_sntp_server, (const char *addr), (addr), -1)                                           \
    X(int, cfg_del_sntp_server, (const char *addr), (addr), -1)                                           \
    X(int, cfg_get_syslogd, (void), (), -1)                                                               \
    X(int, cfg_set_syslogd, (int on), (on), -1)                                                           \
    X(int, cfg_get_flash_level, (void), (), -1)                                                           \
    X(int, cfg_set_flash_level, (int level), (level), -1)                                                 \
    X(int, cfg_get_ram_level, (void), (), -1)                                                             \
    X(int, cfg_set_ram_level, (int level), (level), -1)                                                   \
    X(int, cfg_get_remote_log, (void), (), -1)                                                            \
    X(int, cfg_set_remote_log, (int on), (on), -1)                                                        \
    X(int, cfg_get_remote_level, (void), (), -1)                                                          \
    X(int, cfg_set_remote_level, (int level), (level), -1)                                                \
    X(int, cfg_get_remote_facility, (void), (), -1)                                                       \
    X(int, cfg_set_remote_facility, (int facility), (facility), -1)                                       \
    X(int, cfg_log_export_rem_facility, (void), (), -1)                                                   \
    X(int, cfg_log_get_remote_host_addr_version, (int slot), (slot), -1)                                  \
    X(int, cfg_log_get_remote_host, (int slot, char *buf, size_t size), (slot, buf, size), -1)            \
    X(int, cfg_log_add_remote_host_ipv4, (const char *addr), (addr), -1)                                  \
    X(int, cfg_log_del_remote_host, (const char *addr), (addr), -1)
