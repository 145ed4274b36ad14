// Traffic controls and transceiver readings of the simulated switch: how
// queue counters follow the load, the platform's own refusals, and the swctl
// verbs.
#include <thread>
#include <vector>

#include "support.hpp"

namespace {

using simtest::SwitchTest;
using simtest::TempDir;
using swsim::Switch;

// Queues share what the port sends, queue 0 most; the counters move with the
// load, and a counter set from outside moves on from its new value.
TEST_F(SwitchTest, QueueCountersFollowThePortsLoad) {
    sw_->set_traffic(0, 0, 100000);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    sw_->set_traffic(0, 0, 0);  // the counts hold still while they are compared
    const auto before = sw_->traffic(0, 0);
    const uint64_t frames = sw_->counter(0, 0, swsim::stat::kOutFrames);
    uint64_t sum = 0;
    for (int q = 0; q < SW_QUEUES; ++q) sum += before.queues[Switch::kSentPackets][q];
    EXPECT_GT(sum, 0u);
    EXPECT_LE(sum, frames);
    EXPECT_GE(sum + SW_QUEUES, frames * 99 / 100);
    EXPECT_GT(before.queues[Switch::kSentPackets][0], before.queues[Switch::kSentPackets][7]);

    sw_->set_queue_counter(0, 0, Switch::kSentBytes, 7, 5);
    sw_->set_traffic(0, 0, 100000);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const uint64_t after = sw_->traffic(0, 0).queues[Switch::kSentBytes][7];
    EXPECT_GT(after, 5u);
    EXPECT_LT(after, before.queues[Switch::kSentBytes][7]);

    // A trunk counts its members (trunk 1 = 1/5 + 1/6).
    sw_->set_queue_counter(0, 4, Switch::kDroppedPackets, 2, 40);
    sw_->set_queue_counter(0, 5, Switch::kDroppedPackets, 2, 2);
    EXPECT_EQ(sw_->traffic(0, 512).queues[Switch::kDroppedPackets][2], 42u);
    EXPECT_THROW(sw_->set_queue_counter(0, 0, Switch::kSentBytes, 8, 1), swsim::Error);
}

TEST_F(SwitchTest, PlatformRefusesWhatItCannotDo) {
    // The area holds big-endian words, queue 0 first, whatever the host.
    sw_->set_queue_counter(0, 1, Switch::kSentPackets, 1, 0x0102030405060708ull);
    uint8_t area[SW_QUEUE_AREA_SIZE];
    EXPECT_EQ(cfg_get_queue_pkts_cnt(0, 1, area, sizeof area - 1), -1);
    ASSERT_EQ(cfg_get_queue_pkts_cnt(0, 1, area, sizeof area), 0);
    EXPECT_EQ(std::vector<uint8_t>(area + 8, area + 16), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(cfg_get_queue_pkts_cnt(0, 512 + 5, area, sizeof area), -1) << "trunk 6 is not configured";
    EXPECT_EQ(cfg_get_queue_pkts_cnt(0, 512, area, sizeof area), 0);
    uint32_t value = 77;
    EXPECT_EQ(cfg_get_port_burst_ingress(0, 0, &value), 0);
    EXPECT_EQ(value, SW_BURST_DEFAULT_KB);
    EXPECT_EQ(cfg_set_port_burst_ingress(0, 0, SW_BURST_MAX_KB + 1), -1);
    EXPECT_EQ(cfg_set_port_rate_bcast_enable(0, 0, 2), -1);
    EXPECT_EQ(cfg_set_mirror_to(1, 8), -1) << "no port 2/9";
    int unit0 = 9, port0 = 9;
    EXPECT_EQ(cfg_get_mirror_to(&unit0, &port0), -1);
    EXPECT_EQ(unit0, 9) << "out arguments untouched on failure";
    EXPECT_EQ(cfg_set_port_mirror(0, 0, 4), -1);
    EXPECT_THROW(sw_->set_transceiver_readings(0, 7, swsim::Ddm{}), swsim::Error) << "1/8 has an empty cage";
}

// swctl's verbs for the traffic controls and optics, with the readings in
// the platform's units (3.1 V is 31000 tenths of a millivolt, 0.0001 mW one
// tenth of a microwatt).
TEST_F(TempDir, SwctlTrafficVerbsChangeTheLiveSwitch) {
    ok("create " SCENARIO_DIR "/default.json");
    for (const char *args : {"ddm 1/25 --temp 61 --vcc 3.1 --bias 12.5 --tx 0.3 --rx 0.0001", "ddm 1/26 --none",
                             "rate-limit T1 in 5000 --burst 64", "storm 1/3 on --pps 800", "mirror 1/4 tx",
                             "mirror-to 2/1", "queue 1/2 3 dropped-bytes 1234567"})
        ok(args);
    Switch sw(state_);
    const auto x = sw.transceiver(0, 24);
    EXPECT_EQ(x.temperature_c, 61);
    EXPECT_EQ(x.voltage, 31000);
    EXPECT_EQ(x.bias, 125);
    EXPECT_EQ(x.rx_power, 1);
    EXPECT_FALSE(sw.transceiver(0, 25).diagnostics);
    EXPECT_EQ(sw.traffic(0, 512).rate_kbps[Switch::kIngress], 5000u);
    EXPECT_EQ(sw.traffic(0, 512).burst_kb[Switch::kIngress], 64u);
    EXPECT_EQ(sw.traffic(0, 2).storm_pps, 800u);
    EXPECT_EQ(sw.traffic(0, 3).mirror, SW_MIRROR_TX);
    EXPECT_EQ(sw.mirror_to(), std::make_pair(1, 0));
    EXPECT_GE(sw.traffic(0, 1).queues[Switch::kDroppedBytes][3], 1234567u);
    EXPECT_NE(swctl("controls 1/25").out.find("61 C"), std::string::npos);

    fails("mirror-to 1/4", "port 1/4 is mirrored and cannot be the destination");
    fails("ddm 1/5", "port 1/5 has no transceiver fitted");
    ok("mirror-to none");
    EXPECT_EQ(sw.mirror_to(), std::make_pair(-1, -1));
}

}  // namespace
