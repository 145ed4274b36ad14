// switchResObj, the factory reset: normal(1) does nothing, factoryReset(2)
// puts the factory configuration into the start-up configuration file and
// records one restart of its kind, anything else is refused and changes
// nothing.
#include <chrono>
#include <cstring>
#include <thread>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

const std::string kFactory = "hostname switch\n!\nend\n";

class FactoryResetTest : public SwitchTest {
protected:
    // Configuration file 2 is the one the switch starts from.
    std::string scenario() const override {
        return R"({"files": {"configs": [{"name": "lab-config", "text": "hostname lab\ninterface 1/1\n"},
                                         {"name": "spare", "text": "hostname spare\n"}]}})";
    }
    void SetUp() override {
        SwitchTest::SetUp();
        ASSERT_EQ(set_restartConfig(2), 0);
    }
    // What a manager and an operator see of the store.
    struct Store {
        std::vector<std::string> configs;  // bytes of configuration files 1..3
        std::string firmware;
        std::string startup_name;
        int32_t startup = 0;
        uint32_t restarts = 0;
        int last_restart = 0;
        bool operator==(const Store &) const = default;
    };
    Store store() {
        Store s;
        for (int slot = 0; slot < 3; ++slot) {
            const std::vector<uint8_t> b = sw().file_bytes(SW_FILE_CONFIG, slot);
            s.configs.emplace_back(b.begin(), b.end());
        }
        const std::vector<uint8_t> fw = sw().file_bytes(SW_FILE_FIRMWARE, 0);
        s.firmware.assign(fw.begin(), fw.end());
        s.startup = get_restartConfig();
        s.startup_name = read_text(get_fileInfoFileName, SW_FILE_CONFIG, s.startup);
        s.restarts = sw().files().restarts;
        s.last_restart = sw().files().last_restart;
        return s;
    }
};

TEST_F(FactoryResetTest, OnlyFactoryResetRestartsAndTheRestIsRefused) {
    const Store before = store();
    const struct {
        int32_t value;
        int result;
        std::vector<std::string> calls;
    } cases[] = {{1, 0, {}}, {0, -1, {}}, {3, -1, {}}, {-1, -1, {}}, {2, 0, {"cfg_restart(3)"}}};
    for (const auto &c : cases) {
        int result = 99;
        EXPECT_EQ(call_texts([&] { result = set_switchResObj(c.value); }), c.calls) << c.value;
        EXPECT_EQ(result, c.result) << c.value;
        if (c.calls.empty()) {
            EXPECT_EQ(store(), before) << c.value << " changes nothing";
        }
        EXPECT_EQ(get_switchResObj(), 1) << "reads normal";
    }
}

TEST_F(FactoryResetTest, TheStartUpConfigurationBecomesTheFactoryOneAndTheSwitchRestarts) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    ASSERT_GE(uptime(), 1u);
    const Store before = store();
    ASSERT_EQ(before.startup, 2);
    ASSERT_NE(before.configs[1], kFactory);
    EXPECT_EQ(set_switchResObj(2), 0);
    const Store after = store();
    EXPECT_EQ(after.restarts, before.restarts + 1);
    EXPECT_EQ(after.last_restart, SW_RESTART_FACTORY);
    EXPECT_EQ(uptime(), 0u) << "the uptime starts again";
    // The start-up file holds the factory configuration and stays the start-up one.
    EXPECT_EQ(after.startup, 2);
    EXPECT_EQ(after.configs[1], kFactory);
    EXPECT_EQ(after.startup_name, "startup-config");
    EXPECT_EQ(uint32_t(get_fileInfoFileSize(SW_FILE_CONFIG, 2)), kFactory.size());
    // The firmware and the other files stay.
    EXPECT_EQ(after.configs[0], before.configs[0]);
    EXPECT_EQ(after.configs[2], before.configs[2]);
    EXPECT_EQ(after.firmware, before.firmware);
    // restartControl's restarts keep their own kind.
    EXPECT_EQ(set_restartControl(2), 0);
    EXPECT_EQ(sw().files().last_restart, SW_RESTART_WARM);
    EXPECT_EQ(sw().files().restarts, before.restarts + 2);
}

TEST_F(FactoryResetTest, AFailingPlatformIsAFailureThatChangesNothing) {
    const Store before = store();
    sw().fault_set("cfg_restart", -1, 1);
    EXPECT_LT(set_switchResObj(2), 0);
    EXPECT_EQ(store(), before);
}

}  // namespace
}  // namespace unit
