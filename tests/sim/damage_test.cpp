// A state file whose header is valid but whose content is damaged is refused
// as a whole, naming the section; what is read later is checked where that is
// cheap; arithmetic on stored times and indexes never overflows.
#include <climits>
#include <limits>
#include <functional>

#include "raw_state.hpp"
#include "support.hpp"

namespace {

using simtest::RawState;
using simtest::SwitchTest;
using simtest::TempDir;

struct Damage {
    const char *problem;  // what the refusal says after "PATH: damaged "
    std::function<void(RawState &)> apply;
};

template <std::size_t N>
void fill(char (&field)[N]) {
    std::memset(field, 'x', N);
}

const Damage kDamages[] = {
    {"header section: lock 2 names no process as its writer", [](RawState &r) { r.lock(2).writer = uint64_t(1) << 60; }},
    {"header section: lock 1 has a reader slot of no process", [](RawState &r) { r.lock(1).readers[3] = 5; }},
    {"runtime section: the clock offset is -9223372036854775807 (the clock stays within the years 1970 .. 9999)",
     [](RawState &r) { r.rt().clock_offset_s = -INT64_MAX; }},
    {"runtime section: the boot time is -1 (before 1970)", [](RawState &r) { r.rt().boot_realtime_ns = -1; }},
    {"runtime section: the journal's marks are damaged (cleared up to 0, last 18446744073709551615)",
     [](RawState &r) { r.rt().journal_last = UINT64_MAX; }},
    {"runtime section: the journal's marks are damaged (cleared up to 9, last 3)",
     [](RawState &r) { r.rt().journal_cleared = 9, r.rt().journal_last = 3; }},
    {"runtime section: fault slot 5's count is -7 (-1 or at least 1)",
     [](RawState &r) { r.rt().faults[5].remaining = -7, r.rt().faults[5].result = -1; }},
    {"runtime section: fault slot 6's result is 3 (faults answer negative results)",
     [](RawState &r) { r.rt().faults[6].remaining = 1, r.rt().faults[6].result = 3; }},
    {"runtime section: fault slot 7's call name runs past its 40 bytes",
     [](RawState &r) { r.rt().faults[7].remaining = 1, r.rt().faults[7].result = -1, fill(r.rt().faults[7].call); }},
    {"status section: unit 2's port count is 1900000000 (at most 64)",
     [](RawState &r) { r.status().units[1].user_ports = 1900000000; }},
    {"status section: unit 3's port count is 65 (at most 64)", [](RawState &r) { r.status().units[2].user_ports = 65; }},
    {"status section: unit 1's model runs past its 32 bytes", [](RawState &r) { fill(r.status().units[0].model); }},
    {"status section: unit 8's build date runs past its 32 bytes",
     [](RawState &r) { fill(r.status().units[7].build_date); }},
    {"status section: the firmware version runs past its 32 bytes", [](RawState &r) { fill(r.status().fw_version); }},
    {"image section: the host name runs past its 64 bytes", [](RawState &r) { fill(r.cfg().hostname); }},
    {"image section: the vendor URL runs past its 128 bytes", [](RawState &r) { fill(r.cfg().vendor_url); }},
    {"image section: the time zone offset is 9999 (-720 .. 840 minutes)",
     [](RawState &r) { r.cfg().tz_offset_min = 9999; }},
    {"image section: the equipment OID's length is 1400000000 (at most 16 sub-identifiers)",
     [](RawState &r) { r.cfg().equip_oid_len = 1400000000; }},
    {"image section: interface 3's description runs past its 64 bytes",
     [](RawState &r) { fill(r.cfg().ifaces[3].description); }},
    {"image section: interface 600's PVID is 5000 (VLAN IDs are 1 .. 4094)",
     [](RawState &r) { r.cfg().vlan_settings.ports[600].pvid = 5000; }},
    {"image section: VLAN 10's name runs past its 64 bytes", [](RawState &r) { fill(r.cfg().vlans[10].name); }},
    {"image section: the mirror destination is unit0 9 port0 0 (no such port)",
     [](RawState &r) { r.cfg().traffic.mirror_to_set = 1, r.cfg().traffic.mirror_to_unit0 = 9; }},
    {"image section: ring domain 4's name runs past its 48 bytes",
     [](RawState &r) { fill(r.cfg().l2proto.eaps[4].name); }},
    {"image section: static multicast group record 2's VLAN is 0 (1 .. 4094)",
     [](RawState &r) {
         swp::igmp_groups::set_word(swp::igmp_groups::record(r.image(), 2), swp::igmp_groups::kInUseWord, 1);
     }},
    {"hardware section: the spanning tree's root port is 5000 (interface numbers are 1 .. 640)",
     [](RawState &r) { r.hw().l2proto.stp.root_port = 5000; }},
    {"hardware section: the last topology change is -9223372036854775808 (before 1970)",
     [](RawState &r) { r.hw().l2proto.stp.last_change_ns = INT64_MIN; }},
    {"hardware section: interface 4's spanning-tree state is 9 (0 .. 3)",
     [](RawState &r) { r.hw().l2proto.stp_ports[4].state = 9; }},
    {"hardware section: port 70's LACP partner time is -5 (before 1970)",
     [](RawState &r) { r.hw().ifaces_ext.lacp[70].since_ns = -5; }},
    {"stats section: port 9's counter writer word names no process",
     [](RawState &r) { r.counters(9).writer = uint64_t(1) << 63; }},
    {"fdb section: the address table's capacity is 7 (it holds 32768)", [](RawState &r) { r.fdb().capacity = 7; }},
    {"fdb section: the address count is 40000 (at most 32768)", [](RawState &r) { r.fdb().count = 40000; }},
    {"fdb section: address entry 2's VLAN is 0 (1 .. 4094)", [](RawState &r) { r.fdb().entries[2].vid = 0; }},
    {"hardware section: the number of power supply bays is 9 (at most 4)",
     [](RawState &r) { r.hw().chassis.info.psu_bays = 9; }},
    {"hardware section: the number of unit positions is 0 (1 .. 8)", [](RawState &r) { r.hw().chassis.info.slots = 0; }},
    {"hardware section: unit 3's module model runs past its 32 bytes",
     [](RawState &r) { fill(r.hw().chassis.units[2].fans[7].model); }},
    {"fdb section: address entry 1's unit0 is -3 (0 .. 7)", [](RawState &r) { r.fdb().entries[1].unit = -3; }},
    {"fdb section: address entry 3's port0 is 70 (0 .. 63)", [](RawState &r) { r.fdb().entries[3].port = 70; }},
    {"fdb section: address entry 0's trunk0 is 200 (0 .. 127)", [](RawState &r) { r.fdb().entries[0].trunk = 200; }},
    {"image section: the CFM probe count is 65 (at most 64)", [](RawState &r) { r.cfg().cfm.count = 65; }},
    {"image section: CFM probe 2 of the list has number 5 (1 .. 65535, ascending)",
     [](RawState &r) { r.cfg().cfm.count = 2, r.cfg().cfm.probes[0].id = 5, r.cfg().cfm.probes[1].id = 5; }},
    {"image section: CFM probe 1 of the list is on unit0 9 port0 0 (no such port)",
     [](RawState &r) { r.cfg().cfm.count = 1, r.cfg().cfm.probes[0].id = 1, r.cfg().cfm.probes[0].unit0 = 9; }},
};

// Every damage, one at a time on a fresh switch: the control handle and
// cfg_init() both refuse the file with the same line, and cfg_init() leaves
// the process without a switch, as for any refused file.
TEST_F(TempDir, AFileDamagedFieldByFieldIsRefusedNamingTheSection) {
    setenv("SWSIM_STATE", state_.c_str(), 1);
    for (const Damage &d : kDamages) {
        SCOPED_TRACE(d.problem);
        swsim::create_state_from_json(state_, simtest::kSmallSwitch);
        ASSERT_EQ(simtest::complaint([&] { swsim::Switch sw(state_); }), "(none)") << "the fresh file is sound";
        {
            RawState raw(state_);
            ASSERT_TRUE(raw.ok());
            d.apply(raw);
        }
        const std::string expected = state_ + ": damaged " + d.problem;
        EXPECT_EQ(simtest::complaint([&] { swsim::Switch sw(state_); }), expected);
        testing::internal::CaptureStderr();
        EXPECT_EQ(swsim::platform_reopen(), -1);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "swsim: " + expected + "\n");
        EXPECT_EQ(get_status()->units[0].present, 0u) << "no switch behind the calls";
        EXPECT_EQ(cfg_equip_get_user_eth_ports(0), -1);
    }
}

