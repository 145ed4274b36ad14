// The interface index model: conversions at the range edges, names and
// descriptions, population order, ifNumber and the row existence rule.
#include "agent/ifindex.hpp"
#include "fixture.hpp"
#include "scalars/catalogue.hpp"

namespace unit {
namespace {

TEST(IfIndexConversions, RangeEdges) {
    for (int32_t i : {513, 640}) EXPECT_TRUE(ifindex_is_trunk(i) && !ifindex_is_trunk(i == 513 ? 512 : 641));
    for (int32_t i : {1001, 5094}) EXPECT_TRUE(ifindex_is_vlan(i) && !ifindex_is_vlan(i == 1001 ? 1000 : 5095));
    // Index 0 takes apart by arithmetic shift and truncating remainder.
    EXPECT_EQ(ifindex_to_unit0(0), -1);
    EXPECT_EQ(ifindex_to_port0(0), -1);
    // A trunk is unit0 0, port0 512 + trunk0.
    EXPECT_EQ(ifindex_to_port0(640), 639);
    EXPECT_EQ(ifindex_to_unit0(640) + ifindex_to_trunk0(513), 0);
    for (int32_t i : {1, 64, 65, 512}) EXPECT_EQ(port_to_ifindex(ifindex_to_unit0(i), ifindex_to_port0(i)), i);
}

class IfIndexTest : public SwitchTest {
protected:
    // Unit 2 is known but absent; trunk 1 holds port 1/3, trunk 4 is empty,
    // trunk 5 holds port 1/7.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}, {"present": false, "ports": 24}, {"ports": 10}],
                   "trunks": [{"id": 1, "members": ["1/3"]}, {"id": 4}, {"id": 5, "members": ["1/7"]}]})";
    }
};

TEST_F(IfIndexTest, NamesAndDescriptions) {
    struct Case {
        int32_t index;
        const char *name, *descr;
    };
    const Case cases[] = {
        {1, "eth-1/1", "Ethernet Port on unit 1, port:1"},
        {64, "eth-1/64", "Ethernet Port on unit 1, port:64"},
        {65, "eth-2/1", "Ethernet Port on unit 2, port:1"},
        // The texts test 512 .. 639 for trunks, one below the conversions.
        {512, "port-ch-512", "Trunk Port ID 00512"},
        {513, "port-ch-1", "Trunk Port ID 0001"},
        {521, "port-ch-9", "Trunk Port ID 0009"},
        {522, "port-ch-10", "Trunk Port ID 0010"},
        {639, "port-ch-127", "Trunk Port ID 00127"},
        {640, "eth-1/640", "Ethernet Port on unit 1, port:640"},
        {1001, "vlan-1", "Ethernet Port on unit 16, port:41"},
        {5094, "vlan-4094", "Ethernet Port on unit 80, port:38"},
        {5095, "eth-80/39", "Ethernet Port on unit 80, port:39"},
        {7, "eth-1/7", "Trunk Member port on Trunk ID 5"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(read_text(get_ifName, c.index), c.name) << c.index;
        EXPECT_EQ(read_text(get_ifDescr, c.index), c.descr) << c.index;
    }
}

TEST_F(IfIndexTest, PopulationOrderAndCount) {
    std::vector<int32_t> expected;
    for (int32_t i = 1; i <= 28; ++i) expected.push_back(i);
    for (int32_t i = 129; i <= 138; ++i) expected.push_back(i);
    std::vector<int32_t> ports_only = expected;
    expected.push_back(513);  // trunk 1; trunk 4 is empty
    expected.push_back(517);  // trunk 5

    // The port count is asked again before every port: 29 + 11 calls.
    EXPECT_EQ(count_calls("cfg_equip_get_user_eth_ports", [] { EXPECT_EQ(ifindex_populate(add_int_row, true), 0); }),
              40u);
    EXPECT_EQ(rows().ints, expected);
    EXPECT_EQ(get_ifNumber(), static_cast<int32_t>(expected.size()));

    rows().clear();
    ifindex_populate(add_int_row, false);
    EXPECT_EQ(rows().ints, ports_only);

    // A trunk that gains a member appears; a unit that leaves takes its ports.
    sw().trunk_add_port(3, 0, 10);
    sw().set_unit_present(2, false);
    EXPECT_EQ(get_ifNumber(), 28 + 3);

    // A damaged port count (the platform refuses it) or a failing one walks
    // none of the unit's ports, and the walk goes on with the next unit.
    sw().set_unit_present(2, true);
    get_status()->units[0].user_ports = 100'000'000;
    rows().clear();
    ifindex_populate(add_int_row, false);
    EXPECT_EQ(rows().ints, std::vector<int32_t>(ports_only.begin() + 28, ports_only.end()));
    sw().fault_set("cfg_equip_get_user_eth_ports", -1, -1);
    EXPECT_EQ(unit_port_count(2), 0);
}

TEST_F(IfIndexTest, RowExistence) {
    static std::vector<int32_t> removed;
    removed.clear();
    auto remove = [](int32_t i) { removed.push_back(i); };

    // Out-of-range units and VLAN interfaces need no platform call.
    auto none = calls_of([&] {
        EXPECT_EQ(ifindex_row_exists(0, remove), 0);
        EXPECT_EQ(ifindex_row_exists(641, remove), 0);
        EXPECT_EQ(ifindex_row_exists(-5, remove), 0);
        EXPECT_EQ(ifindex_row_exists(2000, remove), 1);
        EXPECT_EQ(ifindex_row_exists(5094, remove), 1);
    });
    EXPECT_TRUE(none.empty()) << none.front().call;
    EXPECT_TRUE(removed.empty());

    EXPECT_EQ(ifindex_row_exists(28, remove), 1);
    EXPECT_EQ(ifindex_row_exists(60, remove), 1);  // the port within a unit is not tested
    EXPECT_EQ(ifindex_row_exists(513, remove), 1);
    EXPECT_EQ(ifindex_row_exists(65, remove), 0);   // unit 2 absent
    EXPECT_EQ(ifindex_row_exists(516, remove), 0);  // trunk 4 empty
    EXPECT_EQ(ifindex_row_exists(520, remove), 0);  // trunk 8 not configured
    EXPECT_EQ(removed, (std::vector<int32_t>{65, 516, 520}));

    sw().set_unit_present(0, false);
    EXPECT_EQ(ifindex_row_exists(1, remove), 0);
    EXPECT_EQ(removed.back(), 1);
}

}  // namespace
}  // namespace unit
