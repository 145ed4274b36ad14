// The CFM probes of the simulated switch: what a scenario and the operator
// may configure and the refusals of the rest, and swctl's cfm verbs.
#include <string>

#include "support.hpp"

namespace {

using simtest::TempDir;
using swsim::Switch;

std::string with_probes(const std::string &probes) {
    return R"({"units": [{"ports": 8}], "trunks": [{"id": 1, "members": ["1/5"]}], "cfm": {"probes": )" + probes + "}}";
}

TEST_F(TempDir, ScenarioProbesAndTheirRefusals) {
    const struct {
        const char *probes;
        const char *problem;  // "" when accepted
    } cases[] = {
        {R"([{"port": "1/2", "target": "02:00:00:00:00:01"}, {"id": 9, "port": "1/3", "target": "02:00:00:00:00:09",
             "delay_us": 10000000, "jitter_us": 0}])",
         ""},
        {R"([{"id": 4, "port": "1/2", "target": "02:00:00:00:00:01"}, {"id": 4, "port": "1/3", "target": "02:00:00:00:00:02"}])",
         "cfm.probes[1]: probe 4 exists already"},
        {R"([{"port": "1/2-3", "target": "02:00:00:00:00:01"}])", "cfm.probes[0].port: must be one port, U/P"},
        {R"([{"port": "T1", "target": "02:00:00:00:00:01"}])", "cfm.probes[0].port: must be one port, U/P"},
        {R"([{"port": "1/2", "target": "02:00:00:00:01"}])",
         "cfm.probes[0]: needs a target, the remote MEP's MAC address like 02:00:5e:20:00:01"},
        {R"([{"port": "1/2"}])", "cfm.probes[0]: needs a target, the remote MEP's MAC address like 02:00:5e:20:00:01"},
        {R"([{"id": 65536, "port": "1/2", "target": "02:00:00:00:00:01"}])", "cfm.probes[0].id: must be 1..65535"},
        {R"([{"port": "1/2", "target": "02:00:00:00:00:01", "delay_us": 9000000, "jitter_us": 2000000}])",
         "cfm.probes[0]: a path's delay is 1 us .. 10 s, its jitter included"},
        {R"([{"port": "1/2", "target": "02:00:00:00:00:01", "mep": 3}])", "cfm.probes[0].mep: unknown field"},
    };
    for (const auto &c : cases) {
        const std::string json = with_probes(c.probes);
        const std::string got = simtest::complaint([&] { swsim::create_state_from_json(state_, json); });
        if (*c.problem == '\0') {
            EXPECT_EQ(got, "(none)") << c.probes;
        } else {
            EXPECT_NE(got.find(c.problem), std::string::npos) << c.probes << "\n" << got;
        }
    }
    swsim::create_state_from_json(state_, with_probes(R"([{"id": 9, "port": "1/3", "target": "02:00:00:00:00:09"},
                                                          {"id": 2, "port": "1/2", "target": "02:00:00:00:00:02"}])"));
    const std::vector<Switch::CfmProbeInfo> probes = Switch(state_).cfm_probes();
    ASSERT_EQ(probes.size(), 2u);
    EXPECT_EQ(probes[0].probe.id, 2u) << "kept in the order of their numbers";
    EXPECT_EQ(probes[1].probe.id, 9u);
    EXPECT_EQ(probes[1].probe.port0, 2);
    EXPECT_EQ(probes[1].delay_us, 100u);
    EXPECT_EQ(probes[1].jitter_us, 20u);
}

TEST_F(TempDir, TheOperatorAddsAndRemovesProbesUpToTheLimit) {
    swsim::create_state_from_json(state_, with_probes("[]"));
    Switch sw(state_);
    Switch::CfmProbeSettings s;
    for (uint32_t id = SW_CFM_PROBE_MAX_ID; id > SW_CFM_PROBE_MAX_ID - SW_CFM_PROBES; --id) {
        s.id = id;
        sw.cfm_probe_add(s);
    }
    s.id = 1;
    EXPECT_EQ(simtest::complaint([&] { sw.cfm_probe_add(s); }), "the switch runs at most 64 probes");
    sw.cfm_probe_remove(SW_CFM_PROBE_MAX_ID - 10);
    sw.cfm_probe_add(s);
    const auto probes = sw.cfm_probes();
    ASSERT_EQ(probes.size(), size_t(SW_CFM_PROBES));
    EXPECT_EQ(probes.front().probe.id, 1u);
    EXPECT_EQ(probes.back().probe.id, uint32_t(SW_CFM_PROBE_MAX_ID));
    for (std::size_t i = 1; i < probes.size(); ++i) EXPECT_LT(probes[i - 1].probe.id, probes[i].probe.id);

    const struct {
        uint32_t id;
        int unit0, port0;
        const char *problem;
    } refusals[] = {{0, 0, 0, "probes are numbered 1..65535"},
                    {70000, 0, 0, "probes are numbered 1..65535"},
                    {2, 0, 8, "no port 1/9"},
                    {2, 1, 0, "no port 2/1"},
                    {1, 0, 0, "probe 1 exists already"}};
    sw.cfm_probe_remove(SW_CFM_PROBE_MAX_ID);
    for (const auto &r : refusals) {
        Switch::CfmProbeSettings bad;
        bad.id = r.id, bad.unit0 = r.unit0, bad.port0 = r.port0;
        EXPECT_EQ(simtest::complaint([&] { sw.cfm_probe_add(bad); }), r.problem) << r.id;
    }
    EXPECT_EQ(sw.cfm_probes().size(), size_t(SW_CFM_PROBES - 1)) << "a refusal adds nothing";
    EXPECT_EQ(simtest::complaint([&] { sw.cfm_probe_remove(2); }), "no probe 2");
}

TEST_F(TempDir, SwctlShowsAddsAndRemovesProbes) {
    swsim::create_state_from_json(state_, R"({"units": [{"ports": 8}], "ports": [{"select": "1/1-2", "link": true}]})");
    ok("cfm probe add 7 1/2 02:00:5e:20:00:07 --delay-us 300 --jitter-us 0");
    ok("cfm probe add 3 1/4 02:00:5e:20:00:03");
    const auto show = swctl("cfm show");
    EXPECT_EQ(show.code, 0);
    const std::size_t three = show.out.find("\n3      1/4    02:00:5e:20:00:03"), seven = show.out.find("\n7      1/2");
    ASSERT_NE(three, std::string::npos) << show.out;
    ASSERT_NE(seven, std::string::npos) << show.out;
    EXPECT_LT(three, seven) << "by number";
    EXPECT_NE(show.out.find("     300         0      300 0\n"), std::string::npos) << show.out;
    EXPECT_NE(show.out.find("no measurement: link down"), std::string::npos) << "1/4's link is down\n" << show.out;
    fails("cfm probe add 7 1/3 02:00:5e:20:00:08", "probe 7 exists already");
    fails("cfm probe add 8 1/3 02:00:5e:20:00", "'02:00:5e:20:00' is not a MAC address (aa:bb:cc:dd:ee:ff)");
    fails("cfm probe del 4", "no probe 4");
    ok("cfm probe del 7");
    EXPECT_EQ(Switch(state_).cfm_probes().size(), 1u);
}

}  // namespace
