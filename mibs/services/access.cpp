// Management access: how the management address is obtained, the default
// gateway and name servers, the web, Telnet and SSH servers with the SSH
// host keys (the swIp and sshServer scalars), and the address filters of the
// HTTP, SSH, SNMP and Telnet services (ipFilter*Table).
//
// A filter row is indexed by a network's address and mask; the platform
// keeps the filter as the text "address/prefix length" in one of 15 slots.
#include <cstdio>
#include <cstring>

#include "agent/ifindex.hpp"
#include "mibs/services/address_text.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

using namespace snmpapi::services;

// ---- servers ----------------------------------------------------------------------

// enabled(1) switches the server on, disabled(2) off; anything else is
// refused (-1).
int set_server(int (*set)(int), int32_t value) {
    if (value == kEnabled) return set(1);
    if (value == kDisabled) return set(0);
    return -1;
}

// ---- SSH host keys ----------------------------------------------------------------

// What a host-key action does: rsa(2), dsa(3) or both(4), RSA first; the
// result of both is the sum of the two.  Any other value does nothing.
int key_action(int32_t action, int (*rsa)(void), int (*dsa)(void)) {
    switch (action) {
    case 2: return rsa();
    case 3: return dsa();
    case 4: {
        const int first = rsa();
        return first + dsa();
    }
    default: return 0;
    }
}

// The platform is asked for the key's length and then for its text (the
// length is held to the platform's key storage: a key that changed between
// the two calls is never read past it).
const uint8_t *host_key(const char *(*key)(void), size_t *len) {
    const char *text = key();
    *len = text != nullptr ? strnlen(text, SW_SSH_KEY_SIZE - 1) : 0;
    text = key();
    if (text == nullptr) *len = 0;
    return reinterpret_cast<const uint8_t *>(text != nullptr ? text : "");
}

// ---- address filters --------------------------------------------------------------

struct FilterCalls {
    int (*read)(int, char *, size_t);
    int (*add)(const char *);
    int (*del)(const char *);
};
constexpr FilterCalls kHttp{cfg_get_ip_filter_http, cfg_add_ip_filter_http, cfg_del_ip_filter_http};
constexpr FilterCalls kSsh{cfg_get_ip_filter_ssh, cfg_add_ip_filter_ssh, cfg_del_ip_filter_ssh};
constexpr FilterCalls kSnmp{cfg_get_ip_filter_snmp, cfg_add_ip_filter_snmp, cfg_del_ip_filter_snmp};
constexpr FilterCalls kTelnet{cfg_get_ip_filter_telnet, cfg_add_ip_filter_telnet, cfg_del_ip_filter_telnet};

constexpr int kFilterSlots = SW_IP_FILTER_SLOTS;  // slots 0 .. 14 are read, no more
using FilterText = char[SW_IP_FILTER_TEXT_SIZE];

// A slot's text; "" when it is free or cannot be read.
void read_slot(const FilterCalls &c, int slot, FilterText &text) {
    std::memset(text, 0, sizeof text);
    c.read(slot, text, sizeof text);
    text[sizeof text - 1] = '\0';
}

// The platform's text of the filter (address, mask): "a.b.c.d/len".  A
// conversion that fails gives its negative result.
int filter_key(uint32_t addr, uint32_t mask, FilterText &key) {
    Dotted address;
    if (const int rc = to_dotted(addr, address); rc < 0) return rc;
    const int prefix = ip_mask_to_prefix(mask);
    if (prefix < 0) return prefix;
    const int n = std::snprintf(key, sizeof key, "%s/%d", address, prefix);
    return n > 0 && std::size_t(n) < sizeof key ? 0 : -1;
}

// Whether a slot holds the key.
bool listed(const FilterCalls &c, const FilterText &key) {
    FilterText text;
    for (int slot = 0; slot < kFilterSlots; ++slot) {
        read_slot(c, slot, text);
        if (text[0] != '\0' && std::strcmp(text, key) == 0) return true;
    }
    return false;
}

// A row for every slot in use; the first slot that cannot be split and
// converted stops the population with its result (rows made so far stay).
int filter_populate(const FilterCalls &c, void *(*create)(uint32_t, uint32_t)) {
    FilterText text;
    for (int slot = 0; slot < kFilterSlots; ++slot) {
        read_slot(c, slot, text);
        if (text[0] == '\0') continue;
        uint32_t addr = 0, mask = 0;
        if (const int rc = ip_addr_prefix_to_addr_mask(text, &addr, &mask); rc < 0) return rc;
        create(addr, mask);
    }
    return 0;
}

// A row whose key cannot be built is left alone; one no slot holds goes.
int filter_exists(const FilterCalls &c, uint32_t addr, uint32_t mask, void (*remove)(uint32_t, uint32_t)) {
    FilterText key;
    if (filter_key(addr, mask, key) < 0) return 0;
    if (listed(c, key)) return 1;
    remove(addr, mask);
    return 0;
}

int32_t filter_status(const FilterCalls &c, uint32_t addr, uint32_t mask) {
    FilterText key;
    return filter_key(addr, mask, key) == 0 && listed(c, key) ? kEnabled : kDisabled;
}

