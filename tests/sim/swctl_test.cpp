// swctl end to end, on a temporary state file.
#include <fstream>

#include "support.hpp"

namespace {

using Swctl = simtest::TempDir;

TEST_F(Swctl, CreatesAndDrivesASwitch) {
    const std::string scenario = SCENARIO_DIR "/default.json";
    ok("create " + scenario);
    fails("create " + scenario, state_ + ": exists already (use --force to replace it)");
    ok("create --force " + scenario);

    ok("link 1/1 down");
    ok("speed 1/2 100 --half");
    ok("unit 2 absent");
    ok("trunk create 7 --dynamic");
    ok("trunk add 7 1/27");
    ok("vlan create 300 --name lab");
    ok("vlan member 300 T7 tagged");
    ok("vlan member 300 1/3 untagged");
    ok("fdb add 00:aa:bb:cc:dd:ee 300 1/3 --static");
    ok("counter 1/4 0 4000000000");
    ok("traffic 1/8 0");
    ok("sfp 1/27 pulled");
    ok("fault set cfg_set_port_speed -150 --times 2");
    ok("journal on");

    swsim::Switch sw(state_);
    EXPECT_FALSE(sw.port(0, 0).link);
    EXPECT_EQ(sw.port(0, 1).speed, 100);
    EXPECT_FALSE(sw.port(0, 1).full_duplex);
    EXPECT_FALSE(sw.unit(1).present);
    EXPECT_TRUE(sw.trunk(6).dynamic);
    EXPECT_EQ(sw.trunk(6).members, (std::vector<std::pair<int, int>>{{0, 26}}));
    EXPECT_EQ(sw.vlan(300).name, "lab");
    ASSERT_EQ(sw.vlan(300).members.size(), 2u);
    EXPECT_EQ(sw.fdb().back().vid, 300);
    EXPECT_TRUE(sw.fdb().back().is_static);
    EXPECT_GE(sw.counter(0, 3, 0), 4000000000u);
    EXPECT_EQ(sw.port(0, 7).traffic_pps, 0u);
    EXPECT_FALSE(sw.port(0, 26).sfp_fitted);
    ASSERT_EQ(sw.faults().size(), 1u);
    EXPECT_EQ(sw.faults()[0].result, -150);
    EXPECT_EQ(sw.faults()[0].remaining, 2);
    EXPECT_TRUE(sw.journal_enabled());

    const auto show = swctl("show vlans");
    EXPECT_EQ(show.code, 0);
    EXPECT_NE(show.out.find("300   lab"), std::string::npos) << show.out;
    EXPECT_NE(swctl("show trunks").out.find("T7    lacp"), std::string::npos);
    EXPECT_NE(swctl("fault list").out.find("cfg_set_port_speed"), std::string::npos);
    ok("fault clear");
    EXPECT_TRUE(sw.faults().empty());
    EXPECT_EQ(swctl("show all").code, 0);

    ok("vlan delete 300");
    ok("trunk destroy 7");
    EXPECT_FALSE(sw.vlan(300).exists);
    EXPECT_FALSE(sw.trunk(6).configured);
}

TEST_F(Swctl, ErrorsAreOneLineAndExitOne) {
    ok("create " SCENARIO_DIR "/default.json");
    fails("link 1/99 up", "no port 1/99");
    fails("link 9/1 up", "no unit 9 (units are 1..8)");
    fails("link 1-1 up", "'1-1' is not a port (UNIT/PORT, e.g. 1/5)");
    fails("trunk create 129", "no trunk 129 (trunks are 1..128)");
    fails("vlan create 1", "VLAN 1 already exists");
    fails("fault set cfg_nothing -1", "no platform call 'cfg_nothing' that faults can be armed on");
    fails("counter 1/1 2 5", "statistic 2 is a sum of others; set those");
    EXPECT_EQ(swctl("link 1/1 sideways").code, 1);
    EXPECT_EQ(swctl("").code, 1);
    const auto help = swctl("--help");
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("journal"), std::string::npos);

    const std::string other = dir_ + "/other.state";
    std::ofstream(other) << "not a switch";
    ok("show");
    state_ = other;
    fails("show", other + ": not a switch state file (bad magic)");
}

}  // namespace
