// The simulated switch's routing: the find calls' three modes, the changes
// of the control handle and what they refuse, scenario errors, and the
// import of FRRouting's JSON from a sample made by real FRR daemons
// (scripts/frr-sample.sh).
#include <arpa/inet.h>

#include <fstream>
#include <sstream>

#include "support.hpp"
#include "swplatform/records.hpp"

namespace simtest {
namespace {

uint32_t ip(const char *text) {
    uint32_t a = 0;
    EXPECT_EQ(ip_str_to_uint32(text, &a), 0) << text;
    return a;
}

std::string file_text(const std::string &path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// A switch with VLANs 10 and 20, their addresses and a few routes.
const char *kRouter = R"({
  "units": [{"ports": 8, "sfp_ports": 0}],
  "vlans": [{"vid": 1, "untagged": ["all"]}, {"vid": 10, "tagged": ["1/1"]}, {"vid": 20, "tagged": ["1/2"]}],
  "routing": {
    "interfaces": [{"vlan": 10, "address": "10.10.0.1/24"}, {"vlan": 20, "address": "10.20.0.1/24"}],
    "routes": [{"prefix": "10.30.0.0/24", "next_hop": "10.10.0.2", "protocol": "ospf", "metric": 20},
               {"prefix": "10.30.0.0/24", "next_hop": "10.20.0.2", "protocol": "ospf", "metric": 20},
               {"prefix": "0.0.0.0/0", "next_hop": "10.20.0.254"}],
    "ospf": {"router_id": "1.1.1.1", "areas": [{"id": "0.0.0.0"}],
             "interfaces": [{"address": "10.10.0.1", "area": "0.0.0.0"}],
             "neighbors": [{"address": "10.10.0.2", "router_id": "2.2.2.2", "state": "loading"}]}
  }
})";

class Routing : public SwitchTest {
protected:
    void SetUp() override {
        TempDir::SetUp();
        boot(kRouter);
    }
};

TEST_F(Routing, FindsAnswerExactFromAndAfterInKeyOrder) {
    sw_route_t r{};
    // Keys: 0.0.0.0/0, 10.10.0.0/24, 10.20.0.0/24, 10.30.0.0/24 via .10.0.2, via .20.0.2.
    ASSERT_EQ(cfg_route_find(SW_FIND_FROM, 0, 0, 0, &r), 0);
    EXPECT_EQ(r.dest, 0u);
    EXPECT_EQ(r.next_hop, ip("10.20.0.254"));
    ASSERT_EQ(cfg_route_find(SW_FIND_AFTER, ip("10.30.0.0"), 24, ip("10.10.0.2"), &r), 0);
    EXPECT_EQ(r.next_hop, ip("10.20.0.2"));
    EXPECT_EQ(cfg_route_find(SW_FIND_AFTER, ip("10.30.0.0"), 24, ip("10.20.0.2"), &r), SW_NOT_FOUND);
    EXPECT_EQ(cfg_route_find(SW_FIND_EXACT, ip("10.30.0.0"), 24, ip("10.10.0.3"), &r), SW_NOT_FOUND);
    ASSERT_EQ(cfg_route_find(SW_FIND_FROM, ip("10.10.0.0"), 25, 0, &r), 0);
    EXPECT_EQ(r.dest, ip("10.20.0.0")) << "a longer prefix of 10.10.0.0 comes after /24";
    EXPECT_EQ(r.source, uint32_t(SW_ROUTE_CONNECTED));
    EXPECT_EQ(r.vid, 20);
    EXPECT_LT(cfg_route_find(3, 0, 0, 0, &r), 0) << "an unknown mode";
    EXPECT_LT(cfg_route_find(SW_FIND_FROM, 0, 0, 0, nullptr), 0);
    EXPECT_EQ(cfg_route_count(), 5);

    sw_ospf_lsa_t l{};
    ASSERT_EQ(cfg_ospf_lsa_find(SW_FIND_FROM, SW_OSPF_SCOPE_AREA, 0, 0, 0, 0, 0, &l), 0);
    EXPECT_EQ(l.type, 1u);
    EXPECT_EQ(cfg_ospf_lsa_find(SW_FIND_FROM, SW_OSPF_SCOPE_AS, 0, 0, 0, 0, 0, &l), SW_NOT_FOUND)
        << "no AS-external LSA: the link-local ones of another scope do not answer";
    EXPECT_LT(cfg_ospf_lsa_find(SW_FIND_FROM, 7, 0, 0, 0, 0, 0, &l), 0);
}

TEST_F(Routing, ChangesCheckWhatTheyAreGiven) {
    swsim::Switch::Route r;
    struct Bad {
        const char *why;
        uint32_t dest;
        int len;
        uint32_t next_hop;
        int source;
    };
    const Bad bad[] = {
        {"host bits beyond the prefix", ip("10.40.0.1"), 24, ip("10.10.0.2"), SW_ROUTE_STATIC},
        {"prefix length 33", ip("10.40.0.0"), 33, ip("10.10.0.2"), SW_ROUTE_STATIC},
        {"next hop on no network", ip("10.40.0.0"), 24, ip("10.99.0.2"), SW_ROUTE_STATIC},
        {"a static route without next hop", ip("10.40.0.0"), 24, 0, SW_ROUTE_STATIC},
        {"a blackhole with a next hop", ip("10.40.0.0"), 24, ip("10.10.0.2"), SW_ROUTE_BLACKHOLE},
        {"source 9", ip("10.40.0.0"), 24, ip("10.10.0.2"), 9},
    };
    const size_t before = sw_->routes().size();
    for (const Bad &b : bad) {
        r.dest = b.dest;
        r.prefix_len = b.len;
        r.next_hop = b.next_hop;
        r.source = b.source;
        EXPECT_THROW(sw_->route_add(r), swsim::Error) << b.why;
    }
    EXPECT_EQ(sw_->routes().size(), before);
    EXPECT_THROW(sw_->route_remove(ip("10.40.0.0"), 24, 0), swsim::Error);
    EXPECT_THROW(sw_->ospf_set_neighbor_state(ip("10.10.0.2"), 9), swsim::Error);
    EXPECT_THROW(sw_->ospf_set_neighbor_state(ip("10.10.0.7"), 8), swsim::Error);
    EXPECT_THROW(sw_->ip_addr_add(30, ip("10.30.0.1"), 24), swsim::Error) << "VLAN 30 does not exist";
    EXPECT_THROW(sw_->ip_addr_add(10, ip("10.10.0.0"), 24), swsim::Error) << "the network's own address";

    // A RIP route counts as a route change of RIP.
    r = swsim::Switch::Route{};
    r.dest = ip("10.50.0.0");
    r.prefix_len = 16;
    r.next_hop = ip("10.20.0.2");
    r.source = SW_ROUTE_RIP;
    sw_->route_add(r);
    sw_->route_remove(r.dest, 16, r.next_hop);
    uint8_t rec[SW_QUERY_RECORD_SIZE];
    const uint32_t changes[] = {1, 3, 6, 1, 2, 1, 23, 1, 1, 0};
    swp::query_record::set_request(rec, changes, 10);
    ASSERT_EQ(get_rip2Globals(rec), 0);
    EXPECT_EQ(swp::load_be32(swp::query_record::answer_value(rec)), 2u);
}

TEST_F(Routing, ScenarioErrorsNameTheField) {
    const std::string bad = R"({"vlans": [{"vid": 1, "untagged": ["all"]}],
        "routing": {"interfaces": [{"vlan": 1, "address": "10.0.0.1/24"}],
                    "routes": [{"prefix": "10.1.0.0/16", "next_hop": "10.2.0.1"}]}})";
    try {
        swsim::create_state_from_json(dir_ + "/bad.state", bad, "bad.json");
        FAIL() << "accepted";
    } catch (const swsim::Error &e) {
        EXPECT_NE(std::string(e.what()).find("bad.json: routing.routes[0]: next hop 10.2.0.1"), std::string::npos) << e.what();
    }
    EXPECT_THROW(swsim::create_state_from_json(dir_ + "/bad.state", R"({"routing": {"ospf": {"router_id": "1.2.3"}}})"),
                 swsim::Error);
}

