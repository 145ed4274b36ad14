// Device information, the serial console and processor and memory load:
// the date, vendor and serial number mappings, the console's fixed
// settings, and which units the usage tables list.
#include <cstring>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class DeviceTest : public SwitchTest {
protected:
    // Units 1 and 3 present, unit 2 out of the stack for now.
    std::string scenario() const override {
        return R"({"units": [{"ports": 8}, {"ports": 8, "present": false}, {"ports": 8}],
                   "chassis": {"units": [{"unit": "all", "cpu": 30, "mem": 60, "cpu_swing": 0, "mem_swing": 0},
                                         {"unit": 3, "cpu": 75, "mem": 20}]}})";
    }
    void device(const std::string &date, uint64_t serial = 730012345, uint32_t model_word = 7,
                const std::string &boot = "1.4.2") {
        sw().set_device_info(swsim::Switch::DeviceInfo{boot, date, serial, model_word});
    }
};

TEST_F(DeviceTest, FirmwareBuildDatesReadAsYearMonthDayHourMinute) {
    struct Case {
        const char *date;
        const char *text;  // "" for no value
    };
    const Case cases[] = {
        {"Tue Mar 02 14:05:00 UTC 2021", "2103021405"},
        {"Mon Dec 31 23:59:59 UTC 1999", "9912312359"},
        {"Sun Jan 01 00:00:00 UTC 2051", "5101010000"},
        {"Tue Mar 02 14:05:00 CET 2021", ""},  // only UTC is the platform's form
        {"2021-03-02 14:05:00", ""},
        {"Tue Mar 02 14:05 UTC 2021", ""},     // no seconds
        {"", ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.date);
        device(c.date);
        EXPECT_EQ(read_text(get_genDvInfDeviceFirmReleaseDate, 1, 1), c.text);
    }
}

TEST_F(DeviceTest, VendorCodeIsTheModelWordForKnownModelsOnly) {
    for (uint32_t w = 0; w <= 40; ++w) {
        device("", 1, w);
        const bool own = w == 1 || w == 2 || w == 7 || w == 9 || w == 15;
        EXPECT_EQ(get_genDvInfDeviceVendor(1, 1), own ? int32_t(w) : 2000000254) << w;
    }
    device("", 1, 0xFFFFFFFFu);
    EXPECT_EQ(get_genDvInfDeviceVendor(1, 1), 2000000254);
}

TEST_F(DeviceTest, SerialNumberAndBootVersionTexts) {
    struct Case {
        uint64_t serial;
        const char *text;
    };
    const Case cases[] = {
        {0, "0"},
        {730012345, "730012345"},
        {999999999999999ULL, "999999999999999"},  // 15 digits fit
        {18446744073709551615ULL, "184467440737095"},  // 20 digits: the first 15
    };
    for (const Case &c : cases) {
        device("", c.serial);
        EXPECT_EQ(read_text(get_genDvInfDeviceSerialNo, 1, 1), c.text);
    }
    device("", 1, 7, std::string(31, 'b'));
    EXPECT_EQ(read_text(get_genDvInfDeviceBootVersion, 1, 1), std::string(31, 'b'));
    device("", 1, 7, "");
    EXPECT_EQ(read_text(get_genDvInfDeviceBootVersion, 1, 1), "");
}

TEST_F(DeviceTest, OneDeviceRowWithItsFixedColumns) {
    EXPECT_EQ(init_index_genDvInfDeviceTable(add_pair_row<int32_t>), 0);
    EXPECT_EQ(rows().keys, (std::vector<std::string>{"1.1"}));
    EXPECT_EQ(exists_entry_genDvInfDeviceTable(1, 1), 1);
    EXPECT_EQ(get_genDvInfDeviceDevNo(1, 1), 1);
    EXPECT_EQ(get_genDvInfDeviceDevLocalId(1, 1), 1);
    for (auto get : {get_genDvInfDeviceFirmVersion, get_genDvInfDeviceHWVersion, get_genDvInfDeviceE2PROMversion})
        EXPECT_EQ(read_text(get, 1, 1), "");
    // The product is sysObjectID's equipment OID.
    size_t len = 0, sys_len = 0;
    const uint32_t *product = get_genDvInfDeviceProduct(1, 1, &len);
    const uint32_t *sys = get_sysObjectID(&sys_len);
    ASSERT_EQ(len, sys_len);
    EXPECT_EQ(std::memcmp(product, sys, len), 0);
    EXPECT_EQ(len, 9 * sizeof(uint32_t));
    // The identification accepts anything and keeps nothing.
    EXPECT_EQ(count_calls("cfg_set_hostname", [] { EXPECT_EQ(set_genDvInfDeviceIdent(1, 1, 42), 0); }), 0u);
    EXPECT_EQ(get_genDvInfDeviceIdent(1, 1), 0);
}

