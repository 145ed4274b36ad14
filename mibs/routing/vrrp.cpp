// VRRP-MIB: the switch's virtual routers (vrrpOperTable), their virtual
// addresses (vrrpAssoIpAddrTable) and counters (vrrpRouterStatsTable), and
// the VRRP scalars.  Rows are (ifIndex, VRID) of a VLAN interface, ifIndex
// 1000 + VID; the tables are served on the row-store pattern and rebuild
// their rows at every request.
#include <cstring>

#include "agent/ifindex.hpp"
#include "mibs/routing/values.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace {

using snmpapi::routing::truth;
using snmpapi::routing::vlan_ifindex;

// The router of a row, or nothing when the interface is no VLAN's or the
// platform has no such router.
bool router(int32_t ifindex, int32_t vrid, sw_vrrp_router_t &r) {
    return ifindex_is_vlan(ifindex) && vrid >= 1 && vrid <= 255 &&
           cfg_vrrp_find(SW_FIND_EXACT, ifindex - 1000, uint32_t(vrid), &r) == 0;
}

// A column of the row's router; 0 (or nothing) when it has gone.
template <class Field>
uint32_t column(int32_t ifindex, int32_t vrid, Field field) {
    sw_vrrp_router_t r{};
    return router(ifindex, vrid, r) ? uint32_t(field(r)) : 0;
}

// Calls visit(router) for every router, in (VID, VRID) order.
template <class Visit>
void for_each_router(Visit visit) {
    sw_vrrp_router_t r{};
    for (int mode = SW_FIND_FROM; cfg_vrrp_find(mode, r.vid, r.vrid, &r) == 0; mode = SW_FIND_AFTER) visit(r);
}

bool has_address(const sw_vrrp_router_t &r, uint32_t addr) {
    for (uint32_t i = 0; i < r.addr_count && i < SW_VRRP_MAX_ADDRS; ++i)
        if (r.addrs[i] == addr) return true;
    return false;
}

sw_vrrp_globals_t globals() {
    sw_vrrp_globals_t g{};
    if (cfg_vrrp_get_globals(&g) != 0) g = sw_vrrp_globals_t{};
    return g;
}

constexpr int32_t kAuthNone = 1, kProtocolIp = 1, kActive = 1, kUp = 1, kDown = 2;

}  // namespace

extern "C" {

// ---- vrrpOperTable ---------------------------------------------------------------

int init_index_vrrpOperTable(void *(*create)(int32_t, int32_t)) {
    for_each_router([&](const sw_vrrp_router_t &r) { create(vlan_ifindex(r.vid), int32_t(r.vrid)); });
    return 0;
}

int exists_entry_vrrpOperTable(int32_t ifindex, int32_t vrid) {
    sw_vrrp_router_t r{};
    if (router(ifindex, vrid, r)) return 1;
    vrrpOperTable_removeEntry(ifindex, vrid);
    return 0;
}

// 00-00-5E-00-01-{VRID}: the virtual router's MAC address.
const uint8_t *get_vrrpOperVirtualMacAddr(int32_t, int32_t vrid, size_t *len) {
    static uint8_t mac[6];
    const uint8_t base[6] = {0x00, 0x00, 0x5e, 0x00, 0x01, uint8_t(vrid)};
    std::memcpy(mac, base, sizeof mac);
    *len = sizeof mac;
    return mac;
}
int32_t get_vrrpOperState(int32_t i, int32_t v) {
    return int32_t(column(i, v, [](const sw_vrrp_router_t &r) { return r.state; }));
}
int32_t get_vrrpOperAdminState(int32_t i, int32_t v) {
    return int32_t(column(i, v, [](const sw_vrrp_router_t &r) { return r.enabled ? kUp : kDown; }));
}
int32_t get_vrrpOperPriority(int32_t i, int32_t v) {
    return int32_t(column(i, v, [](const sw_vrrp_router_t &r) { return r.priority; }));
}
int32_t get_vrrpOperIpAddrCount(int32_t i, int32_t v) {
    return int32_t(column(i, v, [](const sw_vrrp_router_t &r) { return r.addr_count; }));
}
uint32_t get_vrrpOperMasterIpAddr(int32_t i, int32_t v) {
    return column(i, v, [](const sw_vrrp_router_t &r) { return r.master_addr; });
}
uint32_t get_vrrpOperPrimaryIpAddr(int32_t i, int32_t v) {
    return column(i, v, [](const sw_vrrp_router_t &r) { return r.primary_addr; });
}
int32_t get_vrrpOperAuthType(int32_t, int32_t) { return kAuthNone; }
// The key is never shown.
const uint8_t *get_vrrpOperAuthKey(int32_t, int32_t, size_t *len) {
    *len = 0;
    return reinterpret_cast<const uint8_t *>("");
}
int32_t get_vrrpOperAdvertisementInterval(int32_t i, int32_t v) {
    return int32_t(column(i, v, [](const sw_vrrp_router_t &r) { return r.adv_interval; }));
}
int32_t get_vrrpOperPreemptMode(int32_t i, int32_t v) {
    return int32_t(column(i, v, [](const sw_vrrp_router_t &r) { return truth(r.preempt); }));
}
uint32_t get_vrrpOperVirtualRouterUpTime(int32_t i, int32_t v) {
    return column(i, v, [](const sw_vrrp_router_t &r) { return r.up_since_cs; });
}
int32_t get_vrrpOperProtocol(int32_t, int32_t) { return kProtocolIp; }
int32_t get_vrrpOperRowStatus(int32_t, int32_t) { return kActive; }

// ---- vrrpAssoIpAddrTable -----------------------------------------------------------

int init_index_vrrpAssoIpAddrTable(void *(*create)(int32_t, int32_t, uint32_t)) {
    for_each_router([&](const sw_vrrp_router_t &r) {
        for (uint32_t k = 0; k < r.addr_count && k < SW_VRRP_MAX_ADDRS; ++k)
            create(vlan_ifindex(r.vid), int32_t(r.vrid), r.addrs[k]);
    });
    return 0;
}

int exists_entry_vrrpAssoIpAddrTable(int32_t ifindex, int32_t vrid, uint32_t addr) {
    sw_vrrp_router_t r{};
    if (router(ifindex, vrid, r) && has_address(r, addr)) return 1;
    vrrpAssoIpAddrTable_removeEntry(ifindex, vrid, addr);
    return 0;
}

int32_t get_vrrpAssoIpAddrRowStatus(int32_t, int32_t, uint32_t) { return kActive; }

// ---- vrrpRouterStatsTable ------------------------------------------------------------

int init_index_vrrpRouterStatsTable(void *(*create)(int32_t, int32_t)) { return init_index_vrrpOperTable(create); }

int exists_entry_vrrpRouterStatsTable(int32_t ifindex, int32_t vrid) {
    sw_vrrp_router_t r{};
    if (router(ifindex, vrid, r)) return 1;
    vrrpRouterStatsTable_removeEntry(ifindex, vrid);
    return 0;
}

#define SA_VRRP_COUNTER(name, counter)                                                               \
    uint32_t get_##name(int32_t i, int32_t v) {                                                      \
        return column(i, v, [](const sw_vrrp_router_t &r) { return r.counters[counter]; });          \
    }