// The sample is what FRR 8.4 printed for a router with two LANs (vlan10,
// vlan20), a static route, a blackhole and OSPF routes from its neighbour.
TEST_F(Routing, FrrSampleImportsRoutesAndNeighbours) {
    const std::string routes = file_text(SAMPLE_DIR "/frr-routes.json");
    const std::string neighbors = file_text(SAMPLE_DIR "/frr-ospf-neighbors.json");
    ASSERT_FALSE(routes.empty());
    const auto result = sw_->import_frr(routes, neighbors);
    // 10.10.0.0/24 is there twice: connected (selected) and OSPF (not).
    EXPECT_EQ(result.routes, 6);
    EXPECT_EQ(result.neighbors, 1);
    EXPECT_EQ(result.skipped, 0);
    struct Expected {
        const char *dest;
        uint32_t len;
        const char *next_hop;
        int vid, source;
        uint32_t metric;
    };
    const Expected expected[] = {
        {"10.10.0.0", 24, "0.0.0.0", 10, SW_ROUTE_CONNECTED, 0}, {"10.20.0.0", 24, "0.0.0.0", 20, SW_ROUTE_CONNECTED, 0},
        {"10.30.0.0", 24, "10.10.0.2", 10, SW_ROUTE_OSPF, 20},   {"10.31.0.0", 24, "10.10.0.2", 10, SW_ROUTE_OSPF, 20},
        {"10.99.0.0", 16, "0.0.0.0", 0, SW_ROUTE_BLACKHOLE, 0},  {"172.16.0.0", 16, "10.10.0.2", 10, SW_ROUTE_STATIC, 0},
    };
    const std::vector<sw_route_t> got = sw_->routes();
    ASSERT_EQ(got.size(), std::size(expected));
    for (size_t i = 0; i < got.size(); ++i) {
        SCOPED_TRACE(expected[i].dest);
        EXPECT_EQ(got[i].dest, ip(expected[i].dest));
        EXPECT_EQ(got[i].prefix_len, expected[i].len);
        EXPECT_EQ(got[i].next_hop, ip(expected[i].next_hop));
        EXPECT_EQ(got[i].vid, expected[i].vid);
        EXPECT_EQ(got[i].source, uint32_t(expected[i].source));
        EXPECT_EQ(got[i].metric, expected[i].metric);
    }
    const std::vector<sw_ospf_nbr_t> nbrs = sw_->ospf_neighbors();
    ASSERT_EQ(nbrs.size(), 1u);
    EXPECT_EQ(nbrs[0].addr, ip("10.10.0.2"));
    EXPECT_EQ(nbrs[0].router_id, ip("2.2.2.2"));
    EXPECT_EQ(nbrs[0].state, uint32_t(SW_OSPF_NBR_FULL));
    EXPECT_EQ(nbrs[0].priority, 1u);

    // FRR's interfaces mapped to other VLANs; one that maps to none leaves
    // its routes out.
    const auto remapped = sw_->import_frr(routes, "", {{"vlan10", 20}, {"vlan20", 4095}});
    EXPECT_EQ(remapped.routes, 5);
    EXPECT_EQ(remapped.skipped, 1);
    EXPECT_EQ(sw_->routes()[0].vid, 20);
    EXPECT_EQ(sw_->ospf_neighbors().size(), 1u) << "no neighbour text: the neighbours stay";
}

