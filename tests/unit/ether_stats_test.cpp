// EtherLike statistics: which platform statistic each counter reads, the low
// 32 bits of it, and the duplex status from the status block.
#include <utility>

#include "fixture.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class EtherStatsTest : public SwitchTest {
protected:
    // Trunk 1 = 1/20 + 1/21; 1/1 full duplex, 1/2 half duplex, the rest down.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}],
                   "trunks": [{"id": 1, "members": ["1/20", "1/21"]}],
                   "ports": [{"select": ["1/1", "1/20", "1/21"], "link": true, "peer_speed": 1000},
                             {"select": "1/2", "link": true, "peer_speed": 100, "half_duplex": true}]})";
    }
};

using Counter = uint32_t (*)(int32_t);
const std::pair<Counter, int> kCounters[] = {
    {get_dot3StatsAlignmentErrors, 42},         {get_dot3StatsFCSErrors, 43},
    {get_dot3StatsSingleCollisionFrames, 44},   {get_dot3StatsMultipleCollisionFrames, 45},
    {get_dot3StatsSQETestErrors, 46},           {get_dot3StatsDeferredTransmissions, 47},
    {get_dot3StatsLateCollisions, 48},          {get_dot3StatsExcessiveCollisions, 49},
    {get_dot3StatsInternalMacTransmitErrors, 50}, {get_dot3StatsCarrierSenseErrors, 51},
    {get_dot3StatsFrameTooLongs, 52},           {get_dot3StatsInternalMacReceiveErrors, 53},
    {get_dot3StatsSymbolErrors, 54},            {get_dot3ControlInUnknownOpcodes, 55},
};

TEST_F(EtherStatsTest, EachCounterReadsItsOwnStatisticTruncatedTo32Bits) {
    // A distinct value above 2^32 per statistic: a column that reads another
    // statistic, or the high half, shows.
    for (const auto &[get, stat] : kCounters)
        sw().set_counter(0, 2, stat, (uint64_t(stat) << 32) + 1000 + uint64_t(stat));
    for (const auto &[get, stat] : kCounters) {
        auto made = calls_of([&] { EXPECT_EQ(get(3), 1000u + uint32_t(stat)) << "statistic " << stat; });
        ASSERT_EQ(made.size(), 1u) << stat;
        EXPECT_EQ(made[0].call, "bcmd_snmp_stat_get");
        EXPECT_EQ(made[0].args, "0,2," + std::to_string(stat));
    }
    // A trunk counts what its members count, addressed as port0 512 + trunk0.
    sw().set_counter(0, 19, 43, 7);
    sw().set_counter(0, 20, 43, 5);
    auto made = calls_of([] { EXPECT_EQ(get_dot3StatsFCSErrors(513), 12u); });
    EXPECT_EQ(made.at(0).args, "0,512,43");
    // A VLAN interface has no counters and asks nothing; a failed read is 0.
    EXPECT_TRUE(calls_of([] { EXPECT_EQ(get_dot3StatsFCSErrors(1001), 0u); }).empty());
    sw().fault_set("bcmd_snmp_stat_get", -1, 1);
    EXPECT_EQ(get_dot3StatsFCSErrors(3), 0u);
}

TEST_F(EtherStatsTest, DuplexStatusFollowsTheLink) {
    // Full, half, link down, a trunk (no status record of its own), index 0.
    const std::pair<int32_t, int32_t> cases[] = {{1, 3}, {2, 2}, {3, 1}, {513, 1}, {0, 1}};
    for (auto [i, duplex] : cases) EXPECT_EQ(get_dot3StatsDuplexStatus(i), duplex) << i;
    sw().set_link(0, 0, false);
    EXPECT_EQ(get_dot3StatsDuplexStatus(1), 1);
}

}  // namespace
}  // namespace unit
