// Spanning tree: the BRIDGE-MIB dot1dStp scalars and dot1dStpPortTable, the
// private staPortTable and the switch-wide spanning-tree settings.  The
// switch runs one common tree (platform instance 1); times and priorities go
// through in the platform's own units.
#include <cstring>

#include "agent/ifindex.hpp"
#include "mibs/bridge/platform_value.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "swplatform/records_l2proto.hpp"
#include "tables/catalogue.hpp"

namespace {

constexpr int kInstance = SW_STP_INSTANCE;
constexpr size_t kBridgeIdSize = 8;

struct Port {
    int unit0, port0;
    explicit Port(int32_t ifindex) : unit0(ifindex_to_unit0(ifindex)), port0(ifindex_to_port0(ifindex)) {}
};

// 1 (enabled / true) for a non-zero platform flag, else 2.
int32_t truth(int flag) { return flag != 0 ? 1 : 2; }
// A written 2 (disabled / false) becomes 0; anything else goes on as it is.
int from_truth(int32_t value) { return value == 2 ? 0 : value; }

// The bridge state record; a failed read leaves it zeroed.
struct BridgeState {
    swp::stp_state::Record rec;
    bool ok = false;
    BridgeState() {
        uint8_t raw[swp::stp_state::kSize] = {};
        ok = cfg_get_stp_state(kInstance, raw) == 0;
        rec = swp::stp_state::decode(raw);
    }
};

// A port's state record, or nothing when the platform has none for it.
struct PortState {
    swp::stp_port_state::Record rec;
    bool ok = false;
    explicit PortState(int32_t i) {
        const Port p(i);
        uint8_t raw[swp::stp_port_state::kSize] = {};
        ok = cfg_get_stp_port_state(kInstance, p.unit0, p.port0, raw) == 0;
        rec = swp::stp_port_state::decode(raw);
    }
};

// Writes `id` into the caller's 8-octet area as priority, then MAC.
const uint8_t *bridge_id(uint8_t (&area)[kBridgeIdSize], const swp::BridgeId &id, size_t *len) {
    swp::store_bridge_id(area, id);
    *len = sizeof area;
    return area;
}

const uint8_t *no_value(uint8_t *area, size_t *len) {
    *len = 0;
    return area;
}

// Writes to a trunk row need the trunk to exist (the row 512 asks about
// trunk 511, as the interface texts number it).
bool trunk_ok(int32_t i) {
    if (i < 512 || i > 639) return true;
    return cfg_check_trunk(i == 512 ? 511 : i - 513) != 0;
}

// A BRIDGE-MIB port write: the trunk test, then the platform call.
int port_write(int32_t i, int value, int (*write)(int, int, int, int)) {
    if (!trunk_ok(i)) return -1;
    const Port p(i);
    return write(kInstance, p.unit0, p.port0, value);
}

// Platform port state code 0..3 -> disabled(1), blocking(2), learning(4),
// forwarding(5).
constexpr int32_t kPortStates[4] = {1, 2, 4, 5};

}  // namespace

