// A Debian daemon that a test runs beside the agent (snmptrapd, in.tftpd):
// a foreground child that dies with the test process, and a temporary
// directory of its own for its files.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace it {

class TestDaemon {
public:
    // Makes the directory /tmp/PREFIX-XXXXXX; throws when it cannot.
    explicit TestDaemon(const std::string &prefix);
    ~TestDaemon();  // stops the child (SIGTERM), removes the directory
    TestDaemon(const TestDaemon &) = delete;
    TestDaemon &operator=(const TestDaemon &) = delete;

    const std::string &dir() const { return dir_; }

    // Runs argv[0] (a path) with `argv`, its output appended to `log` when
    // one is named; then waits, checking `ready` every `step` up to `tries`
    // times, and throws "WHAT did not start" when the child ends first or
    // the time runs out.
    void start(const std::vector<std::string> &argv, const std::string &log, const std::string &what,
               const std::function<bool()> &ready, int tries, std::chrono::milliseconds step);

private:
    std::string dir_;
    pid_t pid_ = -1;
};

}  // namespace it
