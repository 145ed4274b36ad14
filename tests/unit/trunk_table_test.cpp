// trunkTable: rows, creation and destruction through trunkStatus, and the
// member port list read and written over a two-unit stack.
#include <algorithm>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class TrunkTableTest : public SwitchTest {
protected:
    // Trunk 1: 1/1, 1/2 (static); trunk 4: 2/1 (formed by LACP).
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}, {"ports": 28}],
                   "trunks": [{"id": 1, "members": ["1/1", "1/2"]},
                              {"id": 4, "dynamic": true, "members": ["2/1"]}]})";
    }
    static std::vector<uint8_t> ports_of(int32_t trunk) { return read_octets(get_trunkPorts, trunk); }
    std::vector<std::pair<int, int>> members(int trunk0) { return sw().trunk(trunk0).members; }
    static int write(int32_t trunk, std::vector<uint8_t> octets) {
        return set_trunkPorts(trunk, octets.data(), octets.size());
    }
};

TEST_F(TrunkTableTest, RowsAndScalarsCountStaticAndDynamicTrunks) {
    EXPECT_EQ(init_index_trunkTable(add_int_row), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 4}));
    EXPECT_EQ(get_trunkValidNumber(), 2);
    EXPECT_EQ(get_trunkCreation(1), 1);
    EXPECT_EQ(get_trunkCreation(4), 2);
    EXPECT_EQ(get_trunkCreation(5), 0);
    EXPECT_EQ(get_trunkStatus(4), 1);
    EXPECT_EQ(get_trunkStatus(5), 2);
    // An empty trunk still exists; the row goes only with the trunk.
    sw().trunk_create(7);
    EXPECT_EQ(get_trunkValidNumber(), 3);
    EXPECT_EQ(exists_entry_trunkTable(8), 1);
    sw().trunk_destroy(7);
    EXPECT_EQ(exists_entry_trunkTable(8), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"trunkTable 8"});
    // Numbers outside 1 .. 128 name no trunk.
    for (int32_t outside : {0, 129, 200}) {
        EXPECT_EQ(get_trunkStatus(outside), 2) << outside;
        EXPECT_EQ(get_trunkCreation(outside), 0) << outside;
        EXPECT_EQ(exists_entry_trunkTable(outside), 0) << outside;
    }
}

TEST_F(TrunkTableTest, StatusCreatesAndDestroys) {
    auto made = calls_of([] { EXPECT_EQ(set_trunkStatus(5, 1), 0); });
    EXPECT_EQ(made.back().call, "cfg_create_trunk");
    EXPECT_EQ(made.back().args, "4");
    EXPECT_TRUE(sw().trunk(4).configured);
    EXPECT_FALSE(sw().trunk(4).dynamic);
    EXPECT_TRUE(rows().created.empty()) << "the row comes with the next refresh";
    EXPECT_EQ(get_trunkCreation(5), 1);

    EXPECT_LT(set_trunkStatus(5, 1), 0) << "exists already";
    EXPECT_LT(set_trunkStatus(6, 2), 0) << "nothing to destroy";
    EXPECT_LT(set_trunkStatus(5, 3), 0);
    EXPECT_EQ(set_trunkStatus(1, 2), 0);
    EXPECT_FALSE(sw().trunk(0).configured);
    sw().fault_set("cfg_destroy_trunk", -7, 1);
    EXPECT_EQ(set_trunkStatus(4, 2), -1);
    sw().fault_set("cfg_create_trunk", -7, 1);
    EXPECT_EQ(set_trunkStatus(6, 1), -7) << "the platform's answer as it stands";
}

TEST_F(TrunkTableTest, ReadLayoutIsEightOctetsPerUnit) {
    // Two units: 64 octets reported; unit 2 starts at octet 8.
    std::vector<uint8_t> expected(64, 0);
    expected[0] = 0xc0;
    EXPECT_EQ(ports_of(1), expected);
    expected[0] = 0;
    expected[8] = 0x80;
    EXPECT_EQ(ports_of(4), expected);
    EXPECT_TRUE(ports_of(5).empty()) << "no trunk, no value";
}

