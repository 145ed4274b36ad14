// Routing: the index encodings and their bounds against a brute-force OID
// order, the hand-written GET and GETNEXT of every routing table over the
// simulated switch (boundaries, changes between requests, empty tables, the
// platform calls a request costs), the query record of the OSPF and RIP
// scalars, and the VRRP and address tables of the row-store pattern.
#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <set>

#include "fixture.hpp"
#include "mibs/routing/hand_table.hpp"
#include "scalars/catalogue.hpp"
#include "swplatform/records.hpp"
#include "tables/catalogue.hpp"
#include "tables/row_key.hpp"

// The row functions of the routing pattern tables, recorded.
extern "C" {
void ipAddrTable_removeEntry(uint32_t a) { unit::rows().removed.push_back("ipAddrTable " + std::to_string(a)); }
void vrrpOperTable_removeEntry(int32_t i, int32_t v) {
    unit::rows().removed.push_back("vrrpOperTable " + std::to_string(i) + "." + std::to_string(v));
}
void vrrpRouterStatsTable_removeEntry(int32_t i, int32_t v) {
    unit::rows().removed.push_back("vrrpRouterStatsTable " + std::to_string(i) + "." + std::to_string(v));
}
void vrrpAssoIpAddrTable_removeEntry(int32_t i, int32_t v, uint32_t a) {
    unit::rows().removed.push_back("vrrpAssoIpAddrTable " + std::to_string(i) + "." + std::to_string(v) + "." +
                                   std::to_string(a));
}
}