// Damage that comes after cfg_init() is caught where the read is cheap: no
// port count beyond a unit, no OID beyond its record.
TEST_F(SwitchTest, DamageAfterOpeningIsNotPassedOn) {
    RawState raw(state_);
    ASSERT_TRUE(raw.ok());
    EXPECT_EQ(cfg_equip_get_user_eth_ports(1), 8);
    raw.status().units[1].user_ports = 1900000000;
    EXPECT_EQ(cfg_equip_get_user_eth_ports(1), -1);

    size_t len = 99;
    ASSERT_NE(cfg_equip_get_int_oid(&len), nullptr);
    EXPECT_EQ(len % 4, 0u);
    raw.cfg().equip_oid_len = 1400000000;
    len = 99;
    EXPECT_EQ(cfg_equip_get_int_oid(&len), nullptr);
    EXPECT_EQ(len, 0u);

    fill(raw.cfg().hostname);  // the contact follows it
    char buf[256];
    ASSERT_EQ(cfg_get_hostname(buf, sizeof buf), 0);
    EXPECT_EQ(std::string(buf), std::string(SW_TEXT_SIZE, 'x')) << "no further than the field";
}

// Stored times at the ends of their range, as a damaged file or a long-lived
// one may hold them: the answers stay in range (the sanitizer build checks
// that no signed arithmetic overflows on the way).
TEST_F(SwitchTest, TimesAndIndexesAtTheEndsOfTheirRangeDoNotOverflow) {
    RawState raw(state_);
    ASSERT_TRUE(raw.ok());
    swsim::Switch::LacpPartner partner;
    partner.short_timeout = true;
    sw_->lacp_set_partner(0, 2, partner);
    for (int64_t since : {INT64_MIN, int64_t(-1), INT64_MAX}) {
        SCOPED_TRACE(since);
        raw.hw().ifaces_ext.lacp[2].since_ns = since;
        sw_lacp_port_t info{};
        ASSERT_EQ(cfg_get_lacp_port(0, 2, &info), 0);
        EXPECT_TRUE(info.partner_present);
        EXPECT_NO_THROW(sw_->lacp_set_counter(0, 2, 0, 5)) << "folds the periods heard";
    }

    raw.hw().l2proto.stp.last_change_ns = INT64_MIN;
    uint8_t record[SW_STP_STATE_SIZE];
    EXPECT_EQ(cfg_get_stp_state(SW_STP_INSTANCE, record), 0);
    raw.hw().l2proto.stp.root_port = UINT32_MAX;
    EXPECT_FALSE(sw_->stp().root_bridge);

    raw.rt().boot_realtime_ns = INT64_MIN;
    EXPECT_GT(uptime(), 0u);
    raw.rt().boot_realtime_ns = INT64_MAX;
    EXPECT_EQ(uptime_cs(), 0u) << "a boot ahead of now is no uptime";

    raw.rt().clock_offset_s = INT64_MAX;
    EXPECT_LE(sys_clock_get(), time(nullptr) + swsim::layout::kMaxClockS);
    if (std::numeric_limits<time_t>::max() > swsim::layout::kMaxClockS) {  // a 32-bit time_t ends first
        EXPECT_EQ(sys_clock_set(static_cast<time_t>(swsim::layout::kMaxClockS + 1)), -1) << "beyond the year 9999";
    }
    EXPECT_EQ(sys_clock_set(swsim::layout::kMaxClockS), 0);
    EXPECT_LE(sys_clock_get() - swsim::layout::kMaxClockS, 1) << "a second may pass";
    EXPECT_THROW(sw_->set_clock_offset(INT64_MIN), swsim::Error);
}

// Unit, port and trunk numbers at the ends of int: a clear refusal.
TEST_F(SwitchTest, NumbersAtTheEndsOfIntAreRefusedClearly) {
    fails("link -2147483648/1 down", "'-2147483648' is not a unit number");
    fails("link 2147483647/1 down", "no unit 2147483647 (units are 1..8)");
    fails("link 2/2147483647 down", "no port 2/2147483647");
    fails("port T2147483647 disable", "'2147483647' is not a trunk number");
    fails("unit -2147483648 absent", "'-2147483648' is not a unit number");
    EXPECT_EQ(simtest::complaint([&] { sw_->set_link(INT32_MAX, 0, false); }), "no unit 2147483648 (units are 1..8)");
    EXPECT_EQ(simtest::complaint([&] { sw_->trunk_destroy(INT32_MAX); }), "no trunk 2147483648 (trunks are 1..128)");
}

}  // namespace
