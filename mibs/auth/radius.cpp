// The RADIUS client: its defaults (radiusServer* scalars), the servers it
// asks (radiusMultipleServerTable) and what it counted per server
// (radiusAuthServerTable).  Rows are the platform's server slots plus one.
//
// Shared secrets are written, never shown: they read as the empty string.
#include <cstring>
#include <string>

#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

constexpr int32_t kValid = 1, kInvalid = 2;

int slot_of(int32_t index) { return index >= 1 && index <= SW_RADIUS_SERVERS ? int(index - 1) : -1; }

// The slot's server; in_use 0 when it is free or cannot be read.
sw_radius_server_t server(int32_t index) {
    sw_radius_server_t s{};
    const int slot = slot_of(index);
    if (slot < 0 || cfg_get_radius_server(slot, &s) < 0) std::memset(&s, 0, sizeof s);
    return s;
}
sw_radius_counters_t counters(int32_t index) {
    sw_radius_counters_t c{};
    const int slot = slot_of(index);
    if (slot < 0 || status_radius_server(slot, &c) < 0) std::memset(&c, 0, sizeof c);
    return c;
}

int populate(void *(*create)(int32_t)) {
    for (int32_t index = 1; index <= SW_RADIUS_SERVERS; ++index)
        if (server(index).in_use) create(index);
    return 0;
}
int row_exists(int32_t index, void (*remove)(int32_t)) {
    if (server(index).in_use) return 1;
    remove(index);
    return 0;
}

// A setter of a server in use, by slot.
int server_write(int32_t index, int (*set)(int, int), int32_t value) {
    const int slot = slot_of(index);
    return slot < 0 ? -1 : set(slot, value);
}

// A key arrives as bytes; the platform takes text (no zero byte inside).
using KeyText = char[SW_RADIUS_KEY_SIZE];
bool key_text(const uint8_t *bytes, size_t len, KeyText &key) {
    if (len >= sizeof key || (len > 0 && std::memchr(bytes, '\0', len) != nullptr)) return false;
    if (len > 0) std::memcpy(key, bytes, len);
    key[len] = '\0';
    return true;
}
const uint8_t *hidden_key(size_t *len) {
    *len = 0;
    return reinterpret_cast<const uint8_t *>("");
}

}  // namespace

extern "C" {

// ---- defaults ---------------------------------------------------------------------------

int32_t get_radiusServerPortNumber(void) { return cfg_get_radius_port(); }
int set_radiusServerPortNumber(int32_t port) { return cfg_set_radius_port(port); }
int32_t get_radiusServerRetransmit(void) { return cfg_get_radius_retransmit(); }
int set_radiusServerRetransmit(int32_t count) { return cfg_set_radius_retransmit(count); }
int32_t get_radiusServerTimeout(void) { return cfg_get_radius_timeout(); }
int set_radiusServerTimeout(int32_t seconds) { return cfg_set_radius_timeout(seconds); }
const uint8_t *get_radiusServerKey(size_t *len) { return hidden_key(len); }
int set_radiusServerKey(const uint8_t *bytes, size_t len) {
    KeyText key;
    return key_text(bytes, len, key) ? cfg_set_radius_key(key) : -1;
}

// ---- radiusMultipleServerTable ----------------------------------------------------------

int init_index_radiusMultipleServerTable(void *(*create)(int32_t)) { return populate(create); }
int exists_entry_radiusMultipleServerTable(int32_t index) {
    return row_exists(index, radiusMultipleServerTable_removeEntry);
}

uint32_t get_radiusMultipleServerAddress(int32_t index) { return server(index).address; }
// Adds the server when the slot is free.
int set_radiusMultipleServerAddress(int32_t index, uint32_t address) {
    const int slot = slot_of(index);
    return slot < 0 ? -1 : cfg_set_radius_server_address(slot, address);
}
int32_t get_radiusMultipleServerPortNumber(int32_t index) { return int32_t(server(index).port); }
int set_radiusMultipleServerPortNumber(int32_t index, int32_t port) {
    return server_write(index, cfg_set_radius_server_port, port);
}
const uint8_t *get_radiusMultipleServerKey(int32_t, size_t *len) { return hidden_key(len); }
int set_radiusMultipleServerKey(int32_t index, const uint8_t *bytes, size_t len) {
    const int slot = slot_of(index);
    KeyText key;
    return slot >= 0 && key_text(bytes, len, key) ? cfg_set_radius_server_key(slot, key) : -1;
}
int32_t get_radiusMultipleServerRetransmit(int32_t index) { return int32_t(server(index).retransmit); }
int set_radiusMultipleServerRetransmit(int32_t index, int32_t count) {
    return server_write(index, cfg_set_radius_server_retransmit, count);
}
int32_t get_radiusMultipleServerTimeout(int32_t index) { return int32_t(server(index).timeout); }
int set_radiusMultipleServerTimeout(int32_t index, int32_t seconds) {
    return server_write(index, cfg_set_radius_server_timeout, seconds);
}
// valid(1) while the slot holds a server; invalid(2) removes it.  A free
// slot cannot be made valid: its address makes it.
int32_t get_radiusMultipleServerStatus(int32_t index) { return server(index).in_use ? kValid : kInvalid; }
int set_radiusMultipleServerStatus(int32_t index, int32_t value) {
    const int slot = slot_of(index);
    if (slot < 0) return -1;
    if (value == kInvalid) return cfg_del_radius_server(slot);
    return value == kValid && server(index).in_use ? 0 : -1;
}
// true(1) when the server answered the last request sent to it.
int32_t get_radiusMultipleServerReachable(int32_t index) { return counters(index).reachable ? 1 : 2; }

// ---- radiusAuthServerTable --------------------------------------------------------------

int init_index_radiusAuthServerTable(void *(*create)(int32_t)) { return populate(create); }
int exists_entry_radiusAuthServerTable(int32_t index) { return row_exists(index, radiusAuthServerTable_removeEntry); }

uint32_t get_radiusAuthServerAddress(int32_t index) { return server(index).address; }
int32_t get_radiusAuthClientServerPortNumber(int32_t index) { return int32_t(server(index).port); }
uint32_t get_radiusAuthClientRoundTripTime(int32_t index) { return counters(index).round_trip_cs; }
#define SA_RADIUS_COUNTER(name, field) \
    uint32_t get_##name(int32_t index) { return counters(index).field; }
SA_RADIUS_COUNTER(radiusAuthClientAccessRequests, access_requests)
SA_RADIUS_COUNTER(radiusAuthClientAccessRetransmissions, access_retransmissions)
SA_RADIUS_COUNTER(radiusAuthClientAccessAccepts, access_accepts)
SA_RADIUS_COUNTER(radiusAuthClientAccessRejects, access_rejects)
SA_RADIUS_COUNTER(radiusAuthClientAccessChallenges, access_challenges)
SA_RADIUS_COUNTER(radiusAuthClientMalformedAccessResponses, malformed_responses)
SA_RADIUS_COUNTER(radiusAuthClientBadAuthenticators, bad_authenticators)
SA_RADIUS_COUNTER(radiusAuthClientPendingRequests, pending_requests)
SA_RADIUS_COUNTER(radiusAuthClientTimeouts, timeouts)
SA_RADIUS_COUNTER(radiusAuthClientUnknownTypes, unknown_types)
SA_RADIUS_COUNTER(radiusAuthClientPacketsDropped, packets_dropped)
#undef SA_RADIUS_COUNTER

}  // extern "C"