namespace unit {
namespace {

using namespace snmpapi::routing;
using Subids = std::vector<uint32_t>;
// OID order.  (Not std::vector's operator<: GCC 12's libstdc++ gets it wrong
// for unsigned words on a big-endian target.)
using snmpapi::KeyLess;

uint32_t ip(const char *text) {
    uint32_t a = 0;
    EXPECT_EQ(ip_str_to_uint32(text, &a), 0) << text;
    return a;
}

// ---- index encodings ------------------------------------------------------------------

// Index specifications and key words that their tables hold: the route
// tables, a four-part LSA index and the RIP peer's two-octet tag.
struct Encoding {
    const char *what;
    std::vector<Part> index;
    std::vector<std::vector<uint32_t>> keys;
};

std::vector<Encoding> encodings() {
    const uint32_t a = 0x0a000000, b = 0x0a0a0000, c = 0xc0a80100, top = 0xffffffff;
    return {
        {"ipCidrRouteTable",
         {Part::IPV4, Part::MASK_AS_PREFIX, Part::ZERO, Part::IPV4},
         {{0, 0, 0x0a000001}, {a, 8, 0}, {a, 8, 0x0a000002}, {b, 16, 0}, {b, 24, 0}, {b, 24, 0x0a0a0002},
          {c, 24, 0}, {c, 32, 0}, {top, 32, top}}},
        {"inetCidrRouteTable",
         {Part::INET_IPV4, Part::U32, Part::NO_POLICY, Part::INET_NEXT_HOP},
         {{0, 0, 0x0a000001}, {a, 8, 0}, {a, 8, 1}, {a, 8, 0x0a000002}, {b, 24, 0}, {b, 24, top}, {c, 32, 0}}},
        {"ospfLsdbTable",
         {Part::IPV4, Part::U32, Part::IPV4, Part::IPV4},
         {{0, 1, 0x01010101, 0x01010101}, {0, 1, 0x02020202, 0x02020202}, {0, 2, a, 0x01010101},
          {0, 3, a, 0x02020202}, {1, 1, 0x01010101, 0x01010101}}},
        {"rip2PeerTable", {Part::IPV4, Part::OCTETS2}, {{a, 0}, {a, 1}, {a, 0xffff}, {b, 0x1234}}},
    };
}

Subids encoded(const Encoding &e, const std::vector<uint32_t> &key) {
    Subids out;
    encode_index(e.index, key.data(), out);
    return out;
}

// Sub-identifier lists near every encoding: its prefixes, the encoding with
// one sub-identifier one lower or higher (or 256, 2^32 - 1), longer ones.
std::vector<Subids> probes(const Encoding &e, std::mt19937 &rng) {
    std::vector<Subids> out = {{}, {0}, {1}, {2}, {255}, {256}, {UINT32_MAX}};
    for (const auto &key : e.keys) {
        const Subids enc = encoded(e, key);
        for (size_t n = 0; n <= enc.size(); ++n) out.emplace_back(enc.begin(), enc.begin() + long(n));
        for (size_t i = 0; i < enc.size(); ++i)
            for (uint32_t v : {enc[i] - 1, enc[i] + 1, 256u, 255u, 0u, 5u, UINT32_MAX}) {
                Subids p(enc.begin(), enc.begin() + long(i) + 1);
                p.back() = v;
                out.push_back(p);
                p.push_back(uint32_t(rng() % 300));
                out.push_back(p);
            }
        Subids longer = enc;
        longer.push_back(0);
        out.push_back(longer);
    }
    return out;
}

// The first key whose encoding follows `probe` in OID order, by brute force
// and through the bound.
TEST(IndexBound, GetNextFindsTheFirstEncodingThatFollows) {
    std::mt19937 rng(7);
    for (const Encoding &e : encodings()) {
        SCOPED_TRACE(e.what);
        std::map<Subids, std::vector<uint32_t>, KeyLess> by_oid;
        for (const auto &key : e.keys) by_oid[encoded(e, key)] = key;
        std::set<std::vector<uint32_t>, KeyLess> by_key(e.keys.begin(), e.keys.end());
        for (const Subids &probe : probes(e, rng)) {
            auto expected = by_oid.upper_bound(probe);
            const std::optional<Bound> b = bound_after(e.index, probe);
            std::optional<std::vector<uint32_t>> got;
            if (b) {
                auto it = b->after ? by_key.upper_bound(b->words) : by_key.lower_bound(b->words);
                if (it != by_key.end()) got = *it;
            }
            const std::string where = "after " + ::testing::PrintToString(probe);
            if (expected == by_oid.end()) {
                EXPECT_FALSE(got) << where;
            } else {
                ASSERT_TRUE(got) << where;
                EXPECT_EQ(*got, expected->second) << where;
            }
        }
    }
}

TEST(IndexBound, ExactKeysOnlyForWholeValidEncodings) {
    const std::vector<Part> cidr = {Part::IPV4, Part::MASK_AS_PREFIX, Part::ZERO, Part::IPV4};
    const std::vector<Part> inet = {Part::INET_IPV4, Part::U32, Part::NO_POLICY, Part::INET_NEXT_HOP};
    struct Case {
        const std::vector<Part> *index;
        Subids subids;
        std::optional<std::vector<uint32_t>> key;
    };
    const Case cases[] = {
        {&cidr, {10, 0, 0, 0, 255, 0, 0, 0, 0, 10, 0, 0, 2}, std::vector<uint32_t>{0x0a000000, 8, 0x0a000002}},
        {&cidr, {10, 0, 0, 0, 255, 0, 255, 0, 0, 0, 0, 0, 0}, std::nullopt},  // not a mask
        {&cidr, {10, 0, 0, 0, 255, 0, 0, 0, 1, 0, 0, 0, 0}, std::nullopt},    // TOS 1
        {&cidr, {10, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0}, std::nullopt},       // short
        {&cidr, {10, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0}, std::nullopt}, // long
        {&cidr, {10, 0, 0, 256, 255, 0, 0, 0, 0, 0, 0, 0, 0}, std::nullopt},  // octet 256
        {&inet, {1, 4, 10, 0, 0, 0, 8, 2, 0, 0, 0, 0}, std::vector<uint32_t>{0x0a000000, 8, 0}},
        {&inet, {1, 4, 10, 0, 0, 0, 8, 2, 0, 0, 1, 4, 10, 0, 0, 2}, std::vector<uint32_t>{0x0a000000, 8, 0x0a000002}},
        {&inet, {1, 4, 10, 0, 0, 0, 8, 2, 0, 0, 1, 4, 0, 0, 0, 0}, std::nullopt},  // ipv4 0.0.0.0 is no next hop
        {&inet, {2, 16, 10, 0, 0, 0, 8, 2, 0, 0, 0, 0}, std::nullopt},             // IPv6
        {&inet, {1, 4, 10, 0, 0, 0, 8, 3, 1, 1, 0, 0, 0}, std::nullopt},          // another policy
    };
    for (const Case &c : cases) EXPECT_EQ(exact_key(*c.index, c.subids), c.key) << ::testing::PrintToString(c.subids);
}

// ---- the hand-written tables over the switch ------------------------------------------

class RoutingTest : public SwitchTest {
protected:
    std::string scenario() const override { return ""; }  // scenarios/default.json

