// Trap destinations (trapDestTable) and the module's part in the platform's
// trap service (init_trap).
//
// A destination row is indexed by its IPv4 address; every accessor first
// finds the platform's slot whose printed address is the row's dotted text.
// A destination the platform keeps as an IPv6 address is never listed.
#include <cstring>
#include <string>

#include "agent/ifindex.hpp"
#include "mibs/services/address_text.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

using namespace snmpapi::services;

// The printed address of a slot ("" when free or unreadable).
using SlotText = char[46];
void read_slot(int slot, SlotText &text) {
    text[0] = '\0';
    sw_ip_addr_t addr{};
    if (cfg_get_snmp_trap_host(slot, &addr) == 0 && ip_addr_to_str(&addr, text, sizeof text) < 0) text[0] = '\0';
    text[sizeof text - 1] = '\0';
}

// The slot text that names the row's destination, or null.
const char *find_slot(uint32_t addr, SlotText &text) {
    Dotted want;
    if (to_dotted(addr, want) < 0) return nullptr;
    for (int slot = 0; slot < SW_TRAP_DESTS; ++slot) {
        read_slot(slot, text);
        if (text[0] != '\0' && std::strcmp(text, want) == 0) return text;
    }
    return nullptr;
}

// The module's forwarders: the platform's services raise their notifications
// through them, and they hand them on unchanged.
void forward_authentication_fail(int service, const char *peer) { send_trap_snmp_authentication_fail(service, peer); }
void forward_rmon_alarm(int32_t alarm_index, int rising, const uint32_t *variable, size_t variable_len,
                        int32_t sample_type, int32_t value, int32_t threshold) {
    send_trap_rmon_alarm(alarm_index, rising, variable, variable_len, sample_type, value, threshold);
}

}  // namespace

extern "C" {

void init_trap(void) { register_trap(forward_authentication_fail, forward_rmon_alarm); }

int init_index_trapDestTable(void *(*create)(uint32_t)) {
    SlotText text;
    for (int slot = 0; slot < SW_TRAP_DESTS; ++slot) {
        read_slot(slot, text);
        uint32_t addr = 0;
        if (text[0] != '\0' && from_dotted(text, addr)) create(addr);
    }
    return 0;
}

int exists_entry_trapDestTable(uint32_t addr) {
    SlotText text;
    if (find_slot(addr, text)) return 1;
    trapDestTable_removeEntry(addr);
    return 0;
}

int32_t get_trapDestStatus(uint32_t addr) {
    SlotText text;
    return find_slot(addr, text) ? 1 : 2;
}
// A new destination starts with the empty community and version 1.
int set_trapDestStatus(uint32_t addr, int32_t value) {
    Dotted text;
    if (const int rc = to_dotted(addr, text); rc < 0) return rc;
    if (value == 1) return cfg_add_snmp_trap_host(text, "", SW_TRAP_V1);
    if (value == 2) return cfg_del_snmp_trap_host(text);
    return -1;
}

// No destination, no value.
const uint8_t *get_trapDestCommunity(uint32_t addr, size_t *len) {
    SlotText text;
    *len = 0;
    const char *slot = find_slot(addr, text);
    const char *community = slot ? cfg_get_snmp_trap_host_community(slot) : nullptr;
    if (community == nullptr) return nullptr;
    *len = strnlen(community, SW_TRAP_COMMUNITY_SIZE);
    return reinterpret_cast<const uint8_t *>(community);
}
int set_trapDestCommunity(uint32_t addr, const uint8_t *bytes, size_t len) {
    const std::string community = received_text(bytes, len);
    SlotText text;
    const char *slot = find_slot(addr, text);
    return slot ? cfg_set_snmp_trap_host_community(slot, community.c_str()) : -1;
}

int32_t get_trapDestVersion(uint32_t addr) {
    SlotText text;
    const char *slot = find_slot(addr, text);
    return slot ? cfg_get_snmp_trap_host_version(slot) : 0;
}
int set_trapDestVersion(uint32_t addr, int32_t version) {
    SlotText text;
    const char *slot = find_slot(addr, text);
    return slot ? cfg_set_snmp_trap_host_version(slot, version) : -1;
}

}  // extern "C"
