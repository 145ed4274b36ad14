// The chassis of the simulated switch: counts of a unit's address table
// and what the platform refuses, readings that move with time, alarm
// outputs, scenario fields and the swctl verbs.
#include <thread>

#include "support.hpp"
#include "swplatform/records_chassis.hpp"

namespace {

using simtest::SwitchTest;
using simtest::TempDir;
using swsim::Switch;

uint32_t summary(int unit0, int *rc = nullptr) {
    int32_t request[swp::mac_summary::kWords];
    swp::mac_summary::build(request, uint32_t(unit0));
    uint32_t count = 77;
    const int r = cfg_get_mac_address_table_summary(&count, request);
    if (rc) *rc = r;
    return count;
}

// kSmallSwitch has three addresses on unit 1 and one on unit 2.
TEST_F(SwitchTest, CountsAUnitsAddressesAndRefusesOtherRequests) {
    sw_->set_mac_summary(0, false);
    EXPECT_EQ(summary(0), 3u);
    EXPECT_EQ(summary(1), 1u);
    int rc = 0;
    EXPECT_EQ(summary(2, &rc), 77u) << "unit 3 is not in the stack";
    EXPECT_EQ(rc, -1);
    sw_->set_unit_present(1, false);
    EXPECT_EQ(summary(1), 1u) << "a unit that left is still known";

    int32_t request[swp::mac_summary::kWords];
    uint32_t count = 0;
    for (std::size_t word : {0, 1, 2, 3, 5, 6}) {
        swp::mac_summary::build(request, 0);
        request[word] ^= 0x10;
        EXPECT_EQ(cfg_get_mac_address_table_summary(&count, request), -1) << "word " << word;
    }
    swp::mac_summary::build(request, 0);
    request[swp::mac_summary::kUnitWord] |= 1;  // a byte beside the unit's
    EXPECT_EQ(cfg_get_mac_address_table_summary(&count, request), -1);
    EXPECT_EQ(cfg_get_mac_address_table_summary(nullptr, request), -1);
}

// A held count waits until it is released, and counts the table as it is
// then.
TEST_F(SwitchTest, AHeldCountEndsWhenReleased) {
    sw_->set_mac_summary(0, true);
    std::atomic<bool> done{false};
    uint32_t count = 0;
    std::thread counter([&] {
        count = summary(0);
        done = true;
    });
    const uint8_t mac[6] = {0, 0, 0, 0, 0, 9};
    sw_->fdb_add(mac, 1, 0, 2, -1, false);
    EXPECT_FALSE(done) << "released too early";
    sw_->set_mac_summary(0, false);
    counter.join();
    EXPECT_EQ(count, 4u);
    EXPECT_THROW(sw_->set_mac_summary(60001, false), swsim::Error);
}

// Readings follow a wave of the time since boot: at the top of the wave a
// quarter period later they are at their base, and a steady unit keeps
// its base.
TEST_F(SwitchTest, ProcessorAndMemoryReadingsMoveWithTime) {
    sw_->set_load(0, Switch::Load{50, 40, 10, 0});
    uint32_t cpu = 0, mem = 0;
    sw_->set_uptime_cs(0);
    ASSERT_EQ(cfg_cpumon_get_cpu_info(0, SW_CPUMON_ACTIVE, &cpu), 0);
    EXPECT_GE(cpu, 59u);  // 60 at the top of the wave
    sw_->set_uptime_cs(1500);
    ASSERT_EQ(cfg_cpumon_get_cpu_info(0, SW_CPUMON_ACTIVE, &cpu), 0);
    EXPECT_NEAR(double(cpu), 50.0, 1.0);
    sw_->set_uptime_cs(3000);
    ASSERT_EQ(cfg_cpumon_get_cpu_info(0, SW_CPUMON_ACTIVE, &cpu), 0);
    EXPECT_LE(cpu, 41u);
    ASSERT_EQ(cfg_cpumon_get_cpu_mem_info(0, SW_CPUMON_ACTIVE, &mem), 0);
    EXPECT_EQ(mem, 40u);
    // Readings stay within 0 .. 100 whatever the swing.
    sw_->set_load(1, Switch::Load{95, 3, 20, 20});
    for (uint64_t cs : {0, 1000, 2000, 3000}) {
        sw_->set_uptime_cs(cs);
        ASSERT_EQ(cfg_cpumon_get_cpu_info(1, SW_CPUMON_ACTIVE, &cpu), 0);
        ASSERT_EQ(cfg_cpumon_get_cpu_mem_info(1, SW_CPUMON_ACTIVE, &mem), 0);
        EXPECT_LE(cpu, 100u);
        EXPECT_LE(mem, 23u);
    }
    EXPECT_EQ(cfg_cpumon_get_cpu_info(2, SW_CPUMON_ACTIVE, &cpu), -1) << "no unit 3";
    EXPECT_EQ(cfg_cpumon_get_cpu_info(0, SW_CPUMON_STANDBY, &cpu), -1) << "one management processor only";
    EXPECT_EQ(cfg_cpumon_get_cpu_info(0, 2, &cpu), -1);
    EXPECT_THROW(sw_->set_load(0, Switch::Load{101, 0, 0, 0}), swsim::Error);
}

TEST_F(SwitchTest, UptimeIsSixtyFourBitsOfHundredths) {
    sw_->set_uptime_cs((uint64_t(1) << 32) + 250);
    EXPECT_GE(uptime_cs(), (uint64_t(1) << 32) + 250);
    EXPECT_LT(uptime_cs(), (uint64_t(1) << 32) + 350);
    EXPECT_EQ(uptime(), uint32_t(((uint64_t(1) << 32) + 250) / 100));
    EXPECT_THROW(sw_->set_uptime_cs(uint64_t(1) << 62), swsim::Error) << "a boot before 1970";
}

TEST_F(SwitchTest, AlarmOutputsFollowFailuresAndRaisedInputs) {
    EXPECT_FALSE(sw_->alarm_output(0));
    EXPECT_FALSE(sw_->alarm_output(1));
    sw_->set_module(Switch::kFan, 1, 2, SW_MODULE_FAILED);
    EXPECT_TRUE(sw_->alarm_output(0));
    sw_->set_unit_present(1, false);
    EXPECT_FALSE(sw_->alarm_output(0)) << "only present units count";
    sw_->set_alarm_input(0, 1, true);
    EXPECT_TRUE(sw_->alarm_output(1));
    EXPECT_EQ(sw_->environment(0).alarms_raised, 2u);
    sw_->set_alarm_input(0, 1, false);
    sw_->set_alarm_output(1, true);
    EXPECT_TRUE(sw_->alarm_output(1)) << "forced";
    EXPECT_THROW(sw_->alarm_output(2), swsim::Error);
    EXPECT_THROW(sw_->set_alarm_input(0, 2, true), swsim::Error);
    int raised = 0;
    EXPECT_EQ(cfg_chassis_get_alarm_input(1, 0, &raised), -1) << "unit 2 left";
}

TEST_F(TempDir, ChassisScenarioFieldsAreChecked) {
    struct Case {
        const char *json;
        const char *problem;  // nullptr: accepted
    };
    const Case cases[] = {
        {R"({"chassis": {"psu_bays": 5}})", "<inline>: chassis.psu_bays: must be 0..4"},
        {R"({"chassis": {"fans": 9}})", "<inline>: chassis.fans: must be 0..8"},
        {R"({"chassis": {"agent_address": "10.0.0"}})", "<inline>: chassis.agent_address: must be an IPv4 address like 192.0.2.10"},
        {R"({"chassis": {"units": [{"unit": 1, "psus": ["ok", "ok", "ok"]}]}})",
         "<inline>: chassis.units[0].psus[2]: unit 1 has no power supply bay 3 (it has 2)"},
        {R"({"chassis": {"units": [{"unit": 1, "fans": ["spinning"]}]}})",
         "<inline>: chassis.units[0].fans[0]: must be ok, failed or absent"},
        {R"({"chassis": {"units": [{"unit": 2}]}})", "<inline>: chassis.units[0].unit: no unit 2 in this stack"},
        {R"({"chassis": {"units": [{"unit": 1, "alarms": [3]}]}})",
         "<inline>: chassis.units[0].alarms[0]: unit 1 has alarm inputs 1..2"},
        {R"({"chassis": {"units": [{"cpu": 5}]}})", "<inline>: chassis.units[0]: needs a unit (1..8 or \"all\")"},
        {R"({"chassis": {"mac_summary": 5}})", "<inline>: chassis.mac_summary: unknown field"},
        {R"({"chassis": {"model": 1, "alarm_outputs": 0, "units": [{"unit": "all", "psus": ["failed"]}]}})", nullptr},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.json);
        const std::string got = simtest::complaint([&] { swsim::create_state_from_json(state_, c.json); });
        EXPECT_EQ(got, c.problem ? c.problem : "(none)");
    }
}