    static const HandTable &table(const char *name) {
        const HandTable *t = find_hand_table(name);
        EXPECT_NE(t, nullptr) << name;
        return *t;
    }
    static Subids oid_of(const HandTable &t) { return Subids(t.oid.subids, t.oid.subids + t.oid.len); }

    // Every object of a table, by GETNEXT from the table's OID.
    std::vector<HandAnswer> walk(const HandTable &t) {
        std::vector<HandAnswer> out;
        RowData row{};
        Subids at = oid_of(t);
        while (auto a = hand_next(t, at, row)) {
            out.push_back(*a);
            at = a->oid;
            if (out.size() > 200000) break;
        }
        return out;
    }
};

TEST_F(RoutingTest, EveryTableWalksInStrictOrderAndGetAgreesWithGetNext) {
    size_t tables_with_rows = 0;
    for (const HandTable &t : hand_tables()) {
        SCOPED_TRACE(t.name);
        const std::vector<HandAnswer> objects = walk(t);
        tables_with_rows += objects.empty() ? 0 : 1;
        const Subids prefix = oid_of(t);
        std::map<uint32_t, size_t> per_column;
        RowData row{};
        for (size_t i = 0; i < objects.size(); ++i) {
            const Subids &o = objects[i].oid;
            ASSERT_TRUE(std::equal(prefix.begin(), prefix.end(), o.begin())) << "outside the table";
            if (i > 0) {
                ASSERT_TRUE(KeyLess{}(objects[i - 1].oid, o))
                    << ::testing::PrintToString(objects[i - 1].oid) << " then " << ::testing::PrintToString(o);
            }
            ++per_column[o[prefix.size() + 1]];
            auto got = hand_get(t, o, row);
            ASSERT_TRUE(got) << "GET of a walked object";
            EXPECT_EQ(got->value.type, objects[i].value.type);
            EXPECT_EQ(got->value.word, objects[i].value.word);
        }
        // Every column has every row, and only the accessible columns show.
        EXPECT_EQ(per_column.size(), objects.empty() ? 0 : t.columns.size());
        for (auto [column, n] : per_column) EXPECT_EQ(n, per_column.begin()->second) << "column " << column;
    }
    EXPECT_GE(tables_with_rows, 12u);
}

TEST_F(RoutingTest, GetNextAtEveryIndexBoundaryFindsTheNextObject) {
    for (const char *name : {"ipCidrRouteTable", "inetCidrRouteTable", "ospfLsdbTable", "ospfNbrTable",
                             "ospfStubAreaTable", "rip2PeerTable", "ospfLocalLsdbTable"}) {
        SCOPED_TRACE(name);
        const HandTable &t = table(name);
        const std::vector<HandAnswer> objects = walk(t);
        ASSERT_FALSE(objects.empty());
        RowData row{};
        std::vector<Subids> all;
        for (const auto &a : objects) all.push_back(a.oid);
        // Each object's OID cut short, moved one up or down at each
        // position, or made longer: GETNEXT answers the first walked object
        // beyond it (the walk is the truth, checked in order above).
        for (const Subids &o : all) {
            for (size_t i = t.oid.len; i < o.size(); ++i)
                for (int64_t delta : {-1, 0, 1, 300}) {
                    Subids probe(o.begin(), o.begin() + long(i) + 1);
                    probe.back() = uint32_t(int64_t(probe.back()) + delta);
                    if (delta == 0) probe.push_back(7);
                    const auto expected = std::upper_bound(all.begin(), all.end(), probe, KeyLess{});
                    const auto got = hand_next(t, probe, row);
                    if (expected == all.end()) {
                        EXPECT_FALSE(got) << ::testing::PrintToString(probe);
                    } else {
                        ASSERT_TRUE(got) << ::testing::PrintToString(probe);
                        EXPECT_EQ(got->oid, *expected) << ::testing::PrintToString(probe);
                    }
                }
        }
        // From before the table, and from its entry and last object.
        EXPECT_EQ(hand_next(t, Subids{1, 3, 6, 1, 2, 1}, row)->oid, all.front());
        EXPECT_FALSE(hand_next(t, all.back(), row));
        Subids past = oid_of(t);
        past.push_back(2);
        EXPECT_FALSE(hand_next(t, past, row));
    }
}

// The route a manager stands on goes away between two GETNEXTs: the next
// one answers the route after it; a route added before it is not seen.
TEST_F(RoutingTest, ARouteRemovedBetweenTwoGetNextsIsSteppedOver) {
    const HandTable &t = table("ipCidrRouteTable");
    RowData row{};
    const Subids start{1, 3, 6, 1, 2, 1, 4, 24, 4, 1, 4, 10, 30, 0, 0};
    auto at = hand_next(t, start, row);
    ASSERT_TRUE(at);
    const Subids ten_thirty = {1, 3, 6, 1, 2, 1, 4, 24, 4, 1, 4, 10, 30, 0, 0, 255, 255, 255, 0, 0, 10, 10, 0, 2};
    ASSERT_EQ(at->oid, ten_thirty);
    sw().route_remove(ip("10.30.0.0"), 24, ip("10.10.0.2"));
    swsim::Switch::Route early;
    early.dest = ip("10.5.0.0");
    early.prefix_len = 16;
    early.next_hop = ip("10.10.0.2");
    sw().route_add(early);
    auto next = hand_next(t, at->oid, row);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->oid, (Subids{1, 3, 6, 1, 2, 1, 4, 24, 4, 1, 4, 10, 31, 0, 0, 255, 255, 255, 0, 0, 10, 10, 0, 2}));
    EXPECT_FALSE(hand_get(t, ten_thirty, row)) << "the removed route answers no GET";
}

// A GETNEXT costs one platform find, two at a column's end: never a walk
// over the table.
TEST_F(RoutingTest, AGetNextIsOneOrTwoPlatformFinds) {
    const HandTable &t = table("ipCidrRouteTable");
    RowData row{};
    const std::vector<HandAnswer> objects = walk(t);
    for (size_t i = 0; i + 1 < objects.size(); i += 7) {
        const size_t finds = count_calls("cfg_route_find", [&] { hand_next(t, objects[i].oid, row); });
        const bool column_end = objects[i].oid[10] != objects[i + 1].oid[10];
        EXPECT_EQ(finds, column_end ? 2u : 1u) << ::testing::PrintToString(objects[i].oid);
    }
}

// What the route columns say of each kind of route.
TEST_F(RoutingTest, RouteColumnsFollowTheRouteKinds) {
    const HandTable &cidr = table("ipCidrRouteTable"), &inet = table("inetCidrRouteTable");
    RowData row{};
    struct Case {
        Subids cidr_index;  // dest . mask . tos . next hop
        Subids inet_index;  // type . len . dest . pfx . policy . type . len . next hop
        int32_t if_index, cidr_type, inet_type, proto;
    };
    const Case cases[] = {
        {{10, 10, 0, 0, 255, 255, 255, 0, 0, 0, 0, 0, 0}, {1, 4, 10, 10, 0, 0, 24, 2, 0, 0, 0, 0}, 1010, 3, 3, 2},
        {{0, 0, 0, 0, 0, 0, 0, 0, 0, 192, 168, 1, 254}, {1, 4, 0, 0, 0, 0, 0, 2, 0, 0, 1, 4, 192, 168, 1, 254}, 1001, 4, 4, 3},
        {{10, 99, 0, 0, 255, 255, 0, 0, 0, 0, 0, 0, 0}, {1, 4, 10, 99, 0, 0, 16, 2, 0, 0, 0, 0}, 0, 2, 5, 3},
        {{10, 40, 0, 0, 255, 255, 0, 0, 0, 10, 20, 0, 2}, {1, 4, 10, 40, 0, 0, 16, 2, 0, 0, 1, 4, 10, 20, 0, 2}, 1020, 4, 4, 8},
        {{10, 30, 0, 0, 255, 255, 255, 0, 0, 10, 10, 0, 2}, {1, 4, 10, 30, 0, 0, 24, 2, 0, 0, 1, 4, 10, 10, 0, 2}, 1010, 4, 4, 13},
    };
    auto column = [&](const HandTable &t, uint32_t number, const Subids &index) {
        Subids name = oid_of(t);
        name.push_back(1);
        name.push_back(number);
        name.insert(name.end(), index.begin(), index.end());
        auto a = hand_get(t, name, row);
        EXPECT_TRUE(a) << ::testing::PrintToString(name);
        return a ? int32_t(a->value.word) : -99;
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.cidr_index));
        EXPECT_EQ(column(cidr, 5, c.cidr_index), c.if_index);
        EXPECT_EQ(column(cidr, 6, c.cidr_index), c.cidr_type);
        EXPECT_EQ(column(cidr, 7, c.cidr_index), c.proto);
        EXPECT_EQ(column(cidr, 16, c.cidr_index), 1);
        EXPECT_EQ(column(inet, 7, c.inet_index), c.if_index);
        EXPECT_EQ(column(inet, 8, c.inet_index), c.inet_type);
        EXPECT_EQ(column(inet, 9, c.inet_index), c.proto);
        EXPECT_EQ(column(inet, 13, c.inet_index), -1);
    }
    EXPECT_EQ(get_ipCidrRouteNumber(), sw().routes().size());
    EXPECT_EQ(get_inetCidrRouteNumber(), sw().routes().size());
    sw().fault_set("cfg_route_count", -1, 1);
    EXPECT_EQ(get_ipCidrRouteNumber(), 0u) << "a failing count reads 0";
}

