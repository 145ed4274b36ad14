// Bridge port counters and sizes, and the learned address tables with their
// snapshot released after first use.
#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class BridgeTest : public SwitchTest {
protected:
    // Unit 2 absent, unit 3 with 10 ports; trunk 4 holds 1/9 and 1/10.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}, {"present": false, "ports": 24}, {"ports": 10}],
                   "trunks": [{"id": 4, "members": ["1/9", "1/10"]}, {"id": 6}],
                   "ports": [{"select": "1/2", "mtu": 9216}]})";
    }
};

TEST_F(BridgeTest, PortCountAndFrameSize) {
    EXPECT_EQ(get_dot1dBaseNumPorts(), 38);      // present units' ports; trunks are not counted
    EXPECT_EQ(get_dot1dTpPortMaxInfo(1), 1522);  // the MTU plus header, tag and FCS
    EXPECT_EQ(get_dot1dTpPortMaxInfo(2), 9238);
}

TEST_F(BridgeTest, CountersAreTheLow32BitsOfTheirStatistic) {
    const struct {
        uint32_t (*get)(int32_t);
        int stat;
    } columns[] = {{get_dot1dBasePortDelayExceededDiscards, 16}, {get_dot1dBasePortMtuExceededDiscards, 17},
                   {get_dot1dTpPortInFrames, 18},                {get_dot1dTpPortOutFrames, 19},
                   {get_dot1dTpPortInDiscards, 20}};
    // Each column reads (stat << 32) + 1000 + stat; 18 and 19 are the platform's
    // sums of the unicast, multicast and broadcast counts.
    namespace st = swsim::stat;
    const std::pair<int, uint64_t> counts[] = {
        {16, (16ull << 32) + 1016},           {17, (17ull << 32) + 1017},        {20, (20ull << 32) + 1020},
        {st::kInUcast, (18ull << 32) + 1000}, {st::kHCInMulticast, 10},          {st::kHCInBroadcast, 8},
        {st::kOutUcast, (19ull << 32) + 1000}, {st::kHCOutMulticast, 10},        {st::kHCOutBroadcast, 9}};
    for (auto [stat, value] : counts) sw().set_counter(0, 2, stat, value);
    for (const auto &c : columns) EXPECT_EQ(c.get(3), 1000u + c.stat) << c.stat;
    // A VLAN interface reads 0 without asking the platform.
    EXPECT_TRUE(calls_of([&] {
                    for (const auto &c : columns) EXPECT_EQ(c.get(1003), 0u);
                }).empty());
    sw().fault_set("bcmd_snmp_stat_get", -1, 1);
    EXPECT_EQ(get_dot1dTpPortInFrames(3), 0u);
}

// ---- learned addresses ------------------------------------------------------

const uint8_t kOnTrunk[6] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x01};
const uint8_t kOnUnit3[6] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x02};
const uint8_t kTwoVlans[6] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x03};
const uint8_t kHidden[6] = {0x00, 0x10, 0x18, 0xff, 0xff, 0xff};
const uint8_t kOnUnit2[6] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x99};
const uint8_t kMissing[6] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x98};

class FdbTest : public BridgeTest {
protected:
    void SetUp() override {
        BridgeTest::SetUp();
        sw().vlan_create(10);
        sw().vlan_create(20);
        sw().fdb_add(kOnTrunk, 1, 0, 8, 3, false);      // trunk 4 of unit 1
        sw().fdb_add(kOnUnit3, 1, 2, 5, -1, true);      // port0 5 of unit0 2, static
        sw().fdb_add(kTwoVlans, 10, 0, 2, -1, false);
        sw().fdb_add(kTwoVlans, 20, 0, 11, -1, false);
        sw().fdb_add(kHidden, 1, 0, 0, -1, true);
    }
};

TEST_F(FdbTest, Dot1dRowsPortsAndStatus) {
    EXPECT_EQ(init_index_dot1dTpFdbTable(add_mac_row), 0);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"00:11:22:33:44:01", "00:11:22:33:44:02",
                                                     "00:11:22:33:44:03", "00:11:22:33:44:03"}));
    sw().set_unit_present(1, true);
    sw().fdb_add(kOnUnit2, 1, 1, 5, -1, false);  // port0 5 of unit0 1: 5 + 1 + 64
    const struct {
        const uint8_t *mac;
        int32_t port, status;
    } cases[] = {{kOnTrunk, 516, 3}, {kOnUnit3, 6 + 2 * 64, 5}, {kTwoVlans, 3, 3}, {kOnUnit2, 70, 3}, {kMissing, 0, 0}};
    for (const auto &c : cases) {
        init_index_dot1dTpFdbTable(add_mac_row);
        EXPECT_EQ(get_dot1dTpFdbPort(c.mac, 6), c.port) << mac_text(c.mac, 6);
        init_index_dot1dTpFdbTable(add_mac_row);
        EXPECT_EQ(get_dot1dTpFdbStatus(c.mac, 6), c.status) << mac_text(c.mac, 6);
    }
}

