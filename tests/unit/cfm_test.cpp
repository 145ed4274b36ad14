// CFM delay measurement probes: rows by probe number, the port and target of
// each, delays that move once a second and repeat with the uptime, no
// measurement on a link that is down or a unit that is absent, and platform
// failures read as no row or no measurement.
#include <functional>
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
        return R"({"units": [{"ports": 28}, {"ports": 28}],
                   "ports": [{"select": ["1/1-28", "2/1-2"], "link": true}],
                   "cfm": {"probes": [{"id": 10, "port": "1/4", "target": "02:00:5e:20:00:0a", "delay_us": 500, "jitter_us": 300},
                                      {"id": 3, "port": "2/1", "target": "02:00:5e:20:00:03", "delay_us": 80, "jitter_us": 0},
                                      {"id": 7, "port": "2/3", "target": "02:00:5e:20:00:07"}]}})";
    }
    // Whole seconds of uptime, half a second in: the measurement of that second.
    void at_second(uint64_t s) { sw().set_uptime_cs(s * 100 + 50); }
};

TEST_F(CfmTest, RowsAreTheProbesByNumberWithTheirPortAndTarget) {
    init_index_cfmProbeDmTable(add_int_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{3, 7, 10}));
    const struct {
        int32_t probe;
        int32_t port;
        std::vector<uint8_t> target;
    } cases[] = {{3, 65, {0x02, 0x00, 0x5e, 0x20, 0x00, 0x03}},
                 {7, 67, {0x02, 0x00, 0x5e, 0x20, 0x00, 0x07}},
                 {10, 4, {0x02, 0x00, 0x5e, 0x20, 0x00, 0x0a}},
                 // No probe: nothing to tell.
                 {4, 0, {}},
                 {0, 0, {}},
                 {65536, 0, {}}};
    for (const auto &c : cases) {
        EXPECT_EQ(get_cfmProbeDmPort(c.probe), c.port) << c.probe;
        EXPECT_EQ(read_octets(get_cfmProbeDmTarget, c.probe), c.target) << c.probe;
        EXPECT_EQ(exists_entry_cfmProbeDmTable(c.probe), c.port ? 1 : 0) << c.probe;
    }
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"cfmProbeDmTable 4", "cfmProbeDmTable 0", "cfmProbeDmTable 65536"}));
    // A probe added or removed by the operator is a row, or none, at the next look.
    swsim::Switch::CfmProbeSettings s;
    s.id = 5;
    s.unit0 = 0, s.port0 = 8;
    sw().cfm_probe_add(s);
    sw().cfm_probe_remove(10);
    rows().clear();
    init_index_cfmProbeDmTable(add_int_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{3, 5, 7}));
    EXPECT_EQ(exists_entry_cfmProbeDmTable(10), 0);
}

TEST_F(CfmTest, DelaysMoveEachSecondAndRepeatWithTheUptime) {
    std::vector<Reading> seen;
    for (uint64_t s = 100; s < 140; ++s) {
        at_second(s);
        seen.push_back(reading(10));
    }
    std::set<uint32_t> delays;
    for (std::size_t k = 0; k < seen.size(); ++k) {
        EXPECT_GE(seen[k].delay, 500u) << k;
        EXPECT_LE(seen[k].delay, 800u) << k;
        delays.insert(seen[k].delay);
        if (k > 0) {
            const uint32_t a = seen[k].delay, b = seen[k - 1].delay;
            EXPECT_EQ(seen[k].variation, a > b ? a - b : b - a) << k;
        }
    }
    EXPECT_GT(delays.size(), 10u) << "the delay moves from second to second";
    // The same second reads the same, whoever asks and however often.
    for (uint64_t s : {100, 117, 139}) {
        at_second(s);
        EXPECT_EQ(reading(10), seen[s - 100]) << s;
        EXPECT_EQ(reading(10), seen[s - 100]) << s;
    }
    // A path without jitter reads its delay and no variation; the second of
    // boot has no measurement before it to differ from.
    EXPECT_EQ(reading(3), (Reading{80, 0}));
    at_second(0);
    EXPECT_EQ(get_cfmProbeDmDelayVariation(10), 0u);
    EXPECT_GE(get_cfmProbeDmDelay(10), 500u);
}

TEST_F(CfmTest, NoMeasurementWhileTheLinkIsDownOrTheUnitAbsent) {
    at_second(50);
    const Reading up = reading(3);
    EXPECT_EQ(reading(7), (Reading{0, 0})) << "2/3's link is down";
    ASSERT_GT(up.delay, 0u);
    const struct {
        const char *what;
        std::function<void()> down, back;
    } cases[] = {{"link down", [this] { sw().set_link(1, 0, false); }, [this] { sw().set_link(1, 0, true); }},
                 {"unit absent", [this] { sw().set_unit_present(1, false); }, [this] { sw().set_unit_present(1, true); }}};
    for (const auto &c : cases) {
        c.down();
        EXPECT_EQ(reading(3), (Reading{0, 0})) << c.what;
        rows().clear();
        EXPECT_EQ(exists_entry_cfmProbeDmTable(3), 1) << c.what << ": the probe keeps its row";
        EXPECT_EQ(get_cfmProbeDmPort(3), 65) << c.what;
        c.back();
        at_second(50);
        EXPECT_EQ(reading(3), up) << c.what;
    }
    EXPECT_GT(reading(10).delay, 0u) << "unit 1 stayed";
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
        rows().clear();
        init_index_cfmProbeDmTable(add_int_row);
        EXPECT_EQ(rows().ints, c.rows) << c.call;
        EXPECT_EQ(get_cfmProbeDmPort(10), c.port) << c.call;
        EXPECT_EQ(exists_entry_cfmProbeDmTable(10), c.port ? 1 : 0) << c.call;
        EXPECT_EQ(reading(10).delay > 0, c.measured) << c.call;
        if (!c.measured) {
            EXPECT_EQ(reading(10).variation, 0u) << c.call;
        }
        sw().fault_clear(c.call);
    }
    // One platform call per value, for the probe asked about.
    EXPECT_EQ(call_texts([] { get_cfmProbeDmDelay(7); }), std::vector<std::string>{"bcmd_get_cfm_dm_result(7)"});
    EXPECT_EQ(call_texts([] { get_cfmProbeDmPort(3); }), std::vector<std::string>{"cfg_get_cfm_probe(3)"});
}

}  // namespace
}  // namespace unit