// 1 adds the filter, 2 deletes it, anything else is refused.
int set_filter_status(const FilterCalls &c, uint32_t addr, uint32_t mask, int32_t value) {
    FilterText key;
    if (const int rc = filter_key(addr, mask, key); rc < 0) return rc;
    if (value == 1) return c.add(key);
    if (value == 2) return c.del(key);
    return -1;
}

}  // namespace

extern "C" {

// ---- management address -------------------------------------------------------------

// static(1) or dhcp(2); anything but 2 asks for a static address.
int32_t get_ipAddressMode(void) { return cfg_get_vlan_dhcp_client(1) != 0 ? 2 : 1; }
int set_ipAddressMode(int32_t value) { return cfg_set_vlan_dhcp_client(value == 2 ? 1 : 0); }

// The gateway's text, which may be no address (then 0.0.0.0).
uint32_t get_ipDefaultGateway(void) {
    char text[40] = {};
    cfg_get_ip_default_gw(text, sizeof text);
    text[sizeof text - 1] = '\0';
    uint32_t addr = 0;
    return from_dotted(text, addr) ? addr : 0;
}
int set_ipDefaultGateway(uint32_t addr) {
    Dotted text;
    if (const int rc = to_dotted(addr, text); rc < 0) return rc;
    return cfg_set_ip_default_gw(text, 0);
}

uint32_t get_ipPrimaryDnsServer(void) { return get_status()->dns_servers[0]; }
int set_ipPrimaryDnsServer(uint32_t addr) { return cfg_set_ip_dns_servers(0, addr); }
uint32_t get_ipSecondaryDnsServer(void) { return get_status()->dns_servers[1]; }
int set_ipSecondaryDnsServer(uint32_t addr) { return cfg_set_ip_dns_servers(1, addr); }

// ---- servers ----------------------------------------------------------------------

int32_t get_ipHttpState(void) { return enabled_if(cfg_get_httpd_enable()); }
int set_ipHttpState(int32_t value) { return set_server(cfg_set_httpd_enable, value); }
int32_t get_ipHttpPort(void) { return cfg_get_httpd_port(); }
int set_ipHttpPort(int32_t port) { return cfg_set_httpd_port(port); }

// The platform has no reading of the HTTPS server's switch: the state shown
// is the HTTP server's.
int32_t get_ipHttpsState(void) { return enabled_if(cfg_get_httpd_enable()); }
int set_ipHttpsState(int32_t value) { return set_server(cfg_set_httpsd_enable, value); }
int32_t get_ipHttpsPort(void) { return cfg_get_httpsd_port(); }
int set_ipHttpsPort(int32_t port) { return cfg_set_httpsd_port(port); }

// Telnet is on for enabled(1) and off for any other value.
int32_t get_ipTelnetState(void) { return enabled_if(cfg_get_telnetd()); }
int set_ipTelnetState(int32_t value) { return cfg_set_telnetd(value == kEnabled ? 1 : 0); }

int32_t get_sshServerStatus(void) { return enabled_if(cfg_get_sshd_enable()); }
int set_sshServerStatus(int32_t value) { return set_server(cfg_set_sshd_enable, value); }
int32_t get_sshTimeout(void) { return cfg_get_sshd_timeout(); }
int set_sshTimeout(int32_t seconds) { return cfg_set_sshd_timeout(seconds); }
int32_t get_sshServerMajorVersion(void) { return 2; }
int32_t get_sshServerMinorVersion(void) { return 0; }

const uint8_t *get_sshRsaHostKey(size_t *len) { return host_key(cfg_ssh_get_key_rsa, len); }
const uint8_t *get_sshDsaHostKey(size_t *len) { return host_key(cfg_ssh_get_key_dsa, len); }

// Actions read as none(1).
int32_t get_sshHostKeyGenAction(void) { return 1; }
int set_sshHostKeyGenAction(int32_t action) {
    return key_action(action, cfg_ssh_create_keys_rsa, cfg_ssh_create_keys_dsa);
}
int32_t get_sshHostKeyDelAction(void) { return 1; }
int set_sshHostKeyDelAction(int32_t action) {
    return key_action(action, cfg_ssh_reset_keys_rsa, cfg_ssh_reset_keys_dsa);
}

// ---- address filters --------------------------------------------------------------

#define SA_FILTER_TABLE(table, status, calls)                                                            \
    int init_index_##table(void *(*create)(uint32_t, uint32_t)) { return filter_populate(calls, create); } \
    int exists_entry_##table(uint32_t addr, uint32_t mask) {                                             \
        return filter_exists(calls, addr, mask, table##_removeEntry);                                    \
    }                                                                                                    \
    int32_t get_##status(uint32_t addr, uint32_t mask) { return filter_status(calls, addr, mask); }      \
    int set_##status(uint32_t addr, uint32_t mask, int32_t value) {                                      \
        return set_filter_status(calls, addr, mask, value);                                              \
    }
SA_FILTER_TABLE(ipFilterHTTPTable, ipFilterHTTPStatus, kHttp)
SA_FILTER_TABLE(ipFilterSSHTable, ipFilterSSHStatus, kSsh)
SA_FILTER_TABLE(ipFilterSnmpTable, ipFilterSnmpStatus, kSnmp)
SA_FILTER_TABLE(ipFilterTelnetTable, ipFilterTelnetStatus, kTelnet)
#undef SA_FILTER_TABLE

}  // extern "C"