TEST_F(FdbTest, SnapshotIsReleasedAfterFirstUse) {
    init_index_dot1dTpFdbTable(add_mac_row);
    EXPECT_EQ(exists_entry_dot1dTpFdbTable(kOnTrunk, 6), 1);  // keeps the snapshot
    EXPECT_EQ(get_dot1dTpFdbPort(kOnTrunk, 6), 516);
    EXPECT_EQ(get_dot1dTpFdbStatus(kOnTrunk, 6), 0);
    EXPECT_EQ(exists_entry_dot1dTpFdbTable(kOnTrunk, 6), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"dot1dTpFdbTable 00:11:22:33:44:01"});

    // A miss removes the row and releases the snapshot for every other row.
    init_index_dot1dTpFdbTable(add_mac_row);
    EXPECT_EQ(exists_entry_dot1dTpFdbTable(kMissing, 6), 0);
    EXPECT_EQ(get_dot1dTpFdbPort(kOnTrunk, 6), 0);

    // The address column answers from its index and releases the snapshot.
    init_index_dot1dTpFdbTable(add_mac_row);
    EXPECT_EQ(read_octets(get_dot1dTpFdbAddress, kOnUnit3, size_t(6)), std::vector<uint8_t>(kOnUnit3, kOnUnit3 + 6));
    EXPECT_EQ(get_dot1dTpFdbStatus(kOnUnit3, 6), 0);

    // A failed fetch adds no rows.
    rows().clear();
    sw().fault_set("cfg_get_mac_address_table", -1, 1);
    init_index_dot1dTpFdbTable(add_mac_row);
    EXPECT_TRUE(rows().keys.empty());
}

TEST_F(FdbTest, Dot1qRowsByVlan) {
    EXPECT_EQ(init_index_dot1qTpFdbTable(add_fdb_row), 0);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"1/00:11:22:33:44:01", "1/00:11:22:33:44:02",
                                                     "10/00:11:22:33:44:03", "20/00:11:22:33:44:03",
                                                     "1/00:10:18:ff:ff:ff"}));
    // The columns match the MAC only (both VLAN rows read the first entry) and
    // apply neither unit nor trunk.
    const struct {
        uint32_t fid;
        const uint8_t *mac;
        int32_t port;
    } cases[] = {{20, kTwoVlans, 3}, {10, kTwoVlans, 3}, {1, kOnUnit3, 6}, {1, kOnTrunk, 9}, {1, kHidden, 1}};
    for (const auto &c : cases) {
        init_index_dot1qTpFdbTable(add_fdb_row);
        EXPECT_EQ(get_dot1qTpFdbPort(c.fid, c.mac, 6), c.port) << mac_text(c.mac, 6);
        EXPECT_EQ(get_dot1qTpFdbStatus(c.fid, c.mac, 6), 0);  // released
    }
    init_index_dot1qTpFdbTable(add_fdb_row);
    EXPECT_EQ(get_dot1qTpFdbStatus(1, kHidden, 6), 5);

    // The row check compares the FDB id too.
    init_index_dot1qTpFdbTable(add_fdb_row);
    EXPECT_EQ(exists_entry_dot1qTpFdbTable(20, kTwoVlans, 6), 1);
    EXPECT_EQ(exists_entry_dot1qTpFdbTable(30, kTwoVlans, 6), 0);
    EXPECT_EQ(rows().removed, std::vector<std::string>{"dot1qTpFdbTable 30/00:11:22:33:44:03"});
    EXPECT_EQ(get_dot1qTpFdbPort(20, kTwoVlans, 6), 0);
}

TEST_F(FdbTest, DynamicCount) {
    EXPECT_EQ(init_index_dot1qFdbTable(add_gauge_row), 0);
    EXPECT_EQ(rows().ints, std::vector<int32_t>{1});
    EXPECT_EQ(call_texts([] { EXPECT_EQ(get_dot1qFdbDynamicCount(1), 3u); }),
              std::vector<std::string>{"cfg_get_mac_address_table(64,-33,0,0,0,0,0)"});
    // -150 still carries the count; any other failure counts nothing.
    sw().fault_set("cfg_get_mac_address_table", -150, 1);
    EXPECT_EQ(get_dot1qFdbDynamicCount(1), 3u);
    sw().fault_set("cfg_get_mac_address_table", -151, 1);
    EXPECT_EQ(get_dot1qFdbDynamicCount(1), 0u);
}

}  // namespace
}  // namespace unit
