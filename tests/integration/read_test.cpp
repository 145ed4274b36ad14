// Reads through a real snmpd: GET, GETNEXT, GETBULK and walks against the
// simulated switch of scenarios/default.json, which nothing here changes.
#include <algorithm>
#include <set>

#include "catalogue.hpp"
#include "fixture.hpp"

namespace it {
namespace {

class Reads : public AgentTest<Reads> {};

TEST_F(Reads, SystemGroupShowsTheSwitch) {
    const VarBind descr = must_get(oids::kSysDescr);
    EXPECT_EQ(descr.type, kOctetString);
    EXPECT_EQ(descr.bytes, sw().unit(0).model);
    EXPECT_EQ(must_get(oids::kSysName).bytes, sw().system().hostname);
    const Oid sys_uptime = child(oids::kSystem, {3, 0});
    const VarBind up = must_get(sys_uptime);
    EXPECT_EQ(up.type, kTimeTicks);
    EXPECT_GE(must_get(sys_uptime).integer, up.integer) << "sysUpTime went backwards";

    const VarBind object_id = must_get(child(oids::kSystem, {2, 0}));
    EXPECT_EQ(object_id.type, kObjectId);
    EXPECT_TRUE(starts_with(object_id.objid, oids::kPrivate)) << describe(object_id);
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.4.1.99999.2.1.1.1.0")).objid, object_id.objid)
        << "vxAgInfOID and sysObjectID differ";

    // sysDescr .. sysORLastChange and nothing else (no sysORTable).
    std::vector<Oid> seen;
    for (const VarBind &vb : reader().walk(oids::kSystem)) seen.push_back(vb.oid);
    std::vector<Oid> expected;
    for (uint32_t i = 1; i <= 8; ++i) expected.push_back(child(oids::kSystem, {i, 0}));
    EXPECT_EQ(seen, expected);
}

TEST_F(Reads, GetNextAndGetBulkCrossTableBoundaries) {
    using oids::base_port_column;
    const std::vector<uint32_t> rows = expected_port_rows(sw());
    ASSERT_GE(rows.size(), 3u);
    const auto oids_of = [](const Response &r) {
        std::vector<Oid> out;
        for (const VarBind &vb : r.varbinds) out.push_back(vb.oid);
        return out;
    };

    // From the last bridge base scalar (dot1dBaseType) into dot1dBasePortTable.
    Response r = reader().get_next({parse_oid("1.3.6.1.2.1.17.1.3.0")});
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].oid, base_port_column(1, rows.front()));
    EXPECT_EQ(r.varbinds[0].integer, rows.front());

    // From one column's last row to the next column's first row.
    EXPECT_EQ(oids_of(reader().get_next({base_port_column(1, rows.back())})),
              std::vector<Oid>{base_port_column(2, rows.front())});

    // From the spanning-tree port table's last cell over the transparent-bridge
    // scalars, past the unregistered dot1dTpFdbTable, into dot1dTpPortTable.
    const Oid tp_port_entry = parse_oid("1.3.6.1.2.1.17.4.4.1");
    EXPECT_EQ(oids_of(reader().get_bulk({parse_oid("1.3.6.1.2.1.17.2.15.1.10." + std::to_string(rows.back()))}, 0, 5)),
              (std::vector<Oid>{parse_oid("1.3.6.1.2.1.17.4.1.0"), oids::kTpAgingTime,
                                child(tp_port_entry, {1, rows[0]}), child(tp_port_entry, {1, rows[1]}),
                                child(tp_port_entry, {1, rows[2]})}));

    // Non-repeaters and repeaters together: sysName once, two rows of two columns.
    EXPECT_EQ(oids_of(reader().get_bulk(
                  {oids::kSysContact, base_port_column(1, 0), base_port_column(2, 0)}, 1, 2)),
              (std::vector<Oid>{oids::kSysName, base_port_column(1, rows[0]), base_port_column(2, rows[0]),
                                base_port_column(1, rows[1]), base_port_column(2, rows[1])}));