TEST_F(TempDir, SwctlChangesTheChassis) {
    swsim::create_state_from_json(state_, simtest::kSmallSwitch);
    ok("psu 1/2 ok --model PSU-300DC");
    ok("fan 2/3 stopped");
    ok("alarm 1/1 raise");
    ok("load 2 --cpu 70 --mem 10 --steady");
    ok("temperature 1 45");
    ok("uptime 4294967300 --cs");
    ok("device --boot 2.0.1 --date \"Tue Mar 02 14:05:00 UTC 2021\" --serial 42 --model-word 9");
    Switch sw(state_);
    EXPECT_EQ(sw.module(Switch::kPsu, 0, 1).state, uint32_t(SW_MODULE_OK));
    EXPECT_STREQ(sw.module(Switch::kPsu, 0, 1).model, "PSU-300DC");
    EXPECT_EQ(sw.module(Switch::kFan, 1, 2).state, uint32_t(SW_MODULE_FAILED));
    EXPECT_EQ(sw.environment(0).alarms_raised, 1u);
    EXPECT_EQ(sw.environment(1).cpu, 70u);
    EXPECT_EQ(sw.environment(0).temperature_c, 45);
    EXPECT_EQ(sw.environment(1).temperature_c, 42) << "38 and a stopped fan";
    const Switch::DeviceInfo d = sw.device_info();
    EXPECT_EQ(d.boot_version, "2.0.1");
    EXPECT_EQ(d.fw_date, "Tue Mar 02 14:05:00 UTC 2021");
    EXPECT_EQ(d.serial_no, 42u);
    EXPECT_EQ(d.model_word, 9u);
    const auto shown = swctl("chassis");
    EXPECT_EQ(shown.code, 0);
    EXPECT_NE(shown.out.find("alarm outputs: 1 on 2 on"), std::string::npos) << shown.out;
    ok("psu 1/2 pulled");
    EXPECT_EQ(sw.module(Switch::kPsu, 0, 1).state, uint32_t(SW_MODULE_ABSENT));

    fails("psu 1/3 ok", "unit 1 has no power supply bay 3 (it has 2)");
    fails("fan 1/1 broken", "'broken' is not ok, failed or absent (also running, stopped, pulled)");
    fails("alarm 3/1 raise", "no unit 3 in this stack");
    fails("alarm-out 3 on", "the stack has alarm outputs 1..2");
    fails("load 1 --cpu 120", "processor load 120 is not a percentage (0..100)");
    fails("temperature 1 200", "temperature must be -40..125 degrees Celsius");
    fails("mac-count 70000", "a count takes at most 60000 ms");
    fails("uptime 1.5", "'1.5' is not a time since boot");
}

}  // namespace