extern "C" {

// ---- Scalars ----------------------------------------------------------------

int32_t get_dot1dStpProtocolSpecification(void) { return 1; }

int32_t get_dot1dStpPriority(void) { return snmpapi::value_or_zero(cfg_get_stp_prio(kInstance)); }
int set_dot1dStpPriority(int32_t value) { return cfg_set_stp_prio(kInstance, value); }

uint32_t get_dot1dStpTimeSinceTopologyChange(void) { return BridgeState().rec.time_since_change; }
uint32_t get_dot1dStpTopChanges(void) { return BridgeState().rec.change_count; }

const uint8_t *get_dot1dStpDesignatedRoot(size_t *len) {
    static uint8_t area[kBridgeIdSize];
    const BridgeState s;
    return s.ok ? bridge_id(area, s.rec.root, len) : no_value(area, len);
}

int32_t get_dot1dStpRootCost(void) { return int32_t(BridgeState().rec.root_cost); }
int32_t get_dot1dStpRootPort(void) { return BridgeState().rec.root_port; }
int32_t get_dot1dStpMaxAge(void) { return int32_t(BridgeState().rec.max_age); }
int32_t get_dot1dStpHelloTime(void) { return int32_t(BridgeState().rec.hello_time); }
int32_t get_dot1dStpHoldTime(void) { return 0; }
int32_t get_dot1dStpForwardDelay(void) { return int32_t(BridgeState().rec.forward_delay); }

int32_t get_dot1dStpBridgeMaxAge(void) { return snmpapi::value_or_zero(cfg_get_stp_maxage(kInstance)); }
int set_dot1dStpBridgeMaxAge(int32_t value) { return cfg_set_stp_maxage(kInstance, value); }
int32_t get_dot1dStpBridgeHelloTime(void) { return snmpapi::value_or_zero(cfg_get_stp_hello(kInstance)); }
int set_dot1dStpBridgeHelloTime(int32_t value) { return cfg_set_stp_hello(kInstance, value); }
int32_t get_dot1dStpBridgeForwardDelay(void) { return snmpapi::value_or_zero(cfg_get_stp_ftime(kInstance)); }
int set_dot1dStpBridgeForwardDelay(int32_t value) { return cfg_set_stp_ftime(kInstance, value); }

int32_t get_staSystemStatus(void) { return truth(cfg_get_stp_enabled()); }
int set_staSystemStatus(int32_t value) { return cfg_set_stp_domain_enabled(kInstance, from_truth(value)); }

// Force mode 0 (the normal, rapid protocol) is shown as 1; 1 writes it back.
int32_t get_staProtocolType(void) {
    const int mode = cfg_get_stp_forcemode();
    return mode == 0 ? 1 : mode;
}
int set_staProtocolType(int32_t value) { return cfg_set_stp_forcemode(value == 1 ? 0 : value); }

// ---- dot1dStpPortTable ------------------------------------------------------

int init_index_dot1dStpPortTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_dot1dStpPortTable(int32_t i) { return ifindex_row_exists(i, dot1dStpPortTable_removeEntry); }

int32_t get_dot1dStpPort(int32_t i) { return i; }

int32_t get_dot1dStpPortPriority(int32_t i) {
    const Port p(i);
    return snmpapi::value_or_zero(cfg_get_stp_port_prio(kInstance, p.unit0, p.port0));
}
int set_dot1dStpPortPriority(int32_t i, int32_t value) { return port_write(i, value, cfg_set_stp_port_prio); }

int32_t get_dot1dStpPortState(int32_t i) {
    const PortState s(i);
    return s.ok && s.rec.state < 4 ? kPortStates[s.rec.state] : 0;
}

int32_t get_dot1dStpPortEnable(int32_t i) {
    const Port p(i);
    return truth(cfg_get_stp_port_enabled(kInstance, p.unit0, p.port0));
}
int set_dot1dStpPortEnable(int32_t i, int32_t value) {
    return port_write(i, from_truth(value), cfg_set_stp_port_enabled);
}

int32_t get_dot1dStpPortPathCost(int32_t i) {
    const Port p(i);
    return snmpapi::value_or_zero(cfg_get_stp_port_cost(kInstance, p.unit0, p.port0));
}
int set_dot1dStpPortPathCost(int32_t i, int32_t value) { return port_write(i, value, cfg_set_stp_port_cost); }

const uint8_t *get_dot1dStpPortDesignatedRoot(int32_t i, size_t *len) {
    static uint8_t area[kBridgeIdSize];
    const PortState s(i);
    return s.ok ? bridge_id(area, s.rec.designated_root, len) : no_value(area, len);
}

int32_t get_dot1dStpPortDesignatedCost(int32_t i) {
    const PortState s(i);
    return s.ok ? int32_t(s.rec.designated_cost) : -1;
}

const uint8_t *get_dot1dStpPortDesignatedBridge(int32_t i, size_t *len) {
    static uint8_t area[kBridgeIdSize];
    const PortState s(i);
    return s.ok ? bridge_id(area, s.rec.designated_bridge, len) : no_value(area, len);
}

const uint8_t *get_dot1dStpPortDesignatedPort(int32_t i, size_t *len) {
    static uint8_t area[sizeof swp::stp_port_state::Record{}.designated_port];
    const PortState s(i);
    if (!s.ok) return no_value(area, len);
    std::memcpy(area, s.rec.designated_port, sizeof area);
    *len = sizeof area;
    return area;
}

uint32_t get_dot1dStpPortForwardTransitions(int32_t) { return 0; }

// ---- staPortTable -------------------------------------------------------------

int init_index_staPortTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_staPortTable(int32_t i) { return ifindex_row_exists(i, staPortTable_removeEntry); }

int32_t get_staPortSystemStatus(int32_t i) {
    const Port p(i);
    const int on = cfg_get_stp_port_enabled(kInstance, p.unit0, p.port0);
    return on == 0 ? 2 : on;
}
int set_staPortSystemStatus(int32_t i, int32_t value) {
    const Port p(i);
    return cfg_set_stp_port_enabled(kInstance, p.unit0, p.port0, from_truth(value));
}

int32_t get_staPortLongPathCost(int32_t i) {
    const PortState s(i);
    return s.ok ? int32_t(s.rec.path_cost) : -1;
}
int set_staPortLongPathCost(int32_t i, int32_t value) {
    const Port p(i);
    return cfg_set_stp_port_cost(kInstance, p.unit0, p.port0, value);
}

int32_t get_staPortAdminEdgePort(int32_t i) {
    const Port p(i);
    return truth(cfg_get_stp_port_edge(p.unit0, p.port0));
}
int set_staPortAdminEdgePort(int32_t i, int32_t value) {
    const Port p(i);
    return cfg_set_stp_port_edge(p.unit0, p.port0, from_truth(value));
}

int32_t get_staPortOperEdgePort(int32_t i) {
    const PortState s(i);
    return s.ok ? truth(s.rec.oper_edge) : 0;
}

int32_t get_staPortAdminPointToPoint(int32_t i) {
    const Port p(i);
    return snmpapi::value_or_zero(cfg_get_stp_port_linktype(p.unit0, p.port0));
}
int set_staPortAdminPointToPoint(int32_t i, int32_t value) {
    const Port p(i);
    return cfg_set_stp_port_linktype(p.unit0, p.port0, value);
}

// The flag is shown whether or not the record could be read.
int32_t get_staPortOperPointToPoint(int32_t i) { return truth(PortState(i).rec.oper_point_to_point); }

}  // extern "C"
