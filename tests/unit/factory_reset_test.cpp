// switchResObj, the factory reset: normal(1) does nothing, factoryReset(2)
// puts the factory configuration into the start-up configuration file and
// records one restart of its kind, anything else is refused and changes
// nothing.
#include <chrono>
#include <thread>

#include "fixture.hpp"
#include "scalars/catalogue.hpp"
#include "tables/catalogue.hpp"

namespace unit {
namespace {

class FactoryResetTest : public SwitchTest {
protected:
    // Configuration file 2 is the one the switch starts from.
    std::string scenario() const override {
        return R"({"files": {"configs": [{"name": "lab-config", "text": "hostname lab\n"}, {"name": "spare", "text": "x\n"}]}})";
    }
    void SetUp() override {
        SwitchTest::SetUp();
        ASSERT_EQ(set_restartConfig(2), 0);
    }
    // The stored files' bytes and names, the start-up choice and the restarts.
    std::vector<std::string> store() {
        std::vector<std::string> out;
        for (auto [kind, slot] : {std::pair{SW_FILE_CONFIG, 0}, {SW_FILE_CONFIG, 1}, {SW_FILE_CONFIG, 2}, {SW_FILE_FIRMWARE, 0}}) {
            const std::vector<uint8_t> b = sw().file_bytes(kind, slot);
            out.push_back(read_text(get_fileInfoFileName, kind, slot + 1) + ":" + std::string(b.begin(), b.end()));
        }
        const auto files = sw().files();
        out.push_back(std::to_string(get_restartConfig()) + " " + std::to_string(files.restarts) + " " +
                      std::to_string(files.last_restart));
        return out;
    }
};

TEST_F(FactoryResetTest, OnlyFactoryResetRestartsAndTheRestIsRefused) {
    const std::vector<std::string> before = store();
    sw().fault_set("cfg_restart", -1, 1);
    EXPECT_LT(set_switchResObj(2), 0) << "the platform refuses";
    const struct {
        int32_t value;
        int result;
    } cases[] = {{1, 0}, {0, -1}, {3, -1}, {-1, -1}};
    for (const auto &c : cases) {
        EXPECT_EQ(call_texts([&] { EXPECT_EQ(set_switchResObj(c.value), c.result) << c.value; }), std::vector<std::string>{});
        EXPECT_EQ(get_switchResObj(), 1);
    }
    EXPECT_EQ(store(), before) << "nothing changed";
    EXPECT_EQ(call_texts([] { set_switchResObj(2); }), std::vector<std::string>{"cfg_restart(3)"});
}

TEST_F(FactoryResetTest, TheStartUpConfigurationBecomesTheFactoryOneAndTheSwitchRestarts) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    ASSERT_GE(uptime(), 1u);
    std::vector<std::string> expected = store();
    ASSERT_EQ(expected[1], "lab-config:hostname lab\n");
    ASSERT_EQ(expected[4], "2 0 0");
    EXPECT_EQ(set_switchResObj(2), 0);
    expected[1] = "startup-config:hostname switch\n!\nend\n";  // what a new switch holds
    expected[4] = "2 1 " + std::to_string(SW_RESTART_FACTORY);
    EXPECT_EQ(store(), expected) << "the firmware and the other files stay";
    EXPECT_EQ(uptime(), 0u) << "the uptime starts again";
    EXPECT_EQ(get_fileInfoFileSize(SW_FILE_CONFIG, 2), 22);
    EXPECT_EQ(set_restartControl(2), 0);
    EXPECT_EQ(sw().files().last_restart, SW_RESTART_WARM) << "restartControl's restarts keep their kind";
}

}  // namespace
}  // namespace unit
