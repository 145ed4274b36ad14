// Shared pieces of the simulator tests: a temporary switch per test and a
// small scenario with something of everything.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "swplatform/platform.h"
#include "swsim/control.hpp"

namespace simtest {

// Two units of 8 ports (ports 7-8 are SFP+ cages).  Trunk 1 = 1/5+1/6 (both
// up), trunk 2 dynamic = 2/5 (up) + 2/6 (down).  VLANs 1 and 10.
inline const char *kSmallSwitch = R"({
  "system": {"name": "sw-test", "contact": "ops", "location": "bench",
             "timezone": {"name": "CET", "offset_min": 60}},
  "units": [{"ports": 8, "sfp_ports": 2}, {"ports": 8, "sfp_ports": 2}],
  "trunks": [{"id": 1, "members": ["1/5", "1/6"]},
             {"id": 2, "dynamic": true, "members": ["2/5", "2/6"]}],
  "ports": [{"select": ["1/1-6", "2/1-5"], "link": true, "peer_speed": 1000},
            {"select": "1/7", "sfp": true, "link": true}],
  "vlans": [{"vid": 1, "name": "default", "untagged": ["all", "trunks"]},
            {"vid": 10, "name": "office", "tagged": ["1/1", "T1"]}],
  "fdb": [{"mac": "00:00:00:00:00:01", "vid": 1, "port": "1/1"},
          {"mac": "00:00:00:00:00:02", "vid": 1, "port": "1/5"},
          {"mac": "00:00:00:00:00:03", "vid": 10, "port": "1/2", "static": true},
          {"mac": "00:00:00:00:00:04", "vid": 10, "port": "2/1"}]
})";

// What swctl did with one command line: its exit code, standard output and
// standard error.
struct SwctlRun {
    int code;
    std::string out, err;
};

// What `f` throws as its complaint, or "(none)".
template <class F>
std::string complaint(F f) {
    try {
        f();
    } catch (const swsim::Error &e) {
        return e.what();
    }
    return "(none)";
}

// A fresh directory for each test, removed afterwards.
class TempDir : public ::testing::Test {
protected:
    void SetUp() override {
        char tmpl[] = "/tmp/swsim-test-XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
        state_ = dir_ + "/switch.state";
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    // Runs swctl on this test's state file with `args` (and environment
    // settings `env`, "NAME=value ...").
    SwctlRun swctl(const std::string &args, const std::string &env = "") {
        const std::string out = dir_ + "/swctl.out", err = dir_ + "/swctl.err";
        const std::string cmd =
            env + " " + std::string(SWCTL_PATH) + " --state " + state_ + " " + args + " >" + out + " 2>" + err;
        const int status = std::system(cmd.c_str());
        auto slurp = [](const std::string &path) {
            std::stringstream s;
            s << std::ifstream(path).rdbuf();
            return s.str();
        };
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(out), slurp(err)};
    }
    // swctl `args` succeeds quietly.
    void ok(const std::string &args) {
        const auto r = swctl(args);
        EXPECT_EQ(r.code, 0) << args << "\n" << r.err;
        EXPECT_EQ(r.err, "") << args;
    }
    // swctl `args` fails with exit code 1 and `message` as its only line.
    void fails(const std::string &args, const std::string &message) {
        const auto r = swctl(args);
        EXPECT_EQ(r.code, 1) << args;
        EXPECT_EQ(r.err, "swctl: " + message + "\n") << args;
        EXPECT_EQ(r.out, "") << args;
    }

    std::string dir_;
    std::string state_;
};

// A switch built from a scenario, opened through cfg_init's path.
class SwitchTest : public TempDir {
protected:
    void SetUp() override {
        TempDir::SetUp();
        boot(kSmallSwitch);
    }
    void boot(const std::string &scenario) {
        swsim::create_state_from_json(state_, scenario);
        setenv("SWSIM_STATE", state_.c_str(), 1);
        ASSERT_EQ(swsim::platform_reopen(), 0);
        sw_ = std::make_unique<swsim::Switch>(state_);
    }

    std::unique_ptr<swsim::Switch> sw_;
};

// Runs `child` in a forked process that exits with its result.
template <class F>
pid_t fork_child(F child) {
    pid_t pid = fork();
    if (pid == 0) {
        int rc = 1;
        try {
            rc = child();
        } catch (...) {
        }
        _exit(rc);
    }
    return pid;
}

inline int wait_exit(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// A one-byte message over a pipe, to step a child and its parent together.
struct Channel {
    int fds[2];
    Channel() { EXPECT_EQ(pipe(fds), 0); }
    ~Channel() {
        close(fds[0]);
        close(fds[1]);
    }
    void send() { EXPECT_EQ(write(fds[1], "x", 1), 1); }
    bool receive() {
        char c;
        return read(fds[0], &c, 1) == 1;
    }
};

}  // namespace simtest