// A platform that fails answers nothing, and a table without rows answers
// nothing either: the walk leaves them.
TEST_F(RoutingTest, EmptyAndFailingTablesAnswerNothing) {
    RowData row{};
    for (const char *name : {"ospfVirtIfTable", "ospfVirtNbrTable"}) {
        const HandTable &t = table(name);
        EXPECT_FALSE(hand_next(t, oid_of(t), row)) << name;
        Subids first = oid_of(t);
        first.insert(first.end(), {1, 1, 0, 0, 0, 0, 0, 0, 0, 0});
        EXPECT_FALSE(hand_get(t, first, row)) << name;
    }
    sw().fault_set("cfg_ospf_nbr_find", -1, -1);
    const HandTable &nbr = table("ospfNbrTable");
    EXPECT_FALSE(hand_next(nbr, oid_of(nbr), row));
    sw().fault_clear();
    EXPECT_TRUE(hand_next(nbr, oid_of(nbr), row));
}

// Neighbours change state and LSAs age between requests; the next request
// shows it.
TEST_F(RoutingTest, NeighbourStatesAndLsaAgesShowAtTheNextRequest) {
    const HandTable &nbr = table("ospfNbrTable");
    RowData row{};
    const Subids state = {1, 3, 6, 1, 2, 1, 14, 10, 1, 6, 10, 10, 0, 3, 0};
    EXPECT_EQ(hand_get(nbr, state, row)->value.word, uint32_t(SW_OSPF_NBR_TWO_WAY));
    sw().ospf_set_neighbor_state(ip("10.10.0.3"), SW_OSPF_NBR_FULL);
    EXPECT_EQ(hand_get(nbr, state, row)->value.word, uint32_t(SW_OSPF_NBR_FULL));

    const HandTable &lsdb = table("ospfLsdbTable");
    auto first_age = [&] {
        Subids age = oid_of(lsdb);
        age.insert(age.end(), {1, 6});
        return hand_next(lsdb, age, row)->value.word;
    };
    EXPECT_LT(first_age(), 60u);
    sw().ospf_age_lsas(1200);
    EXPECT_GE(first_age(), 1200u);
    sw().ospf_age_lsas(5000);
    EXPECT_EQ(first_age(), uint32_t(SW_OSPF_MAX_AGE));
}

