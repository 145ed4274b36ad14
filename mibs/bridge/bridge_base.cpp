// BRIDGE-MIB base and transparent-bridging objects: the bridge port tables,
// their frame counters and the bridge-wide scalars.  A bridge port number is
// the interface index of the port or trunk.
#include <cstring>

#include "agent/ifindex.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/platform.h"
#include "swplatform/statistics.hpp"
#include "tables/catalogue.hpp"

namespace {

namespace stat = swp::stat;  // the platform's statistic numbers

uint32_t bridge_counter(int32_t i, int statistic) { return ifindex_stat_low32(i, statistic); }

const uint8_t *no_octets(size_t *len) {
    static const uint8_t none[1] = {0};
    *len = 0;
    return none;
}

}  // namespace

extern "C" {

// ---- dot1dBasePortTable -----------------------------------------------------

int init_index_dot1dBasePortTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_dot1dBasePortTable(int32_t i) { return ifindex_row_exists(i, dot1dBasePortTable_removeEntry); }

int32_t get_dot1dBasePort(int32_t i) { return i; }
int32_t get_dot1dBasePortIfIndex(int32_t i) { return i; }
// No circuit: the null identifier 0.0.
const uint32_t *get_dot1dBasePortCircuit(int32_t, size_t *len) {
    static const uint32_t zero_dot_zero[2] = {0, 0};
    *len = sizeof zero_dot_zero;
    return zero_dot_zero;
}
uint32_t get_dot1dBasePortDelayExceededDiscards(int32_t i) { return bridge_counter(i, stat::kDelayExceededDiscards); }
uint32_t get_dot1dBasePortMtuExceededDiscards(int32_t i) { return bridge_counter(i, stat::kMtuExceededDiscards); }

// ---- dot1dTpPortTable -------------------------------------------------------

int init_index_dot1dTpPortTable(void *(*create)(int32_t)) { return ifindex_populate(create, true); }
int exists_entry_dot1dTpPortTable(int32_t i) { return ifindex_row_exists(i, dot1dTpPortTable_removeEntry); }

int32_t get_dot1dTpPort(int32_t i) { return i; }
// Largest frame: the port's MTU plus the 22 bytes of Ethernet header, VLAN
// tag and FCS.
int32_t get_dot1dTpPortMaxInfo(int32_t i) {
    const int mtu = cfg_get_port_mtu(ifindex_to_unit0(i), ifindex_to_port0(i));
    return mtu >= 0 ? mtu + 22 : 0;
}
uint32_t get_dot1dTpPortInFrames(int32_t i) { return bridge_counter(i, stat::kInFrames); }
uint32_t get_dot1dTpPortOutFrames(int32_t i) { return bridge_counter(i, stat::kOutFrames); }
uint32_t get_dot1dTpPortInDiscards(int32_t i) { return bridge_counter(i, stat::kBridgeInDiscards); }

// ---- Scalars ----------------------------------------------------------------

const uint8_t *get_dot1dBaseBridgeAddress(size_t *len) {
    static uint8_t mac[6];
    std::memset(mac, 0, sizeof mac);
    cfg_get_unit_mac(0, mac);
    *len = sizeof mac;
    return mac;
}

// User ports of the present units; trunks are not counted.
int32_t get_dot1dBaseNumPorts(void) {
    int32_t n = 0;
    for (int unit0 = 0; unit0 < SW_MAX_UNITS; ++unit0) {
        if (!ifindex_unit_present(unit0)) continue;
        const int ports = unit_port_count(unit0);
        if (ports > 0) n += ports;
    }
    return n;
}

int32_t get_dot1dBaseType(void) { return 2; }  // transparent-only

// dot1dTrafficClasses, dot1qStaticEntryIndividualPort, dot1qIVLCapable and
// dot1qConfigurablePvidTagging (bits 1, 2, 3, 6).
const uint8_t *get_dot1dDeviceCapabilities(size_t *len) {
    static const uint8_t caps[4] = {0x72, 0x00, 0x00, 0x00};
    *len = sizeof caps;
    return caps;
}

int32_t get_dot1dTpAgingTime(void) {
    const int seconds = cfg_get_mac_ageing();
    return seconds >= 0 ? seconds : 0;
}
int set_dot1dTpAgingTime(int32_t seconds) { return cfg_set_mac_ageing(seconds); }

uint32_t get_dot1dTpLearnedEntryDiscards(void) { return 0; }

// ---- Tables the switch does not keep: registered, never populated ----------

int init_index_dot1dStaticTable(void *(*)(const uint8_t *, size_t, int32_t)) { return 0; }
int exists_entry_dot1dStaticTable(const uint8_t *, size_t, int32_t) { return 1; }
const uint8_t *get_dot1dStaticAddress(const uint8_t *, size_t, int32_t, size_t *len) { return no_octets(len); }
int set_dot1dStaticAddress(const uint8_t *, size_t, int32_t, const uint8_t *, size_t) { return 0; }
int32_t get_dot1dStaticReceivePort(const uint8_t *, size_t, int32_t) { return 0; }
int set_dot1dStaticReceivePort(const uint8_t *, size_t, int32_t, int32_t) { return 0; }
const uint8_t *get_dot1dStaticAllowedToGoTo(const uint8_t *, size_t, int32_t, size_t *len) { return no_octets(len); }
int set_dot1dStaticAllowedToGoTo(const uint8_t *, size_t, int32_t, const uint8_t *, size_t) { return 0; }
int32_t get_dot1dStaticStatus(const uint8_t *, size_t, int32_t) { return 0; }
int set_dot1dStaticStatus(const uint8_t *, size_t, int32_t, int32_t) { return 0; }

int init_index_dot1dTpHCPortTable(void *(*)(int32_t)) { return 0; }
int exists_entry_dot1dTpHCPortTable(int32_t) { return 1; }
uint64_t get_dot1dTpHCPortInFrames(int32_t) { return 0; }
uint64_t get_dot1dTpHCPortOutFrames(int32_t) { return 0; }
uint64_t get_dot1dTpHCPortInDiscards(int32_t) { return 0; }

int init_index_dot1dTpPortOverflowTable(void *(*)(int32_t)) { return 0; }
int exists_entry_dot1dTpPortOverflowTable(int32_t) { return 1; }
uint32_t get_dot1dTpPortInOverflowFrames(int32_t) { return 0; }
uint32_t get_dot1dTpPortOutOverflowFrames(int32_t) { return 0; }
uint32_t get_dot1dTpPortInOverflowDiscards(int32_t) { return 0; }

int init_index_dot1qTpGroupTable(void *(*)(uint32_t, const uint8_t *, size_t)) { return 0; }
int exists_entry_dot1qTpGroupTable(uint32_t, const uint8_t *, size_t) { return 1; }
const uint8_t *get_dot1qTpGroupEgressPorts(uint32_t, const uint8_t *, size_t, size_t *len) { return no_octets(len); }
const uint8_t *get_dot1qTpGroupLearnt(uint32_t, const uint8_t *, size_t, size_t *len) { return no_octets(len); }

}  // extern "C"