    // The single filtering database row, then past the unregistered
    // dot1qTpFdbTable and the empty group, forwarding and static tables to
    // the first VLAN scalar, dot1qVlanNumDeletes.
    EXPECT_EQ(oids_of(reader().get_next({parse_oid("1.3.6.1.2.1.17.7.1.2.1.1.2.1")})),
              std::vector<Oid>{parse_oid("1.3.6.1.2.1.17.7.1.4.1.0")});
}

TEST_F(Reads, FullWalkIsOrderedAndShowsExactlyTheServedObjects) {
    // The link aggregation tree, MIB-2 and the private tree, in OID order.
    const Oid lag = parse_oid("1.2.840.10006.300.43");
    const std::vector<Oid> trees = {lag, parse_oid("1.3.6.1.2.1"), oids::kPrivate};
    std::vector<VarBind> all;
    for (const Oid &tree : trees) {
        const std::vector<VarBind> walk = reader().walk(tree);
        EXPECT_FALSE(walk.empty()) << to_string(tree);
        all.insert(all.end(), walk.begin(), walk.end());
    }
    for (std::size_t i = 1; i < all.size(); ++i)
        ASSERT_LT(all[i - 1].oid, all[i].oid)
            << "walk does not increase: " << to_string(all[i - 1].oid) << " then " << to_string(all[i].oid);

    // Every OID under the trees the module owns belongs to an object it
    // serves; the forwarding tables built but kept unregistered never show.
    std::vector<Oid> owned = {parse_oid("1.3.6.1.2.1.17"), oids::kPrivate, lag};
    for (const CatalogueObject &o : catalogue()) owned.push_back(o.oid);
    std::set<std::string_view> seen;
    for (const VarBind &vb : all) {
        EXPECT_FALSE(vb.is_exception()) << describe(vb);
        EXPECT_FALSE(starts_with(vb.oid, parse_oid("1.3.6.1.2.1.17.4.3"))) << describe(vb);
        EXPECT_FALSE(starts_with(vb.oid, parse_oid("1.3.6.1.2.1.17.7.1.2.2"))) << describe(vb);
        const bool is_owned = std::any_of(owned.begin(), owned.end(), [&](const Oid &o) { return starts_with(vb.oid, o); });
        if (!is_owned) continue;
        const CatalogueObject *match = nullptr;
        for (const CatalogueObject &o : catalogue())
            if (o.table ? starts_with(vb.oid, o.oid) : vb.oid == child(o.oid, {0})) match = &o;
        if (!match) {
            ADD_FAILURE() << "not an object of the module: " << describe(vb);
        } else {
            EXPECT_TRUE(match->served) << match->name << " is not served by this build but shows: " << describe(vb);
            seen.insert(match->name);
        }
    }
    for (const CatalogueObject &o : catalogue()) {
        const bool in_walked_trees =
            std::any_of(trees.begin(), trees.end(), [&](const Oid &tree) { return starts_with(o.oid, tree); });
        if (!o.table && o.served && in_walked_trees) {
            EXPECT_TRUE(seen.count(o.name)) << "scalar missing: " << o.name;
        }
    }
}

TEST_F(Reads, Dot3StatsWalkStepsOverUnusedColumnsAndUnkeptTablesAreEmpty) {
    const Oid entry = parse_oid("1.3.6.1.2.1.10.7.2.1");
    const Oid fcs = child(entry, {3});
    const std::vector<VarBind> fcs_walk = reader().walk(fcs);
    EXPECT_EQ(row_indexes(fcs_walk, fcs), expected_port_rows(sw()));
    for (const VarBind &vb : fcs_walk) EXPECT_EQ(vb.type, kCounter32) << describe(vb);

    // The MIB does not use columns 12, 14 and 15.
    std::vector<uint32_t> columns;
    for (const VarBind &vb : reader().walk(entry))
        if (columns.empty() || columns.back() != vb.oid[entry.size()]) columns.push_back(vb.oid[entry.size()]);
    EXPECT_EQ(columns, (std::vector<uint32_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 13, 16, 17, 18, 19, 20, 21}));

    for (const char *table : {"1.3.6.1.2.1.10.7.5", "1.3.6.1.2.1.10.7.9", "1.3.6.1.2.1.10.7.10", "1.3.6.1.2.1.10.7.11"})
        EXPECT_TRUE(reader().walk(parse_oid(table)).empty()) << table;
}

}  // namespace
}  // namespace it
