// swctl end to end, on a temporary state file.
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <future>

#include "support.hpp"

namespace {

using namespace std::chrono_literals;
using Swctl = simtest::TempDir;
using LiveSwctl = simtest::SwitchTest;

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
    ok("create --force " SCENARIO_DIR "/default.json");
    EXPECT_EQ(swsim::Switch(other).system().hostname, "sw-lab-01") << "a file no switch runs on is replaced";
}

// Words that name no command, or no value of a command, are named back.
TEST_F(Swctl, AnUnknownWordIsNamed) {
    const std::pair<const char *, const char *> cases[] = {
        {"frob", "unknown command 'frob' (see swctl --help)"},
        {"frob 1/1 up", "unknown command 'frob' (see swctl --help)"},
        {"trunk frob 1", "unknown command 'trunk frob' (see swctl trunk --help)"},
        {"lacp frob", "unknown command 'lacp frob' (see swctl lacp --help)"},
        {"fdb", "missing command after 'fdb': add or clear (see swctl fdb --help)"},
        {"link 1/1 sideways", "state: 'sideways' is not up or down (see swctl link --help)"},
        {"unit 2 gone", "state: 'gone' is not present or absent (see swctl unit --help)"},
        {"journal frob", "action: 'frob' is not on, off, clear or show (see swctl journal --help)"},
    };
    for (auto [args, message] : cases) fails(args, message);
}

// Every verb that switches something takes its own two words and the common
// ones, in any case; its help lists them.
TEST_F(LiveSwctl, StateWordsAreTheSameForEveryVerb) {
    struct Verb {
        const char *command, *args, *on, *off;
        std::function<bool(const swsim::Switch &)> state;
    };
    const Verb verbs[] = {
        {"unit", "2", "present", "absent", [](auto &sw) { return sw.unit(1).present; }},
        {"link", "1/1", "up", "down", [](auto &sw) { return sw.port(0, 0).carrier; }},
        {"port", "1/2", "enable", "disable", [](auto &sw) { return sw.port(0, 1).admin; }},
        {"sfp", "1/8", "fitted", "pulled", [](auto &sw) { return sw.port(0, 7).sfp_fitted; }},
        {"block", "1/3", "on", "off", [](auto &sw) { return sw.error_blocked(0, 2); }},
        {"storm", "1/4", "on", "off", [](auto &sw) { return sw.traffic(0, 3).storm_control; }},
        {"lacp enable", "2/1", "on", "off", [](auto &sw) { return bool(sw.lacp_port(1, 0).enabled); }},
        {"igmp router", "10 2/2", "on", "off", [](auto &sw) { return !sw.igmp_router_ports(10).empty(); }},
        {"journal", "", "on", "off", [](auto &sw) { return sw.journal_enabled(); }},
    };
    const std::pair<const char *, const char *> common[] = {
        {"ON", "Off"}, {"yes", "no"}, {"1", "0"}, {"Enabled", "DISABLED"}, {"up", "down"}, {"true", "false"}};
    for (const Verb &v : verbs) {
        SCOPED_TRACE(v.command);
        const std::string line = std::string(v.command) + " " + v.args + " ";
        auto words = std::vector<std::pair<const char *, const char *>>{{v.on, v.off}};
        words.insert(words.end(), std::begin(common), std::end(common));
        for (auto [on, off] : words) {
            ok(line + off);
            EXPECT_FALSE(v.state(*sw_)) << off;
            ok(line + on);
            EXPECT_TRUE(v.state(*sw_)) << on;
        }
        const auto help = swctl(std::string(v.command) + " --help").out;
        for (const char *word : {v.on, v.off, "yes/no", "true/false", "enabled/disabled", "1/0"})
            EXPECT_NE(help.find(word), std::string::npos) << word << " in\n" << help;
    }
}

