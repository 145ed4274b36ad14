// Reads through a real snmpd: GET, GETNEXT, GETBULK and walks against the
// simulated switch of scenarios/default.json, which nothing here changes.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "catalogue.hpp"
#include "fixture.hpp"

namespace it {
namespace {

class Reads : public AgentTest<Reads> {};

std::string scenario_base_mac() {
    std::ifstream in(source_dir() + "/scenarios/default.json");
    const std::string text = nlohmann::json::parse(in).at("system").at("base_mac").get<std::string>();
    unsigned b[6] = {};
    if (std::sscanf(text.c_str(), "%x:%x:%x:%x:%x:%x", &b[0], &b[1], &b[2], &b[3], &b[4], &b[5]) != 6) return {};
    std::string mac;
    for (unsigned x : b) mac.push_back(char(x));
    return mac;
}

TEST_F(Reads, AgentStartsWithoutConflictsOrLoadErrors) {
    // A built-in module of snmpd that still serves one of the module's OIDs
    // shows as a duplicate registration; a module that is not initialised
    // shows as a dlsym/dlopen failure.
    EXPECT_EQ(agent().startup_problems(), std::vector<std::string>{});
}

TEST_F(Reads, SystemGroupShowsTheSwitch) {
    const swsim::SystemInfo sys = sw().system();

    VarBind descr = must_get(oids::kSysDescr);
    EXPECT_EQ(descr.type, kOctetString);
    EXPECT_EQ(descr.bytes, sw().unit(0).model);

    VarBind name = must_get(oids::kSysName);
    EXPECT_EQ(name.type, kOctetString);
    EXPECT_EQ(name.bytes, sys.hostname);
    EXPECT_EQ(must_get(oids::kSysContact).bytes, sys.contact);
    EXPECT_EQ(must_get(oids::kSysLocation).bytes, sys.location);

    VarBind services = must_get(oids::kSysServices);
    EXPECT_EQ(services.type, kInteger);
    EXPECT_EQ(services.integer, 2);

    VarBind up1 = must_get(oids::kSysUpTime);
    EXPECT_EQ(up1.type, kTimeTicks);
    VarBind up2 = must_get(oids::kSysUpTime);
    EXPECT_GE(up2.integer, up1.integer) << "sysUpTime went backwards";

    VarBind object_id = must_get(oids::kSysObjectId);
    EXPECT_EQ(object_id.type, kObjectId);
    EXPECT_TRUE(starts_with(object_id.objid, oids::kPrivate)) << describe(object_id);
    VarBind agent_oid = must_get(oids::kVxAgInfOid);
    EXPECT_EQ(agent_oid.objid, object_id.objid) << "vxAgInfOID and sysObjectID differ";

    // The module serves the system group sysDescr .. sysORLastChange and
    // nothing else in it (no sysORTable).
    std::vector<Oid> seen;
    for (const VarBind &vb : reader().walk(oids::kSystem)) seen.push_back(vb.oid);
    std::vector<Oid> expected;
    for (uint32_t i = 1; i <= 8; ++i) expected.push_back(child(oids::kSystem, {i, 0}));
    EXPECT_EQ(seen, expected);
}

TEST_F(Reads, PrivateIdentityAndClockScalars) {
    const swsim::SystemInfo sys = sw().system();
    int major = 0, minor = 0, release = 0;
    ASSERT_EQ(std::sscanf(sys.fw_version.c_str(), "%d.%d.%d", &major, &minor, &release), 3)
        << "the scenario's firmware version should read major.minor.release: " << sys.fw_version;
    const Oid agent_info = parse_oid("1.3.6.1.4.1.99999.2.1.1");
    EXPECT_EQ(must_get(child(agent_info, {8, 0})).integer, major);
    EXPECT_EQ(must_get(child(agent_info, {9, 0})).integer, minor);
    EXPECT_EQ(must_get(child(agent_info, {10, 0})).integer, release);

    VarBind hash = must_get(oids::kSwHashConfig);
    EXPECT_EQ(hash.type, kOctetString);
    EXPECT_EQ(hash.bytes.size(), 16u);

    VarBind zone_name = must_get(oids::kSysTimeZoneName);
    EXPECT_EQ(zone_name.bytes, sys.tz_name);
    const int offset = std::abs(sys.tz_offset_min);
    char zone[16];
    std::snprintf(zone, sizeof zone, "%c%02d:%02d", sys.tz_offset_min < 0 ? '-' : sys.tz_offset_min > 0 ? '+' : ' ',
                  offset / 60, offset % 60);
    EXPECT_EQ(must_get(parse_oid("1.3.6.1.4.1.99999.3.5.201.1.20.3.0")).bytes, zone);
}

TEST_F(Reads, InterfaceAndBridgeScalarsCountTheSwitch) {
    const std::vector<uint32_t> rows = expected_port_rows(sw());
    VarBind if_number = must_get(oids::kIfNumber);
    EXPECT_EQ(if_number.type, kInteger);
    EXPECT_EQ(if_number.integer, int64_t(rows.size())) << "ports of present units + non-empty trunks";

    int user_ports = 0;
    for (int u = 0; u < 8; ++u)
        if (sw().unit(u).present) user_ports += sw().unit(u).ports;
    EXPECT_EQ(must_get(oids::kBaseNumPorts).integer, user_ports) << "trunks are not counted";
    EXPECT_EQ(must_get(oids::kBaseType).integer, 2) << "transparent-only";

    VarBind address = must_get(oids::kBaseBridgeAddress);
    EXPECT_EQ(address.type, kOctetString);
    EXPECT_EQ(address.bytes, scenario_base_mac()) << "the MAC address of unit 1";

    VarBind ageing = must_get(oids::kTpAgingTime);
    EXPECT_EQ(ageing.type, kInteger);
    EXPECT_EQ(ageing.integer, sw().system().mac_ageing);

    VarBind discards = must_get(oids::kTpLearnedEntryDiscards);
    EXPECT_EQ(discards.type, kCounter32);

    int dynamic = 0;
    for (const swsim::FdbInfo &e : sw().fdb()) dynamic += e.is_static ? 0 : 1;
    VarBind count = must_get(child(oids::kFdbDynamicCount, {1}));
    EXPECT_EQ(count.type, kCounter32);
    EXPECT_EQ(count.integer, dynamic) << "learned (non-static) addresses";
}

TEST_F(Reads, BridgePortTablesListPortsAndTrunks) {
    const std::vector<uint32_t> rows = expected_port_rows(sw());
    const std::vector<VarBind> base = reader().walk(parse_oid("1.3.6.1.2.1.17.1.4"));
    const Oid base_port = child(oids::kBasePortEntry, {1});
    const Oid base_if_index = child(oids::kBasePortEntry, {2});
    EXPECT_EQ(row_indexes(base, base_port), rows);
    EXPECT_EQ(row_indexes(base, base_if_index), rows);
    for (const VarBind &vb : base) {
        if (starts_with(vb.oid, base_port) || starts_with(vb.oid, base_if_index)) {
            EXPECT_EQ(vb.type, kInteger);
            EXPECT_EQ(vb.integer, int64_t(vb.oid.back())) << "bridge port = interface index: " << describe(vb);
        }
    }

    const std::vector<VarBind> tp = reader().walk(parse_oid("1.3.6.1.2.1.17.4.4"));
    EXPECT_EQ(row_indexes(tp, child(oids::kTpPortEntry, {1})), rows);
    const Oid max_info = child(oids::kTpPortEntry, {2});
    int checked = 0;
    for (const VarBind &vb : tp) {
        if (!starts_with(vb.oid, max_info) || vb.oid.back() > 512) continue;
        const int unit0 = int(vb.oid.back() - 1) / 64, port0 = int(vb.oid.back() - 1) % 64;
        EXPECT_EQ(vb.integer, sw().port(unit0, port0).mtu + 22) << describe(vb);
        ++checked;
    }
    EXPECT_GT(checked, 0);
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

    // From the table's last cell over the transparent-bridge scalars, past
    // the unregistered dot1dTpFdbTable, into dot1dTpPortTable.
    r = reader().get_bulk({oids::base_port_column(5, rows.back())}, 0, 5);
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
    std::vector<VarBind> all = reader().walk(parse_oid("1.3.6.1.2.1"));
    const std::vector<VarBind> priv = reader().walk(oids::kPrivate);
    ASSERT_FALSE(priv.empty());
    all.insert(all.end(), priv.begin(), priv.end());

    for (std::size_t i = 1; i < all.size(); ++i)
        ASSERT_TRUE(std::lexicographical_compare(all[i - 1].oid.begin(), all[i - 1].oid.end(), all[i].oid.begin(),
                                                 all[i].oid.end()))
            << "walk does not increase: " << to_string(all[i - 1].oid) << " then " << to_string(all[i].oid);

    // Every OID under the trees the module owns belongs to an object it
    // serves; the forwarding tables built but kept unregistered never show.
    std::vector<Oid> owned = {oids::kBridge, oids::kPrivate};
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
        const bool in_walked_trees = starts_with(o.oid, parse_oid("1.3.6.1.2.1")) || starts_with(o.oid, oids::kPrivate);
        if (!o.table && o.served && in_walked_trees) {
            EXPECT_TRUE(seen.count(o.name)) << "scalar missing: " << o.name;
        }
    }
}

TEST_F(Reads, PortTableHasARowPerPortAndNonEmptyTrunk) {
    const std::vector<uint32_t> rows = expected_port_rows(sw());
    const Oid table = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.2.1");
    const std::vector<VarBind> walk = reader().walk(table);
    for (uint32_t column = 2; column <= 11; ++column)
        EXPECT_EQ(row_indexes(walk, child(oids::kPortEntry, {column})), rows) << "column " << column;
    EXPECT_EQ(walk.size(), rows.size() * 10) << "columns 2..11 only";

    std::map<Oid, VarBind> cell;
    for (const VarBind &vb : walk) cell[vb.oid] = vb;
    for (uint32_t index : rows) {
        const VarBind &trunk = cell[oids::port_column(oids::kPortTrunkIndex, index)];
        if (index > 512) {
            EXPECT_EQ(trunk.integer, int64_t(index) - 512) << "a trunk row reads its own trunk ID";
            continue;
        }
        const swsim::PortInfo port = sw().port(int(index - 1) / 64, int(index - 1) % 64);
        EXPECT_EQ(trunk.integer, port.trunk0 + 1) << "port " << index;
        EXPECT_EQ(cell[oids::port_column(oids::kPortName, index)].bytes, port.description) << "port " << index;
        const VarBind &status = cell[oids::port_column(8, index)];
        if (!port.link) {
            EXPECT_EQ(status.integer, 9) << "linkDown, port " << index;
        } else if (port.speed == 1000 && port.full_duplex) {
            EXPECT_EQ(status.integer, 7) << "fd1000, port " << index;
        }
    }
}

}  // namespace
}  // namespace it
