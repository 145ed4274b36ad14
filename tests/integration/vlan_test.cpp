// VLANs through a real snmpd: a VLAN's life from createAndGo to destroy with
// its name, members and a port's PVID; and walks of the VLAN tables on a
// switch with every VLAN in use.
#include <chrono>
#include <cstdio>

#include "fixture.hpp"

namespace it {
namespace {

const Oid kStaticEntry = parse_oid("1.3.6.1.2.1.17.7.1.4.3.1");
const Oid kCurrentEntry = parse_oid("1.3.6.1.2.1.17.7.1.4.2.1");
const Oid kPortVlanEntry = parse_oid("1.3.6.1.2.1.17.7.1.4.5.1");
const Oid kPrivateVlanEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.12.1.1");
enum StaticColumn : uint32_t { kName = 1, kEgress = 2, kUntagged = 4, kRowStatus = 5 };

Oid static_column(uint32_t column, uint32_t vid) { return child(kStaticEntry, {column, vid}); }
SetValue gauge(Oid oid, int64_t value) { return {std::move(oid), kGauge32, value, {}, {}}; }

class Vlans : public AgentTest<Vlans> {};

TEST_F(Vlans, VlanLifeFromCreateAndGoToDestroy) {
    constexpr uint32_t kVid = 100;
    if (sw().vlan(kVid).exists) sw().vlan_delete(kVid);  // the scenario has one; start without it

    ASSERT_EQ(set_one(SetValue::integer32(static_column(kRowStatus, kVid), 4)), kNoError);
    EXPECT_TRUE(sw().vlan(kVid).exists);
    EXPECT_TRUE(sw().vlan(kVid).active);
    ASSERT_EQ(set_one(SetValue::octets(static_column(kName, kVid), "engineering")), kNoError);
    EXPECT_EQ(sw().vlan(kVid).name, "engineering");

    // Ports 1/1 .. 1/3 tagged, then 1/3 untagged; port 1/3's PVID is the VLAN.
    ASSERT_EQ(set_one(SetValue::octets(static_column(kEgress, kVid), "\xe0")), kNoError);
    ASSERT_EQ(set_one(SetValue::octets(static_column(kUntagged, kVid), std::string("\x20\x00", 2))), kNoError);
    const uint32_t port3 = port_index(0, 2);
    ASSERT_EQ(set_one(gauge(child(kPortVlanEntry, {1, port3}), kVid)), kNoError);

    // Read back as a manager sees it: two units, so 64 octets.
    const std::string egress = "\xe0" + std::string(63, '\0');
    EXPECT_EQ(must_get(static_column(kEgress, kVid)).bytes, egress);
    EXPECT_EQ(must_get(static_column(kUntagged, kVid)).bytes, "\x20" + std::string(63, '\0'));
    EXPECT_EQ(must_get(static_column(kRowStatus, kVid)).integer, 1);
    const VarBind pvid = must_get(child(kPortVlanEntry, {1, port3}));
    EXPECT_EQ(pvid.type, kGauge32);
    EXPECT_EQ(pvid.integer, kVid);

    // The current table lists it as permanent, with its egress ports.
    EXPECT_EQ(must_get(child(kCurrentEntry, {6, 0, kVid})).integer, 2);
    EXPECT_EQ(must_get(child(kCurrentEntry, {4, 0, kVid})).bytes, egress);

    // Refused: notReady is no state to ask for, 0 is out of range, a name for
    // a VLAN that does not exist.
    EXPECT_EQ(set_one(SetValue::integer32(static_column(kRowStatus, kVid), 3)), kGenErr);
    EXPECT_EQ(set_one(SetValue::integer32(static_column(kRowStatus, kVid), 0)), kWrongValue);
    EXPECT_EQ(set_one(SetValue::octets(static_column(kName, 333), "x")), kGenErr);
    EXPECT_FALSE(sw().vlan(333).exists);

    ASSERT_EQ(set_one(SetValue::integer32(static_column(kRowStatus, kVid), 6)), kNoError);
    EXPECT_FALSE(sw().vlan(kVid).exists);
    EXPECT_EQ(type_of(static_column(kName, kVid)), kNoSuchInstance);
    EXPECT_EQ(must_get(child(kPortVlanEntry, {1, port3})).integer, 1) << "PVID falls back to the default VLAN";
}

// A switch with every VLAN, port and trunk: the VLAN tables are walked in one go.
class VlanScale : public AgentTest<VlanScale> {
public:
    static constexpr const char *kScenario = "scenarios/max.json";
};

TEST_F(VlanScale, WalksOfTheVlanTablesListEveryVlanQuickly) {
    // Recreating one VLAN makes the platform flag a VLAN change: the tables
    // then list every VLAN.
    sw().vlan_delete(4094);
    sw().vlan_create(4094, "last");
    Session s(agent().port(), "public", 20000, 0);
    const struct {
        const char *name;
        Oid entry;
        size_t objects;
    } tables[] = {{"dot1qVlanStaticTable", kStaticEntry, 5 * SW_MAX_VLAN_ID},
                  {"dot1qVlanCurrentTable", kCurrentEntry, 5 * SW_MAX_VLAN_ID},
                  {"vlanTable", kPrivateVlanEntry, SW_MAX_VLAN_ID},
                  {"dot1qPortVlanTable", kPortVlanEntry, 6 * (SW_MAX_UNITS * 64 + SW_MAX_TRUNKS)}};
    for (const auto &t : tables) {
        const auto start = std::chrono::steady_clock::now();
        const std::vector<VarBind> all = s.walk(t.entry, 50);
        const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        std::printf("walk of %s: %zu objects in %.2f s\n", t.name, all.size(), seconds);
        EXPECT_EQ(all.size(), t.objects) << t.name;
        EXPECT_LT(seconds, 30.0) << t.name;
    }
}

}  // namespace
}  // namespace it