TEST_F(DeviceTest, TheConsoleHasFixedSettingsAndRefusesWrites) {
    EXPECT_EQ(get_rs232Number(), 1);
    for (auto init : {init_index_rs232PortTable, init_index_rs232AsyncPortTable}) EXPECT_EQ(init(add_int_row), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 1}));
    rows().clear();
    EXPECT_EQ(init_index_rs232InSigTable(add_pair_row<int32_t>), 0);
    EXPECT_EQ(init_index_rs232OutSigTable(add_pair_row<int32_t>), 0);
    EXPECT_EQ(init_index_rs232SyncPortTable(add_int_row), 0);
    EXPECT_TRUE(rows().ints.empty() && rows().keys.empty());

    struct Column {
        int32_t (*get)(int32_t);
        int32_t value;
        int (*set)(int32_t, int32_t);  // null: read-only
    };
    const Column columns[] = {
        {get_rs232PortIndex, 1, nullptr},
        {get_rs232PortType, 2, nullptr},
        {get_rs232PortInSigNumber, 0, nullptr},
        {get_rs232PortOutSigNumber, 0, nullptr},
        {get_rs232PortInSpeed, 9600, set_rs232PortInSpeed},
        {get_rs232PortOutSpeed, 9600, set_rs232PortOutSpeed},
        {get_rs232PortInFlowType, 1, set_rs232PortInFlowType},
        {get_rs232PortOutFlowType, 1, set_rs232PortOutFlowType},
        {get_rs232AsyncPortIndex, 1, nullptr},
        {get_rs232AsyncPortBits, 8, set_rs232AsyncPortBits},
        {get_rs232AsyncPortStopBits, 1, set_rs232AsyncPortStopBits},
        {get_rs232AsyncPortParity, 2, set_rs232AsyncPortParity},
        {get_rs232AsyncPortAutobaud, 2, set_rs232AsyncPortAutobaud},
    };
    for (const Column &c : columns) {
        EXPECT_EQ(c.get(1), c.value);
        if (!c.set) continue;
        EXPECT_EQ(c.set(1, 19200), -1);
        EXPECT_EQ(c.set(1, c.value), -1) << "even the value it has";
        EXPECT_EQ(c.get(1), c.value);
    }
    for (auto get : {get_rs232AsyncPortParityErrs, get_rs232AsyncPortFramingErrs, get_rs232AsyncPortOverrunErrs})
        EXPECT_EQ(get(1), 0u);
    for (auto set : {set_rs232SyncPortClockSource, set_rs232SyncPortRole, set_rs232SyncPortEncoding,
                     set_rs232SyncPortRTSControl, set_rs232SyncPortRTSCTSDelay, set_rs232SyncPortMode,
                     set_rs232SyncPortIdlePattern, set_rs232SyncPortMinFlags})
        EXPECT_EQ(set(1, 2), 0);
    EXPECT_EQ(get_rs232SyncPortMode(1), 0);
}

TEST_F(DeviceTest, ActiveUsageRowsFollowTheUnitsPresent) {
    for (auto init : {init_index_cpuActiveUsageTable, init_index_memActiveUsageTable}) {
        rows().clear();
        EXPECT_EQ(init(add_int_row), 0);
        EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 3}));
    }
    EXPECT_EQ(get_cpuActiveUsageValue(1), 30);
    EXPECT_EQ(get_memActiveUsageValue(1), 60);
    EXPECT_EQ(get_cpuActiveUsageValue(3), 75);
    EXPECT_EQ(get_memActiveUsageValue(3), 20);
    EXPECT_EQ(call_texts([] { get_cpuActiveUsageValue(3); }),
              (std::vector<std::string>{"cfg_cpumon_get_cpu_info(2,0)"}));

    rows().clear();
    sw().set_unit_present(2, false);
    EXPECT_EQ(exists_entry_cpuActiveUsageTable(3), 0);
    EXPECT_EQ(exists_entry_memActiveUsageTable(3), 0);
    EXPECT_EQ(exists_entry_cpuActiveUsageTable(1), 1);
    EXPECT_EQ(exists_entry_cpuActiveUsageTable(0), 0);
    EXPECT_EQ(exists_entry_cpuActiveUsageTable(9), 0);
    EXPECT_EQ(rows().removed, (std::vector<std::string>{"cpuActiveUsageTable 3", "memActiveUsageTable 3"}));
    sw().set_unit_present(1, true);
    rows().clear();
    init_index_cpuActiveUsageTable(add_int_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{1, 2}));
}

TEST_F(DeviceTest, AFailingMonitorReadsZero) {
    sw().fault_set("cfg_cpumon_get_cpu_info", -1, -1);
    sw().fault_set("cfg_cpumon_get_cpu_mem_info", -1, -1);
    EXPECT_EQ(get_cpuActiveUsageValue(1), 0);
    EXPECT_EQ(get_memActiveUsageValue(1), 0);
    EXPECT_EQ(get_swCpuUsage(), 0);
    EXPECT_EQ(get_swMemUsage(), 0);
    sw().fault_clear();
    EXPECT_EQ(get_swCpuUsage(), 30);
}

TEST_F(DeviceTest, StandbyAndSwitchWideUsageAskTheirProcessor) {
    EXPECT_EQ(init_index_cpuStandbyUsageTable(add_int_row), 0);
    EXPECT_EQ(init_index_memStandbyUsageTable(add_int_row), 0);
    EXPECT_TRUE(rows().ints.empty());
    EXPECT_EQ(exists_entry_cpuStandbyUsageTable(5), 1);
    // Whatever the row, the standby processor of unit0 0.
    EXPECT_EQ(call_texts([] { get_cpuStandbyUsageValue(7); }),
              (std::vector<std::string>{"cfg_cpumon_get_cpu_info(0,1)"}));
    EXPECT_EQ(call_texts([] { get_memStandbyUsageValue(2); }),
              (std::vector<std::string>{"cfg_cpumon_get_cpu_mem_info(0,1)"}));
    EXPECT_EQ(get_cpuStandbyUsageValue(1), 0) << "no standby processor in this stack";
    // The scalars read the processor the status block's selector names.
    get_status()->cpu_selector = 1;
    EXPECT_EQ(call_texts([] { get_swCpuUsage(); }), (std::vector<std::string>{"get_status()", "cfg_cpumon_get_cpu_info(0,1)"}));
    get_status()->cpu_selector = 0;
    EXPECT_EQ(get_swMemUsage(), 60);
}

}  // namespace
}  // namespace unit
