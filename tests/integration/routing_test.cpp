// Routing through a real snmpd: net-snmp's own snmpwalk and snmpbulkwalk
// over every routing subtree find every OID in strictly increasing order,
// GETNEXT and GETBULK cross the hand-written tables' boundaries, the OSPF and
// RIP scalars carry the platform's types, and changes to the switch show at
// the next request.
#include <cstdio>
#include <fstream>
#include <sstream>

#include "fixture.hpp"

namespace it {
namespace {

class Routing : public AgentTest<Routing> {
protected:
    // Runs one of net-snmp's tools on a subtree; its output lines and exit code.
    struct ToolRun {
        int code = -1;
        std::vector<std::string> lines;
        std::string errors;
    };
    ToolRun tool(const std::string &name, const std::string &subtree, const std::string &options = "") {
        const std::string err = agent().dir() + "/tool.err";
        const std::string cmd = name + " -v2c -c public -On -m '' -t 5 -r 1 " + options + " 127.0.0.1:" +
                                std::to_string(agent().port()) + " " + subtree + " 2>" + err;
        ToolRun run;
        FILE *p = popen(cmd.c_str(), "r");
        if (!p) return run;
        char line[4096];
        while (std::fgets(line, sizeof line, p)) run.lines.push_back(line);
        run.code = pclose(p);
        std::ifstream in(err);
        std::stringstream s;
        s << in.rdbuf();
        run.errors = s.str();
        return run;
    }
    std::vector<Oid> oids_of(const Response &r) {
        std::vector<Oid> out;
        for (const VarBind &vb : r.varbinds) out.push_back(vb.oid);
        return out;
    }
    // The objects under `prefix` in a walk.
    static std::vector<VarBind> under(const std::vector<VarBind> &walk, const Oid &prefix) {
        std::vector<VarBind> out;
        for (const VarBind &vb : walk)
            if (starts_with(vb.oid, prefix)) out.push_back(vb);
        return out;
    }
};

const char *const kSubtrees[] = {"1.3.6.1.2.1.4.20", "1.3.6.1.2.1.4.24", "1.3.6.1.2.1.14", "1.3.6.1.2.1.23",
                                 "1.3.6.1.2.1.68"};

TEST_F(Routing, NetSnmpToolsWalkEveryRoutingSubtreeInOrder) {
    for (const char *subtree : kSubtrees) {
        SCOPED_TRACE(subtree);
        const std::vector<VarBind> ours = reader().walk(parse_oid(subtree));
        ASSERT_FALSE(ours.empty());
        for (size_t i = 1; i < ours.size(); ++i) ASSERT_LT(ours[i - 1].oid, ours[i].oid);
        for (const VarBind &vb : ours) EXPECT_FALSE(vb.is_exception()) << describe(vb);
        // snmpwalk stops with "OID not increasing" on a step backwards.
        for (const auto &[name, options] : std::vector<std::pair<std::string, std::string>>{
                 {"snmpwalk", ""}, {"snmpbulkwalk", "-Cr7"}, {"snmpbulkwalk", "-Cr50"}}) {
            const ToolRun run = tool(name, subtree, options);
            EXPECT_EQ(run.code, 0) << name << " " << options << ": " << run.errors;
            EXPECT_EQ(run.errors.find("not increasing"), std::string::npos) << run.errors;
            size_t objects = 0;
            for (const std::string &l : run.lines) objects += l.rfind(".1.3.6.1.2.1.", 0) == 0;
            EXPECT_EQ(objects, ours.size()) << name << " " << options;
        }
    }
}

TEST_F(Routing, EveryHandWrittenTableShowsItsRows) {
    const std::vector<VarBind> all = reader().walk(parse_oid("1.3.6.1.2.1"));
    // (table, rows of the default scenario, accessible columns)
    const struct {
        const char *oid;
        size_t rows, columns;
    } tables[] = {
        {"1.3.6.1.2.1.4.20", 4, 5},        {"1.3.6.1.2.1.4.24.4", 11, 16},    {"1.3.6.1.2.1.4.24.7", 11, 11},
        {"1.3.6.1.2.1.14.2", 2, 14},       {"1.3.6.1.2.1.14.3", 1, 5},        {"1.3.6.1.2.1.14.7", 2, 24},
        {"1.3.6.1.2.1.14.8", 2, 5},        {"1.3.6.1.2.1.14.9", 0, 13},       {"1.3.6.1.2.1.14.10", 4, 14},
        {"1.3.6.1.2.1.14.11", 0, 11},      {"1.3.6.1.2.1.14.12", 1, 7},       {"1.3.6.1.2.1.14.14", 1, 7},
        {"1.3.6.1.2.1.14.17", 2, 4},       {"1.3.6.1.2.1.23.2", 1, 5},        {"1.3.6.1.2.1.23.4", 1, 6},
        {"1.3.6.1.2.1.68.1.3", 2, 14},     {"1.3.6.1.2.1.68.1.4", 3, 1},      {"1.3.6.1.2.1.68.2.4", 2, 12},
    };
    for (const auto &t : tables) EXPECT_EQ(under(all, parse_oid(t.oid)).size(), t.rows * t.columns) << t.oid;
    const size_t lsas = sw().ospf_lsas().size();
    const size_t local = under(all, parse_oid("1.3.6.1.2.1.14.17.1.6")).size();
    const size_t external = under(all, parse_oid("1.3.6.1.2.1.14.12.1.1")).size();
    EXPECT_EQ(under(all, parse_oid("1.3.6.1.2.1.14.4.1.1")).size() + local + external, lsas)
        << "the three link-state tables show the database between them";
}

TEST_F(Routing, GetNextAndGetBulkCrossTheTablesBoundaries) {
    const std::vector<VarBind> cidr = reader().walk(parse_oid("1.3.6.1.2.1.4.24.4"));
    const std::vector<VarBind> inet = reader().walk(parse_oid("1.3.6.1.2.1.4.24.7"));
    ASSERT_FALSE(cidr.empty());
    ASSERT_FALSE(inet.empty());
    const Oid inet_number = parse_oid("1.3.6.1.2.1.4.24.6.0");
    // The route tables' last objects lead to the next count and table.
    EXPECT_EQ(oids_of(reader().get_next({cidr.back().oid})), std::vector<Oid>{inet_number});
    EXPECT_EQ(oids_of(reader().get_next({inet_number})), std::vector<Oid>{inet.front().oid});
    const Oid after_inet = reader().get_next({inet.back().oid}).varbinds.at(0).oid;
    EXPECT_FALSE(starts_with(after_inet, parse_oid("1.3.6.1.2.1.4.24"))) << to_string(after_inet);
    // Into a table from an index cut short, and from a column's last row
    // to the next column's first.
    EXPECT_EQ(oids_of(reader().get_next({parse_oid("1.3.6.1.2.1.4.24.4.1.1.10.10")})), std::vector<Oid>{cidr[1].oid});
    const size_t rows = sw().routes().size();
    EXPECT_EQ(oids_of(reader().get_next({cidr[rows - 1].oid})), std::vector<Oid>{cidr[rows].oid});
    // The empty virtual link tables are stepped over: from the last metric
    // object to the first neighbour.
    const std::vector<VarBind> metric = reader().walk(parse_oid("1.3.6.1.2.1.14.8"));
    const std::vector<VarBind> nbr = reader().walk(parse_oid("1.3.6.1.2.1.14.10"));
    ASSERT_FALSE(metric.empty());
    ASSERT_FALSE(nbr.empty());
    EXPECT_EQ(oids_of(reader().get_next({metric.back().oid})), std::vector<Oid>{nbr.front().oid});
    // A GETBULK from before the route tables runs through them in order.
    Response bulk = reader().get_bulk({parse_oid("1.3.6.1.2.1.4.24.3.0")}, 0, 30);
    ASSERT_EQ(bulk.varbinds.size(), 30u);
    for (size_t i = 0; i < 30; ++i) EXPECT_EQ(bulk.varbinds[i].oid, cidr[i].oid);
    // Two repeaters in two tables, side by side.
    bulk = reader().get_bulk({parse_oid("1.3.6.1.2.1.14.10"), parse_oid("1.3.6.1.2.1.23.4")}, 0, 2);
    ASSERT_EQ(bulk.varbinds.size(), 4u);
    EXPECT_EQ(bulk.varbinds[0].oid, nbr[0].oid);
    EXPECT_EQ(bulk.varbinds[2].oid, nbr[1].oid);
    EXPECT_TRUE(starts_with(bulk.varbinds[1].oid, parse_oid("1.3.6.1.2.1.23.4.1.1")));
}

TEST_F(Routing, GetAnswersObjectsAndNothingElse) {
    const std::vector<VarBind> cidr = reader().walk(parse_oid("1.3.6.1.2.1.4.24.4"));
    ASSERT_FALSE(cidr.empty());
    const VarBind got = must_get(cidr[3].oid);
    EXPECT_EQ(got.type, cidr[3].type);
    Oid bad = cidr[3].oid;
    bad.push_back(0);
    for (const Oid &o : {bad, parse_oid("1.3.6.1.2.1.4.24.4.1.1"), parse_oid("1.3.6.1.2.1.4.24.4.1.17.0.0.0.0.0.0.0.0.0.0.0.0.0"),
                         parse_oid("1.3.6.1.2.1.4.24.7.1.1.1.4.10.10.0.0.24.2.0.0.0.0")}) {
        Response r = reader().get({o});
        ASSERT_EQ(r.varbinds.size(), 1u);
        EXPECT_TRUE(r.varbinds[0].type == kNoSuchInstance || r.varbinds[0].type == kNoSuchObject) << describe(r.varbinds[0]);
    }
    // A SET of a route is refused: the tables are read-only.
    EXPECT_EQ(set_one(SetValue::integer32(parse_oid("1.3.6.1.2.1.4.24.4.1.16.10.10.0.0.255.255.255.0.0.0.0.0.0"), 2)),
              kNotWritable);
}

TEST_F(Routing, OspfAndRipScalarsCarryThePlatformsTypes) {
    const VarBind id = must_get(parse_oid("1.3.6.1.2.1.14.1.1.0"));
    EXPECT_EQ(id.type, kIpAddress);
    EXPECT_EQ(id.bytes, std::string("\x01\x01\x01\x01", 4));
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.2.1.14.1.3.0")).integer, 2);
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.2.1.14.1.11.0")).integer, -1);
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.2.1.14.1.6.0")).type, kGauge32);
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.2.1.23.1.2.0")).type, kCounter32);
    // The group has no objects 17 to 20.
    EXPECT_EQ(oids_of(reader().get_next({parse_oid("1.3.6.1.2.1.14.1.16.0")})),
              std::vector<Oid>{parse_oid("1.3.6.1.2.1.14.1.21.0")});
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.2.1.68.1.1.0")).integer, 2) << "vrrpNodeVersion";
}

TEST_F(Routing, ChangesShowAtTheNextRequest) {
    uint32_t dest = 0, hop = 0;
    ip_str_to_uint32("10.77.0.0", &dest);
    ip_str_to_uint32("10.10.0.2", &hop);
    const Oid metric = parse_oid("1.3.6.1.2.1.4.24.4.1.11.10.77.0.0.255.255.0.0.0.10.10.0.2");
    Response before = reader().get({metric});
    ASSERT_EQ(before.varbinds.size(), 1u);
    EXPECT_EQ(before.varbinds[0].type, kNoSuchInstance);
    swsim::Switch::Route r;
    r.dest = dest;
    r.prefix_len = 16;
    r.next_hop = hop;
    r.metric = 42;
    sw().route_add(r);
    EXPECT_EQ(must_get(metric).integer, 42);
    const Oid count = parse_oid("1.3.6.1.2.1.4.24.3.0");
    EXPECT_EQ(size_t(must_get(count).integer), sw().routes().size());
    sw().route_remove(dest, 16, hop);
    EXPECT_EQ(reader().get({metric}).varbinds.at(0).type, kNoSuchInstance);

    const Oid state = parse_oid("1.3.6.1.2.1.14.10.1.6.10.10.0.4.0");
    EXPECT_EQ(must_get(state).integer, SW_OSPF_NBR_EXCHANGE_START);
    sw().ospf_set_neighbor_state(0x0a0a0004, SW_OSPF_NBR_LOADING);
    EXPECT_EQ(must_get(state).integer, SW_OSPF_NBR_LOADING);

    // A VRRP router that goes to initialize keeps its row; one that is
    // master counts it.
    const Oid vrrp_state = parse_oid("1.3.6.1.2.1.68.1.3.1.3.1020.2");
    sw().vrrp_set_state(20, 2, SW_VRRP_MASTER);
    EXPECT_EQ(must_get(vrrp_state).integer, SW_VRRP_MASTER);
    EXPECT_GE(must_get(parse_oid("1.3.6.1.2.1.68.2.4.1.1.1020.2")).integer, 1);
}

}  // namespace
}  // namespace it
