// The state file: refusing what is not ours, surviving its writers, being
// shared live between processes.
#include <fcntl.h>
#include <signal.h>

#include <fstream>

#include "layout.hpp"
#include "support.hpp"

namespace {

using simtest::Channel;
using simtest::SwitchTest;
using simtest::TempDir;

std::string open_error(const std::string &path) {
    return simtest::complaint([&] { swsim::Switch sw(path); });
}

// Patches bytes of a file in place.
void patch(const std::string &path, off_t at, const void *bytes, size_t n) {
    int fd = open(path.c_str(), O_WRONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(pwrite(fd, bytes, n, at), ssize_t(n));
    close(fd);
}

TEST_F(TempDir, BadStateFilesAreRefusedWithTheirProblem) {
    EXPECT_EQ(open_error(state_), state_ + ": no switch state file here (create one with swctl create)");

    std::ofstream(state_) << "hello, I am a text file with enough bytes to hold a header of some size..........";
    EXPECT_EQ(open_error(state_), state_ + ": not a switch state file (bad magic)");

    swsim::create_state_from_json(state_, "{}");
    ASSERT_EQ(truncate(state_.c_str(), 1 << 20), 0);
    EXPECT_NE(open_error(state_).find(state_ + ": truncated state file (1048576 of "), std::string::npos)
        << open_error(state_);
    ASSERT_EQ(truncate(state_.c_str(), 20), 0);
    EXPECT_EQ(open_error(state_), state_ + ": truncated state file (20 bytes, no complete header)");

    swsim::create_state_from_json(state_, "{}");
    const uint32_t newer = 99;
    patch(state_, 8, &newer, sizeof newer);
    EXPECT_EQ(open_error(state_), state_ + ": made by a newer simulator (layout version 99, this one reads " +
                                      std::to_string(swsim::layout::kVersion) + ")");
}

TEST_F(TempDir, WithoutAStateEveryCallFailsCleanly) {
    const std::string missing = dir_ + "/nothing.state";
    setenv("SWSIM_STATE", missing.c_str(), 1);
    testing::internal::CaptureStderr();
    EXPECT_LT(swsim::platform_reopen(), 0);
    EXPECT_LT(cfg_init(), 0);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("swsim: " + missing + ": no switch state file here"), std::string::npos) << err;

    sw_status_t *s = get_status();
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(s->units[0].present, 0u);
    EXPECT_EQ(status_get_num_units(), -1);
    char buf[8] = "keep";
    EXPECT_EQ(cfg_get_hostname(buf, sizeof buf), -1);
    EXPECT_STREQ(buf, "keep");
    EXPECT_EQ(status_get_hw_model(0), nullptr);
    EXPECT_EQ(cfg_equip_get_vendor_url(), nullptr);
    uint8_t *image = cfg_get_cfg();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image[SW_CFG_IMAGE_SIZE - 1], 0);
    EXPECT_EQ(lock_read(cfg_lock_table[0]), -1);
    int count = 5;
    uint8_t *entries = nullptr;
    EXPECT_LT(cfg_get_mac_address_table(&count, &entries, nullptr), 0);
    EXPECT_EQ(count, 0);
    // The pure helpers need no switch.
    int h, m, sec;
    EXPECT_EQ(parse_time("01:02:03", &h, &m, &sec), 0);

    swsim::create_state_from_json(missing, "{}");
    EXPECT_EQ(cfg_init(), 0) << "a later cfg_init() finds the switch";
    EXPECT_EQ(cfg_init(), 0) << "and a second one is harmless";
    EXPECT_EQ(get_status()->units[0].present, 1u);
}

TEST_F(SwitchTest, TheStatusBlockIsTheSharedOne) {
    sw_status_t *s = get_status();
    ASSERT_EQ(cfg_init(), 0);
    EXPECT_EQ(get_status(), s) << "cfg_init() again keeps the mapping";
    ASSERT_EQ(s->units[0].ports[0].link, 1u);

    pid_t child = simtest::fork_child([&] {
        swsim::Switch other(state_);
        other.set_link(0, 0, false);
        return 0;
    });
    ASSERT_EQ(simtest::wait_exit(child), 0);
    EXPECT_EQ(s->units[0].ports[0].link, 0u) << "another process's change shows through the pointer";
}

TEST_F(SwitchTest, AWriteSurvivesItsWriterBeingKilled) {
    Channel written;
    pid_t child = simtest::fork_child([&] {
        // cfg_init() was done by the parent; the child writes through it.
        if (cfg_set_hostname("written-then-killed") != 0) return 1;
        if (cfg_set_port_speed(0, 2, 100) != 0) return 1;
        written.send();
        pause();
        return 0;
    });
    ASSERT_TRUE(written.receive());
    kill(child, SIGKILL);
    EXPECT_EQ(simtest::wait_exit(child), -SIGKILL);

    swsim::Switch reopened(state_);
    EXPECT_EQ(reopened.hostname(), "written-then-killed");
    EXPECT_EQ(reopened.port(0, 2).config_speed, 100);
}

}  // namespace
