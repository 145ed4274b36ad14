// CFM delay measurement probes: rows by probe number with their port and
// target, delays that move once a second and repeat with the uptime, no
// measurement on a link that is down or a unit that is absent, and platform
// failures read as no row or no measurement.
#include <set>

#include "fixture.hpp"
#include "tables/catalogue.hpp"

extern "C" void cfmProbeDmTable_removeEntry(int32_t i) {
    unit::rows().removed.push_back("cfmProbeDmTable " + std::to_string(i));
}

namespace unit {
namespace {

struct Reading {
    uint32_t delay, variation;
    bool operator==(const Reading &) const = default;
};
Reading reading(int32_t probe) { return {get_cfmProbeDmDelay(probe), get_cfmProbeDmDelayVariation(probe)}; }

class CfmTest : public SwitchTest {
protected:
    // Listed out of order; 2/3's link is down.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}, {"ports": 28}], "ports": [{"select": ["1/1-28", "2/1-2"], "link": true}],
                   "cfm": {"probes": [{"id": 10, "port": "1/4", "target": "02:00:5e:20:00:0a", "delay_us": 500, "jitter_us": 300},
                                      {"id": 3, "port": "2/1", "target": "02:00:5e:20:00:03", "delay_us": 80, "jitter_us": 0},
                                      {"id": 7, "port": "2/3", "target": "02:00:5e:20:00:07"}]}})";
    }
    std::vector<int32_t> populated() {
        rows().clear();
        init_index_cfmProbeDmTable(add_int_row);
        return rows().ints;
    }
    // Half a second into second s of uptime: that second's measurement.
    void at_second(uint64_t s) { sw().set_uptime_cs(s * 100 + 50); }
};

TEST_F(CfmTest, RowsAreTheProbesByNumberWithTheirPortAndTarget) {
    EXPECT_EQ(populated(), (std::vector<int32_t>{3, 7, 10}));
    const struct {
        int32_t probe, port;
        const char *target;
    } cases[] = {{3, 65, "\x02\x00\x5e\x20\x00\x03"}, {10, 4, "\x02\x00\x5e\x20\x00\x0a"}, {4, 0, ""}, {0, 0, ""}, {65536, 0, ""}};
    for (const auto &c : cases) {
        EXPECT_EQ(get_cfmProbeDmPort(c.probe), c.port) << c.probe;
        EXPECT_EQ(read_text(get_cfmProbeDmTarget, c.probe), std::string(c.target, c.port ? 6 : 0)) << c.probe;
        EXPECT_EQ(exists_entry_cfmProbeDmTable(c.probe), c.port ? 1 : 0) << c.probe;
    }
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"cfmProbeDmTable 4", "cfmProbeDmTable 0", "cfmProbeDmTable 65536"}));
    swsim::Switch::CfmProbeSettings s;
    s.id = 5;
    sw().cfm_probe_add(s);
    sw().cfm_probe_remove(10);
    EXPECT_EQ(populated(), (std::vector<int32_t>{3, 5, 7}));
}

TEST_F(CfmTest, DelaysMoveEachSecondAndRepeatWithTheUptime) {
    std::vector<Reading> seen;
    std::set<uint32_t> delays;
    for (uint64_t s = 100; s < 140; ++s) {
        at_second(s);
        seen.push_back(reading(10));
        delays.insert(seen.back().delay);
        EXPECT_GE(seen.back().delay, 500u);
        EXPECT_LE(seen.back().delay, 800u);
        if (s > 100) {
            const uint32_t a = seen.back().delay, b = seen[seen.size() - 2].delay;
            EXPECT_EQ(seen.back().variation, a > b ? a - b : b - a) << s;
        }
    }
    EXPECT_GT(delays.size(), 10u) << "the delay moves from second to second";
    for (uint64_t s : {100, 117, 139}) {
        at_second(s);
        EXPECT_EQ(reading(10), seen[s - 100]) << s << " reads the same again";
    }
    EXPECT_EQ(reading(3), (Reading{80, 0})) << "a path without jitter";
    at_second(0);
    EXPECT_EQ(get_cfmProbeDmDelayVariation(10), 0u) << "nothing before the first second to differ from";
}

TEST_F(CfmTest, NoMeasurementWhileTheLinkIsDownOrTheUnitAbsent) {
    at_second(50);
    const Reading up = reading(3);
    ASSERT_GT(up.delay, 0u);
    EXPECT_EQ(reading(7), (Reading{0, 0})) << "2/3's link is down";
    for (bool unit : {false, true}) {
        unit ? sw().set_unit_present(1, false) : sw().set_link(1, 0, false);
        EXPECT_EQ(reading(3), (Reading{0, 0})) << unit;
        EXPECT_EQ(exists_entry_cfmProbeDmTable(3), 1) << unit << ": the probe keeps its row";
        EXPECT_GT(get_cfmProbeDmDelay(10), 0u) << "unit 1 is not concerned";
        unit ? sw().set_unit_present(1, true) : sw().set_link(1, 0, true);
        at_second(50);
        EXPECT_EQ(reading(3), up) << unit;
    }
}

TEST_F(CfmTest, PlatformFailuresReadAsNoRowOrNoMeasurement) {
    const struct {
        const char *call;
        std::vector<int32_t> rows;
        int32_t port;
        bool measured;
    } cases[] = {{"cfg_get_cfm_probe_next", {}, 4, true},
                 {"cfg_get_cfm_probe", {3, 7, 10}, 0, true},
                 {"bcmd_get_cfm_dm_result", {3, 7, 10}, 4, false}};
    for (const auto &c : cases) {
        sw().fault_set(c.call, -1, -1);
        EXPECT_EQ(populated(), c.rows) << c.call;
        EXPECT_EQ(get_cfmProbeDmPort(10), c.port) << c.call;
        EXPECT_EQ(reading(10).delay > 0, c.measured) << c.call;
        if (!c.measured) {
            EXPECT_EQ(reading(10).variation, 0u) << c.call;
        }
        sw().fault_clear(c.call);
    }
    EXPECT_EQ(call_texts([] { get_cfmProbeDmDelay(7); }), std::vector<std::string>{"bcmd_get_cfm_dm_result(7)"});
}

}  // namespace
}  // namespace unit
