// Transceiver diagnostics: the unit and decibel conversions of the readings,
// which ports have rows, and what a pulled transceiver reads.
#include "fixture.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class TransceiversTest : public SwitchTest {
protected:
    // Two units; ports 25..28 of each are cages; 1/25, 1/26 and 2/27 fitted.
    std::string scenario() const override {
        return R"({"units": [{"ports": 28}, {"ports": 28}],
                   "trunks": [{"id": 1, "members": ["1/26"]}],
                   "ports": [{"select": ["1/25", "1/26", "2/27"], "sfp": true, "link": true}]})";
    }
    static constexpr int32_t kPort = 25;  // 1/25

    // Raw readings in the platform's units, through the control API.
    void fit(int32_t temperature, uint16_t voltage, uint16_t bias, uint16_t tx, uint16_t rx) {
        swsim::Ddm d;
        d.temperature_c = temperature;
        d.voltage_v = voltage / 10000.0;
        d.bias_ma = bias / 10.0;
        d.tx_power_mw = tx / 10000.0;
        d.rx_power_mw = rx / 10000.0;
        sw().set_transceiver_readings(0, kPort - 1, d);
    }
    static std::string read(const uint8_t *(*get)(int32_t, size_t *)) { return read_text(get, kPort); }
};

TEST_F(TransceiversTest, OpticalPowerInDecibelsAndTenths) {
    struct Case {
        uint16_t power;  // 0.1 microwatt
        const char *text;
        int32_t tenths;
    };
    const Case cases[] = {
        {10000, "0.0dBm", 0},    // 1 mW
        {5000, "-3.0dBm", -30},  // 0.5 mW: -3.0103, truncated toward zero
        {1, "-40.0dBm", -400},
        {0, "0.0dBm", 0},        // no light reads like 1 mW
        {20000, "3.0dBm", 30},
        {65535, "8.2dBm", 81},   // the most the platform reports
        {4100, "-3.9dBm", -38},  // -3.872: the text rounds, the value truncates
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.power);
        fit(30, 33000, 60, c.power, c.power);
        EXPECT_EQ(read(get_ddTransceiversRxPower), c.text);
        EXPECT_EQ(read(get_ddTransceiversTxPower), c.text);
        EXPECT_EQ(get_ddTransceiversRxPowerValue(kPort), c.tenths);
        EXPECT_EQ(get_ddTransceiversTxPowerValue(kPort), c.tenths);
    }
    // Each direction reads its own power.
    fit(30, 33000, 60, 10000, 1);
    EXPECT_EQ(get_ddTransceiversTxPowerValue(kPort), 0);
    EXPECT_EQ(get_ddTransceiversRxPowerValue(kPort), -400);
}

TEST_F(TransceiversTest, TemperatureVoltageAndBias) {
    struct Case {
        int32_t temperature;
        uint16_t voltage, bias;  // 100 microvolts, 0.1 mA
        const char *temperature_text, *voltage_text, *bias_text;
        int32_t voltage_tenths;
    };
    const Case cases[] = {
        {-5, 33000, 65, "-5C", "3.3V", "6.5mA", 33},
        {85, 32999, 1200, "85C", "3.2V", "120.0mA", 32},  // volts truncated, not rounded
        {0, 65535, 65535, "0C", "6.5V", "6553.5mA", 65},
    };
    for (const Case &c : cases) {
        fit(c.temperature, c.voltage, c.bias, 5000, 5000);
        EXPECT_EQ(read(get_ddTransceiversTemperature), c.temperature_text);
        EXPECT_EQ(get_ddTransceiversTemperatureValue(kPort), c.temperature);
        EXPECT_EQ(read(get_ddTransceiversVcc3v3), c.voltage_text);
        EXPECT_EQ(get_ddTransceiversVcc3v3Value(kPort), c.voltage_tenths);
        EXPECT_EQ(read(get_ddTransceiversTxBias), c.bias_text);
        EXPECT_EQ(get_ddTransceiversTxBiasValue(kPort), c.bias);
    }
}

TEST_F(TransceiversTest, RowsAreThePortsWhoseTransceiverReportsDiagnostics) {
    EXPECT_EQ(init_index_ddTransceiversTable(add_int_row), 0);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{25, 26, 91}));  // a trunk member keeps its row; no trunk rows

    // A transceiver without diagnostics has no row; unplugged units none.
    rows().clear();
    sw().set_transceiver_diagnostics(0, 25, false);
    sw().set_unit_present(1, false);
    init_index_ddTransceiversTable(add_int_row);
    EXPECT_EQ(rows().ints, (std::vector<int32_t>{25}));
    EXPECT_EQ(exists_entry_ddTransceiversTable(26), 0);
    // Indexes that name no port record are missing, without a crash.
    for (int32_t i : {0, 513, 640, 1001, 100000}) EXPECT_EQ(exists_entry_ddTransceiversTable(i), 0) << i;

    // A pulled transceiver leaves at its next check and reads the empty
    // record's values.
    sw().set_transceiver(0, kPort - 1, false);
    EXPECT_EQ(exists_entry_ddTransceiversTable(kPort), 0);
    EXPECT_EQ(rows().removed.front(), "ddTransceiversTable 26");
    EXPECT_EQ(rows().removed.back(), "ddTransceiversTable 25");
    EXPECT_EQ(read(get_ddTransceiversTemperature), "0C");
    EXPECT_EQ(read(get_ddTransceiversVcc3v3), "0.0V");
    EXPECT_EQ(read(get_ddTransceiversRxPower), "0.0dBm");
    EXPECT_EQ(read(get_ddTransceiversTxBias), "0.0mA");
    EXPECT_EQ(get_ddTransceiversRxPowerValue(kPort), 0);
}

}  // namespace
}  // namespace unit
