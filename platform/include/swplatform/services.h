/*
 * Management services of the switch: the management address's gateway and
 * name servers, the web (HTTP, HTTPS), Telnet and SSH servers with the SSH
 * host keys, the address filters of the management services, the SNTP
 * client and the system log.  Part of the platform contract (included from
 * platform.h); the conventions of platform.h hold (negative result =
 * failure, out arguments untouched on failure).  Whether the management
 * address comes from DHCP is cfg_get_vlan_dhcp_client of vlans.h (VLAN 1).
 *
 * Switches are 1 on, 0 off: a getter answers 1 or 0, a setter takes 1 or 0
 * and refuses anything else unless it says so.  Address texts are dotted
 * IPv4 ("192.0.2.1") unless a call says otherwise.
 */
#ifndef SWPLATFORM_SERVICES_H
#define SWPLATFORM_SERVICES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Management address ---------------------------------------------------
 * The name servers in use are in the status block: sw_status_t.dns_servers.
 */
/* The default gateway as dotted text (buf of size bytes, 16 or more);
 * "0.0.0.0" while there is none. */
int cfg_get_ip_default_gw(char *buf, size_t size);
/* family: 0 (IPv4, the only one); "0.0.0.0" removes the gateway.  Refuses
 * text that is not an address, and multicast and reserved addresses
 * (224.0.0.0 and up). */
int cfg_set_ip_default_gw(const char *gateway, int family);
/* which: 0 primary, 1 secondary; addr in host order, 0 for none.  Refuses
 * multicast and reserved addresses. */
int cfg_set_ip_dns_servers(int which, uint32_t addr);

/* ---- Servers --------------------------------------------------------------
 * Ports 1 .. 65535; the HTTP and HTTPS servers cannot share one.
 */
int cfg_get_httpd_enable(void);
int cfg_set_httpd_enable(int on);
int cfg_get_httpd_port(void);
int cfg_set_httpd_port(int port);
/* The HTTPS server is switched on and off separately; the platform has no
 * reading of that switch. */
int cfg_set_httpsd_enable(int on);
int cfg_get_httpsd_port(void);
int cfg_set_httpsd_port(int port);
int cfg_get_telnetd(void);
int cfg_set_telnetd(int on);
int cfg_get_sshd_enable(void);
int cfg_set_sshd_enable(int on);
/* Seconds an SSH client has to authenticate: 1 .. 120. */
int cfg_get_sshd_timeout(void);
int cfg_set_sshd_timeout(int seconds);

/* SSH host keys: the public key as OpenSSH text ("ssh-rsa AAAA... ",
 * "ssh-dss AAAA..."), "" while the switch has none.  The text lives in
 * storage of the platform that the next call may change.  Creating a key
 * replaces the one there is; resetting deletes it (nothing to delete is not
 * a failure). */
#define SW_SSH_KEY_SIZE 1024 /* the longest key text, terminating zero included */
const char *cfg_ssh_get_key_rsa(void);
const char *cfg_ssh_get_key_dsa(void);
int cfg_ssh_create_keys_rsa(void);
int cfg_ssh_create_keys_dsa(void);
int cfg_ssh_reset_keys_rsa(void);
int cfg_ssh_reset_keys_dsa(void);

/* ---- Address filters ------------------------------------------------------
 * Per service, the networks allowed to reach it: SW_IP_FILTER_SLOTS slots,
 * each "address/prefix length" ("10.0.0.0/8") or "" when free.  The
 * platform keeps a filter in its canonical spelling (no leading zeros) and
 * finds one to delete by its address and prefix length.
 */
#define SW_IP_FILTER_SLOTS 15
#define SW_IP_FILTER_TEXT_SIZE 20 /* "255.255.255.255/32" and its zero */
/* A slot's text in buf (size bytes); fails for a slot out of range. */
int cfg_get_ip_filter_http(int slot, char *buf, size_t size);
int cfg_get_ip_filter_ssh(int slot, char *buf, size_t size);
int cfg_get_ip_filter_snmp(int slot, char *buf, size_t size);
int cfg_get_ip_filter_telnet(int slot, char *buf, size_t size);
/* Fails when the text is not a filter, the filter is listed already, or
 * every slot is in use. */
int cfg_add_ip_filter_http(const char *filter);
int cfg_add_ip_filter_ssh(const char *filter);
int cfg_add_ip_filter_snmp(const char *filter);
int cfg_add_ip_filter_telnet(const char *filter);
/* Fails when the filter is not listed. */
int cfg_del_ip_filter_http(const char *filter);
int cfg_del_ip_filter_ssh(const char *filter);
int cfg_del_ip_filter_snmp(const char *filter);
int cfg_del_ip_filter_telnet(const char *filter);

/* ---- SNTP client ----------------------------------------------------------*/
#define SW_SNTP_SERVERS 3
int cfg_get_sntp_enable(void);
int cfg_set_sntp_enable(int on);
/* Seconds between polls: 16 .. 16384. */
int cfg_get_sntp_interval(void);
int cfg_set_sntp_interval(int seconds);
/* Server slot 0 .. SW_SNTP_SERVERS - 1 as dotted text in buf (size bytes,
 * 16 or more), "" when free; 0 on success. */
int sntp_dump_server_ip_addr(int slot, char *buf, size_t size);
/* Fails when the text is not an address, the server is listed already, or
 * every slot is in use. */
int cfg_add_sntp_server(const char *addr);
int cfg_del_sntp_server(const char *addr);

/* ---- System log -----------------------------------------------------------
 * Levels are syslog severities 0 (emergency) .. 7 (debug): messages up to
 * the level are kept.  Facilities 16 .. 23 are local0 .. local7.
 */
#define SW_LOG_SERVERS 5
#define SW_LOG_HOST_TEXT_SIZE 46 /* an IPv6 address text and its zero */
#define SW_LOG_HOSTS_FULL (-9)   /* every remote server slot is in use */
int cfg_get_syslogd(void);
int cfg_set_syslogd(int on);
int cfg_get_flash_level(void); /* kept in flash */
int cfg_set_flash_level(int level);
int cfg_get_ram_level(void); /* kept in memory */
int cfg_set_ram_level(int level);
int cfg_get_remote_log(void);
int cfg_set_remote_log(int on);
int cfg_get_remote_level(void);
int cfg_set_remote_level(int level);
int cfg_get_remote_facility(void);
int cfg_set_remote_facility(int facility);
/* Hands the configured facility to the running log daemon. */
int cfg_log_export_rem_facility(void);
/* Remote log server slots 0 .. SW_LOG_SERVERS - 1: the address version of
 * a slot (4 or 6; 0 free), and its address text (buf of size bytes;
 * fails for a free slot). */
int cfg_log_get_remote_host_addr_version(int slot);
int cfg_log_get_remote_host(int slot, char *buf, size_t size);
/* Adds an IPv4 server: SW_LOG_HOSTS_FULL when every slot is in use, -1 for
 * text that is not an address or a server listed already. */
int cfg_log_add_remote_host_ipv4(const char *addr);
/* Removes a server by its IPv4 or IPv6 address text. */
int cfg_log_del_remote_host(const char *addr);

#ifdef __cplusplus
}
#endif

#endif