TEST_F(Routing, BadFrrTextChangesNothing) {
    const size_t routes = sw_->routes().size();
    EXPECT_THROW(sw_->import_frr("{\"10.0.0.0/8\": [", ""), swsim::Error);
    EXPECT_THROW(sw_->import_frr("", R"({"neighbours": {}})"), swsim::Error);
    EXPECT_THROW(sw_->import_frr("[1, 2]", ""), swsim::Error);
    EXPECT_EQ(sw_->routes().size(), routes);
    EXPECT_EQ(sw_->ospf_neighbors().size(), 1u);
    EXPECT_EQ(sw_->ospf_neighbors()[0].state, uint32_t(SW_OSPF_NBR_LOADING));
}

TEST_F(Routing, SwctlAddsRoutesAndImportsTheSample) {
    ok("route add 10.60.0.0/16 10.10.0.2 --protocol ospf --metric 7");
    sw_route_t r{};
    ASSERT_EQ(cfg_route_find(SW_FIND_EXACT, ip("10.60.0.0"), 16, ip("10.10.0.2"), &r), 0);
    EXPECT_EQ(r.metric, 7u);
    ok("ospf neighbor 10.10.0.2 exchange");
    EXPECT_EQ(sw_->ospf_neighbors()[0].state, uint32_t(SW_OSPF_NBR_EXCHANGE));
    const SwctlRun bad = swctl("route add 10.60.0.0/16 10.99.0.2");
    EXPECT_NE(bad.code, 0);
    EXPECT_NE(bad.err.find("on no VLAN interface's network"), std::string::npos) << bad.err;
    const SwctlRun import = swctl("frr-import --routes " SAMPLE_DIR "/frr-routes.json");
    EXPECT_EQ(import.code, 0) << import.err;
    EXPECT_NE(import.out.find("6 routes"), std::string::npos) << import.out;
}

}  // namespace
}  // namespace simtest
