// CFM delay measurement probes and the factory reset through a real snmpd
// over scenarios/default.json: the probes walked, probes that swctl adds,
// removes and takes the link of seen at the next request, and switchResObj
// restarting the switch from the factory configuration.
#include "fixture.hpp"

namespace it {
namespace {

class Cfm : public AgentTest<Cfm> {};

const Oid kProbeEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.25.1.1");
const Oid kSwitchResObj = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.1.7.0");
const Oid kRestartConfig = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.7.2.0");
const Oid kFileEntry = parse_oid("1.3.6.1.4.1.99999.3.5.201.1.21.1.1");

Oid column(uint32_t c, uint32_t probe) { return child(kProbeEntry, {c, probe}); }

TEST_F(Cfm, TheProbesWalkAndFollowTheOperator) {
    const std::vector<VarBind> walk = reader().walk(kProbeEntry);
    ASSERT_EQ(walk.size(), 12u) << "three probes, four columns";
    EXPECT_EQ(row_indexes(walk, child(kProbeEntry, {1})), (std::vector<uint32_t>{1, 2, 5}));
    const struct {
        uint32_t probe;
        long port, lo, hi;  // the delay's bounds
    } rows[] = {{1, 25, 150, 190}, {2, 67, 2300, 2700}, {5, 21, 0, 0} /* 1/21's link is down */};
    for (const auto &r : rows) {
        EXPECT_EQ(must_get(column(1, r.probe)).integer, r.port) << r.probe;
        EXPECT_EQ(must_get(column(2, r.probe)).bytes, std::string("\x02\x00\x5e\x20\x00", 5) + char(r.probe));
        const VarBind delay = must_get(column(3, r.probe));
        EXPECT_EQ(delay.type, kGauge32);
        EXPECT_GE(delay.integer, r.lo) << r.probe;
        EXPECT_LE(delay.integer, r.hi) << r.probe;
        EXPECT_LE(must_get(column(4, r.probe)).integer, r.hi - r.lo) << r.probe;
    }
    EXPECT_EQ(set_one(SetValue::integer32(column(3, 1), 5)), kNotWritable);

    ASSERT_EQ(swctl("cfm probe add 9 1/6 02:00:5e:20:00:09 --delay-us 700 --jitter-us 0"), 0);
    EXPECT_EQ(must_get(column(3, 9)).integer, 700);
    ASSERT_EQ(swctl("link 1/6 down"), 0);
    EXPECT_EQ(must_get(column(3, 9)).integer, 0) << "no measurement while the link is down";
    EXPECT_EQ(must_get(column(1, 9)).integer, 6) << "the probe stays";
    ASSERT_EQ(swctl("cfm probe del 9"), 0);
    Response r = reader().get({column(3, 9)});
    ASSERT_EQ(r.varbinds.size(), 1u);
    EXPECT_EQ(r.varbinds[0].type, kNoSuchInstance);
}

TEST_F(Cfm, FactoryResetRewritesTheStartUpConfigurationAndRestartsOnce) {
    ASSERT_EQ(set_one(SetValue::integer32(kRestartConfig, 2)), kNoError);
    const Oid name = child(kFileEntry, {3, SW_FILE_CONFIG, 2});
    ASSERT_EQ(must_get(name).bytes, "lab-config");
    const uint32_t restarts = sw().files().restarts;
    const struct {
        SetValue value;
        long status;
    } refusals[] = {{SetValue::integer32(kSwitchResObj, 3), kGenErr},
                    {SetValue::octets(kSwitchResObj, "2"), kWrongType},
                    {SetValue::integer32(kSwitchResObj, 1), kNoError}};
    for (const auto &r : refusals) EXPECT_EQ(set_one(r.value), r.status);
    EXPECT_EQ(sw().files().restarts, restarts) << "refused values and normal(1) restart nothing";
    EXPECT_EQ(must_get(name).bytes, "lab-config");
    ASSERT_EQ(set_one(SetValue::integer32(kSwitchResObj, 2)), kNoError);
    EXPECT_EQ(sw().files().restarts, restarts + 1);
    EXPECT_EQ(sw().files().last_restart, SW_RESTART_FACTORY);
    EXPECT_EQ(must_get(name).bytes, "startup-config");
    EXPECT_EQ(must_get(kRestartConfig).integer, 2) << "the same file stays the start-up one";
    EXPECT_EQ(must_get(kSwitchResObj).integer, 1);
}

}  // namespace
}  // namespace it