SA_VRRP_COUNTER(vrrpStatsBecomeMaster, SW_VRRP_BECOME_MASTER)
SA_VRRP_COUNTER(vrrpStatsAdvertiseRcvd, SW_VRRP_ADVERTISE_RCVD)
SA_VRRP_COUNTER(vrrpStatsAdvertiseIntervalErrors, SW_VRRP_ADVERTISE_INTERVAL_ERRORS)
SA_VRRP_COUNTER(vrrpStatsAuthFailures, SW_VRRP_AUTH_FAILURES)
SA_VRRP_COUNTER(vrrpStatsIpTtlErrors, SW_VRRP_IP_TTL_ERRORS)
SA_VRRP_COUNTER(vrrpStatsPriorityZeroPktsRcvd, SW_VRRP_PRIORITY_ZERO_RCVD)
SA_VRRP_COUNTER(vrrpStatsPriorityZeroPktsSent, SW_VRRP_PRIORITY_ZERO_SENT)
SA_VRRP_COUNTER(vrrpStatsInvalidTypePktsRcvd, SW_VRRP_INVALID_TYPE_RCVD)
SA_VRRP_COUNTER(vrrpStatsAddressListErrors, SW_VRRP_ADDRESS_LIST_ERRORS)
SA_VRRP_COUNTER(vrrpStatsInvalidAuthType, SW_VRRP_INVALID_AUTH_TYPE)
SA_VRRP_COUNTER(vrrpStatsAuthTypeMismatch, SW_VRRP_AUTH_TYPE_MISMATCH)
SA_VRRP_COUNTER(vrrpStatsPacketLengthErrors, SW_VRRP_PACKET_LENGTH_ERRORS)
#undef SA_VRRP_COUNTER

// ---- scalars ---------------------------------------------------------------------------

int32_t get_vrrpNodeVersion(void) { return 2; }
// enabled(1) / disabled(2); other values reach the platform, which refuses them.
int32_t get_vrrpNotificationCntl(void) { return truth(globals().notifications); }
int set_vrrpNotificationCntl(int32_t value) { return cfg_vrrp_set_notifications(value == 2 ? 0 : value); }
uint32_t get_vrrpRouterChecksumErrors(void) { return globals().checksum_errors; }
uint32_t get_vrrpRouterVersionErrors(void) { return globals().version_errors; }
uint32_t get_vrrpRouterVrIdErrors(void) { return globals().vrid_errors; }

}  // extern "C"