// Each advertisement is a whole LSA whose OSPF checksum (the Fletcher sums
// over everything but the age) comes to zero and is the checksum column's.
TEST_F(RoutingTest, AdvertisementsCarryTheirHeaderAndAValidChecksum) {
    size_t seen = 0;
    for (const sw_ospf_lsa_t &l : sw().ospf_lsas()) {
        ASSERT_GE(l.length, 20u);
        ASSERT_LE(l.length, size_t(SW_OSPF_LSA_MAX));
        const uint8_t *p = l.advertisement;
        EXPECT_EQ(p[3], l.type);
        EXPECT_EQ(swp::load_be32(p + 4), l.lsid);
        EXPECT_EQ(swp::load_be32(p + 8), l.router_id);
        EXPECT_EQ(swp::load_be16(p + 18), l.length);
        EXPECT_EQ(swp::load_be16(p + 16), l.checksum);
        int32_t c0 = 0, c1 = 0;
        for (size_t i = 2; i < l.length; ++i) {
            c0 = (c0 + p[i]) % 255;
            c1 = (c1 + c0) % 255;
        }
        EXPECT_EQ(c0, 0) << "LSA type " << l.type;
        EXPECT_EQ(c1, 0) << "LSA type " << l.type;
        if (l.type == 5) {
            EXPECT_EQ(l.length, 36u) << "an external LSA is 36 octets";
        }
        ++seen;
    }
    EXPECT_GE(seen, 6u);
}

