// Link aggregation: the private lacpPortTable and the IEEE 802.3ad tables.
// Every trunk in use is an aggregator, indexed by its interface index; every
// port of a present unit has a port entry that shows its LACP actor and
// partner.  The switch itself is the actor system: its MAC address and the
// LACP system priority.
#include <cstring>

#include "agent/ifindex.hpp"
#include "agent/port_list.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "tables/catalogue.hpp"

namespace {

namespace pl = snmpapi::port_list;

enum Truth : int32_t { kTrue = 1, kFalse = 2 };

// The LACP view of the port an index names; zeroed when the platform has none.
sw_lacp_port_t lacp_of(int32_t i) {
    sw_lacp_port_t r{};
    if (cfg_get_lacp_port(ifindex_to_unit0(i), ifindex_to_port0(i), &r) < 0) r = sw_lacp_port_t{};
    return r;
}

int32_t system_priority() {
    const int p = cfg_get_lacp_system_priority();
    return p >= 0 ? p : 0;
}

const uint8_t *mac_result(uint8_t (&buf)[6], const uint8_t *mac, size_t *len) {
    std::memcpy(buf, mac, sizeof buf);
    *len = sizeof buf;
    return buf;
}

const uint8_t *switch_mac(size_t *len) {
    static uint8_t mac[6];
    std::memset(mac, 0, sizeof mac);
    cfg_get_unit_mac(0, mac);
    *len = sizeof mac;
    return mac;
}

// LacpState is a BITS value: LACPDU bit i (mask 1 << i) is BITS bit i, the
// bit 0x80 >> i of a one-octet string.
uint8_t state_bits(uint32_t lacpdu_state) {
    uint8_t bits = 0;
    for (int i = 0; i < 8; ++i)
        if (lacpdu_state & (1u << i)) bits |= uint8_t(0x80u >> i);
    return bits;
}

const uint8_t *state_result(uint8_t &buf, uint32_t lacpdu_state, size_t *len) {
    buf = state_bits(lacpdu_state);
    *len = 1;
    return &buf;
}

// What the actor is configured to send: activity while LACP runs, and
// aggregatable always.
uint32_t actor_admin_state(const sw_lacp_port_t &l) {
    return SW_LACP_AGGREGATION | (l.enabled ? SW_LACP_ACTIVITY : 0u);
}

// ---- aggregators -------------------------------------------------------------

// The aggregator's member that speaks for it: the first that hears a
// partner, else the first member; zeroed for a trunk without members.
sw_lacp_port_t lead_member(int32_t agg) {
    const int trunk0 = ifindex_to_trunk0(agg);
    sw_lacp_port_t lead{};
    bool found = false;
    ifindex_for_each_port([&](int unit0, int port0) {
        if (cfg_check_port_tid(unit0, port0, trunk0) <= 0) return;
        sw_lacp_port_t l{};
        if (cfg_get_lacp_port(unit0, port0, &l) < 0) return;
        if (!found || (l.partner_present && !lead.partner_present)) lead = l;
        found = true;
    });
    return lead;
}

// The aggregator a port belongs to (its trunk's interface index), or 0.
int32_t aggregator_of(int32_t i) {
    const int trunk0 = cfg_get_port_tid(ifindex_to_unit0(i), ifindex_to_port0(i));
    return trunk0 >= 0 ? trunk_to_ifindex(trunk0) : 0;
}

// The receive machine of a port: current(1) hearing a partner, defaulted(3)
// running LACP with nobody answering, lacpDisabled(5), portDisabled(6)
// while the link is down.
enum RxState : int32_t { kCurrent = 1, kDefaulted = 3, kLacpDisabled = 5, kPortDisabled = 6 };
RxState port_phase(int32_t i) {
    sw_port_info_t info{};
    if (bcmd_get_port_info(ifindex_to_unit0(i), ifindex_to_port0(i), &info) < 0 || info.link == 0) return kPortDisabled;
    const sw_lacp_port_t l = lacp_of(i);
    if (!l.enabled) return kLacpDisabled;
    return l.partner_present ? kCurrent : kDefaulted;
}

}  // namespace

