// The CFM probes of the simulated switch: what a scenario and the operator
// may configure, the refusals of the rest, and swctl's cfm verbs.
#include <string>

#include "support.hpp"

namespace {

using simtest::TempDir;
using swsim::Switch;

TEST_F(TempDir, ScenarioProbesAndTheirRefusals) {
    const struct {
        const char *probes;
        const char *problem;  // "" when accepted
    } cases[] = {
        {R"([{"id": 9, "port": "1/3", "target": "02:00:00:00:00:09", "delay_us": 10000000, "jitter_us": 0},
             {"port": "1/2", "target": "02:00:00:00:00:01"}])", ""},
        {R"([{"id": 4, "port": "1/2", "target": "02:00:00:00:00:01"}, {"id": 4, "port": "1/3", "target": "02:00:00:00:00:02"}])",
         "cfm.probes[1]: probe 4 exists already"},
        {R"([{"port": "1/2-3", "target": "02:00:00:00:00:01"}])", "cfm.probes[0].port: must be one port, U/P"},
        {R"([{"port": "T1", "target": "02:00:00:00:00:01"}])", "cfm.probes[0].port: must be one port, U/P"},
        {R"([{"port": "1/2", "target": "02:00:00:00:01"}])", "cfm.probes[0]: needs a target"},
        {R"([{"id": 65536, "port": "1/2", "target": "02:00:00:00:00:01"}])", "cfm.probes[0].id: must be 1..65535"},
        {R"([{"port": "1/2", "target": "02:00:00:00:00:01", "delay_us": 9000000, "jitter_us": 2000000}])",
         "cfm.probes[0]: a path's delay is 1 us .. 10 s, its jitter included"},
    };
    for (const auto &c : cases) {
        const std::string json =
            R"({"units": [{"ports": 8}], "trunks": [{"id": 1, "members": ["1/5"]}], "cfm": {"probes": )" + std::string(c.probes) + "}}";
        const std::string got = simtest::complaint([&] { swsim::create_state_from_json(state_, json); });
        if (*c.problem == '\0') {
            EXPECT_EQ(got, "(none)") << c.probes;
        } else {
            EXPECT_NE(got.find(c.problem), std::string::npos) << c.probes << "\n" << got;
        }
    }
    const auto probes = Switch(state_).cfm_probes();  // the accepted one's
    ASSERT_EQ(probes.size(), 2u);
    EXPECT_EQ(probes[0].probe.id, 2u) << "kept in the order of their numbers";
    EXPECT_EQ(probes[1].probe.id, 9u);
    EXPECT_EQ(probes[0].delay_us, 100u);
    EXPECT_EQ(probes[0].jitter_us, 20u);
}

TEST_F(TempDir, SwctlAddsShowsAndRemovesProbesUpToTheLimit) {
    swsim::create_state_from_json(state_, R"({"units": [{"ports": 8}], "ports": [{"select": "1/1-2", "link": true}]})");
    ok("cfm probe add 7 1/2 02:00:5e:20:00:07 --delay-us 300 --jitter-us 0");
    ok("cfm probe add 3 1/4 02:00:5e:20:00:03");
    const auto show = swctl("cfm show");
    const std::size_t three = show.out.find("\n3      1/4    02:00:5e:20:00:03"), seven = show.out.find("\n7      1/2");
    ASSERT_NE(three, std::string::npos) << show.out;
    EXPECT_LT(three, seven) << "by number\n" << show.out;
    EXPECT_NE(show.out.find("     300         0      300 0\n"), std::string::npos) << show.out;
    EXPECT_NE(show.out.find("no measurement: link down"), std::string::npos) << "1/4's link is down\n" << show.out;
    fails("cfm probe add 7 1/3 02:00:5e:20:00:08", "probe 7 exists already");
    fails("cfm probe add 8 1/9 02:00:5e:20:00:08", "no port 1/9");
    fails("cfm probe add 0 1/3 02:00:5e:20:00:08", "probes are numbered 1..65535");
    fails("cfm probe add 8 1/3 02:00:5e:20:00", "'02:00:5e:20:00' is not a MAC address (aa:bb:cc:dd:ee:ff)");
    fails("cfm probe del 4", "no probe 4");
    ok("cfm probe del 7");
    Switch sw(state_);
    Switch::CfmProbeSettings s;
    for (s.id = SW_CFM_PROBE_MAX_ID; sw.cfm_probes().size() < SW_CFM_PROBES; --s.id) sw.cfm_probe_add(s);
    fails("cfm probe add 1 1/3 02:00:5e:20:00:01", "the switch runs at most 64 probes");
    EXPECT_EQ(sw.cfm_probes().back().probe.id, uint32_t(SW_CFM_PROBE_MAX_ID));
}

}  // namespace