// ---- the query record ------------------------------------------------------------------

TEST(QueryRecord, RequestAndAnswerSitAtTheirOffsetsInBigEndianWords) {
    uint8_t rec[swp::query_record::kSize];
    std::memset(rec, 0xaa, sizeof rec);
    const uint32_t name[] = {1, 3, 6, 1, 2, 1, 14, 1, 1, 0, 99, 98};
    swp::query_record::set_request(rec, name, 12);
    EXPECT_EQ(std::vector<uint8_t>(rec, rec + 8), (std::vector<uint8_t>{0, 0, 0, 10, 0, 0, 0, 1}));
    EXPECT_EQ(swp::load_be32(rec + 4 + 4 * 6), 14u);
    EXPECT_EQ(swp::load_be32(rec + 4 + 4 * 9), 0u);
    EXPECT_TRUE(std::all_of(rec + 44, rec + sizeof rec, [](uint8_t b) { return b == 0; })) << "the rest is cleared";

    const uint32_t shorter[] = {1, 3, 6};
    swp::query_record::set_request(rec, shorter, 3);
    EXPECT_EQ(swp::load_be32(rec + 4 + 4 * 3), 0u) << "beyond the name's length: 0";
}

class QueryRecordPlatform : public SwitchTest {
protected:
    std::string scenario() const override { return ""; }
};

// What the platform answers for each scalar of the group, read back from
// the record's bytes.
TEST_F(QueryRecordPlatform, OspfAndRipObjectsAreAnsweredWithTheirTypes) {
    struct Case {
        int (*query)(uint8_t *);
        uint32_t group, object;
        uint8_t type;     // 0: no value
        uint32_t value;
    };
    const Case cases[] = {
        {get_ospfGeneral, 14, 1, 0x40, 0x01010101},  // router ID, an IpAddress
        {get_ospfGeneral, 14, 2, 0x02, 1},           // enabled
        {get_ospfGeneral, 14, 3, 0x02, 2},           // version 2
        {get_ospfGeneral, 14, 4, 0x02, 1},           // interfaces in two areas: a border router
        {get_ospfGeneral, 14, 6, 0x42, 1},           // one external LSA
        {get_ospfGeneral, 14, 11, 0x02, 0xffffffff}, // no limit: -1
        {get_ospfGeneral, 14, 17, 0, 0},             // no such object: no value
        {get_rip2Globals, 23, 2, 0x41, 3},
        {get_rip2Globals, 23, 3, 0, 0},
    };
    namespace q = swp::query_record;
    for (const Case &c : cases) {
        SCOPED_TRACE(std::to_string(c.group) + "." + std::to_string(c.object));
        uint8_t rec[q::kSize];
        const uint32_t name[] = {1, 3, 6, 1, 2, 1, c.group, 1, c.object, 0};
        q::set_request(rec, name, 10);
        ASSERT_EQ(c.query(rec), 0);
        ASSERT_EQ(swp::load_be32(rec + 524), 10u);
        for (size_t i = 0; i < 10; ++i) EXPECT_EQ(swp::load_be32(rec + 528 + 4 * i), name[i]);
        if (c.type == 0) {
            EXPECT_EQ(swp::load_be32(rec + 1040), 0u);
            continue;
        }
        EXPECT_EQ(rec[2544], c.type);
        ASSERT_EQ(swp::load_be32(rec + 1040), 4u);
        EXPECT_EQ(swp::load_be32(rec + 1044), c.value);
    }
    uint8_t rec[q::kSize] = {};
    EXPECT_LT(get_ospfGeneral(rec), 0) << "a record without its count word is refused";
}

// ---- the address and VRRP tables ----------------------------------------------------------