extern "C" {

// ---- lacpPortTable ------------------------------------------------------------

int init_index_lacpPortTable(void *(*create)(int32_t)) { return ifindex_populate(create, false); }
int exists_entry_lacpPortTable(int32_t i) { return ifindex_row_exists(i, lacpPortTable_removeEntry); }

int32_t get_lacpPortStatus(int32_t i) { return lacp_of(i).enabled ? 1 : 2; }
int set_lacpPortStatus(int32_t i, int32_t value) {
    if (value != 1 && value != 2) return -1;
    return cfg_set_lacp_port_enable(ifindex_to_unit0(i), ifindex_to_port0(i), value == 1 ? 1 : 0);
}

// ---- dot3adAggTable -----------------------------------------------------------

int init_index_dot3adAggTable(void *(*create)(int32_t)) {
    for (int trunk0 = 0; trunk0 < SW_MAX_TRUNKS; ++trunk0)
        if (cfg_check_trunk(trunk0) > 0 && cfg_is_trunk_empty(trunk0) == 0) create(trunk_to_ifindex(trunk0));
    return 0;
}
int exists_entry_dot3adAggTable(int32_t agg) { return ifindex_row_exists(agg, dot3adAggTable_removeEntry); }

const uint8_t *get_dot3adAggMACAddress(int32_t agg, size_t *len) {
    static uint8_t mac[6];
    std::memset(mac, 0, sizeof mac);
    *len = cfg_get_port_mac(ifindex_to_unit0(agg), ifindex_to_port0(agg), mac) < 0 ? 0 : sizeof mac;
    return mac;
}
int32_t get_dot3adAggActorSystemPriority(int32_t) { return system_priority(); }
int set_dot3adAggActorSystemPriority(int32_t, int32_t value) { return cfg_set_lacp_system_priority(value); }
const uint8_t *get_dot3adAggActorSystemID(int32_t, size_t *len) { return switch_mac(len); }
int32_t get_dot3adAggAggregateOrIndividual(int32_t) { return kTrue; }
int32_t get_dot3adAggActorAdminKey(int32_t agg) { return int32_t(lead_member(agg).actor_key); }
int32_t get_dot3adAggActorOperKey(int32_t agg) { return int32_t(lead_member(agg).actor_key); }
const uint8_t *get_dot3adAggPartnerSystemID(int32_t agg, size_t *len) {
    static uint8_t mac[6];
    return mac_result(mac, lead_member(agg).partner_system, len);
}
int32_t get_dot3adAggPartnerSystemPriority(int32_t agg) { return int32_t(lead_member(agg).partner_system_priority); }
int32_t get_dot3adAggPartnerOperKey(int32_t agg) { return int32_t(lead_member(agg).partner_key); }
// Frames are handed on as they arrive: no collector delay.
int32_t get_dot3adAggCollectorMaxDelay(int32_t) { return 0; }

// ---- dot3adAggPortListTable ---------------------------------------------------

// The ports aggregated with the row's port: its trunk's members, or the port
// alone when it is in no trunk.
const uint8_t *get_dot3adAggPortListPorts(int32_t i, size_t *len) {
    static uint8_t area[pl::kAreaSize];
    const int unit0 = ifindex_to_unit0(i), port0 = ifindex_to_port0(i);
    const int trunk0 = cfg_get_port_tid(unit0, port0);
    *len = 0;
    pl::read(area, sizeof area, len, [&](int u, int p) {
        return trunk0 >= 0 ? cfg_check_port_tid(u, p, trunk0) > 0 : (u == unit0 && p == port0);
    });
    return area;
}

int init_index_dot3adAggPortListTable(void *(*create)(int32_t)) { return ifindex_populate(create, false); }
int exists_entry_dot3adAggPortListTable(int32_t i) { return ifindex_row_exists(i, dot3adAggPortListTable_removeEntry); }

// ---- dot3adAggPortTable -------------------------------------------------------

int init_index_dot3adAggPortTable(void *(*create)(int32_t)) { return ifindex_populate(create, false); }
int exists_entry_dot3adAggPortTable(int32_t i) { return ifindex_row_exists(i, dot3adAggPortTable_removeEntry); }

int32_t get_dot3adAggPortActorSystemPriority(int32_t) { return system_priority(); }
const uint8_t *get_dot3adAggPortActorSystemID(int32_t, size_t *len) { return switch_mac(len); }
int32_t get_dot3adAggPortActorAdminKey(int32_t i) { return int32_t(lacp_of(i).actor_key); }
int32_t get_dot3adAggPortActorOperKey(int32_t i) { return int32_t(lacp_of(i).actor_key); }
// The partner values used while no partner is heard: none configured.
int32_t get_dot3adAggPortPartnerAdminSystemPriority(int32_t) { return 0; }
int32_t get_dot3adAggPortPartnerOperSystemPriority(int32_t i) { return int32_t(lacp_of(i).partner_system_priority); }
const uint8_t *get_dot3adAggPortPartnerAdminSystemID(int32_t, size_t *len) {
    static const uint8_t none[6] = {};
    *len = sizeof none;
    return none;
}
const uint8_t *get_dot3adAggPortPartnerOperSystemID(int32_t i, size_t *len) {
    static uint8_t mac[6];
    return mac_result(mac, lacp_of(i).partner_system, len);
}
int32_t get_dot3adAggPortPartnerAdminKey(int32_t) { return 0; }
int32_t get_dot3adAggPortPartnerOperKey(int32_t i) { return int32_t(lacp_of(i).partner_key); }
int32_t get_dot3adAggPortSelectedAggID(int32_t i) { return aggregator_of(i); }
// Attached once the port is in sync with its aggregate.
int32_t get_dot3adAggPortAttachedAggID(int32_t i) {
    return (lacp_of(i).actor_state & SW_LACP_SYNCHRONIZATION) ? aggregator_of(i) : 0;
}
int32_t get_dot3adAggPortActorPort(int32_t i) { return i; }
int32_t get_dot3adAggPortActorPortPriority(int32_t i) { return int32_t(lacp_of(i).actor_port_priority); }
int set_dot3adAggPortActorPortPriority(int32_t i, int32_t value) {
    return cfg_set_lacp_port_priority(ifindex_to_unit0(i), ifindex_to_port0(i), value);
}
int32_t get_dot3adAggPortPartnerAdminPort(int32_t) { return 0; }
int32_t get_dot3adAggPortPartnerOperPort(int32_t i) { return int32_t(lacp_of(i).partner_port); }
int32_t get_dot3adAggPortPartnerAdminPortPriority(int32_t) { return 0; }
int32_t get_dot3adAggPortPartnerOperPortPriority(int32_t i) { return int32_t(lacp_of(i).partner_port_priority); }
const uint8_t *get_dot3adAggPortActorAdminState(int32_t i, size_t *len) {
    static uint8_t bits;
    return state_result(bits, actor_admin_state(lacp_of(i)), len);
}
const uint8_t *get_dot3adAggPortActorOperState(int32_t i, size_t *len) {
    static uint8_t bits;
    return state_result(bits, lacp_of(i).actor_state, len);
}
const uint8_t *get_dot3adAggPortPartnerAdminState(int32_t, size_t *len) {
    static uint8_t bits;
    return state_result(bits, 0, len);
}
const uint8_t *get_dot3adAggPortPartnerOperState(int32_t i, size_t *len) {
    static uint8_t bits;
    return state_result(bits, lacp_of(i).partner_state, len);
}
int32_t get_dot3adAggPortAggregateOrIndividual(int32_t i) {
    const sw_lacp_port_t l = lacp_of(i);
    return (l.actor_state & SW_LACP_AGGREGATION) && (!l.partner_present || (l.partner_state & SW_LACP_AGGREGATION))
               ? kTrue
               : kFalse;
}

// ---- dot3adAggPortStatsTable --------------------------------------------------

int init_index_dot3adAggPortStatsTable(void *(*create)(int32_t)) { return ifindex_populate(create, false); }
int exists_entry_dot3adAggPortStatsTable(int32_t i) {
    return ifindex_row_exists(i, dot3adAggPortStatsTable_removeEntry);
}

uint32_t get_dot3adAggPortStatsLACPDUsRx(int32_t i) { return uint32_t(lacp_of(i).counters[SW_LACP_RX_LACPDU]); }
uint32_t get_dot3adAggPortStatsMarkerPDUsRx(int32_t i) { return uint32_t(lacp_of(i).counters[SW_LACP_RX_MARKER]); }
uint32_t get_dot3adAggPortStatsMarkerResponsePDUsRx(int32_t i) {
    return uint32_t(lacp_of(i).counters[SW_LACP_RX_MARKER_RESPONSE]);
}
uint32_t get_dot3adAggPortStatsUnknownRx(int32_t i) { return uint32_t(lacp_of(i).counters[SW_LACP_RX_UNKNOWN]); }
uint32_t get_dot3adAggPortStatsIllegalRx(int32_t i) { return uint32_t(lacp_of(i).counters[SW_LACP_RX_ILLEGAL]); }
uint32_t get_dot3adAggPortStatsLACPDUsTx(int32_t i) { return uint32_t(lacp_of(i).counters[SW_LACP_TX_LACPDU]); }
uint32_t get_dot3adAggPortStatsMarkerPDUsTx(int32_t i) { return uint32_t(lacp_of(i).counters[SW_LACP_TX_MARKER]); }
uint32_t get_dot3adAggPortStatsMarkerResponsePDUsTx(int32_t i) {
    return uint32_t(lacp_of(i).counters[SW_LACP_TX_MARKER_RESPONSE]);
}

// ---- dot3adAggPortDebugTable -------------------------------------------------

int init_index_dot3adAggPortDebugTable(void *(*create)(int32_t)) { return ifindex_populate(create, false); }
int exists_entry_dot3adAggPortDebugTable(int32_t i) {
    return ifindex_row_exists(i, dot3adAggPortDebugTable_removeEntry);
}

int32_t get_dot3adAggPortDebugRxState(int32_t i) { return int32_t(port_phase(i)); }
uint32_t get_dot3adAggPortDebugLastRxTime(int32_t i) { return lacp_of(i).last_rx_cs; }

// detached(1) outside an aggregate, waiting(2) selected but not yet in
// sync, collecting_distributing(6) forwarding.
int32_t get_dot3adAggPortDebugMuxState(int32_t i) {
    if (lacp_of(i).actor_state & SW_LACP_DISTRIBUTING) return 6;
    return aggregator_of(i) != 0 ? 2 : 1;
}
// Why the mux is where it is: its own state when the port is in an
// aggregate, else what keeps it out (the receive machine's state).
const uint8_t *get_dot3adAggPortDebugMuxReason(int32_t i, size_t *len) {
    const char *text = "";
    switch (get_dot3adAggPortDebugMuxState(i)) {
    case 6: text = "Collecting and distributing"; break;
    case 2: text = "Selected, waiting for synchronization"; break;
    default:
        switch (port_phase(i)) {
        case kCurrent: text = "Partner heard, not aggregating"; break;
        case kDefaulted: text = "No partner heard"; break;
        case kLacpDisabled: text = "LACP is off"; break;
        case kPortDisabled: text = "Link is down"; break;
        }
    }
    *len = std::strlen(text);
    return reinterpret_cast<const uint8_t *>(text);
}

// noChurn(1), churn(2) while LACP runs without a partner, churnMonitor(3)
// otherwise.
int32_t get_dot3adAggPortDebugActorChurnState(int32_t i) {
    const sw_lacp_port_t l = lacp_of(i);
    if (l.actor_state & SW_LACP_SYNCHRONIZATION) return 1;
    return l.enabled && !l.partner_present ? 2 : 3;
}
int32_t get_dot3adAggPortDebugPartnerChurnState(int32_t i) {
    const sw_lacp_port_t l = lacp_of(i);
    if (l.partner_present && (l.partner_state & SW_LACP_SYNCHRONIZATION)) return 1;
    return l.enabled && !l.partner_present ? 2 : 3;
}
uint32_t get_dot3adAggPortDebugActorChurnCount(int32_t i) { return lacp_of(i).actor_churns; }
uint32_t get_dot3adAggPortDebugPartnerChurnCount(int32_t i) { return lacp_of(i).partner_churns; }
uint32_t get_dot3adAggPortDebugActorSyncTransitionCount(int32_t i) { return lacp_of(i).actor_sync_transitions; }
uint32_t get_dot3adAggPortDebugPartnerSyncTransitionCount(int32_t i) { return lacp_of(i).partner_sync_transitions; }
uint32_t get_dot3adAggPortDebugActorChangeCount(int32_t i) { return lacp_of(i).actor_changes; }
uint32_t get_dot3adAggPortDebugPartnerChangeCount(int32_t i) { return lacp_of(i).partner_changes; }

// ---- Scalars ----------------------------------------------------------------

uint32_t get_dot3adTablesLastChanged(void) {
    uint32_t cs = 0;
    cfg_get_lacp_last_change(&cs);
    return cs;
}

}  // extern "C"