TEST_F(TrunkTableTest, WriteWalksSevenBitsOfThirtyTwoOctetsPerUnit) {
    // A new trunk: created with its row, members from octet 1 (ports 8..14;
    // port 15 is the low bit and never changes) and unit 2's octet 32.
    std::vector<uint8_t> list(33, 0);
    list[1] = 0xff;
    list[32] = 0x40;  // 2/2
    EXPECT_EQ(write(9, list), 0);
    EXPECT_EQ(rows().created, std::vector<std::string>{"trunkTable 9"});
    std::vector<std::pair<int, int>> want = {{0, 8}, {0, 9}, {0, 10}, {0, 11}, {0, 12}, {0, 13}, {0, 14}, {1, 1}};
    EXPECT_EQ(members(8), want);

    // The low bit neither adds nor removes.
    sw().trunk_add_port(8, 0, 15);
    list[1] = 0x01;
    EXPECT_EQ(write(9, list), 0);
    want = {{0, 15}, {1, 1}};
    EXPECT_EQ(members(8), want);

    // Clear bits ask every port to leave; octets beyond the length ask this
    // trunk's ports only (1/1..1/7 and 2/2).
    EXPECT_EQ(count_calls("cfg_remove_port_from_trunk", [] { EXPECT_EQ(write(9, {0x00}), 0); }), 8u);
    EXPECT_EQ(members(8), (std::vector<std::pair<int, int>>{{0, 15}}));
    EXPECT_EQ(members(0), (std::vector<std::pair<int, int>>{{0, 0}, {0, 1}}));
    EXPECT_EQ(members(3), (std::vector<std::pair<int, int>>{{1, 0}}));

    // Longer than the stack's units can carry: refused before any call.
    EXPECT_EQ(calls_of([] { EXPECT_LT(write(9, std::vector<uint8_t>(65, 0)), 0); }).size(), 1u)
        << "only the unit count is asked";
    EXPECT_EQ(members(8), (std::vector<std::pair<int, int>>{{0, 15}}));
}

TEST_F(TrunkTableTest, PortOfAnotherTrunkEndsTheWrite) {
    // 1/1 (of trunk 1) is met first: nothing changes.
    std::vector<uint8_t> list = {0xa0, 0x80};
    EXPECT_EQ(write(10, list), -1);
    EXPECT_TRUE(sw().trunk(9).configured) << "the trunk made for the write stays";
    EXPECT_EQ(members(9), (std::vector<std::pair<int, int>>{}));
    list = {0x20, 0x80};
    EXPECT_EQ(write(10, list), 0);
    EXPECT_EQ(members(9), (std::vector<std::pair<int, int>>{{0, 2}, {0, 8}}));
    // 2/1 (of trunk 4) is met after unit 1's ports: 1/3 has left by then.
    list.assign(33, 0);
    list[1] = 0x80;
    list[32] = 0x80;
    EXPECT_EQ(write(10, list), -1);
    EXPECT_EQ(members(9), (std::vector<std::pair<int, int>>{{0, 8}}));
    EXPECT_EQ(members(3), (std::vector<std::pair<int, int>>{{1, 0}}));

    // A trunk that cannot be made fails the write with no row; failing adds
    // and removes are passed over.
    sw().fault_set("cfg_create_trunk", -1, 1);
    rows().clear();
    EXPECT_EQ(write(11, {0x10}), -1);
    EXPECT_TRUE(rows().created.empty());
    sw().fault_set("cfg_add_port_to_trunk", -1, 1);
    EXPECT_EQ(write(10, {0x18}), 0);
    EXPECT_EQ(members(9), (std::vector<std::pair<int, int>>{{0, 4}})) << "1/4 failed, 1/5 went in, 1/9 lay beyond";
    EXPECT_LT(write(200, {0x10}), 0) << "no such trunk ID";
}

}  // namespace
}  // namespace unit
