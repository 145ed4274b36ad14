// The switch model as the agent sees it through the platform calls.
#include <chrono>
#include <cstring>
#include <map>
#include <thread>

#include "support.hpp"
#include "swplatform/records.hpp"

namespace {

using namespace std::chrono_literals;
using simtest::SwitchTest;

constexpr int kTrunk(int trunk0) { return 512 + trunk0; }

uint64_t stat(int unit0, int port0, int n) {
    uint64_t v = 0;
    EXPECT_EQ(bcmd_snmp_stat_get(unit0, port0, n, &v), 0) << "stat " << n << " of " << unit0 << "/" << port0;
    return v;
}

TEST_F(SwitchTest, TrunksAreAddressedAsPortsFrom512) {
    EXPECT_EQ(cfg_get_port_tid(0, 4), 0);
    EXPECT_EQ(cfg_get_port_tid(1, 5), 1);
    EXPECT_EQ(cfg_get_port_tid(0, 0), -1);
    EXPECT_EQ(cfg_check_port_tid(0, 5, 0), 1);
    EXPECT_EQ(cfg_check_port_tid(0, 5, 1), 0);
    EXPECT_EQ(cfg_check_trunk(0), 1);
    EXPECT_EQ(cfg_check_trunk(5), 0);
    EXPECT_EQ(cfg_is_trunk_empty(0), 0);
    EXPECT_EQ(cfg_is_trunk_empty(5), 1);
    EXPECT_EQ(cfg_is_dynamic_trunk(1), 1);
    EXPECT_EQ(cfg_is_dynamic_trunk(0), 0);

    char buf[SW_TEXT_SIZE];
    ASSERT_EQ(cfg_set_port_description(0, kTrunk(0), "uplink"), 0);
    ASSERT_EQ(cfg_get_port_description(0, kTrunk(0), buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "uplink");
    EXPECT_EQ(cfg_get_port_type_vx7300(0, kTrunk(0)), swsim::port_type::kTrunk);
    EXPECT_EQ(cfg_set_port_description(0, kTrunk(5), "x"), -1) << "trunk 6 is not configured";

    // Link up while any member is; bandwidth of the members that are up.
    sw_port_info_t info{};
    ASSERT_EQ(bcmd_get_port_info(0, kTrunk(0), &info), 0);
    EXPECT_EQ(info.link, 1u);
    EXPECT_EQ(info.speed, 2000u);
    ASSERT_EQ(bcmd_get_port_info(0, kTrunk(1), &info), 0);
    EXPECT_EQ(info.speed, 1000u);
    sw_->set_link(1, 4, false);
    ASSERT_EQ(bcmd_get_port_info(0, kTrunk(1), &info), 0);
    EXPECT_EQ(info.link, 0u);

    // Trunk counters are the sum over the members.
    sw_->set_counter(0, 4, swsim::stat::kInOctets, 100);
    sw_->set_counter(0, 5, swsim::stat::kInOctets, 250);
    EXPECT_EQ(stat(0, kTrunk(0), swsim::stat::kInOctets), 350u);
    EXPECT_EQ(stat(0, kTrunk(0), swsim::stat::kHCInOctets), 350u);
}

TEST_F(SwitchTest, TrunkMembersLiveInTheConfigurationImage) {
    uint8_t *image = cfg_get_cfg();
    ASSERT_NE(image, nullptr);
    EXPECT_TRUE(swp::cfg_image::trunk_has_member(image, 0, 0, 4));
    EXPECT_TRUE(swp::cfg_image::trunk_has_member(image, 1, 1, 5));
    EXPECT_FALSE(swp::cfg_image::trunk_has_member(image, 0, 0, 3));

    sw_->trunk_add_port(0, 0, 7);
    EXPECT_TRUE(swp::cfg_image::trunk_has_member(image, 0, 0, 7));
    // Whoever edits the bitmap edits the trunk.
    swp::cfg_image::set_trunk_member(image, 0, 0, 7, false);
    EXPECT_EQ(cfg_get_port_tid(0, 7), -1);
    EXPECT_EQ(sw_->trunk(0).members.size(), 2u);

    sw_->trunk_destroy(1);
    EXPECT_EQ(cfg_check_trunk(1), 0);
    EXPECT_EQ(cfg_is_trunk_empty(1), 1);
    EXPECT_EQ(cfg_get_port_tid(1, 4), -1);
    EXPECT_THROW(sw_->trunk_add_port(1, 1, 0), swsim::Error) << "trunk 2 is gone";
    sw_->trunk_create(2);
    EXPECT_THROW(sw_->trunk_add_port(2, 0, 4), swsim::Error) << "1/5 is in trunk 1";
}

TEST_F(SwitchTest, OutOfRangeArgumentsFailAndLeaveOutArgumentsAlone) {
    const int bad_ports[][2] = {{-1, 0}, {8, 0}, {0, -1}, {0, 8}, {0, 64}, {2, 0}, {1, 512}, {0, 640}, {0, 511}};
    for (auto [u, p] : bad_ports) {
        SCOPED_TRACE(testing::Message() << "unit0 " << u << " port0 " << p);
        int value = 12345;
        uint64_t counter = 777;
        uint32_t flags = 99;
        EXPECT_EQ(cfg_get_port_speed(u, p, &value), -1);
        EXPECT_EQ(cfg_set_port_speed(u, p, 100), -1);
        EXPECT_EQ(bcmd_snmp_stat_get(u, p, 0, &counter), -1);
        EXPECT_EQ(cfg_get_vlan_port_member(u, p, 1, &flags), -1);
        EXPECT_EQ(value, 12345);
        EXPECT_EQ(counter, 777u);
        EXPECT_EQ(flags, 99u);
    }
    uint64_t counter = 5;
    uint32_t flags = 7;
    char buf[8] = "keep";
    EXPECT_EQ(bcmd_snmp_stat_get(0, 0, SW_MAX_STATISTIC, &counter), -1);
    EXPECT_EQ(bcmd_snmp_stat_get(0, 0, -1, &counter), -1);
    EXPECT_EQ(cfg_get_vlan_port_member(0, 0, 4095, &flags), -1);
    EXPECT_EQ(cfg_get_vlan_port_member(0, 0, 30, &flags), -1) << "VLAN 30 does not exist";
    EXPECT_EQ(cfg_get_vlan_name(4095, buf, sizeof buf), -1);
    EXPECT_EQ(counter, 5u);
    EXPECT_EQ(flags, 7u);
    EXPECT_STREQ(buf, "keep");
    for (int t : {-1, 128, 511}) {
        EXPECT_EQ(cfg_check_trunk(t), 0) << "no trunk exists there";
        EXPECT_EQ(cfg_check_port_tid(0, 4, t), -1);
    }
    EXPECT_EQ(cfg_vlan_exists(0), -1);
    EXPECT_EQ(cfg_equip_get_user_eth_ports(8), -1);
}

TEST_F(SwitchTest, ConfiguredSpeedDrivesTheLink) {
    // A forced speed turns negotiation off; speed 0 turns it back on.
    int v = -1;
    sw_port_info_t info{};
    ASSERT_EQ(cfg_set_port_speed(0, 0, 100), 0);
    ASSERT_EQ(cfg_get_port_autoneg(0, 0, &v), 0);
    EXPECT_EQ(v, 0);
    ASSERT_EQ(bcmd_get_port_info(0, 0, &info), 0);
    EXPECT_EQ(info.link, 1u);
    EXPECT_EQ(info.speed, 100u);

    ASSERT_EQ(cfg_set_port_speed(0, 0, 0), 0);
    ASSERT_EQ(cfg_get_port_autoneg(0, 0, &v), 0);
    EXPECT_EQ(v, 1);
    ASSERT_EQ(bcmd_get_port_info(0, 0, &info), 0);
    EXPECT_EQ(info.speed, 1000u) << "negotiates the best both ends offer";
    sw_->set_link_speed(0, 0, 100, false);
    ASSERT_EQ(bcmd_get_port_info(0, 0, &info), 0);
    EXPECT_EQ(info.speed, 100u);
    EXPECT_EQ(info.duplex, 0u);

    // Turning negotiation off keeps the speed the link runs at.
    ASSERT_EQ(cfg_set_port_autoneg(0, 0, 0), 0);
    ASSERT_EQ(cfg_get_port_speed(0, 0, &v), 0);
    EXPECT_EQ(v, 100);

    EXPECT_EQ(cfg_set_port_speed(0, 0, 10000), -1) << "copper port";
    EXPECT_EQ(cfg_set_port_speed(0, 6, 10000), 0) << "SFP+ cage";
    EXPECT_EQ(cfg_set_port_speed(0, 0, 55), -1);
    EXPECT_EQ(cfg_set_port_pause(0, 0, 4), -1);
    EXPECT_EQ(cfg_set_port_capabilities(0, 0, swsim::cap::k10GFull), -1);

    // While down the second speed word holds the configured speed.
    ASSERT_EQ(cfg_set_port_speed(0, 1, 10), 0);
    ASSERT_EQ(cfg_set_port_enabled(0, 1, 0), 0);
    const sw_port_status_t &st = get_status()->units[0].ports[1];
    EXPECT_EQ(st.link, 0u);
    EXPECT_EQ(st.speed2, 10u);
}

TEST_F(SwitchTest, ConditionsOfALinkBeingUp) {
    const sw_port_status_t &p7 = get_status()->units[0].ports[6];
    ASSERT_EQ(p7.link, 1u);
    sw_->set_transceiver(0, 6, false);
    EXPECT_EQ(p7.link, 0u) << "pulling the transceiver takes the link down";
    EXPECT_THROW(sw_->set_transceiver(0, 0, true), swsim::Error) << "copper ports have no cage";

    sw_->set_unit_present(1, false);
    EXPECT_EQ(get_status()->units[1].ports[0].link, 0u);
    EXPECT_EQ(status_get_num_units(), 1);
    sw_->set_unit_present(1, true);
    EXPECT_EQ(get_status()->units[1].ports[0].link, 1u);
    EXPECT_THROW(sw_->set_unit_present(5, true), swsim::Error) << "unit 6 is not in the stack";
}

TEST_F(SwitchTest, CountersAdvanceWithTrafficOnlyWhileUp) {
    namespace st = swsim::stat;
    sw_->set_traffic(0, 0, 100000);
    uint64_t last = stat(0, 0, st::kInOctets);
    for (int i = 0; i < 20; ++i) {
        std::this_thread::sleep_for(2ms);
        uint64_t now = stat(0, 0, st::kInOctets);
        EXPECT_GE(now, last);
        last = now;
    }
    EXPECT_GT(last, 100000u * 400 * 30 / 1000) << "about 420 bytes a packet over 40 ms";

    sw_->set_link(0, 0, false);
    const uint64_t frozen = stat(0, 0, st::kInOctets);
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(stat(0, 0, st::kInOctets), frozen);
    // The 32-bit and high-capacity numbers are the same counts; the
    // non-unicast and frame counters are sums.
    EXPECT_EQ(stat(0, 0, st::kHCInOctets), frozen);
    EXPECT_EQ(stat(0, 0, st::kHCInUcast), stat(0, 0, st::kInUcast));
    EXPECT_EQ(stat(0, 0, st::kInNUcast), stat(0, 0, st::kHCInMulticast) + stat(0, 0, st::kHCInBroadcast));
    EXPECT_EQ(stat(0, 0, st::kOutFrames),
              stat(0, 0, st::kOutUcast) + stat(0, 0, st::kHCOutMulticast) + stat(0, 0, st::kHCOutBroadcast));
    EXPECT_EQ(stat(0, 0, st::kSingleCollisions), 0u) << "full duplex has no collisions";
    EXPECT_GT(stat(0, 0, st::kOutUcast), stat(0, 0, st::kHCOutMulticast));

    sw_->set_counter(0, 0, st::kHCInOctets, 5'000'000'000ull);
    EXPECT_EQ(stat(0, 0, st::kInOctets), 5'000'000'000ull);
    EXPECT_THROW(sw_->set_counter(0, 0, st::kInNUcast, 1), swsim::Error);
    sw_->set_link(0, 0, true);
    std::this_thread::sleep_for(5ms);
    EXPECT_GT(stat(0, 0, st::kInOctets), 5'000'000'000ull) << "counting resumes from the value set";
}

TEST_F(SwitchTest, AddressTableQueries) {
    int count = -1;
    uint8_t *entries = nullptr;
    const int32_t all[7] = {};
    ASSERT_EQ(cfg_get_mac_address_table(&count, &entries, all), 0);
    ASSERT_EQ(count, 4);
    std::map<int, swp::mac_entry::Entry> by_last_octet;
    for (int i = 0; i < count; ++i) {
        const auto e = swp::mac_entry::decode(entries + i * swp::mac_entry::kSize);
        by_last_octet[e.mac[5]] = e;
    }
    std::free(entries);
    const auto &on_trunk = by_last_octet[2];  // learned on 1/5, a member of trunk 1
    EXPECT_EQ(on_trunk.flags, swp::mac_entry::kFlagTrunk);
    EXPECT_EQ(on_trunk.trunk, 0);
    EXPECT_EQ(on_trunk.unit, 0);
    EXPECT_EQ(on_trunk.port, 4u);
    EXPECT_EQ(by_last_octet[3].flags, swp::mac_entry::kFlagStatic);
    EXPECT_EQ(by_last_octet[3].fid, 10);

    const int32_t dynamic_only[7] = {64, -33, 0, 0, 0, 0, 0};
    ASSERT_EQ(cfg_get_mac_address_table(&count, &entries, dynamic_only), 0);
    EXPECT_EQ(count, 3);
    std::free(entries);

    // -150 is a partial answer: the table still comes back.
    sw_->fault_set("cfg_get_mac_address_table", -150, 1);
    count = 0;
    entries = nullptr;
    EXPECT_EQ(cfg_get_mac_address_table(&count, &entries, all), -150);
    EXPECT_EQ(count, 4);
    ASSERT_NE(entries, nullptr);
    std::free(entries);
    sw_->fault_set("cfg_get_mac_address_table", -5, 1);
    count = 9;
    entries = reinterpret_cast<uint8_t *>(&count);
    EXPECT_EQ(cfg_get_mac_address_table(&count, &entries, all), -5);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(entries, nullptr);

    sw_->fdb_clear();
    ASSERT_EQ(cfg_get_mac_address_table(&count, &entries, all), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(entries, nullptr);
}

TEST_F(SwitchTest, IdentityClockAndSettings) {
    uint8_t mac0[6], mac1[6];
    ASSERT_EQ(cfg_get_unit_mac(0, mac0), 0);
    ASSERT_EQ(cfg_get_unit_mac(1, mac1), 0);
    EXPECT_NE(std::memcmp(mac0, mac1, 6), 0);

    size_t len = 0;
    uint8_t before[16];
    std::memcpy(before, bcmd_get_status_hash(&len), 16);
    EXPECT_EQ(len, 16u);
    sw_->set_link(0, 0, false);
    EXPECT_NE(std::memcmp(before, bcmd_get_status_hash(&len), 16), 0);

    const time_t now = time(nullptr);
    ASSERT_EQ(sys_clock_set(now + 3600), 0);
    EXPECT_NEAR(double(sys_clock_get()), double(now + 3600), 2.0);
    EXPECT_NEAR(double(time(nullptr)), double(now), 2.0) << "the machine clock is untouched";
    EXPECT_LE(uptime_cs() / 100, uptime() + 1);

    EXPECT_EQ(cfg_set_timezone("X", 900), -1);
    EXPECT_EQ(cfg_set_mac_ageing(5), -1);
    EXPECT_EQ(cfg_set_hostname(std::string(SW_TEXT_SIZE, 'x').c_str()), -1);
    ASSERT_EQ(cfg_set_hostname("renamed"), 0);
    char small[4];
    ASSERT_EQ(cfg_get_hostname(small, sizeof small), 0);
    EXPECT_STREQ(small, "ren") << "cut to the caller's buffer";
}

TEST(Helpers, ParseTimeTakesOnlyAValidTimeOfDay) {
    int h = -1, m = -1, s = -1;
    EXPECT_EQ(parse_time("23:59:59", &h, &m, &s), 0);
    EXPECT_EQ(h * 3600 + m * 60 + s, 86399);
    EXPECT_EQ(parse_time("7:05:00", &h, &m, &s), 0);
    EXPECT_EQ(h, 7);
    for (const char *bad : {"24:00:00", "12:60:00", "12:00:60", "12:00", "12:00:00x", " 1:00:00", "-1:00:00",
                            "123:00:00", "", "a:b:c"})
        EXPECT_LT(parse_time(bad, &h, &m, &s), 0) << bad;
    EXPECT_EQ(h, 7) << "untouched on failure";
}

}  // namespace
