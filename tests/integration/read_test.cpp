// Reads through a real snmpd: GET, GETNEXT, GETBULK and walks against the
// simulated switch of scenarios/default.json, which nothing here changes.
#include <algorithm>
#include <set>

#include "catalogue.hpp"
#include "fixture.hpp"

namespace it {
namespace {

class Reads : public AgentTest<Reads> {};

TEST_F(Reads, AgentStartsWithoutConflictsOrLoadErrors) {
    // A built-in module of snmpd that still serves one of the module's OIDs
    // shows as a duplicate registration; a module that is not initialised
    // shows as a dlsym/dlopen failure.
    EXPECT_EQ(agent().startup_problems(), std::vector<std::string>{});
}

TEST_F(Reads, SystemGroupShowsTheSwitch) {
    const VarBind descr = must_get(oids::kSysDescr);
    EXPECT_EQ(descr.type, kOctetString);
    EXPECT_EQ(descr.bytes, sw().unit(0).model);
    EXPECT_EQ(must_get(oids::kSysName).bytes, sw().system().hostname);
    const VarBind up = must_get(oids::kSysUpTime);
    EXPECT_EQ(up.type, kTimeTicks);
    EXPECT_GE(must_get(oids::kSysUpTime).integer, up.integer) << "sysUpTime went backwards";

    const VarBind object_id = must_get(oids::kSysObjectId);
    EXPECT_EQ(object_id.type, kObjectId);
    EXPECT_TRUE(starts_with(object_id.objid, oids::kPrivate)) << describe(object_id);
    EXPECT_EQ(must_get(oids::kVxAgInfOid).objid, object_id.objid) << "vxAgInfOID and sysObjectID differ";

    // The module serves the system group sysDescr .. sysORLastChange and
    // nothing else in it (no sysORTable).
    std::vector<Oid> seen;
    for (const VarBind &vb : reader().walk(oids::kSystem)) seen.push_back(vb.oid);
    std::vector<Oid> expected;
    for (uint32_t i = 1; i <= 8; ++i) expected.push_back(child(oids::kSystem, {i, 0}));
    EXPECT_EQ(seen, expected);
}

TEST_F(Reads, GetNextAndGetBulkCrossBridgeTables) {
    const std::vector<uint32_t> rows = expected_port_rows(sw());
    ASSERT_FALSE(rows.empty());

    // From the last bridge base scalar into the first row of dot1dBasePortTable.
    Response r = reader().get_next({oids::kBaseType});
    ASSERT_TRUE(r.answered);
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].oid, oids::base_port_column(1, rows.front()));
    EXPECT_EQ(r.varbinds[0].integer, rows.front());

    // From one column's last row to the next column's first row.
    r = reader().get_next({oids::base_port_column(1, rows.back())});
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].oid, oids::base_port_column(2, rows.front()));

    // From the spanning-tree port table's last cell over the transparent-bridge
    // scalars, past the unregistered dot1dTpFdbTable, into dot1dTpPortTable.
    r = reader().get_bulk({child({1, 3, 6, 1, 2, 1, 17, 2, 15, 1}, {10, rows.back()})}, 0, 5);
    ASSERT_TRUE(r.answered);
    ASSERT_EQ(r.varbinds.size(), 5u);
    EXPECT_EQ(r.varbinds[0].oid, oids::kTpLearnedEntryDiscards);
    EXPECT_EQ(r.varbinds[1].oid, oids::kTpAgingTime);
    for (std::size_t i = 2; i < 5 && i - 2 < rows.size(); ++i)
        EXPECT_EQ(r.varbinds[i].oid, child(oids::kTpPortEntry, {1, rows[i - 2]}));

    // Non-repeaters and repeaters together: sysName once, two rows of two columns.
    r = reader().get_bulk({oids::kSysContact, oids::base_port_column(1, 0), oids::base_port_column(2, 0)}, 1, 2);
    ASSERT_TRUE(r.answered);
    ASSERT_EQ(r.varbinds.size(), 5u);
    EXPECT_EQ(r.varbinds[0].oid, oids::kSysName);
    EXPECT_EQ(r.varbinds[1].oid, oids::base_port_column(1, rows[0]));
    EXPECT_EQ(r.varbinds[2].oid, oids::base_port_column(2, rows[0]));
    EXPECT_EQ(r.varbinds[3].oid, oids::base_port_column(1, rows[1]));
    EXPECT_EQ(r.varbinds[4].oid, oids::base_port_column(2, rows[1]));

    // The single filtering database row, then past the unregistered
    // dot1qTpFdbTable and the empty group, forwarding and static tables to
    // the first VLAN scalar, dot1qVlanNumDeletes.
    r = reader().get_next({child(oids::kFdbDynamicCount, {1})});
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].oid, parse_oid("1.3.6.1.2.1.17.7.1.4.1.0")) << describe(r.varbinds[0]);
}

TEST_F(Reads, FullWalkIsOrderedAndShowsExactlyTheServedObjects) {
    // The link aggregation tree (1.2.840...), MIB-2 and the private tree, in
    // OID order.
    const std::vector<Oid> trees = {oids::kLag, parse_oid("1.3.6.1.2.1"), oids::kPrivate};
    std::vector<VarBind> all;
    for (const Oid &tree : trees) {
        const std::vector<VarBind> walk = reader().walk(tree);
        EXPECT_FALSE(walk.empty()) << to_string(tree);
        all.insert(all.end(), walk.begin(), walk.end());
    }

    for (std::size_t i = 1; i < all.size(); ++i)
        ASSERT_TRUE(std::lexicographical_compare(all[i - 1].oid.begin(), all[i - 1].oid.end(), all[i].oid.begin(),
                                                 all[i].oid.end()))
            << "walk does not increase: " << to_string(all[i - 1].oid) << " then " << to_string(all[i].oid);

    // Every OID under the trees the module owns belongs to an object it
    // serves; the forwarding tables built but kept unregistered never show.
    std::vector<Oid> owned = {oids::kBridge, oids::kPrivate, oids::kLag};
    for (const CatalogueObject &o : catalogue()) owned.push_back(o.oid);
    std::set<std::string_view> seen;
    for (const VarBind &vb : all) {
        EXPECT_FALSE(vb.is_exception()) << describe(vb);
        EXPECT_FALSE(starts_with(vb.oid, oids::kTpFdbTable)) << describe(vb);
        EXPECT_FALSE(starts_with(vb.oid, oids::kQTpFdbTable)) << describe(vb);
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

}  // namespace
}  // namespace it
