// The OSPF-MIB and RIPv2-MIB tables of the switch's routing protocols.
//
// Most are the platform's records as they are, one platform find per row.
// The stub area and interface metric tables have a row for type of service
// 0 of each stub (or NSSA) area and of each interface.  The three link-state
// tables read the platform's LSA database by scope: the areas' LSAs, the
// AS-external ones, and the link-local ones of each interface.
#include <array>

#include "mibs/routing/values.hpp"
#include "swplatform/records.hpp"

namespace snmpapi::routing {
namespace {

constexpr int32_t kAuthNone = 0, kNotHelping = 1, kExitNone = 1, kFalse = 2;

// ---- finders -----------------------------------------------------------------

template <std::size_t N>
bool give_key(uint32_t *key, const std::array<uint32_t, N> &words) {
    std::copy(words.begin(), words.end(), key);
    return true;
}

bool find_area(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return cfg_ospf_area_find(mode, k[0], &row.area) == 0 && give_key(key, std::array{row.area.area_id});
}

// A table with a row for TOS 0 of each record a `next` find gives, as long
// as `has_row` says so.  (k..., tos): the TOS is the last key word.
template <class Next, class HasRow, class KeyOf>
bool find_tos_zero(int mode, const uint32_t *k, std::size_t words, RowData &row, uint32_t *key, Next next,
                   HasRow has_row, KeyOf key_of) {
    const uint32_t tos = k[words - 1];
    int m = mode;
    if (mode == SW_FIND_EXACT && tos != 0) return false;
    if (mode != SW_FIND_EXACT) m = mode == SW_FIND_FROM && tos == 0 ? SW_FIND_FROM : SW_FIND_AFTER;
    std::array<uint32_t, kMaxKeyWords> at{};
    std::copy(k, k + words - 1, at.begin());
    while (next(m, at.data(), row)) {
        const auto found = key_of(row);
        if (has_row(row)) {
            std::copy(found.begin(), found.end(), key);
            key[words - 1] = 0;
            return true;
        }
        if (mode == SW_FIND_EXACT) return false;
        std::copy(found.begin(), found.end(), at.begin());
        m = SW_FIND_AFTER;
    }
    return false;
}

bool find_stub_area(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return find_tos_zero(
        mode, k, 2, row, key, [](int m, const uint32_t *at, RowData &r) { return cfg_ospf_area_find(m, at[0], &r.area) == 0; },
        [](const RowData &r) { return r.area.import_as_extern != 1; },
        [](const RowData &r) { return std::array{r.area.area_id}; });
}

bool find_if(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return cfg_ospf_if_find(mode, k[0], k[1], &row.oif) == 0 && give_key(key, std::array{row.oif.addr, row.oif.addressless});
}

bool find_if_metric(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return find_tos_zero(
        mode, k, 3, row, key, [](int m, const uint32_t *at, RowData &r) { return cfg_ospf_if_find(m, at[0], at[1], &r.oif) == 0; },
        [](const RowData &) { return true; }, [](const RowData &r) { return std::array{r.oif.addr, r.oif.addressless}; });
}

bool find_virt_if(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return cfg_ospf_virt_if_find(mode, k[0], k[1], &row.virt_if) == 0 &&
           give_key(key, std::array{row.virt_if.area_id, row.virt_if.neighbor});
}

bool find_nbr(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return cfg_ospf_nbr_find(mode, k[0], k[1], &row.nbr) == 0 && give_key(key, std::array{row.nbr.addr, row.nbr.addressless});
}

bool find_virt_nbr(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return cfg_ospf_virt_nbr_find(mode, k[0], k[1], &row.virt_nbr) == 0 &&
           give_key(key, std::array{row.virt_nbr.area_id, row.virt_nbr.router_id});
}

// Area LSAs: (area, type, lsid, router).
bool find_area_lsa(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    const sw_ospf_lsa_t &l = row.lsa;
    return cfg_ospf_lsa_find(mode, SW_OSPF_SCOPE_AREA, k[0], 0, k[1], k[2], k[3], &row.lsa) == 0 &&
           give_key(key, std::array{l.where, l.type, l.lsid, l.router_id});
}
// AS-external LSAs: (type, lsid, router).
bool find_ext_lsa(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    const sw_ospf_lsa_t &l = row.lsa;
    return cfg_ospf_lsa_find(mode, SW_OSPF_SCOPE_AS, 0, 0, k[0], k[1], k[2], &row.lsa) == 0 &&
           give_key(key, std::array{l.type, l.lsid, l.router_id});
}
// Link-local LSAs: (interface address, addressless index, type, lsid, router).
bool find_local_lsa(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    const sw_ospf_lsa_t &l = row.lsa;
    return cfg_ospf_lsa_find(mode, SW_OSPF_SCOPE_LINK, k[0], k[1], k[2], k[3], k[4], &row.lsa) == 0 &&
           give_key(key, std::array{l.where, l.where2, l.type, l.lsid, l.router_id});
}

bool find_aggregate(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    const sw_ospf_aggregate_t &a = row.aggregate;
    return cfg_ospf_aggregate_find(mode, k[0], k[1], k[2], k[3], &row.aggregate) == 0 &&
           give_key(key, std::array{a.area_id, a.lsdb_type, a.net, a.mask});
}

bool find_rip_if(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return cfg_rip_if_find(mode, k[0], &row.rip_if) == 0 && give_key(key, std::array{row.rip_if.addr});
}

bool find_rip_peer(int mode, const uint32_t *k, RowData &row, uint32_t *key) {
    return cfg_rip_peer_find(mode, k[0], k[1], &row.peer) == 0 && give_key(key, std::array{row.peer.addr, row.peer.domain});
}

Value advertisement(const sw_ospf_lsa_t &l) {
    return bytes_value(l.advertisement, l.length < SW_OSPF_LSA_MAX ? l.length : SW_OSPF_LSA_MAX);
}

// The routing domain of a RIP peer: two octets, most significant first.
Value route_tag(uint32_t domain) {
    static uint8_t tag[2];
    swp::store_be16(tag, uint16_t(domain));
    return bytes_value(tag, sizeof tag);
}

// ---- the tables ----------------------------------------------------------------------

constexpr Part kAddr[] = {Part::IPV4};
constexpr Part kAddrIf[] = {Part::IPV4, Part::U32};
constexpr Part kAddrIfTos[] = {Part::IPV4, Part::U32, Part::U32};
constexpr Part kAddrTos[] = {Part::IPV4, Part::U32};
constexpr Part kTwoAddr[] = {Part::IPV4, Part::IPV4};
constexpr Part kAreaLsa[] = {Part::IPV4, Part::U32, Part::IPV4, Part::IPV4};
constexpr Part kExtLsa[] = {Part::U32, Part::IPV4, Part::IPV4};
constexpr Part kLocalLsa[] = {Part::IPV4, Part::U32, Part::U32, Part::IPV4, Part::IPV4};
constexpr Part kAggregate[] = {Part::IPV4, Part::U32, Part::IPV4, Part::IPV4};
constexpr Part kRipPeer[] = {Part::IPV4, Part::OCTETS2};

constexpr HandColumn kAreaColumns[] = {
    {1, "ospfAreaId", [](const RowData &r) { return ip(r.area.area_id); }},
    {2, "ospfAuthType", [](const RowData &) { return integer(kAuthNone); }},
    {3, "ospfImportAsExtern", [](const RowData &r) { return integer(r.area.import_as_extern); }},
    {4, "ospfSpfRuns", [](const RowData &r) { return counter(r.area.spf_runs); }},
    {5, "ospfAreaBdrRtrCount", [](const RowData &r) { return gauge(r.area.abr_count); }},
    {6, "ospfAsBdrRtrCount", [](const RowData &r) { return gauge(r.area.asbr_count); }},
    {7, "ospfAreaLsaCount", [](const RowData &r) { return gauge(r.area.lsa_count); }},
    {8, "ospfAreaLsaCksumSum", [](const RowData &r) { return integer(r.area.lsa_cksum_sum); }},
    {9, "ospfAreaSummary", [](const RowData &r) { return integer(r.area.summary); }},
    {10, "ospfAreaStatus", [](const RowData &) { return integer(kActive); }},
    {11, "ospfAreaNssaTranslatorRole", [](const RowData &) { return integer(2); }},   // candidate
    {12, "ospfAreaNssaTranslatorState", [](const RowData &) { return integer(3); }},  // disabled
    {13, "ospfAreaNssaTranslatorStabilityInterval", [](const RowData &) { return integer(40); }},
    {14, "ospfAreaNssaTranslatorEvents", [](const RowData &) { return counter(0); }},
};

constexpr HandColumn kStubColumns[] = {
    {1, "ospfStubAreaId", [](const RowData &r) { return ip(r.area.area_id); }},
    {2, "ospfStubTOS", [](const RowData &) { return integer(0); }},
    {3, "ospfStubMetric", [](const RowData &r) { return integer(r.area.stub_cost); }},
    {4, "ospfStubStatus", [](const RowData &) { return integer(kActive); }},
    {5, "ospfStubMetricType", [](const RowData &) { return integer(1); }},  // ospfMetric
};

constexpr HandColumn kLsdbColumns[] = {
    {1, "ospfLsdbAreaId", [](const RowData &r) { return ip(r.lsa.where); }},
    {2, "ospfLsdbType", [](const RowData &r) { return integer(r.lsa.type); }},
    {3, "ospfLsdbLsid", [](const RowData &r) { return ip(r.lsa.lsid); }},
    {4, "ospfLsdbRouterId", [](const RowData &r) { return ip(r.lsa.router_id); }},
    {5, "ospfLsdbSequence", [](const RowData &r) { return integer(r.lsa.sequence); }},
    {6, "ospfLsdbAge", [](const RowData &r) { return integer(r.lsa.age); }},
    {7, "ospfLsdbChecksum", [](const RowData &r) { return integer(r.lsa.checksum); }},
    {8, "ospfLsdbAdvertisement", [](const RowData &r) { return advertisement(r.lsa); }},
};

constexpr HandColumn kIfColumns[] = {
    {1, "ospfIfIpAddress", [](const RowData &r) { return ip(r.oif.addr); }},
    {2, "ospfAddressLessIf", [](const RowData &r) { return integer(r.oif.addressless); }},
    {3, "ospfIfAreaId", [](const RowData &r) { return ip(r.oif.area_id); }},
    {4, "ospfIfType", [](const RowData &r) { return integer(r.oif.type); }},
    {5, "ospfIfAdminStat", [](const RowData &r) { return integer(truth(r.oif.enabled)); }},
    {6, "ospfIfRtrPriority", [](const RowData &r) { return integer(r.oif.priority); }},
    {7, "ospfIfTransitDelay", [](const RowData &r) { return integer(r.oif.transit_delay); }},
    {8, "ospfIfRetransInterval", [](const RowData &r) { return integer(r.oif.retrans_interval); }},
    {9, "ospfIfHelloInterval", [](const RowData &r) { return integer(r.oif.hello_interval); }},
    {10, "ospfIfRtrDeadInterval", [](const RowData &r) { return integer(r.oif.dead_interval); }},
    {11, "ospfIfPollInterval", [](const RowData &r) { return integer(r.oif.poll_interval); }},
    {12, "ospfIfState", [](const RowData &r) { return integer(r.oif.state); }},
    {13, "ospfIfDesignatedRouter", [](const RowData &r) { return ip(r.oif.dr); }},
    {14, "ospfIfBackupDesignatedRouter", [](const RowData &r) { return ip(r.oif.bdr); }},
    {15, "ospfIfEvents", [](const RowData &r) { return counter(r.oif.events); }},
    {16, "ospfIfAuthKey", [](const RowData &) { return empty_string(); }},  // reads as nothing
    {17, "ospfIfStatus", [](const RowData &) { return integer(kActive); }},
    {18, "ospfIfMulticastForwarding", [](const RowData &) { return integer(1); }},  // blocked
    {19, "ospfIfDemand", [](const RowData &) { return integer(kFalse); }},
    {20, "ospfIfAuthType", [](const RowData &) { return integer(kAuthNone); }},
    {21, "ospfIfLsaCount", [](const RowData &r) { return gauge(r.oif.lsa_count); }},
    {22, "ospfIfLsaCksumSum", [](const RowData &r) { return gauge(r.oif.lsa_cksum_sum); }},
    {23, "ospfIfDesignatedRouterId", [](const RowData &r) { return ip(r.oif.dr_id); }},
    {24, "ospfIfBackupDesignatedRouterId", [](const RowData &r) { return ip(r.oif.bdr_id); }},
};

constexpr HandColumn kIfMetricColumns[] = {
    {1, "ospfIfMetricIpAddress", [](const RowData &r) { return ip(r.oif.addr); }},
    {2, "ospfIfMetricAddressLessIf", [](const RowData &r) { return integer(r.oif.addressless); }},
    {3, "ospfIfMetricTOS", [](const RowData &) { return integer(0); }},
    {4, "ospfIfMetricValue", [](const RowData &r) { return integer(r.oif.cost); }},
    {5, "ospfIfMetricStatus", [](const RowData &) { return integer(kActive); }},
};

constexpr HandColumn kVirtIfColumns[] = {
    {1, "ospfVirtIfAreaId", [](const RowData &r) { return ip(r.virt_if.area_id); }},
    {2, "ospfVirtIfNeighbor", [](const RowData &r) { return ip(r.virt_if.neighbor); }},
    {3, "ospfVirtIfTransitDelay", [](const RowData &r) { return integer(r.virt_if.transit_delay); }},
    {4, "ospfVirtIfRetransInterval", [](const RowData &r) { return integer(r.virt_if.retrans_interval); }},
    {5, "ospfVirtIfHelloInterval", [](const RowData &r) { return integer(r.virt_if.hello_interval); }},
    {6, "ospfVirtIfRtrDeadInterval", [](const RowData &r) { return integer(r.virt_if.dead_interval); }},
    {7, "ospfVirtIfState", [](const RowData &r) { return integer(r.virt_if.state); }},
    {8, "ospfVirtIfEvents", [](const RowData &r) { return counter(r.virt_if.events); }},
    {9, "ospfVirtIfAuthKey", [](const RowData &) { return empty_string(); }},
    {10, "ospfVirtIfStatus", [](const RowData &) { return integer(kActive); }},
    {11, "ospfVirtIfAuthType", [](const RowData &) { return integer(kAuthNone); }},
    {12, "ospfVirtIfLsaCount", [](const RowData &) { return gauge(0); }},
    {13, "ospfVirtIfLsaCksumSum", [](const RowData &) { return gauge(0); }},
};

constexpr HandColumn kNbrColumns[] = {
    {1, "ospfNbrIpAddr", [](const RowData &r) { return ip(r.nbr.addr); }},
    {2, "ospfNbrAddressLessIndex", [](const RowData &r) { return integer(r.nbr.addressless); }},
    {3, "ospfNbrRtrId", [](const RowData &r) { return ip(r.nbr.router_id); }},
    {4, "ospfNbrOptions", [](const RowData &r) { return integer(r.nbr.options); }},
    {5, "ospfNbrPriority", [](const RowData &r) { return integer(r.nbr.priority); }},
    {6, "ospfNbrState", [](const RowData &r) { return integer(r.nbr.state); }},
    {7, "ospfNbrEvents", [](const RowData &r) { return counter(r.nbr.events); }},
    {8, "ospfNbrLsRetransQLen", [](const RowData &r) { return gauge(r.nbr.retrans_qlen); }},
    {9, "ospfNbmaNbrStatus", [](const RowData &) { return integer(kActive); }},
    {10, "ospfNbmaNbrPermanence", [](const RowData &r) { return integer(r.nbr.permanent ? 2 : 1); }},
    {11, "ospfNbrHelloSuppressed", [](const RowData &) { return integer(kFalse); }},
    {12, "ospfNbrRestartHelperStatus", [](const RowData &) { return integer(kNotHelping); }},
    {13, "ospfNbrRestartHelperAge", [](const RowData &) { return gauge(0); }},
    {14, "ospfNbrRestartHelperExitReason", [](const RowData &) { return integer(kExitNone); }},
};

constexpr HandColumn kVirtNbrColumns[] = {
    {1, "ospfVirtNbrArea", [](const RowData &r) { return ip(r.virt_nbr.area_id); }},
    {2, "ospfVirtNbrRtrId", [](const RowData &r) { return ip(r.virt_nbr.router_id); }},
    {3, "ospfVirtNbrIpAddr", [](const RowData &r) { return ip(r.virt_nbr.addr); }},
    {4, "ospfVirtNbrOptions", [](const RowData &r) { return integer(r.virt_nbr.options); }},
    {5, "ospfVirtNbrState", [](const RowData &r) { return integer(r.virt_nbr.state); }},
    {6, "ospfVirtNbrEvents", [](const RowData &r) { return counter(r.virt_nbr.events); }},
    {7, "ospfVirtNbrLsRetransQLen", [](const RowData &r) { return gauge(r.virt_nbr.retrans_qlen); }},
    {8, "ospfVirtNbrHelloSuppressed", [](const RowData &) { return integer(kFalse); }},
    {9, "ospfVirtNbrRestartHelperStatus", [](const RowData &) { return integer(kNotHelping); }},
    {10, "ospfVirtNbrRestartHelperAge", [](const RowData &) { return gauge(0); }},
    {11, "ospfVirtNbrRestartHelperExitReason", [](const RowData &) { return integer(kExitNone); }},
};

constexpr HandColumn kExtLsdbColumns[] = {
    {1, "ospfExtLsdbType", [](const RowData &r) { return integer(r.lsa.type); }},
    {2, "ospfExtLsdbLsid", [](const RowData &r) { return ip(r.lsa.lsid); }},
    {3, "ospfExtLsdbRouterId", [](const RowData &r) { return ip(r.lsa.router_id); }},
    {4, "ospfExtLsdbSequence", [](const RowData &r) { return integer(r.lsa.sequence); }},
    {5, "ospfExtLsdbAge", [](const RowData &r) { return integer(r.lsa.age); }},
    {6, "ospfExtLsdbChecksum", [](const RowData &r) { return integer(r.lsa.checksum); }},
    {7, "ospfExtLsdbAdvertisement", [](const RowData &r) { return advertisement(r.lsa); }},
};

constexpr HandColumn kAggregateColumns[] = {
    {1, "ospfAreaAggregateAreaID", [](const RowData &r) { return ip(r.aggregate.area_id); }},
    {2, "ospfAreaAggregateLsdbType", [](const RowData &r) { return integer(r.aggregate.lsdb_type); }},
    {3, "ospfAreaAggregateNet", [](const RowData &r) { return ip(r.aggregate.net); }},
    {4, "ospfAreaAggregateMask", [](const RowData &r) { return ip(r.aggregate.mask); }},
    {5, "ospfAreaAggregateStatus", [](const RowData &) { return integer(kActive); }},
    {6, "ospfAreaAggregateEffect", [](const RowData &r) { return integer(r.aggregate.advertise ? 1 : 2); }},
    {7, "ospfAreaAggregateExtRouteTag", [](const RowData &r) { return gauge(r.aggregate.route_tag); }},
};

// The index objects (columns 1 to 5) are not accessible.
constexpr HandColumn kLocalLsdbColumns[] = {
    {6, "ospfLocalLsdbSequence", [](const RowData &r) { return integer(r.lsa.sequence); }},
    {7, "ospfLocalLsdbAge", [](const RowData &r) { return integer(r.lsa.age); }},
    {8, "ospfLocalLsdbChecksum", [](const RowData &r) { return integer(r.lsa.checksum); }},
    {9, "ospfLocalLsdbAdvertisement", [](const RowData &r) { return advertisement(r.lsa); }},
};

constexpr HandColumn kRipIfColumns[] = {
    {1, "rip2IfStatAddress", [](const RowData &r) { return ip(r.rip_if.addr); }},
    {2, "rip2IfStatRcvBadPackets", [](const RowData &r) { return counter(r.rip_if.rcv_bad_packets); }},
    {3, "rip2IfStatRcvBadRoutes", [](const RowData &r) { return counter(r.rip_if.rcv_bad_routes); }},
    {4, "rip2IfStatSentUpdates", [](const RowData &r) { return counter(r.rip_if.sent_updates); }},
    {5, "rip2IfStatStatus", [](const RowData &) { return integer(kActive); }},
};

constexpr HandColumn kRipPeerColumns[] = {
    {1, "rip2PeerAddress", [](const RowData &r) { return ip(r.peer.addr); }},
    {2, "rip2PeerDomain", [](const RowData &r) { return route_tag(r.peer.domain); }},
    {3, "rip2PeerLastUpdate", [](const RowData &r) { return ticks(r.peer.last_update_cs); }},
    {4, "rip2PeerVersion", [](const RowData &r) { return integer(r.peer.version); }},
    {5, "rip2PeerRcvBadPackets", [](const RowData &r) { return counter(r.peer.rcv_bad_packets); }},
    {6, "rip2PeerRcvBadRoutes", [](const RowData &r) { return counter(r.peer.rcv_bad_routes); }},
};

}  // namespace

extern const HandTable kRipTables[] = {
    {"rip2IfStatTable", oids::rip2IfStatTable, kAddr, kRipIfColumns, find_rip_if},
    {"rip2PeerTable", oids::rip2PeerTable, kRipPeer, kRipPeerColumns, find_rip_peer},
};

extern const HandTable kOspfTables[] = {
    {"ospfAreaTable", oids::ospfAreaTable, kAddr, kAreaColumns, find_area},
    {"ospfStubAreaTable", oids::ospfStubAreaTable, kAddrTos, kStubColumns, find_stub_area},
    {"ospfLsdbTable", oids::ospfLsdbTable, kAreaLsa, kLsdbColumns, find_area_lsa},
    {"ospfIfTable", oids::ospfIfTable, kAddrIf, kIfColumns, find_if},
    {"ospfIfMetricTable", oids::ospfIfMetricTable, kAddrIfTos, kIfMetricColumns, find_if_metric},
    {"ospfVirtIfTable", oids::ospfVirtIfTable, kTwoAddr, kVirtIfColumns, find_virt_if},
    {"ospfNbrTable", oids::ospfNbrTable, kAddrIf, kNbrColumns, find_nbr},
    {"ospfVirtNbrTable", oids::ospfVirtNbrTable, kTwoAddr, kVirtNbrColumns, find_virt_nbr},
    {"ospfExtLsdbTable", oids::ospfExtLsdbTable, kExtLsa, kExtLsdbColumns, find_ext_lsa},
    {"ospfAreaAggregateTable", oids::ospfAreaAggregateTable, kAggregate, kAggregateColumns, find_aggregate},
    {"ospfLocalLsdbTable", oids::ospfLocalLsdbTable, kLocalLsa, kLocalLsdbColumns, find_local_lsa},
};

extern const HandTable kRouteTables[2];

std::span<const HandTable> hand_tables() {
    static const std::vector<HandTable> all = [] {
        std::vector<HandTable> v;
        for (std::span<const HandTable> group : {std::span<const HandTable>(kRouteTables), std::span<const HandTable>(kRipTables),
                                                 std::span<const HandTable>(kOspfTables)})
            for (const HandTable &t : group) v.push_back(t);
        return v;
    }();
    return all;
}

}  // namespace snmpapi::routing