TEST_F(RoutingTest, AddressRowsFollowTheVlanInterfaces) {
    EXPECT_EQ(init_index_ipAddrTable(reinterpret_cast<void *(*)(uint32_t)>(add_gauge_row)), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{int32_t(ip("10.10.0.1")), int32_t(ip("10.20.0.1")),
                                                 int32_t(ip("172.31.0.1")), int32_t(ip("192.168.1.1"))}));
    EXPECT_EQ(get_ipAdEntIfIndex(ip("10.20.0.1")), 1020);
    EXPECT_EQ(get_ipAdEntNetMask(ip("10.20.0.1")), ip("255.255.255.0"));
    EXPECT_EQ(get_ipAdEntBcastAddr(ip("10.20.0.1")), 1);
    EXPECT_EQ(exists_entry_ipAddrTable(ip("10.20.0.1")), 1);
    sw().ip_addr_remove(ip("10.20.0.1"));
    EXPECT_EQ(exists_entry_ipAddrTable(ip("10.20.0.1")), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"ipAddrTable " + std::to_string(ip("10.20.0.1"))});
    EXPECT_EQ(get_ipAdEntIfIndex(ip("10.20.0.1")), 0) << "a vanished address reads 0";
    const std::vector<sw_route_t> routes = sw().routes();
    EXPECT_TRUE(std::none_of(routes.begin(), routes.end(), [](const sw_route_t &r) {
        return r.source == SW_ROUTE_CONNECTED && r.vid == 20;
    })) << "its connected route went with it";
}

TEST_F(RoutingTest, VrrpRowsCountersAndNotifications) {
    EXPECT_EQ(init_index_vrrpOperTable(reinterpret_cast<void *(*)(int32_t, int32_t)>(add_pair_row<int32_t>)), 0);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"1010.1", "1020.2"}));
    rows().clear();
    init_index_vrrpAssoIpAddrTable([](int32_t i, int32_t v, uint32_t a) -> void * {
        rows().keys.push_back(std::to_string(i) + "." + std::to_string(v) + "." + std::to_string(a >> 24) + "." +
                              std::to_string(a & 0xff));
        return &rows();
    });
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"1010.1.10.254", "1020.2.10.253", "1020.2.10.254"}));

    EXPECT_EQ(get_vrrpOperState(1010, 1), SW_VRRP_MASTER);
    EXPECT_EQ(get_vrrpOperMasterIpAddr(1010, 1), ip("10.10.0.1"));
    size_t len = 0;
    const uint8_t *mac = get_vrrpOperVirtualMacAddr(1020, 2, &len);
    EXPECT_EQ(std::vector<uint8_t>(mac, mac + len), (std::vector<uint8_t>{0, 0, 0x5e, 0, 1, 2}));
    const uint32_t became = get_vrrpStatsBecomeMaster(1020, 2);
    sw().vrrp_set_state(20, 2, SW_VRRP_MASTER);
    EXPECT_EQ(get_vrrpStatsBecomeMaster(1020, 2), became + 1);
    EXPECT_EQ(get_vrrpOperState(1020, 2), SW_VRRP_MASTER);

    EXPECT_EQ(exists_entry_vrrpOperTable(1010, 1), 1);
    EXPECT_EQ(exists_entry_vrrpOperTable(1010, 7), 0);
    EXPECT_EQ(exists_entry_vrrpOperTable(5, 1), 0) << "a port is no VLAN interface";
    EXPECT_EQ(exists_entry_vrrpAssoIpAddrTable(1010, 1, ip("10.10.0.253")), 0);
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"vrrpOperTable 1010.7", "vrrpOperTable 5.1",
                                                        "vrrpAssoIpAddrTable 1010.1." + std::to_string(ip("10.10.0.253"))}));

    EXPECT_EQ(get_vrrpNotificationCntl(), 2);
    EXPECT_EQ(set_vrrpNotificationCntl(1), 0);
    EXPECT_EQ(get_vrrpNotificationCntl(), 1);
    EXPECT_EQ(set_vrrpNotificationCntl(2), 0);
    EXPECT_EQ(get_vrrpNotificationCntl(), 2);
    EXPECT_LT(set_vrrpNotificationCntl(3), 0) << "the platform refuses what is neither";
    EXPECT_EQ(get_vrrpNodeVersion(), 2);
}

}  // namespace
}  // namespace unit