// `counter` takes a statistic by number or by name and lists them all.
TEST_F(LiveSwctl, CounterTakesAStatisticByNumberOrName) {
    namespace stat = swsim::stat;
    ok("link 1/4 down");  // counters stand still
    const std::pair<const char *, int> cases[] = {
        {"HCInOctets", stat::kInOctets}, {"inucast", stat::kInUcast}, {"3", stat::kInDiscards}, {"FCSERRORS", stat::kFcsErrors}};
    uint64_t value = 1000;
    for (auto [word, number] : cases) {
        ok("counter 1/4 " + std::string(word) + " " + std::to_string(++value));
        EXPECT_EQ(sw_->counter(0, 3, number), value) << word;
    }
    fails("counter 1/4 InFrames 5", "statistic 18 is a sum of others; set those");
    fails("counter 1/4 Bogus 5", "'Bogus' is not a statistic number or name (see swctl counter --help)");

    const auto help = swctl("counter --help").out;
    for (const auto &s : stat::kNamed) {
        const std::string entry = std::to_string(s.number) + (swsim::statistic_settable(s.number) ? "  " : "* ") + s.name;
        EXPECT_NE(help.find(entry), std::string::npos) << entry << " in\n" << help;
    }
}

// The type column names each kind of port (it once showed '?' throughout).
TEST_F(LiveSwctl, ShowPortsNamesThePortTypes) {
    const auto show = swctl("show ports");
    ASSERT_EQ(show.code, 0);
    std::istringstream lines(show.out);
    std::string line, port, type;
    std::getline(lines, line);  // heading
    int rows = 0;
    while (lines >> port >> type && std::getline(lines, line)) {
        const auto slash = port.find('/');
        const auto info = sw_->port(std::stoi(port.substr(0, slash)) - 1, std::stoi(port.substr(slash + 1)) - 1);
        EXPECT_EQ(type, info.type == swsim::port_type::kSfpPlus ? "sfp+" : "copper") << port;
        ++rows;
    }
    EXPECT_EQ(rows, 16);
}

// `create --force` under a process that has the switch open (the agent)
// rewrites the file it has mapped, once its readers are done.
TEST_F(LiveSwctl, CreateForceRewritesTheSwitchItsUsersHaveOpen) {
    struct stat before {}, after {};
    ASSERT_EQ(stat(state_.c_str(), &before), 0);
    sw_status_t *status = get_status();
    status->vlan_changed_current = 0;

    ASSERT_EQ(lock_read(cfg_lock_table[2]), 0);  // as the agent's handlers do
    auto created = std::async(std::launch::async, [&] { return swctl("create --force " SCENARIO_DIR "/default.json"); });
    EXPECT_EQ(created.wait_for(300ms), std::future_status::timeout) << "it waits for the reader";
    EXPECT_EQ(sw_->system().hostname, "sw-test");
    ASSERT_EQ(lock_free(cfg_lock_table[2]), 0);
    ASSERT_EQ(created.wait_for(10s), std::future_status::ready);
    const auto run = created.get();
    EXPECT_EQ(run.code, 0) << run.err;

    ASSERT_EQ(stat(state_.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino) << "the same file";
    EXPECT_EQ(get_status(), status);
    EXPECT_EQ(status->units[0].user_ports, 28u) << "the pointer handed out shows the new switch";
    EXPECT_EQ(status->vlan_changed_current, 1u) << "users are told to read the VLANs again";
    char name[64] = {};
    ASSERT_EQ(cfg_get_hostname(name, sizeof name), 0);
    EXPECT_STREQ(name, "sw-lab-01");
    EXPECT_EQ(sw_->system().hostname, "sw-lab-01");
    EXPECT_EQ(sw_->unit(1).ports, 28);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir_), {}), 3) << "state, swctl.out and .err only";
}

// Replacing a big switch by a small one gives the disk back.
TEST_F(Swctl, ASmallerSwitchTakesNoMoreDiskThanANewOne) {
    const auto blocks = [](const std::string &path) {
        struct stat st {};
        EXPECT_EQ(stat(path.c_str(), &st), 0);
        return st.st_blocks;
    };
    swsim::create_state(dir_ + "/fresh.state", SCENARIO_DIR "/default.json");
    swsim::create_state(state_, SCENARIO_DIR "/max.json");
    const auto big = blocks(state_);
    swsim::create_state(state_, SCENARIO_DIR "/default.json");
    EXPECT_LT(blocks(state_), big);
    EXPECT_LE(blocks(state_), blocks(dir_ + "/fresh.state") + 8);
}

}  // namespace
